"""The estimators keep scikit-learn's contract, and do what it does not ask for."""

from __future__ import annotations

import decimal
import io
import pickle
import warnings

import numpy as np
import pytest

import predselect as ps

sklearn = pytest.importorskip("sklearn")
import joblib  # noqa: E402
from sklearn.base import clone  # noqa: E402
from sklearn.calibration import CalibratedClassifierCV  # noqa: E402
from sklearn.compose import make_column_transformer  # noqa: E402
from sklearn.datasets import load_breast_cancer, load_iris, make_regression  # noqa: E402
from sklearn.exceptions import NotFittedError  # noqa: E402
from sklearn.feature_selection import f_classif  # noqa: E402
from sklearn.linear_model import LogisticRegression  # noqa: E402
from sklearn.model_selection import GridSearchCV, cross_validate  # noqa: E402
from sklearn.pipeline import make_pipeline  # noqa: E402
from sklearn.utils.estimator_checks import parametrize_with_checks  # noqa: E402

from predselect import PredictorSelector, SubsetNaiveBayes  # noqa: E402


@parametrize_with_checks([
    PredictorSelector(), PredictorSelector(k=1, alpha=None), SubsetNaiveBayes(),
    SubsetNaiveBayes(selection="all", bins=5), SubsetNaiveBayes(calibrate="isotonic"),
])
def test_the_contract(estimator, check):
    check(estimator)


X, Y = load_iris(return_X_y=True)


def frame(path):
    pandas = pytest.importorskip("pandas")
    table = pandas.read_csv(path).astype({"island": "category"})
    return table.drop(columns="species"), table["species"]


def test_statistics_are_those_of_scikit_learn_and_p_values_do_not_end():
    fitted = PredictorSelector().fit(X, Y)
    f, p = f_classif(X, Y)
    np.testing.assert_allclose(fitted.scores_, f, rtol=1e-10)
    np.testing.assert_allclose(fitted.logpvalues_, np.log(p), rtol=1e-10)
    assert fitted.ranking_.tolist() == (np.argsort(np.argsort(p)) + 1).tolist()
    large = np.tile(X, (200, 1))
    far = PredictorSelector().fit(large, np.tile(Y, 200))
    assert (far.pvalues_[2:] == 0).all() and (far.logpvalues_[2:] < -1000).all()
    regression, target = make_regression(200, 5, n_informative=2, random_state=0)
    assert PredictorSelector(k=2).fit(regression, target).get_support().sum() == 2


@pytest.mark.parametrize(("parameters", "kept"), [
    ({}, 4), ({"k": 2}, 2), ({"alpha": None, "k": 3}, 3), ({"alpha": 1e-40}, 2),
    ({"correction": "fdr", "alpha": 1e-15}, 4), ({"correction": "holm", "alpha": 1e-40}, 2),
    ({"by": "bits", "k": 1}, 1),
])
def test_what_a_selector_keeps(parameters, kept):
    assert PredictorSelector(**parameters).fit(X, Y).get_support().sum() == kept


@pytest.mark.parametrize(("estimator", "words"), [
    (PredictorSelector(correction="some"), "none, fdr or holm"),
    (PredictorSelector(target="what"), "auto, class or continuous"),
    (PredictorSelector(categorical_features=["z"]), "which X does not have"),
    (SubsetNaiveBayes(selection="backward"), "forward"),
    (SubsetNaiveBayes(force=["z"]), "which X does not have"),
    (SubsetNaiveBayes(force=[9]), "names the feature 9, and X has 4"),
    (SubsetNaiveBayes(bins=1), "bins is 1; give a whole number from 2"),
    (SubsetNaiveBayes(max_features=0), "max_features is 0"),
    (PredictorSelector(k=-1), "k is -1"),
    (PredictorSelector(by="chance"), "give p, lr"),
])
def test_wrong_parameters_are_told(estimator, words):
    with pytest.raises(ValueError, match=words):
        estimator.fit(X, Y)


