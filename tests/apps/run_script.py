#!/usr/bin/env python3
"""Runs one command script against the program and compares what comes out.

A script is a text of sections, each begun by a line "-- word ...":

  -- file NAME       the lines that follow are written to NAME beside the run
  -- args ...        arguments of `predselect`; {data} is the folder of the example tables
  -- command         the commands to run (given to `predselect run` by -f)
  -- exit N          the exit code expected (0 when not said)
  -- stdout, -- stderr             the whole text expected there
  -- stdout has, -- stderr has     lines that must appear there, in this order
  -- left NAME, -- no NAME         a file that must, or must not, be there afterwards

Sections "args" to "no" after a further "-- args" form the next run in the same folder.
"""

import difflib
import os
import shlex
import subprocess
import sys
import tempfile
from pathlib import Path

DATA = Path(__file__).resolve().parents[2] / "data"
TEXTS = ("file", "command", "stdout", "stderr")


def read_sections(script: Path) -> list[tuple[str, str, list[str]]]:
    """(word, rest of the heading, lines) of every section."""
    sections = []
    for line in script.read_text(encoding="utf-8").splitlines():
        if line.startswith("-- "):
            word, _, rest = line[3:].partition(" ")
            sections.append((word, rest.strip(), []))
        elif sections and sections[-1][0] in TEXTS:
            sections[-1][2].append(line)
        elif line.strip() and not line.startswith("#"):
            raise SystemExit(f"{script}: a line outside a section: {line}")
    return sections


def text_of(lines: list[str]) -> str:
    return "".join(line + "\n" for line in lines)


def differences(kind: str, rest: str, expected: list[str], actual: str) -> list[str]:
    got = actual.splitlines()
    if rest == "has":
        position = 0
        for line in (line for line in expected if line.strip()):
            try:
                position = next(i for i in range(position, len(got)) if line.strip() in got[i]) + 1
            except StopIteration:
                return [f"{kind} lacks (in this order): {line}", "--- it was:", *got]
        return []
    while expected and not expected[-1].strip():
        expected = expected[:-1]
    return list(difflib.unified_diff(expected, got, f"{kind} expected", f"{kind} seen",
                                     lineterm=""))


def run(program: str, arguments: str, command: list[str] | None, folder: Path):
    words = [word.replace("{data}", str(DATA)) for word in shlex.split(arguments)]
    if command is not None:
        (folder / "commands.txt").write_text(text_of(command), encoding="utf-8")
        words += ["-f", "commands.txt"]
    return subprocess.run([program, *words], cwd=folder, capture_output=True, text=True,
                          env={**os.environ, "COLUMNS": "100", "NO_COLOR": "1"}, check=False)


def check(sections, result, folder: Path) -> list[str]:
    problems = []
    code = next((int(rest) for word, rest, _ in sections if word == "exit"), 0)
    if result.returncode != code:
        problems += [f"exit code {result.returncode}, expected {code}", result.stderr]
    for word, rest, lines in sections:
        if word in ("stdout", "stderr"):
            problems += differences(word, rest, lines, getattr(result, word))
        elif word in ("left", "no") and (folder / rest).exists() != (word == "left"):
            problems.append(f"{rest} is {'missing' if word == 'left' else 'still there'}")
    return problems


def main() -> int:
    program, script = str(Path(sys.argv[1]).resolve()), Path(sys.argv[2])
    problems, runs = [], 0
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        sections = read_sections(script)
        starts = [i for i, section in enumerate(sections) if section[0] == "args"] + [len(sections)]
        for word, rest, lines in sections[:starts[0]]:
            assert word == "file", word
            (folder / rest).write_bytes(text_of(lines).encode("utf-8", "surrogateescape"))
        for start, end in zip(starts, starts[1:]):
            part = sections[start:end]
            command = next((lines for word, _, lines in part if word == "command"), None)
            result = run(program, part[0][1], command, folder)
            problems += check(part, result, folder)
            runs += 1
    print("\n".join(problems) or f"{runs} runs as expected")
    return 1 if problems or not runs else 0


if __name__ == "__main__":
    sys.exit(main())
