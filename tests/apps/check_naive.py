#!/usr/bin/env python3
"""NAIVEBAYES on the example tables, computed again from its definitions, and laws of its runs.

  check_naive.py PROGRAM LAW      one of the functions below that begin with "law_"

The model here is built from the cells of the table with plain sums, products and logarithms in
Python's doubles. Averages and probabilities are compared to 1e-11, counts and choices exactly.
"""

import csv
import json
import math
import os
import random
import resource
import signal
import subprocess
import sys
import tempfile
import time
from pathlib import Path

from check_program import DATA, run, write_wide_table

CUTS = 10


def read(path):
    with open(path, encoding="utf-8", newline="") as file:
        rows = list(csv.DictReader(file))
    return {name: [row[name] for row in rows] for name in rows[0]}


class Predictor:
    """The categories of one column, and P(category | class) from the training cases."""

    def __init__(self, name, cells, scale, model):
        self.name, self.scale = name, scale
        if scale:
            values = [float(cell) for cell in cells if cell != ""]
            low, width = min(values), (max(values) - min(values)) / CUTS
            self.cuts = [low + i * width for i in range(1, CUTS)]
        self.codes = [self.code(cell) for cell in cells]
        self.counts = {}
        for i in model.training:
            if self.codes[i] is not None:
                row = self.counts.setdefault(self.codes[i], [0] * len(model.classes))
                row[model.y[i]] += 1
        totals = [sum(column) for column in zip(*self.counts.values())]
        n, used = len(model.training), len(self.counts)
        self.empty = [(1 / n) / (used / n + total) for total in totals]
        self.table = {code: [(1 / n + count) / (used / n + total)
                             for count, total in zip(row, totals)]
                      for code, row in self.counts.items()}

    def code(self, cell):
        if cell == "":
            return None
        return sum(cut < float(cell) for cut in self.cuts) if self.scale else cell

    def factors(self, code):
        return self.table.get(code, self.empty)

    def scoring_code(self, cell):
        """A bin without training cases is shared out between its neighbours."""
        code = self.code(cell)
        if code is None or not self.scale or code in self.counts:
            return code
        left = max((c for c in self.counts if c < code), default=None)
        right = min((c for c in self.counts if c > code), default=None)
        if left is None or right is None:
            return right if left is None else left
        return right if float(cell) > (self.cuts[left] + self.cuts[right - 1]) / 2 else left


class Model:
    def __init__(self, table, target, scales, training):
        self.table, self.classes = table, sorted(set(table[target]) - {""})
        self.y = [self.classes.index(cell) if cell else None for cell in table[target]]
        self.training = [i for i, y in enumerate(self.y) if y is not None and training[i]]
        self.test = [i for i, y in enumerate(self.y) if y is not None and not training[i]]
        n, counts = len(self.training), [0] * len(self.classes)
        for i in self.training:
            counts[self.y[i]] += 1
        used = sum(count > 0 for count in counts)
        self.priors = [(count + 1 / n) / (n + used / n) for count in counts]
        self.predictors = [Predictor(name, cells, name in scales, self)
                           for name, cells in table.items() if name != target]

    def log_likelihood(self, joints, cases):
        return sum(math.log(joints[i][self.y[i]] / sum(joints[i])) for i in cases) / len(cases)

    def times(self, joints, predictor):
        return [joint if code is None else
                [p * f for p, f in zip(joint, predictor.factors(code))]
                for joint, code in zip(joints, predictor.codes)]

    def forward(self, forced):
        """[(predictor added, training log-likelihood, test log-likelihood)], the forced first."""
        joints = [list(self.priors) for _ in self.y]
        left, rows = list(self.predictors), []
        for name in forced:
            predictor = next(p for p in left if p.name == name)
            left.remove(predictor)
            joints = self.times(joints, predictor)
        if forced:
            rows.append((None, joints))
        while left:
            tried = [(self.log_likelihood(self.times(joints, p), self.training), p) for p in left]
            best = max(value for value, _ in tried)
            predictor = next(p for value, p in tried if value == best)
            left.remove(predictor)
            joints = self.times(joints, predictor)
            rows.append((predictor, joints))
        return [(predictor, self.log_likelihood(joints, self.training),
                 self.log_likelihood(joints, self.test) if self.test else None)
                for predictor, joints in rows]

    def posteriors(self, chosen):
        for i in range(len(self.y)):
            joint = list(self.priors)
            for predictor in chosen:
                code = predictor.scoring_code(self.table[predictor.name][i])
                if code is not None:
                    joint = [p * f for p, f in zip(joint, predictor.factors(code))]
            yield [p / sum(joint) for p in joint]


def drawn(cases, percent):
    """The training cases of PERCENT: MT19937 from seed 5489, 53 bits a draw."""
    words = [5489]
    for i in range(1, 624):
        words.append((1812433253 * (words[-1] ^ (words[-1] >> 30)) + i) & 0xffffffff)
    twister = random.Random()
    twister.setstate((3, (*words, 624), None))
    return [twister.random() < percent * 0.01 for _ in range(cases)]


