#!/usr/bin/env python3
"""Holds F and t against exact arithmetic on the same doubles, beside a plain running update.

    check_digits.py PROGRAM

The program sums steps from an origin in lanes, and puts segments of 1,024 values together. Beside
it stands the textbook way, a mean and squared deviations updated case by case (West 1979), and the
value of fractions without rounding. Tables are the nine one-way layouts of NIST's Statistical
Reference Datasets (SmLs01 to SmLs09, made here as in tests/feature/OrderOfSums_test.cpp) and those
of the folder data. Prints a table for docs/performance.md; fails where the program is not as near
to the exact values as it says.
"""

import csv
import json
import math
import subprocess
import sys
import tempfile
from fractions import Fraction
from pathlib import Path

DATA = Path(__file__).resolve().parents[2] / "data"


class Running:
    """Mean and squared deviations of values, updated by each in turn."""

    def __init__(self):
        self.n, self.mean, self.squares = 0, 0.0, 0.0

    def add(self, x):
        """Returns the step of the mean."""
        step = x if self.n == 0 else 1.0 / (self.n + 1.0) * (x - self.mean)
        if self.n > 0:
            self.squares += (self.n + 1.0) * step * self.n * step
        self.mean += step
        self.n += 1
        return step


def running_f(groups, values):
    overall, parts = Running(), {}
    for group, x in zip(groups, values):
        overall.add(x)
        parts.setdefault(group, Running()).add(x)
    between = within = 0.0
    for part in parts.values():
        between += part.n * (part.mean - overall.mean) * (part.mean - overall.mean)
        within += (part.n - 1.0) * (part.squares / (part.n - 1.0))
    return between / (len(parts) - 1.0) / (within / (overall.n - len(parts)))


def running_t(xs, ys):
    x_part, y_part, products = Running(), Running(), 0.0
    for x, y in zip(xs, ys):
        n = x_part.n
        step_x, step_y = x_part.add(x), y_part.add(y)
        products += (n + 1.0) * step_x * n * step_y
    n = float(x_part.n)
    r = products / (n - 1.0) / math.sqrt(x_part.squares / (n - 1.0))
    r /= math.sqrt(y_part.squares / (n - 1.0))
    return r * math.sqrt((n - 2.0) / (1.0 - r * r))


def deviations(xs, ys):
    """The exact sum of products of deviations, and the means."""
    n = len(xs)
    xs, ys = list(map(Fraction, xs)), list(map(Fraction, ys))
    return sum(x * y for x, y in zip(xs, ys)) - sum(xs) * sum(ys) / n


def exact_f(groups, values):
    parts = {}
    for group, x in zip(groups, values):
        parts.setdefault(group, []).append(x)
    within = sum(deviations(part, part) for part in parts.values())
    between = deviations(values, values) - within
    return between / (len(parts) - 1) / (within / (len(values) - len(parts)))


def exact_t(xs, ys):
    """To 60 digits: the root is not a fraction."""
    xy = deviations(xs, ys)
    square = xy * xy / (deviations(xs, xs) * deviations(ys, ys))
    square = square / (1 - square) * (len(xs) - 2)
    digits = 10**60
    root = Fraction(math.isqrt(square.numerator * digits**2 // square.denominator), digits)
    return root if xy > 0 else -root


def one_way_layout(base, replicates):
    """(treatment, value): tenths around the base, 0.1 below and above the treatment's mean."""
    rows = []
    for treatment in range(9):
        mean = 4 if treatment == 0 else (3 if treatment % 2 == 1 else 5)
        for k in range(replicates):
            tenths = mean if k == 0 else (mean - 1 if k % 2 == 1 else mean + 1)
            rows.append((f"t{treatment}", repr(base + tenths / 10.0)))
    return [{"treatment": t, "value": v} for t, v in rows]


def tests_of(program, path, target):
    """{predictor: (F or t, value)} as the program computes them."""
    command = f"SELECTPRED {target} /SCREENING STATUS=OFF /CRITERIA TIMER=0 /PRINT EFFECTS."
    printed = subprocess.run([program, "run", "--data", path, "-c", command, "--format", "json"],
                             check=True, capture_output=True, text=True).stdout
    found = {}
    for table in json.loads(printed)["runs"][0]["tables"]:
        if table["subtype"] != "PredictorEffects":
            continue
        for cell in table["cells"]:
            if cell["column"][:1] == ["Test"] and cell["column"][-1] in ("Type", "Value"):
                found.setdefault(cell["row"][0], []).append(cell["value"])
    return {name: tuple(pair) for name, pair in found.items() if pair[0] in ("F", "t")}


def figures(program, path, rows, target):
    """(program's, running, exact) for each predictor."""
    for predictor, (kind, ours) in tests_of(program, path, target).items():
        pairs = [(row[predictor], row[target]) for row in rows
                 if row[predictor] not in ("", "NA") and row[target] not in ("", "NA")]
        if kind == "t":
            xs, ys = ([float(pair[k]) for pair in pairs] for k in (0, 1))
            yield ours, running_t(xs, ys), exact_t(xs, ys)
            continue
        by_target = any(not is_number(value) for _, value in pairs)
        groups = [pair[1 if by_target else 0] for pair in pairs]
        values = [float(pair[0 if by_target else 1]) for pair in pairs]
        yield ours, running_f(groups, values), exact_f(groups, values)


def is_number(text):
    try:
        return math.isfinite(float(text))
    except ValueError:
        return False


def error(value, exact):
    return float(abs((Fraction(value) - exact) / exact))


def compare(title, found):
    """Prints a row; returns its numbers."""
    errors = [(error(theirs, exact), error(ours, exact)) for ours, theirs, exact in found]
    counts = [len(errors), sum(a != b for a, b in errors), sum(b < a for a, b in errors),
              sum(b > a for a, b in errors)]
    worst = [max(pair[k] for pair in errors) for k in (0, 1)]
    print(f"| {title} | {' | '.join(map(str, counts))} | {worst[0]:.1e} | {worst[1]:.1e} |",
          flush=True)
    return counts, worst[1]


def layouts(folder):
    for number in range(9):
        rows = one_way_layout((1.0, 1e6, 1e12)[number // 3], (21, 201, 2001)[number % 3])
        path = Path(folder, f"layout{number}.csv")
        path.write_text("treatment,value\n" + "".join(
            f"{row['treatment']},{row['value']}\n" for row in rows))
        yield f"SmLs0{number + 1}", path, rows, "treatment"


def tables():
    for name, target in (("penguins", "species"), ("penguins", "body_mass_g"),
                         ("biopsies", "diagnosis"), ("biopsies", "mean_radius")):
        path = DATA / f"{name}.csv"
        with open(path, newline="", encoding="utf-8") as source:
            yield f"{name} by {target}", path, list(csv.DictReader(source)), target


def main():
    program = sys.argv[1]
    print("| table | figures | differ | now nearer | now farther | error before | error now |")
    print("| --- | --- | --- | --- | --- | --- | --- |")
    with tempfile.TemporaryDirectory() as folder:
        results = [compare(title, figures(program, path, rows, target))
                   for title, path, rows, target in (*layouts(folder), *tables())]
    total, _, nearer, farther = (sum(counts) for counts in zip(*(counts for counts, _ in results)))
    print(f"\n{total} figures, {nearer} nearer and {farther} farther than by a running update")
    if not nearer > farther or max(worst for _, worst in results) > 1e-12:
        sys.exit("check_digits: figures are farther from the exact ones than they were")


if __name__ == "__main__":
    main()
