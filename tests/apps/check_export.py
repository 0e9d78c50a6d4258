#!/usr/bin/env python3
"""Exported models beside the program's own scores, over the trials of export_trials.py.

  check_export.py PROGRAM READER     one of the functions below that begin with "by_"

Every winner must be the same, every probability within the reader's tolerance. Exit code 77 where
what a reader needs is not there (make models; PostgreSQL is a system package).
"""

import csv
import importlib.util
import json
import math
import os
import pwd
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

from export_trials import trials

SKIPPED = 77


class Absent(Exception):
    """What a reader needs is not on this machine."""


def program(arguments, folder):
    result = subprocess.run([PROGRAM, *arguments], cwd=folder, capture_output=True, text=True)
    assert result.returncode == 0, (folder.name, arguments, result.stderr, result.stdout)
    return result.stdout


def table(path):
    with open(path, encoding="utf-8", newline="") as file:
        return list(csv.reader(file))


class Case:
    """A trial that the program has trained, exported and scored."""

    def __init__(self, trial, folder, ending):
        self.folder = folder / trial.name
        schema = trial.write(self.folder)
        program(["run", "--data", "train.csv", *schema, *trial.options, "-c", trial.command,
                 "--export", "model.json", "--save-state", "model.bin", "-o", "page.txt",
                 "--quiet"], self.folder)
        self.model = json.loads((self.folder / "model.json").read_text(encoding="utf-8"))
        state = "model.bin"
        if trial.curves:
            state = "edited.json"
            self.model["calibration"]["curves"] = trial.curves
            (self.folder / state).write_text(json.dumps(self.model))
        self.inputs = self.model["predictors"]
        self.classes = self.model["target"]["categories"]
        self.scored = ["score", "--data", "score.csv", *schema, "--only-new", "--id", "id",
                       "--quiet", "-o", "page.txt", "--force"]
        program([*self.scored, "--model", state, "--save-data", "own.csv"], self.folder)
        self.path = self.folder / f"model.{ending}"
        program(["export", state, "-o", self.path.name], self.folder)
        self.names, *self.rows = table(self.folder / "score.csv")
        self.own = [(self.class_of(row[1]), [float(p) for p in row[2:]])
                    for row in table(self.folder / "own.csv")[1:]]

    def class_of(self, cell):
        """A predicted value, as the model's own."""
        return cell if isinstance(self.classes[0], str) else float(cell)

    def is_text(self, entry):
        return "cutpoints" not in entry and isinstance(entry["categories"][0], str)

    def values(self, row):
        """What the predictors get of a row; None for nothing."""
        cells = dict(zip(self.names, row))
        for entry in self.inputs:
            cell = cells[entry["name"]]
            if cell == "":
                yield None
            else:
                yield cell if self.is_text(entry) else as_number(cell)

    def compare(self, scores, tolerance):
        """`scores`: a winner and the probabilities a case."""
        scores = list(scores)
        assert len(scores) == len(self.own), (self.folder.name, len(scores))
        worst = 0.0
        for row, (winner, own), (theirs, probabilities) in zip(self.rows, self.own, scores):
            assert len(own) == len(probabilities), (own, probabilities)
            far = max(abs(a - b) for a, b in zip(own, probabilities))
            assert far <= tolerance, (self.folder.name, row, own, probabilities)
            assert winner == theirs, (self.folder.name, row, winner, theirs, own)
            worst = max(worst, far)
        print(f"{self.folder.name}: {len(scores)} cases, at most {worst:.1e} apart")


def as_number(cell):
    """As a double, by way of the whole number that a table of whole numbers holds."""
    try:
        return float(int(cell))
    except ValueError:
        return float(cell)


# ---- JSON, C ------------------------------------------------------------------------------------

SCHEMA = Path(__file__).resolve().parent.parent.parent / "docs" / "model.schema.json"


def by_json(case):
    needed("jsonschema").validate(case.model, json.loads(SCHEMA.read_text(encoding="utf-8")))
    program([*case.scored, "--model", "model.json", "--save-data", "again.csv"], case.folder)
    own, again = ((case.folder / name).read_bytes() for name in ("own.csv", "again.csv"))
    assert own == again, "the model read back scores other bits"
    return case.own, 0


def c_value(value):
    if value is None:
        return None
    if isinstance(value, str):
        return '"' + "".join(f"\\{byte:03o}" for byte in value.encode()) + '"'
    return repr(value)


