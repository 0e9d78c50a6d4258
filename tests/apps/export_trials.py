"""Eighteen models that are hard to say elsewhere, each with cases to score: trials for exported models.

Every trial gives a table to train on, one to score, and what makes the model of the first. The
tables to score hold missing cells, new categories, values out of range and on cutpoints.
"""

import csv
import json
import random
from pathlib import Path

DATA = Path(__file__).resolve().parent.parent.parent / "data"
CASES = 120  # to score
ALL_BUT_PMML = ("json", "c", "sqlite", "duckdb", "postgresql", "onnxruntime")


class Trial:
    def __init__(self, name, train, score, command, schema=None, options=(), readers=None,
                 curves=None):
        self.name, self.train, self.score = name, train, score
        self.command, self.schema, self.options = command, schema, options
        self.readers = readers  # None: all
        self.curves = curves  # in place of those that the model has

    def write(self, folder):
        """The two tables, and the options that the program reads both with."""
        folder.mkdir()
        write(folder / "train.csv", self.train)
        write(folder / "score.csv", self.score)
        if self.schema is None:
            return []
        fields = [{"name": name, "type": "string" if name in ("c", "y") else "number",
                   **self.schema.get(name, {})} for name in self.train[0]]
        (folder / "schema.json").write_text(json.dumps({"fields": fields}))
        return ["--schema", "schema.json"]


def write(path, rows):
    with open(path, "w", encoding="utf-8", newline="") as file:
        writer = csv.DictWriter(file, list(rows[0]), quoting=csv.QUOTE_MINIMAL)
        writer.writeheader()
        writer.writerows(rows)


def numbered(rows):
    """With a key, which no model takes."""
    return [{"id": str(i), **row} for i, row in enumerate(rows)]


def rows_of(draw, n, seed):
    """n rows of what `draw` makes of a generator."""
    chance = random.Random(seed)
    return [draw(chance) for _ in range(n)]


def shaken(rows, seed, new="nowhere"):
    """Cases to score: cells left out, and values that training did not meet."""
    chance = random.Random(seed)
    made = []
    for row in chance.choices(rows, k=CASES):
        row = dict(row)
        for name, cell in row.items():
            if chance.random() < 0.12:
                row[name] = ""
            elif cell != "" and chance.random() < 0.06:
                row[name] = chance.choice(["-7", "12345"]) if is_number(cell) else new
        made.append(row)
    made[0] = dict.fromkeys(made[0], "")  # nothing to go by
    return numbered(made)


def is_number(cell):
    try:
        float(cell)
        return True
    except ValueError:
        return False


def read(name):
    with open(DATA / name, encoding="utf-8", newline="") as file:
        return list(csv.DictReader(file))


def simple(name, draw, command, seed, n=400, **more):
    rows = rows_of(draw, n, seed)
    return Trial(name, rows, more.pop("score", None) or shaken(rows, seed + 1), command, **more)


def zero_cells(chance):
    y = chance.choice(["a", "b", "c"])
    return {"y": y, "f": y if chance.random() < 0.5 else "other",
            "g": chance.choice(["1", "2"]) if y == "a" else "2",
            "x": str(round({"a": 0, "b": 5, "c": 9}[y] + chance.random(), 2))}


def missing(chance):
    y = chance.choice(["no", "yes"])
    return {"y": y, "f": chance.choice(["", "", y, "u"]), "g": chance.choice(["", "p", "q"]),
            "x": chance.choice(["", str(round(chance.gauss(y == "yes", 1), 1))])}


def warm(chance):
    """With categories that are numbers."""
    row = missing(chance)
    return {**row, "h": chance.choice(["", "1", "2", "2.5" if row["y"] == "yes" else "0"])}


def unseen(chance):
    """Some categories are there in cases that do not train the model, alone."""
    trains = chance.random() < 0.6
    y = chance.choice(["a", "b", "c"])
    f = chance.choice(["k", "l", y]) if trains else chance.choice(["k", "m", "n", y])
    return {"y": y, "f": f, "g": chance.choice("uvw") if trains else chance.choice("uvwz"),
            "t": str(int(trains))}


def census(chance):
    rich = chance.random() < 0.25
    return {"income": ">50K" if rich else "<=50K",
            "age": str(min(90, max(17, int(chance.gauss(44 if rich else 36, 12))))),
            "workclass": chance.choice(["Private", "Private", "State-gov", "Self-emp-inc", ""]),
            "fnlwgt": str(int(chance.lognormvariate(12, 0.5))),
            "education": chance.choice(["HS-grad", "Bachelors", "Masters" if rich else "11th"]),
            "education-num": str(chance.randint(9 if rich else 3, 16)),
            "capital-gain": str(chance.choice([0, 0, 0, 0, chance.randint(100, 99999)])),
            "hours-per-week": str(max(1, int(chance.gauss(46 if rich else 39, 9)))),
            "sex": chance.choice(["Male", "Male", "Female"])}


NAMES = {"f": "a<b & \"c\" 'd' >e", "g": "select; --", "x": "größe ]]> \\", "y": "who's \"it\""}


def special(chance):
    y = chance.choice(["<yes> & 'no'", "\"no\"; drop table data", "ümläut\\n", "*/ /* ??/"])
    return {NAMES["y"]: y, NAMES["f"]: chance.choice(["'", "\"", "<&>", "??=", y]),
            NAMES["g"]: chance.choice(["a\\", "{}%s", "日本", y]),
            NAMES["x"]: str(round(chance.gauss(len(y), 3), 2))}


