"""Columns as Python has them, encoded for the library: numpy arrays, lists, pandas series.

A float64 array is pointed to; what else has a fixed width and the machine's byte order, too.
"""

from __future__ import annotations

import datetime
import decimal
import numbers
import re
from dataclasses import dataclass
from typing import Any

import numpy as np

from ._export import ArrowColumn
from .errors import DataError

_PLAIN = {"f8": b"g", "f4": b"f", "f2": b"e", "i1": b"c", "i2": b"s", "i4": b"i", "i8": b"l",
          "u1": b"C", "u2": b"S", "u4": b"I", "u8": b"L"}
_EPOCH = datetime.date(1970, 1, 1)


@dataclass
class Encoded:
    """A column for the library, and the level that its own type says it has ("" for none)."""

    column: ArrowColumn
    level: str = ""


def is_missing(value: Any) -> bool:
    """None, NaN, NaT and pandas' NA."""
    if value is None:
        return True
    if isinstance(value, (float, np.floating)):
        return bool(value != value)
    return type(value).__name__ in ("NAType", "NaTType") or (
        isinstance(value, (np.datetime64, np.timedelta64)) and bool(np.isnat(value))
    )


def is_value(thing: Any) -> bool:
    """Whether it is one cell, and no column of them."""
    return isinstance(thing, (str, bytes)) or not hasattr(thing, "__iter__")


def encode(name: str, values: Any) -> Encoded:
    """Encodes one column. Raises DataError, naming it, for what the library has no type for."""
    try:
        return _encode(values)
    except (TypeError, ValueError, OverflowError) as trouble:
        raise DataError(f'column "{name}": {trouble}') from trouble


def _encode(values: Any) -> Encoded:
    if hasattr(values, "dtype") and (hasattr(values, "array") or hasattr(values, "codes")):
        return _encode_series(values)
    if hasattr(values, "to_pylist"):  # of Arrow
        values = values.to_pylist()
    array = values if isinstance(values, np.ndarray) else _from_sequence(values)
    if array.ndim != 1:
        raise TypeError(f"has {array.ndim} dimensions; a column has one")
    if isinstance(array, np.ma.MaskedArray):
        return _masked(np.asarray(array.data), np.ma.getmaskarray(array))
    return Encoded(_from_numpy(array), "nominal" if array.dtype.kind == "b" else "")


def _from_sequence(values: Any) -> Any:
    """A list with its values as they are: numpy would make text of the numbers beside a text."""
    if is_value(values):
        raise TypeError(f"is one value, {values!r}, where a column has a list or an array of them")
    values = list(values)
    array = np.empty(len(values), object)
    for i, value in enumerate(values):
        array[i] = value
    return array


def _validity(missing: Any) -> Any:
    return np.packbits(~missing, bitorder="little") if missing.any() else None


def _fixed(format: bytes, cells: Any, missing: Any = None) -> ArrowColumn:
    valid = None if missing is None else _validity(missing)
    nulls = 0 if valid is None else int(missing.sum())
    return ArrowColumn(format, len(cells), [valid, cells], nulls)


def _from_numpy(array: Any) -> ArrowColumn:
    kind = array.dtype.kind
    if kind == "b":
        return _fixed(b"C", np.ascontiguousarray(array).view(np.uint8))
    if kind in "fiu":
        if array.dtype.itemsize > 8:
            array = array.astype(np.float64)
        native = array.dtype.newbyteorder("=")
        cells = np.ascontiguousarray(array, dtype=native)  # copies only where it must
        return _fixed(_PLAIN[f"{kind}{array.dtype.itemsize}"], cells)
    if kind in "mM":
        return _from_times(array)
    if kind in "UST":
        return _texts(array.astype(object))
    if kind == "O":
        return _from_objects(array)
    raise TypeError(f"has the type {array.dtype}, which is no column of numbers, texts or times")


