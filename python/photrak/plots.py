"""Command files of plots (.pcs .pce .pcf .pcb .pcl .pld .pdt) and the columns that they draw."""

from __future__ import annotations

import os
from dataclasses import dataclass, field
from typing import Iterable, Optional

import numpy as np
import numpy.typing as npt

from ._lines import Path, fail, read_lines, to_float

Array = npt.NDArray[np.float64]


@dataclass
class Curve:
    """One curve. ``second_axis`` tells that it is drawn on the axis at the right."""

    label: str
    x: Array
    y: Array
    file: str
    second_axis: bool = False


@dataclass
class Plot:
    """A plot with its curves; labels without the viewer's codes."""

    title: str = ""
    x_label: str = ""
    y_label: str = ""
    second_label: str = ""
    notes: list[str] = field(default_factory=list)  # "x polarization"
    logarithmic: bool = False  # the y axis
    curves: list[Curve] = field(default_factory=list)

    @property
    def x(self) -> Array:
        """The x values of the first curve, which all curves of a file share."""
        return self.curves[0].x if self.curves else np.empty(0)

    @property
    def y(self) -> Array:
        """One column for each curve, where all have the same x values."""
        lengths = {len(curve.y) for curve in self.curves}
        if len(lengths) > 1:
            raise ValueError("the curves of this plot have different lengths")
        columns = [curve.y for curve in self.curves]
        return np.column_stack(columns) if columns else np.empty((0, 0))


def read_columns(path: Path) -> Array:
    """Rows of numbers as an array (rows, columns); a "." and what a row lacks are NaN."""
    rows: list[list[float]] = []
    for number, line in enumerate(read_lines(path), 1):
        words = line.split()
        if not words:
            continue
        if rows and len(words) > len(rows[0]):
            raise fail(path, number, f"{len(words)} numbers, and {len(rows[0])} in the first row")
        rows.append([to_float(word, path, number) for word in words])
    if not rows:
        return np.empty((0, 0))
    values = np.full((len(rows), len(rows[0])), np.nan)
    for i, row in enumerate(rows):
        values[i, : len(row)] = row
    return values


def _shown(text: str) -> str:
    """Without the codes of the viewer: "&l" is a wavelength, "\\#" the sign of a number."""
    for arrow in ("<< ", ">> "):
        if text.startswith(arrow):
            text = text[len(arrow) :]
    return text.replace("&l", "λ").replace("\\# ", "#").replace("\\#", "#")


def _quoted(argument: str) -> str:
    first, last = argument.find('"'), argument.rfind('"')
    if first < 0:
        return argument.strip()
    return argument[first + 1 : last] if last > first else argument[first + 1 :]


def _data_path(folder: str, name: str) -> str:
    """Beside the command file: a prefix with a folder stands in the name too."""
    return os.path.join(folder, os.path.basename(name))


def _read_commands(lines: Iterable[str]) -> tuple[Plot, list[str], list[tuple[str, bool]]]:
    plot, legends = Plot(), []
    files: list[tuple[str, bool]] = []
    texts = {"/tt": "title", "/xl": "x_label", "/yl": "y_label", "/altyl": "second_label"}
    for line in lines:
        line = line.strip()
        if not line:
            continue
        if not line.startswith("/"):
            second = line.endswith(" /alty")
            files.append((line[: -len(" /alty")].strip() if second else line, second))
            continue
        if line.startswith("/lt"):
            legends.append(_shown(_quoted(line[3:])))
        elif line.startswith("/tb"):
            plot.notes.append(_shown(_quoted(line[3:])))
        elif line == "/ly" or line.startswith(("/ly ", "/ly2")):
            plot.logarithmic = True
        for word, name in texts.items():
            if line.startswith(word + '"'):
                setattr(plot, name, _shown(_quoted(line[len(word) :])))
    return plot, legends, files


def read_plot(path: Path) -> Plot:
    """A plot with all its curves. A curve without a legend is labeled by its number."""
    plot, legends, files = _read_commands(read_lines(path))
    folder = os.path.dirname(os.fspath(path))
    for name, second in files:
        data = _data_path(folder, name)
        columns = read_columns(data)
        for i in range(1, columns.shape[1]):
            place = len(plot.curves)
            label = legends[place] if place < len(legends) else f"{place + 1}"
            plot.curves.append(Curve(label, columns[:, 0], columns[:, i], data, second))
    return plot


def find_curve(plot: Plot, label: str) -> Optional[Curve]:
    """The first curve of this label."""
    return next((curve for curve in plot.curves if curve.label == label), None)
