"""Signal summaries (.sum) and other lists of named figures (lasertest.dat)."""

from __future__ import annotations

from dataclasses import dataclass, field

from ._lines import Path, fail, read_lines, to_float

_KINDS = ("Optical", "Electrical", "Binary")


@dataclass
class SignalSummary:
    """One section: ``place`` tells where the run stood ("Set", "Inner Iter", ...), ``values`` each
    quantity by its name in SI units ("Average", "Duration", ...), ``units`` its unit."""

    kind: str
    name: str = ""
    place: dict[str, int] = field(default_factory=dict)
    values: dict[str, float] = field(default_factory=dict)
    units: dict[str, str] = field(default_factory=dict)


def _split(line: str, path: Path, number: int) -> tuple[str, float, str]:
    """ "Average = 0.001 W / 0 dBm" gives the name, the first number and its unit."""
    name, equals, rest = line.partition(" = ")
    words = rest.split()
    if not equals or not words:
        raise fail(path, number, f"'{line[:40]}' has no value")
    unit = words[1] if len(words) > 1 and words[1] != "/" else ""
    return name.strip(), to_float(words[0], path, number), unit


def read_summary(path: Path) -> list[SignalSummary]:
    """The sections of a summary, the newest signal first."""
    sections: list[SignalSummary] = []
    opened = False
    for number, line in enumerate(read_lines(path), 1):
        kind, marker, name = line.partition(" Signal Summary ")
        if marker and kind in _KINDS and not opened:
            sections.append(SignalSummary(kind.lower(), name.strip()))
            opened = True
        elif line.startswith("===="):
            opened = False
        elif not opened:
            raise fail(path, number, "a line outside of all sections")
        elif line.startswith("Set = "):
            for part in line.split(","):
                word, value, _ = _split(part, path, number)
                sections[-1].place[word] = int(value)
        else:
            word, value, unit = _split(line, path, number)
            sections[-1].values[word] = value
            sections[-1].units[word] = unit
    return sections


def read_figures(path: Path) -> dict[str, tuple[float, str]]:
    """Value and unit by name of a list such as lasertest.dat."""
    figures: dict[str, tuple[float, str]] = {}
    for number, line in enumerate(read_lines(path), 1):
        if line.strip():
            name, value, unit = _split(line, path, number)
            figures[name] = (value, unit)
    return figures
