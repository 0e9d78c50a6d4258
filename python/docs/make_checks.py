"""Prints what scikit-learn's own checks say of the estimators, as a table."""

import sys
import warnings

import sklearn
from sklearn.utils.estimator_checks import check_estimator

from predselect import PredictorSelector, SubsetNaiveBayes

warnings.simplefilter("ignore")
told = {}
for estimator in (PredictorSelector(), SubsetNaiveBayes()):
    for done in check_estimator(estimator, on_fail=None, on_skip=None):
        told.setdefault(done["check_name"], {}).setdefault(
            type(estimator).__name__, set()).add(done["status"])
names = ("PredictorSelector", "SubsetNaiveBayes")
print(f"| scikit-learn {sklearn.__version__} | {' | '.join(f'`{n}`' for n in names)} |")
print("| --- | --- | --- |")
for check, by in sorted(told.items()):
    print(f"| {check} | " + " | ".join(", ".join(sorted(by.get(n, ()))) for n in names) + " |")
sys.exit(any(status == "failed" for by in told.values() for s in by.values() for status in s))
