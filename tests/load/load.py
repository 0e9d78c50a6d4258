#!/usr/bin/env python3
"""Loads the program: long, wide and odd tables, many runs at once and many in one process.

  load.py PROGRAM LIBRARIES [--share S] [--only NAME...] [--folder FOLDER]

LIBRARIES is the folder of the libraries. Prints a line a job: what, seconds of the clock and of the
processor (which a busy machine leaves as they are), most memory, outcome. A job keeps its word where
it ends with exit code 0, what it printed holds what it must (a planted predictor comes first, all cases
are counted, ...), and its memory stays below its bound. Exit code 1 if one did not. No time is judged.

S is the share of the full size that tables of cases have; 1 takes some 3 GB of disk. The job "limit"
needs no package; the others write their tables with pyarrow and numpy.
"""

import argparse
import ctypes
import json
import os
import random
import resource
import subprocess
import sys
import tempfile
import time
from pathlib import Path

JOBS = {}

# Starts a program and writes its most kilobytes into a file. The system counts what the one that starts
# a program has itself, which is little here.
LAUNCHER = """import os, sys
child = os.posix_spawn(sys.argv[2], sys.argv[2:], os.environ)
_, status, usage = os.wait4(child, 0)
print(usage.ru_maxrss, file=open(sys.argv[1], 'w'))
sys.exit(os.waitstatus_to_exitcode(status))
"""


class Broken(Exception):
    """What a job has not kept."""


def job(function):
    JOBS[function.__name__.removeprefix("job_")] = function
    return function


def require(holds, what):
    if not holds:
        raise Broken(what)


class Load:
    """Runs the program, and prints a line for each run."""

    def __init__(self, program, libraries, share, folder):
        self.program, self.libraries, self.share = str(program), libraries, share
        self.folder = folder
        self.broken = 0

    def many(self, full, least=1):
        return max(int(full * self.share), least)

    def judge(self, what, check):
        """check() gives most megabytes, or says what was broken."""
        start, before = time.monotonic(), used()
        outcome, megabytes = "as it must", 0
        try:
            megabytes = check()
        except Broken as error:
            self.broken += 1
            outcome = f"BROKEN: {error}"
        print(f"| {what} | {time.monotonic() - start:,.1f} | {used() - before:,.1f} | {megabytes:,.0f} "
              f"| {outcome} |", flush=True)

    def start(self, name, *arguments, **where):
        """A run that has begun, and a function that waits for it to end with exit code 0 and gives
        its most megabytes."""
        most = self.folder / f"{name}.most"
        errors = (self.folder / f"{name}.errors").open("w+b")
        child = subprocess.Popen([sys.executable, "-S", "-c", LAUNCHER, most, self.program,
                                  *map(str, arguments)], stderr=errors, **where)

        def finish():
            code = child.wait()
            errors.seek(0)
            with errors:
                require(code == 0, f"exit code {code}, {errors.read()[-200:].decode()}")
            return int(most.read_text()) / 1024

        return finish

    def measure(self, *arguments):
        """Output and most megabytes of a run."""
        page = self.folder / "page"
        with page.open("wb") as out:
            most = self.start("run", *arguments, stdout=out)()
        return page.read_bytes(), most

    def run(self, what, most, holds, *arguments):
        """A run that stays below `most` megabytes; holds(output) says whether it is right."""

        def check():
            page, megabytes = self.measure(*arguments)
            require(holds(page), f"the output is {page[:300]!r}")
            require(megabytes < most, f"{megabytes:,.0f} MB, more than {most}")
            return megabytes

        self.judge(what, check)


def used():
    """Seconds of the processor that runs and this program have used."""
    kinds = (resource.RUSAGE_SELF, resource.RUSAGE_CHILDREN)
    return sum(sum(resource.getrusage(kind)[:2]) for kind in kinds)


def has(text):
    return lambda page: text in page


def write_repeated(path, table, times):
    """A Parquet file of a table as one group of rows after the other."""
    import pyarrow.parquet as parquet
    with parquet.ParquetWriter(path, table.schema) as writer:
        for _ in range(times):
            writer.write_table(table)


@job
def job_long(load):
    """1e8 cases of 10 columns, written once and streamed."""
    import numpy
    import pyarrow
    draw = numpy.random.default_rng(1)
    n = 1_000_000
    target = draw.integers(0, 3, n)
    columns = {"y": pyarrow.array([f"c{j}" for j in range(3)]).take(pyarrow.array(target)),
               "planted": numpy.round(draw.normal(size=n) + target, 1)}
    columns |= {f"x{j}": numpy.round(draw.normal(size=n), 1) for j in range(4)}
    columns |= {f"k{j}": draw.integers(0, 10, n).astype("int8") for j in range(4)}
    path = load.folder / "long.parquet"
    times = load.many(100)
    write_repeated(path, pyarrow.table(columns), times)
    cases = times * n
    for what, *arguments in (
            ("rank --stream", "rank", path, "y", "--stream"),
            ("describe --stream", "describe", path, "--stream"),
            ("model --stream --memory 256M", "model", path, "y", "--stream", "--memory", "256M",
             "--predictors", "1", "--test", "0")):
        holds = has(b"planted") if arguments[0] != "describe" else has(f"{cases} cases".encode())
        load.run(f"{what}: {cases:,} x 10", 500, holds, *arguments, "--quiet")
    path.unlink()


