"""Estimators for scikit-learn: a selector of predictors, and a Naive Bayes classifier that selects."""

from __future__ import annotations

from ._classifier import SubsetNaiveBayes
from ._selector import PredictorSelector

__all__ = ["PredictorSelector", "SubsetNaiveBayes"]