def cells_of(document, subtype):
    table = next(t for t in document["tables"] if t["subtype"] == subtype)
    return {(*cell["row"], "|", *cell["column"], "|", *cell["layer"]): cell["value"]
            for cell in table["cells"]}


def near(seen, expected, what):
    assert abs(seen - expected) <= 1e-11 * max(1.0, abs(expected)), (what, seen, expected)


def check_run(program, folder, name, target, scales, options, forced=(), percent=None):
    """One run with selection against the model above: tables, saved variables, counts."""
    table = read(DATA / name)
    training = drawn(len(table[target]), percent) if percent else [True] * len(table[target])
    model = Model(table, target, scales, training)
    factors = [p.name for p in model.predictors if not p.scale and p.name not in forced]
    candidates = [p.name for p in model.predictors if p.scale and p.name not in forced]
    command = f"NAIVEBAYES {target} " + ("BY " + " ".join(factors) if factors else "")
    command += f" WITH {' '.join(candidates)} {options} /SAVE PREDVAL PREDPROB(p)."
    result = run(program, folder, "--data", str(DATA / name), "--format", "json", "-c", command,
                 "--save-data", "saved.csv", "--force")
    assert result.returncode == 0, result.stderr
    document = json.loads(result.stdout)["runs"][0]

    subsets, by_test = cells_of(document, "SubsetSummary"), "TESTDATA" in options
    rows, first, n = model.forward(forced), 0 if forced else 1, len(model.training)
    ranked = []
    for step, (predictor, log_likelihood, test) in enumerate(rows, first):
        size = len(forced) + step
        bic = 0.5 * size * math.log(n) / n - log_likelihood
        ranked.append((-test if by_test else bic, step))
        key = (str(step), "|")
        if predictor:
            assert subsets[(*key, "Predictor Added", "|")] == predictor.name, (step, predictor.name)
        near(subsets[(*key, "Average Log-Likelihood", "|")], log_likelihood, key)
        near(subsets[(*key, "Test Data Criterion" if by_test else "Pseudo-BIC", "|")],
             ranked[-1][0], key)
    for rank, (_, step) in enumerate(sorted(ranked), 1):
        assert subsets[(str(step), "|", "Rank", "|")] == rank, step

    added = {predictor for predictor, _, _ in rows[:min(ranked)[1] + 1 - first]}
    chosen = [p for p in model.predictors if p in added]
    chosen += [p for p in model.predictors if p.name in forced]
    selected = cells_of(document, "SelectedPredictors")
    for kind, scale in (("Categorical", False), ("Scale", True)):
        names = [p.name for p in chosen if p.scale == scale]
        assert selected.get((kind, "|", "Predictors", "|"), []) == names, (kind, names)

    saved, counts = read(folder / "saved.csv"), {}
    for i, posterior in enumerate(model.posteriors(chosen)):
        winner = posterior.index(max(posterior))
        assert saved["PredictedValue"][i] == model.classes[winner], i
        for k, probability in enumerate(posterior):
            near(float(saved[f"p_{k + 1}"][i]), probability, (i, k))
        if model.y[i] is not None:
            layer = "Training" if training[i] else "Test"
            key = ("Values", table[target][i], "|", "Values", model.classes[winner], "|", layer)
            counts[key] = counts.get(key, 0) + 1
    shown = {key: value for key, value in cells_of(document, "Classification").items()
             if key[0] == "Values" and key[3] == "Values" and value}
    assert shown == counts, (shown, counts)


def law_runs_agree_with_their_definitions(program, folder):
    biopsies = [name for name in read(DATA / "biopsies.csv") if name != "diagnosis"]
    lengths = ["bill_length_mm", "bill_depth_mm", "flipper_length_mm", "body_mass_g"]
    plenty = "/CRITERIA MEMALLOCATE=100000"
    check_run(program, folder, "biopsies.csv", "diagnosis", biopsies, plenty + " /SUBSET MAXSIZE=30")
    check_run(program, folder, "biopsies.csv", "diagnosis", biopsies,
              plenty + " /TRAININGSAMPLE PERCENT=60 /SUBSET MAXSIZE=30(BESTSUBSET=TESTDATA)",
              percent=60)
    check_run(program, folder, "penguins.csv", "species", lengths, plenty)
    check_run(program, folder, "penguins.csv", "sex", lengths,
              plenty + " /FORCE FACTORS=species COVARIATES=bill_depth_mm"
              " /TRAININGSAMPLE PERCENT=70 /SUBSET MAXSIZE=AUTO(BESTSUBSET=TESTDATA)",
              forced=("species", "bill_depth_mm"), percent=70)


