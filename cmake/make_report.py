#!/usr/bin/env python3
"""Puts the page of a report together, for the library to carry.

make_report.py FOLDER OUT: reads FOLDER/page.html with the style and the scripts beside it, writes
OUT/page.html, in which they stand, and OUT/charts.js, the renderer of Vega-Lite documents that the
Python package vl-convert-python carries, behind its licences. Without that package charts.js is empty.
The page runs no script but these two: their digests are in its Content-Security-Policy.
"""

import base64
import hashlib
import sys
from pathlib import Path

SCRIPTS = ["dom.js", "format.js", "download.js", "chart.js", "tables.js", "shapes.js", "ranking.js",
           "curves.js", "whatif.js", "model.js", "predictions.js", "describe.js", "document.js", "page.js"]


def renderer(licences: str) -> str:
    try:
        import vl_convert
    except ImportError:
        return ""
    bundle = vl_convert.javascript_bundle().replace("</script", "<\\/script")
    return f"/*\n{licences.replace('*/', '* /')}*/\n(()=>{{{bundle}\n}})();\n"


def digest(script: str) -> str:
    return "'sha256-" + base64.b64encode(hashlib.sha256(script.encode()).digest()).decode() + "'"


def main() -> int:
    folder, out = Path(sys.argv[1]), Path(sys.argv[2])
    out.mkdir(parents=True, exist_ok=True)
    parts = [(folder / name).read_text(encoding="utf-8") for name in SCRIPTS]
    script = '"use strict";\n(() => {\n' + "\n".join(parts) + "\n})();\n"
    charts = renderer((folder / "charts.licences.txt").read_text(encoding="utf-8"))
    page = (folder / "page.html").read_text(encoding="utf-8")
    # The digest of no charts stands there too: an empty element is a script like any other.
    allowed = " ".join(digest(text) for text in (script, charts, ""))
    for place, text in (("@SCRIPTS_ALLOWED@", allowed),
                        ("@STYLE@", (folder / "page.css").read_text(encoding="utf-8")),
                        ("@SCRIPT@", script)):
        if page.count(place) != 1:
            print(f"make_report.py: page.html must hold {place} once", file=sys.stderr)
            return 1
        page = page.replace(place, text)
    (out / "page.html").write_text(page, encoding="utf-8")
    (out / "charts.js").write_text(charts, encoding="utf-8")
    return 0


if __name__ == "__main__":
    sys.exit(main())
