"""The selector: features ranked one by one against the target."""

from __future__ import annotations

import datetime
import numbers
import os
import tempfile
from collections.abc import Collection
from pathlib import Path
from typing import Any

import numpy as np
from sklearn.base import BaseEstimator
from sklearn.exceptions import NotFittedError
from sklearn.feature_selection import SelectorMixin
from sklearn.utils._set_output import _get_output_config
from sklearn.utils.multiclass import type_of_target
from sklearn.utils.validation import check_is_fitted, validate_data

from . import _functions
from ._columns import is_missing
from ._estimator_base import (
    Columns,
    MixedData,
    Pickled,
    check_whole,
    frame_columns,
    frame_of,
    free_name,
    has_nothing_to_tell,
    is_frame,
    kind_of,
    labels_of,
    lists,
    named,
    quietly,
    quoted,
)
from ._results import Ranking, ResultTable, numbers_of
from ._state import State
from .errors import CommandError, PredSelectWarning, warn


class PredictorSelector(MixedData, Pickled, SelectorMixin, BaseEstimator):  # type: ignore[misc]
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
        screened out.
    effect_sizes_ : ndarray of shape (n_features,)
        How strong each feature is: bias-corrected Cramer's V, eta squared or correlation. NaN after
        ``partial_fit``.
    ranking_ : ndarray of shape (n_features,)
        1 for the best; features that were screened out share the last place.

    Notes
    -----
    As for :func:`rank`, screening leaves out features before any is ranked: those that are constant
    or empty; that lack values in more than 70 % of the cases; categories of which one has more than
    95 % of the cases, or of which there are more than 90 for 100 cases, or, for a target of classes,
    of which more than 90 % have one case; numbers whose standard deviation is below 0.001 of their
    mean's size, unless X has dates. A warning names them but for those that are constant or empty.
    Of numbers far from 0 subtract the mean.
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
        name = free_name("y", list(columns.columns))
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
            check_whole("k", self.k, 0)
        if self.alpha is not None and not isinstance(self.alpha, numbers.Real):
            raise ValueError(f"alpha is {self.alpha!r}; give a number, or None for no bound")

    def _target_of(self, y: Any, n: int, reset: bool) -> Any:
        y = labels_of(y, n)
        if reset:
            kind = type_of_target(y, input_name="y") if self.target == "auto" else self.target
            if kind not in ("binary", "multiclass", "continuous", "class"):
                raise ValueError(f"Unknown label type: {kind}")
            self._is_class = kind != "continuous"
        return y if self._is_class or y.dtype.kind in "fiu" else y.astype(float)

    def _levels(self, name: str, categorical: dict[str, bool]) -> dict[str, str]:
        levels = {n: "nominal" if c else "scale" for n, c in categorical.items()}
        return {**levels, name: "nominal" if self._is_class else "scale"}

    def _rank(self, data: dict[str, Any], name: str, columns: Columns, weights: Any) -> None:
        categorical = self._categorical(columns)
        self._clear(len(columns.columns))
        try:
            ranking: Ranking = quietly(
                _functions.rank, data, name, by=self.by, weight=weights, threads=self.threads,
                levels=self._levels(name, categorical), progress=False,
            )
        except CommandError as failure:
            if not has_nothing_to_tell(failure):
                raise
            return
        if "Ranking" in ranking:
            self._read_ranking(ranking["Ranking"], list(columns.columns))
        _warn_of_screened(columns, ranking.predictors)

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
        self, data: dict[str, Any], name: str, columns: Columns, weights: Any, is_first: bool
    ) -> None:
        categorical = self._categorical(columns)
        command = (
            f"SELECTPRED {quoted(name)} (MLEVEL={'N' if self._is_class else 'S'})"
            f"{lists(categorical)} /CRITERIA TIMER=0 PVALUES=EXACT SHOWUNSELECTED={len(data)}"
        )
        if any(_has_dates(values) for values in columns.columns.values()):
            command += " /SCREENING CV=0"  # as a ranking does: dates are far from their day 0
        with tempfile.TemporaryDirectory() as folder:
            path = Path(folder) / "counts.bin"
            try:
                quietly(_functions.run, data, command + " /PRINT NONE.", save_state=path,
                         levels=self._levels(name, categorical), weight=weights,
                         threads=self.threads, progress=False)
            except CommandError:
                if not path.exists():
                    raise
            counted = State._of(path)
        if not is_first and self._state is not None:
            self._state.merge(counted)
            counted = self._state
        self._state = counted
        self._clear(len(columns.columns))
        told = counted.inspect()
        if "Ranking" in told:
            self._read_counts(told["Ranking"], list(columns.columns))
        _warn_of_screened(columns, told["Ranking"]["predictor"] if "Ranking" in told else ())

    def _read_counts(self, table: ResultTable, names: list[str]) -> None:
        """The ranking of merged counts, which holds statistics and p-values by their tests."""
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
        """The kept features of X. A data frame of more than numbers stays one, of numbers alone
        becomes an array unless ``set_output`` says otherwise, as everywhere in scikit-learn."""
        check_is_fitted(self, "ranking_")
        X = frame_of(X)
        if is_frame(X) and self._is_mixed(X):
            validate_data(self, X=named(X), reset=False, skip_check_array=True)
            names = [c for c, keep in zip(X.columns, self.get_support()) if keep]
            return self._as_asked(X[names])
        return super().transform(named(X))

    def _as_asked(self, kept: Any) -> Any:
        """A frame of polars in place of which `set_output` wants one of pandas: that would take its
        cells for objects."""
        is_asked = _get_output_config("transform", self)["dense"] == "pandas"
        if not is_asked or hasattr(kept, "iloc"):
            return kept
        import pandas

        return pandas.DataFrame(frame_columns(kept))

    def save(self, path: str | os.PathLike[str]) -> None:
        """Writes what partial_fit has counted as a state that the program reads and merges."""
        state: State | None = getattr(self, "_state", None)
        if state is None:
            raise NotFittedError("only counts of partial_fit can be saved; there are none")
        state.save(path)


def _warn_of_screened(columns: Columns, ranked: Collection[str]) -> None:
    """Names what might have been ranked."""
    kept = set(ranked)
    names = [n for n, values in columns.columns.items() if n not in kept and _varies(values)]
    if names:
        more = f" and {len(names) - 10} more" if len(names) > 10 else ""
        warn(f"Screening has left out {', '.join(names[:10])}{more}: too many values are missing, "
             "too many are in one category, there are almost as many categories as cases, or "
             "numbers vary too little for their size (subtract their mean). The notes of "
             "PredictorSelector have the bounds.", PredSelectWarning)


def _varies(values: Any) -> bool:
    numbers = np.asarray(values)
    if numbers.dtype.kind in "fiub":
        there = numbers[~np.isnan(numbers)] if numbers.dtype.kind == "f" else numbers
        return there.size > 0 and bool((there != there[0]).any())
    met = (value for value in values if not is_missing(value))
    first = next(met, None)
    return any(value != first for value in met)


def _has_dates(values: Any) -> bool:
    kind = kind_of(values)
    if kind != "O":
        return kind == "M"
    first = next((value for value in values if not is_missing(value)), None)
    return isinstance(first, datetime.date)  # which times are, too


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
