"""Results show themselves and go on to any data frame; messages are warnings and exceptions."""

from __future__ import annotations

import copy
import json
import multiprocessing
import pickle
import re
import warnings
from xml.etree import ElementTree

import numpy as np
import pytest

import predselect as ps
from conftest import ROOT
from predselect._words import in_python


def test_short_verbs_give_the_documents_of_the_program(penguins, program):
    ranking = ps.rank(penguins, "body_mass_g", by="bits", top=3, except_=["year"])
    expected = program("rank", str(penguins), "body_mass_g", "--by", "bits", "--top", "3",
                       "--except", "year")
    assert ranking.document["runs"] == expected["runs"]
    assert len(ranking.predictors) == 3
    model = ps.model(penguins, "species", predictors=2, test=0.25)
    expected = program("model", str(penguins), "species", "--predictors", "2", "--test", "0.25")
    assert model.document["runs"] == expected["runs"]
    assert model.predictors == ["flipper_length_mm", "bill_length_mm"] or len(model.predictors) <= 2
    assert 0.8 < model.accuracy <= 1.0
    assert "File written" not in model.text()
    assert ps.describe(penguins).document["runs"] == program(
        "describe", "--data", str(penguins))["runs"]


def test_tables_are_the_same_in_every_frame(penguins):
    table = ps.rank(penguins, "species")["Ranking"]
    rows = list(table.rows())
    assert rows[0]["predictor"] == "flipper_length_mm" and rows[0]["log10_p"] < -100
    for method, module in (("to_pandas", "pandas"), ("to_polars", "polars"), ("to_arrow", "pyarrow")):
        pytest.importorskip(module)
        frame = getattr(table, method)()
        columns = list(getattr(frame, "column_names", frame.columns))
        assert columns == table.columns
        values = frame["log10_p"].to_numpy()
        assert np.array_equal(values, table["log10_p"], equal_nan=True)
        words = frame["test_type"]
        words = words.to_pylist() if hasattr(words, "to_pylist") else words.to_list()
        assert words == table["test_type"].tolist()


def test_what_is_missing_in_a_table_is_null_in_polars():
    polars = pytest.importorskip("polars")
    table = ps.describe({"x": np.arange(40.0) + 0.5, "t": ["a", "b"] * 20})["Dictionary"]
    frame = table.to_polars()
    assert frame["mean"].is_null().to_list() == [False, True]
    assert frame.equals(polars.DataFrame(table))


def test_results_are_data_again(penguins):
    pytest.importorskip("polars")
    ranking = ps.rank(penguins, "species")
    assert ps.describe(ranking).document["data"]["cases"] == len(ranking["Ranking"])


def test_a_notebook_shows_tables_and_charts_without_a_network(penguins):
    result = ps.run({"y": ["<b>", "c"] * 30, "x": np.arange(60.0), "z": [1.5, 1.25, 9] * 20},
                    "SELECTPRED y /CRITERIA PCUTOFF=1 /PLOT SUMMARY.")
    page = result._repr_html_()
    assert "&lt;b&gt;" in page and "<b></td>" not in page
    assert "http" not in page.replace("http://www.w3.org/2000/svg", "")
    for table in page.split("\n"):
        assert table.count("<td") == table.count("</td")
    for chart in (result.plot(), ps.rank(penguins, "species").plot(),
                  ps.model(penguins, "species").plot()):
        svg = ElementTree.fromstring(chart.svg())
        assert svg.tag.endswith("svg") and len(svg) > 5
        assert json.dumps(chart.spec).startswith('{"$schema"')


def test_charts_are_saved(penguins, tmp_path):
    chart = ps.rank(penguins, "species").plot()
    chart.save(tmp_path / "chart.svg")
    chart.save(tmp_path / "chart.json")
    assert (tmp_path / "chart.svg").read_text() == chart.svg()
    assert json.loads((tmp_path / "chart.json").read_text()) == chart.spec


def test_results_are_saved_as_report_document_and_page(penguins, tmp_path):
    ranking = ps.rank(penguins, "species")
    for kind, start in (("html", "<!doctype html>"), ("json", '{"predselect"'), ("txt", "Ranking")):
        ranking.save(tmp_path / f"ranking.{kind}", heading="Penguins")
        assert (tmp_path / f"ranking.{kind}").read_text().startswith(start)
    with pytest.raises(ps.DataError, match="html, .json or .txt"):
        ranking.save(tmp_path / "ranking.pdf")
    for save, name in ((ranking.save, "a.html"), (ranking.plot().save, "a.svg")):
        with pytest.raises(ps.DataError, match="cannot be written"):
            save(tmp_path / "none" / name)


