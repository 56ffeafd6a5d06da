"""The program as functions: a run, a scan or a measurement, with its results."""

from __future__ import annotations

import json
import os
import shutil
import subprocess
import tempfile
import warnings
from dataclasses import dataclass
from typing import Any, Mapping, Optional, Sequence, Union

from ._lines import Path
from .errors import PhotrakError, PhotrakWarning
from .tables import Table, read_table

Value = Union[float, int, str]
# "NAME=START:STOP:STEP" or (NAME, START, STOP, STEP)
Sweep = Union[str, tuple[str, Value, Value, Value]]


@dataclass
class Outcome:
    """What a command gave: its ``--json`` document and the table of its points."""

    document: dict[str, Any]
    table: Table

    @property
    def status(self) -> int:
        return int(self.document["status"])

    @property
    def files(self) -> list[str]:
        """Paths of the result files."""
        return list(self.document.get("files", []))

    @property
    def testers(self) -> list[dict[str, Any]]:
        """The last reading of each tester."""
        return list(self.document.get("testers", []))

    @property
    def diagnostics(self) -> list[dict[str, Any]]:
        return list(self.document["diagnostics"])


def find_program() -> str:
    """The environment variable PHOTRAK, or photrak on the PATH."""
    program = os.environ.get("PHOTRAK") or shutil.which("photrak")
    if not program:
        raise FileNotFoundError("photrak is not on the PATH; PHOTRAK may name it")
    return program



def _number_text(value: Value) -> str:
    """Numbers with all their digits, those of numpy too; texts are expressions."""
    if isinstance(value, str):
        return value
    return repr(int(value)) if float(value).is_integer() and abs(value) < 1e15 else repr(float(value))


def _sweep_text(sweep: Sweep) -> str:
    if isinstance(sweep, str):
        return sweep
    name, start, stop, step = sweep
    return f"{name}={_number_text(start)}:{_number_text(stop)}:{_number_text(step)}"


def _document(text: str, status: int, errors: str) -> dict[str, Any]:
    try:
        document = json.loads(text)
    except ValueError:
        raise PhotrakError(errors.strip() or "no document came", status, []) from None
    if not isinstance(document, dict) or not str(document.get("schema", "")).startswith("photrak."):
        raise PhotrakError("what came is no document of photrak", status, [])
    return document


def _execute(words: list[str], check: bool) -> Outcome:
    """Runs the program with a table of its own, and reads what it says."""
    with tempfile.TemporaryDirectory(prefix="photrak-") as folder:
        table_file = os.path.join(folder, "table.csv")
        command = [find_program(), words[0], "--json", "--table", table_file, *words[1:]]
        done = subprocess.run(
            command,
            stdin=subprocess.DEVNULL,
            capture_output=True,
            encoding="utf-8",
            errors="replace",
        )
        document = _document(done.stdout, done.returncode, done.stderr)
        table = read_table(table_file) if os.path.exists(table_file) else {}
    document.pop("table", None)
    outcome = Outcome(document, table)
    said = outcome.diagnostics
    for diagnostic in said:
        if diagnostic["severity"] == "warning":
            warnings.warn(_line(diagnostic), PhotrakWarning, stacklevel=3)
    if check and done.returncode != 0:
        errors = [_line(diagnostic) for diagnostic in said if diagnostic["severity"] == "error"]
        raise PhotrakError("\n".join(errors) or document["outcome"], done.returncode, said)
    return outcome


def _line(diagnostic: Mapping[str, Any]) -> str:
    place = f"{diagnostic['file']}:{diagnostic['line']}: " if diagnostic["line"] else ""
    code = f"{diagnostic['code']}: " if diagnostic["code"] else ""
    return f"{place}{code}{diagnostic['text']}"


def _common(
    set: Optional[Mapping[str, Value]], out: Optional[Path], plotting: str, options: Sequence[str]
) -> list[str]:
    words = ["--no-commands", "--quiet", "--plotting", plotting, *options]
    for name, value in (set or {}).items():
        words += ["--set", f"{name}={_number_text(value)}"]
    if out is not None:
        words += ["--out", os.fspath(out)]
    return words


def run(
    topology: Path,
    *,
    set: Optional[Mapping[str, Value]] = None,
    out: Optional[Path] = None,
    plotting: str = "save",
    options: Sequence[str] = (),
    check: bool = True,
) -> Outcome:
    """Simulates a topology once.

    ``set`` gives symbols numbers or expressions, ``out`` a folder for results and log instead of
    the topology's own, ``plotting`` "save" or "none", ``options`` more words of the command line.
    A failure raises PhotrakError unless ``check`` is False; warnings are PhotrakWarnings.
    """
    words = _common(set, out, plotting, options)
    return _execute(["run", *words, "--", os.fspath(topology)], check)


def scan(
    topology: Path,
    *,
    set: Optional[Mapping[str, Value]] = None,
    inner: Optional[Sweep] = None,
    outer: Optional[Sweep] = None,
    runs: Optional[int] = None,
    out: Optional[Path] = None,
    plotting: str = "none",
    options: Sequence[str] = (),
    check: bool = True,
) -> Outcome:
    """Simulates each point of the sweeps and each statistical run; ``table`` has them all.

    A sweep is "NAME=START:STOP:STEP" or a tuple of these four; one that is not given is the
    topology's own.
    """
    words = _common(set, out, plotting, options)
    for option, sweep in (("--inner", inner), ("--outer", outer)):
        if sweep is not None:
            words += [option, _sweep_text(sweep)]
    if runs is not None:
        words += ["--runs", str(runs)]
    return _execute(["scan", *words, "--", os.fspath(topology)], check)


def measure(
    topology: Path,
    places: Union[str, Sequence[str]],
    *,
    set: Optional[Mapping[str, Value]] = None,
    out: Optional[Path] = None,
    options: Sequence[str] = (),
    check: bool = True,
) -> Outcome:
    """Runs once and measures at nodes ("12") and blocks ("Laser", "Mux:2"): ``table`` has them."""
    words = _common(set, out, "none", options)
    asked = [places] if isinstance(places, str) else list(places)
    return _execute(["measure", *words, "--", os.fspath(topology), *asked], check)
