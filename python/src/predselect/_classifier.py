"""The classifier: Naive Bayes over the features that serve it best."""

from __future__ import annotations

import os
import tempfile
from pathlib import Path
from typing import Any
from xml.etree import ElementTree

import numpy as np
from sklearn.base import BaseEstimator, ClassifierMixin
from sklearn.utils.multiclass import check_classification_targets
from sklearn.utils.validation import _check_feature_names_in, check_is_fitted

from . import _functions
from ._estimator_base import (
    Columns,
    MixedData,
    Pickled,
    check_whole,
    free_name,
    has_nothing_to_tell,
    kind_of,
    labels_of,
    lists,
    name_at,
    quietly,
    quoted,
    says,
)
from ._explain import Explanation, explain, prior_explanation, whole_explanation
from ._results import Result
from ._state import Exports, State
from .errors import CommandError, PredSelectWarning, warn

_ALL, _AUTO = " /SUBSET NOSELECTION", " /SUBSET MAXSIZE=AUTO(BESTSUBSET=PSEUDOBIC)"
# What a command says where constant features leave it fewer than it is to choose, and what to ask for.
_TOO_FEW = {"Too few possible predictors, exact size...": _ALL,
            "Too few possible predictors, maximum size...": _AUTO,
            "All possible predictors excluded...": _ALL}


