"""What the tests over engines share. They run where `make spark` has set the engines up."""

from __future__ import annotations

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


@pytest.fixture(scope="session")
def spark():
    """Two executors of one core each, in processes of their own."""
    pytest.importorskip("pyspark")
    from sessions import spark_session

    with tempfile.TemporaryDirectory() as folder, \
            spark_session("local-cluster[2,1,1024]", folder, {}) as session:
        yield session
