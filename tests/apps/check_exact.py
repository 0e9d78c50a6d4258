#!/usr/bin/env python3
"""Holds PVALUES=EXACT against an independent computation, on tables of real data.

    check_exact.py PROGRAM [TABLE.csv TARGET]...

Every statistic is computed anew from the definitions (docs/methods.md) in 50 digits, and its tail
by the series of tests/feature/make_tail_reference.py. The order of all predictors must be that of
ln p, and each p-value be right to 1e-9 (the statistics are doubles; the suite holds the tails alone
to more). Without tables, those that come inside the packages of scripts/requirements-exact.txt are
used: `make check-exact`.
"""

import json
import subprocess
import sys
import tempfile
from collections import Counter, defaultdict
from pathlib import Path

import mpmath as mp
import pandas as pd

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "feature"))
import make_tail_reference as tails  # noqa: E402

mp.mp.dps = 50


def tables_of_packages():
    """(name, table, target)."""
    import statsmodels.api as sm
    from sklearn import datasets
    from vega_datasets import data

    for name in ("breast_cancer", "wine"):
        table = getattr(datasets, "load_" + name)(as_frame=True).frame
        yield name, table.assign(target="class " + table["target"].astype(str)), "target"
    diabetes = datasets.load_diabetes(as_frame=True, scaled=False).frame
    yield "diabetes", diabetes.assign(sex="sex " + diabetes["sex"].astype(str)), "target"
    anes = sm.datasets.anes96.load_pandas().data
    words = {
        column: column + " " + anes[column].astype(str)
        for column in ("PID", "educ", "income", "vote")
    }
    yield "anes96", anes.assign(**words), "PID"
    yield "fair", sm.datasets.fair.load_pandas().data, "affairs"
    cars = data.cars()
    yield "cars", cars.assign(Year="year " + cars["Year"].astype(str)), "Miles_per_Gallon"


def is_words(column) -> bool:
    return not pd.api.types.is_numeric_dtype(column)


def pairs_of(table, predictor, target):
    """The valid pairs, numbers at their full value."""
    valid = table[[predictor, target]].dropna()
    columns = [
        list(valid[name]) if is_words(table[name]) else [mp.mpf(float(v)) for v in valid[name]]
        for name in (predictor, target)
    ]
    return columns[0], columns[1]


def chi_square(x, y):
    """Pearson's."""
    rows, columns, cells, n = Counter(x), Counter(y), Counter(zip(x, y)), len(x)
    statistic = mp.fsum(
        (cells[i, j] - mp.mpf(rows[i]) * columns[j] / n) ** 2 / (mp.mpf(rows[i]) * columns[j] / n)
        for i in rows
        for j in columns
    )
    return tails.chi, statistic, ((len(rows) - 1) * (len(columns) - 1),)


def anova(groups_of, values):
    groups = defaultdict(list)
    for group, value in zip(groups_of, values):
        groups[group].append(value)
    mean = mp.fsum(values) / len(values)
    means = {group: mp.fsum(members) / len(members) for group, members in groups.items()}
    between = mp.fsum(len(groups[g]) * (means[g] - mean) ** 2 for g in groups)
    within = mp.fsum((v - means[g]) ** 2 for g in groups for v in groups[g])
    df = len(groups) - 1, len(values) - len(groups)
    return tails.f, between / df[0] / (within / df[1]), df


def correlation(x, y):
    n = len(x)
    mean_x, mean_y = mp.fsum(x) / n, mp.fsum(y) / n
    sxy = mp.fsum((a - mean_x) * (b - mean_y) for a, b in zip(x, y))
    r2 = sxy**2 / mp.fsum((a - mean_x) ** 2 for a in x) / mp.fsum((b - mean_y) ** 2 for b in y)
    return tails.t, mp.sqrt(r2 * (n - 2) / (1 - r2)), (n - 2,)


def log_p(table, predictor, target):
    x, y = pairs_of(table, predictor, target)
    if is_words(table[predictor]):
        tail, statistic, df = chi_square(x, y) if is_words(table[target]) else anova(x, y)
    else:
        tail, statistic, df = anova(y, x) if is_words(table[target]) else correlation(x, y)
    result = tail(statistic, *(float(d) for d in df))
    mp.mp.dps = 50
    return result


def quoted(names):
    return " ".join('"' + name + '"' for name in names)


def ranked(program, table, target, predictors, folder):
    """(name, p) in the order of the program."""
    table.to_csv(folder / "table.csv", index=False)
    lists = ""
    for word, wanted in (("BY", True), ("WITH", False)):
        names = [name for name in predictors if is_words(table[name]) == wanted]
        lists += f" {word} {quoted(names)}" if names else ""
    level = "N" if is_words(table[target]) else "S"
    command = (
        f'SELECTPRED "{target}" (MLEVEL={level}){lists} /SCREENING STATUS=OFF\n'
        "  /CRITERIA PVALUES=EXACT SIZE=4 SHOWUNSELECTED=1000 /PRINT SUMMARY."
    )
    result = subprocess.run(
        [program, "run", "--data", "table.csv", "--format", "json", "-c", command],
        cwd=folder,
        capture_output=True,
        text=True,
        check=True,
    )
    run = json.loads(result.stdout)["runs"][0]
    summary = next(table for table in run["tables"] if table["subtype"] == "PredictorSummary")
    values = {}
    for cell in summary["cells"]:
        if cell["column"][-1] == "Unadjusted Sig." and cell["value"] is not None:
            values.setdefault(cell["row"][-1], cell["value"])
    ranks = {
        cell["row"][-1]: cell["value"] for cell in summary["cells"] if cell["column"][-1] == "Rank"
    }
    return [(name, values[name]) for name in sorted(ranks, key=ranks.get)]


def check(program, name, table, target):
    table = table.loc[:, [column for column in table if table[column].nunique() > 1]]
    predictors = [column for column in table if column != target]
    expected = {predictor: log_p(table, predictor, target) for predictor in predictors}
    with tempfile.TemporaryDirectory() as folder:
        order = ranked(program, table, target, predictors, Path(folder))
    assert sorted(p for p, _ in order) == sorted(predictors), (name, order)
    logs = [expected[predictor] for predictor, _ in order]
    assert logs == sorted(logs), (name, [(p, mp.nstr(expected[p], 12)) for p, _ in order])
    worst = 0.0
    for predictor, p in order:
        exact = mp.exp(expected[predictor])
        if exact > mp.mpf(10) ** -300:
            worst = max(worst, abs(float(p / exact - 1)))
    assert worst < 1e-9, (name, worst)
    ties = sum(1 for log in logs if log < mp.log(mp.mpf(2) ** -54))
    print(
        f"{name}: {len(order)} predictors in the order of ln p, {ties} of them below the rounding of "
        f"1 - c; log10 p from {mp.nstr(logs[0] / mp.log(10), 6)}, "
        f"largest relative error of p {worst:.1e}"
    )


def main():
    program, given = sys.argv[1], sys.argv[2:]
    if given:
        tables = (
            (path, pd.read_csv(path), target) for path, target in zip(given[::2], given[1::2])
        )
    else:
        tables = tables_of_packages()
    for name, table, target in tables:
        check(str(Path(program).resolve()), name, table, target)


if __name__ == "__main__":
    main()
