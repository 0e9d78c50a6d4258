"""Rankings and models of PySpark DataFrames, whose rows stay on the executors.

Every pass is a ``mapInArrow`` over the partitions, and its small answers are merged in a tree on the
executors; the driver gets what is left of them, never a row. Spark schedules, ships, keeps and tries
again. Partitions count in their order, so use a DataFrame that has the same rows in the same order
each time it is read: files, tables, and what was checkpointed or persisted.
"""

from __future__ import annotations

import contextlib
import itertools
import os
from collections.abc import Callable, Iterable, Iterator
from typing import TYPE_CHECKING, Any

import pyarrow
import pyarrow.compute
from pyspark import StorageLevel, TaskContext
from pyspark.errors import PySparkTypeError
from pyspark.sql import DataFrame
from pyspark.sql import functions as sql
from pyspark.sql.pandas.types import from_arrow_schema
from pyspark.sql.types import StructType

from . import _parts, errors
from ._data import Options
from ._results import Model, Ranking
from .errors import DataError, PredSelectError

if TYPE_CHECKING:
    from typing_extensions import Unpack

__all__ = ["model", "rank", "score"]

# A row a piece; the codes of a part are places from 1 behind its answer at 0.
_PIECES = pyarrow.schema([
    ("part", pyarrow.int32()), ("last", pyarrow.int32()), ("place", pyarrow.int32()),
    ("piece", pyarrow.binary()), ("trouble", pyarrow.string()),
])
_PIECES_OF_SPARK = "part int, last int, place int, piece binary, trouble string"
_CHUNK = 1 << 18  # bytes of codes in a row: what the heap of an executor has room for anywhere


def rank(df: DataFrame, target: str, *, by: str = "p", top: int = 0,
         **options: Unpack[_parts.Said]) -> Ranking:
    """Ranks the columns as :func:`predselect.rank` does, with its ``by`` and ``top``, and of its other
    arguments ``except_``, ``levels``, ``weight``, ``schema``, ``reading``, ``name``, and ``stream``,
    which puts the cells of a partition into a temporary file on its executor while they are read."""
    return _parts.rank(_Frame(df), target, options, by=by, top=top)


def model(df: DataFrame, target: str, *, test: float = 0.3, training_column: str | None = None,
          predictors: int = 0, pmml: str | os.PathLike[str] | None = None,
          **options: Unpack[_parts.Said]) -> Model:
    """Builds a classifier as :func:`predselect.model` does. The other arguments are those of
    :func:`rank`. The codes of the cases, a byte or two a case and predictor, are persisted on the
    executors, on disk where memory is short, until the model is made."""
    return _parts.model(_Frame(df), target, options, test=test, training_column=training_column,
                        predictors=predictors, pmml=pmml)


def score(df: DataFrame, model: Any, *, predicted: str | None = None,
          probabilities: str | None = None, explain: int = 0) -> DataFrame:
    """The DataFrame with the predictions of a model behind its columns: a result of :func:`model`, a
    state, or the path of one on the driver. The arguments are those of :func:`predselect.score`."""
    scorer = _parts.Scorer(model, predicted=predicted, probabilities=probabilities, explain=explain)
    added = scorer.new_columns(df.limit(0).toArrow()).schema
    schema = StructType([*df.schema.fields, *from_arrow_schema(added).fields])
    names = df.columns

    def scored(batches: Iterable[pyarrow.RecordBatch]) -> Iterator[pyarrow.RecordBatch]:
        for batch in batches:
            rows = pyarrow.Table.from_batches([_named(batch, names)])
            new = scorer.new_columns(rows).combine_chunks()
            yield pyarrow.RecordBatch.from_arrays(
                [*batch.columns, *[pyarrow.concat_arrays(column.chunks) for column in new.columns]],
                names=schema.names)

    return _by_place(df).mapInArrow(scored, schema)


