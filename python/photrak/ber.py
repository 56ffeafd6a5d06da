"""Tables (.bdt) and bit streams of the bit error rate tester. Its curve is a plot."""

from __future__ import annotations

from dataclasses import dataclass, field

import numpy as np
import numpy.typing as npt

from ._lines import Path, fail, read_lines, to_float, to_int

Array = npt.NDArray[np.float64]
_STATISTICS = ("MIN", "AVE", "MAX")


@dataclass
class BerTable:
    """One simulation. ``sweeps`` has the value of each symbol by its name, the inner one first.

    ``statistics`` has, by "MIN", "AVE" and "MAX", a table of a row for each point; it is empty
    without statistical runs.
    """

    sweeps: dict[str, Array]
    run: npt.NDArray[np.int64]
    BER: Array
    Q: Array
    statistics: dict[str, BerTable] = field(default_factory=dict)


class _Rows:
    def __init__(self, names: list[str]) -> None:
        self.names = names
        self.rows: list[tuple[list[float], str, float, float]] = []

    def table(self, word: str | None) -> BerTable:
        """The rows of a statistic, or of the runs."""
        chosen = [row for row in self.rows if (row[1] if row[1] in _STATISTICS else None) == word]
        return BerTable(
            {name: np.array([row[0][i] for row in chosen]) for i, name in enumerate(self.names)},
            np.array([int(row[1]) if word is None else 0 for row in chosen], dtype=np.int64),
            np.array([row[2] for row in chosen]),
            np.array([row[3] for row in chosen]),
        )

    def finished(self) -> BerTable:
        table = self.table(None)
        words = {row[1] for row in self.rows}
        table.statistics = {word: self.table(word) for word in _STATISTICS if word in words}
        return table


def read_bdt(path: Path) -> list[BerTable]:
    """A table for each simulation that added to the file, in their order."""
    tables: list[_Rows] = []
    for number, line in enumerate(read_lines(path), 1):
        fields = line.split("\t")
        if fields[-2:] == ["BER", "Q"]:
            tables.append(_Rows([name for name in fields[:-2] if name != "RUN#"]))
            continue
        if not tables:
            raise fail(path, number, "no header comes before the first row")
        sweeps = len(tables[-1].names)
        if len(fields) != sweeps + 3:
            raise fail(path, number, f"{len(fields)} fields where {sweeps + 3} belong")
        if fields[sweeps] not in _STATISTICS:
            to_int(fields[sweeps], path, number)
        values = [to_float(word, path, number) for word in fields[:sweeps] + fields[-2:]]
        tables[-1].rows.append((values[:-2], fields[sweeps], values[-2], values[-1]))
    return [table.finished() for table in tables]


def read_bits(path: Path) -> npt.NDArray[np.int8]:
    """The bits of a bit stream file, line after line."""
    bits: list[int] = []
    for number, line in enumerate(read_lines(path), 1):
        for word in line.split():
            if word not in ("0", "1"):
                raise fail(path, number, f"'{word[:40]}' is no bit")
            bits.append(int(word))
    return np.array(bits, dtype=np.int8)
