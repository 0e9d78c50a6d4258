"""What the tests share: the example data, and the program that has the same core."""

from __future__ import annotations

import json
import os
import subprocess
from pathlib import Path

import pytest

ROOT = Path(__file__).resolve().parents[2]
PENGUINS = ROOT / "data" / "penguins.csv"


@pytest.fixture(scope="session")
def penguins() -> Path:
    return PENGUINS


@pytest.fixture(scope="session")
def program():
    """Runs the program and gives its JSON document, without what a report is drawn from."""
    path = Path(os.environ.get("PREDSELECT_PROGRAM", ROOT / "build/release/bin/predselect"))
    if not path.exists():
        pytest.skip("the program is not built")

    def run(*arguments: str) -> dict:
        done = subprocess.run([path, *arguments, "--format", "json"], capture_output=True, text=True)
        assert done.returncode == 0, done.stderr
        document = json.loads(done.stdout)
        for one in document["runs"]:
            one.pop("findings", None)
        return document

    return run
