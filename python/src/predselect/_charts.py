"""Charts as SVG, drawn here so that they show without a network; the Vega-Lite document is kept."""

from __future__ import annotations

import html
import json
import os
from pathlib import Path
from typing import Any

from .errors import DataError

_COLORS = ("#2a6fb0", "#b8bec6", "#d97b29", "#5a9e5a", "#8d6bb8")
_LEFT, _ROW, _WIDTH, _BOTTOM = 190, 22, 420, 42


def write_text(path: str | os.PathLike[str], text: str) -> None:
    """Writes a file. Raises DataError where that cannot be done."""
    try:
        Path(path).write_text(text, encoding="utf-8")
    except OSError as trouble:
        raise DataError(f"{os.fspath(path)} cannot be written: {trouble.strerror}") from trouble


class Chart:
    """A chart of a result: shows itself in a notebook; `spec` is its Vega-Lite document."""

    def __init__(self, spec: dict[str, Any]) -> None:
        self.spec = spec

    def svg(self) -> str:
        """The chart as SVG: a line a category, a mark at its number."""
        return _svg(self.spec)

    def save(self, path: str | os.PathLike[str]) -> None:
        """Writes SVG, or the Vega-Lite document where the name ends in .json."""
        is_spec = os.fspath(path).endswith(".json")
        write_text(path, json.dumps(self.spec) if is_spec else self.svg())

    def _repr_html_(self) -> str:
        return self.svg()

    def _repr_svg_(self) -> str:
        return self.svg()


def _title(spec: dict[str, Any]) -> tuple[str, list[str]]:
    title = spec.get("title", "")
    if isinstance(title, dict):
        below = title.get("subtitle", [])
        return title.get("text", ""), [below] if isinstance(below, str) else below
    return title, []


def _layers(spec: dict[str, Any]) -> tuple[dict[str, Any], list[float]]:
    """The layer of the points, and where rules stand."""
    layers = spec.get("layer", [spec])
    rules = [
        value["y"]
        for layer in layers[1:]
        for value in layer.get("data", {}).get("values", [])
        if isinstance(value.get("y"), (int, float))
    ]
    return layers[0], rules


def _text(x: float, y: float, words: str, anchor: str = "start", size: int = 12,
          weight: str = "normal") -> str:
    return (f'<text x="{x:.1f}" y="{y:.1f}" text-anchor="{anchor}" font-size="{size}" '
            f'font-weight="{weight}">{html.escape(words)}</text>')


def _short(words: str, most: int = 28) -> str:
    return words if len(words) <= most else words[: most - 1] + "…"


def _scale(points: list[dict[str, Any]], rules: list[float], axis: dict[str, Any]) -> Any:
    numbers = [p["y"] for p in points if isinstance(p.get("y"), (int, float))] + rules
    scale = axis.get("scale", {})
    low, high = scale.get("domain") or (min([0.0, *numbers]), max([0.0, *numbers]))
    if low == high:
        high = low + 1.0
    reverse = scale.get("reverse", False)

    def place(value: float) -> float:
        share = (value - low) / (high - low)
        return float(_LEFT + _WIDTH * min(max(1 - share if reverse else share, 0.0), 1.0))

    return place, low, high


def _svg(spec: dict[str, Any]) -> str:
    layer, rules = _layers(spec)
    points = layer.get("data", spec.get("data", {})).get("values", [])
    axis = layer["encoding"]["y"]
    title, below = _title(spec)
    top = 30 + 16 * len(below)
    place, low, high = _scale(points, rules, axis)
    bottom = top + _ROW * len(points)
    colors = {c: _COLORS[i % len(_COLORS)]
              for i, c in enumerate(dict.fromkeys(p.get("color", "") for p in points))}
    parts = [_text(8, 18, title, size=14, weight="bold")]
    parts += [_text(8, 34 + 16 * i, line, size=11) for i, line in enumerate(below)]
    for i, point in enumerate(points):
        y = top + _ROW * (i + 0.5)
        parts.append(_text(_LEFT - 8, y + 4, _short(str(point.get("x", ""))), "end"))
        if isinstance(point.get("y"), (int, float)):
            color = colors[point.get("color", "")]
            parts.append(f'<line x1="{place(low):.1f}" x2="{place(point["y"]):.1f}" y1="{y:.1f}" '
                         f'y2="{y:.1f}" stroke="{color}" stroke-width="3"/>')
            parts.append(f'<circle cx="{place(point["y"]):.1f}" cy="{y:.1f}" r="5" fill="{color}">'
                         f'<title>{point["y"]:.6g}</title></circle>')
    for value in rules:
        parts.append(f'<line x1="{place(value):.1f}" x2="{place(value):.1f}" y1="{top}" '
                     f'y2="{bottom}" stroke="gray" stroke-dasharray="6 4"/>')
    for k in range(5):
        value = low + (high - low) * k / 4
        parts.append(_text(place(value), bottom + 16, f"{value:.4g}", "middle", 11))
    words = axis.get("axis", {}).get("title") or ""
    parts.append(_text(_LEFT + _WIDTH / 2, bottom + 34, words, "middle"))
    width, height = _LEFT + _WIDTH + 40, bottom + _BOTTOM
    return (f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{height}" '
            f'font-family="sans-serif" fill="currentColor">{"".join(parts)}</svg>')


def bars(title: str, words: str, points: list[tuple[str, float, str]]) -> Chart:
    """A chart of categories with a number and a group each."""
    values = [{"x": x, "y": y, "color": color} for x, y, color in points]
    encoding = {
        "x": {"field": "x", "type": "nominal", "sort": None, "axis": {"title": None}},
        "y": {"field": "y", "type": "quantitative", "axis": {"title": words}},
        "color": {"field": "color", "type": "nominal", "title": None},
    }
    return Chart({
        "$schema": "https://vega.github.io/schema/vega-lite/v5.json", "title": title,
        "data": {"values": values}, "mark": "bar", "encoding": encoding,
    })
