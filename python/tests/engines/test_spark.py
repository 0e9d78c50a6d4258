"""PySpark with executors in processes of their own: the tables and the model file of one machine."""

from __future__ import annotations

import os
import signal
import threading
import time

import pyarrow as pa
import pyarrow.csv
import pyarrow.parquet
import pytest

pytest.importorskip("pyspark")

import psutil  # noqa: E402
from conftest import ROOT  # noqa: E402
from parts import assert_same, assert_same_model, generated, mutated, odd_types  # noqa: E402
from pyspark.sql.pandas.types import from_arrow_schema  # noqa: E402

import predselect as ps  # noqa: E402
import predselect.spark  # noqa: E402
from predselect import _parts  # noqa: E402
from predselect._data import Options  # noqa: E402

pytestmark = pytest.mark.filterwarnings("ignore::predselect.PredSelectWarning", "ignore::FutureWarning")


def frame_of(spark, schema, part, n_parts):
    """A DataFrame whose partitions are the batches that part(i) gives; none where it gives None."""

    def made(batches):
        for batch in batches:
            for i in batch["id"].to_pylist():
                rows = part(i)
                yield from [] if rows is None else [rows]

    return spark.range(0, n_parts, 1, n_parts).mapInArrow(made, from_arrow_schema(schema))


def frame_of_table(spark, table, bounds):
    parts = [table.slice(a, b - a).combine_chunks().to_batches()
             for a, b in zip([0, *bounds], [*bounds, len(table)])]
    return frame_of(spark, table.schema, lambda i: parts[i][0] if parts[i] else None, len(parts))


def big(spark, rows, n_parts):
    """A generated table, and the same for one machine."""
    return (frame_of(spark, generated(0, 1).schema, lambda i: generated(i, rows), n_parts),
            lambda: (generated(i, rows) for i in range(n_parts)))


@pytest.mark.parametrize("name, target, bounds", [
    ("penguins", "species", [40, 40, 300]),
    ("biopsies", "diagnosis", list(range(30, 560, 30))),
])
def test_real_data(spark, name, target, bounds):
    table = pa.csv.read_csv(ROOT / "data" / f"{name}.csv",
                            convert_options=pa.csv.ConvertOptions(null_values=["", "NA"],
                                                                  strings_can_be_null=True))
    df = frame_of_table(spark, table, bounds)
    assert_same(predselect.spark.rank(df, target), ps.rank(table, target))
    found, expected = predselect.spark.model(df, target), ps.model(table, target)
    assert_same_model(found, expected)
    scored = predselect.spark.score(df, found, explain=1).toArrow()
    scores = ps.score(expected.state, table, explain=1).new_columns.to_arrow()
    assert scored.to_pydict() == {**table.to_pydict(), **scores.to_pydict()}


@pytest.mark.parametrize("said", [
    {}, {"weight": "w", "levels": {"whole": "scale"}, "reading": {"missing": {"whole": [3, 4]}},
         "except_": ["moment"], "stream": True}], ids=len)
def test_types_without_a_value_empty_partitions_and_uneven_ones(spark, said):
    table, test = odd_types(), 0.0 if said else 0.3
    table = table.rename_columns(["a.b `c`" if name == "early" else name for name in table.column_names])
    df = frame_of_table(spark, table, [0, 0, 50, 50, 51, 240, 240])
    whole = df.toArrow()  # types as Spark has them
    assert_same(predselect.spark.rank(df, "y", **said), ps.rank(whole, "y", **said))
    assert_same_model(predselect.spark.model(df, "y", test=test, **said),
                      ps.model(whole, "y", test=test, **said))


def test_a_generated_table_in_16_parts(spark):
    df, whole = big(spark, 12_500, 16)
    assert_same(predselect.spark.rank(df, "y"), ps.rank(whole(), "y"))
    assert_same_model(predselect.spark.model(df, "y"), ps.model(whole(), "y"))


@pytest.mark.long
def test_20_million_rows_in_64_parts(spark):
    df, whole = big(spark, 312_500, 64)
    assert_same(predselect.spark.rank(df, "y"), ps.rank(whole(), "y"))
    assert_same_model(predselect.spark.model(df, "y"), ps.model(whole(), "y"))


def executors():
    """The processes of the executors, which this one has begun by way of Spark's."""
    below = psutil.Process().children(recursive=True)
    return [p.pid for p in below if any("CoarseGrainedExecutorBackend" in word for word in words_of(p))]


def words_of(process):
    try:
        return process.cmdline()
    except psutil.Error:  # gone meanwhile
        return []


