#!/usr/bin/env python3
"""Computes the reference statistics of the example tables by routes of their own.

Needs scipy and numpy (not needed to run the tests). Contingency statistics come from
scipy.stats.chi2_contingency (Pearson and log-likelihood), F from scipy.stats.f_oneway on values
repeated by their weight, the correlation test from scipy.stats.pearsonr. p-values come from scipy's
survival functions. Values are given to 17 digits and trusted to 1e-11 relative or better, p-values
to 1e-9 (a p-value that is the complement of a probability near 1 to 1e-15 absolute).

  make_reference.py > reference.json
"""

import csv
import json
import sys
from pathlib import Path

import numpy
from scipy import stats

DATA = Path(__file__).resolve().parents[2] / "data"


def read(name):
    with open(DATA / name, encoding="utf-8", newline="") as file:
        rows = list(csv.DictReader(file))
    return {column: [row[column] for row in rows] for column in rows[0]}


def contingency(x, y, w):
    keep = [i for i in range(len(x)) if x[i] != "" and y[i] != ""]
    rows, columns = sorted({x[i] for i in keep}), sorted({y[i] for i in keep})
    table = numpy.zeros((len(rows), len(columns)))
    for i in keep:
        table[rows.index(x[i]), columns.index(y[i])] += w[i]
    pearson = stats.chi2_contingency(table, correction=False)
    likelihood = stats.chi2_contingency(table, correction=False, lambda_="log-likelihood")
    total, best = table.sum(), table.sum(axis=0).max()
    return {
        "Pearson Chi-Square": {"Value": pearson.statistic, "df": pearson.dof,
                               "Unadjusted Sig.": pearson.pvalue},
        "Likelihood Ratio Chi-Square": {"Value": likelihood.statistic, "df": likelihood.dof,
                                        "Unadjusted Sig.": likelihood.pvalue},
        "Cramer's V": {"Value": (pearson.statistic / (min(table.shape) - 1) / total) ** 0.5},
        "Lambda": {"Value": (table.max(axis=1).sum() - best) / (total - best)},
    }


def oneway(groups, values, w):
    keep = [i for i in range(len(groups)) if groups[i] != "" and values[i] != ""]
    samples = [numpy.array([float(values[i]) for i in keep if groups[i] == group
                            for _ in range(w[i])]) for group in sorted({groups[i] for i in keep})]
    result = stats.f_oneway(*samples)
    df1, df2 = len(samples) - 1, sum(map(len, samples)) - len(samples)
    return {"F": {"Value": result.statistic, "df1": df1, "df2": df2,
                  "Unadjusted Sig.": result.pvalue}}


def correlation(x, y, w):
    keep = [i for i in range(len(x)) if x[i] != "" and y[i] != ""]
    a = numpy.array([float(x[i]) for i in keep for _ in range(w[i])])
    b = numpy.array([float(y[i]) for i in keep for _ in range(w[i])])
    r, p = stats.pearsonr(a, b)
    df = len(a) - 2
    return {"Pearson Correlation": {"Value": r, "t": r * (df / (1 - r * r)) ** 0.5, "df": df,
                                    "Unadjusted Sig.": p}}


def statistics(table, target, target_is_categorical, factors, covariates, weight):
    w = [int(float(v)) for v in table[weight]] if weight else [1] * len(table[target])
    found = {}
    for name in factors:
        found[name] = (contingency(table[name], table[target], w) if target_is_categorical
                       else oneway(table[name], table[target], w))
    for name in covariates:
        found[name] = (oneway(table[target], table[name], w) if target_is_categorical
                       else correlation(table[name], table[target], w))
    if covariates:  # Cramer's V and lambda do not apply to predictors of both kinds
        for name in factors:
            found[name].pop("Cramer's V", None)
            found[name].pop("Lambda", None)
    return found


PENGUIN_SCALES = ["bill_length_mm", "bill_depth_mm", "flipper_length_mm", "body_mass_g"]
# File, target, whether the target is categorical, factors, covariates, weight variable.
RUNS = {
    "factors": ("penguins.csv", "species", True, ["island", "sex", "year"], [], None),
    "mixed": ("penguins.csv", "species", True, ["island", "sex"], PENGUIN_SCALES, None),
    "weighted": ("penguins.csv", "sex", True, ["island", "species"], PENGUIN_SCALES[:2], "year"),
    "factors, scale target": ("penguins.csv", "body_mass_g", False, ["island", "sex", "species"],
                              [], None),
    "mixed, scale target": ("penguins.csv", "body_mass_g", False, ["island", "sex"],
                            PENGUIN_SCALES[:3], None),
    "covariates, scale target": ("penguins.csv", "body_mass_g", False, [], PENGUIN_SCALES[:3],
                                 None),
    "thirty covariates": ("biopsies.csv", "diagnosis", True, [],
                          [f"{s}_{m}" for s in ("mean", "error", "worst") for m in (
                              "radius", "texture", "perimeter", "area", "smoothness", "compactness",
                              "concavity", "concave_points", "symmetry", "fractal_dimension")],
                          None),
}


def main():
    runs = []
    for name, (file, target, categorical, factors, covariates, weight) in RUNS.items():
        runs.append({"name": name, "data": file, "target": target, "categorical": categorical,
                     "factors": factors, "covariates": covariates, "weight": weight,
                     "statistics": statistics(read(file), target, categorical, factors,
                                              covariates, weight)})
    json.dump(runs, sys.stdout, indent=1, default=float)
    print()


if __name__ == "__main__":
    main()
