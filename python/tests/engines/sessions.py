"""Sessions of Spark whose executors are processes of their own."""

from __future__ import annotations

import contextlib
import os
import sys
from pathlib import Path


def spark_home(folder: str) -> str:
    """The installed Spark, which puts the folders of executors beside itself, in another place."""
    import pyspark

    for entry in Path(pyspark.__file__).parent.iterdir():
        if entry.name != "work":
            (Path(folder) / entry.name).symlink_to(entry)
    return folder


@contextlib.contextmanager
def spark_session(master: str, folder: str, more: dict[str, str]):
    """A session whose executors find the package where this process does."""
    from pyspark.sql import SparkSession

    os.environ.update(SPARK_HOME=spark_home(folder), PYSPARK_PYTHON=sys.executable,
                      SPARK_LOCAL_IP="127.0.0.1")
    builder = SparkSession.builder.master(master)
    for name, value in {
        "spark.driver.host": "127.0.0.1",
        "spark.executorEnv.PYTHONPATH": os.environ["PYTHONPATH"],
        "spark.executorEnv.PREDSELECT_LIBRARY_DIR": os.environ.get("PREDSELECT_LIBRARY_DIR", ""),
        "spark.log.level": "ERROR",
        "spark.sql.shuffle.partitions": "4",
        "spark.ui.enabled": "false",
        "spark.ui.showConsoleProgress": "false",
        **more,
    }.items():
        builder = builder.config(name, value)
    session = builder.getOrCreate()
    try:
        yield session
    finally:
        session.stop()