def test_parts_count_as_the_whole():
    whole = PredictorSelector().fit(X, Y)
    parts = PredictorSelector()
    order = np.random.default_rng(0).permutation(len(Y))
    for start in range(0, len(Y), 40):
        rows = order[start : start + 40]
        parts.partial_fit(X[rows], Y[rows])
    for name in ("scores_", "logpvalues_", "_adjusted", "_holm"):
        np.testing.assert_allclose(getattr(parts, name), getattr(whole, name), rtol=1e-9)
    assert parts.ranking_.tolist() == whole.ranking_.tolist()
    model = SubsetNaiveBayes()
    for start in range(0, len(Y), 40):
        rows = order[start : start + 40]
        model.partial_fit(X[rows], Y[rows], classes=[0, 1, 2])
    once = SubsetNaiveBayes().fit(X[order], Y[order])
    assert (model.predict_proba(X) == once.predict_proba(X)).all()


def test_parts_have_p_values_without_an_end_too():
    random = np.random.default_rng(2)
    pandas = pytest.importorskip("pandas")
    target = random.integers(0, 3, 6000)
    data = pandas.DataFrame({"far": target + random.normal(0, 0.3, 6000), "near": random.normal(size=6000),
                             "text": [f"{t + (i % 9 == 0)}" for i, t in enumerate(target)]})
    for y in (target.astype(str), data["far"].to_numpy() * 1.5 + random.normal(0, 0.1, 6000)):
        whole = PredictorSelector().fit(data, y)
        parts = PredictorSelector().partial_fit(data[:4000], y[:4000]).partial_fit(data[4000:], y[4000:])
        assert whole.logpvalues_.min() < -2000
        np.testing.assert_allclose(parts.logpvalues_, whole.logpvalues_, rtol=1e-9)


def test_a_model_is_the_one_of_the_program(penguins, program, tmp_path):
    data, species = frame(penguins)
    fitted = SubsetNaiveBayes(categorical_features=["year"]).fit(data, species)
    commands = (f"NAIVEBAYES species /SUBSET MAXSIZE=AUTO(BESTSUBSET=PSEUDOBIC)"
                f" /SAVE PREDVAL(v) PREDPROB(p).")
    csv = tmp_path / "scored.csv"
    program("run", "--data", str(penguins), "-c", commands, "--save-data", str(csv), "--only-new")
    theirs = [line.split(",") for line in csv.read_text().splitlines()[1:]]
    assert fitted.predict(data).tolist() == [line[0] for line in theirs]
    assert fitted.predict_proba(data)[:, 1].tolist() == [float(line[2]) for line in theirs]
    assert list(fitted.selected_features_) == ["flipper_length_mm", "bill_length_mm", "island"]
    assert fitted.path_[1]["predictor_added"] == "flipper_length_mm"
    fitted.save(tmp_path / "model.bin")
    scored = ps.score(tmp_path / "model.bin", data, levels={"year": "nominal"}).new_columns
    assert scored["PredictedValue"].tolist() == fitted.predict(data).tolist()
    table = fitted.feature_log_prob("island")
    np.testing.assert_allclose(np.exp(list(table.values())).sum(axis=0), 1.0)
    assert "(-inf" in next(iter(fitted.feature_log_prob("bill_length_mm")))


@pytest.mark.parametrize("make", ["pandas", "polars", "objects"])
def test_mixed_columns_missing_values_and_unseen_categories(penguins, make):
    data, species = frame(penguins)
    new = data.iloc[[0, 0, 0]].reset_index(drop=True)
    new["island"] = ["Atlantis", None, "Dream"]
    if make == "polars":
        polars = pytest.importorskip("polars")
        data, new = (polars.DataFrame({n: [None if v != v else v for v in t[n].tolist()] for n in t})
                     for t in (data, new))
    if make == "objects":
        data, new = data.astype({"island": object}), new.astype({"island": object})
    fitted = SubsetNaiveBayes().fit(data, species)
    probabilities = fitted.predict_proba(new)
    np.testing.assert_allclose(probabilities.sum(axis=1), 1.0)
    np.testing.assert_allclose(probabilities[0], probabilities[1])
    kept = PredictorSelector(k=2).set_output(transform="default").fit(data, species).transform(data)
    assert list(kept.columns) == ["bill_length_mm", "flipper_length_mm"]
    every = PredictorSelector(alpha=None).set_output(transform="pandas").fit(data, species)
    kinds = {n: dtype.kind for n, dtype in every.transform(data).dtypes.items()}
    assert kinds["bill_length_mm"] == "f" and kinds["island"] == "O"
    numbers = data[["bill_length_mm", "flipper_length_mm"]]
    kept = PredictorSelector(k=1).set_output(transform="pandas").fit(numbers, species).transform(numbers)
    assert list(kept.columns) == ["flipper_length_mm"]


