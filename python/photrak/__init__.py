"""Results of Photrak as numpy arrays, and the program as functions.

    import photrak
    table = photrak.scan("link.top", set={"length": 40e3}, inner="received=-24:-18:1").table
    plot = photrak.read("results/eye.pce")
"""

from __future__ import annotations

import os
from typing import Any, Callable

from .ber import BerTable, read_bdt, read_bits
from .errors import FormatError, PhotrakError, PhotrakWarning
from .plots import Curve, Plot, read_columns, read_plot
from .program import Outcome, find_program, measure, run, scan
from .signals import (
    BinarySignal,
    ElectricalSignal,
    NoiseSpectrum,
    OpticalChannel,
    SignalGroup,
    read_signals,
)
from .summary import SignalSummary, read_figures, read_summary
from .tables import Table, read_table

__version__ = "0.1.0"

__all__ = [
    "BerTable", "BinarySignal", "Curve", "ElectricalSignal", "FormatError", "NoiseSpectrum",
    "OpticalChannel", "Outcome", "PhotrakError", "PhotrakWarning", "Plot", "SignalGroup",
    "SignalSummary", "Table", "find_program", "measure", "read", "read_bdt", "read_bits",
    "read_columns", "read_figures", "read_plot", "read_signals", "read_summary", "read_table",
    "run", "scan",
]  # fmt: skip

_READERS: dict[str, Callable[[Any], Any]] = {
    ".bdt": read_bdt,
    ".ber": read_columns,
    ".csv": read_table,
    ".dat": read_figures,
    ".eye": read_columns,
    ".frq": read_columns,
    ".json": read_table,
    ".lic": read_columns,
    ".lid": read_columns,
    ".pcb": read_plot,
    ".pce": read_plot,
    ".pcf": read_plot,
    ".pcl": read_plot,
    ".pcs": read_plot,
    ".pdt": read_plot,
    ".pld": read_plot,
    ".sgd": read_signals,
    ".sig": read_columns,
    ".sum": read_summary,
}


def read(path: str | os.PathLike[str]) -> Any:
    """Reads a result file by its extension: the value of the reader that is named for it.

    Bit streams have no extension; ``read_bits`` reads them.
    """
    extension = os.path.splitext(os.fspath(path))[1].lower()
    reader = _READERS.get(extension)
    if reader is None:
        known = " ".join(sorted(_READERS))
        raise FormatError(f"{os.fspath(path)}: no result of Photrak ends in this; known: {known}")
    return reader(path)
