"""Estimators for scikit-learn: a selector of predictors, and a Naive Bayes classifier that selects."""

from __future__ import annotations

import numbers
import os
import tempfile
from collections.abc import Sequence
from pathlib import Path
from typing import Any
from xml.etree import ElementTree

import numpy as np
from sklearn.base import BaseEstimator, ClassifierMixin
from sklearn.exceptions import NotFittedError
from sklearn.feature_selection import SelectorMixin
from sklearn.utils._set_output import _get_output_config
from sklearn.utils.multiclass import check_classification_targets, type_of_target
from sklearn.utils.validation import (
    _check_feature_names_in,
    _check_sample_weight,
    _get_feature_names,
    check_is_fitted,
    column_or_1d,
    validate_data,
)

from . import _functions
from ._columns import is_missing
from ._data import columns_of
from ._explain import Explanation, explain, prior_explanation, whole_explanation
from ._results import Ranking, Result, ResultTable, numbers_of
from ._state import Exports, State
from .errors import CommandError, DataError, PredSelectWarning, quiet, warn

_STATE_VERSION = 1
_MOST_WEIGHT = 1e100  # squares of sums are numbers yet


def _quoted(name: str) -> str:
    return '"' + name.replace('"', '""') + '"'


def _is_frame(X: Any) -> bool:
    return hasattr(X, "columns") and (hasattr(X, "iloc") or hasattr(X, "__arrow_c_stream__"))


def _frame_of(X: Any) -> Any:
    """X as scikit-learn knows frames: tables of Arrow and of a database become frames of pandas."""
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


def _named(X: Any) -> Any:
    """X with names that scikit-learn finds: before 1.9 it finds none in frames of polars 2."""
    is_known = not _is_frame(X) or hasattr(X, "iloc") or _get_feature_names(X) is not None
    return X if is_known else _Named(X)


def _frame_columns(X: Any) -> dict[str, Any]:
    """The columns of a data frame as Python sees them."""
    columns = columns_of(X)
    if columns is not None:
        return columns
    return {str(n): _polars_column(X[n]) for n in X.columns}


def _polars_column(series: Any) -> Any:
    """Numbers as they are, texts and categories as objects."""
    values = series.to_numpy()
    return values if values.dtype.kind in "fiubmM" else np.asarray(series.to_list(), object)


def _kind(values: Any) -> str:
    """The kind of a column's dtype, "C" for categories."""
    dtype = getattr(values, "dtype", np.dtype(object))
    return "C" if hasattr(dtype, "categories") else str(getattr(dtype, "kind", "O"))


class _Columns:
    """The predictors of a fit or a prediction: columns by the names that the library gets."""

    def __init__(self, columns: dict[str, Any], n: int, numeric: bool) -> None:
        self.columns, self.n, self.numeric = columns, n, numeric

    def take(self, rows: Any) -> _Columns:
        taken = {name: _take(values, rows) for name, values in self.columns.items()}
        return _Columns(taken, int(np.count_nonzero(rows)), self.numeric)


def _take(values: Any, rows: Any) -> Any:
    return values[rows].reset_index(drop=True) if hasattr(values, "iloc") else values[rows]


class _Mixed:
    """What both estimators do with data: columns of any kind, or a matrix of numbers."""

    def _columns_of(self, X: Any, reset: bool) -> _Columns:
        X = _frame_of(X)
        if _is_frame(X) and self._is_mixed(X):
            validate_data(self, X=_named(X), reset=reset, skip_check_array=True)
            columns = _frame_columns(X)
            self._refuse_infinities(columns)
            _check_names(columns)
            return _Columns(columns, len(X), False)
        checked: Any = validate_data(
            self, X=_named(X), reset=reset, dtype="numeric", ensure_all_finite="allow-nan"
        )
        checked = np.asfortranarray(checked)
        names = self._names(checked.shape[1])
        columns = {name: checked[:, i] for i, name in enumerate(names)}
        _check_names(columns)
        return _Columns(columns, checked.shape[0], True)

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
            if _kind(values) == "f" and np.isinf(np.asarray(values, float)).any():
                raise ValueError(f"Input X contains infinity (column {name!r})")

    def _names(self, n: int) -> list[str]:
        names = getattr(self, "feature_names_in_", None)
        return [f"x{i}" for i in range(n)] if names is None else [str(name) for name in names]

    def _categorical(self, columns: _Columns) -> dict[str, bool]:
        """Which columns are categories, as `categorical_features` has it."""
        asked = self.categorical_features  # type: ignore[attr-defined]
        names = list(columns.columns)
        if isinstance(asked, str):
            if asked != "from_dtype":
                raise ValueError('categorical_features is "from_dtype", names, places or a mask')
            return {n: _kind(v) not in "fiumM" for n, v in columns.columns.items()}
        chosen = np.asarray(asked)
        if chosen.dtype.kind == "b":
            if len(chosen) != len(names):
                raise ValueError("categorical_features is a mask of another length than X is wide")
            return dict(zip(names, chosen.tolist()))
        if chosen.dtype.kind in "iu":
            wanted = {_name_at(i, names, "categorical_features") for i in chosen}
        else:
            wanted = {str(c) for c in chosen}
        if missing := wanted - set(names):
            raise ValueError(f"categorical_features names {sorted(missing)}, which X does not have")
        return {n: n in wanted or _kind(v) not in "fiumM" for n, v in columns.columns.items()}

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


