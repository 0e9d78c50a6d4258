"""Finds what can be changed in the sources of the engines, by the tree that Clang makes of them."""

import dataclasses
import functools
import hashlib
import json
import os
import pickle
import re
import subprocess
from concurrent.futures import ProcessPoolExecutor
from pathlib import Path

from clang import cindex
from clang.cindex import CursorKind, TypeKind

TOP = Path(__file__).resolve().parents[2]
LAYERS = ("common", "feature", "naivebayes")
IF_CHOSEN = "\0"  # stands for the test of a mutant's number

OTHER = {"<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "==", "&&": "||", "||": "&&",
         "+": "-", "-": "+", "*": "/", "/": "*", "+=": "-=", "-=": "+=", "*=": "/=", "/=": "*="}
ARITHMETIC = set(range(TypeKind.BOOL.value, TypeKind.LONGDOUBLE.value + 1))
CALLS = (CursorKind.CALL_EXPR, CursorKind.UNARY_OPERATOR, CursorKind.BINARY_OPERATOR,
         CursorKind.COMPOUND_ASSIGNMENT_OPERATOR)
FUNCTIONS = (CursorKind.FUNCTION_DECL, CursorKind.CXX_METHOD, CursorKind.CONSTRUCTOR,
             CursorKind.DESTRUCTOR, CursorKind.FUNCTION_TEMPLATE, CursorKind.CONVERSION_FUNCTION)


@dataclasses.dataclass(frozen=True, order=True)
class Mutant:
    """From first to last the file's bytes give way to the form, in which IF_CHOSEN is to be filled."""
    file: str
    first: int
    last: int
    kind: str
    was: str
    becomes: str
    form: str
    around: tuple  # what stands before and behind on its lines

    def line(self):
        one = lambda text: re.sub(r"\s+", " ", text).strip()
        before, behind = self.around
        return f"{self.file} | {one(f'{before}[{self.was}]{behind}')} | {one(self.becomes)}"


class Finder:
    """Finds what can be changed in one translation unit."""

    def __init__(self, sources, found):
        self.sources, self.found = sources, found

    def text(self, file, first, last):
        return self.sources[file][first:last].decode()

    def place(self, cursor):
        """File, first and last byte of the cursor, or nothing where it is not of a mutated source."""
        extent = cursor.extent
        if extent.start.file is None:
            return None
        path = os.path.realpath(extent.start.file.name)
        file = os.path.relpath(path, TOP)
        if file not in self.sources or extent.end.offset <= extent.start.offset:
            return None
        return file, extent.start.offset, extent.end.offset

    def add(self, place, kind, becomes, form):
        file, first, last = place
        source = self.sources[file]
        end = source.find(b"\n", last)
        around = (self.text(file, source.rfind(b"\n", 0, first) + 1, first), self.text(file, last, end))
        self.found.add(Mutant(file, first, last, kind, self.text(*place), becomes, form, around))

    def walk(self, cursor, inside=False):
        if cursor.kind in FUNCTIONS:
            if self.decided_while_compiling(cursor):
                return
        elif cursor.kind == CursorKind.COMPOUND_STMT:
            inside = True
        elif cursor.kind in (CursorKind.STATIC_ASSERT, CursorKind.CASE_STMT):
            inside = False
        elif cursor.kind == CursorKind.DECL_STMT and "constexpr" in self.head(cursor):
            return
        if inside:
            self.look(cursor)
        children = list(cursor.get_children())
        if cursor.kind == CursorKind.IF_STMT and self.head(cursor).startswith("if constexpr"):
            children = children[1:]
        for child in children:
            if inside or self.place(child):  # not what was included
                self.walk(child, inside)

    def head(self, cursor):
        place = self.place(cursor)
        return self.text(place[0], place[1], min(place[1] + 40, place[2])) if place else ""

    def decided_while_compiling(self, cursor):
        place = self.place(cursor)
        return bool(place) and re.search(r"\bconst(expr|eval)\b", self.text(*place).split("{")[0])

    def look(self, cursor):
        place = self.place(cursor)
        if not place:
            return
        if cursor.kind in (CursorKind.BINARY_OPERATOR, CursorKind.COMPOUND_ASSIGNMENT_OPERATOR):
            self.operator(cursor, place)
        elif cursor.kind == CursorKind.IF_STMT:
            self.condition(cursor)
        elif cursor.kind == CursorKind.COMPOUND_STMT:
            self.statements(cursor)
        elif cursor.kind in (CursorKind.INTEGER_LITERAL, CursorKind.FLOATING_LITERAL):
            self.number(place)

    def operator(self, cursor, place):
        sides = list(cursor.get_children())
        if len(sides) != 2 or not all(self.place(side) for side in sides):
            return
        (_, first, end), (_, begin, last) = map(self.place, sides)
        between = self.text(place[0], end, begin).strip() if end <= begin else ""
        if (first, last) != place[1:] or between not in OTHER:
            return
        if not all(side.type.get_canonical().kind.value in ARITHMETIC for side in (cursor, *sides)):
            return
        left, right = self.text(place[0], first, end), self.text(place[0], begin, last)
        becomes = f"{left} {OTHER[between]} {right}"
        self.add(place, between, becomes, f"({IF_CHOSEN} ? ({becomes}) : ({self.text(*place)}))")

    def condition(self, cursor):
        children = list(cursor.get_children())
        place = self.place(children[0])
        if not place or not children[0].kind.is_expression():
            return
        before = self.text(place[0], max(0, place[1] - 5), place[1])
        if re.search(r"\bif \($", before) and self.text(place[0], place[2], place[2] + 1) == ")":
            was = self.text(*place)
            self.add(place, "if", f"!({was})", f"{IF_CHOSEN} != static_cast<bool>({was})")

    def statements(self, cursor):
        for child in cursor.get_children():
            place = self.place(child)
            if place and child.kind in CALLS and self.text(place[0], place[2], place[2] + 1) == ";":
                was = self.text(*place)
                self.add(place, "left out", "", f"if (!{IF_CHOSEN}) {was}")

    def number(self, place):
        was = self.text(*place)
        before, after = (self.text(place[0], at, at + 1) for at in (place[1] - 1, place[2]))
        of_template = before == "<" or after == ">"
        if re.fullmatch(r"[0-9.e]+[uUlLzZ]*", was) and not of_template:
            self.add(place, "number", f"{was} + 1", f"({IF_CHOSEN} ? ({was} + 1) : {was})")