@job
def job_equal(load):
    """1e9 equal values, in a file of some kilobytes."""
    import pyarrow
    import pyarrow.parquet as parquet
    pieces = load.many(1000)
    n = pieces * 1_000_000

    def column(first, second):
        values = [pyarrow.array([value] * 1_000_000) for value in (first, second)]
        return pyarrow.chunked_array([values[2 * i >= pieces] for i in range(pieces)])

    path = load.folder / "equal.parquet"
    table = pyarrow.table({"equal": column(7, 7), "planted": column(0, 1), "y": column("a", "b")})
    parquet.write_table(table, path, row_group_size=n, max_rows_per_page=n)
    size = f"{n:,} equal values in {path.stat().st_size // 1024:,} KB"
    load.run(f"describe --stream: {size}", 150, has(f"{n} cases".encode()),
             "describe", path, "--stream", "--quiet")
    load.run(f"model --memory 64M: {size}", 150 + 64 * 1.1, has(b"planted"), "model", path, "y",
             "--memory", "64M", "--predictors", "1", "--test", "0", "--quiet")
    path.unlink()


def write_wide(path, columns, rows):
    draw = random.Random(3)
    with path.open("w") as out:
        out.write("y,planted," + ",".join(f"x{j}" for j in range(columns - 2)) + "\n")
        for i in range(rows):
            cells = ",".join(map(str, draw.choices(range(1000), k=columns - 2)))
            out.write(f"{'ab'[i % 2]},{i % 2 * 10 + draw.random():.3f},{cells}\n")


@job
def job_wide(load):
    for columns, rows in ((20_000, 1000), (100_000, 200)):
        most = 200 + columns * (10_000 + 12 * rows) / 2**20
        path = load.folder / "wide.csv"
        write_wide(path, load.many(columns, 10), rows)
        size = f"{rows:,} x {load.many(columns, 10):,}"
        load.run(f"describe: {size}", most, has(b"planted"), "describe", path, "--quiet")
        load.run(f"rank: {size}", most, has(b"planted"), "rank", path, "y", "--quiet")
        load.run(f"model: {size}", most, has(b"planted"), "model", path, "y", "--predictors", "1",
                 "--test", "0", "--quiet")
        path.unlink()


@job
def job_categories(load):
    n = load.many(1_000_000, 1000)
    path = load.folder / "categories.csv"
    with path.open("w") as out:
        out.write("y,planted,id\n")
        for i in range(2 * n):
            out.write(f"{'abc'[i % 3]},{i % 3},category {i % n}\n")
    size = f"{n:,} categories"
    load.run(f"describe: {size}", 900, has(b"planted"), "describe", path, "--quiet")
    load.run(f"rank: {size}", 900, has(b"planted"), "rank", path, "y", "--quiet")
    load.run(f"model: {size}", 900, has(b"planted"), "model", path, "y", "--predictors", "1",
             "--test", "0", "--quiet")
    path.unlink()


@job
def job_cells(load):
    n = load.many(50_000_000, 100_000)
    path = load.folder / "cell.csv"
    for what, header, cell in (("a cell", "text", "x" * n), ("a cell in quotes", "text", f'"{"x, " * (n // 3)}"'),
                               ("a header", "x" * n, "x")):
        with path.open("w") as out:
            out.write(f"y,planted,{header}\n")
            for i in range(100):
                out.write(f"{'ab'[i % 2]},{i % 2},{cell if i == 50 else i % 7}\n")
        size = f"{what} of {n / 1e6:g} MB"
        most = 200 + n / 1e6 * 30
        load.run(f"describe: {size}", most, has(b"planted"), "describe", path, "--quiet")
        load.run(f"rank: {size}", most, has(b"planted"), "rank", path, "y", "--quiet")
    path.unlink()


@job
def job_together(load):
    """Runs at once in one folder, which write files of their own and one of all."""
    path = load.folder / "together.csv"
    rows = load.many(200_000, 1000)
    draw = random.Random(5)
    with path.open("w") as out:
        out.write("y,a,b,c\n")
        for i in range(rows):
            out.write(f"{'ab'[i % 2]},{draw.random():.6f},{i % 2 + draw.random():.3f},{i % 5}\n")
    folder = load.folder / "together"
    folder.mkdir()

    def check():
        runs = [load.start(
            f"run{k}", "model", path, "y", "--quiet", "--memory", "64M", "--save-model", f"m{k}.bin",
            "--save-data", f"d{k}.csv", "--pmml", "all.xml", "-o", f"p{k}.txt", cwd=folder)
                for k in range(8)]
        most = max([finish() for finish in runs])
        for name in ("m{}.bin", "d{}.csv"):  # pages name the files
            kinds = {(folder / name.format(k)).read_bytes() for k in range(8)}
            require(len(kinds) == 1, f"{name} differ")
        names = {f"{kind}{k}.{end}" for kind, end in (("m", "bin"), ("d", "csv"), ("p", "txt"))
                 for k in range(8)} | {"all.xml"}
        there = set(os.listdir(folder))
        require(there == names, f"files left: {there ^ names}")
        require((folder / "all.xml").read_bytes().rstrip().endswith(b"</PMML>"), "all.xml is cut")
        return most

    load.judge(f"8 runs at once in one folder: {rows:,} x 4 each", check)


