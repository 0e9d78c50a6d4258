"""The C interface, loaded by ctypes: handles, options, and calls that can be interrupted."""

from __future__ import annotations

import ctypes
import operator
import os
import queue
import threading
import time
from collections.abc import Callable, Iterable
from pathlib import Path
from typing import Any

from . import errors
from ._words import in_python

ABI_VERSION = 1  # that of the predselect.h after which this was written
OK, COMMAND_ERROR, NO_MEMORY, CANCELLED = 0, 1, 4, 5
KEEP_CELLS, KEEP_BATCHES, KEEP_ASIDE = 0, 1, 2
LEVELS = {"nominal": 1, "ordinal": 2, "scale": 3}
CALIBRATIONS = {None: 0, "temperature": 1, "isotonic": 2}
MEMORY_AUTO = ctypes.c_size_t(-1).value

_FAILURES: dict[int, type[errors.PredSelectError]] = {
    1: errors.CommandError,
    2: errors.RequestError,
    3: errors.DataError,
    5: errors.Cancelled,
    7: errors.RequestError,  # a number that is none of those allowed
}
_ANSWER_SECONDS = 0.2  # that a call has to end when it is interrupted


class ArrowSchema(ctypes.Structure):
    """Of the Arrow C data interface."""


class ArrowArray(ctypes.Structure):
    """Of the Arrow C data interface."""


class ArrowArrayStream(ctypes.Structure):
    """Of the Arrow C stream interface."""


ReleaseSchema = ctypes.CFUNCTYPE(None, ctypes.POINTER(ArrowSchema))
ReleaseArray = ctypes.CFUNCTYPE(None, ctypes.POINTER(ArrowArray))
GetSchema = ctypes.CFUNCTYPE(
    ctypes.c_int, ctypes.POINTER(ArrowArrayStream), ctypes.POINTER(ArrowSchema)
)
GetNext = ctypes.CFUNCTYPE(
    ctypes.c_int, ctypes.POINTER(ArrowArrayStream), ctypes.POINTER(ArrowArray)
)
GetLastError = ctypes.CFUNCTYPE(ctypes.c_void_p, ctypes.POINTER(ArrowArrayStream))
ReleaseStream = ctypes.CFUNCTYPE(None, ctypes.POINTER(ArrowArrayStream))

ArrowSchema._fields_ = [
    ("format", ctypes.c_char_p),
    ("name", ctypes.c_char_p),
    ("metadata", ctypes.c_void_p),
    ("flags", ctypes.c_int64),
    ("n_children", ctypes.c_int64),
    ("children", ctypes.POINTER(ctypes.POINTER(ArrowSchema))),
    ("dictionary", ctypes.POINTER(ArrowSchema)),
    ("release", ReleaseSchema),
    ("private_data", ctypes.c_void_p),
]
ArrowArray._fields_ = [
    ("length", ctypes.c_int64),
    ("null_count", ctypes.c_int64),
    ("offset", ctypes.c_int64),
    ("n_buffers", ctypes.c_int64),
    ("n_children", ctypes.c_int64),
    ("buffers", ctypes.POINTER(ctypes.c_void_p)),
    ("children", ctypes.POINTER(ctypes.POINTER(ArrowArray))),
    ("dictionary", ctypes.POINTER(ArrowArray)),
    ("release", ReleaseArray),
    ("private_data", ctypes.c_void_p),
]
ArrowArrayStream._fields_ = [
    ("get_schema", GetSchema),
    ("get_next", GetNext),
    ("get_last_error", GetLastError),
    ("release", ReleaseStream),
    ("private_data", ctypes.c_void_p),
]


def _options(name: str, fields: str) -> Any:
    """A struct of options: `name:type` words behind struct_size."""
    kinds = {"s": ctypes.c_char_p, "n": ctypes.c_size_t, "d": ctypes.c_double, "p": ctypes.c_void_p,
             "i": ctypes.c_int64}
    pairs = [field.split(":") for field in fields.split()]
    struct = type(
        name,
        (ctypes.Structure,),
        {"_fields_": [("struct_size", ctypes.c_size_t)] + [(n, kinds[k]) for n, k in pairs]},
    )

    def make(**values: Any) -> Any:
        return struct(struct_size=ctypes.sizeof(struct), **values)

    return make


class VariableLevel(ctypes.Structure):
    """predselect_variable_level."""

    _fields_ = [("variable", ctypes.c_char_p), ("level", ctypes.c_int32)]


class ReadingOption(ctypes.Structure):
    """predselect_reading_option."""

    _fields_ = [("name", ctypes.c_char_p), ("word", ctypes.c_char_p)]


