"""Results: tables, messages, charts and new columns of a run, which show themselves."""

from __future__ import annotations

import ctypes
import html
import json
import os
from collections.abc import Iterator
from pathlib import Path
from typing import TYPE_CHECKING, Any

import numpy as np

from . import _library as lib
from ._charts import Chart, bars, write_text
from ._columns import kept_column
from ._export import Batch, stream_of
from ._import import capsule_of, read
from ._state import State
from ._words import in_python
from .errors import DataError, PredSelectWarning, RequestError, category_of, warn

if TYPE_CHECKING:
    from ._explain import Explanation


class Columns:
    """Columns with names, as numpy arrays; any data frame library takes them by Arrow."""

    def _stream(self) -> lib.ArrowArrayStream:
        raise NotImplementedError

    _held: tuple[dict[str, Any], dict[str, str]] | None = None

    def _all(self) -> tuple[dict[str, Any], dict[str, str]]:
        if self._held is None:
            self._held = read(self._stream())
        return self._held

    def _read(self) -> dict[str, Any]:
        return self._all()[0]

    @property
    def labels(self) -> dict[str, str]:
        """What pages show for the names."""
        return dict(self._all()[1])

    @property
    def columns(self) -> list[str]:
        """The names, in order."""
        return list(self._read())

    def __getitem__(self, name: str) -> Any:
        return self._read()[name]

    def __len__(self) -> int:
        return len(next(iter(self._read().values()), ()))

    def __iter__(self) -> Iterator[str]:
        return iter(self._read())

    def rows(self) -> Iterator[dict[str, Any]]:
        """A dict a row."""
        names = self.columns
        for values in zip(*self._read().values()):
            yield dict(zip(names, values))

    def to_dict(self) -> dict[str, Any]:
        """The columns by name."""
        return dict(self._read())

    def __arrow_c_stream__(self, requested_schema: Any = None) -> Any:
        return capsule_of(self._stream())

    def to_pandas(self) -> Any:
        """A pandas frame."""
        import pandas

        return pandas.DataFrame(self._read())

    def to_polars(self) -> Any:
        """A polars frame."""
        import polars

        return polars.DataFrame(self)

    def to_arrow(self) -> Any:
        """A pyarrow table."""
        import pyarrow

        return pyarrow.RecordBatchReader.from_stream(self).read_all()


class ResultTable(Columns):
    """A table of a result as records, under names that stay: those of the program's ``--format csv``.

    `document` is the pivot table that a page shows.
    """

    def __init__(self, result: Result, index: int) -> None:
        info = lib.TableInfo(struct_size=ctypes.sizeof(lib.TableInfo))
        result._session.call(
            "result_table_info", result._handle, ctypes.c_size_t(index), ctypes.byref(info)
        )
        self._result, self._index = result, index
        self.kind: str = info.subtype.decode()
        self.title: str = info.title.decode()
        self.command: str = info.command.decode()

    def _stream(self) -> lib.ArrowArrayStream:
        stream = lib.ArrowArrayStream()
        self._result._session.call(
            "result_records", self._result._handle, ctypes.c_size_t(self._index), ctypes.byref(stream)
        )
        return stream

    @property
    def document(self) -> dict[str, Any]:
        """The table as the JSON document has it, with formats, footnotes and shown texts."""
        document: dict[str, Any] = self._result._tables_of_document[self._index]
        return document

    def __repr__(self) -> str:
        return f"<{self.title}: {len(self)} rows, {', '.join(self.columns)}>"

    def _repr_html_(self) -> str:
        return _table_html(self.document, self._result.document["strings"])


class NewColumns(Columns):
    """The variables that a run has added to the table, a row a case."""

    def __init__(self, result: Result) -> None:
        self._result = result
        self._held = result._new_columns

    def _stream(self) -> lib.ArrowArrayStream:
        if self._result._new_columns is not None:  # of a pickle, without the library's own
            columns, labels = self._result._new_columns
            batch = {n: kept_column(cells, "" if labels[n] == n else labels[n]) for n, cells in columns.items()}
            return stream_of(Batch(batch, len(self)))[0]
        stream = lib.ArrowArrayStream()
        self._result._session.call(
            "result_new_columns", self._result._handle, ctypes.byref(stream)
        )
        return stream


