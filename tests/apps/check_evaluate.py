#!/usr/bin/env python3
"""Evaluations of the program, held to scikit-learn's values and to formulas written out here.

  check_evaluate.py PROGRAM LAW
"""

import csv
import io
import json
import math
import random
import subprocess
import sys
import tempfile
from pathlib import Path

DATA = Path(__file__).resolve().parents[2] / "data"
Z = 1.959963984540054


def run(*words, code=0):
    done = subprocess.run([sys.argv[1], *map(str, words)], capture_output=True, text=True)
    if done.returncode != code:
        raise SystemExit(f"{words}: {done.returncode}\n{done.stderr}")
    return done.stdout if code == 0 else done.stderr


def records(*words):
    return list(csv.DictReader(io.StringIO(run(*words, "--format", "csv"))))


def write(path, rows):
    with open(path, "w", newline="", encoding="utf-8") as file:
        csv.writer(file).writerows(rows)


def check(what, got, expected, tolerance=1e-12):
    got = math.nan if got == "" else float(got)
    same = math.isnan(got) and math.isnan(expected) or abs(got - expected) <= tolerance
    assert same, f"{what}: {got!r} is not {expected!r}"


def made_table(classes, seed, n=900):
    """Predictors that say something of the class, gaps in them and in the class, and weights."""
    draw = random.Random(seed)
    rows = []
    for _ in range(n):
        k = draw.randrange(len(classes))
        cells = [classes[k], draw.gauss(k, 1.4), draw.choice("uvw"[: k % 3 + 1]), draw.gauss(-k, 2)]
        rows.append([c if draw.random() > 0.04 else "" for c in cells] + [draw.choice((1, 2, 5, 0.5, "", 0))])
    return [["y", "a", "b", "c", "w"], *rows]


class Scored:
    """What a model predicts for a table, and what was observed, as arrays."""

    def __init__(self, folder, model, table, weight):
        import numpy as np

        out = folder / "scored.csv"
        run("score", "--model", model, table, "--save-data", out, "--force", "--quiet", "-o", folder / "page")
        with open(out, encoding="utf-8") as file:
            rows = [r for r in csv.DictReader(file) if r["y"] and (not weight or float(r[weight] or 0) > 0)]
        target = records("inspect", model, "--table", "TargetCategories")
        self.classes = [r["value"] for r in target]
        self.observed = np.array([r["y"] for r in rows])
        self.predicted = np.array([r["PredictedValue"] for r in rows])
        self.probabilities = np.array(
            [[float(r[f"PredictedProbability_{k + 1}"]) for k in range(len(self.classes))] for r in rows])
        self.weights = np.array([float(r[weight]) if weight else 1.0 for r in rows])
        self.priors = np.array([float(r["prior"]) for r in target])


def metrics_of(s, predicted, probabilities):
    import numpy as np
    from sklearn import metrics as m

    w, names = s.weights, list(s.classes)
    names += sorted(set(s.observed) - set(names))
    p = np.hstack([probabilities, np.zeros((len(w), len(names) - len(s.classes)))])
    y = np.array([names.index(v) for v in s.observed])
    yhat = np.array([names.index(v) for v in predicted])
    onehot = np.eye(len(names))[y]
    losses = -np.log(np.clip(p[np.arange(len(y)), y], np.finfo(float).eps, 1 - np.finfo(float).eps))
    areas = {k: m.roc_auc_score(y == k, p[:, k], sample_weight=w)
             for k in range(len(names)) if 0 < w[y == k].sum() < w.sum()}
    own = p[np.arange(len(y)), yhat]
    bins = np.minimum((own * 10).astype(int), 9)
    gaps = [abs((w * ((y == yhat) - own))[bins == b].sum()) for b in range(10)]
    present = {k: w[y == k].sum() for k in range(len(names))}
    scale = 2 if len(names) == 2 else 1
    one_class = sum(v > 0 for v in present.values()) < 2
    found = {
        "Accuracy": m.accuracy_score(y, yhat, sample_weight=w),
        "Balanced Accuracy": m.balanced_accuracy_score(y, yhat, sample_weight=w),
        "AUC": math.nan if one_class else
               sum(present[k] * a for k, a in areas.items()) / sum(present[k] for k in areas),
        "Log Loss": np.average(losses, weights=w),
        "Brier Score": np.average(((p - onehot) ** 2).sum(1), weights=w) / scale,
        "Cohen's Kappa": math.nan if one_class and (y == yhat).all() else
                         m.cohen_kappa_score(y, yhat, sample_weight=w),
        "Matthews Correlation": m.matthews_corrcoef(y, yhat, sample_weight=w),
        "Calibration Error": sum(gaps) / w.sum(),
    }
    if len(s.classes) == len(names) and not one_class:  # where scikit-learn takes the whole
        check("log_loss", found["Log Loss"], m.log_loss(y, p, sample_weight=w, labels=range(len(names))))
        if len(names) == 2:
            check("brier", found["Brier Score"], m.brier_score_loss(y, p[:, 1], sample_weight=w))
        elif len(areas) == len(names):
            check("auc", found["AUC"], m.roc_auc_score(y, p, sample_weight=w, multi_class="ovr",
                                                        average="weighted"))
    return found, areas, names


