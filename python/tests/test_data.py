"""Data of every kind come in as the same table, and float64 columns without a copy."""

from __future__ import annotations

import datetime
import decimal
import gc

import numpy as np
import pytest

import predselect as ps
from predselect import _library as lib
from predselect._data import Options, batch_of, open_table
from predselect._export import given_out

COMMANDS = (
    "SELECTPRED species /CRITERIA PVALUES=EXACT SHOWUNSELECTED=9 /PRINT CPS SUMMARY EFFECTS.\n"
    "NAIVEBAYES species /TRAININGSAMPLE PERCENT=70 /SAVE PREDVAL(p) PREDPROB(q)."
)


def frames(path):
    """The penguins as every producer that is installed has them."""
    pandas = pytest.importorskip("pandas")
    frame = pandas.read_csv(path)
    yield "pandas", lambda: frame
    yield "dict", lambda: {name: frame[name].tolist() for name in frame}
    yield "path", lambda: path
    yield "pandas categories", lambda: frame.astype({"species": "category", "sex": "category"})
    try:
        import polars
    except ImportError:
        return
    table = polars.read_csv(path, null_values="NA")
    yield "polars", lambda: table
    yield "polars batches", lambda: (table[i : i + 100] for i in range(0, len(table), 100))
    yield "pandas batches", lambda: (frame[i : i + 100].astype({"sex": object})
                                     for i in range(0, len(frame), 100))
    try:
        import pyarrow
    except ImportError:
        return
    arrow = pyarrow.table(frame) if not hasattr(table, "to_arrow") else table.to_arrow()
    yield "pyarrow", lambda: arrow
    yield "record batches", lambda: iter(arrow.to_batches(max_chunksize=50))
    yield "one record batch", lambda: arrow.combine_chunks().to_batches()[0]
    yield "pandas over arrow", lambda: arrow.to_pandas(types_mapper=pandas.ArrowDtype)
    try:
        import duckdb
    except ImportError:
        return
    connection = duckdb.connect()
    yield "duckdb", lambda: connection.from_arrow(arrow)


def test_every_producer_gives_the_bits_of_the_program(penguins, program):
    expected = program("run", "--data", str(penguins), "-c", COMMANDS)["runs"]
    for name, make in frames(penguins):
        result = ps.run(make(), COMMANDS)
        assert result.document["runs"] == expected, name
        assert len(result.new_columns) == 344, name


def test_a_matrix_of_numbers_gives_the_bits_of_the_program(program, tmp_path):
    matrix = np.random.default_rng(7).normal(size=(500, 4))
    matrix[:, 3] = (matrix[:, 0] + 0.5 * matrix[:, 1] > 0).astype(float)
    matrix[::17, 1] = np.nan
    path = tmp_path / "matrix.csv"
    text = "\n".join(",".join("" if v != v else repr(float(v)) for v in row) for row in matrix)
    path.write_text("x0,x1,x2,x3\n" + text + "\n")
    command = "SELECTPRED x3 /PRINT SUMMARY EFFECTS."
    expected = program("run", "--data", str(path), "-c", command)["runs"]
    named = matrix.view([(f"x{i}", float) for i in range(4)]).ravel()
    for data in (matrix, np.asfortranarray(matrix), matrix[::-1][::-1], named, path):
        assert ps.run(data, command).document["runs"] == expected


def test_float64_columns_are_looked_at_where_they_are():
    pandas = pytest.importorskip("pandas")
    frame = pandas.DataFrame({"a": np.arange(1000.0), "b": np.arange(1000.0) % 7, "c": ["x"] * 1000})
    block = np.asfortranarray(np.random.default_rng(0).normal(size=(1000, 3)))
    for data, names in ((frame, ["a", "b"]), ({"a": np.arange(10.0)}, ["a"]),
                        ({f"x{i}": block[:, i] for i in range(3)}, ["x0", "x1", "x2"])):
        columns = {name: data[name] for name in data}
        batch, _ = batch_of(columns)
        for name in names:
            there = np.asarray(columns[name]).__array_interface__["data"][0]
            assert batch.columns[name].buffers[1].__array_interface__["data"][0] == there
    # Nor does the library copy them: it sees what becomes of them while the table is open.
    cells = np.arange(50, dtype=float) / 8
    session = lib.Session()
    table = open_table(session, {"a": cells}, Options())
    handle = lib.Handle("result")
    cells[49] = 12345.5
    session.call("describe", table, lib.ctypes.byref(handle._as_parameter_))
    assert ps.Result(session, handle, table)["Dictionary"]["maximum"].tolist() == [12345.5]