def _are_columns(kept: Any) -> bool:
    """Whether a pickle holds columns of one length with their labels."""
    if not (isinstance(kept, tuple) and len(kept) == 2 and all(isinstance(k, dict) for k in kept)):
        return False
    columns, labels = kept
    return (columns.keys() == labels.keys() and all(isinstance(n, str) for n in labels.values())
            and all(isinstance(c, np.ndarray) and c.dtype.char in "Od" for c in columns.values())
            and len({len(c) for c in columns.values()}) < 2)


_MAIN = ("PredictorSummary", "SubsetSummary", "Dictionary", "Scoring")


class Result:
    """What a run brought forth: tables by kind, messages, charts, new columns."""

    # Of a result that was pickled: the new columns and their labels.
    _new_columns: tuple[dict[str, Any], dict[str, str]] | None = None

    def __init__(self, session: lib.Session, handle: lib.Handle, held: Any) -> None:
        self._session, self._handle, self._held = session, handle, held
        self._read_document()

    def _read_document(self) -> None:
        session, handle = self._session, self._handle
        text = ctypes.c_char_p()
        session.call("result_json", handle, ctypes.byref(text))
        #: All of it, as the program's JSON document.
        self.document: dict[str, Any] = json.loads(text.value or b"{}")
        runs = self.document["runs"]
        self._tables_of_document = [table for run in runs for table in run["tables"]]
        #: The tables, in order.
        self.tables = [ResultTable(self, i) for i in range(len(self._tables_of_document))]
        #: Messages: dicts with severity, key, text and detail, which name options as arguments.
        self.messages: list[dict[str, Any]] = [_message(m) for run in runs for m in run["messages"]]
        #: Charts of the run.
        self.charts = [Chart(chart["vegalite"]) for run in runs for chart in run["charts"]]

    def __copy__(self) -> Result:
        copied = type(self).__new__(type(self))
        vars(copied).update(vars(self))
        return copied

    def __getstate__(self) -> dict[str, Any]:
        """What the library keeps of the document, the new columns, and what classes have added."""
        text, size = ctypes.c_void_p(), ctypes.c_size_t()
        self._session.call("result_keep", self._handle, ctypes.byref(text), ctypes.byref(size))
        has_columns = any(run["new_variables"] for run in self.document["runs"])
        return {
            "document": ctypes.string_at(text.value or 0, size.value),
            "new_columns": self.new_columns._all() if has_columns else ({}, {}),
            "own": {n: v for n, v in vars(self).items() if n not in _OF_THE_DOCUMENT},
        }

    def __setstate__(self, kept: Any) -> None:
        known = kept if isinstance(kept, dict) else {}
        document, own, columns = (known.get(n) for n in ("document", "own", "new_columns"))
        if not (isinstance(document, bytes) and isinstance(own, dict) and _are_columns(columns)):
            raise DataError("the pickle does not hold a result; make it anew with this version")
        vars(self).update(own)
        self._session, self._handle, self._held = lib.Session(1), lib.Handle("result"), None
        self._new_columns = columns
        self._session.call("result_restore", document, ctypes.c_size_t(len(document)),
                           ctypes.byref(self._handle._as_parameter_))
        self._read_document()

    def __getitem__(self, kind: str) -> ResultTable:
        for table in self.tables:
            if kind in (table.kind, table.title):
                return table
        raise KeyError(f"{kind}; there are {', '.join(t.kind for t in self.tables) or 'no tables'}")

    def __contains__(self, kind: str) -> bool:
        return any(kind in (table.kind, table.title) for table in self.tables)

    @property
    def macros(self) -> dict[str, list[str]]:
        """What MACROVAR has set: names of variables by the macro's name."""
        return {n: v for run in self.document["runs"] for n, v in run["macros"].items()}

    @property
    def new_columns(self) -> NewColumns:
        """What SAVE, or scoring, has added to the data."""
        return NewColumns(self)

    def text(self, width: int = 100) -> str:
        """All of it as a page of so many columns."""
        page = ctypes.c_char_p()
        self._session.call(
            "result_text", self._handle, ctypes.c_size_t(width), ctypes.byref(page)
        )
        return in_python((page.value or b"").decode())

    def save(self, path: str | os.PathLike[str], heading: str | None = None) -> None:
        """Writes all of it: an HTML report that needs no network, or JSON, or a page of text, as
        the name ends (.html, .json, .txt)."""
        kind = Path(path).suffix.lower()
        if kind == ".html":
            page = ctypes.c_char_p()
            said = heading.encode() if heading is not None else None
            self._session.call("result_html", self._handle, said, ctypes.byref(page))
            words = self._without_own_file((page.value or b"").decode())
        elif kind == ".json":
            words = json.dumps(self.document, ensure_ascii=False)
        elif kind == ".txt":
            words = self.text()
        else:
            raise DataError(f"{path}: a result is saved as .html, .json or .txt")
        write_text(path, words)

    def _without_own_file(self, page: str) -> str:
        return page

    _only_classes = False  # whether warnings without a class of their own are left to `messages`

    def _warn(self) -> None:
        for message in self.messages:
            kind = category_of(message["key"])
            if message["severity"] == "warning" and not (
                self._only_classes and kind is PredSelectWarning
            ):
                warn(message["text"], kind)

    def _errors(self) -> str:
        """The errors of the run, each with the place that it points to."""
        errors = [m for m in self.messages if m["severity"] == "error"]
        return "\n".join("\n".join(filter(None, (m["text"], m.get("detail")))) for m in errors)

    def __str__(self) -> str:
        return self.text()

    def _repr_pretty_(self, printer: Any, cycle: bool) -> None:
        """At a prompt of IPython: all of it."""
        printer.text(repr(self) if cycle else self.text())

    def __repr__(self) -> str:
        return f"<{type(self).__name__}: {', '.join(t.kind for t in self.tables) or 'no tables'}>"

    def _repr_html_(self) -> str:
        strings = self.document["strings"]
        parts = [f"<p><b>{_escape(m['severity'].capitalize())}:</b> {_escape(m['text'])}</p>"
                 for m in self.messages]
        parts += [_table_html(table, strings) for table in self._tables_of_document]
        parts += [chart.svg() for chart in self.charts]
        return "\n".join(parts)

    def _main(self) -> Columns:
        """The table that the result is about, of the last command that has one."""
        if not self.tables:
            raise ValueError("the run has no table")
        return next((t for t in reversed(self.tables) if t.kind in _MAIN), self.tables[0])

    def to_pandas(self) -> Any:
        """The main table as a pandas frame."""
        return self._main().to_pandas()

    def to_polars(self) -> Any:
        """The main table as a polars frame."""
        return self._main().to_polars()

    def to_arrow(self) -> Any:
        """The main table as a pyarrow table."""
        return self._main().to_arrow()

    def __arrow_c_stream__(self, requested_schema: Any = None) -> Any:
        return self._main().__arrow_c_stream__(requested_schema)

    def plot(self) -> Chart:
        """The first chart of the run."""
        if not self.charts:
            raise ValueError("the run has no chart; ask for one with /PLOT")
        return self.charts[0]


