"""What the tests over engines share. They run where `make spark` has set the engines up."""

from __future__ import annotations

import contextlib
import os
import sys
import tempfile
from pathlib import Path

import pytest

ROOT = Path(__file__).resolve().parents[3]
sys.path.insert(0, str(ROOT / "python" / "tests"))  # of this process, and by the next line of workers
os.environ["PYTHONPATH"] = os.pathsep.join(
    [str(ROOT / "python" / "src"), str(ROOT / "python" / "tests"), os.environ.get("PYTHONPATH", "")])
if "PREDSELECT_LIBRARY_DIR" in os.environ:
    os.environ["PREDSELECT_LIBRARY_DIR"] = os.path.abspath(os.environ["PREDSELECT_LIBRARY_DIR"])


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


@pytest.fixture(scope="session")
def spark():
    """Two executors of one core each, in processes of their own."""
    pytest.importorskip("pyspark")
    with tempfile.TemporaryDirectory() as folder, \
            spark_session("local-cluster[2,1,1024]", folder, {}) as session:
        yield session
