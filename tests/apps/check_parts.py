#!/usr/bin/env python3
"""Holds runs over parts to the run over the whole: --jobs, and ranges and states as files.

    check_parts.py PROGRAM
"""

import json
import math
import os
import random
import re
import signal
import subprocess
import sys
import tempfile
import time
from collections.abc import Callable
from pathlib import Path

PROGRAM = sys.argv[1]
ROWS = 3000
BOUNDS = [0, 900, 900, 901, 1500, 2200, ROWS]  # and one part with nothing but missing values


def people() -> tuple[str, list[str]]:
    """A table of incomes: texts, numbers, codes and gaps."""
    chance = random.Random(16)
    rows = []
    for i in range(ROWS):
        u, v, w = (chance.random() for _ in range(3))
        income = "high" if 0.8 * u + 0.2 * chance.random() > 0.7 else "low"
        cells = [income, f"{17 + int(70 * (0.6 * u + 0.4 * w))}", "abcdefgh"[int(8 * v)],
                 ["none", "school", "college", "master"][int(4 * (0.5 * u + 0.5 * v))],
                 f"{round(2000 * u * v, 2)}", "-1" if w < 0.1 else f"{20 + int(40 * w)}",
                 "2.5" if i < 2200 else f"{v:.3f}", f"{int(3 * w)}"]
        rows.append(",".join("" if j and chance.random() < 0.03 else cell
                             for j, cell in enumerate(cells)))
    return "income,age,work,schooling,gain,hours,late,times", rows


def run(*arguments: str, code: int = 0) -> str:
    done = subprocess.run([PROGRAM, *arguments], capture_output=True, text=True)
    assert done.returncode == code, (arguments, done.returncode, done.stderr)
    return done.stdout if code == 0 else done.stderr


def same(found: object, expected: object, where: str = "") -> None:
    """Equal JSON, numbers to 1e-12."""
    if isinstance(expected, dict):
        assert isinstance(found, dict) and found.keys() == expected.keys(), where
        for key in expected:
            same(found[key], expected[key], f"{where}/{key}")
    elif isinstance(expected, list):
        assert isinstance(found, list) and len(found) == len(expected), where
        for i, (one, other) in enumerate(zip(found, expected)):
            same(one, other, f"{where}/{i}")
    elif isinstance(expected, float) and isinstance(found, (int, float)):
        assert math.isclose(found, expected, rel_tol=1e-12, abs_tol=1e-12), (where, found, expected)
    else:
        assert found == expected, (where, found, expected)


def check_jobs(folder: Path) -> None:
    pattern = str(folder / "parts" / "*.csv")
    said = ["--missing", "hours=-1", "--missing", "work=h"]  # of texts that one part has no value of
    for more in (["rank", pattern, "income", "--by", "bits"], ["rank", pattern, "age", "--weight", "times"],
                 ["rank", pattern, "income", "--stream"],
                 ["model", pattern, "income"], ["model", pattern, "schooling", "--test", "0", "--weight", "times"]):
        outcomes = []
        for jobs in ("1", "3"):
            files = ["--pmml", str(folder / f"{jobs}.xml"), "--save-model", str(folder / f"{jobs}.bin")]
            text = run(*more, *said, "--format", "json", "--jobs", jobs, *(files if more[0] == "model" else []))
            outcomes.append(json.loads(text.replace(f"{folder}/{jobs}.", f"{folder}/N.")))
        same(outcomes[1], outcomes[0], " ".join(more[:1]))
        if more[0] == "model":
            one, three = (re.sub("<Timestamp>.*", "", (folder / f"{jobs}.xml").read_text(encoding="utf-8"))
                          for jobs in ("1", "3"))
            assert one == three
            assert (folder / "1.bin").read_bytes() == (folder / "3.bin").read_bytes()


def check_notes(folder: Path) -> None:
    """What some files hold instead of numbers is told of each."""
    (folder / "noted").mkdir()
    for i in range(2):
        rows = "".join(f"{'ab'[k % 2]},{k if k > i else 'none?'}\n" for k in range(40))
        (folder / "noted" / f"{i}.csv").write_text(f"y,x\n{rows}", encoding="utf-8")
    line = [PROGRAM, "rank", str(folder / "noted"), "y"]
    alone, shared = (subprocess.run([*line, "--jobs", jobs], capture_output=True, text=True, check=True).stderr
                     for jobs in ("1", "3"))
    assert alone == shared and "0.csv: Column" in alone, (alone, shared)


