"""Data of any kind as a table of the library."""

from __future__ import annotations

import ctypes
import dataclasses
import itertools
import json
import numbers
import os
from collections.abc import Iterator, Mapping, Sequence
from pathlib import Path
from typing import Any

import numpy as np

from . import _library as lib
from ._columns import Encoded, dates_in, encode, is_value
from ._export import AnyBatch, ArrowColumn, Batch, ForeignBatch, stream_of
from ._import import ARRAY, SCHEMA, STREAM, struct_in
from ._words import in_python
from .errors import DataError, DataNotice, RequestError, warn

_DICTIONARY_ORDERED = 1


class Options:
    """What is said of data besides the data: the keyword arguments that all functions share."""

    def __init__(
        self,
        *,
        levels: Mapping[str, str] | None = None,
        weight: Any = None,
        schema: Any = None,
        null: Sequence[str] = (),
        reading: Mapping[str, Any] | None = None,
        stream: bool = False,
        name: str | None = None,
    ) -> None:
        self.levels = {str(name): level for name, level in (levels or {}).items()}
        for variable, level in self.levels.items():
            if level not in lib.LEVELS:
                raise RequestError(
                    f'levels: "{variable}" is to be {level!r}; give nominal, ordinal or scale'
                )
        self.weight = str(weight) if isinstance(weight, numbers.Integral) else weight
        self.schema = schema
        self.null = list(null)
        self.reading = [pair for name, word in (reading or {}).items()
                        for pair in _reading_words(name.replace("_", "-"), word)]
        self.stream = stream
        self.name = name
        #: Of a part: the merged ranges of its table, which have levels, labels, missing values and weight,
        #: and its number.
        self.ranges: bytes | None = None
        self.part = 0

    def schema_text(self) -> bytes | None:
        if self.schema is None:
            return None
        is_path = isinstance(self.schema, os.PathLike)
        if is_path or (isinstance(self.schema, str) and os.path.exists(self.schema)):
            try:
                return Path(self.schema).read_bytes()
            except OSError as trouble:
                raise DataError(f"schema: {trouble}") from trouble
        return (self.schema if isinstance(self.schema, str) else json.dumps(self.schema)).encode()


def _reading_words(name: str, word: Any) -> list[tuple[str, str]]:
    """An option of reading in the words of the command line."""
    if name == "missing" and isinstance(word, Mapping):
        return [(name, f"{variable}={','.join(_code(c) for c in _codes(codes))}")
                for variable, codes in word.items()]
    if isinstance(word, bool):
        return [(name, "")] if word else ([("no-header", "")] if name == "header" else [])
    return [(name, str(word))]


def _codes(codes: Any) -> list[Any]:
    return list(codes) if isinstance(codes, (list, tuple, set)) else [codes]


def _code(code: Any) -> str:
    """A comma in a code is doubled."""
    return str(code).replace(",", ",,")


class Table(lib.Handle):
    """A table of the library, with what must stay as it is while it is open."""

    def __init__(self) -> None:
        super().__init__("table")
        self.held: Any = None


class Elsewhere:
    """Data whose cases are not here: a table of parts."""

    def open(self, session: lib.Session) -> Table:
        raise NotImplementedError


def open_table(session: lib.Session, data: Any, options: Options) -> Table:
    """Opens data of any kind. Float64 columns of frames and arrays are looked at where they are."""
    if isinstance(data, Elsewhere):
        return data.open(session)
    path = _path_of(data)
    if path is not None:
        return _open_file(session, path, options)
    return _open_stream(session, data, options)


def _path_of(data: Any) -> str | None:
    if not isinstance(data, (str, os.PathLike)):
        return None
    return os.fspath(data)


