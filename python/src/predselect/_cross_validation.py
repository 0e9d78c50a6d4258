"""How good models of such data are, and how stable their selection is."""

from __future__ import annotations

import ctypes
from collections.abc import Mapping, Sequence
from typing import Any

from . import _library as lib
from . import errors
from ._data import Options
from ._evaluation import Measure, measures_of
from ._functions import Job, _list, _target
from ._results import Result, ResultTable


class CrossValidation(Result):
    """What came of a cross-validation; its main table is that of the mean measures.

    The model itself, which is built on all cases, is not kept: ``predselect.model`` makes it.
    """

    _only_classes = True

    def _main(self) -> ResultTable:
        return self["CrossValidation"]

    @property
    def measures(self) -> dict[str, Measure]:
        """The means over the folds with their intervals, by the names of ``Evaluation.measures``."""
        found = measures_of(self._main(), "mean")
        found.pop("stability_of_selection")
        return found

    @property
    def stability(self) -> Measure:
        """How stable the selection is: 1 where every fold selects the same, 0 as by chance."""
        return measures_of(self._main(), "mean")["stability_of_selection"]

    @property
    def chosen(self) -> dict[str, float]:
        """For each predictor that some fold has chosen the share of the folds that have."""
        table = self["SelectionStability"]
        return {row["predictor"]: row["percent_of_folds"] / 100.0 for row in table.rows()}

    @property
    def folds(self) -> ResultTable:
        """A row a fold: repeat, number, cases, predictors, and the measures."""
        return self["Folds"]


def cross_validate(
    data: Any,
    target: str | int,
    *,
    folds: int = 10,
    repeats: int = 1,
    seed: int = 1,
    predictors: int = 0,
    except_: str | int | Sequence[str | int] = (),
    levels: Mapping[str, str] | None = None,
    weight: Any = None,
    schema: Any = None,
    null: Sequence[str] = (),
    reading: Mapping[str, Any] | None = None,
    stream: bool = False,
    name: str | None = None,
    threads: int | None = None,
    progress: bool | None = None,
    memory: int = 0,
) -> CrossValidation:
    """Cross-validates :func:`model` over the data, the selection of predictors included.

    The cases are dealt into ``folds``, class by class, ``repeats`` times; ``seed`` says how. Each
    fold is predicted by a model whose predictors were selected on the others, by pseudo-BIC. The other
    arguments are those of :func:`model`.
    """
    if folds < 2 or repeats < 1:
        raise errors.RequestError(f"folds is {folds} and repeats {repeats}; give 2 and 1 at least")
    options = Options(
        levels=levels, weight=weight, schema=schema, null=null, reading=reading, stream=stream,
        name=name,
    )
    job = Job(threads, progress)
    table = job.open(data, options)
    names, n = lib.texts(_list(except_))
    said = lib.model_options(
        except_=lib.address(names), n_except=n, test=-1.0,
        predictors=lib.count("predictors", predictors), memory=lib.count("memory", memory),
        folds=lib.count("folds", folds), repeats=lib.count("repeats", repeats),
        seed=lib.count("seed", seed),
    )
    result = job.result(
        CrossValidation, table, "model", table, _target(target), ctypes.byref(said))
    result._warn()
    if "CrossValidation" not in result:
        text = next((m["text"] for m in result.messages if "folds" in m["key"]), "")
        raise errors.RequestError(text or "the model could not be cross-validated")
    return result
