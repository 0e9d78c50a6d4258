#!/usr/bin/env python3
"""Changes the engines in small ways, one at a time, and looks whether a test fails.

  mutants.py BUILD [--count N] [--seed SEED] [--only PATH]

Draws N places in the sources of common/, feature/ and naivebayes/, and plants in a copy of the tree
(BUILD/mutants) a changed expression or statement beside each: a run of the tests has the one that
the environment variable MUTANT numbers, so all of them are compiled once. A mutant is killed when a
test fails, crashes or does not end. Those that no test kills are listed, each as

  file | what stands there | what the mutant has in its place

and are argued in tests/mutants/argued.txt, in the same words and with the reason behind a fourth
bar. Exit code 1 if one is not argued there.
"""

import argparse
import collections
import dataclasses
import json
import os
import random
import re
import resource
import subprocess
import sys
import tempfile
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

from clang import cindex
from clang.cindex import CursorKind, TypeKind

TOP = Path(__file__).resolve().parents[2]
LAYERS = ("common", "feature", "naivebayes")
TESTS = {"common": ["common_tests", "feature_tests", "naivebayes_tests"], "feature": ["feature_tests"],
         "naivebayes": ["naivebayes_tests"]}
TIME_LIMIT = 180
MEMORY_LIMIT = 16 << 30
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

    def line(self):
        one = lambda text: re.sub(r"\s+", " ", text)
        return f"{self.file} | {one(self.was)} | {one(self.becomes)}"


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
        self.found.add(Mutant(file, first, last, kind, self.text(*place), becomes, form))

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
        for child in cursor.get_children():
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


def arguments_of(command):
    """The compiler's arguments that matter to the parser."""
    words = command.split()[1:]
    kept = [word for word in words if word.startswith(("-I", "-D", "-std", "-isystem"))]
    kept += [words[i + 1] for i, word in enumerate(words) if word == "-isystem"]
    resources = subprocess.run(["clang++", "-print-resource-dir"], capture_output=True, text=True, check=True)
    return [*kept, "-xc++", "-w", "-resource-dir", resources.stdout.strip()]


def is_source(path):
    return path.split("/")[0] in LAYERS and path.endswith((".cpp", ".inc"))


def all_mutants(build, files):
    sources = {file: (TOP / file).read_bytes() for file in files if is_source(file)}
    found, units = set(), set()
    for entry in json.loads((build / "compile_commands.json").read_text()):
        file = os.path.relpath(entry["file"], TOP)
        if file not in sources or file in units:
            continue
        units.add(file)
        unit = cindex.Index.create().parse(entry["file"], arguments_of(entry["command"]))
        worst = max((d.severity for d in unit.diagnostics), default=0)
        assert worst < cindex.Diagnostic.Error, f"{file}: {[str(d) for d in unit.diagnostics]}"
        Finder(sources, found).walk(unit.cursor)
    return sorted(found)


def drawn(mutants, count, seed):
    """So many of them, in random order, none within another."""
    pool, taken = list(mutants), collections.defaultdict(list)
    random.Random(seed).shuffle(pool)
    chosen = []
    for mutant in pool:
        if len(chosen) == count:
            break
        if all(mutant.last <= first or last <= mutant.first for first, last in taken[mutant.file]):
            taken[mutant.file].append((mutant.first, mutant.last))
            chosen.append(mutant)
    return chosen


def write_if_other(path, content):
    if not path.exists() or path.read_bytes() != content:
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(content)


def plant(tree, files, chosen):
    """A copy of the files, with the mutants in it."""
    changes = collections.defaultdict(list)
    for number, mutant in enumerate(chosen, 1):
        changes[mutant.file].append((number, mutant))
    for file in files:
        content = (TOP / file).read_bytes()
        for number, mutant in sorted(changes[file], key=lambda change: -change[1].first):
            planted = mutant.form.replace(IF_CHOSEN, f"mutants::Is({number})").encode()
            content = content[:mutant.first] + planted + content[mutant.last:]
        if file.endswith(".cpp") and is_source(file):
            content = f'#include "{TOP}/tests/mutants/Mutants.h"\n'.encode() + content
        write_if_other(tree / file, content)
    for environment in TOP.glob(".venv*"):
        if not (tree / environment.name).exists():
            (tree / environment.name).symlink_to(environment)