class Bytes(ctypes.Structure):
    """predselect_bytes."""

    _fields_ = [("data", ctypes.c_void_p), ("size", ctypes.c_size_t)]

    @classmethod
    def of(cls, content: bytes) -> Bytes:
        """Looks into the bytes, and holds them."""
        bytes_ = cls(ctypes.cast(ctypes.c_char_p(content), ctypes.c_void_p), len(content))
        bytes_.held = content
        return bytes_


class TableInfo(ctypes.Structure):
    """predselect_table_info."""

    _fields_ = [
        ("struct_size", ctypes.c_size_t),
        ("subtype", ctypes.c_char_p),
        ("title", ctypes.c_char_p),
        ("command", ctypes.c_char_p),
        ("run", ctypes.c_size_t),
    ]


table_options = _options(
    "TableOptions",
    "name:s schema:s weight:s levels:p n_levels:n keep:n reading:p n_reading:n ranges:p part:i",
)
file_options = _options("FileOptions", "nulls:p n_nulls:n")
run_options = _options(
    "RunOptions", "state_path:s results_folder:s memory:n calibrate:n calibration_seed:n"
)
rank_options = _options("RankOptions", "by:n except_:p n_except:n top:n")
model_options = _options(
    "ModelOptions",
    "except_:p n_except:n training_column:s test:d predictors:n save_predictions:n "
    "state_path:s pmml_path:s memory:n folds:n repeats:n seed:n calibrate:n calibration_seed:n",
)
score_options = _options("ScoreOptions", "predicted:s probabilities:s explain:n")
export_options = _options("ExportOptions", "format:s table:s")

ProgressListener = ctypes.CFUNCTYPE(None, ctypes.c_void_p, ctypes.c_char_p)
PartPass = ctypes.CFUNCTYPE(
    ctypes.c_int, ctypes.c_void_p, ctypes.c_int32, ctypes.c_void_p, ctypes.c_size_t, ctypes.c_void_p
)


def texts(values: Iterable[str]) -> tuple[Any, int]:
    """A list of texts as C has it, and its length."""
    encoded = [value.encode() for value in values]
    return (ctypes.c_char_p * len(encoded))(*encoded), len(encoded)


def count(name: str, value: Any) -> int:
    """A number of the caller's that C takes as a size."""
    number = operator.index(value)
    if not 0 <= number < 2**63:
        raise errors.RequestError(f"{name} is {number}; give a number from 0 to {2**63 - 1}")
    return number


def calibration(name: str | None) -> int:
    """How to calibrate, as C has it."""
    if name not in CALIBRATIONS:
        raise errors.RequestError(f"calibrate is {name!r}; give temperature, isotonic or None")
    return CALIBRATIONS[name]


def address(struct: Any) -> ctypes.c_void_p:
    """Of a struct or an array, for a field that points to one."""
    return ctypes.cast(ctypes.pointer(struct), ctypes.c_void_p)


def _load(name: str) -> ctypes.CDLL:
    folder = os.environ.get("PREDSELECT_LIBRARY_DIR") or str(Path(__file__).parent / "_lib")
    path = next((p for p in sorted(Path(folder).glob(f"lib{name}.so*"))), None)
    if path is None:
        raise errors.LibraryError(
            f"lib{name}.so is not in {folder}. Install the package again with pip, or let "
            "PREDSELECT_LIBRARY_DIR name the folder that has it."
        )
    return ctypes.CDLL(str(path))


def _load_operations() -> ctypes.CDLL:
    loaded = _load("predselectoperations")
    loaded.predselect_abi_version.restype = ctypes.c_uint32
    found = loaded.predselect_abi_version()
    if found != ABI_VERSION:
        raise errors.LibraryError(
            f"the library has interface {found}, and this package needs {ABI_VERSION}. Install "
            "package and library from the same version."
        )
    loaded.predselect_version.restype = ctypes.c_char_p
    for text in (loaded.predselect_session_error, loaded.predselect_session_notes):
        text.restype = ctypes.c_char_p
    loaded.predselect_session_cancel.argtypes = [ctypes.c_void_p]
    loaded.predselect_session_cancel.restype = None
    return loaded


library = _load_operations()
# Closing is quick, and keeps the interpreter's lock: were it let go, a signal that came meanwhile
# would be met in the finalizer, or in the callback that releases a batch, where Python drops it.
_closing = ctypes.PyDLL(library._name)
_files: list[ctypes.CDLL] = []


def files_library() -> ctypes.CDLL:
    """The library that opens files; it brings much with it, and is loaded when it is needed."""
    if not _files:
        _files.append(_load("predselectcfiles"))
    return _files[0]


def version() -> str:
    """Of the library."""
    return str(library.predselect_version().decode())


class Handle:
    """An object of the library, closed when nothing here needs it any more."""

    def __init__(self, kind: str) -> None:
        self._as_parameter_ = ctypes.c_void_p()
        self._close = getattr(_closing, f"predselect_{kind}_close")

    def __del__(self) -> None:
        pointer, self._as_parameter_ = self._as_parameter_, ctypes.c_void_p()
        if pointer:
            self._close(pointer)