def by_c(case):
    absent = [("NULL" if case.is_text(entry) else "NAN") for entry in case.inputs]
    cases = ",\n".join(
        "{" + ", ".join(c_value(value) or none for value, none in zip(case.values(row), absent))
        + "}" for row in case.rows)
    (case.folder / "main.c").write_text(
        '#include "model.c"\n#include <math.h>\n#include <stdio.h>\n'
        f"static const struct predselect_case cases[] = {{{cases}}};\n"
        "int main(void) {\n  double p[CLASSES];\n  size_t i;\n  int k;\n"
        "  for (i = 0; i < sizeof cases / sizeof *cases; ++i) {\n"
        '    printf("%d", predselect_score(&cases[i], p));\n'
        '    for (k = 0; k < CLASSES; ++k) printf(" %.17g", p[k]);\n'
        '    puts("");\n  }\n  return 0;\n}\n')
    for source, more in (("model.c", ["-c", "-O2"]), ("main.c", ["-o", "main", "-lm"])):
        subprocess.run([os.environ.get("CC", "cc"), "-std=c99", "-Wall", "-Wextra", "-pedantic",
                        "-Werror", source, *more], cwd=case.folder, check=True)
    lines = subprocess.run(["./main"], cwd=case.folder, check=True, capture_output=True,
                           text=True).stdout.splitlines()
    scores = [(case.classes[int(line.split()[0])], [float(p) for p in line.split()[1:]])
              for line in lines]
    return scores, 1e-15


# ---- SQL ----------------------------------------------------------------------------------------

def quoted(name):
    return '"' + name.replace('"', '""') + '"'


def is_whole(cell):
    try:
        int(cell)
        return True
    except ValueError:
        return cell == ""


def created(case):
    """The statement that makes the table of the cases: whole numbers are such there, too."""
    kinds = {entry["name"]: "TEXT" if case.is_text(entry) else "DOUBLE PRECISION"
             for entry in case.inputs}
    for place, name in enumerate(case.names):
        if kinds.get(name) == "DOUBLE PRECISION" and all(is_whole(row[place]) for row in case.rows):
            kinds[name] = "BIGINT"
    kinds["id"] = "BIGINT"
    columns = ", ".join(f"{quoted(name)} {kinds.get(name, 'TEXT')}" for name in case.names)
    return f"CREATE TABLE data ({columns})"


def in_order(case, names, rows):
    """Winner and probabilities by the key, whatever order a database gave the rows in."""
    first, key = names.index("PredictedValue"), names.index("id")
    assert names[:first] == case.names, "the table's own columns come first"
    for row in sorted(rows, key=lambda row: int(row[key])):
        yield case.class_of(row[first]), [float(p) for p in row[first + 1:]]


def by_database(case, execute, insert):
    execute(created(case))
    marks = ", ".join("?" * len(case.names))
    insert(f"INSERT INTO data VALUES ({marks})",
           [[cell if cell != "" else None for cell in row] for row in case.rows])
    cursor = execute(case.path.read_text(encoding="utf-8"))
    return list(in_order(case, [d[0] for d in cursor.description], cursor.fetchall())), 1e-12


def by_sqlite(case):
    import sqlite3
    database = sqlite3.connect(":memory:")
    return by_database(case, database.execute, database.executemany)


def by_duckdb(case):
    duckdb = needed("duckdb")
    database = duckdb.connect(":memory:")
    return by_database(case, database.execute, database.executemany)


class Server:
    """A PostgreSQL server of its own, in a folder of its own, reached by a socket there."""

    def __init__(self):
        homes = sorted(Path("/usr/lib/postgresql").glob("*/bin/initdb"))
        self.bin = homes[-1].parent if homes else None
        if self.bin is None and shutil.which("initdb"):
            self.bin = Path(shutil.which("initdb")).parent
        if self.bin is None:
            raise Absent("PostgreSQL is not installed")
        self.folder = Path(tempfile.mkdtemp(prefix="pg"))
        self.user = None
        if os.geteuid() == 0:  # which the server refuses to run as
            self.user = next((name for name in ("postgres", "nobody") if has_user(name)), None)
            shutil.chown(self.folder, self.user)
        self.call("initdb", "-D", str(self.folder / "db"), "-U", "test", "-A", "trust",
                  "-E", "UTF8", "--no-locale", "--no-sync")
        self.call("pg_ctl", "-D", str(self.folder / "db"), "-w", "-l", str(self.folder / "log"),
                  "-o", f"-c listen_addresses='' -c fsync=off -k {self.folder}", "start")

    def call(self, name, *arguments):
        subprocess.run([str(self.bin / name), *arguments], check=True, user=self.user,
                       cwd=self.folder, stdout=subprocess.DEVNULL)

    def ask(self, script, given=""):
        return subprocess.run(
            [str(self.bin / "psql"), "-X", "-q", "-v", "ON_ERROR_STOP=1", "-h", str(self.folder),
             "-U", "test", "-d", "postgres", "-c", script], check=True, capture_output=True,
            text=True, input=given, env={**os.environ, "PGCLIENTENCODING": "UTF8"}).stdout

    def stop(self):
        self.call("pg_ctl", "-D", str(self.folder / "db"), "-m", "immediate", "stop")
        shutil.rmtree(self.folder)


def has_user(name):
    try:
        return pwd.getpwnam(name) is not None
    except KeyError:
        return False