def the_measures_are_those_of_scikit_learn(folder):
    import numpy as np

    for trial, (classes, weight, unknown) in enumerate((
            (["no", "yes"], "", []), (["no", "yes"], "w", []), (["p", "q", "r"], "w", []),
            (["1", "2", "3", "4", "5"], "", []), (["p", "q", "r"], "w", ["new", "newer"]),
            (["p", "q"], "", ["new"]))):
        write(folder / "old.csv", made_table(classes, trial))
        write(folder / "new.csv", made_table(classes + unknown, 50 + trial, 400))
        model = folder / "m.bin"
        level = ["--level", "y=nominal"] if classes[0] == "1" else []
        run("model", folder / "old.csv", "y", "--except", "w", "--test", 0, *level, "--save-model", model)
        weighted = ["--weight", weight] if weight else []
        evaluated = ["evaluate", "--model", model, folder / "new.csv", *weighted, "--quiet"]
        s = Scored(folder, model, folder / "new.csv", weight)
        expected, areas, names = metrics_of(s, s.predicted, s.probabilities)
        majority = s.classes[int(np.argmax(s.priors))]
        always = np.full(len(s.observed), majority)
        certain = np.tile((np.array(s.classes) == majority) * 1.0, (len(always), 1))
        by_majority = metrics_of(s, always, certain)[0]
        by_prior = metrics_of(s, always, np.tile(s.priors, (len(always), 1)))[0]
        rows = records(*evaluated)
        assert [r["measure"] for r in rows] == list(expected), rows
        for r in rows:
            check((trial, r["measure"]), r["value"], expected[r["measure"]])
            check((trial, "majority", r["measure"]), r["by_majority"], by_majority[r["measure"]])
            check((trial, "prior", r["measure"]), r["by_prior"], by_prior[r["measure"]])
            low, high = r["confidence_interval_lower"], r["confidence_interval_upper"]
            assert float(low) < float(r["value"]) < float(high), r
        for r in records(*evaluated, "--table", "ClassEvaluation"):
            k = names.index(r["class"])
            own = s.observed == r["class"]
            check((trial, r["class"]), r["recall_value"],
                  np.average((s.predicted == s.observed)[own], weights=s.weights[own]))
            check((trial, r["class"]), r["auc_value"], areas[k] if k < len(s.classes) else math.nan)
        cells = {(r["observed"], r["predicted"]): float(r["cases"])
                 for r in records(*evaluated, "--table", "ConfusionMatrix")}
        for (observed, predicted), cases in cells.items():
            both = (s.observed == observed) & (s.predicted == predicted)
            check((trial, observed, predicted), cases, s.weights[both].sum())
        check("total", sum(cells.values()), s.weights.sum())


