#!/usr/bin/env python3
"""Laws of whole results over random tables: what must not change them.

  check_laws.py PROGRAM LAW SEED...      one of the functions below that begin with "law_"

Each law runs the same commands over a random table and over the same table told otherwise, and
compares the whole JSON documents: statistics to 1e-12 of themselves, all else exactly. What is one
minus a probability, or its logarithm, is no better than the probability: significances, average
log-likelihoods and the criterion made of them are compared to 1e-12. The order of equal predictors
follows the data's columns, and TRAININGSAMPLE PERCENT draws by the order of cases; neither is asked
for here.
"""

import csv
import json
import random
import re
import subprocess
import sys
import tempfile
from pathlib import Path

TOLERANCE = 1e-12
LEAST = 0.01  # differences of means that all but cancel have no more digits


class Table:
    """Columns by name, all cells as text; "" is missing."""

    def __init__(self, columns):
        self.columns = columns

    def write(self, path):
        with open(path, "w", encoding="utf-8", newline="") as file:
            writer = csv.writer(file)
            writer.writerow(self.columns)
            writer.writerows(zip(*self.columns.values()))

    def size(self):
        return len(next(iter(self.columns.values())))

    def rows(self, indices):
        return Table({name: [cells[i] for i in indices] for name, cells in self.columns.items()})


def random_table(draw):
    """Targets, factors and covariates of many shapes, about a tenth of the cells missing."""
    n = draw.choice([12, 40, 150, 400])
    classes = draw.sample(["10", "9", "2.5", "-1", "33"] if draw.random() < 0.3 else
                          ["b", "a", "Z", "\u00e4", "c c"], draw.choice([2, 3, 5]))
    y = [draw.choice(classes) for _ in range(n)]
    z = [draw.gauss(50, 10) for _ in range(n)]

    def hidden(share=None):
        lost = draw.choice([0, 0, 0.1, 0.8]) if share is None else share
        return lambda cell: "" if draw.random() < lost else cell

    def factor():
        k = draw.choice([1, 2, 4, 12, n])
        pull = draw.random()
        return [str(classes.index(a) % k if draw.random() < pull else draw.randrange(k)) + "xyz"[k % 3]
                for a in y]

    def covariate():
        shift, pull = draw.choice([0, 0, 1]), draw.choice([0, 0.3, 3])
        digits = draw.choice([0, 2, 12])
        return [f"{round(shift + draw.gauss(classes.index(a) * pull + b * pull / 9, 1), digits):.12g}"
                for a, b in zip(y, z)]

    columns = {"y": list(map(hidden(0.05), y)), "z": [hidden(0.05)(f"{b:.9g}") for b in z]}
    for i in range(draw.randrange(1, 6)):
        columns[f"f{i}"] = list(map(hidden(), factor()))
    for i in range(draw.randrange(1, 6)):
        columns[f"c{i}"] = list(map(hidden(), covariate()))
    columns["w"] = [str(draw.choice([1, 1, 2, 3, 7])) for _ in range(n)]
    columns["t"] = [str(draw.choice([0, 1, 1, 1])) for _ in range(n)]
    return Table(columns)


def commands(draw, table):
    """One text of commands over the table's variables, each kind of result asked for."""
    factors = " ".join(name for name in table.columns if name[0] == "f")
    scales = " ".join(name for name in table.columns if name[0] == "c")
    screening = draw.choice(["", "/SCREENING PCTMISSING=40 PCTEQUAL=80", "/SCREENING STATUS=OFF"])
    criteria = draw.choice(["", " PCUTOFF=1 RANKING=LRCHISQ", " PCUTOFF=0.2 RANKING=LAMBDA",
                            " RANKING=CRAMERSV"])
    ranking = f"{screening} /CRITERIA TIMER=0 SHOWUNSELECTED=99{criteria} /PLOT SUMMARY"
    subset = draw.choice(["", "/SUBSET MAXSIZE=1", "/SUBSET EXACTSIZE=1", "/SUBSET NOSELECTION"])
    text = []
    for predictors in (f"BY {factors} WITH {scales}", f"BY {factors}", f"WITH {scales}"):
        text.append(f"SELECTPRED y (MLEVEL=N) {predictors} {ranking}.")
        text.append(f"SELECTPRED z (MLEVEL=S) {predictors} {ranking}.")
        text.append(f"NAIVEBAYES y {predictors} {subset} /CRITERIA TIMER=0.")
    text.append(f"NAIVEBAYES y BY {factors} WITH {scales} /TRAININGSAMPLE VARIABLE=t "
                "/SUBSET MAXSIZE=AUTO(BESTSUBSET=TESTDATA) /CRITERIA TIMER=0 "
                "/PRINT CPS EXCLUDED SUMMARY SELECTED CLASSIFICATION "
                "/SAVE PREDVAL(p) PREDPROB(q:2).")
    return "\n".join(text)


def read_predictions(path):
    with open(path, encoding="utf-8", newline="") as file:
        return [[row["p"], *(float(row[q]) if row[q] else None for q in ("q_1", "q_2"))]
                for row in csv.DictReader(file)]


def picked(predictions, indices):
    return predictions and [predictions[i] for i in indices]