@pytest.mark.parametrize("over", [_parts.ROWS_KEEP, _parts.CODES])
def test_a_killed_executor_changes_nothing(spark, over, monkeypatch):
    """While rows are read; and with the codes that it holds."""
    df, whole = big(spark, 4_000, 6)
    killed = []

    class Frame(predselect.spark._Frame):
        def ask(self, now, request, ranges):
            if now == over and not killed:
                killed.append(executors()[0])
                wait = 0.0 if over == _parts.CODES else 0.5
                threading.Timer(wait, os.kill, [killed[0], signal.SIGKILL]).start()
            return super().ask(now, request, ranges)

    monkeypatch.setattr(predselect.spark, "_Frame", Frame)
    found = predselect.spark.model(df, "y", predictors=4)
    assert_same_model(found, ps.model(whole(), "y", predictors=4))
    assert killed and killed[0] not in executors()
    until = time.monotonic() + 120
    while len(executors()) < 2 and time.monotonic() < until:
        time.sleep(0.2)


def test_a_mutated_and_a_foreign_piece_are_refused_with_their_part(spark):
    frame = predselect.spark._Frame(frame_of_table(spark, odd_types(), list(range(10, 200, 10))))
    frame.begin(["y", "real"], Options(), "pieces")
    ranges = frame.ranges()
    rows = predselect.spark._mapped(frame._rows, predselect.spark._ranges_work(
        frame.empty().schema, Options())).collect()
    foreign = _parts.ranges_of(18, pa.table({"z": [1.5]}), Options())
    for spoil, said in ((mutated, "part 18 cannot be added: it is damaged or cut short"),
                        (lambda piece: foreign, "part 18 cannot be added: it has")):
        spoilt = [row.asDict() for row in rows]
        spoilt[18]["piece"] = spoil(bytes(spoilt[18]["piece"]))
        pieces = spark.createDataFrame(spoilt, predselect.spark._PIECES_OF_SPARK)
        with pytest.raises(ps.RequestError, match=said):
            frame._merged(pieces)
    assert frame._merged(spark.createDataFrame(rows, pieces.schema)) == ranges


def descriptions(spark):
    store = spark.sparkContext._jsc.sc().statusStore()
    jobs = store.jobsList(None)
    said = [jobs.apply(i).description() for i in range(jobs.size())]
    return [description.get() for description in said if description.isDefined()]


def test_only_what_is_needed_is_read_and_jobs_say_what_they_are(spark, tmp_path):
    table = odd_types().drop(["nothing"])
    pa.parquet.write_table(table, tmp_path / "table.parquet")
    df = spark.read.parquet(str(tmp_path))
    frame = predselect.spark._Frame(df)
    frame.begin(["y", "real"], Options(), "")
    plan = frame._rows._jdf.queryExecution().executedPlan().toString()
    assert "ReadSchema: struct<y:string,real:float>" in plan
    spark.sparkContext.setJobDescription("mine")
    predselect.spark.rank(df, "y", except_=[n for n in table.column_names if n not in ("y", "real")])
    assert spark.sparkContext.getLocalProperty("spark.job.description") == "mine"
    said = descriptions(spark)
    assert "predselect rank y: ranges of the rows" in said
    assert "predselect rank y: pass 1 over the rows" in said


def test_the_example_of_the_documentation(spark, monkeypatch, capsys):
    monkeypatch.syspath_prepend(str(ROOT / "python" / "docs"))
    import spark_example

    spark_example.main(spark)
    shown = capsys.readouterr().out
    assert "['flipper_length_mm', 'bill_length_mm'" in shown and "|   Gentoo|        Gentoo|" in shown


def test_what_does_not_go_is_refused(spark):
    df = spark.createDataFrame([("a", [1]), ("b", [2])], "y string, l array<int>")
    for refused, said in (
        (lambda: predselect.spark.rank(df, "y"), '"l"'),
        (lambda: predselect.spark.rank(df, "z"), 'no column "z"; they have y, l'),
        (lambda: predselect.spark.model(df, "y", predictions=True), "score"),
        (lambda: predselect.spark.rank(df.select("y", "y"), "y"), "there twice"),
        (lambda: predselect.spark.rank(df.selectExpr("y", "make_interval(1) as i"), "y"), "cast it"),
        (lambda: predselect.spark.model(spark.createDataFrame([], "y string, x int"), "y"), "no rows"),
        (lambda: predselect.spark.rank(df.toPandas(), "y"), "pandas.*DataFrame is no DataFrame of Spark"),
        (lambda: predselect.spark.rank(spark.readStream.format("rate").load(), "value"), "streaming"),
        (lambda: predselect.spark.model(spark.range(9).selectExpr("id / 7 as y", "id as x"), "y"),
         "scale"),
    ):
        with pytest.raises(ps.PredSelectError, match=said):
            refused()
