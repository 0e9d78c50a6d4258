#!/usr/bin/env python3
"""Draws what bench/engine_curves.cpp measures: a panel for each of its sizes, time against size.

  bench/plot_curves.py build/release/bin/engine_curves docs/performance.svg [--keep FILE]

Both axes are logarithmic: a line of slope 1 (dashed) is time in proportion. --keep writes the
numbers to FILE; given a file of numbers in place of the program, that is drawn.
"""

import math
import os
import subprocess
import sys
from pathlib import Path

PANELS = {"cases": "cases (20 predictors)", "predictors": "predictors (1,000 cases)",
          "categories": "categories of a predictor (1e6 cases)", "threads": "threads (1e6 cases)"}
COLOURS = ("#1b6ca8", "#c1561c", "#3c8d40", "#7b4fa3")
WIDTH, HEIGHT, LEFT, TOP, GAP = 300, 210, 52, 30, 78


def measure(source):
    """{panel: {curve: [(size, seconds)]}}, and the lines as they were printed."""
    if os.access(source, os.X_OK):
        printed = subprocess.run([source], capture_output=True, check=True, text=True).stdout
    else:
        printed = Path(source).read_text(encoding="utf-8")
    panels = {}
    for line in printed.splitlines():
        panel, curve, size, seconds = line.split("\t")
        panels.setdefault(panel, {}).setdefault(curve, []).append((float(size), float(seconds)))
    return panels, printed


def shown(exponent):
    return {-6: "1 µs", -5: "10 µs", -4: "0.1 ms", -3: "1 ms", -2: "10 ms", -1: "0.1 s", 0: "1 s",
            1: "10 s", 2: "100 s"}.get(exponent, f"1e{exponent} s")


def text(x, y, words, anchor="middle", colour="#333"):
    return f'<text x="{x:.1f}" y="{y:.1f}" text-anchor="{anchor}" fill="{colour}">{words}</text>'


class Axis:
    """Places of numbers between the powers of ten (of two: threads) around them."""

    def __init__(self, values, length, base=10.0):
        self.base, self.length = base, length
        logs = [math.log(value, base) for value in values]
        self.low, self.high = math.floor(min(logs) + 1e-9), math.ceil(max(logs) - 1e-9)
        self.high = max(self.high, self.low + 1)

    def place(self, value):
        return (math.log(value, self.base) - self.low) / (self.high - self.low) * self.length

    def ticks(self):
        return range(self.low, self.high + 1)


def draw_panel(panel, curves, left, top):
    points = [point for curve in curves.values() for point in curve]
    across = Axis([size for size, _ in points], WIDTH, 2.0 if panel == "threads" else 10.0)
    up = Axis([seconds for _, seconds in points], HEIGHT)
    parts = [f'<g transform="translate({left} {top})">',
             text(WIDTH / 2, -10, f"seconds by {PANELS[panel]}", colour="#000")]
    for tick in across.ticks():
        x = across.place(across.base ** tick)
        number = f"{across.base ** tick:.0f}" if across.base == 2 or tick < 4 else f"1e{tick}"
        parts += [f'<path class="grid" d="M{x:.1f} 0V{HEIGHT}"/>', text(x, HEIGHT + 14, number)]
    for tick in up.ticks():
        y = HEIGHT - up.place(10.0 ** tick)
        parts += [f'<path class="grid" d="M0 {y:.1f}H{WIDTH}"/>', text(-5, y + 4, shown(tick), "end")]
    first = min(across.base ** t for t in across.ticks())
    slope = (-1 if panel == "threads" else 1) * math.log10(across.base)
    rise = slope * (across.high - across.low) / (up.high - up.low) * HEIGHT
    start = HEIGHT - up.place(max(s for n, s in points if n == min(p[0] for p in points)))
    end = min(max(start - rise, 0), HEIGHT)
    width = WIDTH * ((start - end) / rise if rise else 1)
    parts.append(f'<path class="slope" d="M{across.place(first):.1f} {start:.1f}L{width:.1f} {end:.1f}"/>')
    for colour, (curve, measured) in zip(COLOURS, curves.items()):
        places = [(across.place(n), HEIGHT - up.place(s)) for n, s in measured]
        line = "L".join(f"{x:.1f} {y:.1f}" for x, y in places)
        parts.append(f'<path fill="none" stroke="{colour}" stroke-width="1.8" d="M{line}"/>')
        parts += [f'<circle cx="{x:.1f}" cy="{y:.1f}" r="2.6" fill="{colour}"/>' for x, y in places]
    for row, (colour, curve) in enumerate(zip(COLOURS, curves)):
        y = HEIGHT + 32 + 14 * (row // 2)
        x = 150 * (row % 2)
        parts += [f'<path stroke="{colour}" stroke-width="3" d="M{x} {y - 4}h16"/>',
                  text(x + 21, y, curve, "start")]
    return parts + ["</g>"]


def draw(panels):
    width = 2 * (WIDTH + GAP)
    height = 2 * (HEIGHT + TOP + 56)
    parts = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" '
             'font-family="sans-serif" font-size="11">',
             "<style>.grid{stroke:#ddd;fill:none}.slope{stroke:#999;stroke-dasharray:4 3}</style>",
             f'<rect width="{width}" height="{height}" fill="#fff"/>']
    for place, (panel, curves) in enumerate(panels.items()):
        parts += draw_panel(panel, curves, LEFT + place % 2 * (WIDTH + GAP),
                            TOP + place // 2 * (HEIGHT + TOP + 56))
    return "\n".join(parts + ["</svg>"]) + "\n"


def main():
    panels, printed = measure(sys.argv[1])
    Path(sys.argv[2]).write_text(draw(panels), encoding="utf-8")
    if len(sys.argv) > 4:
        Path(sys.argv[4]).write_text(printed, encoding="utf-8")


if __name__ == "__main__":
    main()
