"""Tables for the tests of data in parts, and what it means that two results are the same."""

from __future__ import annotations

import numpy as np
import pyarrow as pa


def generated(part: int, rows: int) -> pa.RecordBatch:
    """A part of a table of 30 columns: 3 classes, numbers and categories with missing values, most of
    which know something of them, and a column of the type of nulls."""
    chance = np.random.default_rng([7, part])
    y = chance.integers(0, 3, rows)

    def holes(share: float) -> np.ndarray:
        return chance.random(rows) < share

    columns = {"y": pa.array(["low", "middle", "high"]).take(pa.array(y))}
    for j in range(14):
        values = chance.normal(size=rows) + y * (0.6 / (1 + j))
        columns[f"x{j}"] = pa.array(values, mask=holes(0.02 * (j % 3)))
    for j in range(7):
        codes = np.where(chance.random(rows) < 0.1 * j, y, chance.integers(0, 3 + 5 * j, rows))
        words = pa.array([f"c{k}" for k in range(3 + 5 * j)])
        columns[f"t{j}"] = words.take(pa.array(codes, mask=holes(0.01 * j)))
        columns[f"i{j}"] = pa.array((codes * 3) % (4 + j), pa.int32(), mask=holes(0.01))
    columns["nothing"] = pa.nulls(rows)
    return pa.RecordBatch.from_pydict(columns)


def odd_types() -> pa.Table:
    """A column of each type; `late` and `early` have values at one end only."""
    n = 240
    order = range(n)
    return pa.table({
        "y": [("a", "b", "c")[(i * 7 + i // 9) % 3] for i in order],
        "nothing": pa.nulls(n),
        "whole": pa.array([i % 5 for i in order], pa.int16()),
        "real": pa.array([None if i % 11 == 0 else np.sin(i * (1 + i % 3)) for i in order], pa.float32()),
        "yes": [None if i % 13 == 0 else i % 3 == 1 for i in order],
        "price": pa.array([i % 17 * 0.25 for i in order]).cast(pa.decimal128(10, 2)),
        "day": pa.array(order, pa.date32()),
        "moment": pa.array([i * i * 1_000_000 for i in order], pa.timestamp("us", "UTC")),
        "late": [None] * 200 + ["u", "v"] * 20,
        "early": ["x", "y"] * 20 + [None] * 200,
        "w": pa.array([i % 4 for i in order], pa.int64()),
    })


def assert_same(found, expected) -> None:
    """Tables of counts to the last digit, statistics to 1e-12, messages and texts as they are."""
    assert [m["text"] for m in found.messages] == [m["text"] for m in expected.messages]
    assert found.tables
    for table in found.tables:
        other = expected[table.kind]
        assert table.columns == other.columns
        for name in table.columns:
            cells, known = table[name], other[name]
            if cells.dtype == object or np.array_equal(known, np.rint(known)):
                np.testing.assert_array_equal(cells, known, f"{table.kind} {name}")
            else:
                np.testing.assert_allclose(cells, known, 1e-12, 1e-15, err_msg=f"{table.kind} {name}")


def assert_same_model(found, expected) -> None:
    assert_same(found, expected)
    assert found.predictors == expected.predictors
    assert found.state.to_bytes() == expected.state.to_bytes()


def mutated(piece: bytes) -> bytes:
    """The piece with one bit turned."""
    place = len(piece) // 2
    return piece[:place] + bytes([piece[place] ^ 4]) + piece[place + 1:]