def test_nothing_stays_out_when_results_are_gone():
    gc.collect()
    before = given_out()
    for _ in range(5):
        result = ps.rank({"y": ["a", "b"] * 20, "x": np.arange(40.0)}, "y")
        ps.rank(iter([{"y": ["a", "b"] * 20, "x": np.arange(40.0)}] * 3), "y")
        with pytest.raises(ps.RequestError):
            ps.rank({"y": ["a", "b"], "x": [1, 2]}, "z")
    assert given_out() > before
    del result
    gc.collect()
    assert given_out() == before


DAY = datetime.date(2024, 2, 29)
COLUMNS = {
    "texts": (["a", None, "ü", "a"], "text", "nominal", 3),
    "numpy texts": (np.array(["a", "b", "c", "a"]), "text", "nominal", 4),
    "bytes": (np.array([b"a", b"b", b"c", b"a"]), "text", "nominal", 4),
    "booleans": (np.array([True, False, True, True]), "number", "nominal", 4),
    "booleans with None": ([True, None, False, True], "number", "nominal", 3),
    "small integers": (np.array([1, 2, 3, 4], np.int8), "number", "nominal", 4),
    "swapped bytes": (np.array([1.5, 2, 3, 4], ">f8"), "number", "scale", 4),
    "every second": (np.arange(8.0)[::2] + 0.5, "number", "scale", 4),
    "half floats": (np.array([0.5, 1, np.nan, 2], np.float16), "number", "scale", 3),
    "long doubles": (np.array([0.5, 1, np.inf, 2], np.longdouble), "number", "scale", 3),
    "decimals": ([decimal.Decimal("0.5"), 1, None, float("nan")], "number", "scale", 2),
    "dates": ([DAY, DAY, None, DAY], "date", "nominal", 3),
    "days": (np.array(["2024-02-29", "NaT", "1960-01-01", "2024-01-01"], "M8[D]"), "date",
             "nominal", 3),
    "instants": (np.array(["2024-02-29T12", "NaT"] * 2, "M8[h]"), "date and time", "nominal", 2),
    "durations": ([datetime.timedelta(1), None, datetime.timedelta(2), None], "duration", "nominal", 2),
    "texts beyond a microsecond": ([f"2024-01-01T00:00:00.12345678{i}" for i in range(4)], "text",
                                   "nominal", 4),
    "masked": (np.ma.masked_array([1.5, 2, 3, 4], [0, 1, 0, 0]), "number", "scale", 3),
    "nothing": ([None] * 4, "text", "nominal", 0),
    "masked texts": (np.ma.masked_array(np.array(["a", None, "b", "c"], object), [1, 0, 0, 0]),
                     "text", "nominal", 2),
    "masked days": (np.ma.masked_array(np.array(["2024-01-01", "NaT"] * 2, "M8[D]"), [1, 0, 0, 0]),
                    "date", "nominal", 1),
    "instants of a zone": ([datetime.datetime(2024, 1, 1, tzinfo=datetime.timezone.utc), None] * 2,
                           "date and time", "nominal", 2),
    "times of day": ([datetime.time(1, 2), None] * 2, "duration", "nominal", 2),
}


