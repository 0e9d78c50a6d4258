#!/usr/bin/env python3
"""Changes the engines in small ways, one at a time, and looks whether a test fails.

  mutants.py BUILD [--count N] [--seed SEED] [--only PATH]

Draws N places in the sources of common/, feature/ and naivebayes/, and plants in a copy of the tree
(BUILD/mutants) a changed expression or statement beside each: a run of the tests has the one that
the environment variable MUTANT numbers, so all of them are compiled once. Each test is run once
without any, which tells the mutants that it reaches; a mutant is then tried on the tests that reach
it, the quick ones first: the engines' own, and those of model files and operations in BUILD, which load
a library with the mutants in place of theirs. It is killed when a test fails, crashes or does not
end. Those that no test kills are listed, each as

  file | its line, with what is changed in brackets | what the mutant has in its place

and are argued in tests/mutants/argued.txt, in the same words and with the reason behind a further
bar. Exit code 1 if one is not argued there. BUILD/mutants/results.json keeps what came of each.
"""

import argparse
import collections
import dataclasses
import hashlib
import json
import os
import re
import resource
import signal
import subprocess
import sys
import tempfile
import time
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

from finder import IF_CHOSEN, TOP, all_mutants, is_source

PLANTED = ("common_tests", "feature_tests", "naivebayes_tests")
# Programs of the build, over the library of the engines.
OTHERS = ("modelfiles_tests", "operations_tests")
MEMORY_LIMIT = 8 << 30
OUTCOMES = ("a test fails", "crash", "no end", "alive", "not reached")


def drawn(mutants, count, seed):
    """So many of them, none within another; most stay drawn when sources change."""
    same = collections.Counter()

    def rank(mutant):
        line = mutant.line()
        same[line] += 1
        return hashlib.sha256(f"{seed} {line} {same[line]}".encode()).digest()

    taken, chosen = collections.defaultdict(list), []
    for mutant in sorted(mutants, key=rank):
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


def numbered(tree, chosen):
    """The mutants from number 1 on. Those that are planted already keep theirs, which spares compiling."""
    before = collections.defaultdict(list)
    for mutant in sorted(chosen):
        if (mutant.file, mutant.form) not in before and (tree / mutant.file).exists():
            form = re.escape(mutant.form).replace(IF_CHOSEN, r"mutants::Is\((\d+)\)")
            text = (tree / mutant.file).read_text()
            before[mutant.file, mutant.form] = [int(found[1]) for found in re.finditer(form, text)]
    numbers, others = {}, []
    for mutant in sorted(chosen):
        planted = before[mutant.file, mutant.form]
        number = planted.pop(0) if planted else 0
        if 0 < number <= len(chosen) and number not in numbers:
            numbers[number] = mutant
        else:
            others.append(mutant)
    for number in range(1, len(chosen) + 1):
        if number not in numbers:
            numbers[number] = others.pop()
    return dict(sorted(numbers.items()))


def plant(tree, files, numbers):
    """A copy of the files, with the mutants in it."""
    changes = collections.defaultdict(list)
    for number, mutant in numbers.items():
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
    # An index beyond a vector's end is a crash, as it is in the suite under sanitizers.
    flags = ["-DCMAKE_BUILD_TYPE=Release", "-DPREDSELECT_BENCH=OFF", "-DCMAKE_CXX_FLAGS=-w",
             "-DCMAKE_CXX_FLAGS_RELEASE=-O1 -DNDEBUG -D_GLIBCXX_ASSERTIONS"]
    subprocess.run(["cmake", "-G", "Ninja", "-S", tree, "-B", build, *flags], check=True,
                   stdout=subprocess.DEVNULL)
    subprocess.run(["cmake", "--build", build, "-j", str(os.cpu_count()), "--target", *PLANTED,
                    "predselectengines", "--", "-k", "0"], check=True)


def limit(processor_seconds):
    resource.setrlimit(resource.RLIMIT_AS, (MEMORY_LIMIT, MEMORY_LIMIT))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    resource.setrlimit(resource.RLIMIT_CPU, (processor_seconds, processor_seconds + 1))


@dataclasses.dataclass(frozen=True)
class Test:
    """A test of the planted build, with the numbers of the mutants that it comes by."""
    name: str
    command: tuple
    folder: str
    libraries: str  # the folder of those to be loaded in place of the program's
    seconds: float = 0.0
    reached: frozenset = frozenset()

    def outcome(self, time_limit, **environment):
        """None where it passes. The limit is of the processor's seconds, as a busy machine is slow by the
        clock, which ends none but those that wait for nothing."""
        with tempfile.TemporaryDirectory() as folder:
            environment = dict(os.environ, TEST_TMPDIR=folder, TMPDIR=folder, LD_LIBRARY_PATH=self.libraries,
                               **environment)
            run = subprocess.Popen(self.command, env=environment, cwd=self.folder,
                                   preexec_fn=lambda: limit(time_limit), stdout=subprocess.DEVNULL,
                                   stderr=subprocess.DEVNULL, start_new_session=True)
            try:
                code = run.wait(5 * time_limit)
            except subprocess.TimeoutExpired:
                os.killpg(run.pid, signal.SIGKILL)
                run.wait()
                return "no end"
        return {0: None, 1: "a test fails", -signal.SIGXCPU: "no end"}.get(code, "crash")

    def recorded(self, count):
        """This test, run without a mutant; None where it cannot be run here."""
        with tempfile.NamedTemporaryFile() as reached:
            reached.write(bytes(count + 1))
            reached.flush()
            begin = time.monotonic()
            outcome = self.outcome(600, MUTANT="0", MUTANTS_REACHED=reached.name)
            seconds = time.monotonic() - begin
            numbers = frozenset(i for i, byte in enumerate(Path(reached.name).read_bytes()) if byte)
        if outcome is not None:
            print(f"left aside, as it fails without any mutant: {self.name}", flush=True)
            return None
        return dataclasses.replace(self, seconds=seconds, reached=numbers)


