"""Runs all examples with arithmetic that traps: no block may divide by zero, overflow or work on no number.

Usage: tools/torture arithmetic [--program PROGRAM]
"""
import argparse
import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
BUILD = ROOT / "build/release"
SECONDS = 100


def command_of(text):
    """`scan` for a topology that has a sweep or statistical runs."""
    swept = re.search(r"^(INNER|OUTER)SWEEPVARIABLE +\S", text, re.MULTILINE)
    drawn = re.search(r"^NUMRUNSTODO +[1-9]", text, re.MULTILINE)
    return "scan" if swept or drawn else "run"


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--program", type=pathlib.Path, default=BUILD / "bin/photrak")
    parser.add_argument("--math", type=pathlib.Path, default=BUILD / "torture/trapping_math.so")
    parser.add_argument("--every", type=int, default=1, help="each K-th example only")
    asked = parser.parse_args()
    faults = ran = 0
    with tempfile.TemporaryDirectory() as name:
        work = pathlib.Path(name) / "work"
        shutil.copytree(ROOT / "examples", work)
        # load-signal reads what save-signal writes.
        examples = sorted(work.glob("*.top"), key=lambda p: (p.name == "load-signal.top", p.name))
        for example in examples[::asked.every]:
            words = [str(asked.program.resolve()), command_of(example.read_text()), "--no-commands", example.name]
            done = subprocess.run(words, cwd=work, capture_output=True, timeout=SECONDS, stdin=subprocess.DEVNULL,
                                  env=dict(os.environ, LD_PRELOAD=str(asked.math.resolve())))
            ran += 1
            if done.returncode == 0:
                continue
            faults += 1
            how = "traps" if done.returncode == -signal.SIGFPE else f"status {done.returncode}"
            print(f"{example.name}: {how}: {done.stderr[-300:].decode(errors='replace')}")
    print(f"{ran} examples, {faults} faults")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