def test_weights_are_copies_and_may_be_fractions():
    weights = np.random.default_rng(5).integers(0, 4, len(Y))
    rows = np.repeat(np.arange(len(Y)), weights)
    for estimator in (SubsetNaiveBayes(), PredictorSelector()):
        weighted = clone(estimator).fit(X, Y, sample_weight=weights)
        copied = clone(estimator).fit(X[rows], Y[rows])
        if hasattr(weighted, "predict_proba"):
            np.testing.assert_allclose(weighted.predict_proba(X), copied.predict_proba(X), rtol=1e-9)
        else:
            np.testing.assert_allclose(weighted.scores_, copied.scores_, rtol=1e-9)
    fractions = SubsetNaiveBayes(selection="all").fit(X, Y, sample_weight=np.full(len(Y), 1 / len(Y)))
    equal = SubsetNaiveBayes(selection="all").fit(X, Y)
    assert (fractions.predict(X) == equal.predict(X)).mean() > 0.98


def test_what_surrounds_an_estimator_takes_it(penguins):
    data, species = frame(penguins)
    numbers = data.select_dtypes("number")
    pipeline = make_pipeline(PredictorSelector(k=3), SubsetNaiveBayes())
    search = GridSearchCV(pipeline, {"predictorselector__k": [1, 3], "subsetnaivebayes__bins": [10]},
                          cv=3).fit(data, species)
    assert search.best_score_ > 0.9
    assert cross_validate(SubsetNaiveBayes(), data, species, cv=3)["test_score"].min() > 0.85
    columns = make_column_transformer(
        (PredictorSelector(k=2), list(numbers)), ("passthrough", ["island"]))
    mixed = make_pipeline(columns.set_output(transform="pandas"), SubsetNaiveBayes())
    assert mixed.fit(data, species).score(data, species) > 0.9
    kept = io.BytesIO()
    joblib.dump(mixed, kept)
    kept.seek(0)
    assert (joblib.load(kept).predict(data) == mixed.predict(data)).all()
    odd = data.assign(**{'we"ird na me': 1.5 * np.arange(344), "A": 1, "a": np.arange(344) % 2})
    assert 'we"ird na me' in SubsetNaiveBayes().fit(odd, species).selected_features_
    calibrated = CalibratedClassifierCV(SubsetNaiveBayes(), cv=3).fit(numbers, species)
    assert calibrated.score(numbers, species) > 0.8
    with sklearn.config_context(enable_metadata_routing=True):
        routed = make_pipeline(PredictorSelector(k=2).set_fit_request(sample_weight=True),
                               LogisticRegression(max_iter=1000).set_fit_request(sample_weight=True))
        routed.fit(X, Y, sample_weight=np.ones(len(Y)))
    named = PredictorSelector(k=1).set_output(transform="pandas").fit(numbers, species)
    assert named.transform(numbers).columns.tolist() == ["flipper_length_mm"]
    assert named.get_feature_names_out().tolist() == ["flipper_length_mm"]