def intervals_are_those_of_their_formulas(folder):
    import numpy as np

    write(folder / "old.csv", made_table(["p", "q", "r"], 1))
    write(folder / "new.csv", made_table(["p", "q", "r"], 2, 300))
    model = folder / "m.bin"
    run("model", folder / "old.csv", "y", "--except", "w", "--test", 0, "--save-model", model)
    s = Scored(folder, model, folder / "new.csv", "")
    rows = {r["measure"]: r for r in records("evaluate", "--model", model, folder / "new.csv")}
    n = len(s.observed)
    hits = s.observed == s.predicted

    def wilson(values):
        m, share = len(values), np.mean(values)
        middle = (share + Z * Z / 2 / m) / (1 + Z * Z / m)
        half = Z / (1 + Z * Z / m) * math.sqrt(share * (1 - share) / m + Z * Z / 4 / m / m)
        return middle - half, middle + half

    def interval(measure, low, high):
        check(measure, rows[measure]["confidence_interval_lower"], low, 1e-10)
        check(measure, rows[measure]["confidence_interval_upper"], high, 1e-10)

    def numeric_error(f):
        """The delta method with slopes by differences, over the cells of observed by predicted."""
        cells = np.array([[((s.observed == a) & (s.predicted == b)).sum() for b in s.classes]
                          for a in s.classes]) / n
        slopes = np.zeros_like(cells)
        for i in np.ndindex(cells.shape):
            step = np.zeros_like(cells)
            step[i] = 1e-6
            slopes[i] = (f(cells + step) - f(cells - step)) / 2e-6
        return math.sqrt(((cells * slopes**2).sum() - (cells * slopes).sum() ** 2) / n)

    def kappa(c):
        chance = (c.sum(0) * c.sum(1)).sum() / c.sum() ** 2
        return (np.trace(c) / c.sum() - chance) / (1 - chance)

    def matthews(c):
        r, k, t = c.sum(1), c.sum(0), c.sum()
        return (np.trace(c) * t - r @ k) / math.sqrt((t * t - r @ r) * (t * t - k @ k))

    interval("Accuracy", *wilson(hits))
    for measure, f in (("Cohen's Kappa", kappa), ("Matthews Correlation", matthews)):
        half = Z * numeric_error(f)
        value = float(rows[measure]["value"])
        check(measure, rows[measure]["confidence_interval_lower"], value - half, 1e-7)
        check(measure, rows[measure]["confidence_interval_upper"], value + half, 1e-7)
    recalls = [(np.mean(hits[s.observed == c]), *wilson(hits[s.observed == c])) for c in s.classes]
    mean = np.mean([r[0] for r in recalls])
    interval("Balanced Accuracy", mean - math.sqrt(sum((r[0] - r[1]) ** 2 for r in recalls)) / 3,
             mean + math.sqrt(sum((r[2] - r[0]) ** 2 for r in recalls)) / 3)
    own = s.probabilities[np.arange(n), [s.classes.index(v) for v in s.observed]]
    half = Z * np.std(-np.log(own), ddof=1) / math.sqrt(n)
    interval("Log Loss", np.mean(-np.log(own)) - half, np.mean(-np.log(own)) + half)
    # DeLong, by all pairs.
    weighted = error = 0.0
    for k, c in enumerate(s.classes):
        of, others = s.probabilities[s.observed == c, k], s.probabilities[s.observed != c, k]
        wins = (of[:, None] > others) + 0.5 * (of[:, None] == others)
        spread = np.var(wins.mean(1), ddof=1) / len(of) + np.var(wins.mean(0), ddof=1) / len(others)
        weighted += len(of) * wins.mean() / n
        error += len(of) * math.sqrt(spread) / n
    odds, half = math.log(weighted / (1 - weighted)), Z * error / weighted / (1 - weighted)
    interval("AUC", 1 / (1 + math.exp(half - odds)), 1 / (1 + math.exp(-half - odds)))


