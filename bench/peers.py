#!/usr/bin/env python3
"""The same jobs done by PredSelect and by what else is at hand, in one run.

  .venv-peers/bin/python3 bench/peers.py BUILD [--cases 1000000] [--repeats 5] [--only TEXT]

BUILD is a release build. Whole processes take turns, ours and theirs; times are the best of the
repeats, memory is the most that one run held, x is ours by theirs. Theirs are single processes of
Python that import nothing but what they need. What runs in memory is counted without reading: ours
by the benchmarks of the build, theirs around the call alone, both on one thread. The tables are
made once and kept in build/bench-data.
"""

import argparse
import json
import os
import platform
import subprocess
import sys
import time
from pathlib import Path

DATA = Path(__file__).resolve().parents[1] / "build" / "bench-data"
COLUMNS = 50
ONE_THREAD = {name: "1" for name in
              ("OMP_NUM_THREADS", "OPENBLAS_NUM_THREADS", "MKL_NUM_THREADS", "POLARS_MAX_THREADS")}
RANKING = ["-c", "SELECTPRED y /CRITERIA TIMER=0 /PRINT SUMMARY."]
TRAINING = ["-c", "NAIVEBAYES y /SUBSET NOSELECTION /CRITERIA TIMER=0 /PRINT CLASSIFICATION."]

# Theirs, each with a path as its argument. Counts, means and variances of every column by class are
# what F needs.
GROUPS = f"""
import duckdb, sys
parts = ", ".join(f"count({{n}}), avg({{n}}), var_samp({{n}})" for n in
                  (f"x{{j}}" for j in range({COLUMNS})))
print(len(duckdb.sql(f"select y, {{parts}} from '{{sys.argv[1]}}' group by y").fetchall()))
"""
# As a dataframe user would.
FRAME = """
import polars, sklearn.feature_selection as fs, sys
read = polars.read_csv if sys.argv[1].endswith("csv") else polars.read_parquet
table = read(sys.argv[1])
y = table["y"].rank("dense").to_numpy()
print(fs.f_classif(table.drop("y").to_numpy(), y)[0].argmax())
"""
PLAIN_SUM = """
import pyarrow, pyarrow.compute as pc, sys
with pyarrow.memory_map(sys.argv[1]) as source:
    table = pyarrow.ipc.open_file(source).read_all()
    print(sum(pc.sum(table[name]).as_py() for name in table.column_names if name != "y"))
"""


def make_tables(cases):
    """A class of three that shifts fifty scale columns, each less than the one before."""
    DATA.mkdir(parents=True, exist_ok=True)
    stem = DATA / f"scale-{cases}"
    paths = {kind: stem.with_suffix("." + kind) for kind in ("csv", "parquet", "arrow")}
    if all(path.exists() for path in paths.values()):
        return paths
    import numpy as np
    import pyarrow as pa
    import pyarrow.csv
    import pyarrow.feather
    import pyarrow.parquet
    random = np.random.default_rng(1)
    y = random.integers(0, 3, cases)
    columns = {"y": pa.array(np.array(["high", "low", "middle"])[y])}
    for j in range(COLUMNS):
        columns[f"x{j}"] = pa.array(np.round(random.normal(y / (2.0 + j), 1.0), 4))
    table = pa.table(columns)
    pa.csv.write_csv(table, paths["csv"])
    pa.parquet.write_table(table, paths["parquet"], compression="zstd")
    pa.feather.write_feather(table, paths["arrow"], compression="uncompressed")
    return paths


class Best:
    """The least time and the most memory of the runs of a command."""

    def __init__(self, command, env=None):
        self.command, self.env = [str(word) for word in command], {**os.environ, **(env or {})}
        self.seconds, self.megabytes = float("inf"), 0.0

    def run(self):
        start = time.perf_counter()
        process = subprocess.Popen(self.command, env=self.env, stdout=subprocess.DEVNULL,
                                   stderr=subprocess.PIPE)
        errors = process.stderr.read()
        _, status, usage = os.wait4(process.pid, 0)
        if status != 0:
            sys.exit(f"{self.command} failed: {errors.decode()[-500:]}")
        self.seconds = min(self.seconds, time.perf_counter() - start)
        self.megabytes = max(self.megabytes, usage.ru_maxrss / 1024)


def whole_processes(program, paths, repeats):
    """(job, peer, ours, theirs) of jobs from a file to an answer."""
    def ours(job, kind):
        return [program, "run", "--data", paths[kind], *job, "--quiet"]

    def theirs(script, kind):
        return [sys.executable, "-c", script, paths[kind]]

    jobs = []
    for kind in ("csv", "parquet"):
        jobs += [(f"ranking, {kind}", "DuckDB, group by", ours(RANKING, kind),
                  theirs(GROUPS, kind)),
                 (f"ranking, {kind}", "polars and f_classif", ours(RANKING, kind),
                  theirs(FRAME, kind))]
    jobs += [("ranking, arrow", "Arrow, sum of the columns", ours(RANKING, "arrow"),
              theirs(PLAIN_SUM, "arrow")),
             ("model of all, parquet", "", ours(TRAINING, "parquet"), None)]
    for job, peer, mine, other in jobs:
        best = [Best(command) for command in (mine, other) if command]
        for _ in range(repeats):
            for one in best:
                one.run()
        yield job, peer, best[0], best[1] if other else None