def _from_times(array: Any) -> ArrowColumn:
    """Dates and times by their own unit; missing ones are null."""
    missing = np.isnat(array)
    unit, count = np.datetime_data(array.dtype)
    is_date = array.dtype.kind == "M" and unit in ("D", "W", "M", "Y")
    if is_date:
        days = np.where(missing, 0, array.astype("M8[D]").astype(np.int64))
        if len(days) and np.abs(days).max() >= 2**31:
            raise OverflowError("holds dates beyond what 32 bits count of days")
        return _fixed(b"tdD", days.astype(np.int32), missing)
    if unit not in ("s", "ms", "us", "ns") or count != 1:
        unit = "s" if array.dtype.kind == "m" else "us"
        array = array.astype(f"{array.dtype.kind}8[{unit}]")
    start = b"ts" if array.dtype.kind == "M" else b"tD"
    format = start + {"s": b"s", "ms": b"m", "us": b"u", "ns": b"n"}[unit]
    return _fixed(format + (b":" if start == b"ts" else b""), array.view(np.int64).copy(), missing)


def _texts(objects: Any) -> ArrowColumn:
    """Texts, None where there is none; equal ones are encoded once."""
    codes: dict[Any, int] = {}
    cells = np.fromiter(
        (-1 if is_missing(v) else codes.setdefault(v, len(codes)) for v in objects),
        np.int32,
        len(objects),
    )
    return _dictionary(cells, _text_list(list(codes)))


def _text_list(words: list[Any]) -> ArrowColumn:
    encoded = [(w.decode() if isinstance(w, bytes) else str(w)).encode() for w in words]
    offsets = np.zeros(len(encoded) + 1, np.int64)
    np.cumsum([len(word) for word in encoded], out=offsets[1:])
    return ArrowColumn(b"U", len(encoded), [None, offsets, np.frombuffer(b"".join(encoded) or b"\0",
                                                                          np.uint8)])


_DATE = re.compile(rb"\d{4}-\d\d-\d\d([T ]\d\d:\d\d(:\d\d(\.\d{1,6})?)?Z?)?")


def dates_in(column: ArrowColumn) -> ArrowColumn | None:
    """The column of texts as one of dates, or of instants, where all of them are such, as a file of
    texts is read. None where it is no such column."""
    words = column.dictionary
    if words is None or words.format != b"U" or words.length == 0:
        return None
    offsets, text = words.buffers[1], words.buffers[2].tobytes()
    cells = [text[a:b] for a, b in zip(offsets, offsets[1:])]
    if not all(_DATE.fullmatch(cell) for cell in cells) or len({c[-1:] == b"Z" for c in cells}) > 1:
        return None
    is_date = all(len(cell) == 10 for cell in cells)
    try:
        times = np.array([c.rstrip(b"Z").decode() for c in cells], "M8[D]" if is_date else "M8[us]")
    except ValueError:  # a day that no month has
        return None
    codes = column.buffers[1]
    return _from_times(np.where(codes < 0, np.datetime64("NaT"), times[codes]))


def kept_column(cells: Any, label: str) -> ArrowColumn:
    """A column that came from the library (texts with None, numbers with NaN) as that gives it."""
    missing = np.fromiter((is_missing(v) for v in cells), bool, len(cells))
    if cells.dtype != object:
        column = _fixed(b"g", np.where(missing, 0.0, cells), missing)
    else:
        column = _text_list(["" if lost else v for v, lost in zip(cells, missing)])
        column.format, column.buffers[1] = b"u", column.buffers[1].astype(np.int32)
        column.buffers[0], column.null_count = _validity(missing), int(missing.sum())
    column.label = label
    return column


def _dictionary(codes: Any, dictionary: ArrowColumn) -> ArrowColumn:
    codes = np.ascontiguousarray(codes)
    column = _fixed(_PLAIN[f"i{codes.dtype.itemsize}"], codes, codes < 0)
    column.dictionary = dictionary
    return column


_WORDS = {str: "texts", bytes: "texts", bool: "booleans", numbers.Number: "numbers",
          decimal.Decimal: "numbers", datetime.datetime: "times", datetime.date: "dates",
          datetime.timedelta: "durations", datetime.time: "durations"}


_NAMED = {"objects of Interval", "objects of Period"}  # pandas' own, which are categories


def _word(value: Any) -> str:
    for kind, word in _WORDS.items():
        if isinstance(value, kind):
            return word
    return "booleans" if isinstance(value, np.bool_) else f"objects of {type(value).__name__}"


