"""Runs can be interrupted, watched, and made side by side."""

from __future__ import annotations

import _thread
import multiprocessing
import signal
import threading
import time

import numpy as np
import pytest

import predselect as ps


def big(n=400_000, columns=12):
    random = np.random.default_rng(3)
    data = {f"x{i}": random.normal(size=n) for i in range(columns)}
    data["y"] = (data["x0"] + random.normal(size=n) > 0).astype(float)
    return data


LONG = "NAIVEBAYES y /SUBSET EXACTSIZE=10 /CRITERIA TIMER=0 BINS=200 MEMALLOCATE=4000000."


def test_ctrl_c_ends_a_run_at_once():
    # Where tests run in the background of a shell, the key is ignored from the start.
    before = signal.signal(signal.SIGINT, signal.default_int_handler)
    data = big()
    times = []

    def press():
        times.append(time.monotonic())
        _thread.interrupt_main()

    for wait in (0.05, 0.5):
        timer = threading.Timer(wait, press)
        with pytest.raises(KeyboardInterrupt):
            timer.start()
            for _ in range(100):  # one may be over before the key is pressed
                ps.run(data, LONG, threads=1)
        # It is a tenth of that and less; a busy machine may take its time.
        assert time.monotonic() - times[-1] < 5
        timer.join()
    signal.signal(signal.SIGINT, before)
    assert ps.rank({"y": ["a", "b"] * 9, "x": np.arange(18.0) + 0.5}, "y").predictors == ["x"]


def test_progress_is_told_and_leaves_nothing(capsys):
    data = big(150_000)
    shown = ""
    for _ in range(100):  # one may be over before anything is shown
        ps.run(data, "NAIVEBAYES y /CRITERIA TIMER=0 BINS=100.", progress=True)
        shown = capsys.readouterr().err
        if shown:
            break
    assert " s]" in shown and "cases" in shown or "candidates" in shown
    assert shown.endswith("\r\x1b[K")
    ps.run(data, "NAIVEBAYES y /CRITERIA TIMER=0 BINS=100.", progress=False)
    assert capsys.readouterr().err == ""


def test_a_host_without_a_place_for_errors_is_no_trouble(monkeypatch):
    monkeypatch.setattr("sys.stderr", None)
    assert len(ps.describe({"x": [1.5, 2]})["Dictionary"]) == 1


def answer(_=None):
    data = {"y": [f"{i % 3}" for i in range(600)], "x": np.sin(np.arange(600.0)), "z": np.arange(600) % 5}
    ranking = ps.rank(data, "y", threads=2)
    return ranking.document["runs"], ps.model(data, "y").document["runs"]


def test_threads_side_by_side_get_the_same_results():
    expected = answer()
    results = [None] * 6

    def work(i):
        results[i] = answer()

    threads = [threading.Thread(target=work, args=(i,)) for i in range(6)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert all(result == expected for result in results)


def test_the_interpreter_goes_on_while_the_library_works():
    data = big(200_000)
    ticks = []
    done = threading.Event()

    def tick():
        while not done.is_set():
            ticks.append(time.monotonic())
            time.sleep(0.001)

    thread = threading.Thread(target=tick)
    thread.start()
    ps.rank(data, "y", threads=1)
    done.set()
    thread.join()
    assert len(ticks) > 10


@pytest.mark.parametrize("how", ["fork", "spawn"])
def test_processes(how):
    expected = answer()
    with multiprocessing.get_context(how).Pool(2) as pool:
        assert pool.map_async(answer, range(3)).get(120) == [expected] * 3


def test_the_number_of_threads_changes_nothing():
    data = big(20_000)
    one, two = (ps.run(data, "SELECTPRED y /PRINT EFFECTS.", threads=n).document["runs"]
                for n in (1, 4))
    assert one == two
