"""Runs all examples with arithmetic that traps: no block may divide by zero, overflow or work on no number.

Usage: tools/torture arithmetic [--program PROGRAM] [--every K]
"""
import re
import signal
import sys

from _common import Findings, environment, options, run, scratch


def command_of(text):
    """`scan` for a topology that has a sweep or statistical runs."""
    swept = re.search(r"^(INNER|OUTER)SWEEPVARIABLE +\S", text, re.MULTILINE)
    drawn = re.search(r"^NUMRUNSTODO +[1-9]", text, re.MULTILINE)
    return "scan" if swept or drawn else "run"


def main():
    asked = options("trapping_math").parse_args()
    findings = Findings(asked.show, "status 0")
    with scratch() as folder:
        work = folder / "work"
        traps = environment(folder, LD_PRELOAD=str(asked.library.resolve()))
        # load-signal reads what save-signal writes.
        examples = sorted(work.glob("*.top"), key=lambda p: (p.name == "load-signal.top", p.name))
        for example in examples[asked.offset - 1::asked.every]:
            words = [asked.program.resolve(), command_of(example.read_text()), "--no-commands", example.name]
            status, _, errors = run(words, work, traps, seconds=100)
            findings.note("traps" if status == -signal.SIGFPE else f"status {status}", example.name, errors)
    return 1 if findings.tell("examples") else 0


if __name__ == "__main__":
    sys.exit(main())
