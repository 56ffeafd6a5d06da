"""Compares the estimate of --max-memory with the peak of the run, for all examples.

Each run must be refused over a limit of one megabyte, with a need that is within a quarter of the
peak that the system then measures without a limit. Examples with a length of pattern are also tried
with longer ones.

Usage: tools/torture estimate [--program PROGRAM] [--longer HALVINGS] [EXAMPLE...]
"""
import os
import re
import subprocess
import sys

from _common import ROOT, options, scratch

TIME = "/usr/bin/time"
PREFIXES = {"": 1.0, "k": 1e3, "M": 1e6, "G": 1e9}
LENGTH = re.compile(r"(PARAM patternLength IntType\nVALUE )(\S+)")


def peak_of(arguments, folder):
    """Status, standard error and the peak of the resident memory in bytes.

    By a small program: what starts another one counts into that one's peak."""
    done = subprocess.run([TIME, "-q", "-f", "%M", *arguments], cwd=folder, text=True,
                          stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
    lines = done.stderr.splitlines()
    return done.returncode, "\n".join(lines[:-1]), int(lines[-1]) * 1024.0


def check(program, topology, folder):
    """What the estimate is off by, as a share of the peak; None where the run itself fails."""
    status, errors, peak = peak_of([program, "run", "--out", "out", topology], folder)
    if status != 0:
        return None
    _, errors, _ = peak_of([program, "run", "--out", "out", "--max-memory", "1M", topology], folder)
    found = re.search(r"would take about ([0-9.]+) ([kMG]?)B of memory", errors)
    if not found:
        sys.exit(f"{topology}: is not refused: {errors}")
    need = float(found[1]) * PREFIXES[found[2]]
    print(f"{topology}: estimate {need / 1e6:.1f} MB, peak {peak / 1e6:.1f} MB, {need / peak - 1.0:+.0%}",
          flush=True)
    return need / peak - 1.0


def main():
    parser = options()
    parser.add_argument("--longer", type=int, default=3)
    asked = parser.parse_args()
    names = asked.names or sorted(path.stem for path in (ROOT / "examples").glob("*.top"))
    errors = []
    if not os.access(TIME, os.X_OK):
        print(f"skipped: there is no {TIME}")
        return 77
    program = str(asked.program.resolve())
    with scratch() as outer:
        folder = outer / "work"
        subprocess.run([program, "run", "save-signal.top"], cwd=folder, check=True, capture_output=True)
        for example in names:
            text = (folder / f"{example}.top").read_text()
            longer = LENGTH.sub(lambda m: f"{m[1]}({m[2]})+{asked.longer}", text)
            (folder / f"{example}-longer.top").write_text(longer)
            topologies = [f"{example}.top"] + [f"{example}-longer.top"] * (longer != text)
            errors += [check(program, topology, folder) for topology in topologies]
    errors = [error for error in errors if error is not None]
    worst = max(map(abs, errors), default=1.0)
    print(f"{len(errors)} runs, off by at most {worst:.0%}")
    return 0 if worst < 0.25 else 1


if __name__ == "__main__":
    sys.exit(main())
