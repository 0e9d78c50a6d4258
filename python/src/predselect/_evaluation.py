"""How good a model is on data whose target is known."""

from __future__ import annotations

import os
from collections.abc import Mapping, Sequence
from dataclasses import dataclass
from typing import Any

import numpy as np

from ._data import Options
from ._functions import Job, state_of
from ._results import Model, Result, ResultTable
from ._state import State


@dataclass(frozen=True)
class Measure:
    """A measure with its 95 % interval, beside what is right without a look at any predictor.

    ``by_majority`` always predicts the most frequent class of training and is sure of it,
    ``by_prior`` gives every case the shares of the classes in training as probabilities. What cannot
    be told is NaN.
    """

    value: float
    low: float
    high: float
    by_majority: float
    by_prior: float

    def __float__(self) -> float:
        return self.value


def key_of(name: str) -> str:
    """A measure's name in Python: ``Cohen's Kappa`` is ``cohens_kappa``."""
    return name.lower().replace("'", "").replace(" ", "_")


def measures_of(table: ResultTable, value: str) -> dict[str, Measure]:
    """The measures of a table by their names, ``value`` being its column of them."""
    return {
        key_of(row["measure"]): Measure(*(float(row[column]) for column in (
            value, "confidence_interval_lower", "confidence_interval_upper", "by_majority",
            "by_prior",
        )))
        for row in table.rows()
    }


class Evaluation(Result):
    """What an evaluation found; its main table is that of the measures."""

    def _main(self) -> ResultTable:
        return self["Evaluation"]

    @property
    def measures(self) -> dict[str, Measure]:
        """By name: accuracy, balanced_accuracy, auc, log_loss, brier_score, cohens_kappa,
        matthews_correlation, calibration_error."""
        return measures_of(self._main(), "value")

    @property
    def classes(self) -> list[str]:
        """The classes of the model, then those that it does not know, as texts."""
        return list(self["ClassEvaluation"]["class"])

    @property
    def confusion(self) -> Any:
        """Cases by observed (row) and predicted class, in the order of ``classes``."""
        places = {name: i for i, name in enumerate(self.classes)}
        matrix = np.zeros((len(places), len(places)))
        for row in self["ConfusionMatrix"].rows():
            matrix[places[row["observed"]], places[row["predicted"]]] = row["cases"]
        return matrix


def evaluate(
    model: State | Model | str | os.PathLike[str],
    data: Any,
    *,
    levels: Mapping[str, str] | None = None,
    weight: Any = None,
    null: Sequence[str] = (),
    reading: Mapping[str, Any] | None = None,
    stream: bool = False,
    name: str | None = None,
    threads: int | None = None,
    progress: bool | None = None,
) -> Evaluation:
    """Says how good a model is on data that have its predictors and its target.

    ``model`` is a saved state or its file: ``predselect.model(...).state``. ``weight`` says for how
    many cases a row stands, fractions included. The other arguments are those of :func:`rank`.
    """
    known = state_of(model)
    job = Job(threads, progress)
    table = job.open(data, Options(
        levels=levels, weight=weight, null=null, reading=reading, stream=stream, name=name))
    result = job.result(Evaluation, table, "evaluate", table, known._handle)
    result._warn()
    return result
