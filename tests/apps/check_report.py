#!/usr/bin/env python3
"""What the program does besides making reports: `view`, and the files of --charts.

check_report.py PROGRAM LAW
"""

import os
import pty
import subprocess
import sys
import tempfile
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent
PENGUINS = ROOT / "data" / "penguins.csv"
PLOT = ["run", "--data", str(PENGUINS), "--quiet", "-c", "SELECTPRED species /PLOT SUMMARY."]
PROGRAM = ""
SKIPPED = 77


def program(*args, code=0, env=None, folder=None):
    done = subprocess.run([PROGRAM, *map(str, args)], cwd=folder, env={**os.environ, **(env or {})}, text=True,
                          capture_output=True, stdin=subprocess.DEVNULL)
    assert done.returncode == code, f"{args}: exit code {done.returncode}\n{done.stderr}"
    return done


def licences_are_those_of_what_is_carried(folder):
    """The versions of the packages that reports carry are those whose licences were put in front of them."""
    import re
    try:
        import vl_convert
    except ImportError:
        own = ROOT / ".venv" / "bin" / "python3"
        if own.exists() and Path(sys.executable) != own:
            os.execv(own, [str(own), *sys.argv])
        print("skipped: vl-convert-python is not there")
        sys.exit(SKIPPED)
    licences = (ROOT / "host" / "output" / "report" / "page" / "charts.licences.txt").read_text(encoding="utf-8")
    bundle = vl_convert.javascript_bundle()
    carried = {"Vega": vl_convert.get_vega_version(), "Vega-Embed": vl_convert.get_vega_embed_version(),
               "Vega-Themes": vl_convert.get_vega_themes_version(),
               "Vega-Lite": max((v for v in re.findall(r'"(\d+\.\d+\.\d+)"', bundle) if v.startswith(vl_convert.get_vegalite_versions()[-1] + ".")), default="?")}
    for name, version in carried.items():
        assert f"{name} {version}" in licences, f"{name} {version}: read its licence anew"
    program(*PLOT, "--format", "html", "-o", folder / "page.html")
    assert licences.replace("*/", "* /") in (folder / "page.html").read_text(encoding="utf-8")


def view_writes_states_and_documents(folder):
    state, document = folder / "state.bin", folder / "out.json"
    program(*PLOT, "--save-state", state, "--format", "json", "-o", document)
    for shown in (state, document):
        program("view", shown, "-o", folder / "page.html")
        page = (folder / "page.html").read_text()
        assert page.startswith("<!doctype html>") and "flipper_length_mm" in page, shown
    program("view", state, "-o", state, code=2)
    (folder / "broken.json").write_text('{"predselect": 1}')
    assert "predselect has written as JSON" in program("view", folder / "broken.json", "-o", folder / "p.html", code=3).stderr
    for wrong in (200000 * "[" + 200000 * "]", '{"charts": [{"vegalite": {"mark": "image"}}]}', '{"charts": [3]}'):
        (folder / "broken.json").write_text('{"predselect": "1", "runs": [' + wrong + "]}")
        program("view", folder / "broken.json", "-o", folder / "p.html", code=3)
    assert not (folder / "p.html").exists()
    assert "waits at a terminal" in program("view", state, code=2).stderr


def view_shows_a_file_of_the_users_own_until_it_ends(folder):
    """The browser is given a file that nobody else may read, and which goes with the command."""
    state, seen = folder / "state.bin", folder / "seen"
    program(*PLOT, "--save-state", state)
    browser = folder / "browser"
    browser.write_text(f'#!/bin/sh\ncp "$1" {seen}.html\nstat -c %a "$(dirname "$1")" > {seen}.mode\necho "$1" > {seen}\n')
    browser.chmod(0o755)
    for ending, code in ((b"\n", 0), (b"\x03", 130)):
        seen.unlink(missing_ok=True)
        child, terminal = pty.fork()
        if child == 0:
            os.execve(PROGRAM, [PROGRAM, "view", str(state)], {**os.environ, "BROWSER": str(browser), "TMPDIR": str(folder)})
        end = time.monotonic() + 20
        while not (seen.exists() and seen.read_text().endswith("\n")):
            assert time.monotonic() < end, "no browser was started"
            time.sleep(0.02)
        shown = Path(seen.read_text().strip())
        assert shown.exists() and Path(f"{seen}.html").read_text().startswith("<!doctype html>")
        assert Path(f"{seen}.mode").read_text().strip() == "700"
        time.sleep(0.1)
        os.write(terminal, ending)
        while True:  # what it says must be read, or it cannot end
            try:
                if not os.read(terminal, 4096):
                    break
            except OSError:
                break
        _, status = os.waitpid(child, 0)
        os.close(terminal)
        assert os.waitstatus_to_exitcode(status) == code, (ending, status)
        assert not shown.exists() and not shown.parent.exists(), shown


def charts_are_drawn_where_they_can_be(folder):
    python = ROOT / ".venv" / "bin" / "python3"
    refused = program(*PLOT, "--charts", folder / "none", code=2, env={"PREDSELECT_PYTHON": "/bin/false"})
    assert "vl-convert-python" in refused.stderr and not (folder / "none").exists() and refused.stdout == ""
    if subprocess.run([python, "-c", "import vl_convert"], capture_output=True).returncode != 0:
        print("skipped: vl-convert-python is not there (scripts/setup)")
        return SKIPPED
    program(*PLOT, "--charts", folder / "drawn", env={"PREDSELECT_PYTHON": str(python)})
    drawing = (folder / "drawn" / "1-predictor-summary-chart.svg").read_text()
    assert drawing.startswith("<svg") and drawing.index("flipper_length_mm") < drawing.index("island")
    assert (folder / "drawn" / "1-predictor-summary-chart.png").read_bytes()[:4] == b"\x89PNG"
    assert len(list((folder / "drawn").iterdir())) == 2
    return 0


def main() -> int:
    global PROGRAM
    PROGRAM = str(Path(sys.argv[1]).resolve())
    with tempfile.TemporaryDirectory() as folder:
        return globals()[sys.argv[2]](Path(folder)) or 0


if __name__ == "__main__":
    sys.exit(main())