def test_warnings_have_classes_and_point_to_the_caller():
    n = 400
    y = np.arange(n) % 2
    leaky = {"y": y, "id": [f"case {i}" for i in range(n)], "copy": y * 2.0 + 1, "x": np.arange(n) % 7}
    with pytest.warns(ps.LeakWarning, match="copy") as caught:
        ps.rank(leaky, "y")
    assert caught[0].filename == __file__
    with pytest.warns(ps.WeightWarning):
        ps.rank({"y": y, "x": np.arange(n) / 7.0}, "y", weight=np.full(n, 0.2) + (np.arange(n) % 3))
    with warnings.catch_warnings():
        warnings.simplefilter("error")
        ps.rank({"y": y, "x": np.arange(n) / 7.0}, "y")


def test_messages_name_arguments_of_python_and_no_options(penguins, tmp_path):
    n = 400
    y = np.arange(n) % 2
    leaky = {"y": y, "copy": y * 2.0 + 1, "it's a copy": y + 5, "x": np.arange(n) % 7}
    with pytest.warns(ps.LeakWarning):
        ranking = ps.rank(leaky, "y")
    leave_out = """here: except_=["copy", "it's a copy"]"""
    assert leave_out in ranking.messages[0]["detail"] and leave_out in ranking.text()
    path = tmp_path / "data.csv"
    for text, said in (('a,b\n"x"y,2\n', 'reading={"quote": "none"} takes quotes as letters'),
                       ("a;b\n1,5;2\n3,5;4\n", 'reading["delimiter"], reading["decimal"] can say'),
                       ("1,2\n3,4\n", 'reading={"header": False} takes it as data'),
                       ("a,b\n1,x\n?,y\n" + "2,z\n" * 400, 'reading={"missing": {"a": ["?"]}} takes it')):
        path.write_text(text)
        with warnings.catch_warnings(), pytest.raises((ps.DataError, ps.DataNotice)) as told:
            warnings.simplefilter("error")
            ps.describe(path)
        assert said in str(told.value)
    for wrong, said in (({"levels": {"zz": "nominal"}}, "^levels: "), ({"except_": ["q"]}, "^except_: "),
                        ({"training_column": "q"}, "^training_column: "),
                        ({"training_column": 0}, '^training_column: .* "0"'),
                        ({"except_": np.int64(3)}, '^except_: .* "3"'),
                        ({"reading": {"missing": {"q": 1}}}, r'^reading\["missing"\]: ')):
        with pytest.raises(ps.RequestError, match=said):
            ps.model(penguins, "species", **wrong)
    with pytest.raises(ps.DataError, match=r"State.save\(\) and save_state write such files"):
        ps.load(path)


def test_no_text_of_the_library_keeps_an_option_of_the_program():
    sources = [p for d in ("host/arrow", "host/data", "operations") for p in (ROOT / d).rglob("*.cpp")]
    texts = [found for source in sources for found in
             re.findall(r'"((?:[^"\\\n]|\\.)*--[a-z](?:[^"\\\n]|\\.)*)"', source.read_text())]
    texts += [line for line in (ROOT / "host/output/strings/texts.txt").read_text().splitlines() if "--" in line]
    assert len(texts) > 25
    assert [t for t in texts if re.search("--[a-z]", in_python(t)) and t != " --except "] == []


def results_of(data):
    model = ps.model(data, "species", predictions=True)
    yield ps.rank(data, "species")
    yield model
    yield ps.describe(data)
    yield ps.run(data, "SELECTPRED species /PRINT CPS EXCLUDED SUMMARY EFFECTS SELECTED /PLOT SUMMARY."
                       "\nNAIVEBAYES species /SAVE PREDVAL(v) PREDPROB(p).")
    yield ps.score(model.state, data)
    yield model.state.inspect()


@pytest.mark.filterwarnings("ignore")
def test_results_go_through_pickles_and_copies_as_they_are(penguins, tmp_path):
    for result in results_of(penguins):
        result.save(tmp_path / "a.html")
        for again in (pickle.loads(pickle.dumps(result)), copy.copy(result), copy.deepcopy(result)):
            assert again.document == result.document and repr(again) == repr(result)
            assert again.text(60) == result.text(60) and again._repr_html_() == result._repr_html_()
            again.save(tmp_path / "b.html")
            assert (tmp_path / "b.html").read_bytes() == (tmp_path / "a.html").read_bytes()
            for mine, theirs in zip(again.tables, result.tables):
                for name in theirs:
                    np.testing.assert_array_equal(mine[name], theirs[name])
            if result.document["runs"][-1]["new_variables"]:
                assert again.new_columns.labels == result.new_columns.labels
                if pytest.importorskip("pyarrow"):
                    assert again.new_columns.to_arrow().equals(
                        result.new_columns.to_arrow(), check_metadata=True)
        table = pickle.loads(pickle.dumps(result.tables[0]))
        assert table._repr_html_() == result.tables[0]._repr_html_()


