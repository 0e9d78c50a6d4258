"""What both estimators share: data of any kind, weights, commands, pickles."""

from __future__ import annotations

import decimal
import numbers
from collections.abc import Sequence
from typing import Any

import numpy as np
from sklearn.utils.validation import (
    _check_sample_weight,
    _get_feature_names,
    column_or_1d,
    validate_data,
)

from ._columns import is_missing
from ._data import columns_of
from ._results import Result
from ._state import State
from .errors import CommandError, DataError, quiet

_STATE_VERSION = 1
_MOST_WEIGHT = 1e100  # squares of sums are numbers yet


def quoted(name: str) -> str:
    return '"' + name.replace('"', '""') + '"'


def is_frame(X: Any) -> bool:
    return hasattr(X, "columns") and (hasattr(X, "iloc") or hasattr(X, "__arrow_c_stream__"))


def frame_of(X: Any) -> Any:
    """X as scikit-learn knows frames: tables of Arrow and of a database become frames of pandas, and
    masked numbers missing ones."""
    if isinstance(X, np.ma.MaskedArray) and X.dtype.kind in "fiub":
        return np.ma.filled(X.astype(float), np.nan) if np.ma.is_masked(X) else X.data
    if hasattr(X, "df") and hasattr(X, "__arrow_c_stream__"):
        return X.df()
    return X.to_pandas() if hasattr(X, "column_names") and hasattr(X, "to_pandas") else X


class _Named:
    """A frame in the dress in which any scikit-learn finds names."""

    def __init__(self, X: Any) -> None:
        self._X = X
        self.shape: tuple[int, int] = X.shape

    def __dataframe__(self) -> _Named:
        return self

    def column_names(self) -> list[str]:
        return list(self._X.columns)

    def __array__(self, dtype: Any = None, copy: Any = None) -> Any:
        return np.asarray(self._X.to_numpy(), dtype)


def named(X: Any) -> Any:
    """X with names that scikit-learn finds: before 1.9 it finds none in frames of polars 2."""
    is_known = not is_frame(X) or hasattr(X, "iloc") or _get_feature_names(X) is not None
    return X if is_known else _Named(X)


def frame_columns(X: Any) -> dict[str, Any]:
    """The columns of a data frame as Python sees them."""
    columns = columns_of(X)
    if columns is None:
        columns = {str(n): _polars_column(X[n]) for n in X.columns}
    return {name: _decimals_as_floats(values) for name, values in columns.items()}


def _polars_column(series: Any) -> Any:
    """Numbers as they are, texts and categories as objects."""
    values = series.to_numpy()
    return values if values.dtype.kind in "fiubmM" else np.asarray(series.to_list(), object)


def _decimals_as_floats(values: Any) -> Any:
    """Objects that are decimals are numbers."""
    if kind_of(values) != "O":
        return values
    first = next((value for value in values if not is_missing(value)), None)
    if not isinstance(first, decimal.Decimal):
        return values
    lost = [is_missing(value) for value in values]
    if not all(no or isinstance(v, decimal.Decimal) for v, no in zip(values, lost)):
        return values
    floats = np.array([np.nan if no else float(v) for v, no in zip(values, lost)])
    return type(values)(floats) if hasattr(values, "iloc") else floats


def kind_of(values: Any) -> str:
    """The kind of a column's dtype, "C" for categories."""
    dtype = getattr(values, "dtype", np.dtype(object))
    return "C" if hasattr(dtype, "categories") else str(getattr(dtype, "kind", "O"))


class Columns:
    """The predictors of a fit or a prediction: columns by the names that the library gets."""

    def __init__(self, columns: dict[str, Any], n: int, numeric: bool) -> None:
        self.columns, self.n, self.numeric = columns, n, numeric

    def take(self, rows: Any) -> Columns:
        taken = {name: _take(values, rows) for name, values in self.columns.items()}
        return Columns(taken, int(np.count_nonzero(rows)), self.numeric)


def _take(values: Any, rows: Any) -> Any:
    return values[rows].reset_index(drop=True) if hasattr(values, "iloc") else values[rows]


