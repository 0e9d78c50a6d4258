"""What takes minutes or gigabytes: memory beside large frames, and runs without end."""

from __future__ import annotations

import gc
import os
import resource
import subprocess
import sys
from pathlib import Path

import numpy as np
import pytest

import predselect as ps

pytestmark = pytest.mark.long


def resident() -> int:
    return int(Path("/proc/self/statm").read_text().split()[1]) * resource.getpagesize()


RANK_LARGE = """
import numpy as np, polars as pl
import predselect as ps
n, columns = 12_500_000, 20
random = np.random.default_rng(0)
frame = pl.DataFrame({f"x{i}": random.normal(size=n) for i in range(columns)})
frame = frame.with_columns(y=pl.Series(np.arange(n) % 2 == 0).cast(pl.Float64))
ps.rank(frame.head(1000), "y", threads=2)
def now(): return int(open("/proc/self/statm").read().split()[1]) * 4096
open("/proc/self/clear_refs", "w").write("5")  # the highest size counts anew
def highest():
    return 1024 * int(next(l for l in open("/proc/self/status") if l.startswith("VmHWM")).split()[1])
before = now()
ranking = ps.rank(frame, "y", threads=2)
assert len(ranking.predictors) == columns
print((highest() - before) / frame.estimated_size())
"""


def test_a_ranking_of_two_gigabytes_adds_less_than_a_twentieth():
    pytest.importorskip("polars")
    done = subprocess.run([sys.executable, "-W", "ignore", "-c", RANK_LARGE], capture_output=True,
                          text=True, check=True, env=os.environ)
    share = float(done.stdout)
    print(f"added {100 * share:.2f} % of the frame")
    assert share < 0.05


@pytest.mark.filterwarnings("ignore")
def test_a_thousand_runs_keep_nothing():
    data = {"y": [f"{i % 3}" for i in range(300)], "x": np.sin(np.arange(300.0)),
            "c": [f"{i % 7}" for i in range(300)]}

    def runs(n):
        for _ in range(n):
            ps.rank(data, "y", threads=1)["Ranking"].to_dict()
            ps.score(ps.model(data, "y", threads=1).state, data, threads=1).new_columns.to_dict()
            try:
                ps.run(data, "SELECTPRED nobody.", threads=1)
            except ps.CommandError:
                pass
        gc.collect()
        return resident()

    runs(400)  # what is set up once is set up, and the allocator has found its size
    sizes = [runs(250) for _ in range(5)]
    print(f"{(sizes[-1] - sizes[0]) / 1000:.0f} bytes a run")
    assert sizes[-1] - sizes[0] < 1_500_000
