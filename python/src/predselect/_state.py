"""Saved states: rankings and models, in the program's own files."""

from __future__ import annotations

import ctypes
import hashlib
import os
import tempfile
from pathlib import Path
from typing import TYPE_CHECKING, Any

from . import _library as lib
from .errors import DataError, ExportNotice, warn

if TYPE_CHECKING:
    from ._results import Result


class Exports:
    """Models for other programs, which score with them as this one does. What a format cannot say of
    a model is an ExportNotice."""

    def export(
        self, path: str | os.PathLike[str], to: str | None = None, table: str = "data"
    ) -> None:
        """Writes the model as "pmml", "onnx", "sql", "c" or "json": by the ending of the path unless
        ``to`` says it. ``table`` is what the SQL query reads."""
        raise NotImplementedError

    def to_pmml(self, path: str | os.PathLike[str]) -> None:
        """Writes the model as PMML 4.3."""
        self.export(path, "pmml")

    def to_onnx(self, path: str | os.PathLike[str]) -> None:
        """Writes the model as an ONNX graph."""
        self.export(path, "onnx")

    def to_sql(self, path: str | os.PathLike[str], table: str = "data") -> None:
        """Writes the model as an SQL query over ``table``."""
        self.export(path, "sql", table)

    def to_c(self, path: str | os.PathLike[str]) -> None:
        """Writes the model as C source."""
        self.export(path, "c")

    def to_json(self, path: str | os.PathLike[str]) -> None:
        """Writes the model's tables as JSON, which ``load`` reads."""
        self.export(path, "json")


class State(Exports):
    """A ranking or a model that was saved, or is to be.

    ``State.load(path)`` and ``state.save(path)`` read and write the program's files, binary or XML;
    ``a + b`` is what one run over the data of both would have counted.
    """

    def __init__(self, content: bytes) -> None:
        with tempfile.TemporaryDirectory() as folder:
            path = Path(folder) / "state"
            path.write_bytes(content)
            self._open(os.fsencode(path))
        self._rename("the state")

    def _open(self, path: bytes, verify_key: str | os.PathLike[str] | None = None) -> None:
        self._session = lib.Session(1)
        self._handle = lib.Handle("state")
        self._use_keys(None, verify_key)
        self._session.call("state_load", path, ctypes.byref(self._handle._as_parameter_))

    def _rename(self, name: str) -> None:
        """What messages and documents call it."""
        self._name = name
        self._session.call("state_set_name", self._handle, name.encode("utf-8", "replace"))

    def _use_keys(
        self,
        sign: str | os.PathLike[str] | None = None,
        verify: str | os.PathLike[str] | None = None,
    ) -> None:
        paths = [None if path is None else os.fsencode(path) for path in (sign, verify)]
        self._session.call("session_set_state_keys", *paths)

    @classmethod
    def load(
        cls, path: str | os.PathLike[str], *, verify_key: str | os.PathLike[str] | None = None
    ) -> State:
        """Reads a file. Raises DataError for one that is damaged or no state, and for one that was not
        signed with the key that the file ``verify_key`` holds."""
        state = cls.__new__(cls)
        state._open(os.fsencode(path), verify_key)
        state._rename(os.fsdecode(path))
        return state

    @classmethod
    def _of(cls, path: str | os.PathLike[str]) -> State:
        """Of a file that nobody knows but this package."""
        state = cls.load(path)
        state._rename("the state")
        return state

    def save(
        self, path: str | os.PathLike[str], *, sign_key: str | os.PathLike[str] | None = None
    ) -> None:
        """Writes a file, XML where the name ends in ".xml"; whole or not at all. It is signed with the
        key that the file ``sign_key`` holds: 16 bytes or more that only its owner and group may read."""
        self._use_keys(sign=sign_key)
        try:
            self._session.call("state_save", self._handle, os.fsencode(path))
        finally:
            self._use_keys()

    def to_bytes(self) -> bytes:
        """What a file would hold."""
        with tempfile.TemporaryDirectory() as folder:
            path = Path(folder) / "state.bin"
            self.save(path)
            return path.read_bytes()

    def merge(self, other: State) -> None:
        """Adds what the other has counted, as if one run had counted both."""
        self._session.call("state_merge", self._handle, other._handle)

    def __add__(self, other: State) -> State:
        merged = State(self.to_bytes())
        merged.merge(other)
        return merged

    def _write_counts(self, path: str | os.PathLike[str]) -> None:
        """Writes a model as the PMML document of counts."""
        self._session.call("state_pmml", self._handle, os.fsencode(path))

    def export(
        self, path: str | os.PathLike[str], to: str | None = None, table: str = "data"
    ) -> None:
        """Writes a model as "pmml", "onnx", "sql", "c" or "json": by the ending of the path unless
        ``to`` says it. ``table`` is what the SQL query reads."""
        said = lib.export_options(format=None if to is None else to.encode(), table=table.encode())
        self._session.call(
            "state_export", self._handle, os.fsencode(path), ctypes.byref(said)
        )
        for note in self._session.notes():
            warn(note, ExportNotice)

    def inspect(self) -> Result:
        """What it holds. Counts that are not ranked yet are ranked in a copy."""
        from ._results import Result

        copy = State(self.to_bytes())
        copy._rename(self._name)
        handle = lib.Handle("result")
        copy._session.call("inspect", copy._handle, ctypes.byref(handle._as_parameter_))
        return Result(copy._session, handle, copy)

    def __getstate__(self) -> dict[str, bytes]:
        content = self.to_bytes()
        return {"content": content, "digest": hashlib.sha256(content).digest()}

    def __setstate__(self, kept: Any) -> None:
        if not isinstance(kept, dict) or not isinstance(kept.get("content"), bytes):
            raise DataError("the pickle does not hold a state; save it anew with this version")
        if kept.get("digest") != hashlib.sha256(kept["content"]).digest():
            raise DataError("the pickle of the state is damaged; make it anew")
        self.__init__(kept["content"])  # type: ignore[misc]