def odd_tables_are_evaluated_as_far_as_they_go(folder):
    write(folder / "old.csv", made_table(["p", "q", "r"], 1))
    model = folder / "m.bin"
    run("model", folder / "old.csv", "y", "--except", "w", "--test", 0, "--save-model", model)

    def evaluated(rows, *more):
        write(folder / "new.csv", rows)
        document = json.loads(run("evaluate", "--model", model, folder / "new.csv", "--format", "json", *more))
        run_of = document["runs"][0]
        cells = {(t["subtype"], c["row"][-1], c["column"][-1]): c["value"]
                 for t in run_of["tables"] for c in t["cells"]}
        return cells, [m["key"] for m in run_of["messages"]]

    head, *rows = made_table(["p", "q", "r"], 3, 200)
    cells, messages = evaluated([head, *(r for r in rows if r[0] == "p")])
    assert messages == ["Cases of one class only..."], messages
    for untold in ("AUC", "Cohen's Kappa", "Matthews Correlation"):
        assert cells[("Evaluation", untold, "Value")] is None, untold
    assert cells[("Evaluation", "Balanced Accuracy", "Value")] == cells[("Evaluation", "Accuracy", "Value")]
    cells, messages = evaluated([head, *(r for r in rows if r[0] != "q")])
    assert messages == ["No case of the classes ^1..."], messages
    missing = sum(r[0] == "" for r in rows)
    cells, messages = evaluated([head, *rows])
    assert cells[("EvaluatedCases", "Without a Target", "N")] == missing and not messages
    assert cells[("EvaluatedCases", "Total", "N")] == len(rows)
    cells, messages = evaluated([head, *([["s", *r[1:]] for r in rows[:3]]), *rows[3:]])
    assert messages == ["^1 cases of classes unknown to the model: ^2..."], messages
    assert cells[("EvaluatedCases", "Of an Unknown Class", "N")] == 3
    # A weight stands for copies.
    whole = [r for r in rows if r[4] in (1, 2, 5)]
    weighted = evaluated([head, *whole], "--weight", "w")[0]
    copied = evaluated([head, *(r for r in whole for _ in range(r[4]))])[0]
    for (table, row, column), value in copied.items():
        if table != "EvaluatedCases" and value is not None:
            check((table, row, column), weighted[(table, row, column)], value)
    # Streaming and threads change no byte.
    kept = run("evaluate", "--model", model, folder / "new.csv", "--threads", 1)
    assert kept == run("evaluate", "--model", model, folder / "new.csv", "--threads", 3, "--stream")
    for rows, text in (([head, ["", 1, "u", 2, 1]], 'no case has a valid "y"'),
                       ([["x", *head[1:]], *rows], 'no variable "y", which the model predicts'),
                       ([head, *([i, *r[1:]] for i, r in enumerate(rows))], "numbers")):
        write(folder / "bad.csv", rows)
        assert text in run("evaluate", "--model", model, folder / "bad.csv", code=2), text
    many = [[f"s{i}", 1, "u", 2, 1] for i in range(1200)]
    write(folder / "bad.csv", [head, *many])
    assert "more than 1000 values" in run("evaluate", "--model", model, folder / "bad.csv", code=2)
    write(folder / "bad.csv", [head, *([*r[:4], "1e308"] for r in whole[:9])])
    refused = run("evaluate", "--model", model, folder / "bad.csv", "--weight", "w", code=2)
    assert "than a number can hold" in refused, refused


def drawings_hold_what_the_tables_say(folder):
    """Areas, counts and classes of the curves and confusions that a page draws, unknown classes among them."""
    head, *rows = made_table(["p", "q", "r"], 13)
    write(folder / "old.csv", [head, *rows])
    model = folder / "m.bin"
    run("model", folder / "old.csv", "y", "--except", "w", "--test", 0, "--save-model", model)
    write(folder / "new.csv", [head, *([["s", *r[1:]] for r in rows[:7]]), *rows[7:]])
    document = json.loads(run("evaluate", "--model", model, folder / "new.csv", "--format", "json"))["runs"][0]
    found = document["findings"]
    classes = records("evaluate", "--model", model, folder / "new.csv", "--table", "ClassEvaluation")
    assert found["target"]["categories"] == [r["class"] for r in classes] == ["p", "q", "r", "s"]
    assert found["target"]["counts"] == [float(r["observed"]) for r in classes] == [sum(r) for r in found["confusion"]]
    assert len(found["curves"]["categories"]) == 3 and found["curves"]["weight"] == sum(found["target"]["counts"])
    for told, steps, n in zip(classes, found["curves"]["categories"], found["target"]["counts"]):
        others = found["curves"]["weight"] - n
        assert sum(s[1] for s in steps) == n and sum(s[2] for s in steps) == others
        below = area = 0.0
        for _, of, rest, _ in steps:
            area += of * (below + rest / 2) / (n * others)
            below += rest
        check(told["class"], area, float(told["auc_value"]), 2e-3)  # to the width of a step


