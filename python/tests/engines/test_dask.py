"""Dask with workers in processes of their own: the tables and the model file of one machine."""

from __future__ import annotations

import os
import signal

import pytest

dask = pytest.importorskip("dask")
pytest.importorskip("distributed")

import dask.dataframe as dd  # noqa: E402
import pandas as pd  # noqa: E402
import pyarrow as pa  # noqa: E402
from conftest import ROOT  # noqa: E402
from distributed import Client, LocalCluster  # noqa: E402
from parts import assert_same, assert_same_model, generated, mutated, odd_types  # noqa: E402

import predselect as ps  # noqa: E402
import predselect.dask  # noqa: E402
from predselect import _parts  # noqa: E402
from predselect._data import Options  # noqa: E402

pytestmark = pytest.mark.filterwarnings("ignore::predselect.PredSelectWarning", "ignore::UserWarning")


@pytest.fixture(scope="module")
def client():
    with LocalCluster(n_workers=2, threads_per_worker=1, processes=True,
                      dashboard_address=None) as cluster, Client(cluster) as client:
        yield client


def frames_of(frame, bounds):
    """A Dask frame with a partition between one bound and the next."""
    parts = [frame.iloc[a:b] for a, b in zip([0, *bounds], [*bounds, len(frame)])]
    return dd.from_delayed([dask.delayed(part) for part in parts], meta=frame.iloc[:0],
                           verify_meta=False)


def penguins():
    frame = pd.read_csv(ROOT / "data" / "penguins.csv")
    frame["is_late"] = frame["year"] == 2009
    frame["kind"] = frame["island"].astype(pd.CategoricalDtype(["Dream", "Biscoe", "Torgersen"], True))
    frame["day"] = pd.to_datetime(frame["year"].astype(str)) + pd.to_timedelta(frame.index % 50, "D")
    frame.loc[:299, "sparse"] = None
    frame.loc[300:, "sparse"] = "x"
    frame[7] = frame.index % 7 * 1.5
    return frame


@pytest.mark.parametrize("bounds", [[], [0, 40, 40, 300], list(range(10, 340, 10))], ids=len)
def test_frames_in_partitions_give_what_the_whole_gives(client, bounds):
    frame = penguins()
    df = frames_of(frame, bounds)
    assert_same(predselect.dask.rank(df, "species"), ps.rank(frame, "species"))
    said = {"except_": "body_mass_g", "levels": {"year": "scale"}}
    found, expected = predselect.dask.model(df, "species", **said), ps.model(frame, "species", **said)
    assert_same_model(found, expected)
    scored = predselect.dask.score(df, found, explain=1).compute()
    scores = ps.score(expected.state, frame, explain=1).to_pandas().set_index(frame.index)
    cells = [predselect.dask._rows(f).to_pydict() for f in (scored, pd.concat([frame, scores], axis=1))]
    assert cells[0] == cells[1]
    assert scored.index.equals(frame.index)


def big(rows, n_parts):
    """Tables of a task each, made where they are asked for, and the same for one machine."""

    def made(i):
        return generated(i, rows).to_pandas(types_mapper=pd.ArrowDtype)

    return (dd.from_map(made, range(n_parts), meta=made(0).iloc[:0]),
            lambda: (generated(i, rows) for i in range(n_parts)))


def test_a_generated_table_in_16_parts(client):
    df, whole = big(12_500, 16)
    assert_same(predselect.dask.rank(df, "y"), ps.rank(whole(), "y"))
    assert_same_model(predselect.dask.model(df, "y"), ps.model(whole(), "y"))


@pytest.mark.long
def test_20_million_rows_in_64_parts(client):
    df, whole = big(312_500, 64)
    assert_same(predselect.dask.rank(df, "y"), ps.rank(whole(), "y"))
    assert_same_model(predselect.dask.model(df, "y"), ps.model(whole(), "y"))


@pytest.mark.parametrize("over", [_parts.ROWS_KEEP, _parts.CODES])
def test_a_killed_worker_changes_nothing(client, over, monkeypatch):
    df, whole = big(4_000, 6)
    killed = []

    class Frame(predselect.dask._Frame):
        def ask(self, now, request, ranges):
            if now == over and not killed:
                killed.append(next(iter(client.run(os.getpid).values())))
                os.kill(killed[0], signal.SIGKILL)
            return super().ask(now, request, ranges)

    monkeypatch.setattr(predselect.dask, "_Frame", Frame)
    assert_same_model(predselect.dask.model(df, "y", predictors=4),
                      ps.model(whole(), "y", predictors=4))
    client.wait_for_workers(2, timeout=120)
    assert killed and killed[0] not in client.run(os.getpid).values()


def test_a_mutated_piece_and_what_cannot_be_read_are_refused_with_their_part(client, monkeypatch):
    frame = predselect.dask._Frame(frames_of(odd_types().to_pandas(), list(range(10, 200, 10))))
    frame.begin(["y", "real"], Options(), "pieces")
    pieces = [(i, i, _parts.ranges_of(i, pa.table({"y": ["a", "b"]}), Options())) for i in range(20)]
    pieces[17] = 17, 17, mutated(pieces[17][2])
    with pytest.raises(ps.RequestError, match="part 17 cannot be added: it is damaged"):
        frame._merged(pieces)
    mixed = pd.DataFrame({"y": ["a", "b"] * 5, "x": pd.Series([1, 2] * 4 + ["u", 3], dtype=object)})
    with dask.config.set({"dataframe.convert-string": False}):
        df = frames_of(mixed, [4, 8])
        with pytest.raises(ps.DataError, match="part 2: a column cannot be read"):
            predselect.dask.rank(df, "y")
    with pytest.raises(ps.DataError, match="Series is no DataFrame of Dask"):
        predselect.dask.rank(df["y"], "y")
    with pytest.raises(ps.RequestError, match="threads is not for data in parts"):
        predselect.dask.rank(df, "y", threads=2)
