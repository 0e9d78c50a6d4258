#!/usr/bin/env python3
"""Runs the commands that pages of the documentation show, and compares what comes out.

  check_pages.py PROGRAM PAGE...            fails where a page shows something else
  check_pages.py PROGRAM PAGE... --write    puts what comes out into the pages

A block that begins with "```console" holds commands, each behind "$ " and continued behind "> ", and what
they print, messages included. The blocks of a page run one after another in one folder, where `data` is
the folder of the example tables, `predselect` the program, and a line has 80 columns.
"""

import difflib
import os
import subprocess
import sys
import tempfile
from pathlib import Path

DATA = Path(__file__).resolve().parents[2] / "data"


def commands_of(block: list[str]) -> list[list[str]]:
    """The lines of each command, without what is shown behind it."""
    commands: list[list[str]] = []
    for line in block:
        if line.startswith("$ "):
            commands.append([line])
        elif line.startswith("> ") and commands:
            commands[-1].append(line)
    return commands


def outcome(command: list[str], folder: str, program: str) -> list[str]:
    env = os.environ | {"COLUMNS": "80", "NO_COLOR": "1", "LC_ALL": "C.UTF-8",
                        "PATH": f"{Path(program).resolve().parent}:{os.environ['PATH']}"}
    text = "\n".join(line[2:] for line in command)
    shown = subprocess.run(["sh", "-c", text], cwd=folder, env=env, stdin=subprocess.DEVNULL,
                           stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
    return shown.stdout.decode().splitlines()


def run_page(lines: list[str], program: str) -> list[str]:
    """The page with what its commands print now."""
    made: list[str] = []
    block = None
    with tempfile.TemporaryDirectory() as folder:
        (Path(folder) / "data").symlink_to(DATA)
        for line in lines:
            if block is None:
                made.append(line)
                block = [] if line == "```console" else None
            elif line == "```":
                for command in commands_of(block):
                    made += command + outcome(command, folder, program)
                made.append(line)
                block = None
            else:
                block.append(line)
    return made


def main() -> int:
    program, *pages = (argument for argument in sys.argv[1:] if argument != "--write")
    different = False
    for page in map(Path, pages):
        lines = page.read_text(encoding="utf-8").splitlines()
        made = run_page(lines, program)
        if "```console" not in lines:
            raise SystemExit(f"{page} shows no command")
        if "--write" in sys.argv:
            page.write_text("\n".join(made) + "\n", encoding="utf-8")
        elif made != lines:
            different = True
            print("\n".join(difflib.unified_diff(lines, made, str(page), "seen", lineterm="")))
    return 1 if different else 0


if __name__ == "__main__":
    sys.exit(main())
