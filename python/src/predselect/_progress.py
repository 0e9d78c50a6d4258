"""How far a run has come, shown when it lasts: in a notebook or on a terminal."""

from __future__ import annotations

import sys
import time
from typing import Any

_PATIENCE = 1.0  # seconds before anything is shown


class Progress:
    """A line that is there while a run lasts. By default only where somebody looks at it."""

    def __init__(self, wanted: bool | None) -> None:
        self._notebook = _in_notebook()
        self.wanted = (self._notebook or _on_terminal()) if wanted is None else wanted
        self._patience = _PATIENCE if wanted is None else 0.0
        self._text = ""
        self._shown = ""
        self._display: Any = None
        self._since = 0.0

    def __enter__(self) -> Progress:
        self._since = time.monotonic()
        return self

    def __exit__(self, *_: object) -> None:
        if self._display is not None:
            self._display.update(_Html(""))
        elif self._shown:
            sys.stderr.write("\r\x1b[K")
            sys.stderr.flush()
        self._shown, self._display = "", None

    def told(self, text: str) -> None:
        """Called where the work is done: keeps the words for whoever shows them."""
        self._text = text

    def show(self) -> None:
        """Shows what was told last."""
        seconds = time.monotonic() - self._since
        if not self._text or seconds < self._patience:
            return
        line = f"{self._text} [{seconds:.0f} s]"
        if line == self._shown:
            return
        self._shown = line
        if self._notebook:
            self._show_in_notebook(line)
        else:
            sys.stderr.write(f"\r\x1b[K{line}")
            sys.stderr.flush()

    def _show_in_notebook(self, line: str) -> None:
        from IPython.display import display

        if self._display is None:
            self._display = display(_Html(line), display_id=True)
        else:
            self._display.update(_Html(line))


class _Html:
    def __init__(self, text: str) -> None:
        self._text = text

    def _repr_html_(self) -> str:
        return f"<small>{self._text}</small>"

    def __repr__(self) -> str:
        return self._text


def _on_terminal() -> bool:
    """Some hosts of the interpreter have no place for errors, or one that is no file."""
    return bool(getattr(sys.stderr, "isatty", lambda: False)())


def _in_notebook() -> bool:
    shell = sys.modules.get("IPython")
    running = shell.get_ipython() if shell is not None else None
    return type(running).__name__ == "ZMQInteractiveShell"
