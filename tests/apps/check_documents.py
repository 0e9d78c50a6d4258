#!/usr/bin/env python3
"""Runs the commands that documents show and holds what they show against what comes out.

  check_documents.py PROGRAM [--drivers PLACE] DOCUMENT...

A fenced block that begins with "$ " is a shell command over the tables in data/ (it goes on while a
quote is open, and after a line that ends with "|"), followed by what it prints: messages first, then the page. A line "..." stands for
any lines left out; "$ " on a later line begins the next command of the block. A block that is fenced as "sqlite" is
run where the place of a driver is said, beside biopsies.db.
"""

import argparse
import csv
import os
import re
import shlex
import sqlite3
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
    """(what it needs, command, lines shown) of every command in the fenced blocks."""
    for need, block in re.findall(r"^```(|sqlite)\n(\$ .*?)^```$",
                                  document.read_text(encoding="utf-8"), re.MULTILINE | re.DOTALL):
        found = []
        for line in block.splitlines():
            if found and is_open(found[-1][1]):
                found[-1][1] += "\n" + line
            elif line.startswith("$ "):
                found.append([need, line[2:], []])
            else:
                found[-1][2].append(line)
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


def make_database(path: Path) -> None:
    with (ROOT / "data" / "biopsies.csv").open(encoding="utf-8", newline="") as file:
        names, *rows = csv.reader(file)
    database = sqlite3.connect(path)
    columns = ", ".join(f"{name} {'TEXT' if name == 'diagnosis' else 'REAL'}" for name in names)
    database.execute(f"CREATE TABLE biopsies ({columns})")
    database.executemany(f"INSERT INTO biopsies VALUES ({', '.join('?' * len(names))})", rows)
    database.commit()
    database.close()


def main() -> int:
    words = argparse.ArgumentParser()
    words.add_argument("program", type=Path)
    words.add_argument("documents", nargs="+")
    words.add_argument("--drivers")
    words = words.parse_args()
    program = words.program.resolve()
    env = {**os.environ, "PATH": f"{program.parent}:{os.environ['PATH']}", "NO_COLOR": "1",
           "COLUMNS": "100"}
    if words.drivers is not None:
        env["PREDSELECT_DRIVER"] = words.drivers
    runs, skipped, problems = 0, 0, []
    commands = [(name, *parts) for name in words.documents for parts in shown(ROOT / name)]
    with tempfile.TemporaryDirectory() as folder:
        (Path(folder) / "data").symlink_to(ROOT / "data")
        make_database(Path(folder) / "biopsies.db")
        for name, need, command, expected in commands:
            if need and words.drivers is None:
                skipped += 1
                continue
            result = subprocess.run(["bash", "-c", command], cwd=folder, env=env, text=True,
                                    stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
            runs += 1
            lines = missing(expected, result.stdout.splitlines())
            if lines:
                problems += [f"{name}: {command}", "  shows, in vain:", *lines, "  it printed:",
                             result.stdout]
    print("\n".join(problems) or f"{runs} commands print what the documents show"
          + (f"; {skipped} skipped, without a driver (make databases)" if skipped else ""))
    return 1 if problems or not runs else 0


if __name__ == "__main__":
    sys.exit(main())