def check_refusals(folder: Path) -> None:
    pattern = str(folder / "parts" / "*.csv")
    for arguments in (["rank", pattern, "incme"], ["rank", pattern, "income", "--weight", "work"],
                      ["model", pattern, "age", "--level", "age=scale"]):
        alone, shared = (run(*arguments, "--jobs", jobs, code=2) for jobs in ("1", "3"))
        assert alone == shared, (alone, shared)
    one = str(folder / "parts" / "0.csv")
    assert "the data are one file" in run("rank", one, "income", "--jobs", "2", code=2)
    for given in (["--save-data", "x.csv"], ["--cross-validate", "3"], ["--calibrate", "isotonic"],
                  ["--using", "x.bin"]):
        assert f"{given[0]}: not with --jobs" in run("model", pattern, "income", "--jobs", "2", *given, code=2)
    assert "No such file" in run("rank", str(folder / "none.csv"), "income", "--jobs", "2", code=3)
    (folder / "odd").mkdir()
    (folder / "odd" / "a.csv").write_text("x,y\n1,2\n2,1\n", encoding="utf-8")
    (folder / "odd" / "b.csv").write_text("x,z\n1,2\n2,1\n", encoding="utf-8")
    odd = run("rank", str(folder / "odd"), "x", "--jobs", "2", code=2)
    assert "b.csv" in odd and '"z"' in odd, odd
    (folder / "odd" / "b.csv").write_text('x,y\n1,"2\n', encoding="utf-8")
    assert "b.csv" in run("rank", str(folder / "odd"), "x", "--jobs", "2", code=3)


def helpers_of(process: subprocess.Popen[str], n: int) -> list[int]:
    """The helping processes, once all of them are there; none where the run has ended before."""
    while process.poll() is None:
        children = Path(f"/proc/{process.pid}/task/{process.pid}/children")
        try:
            found = [int(pid) for pid in children.read_text(encoding="utf-8").split()]
        except OSError:
            continue
        if len(found) == n:
            return found
    return []


def is_alive(pid: int) -> bool:
    try:
        return Path(f"/proc/{pid}/stat").read_text(encoding="utf-8").rsplit(")", 1)[1].split()[0] != "Z"
    except OSError:
        return False