class SubsetNaiveBayes(MixedData, Pickled, Exports, ClassifierMixin, BaseEstimator):  # type: ignore[misc]
    """Naive Bayes over the few features that serve it best, of any kind, with missing values.

    Parameters
    ----------
    selection : {"forward", "all"} or int, default="forward"
        How features come into the model: one after the other as long as the pseudo-BIC falls, all
        of them, or exactly so many besides the forced ones: more than there are of these, and all
        where there are no more.
    max_features : int or None, default=None
        The most that forward selection adds to the forced ones; never less than one more than
        there are of these.
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
        check_whole("bins", self.bins, 2)
        if self.max_features is not None:
            check_whole("max_features", self.max_features, 1)
        columns, y, weights = self._cases(X, y, sample_weight, reset=True)
        self.classes_ = np.unique(y)
        self._parts = [(columns, y, weights)]
        try:
            self._build()
        except BaseException:  # an earlier model is not one of these features
            del self.classes_
            raise
        finally:
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
        known = self.classes_ if classes is None else np.unique(classes)
        if not is_first and not np.array_equal(known, self.classes_):
            raise ValueError("classes is not the same as on the last call to partial_fit")
        unknown = ~np.isin(y, known)
        if unknown.any():
            raise ValueError(f"y has labels that are not in classes: {np.unique(y[unknown])}")
        self.classes_ = known
        self._parts = [*getattr(self, "_parts", []), (columns, y, weights)]
        self._is_stale = True
        return self

    def _cases(self, X: Any, y: Any, sample_weight: Any, reset: bool) -> tuple[Columns, Any, Any]:
        if y is None:
            raise ValueError(
                "This SubsetNaiveBayes estimator requires y to be passed, but the target y is None"
            )
        columns = self._columns_of(X, reset)
        y = labels_of(y, columns.n)
        check_classification_targets(y)
        weights = self._weights(sample_weight, X, columns.n)
        if weights is not None:
            rows = weights > 0
            columns, y, weights = columns.take(rows), y[rows], weights[rows]
        return columns, y, weights

    def _all_cases(self) -> tuple[dict[str, Any], Columns, Any, Any]:
        columns = self._parts[0][0]
        if len(self._parts) > 1:
            joined = {name: _join([part[0].columns[name] for part in self._parts])
                      for name in columns.columns}
            columns = Columns(joined, sum(part[0].n for part in self._parts), columns.numeric)
        y = np.concatenate([part[1] for part in self._parts])
        weights = None
        if any(part[2] is not None for part in self._parts):
            weights = np.concatenate([np.ones(p[0].n) if p[2] is None else p[2]
                                      for p in self._parts])
        return columns.columns, columns, y, weights

    def _build(self) -> None:
        """The model of all cases that are kept. Where it fails, it is to be built yet."""
        self._is_stale = True
        names, columns, y, weights = self._all_cases()
        codes = np.searchsorted(self.classes_, y)
        counts = np.bincount(codes, weights, len(self.classes_))
        self._counts = counts
        self._state: State | None = None
        self._path: list[dict[str, Any]] = []
        self._chosen: list[str] = []
        self._there = np.flatnonzero(counts > 0)
        if len(self._there) > 1:
            self._name = free_name("y", list(names))
            data = {**names, self._name: self._labels()[codes]}
            categorical = self._categorical(columns)
            self._run(data, categorical, None if weights is None else _whole(weights))
        self._is_stale = False

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

    def _command(self, categorical: dict[str, bool], subset: str) -> str:
        forced = self._forced(list(categorical))
        force = ""
        if forced:
            factors = " ".join(quoted(n) for n in forced if categorical[n])
            covariates = " ".join(quoted(n) for n in forced if not categorical[n])
            force = " /FORCE" + (f" FACTORS={factors}" if factors else "")
            force += f" COVARIATES={covariates}" if covariates else ""
            categorical = {n: c for n, c in categorical.items() if n not in forced}
        return (
            f"NAIVEBAYES {quoted(self._name)}{lists(categorical)}{force}"
            f"{subset or self._subset(len(categorical), len(forced))}"
            f" /CRITERIA TIMER=0 BINS={self.bins}"
            " /MACROVAR FACTORS=factors COVARIATES=covariates /PRINT SUMMARY SELECTED."
        )

    def _subset(self, n: int, n_forced: int) -> str:
        """Of n features besides the forced ones. A size that is not below what there is bounds
        nothing, and the command takes none such."""
        if self.selection == "all" or n == 0:
            return _ALL
        if self.selection == "forward":
            most = n if self.max_features is None else max(self.max_features, n_forced + 1)
            return f" /SUBSET MAXSIZE={most}(BESTSUBSET=PSEUDOBIC)" if most < n else _AUTO
        if isinstance(self.selection, (int, np.integer)) and self.selection > n_forced:
            return f" /SUBSET EXACTSIZE={self.selection}" if self.selection < n else _ALL
        raise ValueError(f'selection is {self.selection!r}; give "forward", "all", or a number '
                         f"above that of the forced features, which is {n_forced}")

    def _forced(self, names: list[str]) -> list[str]:
        asked = [self.force] if isinstance(self.force, str) else self.force
        forced = [name_at(int(f), names, "force") if isinstance(f, (int, np.integer)) else str(f)
                  for f in asked]
        if unknown := [f for f in forced if f not in names]:
            raise ValueError(f"force names {unknown}, which X does not have")
        return forced

    def _run(
        self, data: dict[str, Any], categorical: dict[str, bool], weights: Any, subset: str = ""
    ) -> None:
        levels = {n: "nominal" if c else "scale" for n, c in categorical.items()}
        with tempfile.TemporaryDirectory() as folder:
            path = Path(folder) / "model.bin"
            try:
                result: Result = quietly(
                    _functions.run, data, self._command(categorical, subset), save_state=path,
                    memory=self.memory or "auto", weight=weights, threads=self.threads,
                    calibrate=self.calibrate,
                    levels={**levels, self._name: "nominal"}, progress=False,
                )
            except CommandError as failure:
                instead = next((s for key, s in _TOO_FEW.items() if says(failure, [key])), "")
                if instead and instead != subset:
                    return self._run(data, categorical, weights, instead)
                if not has_nothing_to_tell(failure):
                    raise
                return
            if path.exists():
                self._state = State._of(path)
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
        result: Result = quietly(
            _functions.score, self._state, columns.columns, levels=levels, threads=self.threads,
            predicted=free_name("predicted", list(columns.columns)), progress=False,
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
        explained = quietly(explain, self._state, columns.columns, levels=levels,
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

        are_alike = all(part.dtype == parts[0].dtype for part in parts)
        if not are_alike and any(kind_of(part) == "C" for part in parts):
            parts = [part.astype(object) for part in parts]  # categories of numbers stay categories
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