def by_postgresql(case):
    server = shared(Server)
    server.ask("DROP TABLE IF EXISTS data")
    server.ask(created(case))
    server.ask("COPY data FROM STDIN WITH (FORMAT csv, HEADER)",
               (case.folder / "score.csv").read_text(encoding="utf-8"))
    query = case.path.read_text(encoding="utf-8")
    names, *rows = csv.reader(
        server.ask(f"COPY ({query}) TO STDOUT WITH (FORMAT csv, HEADER)").splitlines())
    return list(in_order(case, names, rows)), 1e-12


# ---- PMML, ONNX ---------------------------------------------------------------------------------

def needed(module):
    try:
        return __import__(module)
    except ImportError as error:
        raise Absent(f"{module} is not installed (make models)") from error


def java():
    if shutil.which("java") is None:
        raise Absent("Java is not installed")
    return needed("jpype")


def fields(case):
    return ["PredictedValue", *(f"PredictedProbability_{k + 1}" for k in range(len(case.classes)))]


def by_pypmml(case):
    java()
    model = needed("pypmml").Model.load(str(case.path))
    scores = []
    for row in case.rows:
        given = {entry["name"]: value for entry, value in zip(case.inputs, case.values(row))}
        result = model.predict(given)
        winner, *probabilities = (result[name] for name in fields(case))
        scores.append((case.class_of(winner), probabilities))
    return scores, 1e-9


class JavaMachine:
    def __init__(self):
        jpype, package = java(), importlib.util.find_spec("jpmml_evaluator")
        if package is None:
            raise Absent("jpmml_evaluator is not installed (make models)")
        jars = Path(package.submodule_search_locations[0]).glob("*/*.jar")
        jpype.startJVM(classpath=[str(jar) for jar in jars])
        self.call, self.object = jpype.JClass, jpype.JObject

    def stop(self):
        pass


def by_jpmml(case):
    machine = shared(JavaMachine)
    file = machine.call("java.io.File")(str(case.path))
    builder = machine.call("org.jpmml.evaluator.LoadingModelEvaluatorBuilder")()
    evaluator = builder.load(file).build()
    evaluator.verify()  # by the cases of the document
    inputs = {str(field.getName()): field for field in evaluator.getInputFields()}
    scores = []
    for row in case.rows:
        given = machine.call("java.util.LinkedHashMap")()
        for entry, value in zip(case.inputs, case.values(row)):
            value = machine.object(value, "java.lang.Object")
            given.put(entry["name"], inputs[entry["name"]].prepare(value))
        result = machine.call("org.jpmml.evaluator.EvaluatorUtil").decodeAll(
            evaluator.evaluate(given))
        winner, *probabilities = (result.get(name) for name in fields(case))
        winner = str(winner) if isinstance(case.classes[0], str) else float(winner)
        scores.append((winner, [float(p) for p in probabilities]))
    return scores, 1e-9


def by_onnxruntime(case):
    onnx, runtime, numpy = needed("onnx"), needed("onnxruntime"), needed("numpy")
    onnx.checker.check_model(onnx.load(str(case.path)), full_check=True)
    session = runtime.InferenceSession(str(case.path), providers=["CPUExecutionProvider"])
    columns = list(zip(*(case.values(row) for row in case.rows)))
    given = {}
    for entry, column in zip(case.inputs, columns):
        if case.is_text(entry):
            cells = numpy.array([value or "" for value in column], dtype=object)
        else:
            cells = numpy.array([math.nan if v is None else v for v in column], dtype=numpy.float64)
        given[entry["name"]] = cells.reshape(-1, 1)
    labels, probabilities = session.run(["label", "probabilities"], given)
    return list(zip(labels.tolist(), probabilities.tolist())), 1e-12


ENDINGS = {"json": "json", "c": "c", "sqlite": "sql", "duckdb": "sql", "postgresql": "sql",
           "pypmml": "pmml", "jpmml": "pmml", "onnxruntime": "onnx"}
SHARED = {}


def shared(kind):
    """One for all trials."""
    if kind not in SHARED:
        SHARED[kind] = kind()
    return SHARED[kind]


def main():
    global PROGRAM
    PROGRAM, reader = str(Path(sys.argv[1]).resolve()), sys.argv[2]
    wanted = sys.argv[3:]
    try:
        with tempfile.TemporaryDirectory() as folder:
            for trial in trials():
                if wanted and trial.name not in wanted:
                    continue
                if trial.readers is not None and reader not in trial.readers:
                    continue
                case = Case(trial, Path(folder), ENDINGS[reader])
                case.compare(*globals()["by_" + reader](case))
    except Absent as absent:
        print(f"check_export: {absent}")
        return SKIPPED
    finally:
        for entry in SHARED.values():
            entry.stop()
    return 0


if __name__ == "__main__":
    sys.exit(main())
