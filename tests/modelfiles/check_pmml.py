#!/usr/bin/env python3
"""Scores a model document in an independent evaluator and compares it with our predictions.

check_pmml.py MODEL.xml DATA.csv PREDICTIONS.csv [DIGITS]

DATA holds the model's inputs by name, an empty cell for a missing value. PREDICTIONS holds, for the
same cases, the predicted class and then one probability per class, in the order of the document.
DIGITS (default 12): how many decimals of the probabilities are to be trusted.

Two scores are computed from the document alone: ours, with smoothed counts, must be PREDICTIONS;
the standard's, with plain counts and the threshold for a count left out, must be the evaluator's.
The winners must agree wherever no count left out is met, except where smoothing decides a tie.

Exit code 77 when the evaluator or Java is not there.
"""

import csv
import shutil
import struct
import sys
import xml.etree.ElementTree as ElementTree

SKIPPED = 77
NS = {"p": "http://www.dmg.org/PMML-4_3"}


class Field:
    """A data field: how a cell of the data is read."""

    def __init__(self, element):
        self.name = element.get("name")
        self.text = element.get("dataType") == "string"
        self.missing = {self.value(v.get("value")) for v in element.findall("p:Value", NS)
                        if v.get("property") == "missing"}

    def value(self, cell):
        return cell if self.text else float(cell)

    def read(self, cell):
        """The value of a cell; None when it is empty or declared missing."""
        if cell == "":
            return None
        value = self.value(cell)
        return None if value in self.missing else value


class Input:
    """One predictor: its bins, and the count of each of its categories by target category."""

    def __init__(self, element, field, classes):
        self.field = field
        cuts = element.findall("p:DerivedField/p:Discretize/p:DiscretizeBin/p:Interval", NS)
        self.cuts = [float(i.get("rightMargin")) for i in cuts[:-1]] if cuts else None
        self.counts = {}
        for pair in element.findall("p:PairCounts", NS):
            counts = {t.get("value"): float(t.get("count"))
                      for t in pair.findall("p:TargetValueCounts/p:TargetValueCount", NS)}
            value = pair.get("value")
            key = float(value) if self.cuts is not None else field.value(value)
            self.counts[key] = [counts.get(c, 0.0) for c in classes]
        self.totals = [sum(column) for column in zip(*self.counts.values())]

    def category(self, value):
        if value is None or self.cuts is None:
            return value
        return float(sum(cut < value for cut in self.cuts))


class Document:
    def __init__(self, path):
        root = ElementTree.parse(path).getroot()
        self.fields = {f.get("name"): Field(f) for f in root.iterfind(".//p:DataField", NS)}
        model = root.find("p:NaiveBayesModel", NS)
        self.threshold = float(model.get("threshold"))
        self.target_name = model.find("p:BayesOutput", NS).get("fieldName")
        self.target = self.fields[self.target_name]
        output = model.findall("p:BayesOutput/p:TargetValueCounts/p:TargetValueCount", NS)
        self.classes = [t.get("value") for t in output]
        self.class_counts = [float(t.get("count")) for t in output]
        self.inputs = [Input(e, self.fields[e.get("fieldName")], self.classes)
                       for e in model.findall("p:BayesInputs/p:BayesInput", NS)]

    def smoothed(self, categories):
        """Our probabilities: (N(m,k) + a) / (T(k) + M a) by a = 1/N, the priors likewise."""
        a = self.threshold
        used = sum(count > 0 for count in self.class_counts)
        joint = [(count + a) / (1 / a + used * a) for count in self.class_counts]
        for entry, category in zip(self.inputs, categories):
            if category is None:
                continue
            row, m = entry.counts[category], len(entry.counts)
            joint = [j * (n + a) / (t + m * a) for j, n, t in zip(joint, row, entry.totals)]
        return normalised(joint)

    def standard(self, categories):
        """The standard's probabilities; and whether a count left out was met."""
        joint, left_out = list(self.class_counts), False
        for entry, category in zip(self.inputs, categories):
            if category is None:
                continue
            row = entry.counts[category]
            left_out = left_out or 0.0 in row
            joint = [j * (n / t if n > 0 else self.threshold)
                     for j, n, t in zip(joint, row, entry.totals)]
        return normalised(joint), left_out


def normalised(values):
    total = sum(values)
    return [value / total for value in values]


def single(value):
    """A number in single precision, the type that the document declares."""
    return struct.unpack("f", struct.pack("f", value))[0]


def near_cut(entry, value):
    return (entry.cuts is not None and value is not None
            and entry.category(value) != entry.category(single(value)))


def evaluator(path):
    if shutil.which("java") is None:
        return None
    try:
        from pypmml import Model
    except ImportError:
        return None
    return Model.load(path)


def check(condition, message):
    if not condition:
        sys.exit(f"check_pmml: {message}")


def differ(a, b):
    return max(abs(x - y) for x, y in zip(a, b))


def check_case(document, model, row, prediction, tolerance):
    """Compares one case; returns whether it met no count left out."""
    values = {i.field.name: i.field.read(row[i.field.name]) for i in document.inputs}
    if any(near_cut(i, values[i.field.name]) for i in document.inputs):
        return False
    categories = [i.category(values[i.field.name]) for i in document.inputs]
    winner, *ours = prediction
    ours = [float(p) for p in ours]
    check(differ(ours, document.smoothed(categories)) <= tolerance,
          f"{row}: our probabilities {ours} are not {document.smoothed(categories)}")
    given = {name: document.fields[name].value(cell) if cell else None
             for name, cell in row.items() if name in values}
    result = model.predict(given)
    theirs = [result[f"probability_{c}"] for c in document.classes]
    standard, left_out = document.standard(categories)
    check(differ(theirs, standard) <= 1e-9, f"{row}: the evaluator says {theirs}, not {standard}")
    predicted = result[f"predicted_{document.target_name}"]
    same = document.target.value(predicted) == document.target.value(winner)
    first, second = sorted(theirs)[:-3:-1]
    tie = first - second <= 2 * differ(ours, theirs)
    check(left_out or same or tie,
          f"{row}: we predict {winner}, the evaluator {predicted}")
    return not left_out


def main():
    path, data, predictions = sys.argv[1:4]
    tolerance = 10.0 ** -int(sys.argv[4]) if len(sys.argv) > 4 else 1e-12
    model = evaluator(path)
    if model is None:
        print("check_pmml: the evaluator is not installed (make models)")
        return SKIPPED
    document = Document(path)
    with open(data, encoding="utf-8") as a, open(predictions, encoding="utf-8") as b:
        rows, predicted = list(csv.DictReader(a)), list(csv.reader(b))[1:]
    check(len(rows) == len(predicted) > 0, "cases and predictions differ in number")
    plain = sum(check_case(document, model, row, prediction, tolerance)
                for row, prediction in zip(rows, predicted))
    check(plain > len(rows) / 10, "hardly any case is without a count left out")
    print(f"{len(rows)} cases agree, {plain} of them without any count left out")
    return 0


if __name__ == "__main__":
    sys.exit(main())
