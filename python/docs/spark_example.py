"""Ranks, models and scores penguins with Spark on this machine."""

import os
import sys
from pathlib import Path

from pyspark.sql import SparkSession

import predselect.spark

PENGUINS = Path(__file__).resolve().parents[2] / "data" / "penguins.csv"


def main(session: SparkSession) -> None:
    df = session.read.csv(str(PENGUINS), header=True, inferSchema=True, nullValue="NA")
    print(predselect.spark.rank(df, "species"))
    model = predselect.spark.model(df, "species")
    print(model.predictors)
    scored = predselect.spark.score(df, model)
    scored.groupBy("species", "PredictedValue").count().show()


if __name__ == "__main__":
    os.environ["PYSPARK_PYTHON"] = sys.executable  # tasks have the packages of this program
    with SparkSession.builder.master("local[2]").appName("penguins").getOrCreate() as spark:
        main(spark)