def kinds_of_pandas():
    pandas = pytest.importorskip("pandas")
    make = pandas.Series
    return {
        "categories": (make(["a", "b", None, "a"], dtype="category"), "text", "nominal", 3),
        "ordered": (make(pandas.Categorical(["lo", "hi", None, "lo"], ["lo", "hi"], ordered=True)),
                    "text", "ordinal", 3),
        "ordered beside no series": (pandas.Categorical(["lo", "hi", None, "lo"], ["lo", "hi"], ordered=True),
                                     "text", "ordinal", 3),
        "ordered numbers": (make(pandas.Categorical([10, 20, 10, 10], ordered=True)), "number",
                            "ordinal", 4),
        "nullable integers": (make([1, None, 3, 4], dtype="Int64"), "number", "nominal", 3),
        "nullable floats": (make([1.5, None, 3, 4], dtype="Float64"), "number", "scale", 3),
        "nullable booleans": (make([True, None, False, True], dtype="boolean"), "number", "nominal", 3),
        "pandas texts": (make(["a", None, "b", "a"], dtype="string"), "text", "nominal", 3),
        "pandas times": (make(pandas.to_datetime(["2024-01-01", None, "2024-01-03", "2024-01-04"])),
                         "date and time", "nominal", 3),
        "times of a zone": (make(pandas.to_datetime(["2024-01-01", None] * 2).tz_localize(
            "Europe/Berlin")), "date and time", "nominal", 2),
        "intervals": (pandas.cut(make([1.0, 2.0, None, 9.0]), 3), "text", "ordinal", 3),
        "months": (make(pandas.period_range("2024-01", periods=4, freq="M")), "text", "nominal", 4),
        "categories of a mix": (make([1, "a", 1, None], dtype="category"), "text", "nominal", 3),
        **kinds_over_arrow(make),
    }


def kinds_over_arrow(make):
    pyarrow, pandas = pytest.importorskip("pyarrow"), pytest.importorskip("pandas")
    return {
        "arrow": (pyarrow.array(["a", None, "b", "a"]), "text", "nominal", 3),
        "days over arrow": (make([DAY, None] * 2, dtype=pandas.ArrowDtype(pyarrow.date32())), "date",
                            "nominal", 2),
    }


def test_types_become_what_they_are():
    cases = {**COLUMNS, **kinds_of_pandas()}
    with pytest.warns(ps.DataNotice):
        result = ps.describe({name: case[0] for name, case in cases.items()})
    told = {row["variable"]: row for row in result["Dictionary"].rows()}
    for name, (_, kind, level, valid) in cases.items():
        row = told[name]
        assert (row["type"], row["level"], row["valid"]) == (kind, level, valid), name


def test_dates_count_days_whatever_made_them():
    with pytest.warns(ps.DataNotice):
        result = ps.describe({"a": [DAY], "b": np.array([DAY], "M8[W]")}, levels={"a": "scale"})
    assert result["Dictionary"]["maximum"][0] == DAY.toordinal() - datetime.date(1970, 1, 1).toordinal()


def test_times_of_a_zone_reach_as_far_as_their_unit():
    pandas = pytest.importorskip("pandas")
    far = pandas.Series(pandas.DatetimeIndex(np.array(["9999-12-31", "2024-01-05"], "M8[us]"), tz="UTC"))
    columns = {"zone": far}
    if hasattr(pandas, "ArrowDtype"):
        pyarrow = pytest.importorskip("pyarrow")
        columns["arrow"] = far.astype(pandas.ArrowDtype(pyarrow.timestamp("us", "UTC")))
    with pytest.warns(ps.DataNotice):
        result = ps.describe(columns)
    told = result["Dictionary"]
    assert {v[:10] for v in told["latest"]} == {"9999-12-31"}
    assert {v[:10] for v in told["earliest"]} == {"2024-01-05"}


def test_masked_matrices_keep_their_mask():
    matrix = np.ma.masked_array([[1.0, 2], [99, 4], [5, 6]], [[0, 0], [1, 0], [0, 0]])
    for data in (matrix, matrix.T.T.copy(order="F"), matrix[:, 0]):
        told = ps.describe(data)["Dictionary"]
        assert (told["maximum"][0], told["missing"][0]) == (5, 1)
    data = {"y": ["a", "b", "b"] * 20, "x": np.arange(60.0)}
    weights = np.ma.masked_array(np.full(60, 9), np.arange(60) % 4 == 1)
    ranked = [ps.rank(data, "y", weight=w)["Ranking"]["log10_p"] for w in (weights, weights.filled(0))]
    assert ranked[0] == ranked[1]


def test_polars_enums_and_arrow_dictionaries_say_their_level():
    polars = pytest.importorskip("polars")
    frame = polars.DataFrame({
        "c": polars.Series(["x", "y", None], dtype=polars.Categorical),
        "b": polars.Series([True, None, False]),
        "d": polars.Series([decimal.Decimal("1.25"), None, decimal.Decimal("3")]),
    })
    told = {row["variable"]: row for row in ps.describe(frame)["Dictionary"].rows()}
    assert (told["c"]["level"], told["b"]["level"], told["d"]["level"]) == (
        "nominal", "nominal", "scale")


