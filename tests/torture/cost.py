"""Counts the instructions of all examples (or of those named) in two builds: what a change of the shell
around the blocks costs, without the scatter of a clock.

Usage: tools/torture cost --before PROGRAM [EXAMPLE...] [--program PROGRAM]

Wants valgrind, which knows no AVX-512. A run that takes over 1 % and over half a million instructions
(some 0.1 ms) more is a fault.
"""
import pathlib
import re
import sys

from _common import ROOT, environment, options, run, scratch

ALLOWED = 1.01
UNNOTICED = 500_000


def instructions(program, example, folder):
    """Of a serial run in the folder's `work`."""
    variables = environment(folder, PHOTRAK_SIMD="avx2")
    command = ["valgrind", "--tool=callgrind", f"--callgrind-out-file={folder}/counts",
               program.resolve(), "run", example]
    status, _, errors = run(command, folder / "work", variables, seconds=1800)
    counted = re.search(rb"Collected : (\d+)", errors)
    if status != 0 or not counted:
        sys.exit(f"{program} {example}: status {status}: {errors[-300:].decode(errors='replace')}")
    return int(counted[1])


def compare(before, after, example):
    """Whether the example takes more than it may; prints both."""
    counts = []
    for program in (before, after):
        with scratch() as folder:
            if example == "load-signal":  # reads what save-signal writes
                instructions(program, "save-signal.top", folder)
            counts.append(instructions(program, example + ".top", folder))
    dear = counts[1] > ALLOWED * counts[0] and counts[1] - counts[0] > UNNOTICED
    print(f"{example}: {counts[0]:,} -> {counts[1]:,}, {counts[1] / counts[0]:.3f}" + (", DEAR" if dear else ""),
          flush=True)
    return dear


def main():
    parser = options()
    parser.add_argument("--before", type=pathlib.Path, required=True, help="the program to compare with")
    asked = parser.parse_args()
    examples = asked.names or sorted(path.stem for path in (ROOT / "examples").glob("*.top"))
    return 1 if sum(compare(asked.before, asked.program, example) for example in examples) else 0


if __name__ == "__main__":
    sys.exit(main())