def law_storage_changes_nothing(program, folder):
    """The same document and saved cells, from memory and streamed, from CSV and from Parquet."""
    write_wide_table(folder / "wide.csv", 6000, 25)
    made = run(program, folder, "--data", "wide.csv", "-c", "SELECTPRED y /PRINT NONE.",
               "--save-data", "wide.parquet")
    assert made.returncode == 0, made.stderr
    for options in ("/SUBSET MAXSIZE=6(BESTSUBSET=TESTDATA) /CRITERIA MEMALLOCATE=100000",
                    "/CRITERIA MEMALLOCATE=4"):
        seen = set()
        for file in ("wide.csv", "wide.parquet"):
            for storage in ([], ["--stream"]):
                result = run(program, folder, "--data", file, "--format", "json", "-c",
                             "NAIVEBAYES y /EXCEPT VARIABLES=w /TRAININGSAMPLE PERCENT=70"
                             f" {options} /SAVE PREDVAL PREDPROB /OUTFILE MODEL='m.xml'.",
                             "--save-data", "saved.csv", "--force", *storage)
                assert result.returncode == 0, result.stderr
                seen.add(result.stdout.replace(file, "wide") +
                         (folder / "saved.csv").read_text(encoding="utf-8"))
        assert len(seen) == 1, "documents or saved cells differ"


def law_saved_variables_reach_every_format(program, folder):
    command = "NAIVEBAYES species /SAVE PREDVAL(pred) PREDPROB(prob:2) /PRINT NONE."
    for extension in ("csv", "parquet", "feather"):
        result = run(program, folder, "--data", str(DATA / "penguins.csv"), "-c", command,
                     "--save-data", f"out.{extension}")
        assert result.returncode == 0, result.stderr
        again = run(program, folder, "--data", f"out.{extension}", "-c",
                    "SELECTPRED species /PRINT NONE.", "--save-data", f"{extension}.csv")
        assert again.returncode == 0, again.stderr
    texts = {(folder / f"{e}.csv").read_text(encoding="utf-8")
             for e in ("csv", "parquet", "feather")}
    assert len(texts) == 1, "the formats hold different cells"
    saved, original = read(folder / "csv.csv"), read(DATA / "penguins.csv")
    assert list(saved) == [*original, "pred", "prob_1", "prob_2"], list(saved)
    assert saved["pred"][0] == "Adelie" and 0.5 < float(saved["prob_1"][0]) <= 1


def law_a_stop_leaves_no_file(program, folder):
    """Ctrl-C or a closed terminal while the model is built or cases are scored: no temporary file."""
    write_wide_table(folder / "long.csv", 40000, 30)
    (folder / "tmp").mkdir()
    for delay, stop in ((0.4, signal.SIGHUP), (0.9, signal.SIGINT), (1.6, signal.SIGTERM)):
        process = subprocess.Popen(
            [program, "run", "--data", "long.csv", "--save-data", "saved.csv", "-o", "page.txt",
             "-c", "\n".join(["NAIVEBAYES y /CRITERIA MEMALLOCATE=4 TIMER=0 /SAVE PREDVAL"
                              " /OUTFILE MODEL='m.xml'."] * 30)],
            cwd=folder, env={**os.environ, "TMPDIR": str(folder / "tmp")},
            stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        time.sleep(delay)
        process.send_signal(stop)
        _, errors = process.communicate(timeout=60)
        assert process.returncode == 130, (process.returncode, errors)
        left = {path.name for path in folder.iterdir()} - {"long.csv", "tmp", "m.xml", "page.txt"}
        assert not left and not list((folder / "tmp").iterdir()), left


def law_a_full_temporary_disk_is_said(program, folder):
    """Cases that do not fit in memory and find no room on disk either: one error, no result."""
    def little_room():
        signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
        resource.setrlimit(resource.RLIMIT_FSIZE, (65536, 65536))

    write_wide_table(folder / "wide.csv", 3000, 20)
    arguments = ["--data", "wide.csv", "-c",
                 "NAIVEBAYES y /CRITERIA MEMALLOCATE=4 /OUTFILE MODEL='m.xml'."]
    full = run(program, folder, *arguments, preexec_fn=little_room)
    absent = run(program, folder, *arguments, env={**os.environ, "TMPDIR": str(folder / "none")})
    for result in (full, absent):
        assert result.returncode == 1, result
        assert "temporary file" in result.stderr, result.stderr
        assert "Classification" not in result.stdout, result.stdout
        assert {path.name for path in folder.iterdir()} == {"wide.csv"}
    assert str(folder / "none") in absent.stderr, absent.stderr


def main():
    program, law = str(Path(sys.argv[1]).resolve()), globals()["law_" + sys.argv[2]]
    with tempfile.TemporaryDirectory() as folder:
        law(program, Path(folder))
    print(f"{sys.argv[2]}: holds")


if __name__ == "__main__":
    main()
