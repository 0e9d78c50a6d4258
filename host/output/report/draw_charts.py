"""Draws Vega-Lite documents: [{"path", "spec"}] on standard input become path.svg and path.png, each
whole or not at all. Exit code 3: the package vl-convert-python is not there."""

import json
import os
import sys

try:
    import vl_convert
except ImportError:
    sys.exit(3)


def write(path: str, content: bytes) -> None:
    with open(path + ".new", "wb") as file:
        file.write(content)
    os.replace(path + ".new", path)


for chart in json.load(sys.stdin):
    write(chart["path"] + ".svg", vl_convert.vegalite_to_svg(chart["spec"]).encode())
    write(chart["path"] + ".png", vl_convert.vegalite_to_png(chart["spec"], scale=2))
