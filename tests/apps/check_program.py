#!/usr/bin/env python3
"""Laws of the whole program that a single run cannot show.

  check_program.py PROGRAM LAW      one of the functions below that begin with "law_"
"""

import json
import random
import signal
import subprocess
import sys
import tempfile
import time
from pathlib import Path

HERE = Path(__file__).resolve().parent
DATA = HERE.parents[1] / "data"
SCALES = "bill_length_mm bill_depth_mm flipper_length_mm body_mass_g"


def run(program, folder, *arguments, **options):
    return subprocess.run([program, "run", *arguments], cwd=folder, capture_output=True, text=True,
                          check=False, **options)


def write_wide_table(path, cases, columns):
    """A categorical target, then numbers, small codes and strings in turn, a tenth missing."""
    draw = random.Random(20240229)
    with open(path, "w", encoding="utf-8") as file:
        file.write("y,w," + ",".join(f"x{j}" for j in range(columns)) + "\n")
        for _ in range(cases):
            y = draw.randrange(3)
            cells = []
            for j in range(columns):
                value = (f"{draw.gauss(y * (j % 5), 3):.6g}", str(draw.randrange(6)),
                         "abcdef"[draw.randrange(y + 2)])[j % 3]
                cells.append("" if draw.random() < 0.1 else value)
            file.write(f"{'pqr'[y]},{draw.randrange(4)},{','.join(cells)}\n")


def law_streaming_changes_nothing(program, folder):
    """The same document to the last bit, in memory and streamed, from CSV and from Parquet."""
    write_wide_table(folder / "wide.csv", 9000, 40)
    command = "SELECTPRED y /CRITERIA SHOWUNSELECTED=40 /PLOT SUMMARY."
    saved = run(program, folder, "--data", "wide.csv", "-c", command, "--save-data", "wide.parquet")
    assert saved.returncode == 0, saved.stderr
    texts = {}
    for file in ("wide.csv", "wide.parquet"):
        for storage in ([], ["--stream"]):
            result = run(program, folder, "--data", file, "--weight", "w", "--format", "json",
                         "-c", command, *storage)
            assert result.returncode == 0, result.stderr
            texts[file, *storage] = result.stdout.replace(file, "wide")
    assert len(set(texts.values())) == 1, "documents differ"
    assert '"x0"' in result.stdout


def wait_until_read(process, size):
    """Until the process has read so many bytes."""
    counts = Path(f"/proc/{process.pid}/io")
    deadline = time.monotonic() + 60
    while int(counts.read_text().split()[1]) < size:
        assert process.poll() is None and time.monotonic() < deadline, "it does not read"
        time.sleep(0.02)


def law_interrupt_leaves_no_file(program, folder):
    """Ctrl-C in mid-pass: exit code 130, one message, nothing half-written."""
    write_wide_table(folder / "long.csv", 60000, 30)
    process = subprocess.Popen(
        [program, "run", "--data", "long.csv", "--stream", "-o", "page.txt", "-c",
         "\n".join(["SELECTPRED y /CRITERIA TIMER=0."] * 50)],
        cwd=folder, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
    # Opening the file reads it a few times; what is read beyond that is read by a command.
    wait_until_read(process, 8 * (folder / "long.csv").stat().st_size)
    process.send_signal(signal.SIGINT)
    _, errors = process.communicate(timeout=60)
    assert process.returncode == 130, (process.returncode, errors)
    assert "Stopped at your wish" in errors, errors
    assert not [path for path in folder.iterdir() if ".tmp" in path.name]


def law_time_limit_ends_the_run(program, folder):
    """A limit that is over at once: one error that says how far the run had come, no tables."""
    write_wide_table(folder / "long.csv", 30000, 30)
    result = run(program, folder, "--data", "long.csv", "--format", "json", "-c",
                 "SELECTPRED y /CRITERIA TIMER=0.00001.")
    assert result.returncode == 1, result.returncode
    document = json.loads(result.stdout)["runs"][0]
    assert not document["completed"] and not document["tables"], document
    assert "time limit" in result.stderr, result.stderr


def law_results_that_cannot_be_written_are_an_error(program, folder):
    """A full disk and a closed pipe: exit code 3 and a word about it."""
    arguments = ["--data", str(DATA / "penguins.csv"), "-c", "SELECTPRED species BY island."]
    full = run(program, folder, *arguments, "-o", "/dev/full")
    assert full.returncode == 3 and "/dev/full" in full.stderr, full
    with open("/dev/full", "w", encoding="utf-8") as sink:
        result = subprocess.run([program, "run", *arguments], cwd=folder, stdout=sink,
                                stderr=subprocess.PIPE, text=True, check=False)
    assert result.returncode == 3 and "standard output" in result.stderr, result


def differences(path, expected, seen):
    """Where two JSON values differ; numbers may differ by 1e-9 relative."""
    if isinstance(expected, dict) and isinstance(seen, dict):
        if list(expected) != list(seen):
            return [f"{path}: keys {list(seen)}, expected {list(expected)}"]
        return sum((differences(f"{path}.{key}", expected[key], seen[key]) for key in expected), [])
    if isinstance(expected, list) and isinstance(seen, list) and len(expected) == len(seen):
        return sum((differences(f"{path}[{i}]", a, b)
                    for i, (a, b) in enumerate(zip(expected, seen))), [])
    numbers = all(isinstance(value, (int, float)) and not isinstance(value, bool)
                  for value in (expected, seen))
    if expected == seen or (numbers and abs(expected - seen) <= 1e-9 * abs(expected) + 1e-14):
        return []
    return [f"{path}: {seen!r}, expected {expected!r}"]


def law_the_whole_document_is_as_stored(program, _):
    """One run with every table and the chart, compared with penguins.json beside this script."""
    result = run(program, DATA, "--data", "penguins.csv", "--schema", "penguins.schema.json",
                 "--format", "json", "-c",
                 f"SELECTPRED species BY island sex year WITH {SCALES}\n"
                 " /CRITERIA SHOWUNSELECTED=5 /MACROVAR FACTORS=f COVARIATES=c\n"
                 " /PRINT CPS EXCLUDED SUMMARY(PEARSONCHISQ LRCHISQ) SELECTED /PLOT SUMMARY.")
    assert result.returncode == 0, result.stderr
    stored = HERE / "penguins.json"
    if not stored.exists():
        stored.write_text(result.stdout, encoding="utf-8")
        raise SystemExit("penguins.json was not there and is now: read it before you keep it")
    found = differences("$", json.loads(stored.read_text(encoding="utf-8")),
                        json.loads(result.stdout))
    assert not found, "\n".join(found[:20])


def main():
    program, law = str(Path(sys.argv[1]).resolve()), globals()["law_" + sys.argv[2]]
    with tempfile.TemporaryDirectory() as folder:
        law(program, Path(folder))
    print(f"{sys.argv[2]}: holds")


if __name__ == "__main__":
    main()
