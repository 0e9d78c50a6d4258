#!/usr/bin/env python3
"""What whole runs of the program cost, in time and memory, from the start of the process to its end.

  .venv/bin/python3 bench/end_to_end.py [OLD] NEW [--cases 1000000] [--repeats 3]

The table has 25 scale, 15 integer-coded and 10 string-coded predictors of a target of three classes,
2 % of the cells missing; it is made once for each number of cases and kept in build/bench-data. Two
programs take turns. Times are the best of the repeats, memory is the highest; x is new by old.
Needs pyarrow.
"""

import argparse
import multiprocessing
import os
import subprocess
import tempfile
import time
from pathlib import Path

DATA = Path(__file__).resolve().parents[1] / "build" / "bench-data"
CASES_AT_A_TIME = 100_000

MODEL = "NAIVEBAYES y /SUBSET NOSELECTION /CRITERIA TIMER=0"
RANKING = ["-c", "SELECTPRED y /CRITERIA TIMER=0."]
# Each works on the table, the last one with the model that another has left.
JOBS = {
    "SELECTPRED, Parquet": ["run", "--data", "{}.parquet", *RANKING],
    "SELECTPRED, CSV": ["run", "--data", "{}.csv", *RANKING],
    "NAIVEBAYES, all predictors": ["run", "--data", "{}.parquet", "-c", f"{MODEL}.",
                                   "--save-state", "model.bin"],
    "NAIVEBAYES, predictions saved": ["run", "--data", "{}.parquet", "-c",
                                      f"{MODEL} /SAVE PREDVAL PREDPROB.",
                                      "--save-data", "out.parquet"],
    "score": ["score", "--model", "model.bin", "--data", "{}.parquet", "--save-data",
              "scored.parquet"],
}


def make_batch(cases, first_seed):
    """The classes shift scale predictors and skew categories, of later columns less and less."""
    import pyarrow as pa
    import pyarrow.compute as pc
    seeds = iter(range(first_seed, first_seed + 1000))

    def uniform():
        return pc.random(cases, initializer=next(seeds))

    def whole(values):
        return pc.cast(pc.floor(values), pa.int32())

    def with_missing(values):
        return pc.if_else(pc.less(uniform(), 0.02), None, values)

    y = whole(pc.multiply(uniform(), 3.0))
    shift = pc.cast(y, pa.float64())
    columns = {"y": pc.take(pa.array(["high", "low", "middle"]), y)}
    for j in range(25):
        noise = pc.add(pc.add(uniform(), uniform()), uniform())
        columns[f"scale{j}"] = with_missing(pc.round(pc.add(noise, pc.divide(shift, 2.0 + j)), 4))
    for j in range(25):
        n = 3 + 17 * j // 14 if j < 15 else 2 * j - 20
        skew = pc.power(uniform(), pc.add(1.0, pc.divide(shift, 1.0 + j)))
        code = whole(pc.multiply(skew, float(n)))
        if j < 15:
            columns[f"code{j}"] = with_missing(code)
        else:
            words = pa.array([f"word {k}" for k in range(n)])
            columns[f"text{j - 15}"] = with_missing(pc.take(words, code))
    return pa.table(columns)


def make_table(path, cases):
    """Both files, written under another name first: a table that is there is whole."""
    import pyarrow.csv
    import pyarrow.parquet
    path.parent.mkdir(parents=True, exist_ok=True)
    parts = [path.with_suffix(f".part{form}") for form in (".parquet", ".csv")]
    schema = make_batch(1, 0).schema
    with pyarrow.parquet.ParquetWriter(parts[0], schema, compression="zstd") as parquet, \
            pyarrow.csv.CSVWriter(parts[1], schema) as delimited:
        for first in range(0, cases, CASES_AT_A_TIME):
            batch = make_batch(min(CASES_AT_A_TIME, cases - first), first)
            parquet.write_table(batch)
            delimited.write_table(batch)
    for part, form in zip(parts, (".parquet", ".csv")):
        part.rename(path.with_suffix(form))


def measure(program, args, folder):
    """Seconds by the clock, seconds of work, MiB at most, of one process."""
    start = time.perf_counter()
    process = subprocess.Popen([program, *args], cwd=folder, stdout=subprocess.DEVNULL,
                               stderr=subprocess.DEVNULL)
    _, status, used = os.wait4(process.pid, 0)
    wall = time.perf_counter() - start
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        raise SystemExit(f"{program} ended in {process.returncode}: {' '.join(args)}")
    return wall, used.ru_utime + used.ru_stime, used.ru_maxrss / 1024


def best(runs):
    walls, works, sizes = zip(*runs)
    return min(walls), min(works), max(sizes)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("programs", nargs="+", metavar="[OLD] NEW", help="one or two builds")
    parser.add_argument("--cases", type=int, default=1_000_000)
    parser.add_argument("--repeats", type=int, default=3)
    given = parser.parse_args()
    programs = [str(Path(program).resolve(strict=True)) for program in given.programs]
    table = DATA / f"cases{given.cases}"
    if not all(table.with_suffix(form).exists() for form in (".parquet", ".csv")):
        # In a process of its own: what this one holds would count as memory of those it starts.
        maker = multiprocessing.Process(target=make_table, args=(table, given.cases))
        maker.start()
        maker.join()
        if maker.exitcode != 0:
            raise SystemExit("the table could not be made")
    print(f"{given.cases} cases, best of {given.repeats}" + "".join(
        f"\n{'old' if i < len(programs) - 1 else 'new'}: {path}" for i, path in enumerate(programs)))
    columns = ["wall s", "work s", "MiB"]
    print(f"{'':30}" + "".join(f"{name:>10}" for name in columns * len(programs))
          + (f"{'wall x':>10}{'work x':>10}{'MiB x':>10}" if len(programs) > 1 else ""))
    with tempfile.TemporaryDirectory(dir=DATA) as parent:
        folders = [Path(parent, str(i)) for i in range(len(programs))]
        for folder in folders:
            folder.mkdir()
        for job, args in JOBS.items():
            args = [arg.replace("{}", str(table)) for arg in args]
            turns = [[measure(program, args, folder) for program, folder in zip(programs, folders)]
                     for _ in range(given.repeats)]
            found = [best(runs) for runs in zip(*turns)]
            ratios = [new / old for old, new in zip(found[0], found[-1]) if len(found) > 1]
            print(f"{job:30}" + "".join(f"{wall:10.2f}{work:10.2f}{size:10.0f}"
                                        for wall, work, size in found)
                  + "".join(f"{ratio:10.2f}" for ratio in ratios), flush=True)


if __name__ == "__main__":
    main()
