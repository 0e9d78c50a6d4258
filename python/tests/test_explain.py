"""Explanations beside an independent computation: numpy over the tables of the exported model."""

from __future__ import annotations

import json

import numpy as np
import pandas as pd
import pytest

import predselect as ps


def cases(classes, n=400):
    """Numbers, categories, gaps, and values that training does not meet."""
    chance = np.random.default_rng(5)
    y = chance.integers(0, len(classes), n)
    frame = pd.DataFrame({
        "size": chance.normal(size=n) + y,
        'a "kind", quoted': np.where(chance.random(n) < 0.3, "q", np.array(["u", "v", "w"])[y % 3]),
        "noise": chance.integers(0, 4, n).astype(str),
        "y": np.asarray(classes, object)[y],
    })
    frame.loc[chance.random(n) < 0.1, "size"] = np.nan
    frame.loc[chance.random(n) < 0.1, 'a "kind", quoted'] = None
    new = frame.tail(60).reset_index(drop=True)
    new.loc[3, "noise"], new.loc[4, "size"], new.loc[5, "size"] = "new", 99.0, -99.0
    new.loc[6, ["size", 'a "kind", quoted', "noise"]] = [np.nan, None, None]
    return frame, new


def log_probabilities(predictor, cells):
    """ln P(cell | class); 0 for what is missing or new."""
    table = np.log(predictor["probabilities"])
    rows = np.zeros((len(cells), table.shape[1]))
    for i, cell in enumerate(cells):
        if cell is None or cell != cell:
            continue
        if "cutpoints" in predictor:
            rows[i] = table[np.searchsorted(predictor["cutpoints"], cell, side="left")]
        elif cell in predictor["categories"]:
            rows[i] = table[predictor["categories"].index(cell)]
    return rows


def expected(state, data, folder):
    """ln P of the priors, by class, and of each predictor's values, cases x predictors x classes."""
    state.export(folder / "model.json")
    model = json.loads((folder / "model.json").read_text())
    logs = [log_probabilities(p, data[p["name"]]) for p in model["predictors"]]
    names = [p["name"] for p in model["predictors"]]
    return np.log(model["target"]["priors"]), np.stack(logs, axis=1), names


@pytest.mark.parametrize("classes", [("no", "yes"), ("a", "b", "c"), (1.0, 2.0, 4.0, 8.0)])
def test_equals_the_logarithms_of_the_models_tables(classes, tmp_path):
    data, new = cases(classes)
    state = ps.model(data, "y", test=0, levels={"y": "nominal"}).state
    explained = ps.explain(state, new)
    priors, logs, names = expected(state, new, tmp_path)
    assert explained.feature_names == names and len(names) > 1
    if len(classes) == 2:
        assert explained.shape == logs.shape[:2]
        np.testing.assert_allclose(explained.values, logs[..., 1] - logs[..., 0], atol=1e-12)
        np.testing.assert_allclose(explained.base_values, priors[1] - priors[0], atol=1e-12)
        ends = np.column_stack([np.zeros(len(new)), explained.base_values + explained.values.sum(1)])
    else:
        np.testing.assert_allclose(
            explained.values, logs - logs.mean(-1, keepdims=True), atol=1e-12)
        ends = explained.base_values + explained.values.sum(1)
    scored = ps.score(state, new).new_columns
    posterior = np.column_stack([scored[n] for n in scored.columns[1:]])
    softmax = np.exp(ends - ends.max(1, keepdims=True))
    np.testing.assert_allclose(softmax / softmax.sum(1, keepdims=True), posterior, atol=1e-12)
    assert not explained.values[6].any(), "a case without a value says nothing"


