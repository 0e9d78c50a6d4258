#!/usr/bin/env python3
"""Compares the program's statistics with reference.json, which make_reference.py computes by routes
of its own.

Statistics agree to 1e-9 relative. A p-value is the complement of a probability, so it agrees to 1e-9
relative or 1e-14 absolute.

  check_reference.py PROGRAM
"""

import json
import subprocess
import sys
from pathlib import Path

HERE = Path(__file__).resolve().parent
DATA = HERE.parents[1] / "data"


def command_of(run):
    text = f"SELECTPRED {run['target']} (MLEVEL={'N' if run['categorical'] else 'S'})"
    for word, names in (("BY", run["factors"]), ("WITH", run["covariates"])):
        if names:
            text += f" {word} " + " ".join(names)
    text += "\n /SCREENING STATUS=OFF /CRITERIA SHOWUNSELECTED=99"
    if run["categorical"] and run["factors"]:
        extra = "" if run["covariates"] else " CRAMERSV LAMBDA"
        text += f"\n /PRINT SUMMARY(PEARSONCHISQ LRCHISQ{extra})"
    return text + "."


def cells_of(program, run):
    """(predictor, statistic group or "", statistic) -> value, of the predictor summary."""
    arguments = [program, "run", "--data", str(DATA / run["data"]), "--format", "json", "--quiet",
                 "-c", command_of(run)]
    if run["weight"]:
        arguments += ["--weight", run["weight"]]
    result = subprocess.run(arguments, capture_output=True, text=True, check=False)
    if result.returncode != 0:
        raise SystemExit(f"{run['name']}: exit code {result.returncode}\n{result.stderr}")
    tables = json.loads(result.stdout)["runs"][0]["tables"]
    table = next(table for table in tables if table["subtype"] == "PredictorSummary")
    return {(cell["row"][-1], cell["column"][-2] if len(cell["column"]) > 1 else "",
             cell["column"][-1]): cell["value"] for cell in table["cells"]}


def agrees(statistic, seen, expected):
    if seen is None:
        return False
    gap = abs(seen - expected)
    return gap <= 1e-9 * abs(expected) or (statistic == "Unadjusted Sig." and gap <= 1e-14)


def check(program, run):
    cells = cells_of(program, run)
    problems, compared = [], 0
    for predictor, groups in run["statistics"].items():
        for group, statistics in groups.items():
            for statistic, expected in statistics.items():
                # With one kind of predictor and a scale target, rank and p-value stand alone.
                place = next((key for key in ((predictor, group, statistic),
                                              (predictor, "", statistic)) if key in cells), None)
                compared += 1
                if place is None:
                    problems.append(f"{run['name']}: no cell for {predictor}, {group}, {statistic}")
                elif not agrees(statistic, cells[place], expected):
                    problems.append(f"{run['name']}: {predictor}, {group}, {statistic}: "
                                    f"{cells[place]!r}, expected {expected!r}")
    return problems, compared


def main():
    problems, compared = [], 0
    for run in json.loads((HERE / "reference.json").read_text(encoding="utf-8")):
        found, count = check(sys.argv[1], run)
        problems += found
        compared += count
    print("\n".join(problems) or f"{compared} statistics agree")
    return 1 if problems or not compared else 0


if __name__ == "__main__":
    sys.exit(main())
