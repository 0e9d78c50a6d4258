"""Calibrated models beside scikit-learn's own calibrators, over numpy's posteriors."""

from __future__ import annotations

import json

import numpy as np
import pandas as pd
import pytest

import predselect as ps

pytest.importorskip("sklearn")
from sklearn.isotonic import IsotonicRegression  # noqa: E402

FOLDS = 10


def cases(n_classes, n=900, seed=3):
    """Predictors that say the same thing twice, so that posteriors are too sure."""
    chance = np.random.default_rng(seed)
    y = chance.integers(0, n_classes, n)
    seen = np.where(chance.random(n) < 0.35, chance.integers(0, n_classes, n), y)
    frame = pd.DataFrame({f"x{i}": np.array(list("abcd"))[seen] for i in range(3)})
    frame["size"] = np.round(chance.normal(size=n) + y, 1)
    frame.loc[chance.random(n) < 0.1, "x1"] = None
    frame["w"] = chance.integers(1, 4, n).astype(float)
    frame["y"] = np.array(["k", "l", "m"])[y]
    frame["train"] = (chance.random(n) < 0.6).astype(float)
    return frame


COMMAND = "NAIVEBAYES y BY x0 x1 x2 WITH size /SUBSET NOSELECTION"


def built(data, folder, command=COMMAND, **options):
    result = ps.run(data, command + ".", save_state=folder / "model.bin", weight="w",
                    levels={"size": "scale"}, **options)
    state = ps.load(folder / "model.bin")
    state.export(folder / "model.json")
    return state, json.loads((folder / "model.json").read_text()), result


def rows_of(predictor, cells):
    """The place of each cell in the predictor's table; -1 for none."""
    if "cutpoints" in predictor:
        return np.searchsorted(predictor["cutpoints"], np.asarray(cells, float), side="left")
    places = {value: i for i, value in enumerate(predictor["categories"])}
    return np.array([places.get(cell, -1) for cell in cells])


def logs_of(model, data, counts=None, target=None, weight=None):
    """ln P(class, case) by the estimates from counts; those of the model if none given."""
    target = np.array(model["target"]["counts"] if target is None else target)
    weight = model["training"]["weight"] if weight is None else weight
    logs = np.tile(np.log((target + 1 / weight) / (weight + (target > 0).sum() / weight)),
                   (len(data), 1))
    for i, predictor in enumerate(model["predictors"]):
        table = np.array(predictor["counts"] if counts is None else counts[i])
        filled = (table.sum(1) > 0).sum()
        table = np.log((table + 1 / weight) / (filled / weight + table.sum(0)))
        rows = rows_of(predictor, data[predictor["name"]])
        logs[rows >= 0] += table[rows[rows >= 0]]
    return logs


def mixed(number):
    with np.errstate(over="ignore"):
        number = np.asarray(number, np.uint64) + np.uint64(0x9E3779B97F4A7C15)
        number = (number ^ (number >> np.uint64(30))) * np.uint64(0xBF58476D1CE4E5B9)
        number = (number ^ (number >> np.uint64(27))) * np.uint64(0x94D049BB133111EB)
        return number ^ (number >> np.uint64(31))


def cross_validated(model, data, seed):
    """Each case by the counts without those of its fold."""
    with np.errstate(over="ignore"):
        folds = mixed(mixed(seed) + np.arange(len(data), dtype=np.uint64)) % np.uint64(FOLDS)
    codes = np.searchsorted(model["target"]["categories"], data["y"])
    weights = data["w"].to_numpy()
    logs = np.zeros((len(data), len(model["target"]["categories"])))
    for fold in range(FOLDS):
        out = folds == fold
        target = np.array(model["target"]["counts"]) - np.bincount(
            codes[out], weights[out], logs.shape[1])
        tables = []
        for predictor in model["predictors"]:
            table = np.array(predictor["counts"])
            rows = rows_of(predictor, data[predictor["name"]])
            there = out & (rows >= 0)
            np.subtract.at(table, (rows[there], codes[there]), weights[there])
            tables.append(table)
        left = model["training"]["weight"] - weights[out].sum()
        logs[out] = logs_of(model, data[out], tables, target, left)
    return logs


def softmax(logs):
    shares = np.exp(logs - logs.max(1, keepdims=True))
    return shares / shares.sum(1, keepdims=True)


def reference(method, logs, codes, weights, new):
    """What scikit-learn makes of posteriors when it has seen those of the calibrating cases."""
    if method == "temperature":
        calibration = pytest.importorskip("sklearn.calibration")
        if not hasattr(calibration, "_TemperatureScaling"):
            pytest.skip("this scikit-learn has no temperature")
        fitted = calibration._TemperatureScaling().fit(logs, codes, weights)
        return softmax(fitted.beta_ * new)
    k = logs.shape[1]
    values = np.zeros_like(new)
    for i in range(1 if k == 2 else 0, k):
        curve = IsotonicRegression(out_of_bounds="clip")
        curve.fit(softmax(logs)[:, i], codes == i, sample_weight=weights)
        values[:, i] = curve.predict(softmax(new)[:, i])
    if k == 2:
        values[:, 0] = 1 - values[:, 1]
        return values
    total = values.sum(1, keepdims=True)
    return np.divide(values, total, out=np.full_like(values, 1 / k), where=total != 0)