def _table_options(
    options: Options, levels: Mapping[str, str], weight: str | None, keep: int
) -> tuple[Any, Any]:
    said = {**levels, **options.levels} if options.ranges is None else {}
    array = (lib.VariableLevel * len(said))(
        *[lib.VariableLevel(n.encode(), lib.LEVELS[level]) for n, level in said.items()]
    )
    reading = (lib.ReadingOption * len(options.reading))(
        *[lib.ReadingOption(n.encode(), word.encode()) for n, word in options.reading]
    )
    ranges = None if options.ranges is None else lib.Bytes.of(options.ranges)
    struct = lib.table_options(
        name=options.name.encode() if options.name else None,
        schema=options.schema_text(),
        weight=weight.encode() if weight else None,
        levels=lib.address(array) if said else None,
        n_levels=len(said),
        keep=keep,
        reading=lib.address(reading) if options.reading else None,
        n_reading=len(options.reading),
        ranges=None if ranges is None else lib.address(ranges),
        part=options.part,
    )
    return struct, (array, reading, ranges)


def _open_file(session: lib.Session, path: str, options: Options) -> Table:
    if options.weight is not None and not isinstance(options.weight, str):
        raise RequestError("weight: name a column of the file")
    table = Table()
    nulls, n_nulls = lib.texts(options.null)
    file = lib.file_options(nulls=lib.address(nulls) if n_nulls else None, n_nulls=n_nulls)
    keep = lib.KEEP_ASIDE if options.stream else lib.KEEP_CELLS
    said, kept = _table_options(options, {}, options.weight, keep)
    status = session.work(
        lambda: session.status(
            "table_open_file",
            os.fsencode(path),
            ctypes.byref(file),
            ctypes.byref(said),
            ctypes.byref(table._as_parameter_),
            of=lib.files_library(),
        )
    )
    del kept
    return _opened(session, table, status)


def _opened(session: lib.Session, table: Table, status: int) -> Table:
    if status != lib.OK:
        raise session.failure(status)
    notes = ctypes.c_char_p()
    session.call("table_notes", table, ctypes.byref(notes))
    for note in in_python((notes.value or b"").decode()).splitlines():
        warn(note, DataNotice)
    return table


def _open_stream(session: lib.Session, data: Any, options: Options) -> Table:
    source = _source_of(data, options)
    if source.outgoing is not None:
        source.outgoing.on_owner = session.on_caller
    table = Table()
    said, kept = _table_options(options, source.levels, source.weight, source.keep)
    status = session.work(
        lambda: session.status(
            "table_open",
            ctypes.byref(source.stream),
            ctypes.byref(said),
            ctypes.byref(table._as_parameter_),
        )
    )
    del kept
    if source.outgoing is not None and isinstance(source.outgoing.trouble, Exception):
        raise source.outgoing.trouble
    table.held = source.held
    return _opened(session, table, status)


class _Source:
    """A stream to hand over, and what its types say of the columns."""

    def __init__(self, stream: Any, keep: int, held: Any = None, outgoing: Any = None) -> None:
        self.stream = stream
        self.keep = keep
        self.held = held
        self.outgoing = outgoing
        self.levels: dict[str, str] = {}
        self.weight: str | None = None


def _source_of(data: Any, options: Options) -> _Source:
    weight = options.weight
    if weight is not None and not isinstance(weight, str):
        return _with_weights(data, weight, options)
    source = _plain_source(data, options)
    source.weight = weight
    return source


def _plain_source(data: Any, options: Options) -> _Source:
    keep = lib.KEEP_ASIDE if options.stream else lib.KEEP_BATCHES
    columns = columns_of(data)
    if columns is not None:
        return _source_of_columns(columns, keep, options.levels)
    if hasattr(data, "__arrow_c_stream__"):
        return _source_of_capsule(data.__arrow_c_stream__(), keep)
    if hasattr(data, "__arrow_c_array__"):
        return _source_of_batches(iter([data]), keep)
    if hasattr(data, "arrow") and hasattr(data, "columns"):  # an older query of a database
        return _source_of_capsule(data.arrow().__arrow_c_stream__(), keep)
    if hasattr(data, "__iter__"):
        return _source_of_batches(iter(data), lib.KEEP_ASIDE)
    raise DataError(
        f"data of type {type(data).__name__} cannot be read. Give a data frame, anything with "
        "__arrow_c_stream__, a dict of columns, a list of records, a numpy array, batches of these, "
        "or a path"
        + ("; call its .collect() first" if hasattr(data, "collect") else "")
    )