@pytest.mark.parametrize(("data", "words"), [
    ({"a": [1, "x"]}, 'column "a": mixes numbers and texts. Give it one type'),
    ({"a": [object()]}, 'column "a": holds objects of object'),
    ({"a": np.array([1j])}, 'column "a": has the type complex128'),
    ({"a": np.zeros((2, 2))}, 'column "a": has 2 dimensions'),
    ({"a": np.array(["9999999-01-01"], "M8[D]")}, 'column "a": holds dates beyond'),
    ({"a": "text"}, "column \"a\": is one value, 'text'"),
    (iter([{"a": 1.5}]), 'column "a": is one value, 1.5'),
    ([[1, 2], [3, 4]], "rows are a list of dicts"),
    ({"a": [1, 2], "b": [1]}, "different lengths"),
    ({1: [1.5], "1": [2.5]}, 'two columns are named "1"'),
    (np.zeros((2, 2, 2)), "3 dimensions"),
    ({"a": ["\ud800"]}, 'column "a"'),
    ("no/such.csv", "no/such.csv"),
    ("no/such*.csv", "no file fits the pattern"),
    (3, "type int cannot be read"),
    (iter([]), "there is no batch"),
    (iter([3]), "a batch of type int"),
])
def test_data_that_cannot_be_read_say_where_and_what_to_do(data, words):
    with pytest.raises(ps.DataError, match=words.replace("*", r"\*")):
        ps.describe(data)


def test_weights_of_another_length_are_refused():
    polars = pytest.importorskip("polars")
    with pytest.raises(ps.DataError, match="there are 1 for 2 cases"):
        ps.rank(polars.DataFrame({"y": ["a", "b"]}), "y", weight=[1.0])


def test_a_batch_of_other_columns_is_named():
    with pytest.raises(ps.DataError, match="give all batches the same columns"):
        ps.describe(iter([{"a": [1.5]}, {"a": ["x"]}]))


def test_columns_whose_names_are_numbers_are_named_by_them():
    data = {0: ["a", "b"] * 20, 1: np.arange(40.0) + 0.5, 2: np.arange(40) % 3, 3: np.ones(40)}
    assert ps.rank(data, 0, except_=2, levels={2: "nominal"}, weight=3).predictors == ["1"]


def broken():
    yield {"a": [1.5]}
    raise ZeroDivisionError("in the producer")


def test_what_an_iterator_raises_comes_through():
    with pytest.raises(ZeroDivisionError, match="in the producer"):
        ps.describe(broken())


def test_batches_are_made_on_the_thread_that_called_and_may_widen():
    import sqlite3

    connection = sqlite3.connect(":memory:")  # is of its thread alone
    connection.execute("create table t (y text, x real, n integer)")
    rows = [("ab"[i % 2], i * 0.5, i if i % 7 or i < 20 else None) for i in range(60)]
    connection.executemany("insert into t values (?, ?, ?)", rows)

    def batches():
        cursor = connection.execute("select * from t")
        while some := cursor.fetchmany(20):
            yield dict(zip("yxn", zip(*some)))

    whole = ps.rank(dict(zip("yxn", zip(*rows))), "y").document["runs"]
    assert ps.rank(batches(), "y").document["runs"] == whole
    wide = ({"x": np.array(part)} for part in ([1, 2], [1.5, np.nan]))
    assert ps.describe(wide)["Dictionary"]["valid"].tolist() == [3]

    def stopped():
        yield {"x": [1.5]}
        raise KeyboardInterrupt

    with pytest.raises(KeyboardInterrupt):
        ps.describe(stopped())


