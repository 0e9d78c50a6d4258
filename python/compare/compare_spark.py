#!/usr/bin/env python3
"""Rows a second, and seconds of processors, of a ranking and of a model: on one machine, over Spark and Dask, and by what Spark itself
brings for the like, on the same session. All of it is printed, whoever is ahead.

  compare_spark.py [ROWS [PARTS]]

The table is that of the tests: 3 classes, 14 numbers, 14 columns of categories, one without values. Engines
hold it in memory before the clock starts. Two executors, and two workers, of one core each.
"""

import contextlib
import os
import sys
import tempfile
import time
import warnings
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
sys.path[:0] = [str(ROOT / "python" / "tests"), str(ROOT / "python" / "tests" / "engines")]
os.environ["PYTHONPATH"] = os.pathsep.join([os.environ.get("PYTHONPATH", ""), sys.path[0]])

import psutil  # noqa: E402
import pyarrow as pa  # noqa: E402
from parts import generated  # noqa: E402

import predselect as ps  # noqa: E402


def processor_seconds():
    """Of this process and all that it has begun."""
    spent = 0.0
    me = psutil.Process()
    for process in (me, *me.children(recursive=True)):
        with contextlib.suppress(psutil.Error):
            times = process.cpu_times()
            spent += times.user + times.system + times.children_user + times.children_system
    return spent


def show(name, rows, work):
    spent, begin = processor_seconds(), time.perf_counter()
    work()
    seconds, spent = time.perf_counter() - begin, processor_seconds() - spent
    print(f"| {name} | {seconds:.1f} | {rows / seconds:,.0f} | {spent:.1f} |", flush=True)


def on_one_machine(rows, table):
    for threads in (1, 2):
        show(f"`rank`, one machine, threads {threads}", rows, lambda: ps.rank(table, "y", threads=threads))
    for threads in (1, 2):
        show(f"`model`, one machine, threads {threads}", rows, lambda: ps.model(table, "y", threads=threads))


def on_dask(rows, rows_a_part, parts):
    import dask.dataframe as dd
    import pandas as pd
    from distributed import Client, LocalCluster

    import predselect.dask

    def made(i):
        return generated(i, rows_a_part).to_pandas(types_mapper=pd.ArrowDtype)

    with LocalCluster(n_workers=2, threads_per_worker=1, dashboard_address=None) as cluster, \
            Client(cluster):
        df = dd.from_map(made, range(parts), meta=made(0).iloc[:0]).persist()
        len(df)
        show("`rank`, Dask", rows, lambda: predselect.dask.rank(df, "y"))
        show("`model`, Dask", rows, lambda: predselect.dask.model(df, "y"))


def on_spark(rows, rows_a_part, parts):
    from sessions import spark_session
    from test_spark import frame_of

    import predselect.spark

    with tempfile.TemporaryDirectory() as folder, \
            spark_session("local-cluster[2,1,2048]", folder, {"spark.executor.memory": "2g"}) as spark:
        made = frame_of(spark, generated(0, 1).schema, lambda i: generated(i, rows_a_part), parts)
        df = made.drop("nothing").persist()
        df.count()
        show("`rank`, Spark", rows, lambda: predselect.spark.rank(df, "y"))
        show("`model`, Spark", rows, lambda: predselect.spark.model(df, "y"))
        sparks_own(rows, df)


def sparks_own(rows, df):
    """Texts become codes, missing values a category or zero, and columns vectors, which its own need."""
    from pyspark.ml import Pipeline
    from pyspark.ml.classification import NaiveBayes
    from pyspark.ml.feature import (
        ChiSqSelector,
        StringIndexer,
        UnivariateFeatureSelector,
        VectorAssembler,
    )

    numbers = [n for n in df.columns if n.startswith("x")]
    texts = [n for n in df.columns if n.startswith(("t", "i"))]
    coded = [f"{name}_code" for name in texts]
    prepare = Pipeline(stages=[
        StringIndexer(inputCols=["y", *texts], outputCols=["label", *coded], handleInvalid="keep"),
        VectorAssembler(inputCols=coded, outputCol="categories"),
        VectorAssembler(inputCols=numbers, outputCol="numbers"),
    ])
    held = []

    def prepared():
        filled = df.fillna(0.0, numbers)
        frame = prepare.fit(filled).transform(filled).select("label", "categories", "numbers").persist()
        frame.count()
        held.append(frame)

    show("Spark's own: text into codes and vectors, before each of the following", rows, prepared)
    frame = held[0]

    def univariate(kind, column):
        selector = UnivariateFeatureSelector(featuresCol=column, labelCol="label", outputCol="kept")
        return selector.setFeatureType(kind).setLabelType("categorical").fit(frame)

    show("Spark's own: UnivariateFeatureSelector, 14 columns of categories (chi-square)", rows,
         lambda: univariate("categorical", "categories"))
    show("Spark's own: UnivariateFeatureSelector, 14 numbers (F)", rows,
         lambda: univariate("continuous", "numbers"))
    show("Spark's own: ChiSqSelector, 14 columns of categories", rows, lambda: ChiSqSelector(
        featuresCol="categories", labelCol="label", outputCol="kept", numTopFeatures=7).fit(frame))
    show("Spark's own: NaiveBayes, 14 numbers (gaussian), without a selection", rows, lambda: NaiveBayes(
        featuresCol="numbers", labelCol="label", modelType="gaussian").fit(frame))


def main():
    rows, parts = (int(word) for word in (*sys.argv[1:], *("1000000", "16")[len(sys.argv) - 1:]))
    rows_a_part = rows // parts
    print(f"{rows:,} rows of 30 columns in {parts} parts; {os.cpu_count()} cores, "
          f"load {os.getloadavg()[0]:.1f}, {time.strftime('%Y-%m-%d')}\n")
    print("| work | seconds | rows a second | processor seconds |\n| --- | --- | --- | --- |")
    on_one_machine(rows, pa.Table.from_batches([generated(i, rows_a_part) for i in range(parts)]))
    on_dask(rows, rows_a_part, parts)
    on_spark(rows, rows_a_part, parts)


if __name__ == "__main__":
    warnings.simplefilter("ignore")
    main()