@functools.cache
def resources():
    asked = subprocess.run(["clang++", "-print-resource-dir"], capture_output=True, text=True, check=True)
    return asked.stdout.strip()


def arguments_of(command):
    """The compiler's arguments that matter to the parser."""
    words = command.split()[1:]
    kept = [word for word in words if word.startswith(("-I", "-D", "-std", "-isystem"))]
    kept += [words[i + 1] for i, word in enumerate(words) if word == "-isystem"]
    return [*kept, "-xc++", "-w", "-resource-dir", resources()]


def is_source(path):
    return path.split("/")[0] in LAYERS and path.endswith((".cpp", ".inc"))


def all_mutants(build, files):
    """Those of the sources among the files; kept beside the build, as finding them takes a minute."""
    read = [Path(__file__), *(TOP / file for file in files if file.split("/")[0] in LAYERS)]
    digest = hashlib.sha256(b"".join(path.read_bytes() for path in read)).digest()
    kept = build / "mutants" / "found.pickle"
    if kept.exists():
        digest_then, found = pickle.loads(kept.read_bytes())
        if digest_then == digest:
            return found
    found = found_mutants(build, files)
    kept.parent.mkdir(exist_ok=True)
    kept.write_bytes(pickle.dumps((digest, found)))
    return found


def found_mutants(build, files):
    sources = {file: (TOP / file).read_bytes() for file in files if is_source(file)}
    entries = json.loads((build / "compile_commands.json").read_text())
    units = {os.path.relpath(entry["file"], TOP): entry for entry in entries}
    with ProcessPoolExecutor() as pool:
        parts = pool.map(found_in, [(sources, unit) for file, unit in units.items() if file in sources])
        return sorted(set().union(*parts))


def found_in(task):
    sources, unit = task
    parsed = cindex.Index.create().parse(unit["file"], arguments_of(unit["command"]))
    worst = max((d.severity for d in parsed.diagnostics), default=0)
    assert worst < cindex.Diagnostic.Error, f"{unit['file']}: {[str(d) for d in parsed.diagnostics]}"
    found = set()
    Finder(sources, found).walk(parsed.cursor)
    return found