def probabilities(state, data):
    columns = ps.score(state, data).new_columns
    return np.column_stack([columns[n] for n in columns.columns[1:]])


@pytest.mark.parametrize("method", ["temperature", "isotonic"])
@pytest.mark.parametrize("k", [2, 3])
@pytest.mark.parametrize("held_out", [True, False])
def test_equals_scikit_learn(method, k, held_out, tmp_path):
    data, new = cases(k), cases(k, 200, 4)
    command = COMMAND + (" /TRAININGSAMPLE VARIABLE=train" if held_out else "")
    plain, model, _ = built(data, tmp_path, command)
    seed = 7
    state, calibrated, result = built(
        data, tmp_path, command, calibrate=method, calibration_seed=seed)
    assert "calibration" not in model and calibrated["calibration"]["method"] == method
    by = data[data["train"] != 1.0] if held_out else data
    logs = logs_of(model, by) if held_out else cross_validated(model, by, seed)
    codes = np.searchsorted(model["target"]["categories"], by["y"])
    expected = reference(method, logs, codes, by["w"].to_numpy(), logs_of(model, new))
    np.testing.assert_allclose(probabilities(state, new), expected, atol=2e-7)
    assert np.abs(probabilities(plain, new) - expected).max() > 0.01, "it makes a difference"
    assert any("fold" in note["text"] or "test" in note["text"]
               for run in result.document["runs"] for note in run["notes"]
               if note["title"] == "Calibration")
    # What travels: either form of state, and the plain document.
    for name in ("again.bin", "again.xml", "again.json"):
        state.export(tmp_path / name) if name.endswith("json") else state.save(tmp_path / name)
        again = ps.load(tmp_path / name)
        assert (probabilities(again, new) == probabilities(state, new)).all(), name


def test_a_temperature_changes_no_winner_and_scales_what_explains(tmp_path):
    data, new = cases(3), cases(3, 200, 4)
    plain, _, _ = built(data, tmp_path)
    state, model, _ = built(data, tmp_path, calibrate="temperature")
    won = [ps.score(s, new).new_columns["PredictedValue"] for s in (plain, state)]
    assert (won[0] == won[1]).all()
    told, before = ps.explain(state, new), ps.explain(plain, new)
    temperature = model["calibration"]["temperature"]
    np.testing.assert_allclose(told.values * temperature, before.values, atol=1e-12)
    np.testing.assert_allclose(
        softmax(told.base_values + told.values.sum(1)), probabilities(state, new), atol=1e-12)


def test_says_what_it_cannot_do(tmp_path):
    data = cases(2)
    with pytest.raises(ps.RequestError, match="give temperature, isotonic or None"):
        ps.run(data, COMMAND + ".", calibrate="platt")
    state, _, _ = built(data, tmp_path, calibrate="isotonic")
    with pytest.raises(ps.RequestError, match="isotonic calibration"):
        state.export(tmp_path / "model.pmml")
    with pytest.raises(ps.RequestError, match="calibrated"):
        state + state
    sure = pd.DataFrame({"x": list("ab") * 20, "y": list("kl") * 20})
    with pytest.warns(ps.PredSelectWarning, match="not calibrated"):
        ps.run(sure, "NAIVEBAYES y /SUBSET NOSELECTION.", calibrate="temperature")
    with pytest.warns(ps.PredSelectWarning, match="no command here builds a model"):
        ps.run(sure, "SELECTPRED y.", calibrate="temperature")


@pytest.mark.parametrize("method", ["temperature", "isotonic"])
def test_the_estimator_is_calibrated_as_the_command_is(method, tmp_path):
    data = cases(2)
    x, y = data[["x0", "x1", "x2", "size"]], data["y"]
    fitted = ps.SubsetNaiveBayes(selection="all", calibrate=method)
    fitted.fit(x, y, sample_weight=data["w"])
    state, _, _ = built(data, tmp_path, calibrate=method)
    new = cases(2, 200, 4)
    expected = probabilities(state, new)
    np.testing.assert_allclose(fitted.predict_proba(new[list(x)]), expected, atol=1e-12)
    plain = ps.SubsetNaiveBayes(selection="all").fit(x, y, sample_weight=data["w"])
    told, before = fitted.feature_log_prob("x0"), plain.feature_log_prob("x0")
    assert all((told[value] == before[value]).all() for value in before), "before this step"
    parts = ps.SubsetNaiveBayes(selection="all", calibrate=method)
    for rows in (slice(0, 400), slice(400, None)):
        parts.partial_fit(x[rows], y[rows], ["k", "l"], data["w"][rows])
    assert (parts.predict_proba(x) == fitted.predict_proba(x)).all()
    with pytest.raises(ValueError, match="give temperature, isotonic or None"):
        ps.SubsetNaiveBayes(calibrate="platt").fit(x, y)
    sure = ps.SubsetNaiveBayes(calibrate="temperature")
    with pytest.warns(ps.PredSelectWarning, match="not calibrated"):
        sure.fit([[0], [1]] * 20, [0, 1] * 20)
    assert (sure.predict([[0], [1]]) == [0, 1]).all()