def ranked(path):
    return ps.rank(path, "species")


def failing(path):
    return ps.run(path, "SELECTPRED species.\nSELECTPRED species /CRITERIA X=1.")


@pytest.mark.parametrize("how", ["fork", "spawn"])
def test_results_and_failures_come_out_of_other_processes(penguins, how):
    with multiprocessing.get_context(how).Pool(1) as pool:
        assert pool.apply(ranked, (penguins,)).text() == ranked(penguins).text()
        with pytest.raises(ps.CommandError) as raised:
            pool.apply(failing, (penguins,))
    assert "PredictorSummary" in raised.value.result


def test_damaged_and_foreign_pickles_of_results_are_refused(penguins):
    kept = ps.rank(penguins, "species").__getstate__()
    document = kept["document"]
    damaged = [document[:n] for n in (0, 10, 200, len(document) - 1)] + [document + b"x"]
    damaged += [document[:n] + bytes([document[n] ^ 64]) + document[n + 1 :]
                for n in range(0, len(document), 97)]
    foreign = [3, {}, {**kept, "document": "x"}, {**kept, "own": None}]
    foreign += [{**kept, "new_columns": wrong} for wrong in (3, ({"a": [1]}, {}), None)]
    for wrong in foreign + [{**kept, "document": d} for d in damaged]:
        with pytest.raises(ps.DataError):
            ps.Ranking.__new__(ps.Ranking).__setstate__(wrong)


def test_a_command_that_fails_says_where_and_keeps_what_was_done(penguins):
    with pytest.raises(ps.CommandError) as raised:
        ps.run(penguins, "SELECTPRED species.\nSELECTPRED species /CRITERIA X=1.")
    assert "line 2, column 30" in str(raised.value) and "^" in str(raised.value)
    assert not str(raised.value).startswith("Error")
    assert "PredictorSummary" in raised.value.result
    with pytest.raises(ps.RequestError, match="there is no command"):
        ps.run(penguins, " ")
    with pytest.raises(ps.RequestError, match="target is a ndarray; name a column"):
        ps.rank({"x": [1.5, 2]}, np.array(["a", "b"]))
    with pytest.raises(ps.RequestError, match=r'levels=\{"body_mass_g": "nominal"\} takes'):
        ps.model(penguins, "body_mass_g")
    with pytest.raises(KeyError, match="there are"):
        ps.rank(penguins, "species")["Rankings"]
    for wrong in ({"by": "q"}, {"threads": 2000}, {"top": -1}):
        with pytest.raises(ps.RequestError):
            ps.rank(penguins, "species", **wrong)
    for wrong in ({"test": 1.5}, {"test": float("nan")}, {"predictors": -1}, {"predictors": 2**64}):
        with pytest.raises(ps.RequestError, match=next(iter(wrong))):
            ps.model(penguins, "species", **wrong)


def test_a_model_of_which_no_pmml_can_be_written_is_not_lost(tmp_path):
    data = {"y": ["a\x01", "b"] * 40, "x": np.arange(80) % 2 + np.arange(80) % 3 / 10}
    with pytest.raises(ps.CommandError, match="XML does not allow") as raised:
        ps.model(data, "y", test=0, pmml=tmp_path / "model.pmml")
    model = raised.value.result
    assert ps.score(model, data).new_columns["PredictedValue"].tolist() == data["y"]
    assert model.document["runs"][0]["files"] == []


