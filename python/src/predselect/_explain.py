"""Explanations: what each predictor says of the classes of each case, in arrays as SHAP has them."""

from __future__ import annotations

import os
from collections.abc import Mapping, Sequence
from typing import Any

import numpy as np

from ._data import Options, columns_of
from ._functions import Job, state_of
from ._results import Model, Result
from ._state import State


class Explanation:
    """What predictors add to the evidence for the classes, case by case.

    ``values`` has a number for each case and predictor, of more than two classes one for each class
    (cases x predictors x classes); ``base_values`` what the priors add. Of two classes
    ``base_values + values.sum(1)`` is the posterior's log-odds of the second one; of more, numbers
    by class of which the softmax is the posterior. Of an isotonic model that is the posterior before
    its calibration, which no sum over predictors makes. ``data`` has the predictors' values as they are
    in the data (None where these are not in memory), ``feature_names`` their names, ``output_names``
    the classes. Slicing gives the explanation of some cases, predictors and classes.

    Attributes and shapes are those of ``shap.Explanation``; :meth:`to_shap` makes one of it.
    """

    def __init__(
        self, values: Any, base_values: Any, data: Any, feature_names: Any, output_names: Any
    ) -> None:
        self.values = np.asarray(values)
        self.base_values = np.asarray(base_values)
        self.data = data
        self.feature_names = feature_names
        self.output_names = output_names

    @property
    def shape(self) -> tuple[int, ...]:
        """That of ``values``."""
        return tuple(self.values.shape)

    def __len__(self) -> int:
        return len(self.values)

    def __getitem__(self, item: Any) -> Explanation:
        items = item if isinstance(item, tuple) else (item,)
        if any(part is Ellipsis for part in items):
            at = next(i for i, part in enumerate(items) if part is Ellipsis)
            left = (slice(None),) * (self.values.ndim - len(items) + 1)
            items = items[:at] + left + items[at + 1:]
        if len(items) > self.values.ndim:
            raise IndexError(f"an explanation of shape {self.shape} has no {len(items)} axes")
        whole: Any = slice(None)
        rows, features, classes = [*items, whole, whole, whole][:3]
        features, classes = _places(features, self.feature_names), _places(classes, self.output_names)
        has_classes = self.values.ndim == 3
        values = self.values[rows][..., features, :] if has_classes else self.values[rows][..., features]
        base = self.base_values[rows]
        if has_classes:
            values, base = values[..., classes], base[..., classes]
        data = None if self.data is None else self.data[rows][..., features]
        names = None if self.feature_names is None else np.asarray(self.feature_names)[features]
        outputs = np.asarray(self.output_names)[classes] if has_classes else self.output_names
        return Explanation(values, base, data, _listed(names), _listed(outputs))

    def to_shap(self) -> Any:
        """The same as a ``shap.Explanation``, for the plots of that package."""
        import shap  # type: ignore[import-not-found]

        return shap.Explanation(
            values=self.values, base_values=self.base_values, data=self.data,
            feature_names=self.feature_names, output_names=self.output_names,
        )

    def __repr__(self) -> str:
        return f"<Explanation: {' x '.join(map(str, self.shape))}, {self.feature_names}>"


def _places(wanted: Any, names: Any) -> Any:
    """An index of names, for which a name, or a list of them, may stand."""
    if isinstance(wanted, str):
        return list(names).index(wanted)
    if isinstance(wanted, list) and any(isinstance(name, str) for name in wanted):
        return [_places(name, names) for name in wanted]
    return wanted


def _listed(names: Any) -> Any:
    return names.tolist() if isinstance(names, np.ndarray) else names


def explain(
    state: State | Model | str | os.PathLike[str],
    data: Any,
    *,
    levels: Mapping[str, str] | None = None,
    null: Sequence[str] = (),
    reading: Mapping[str, Any] | None = None,
    stream: bool = False,
    name: str | None = None,
    threads: int | None = None,
    progress: bool | None = None,
) -> Explanation:
    """What each predictor of a model says of the classes of each case, as an :class:`Explanation`.

    The arguments are those of :func:`score`.
    """
    known = state_of(state)
    job = Job(threads, progress)
    table = job.open(data, Options(
        levels=levels, null=null, reading=reading, stream=stream, name=name))
    result = job.result(Result, table, "explain", table, known._handle)
    return _explanation_of(result, _columns(data))


def whole_explanation(
    explained: Explanation, columns: Mapping[str, Any], classes: Any, order: Any
) -> Explanation:
    """The same over all features and with the caller's classes: `order` has the places among these
    of the model's classes. A feature that the model does not have says nothing."""
    names = list(columns)
    at = [names.index(name) for name in explained.feature_names]
    values = np.zeros((len(explained), len(names), *explained.shape[2:]))
    base = explained.base_values
    if values.ndim == 3:
        back = np.argsort(order)
        values[:, at] = explained.values[..., back]
        base = base[:, back]
    else:
        sign = 1.0 if order[0] < order[1] else -1.0
        values[:, at] = sign * explained.values
        base = sign * base
    return Explanation(values, base, _cells(columns, names), names, list(classes))


def prior_explanation(columns: Mapping[str, Any], n: int, classes: Any, priors: Any) -> Explanation:
    """Where the priors are all there is."""
    names, weights = list(columns), np.log(priors)
    if len(classes) == 2:
        values, base = np.zeros((n, len(names))), np.full(n, weights[1] - weights[0])
    else:
        values = np.zeros((n, len(names), len(classes)))
        base = np.tile(weights - weights.mean(), (n, 1))
    return Explanation(values, base, _cells(columns, names), names, list(classes))


def _columns(data: Any) -> Mapping[str, Any] | None:
    """The columns of what is in memory; None for files and streams."""
    columns = columns_of(data)
    if columns is None and hasattr(data, "get_column"):  # polars
        columns = {name: np.asarray(data.get_column(name).to_list()) for name in data.columns}
    if columns is None and hasattr(data, "column_names"):  # pyarrow
        columns = {name: np.asarray(data.column(name).to_pylist()) for name in data.column_names}
    return columns


def _explanation_of(result: Result, columns: Mapping[str, Any] | None) -> Explanation:
    """Of the library's variables, which go predictor by predictor, and the predictors' cells."""
    base = result["BaseValues"]
    weights, classes = base["weight_of_evidence"], list(base["class"])
    names = list(dict.fromkeys(result["WeightsOfEvidence"]["predictor"]))
    each = list(result.new_columns.to_dict().values())
    values = np.column_stack(each) if each else np.zeros((0, 0))
    if len(classes) == 2:
        base_values = np.full(len(values), weights[1])
    else:
        values = values.reshape(len(values), len(names), len(classes))
        base_values = np.tile(weights, (len(values), 1))
    return Explanation(values, base_values, _cells(columns, names), names, classes)


def _array_of(column: Any) -> Any:
    """Missing values of a mask or beside texts stay missing values."""
    if isinstance(column, np.ma.MaskedArray):
        kind, lost = (float, np.nan) if column.dtype.kind in "fiub" else (object, None)
        return np.ma.filled(column.astype(kind), lost)
    made = np.asarray(column)
    return np.asarray(column, object) if made.dtype.kind in "US" else made


def _cells(columns: Mapping[str, Any] | None, names: Sequence[str]) -> Any:
    """The predictors' values side by side: numbers, or objects where one of them is none."""
    if columns is None or any(name not in columns for name in names):
        return None
    cells = [_array_of(columns[name]) for name in names]
    if all(column.dtype.kind in "fiub" for column in cells):
        return np.column_stack([column.astype(float) for column in cells])
    return np.column_stack([column.astype(object) for column in cells])