def _labels_of(y: Any, n: int) -> Any:
    """A target of n cases as an array without missing values."""
    y = column_or_1d(y, warn=True)
    if len(y) != n:
        raise ValueError(f"X and y have inconsistent numbers of samples: {n} and {len(y)}")
    is_lost = (not np.isfinite(y.astype(float)).all() if y.dtype.kind in "fc"
               else y.dtype.kind == "O" and any(is_missing(value) for value in y))
    if is_lost:
        raise ValueError("Input y contains NaN or infinity. Leave those cases out")
    return y


def _check_names(names: Any) -> None:
    for name in names:
        if not name or any(c in name for c in "\n\r\0"):
            raise ValueError(f"the column {name!r} needs another name: one of a line, not empty")


def _name_at(place: int, names: list[str], parameter: str) -> str:
    if not -len(names) <= place < len(names):
        raise ValueError(f"{parameter} names the feature {place}, and X has {len(names)}")
    return names[place]


def _check_whole(name: str, value: Any, least: int) -> None:
    is_whole = isinstance(value, numbers.Integral) and not isinstance(value, bool)
    if not (is_whole and value >= least):
        raise ValueError(f"{name} is {value!r}; give a whole number from {least}")


def _free_name(name: str, taken: Sequence[str]) -> str:
    while name in taken:
        name += "_"
    return name


def _lists(categorical: dict[str, bool]) -> str:
    by = " ".join(_quoted(n) for n, is_categorical in categorical.items() if is_categorical)
    with_ = " ".join(_quoted(n) for n, is_categorical in categorical.items() if not is_categorical)
    return (f" BY {by}" if by else "") + (f" WITH {with_}" if with_ else "")


def _quietly(function: Any, *arguments: Any, **options: Any) -> Any:
    """Without the warnings of commands, which an estimator has asked for itself; those of lost
    weights stay."""
    with quiet():
        return function(*arguments, **options)


class _Pickled:
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