def test_pickles_carry_the_state_and_foreign_ones_are_refused():
    cancer, target = load_breast_cancer(return_X_y=True)
    for estimator in (SubsetNaiveBayes(), PredictorSelector()):
        fitted = estimator.fit(cancer, target)
        again = pickle.loads(pickle.dumps(fitted))
        for method in ("predict_proba", "get_support"):
            if hasattr(fitted, method):
                arguments = (cancer,) if method == "predict_proba" else ()
                assert (getattr(again, method)(*arguments) == getattr(fitted, method)(*arguments)).all()
    kept = SubsetNaiveBayes().fit(cancer, target).__getstate__()
    for foreign in ({}, {**kept, "_predselect_state_version": 99}, {**kept, "_state": "x"}, 3):
        with pytest.raises(ps.DataError):
            SubsetNaiveBayes().__setstate__(foreign)
    held = kept["_state"].__getstate__()
    flipped = held["content"][:-9] + bytes([held["content"][-9] ^ 1]) + held["content"][-8:]
    for content in (b"damaged", flipped):
        with pytest.raises(ps.DataError):
            ps.State.__new__(ps.State).__setstate__({**held, "content": content})


def test_classes_that_one_part_lacks_and_features_without_a_tale():
    with warnings.catch_warnings():
        warnings.simplefilter("error")
        nothing = SubsetNaiveBayes().fit(np.ones((6, 2)), [0, 1, 1, 1, 0, 1])
        assert nothing.predict_proba(np.ones((1, 2))).round(3).tolist() == [[0.333, 0.667]]
        assert nothing.selected_features_.tolist() == []
        late = SubsetNaiveBayes().partial_fit(X[:100], Y[:100], classes=[0, 1, 2, 3])
        assert late.predict_proba(X[:2])[:, 2:].tolist() == [[0, 0], [0, 0]]
        late.partial_fit(X[100:], Y[100:])
        assert (late.predict(X) == Y).mean() > 0.9
        assert PredictorSelector().fit(np.ones((6, 2)), [0, 1, 1, 1, 0, 1]).get_support().sum() == 0
    forced = SubsetNaiveBayes(force=[0], selection=2).fit(X, Y)
    assert "x0" in forced.selected_features_ and len(forced.selected_features_) == 3


def test_probabilities_stand_under_their_classes_whatever_order_texts_have():
    for classes in ([5, 2**60], [-3.0, -20.0], ["b", "a"]):
        y = np.array(classes)[(X[:, 2] > 2.5).astype(int)]
        fitted = SubsetNaiveBayes().fit(X, y)
        assert (fitted.predict(X) == y).all()
        assert (fitted.classes_[fitted.predict_proba(X).argmax(axis=1)] == y).all()
        feature = fitted.selected_features_[0]
        column = X[:, int(feature[1:])]
        lowest = next(iter(fitted.feature_log_prob(feature).values()))
        assert fitted.classes_[lowest.argmax()] == y[column.argmin()]


def test_every_frame_makes_the_same_model():
    pandas, pyarrow = pytest.importorskip("pandas"), pytest.importorskip("pyarrow")
    polars, duckdb = pytest.importorskip("polars"), pytest.importorskip("duckdb")
    data = pandas.DataFrame({"x": X[:, 0], "large": X[:, 2] > 2.5})  # truth values are categories
    arrow = pyarrow.table(data)
    expected = SubsetNaiveBayes(selection="all").fit(data, Y)
    assert list(expected.feature_log_prob("large")) == ["0", "1"]
    for other in (polars.DataFrame(arrow), arrow, arrow.to_batches()[0], duckdb.from_arrow(arrow)):
        fitted = SubsetNaiveBayes(selection="all").fit(other, Y)
        assert (fitted.predict_proba(other) == expected.predict_proba(data)).all()
        assert PredictorSelector(k=1).fit(other, Y).get_support().tolist() == [False, True]


def test_targets_and_weights_that_cannot_be_used_say_what_to_do():
    for y in (np.array([None, "b"] * 75, object), np.array([np.nan, "b"] * 75, object),
              np.array(["NaT", "2024-01-01"] * 75, "M8[D]")):
        for estimator in (SubsetNaiveBayes(), PredictorSelector(target="class")):
            with pytest.raises(ValueError, match="y contains NaN or infinity. Leave"):
                estimator.fit(X, y)
    pandas = pytest.importorskip("pandas")
    with pytest.raises(ValueError, match="needs another name"):
        SubsetNaiveBayes().fit(pandas.DataFrame(X, columns=["a\nb", "c", "d", "e"]), Y)
    with pytest.raises(ValueError, match="none reaches 0.5. Multiply"):
        PredictorSelector().fit(X, Y, sample_weight=np.full(150, 1 / 150))
    for estimator in (SubsetNaiveBayes(), PredictorSelector()):
        with pytest.raises(ValueError, match="more than can be counted. Divide"):
            estimator.fit(X, Y, sample_weight=np.full(150, 1e300))
    with pytest.raises(ValueError, match="ranks by .p. alone"):
        PredictorSelector(by="bits").partial_fit(X, Y)


