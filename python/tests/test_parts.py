"""Tables in parts, without an engine: what every engine relies on."""

from __future__ import annotations

import re

import pyarrow as pa
import pyarrow.csv
import pytest
from parts import assert_same, assert_same_model, generated, mutated, odd_types

import predselect as ps
from predselect import _parts
from predselect._data import Options


class Local:
    """An engine that is this process."""

    def __init__(self, table, bounds, spoil=None):
        self.table, self.columns = table, table.column_names
        self.parts = [table.slice(a, b - a) for a, b in zip([0, *bounds], [*bounds, len(table)])]
        self.spoil = spoil or (lambda over, part, piece: piece)

    def begin(self, columns, options, what):
        self.kept, self.options, self.what = columns, options, what

    def empty(self):
        return self.table.select(self.kept).slice(0, 0)

    def _each(self, over, work):
        return [(i, i, self.spoil(over, i, piece)) for i, piece in enumerate(work) if piece]

    def ranges(self):
        return _parts.merge_all(self._each(0, [
            _parts.ranges_of(i, p.select(self.kept), self.options) for i, p in enumerate(self.parts)]))

    def ask(self, over, request, ranges):
        if over == _parts.CODES:
            work = [codes and _parts.codes_answer(i, codes, request) for i, codes in enumerate(self.codes)]
            return _parts.merge_all(self._each(over, work))
        made = [_parts.answer(i, p.select(self.kept), self.options, ranges, request)
                for i, p in enumerate(self.parts)]
        if over == _parts.ROWS_KEEP:
            self.codes = [codes for _, codes in made]
        return _parts.merge_all(self._each(over, [answer for answer, _ in made]))

    def end(self):
        self.codes = []


def model_of(engine, target, **said):
    own = {"test": 0.3, "training_column": None, "predictors": 0, "pmml": None}
    own.update({name: said.pop(name) for name in list(said) if name in own})
    return _parts.model(engine, target, said, **own)


# One part, parts without a row at both ends, uneven ones, more than a round of merging takes.
BOUNDS = [[], [0, 0, 50, 50, 190, 240, 240], list(range(6, 240, 6))]


@pytest.mark.parametrize("bounds", BOUNDS, ids=len)
@pytest.mark.parametrize("said", [
    {},
    {"weight": "w", "levels": {"whole": "scale"}, "reading": {"missing": {"whole": [3, 4]}}},
    {"except_": ["late", "moment"], "stream": True, "schema": {"fields": [
        {"name": "whole", "type": "integer", "title": "Whole numbers", "missingValues": ["1"]}]}},
], ids=lambda said: ",".join(said))
@pytest.mark.filterwarnings("ignore::predselect.PredSelectWarning")
def test_parts_give_the_tables_and_the_model_file_of_the_whole(bounds, said):
    table = odd_types()
    assert_same(_parts.rank(Local(table, bounds), "y", said, by="bits", top=6),
                ps.rank(table, "y", by="bits", top=6, **said))
    test = 0.0 if "weight" in said else 0.3  # weighted cases are not drawn
    assert_same_model(model_of(Local(table, bounds), "y", **said, test=test),
                      ps.model(table, "y", **said, test=test))


@pytest.mark.filterwarnings("ignore::predselect.PredSelectWarning")
def test_a_larger_table_and_a_training_column(tmp_path):
    whole = pa.Table.from_batches([generated(part, 500) for part in range(20)])
    train = pa.array([int(i % 3 > 0) for i in range(len(whole))])
    whole = whole.append_column("train", train)
    said = {"training_column": "train", "predictors": 6}
    engine = Local(whole, list(range(500, 10_000, 500)))
    found = model_of(engine, "y", **said, pmml=tmp_path / "parts.xml")
    expected = ps.model(whole, "y", **said, pmml=tmp_path / "whole.xml")
    assert_same_model(found, expected)
    files = [re.sub("<Timestamp>.*?</Timestamp>", "", (tmp_path / name).read_text())
             for name in ("parts.xml", "whole.xml")]
    assert files[0] == files[1] and "NaiveBayesModel" in files[0]


@pytest.mark.parametrize("over", [0, _parts.ROWS, _parts.ROWS_KEEP, _parts.CODES])
@pytest.mark.parametrize("kind", ["mutated", "cut", "foreign", "twice"])
@pytest.mark.filterwarnings("ignore::predselect.PredSelectWarning")
def test_a_piece_that_is_none_of_the_table_is_refused_with_its_part(kind, over):
    seen = {}

    def spoil(now, part, piece):
        seen[part] = piece
        if now != over or part != 2:
            return piece
        foreign = _parts.ranges_of(2, pa.table({"z": [1.5, 2.5]}), Options())
        return {"mutated": mutated(piece), "cut": piece[:-9], "foreign": foreign, "twice": seen[1]}[kind]

    said = "part 2 cannot be added" if kind != "twice" or over == 0 else "cases"
    with pytest.raises(ps.PredSelectError, match=said):
        model_of(Local(odd_types(), [60, 130, 180], spoil), "y")


def test_codes_and_rows_that_do_not_fit_are_refused_with_their_part():
    table = odd_types()
    engine = Local(table, [60, 120])
    engine.begin(table.column_names, Options(), "")
    ranges = engine.ranges()
    for refused in (
        lambda: _parts.codes_answer(4, mutated(ranges), ranges),
        lambda: _parts.answer(4, table, Options(), ranges, b"no request"),
        lambda: _parts.ranges_of(4, pa.table({"x": [[1]]}), Options()),
    ):
        with pytest.raises(ps.PredSelectError, match="part 4"):
            refused()


@pytest.mark.parametrize("said, text", [
    ({"threads": 2}, "threads is not for data in parts: the engine"),
    ({"calibrate": "isotonic"}, "single cases"),
    ({"predictions": True}, "score"),
    ({"except_": "x"}, 'no column "x"; they have y, nothing'),
    ({"weight": [1.0]}, "name a column"),
    ({"levels": {"yes": "odd"}}, "give nominal, ordinal or scale"),
    ({"levels": {"yess": "scale"}}, "yess"),
    ({"reading": {"missing": "yess=1"}}, "yess"),
])
def test_what_does_not_go_is_refused_before_a_row_is_read(said, text):
    engine = Local(odd_types(), [60])
    engine.ranges = None
    with pytest.raises(ps.RequestError, match=text):
        _parts.rank(engine, "y", said, by="p", top=0)
    with pytest.raises(ps.RequestError, match="by is 'luck'"):
        _parts.rank(engine, "y", {}, by="luck", top=0)
    with pytest.raises(TypeError, match="tretas"):
        _parts.rank(engine, "y", {"tretas": 1}, by="p", top=0)


class Lost(Exception):
    pass


@pytest.mark.filterwarnings("ignore::predselect.PredSelectWarning")
def test_what_an_engine_raises_in_a_pass_is_raised_as_it_is():
    engine, ended = Local(odd_types(), [60]), []

    def ask(*_):
        raise Lost("an executor")

    engine.ask, engine.end = ask, lambda: ended.append(1)
    with pytest.raises(Lost, match="an executor") as caught:
        _parts.rank(engine, "y", {}, by="p", top=0)
    assert isinstance(caught.value.__cause__, ps.CommandError)
    assert ended == [1]


def test_no_rows_are_scored_too(penguins):
    table = pyarrow.csv.read_csv(penguins)
    state = ps.model(table, "species").state
    none, all_ = (ps.score(state, rows, explain=1).new_columns.to_arrow() for rows in (table[:0], table))
    assert none.num_rows == 0 and none.schema == all_.schema