class PredictorSelector(_Mixed, _Pickled, SelectorMixin, BaseEstimator):  # type: ignore[misc]
    """Ranks features one by one against the target with exact p-values, and keeps the best.

    Parameters
    ----------
    k : int or None, default=None
        At most so many features; None for all that `alpha` lets through.
    alpha : float or None, default=0.05
        Only features with a p-value below are kept, None for no such bound.
    correction : {"none", "fdr", "holm"}, default="none"
        Which p-value is held against `alpha`: the feature's own, or adjusted over all features for
        the false discovery rate (Benjamini-Hochberg) or the familywise error (Holm).
    target : {"auto", "class", "continuous"}, default="auto"
        What the target is; "auto" asks scikit-learn's ``type_of_target``.
    by : {"p", "lr", "v", "lambda", "bits"}, default="p"
        What ranks.
    categorical_features : "from_dtype", names, places or a mask, default="from_dtype"
        Which features are categories. By dtype: all but numbers and times.
    threads : int or None, default=1
        How many threads work; None for all processors.

    Attributes
    ----------
    scores_, pvalues_, logpvalues_ : ndarray of shape (n_features,)
        Test statistic, p-value and natural logarithm of the p-value; NaN for a feature that was
        screened out (constant, empty).
    effect_sizes_ : ndarray of shape (n_features,)
        How strong each feature is: bias-corrected Cramer's V, eta squared or correlation.
    ranking_ : ndarray of shape (n_features,)
        1 for the best; features that were screened out share the last place.
    """

    def __init__(
        self,
        k: int | None = None,
        *,
        alpha: float | None = 0.05,
        correction: str = "none",
        target: str = "auto",
        by: str = "p",
        categorical_features: Any = "from_dtype",
        threads: int | None = 1,
    ) -> None:
        self.k = k
        self.alpha = alpha
        self.correction = correction
        self.target = target
        self.by = by
        self.categorical_features = categorical_features
        self.threads = threads

    def __sklearn_tags__(self) -> Any:
        tags = super().__sklearn_tags__()
        tags.target_tags.required = True
        tags.input_tags.allow_nan = True
        return tags

    def fit(self, X: Any, y: Any, sample_weight: Any = None) -> PredictorSelector:
        """Ranks the features of X against y. Weights count cases, rounded to whole numbers."""
        self._state: State | None = None
        self._fit(X, y, sample_weight, merge=False)
        return self

    def partial_fit(self, X: Any, y: Any, sample_weight: Any = None) -> PredictorSelector:
        """Adds cases to those counted so far; only counts are kept, not the cases. Behind ``fit``,
        which keeps no counts, it begins anew. Counts are ranked by p-values."""
        if self.by != "p":
            raise ValueError(f"by is {self.by!r}: partial_fit ranks by \"p\" alone; fit ranks by others")
        self._fit(X, y, sample_weight, merge=True)
        return self

    def _fit(self, X: Any, y: Any, sample_weight: Any, merge: bool) -> None:
        self._check_parameters()
        is_first = getattr(self, "_state", None) is None
        if y is None:
            raise ValueError(
                "This PredictorSelector estimator requires y to be passed, but the target y is None"
            )
        columns = self._columns_of(X, reset=is_first)
        y = self._target_of(y, columns.n, is_first or not merge)
        weights = self._weights(sample_weight, X, columns.n)
        if weights is not None:
            rows = weights > 0
            columns, y, weights = columns.take(rows), y[rows], weights[rows]
            if not (weights >= 0.5).any():
                raise ValueError(
                    "sample_weight: weights count cases, rounded to whole numbers, and none reaches "
                    "0.5. Multiply them, so that 1 stands for one case"
                )
        if columns.n < 2 and not merge:
            raise ValueError(f"n_samples={columns.n}: at least 2 samples are needed to rank features")
        name = _free_name("y", list(columns.columns))
        data = {**columns.columns, name: y}
        if merge:
            self._count(data, name, columns, weights, is_first)
        else:
            self._rank(data, name, columns, weights)

    def _check_parameters(self) -> None:
        if self.correction not in ("none", "fdr", "holm"):
            raise ValueError(f"correction is {self.correction!r}; give none, fdr or holm")
        if self.target not in ("auto", "class", "continuous"):
            raise ValueError(f"target is {self.target!r}; give auto, class or continuous")
        if self.by not in _functions._BY:
            raise ValueError(f"by is {self.by!r}; give {', '.join(_functions._BY)}")
        if self.k is not None:
            _check_whole("k", self.k, 0)
        if self.alpha is not None and not isinstance(self.alpha, numbers.Real):
            raise ValueError(f"alpha is {self.alpha!r}; give a number, or None for no bound")

    def _target_of(self, y: Any, n: int, reset: bool) -> Any:
        y = _labels_of(y, n)
        if reset:
            kind = type_of_target(y, input_name="y") if self.target == "auto" else self.target
            if kind not in ("binary", "multiclass", "continuous", "class"):
                raise ValueError(f"Unknown label type: {kind}")
            self._is_class = kind != "continuous"
        return y if self._is_class or y.dtype.kind in "fiu" else y.astype(float)

    def _levels(self, name: str, categorical: dict[str, bool]) -> dict[str, str]:
        levels = {n: "nominal" if c else "scale" for n, c in categorical.items()}
        return {**levels, name: "nominal" if self._is_class else "scale"}

    def _rank(self, data: dict[str, Any], name: str, columns: _Columns, weights: Any) -> None:
        categorical = self._categorical(columns)
        self._clear(len(columns.columns))
        try:
            ranking: Ranking = _quietly(
                _functions.rank, data, name, by=self.by, weight=weights, threads=self.threads,
                levels=self._levels(name, categorical), progress=False,
            )
        except CommandError as failure:
            if not _has_nothing_to_tell(failure):
                raise
            return
        if "Ranking" in ranking:
            self._read_ranking(ranking["Ranking"], list(columns.columns))

    def _clear(self, n: int) -> None:
        for attribute in ("scores_", "pvalues_", "logpvalues_", "effect_sizes_", "_adjusted",
                          "_holm"):
            setattr(self, attribute, np.full(n, np.nan))
        self.ranking_ = np.full(n, n, dtype=int)

    def _read_ranking(self, table: ResultTable, names: list[str]) -> None:
        at = [names.index(name) for name in table["predictor"]]
        log = numbers_of(table, "log10_p") * np.log(10.0)
        is_perfect = np.isnan(log) & (numbers_of(table, "fdr_adjusted_p") == 0.0)
        log = np.where(is_perfect, -np.inf, log)
        self.logpvalues_[at] = log
        self.pvalues_[at] = np.exp(log)
        self.scores_[at] = numbers_of(table, "test_value")
        self.effect_sizes_[at] = numbers_of(table, "effect_size")
        self._adjusted[at] = numbers_of(table, "fdr_adjusted_p")
        self._holm[at] = numbers_of(table, "holm_adjusted_p")
        self.ranking_[at] = numbers_of(table, "rank").astype(int)

    def _count(
        self, data: dict[str, Any], name: str, columns: _Columns, weights: Any, is_first: bool
    ) -> None:
        categorical = self._categorical(columns)
        command = (
            f"SELECTPRED {_quoted(name)} (MLEVEL={'N' if self._is_class else 'S'})"
            f"{_lists(categorical)} /CRITERIA TIMER=0 PVALUES=EXACT SHOWUNSELECTED={len(data)}"
        )
        with tempfile.TemporaryDirectory() as folder:
            path = Path(folder) / "counts.bin"
            try:
                _quietly(_functions.run, data, command + " /PRINT NONE.", save_state=path,
                         levels=self._levels(name, categorical), weight=weights,
                         threads=self.threads, progress=False)
            except CommandError:
                if not path.exists():
                    raise
            counted = State.load(path)
        if not is_first and self._state is not None:
            self._state.merge(counted)
            counted = self._state
        self._state = counted
        self._clear(len(columns.columns))
        self._read_counts(counted.inspect(), list(columns.columns))

    def _read_counts(self, counts: Result, names: list[str]) -> None:
        """The ranking of merged counts, which holds statistics and p-values by their tests."""
        if "Ranking" not in counts:
            return
        table = counts["Ranking"]
        at = np.array([names.index(name) for name in table["predictor"]])
        tests = [c.removesuffix("_rank") for c in table.columns if c.endswith("_rank")]
        for test in reversed(tests):
            self._read_test(table, test, at)
        order = np.lexsort((numbers_of(table, f"{tests[0]}_rank"),))
        self.ranking_[at[order]] = np.arange(1, len(order) + 1)
        self._adjust()

    def _read_test(self, table: ResultTable, test: str, at: Any) -> None:
        is_t = f"{test}_t" in table.columns
        value = numbers_of(table, f"{test}_{'t' if is_t else 'value'}")
        there = ~np.isnan(value)
        p = numbers_of(table, f"{test}_unadjusted_sig")
        self.scores_[at[there]] = value[there]
        self.pvalues_[at[there]] = p[there]
        with np.errstate(divide="ignore"):
            log = np.log(p)
        far = there & (p == 0)
        if far.any():
            log[far] = _log_tail(table, test, value, far)
        self.logpvalues_[at[there]] = log[there]

    def _adjust(self) -> None:
        """Benjamini-Hochberg and Holm over the features that have a p-value."""
        at = np.flatnonzero(~np.isnan(self.pvalues_))
        order = at[np.argsort(self.pvalues_[at], kind="stable")]
        n, p = len(order), self.pvalues_[order]
        fdr = np.minimum.accumulate((p * n / np.arange(1, n + 1))[::-1])[::-1]
        self._adjusted[order] = np.minimum(fdr, 1.0)
        self._holm[order] = np.minimum(np.maximum.accumulate(p * np.arange(n, 0, -1)), 1.0)

    def _get_support_mask(self) -> Any:
        check_is_fitted(self, "ranking_")
        p = {"none": self.pvalues_, "fdr": self._adjusted, "holm": self._holm}[self.correction]
        mask = ~np.isnan(self.pvalues_) | ~np.isnan(self.scores_)
        if self.alpha is not None:
            mask &= p < self.alpha
        if self.k is not None:
            kept = np.flatnonzero(mask)
            best = kept[np.argsort(self.ranking_[kept], kind="stable")[: self.k]]
            mask = np.zeros(len(mask), bool)
            mask[best] = True
        return mask

    def transform(self, X: Any) -> Any:
        """The kept features of X; a data frame stays one."""
        check_is_fitted(self, "ranking_")
        X = _frame_of(X)
        if _is_frame(X) and self._is_mixed(X):
            validate_data(self, X=_named(X), reset=False, skip_check_array=True)
            names = [c for c, keep in zip(X.columns, self.get_support()) if keep]
            return self._as_asked(X[names])
        return super().transform(_named(X))

    def _as_asked(self, kept: Any) -> Any:
        """A frame of polars in place of which `set_output` wants one of pandas: that would take its
        cells for objects."""
        is_asked = _get_output_config("transform", self)["dense"] == "pandas"
        if not is_asked or hasattr(kept, "iloc"):
            return kept
        import pandas

        return pandas.DataFrame(_frame_columns(kept))

    def save(self, path: str | os.PathLike[str]) -> None:
        """Writes what partial_fit has counted as a state that the program reads and merges."""
        state: State | None = getattr(self, "_state", None)
        if state is None:
            raise NotFittedError("only counts of partial_fit can be saved; there are none")
        state.save(path)


