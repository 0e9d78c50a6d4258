"""Columns in memory as Arrow C streams: buffers are pointed to, not copied, wherever they can be."""

from __future__ import annotations

import ctypes
import errno
import itertools
import sys
from collections.abc import Callable, Iterator
from dataclasses import dataclass, field
from typing import Any, Union

from ._library import (
    ArrowArray,
    ArrowArrayStream,
    ArrowSchema,
    GetLastError,
    GetNext,
    GetSchema,
    ReleaseArray,
    ReleaseSchema,
    ReleaseStream,
)

from .errors import DataError


@dataclass
class ArrowColumn:
    """The cells of one column: buffers as objects with an address, kept alive until released."""

    format: bytes
    length: int
    buffers: list[Any]  # numpy arrays, or None for a buffer that is not there
    null_count: int = 0
    dictionary: ArrowColumn | None = None
    label: str = ""  # goes with the schema, as the library's own labels do


# What is given out and not released yet, by the number that its private_data holds.
_given: dict[int, Any] = {}
_numbers = itertools.count(1)


def _keep(thing: Any) -> int:
    number = next(_numbers)
    _given[number] = thing
    return number


def given_out() -> int:
    """How many structs are out and not released: none when nothing runs."""
    return len(_given)


def _release(pointer: Any) -> None:
    _given.pop(pointer.contents.private_data, None)
    pointer.contents.release = type(pointer.contents.release)()


_release_schema = ReleaseSchema(_release)
_release_array = ReleaseArray(_release)


@dataclass
class _Kept:
    things: list[Any] = field(default_factory=list)

    def pointers(self, kind: Any, structs: list[Any]) -> Any:
        array = (ctypes.POINTER(kind) * len(structs))(*[ctypes.pointer(s) for s in structs])
        self.things += [structs, array]
        return ctypes.cast(array, ctypes.POINTER(ctypes.POINTER(kind)))


def _metadata_of(label: str) -> Any:
    """One pair, as the Arrow C data interface has it."""
    words = [word.encode() for word in ("label", label)]
    sizes = [number.to_bytes(4, sys.byteorder) for number in (1, *map(len, words))]
    return ctypes.create_string_buffer(sizes[0] + sizes[1] + words[0] + sizes[2] + words[1])


def _fill_schema(schema: ArrowSchema, name: bytes, column: ArrowColumn) -> None:
    kept = _Kept([name, column.format])
    if column.label:
        kept.things.append(_metadata_of(column.label))
        schema.metadata = ctypes.addressof(kept.things[-1])
    schema.format, schema.name, schema.flags = column.format, name, 2
    if column.dictionary is not None:
        dictionary = ArrowSchema()
        _fill_schema(dictionary, b"", column.dictionary)
        schema.dictionary = ctypes.pointer(dictionary)
        kept.things.append(dictionary)
    schema.release, schema.private_data = _release_schema, _keep(kept)


def _address(buffer: Any) -> int | None:
    return None if buffer is None else buffer.__array_interface__["data"][0]


def _fill_array(array: ArrowArray, column: ArrowColumn) -> None:
    addresses = (ctypes.c_void_p * len(column.buffers))(*[_address(b) for b in column.buffers])
    kept = _Kept([column, addresses])
    array.length, array.null_count = column.length, column.null_count
    array.n_buffers = len(column.buffers)
    array.buffers = ctypes.cast(addresses, ctypes.POINTER(ctypes.c_void_p))
    if column.dictionary is not None:
        dictionary = ArrowArray()
        _fill_array(dictionary, column.dictionary)
        array.dictionary = ctypes.pointer(dictionary)
        kept.things.append(dictionary)
    array.release, array.private_data = _release_array, _keep(kept)


def _release_children(pointer: Any) -> None:
    """Of a table's schema or batch: those that nobody has moved out, then its own."""
    node = pointer.contents
    for child in _given[node.private_data].things[0]:
        for part in (child, child.dictionary.contents if child.dictionary else None):
            if part is not None and part.release:
                part.release(ctypes.pointer(part))
    _release(pointer)


_release_table_schema = ReleaseSchema(_release_children)
_release_batch = ReleaseArray(_release_children)