class MixedData:
    """What both estimators do with data: columns of any kind, or a matrix of numbers."""

    def _columns_of(self, X: Any, reset: bool) -> Columns:
        X = frame_of(X)
        if is_frame(X) and self._is_mixed(X):
            validate_data(self, X=named(X), reset=reset, skip_check_array=True)
            columns = frame_columns(X)
            # Under the names that a frame of numbers alone has.
            columns = dict(zip(self._names(len(columns)), columns.values()))
            self._refuse_infinities(columns)
            _check_names(columns)
            return Columns(columns, len(X), False)
        checked: Any = validate_data(
            self, X=named(X), reset=reset, dtype="numeric", ensure_all_finite="allow-nan"
        )
        checked = np.asfortranarray(checked)
        names = self._names(checked.shape[1])
        columns = {name: checked[:, i] for i, name in enumerate(names)}
        _check_names(columns)
        return Columns(columns, checked.shape[0], True)

    @staticmethod
    def _is_mixed(X: Any) -> bool:
        """Whether a frame holds more than the numbers that numpy has."""
        dtypes = X.dtypes
        if hasattr(dtypes, "to_list"):  # pandas
            return any(not isinstance(d, np.dtype) or d.kind not in "fiu" for d in dtypes.to_list())
        return any(not (hasattr(d, "is_numeric") and d.is_numeric()) for d in dtypes)

    @staticmethod
    def _refuse_infinities(columns: dict[str, Any]) -> None:
        for name, values in columns.items():
            if kind_of(values) == "f" and np.isinf(np.asarray(values, float)).any():
                raise ValueError(f"Input X contains infinity (column {name!r})")

    def _names(self, n: int) -> list[str]:
        names = getattr(self, "feature_names_in_", None)
        return [f"x{i}" for i in range(n)] if names is None else [str(name) for name in names]

    def _categorical(self, columns: Columns) -> dict[str, bool]:
        """Which columns are categories, as `categorical_features` has it."""
        asked = self.categorical_features  # type: ignore[attr-defined]
        names = list(columns.columns)
        if isinstance(asked, str):
            if asked != "from_dtype":
                raise ValueError('categorical_features is "from_dtype", names, places or a mask')
            return {n: kind_of(v) not in "fiumM" for n, v in columns.columns.items()}
        chosen = np.asarray(asked)
        if chosen.dtype.kind == "b":
            if len(chosen) != len(names):
                raise ValueError("categorical_features is a mask of another length than X is wide")
            wanted = {name for name, is_wanted in zip(names, chosen) if is_wanted}
        elif chosen.dtype.kind in "iu":
            wanted = {name_at(i, names, "categorical_features") for i in chosen}
        else:
            wanted = {str(c) for c in chosen}
        if missing := wanted - set(names):
            raise ValueError(f"categorical_features names {sorted(missing)}, which X does not have")
        return {n: n in wanted or kind_of(v) not in "fiumM" for n, v in columns.columns.items()}

    def _weights(self, sample_weight: Any, X: Any, n: int) -> Any:
        if sample_weight is None:
            return None
        probe = X if hasattr(X, "shape") else np.empty((n, 1))
        weights = _check_sample_weight(sample_weight, probe, dtype=np.float64)
        if (weights < 0).any():
            raise ValueError("Negative values in sample_weight")
        if not weights.any():
            raise ValueError("All values of sample_weight are zero: there is no case to learn from")
        if not weights.max() < _MOST_WEIGHT / len(weights):
            raise ValueError("sample_weight: weights count cases, and these add up to more than can be "
                             "counted. Divide them, so that 1 stands for one case")
        return weights


def labels_of(y: Any, n: int) -> Any:
    """A target of n cases as an array without missing values."""
    y = column_or_1d(y, warn=True)
    if len(y) != n:
        raise ValueError(f"X and y have inconsistent numbers of samples: {n} and {len(y)}")
    is_lost = (not np.isfinite(y.astype(float)).all() if y.dtype.kind in "fc"
               else np.isnat(y).any() if y.dtype.kind in "mM"
               else y.dtype.kind == "O" and any(is_missing(value) for value in y))
    if is_lost:
        raise ValueError("Input y contains NaN or infinity. Leave those cases out")
    return y


def _check_names(names: Any) -> None:
    for name in names:
        if not name or any(c in name for c in "\n\r\0"):
            raise ValueError(f"the column {name!r} needs another name: one of a line, not empty")


def name_at(place: int, names: list[str], parameter: str) -> str:
    if not -len(names) <= place < len(names):
        raise ValueError(f"{parameter} names the feature {place}, and X has {len(names)}")
    return names[place]


def check_whole(name: str, value: Any, least: int) -> None:
    is_whole = isinstance(value, numbers.Integral) and not isinstance(value, bool)
    if not (is_whole and value >= least):
        raise ValueError(f"{name} is {value!r}; give a whole number from {least}")


def free_name(name: str, taken: Sequence[str]) -> str:
    while name in taken:
        name += "_"
    return name


def lists(categorical: dict[str, bool]) -> str:
    by = " ".join(quoted(n) for n, is_categorical in categorical.items() if is_categorical)
    with_ = " ".join(quoted(n) for n, is_categorical in categorical.items() if not is_categorical)
    return (f" BY {by}" if by else "") + (f" WITH {with_}" if with_ else "")


def quietly(function: Any, *arguments: Any, **options: Any) -> Any:
    """Without the warnings of commands, which an estimator has asked for itself; those of lost
    weights stay."""
    with quiet():
        return function(*arguments, **options)


class Pickled:
    """Pickles by state files: nothing of them is more than bytes that the library checks."""

    def __getstate__(self) -> dict[str, Any]:
        held: Any = super().__getstate__()
        kept: dict[str, Any] = dict(held)
        kept["_predselect_state_version"] = _STATE_VERSION
        return kept

    def __setstate__(self, kept: Any) -> None:
        if not isinstance(kept, dict) or kept.get("_predselect_state_version") != _STATE_VERSION:
            raise DataError(
                f"the pickle holds no {type(self).__name__} of this version; fit it anew, or load "
                "the state that save() wrote"
            )
        kept = {k: v for k, v in kept.items() if k != "_predselect_state_version"}
        state = kept.get("_state")
        if state is not None and not isinstance(state, State):
            raise DataError("the pickle holds something else in the place of the state")
        super().__setstate__(kept)  # type: ignore[misc]


# What a command says where no feature has anything to tell: keys of its messages.
_NOTHING_TO_TELL = (
    "All predictors missing or constant...",
    "All cases excluded in Predictor Selection...",
    "Too few training cases...",
)


def has_nothing_to_tell(failure: CommandError) -> bool:
    return says(failure, _NOTHING_TO_TELL)


def says(failure: CommandError, keys: Sequence[str]) -> bool:
    """Whether one of its errors is among the keys."""
    result = failure.result
    messages = result.messages if isinstance(result, Result) else []
    return any(m["key"] in keys for m in messages if m["severity"] == "error")
