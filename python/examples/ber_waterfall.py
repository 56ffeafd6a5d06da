#!/usr/bin/env python3
"""Bit error rate over received power for three lengths of fiber, as a picture.

    PHOTRAK=build/release/bin/photrak python3 python/examples/ber_waterfall.py [PICTURE]

Needs numpy; draws with matplotlib where that is installed, else by `photrak plot` (.svg).
"""

# %% Where the program and its example are
import os
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

tree = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(tree / "python"))  # not needed once the package is installed

import numpy as np  # noqa: E402

import photrak  # noqa: E402

picture = sys.argv[1] if len(sys.argv) > 1 else "ber_waterfall.svg"
folder = tempfile.TemporaryDirectory()
topology = Path(shutil.copy(tree / "examples" / "ber-power-length.top", folder.name))

# %% A scan: received power within length of the fiber
outcome = photrak.scan(
    topology,
    inner=("received", -27.0, -20.0, 0.5),
    outer=("length", 1e3, 121e3, 60e3),
)
table = outcome.table
print(f"{len(table['point'])} points in {outcome.document['seconds']:.2f} s")

# %% The power at which each length reaches 1e-9, between the points of the scan
for length in np.unique(table["length"]):
    chosen = (table["length"] == length) & (table["BER"] > 0)
    power, ber = table["received"][chosen], np.log10(table["BER"][chosen])
    order = np.argsort(ber)
    sensitivity = np.interp(-9.0, ber[order], power[order])
    print(f"{length / 1e3:5.0f} km: {sensitivity:6.2f} dBm for a BER of 1e-9")

# %% The waterfall
try:
    import matplotlib

    matplotlib.use("Agg")
    import matplotlib.pyplot as plt
except ImportError:
    curves = next(name for name in outcome.files if name.endswith(".pcb"))
    words = ["plot", "-o", os.path.abspath(picture), curves]
    subprocess.run([photrak.find_program(), *words], check=True)
else:
    figure, axes = plt.subplots(figsize=(7, 5))
    for length in np.unique(table["length"]):
        chosen = table["length"] == length
        axes.semilogy(
            table["received"][chosen], table["BER"][chosen], "o-", label=f"{length / 1e3:.0f} km"
        )
    axes.set_ylim(1e-15, 1e-1)
    axes.set_xlabel("Received power (dBm)")
    axes.set_ylabel("BER")
    axes.grid(True, which="major", alpha=0.4)
    axes.legend()
    figure.tight_layout()
    figure.savefig(picture)
print(picture)
folder.cleanup()
