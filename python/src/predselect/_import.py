"""Streams of the library as numpy arrays and as Arrow capsules."""

from __future__ import annotations

import ctypes
from typing import Any

import numpy as np

from ._library import ArrowArray, ArrowArrayStream, ArrowSchema

_api = ctypes.pythonapi
_api.PyCapsule_GetPointer.restype = ctypes.c_void_p
_api.PyCapsule_GetPointer.argtypes = [ctypes.py_object, ctypes.c_char_p]
_api.PyCapsule_New.restype = ctypes.py_object
_Destructor = ctypes.CFUNCTYPE(None, ctypes.c_void_p)
_api.PyCapsule_New.argtypes = [ctypes.c_void_p, ctypes.c_char_p, _Destructor]

STREAM, SCHEMA, ARRAY = b"arrow_array_stream", b"arrow_schema", b"arrow_array"
_KINDS: dict[bytes, Any] = {STREAM: ArrowArrayStream, SCHEMA: ArrowSchema, ARRAY: ArrowArray}
_out: dict[int, Any] = {}  # structs behind capsules, by address


def struct_in(capsule: Any, name: bytes) -> Any:
    """The struct that a capsule holds; it stays the capsule's."""
    address = _api.PyCapsule_GetPointer(capsule, name)
    return _KINDS[name].from_address(address)


def _capsule_ended(capsule: int) -> None:
    # A borrowed reference, made an object without counting it: the capsule is going away.
    get = ctypes.PYFUNCTYPE(ctypes.c_void_p, ctypes.c_void_p, ctypes.c_char_p)(
        ("PyCapsule_GetPointer", _api)
    )
    stream = _out.pop(get(capsule, STREAM))
    if stream.release:
        stream.release(ctypes.pointer(stream))


_capsule_ends = _Destructor(_capsule_ended)


def capsule_of(stream: ArrowArrayStream) -> Any:
    """A capsule that owns the stream, for `__arrow_c_stream__`."""
    address = ctypes.addressof(stream)
    _out[address] = stream
    return _api.PyCapsule_New(address, STREAM, _capsule_ends)


def _metadata(address: int | None) -> dict[str, str]:
    """The pairs of a schema's metadata."""
    pairs: dict[str, str] = {}
    if not address:
        return pairs

    def number(at: int) -> int:
        return ctypes.c_int32.from_address(at).value

    at = address + 4
    for _ in range(number(address)):
        words = []
        for _ in range(2):
            words.append(ctypes.string_at(at + 4, number(at)).decode("utf-8", "replace"))
            at += 4 + number(at)
        pairs[words[0]] = words[1]
    return pairs


def _validity(array: ArrowArray) -> Any:
    """Which cells are there, None where all are."""
    if not array.buffers[0]:
        return None
    size = (array.offset + array.length + 7) // 8
    bits = np.frombuffer(ctypes.string_at(array.buffers[0], size), np.uint8)
    unpacked = np.unpackbits(bits, bitorder="little")[array.offset : array.offset + array.length]
    return unpacked.astype(bool)


def _numbers(array: ArrowArray) -> Any:
    size = 8 * (array.offset + array.length)
    cells = np.frombuffer(ctypes.string_at(array.buffers[1], size), np.float64)[array.offset :]
    valid = _validity(array)
    return cells if valid is None else np.where(valid, cells, np.nan)


def _texts(array: ArrowArray) -> Any:
    end = array.offset + array.length
    offsets = np.frombuffer(ctypes.string_at(array.buffers[1], 4 * (end + 1)), np.int32)
    text = ctypes.string_at(array.buffers[2], int(offsets[end])) if offsets[end] else b""
    valid = _validity(array)
    cells = np.empty(array.length, object)
    for i in range(array.length):
        at = array.offset + i
        if valid is None or valid[i]:
            cells[i] = text[offsets[at] : offsets[at + 1]].decode("utf-8", "replace")
    return cells


def read(stream: ArrowArrayStream) -> tuple[dict[str, Any], dict[str, str]]:
    """The columns of a stream of the library (numbers with NaN, or texts with None), and their
    labels. Releases it."""
    pointer = ctypes.pointer(stream)
    schema, array = ArrowSchema(), ArrowArray()
    try:
        if stream.get_schema(pointer, schema) != 0:
            raise MemoryError("a table could not be given out")
        fields = [schema.children[i].contents for i in range(schema.n_children)]
        names = [str(f.name.decode()) for f in fields]
        texts = [f.format == b"u" for f in fields]
        labels = {n: _metadata(f.metadata).get("label", n) for n, f in zip(names, fields)}
        schema.release(ctypes.pointer(schema))
        parts: list[list[Any]] = [[] for _ in names]
        while True:
            if stream.get_next(pointer, array) != 0:
                raise MemoryError("a table could not be given out")
            if not array.release:
                break
            for i, part in enumerate(parts):
                child = array.children[i].contents
                part.append(_texts(child) if texts[i] else _numbers(child))
            array.release(ctypes.pointer(array))
    finally:
        stream.release(pointer)
    columns = {
        name: np.concatenate(part) if part else np.empty(0, object if text else np.float64)
        for name, part, text in zip(names, parts, texts)
    }
    return columns, labels