def resident():
    for line in Path("/proc/self/status").read_text().splitlines():
        if line.startswith("VmRSS:"):
            return int(line.split()[1]) / 1024
    raise Broken("the system does not say what is resident")


@job
def job_process(load):
    """Runs in one process through the C interface."""
    path = load.folder / "process.csv"
    path.write_text("y,a,b\n" + "".join(f"{'ab'[i % 2]},{i % 7},{i % 2 + i % 3}\n" for i in range(300)))
    library = ctypes.CDLL(str(load.libraries / "libpredselectoperations.so"))
    files = ctypes.CDLL(str(load.libraries / "libpredselectcfiles.so"))
    library.predselect_session_error.restype = ctypes.c_char_p
    commands = (b"SELECTPRED y WITH a b /CRITERIA PCUTOFF=1.\n"
                b"NAIVEBAYES y WITH a b /SAVE PREDVAL(p).")

    def once():
        session, table, result = (ctypes.c_void_p() for _ in range(3))
        calls = (lambda: library.predselect_session_open(ctypes.byref(session)),
                 lambda: files.predselect_table_open_file(session, os.fsencode(path), None, None,
                                                          ctypes.byref(table)),
                 lambda: library.predselect_run(session, table, commands, None,
                                                ctypes.byref(result)))
        for call in calls:
            require(call() == 0, (library.predselect_session_error(session) or b"").decode())
        for kind, handle in (("result", result), ("table", table), ("session", session)):
            getattr(library, f"predselect_{kind}_close")(handle)

    def check():
        runs = load.many(10_000, 200)
        for _ in range(runs // 10):
            once()
        before = resident()
        for _ in range(runs - runs // 10):
            once()
        growth = resident() - before
        require(growth < 2, f"{growth:.1f} MB more after {runs} runs")
        return resident()

    load.judge(f"{load.many(10_000, 200):,} runs in one process, two commands each", check)


@job
def job_limit(load):
    """What is given with --memory bounds table and cases: no more than a tenth above it, beside what
    the same run takes that keeps neither. Without the limit the same table takes more."""
    rows = load.many(2_000_000, 150_000)
    path = load.folder / "limit.csv"
    draw = random.Random(9)
    with path.open("w") as out:
        out.write("y," + ",".join(f"x{j}" for j in range(6)) + "\n")
        pool = [",".join(repr(draw.random()) for _ in range(6)) for _ in range(20_000)]
        for i in range(rows):
            out.write(f"{'ab'[i % 2]},{pool[i * 7919 % 20_000]}\n")
    limit = rows * 6 * 8 / 2**20 * 0.6
    size = f"{int(limit * 1024)}K"
    packed = load.folder / "limit.parquet"
    load.measure("run", path, "--stream", "--quiet", "-c", "SELECTPRED y /PRINT CPS.", "--save-data", packed)
    for file in (path, packed):
        for verb in (("run", file, "-c", "NAIVEBAYES y /SUBSET MAXSIZE=2 /PRINT SELECTED."),
                     ("model", file, "y", "--predictors", "2", "--test", "0")):
            verb += ("--quiet", "--threads", "1")

            def check(verb=verb):
                _, least = load.measure(*verb, "--memory", "4K")
                _, most = load.measure(*verb, "--memory", size)
                _, free = load.measure(*verb, "--memory", "1T")
                require(most - least < 1.1 * limit,
                        f"{most - least:.0f} MB more than without cells, {limit:.0f} allowed")
                require(free - least > 1.1 * limit,
                        f"without the limit {free - least:.0f} MB, so {limit:.0f} say nothing")
                return most - least

            load.judge(f"{verb[0]} --memory {limit:.0f}M: {file.suffix[1:]} of {rows:,} x 7, "
                       "besides reading", check)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("program", type=Path)
    parser.add_argument("libraries", type=Path)
    parser.add_argument("--share", type=float, default=1.0)
    parser.add_argument("--only", nargs="+", choices=JOBS, default=list(JOBS))
    parser.add_argument("--folder", type=Path, help="where tables are written (default: TMPDIR)")
    given = parser.parse_args()
    with tempfile.TemporaryDirectory(dir=given.folder, prefix="load-") as folder:
        load = Load(given.program.resolve(), given.libraries.resolve(), given.share, Path(folder))
        print("| what | seconds | of the processor | most MB | outcome |\n"
              "| --- | ---: | ---: | ---: | --- |", flush=True)
        for name in given.only:
            JOBS[name](load)
    sys.exit(1 if load.broken else 0)


if __name__ == "__main__":
    main()