def columns_of(data: Any) -> dict[str, Any] | None:
    """The columns of what has them in Python: a dict, a list of records, a numpy array, a pandas
    frame. None else."""
    if isinstance(data, Mapping):
        return _by_names(data, data.keys())
    if isinstance(data, (list, tuple)) and data and all(_is_record(row) for row in data):
        names = dict.fromkeys(name for row in data for name in row)
        return _by_names({name: [row.get(name) for row in data] for name in names}, names)
    if isinstance(data, np.ndarray):
        return _columns_of_array(data)
    if _is_pandas(data):
        if not data.columns.is_unique:
            twice = data.columns[data.columns.duplicated()][0]
            raise DataError(f'a column named "{twice}" is there twice; rename one of them')
        return _by_names(data, data.columns)
    return None


def _is_record(row: Any) -> bool:
    return isinstance(row, Mapping) and all(is_value(v) for v in row.values())


def _by_names(data: Any, names: Any) -> dict[str, Any]:
    columns: dict[str, Any] = {}
    for name in names:
        if str(name) in columns:
            raise DataError(f'two columns are named "{name}", as a number and as a text; rename one')
        columns[str(name)] = data[name]
    return columns


def _is_pandas(data: Any) -> bool:
    return hasattr(data, "iloc") and hasattr(data, "columns") and hasattr(data, "dtypes")


def _columns_of_array(array: Any) -> dict[str, Any]:
    if array.dtype.names:
        return {name: array[name] for name in array.dtype.names}
    if array.ndim == 1:
        array = array[:, np.newaxis]
    if array.ndim != 2:
        raise DataError(f"an array of {array.ndim} dimensions is no table; give one of two")
    is_masked = isinstance(array, np.ma.MaskedArray)
    by_column = array if is_masked else np.asfortranarray(array)
    return {f"x{i}": by_column[:, i] for i in range(array.shape[1])}


def batch_of(
    columns: Mapping[str, Any], texts: Mapping[str, str] | None = None
) -> tuple[Batch, dict[str, str]]:
    """Columns encoded, and the levels that their types say. Texts that are dates become these where
    `texts` does not name the column as nominal or ordinal; without `texts` they stay."""
    encoded: dict[str, Encoded] = {name: encode(name, values) for name, values in columns.items()}
    for name, known in encoded.items():
        if texts is not None and not known.level and texts.get(name, "scale") == "scale":
            known.column = dates_in(known.column) or known.column
    lengths = {name: e.column.length for name, e in encoded.items()}
    if len(set(lengths.values())) > 1:
        raise DataError(f"the columns have different lengths: {lengths}")
    levels = {name: e.level for name, e in encoded.items() if e.level}
    length = next(iter(lengths.values()), 0)
    return Batch({name: e.column for name, e in encoded.items()}, length), levels


def _source_of_columns(
    columns: Mapping[str, Any], keep: int, levels_said: Mapping[str, str]
) -> _Source:
    batch, levels = batch_of(columns, levels_said)
    stream, outgoing = stream_of(batch)
    source = _Source(stream, keep, columns, outgoing)
    source.levels = levels
    return source


def _source_of_capsule(capsule: Any, keep: int) -> _Source:
    stream = struct_in(capsule, STREAM)
    source = _Source(stream, keep, capsule)
    source.levels = _levels_of_stream(stream)
    return source


def _levels_of_stream(stream: Any) -> dict[str, str]:
    """Dictionaries are categories, ordered ones ordinal, as far as the schema can be had."""
    schema = lib.ArrowSchema()
    if stream.get_schema(ctypes.pointer(stream), schema) != 0:
        return {}  # the library asks again, and tells why
    levels = _levels_of(schema)
    schema.release(ctypes.pointer(schema))
    return levels


def _levels_of(schema: Any) -> dict[str, str]:
    levels = {}
    for i in range(schema.n_children):
        field = schema.children[i].contents
        if field.dictionary and field.name:
            ordered = field.flags & _DICTIONARY_ORDERED
            levels[field.name.decode("utf-8", "replace")] = "ordinal" if ordered else "nominal"
        elif field.format == b"b":
            levels[field.name.decode("utf-8", "replace")] = "nominal"
    return levels


