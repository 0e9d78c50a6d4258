"""A table in parts that lie with an engine: what is done at a part, and what is done for all of them.

An engine ships what is made here, bytes and small objects, and looks into none of it. It schedules,
keeps and tries again; nothing here does.
"""

from __future__ import annotations

import contextlib
import copy
import ctypes
import functools
import re
from collections.abc import Callable, Iterable, Iterator, Mapping, Sequence
from typing import TYPE_CHECKING, Any, Protocol, TypedDict, TypeVar

from . import _functions
from . import _library as lib
from ._data import Elsewhere, Options, Table, open_table
from ._results import Model, Ranking, Result
from .errors import CommandError, PredSelectError, RequestError, quiet

if TYPE_CHECKING:
    import pyarrow

#: So many pieces are merged at a time, wherever that is: sums are the same to the last bit.
FAN = 16
#: What a pass goes over.
ROWS, ROWS_KEEP, CODES = 1, 2, 3

_MOST_NAMED = 50  # columns in a message

_R = TypeVar("_R", bound=Result)

_REFUSED = {
    "predictions": "score() adds them to the data",
    "calibrate": "it needs the single cases, which nobody brings together",
    "calibration_seed": "it needs the single cases, which nobody brings together",
    "memory": "the codes of the cases are kept by the engine, within its own settings",
    "null": "it is for delimited text: whoever reads the files has an option for it",
    "threads": "the engine's settings say what works side by side",
    "progress": "the engine shows it: its jobs have descriptions",
}


class Said(TypedDict, total=False):
    """What is said of data besides the data: arguments of :func:`predselect.rank`."""

    except_: str | Sequence[str]
    levels: Mapping[str, str] | None
    weight: str | None
    schema: Any
    reading: Mapping[str, Any] | None
    stream: bool
    name: str | None


class Engine(Protocol):
    """Data of an engine for one job."""

    columns: list[str]

    def begin(self, columns: list[str], options: Options, what: str) -> None:
        """Keeps these columns only; jobs are described as `what`."""

    def empty(self) -> pyarrow.Table:
        """The kept columns without a row."""

    def ranges(self) -> bytes:
        """The merged ranges of all parts; nothing where there is no part."""

    def ask(self, over: int, request: bytes, ranges: bytes) -> bytes:
        """The merged answers of all parts."""

    def end(self) -> None:
        """What was kept for the job can go."""


# ---- At a part ----


class _Piece(lib.Handle):
    def __init__(self) -> None:
        super().__init__("piece")

    def content(self, session: lib.Session) -> bytes:
        view = lib.Bytes()
        session.call("piece_bytes", self, ctypes.byref(view))
        return ctypes.string_at(view.data or 0, view.size)


@contextlib.contextmanager
def _of_part(part: int) -> Iterator[None]:
    """What is refused says of which part."""
    try:
        with quiet():
            yield
    except PredSelectError as trouble:
        said = str(trouble)
        if not re.search(rf"\bpart {part}\b", said):
            said = f"part {part}: {said}"
        raise type(trouble)(said) from None


def _open(session: lib.Session, part: int, rows: Any, options: Options,
          ranges: bytes | None = None) -> Table:
    said = Options(stream=options.stream, name=options.name) if ranges else copy.copy(options)
    said.ranges, said.part = ranges, part
    return open_table(session, rows, said)


def _made(session: lib.Session, name: str, *arguments: Any) -> None:
    status = session.work(lambda: session.status(name, *arguments))
    if status != lib.OK:
        raise session.failure(status)


def ranges_of(part: int, rows: Any, options: Options) -> bytes:
    """What a part knows of the ranges of its table. `rows` has __arrow_c_stream__."""
    session, piece = lib.Session(1), _Piece()
    with _of_part(part):
        table = _open(session, part, rows, options)
        _made(session, "part_ranges", table, ctypes.c_int64(part), ctypes.byref(piece._as_parameter_))
    return piece.content(session)


def answer(part: int, rows: Any, options: Options, ranges: bytes,
           request: bytes) -> tuple[bytes, bytes]:
    """The answer of a part's rows, and its codes where the request makes some."""
    session, piece, codes = lib.Session(1), _Piece(), _Piece()
    asked = lib.Bytes.of(request)
    with _of_part(part):
        table = _open(session, part, rows, options, ranges)
        _made(session, "part_answer", table, ctypes.byref(asked),
              ctypes.byref(piece._as_parameter_), ctypes.byref(codes._as_parameter_))
    return piece.content(session), codes.content(session) if codes._as_parameter_ else b""


def codes_answer(part: int, codes: bytes, request: bytes) -> bytes:
    """The answer of a part's codes."""
    session, piece = lib.Session(1), _Piece()
    kept, asked = lib.Bytes.of(codes), lib.Bytes.of(request)
    with _of_part(part):
        _made(session, "codes_answer", ctypes.byref(kept), ctypes.byref(asked),
              ctypes.byref(piece._as_parameter_))
    return piece.content(session)


def merge(pieces: Sequence[tuple[int, int, bytes]]) -> tuple[int, int, bytes]:
    """One of some pieces, each with its first and last part. The order of parts is that of merging."""
    pieces = sorted(pieces, key=lambda piece: piece[0])
    session, merged = lib.Session(1), _Piece()
    views = (lib.Bytes * len(pieces))(*[lib.Bytes.of(content) for _, _, content in pieces])
    try:
        session.call("pieces_merge", views, ctypes.c_size_t(len(pieces)),
                     ctypes.byref(merged._as_parameter_))
    except PredSelectError as trouble:
        raise type(trouble)(_with_parts(str(trouble), pieces)) from None
    return pieces[0][0], pieces[-1][1], merged.content(session)