def test_what_screening_leaves_out_is_named():
    random, y = np.random.default_rng(0), np.arange(400) % 2
    data = {"near": 1e6 + 50 * random.normal(size=400) + 200 * y, "one": np.ones(400),
            "lost": np.where(np.arange(400) % 5, np.nan, y), "good": y + random.normal(size=400)}
    matrix = np.column_stack(list(data.values()))
    for learn in (PredictorSelector().fit, PredictorSelector().partial_fit):
        with pytest.warns(ps.PredSelectWarning, match="has left out x0, x2:"):
            assert learn(matrix, y).get_support().tolist() == [False, False, False, True]
    with pytest.warns(ps.PredSelectWarning, match="has left out x0:"):
        PredictorSelector().fit(matrix[:, :1], y)
    with warnings.catch_warnings():  # no screening leaves a test without an answer
        warnings.simplefilter("error", ps.PredSelectWarning)
        assert np.isnan(PredictorSelector(target="class").fit(X, np.arange(150) / 7).scores_).all()
    # With dates, which are far from their first day, numbers are left out by no spread.
    pandas = pytest.importorskip("pandas")
    frame = pandas.DataFrame(data).assign(
        day=pandas.to_datetime("2024-01-01") + pandas.to_timedelta(np.arange(400) % 30 + y * 2, "D"))
    parts = PredictorSelector().partial_fit(frame[:150], y[:150]).partial_fit(frame[150:], y[150:])
    whole = PredictorSelector().fit(frame, y)
    assert whole.get_support().tolist() == [True, False, False, True, True]
    np.testing.assert_allclose(parts.logpvalues_, whole.logpvalues_, rtol=1e-9)


def test_a_build_that_fails_is_made_up_for_or_leaves_no_model(monkeypatch):
    from predselect import _functions

    def interrupted(*arguments, **options):
        raise KeyboardInterrupt

    model = SubsetNaiveBayes().partial_fit(X[:100], Y[:100], classes=[0, 1, 2])
    model.partial_fit(X[100:], Y[100:])
    again = SubsetNaiveBayes().fit(X, Y)
    with monkeypatch.context() as patched:
        patched.setattr(_functions, "run", interrupted)
        with pytest.raises(KeyboardInterrupt):
            model.predict(X)
        with pytest.raises(KeyboardInterrupt):
            again.fit(X, Y)
    whole = SubsetNaiveBayes().fit(X, Y)
    assert (model.predict_proba(X) == whole.predict_proba(X)).all()
    with pytest.raises(NotFittedError):
        again.predict(X)
    again.partial_fit(X, Y, classes=[0, 1, 2])  # without the cases of the fit that failed
    assert (again.class_prior_ == whole.class_prior_).all()
    with pytest.raises(ps.RequestError):
        model.set_params(calibrate="what").partial_fit(X[:1], Y[:1]).predict(X)
    assert (model.set_params(calibrate=None).predict(X) == Y).mean() > 0.9
    late = SubsetNaiveBayes()
    with pytest.raises(ValueError, match="not in classes"):
        late.partial_fit(X, Y, classes=[0, 1])
    with pytest.raises(NotFittedError):
        late.predict(X)


def test_parts_keep_categories_that_are_numbers():
    pandas = pytest.importorskip("pandas")
    codes, y = np.arange(240) % 6, np.arange(240) % 6 % 2
    half = [np.flatnonzero(codes < 3), np.flatnonzero(codes >= 3)]
    model = SubsetNaiveBayes()
    for rows in half:
        part = pandas.DataFrame({"x": pandas.Series(codes[rows], dtype="category")})
        model.partial_fit(part, y[rows], classes=[0, 1])
    new = pandas.DataFrame({"x": pandas.Series(codes, dtype="category")})
    assert (model.predict(new) == y).all()
    assert list(model.feature_log_prob("x")) == [str(i) for i in range(6)]


