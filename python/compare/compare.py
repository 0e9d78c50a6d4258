#!/usr/bin/env python3
"""The package beside scikit-learn's own, over tables of real data: accuracy, log-loss and area under
the curve by five-fold cross-validation, and what fitting and predicting cost. Every table that is
looked at is printed, whoever is ahead.

  compare.py [TABLE...]

Data come with the packages that scripts/requirements-compare.txt names; nothing is fetched.
"""

import sys
import warnings
from pathlib import Path

import numpy as np
import pandas as pd
from sklearn import datasets
from sklearn.base import clone
from sklearn.compose import make_column_selector, make_column_transformer
from sklearn.feature_selection import SelectKBest
from sklearn.impute import SimpleImputer
from sklearn.linear_model import LogisticRegression
from sklearn.model_selection import StratifiedKFold, cross_validate
from sklearn.naive_bayes import CategoricalNB, GaussianNB
from sklearn.pipeline import make_pipeline
from sklearn.preprocessing import (
    FunctionTransformer,
    KBinsDiscretizer,
    OneHotEncoder,
    OrdinalEncoder,
    StandardScaler,
)

from predselect import SubsetNaiveBayes

ROOT = Path(__file__).resolve().parents[2]
SCORES = {"accuracy": "accuracy", "log-loss": "neg_log_loss", "AUC": "roc_auc_ovr"}


def of_sklearn(name):
    data = getattr(datasets, f"load_{name}")(as_frame=True)
    return data.data, data.target


def of_statsmodels(name, target, make=lambda y: y):
    import statsmodels.api as sm

    frame = getattr(sm.datasets, name).load_pandas().data
    return frame.drop(columns=target), make(frame[target])


def of_vega(name, target, keep=lambda frame: frame):
    import vega_datasets

    frame = keep(getattr(vega_datasets.data, name)())
    frame = frame[frame[target].notna()]
    counts = frame[target].value_counts()
    frame = frame[frame[target].isin(counts.index[counts >= 10])]
    return frame.drop(columns=target), frame[target].astype(str)


def of_csv(name, target):
    frame = pd.read_csv(ROOT / "data" / f"{name}.csv")
    frame = frame[frame[target].notna()]
    return frame.drop(columns=target), frame[target]


def without_texts_of_each_case(frame):
    """Titles and the like, which no encoder makes sense of, are left out; of dates the year stays."""
    dates = frame.select_dtypes("datetime").columns
    frame = frame.assign(**{date: frame[date].dt.year for date in dates})
    return frame[[c for c in frame if pd.api.types.is_numeric_dtype(frame[c])
                  or frame[c].nunique() < 60]]


TABLES = {
    "iris": lambda: of_sklearn("iris"),
    "wine": lambda: of_sklearn("wine"),
    "tumours": lambda: of_sklearn("breast_cancer"),
    "digits (64 columns)": lambda: of_sklearn("digits"),
    "penguins (mixed, missing)": lambda: of_csv("penguins", "species"),
    "affairs": lambda: of_statsmodels("fair", "affairs", lambda y: (y > 0).astype(int)),
    "votes of 1996 (7 classes)": lambda: of_statsmodels("anes96", "PID", lambda y: y.astype(int)),
    "travel modes": lambda: of_statsmodels("modechoice", "choice", lambda y: y.astype(int)),
    "cars (mixed, missing)": lambda: of_vega("cars", "Origin", without_texts_of_each_case),
    "weather (5 classes)": lambda: of_vega("seattle_weather", "weather", without_texts_of_each_case),
    "airports (50 classes)": lambda: of_vega("airports", "state", without_texts_of_each_case),
}


def numbers():
    return make_column_transformer(
        (make_pipeline(SimpleImputer(), StandardScaler()), make_column_selector(dtype_include="number")),
        (make_pipeline(SimpleImputer(strategy="most_frequent"),
                       OneHotEncoder(sparse_output=False, handle_unknown="ignore")),
         make_column_selector(dtype_exclude="number")))


def codes():
    return make_column_transformer(
        (make_pipeline(SimpleImputer(), KBinsDiscretizer(10, encode="ordinal", strategy="uniform")),
         make_column_selector(dtype_include="number")),
        (make_pipeline(SimpleImputer(strategy="most_frequent"),
                       OrdinalEncoder(handle_unknown="use_encoded_value", unknown_value=-1),
                       FunctionTransformer(lambda codes: codes + 1)),
         make_column_selector(dtype_exclude="number")))


RIVALS = {
    "SubsetNaiveBayes": SubsetNaiveBayes(),
    "SubsetNaiveBayes, all": SubsetNaiveBayes(selection="all"),
    "GaussianNB": make_pipeline(numbers(), GaussianNB()),
    "CategoricalNB": make_pipeline(codes(), CategoricalNB(min_categories=61)),
    "SelectKBest + LogisticRegression": make_pipeline(
        numbers(), SelectKBest(k=10), LogisticRegression(max_iter=2000)),
}


def measure(estimator, X, y):
    folds = StratifiedKFold(5, shuffle=True, random_state=0)
    done = cross_validate(clone(estimator), X, y, cv=folds, scoring=SCORES)
    row = {name: done[f"test_{name}"].mean() for name in SCORES}
    row["log-loss"] = -row["log-loss"]
    return {**row, "fit ms": 1000 * done["fit_time"].mean(),
            "predict ms": 1000 * done["score_time"].mean() / len(SCORES)}


def main(wanted):
    warnings.simplefilter("ignore")
    print("| table | cases x columns | classifier | accuracy | log-loss | AUC | fit ms | predict ms |")
    print("| --- | --- | --- | ---: | ---: | ---: | ---: | ---: |")
    for name, load in TABLES.items():
        if wanted and not any(name.startswith(word) for word in wanted):
            continue
        X, y = load()
        X = X.reset_index(drop=True)
        y = np.asarray(y)
        for rival, estimator in RIVALS.items():
            row = measure(estimator, X, y)
            numbers = " | ".join(f"{row[n]:.3f}" for n in (*SCORES,))
            print(f"| {name} | {len(X):,} x {X.shape[1]} | {rival} | {numbers} | {row['fit ms']:.1f} | "
                  f"{row['predict ms']:.1f} |", flush=True)


if __name__ == "__main__":
    main(sys.argv[1:])