def _source_of_batches(batches: Iterator[Any], keep: int) -> _Source:
    """Batches of any kind, one after the other."""
    parts = itertools.chain.from_iterable(_parts_of(batch) for batch in batches)
    first = next(parts, None)
    if first is None:
        raise DataError("there is no batch of data")
    batch, levels = first
    stream, outgoing = stream_of(batch, (part for part, _ in parts))
    source = _Source(stream, keep, None, outgoing)
    source.levels = levels
    return source


def _widened(column: ArrowColumn) -> ArrowColumn:
    """Numbers as float64, where that loses nothing: one batch may have whole numbers, and the next
    one missing values among them."""
    cells = column.buffers[1] if column.dictionary is None else None
    if column.format not in (b"c", b"s", b"i", b"l", b"C", b"S", b"I", b"L", b"e", b"f"):
        return column
    if cells is None or (cells.dtype.itemsize == 8 and (np.abs(cells.astype(float)) > 2.0**53).any()):
        return column
    return dataclasses.replace(column, format=b"g", buffers=[column.buffers[0], cells.astype(float)])


def _parts_of(data: Any) -> Iterator[tuple[AnyBatch, dict[str, str]]]:
    columns = columns_of(data)
    if columns is not None:
        batch, levels = batch_of(columns)
        yield Batch({n: _widened(c) for n, c in batch.columns.items()}, batch.length), levels
    elif hasattr(data, "__arrow_c_stream__"):
        capsule = data.__arrow_c_stream__()
        yield from _parts_of_stream(struct_in(capsule, STREAM), capsule)
    elif hasattr(data, "__arrow_c_array__"):
        capsules = data.__arrow_c_array__()
        schema, array = struct_in(capsules[0], SCHEMA), struct_in(capsules[1], ARRAY)
        levels = _levels_of(schema)
        yield ForeignBatch(schema, array, capsules), levels
    else:
        raise DataError(
            f"a batch of type {type(data).__name__} cannot be read; give data frames, anything "
            "with __arrow_c_array__ or __arrow_c_stream__, or dicts of columns; rows are a list of "
            "dicts, or one numpy array"
        )


def _parts_of_stream(stream: Any, capsule: Any) -> Iterator[tuple[AnyBatch, dict[str, str]]]:
    pointer = ctypes.pointer(stream)
    while True:
        schema, array = lib.ArrowSchema(), lib.ArrowArray()
        code = stream.get_schema(pointer, schema) or stream.get_next(pointer, array)
        if code != 0:
            text = stream.get_last_error(pointer)
            raise DataError(ctypes.string_at(text).decode() if text else os.strerror(code))
        if not array.release:
            schema.release(ctypes.pointer(schema))
            return
        yield ForeignBatch(schema, array, capsule), _levels_of(schema)


def _with_weights(data: Any, weights: Any, options: Options) -> _Source:
    """Weights that stand beside the data become a column of a name that is not taken."""
    columns = columns_of(data)
    known = getattr(data, "column_names", getattr(data, "columns", ())) if columns is None else columns
    name = next(n for n in (f"weight{i or ''}" for i in itertools.count()) if n not in known)
    joined = _joined(data, name, np.asarray(weights)) if columns is None else {
        **columns, name: np.asanyarray(weights)}
    source = _plain_source(joined, options)
    source.weight = name
    return source


def _joined(frame: Any, name: str, values: Any) -> Any:
    """A frame of polars or pyarrow with one column more; the others are not copied."""
    if not hasattr(frame, "append_column") and not hasattr(frame, "hstack"):
        raise RequestError("weight: data that come as a stream need their weights as a column")
    if values.shape != (len(frame),):
        raise DataError(f"weight: there are {values.size} for {len(frame)} cases")
    if hasattr(frame, "hstack"):
        return frame.hstack(type(frame)({name: values}))
    import pyarrow

    return frame.append_column(name, pyarrow.array(values))