def test_options_of_data(tmp_path, penguins):
    path = tmp_path / "odd.txt"
    path.write_text("a;1,5;99\nb;2,5;3\n")
    told = ps.describe(path, reading={"input_format": "csv", "delimiter": ";", "decimal": ",",
                                      "header": False, "missing": {"column3": 99}})
    assert told["Dictionary"]["user_missing"].tolist() == [0, 0, 1]
    told = ps.describe({"a": [1.0, 99.0]}, reading={"missing": {"a": [99, 999]}})
    assert told["Dictionary"]["user_missing"].tolist() == [1]
    with pytest.raises(ps.RequestError, match="delimeter"):
        ps.describe(path, reading={"delimeter": ";"})
    schema = {"fields": [{"name": "year", "title": "Year of study", "categoriesOrdered": True,
                          "categories": [2007, 2008, 2009]}]}
    assert "Year of study" in ps.describe(penguins, schema=schema)["Dictionary"]["label"].tolist()
    for stream in (False, True):
        result = ps.rank(penguins, "sex", except_="year", levels={"species": "ordinal"}, stream=stream)
        assert "year" not in result.predictors
    with pytest.raises(ps.DataError, match="schema: .*No such file"):
        ps.describe(penguins, schema=tmp_path / "none.json")
    with pytest.raises(ps.RequestError, match="nominal, ordinal or scale"):
        ps.rank(penguins, "sex", levels={"year": "numeric"})
    with pytest.raises(ps.RequestError, match='did you mean "species"'):
        ps.rank(penguins, "specis")


def test_records_are_rows():
    records = [{"y": "a", "x": 1.5}, {"y": "b"}, {}, {"z": 3, "y": "a"}]
    columns = {"y": ["a", "b", None, "a"], "x": [1.5, None, None, None], "z": [None, None, None, 3]}
    assert ps.describe(records).document == ps.describe(columns).document


def test_texts_that_are_dates_are_read_as_from_a_file(tmp_path):
    pandas = pytest.importorskip("pandas")
    lines = [f"2024-01-{i % 28 + 1:02},2024-02-0{i % 9 + 1} 12:00:0{i % 6},2024-02-{i % 30 + 1:02},"
             f"{i % 9 + 2000},{'' if i % 5 else '2024-02-29T01:00Z'},{'ab'[i % 2]}" for i in range(60)]
    path = tmp_path / "dates.csv"
    path.write_text("\n".join(["day,when,no day,year,zone,y", *lines]) + "\n")
    frame = pandas.read_csv(path)
    with pytest.warns(ps.DataNotice, match='"day" holds dates'):
        of_frame = ps.describe(frame)
    assert of_frame.document["runs"] == ps.describe(path).document["runs"]
    assert list(of_frame["Dictionary"]["type"]) == [
        "date", "date and time", "text", "number", "date and time", "text"]
    kept = ps.describe(frame, levels={"day": "nominal"})["Dictionary"]
    assert kept["type"][0] == "text"
    # A model of the file scores the frame.
    model = ps.model(path, "y", test=0, predictors=1).state
    assert len(ps.score(model, frame).new_columns) == 60


def test_a_pattern_and_a_folder_are_one_table(penguins, tmp_path):
    lines = penguins.read_text().splitlines(keepends=True)
    for i, part in enumerate((lines[1:200], lines[200:])):
        (tmp_path / f"part-{i}.csv").write_text(lines[0] + "".join(part))
    whole = ps.rank(penguins, "species")["Ranking"].to_dict()
    for data in (tmp_path, tmp_path / "part-*.csv", str(tmp_path / "part-*.csv")):
        told = ps.rank(data, "species")["Ranking"].to_dict()
        assert told["log10_p"].tolist() == whole["log10_p"].tolist()


def test_weights_count_cases_as_a_column_or_beside_the_data():
    y, x = ["a", "b", "a", "b", "b"] * 4, np.arange(20.0) + 0.5
    weights = np.array([1, 2, 0, 3, 1] * 4)
    rows = np.repeat(np.arange(20), weights)
    copied = ps.rank({"y": np.array(y)[rows], "x": x[rows]}, "y")["Ranking"].to_dict()
    beside = [{"y": y, "x": x}]
    for library, make in (("polars", "DataFrame"), ("pyarrow", "table")):
        beside.append(getattr(pytest.importorskip(library), make)({"y": y, "x": x}))
    for result in (*(ps.rank(data, "y", weight=weights) for data in beside),
                   ps.rank({"y": y, "x": x, "w": weights}, "y", weight="w")):
        told = result["Ranking"].to_dict()
        for name in ("test_value", "log10_p", "effect_size"):
            assert told[name] == copied[name]