def weighted(chance):
    y = chance.choice(["a", "b"])
    x = round(chance.gauss(y == "a", 2), 2)
    return {"y": y, "w": str(chance.choice([1, 2, 5, 0])), "c": chance.choice(["p", "q", "DK", y]),
            "x": str(chance.choice([x, x, 97, 98.5, 99])),
            "z": str(chance.choice([-1, x, 3, 2 * x]))}


RANGES = {"y": {}, "c": {"missingValues": ["DK", ""]}, "x": {"missingValues": ["97..99", ""]},
          "z": {"missingValues": ["-1", "2.5..3", ""]}}


def weighted_cases():
    rows = rows_of(weighted, CASES, 17)
    for row, x in zip(rows, ["97", "96.99", "99", "99.01", "98", "1e6", "-1e6", ""]):
        row["x"] = x
    for row, z in zip(rows, ["2.5", "2.4999999", "3", "3.000001", "-1", "-1.0000001", "", ""]):
        row["z"] = z
    return numbered(rows)


def decimals(chance):
    y = chance.choice(["a", "b", "c"])
    return {"y": y, "x": str(round(chance.randint(0, 10) / 10, 1)),
            "z": str(round(0.1 * min(30, max(0, int(chance.gauss(ord(y) - 85, 6)))), 1)),
            "u": str(chance.choice([0.1, 0.2, 0.30000000000000004, 0.3, 1 / 3]))}


def epochs(chance):
    y = chance.choice(["a", "b"])
    t = 1700000000000 + chance.randint(0, 9) * 8640000000
    return {"y": y, "t": str(t + (y == "a") * chance.randint(0, 40000000000)),
            "day": str(1700000000000 + chance.randint(0, 4 + (y == "a")) * 86400000)}


def large(chance):
    y = chance.choice([9007199254740993, 9007199254740995, 3])
    return {"y": str(y), "k": str(2**53 + chance.randint(0, 3) * 2 + (y == 3) * 4),
            "half": str(chance.choice([2147483648, 2147483649.5, 4294967297, y % 7])),
            "x": str(2**62 + chance.randint(0, 2**60) * (1 + y % 2))}


def extreme(chance):
    y = chance.choice(["a", "b", "c"])
    return {"y": y, "x": repr(chance.uniform(1, 9) * 10.0 ** (299 + (y == "a"))),
            "z": repr(chance.uniform(1, 9) * 10.0 ** (-300 - (y == "b"))),
            "k": repr(chance.choice([1.7e308, 3.3333333333333333e-300, 4.9e-324, -1e300]))}


# Levels that classes share, and none above 0; a step as small as numbers get.
TIED = [{"posteriors": [0, 1e-300, 0.2, 0.3, 0.9, 1], "probabilities": [0, 0, 0, 0.25, 0.25, 0.5]},
        {"posteriors": [0.1, 0.4, 0.6, 0.7], "probabilities": [0, 0.25, 0.25, 0.5]},
        {"posteriors": [0.3, 0.31, 0.999], "probabilities": [0, 0.25, 0.25]}]


def trials():
    penguins, biopsies = read("penguins.csv"), read("biopsies.csv")
    all_in = "/SUBSET NOSELECTION"
    return [
        simple("zero_cells", zero_cells, f"NAIVEBAYES y BY f g WITH x {all_in}.", 1),
        simple("missing", missing, f"NAIVEBAYES y BY f g WITH x {all_in}.", 3),
        simple("unseen", unseen,
               f"NAIVEBAYES y BY f g {all_in} /TRAININGSAMPLE VARIABLE=t.", 5),
        Trial("penguins", penguins, shaken(penguins, 7), "NAIVEBAYES species."),
        simple("census", census, "NAIVEBAYES income.", 8, n=2000),
        Trial("biopsies", biopsies, shaken(biopsies, 9), f"NAIVEBAYES diagnosis {all_in}."),
        simple("names", special, 'NAIVEBAYES "who\'s ""it""" %s.' % all_in, 11),
        simple("weighted", weighted, f"NAIVEBAYES y BY c WITH x z {all_in}.", 13,
               score=weighted_cases(), schema=RANGES, options=("--weight", "w")),
        simple("decimals", decimals, f"NAIVEBAYES y BY u WITH x z {all_in}.", 15),
        simple("epochs", epochs, f"NAIVEBAYES y BY day WITH t {all_in}.", 19),
        simple("large", large, f"NAIVEBAYES y BY k half WITH x {all_in}.", 21),
        Trial("too_sure", biopsies, shaken(biopsies, 25), f"NAIVEBAYES diagnosis {all_in}.",
              options=("--calibrate", "temperature")),
        simple("warm", warm, f"NAIVEBAYES y BY f g h WITH x {all_in}.", 27,
               options=("--calibrate", "temperature")),
        simple("curves", missing, f"NAIVEBAYES y BY f g WITH x {all_in}.", 29,
               options=("--calibrate", "isotonic"), readers=ALL_BUT_PMML),
        simple("curves_of_three", unseen, f"NAIVEBAYES y BY f g {all_in}.", 31,
               options=("--calibrate", "isotonic"), readers=ALL_BUT_PMML),
        simple("tied_curves", zero_cells, f"NAIVEBAYES y BY f g WITH x {all_in}.", 35,
               options=("--calibrate", "isotonic"), readers=ALL_BUT_PMML, curves=TIED),
        Trial("steep", biopsies, shaken(biopsies, 33), f"NAIVEBAYES diagnosis {all_in}.",
              options=("--calibrate", "isotonic"), readers=ALL_BUT_PMML),
        simple("extreme", extreme, f"NAIVEBAYES y BY k WITH x z {all_in}.", 23),
    ]