def stop_run(folder: Path, act: Callable[[subprocess.Popen[str], list[int]], None]) -> tuple[int, str]:
    """Holds one helping process, so that the run waits for it, and acts; the outputs stay as they were."""
    old = [folder / "old.bin", folder / "old.xml"]
    for path in old:
        path.write_text("old", encoding="utf-8")
    line = [PROGRAM, "model", str(folder / "parts"), "income", "--missing", "hours=-1", "--jobs", "3",
            "--save-model", str(old[0]), "--pmml", str(old[1])]
    for _ in range(20):  # until one is held before it is done
        before = {path.name for path in folder.iterdir()}
        process = subprocess.Popen(line, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        pids = helpers_of(process, 3)
        if pids:
            os.kill(pids[1], signal.SIGSTOP)
        time.sleep(0.2)
        if process.poll() is None:
            break
        process.communicate()
        for path in old:
            path.write_text("old", encoding="utf-8")
    act(process, pids)
    _, errors = process.communicate(timeout=60)
    deadline = time.monotonic() + 20
    while any(map(is_alive, pids)) and time.monotonic() < deadline:
        time.sleep(0.01)
    assert not any(map(is_alive, pids)), "a helping process has outlived the run"
    assert [path.read_text(encoding="utf-8") for path in old] == ["old", "old"]
    assert {path.name for path in folder.iterdir()} == before
    return process.returncode, " ".join(errors.split())


def check_lost_process(folder: Path) -> None:
    """A process that is killed ends the run with the files that it had; Ctrl-C ends all."""
    code, errors = stop_run(folder, lambda _, pids: os.kill(pids[1], signal.SIGKILL))
    assert code in (1, 3) and "was ended by signal 9" in errors, (code, errors)
    assert re.search(r"parts/\d.csv, .*parts/\d.csv: the process of --jobs", errors), errors
    for number in (signal.SIGINT, signal.SIGTERM):
        code, errors = stop_run(folder, lambda run_, _, number=number: run_.send_signal(number))
        assert (code, errors) == (130, "predselect: stopped at your wish."), (code, errors)
    code, errors = stop_run(folder, lambda run_, _: run_.kill())
    assert (code, errors) == (-signal.SIGKILL, ""), (code, errors)


def check_files(folder: Path) -> None:
    parts = sorted((folder / "parts").iterdir())
    ranges = []
    for i, part in enumerate(parts):
        ranges.append(str(folder / f"ranges{i}.bin"))
        run("range", str(part), "--missing", "hours=-1", "--part", str(i), "-o", ranges[-1])
    merged = [str(folder / "forth.bin"), str(folder / "back.bin")]
    run("merge", *ranges, "-o", merged[0])
    run("merge", *reversed(ranges), "-o", merged[1])
    assert Path(merged[0]).read_bytes() == Path(merged[1]).read_bytes()
    assert "3020 cases in 7 parts" in run("inspect", merged[0])
    command = "SELECTPRED income /CRITERIA PVALUES=EXACT."
    states = []
    for i, part in enumerate(parts):
        states.append(str(folder / f"state{i}.bin"))
        subprocess.run([PROGRAM, "run", str(part), "--using", merged[0], "--part", str(i), "-c", command,
                        "--save-state", states[-1], "--quiet"], capture_output=True, check=False)
    run("merge", *states, "-o", str(folder / "all.bin"))
    run("run", str(folder / "parts"), "--missing", "hours=-1", "-c", command, "--save-state",
        str(folder / "whole.bin"))
    same(*(json.loads(run("inspect", str(folder / name), "--format", "json"))["runs"]
           for name in ("all.bin", "whole.bin")))
    check_model_files(folder, parts, merged[0])
    for wrong, told in (([str(parts[0]), "--using", states[0]], "holds no ranges"),
                        ([str(parts[0]), "--using", merged[0], "--level", "age=nominal"], "--level"),
                        ([str(parts[0]), "--using", merged[0], "--part", "7"], "knows no part 7"),
                        ([str(parts[5]), "--using", ranges[0], "--part", "0"], "that the ranges do not know")):
        for verb in ("rank", "model"):
            done = subprocess.run([PROGRAM, verb, *wrong, "income"], capture_output=True, text=True)
            errors = " ".join(done.stderr.split())
            assert done.returncode in (1, 2) and told in errors, (wrong, errors)
    damaged = bytearray(Path(ranges[4]).read_bytes())
    damaged[len(damaged) // 2] ^= 0x55
    Path(ranges[4]).write_bytes(damaged[:-9])
    assert "ranges4.bin" in run("merge", *ranges, "-o", str(folder / "no.bin"), code=3)


def check_model_files(folder: Path, parts: list[Path], ranges: str) -> None:
    """Counts of parts, merged in a tree, score as the model of the whole."""
    command = "NAIVEBAYES income /SUBSET NOSELECTION /TRAININGSAMPLE PERCENT=60."
    states = [str(folder / f"model{i}.bin") for i in range(len(parts))]
    for i, part in enumerate(parts):
        subprocess.run([PROGRAM, "run", str(part), "--using", ranges, "--part", str(i), "-c", command,
                        "--save-state", states[i], "--quiet"], capture_output=True, check=False)
    whole, tree, left, right = (str(folder / f"{name}.bin") for name in ("w", "t", "l", "r"))
    run("merge", *states[:3], "-o", left)
    run("merge", *states[3:], "-o", right)
    run("merge", right, left, "-o", tree)
    run("run", str(folder / "parts"), "--missing", "hours=-1", "-c", command, "--save-state", whole)
    scores = []
    for model in (tree, whole):
        out = folder / f"{Path(model).stem}.csv"
        run("score", "--model", model, "--data", str(folder / "parts"), "--save-data", str(out))
        scores.append(out.read_bytes())
    assert scores[0] == scores[1]
    assert "part 2 is there already" in run("merge", tree, states[2], "-o", str(folder / "no.bin"), code=2)


def main() -> None:
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        header, rows = people()
        (folder / "parts").mkdir()
        parts = [rows[a:b] for a, b in zip(BOUNDS, BOUNDS[1:])] + [["," * header.count(",")] * 20]
        for i, part in enumerate(parts):
            text = "\n".join([header, *part]) + "\n"
            (folder / "parts" / f"{i}.csv").write_text(text, encoding="utf-8")
        check_jobs(folder)
        check_notes(folder)
        check_refusals(folder)
        check_lost_process(folder)
        check_files(folder)


if __name__ == "__main__":
    main()