def listed(build, programs, libraries=""):
    """The tests of these programs of a build."""
    shown = subprocess.run(["ctest", "--show-only=json-v1"], cwd=build, capture_output=True, text=True, check=True)
    for test in json.loads(shown.stdout)["tests"]:
        command = test.get("command", [""])
        if Path(command[0]).name in programs:
            properties = {p["name"]: p["value"] for p in test["properties"]}
            yield Test(test["name"], tuple(command), properties["WORKING_DIRECTORY"], libraries)


def tried(tests, number, ended_by):
    """What the tests that reach the mutant make of it, and which one ends it.

    The one that did the last time is the first to be tried.
    """
    mine = [test for test in tests if number in test.reached]
    mine.sort(key=lambda test: test.name != ended_by)
    for test in mine:
        outcome = test.outcome(20 + int(10 * test.seconds), MUTANT=str(number))
        if outcome:
            return outcome, test.name
    return ("alive" if mine else "not reached"), ""


def show(chosen, outcomes):
    tally = collections.defaultdict(collections.Counter)
    for mutant, outcome in zip(chosen, outcomes):
        for row in (mutant.kind.replace("|", r"\|"), "all"):
            tally[row][outcome] += 1
    print(f"| change | planted | {' | '.join(OUTCOMES)} |\n| --- |{' ---: |' * (len(OUTCOMES) + 1)}")
    for row in [*sorted(tally.keys() - {"all"}), "all"]:
        print(f"| {row} | {tally[row].total()} | {' | '.join(str(tally[row][o]) for o in OUTCOMES)} |")


def argued():
    lines = (TOP / "tests/mutants/argued.txt").read_text().splitlines()
    return {line.rpartition(" | ")[0] for line in lines if line and not line.startswith("#")}


def chosen_of(given, build, files):
    mutants = all_mutants(build, [file for file in files if file.startswith(given.only)])
    chosen = drawn(mutants, given.count, given.seed)
    print(f"mutants: {len(chosen)} of {len(mutants)} possible", flush=True)
    return chosen


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("build", type=Path, help="a configured build")
    parser.add_argument("--count", type=int, default=500)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--only", default="", help="sources whose path begins so")
    parser.add_argument("--workers", type=int, default=os.cpu_count())
    given = parser.parse_args()
    build = given.build.resolve(strict=True)
    tracked = subprocess.run(["git", "ls-files"], cwd=TOP, capture_output=True, text=True, check=True)
    files = tracked.stdout.splitlines()
    chosen = chosen_of(given, build, files)
    tree, planted = build / "mutants" / "tree", build / "mutants" / "build"
    numbers = numbered(tree, chosen)
    plant(tree, files, numbers)
    compile_tests(tree, planted)
    results = build / "mutants" / "results.json"
    before = {line: test for line, _, test in json.loads(results.read_text())} if results.exists() else {}
    with ThreadPoolExecutor(given.workers) as pool:
        wanted = [*listed(planted, PLANTED), *listed(build, OTHERS, str(planted / "lib"))]
        recorded = pool.map(lambda test: test.recorded(len(chosen)), wanted)
        tests = sorted(filter(None, recorded), key=lambda test: test.seconds)
        print(f"tests: {len(tests)}, {sum(test.seconds for test in tests):.0f} seconds", flush=True)
        found = list(pool.map(lambda number: tried(tests, number, before.get(numbers[number].line())), numbers))
    outcomes = [outcome for outcome, _ in found]
    results.write_text(json.dumps([[m.line(), *ending] for m, ending in zip(numbers.values(), found)], indent=0))
    show(numbers.values(), outcomes)
    alive = [m.line() for m, outcome in zip(numbers.values(), outcomes) if outcome in ("alive", "not reached")]
    unargued = [line for line in alive if line not in argued()]
    print(f"\nalive: {len(alive)}, of which argued {len(alive) - len(unargued)}; the others:")
    print("\n".join(unargued) or "none")
    told = {m.line() for m in numbers.values()} & argued() - set(alive)
    print("\n".join(["argued, but a test tells them:", *sorted(told)]) if told else "")
    return bool(unargued)


if __name__ == "__main__":
    sys.exit(main())