@dataclass
class Batch:
    """Columns of equal length, by name."""

    columns: dict[str, ArrowColumn]
    length: int

    def formats(self) -> list[tuple[str, str]]:
        return [(name, column.format.decode()) for name, column in self.columns.items()]

    def give_schema(self, schema: ArrowSchema) -> None:
        children = [ArrowSchema() for _ in self.columns]
        for child, (name, column) in zip(children, self.columns.items()):
            _fill_schema(child, name.encode(), column)
        kept = _Kept()
        schema.children = kept.pointers(ArrowSchema, children)
        schema.format, schema.name, schema.n_children = b"+s", b"", len(children)
        schema.metadata, schema.flags = None, 0
        schema.dictionary = ctypes.POINTER(ArrowSchema)()
        schema.release, schema.private_data = _release_table_schema, _keep(kept)

    def give(self, array: ArrowArray) -> None:
        children = [ArrowArray() for _ in self.columns]
        for child, column in zip(children, self.columns.values()):
            _fill_array(child, column)
        kept = _Kept()
        array.children = kept.pointers(ArrowArray, children)
        no_nulls = (ctypes.c_void_p * 1)(None)
        kept.things.append(no_nulls)
        array.buffers = ctypes.cast(no_nulls, ctypes.POINTER(ctypes.c_void_p))
        array.length, array.null_count, array.offset = self.length, 0, 0
        array.n_buffers, array.n_children = 1, len(children)
        array.dictionary = ctypes.POINTER(ArrowArray)()
        array.release, array.private_data = _release_batch, _keep(kept)


def _move(source: Any, target: Any) -> None:
    """As the Arrow C interface has it: the bytes go over, and the source is released."""
    ctypes.memmove(ctypes.addressof(target), ctypes.addressof(source), ctypes.sizeof(source))
    source.release = type(source.release)()


class ForeignBatch:
    """A schema and a batch of somebody else, which go through as they are."""

    def __init__(self, schema: ArrowSchema, array: ArrowArray, keeper: Any) -> None:
        self._schema, self._array, self._keeper = schema, array, keeper
        fields = [schema.children[i].contents for i in range(schema.n_children)]
        self._formats = [((f.name or b"").decode("utf-8", "replace"), f.format.decode())
                         for f in fields]

    def formats(self) -> list[tuple[str, str]]:
        return self._formats

    def give_schema(self, schema: ArrowSchema) -> None:
        _move(self._schema, schema)

    def give(self, array: ArrowArray) -> None:
        _move(self._array, array)

    def __del__(self) -> None:
        for struct in (self._schema, self._array):
            if struct.release:
                struct.release(ctypes.pointer(struct))


AnyBatch = Union[Batch, ForeignBatch]


class _Outgoing:
    """A stream that is out: its batches to come, and what went wrong with them."""

    def __init__(self, first: AnyBatch, others: Iterator[AnyBatch]) -> None:
        self.first = first
        self.batches = itertools.chain([first], others)
        self.trouble: BaseException | None = None
        self.text = ctypes.create_string_buffer(b"")
        # Takes a step on the thread that owns the batches.
        self.on_owner: Callable[[Callable[[], Any]], Any] = lambda step: step()

    def guarded(self, step: Callable[[], None]) -> int:
        try:
            step()
            return 0
        except BaseException as trouble:  # told by the reader of the stream, and raised behind it
            self.trouble = trouble
            self.text = ctypes.create_string_buffer(str(trouble).encode("utf-8", "replace"))
            return errno.EIO

    def next(self, array: ArrowArray) -> None:
        batch = self.on_owner(lambda: next(self.batches, None))
        if batch is None:
            array.release = ReleaseArray()
            return
        if batch.formats() != self.first.formats():
            raise DataError(
                f"a batch has columns {batch.formats()} where the first one had "
                f"{self.first.formats()}: give all batches the same columns and types"
            )
        batch.give(array)


def _outgoing(pointer: Any) -> _Outgoing:
    outgoing: _Outgoing = _given[pointer.contents.private_data]
    return outgoing


def _schema_of(stream: Any, schema: Any) -> int:
    outgoing = _outgoing(stream)
    return outgoing.guarded(lambda: outgoing.first.give_schema(schema.contents))


def _next_of(stream: Any, array: Any) -> int:
    outgoing = _outgoing(stream)
    return outgoing.guarded(lambda: outgoing.next(array.contents))


def _trouble_of(stream: Any) -> int:
    return ctypes.addressof(_outgoing(stream).text)


_get_schema, _get_next = GetSchema(_schema_of), GetNext(_next_of)
_get_last_error, _release_stream = GetLastError(_trouble_of), ReleaseStream(_release)


def stream_of(first: AnyBatch, others: Iterator[AnyBatch] = iter(())) -> tuple[ArrowArrayStream, _Outgoing]:
    """A stream of batches, and where to look for what went wrong while it was read."""
    outgoing = _Outgoing(first, others)
    stream = ArrowArrayStream(
        _get_schema, _get_next, _get_last_error, _release_stream, _keep(outgoing)
    )
    return stream, outgoing