_OF_THE_DOCUMENT = ("_session", "_handle", "_held", "_new_columns", "document", "tables", "messages",
                    "charts", "_tables_of_document")


class Ranking(Result):
    """How each column of the data goes with the target, the best first."""

    # What its command says of a selection is not what was asked for.
    _only_classes = True

    def _main(self) -> Columns:
        return self["Ranking"]

    def __repr__(self) -> str:
        return f"<Ranking: {_few(self.predictors)}>"

    @property
    def predictors(self) -> list[str]:
        """The ranked predictors, the best first."""
        return list(self._main()["predictor"]) if "Ranking" in self else []

    def plot(self) -> Chart:
        """The sizes of the effects."""
        table = self._main()
        strings = self.document["strings"]
        points = [(row["predictor"], abs(row["effect_size"]), strings.get(kind, kind))
                  for row in table.rows()
                  if (kind := row["effect_type"]) and row["effect_size"] == row["effect_size"]]
        return bars("Ranking", "Effect size", points)


class Model(Result):
    """A Naive Bayes classifier of few predictors: how it was chosen, and what it is worth.

    ``state`` scores, saves and exports it; it is None where the run ended without a model.
    """

    state: Any = None
    _only_classes = True
    _own_file = ""  # what the state went through, which is gone

    def _take_state(self, path: Path) -> None:
        """The state that went through a file, where there is one; of that only this package knew."""
        if path.exists():
            self.state = State._of(path)
            self._own_file = str(path)
            self._forget_file()

    def _read_document(self) -> None:
        super()._read_document()
        self._forget_file()

    def _forget_file(self) -> None:
        for run in self.document["runs"]:
            run["files"] = [file for file in run["files"] if file != self._own_file]

    def _without_own_file(self, page: str) -> str:
        if not self._own_file:
            return page
        name = json.dumps(self._own_file, ensure_ascii=False)
        return page.replace(f"{name},", "").replace(f",{name}", "").replace(name, "")

    def text(self, width: int = 100) -> str:
        lines = super().text(max(width, 60) if width else 0).splitlines()
        return "\n".join(li for li in lines if not self._own_file or self._own_file not in li) + "\n"

    def __repr__(self) -> str:
        return f"<Model: {_few(self.predictors)}>"

    @property
    def predictors(self) -> list[str]:
        """The chosen predictors, in order."""
        return list(self["ChosenPredictors"]["predictor"]) if "ChosenPredictors" in self else []

    @property
    def accuracy(self) -> float:
        """The share of the test cases (training cases without a test) that are predicted right."""
        return float(self["Accuracy"]["percent_correct"][-1]) / 100.0

    def explain(self, data: Any, **options: Any) -> Explanation:
        """What each predictor says of the classes of each case; see :func:`predselect.explain`."""
        from ._explain import explain

        if self.state is None:
            raise RequestError("the run ended without a model: there is nothing to explain")
        return explain(self.state, data, **options)

    def plot(self) -> Chart:
        """The criterion with each predictor."""
        table = self["ChosenPredictors"]
        criterion = next(n for n in table.columns if n in ("test_data_criterion", "pseudo_bic"))
        points = [(row["predictor"], row[criterion], criterion) for row in table.rows()]
        return bars("Chosen predictors", criterion, points)


