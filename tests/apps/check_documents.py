#!/usr/bin/env python3
"""Runs the commands that documents show and holds what they show against what comes out.

  check_documents.py PROGRAM DOCUMENT...

A fenced block that begins with "$ " is a shell command over the tables in data/ (it goes on while a
quote is open, and after a line that ends with "|"), followed by what it prints: messages first, then the page. A line "..." stands for
any lines left out; "$ " on a later line begins the next command of the block.
"""

import os
import re
import shlex
import subprocess
import sys
import tempfile
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]


def is_open(command: str) -> bool:
    try:
        shlex.split(command)
        return command.rstrip().endswith("|")
    except ValueError:
        return True


def shown(document: Path):
    """(command, lines shown) of every command in the fenced blocks."""
    for block in re.findall(r"^```\n(\$ .*?)^```$", document.read_text(encoding="utf-8"),
                            re.MULTILINE | re.DOTALL):
        found = []
        for line in block.splitlines():
            if found and is_open(found[-1][0]):
                found[-1][0] += "\n" + line
            elif line.startswith("$ "):
                found.append([line[2:], []])
            else:
                found[-1][1].append(line)
        yield from found


def missing(expected: list[str], got: list[str]) -> list[str]:
    """The first lines between two "..." that do not stand together in what came out."""
    position = 0
    for part in re.split(r"^\.\.\.$", "\n".join(expected), flags=re.MULTILINE):
        lines = part.strip("\n").splitlines()
        places = range(position, len(got) - len(lines) + 1)
        found = next((i for i in places if got[i:i + len(lines)] == lines), None)
        if found is None:
            return lines
        position = found + len(lines)
    return []


def main() -> int:
    program = Path(sys.argv[1]).resolve()
    env = {**os.environ, "PATH": f"{program.parent}:{os.environ['PATH']}", "NO_COLOR": "1",
           "COLUMNS": "100"}
    runs, problems = 0, []
    commands = [(name, *pair) for name in sys.argv[2:] for pair in shown(ROOT / name)]
    with tempfile.TemporaryDirectory() as folder:
        (Path(folder) / "data").symlink_to(ROOT / "data")
        for name, command, expected in commands:
            result = subprocess.run(["bash", "-c", command], cwd=folder, env=env, text=True,
                                    stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
            runs += 1
            lines = missing(expected, result.stdout.splitlines())
            if lines:
                problems += [f"{name}: {command}", "  shows, in vain:", *lines, "  it printed:",
                             result.stdout]
    print("\n".join(problems) or f"{runs} commands print what the documents show")
    return 1 if problems or not runs else 0


if __name__ == "__main__":
    sys.exit(main())
