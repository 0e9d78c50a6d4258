#!/usr/bin/env python3
"""What the sniffer of DuckDB makes of the odd files that the tests hold this reader to.

  .venv-peers/bin/python3 bench/sniffers.py

Every file of tests/host/data/odd_files.py that is read without an option: its table, or message,
beside what DuckDB reads. Prints each that differs, and how many do not.
"""

import datetime
import decimal
import re
import sys
import tempfile
from pathlib import Path

import duckdb

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "tests" / "host" / "data"))
from odd_files import CASES  # noqa: E402


def plain(cell):
    """As the tables of the tests have it: dates as days, times and timestamps as seconds."""
    if isinstance(cell, bool):
        return int(cell)
    if isinstance(cell, decimal.Decimal):
        return float(cell)
    if isinstance(cell, datetime.datetime):
        return (cell.replace(tzinfo=None) - datetime.datetime(1970, 1, 1)).total_seconds()
    if isinstance(cell, datetime.date):
        return (cell - datetime.date(1970, 1, 1)).days
    if isinstance(cell, datetime.time):
        return cell.hour * 3600 + cell.minute * 60 + cell.second
    return cell


def ours(name):
    """Columns without a name are counted from 0 there, from 1 here."""
    made = re.fullmatch(r"column(\d+)", name)
    return f"column{int(made[1]) + 1}" if made else name


def theirs(path):
    try:
        read = duckdb.sql(f"select * from read_csv('{path}')")
        rows = read.fetchall()
        return {ours(name): [plain(row[j]) for row in rows] for j, name in enumerate(read.columns)}
    except (duckdb.Error, UnicodeDecodeError) as error:
        return str(error).split("\n")[0]


def main():
    same = both = 0
    for name, data, expected, options, _ in CASES:
        if options or name.endswith((".txt", ".parquet")):
            continue
        with tempfile.TemporaryDirectory() as folder:
            path = Path(folder) / name
            path.write_bytes(data)
            got = theirs(path)
        both += 1
        isRefused = isinstance(expected, str) and isinstance(got, str)
        if isRefused or (not isinstance(expected, str) and not isinstance(got, str) and
                         list(got.items()) == list(expected.items())):
            same += 1
            continue
        print(f"{name}\n  ours    {str(expected)[:150]}\n  DuckDB  {str(got)[:150]}")
    print(f"DuckDB {duckdb.__version__}: {same} of {both} files alike")


if __name__ == "__main__":
    main()