class _Errands:
    """What a job on a thread of its own has the caller's thread do for it, one after the other."""

    def __init__(self) -> None:
        self._asked: Any = queue.SimpleQueue()
        self._answered: Any = queue.SimpleQueue()
        self._caller = threading.get_ident()

    def ask(self, step: Callable[[], Any]) -> Any:
        """Called by the job: the answer of the step, or what it raises."""
        if threading.get_ident() == self._caller:
            return step()
        self._asked.put(step)
        answer, trouble = self._answered.get()
        if trouble is not None:
            raise trouble
        return answer

    def serve(self, seconds: float) -> None:
        """Takes one step where one is asked for in that time."""
        try:
            step = self._asked.get(timeout=seconds)
        except queue.Empty:
            return
        if step is not None:
            try:
                self._answered.put((step(), None))
            except Exception as trouble:
                self._answered.put((None, trouble))

    def end(self) -> None:
        """Called behind the job, so that nobody waits on."""
        self._asked.put(None)

    def close(self) -> None:
        """The caller goes: what is asked for now, or was, has no answer."""
        self._answered.put((None, InterruptedError("the run was stopped")))


class Session(Handle):
    """What one call after the other is made with, by one thread at a time."""

    def __init__(self, threads: int | None = None) -> None:
        super().__init__("session")
        if library.predselect_session_open(ctypes.byref(self._as_parameter_)) != OK:
            raise MemoryError("there is not enough memory for a session")
        self._progress: Any = None
        self._errands: _Errands | None = None
        self.call("session_set_application", b"PredSelect", version().encode())
        if folder := os.environ.get("TMPDIR"):
            self.call("session_set_temp_folder", os.fsencode(folder.rstrip("/") or "/"))
        if threads is not None and not 0 <= threads <= 1024:
            raise errors.RequestError("threads is a number from 0 (all processors) to 1024")
        self.call("session_set_threads", ctypes.c_size_t(threads or 0))

    def listen(self, listener: Callable[[str], None] | None) -> None:
        """Has progress told in words, on whichever thread works."""
        self._progress = None if listener is None else ProgressListener(
            lambda _, text: listener(text.decode("utf-8", "replace"))
        )
        self.call("session_set_progress", self._progress, None)

    def status(self, name: str, *arguments: Any, of: ctypes.CDLL | None = None) -> int:
        """Calls a function of the library; gives its status."""
        function = getattr(of or library, f"predselect_{name}")
        return int(function(self, *arguments))

    def failure(self, status: int) -> Exception:
        """The exception for a status of the last call."""
        text = in_python(library.predselect_session_error(self).decode("utf-8", "replace"))
        if status == NO_MEMORY:
            return MemoryError(text)
        return _FAILURES.get(status, errors.LibraryError)(text)

    def notes(self) -> list[str]:
        """What else one should know of the last call."""
        text = library.predselect_session_notes(self).decode("utf-8", "replace")
        return in_python(text).splitlines()

    def call(self, name: str, *arguments: Any) -> None:
        """Calls a quick function, and raises what it says went wrong."""
        status = self.status(name, *arguments)
        if status != OK:
            raise self.failure(status)

    def work(self, job: Callable[[], int], watch: Callable[[], None] | None = None) -> int:
        """Does a long job so that Ctrl-C ends it; `watch` is called now and then meanwhile.

        Python sees a signal on its main thread alone, and between two of its own steps: there the
        job goes to another thread. It holds no lock of the interpreter in the library.
        """
        if threading.current_thread() is not threading.main_thread() and watch is None:
            return job()
        done = threading.Event()
        outcome: list[Any] = []
        self._errands = errands = _Errands()

        def run() -> None:
            try:
                outcome.append(job())
            except BaseException as raised:  # given on to the caller's thread
                outcome.append(raised)
            finally:
                done.set()
                errands.end()

        worker = threading.Thread(target=run, name="predselect", daemon=True)
        worker.start()
        try:
            while not done.is_set():
                errands.serve(0.1)
                if watch is not None:
                    watch()
        except BaseException:
            errands.close()
            self._stop(done)
            raise
        finally:
            self._errands = None
        worker.join()
        if isinstance(outcome[0], BaseException):
            raise outcome[0]
        return int(outcome[0])

    def on_caller(self, step: Callable[[], Any]) -> Any:
        """Takes a step of a job on the thread that called: what it touches may belong to that."""
        errands = self._errands
        return step() if errands is None else errands.ask(step)

    def _stop(self, done: threading.Event) -> None:
        """Asks a job to end. One that does not soon ends by itself, and nobody waits for it."""
        until = time.monotonic() + _ANSWER_SECONDS
        while not done.is_set() and time.monotonic() < until:
            library.predselect_session_cancel(self)
            done.wait(0.01)