def compile_tests(tree, build):
    flags = ["-DCMAKE_BUILD_TYPE=Release", "-DCMAKE_CXX_FLAGS=-w", "-DPREDSELECT_BENCH=OFF"]
    subprocess.run(["cmake", "-G", "Ninja", "-S", tree, "-B", build, *flags], check=True,
                   stdout=subprocess.DEVNULL)
    subprocess.run(["cmake", "--build", build, "--target", *TESTS["common"]], check=True)


def limit_memory():
    resource.setrlimit(resource.RLIMIT_AS, (MEMORY_LIMIT, MEMORY_LIMIT))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


def fails(program, number):
    with tempfile.TemporaryDirectory() as folder:
        environment = dict(os.environ, MUTANT=str(number), TEST_TMPDIR=folder, TMPDIR=folder)
        try:
            run = subprocess.run([program, "--gtest_fail_fast", "--gtest_brief=1"], env=environment,
                                 cwd=folder, timeout=TIME_LIMIT, preexec_fn=limit_memory,
                                 stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        except subprocess.TimeoutExpired:
            return True
        return run.returncode != 0


def killer(programs, number, mutant):
    """The first test program that fails, or nothing."""
    tests = TESTS[mutant.file.split("/")[0]]
    return next((name for name in tests if fails(programs / name, number)), None)


def show(chosen, killers):
    tally = collections.defaultdict(collections.Counter)
    for mutant, by in zip(chosen, killers):
        tally[mutant.kind]["planted"] += 1
        tally[mutant.kind]["killed"] += by is not None
    print("| change | planted | killed |\n| --- | ---: | ---: |")
    for kind, counts in sorted(tally.items()):
        print(f"| {kind.replace('|', chr(92) + '|')} | {counts['planted']} | {counts['killed']} |")
    print(f"| all | {len(chosen)} | {sum(by is not None for by in killers)} |")


def argued():
    lines = (TOP / "tests/mutants/argued.txt").read_text().splitlines()
    return {" | ".join(line.split(" | ")[:3]) for line in lines if line and not line.startswith("#")}


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("build", type=Path, help="a configured build")
    parser.add_argument("--count", type=int, default=500)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--only", default="", help="sources whose path begins so")
    parser.add_argument("--workers", type=int, default=os.cpu_count())
    given = parser.parse_args()
    build = given.build.resolve(strict=True)
    listed = subprocess.run(["git", "ls-files"], cwd=TOP, capture_output=True, text=True, check=True)
    files = listed.stdout.splitlines()
    mutants = [m for m in all_mutants(build, files) if m.file.startswith(given.only)]
    chosen = drawn(mutants, given.count, given.seed)
    print(f"mutants: {len(chosen)} of {len(mutants)} possible", flush=True)
    tree, planted = build / "mutants" / "tree", build / "mutants" / "build"
    plant(tree, files, chosen)
    compile_tests(tree, planted)
    assert not any(fails(planted / "bin" / name, 0) for name in TESTS["common"]), "a test fails without any"
    with ThreadPoolExecutor(given.workers) as pool:
        killers = list(pool.map(lambda item: killer(planted / "bin", item[0], item[1]), enumerate(chosen, 1)))
    show(chosen, killers)
    alive = [mutant.line() for mutant, by in zip(chosen, killers) if by is None]
    unargued = [line for line in alive if line not in argued()]
    print(f"\nalive: {len(alive)}, of which argued {len(alive) - len(unargued)}; the others:")
    print("\n".join(unargued) or "none")
    return bool(unargued)


if __name__ == "__main__":
    sys.exit(main())