class Runner:
    def __init__(self, program, folder):
        self.program, self.folder = program, folder
        self.completed = self.predicted = 0

    def __call__(self, table, text, *options):
        """The document, and the predictions that were saved."""
        table.write(self.folder / "table.csv")
        saved = self.folder / "saved.csv"
        saved.unlink(missing_ok=True)
        target = next(name for name in table.columns if name.endswith("y"))
        result = subprocess.run(
            [self.program, "run", "--data", "table.csv", "--level", f"{target}=nominal", "-c", text,
             "--format", "json", "--save-data", saved.name, *options],
            cwd=self.folder, capture_output=True, text=True, check=False)
        assert result.stdout and result.returncode in (0, 1), (result.returncode, result.stderr)
        document = json.loads(result.stdout)
        self.completed += sum(done["completed"] for done in document["runs"])
        self.predicted += saved.exists()
        return document, read_predictions(saved) if saved.exists() else None


def is_complement(value):
    """Of a part of a document: whether its numbers come from what is left of a probability."""
    return value.get("format") == "significance" or "vegalite" in value or \
        not {"Average Log-Likelihood", "Test Data Criterion"}.isdisjoint(value.get("column", ()))


def differences(left, right, where="", absolute=False):
    """Every place where two documents are not the same."""
    if isinstance(left, dict) and isinstance(right, dict) and left.keys() != right.keys():
        return [f"{where}: only one has {sorted(left.keys() ^ right.keys())}"]
    if isinstance(left, dict) and isinstance(right, dict):
        absolute = absolute or is_complement(left)
        where += "/" + "+".join(map(str, left.get("row", []) + left.get("column", [])))
        return [line for key in left
                for line in differences(left[key], right[key], f"{where}/{key}", absolute)]
    if isinstance(left, list) and isinstance(right, list) and len(left) == len(right):
        return [line for i, (a, b) in enumerate(zip(left, right))
                for line in differences(a, b, f"{where}/{i}", absolute)]
    if isinstance(left, float) and isinstance(right, float):
        least = 1.0 if absolute else LEAST
        if abs(left - right) <= TOLERANCE * max(abs(left), abs(right), least):
            return []
    return [] if left == right else [f"{where}: {left!r} != {right!r}"]


def law_the_order_of_cases_means_nothing(run, draw):
    table = random_table(draw)
    text = commands(draw, table)
    order = draw.sample(range(table.size()), table.size())
    weight = draw.choice([[], ["--weight", "w"]])
    whole, predictions = run(table, text, *weight)
    permuted, moved = run(table.rows(order), text, *weight)
    return differences(whole, permuted) + differences(picked(predictions, order), moved)


# Counts cases, be they copies of each other or not.
ADVICE = "Predictors better than they are: ^1, ^2..."


def law_a_weight_stands_for_copies(run, draw):
    table = random_table(draw)
    text = commands(draw, table)
    copies = [i for i, w in enumerate(table.columns["w"]) for _ in range(int(w))]
    weighted, predictions = run(table, text, "--weight", "w")
    copied, repeated = run(table.rows(copies), text)
    for document in (weighted, copied):
        document["data"]["cases"] = 0
        for key in ("Unweighted N", ADVICE):
            document["strings"].pop(key, None)
        for result in document["runs"]:
            result["messages"] = [said for said in result["messages"] if said["key"] != ADVICE]
            for shown in result["tables"]:
                shown["cells"] = [c for c in shown["cells"] if c["column"] != ["Unweighted N"]]
    return differences(weighted, copied) + differences(picked(predictions, copies), repeated)


def without_column_order(part):
    """Lists of predictors stand in the order of the columns; a message shows the command as given."""
    if isinstance(part, list):
        return [without_column_order(item) for item in part]
    if not isinstance(part, dict):
        return part
    if isinstance(part.get("value"), list):
        part = {**part, "value": sorted(part["value"]), "text": sorted(part["text"].split())}
    if "arguments" in part:
        words = re.findall(r"\w+", part["text"])
        part = {**part, "text": sorted(words), "arguments": len(part["arguments"])}
    return {key: without_column_order(item) for key, item in part.items() if key != "detail"}


def law_names_and_columns_mean_nothing(run, draw):
    """Names that sort alike, in other columns."""
    table = random_table(draw)
    text = commands(draw, table)
    renamed = {name: f"v_{name}" for name in table.columns}
    moved = draw.sample(sorted(table.columns), len(table.columns))
    other = Table({renamed[name]: table.columns[name] for name in moved})
    words = "|".join(renamed)
    plain, predictions = run(table, text)
    told, again = run(other, re.sub(rf"(?<![\w:(])({words})\b(?![(:=])", r"v_\1", text))
    told = json.loads(json.dumps(told).replace("v_", ""))
    return differences(without_column_order(plain), without_column_order(told)) + \
        differences(predictions, again)


def law_streaming_changes_no_bit(run, draw):
    table = random_table(draw)
    text = commands(draw, table)
    return [] if run(table, text) == run(table, text, "--stream") else ["the streamed run differs"]


def law_threads_change_no_bit(run, draw):
    table = random_table(draw)
    text = commands(draw, table)
    # Enough cases for the threads to take part.
    table = table.rows([draw.randrange(table.size()) for _ in range(9000)])
    alone = run(table, text, "--threads", "1")
    return [f"the run of {threads} threads differs" for threads in (2, 3, 7)
            if run(table, text, "--threads", str(threads)) != alone]


def main():
    program, law = str(Path(sys.argv[1]).resolve()), globals()["law_" + sys.argv[2]]
    problems = []
    with tempfile.TemporaryDirectory() as folder:
        run = Runner(program, Path(folder))
        for seed in sys.argv[3:]:
            found = law(run, random.Random(f"laws {seed}"))
            problems += [f"seed {seed}: {line}" for line in found[:10]]
    if not run.completed or not run.predicted:
        problems.append("no command completed with predictions: nothing was compared")
    print("\n".join(problems) or f"holds for {run.completed} commands, {run.predicted} predictions")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
