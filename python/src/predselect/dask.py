"""Rankings and models of Dask DataFrames, whose rows stay on the workers.

Every pass is a task a partition, and its small answers are merged in a tree on the workers; whoever
calls gets one piece, never a row. Dask schedules, ships, keeps and tries again. Partitions count in
their order, so use a DataFrame that has the same rows in the same order each time it is computed.
"""

from __future__ import annotations

import os
import uuid
from collections.abc import Callable
from typing import TYPE_CHECKING, Any

import dask
import dask.dataframe
import pyarrow

from . import _parts
from ._data import Options
from ._results import Model, Ranking
from .errors import DataError

if TYPE_CHECKING:
    from typing_extensions import Unpack

__all__ = ["model", "rank", "score"]

_Piece = tuple[int, int, bytes]


def rank(df: dask.dataframe.DataFrame, target: str | int, *, by: str = "p", top: int = 0,
         **options: Unpack[_parts.Said]) -> Ranking:
    """Ranks the columns as :func:`predselect.rank` does, with its ``by`` and ``top``, and of its other
    arguments ``except_``, ``levels``, ``weight``, ``schema``, ``reading``, ``name``, and ``stream``,
    which puts the cells of a partition into a temporary file on its worker while they are read."""
    return _parts.rank(_Frame(df), str(target), options, by=by, top=top)


def model(df: dask.dataframe.DataFrame, target: str | int, *, test: float = 0.3,
          training_column: str | None = None, predictors: int = 0,
          pmml: str | os.PathLike[str] | None = None, **options: Unpack[_parts.Said]) -> Model:
    """Builds a classifier as :func:`predselect.model` does. The other arguments are those of
    :func:`rank`. The codes of the cases, a byte or two a case and predictor, are persisted on the
    workers until the model is made."""
    return _parts.model(_Frame(df), str(target), options, test=test,
                        training_column=training_column, predictors=predictors, pmml=pmml)


def score(df: dask.dataframe.DataFrame, model: Any, *, predicted: str | None = None,
          probabilities: str | None = None, explain: int = 0) -> dask.dataframe.DataFrame:
    """The DataFrame with the predictions of a model behind its columns: a result of :func:`model`, a
    state, or the path of one. The arguments are those of :func:`predselect.score`."""
    scorer = _parts.Scorer(model, predicted=predicted, probabilities=probabilities, explain=explain)
    return df.map_partitions(_scored, dask.delayed(scorer), meta=_scored(df._meta, scorer))


class _Frame:
    """A DataFrame, for one job."""

    def __init__(self, df: dask.dataframe.DataFrame) -> None:
        if not isinstance(df, dask.dataframe.DataFrame):
            raise DataError(f"{_parts.kind_of(df)} is no DataFrame of Dask")
        self._df = df
        self._names = {str(name): name for name in df.columns}
        self.columns = list(self._names)
        if len(self.columns) < len(df.columns):
            raise DataError("two columns have the same name; rename one of them")
        self._codes: list[Any] = []

    def begin(self, columns: list[str], options: Options, what: str) -> None:
        self._rows = self._df[[self._names[name] for name in columns]]
        self._options = options
        self._what = what.replace(" ", "-")

    def empty(self) -> pyarrow.Table:
        return _rows(self._rows._meta)

    def ranges(self) -> bytes:
        return self._merged(self._each("ranges", _ranges, self._rows.to_delayed(), self._options))

    def ask(self, over: int, request: bytes, ranges: bytes) -> bytes:
        asked = dask.delayed(request)
        if over == _parts.CODES:
            return self._merged(self._each("codes", _answer_codes, self._codes, asked))
        answers = self._each("rows", _answer_rows, self._rows.to_delayed(), self._options,
                             dask.delayed(ranges), asked)
        if over == _parts.ROWS_KEEP:
            self._codes = answers = list(dask.persist(*answers))
        return self._merged(self._each("answers", _answer_of, answers))

    def end(self) -> None:
        self._codes = []

    def _each(self, name: str, work: Callable[..., Any], parts: list[Any], *more: Any) -> list[Any]:
        """A task a part: `work` of its number, itself and what all have."""
        task, key = dask.delayed(work, pure=False), f"{self._what}-{name}-{uuid.uuid4().hex}"
        return [task(i, part, *more, dask_key_name=f"{key}-{i}") for i, part in enumerate(parts)]

    def _merged(self, pieces: list[Any]) -> bytes:
        while True:
            groups = [pieces[i:i + _parts.FAN] for i in range(0, len(pieces), _parts.FAN)]
            pieces = self._each("merge", _merge, groups)
            if len(pieces) == 1:
                piece: _Piece = pieces[0].compute()
                return piece[2]


# ---- On workers ----


def _rows(frame: Any, part: int | None = None) -> pyarrow.Table:
    """A frame of pandas, without its index."""
    try:
        rows = pyarrow.Table.from_pandas(frame, preserve_index=False)
    except pyarrow.ArrowException as trouble:
        where = "" if part is None else f"part {part}: "
        raise DataError(f"{where}a column cannot be read: {trouble}") from None
    return rows.replace_schema_metadata(None)


def _ranges(part: int, rows: Any, options: Options) -> _Piece:
    return part, part, _parts.ranges_of(part, _rows(rows, part), options)


def _answer_rows(part: int, rows: Any, options: Options, ranges: bytes,
                 request: bytes) -> tuple[bytes, bytes]:
    return _parts.answer(part, _rows(rows, part), options, ranges, request)


def _answer_of(part: int, kept: tuple[bytes, bytes]) -> _Piece:
    return part, part, kept[0]


def _answer_codes(part: int, kept: tuple[bytes, bytes], request: bytes) -> _Piece | None:
    return (part, part, _parts.codes_answer(part, kept[1], request)) if kept[1] else None


def _merge(_: int, pieces: list[_Piece | None]) -> _Piece | None:
    known = [piece for piece in pieces if piece is not None]
    return _parts.merge(known) if known else None


def _scored(frame: Any, scorer: _parts.Scorer) -> Any:
    import pandas

    new = scorer.new_columns(_rows(frame)).to_pandas().set_index(frame.index)
    return pandas.concat([frame, new], axis=1)
