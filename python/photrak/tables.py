"""Tables of --table as dictionaries of arrays, column by column."""

from __future__ import annotations

import csv
import io
import json
import os
from typing import Any, Sequence

import numpy as np
import numpy.typing as npt

from ._lines import Path
from .errors import FormatError

Table = dict[str, npt.NDArray[Any]]

_TEXTS = {"tester", "status", "place", "kind", "unit"}
_COUNTS = {"point", "run", "loop", "node", "channel"}


def to_column(name: str, values: Sequence[Any], path: Path) -> npt.NDArray[Any]:
    """Texts, counts or numbers, as the name says; a number that is not there is NaN."""
    try:
        if name in _TEXTS:
            return np.array([str(value) for value in values], dtype=object)
        if name in _COUNTS:
            return np.array([int(value) for value in values], dtype=np.int64)
        return np.array([np.nan if v is None else float(v) for v in values], dtype=np.float64)
    except (TypeError, ValueError) as error:
        raise FormatError(f"{os.fspath(path)}: column '{name}': {error}") from None


def to_table(rows: Sequence[dict[str, Any]], path: Path) -> Table:
    """Rows that name their cells, all with the names of the first."""
    if not rows:
        return {}
    try:
        return {name: to_column(name, [row[name] for row in rows], path) for name in rows[0]}
    except KeyError as error:
        raise FormatError(f"{os.fspath(path)}: a row has no {error}") from None


def _read_csv(text: str, path: Path) -> Table:
    rows = list(csv.reader(io.StringIO(text, newline="")))
    if text and not text.endswith("\n"):
        rows.pop()  # its writer was killed within it
    if not rows:
        raise FormatError(f"{os.fspath(path)}: no header")
    header = rows[0]
    for number, row in enumerate(rows[1:], 2):
        if len(row) != len(header):
            raise FormatError(f"{os.fspath(path)}: row {number} has {len(row)} fields")
    return {
        name: to_column(name, [row[i] for row in rows[1:]], path) for i, name in enumerate(header)
    }


def _read_json(text: str, path: Path) -> Table:
    try:
        rows = json.loads(text)
    except ValueError:
        # The end is missing when a machine stopped within a row: whole lines count.
        lines = text.split("\n")[1:-1]
        whole = [line.rstrip(",") for line in lines if line.rstrip(",").endswith("}")]
        try:
            rows = [json.loads(line) for line in whole]
        except ValueError as error:
            raise FormatError(f"{os.fspath(path)}: {error}") from None
    if not isinstance(rows, list) or not all(isinstance(row, dict) for row in rows):
        raise FormatError(f"{os.fspath(path)}: no array of rows")
    return to_table(rows, path)


def read_table(path: Path) -> Table:
    """A table of ``photrak run``, ``scan`` or ``measure``, also while it is being written."""
    with open(path, encoding="utf-8", errors="replace", newline="") as file:
        text = file.read()
    is_json = os.fspath(path).lower().endswith(".json")
    return _read_json(text, path) if is_json else _read_csv(text, path)