def _log_tail(table: ResultTable, test: str, value: Any, rows: Any) -> Any:
    """The logarithm of a p-value that no number can hold, from the statistic."""
    value = value[rows]
    if f"{test}_df1" in table.columns:
        df1, df2 = (numbers_of(table, f"{test}_{df}")[rows] for df in ("df1", "df2"))
        return log_f_tail(value, df1, df2)
    df = numbers_of(table, f"{test}_df")[rows]
    return log_chi2_tail(value, df) if "chi" in test else log_f_tail(value**2, 1.0, df)


def log_f_tail(value: Any, df1: Any, df2: Any) -> Any:
    """ln P(F > value) far out, by the power series of the incomplete beta function."""
    from scipy.special import betaln

    a, b, x = df2 / 2, df1 / 2, df2 / (df2 + df1 * value)
    term = total = np.ones_like(x)
    for n in range(1, 1_000_000):
        term = term * x * (a + b + n - 1) / (a + n)
        total = total + term
        if not (term > 1e-17 * total).any():
            break
    return a * np.log(x) + b * np.log1p(-x) - np.log(a) - betaln(a, b) + np.log(total)


def log_chi2_tail(value: Any, df: Any) -> Any:
    """ln P(chi-square > value) far out, by Legendre's continued fraction, from its end."""
    from scipy.special import gammaln

    a, y = df / 2, value / 2
    fraction = y
    for n in range(500, 0, -1):
        fraction = y + 2 * n - 1 - a - n * (n - a) / (fraction if n < 500 else y + 2 * n + 1 - a)
    return a * np.log(y) - y - gammaln(a) - np.log(fraction)