def test_sizes_that_bound_nothing_are_no_errors():
    matrix = np.column_stack([X, np.ones(len(Y))])
    for parameters, kept in (
        ({"force": [0, 1], "max_features": 4}, None), ({"force": [0, 1, 2, 3], "max_features": 1}, None),
        ({"force": [0], "max_features": 4}, None), ({"max_features": 4}, None),
        ({"selection": 4}, 4), ({"force": [0], "selection": 3}, 4), ({"selection": 2}, 2),
    ):
        chosen = SubsetNaiveBayes(**parameters).fit(matrix, Y).selected_features_
        assert kept is None or len(chosen) == kept, parameters
        assert {f"x{i}" for i in parameters.get("force", ())} <= set(chosen), parameters


def test_columns_have_one_name_and_kind_whatever_holds_them():
    pandas, polars = pytest.importorskip("pandas"), pytest.importorskip("polars")
    numbers = pandas.DataFrame(X)
    mixed = numbers.astype({0: "Float64"})
    for one, other in ((numbers, mixed), (mixed, numbers)):
        model = SubsetNaiveBayes(force=[0]).fit(one, Y)
        assert (model.predict(other) == SubsetNaiveBayes(force=[0]).fit(X, Y).predict(X)).all()
    prices = [None if i % 7 == 0 else decimal.Decimal(int(y)) + i % 10 for i, y in enumerate(Y)]
    data = {"price": prices, "kind": ["a", "b", "c"] * 50}
    floats = pandas.DataFrame({**data, "price": [np.nan if p is None else float(p) for p in prices]})
    expected = PredictorSelector().fit(floats, Y).pvalues_
    for frame_ in (polars.DataFrame(data), pandas.DataFrame(data)):
        assert (PredictorSelector().fit(frame_, Y).pvalues_ == expected).all()
    # A mask names categories, and leaves texts what they are.
    model = SubsetNaiveBayes(categorical_features=[True, False], selection="all").fit(floats, Y)
    assert "(-inf" not in next(iter(model.feature_log_prob("price"))) and "kind" in model.selected_features_


def test_masked_numbers_are_missing():
    masked = np.ma.masked_array(X, np.arange(X.size).reshape(X.shape) % 7 == 0)
    for estimator in (SubsetNaiveBayes(), PredictorSelector()):
        by_mask, by_nan = (clone(estimator).fit(x, Y) for x in (masked, masked.filled(np.nan)))
        for name in ("scores_", "class_prior_", "selected_features_"):
            if hasattr(by_nan, name):
                assert (getattr(by_mask, name) == getattr(by_nan, name)).all()
    assert np.isnan(by_mask.transform(masked)).any()


def test_texts_that_are_dates_are_categories_of_an_estimator():
    pandas = pytest.importorskip("pandas")
    data = pandas.DataFrame({"day": [f"2024-01-0{i % 3 + 1}" for i in range(90)], "x": np.arange(90) % 7})
    y = (np.arange(90) % 3 == 0).astype(int)
    fitted = SubsetNaiveBayes().fit(data, y)
    assert "2024-01-01" in fitted.feature_log_prob("day")
    new = pandas.DataFrame({"day": ["unknown", "2024-01-01"], "x": [1, 2]})
    assert fitted.predict(new)[1] == 1
    PredictorSelector().partial_fit(data, y).partial_fit(new, [0, 1])


def test_threads_leave_the_filters_of_warnings_alone():
    def ours():
        return [f for f in warnings.filters if issubclass(f[2], ps.PredSelectWarning)]

    before = ours()
    with joblib.parallel_config(backend="threading", n_jobs=4):
        GridSearchCV(SubsetNaiveBayes(), {"bins": [3, 5, 8]}, cv=4).fit(X, Y)
    assert ours() == before
