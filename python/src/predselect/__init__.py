"""Which columns of a table go with a target, and which few of them make a good classifier.

``rank`` and ``model`` answer from any data frame, ``run`` takes the command language, and
``PredictorSelector`` and ``SubsetNaiveBayes`` are estimators for scikit-learn.
"""

from __future__ import annotations

from typing import TYPE_CHECKING, Any

from ._charts import Chart
from ._cross_validation import CrossValidation, cross_validate
from ._evaluation import Evaluation, Measure, evaluate
from ._explain import Explanation, explain
from ._functions import describe, model, rank, run, score
from ._library import version as _version
from ._results import Model, NewColumns, Ranking, Result, ResultTable, Scores
from ._state import State
from .errors import (
    Cancelled,
    CommandError,
    DataError,
    DataNotice,
    DriftWarning,
    ExportNotice,
    LeakWarning,
    LibraryError,
    MemoryWarning,
    PredSelectError,
    PredSelectWarning,
    RequestError,
    WeightWarning,
)

if TYPE_CHECKING:
    from .estimators import PredictorSelector, SubsetNaiveBayes

__version__ = _version()
__all__ = [
    "Cancelled", "Chart", "CommandError", "CrossValidation", "DataError", "DataNotice",
    "DriftWarning", "Evaluation", "Explanation", "ExportNotice", "LeakWarning", "LibraryError",
    "Measure", "MemoryWarning", "Model", "NewColumns", "PredSelectError", "PredSelectWarning",
    "PredictorSelector", "Ranking", "RequestError", "Result", "ResultTable", "Scores", "State",
    "SubsetNaiveBayes", "WeightWarning", "cross_validate", "describe", "evaluate", "explain",
    "load", "model", "rank", "run", "score",
]

load = State.load


def __getattr__(name: str) -> Any:
    """The estimators need scikit-learn, which the rest does not."""
    if name in ("PredictorSelector", "SubsetNaiveBayes"):
        from . import estimators

        return getattr(estimators, name)
    raise AttributeError(f"module 'predselect' has no attribute {name!r}")