# What a command says where no feature has anything to tell: keys of its messages.
_NOTHING_TO_TELL = (
    "All predictors missing or constant...",
    "All cases excluded in Predictor Selection...",
    "Too few training cases...",
)


def _has_nothing_to_tell(failure: CommandError) -> bool:
    result = failure.result
    messages = result.messages if isinstance(result, Result) else []
    return any(m["key"] in _NOTHING_TO_TELL for m in messages if m["severity"] == "error")


class SubsetNaiveBayes(_Mixed, _Pickled, Exports, ClassifierMixin, BaseEstimator):  # type: ignore[misc]
    """Naive Bayes over the few features that serve it best, of any kind, with missing values.

    Parameters
    ----------
    selection : {"forward", "all"} or int, default="forward"
        How features come into the model: one after the other as long as the pseudo-BIC falls, all
        of them, or exactly so many besides the forced ones.
    max_features : int or None, default=None
        The most that forward selection looks at.
    force : sequence of str or int, default=()
        Features that are in the model whatever they are worth.
    bins : int, default=10
        How many bins of equal width a number is put into.
    categorical_features : "from_dtype", names, places or a mask, default="from_dtype"
        Which features are categories. By dtype: all but numbers and times.
    calibrate : {"temperature", "isotonic"} or None, default=None
        How probabilities are made to hold what they say: by the training cases, each scored
        without the counts of its fold. A warning says where the cases leave it open; probabilities
        are then those without a calibration.
    memory : int, default=0
        What training cases may take, in kilobytes; 0 for half of what is free.
    threads : int or None, default=1
        How many threads work; None for all processors.

    Attributes
    ----------
    classes_ : ndarray of shape (n_classes,)
    class_prior_ : ndarray of shape (n_classes,)
        The share of each class in the training weight.
    selected_features_ : ndarray
        The features of the model, in the order in which they were chosen.
    path_ : list of dict
        A step each: the feature added, the criterion and the average log-likelihood of the subset with
        it, and the place of that subset among all by the criterion.
    state_ : State or None
        The model as the program has it; None where there is nothing to tell classes apart by.
    """

    def __init__(
        self,
        *,
        selection: Any = "forward",
        max_features: int | None = None,
        force: Any = (),
        bins: int = 10,
        categorical_features: Any = "from_dtype",
        calibrate: str | None = None,
        memory: int = 0,
        threads: int | None = 1,
    ) -> None:
        self.selection = selection
        self.max_features = max_features
        self.force = force
        self.bins = bins
        self.categorical_features = categorical_features
        self.calibrate = calibrate
        self.memory = memory
        self.threads = threads

    def __sklearn_tags__(self) -> Any:
        tags = super().__sklearn_tags__()
        tags.input_tags.allow_nan = True
        return tags

    _parts: list[Any]

    def fit(self, X: Any, y: Any, sample_weight: Any = None) -> SubsetNaiveBayes:
        """Chooses the features and builds the model. Weights may be any numbers from 0."""
        _check_whole("bins", self.bins, 2)
        if self.max_features is not None:
            _check_whole("max_features", self.max_features, 1)
        columns, y, weights = self._cases(X, y, sample_weight, reset=True)
        self._forget()
        self.classes_ = self._classes_of(y)
        self._parts = [(columns, y, weights)]
        self._build()
        self._parts = []
        return self

    def partial_fit(
        self, X: Any, y: Any, classes: Any = None, sample_weight: Any = None
    ) -> SubsetNaiveBayes:
        """Adds cases. What follows is what one fit over all of them gives.

        The cases are kept, since a selection goes over them again; the model is built when it is
        asked for. `classes` lists all classes at the first call, as everywhere in scikit-learn.
        Behind `fit`, which keeps no cases, it begins anew, with the classes of that.
        """
        is_first = not getattr(self, "_parts", None)
        if is_first and classes is None:
            classes = getattr(self, "classes_", None)
            if classes is None:
                raise ValueError("classes must be passed on the first call to partial_fit.")
        columns, y, weights = self._cases(X, y, sample_weight, reset=is_first)
        if is_first:
            self._forget()
            self.classes_ = np.unique(classes)
        elif classes is not None and not np.array_equal(np.unique(classes), self.classes_):
            raise ValueError("classes is not the same as on the last call to partial_fit")
        unknown = ~np.isin(y, self.classes_)
        if unknown.any():
            raise ValueError(f"y has labels that are not in classes: {np.unique(y[unknown])}")
        self._parts = [*getattr(self, "_parts", []), (columns, y, weights)]
        self._is_stale = True
        return self

    def _forget(self) -> None:
        self._parts = []
        self._is_stale = False

    def _cases(self, X: Any, y: Any, sample_weight: Any, reset: bool) -> tuple[_Columns, Any, Any]:
        if y is None:
            raise ValueError(
                "This SubsetNaiveBayes estimator requires y to be passed, but the target y is None"
            )
        columns = self._columns_of(X, reset)
        y = _labels_of(y, columns.n)
        check_classification_targets(y)
        weights = self._weights(sample_weight, X, columns.n)
        if weights is not None:
            rows = weights > 0
            columns, y, weights = columns.take(rows), y[rows], weights[rows]
        return columns, y, weights

    @staticmethod
    def _classes_of(y: Any) -> Any:
        return np.unique(y)

    def _all_cases(self) -> tuple[dict[str, Any], _Columns, Any, Any]:
        columns = self._parts[0][0]
        if len(self._parts) > 1:
            joined = {name: _join([part[0].columns[name] for part in self._parts])
                      for name in columns.columns}
            columns = _Columns(joined, sum(part[0].n for part in self._parts), columns.numeric)
        y = np.concatenate([part[1] for part in self._parts])
        weights = None
        if any(part[2] is not None for part in self._parts):
            weights = np.concatenate([np.ones(p[0].n) if p[2] is None else p[2]
                                      for p in self._parts])
        return columns.columns, columns, y, weights

    def _build(self) -> None:
        """The model of all cases that are kept."""
        names, columns, y, weights = self._all_cases()
        codes = np.searchsorted(self.classes_, y)
        counts = np.bincount(codes, weights, len(self.classes_))
        self._is_stale = False
        self._counts = counts
        self._state: State | None = None
        self._path: list[dict[str, Any]] = []
        self._chosen: list[str] = []
        self._there = np.flatnonzero(counts > 0)
        if len(self._there) < 2:
            return
        self._name = _free_name("y", list(names))
        data = {**names, self._name: self._labels()[codes]}
        categorical = self._categorical(columns)
        self._run(data, categorical, None if weights is None else _whole(weights))

    def _labels(self) -> Any:
        """The classes as values of a column: as they are where the library keeps their order."""
        kind = self.classes_.dtype.kind
        if kind in "iuf" and np.abs(self.classes_.astype(float)).max() < 2**53:
            return self.classes_.astype(np.float64)
        if kind == "b":
            return self.classes_.astype(np.float64)
        return np.asarray([str(c) for c in self.classes_], object)

    def _in_order(self) -> Any:
        """The places of the model's classes, in the order in which the library has them: numbers
        that went over as texts are in the order of texts."""
        return self._there[np.argsort(self._labels()[self._there], kind="stable")]

    def _command(self, categorical: dict[str, bool]) -> str:
        forced = self._forced(list(categorical))
        force = ""
        if forced:
            factors = " ".join(_quoted(n) for n in forced if categorical[n])
            covariates = " ".join(_quoted(n) for n in forced if not categorical[n])
            force = " /FORCE" + (f" FACTORS={factors}" if factors else "")
            force += f" COVARIATES={covariates}" if covariates else ""
            categorical = {n: c for n, c in categorical.items() if n not in forced}
        return (
            f"NAIVEBAYES {_quoted(self._name)}{_lists(categorical)}{force}"
            f"{self._subset(len(categorical), len(forced))}"
            f" /CRITERIA TIMER=0 BINS={self.bins}"
            " /MACROVAR FACTORS=factors COVARIATES=covariates /PRINT SUMMARY SELECTED."
        )

    def _subset(self, n: int, n_forced: int) -> str:
        if self.selection == "all" or n == 0:
            return " /SUBSET NOSELECTION"
        if self.selection == "forward":
            if self.max_features is None or self.max_features >= n + n_forced:
                return " /SUBSET MAXSIZE=AUTO(BESTSUBSET=PSEUDOBIC)"
            return f" /SUBSET MAXSIZE={max(self.max_features, n_forced + 1)}(BESTSUBSET=PSEUDOBIC)"
        if isinstance(self.selection, (int, np.integer)) and self.selection > n_forced:
            return f" /SUBSET EXACTSIZE={self.selection}" if self.selection < n else (
                " /SUBSET NOSELECTION")
        raise ValueError(f'selection is {self.selection!r}; give "forward", "all", or a number '
                         "above that of the forced features")

    def _forced(self, names: list[str]) -> list[str]:
        asked = [self.force] if isinstance(self.force, str) else self.force
        forced = [_name_at(int(f), names, "force") if isinstance(f, (int, np.integer)) else str(f)
                  for f in asked]
        if unknown := [f for f in forced if f not in names]:
            raise ValueError(f"force names {unknown}, which X does not have")
        return forced

    def _run(self, data: dict[str, Any], categorical: dict[str, bool], weights: Any) -> None:
        levels = {n: "nominal" if c else "scale" for n, c in categorical.items()}
        with tempfile.TemporaryDirectory() as folder:
            path = Path(folder) / "model.bin"
            try:
                result: Result = _quietly(
                    _functions.run, data, self._command(categorical), save_state=path,
                    memory=self.memory or "auto", weight=weights, threads=self.threads,
                    calibrate=self.calibrate,
                    levels={**levels, self._name: "nominal"}, progress=False,
                )
            except CommandError as failure:
                if not _has_nothing_to_tell(failure):
                    raise
                return
            if path.exists():
                self._state = State.load(path)
        for message in result.messages:
            if message["key"].startswith("The model is not calibrated"):
                warn(message["text"], PredSelectWarning)
        self._chosen = [name for names in result.macros.values() for name in names]
        if "SubsetSummary" in result:
            self._path = list(result["SubsetSummary"].rows())

    def _ready(self) -> None:
        check_is_fitted(self, "classes_")
        if self._is_stale:
            self._build()

    @property
    def state_(self) -> State | None:
        """The model as the program has it."""
        self._ready()
        return self._state

    @property
    def class_prior_(self) -> Any:
        """The share of each class in the training weight."""
        self._ready()
        return self._counts / self._counts.sum()

    @property
    def path_(self) -> list[dict[str, Any]]:
        """The steps of the selection."""
        self._ready()
        return [dict(row) for row in self._path]

    @property
    def selected_features_(self) -> Any:
        """The features of the model."""
        self._ready()
        steps = [row["predictor_added"] for row in self.path_ if row.get("predictor_added")]
        order = [n for n in dict.fromkeys(steps) if n in self._chosen]
        return np.asarray(order + [n for n in self._chosen if n not in order], object)

    def feature_log_prob(self, feature: str) -> dict[str, Any]:
        """The log-probabilities of a feature's values, or bins, given each class of the training."""
        of_library = _log_prob(self._with_state(), str(feature))
        order = np.argsort(self._in_order())
        return {value: log[order] for value, log in of_library.items()}

    def predict_proba(self, X: Any) -> Any:
        """The probability of each class; classes that training did not have get 0."""
        probabilities, _ = self._score(X)
        return probabilities

    def predict_log_proba(self, X: Any) -> Any:
        """The logarithms of the probabilities."""
        with np.errstate(divide="ignore"):
            return np.log(self.predict_proba(X))

    def predict(self, X: Any) -> Any:
        """The most probable class of each case."""
        _, winners = self._score(X)
        return self.classes_[winners]

    def _score(self, X: Any) -> tuple[Any, Any]:
        self._ready()
        columns = self._columns_of(X, reset=False)
        whole = np.zeros((columns.n, len(self.classes_)))
        if self._state is None:
            whole[:] = self.class_prior_
            return whole, np.argmax(whole, axis=1)
        levels = {n: "nominal" if c else "scale" for n, c in self._categorical(columns).items()}
        result: Result = _quietly(
            _functions.score, self._state, columns.columns, levels=levels, threads=self.threads,
            predicted=_free_name("predicted", list(columns.columns)), progress=False,
        )
        new = result.new_columns.to_dict()
        names = list(new)
        whole[:, self._in_order()] = np.column_stack([new[n] for n in names[1:]])
        return whole, self._winners(new[names[0]], whole)

    def explain(self, X: Any) -> Explanation:
        """What each feature of X says of the classes of each case, in arrays as SHAP has them; 0
        for features that the model does not have. Classes that training did not have are left out.
        """
        self._ready()
        columns = self._columns_of(X, reset=False)
        classes = self.classes_[self._there]
        if self._state is None:
            priors = self.class_prior_[self._there]
            return prior_explanation(columns.columns, columns.n, classes, priors)
        levels = {n: "nominal" if c else "scale" for n, c in self._categorical(columns).items()}
        explained = _quietly(explain, self._state, columns.columns, levels=levels,
                             threads=self.threads, progress=False)
        return whole_explanation(explained, columns.columns, classes, self._in_order())

    def _winners(self, predicted: Any, whole: Any) -> Any:
        labels = self._labels()
        place = {label: i for i, label in enumerate(labels)}
        return np.fromiter((place[p] for p in predicted), int, len(predicted))

    def get_feature_names_out(self, input_features: Any = None) -> Any:
        """The features of the model."""
        _check_feature_names_in(self, input_features)
        return self.selected_features_

    def save(self, path: str | os.PathLike[str]) -> None:
        """Writes the model as a state, which the program scores with."""
        self._with_state().save(path)

    def export(
        self, path: str | os.PathLike[str], to: str | None = None, table: str = "data"
    ) -> None:
        """Writes the model for other programs, as :meth:`State.export` does; so do ``to_pmml``,
        ``to_onnx``, ``to_sql``, ``to_c`` and ``to_json``."""
        self._with_state().export(path, to, table)

    def _with_state(self) -> State:
        self._ready()
        if self._state is None:
            raise ValueError("the model has no features, and is no more than its priors")
        return self._state


