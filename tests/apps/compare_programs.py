#!/usr/bin/env python3
"""Runs two builds of the program over a table of jobs and compares what they give, byte for byte.

  compare_programs.py OLD NEW [--keep FOLDER]

Each job of program_jobs.py has a folder of its own in FOLDER/old and in FOLDER/new/elsewhere. There
lie the files that it wrote and what it said. NEW works through the jobs in the opposite order and
in memory filled with other bytes, so that the same program twice shows what is left to chance. A
difference is a line, and so is an end that no job may have, such as a crash; exit code 1 on any.
"""

import argparse
import os
import re
import subprocess
import sys
import tempfile
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

from program_inputs import write_inputs
from program_jobs import JOBS, Job

# What the time of the run decides, and nothing else: what it is, the bytes before it, its bytes.
MASKS = (("time of writing, in a model document", rb"\n    <Timestamp>", rb"[^<]*"),)
EXPECTED_ENDS = (0, 1, 2, 3)
TIME_LIMIT = 300  # seconds a job


def work(program: str, job: Job, folder: Path, filling: str) -> int:
    """Runs the job in its folder, leaves there what it said, and gives its exit code."""
    folder.mkdir()
    for name, content in job.files.items():
        (folder / name).write_bytes(content)
    environment = {**os.environ, "COLUMNS": "100", "TMPDIR": ".", "MALLOC_PERTURB_": filling}
    result = subprocess.run([program, *job.args], cwd=folder, input=job.stdin, capture_output=True,
                            env={**environment, **job.env}, timeout=TIME_LIMIT, check=False)
    (folder / "standard-output").write_bytes(result.stdout)
    (folder / "standard-error").write_bytes(result.stderr)
    (folder / "exit-code").write_text(f"{result.returncode}\n", encoding="ascii")
    return result.returncode


def work_through(program: str, folder: Path, backwards: bool) -> dict[str, int]:
    """Exit codes by job. A stage uses only what the stages before it have made."""
    folder.mkdir(parents=True)
    write_inputs(folder / "in")
    codes = {}
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        for stage in JOBS:
            names = sorted(stage, reverse=backwards)
            ends = pool.map(lambda name: work(program, stage[name], folder / name,
                                              "165" if backwards else "0"), names)
            codes.update(zip(names, ends))
    return codes


def masked(content: bytes) -> bytes:
    for _, before, varies in MASKS:
        content = re.sub(b"(" + before + b")" + varies, rb"\1-", content, flags=re.DOTALL)
    return content


def difference(old: Path, new: Path) -> str:
    """Empty, or the first place at which two files are not the same."""
    for path, other in ((old, "new"), (new, "old")):
        if not path.exists():
            return f"only the {other} program has it"
    a, b = masked(old.read_bytes()), masked(new.read_bytes())
    if a == b:
        return ""
    at = next((i for i, (x, y) in enumerate(zip(a, b)) if x != y), min(len(a), len(b)))
    line = a.count(b"\n", 0, at) + 1
    start = max(a.rfind(b"\n", 0, at) + 1, at - 20)
    return f"line {line}, byte {at + 1}: {a[start:at + 20]!r} was, {b[start:at + 20]!r} is"


def faults(folders: tuple[Path, Path], codes: tuple[dict, dict]) -> tuple[list[str], int]:
    """Lines on what is not as it must be, and how many texts and files were compared."""
    found, compared = [], 0
    jobs = {name: (stage, job) for stage, jobs in enumerate(JOBS) for name, job in jobs.items()}
    for name, (stage, job) in sorted(jobs.items()):
        command = " ".join(job.args).replace("\n", " ")
        for program, code in zip(("old", "new"), (codes[0][name], codes[1][name])):
            # What a later stage builds on must be there.
            if code not in (EXPECTED_ENDS if stage == len(JOBS) - 1 else (0,)):
                found.append(f"{name}: the {program} program ends in {code}: {command}")
        files = {path.relative_to(folder) for folder in folders
                 for path in (folder / name).rglob("*") if path.is_file()}
        compared += len(files)
        for file in sorted(files):
            what = difference(folders[0] / file, folders[1] / file)
            if what:
                found.append(f"{file}: {what}: {command}")
    return found, compared


def compare(old: str, new: str, base: Path) -> int:
    folders = (base / "old", base / "new" / "elsewhere")
    codes = (work_through(old, folders[0], False), work_through(new, folders[1], True))
    found, compared = faults(folders, codes)
    print("\n".join(found) + "\n" * bool(found), end="")
    ends = list(codes[0].values())
    counts = ", ".join(f"{ends.count(code)} in {code}" for code in EXPECTED_ENDS)
    print(f"{len(ends)} jobs (ended {counts}), {compared} texts and files, "
          f"{len(found)} differences")
    return 1 if found else 0


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("old", type=Path)
    parser.add_argument("new", type=Path)
    parser.add_argument("--keep", type=Path, help="a new folder for all that the programs wrote")
    given = parser.parse_args()
    programs = (str(given.old.resolve(strict=True)), str(given.new.resolve(strict=True)))
    if given.keep:
        return compare(*programs, given.keep.resolve())
    with tempfile.TemporaryDirectory() as folder:
        return compare(*programs, Path(folder))


if __name__ == "__main__":
    sys.exit(main())