def _with_parts(text: str, pieces: Sequence[tuple[int, int, bytes]]) -> str:
    """Pieces by the parts that they are of, instead of by their places."""

    def name(found: re.Match[str]) -> str:
        first, last, _ = pieces[int(found[1])]
        return f"part {first}" if first == last else f"the sum of parts {first} to {last}"

    return re.sub(r"\bpiece (\d+)\b", name, text)


def merge_all(pieces: Iterable[tuple[int, int, bytes]]) -> bytes:
    """One of all pieces, by the tree that an engine's rounds make."""
    left, reach = list(pieces), FAN
    while True:
        groups: dict[int, list[tuple[int, int, bytes]]] = {}
        for piece in left:
            groups.setdefault(piece[0] // reach, []).append(piece)
        left, reach = [merge(group) for group in groups.values()], reach * FAN
        if len(left) == 1:
            return left[0][2]


# ---- For all parts ----


def kind_of(data: Any) -> str:
    """What data are that are none of an engine."""
    return f"{type(data).__module__}.{type(data).__name__}"


class Parts(Elsewhere):
    """A table whose parts lie with an engine, for one job."""

    def __init__(self, engine: Engine, ranges: bytes, name: str | None) -> None:
        self._engine, self._ranges, self._name = engine, ranges, name
        self.trouble: BaseException | None = None

    def open(self, session: lib.Session) -> Table:
        table = Table()
        view = lib.Bytes.of(self._ranges)

        def called(_: Any, over: int, request: int, size: int, out: int) -> int:
            try:
                asked = ctypes.string_at(request, size)
                merged = session.on_caller(lambda: self._engine.ask(over, asked, self._ranges))
            except BaseException as trouble:  # told to whoever called the job
                self.trouble = trouble
                return 1
            return int(lib.library.predselect_piece_set(
                ctypes.c_void_p(out), merged, ctypes.c_size_t(len(merged))))

        table.held = lib.PartPass(called)
        name = self._name.encode() if self._name else None
        session.call("table_open_parts", ctypes.byref(view), name, table.held, None,
                     ctypes.byref(table._as_parameter_))
        return table


def rank(engine: Engine, target: str, said: Said, **own: Any) -> Ranking:
    """Ranks over an engine's parts."""
    return _run(_functions.rank, engine, target, [], said, own)


def model(engine: Engine, target: str, said: Said, **own: Any) -> Model:
    """Builds a model over an engine's parts."""
    training = own["training_column"]
    return _run(_functions.model, engine, target, [training] if training else [], said, own)


def _run(job: Callable[..., _R], engine: Engine, target: str, needed: list[str], said: Said,
         own: dict[str, Any]) -> _R:
    _refuse(said)
    options = _options(said)
    columns = _columns(engine.columns, [target, *needed], options.weight, said.get("except_", ()))
    engine.begin(columns, options, f"predselect {job.__name__} {target}")
    try:
        kept = {name: value for name, value in said.items() if name != "except_"}
        without_rows = functools.partial(job, engine.empty(), target, progress=False, **kept, **own)
        with quiet(), contextlib.suppress(CommandError):  # what can be refused without a row is
            without_rows()
        ranges = engine.ranges()
        if not ranges:
            return without_rows()
        parts = Parts(engine, ranges, options.name)
        try:
            return job(parts, target, progress=False, **own)
        except PredSelectError as failure:
            if parts.trouble is None:
                raise
            raise parts.trouble from failure
    finally:
        engine.end()


def _refuse(said: Mapping[str, Any]) -> None:
    for name in said:
        if name in _REFUSED:
            raise RequestError(f"{name} is not for data in parts: {_REFUSED[name]}")
        if name not in Said.__annotations__:
            raise TypeError(f"there is no argument {name!r}")


def _options(said: Said) -> Options:
    weight = said.get("weight")
    if weight is not None and not isinstance(weight, str):
        raise RequestError("weight: name a column of the data")
    options = Options(
        levels=said.get("levels"), weight=weight, schema=said.get("schema"),
        reading=said.get("reading"), stream=said.get("stream", False), name=said.get("name"))
    text = options.schema_text()
    options.schema = None if text is None else text.decode()  # its file may be here alone
    return options


def _columns(known: list[str], needed: list[str], weight: str | None,
             except_: str | Sequence[str]) -> list[str]:
    """All columns but those that are no predictors, in order."""
    left_out = [except_] if isinstance(except_, str) else list(except_)
    for name in [*needed, *left_out, *([weight] if weight else [])]:
        if name not in known:
            listed = ", ".join(known[:_MOST_NAMED]) + (", ..." if len(known) > _MOST_NAMED else "")
            raise RequestError(f'the data have no column "{name}"; they have {listed}')
    kept = {*needed, weight}
    return [name for name in known if name in kept or name not in left_out]


# ---- Scoring ----


class Scorer:
    """Predicts rows batch by batch, with what :func:`predselect.score` takes."""

    def __init__(self, model: Any, **own: Any) -> None:
        self._state = _functions.state_of(model)
        self._own = own

    def new_columns(self, rows: pyarrow.Table) -> pyarrow.Table:
        """The predictions of the rows; of none, too. Lists and the like are no predictors."""
        import pyarrow

        seen = [f.name for f in rows.schema if not pyarrow.types.is_nested(f.type)]
        with quiet():
            scores = _functions.score(self._state, rows.select(seen), threads=1, progress=False,
                                      **self._own)
        return scores.new_columns.to_arrow()