class _Frame:
    """A DataFrame, for one job."""

    def __init__(self, df: DataFrame) -> None:
        if not isinstance(df, DataFrame):
            raise DataError(f"{_parts.kind_of(df)} is no DataFrame of Spark")
        if df.isStreaming:
            raise DataError("a streaming DataFrame is never read to its end; give what it has written")
        self._df = df
        self.columns: list[str] = df.columns
        if len(set(self.columns)) < len(self.columns):
            twice = next(n for n in self.columns if self.columns.count(n) > 1)
            raise DataError(f'a column named "{twice}" is there twice; rename one of them')
        self._persisted: DataFrame | None = None
        self._n_parts = 0
        self._n_passes = 0

    def begin(self, columns: list[str], options: Options, what: str) -> None:
        self._rows = _by_place(self._df).select(*[str(self.columns.index(name)) for name in columns])
        try:
            self._empty = self._rows.limit(0).toArrow().rename_columns(columns)
        except PySparkTypeError as trouble:
            raise DataError(f"a column cannot be read, leave it out or cast it: {trouble}") from None
        self._options, self._what = options, what

    def empty(self) -> pyarrow.Table:
        return self._empty

    def ranges(self) -> bytes:
        with self._described("ranges of the rows"):
            pieces = self._keep(_mapped(self._rows, _ranges_work(self._empty.schema, self._options)))
            self._n_parts = pieces.count()
            ranges = self._merged(pieces) if self._n_parts > 0 else b""
        self.end()
        return ranges

    def ask(self, over: int, request: bytes, ranges: bytes) -> bytes:
        self._n_passes += 1
        what = "codes" if over == _parts.CODES else "rows"
        with self._described(f"pass {self._n_passes} over the {what}"):
            if over == _parts.CODES:
                assert self._persisted is not None
                return self._merged(_mapped(self._persisted.where("place > 0"), _codes_work(request)))
            pieces = _mapped(self._rows, _rows_work(request, ranges, self._empty.schema, self._options))
            return self._merged(
                self._keep(pieces).where("place = 0") if over == _parts.ROWS_KEEP else pieces)

    def end(self) -> None:
        if self._persisted is not None:
            self._persisted.unpersist()
        self._persisted = None

    def _keep(self, pieces: DataFrame) -> DataFrame:
        self.end()
        self._persisted = pieces.persist(StorageLevel.MEMORY_AND_DISK)
        return self._persisted

    def _merged(self, pieces: DataFrame) -> bytes:
        """Rounds on the executors, until the driver can take what is left."""
        left, reach = self._n_parts, _parts.FAN
        while left > _parts.FAN:
            groups = pieces.groupBy(sql.expr(f"part div {reach}"))
            pieces = groups.applyInArrow(_merge_group, _PIECES_OF_SPARK)
            left, reach = -(-left // _parts.FAN), reach * _parts.FAN
        rows = pieces.toArrow().to_pylist()
        for row in rows:
            _raise(row["trouble"])
        return _parts.merge_all((row["part"], row["last"], row["piece"]) for row in rows)

    @contextlib.contextmanager
    def _described(self, step: str) -> Iterator[None]:
        """Names the jobs in Spark's pages."""
        context = self._df.sparkSession.sparkContext
        before = context.getLocalProperty("spark.job.description")
        context.setJobDescription(f"{self._what}: {step}")
        try:
            yield
        finally:
            context.setLocalProperty("spark.job.description", before)


# ---- On executors ----

_Batches = Iterator[pyarrow.RecordBatch]
# Of the part with this number: its answer, and what it keeps behind that.
_Work = Callable[[int, _Batches], Iterable[Any]]


def _ranges_work(schema: pyarrow.Schema, options: Options) -> _Work:
    return lambda part, rows: [_parts.ranges_of(part, _reader(rows, schema), options)]


def _rows_work(request: bytes, ranges: bytes, schema: pyarrow.Schema, options: Options) -> _Work:
    def work(part: int, rows: _Batches) -> Iterator[Any]:
        answer, codes = _parts.answer(part, _reader(rows, schema), options, ranges, request)
        yield answer
        for begin in range(0, len(codes), _CHUNK):
            yield memoryview(codes)[begin:begin + _CHUNK]

    return work


def _codes_work(request: bytes) -> _Work:
    def work(part: int, rows: _Batches) -> Iterator[bytes]:
        codes = b"".join(piece.as_buffer() for batch in rows for piece in batch["piece"])
        if codes:
            yield _parts.codes_answer(part, codes, request)

    return work


def _mapped(df: DataFrame, work: _Work) -> DataFrame:
    """The pieces of all partitions. What is refused comes as a row: trying again changes nothing."""

    def task(batches: _Batches) -> _Batches:
        context = TaskContext.get()
        assert context is not None
        part = context.partitionId()
        try:
            for place, piece in enumerate(work(part, batches)):
                yield _row(part, part, place, piece)
        except PredSelectError as trouble:
            yield _troubled(part, trouble)

    return df.mapInArrow(task, _PIECES_OF_SPARK)


def _merge_group(pieces: pyarrow.Table) -> pyarrow.Table:
    rows = pieces.to_pylist()
    troubled = [row["part"] for row in rows if row["trouble"] is not None]
    if troubled:
        return pieces.filter(pyarrow.compute.equal(pieces["part"], min(troubled)))
    try:
        first, last, piece = _parts.merge([(row["part"], row["last"], row["piece"]) for row in rows])
    except PredSelectError as trouble:
        return pyarrow.Table.from_batches([_troubled(rows[0]["part"], trouble)])
    return pyarrow.Table.from_batches([_row(first, last, 0, piece)])


def _by_place(df: DataFrame) -> DataFrame:
    """Columns called 0, 1, ...: Spark's functions of Python do not take every name that columns have."""
    return df.toDF(*[str(i) for i in range(len(df.columns))])


def _named(batch: pyarrow.RecordBatch, names: list[str]) -> pyarrow.RecordBatch:
    return pyarrow.RecordBatch.from_arrays(batch.columns, names=names)


def _reader(batches: _Batches, schema: pyarrow.Schema) -> pyarrow.RecordBatchReader:
    """A partition without rows may come without a batch."""
    named = (_named(batch, schema.names) for batch in batches)
    first = next(named, None)
    if first is None:
        return pyarrow.RecordBatchReader.from_batches(schema, [])
    return pyarrow.RecordBatchReader.from_batches(first.schema, itertools.chain([first], named))


def _row(part: int, last: int, place: int, piece: Any,
         trouble: str | None = None) -> pyarrow.RecordBatch:
    row = {"part": [part], "last": [last], "place": [place], "piece": [piece], "trouble": [trouble]}
    return pyarrow.RecordBatch.from_pydict(row, schema=_PIECES)


def _troubled(part: int, trouble: PredSelectError) -> pyarrow.RecordBatch:
    return _row(part, part, 0, None, f"{type(trouble).__name__}: {trouble}")


def _raise(trouble: str | None) -> None:
    if trouble is not None:
        kind, text = trouble.split(": ", 1)
        raise getattr(errors, kind)(text)
