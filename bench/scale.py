#!/usr/bin/env python3
"""What work over parts costs, by the CPU seconds of all its processes per 10^9 cells (cases x predictors), and how
large its pieces are: the measured slopes of docs/scale.md.

    bench/scale.py PROGRAM [--rows N] [--parts N]
"""

import argparse
import os
import random
import resource
import subprocess
import tempfile
from pathlib import Path

TEXTS = NUMBERS = 15
WORDS = [f"word {i}" for i in range(11)]


def write_parts(folder: Path, rows: int, parts: int) -> None:
    chance = random.Random(16)
    header = ",".join(["y", *(f"t{j}" for j in range(TEXTS)), *(f"x{j}" for j in range(NUMBERS))])
    for part in range(parts):
        with (folder / f"{part:03}.csv").open("w", encoding="utf-8") as file:
            file.write(header + "\n")
            for _ in range(rows // parts):
                u = [chance.random() for _ in range(TEXTS + NUMBERS)]
                score = sum(u[:8]) + sum(u[TEXTS:TEXTS + 8]) + 3 * chance.random()
                cells = ["abc"[min(2, max(0, int((score - 7) / 1.7)))], *(WORDS[int(11 * v)] for v in u[:TEXTS]),
                         *(f"{v:.4f}" for v in u[TEXTS:])]
                file.write(",".join(cells) + "\n")


def cpu_seconds() -> float:
    used = resource.getrusage(resource.RUSAGE_CHILDREN)
    return used.ru_utime + used.ru_stime


def processor() -> str:
    lines = Path("/proc/cpuinfo").read_text(encoding="utf-8").splitlines()
    names = [line.split(":", 1)[1].strip() for line in lines if line.startswith("model name")]
    return f"{names[0] if names else 'unknown'}, {os.cpu_count()} processors"


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__.split("\n", 1)[0])
    parser.add_argument("program")
    parser.add_argument("--rows", type=int, default=400_000)
    parser.add_argument("--parts", type=int, default=8)
    asked = parser.parse_args()
    cells = asked.rows * (TEXTS + NUMBERS)
    with tempfile.TemporaryDirectory() as name:
        data, other = Path(name) / "parts", Path(name)
        data.mkdir()
        write_parts(data, asked.rows, asked.parts)
        first = str(data / "000.csv")
        ranges, rank, model = (str(other / f"{kind}.bin") for kind in ("ranges", "rank", "model"))
        all_of = "NAIVEBAYES y /SUBSET NOSELECTION /PRINT NONE."
        print(f"{asked.rows} cases of {TEXTS} texts and {NUMBERS} numbers in {asked.parts} parts; {processor()}")
        for title, line, share in (
                ("ranges of a part", ["range", first, "-o", ranges], asked.parts),
                ("counts of a part, SELECTPRED", ["run", first, "--using", ranges, "--part", "0", "-c",
                                                  "SELECTPRED y.", "--save-state", rank], asked.parts),
                ("counts of a part, NAIVEBAYES", ["run", first, "--using", ranges, "--part", "0", "-c", all_of,
                                                  "--save-state", model], asked.parts),
                ("rank, one process", ["rank", str(data), "y"], 1),
                ("rank --jobs 2", ["rank", str(data), "y", "--jobs", "2"], 1),
                ("model, one process", ["model", str(data), "y"], 1),
                ("model --jobs 2", ["model", str(data), "y", "--jobs", "2"], 1)):
            before = cpu_seconds()
            subprocess.run([asked.program, *line], check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
            print(f"{title:<32}{(cpu_seconds() - before) * share / cells * 1e9:8.1f} CPU s per 10^9 cells")
        for path in (ranges, rank, model):
            print(f"{Path(path).stem:<32}{Path(path).stat().st_size:8} bytes")


if __name__ == "__main__":
    main()