def counters(build, name, pattern):
    """What a benchmark of the build says, by the names of its runs."""
    printed = subprocess.run([build / "bin" / name, "--benchmark_format=json",
                              f"--benchmark_filter={pattern}"],
                             capture_output=True, check=True, text=True).stdout
    return {run["name"]: run for run in json.loads(printed)["benchmarks"]}


def best_of(call, repeats):
    seconds = []
    for _ in range(repeats):
        start = time.perf_counter()
        call()
        seconds.append(time.perf_counter() - start)
    return min(seconds)


def in_memory(build, repeats):
    """(job, peer, our nanoseconds, theirs), each for a cell and on one thread."""
    import numpy as np
    from scipy.stats import chi2_contingency
    from sklearn.feature_selection import SequentialFeatureSelector, f_classif, f_regression
    from sklearn.naive_bayes import CategoricalNB
    random = np.random.default_rng(1)
    cases, columns = 200_000, 20
    cells = cases * columns
    x = random.normal(size=(cases, columns))
    classes = random.integers(0, 3, cases)
    codes = random.integers(0, 8, (cases, columns))
    passes = counters(build, "feature_pass_bench", "DataPass")

    def pass_of(predictors, target):
        return passes[f"DataPass/categorical_predictors:{predictors}/categorical_target:{target}"
                      "/weights:0/threads:1/manual_time"]["ns_per_cell"]

    def chi_squares():
        for j in range(columns):
            counts = np.bincount(codes[:, j] * 3 + classes, minlength=24).reshape(8, 3)
            chi2_contingency(counts)

    for job, peer, mine, call in (
            ("scale x classes", "f_classif", pass_of(0, 1), lambda: f_classif(x, classes)),
            ("scale x scale", "f_regression", pass_of(0, 0), lambda: f_regression(x, x[:, 0])),
            ("classes x classes", "bincount, chi2_contingency", pass_of(1, 1), chi_squares)):
        yield job, peer, mine, best_of(call, repeats) / cells * 1e9
    naive = counters(build, "naivebayes_bench",
                     "BM_(Training/cases:200000|Scoring/blocks:1/classes:3)/threads:1")
    model = CategoricalNB().fit(codes, classes)
    yield ("training", "CategoricalNB.fit",
           naive["BM_Training/cases:200000/threads:1/real_time"]["cell"] * 1e9,
           best_of(lambda: CategoricalNB().fit(codes, classes), repeats) / cells * 1e9)
    yield ("scoring, 3 classes", "predict_proba",
           naive["BM_Scoring/blocks:1/classes:3/threads:1/real_time"]["cell_class"] * 3e9,
           best_of(lambda: model.predict_proba(codes), repeats) / cells * 1e9)

    cases, columns = 20_000, 50
    codes = random.integers(0, 8, (cases, columns))
    classes = random.integers(0, 3, cases)
    selector = SequentialFeatureSelector(CategoricalNB(min_categories=8), n_features_to_select=5,
                                         cv=5, n_jobs=1)
    name = "BM_ForwardSelection/cases:5000/classes:3/threads:1"
    step = counters(build, "naivebayes_bench", name)
    each = step[f"{name}/real_time"]["record_candidate_class"] * 1e9
    candidates = sum(columns - taken for taken in range(5))  # that five steps look at
    yield ("selection of 5 of 50, a cell", "SequentialFeatureSelector",
           each * candidates * 3 / columns,
           best_of(lambda: selector.fit(codes, classes), 1) / (cases * columns) * 1e9)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("build", type=Path)
    parser.add_argument("--cases", type=int, default=1_000_000)
    parser.add_argument("--repeats", type=int, default=5)
    parser.add_argument("--only", default="",
                        help="'files', 'memory' or 'tables' (made, not read); all unless given")
    options = parser.parse_args()
    if options.only == "tables":
        make_tables(options.cases)
        return
    if options.only != "memory":
        print(f"{platform.machine()}, {os.cpu_count()} cores, {time.strftime('%Y-%m-%d')}, "
              f"{options.cases:,} cases, {COLUMNS} scale columns\n")
        print("| job | beside | ours s | theirs s | x | ours MB | theirs MB |")
        print("| --- | --- | --- | --- | --- | --- | --- |")
        # In a process of its own: what this one holds would count as memory of those it starts.
        subprocess.run([sys.executable, __file__, options.build, "--only", "tables", "--cases",
                        str(options.cases)], check=True)
        paths = make_tables(options.cases)
        for job, peer, mine, other in whole_processes(options.build / "bin" / "predselect", paths,
                                                      options.repeats):
            theirs = ("", "", "") if other is None else (
                f"{other.seconds:.2f}", f"{mine.seconds / other.seconds:.2f}",
                f"{other.megabytes:.0f}")
            print(f"| {job} | {peer} | {mine.seconds:.2f} | {theirs[0]} | {theirs[1]} | "
                  f"{mine.megabytes:.0f} | {theirs[2]} |", flush=True)
        # A library reads its number of threads when it is imported.
        print(flush=True)
        if not options.only:
            sys.exit(subprocess.call([sys.executable, __file__, options.build, "--only", "memory"],
                                     env={**os.environ, **ONE_THREAD}))
        return
    print("| in memory, one thread | beside | ours ns a cell | theirs | times as fast |")
    print("| --- | --- | --- | --- | --- |")
    for job, peer, mine, other in in_memory(options.build, options.repeats):
        print(f"| {job} | {peer} | {mine:.2f} | {other:.2f} | {other / mine:.1f} |", flush=True)


if __name__ == "__main__":
    main()
