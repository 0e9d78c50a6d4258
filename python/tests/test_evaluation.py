"""Evaluations and cross-validations, as values."""

from __future__ import annotations

import numpy as np
import pytest
from sklearn import metrics

import predselect as ps


def made(n, seed, classes="pqr"):
    random = np.random.default_rng(seed)
    y = random.integers(len(classes), size=n)
    return {
        "y": [classes[k] for k in y],
        "a": y + random.normal(size=n),
        "b": random.normal(size=n) - y,
        "c": random.normal(size=n),
        "d": [("u", "v")[k] for k in random.integers(2, size=n)],
    }


def test_an_evaluation_is_that_of_scikit_learn():
    model = ps.model(made(800, 1), "y", test=0).state
    new = made(300, 2)
    weights = np.random.default_rng(3).integers(1, 4, size=300).astype(float)
    found = ps.evaluate(model, new, weight=weights)
    scored = ps.score(model, new).new_columns
    y, predicted = np.array(new["y"]), np.array(scored["PredictedValue"])
    p = np.column_stack([scored[f"PredictedProbability_{k}"] for k in (1, 2, 3)])
    expected = {
        "accuracy": metrics.accuracy_score(y, predicted, sample_weight=weights),
        "balanced_accuracy": metrics.balanced_accuracy_score(y, predicted, sample_weight=weights),
        "auc": metrics.roc_auc_score(y, p, multi_class="ovr", average="weighted", sample_weight=weights),
        "log_loss": metrics.log_loss(y, p, sample_weight=weights),
        "cohens_kappa": metrics.cohen_kappa_score(y, predicted, sample_weight=weights),
        "matthews_correlation": metrics.matthews_corrcoef(y, predicted, sample_weight=weights),
    }
    for name, value in expected.items():
        measure = found.measures[name]
        assert float(measure) == pytest.approx(value, abs=1e-12), name
        assert measure.low < value < measure.high
    assert set(found.measures) == {*expected, "brier_score", "calibration_error"}
    matrix = metrics.confusion_matrix(y, predicted, sample_weight=weights)
    assert np.array_equal(found.confusion, matrix) and found.classes == ["p", "q", "r"]
    assert found.to_pandas().shape == (8, 6)


def test_what_is_odd_is_warned_of_and_what_does_not_fit_is_refused(tmp_path):
    state = ps.model(made(400, 1), "y", test=0).state
    state.save(tmp_path / "model.bin")
    with pytest.warns(ps.PredSelectWarning, match="does not know|have no case"):
        found = ps.evaluate(tmp_path / "model.bin", made(100, 2, "pqs"))
    assert found.classes == ["p", "q", "r", "s"] and found.confusion[:, 3].sum() == 0
    with pytest.raises(ps.RequestError, match="y"):
        ps.evaluate(state, {k: v for k, v in made(50, 2).items() if k != "y"})


def test_a_cross_validation_has_measures_choices_and_folds():
    data = made(600, 4)
    found = ps.cross_validate(data, "y", folds=5, repeats=2, seed=3)
    assert len(found.folds) == 10 and found.folds["cases"].sum() == 1200
    accuracy = found.measures["accuracy"]
    assert accuracy.value == pytest.approx(found.folds["accuracy"].mean(), abs=1e-12)
    assert accuracy.by_majority < 0.5 < accuracy.low < accuracy.high
    assert set(found.chosen) >= {"a", "b"} and found.chosen["a"] == 1
    assert found.stability.value <= 1
    again = ps.cross_validate(data, "y", folds=5, repeats=2, seed=3, threads=1)
    assert again.document["runs"][0]["tables"] == found.document["runs"][0]["tables"]
    with pytest.raises(ps.RequestError, match="folds"):
        ps.cross_validate(data, "y", folds=1)
    for wrong in ({"repeats": 1001}, {"seed": 2**31}):
        with pytest.raises(ps.RequestError, match=f"{next(iter(wrong))} is above"):
            ps.cross_validate(data, "y", **wrong)
    with pytest.raises(ps.RequestError, match="target is a list; name a column"):
        ps.cross_validate(data, data["y"])
    with pytest.raises(ps.RequestError, match="fewer"):
        ps.cross_validate(made(20, 1), "y", folds=30)