def a_test_sample_is_evaluated_as_the_model_would_be(folder):
    """What model says of its test sample is what evaluate says of the same cases."""
    head, *rows = made_table(["p", "q", "r"], 7)
    marked = [[*r, i % 3 > 0 and 1 or 0] for i, r in enumerate(rows)]
    write(folder / "all.csv", [[*head, "train"], *marked])
    write(folder / "test.csv", [head, *(r for i, r in enumerate(rows) if i % 3 == 0)])
    model = folder / "m.bin"
    words = ["model", folder / "all.csv", "y", "--except", "w", "--training-column", "train",
             "--save-model", model, "--quiet"]
    for table in ("Evaluation", "ClassEvaluation", "Calibration"):
        one = run(*words, "--format", "csv", "--table", table)
        other = run("evaluate", "--model", model, folder / "test.csv", "--format", "csv", "--table", table)
        assert one == other and len(one.splitlines()) > 3, table
    command = run("run", folder / "all.csv", "-c", "NAIVEBAYES y /EXCEPT VARIABLES=w train /PRINT EVALUATION.",
                  "--format", "csv", "--table", "Evaluation")
    assert len(command.splitlines()) == 9, command


def cross_validation_is_what_it_says(folder):
    """The summary is that of the folds, and stability the formula of Nogueira, Sechidis and Brown."""
    import numpy as np
    from scipy import stats

    draw = random.Random(11)
    rows = [["y", *(f"x{j}" for j in range(12))]]
    for _ in range(600):
        k = draw.randrange(3)
        rows.append(["pqr"[k], *(draw.gauss(k * (j < 4) * 0.3, 1) for j in range(8)),
                     *(draw.choice("uvw"[: k + 1]) if j < 2 else draw.choice("uv") for j in range(4))])
    write(folder / "t.csv", rows)
    words = ["model", folder / "t.csv", "y", "--cross-validate", 5, "--repeats", 2, "--quiet"]
    folds = records(*words, "--table", "Folds")
    assert [(r["repeat"], r["number"]) for r in folds] == [(str(i), str(f + 1)) for i in (1, 2) for f in range(5)]
    assert all(float(r["cases"]) == 120 for r in folds)
    *measures, last = records(*words, "--table", "CrossValidation")
    assert len(measures) == 8
    for r in measures:
        column = r["measure"].lower().replace(" ", "_").replace("'", "_")
        values = np.array([float(v[column]) for v in folds])
        check(r["measure"], r["mean"], values.mean())
        check(r["measure"], r["between_folds"], values.std(ddof=1))
        half = stats.t.ppf(0.975, 9) * values.std(ddof=1) * math.sqrt(1 / 10 + 120 / 480)
        check(r["measure"], r["confidence_interval_upper"], values.mean() + half)
    chosen = records(*words, "--table", "SelectionStability")
    shares = np.array([float(r["folds"]) / 10 for r in chosen] + [0] * (12 - len(chosen)))
    sizes = np.array([float(r["predictors"]) for r in folds])
    mean = sizes.mean() / 12
    check("mean size", shares.sum(), sizes.mean(), 1e-9)
    stability = 1 - np.mean(10 / 9 * shares * (1 - shares)) / (mean * (1 - mean))
    check("stability", last["mean"], stability, 1e-9)


def cross_validation_is_the_same_each_time(folder):
    table = DATA / "biopsies.csv"
    words = ["model", table, "diagnosis", "--cross-validate", 4, "--format", "json"]
    one = run(*words, "--threads", 1)
    assert one == run(*words, "--threads", 4)
    assert one == run(*words, "--stream")
    assert one != run(*words, "--seed", 2)
    few = run("model", table, "diagnosis", "--cross-validate", 900, "--format", "json")
    assert [m["key"] for m in json.loads(few)["runs"][0]["messages"]] == ["Fewer cases than ^1 folds..."], few


def main():
    try:
        import sklearn  # noqa: F401
    except ImportError:
        print("scikit-learn is not there: skipped")
        return 77
    with tempfile.TemporaryDirectory() as folder:
        globals()[sys.argv[2]](Path(folder))
    return 0


if __name__ == "__main__":
    sys.exit(main())