@pytest.mark.parametrize("shown", [1, 2, 9])
@pytest.mark.parametrize("classes", [("no", "yes"), ("a", "b", "c")])
def test_scores_say_which_predictors_weighed_most(classes, shown, tmp_path):
    data, new = cases(classes)
    state = ps.model(data, "y", test=0).state
    priors, logs, names = expected(state, new, tmp_path)
    columns = ps.score(state, new, explain=shown).new_columns.to_dict()
    shown = min(shown, len(names))
    assert ("ExplainedRest" in columns) == (shown < len(names))
    for i, row in enumerate(zip(*columns.values())):
        case = dict(zip(columns, row))
        won, against = (list(classes).index(case[c]) for c in ("PredictedValue", "ExplainedAgainst"))
        total = priors + logs[i].sum(0)
        assert against == max((k for k in range(len(classes)) if k != won), key=lambda k: total[k])
        assert case["ExplainedLogOdds"] == pytest.approx(total[won] - total[against], abs=1e-12)
        assert case["ExplainedPrior"] == pytest.approx(priors[won] - priors[against], abs=1e-12)
        margins = logs[i][:, won] - logs[i][:, against]
        told, sum_ = [], case["ExplainedPrior"]
        for n in range(1, shown + 1):
            name, part = case[f"ExplainedPredictor_{n}"], case[f"ExplainedEvidence_{n}"]
            if name is None:
                assert np.isnan(part)
                continue
            assert part == pytest.approx(margins[names.index(name)], abs=1e-12)
            told.append(abs(part))
            sum_ += part
        assert told == sorted(told, reverse=True)
        assert len(told) == min(shown, np.count_nonzero(logs[i].any(-1)))
        if told and len(told) == shown:
            others = [abs(m) for m, n in zip(margins, names) if n not in case.values()]
            assert max(others, default=0.0) <= told[-1] + 1e-12
        assert sum_ + case.get("ExplainedRest", 0.0) == case["ExplainedLogOdds"], "to the bit"


def test_slices_as_arrays_do_and_takes_the_caller_s_data():
    data, new = cases(("a", "b", "c"))
    state = ps.model(data, "y", test=0).state
    explained = ps.explain(state, new)
    one = explained[:5, "size", "b"]
    assert one.shape == (5,) and one.output_names == "b"
    assert (one.values == explained.values[:5, explained.feature_names.index("size"), 1]).all()
    assert explained[3].shape == explained.shape[1:]
    assert explained[..., 0:2].output_names == ["a", "b"]
    assert explained[..., "c"].shape == explained.shape[:2]
    names = explained.feature_names[::-1]
    assert (explained[:, names, ["c"]].values == explained.values[:, ::-1, 2:]).all()
    kind = explained.feature_names.index('a "kind", quoted')
    of_lists = ps.explain(state, {name: new[name].tolist() for name in new}).data
    assert [value != value or value is None for value in of_lists[:, kind]] == new.isna()[
        'a "kind", quoted'].tolist()
    assert explained.data[0, kind] == new['a "kind", quoted'][0]


@pytest.mark.parametrize("classes", [(3, 7), (9 * 10**17, 10**18, 3 * 10**18), (True, False)])
def test_an_estimator_explains_all_features_in_the_order_of_its_classes(classes):
    pytest.importorskip("sklearn")
    data, new = cases(sorted(classes))
    X = data[["noise", "size", 'a "kind", quoted']]
    y = data["y"].astype("int64" if not isinstance(classes[0], bool) else bool).to_numpy()
    model = ps.SubsetNaiveBayes(selection=1).fit(X, y)
    explained = model.explain(new[X.columns])
    assert explained.feature_names == list(X.columns)
    assert np.count_nonzero(np.abs(explained.values).reshape(len(new), 3, -1).sum((0, 2))) == 1
    ends = explained.base_values + explained.values.sum(1)
    if len(classes) == 2:
        ends = np.column_stack([np.zeros(len(new)), ends])
    posterior = np.exp(ends) / np.exp(ends).sum(1, keepdims=True)
    np.testing.assert_allclose(posterior, model.predict_proba(new[X.columns]), atol=1e-12)
    assert list(explained.output_names) == list(model.classes_)