def _join(parts: list[Any]) -> Any:
    if hasattr(parts[0], "iloc"):
        import pandas

        return pandas.concat(parts, ignore_index=True)
    return np.concatenate(parts)


def _whole(weights: Any) -> Any:
    """Weights as whole numbers, which the engine counts: others in units that lose no more than a
    thousandth of the smallest one, as far as sums stay exact."""
    if np.array_equal(weights, np.rint(weights)):
        return weights
    unit = min(1000.0 / weights.min(), 2.0**50 / weights.sum())
    return np.maximum(np.rint(weights * unit), 1.0)


def _log_prob(state: State, feature: str) -> dict[str, Any]:
    """From the counts of the model's document: (N(m,k) + 1/N) / (T(k) + M/N)."""
    with tempfile.TemporaryDirectory() as folder:
        path = Path(folder) / "model.pmml"
        state._write_counts(path)
        root = ElementTree.parse(path).getroot()
    space = {"p": root.tag.partition("}")[0].lstrip("{")}
    model = root.find("p:NaiveBayesModel", space)
    assert model is not None
    targets = [t.get("value") for t in model.iterfind("p:BayesOutput//p:TargetValueCount", space)]
    for item in model.iterfind("p:BayesInputs/p:BayesInput", space):
        if item.get("fieldName") == feature:
            break
    else:
        raise ValueError(f"{feature!r} is not among the features of the model")
    pairs = item.findall("p:PairCounts", space)
    counts = np.zeros((len(pairs), len(targets)))
    for i, pair in enumerate(pairs):
        for count in pair.iterfind(".//p:TargetValueCount", space):
            counts[i, targets.index(count.get("value"))] = float(count.get("count", "0"))
    smoothing = float(model.get("threshold", "0"))
    log = np.log((counts + smoothing) / (counts.sum(axis=0) + len(pairs) * smoothing))
    bins = [_interval(b, space) for b in item.iterfind(".//p:DiscretizeBin", space)]
    values = bins or [str(pair.get("value")) for pair in pairs]
    return dict(zip(values, log))


def _interval(bin_: Any, space: dict[str, str]) -> str:
    interval = bin_.find("p:Interval", space)
    return f"({interval.get('leftMargin', '-inf')}, {interval.get('rightMargin', 'inf')}]"


__all__ = ["PredictorSelector", "SubsetNaiveBayes"]