def _without_zone(value: Any) -> Any:
    """An instant of a zone as UTC, where numpy counts; a time of day as what is past midnight."""
    if isinstance(value, datetime.time):
        return datetime.timedelta(hours=value.hour, minutes=value.minute, seconds=value.second,
                                  microseconds=value.microsecond)
    if getattr(value, "tzinfo", None) is not None:
        return value.astimezone(datetime.timezone.utc).replace(tzinfo=None)
    return value


def _from_objects(array: Any) -> ArrowColumn:
    missing = np.fromiter((is_missing(v) for v in array), bool, len(array))
    words = {_word(v) for v in array[~missing]}
    if words <= {"texts"}:
        return _texts(array)
    if words <= _NAMED:
        return _texts([None if lost else str(v) for v, lost in zip(array, missing)])
    if len(words) > 1 and not words <= {"numbers", "booleans"}:
        raise TypeError(
            f"mixes {' and '.join(sorted(words))}. Give it one type, such as by .astype(str)"
        )
    word = next(iter(words))
    if words <= {"numbers", "booleans"}:
        filled = array.copy()
        filled[missing] = np.nan
        return _from_numpy(filled.astype(np.float64))
    if word in ("times", "dates", "durations"):
        filled = np.array([None if lost else _without_zone(v) for v, lost in zip(array, missing)],
                          object)
        return _from_times(filled.astype({"times": "M8[us]", "dates": "M8[D]",
                                          "durations": "m8[us]"}[word]))
    raise TypeError(f"holds {word}, which is no column of numbers, texts or times")


def _masked(cells: Any, missing: Any) -> Encoded:
    if cells.dtype.kind in "OmM":  # have missing values of their own besides
        cells = cells.copy()
        cells[missing] = None
        return Encoded(_from_numpy(cells))
    column = _from_numpy(cells)
    valid = _validity(missing)
    if valid is not None:
        column.buffers[0], column.null_count = valid, int(missing.sum())
    return Encoded(column, "nominal" if cells.dtype.kind == "b" else "")


def _encode_series(series: Any) -> Encoded:
    """A pandas series of any version, or categories of pandas, by what its own array says."""
    dtype = series.dtype
    if isinstance(dtype, np.dtype):
        return Encoded(_from_numpy(series.to_numpy()), "nominal" if dtype.kind == "b" else "")
    if hasattr(dtype, "categories") and hasattr(dtype, "ordered"):
        inner = _encode_categories(np.asarray(dtype.categories))
        return Encoded(_dictionary(getattr(series, "array", series).codes, inner),
                       "ordinal" if dtype.ordered else "nominal")
    kind = getattr(dtype, "kind", "O")
    if kind in "fiub":
        missing = np.asarray(series.isna())
        return _masked(_filled(series, getattr(dtype, "numpy_dtype", np.float64), missing), missing)
    if kind == "M" and str(getattr(dtype, "pyarrow_dtype", "")) not in ("date32[day]", "date64[ms]"):
        unit = getattr(dtype, "unit", None) or dtype.pyarrow_dtype.unit
        return Encoded(_from_times(series.to_numpy(dtype=f"M8[{unit}]")))
    return Encoded(_from_numpy(series.to_numpy(dtype=object)))


def _encode_categories(categories: Any) -> ArrowColumn:
    """Numbers and times as what they are, all else (texts, intervals, a mix) as texts."""
    words = {_word(v) for v in categories} if categories.dtype.kind == "O" else set()
    if categories.dtype.kind in "UST" or (words and not words <= {"numbers", "booleans"} and (
            len(words) > 1 or not words <= {"times", "dates", "durations"})):
        return _text_list(list(categories))
    return _from_numpy(categories)


def _filled(series: Any, dtype: Any, missing: Any) -> Any:
    """The values of a nullable series, with something in the place of those that are missing."""
    try:
        return series.to_numpy(dtype=dtype, na_value=0)
    except (TypeError, ValueError):  # pandas 1.5 over Arrow
        values = series.to_numpy(dtype=object).copy()
        values[missing] = 0
        return values.astype(dtype)