class Scores(Result):
    """The predictions of cases, and how these differ from those that the model was built on."""

    def _main(self) -> Columns:
        return self.new_columns

    def __repr__(self) -> str:
        return f"<Scores: {len(self.new_columns)} cases, {', '.join(self.new_columns)}>"


def _few(names: list[str], most: int = 5) -> str:
    shown = ", ".join(names[:most]) or "no predictor"
    return shown if len(names) <= most else f"{shown}, … ({len(names)} predictors)"


def _escape(text: str) -> str:
    return html.escape(text).replace("\n", "<br>")


def _message(message: dict[str, Any]) -> dict[str, Any]:
    return {k: in_python(v) if k in ("text", "detail") else v for k, v in message.items()}


def _heading(path: list[str], strings: dict[str, str]) -> str:
    return ": ".join(strings.get(part, part) for part in path)


def _table_html(table: dict[str, Any], strings: dict[str, str]) -> str:
    """A pivot table as HTML: a line a row and layer, a column a column."""
    cells: dict[tuple[str, str], dict[str, Any]] = {}
    rows: dict[str, None] = {}
    columns: dict[str, None] = {}
    for cell in table["cells"]:
        row = _heading(cell["layer"] + cell["row"], strings)
        column = _heading(cell["column"], strings)
        rows[row] = columns[column] = None
        cells[row, column] = cell
    title = strings.get(table["title"], table["title"])
    head = "".join(f"<th>{_escape(column)}</th>" for column in columns)
    lines = [f"<table><caption><b>{_escape(title)}</b></caption><thead><tr><th></th>{head}</tr></thead>"]
    for row in rows:
        line = "".join(_cell_html(cells.get((row, column))) for column in columns)
        lines.append(f"<tr><th style='text-align:left'>{_escape(row)}</th>{line}</tr>")
    lines.append("</table>")
    return "\n".join(lines)


def _cell_html(cell: dict[str, Any] | None) -> str:
    if cell is None:
        return "<td></td>"
    align = "right" if isinstance(cell["value"], (int, float)) else "left"
    return f"<td style='text-align:{align}'>{_escape(cell['text'])}</td>"


def numbers_of(table: ResultTable, name: str) -> Any:
    """A column of numbers; NaN for all rows where the table has no such column."""
    return table[name] if name in table.columns else np.full(len(table), np.nan)
