"""What goes wrong, and what one should know: exceptions and warnings of their own classes."""

from __future__ import annotations

import contextlib
import sys
import warnings
from collections.abc import Iterator
from contextvars import ContextVar
from pathlib import Path


class PredSelectError(Exception):
    """The library could not do what was asked for."""


class CommandError(PredSelectError):
    """A command reported an error; ``result`` holds what the run brought forth all the same."""

    result: object = None


class RequestError(PredSelectError, ValueError):
    """What was asked for is not there, or does not fit the data or the state."""


class DataError(PredSelectError, ValueError):
    """Data, or a file, could not be read or written."""


class Cancelled(PredSelectError):
    """The run was stopped; ``result`` holds what was done until then."""

    result: object = None


class LibraryError(PredSelectError, RuntimeError):
    """An error of the library's own, or a library that does not fit this package."""


class PredSelectWarning(UserWarning):
    """What a command warns of."""


class LeakWarning(PredSelectWarning):
    """Predictors that promise too much: they may know the target from somewhere else."""


class WeightWarning(PredSelectWarning):
    """Weights are rounded to whole numbers, and cases are lost by it."""


class MemoryWarning(PredSelectWarning):
    """Cases that the memory does not hold, and what that changes."""


class DataNotice(PredSelectWarning):
    """What one should know of how data were read."""


class ExportNotice(PredSelectWarning):
    """What an exported model cannot say in its format."""


class DriftWarning(PredSelectWarning):
    """Scored cases differ from those that the model was built on."""


# By what the key of a message begins with, of which the wording is not a part.
_BY_KEY = (
    ("Predictors better than they are", LeakWarning),
    ("Weights of ^1 cases rounded", WeightWarning),
    ("Memory", MemoryWarning),
    ("Values that training did not have", DriftWarning),
    ("Missing more often than in training", DriftWarning),
    ("^1 of ^2 cases without a usable predictor", DriftWarning),
)


def category_of(key: str) -> type[PredSelectWarning]:
    """The class of a message, by its key in the document."""
    return next((kind for start, kind in _BY_KEY if key.startswith(start)), PredSelectWarning)


# Of the thread that runs: filters of warnings are the whole process's.
_is_quiet: ContextVar[bool] = ContextVar("_is_quiet", default=False)


@contextlib.contextmanager
def quiet() -> Iterator[None]:
    """Keeps all warnings of this package back but those of lost weights, in this thread alone."""
    before = _is_quiet.set(True)
    try:
        yield
    finally:
        _is_quiet.reset(before)


def warn(text: str, category: type[Warning]) -> None:
    """Warns at the place that called this package."""
    if _is_quiet.get() and category is not WeightWarning:
        return
    folder = str(Path(__file__).parent)
    frame, level = sys._getframe(1), 2
    while frame.f_back is not None and frame.f_code.co_filename.startswith(folder):
        frame, level = frame.f_back, level + 1
    warnings.warn(text, category, stacklevel=level)