def test_states_come_and_go_as_files_of_the_program(penguins, program, tmp_path):
    model = ps.model(penguins, "species")
    model.state.save(tmp_path / "model.bin")
    assert program("inspect", str(tmp_path / "model.bin"))["runs"] == model.state.inspect().document[
        "runs"]
    assert ps.load(tmp_path / "model.bin").inspect().document["data"]["source"] == str(tmp_path / "model.bin")
    model.save(tmp_path / "model.html")  # tells of no file that is gone
    assert model.state.inspect().document["data"]["source"] == "the state"
    assert '"files":[]' in (tmp_path / "model.html").read_text()
    program("model", str(penguins), "species", "--save-model", str(tmp_path / "other.xml"))
    loaded = ps.load(tmp_path / "other.xml")
    assert loaded.to_bytes() == model.state.to_bytes()
    mine = ps.score(loaded, penguins, probabilities="p").new_columns
    csv = tmp_path / "scored.csv"
    program("score", "--model", str(tmp_path / "other.xml"), "--data", str(penguins), "--save-data",
            str(csv), "--only-new", "--probabilities", "p")
    theirs = [line.split(",") for line in csv.read_text().splitlines()[1:]]
    assert mine["PredictedValue"].tolist() == [line[0] for line in theirs]
    assert mine["p_2"].tolist() == [float(line[2]) for line in theirs]
    scores = ps.score(loaded, penguins)
    assert list(scores.to_pandas()["PredictedValue"]) == mine["PredictedValue"].tolist()
    assert repr(scores).startswith("<Scores: 344 cases, PredictedValue, ")
    loaded.to_pmml(tmp_path / "model.pmml")
    assert ElementTree.parse(tmp_path / "model.pmml").getroot().get("version") == "4.3"
    for kind, start in (("pmml", b"<?xml"), ("onnx", b"\x08"), ("sql", b"--"), ("c", b"/"), ("json", b"{")):
        getattr(loaded, f"to_{kind}")(tmp_path / "other")
        assert (tmp_path / "other").read_bytes().startswith(start)
    loaded.export(tmp_path / "model.txt", to="sql", table="new \"cases\"")
    assert (tmp_path / "model.txt").read_text().rstrip().endswith('FROM "new ""cases""" AS t')
    model.state.export(tmp_path / "model.json")
    assert ps.score(ps.load(tmp_path / "model.json"), penguins,
                    probabilities="p").new_columns["p_2"].tolist() == mine["p_2"].tolist()
    assert ps.score(model, penguins).document == scores.document
    with pytest.raises(ps.RequestError, match="of type int; give a State, a Model"):
        ps.score(3, penguins)
    with pytest.raises(ps.RequestError, match="no format of models"):
        loaded.export(tmp_path / "model.xls")
    with pytest.raises(ps.RequestError, match="ranking of predictors"):
        ps.run(penguins, "SELECTPRED sex.", save_state=tmp_path / "r.bin")
        ps.load(tmp_path / "r.bin").to_pmml(tmp_path / "r.pmml")


def test_what_an_exported_model_cannot_say_is_a_notice(tmp_path):
    long = "a name of more bytes than a database keeps of the names of its columns"
    state = ps.model({"y": ["a", "b"] * 40, long: np.arange(80) % 4 + 0.5}, "y", test=0).state
    with pytest.warns(ps.ExportNotice, match="longer than some databases") as caught:
        state.to_sql(tmp_path / "model.sql")
    assert len(caught) == 1 and caught[0].filename == __file__
    with warnings.catch_warnings():
        warnings.simplefilter("error")
        state.to_json(tmp_path / "model.json")


def test_states_add_up(tmp_path):
    y, x = np.array(["a", "b", "c"] * 40), np.arange(120) ** 2 % 7

    def counted(part):
        path = tmp_path / "counts.bin"
        ps.run({"y": y[part], "x": x[part]}, "SELECTPRED y BY x.", save_state=path)
        return ps.load(path)

    whole = counted(slice(None))
    sum_ = counted(slice(0, 50)) + counted(slice(50, 120))
    assert sum_.inspect().document["runs"] == whole.inspect().document["runs"]
    first = counted(slice(0, 50))
    first.merge(counted(slice(50, 120)))
    assert first.to_bytes() == sum_.to_bytes()
    with pytest.raises(ps.RequestError, match="^merge: the state cannot be added"):
        first + ps.model({"y": y, "x": x}, "y").state


def test_damaged_states_are_refused(penguins, tmp_path):
    content = bytearray(ps.model(penguins, "species").state.to_bytes())
    for damaged in (b"", b"no state", bytes(content[:-20]), bytes(content[:100]) + b"\xff" * 50):
        with pytest.raises(ps.DataError):
            ps.State(damaged)


def test_signed_states_are_told_from_others(penguins, tmp_path):
    key, other = tmp_path / "key", tmp_path / "other"
    for path in (key, other):
        path.write_text(f"a key in the file {path.name}")
        path.chmod(0o600)
    state = ps.model(penguins, "species").state
    state.save(tmp_path / "signed.bin", sign_key=key)
    state.save(tmp_path / "plain.bin")
    assert ps.State.load(tmp_path / "signed.bin", verify_key=key).to_bytes() == state.to_bytes()
    for name, against, told in (("plain.bin", key, "not signed"), ("signed.bin", other, "with this key"),
                                ("signed.bin", tmp_path / "none", "cannot be used as a key")):
        with pytest.raises(ps.DataError, match=told):
            ps.State.load(tmp_path / name, verify_key=against)
