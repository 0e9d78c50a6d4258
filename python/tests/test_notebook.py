"""In a notebook of a real kernel a run that lasts shows its progress, and leaves nothing of it."""

from __future__ import annotations

import sys

import pytest

nbclient, nbformat = pytest.importorskip("nbclient"), pytest.importorskip("nbformat")
pytest.importorskip("ipykernel")

LASTS = """
import numpy as np, predselect as ps
from predselect import _progress
_progress._PATIENCE = 0.0  # so that a short run is one that lasts
random = np.random.default_rng(3)
data = {f"x{i}": random.normal(size=300_000) for i in range(8)}
data["y"] = (data["x0"] > 0).astype(float)
result = ps.run(data, "NAIVEBAYES y /CRITERIA TIMER=0 BINS=100.", threads=1)
"""


def messages_of(tmp_path, code):
    """What the kernel sends for a cell to be shown: kinds of messages with their HTML."""
    notebook = nbformat.v4.new_notebook(cells=[nbformat.v4.new_code_cell(code)])
    seen = []

    class Client(nbclient.NotebookClient):
        def process_message(self, message, cell, cell_index):
            if message["msg_type"] in ("display_data", "update_display_data", "stream", "error"):
                content = message["content"]
                seen.append((message["msg_type"], content.get("data", {}).get("text/html", content)))
            return super().process_message(message, cell, cell_index)

    kernels = tmp_path / "kernels" / "this"
    kernels.mkdir(parents=True)
    (kernels / "kernel.json").write_text(
        f'{{"argv": ["{sys.executable}", "-m", "ipykernel_launcher", "-f", "{{connection_file}}"],'
        ' "display_name": "this", "language": "python"}')
    Client(notebook, timeout=120, kernel_name="this").execute()
    return seen, notebook.cells[0].outputs


def test_progress_is_shown_and_removed(tmp_path, monkeypatch):
    monkeypatch.setenv("JUPYTER_DATA_DIR", str(tmp_path))
    seen, outputs = messages_of(tmp_path, LASTS + "result['SubsetSummary']")
    shown = [html for kind, html in seen if kind in ("display_data", "update_display_data")]
    assert shown and " s]" in shown[0] and shown[-1] == "<small></small>"
    lines = [content["text"] for kind, content in seen if kind == "stream"]
    assert not [line for line in lines if "\r" in line or " s]" in line]
    assert "<table" in outputs[-1]["data"]["text/html"]


def test_what_is_quick_shows_its_result_alone(tmp_path, monkeypatch):
    monkeypatch.setenv("JUPYTER_DATA_DIR", str(tmp_path))
    _, outputs = messages_of(
        tmp_path, "import predselect as ps\nps.rank({'y': ['a', 'b'] * 9, 'x': list(range(18))}, 'y')")
    assert [o["output_type"] for o in outputs] == ["execute_result"]
