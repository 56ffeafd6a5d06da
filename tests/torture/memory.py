"""Runs photrak while its heap refuses: each allocation once, and each with all that follow.

A run must end with status 1 and name memory on standard error, or, where one refusal was made good,
with status 0, the same standard output and the same files, byte for byte. What else comes of it is
counted by kind and listed: a signal, another status, a status 1 that does not speak of memory, a
success with other results, a run that does not end, a file under a temporary name left behind.

Usage: tools/torture memory [option...] [SCENARIO...]
  --every K --offset J   each K-th allocation only (default 1), from the J-th (default 1)
  --threads N            threads of the program (default 1, which counts alike in each run)
  --program PROGRAM      another photrak than that of the release build
  --leaks                under valgrind: a lost block, or memory that is touched wrongly, is a fault too
  --planted              shows that faults are found: builds photrak with each of a few, which must fail
"""
import shutil
import sys

from _common import Findings, environment, files_below, options, prove, run, scratch

VALGRIND = ["valgrind", "-q", "--leak-check=full", "--errors-for-leak-kinds=definite", "--error-exitcode=99",
            "--soname-synonyms=somalloc=nouserintercepts", "--show-mismatched-frees=no"]

# Faults by file, text and what stands there instead: a shortage that nobody looks at in the end; one
# that is not noted where it happens, so that whoever swallows it is believed.
PLANTED = [
    ("apps/photrak/main.cpp", "if (ShortageCount() > 0) status = TellShortage();", ""),
    ("src/platform/memory_shortage.cpp", "    if (!Note(bytes)) {", "    if (isOpen.exchange(true)) {"),
]

# The arguments of each scenario; OUT is the folder of the results.
SCENARIOS = {
    "check": ["check", "nrz-link.top"],
    "run": ["run", "--out", "OUT", "--table", "OUT/table.csv", "nrz-link.top"],
    "scan": ["scan", "--out", "OUT", "ber-power.top"],
    "loop": ["run", "--out", "OUT", "recirculating-loop.top"],
    "models": ["models"],
    "test": ["test", "--out", "OUT", "East", "add-drop.top"],
    "measure": ["measure", "--out", "OUT", "nrz-link.top", "Receiver"],
    "report": ["report", "-o", "OUT/page.html", "RESULTS"],
}


class Rack:
    def __init__(self, asked, folder):
        # What starts the program under valgrind is left alone.
        leaks = {"REFUSE_BY_NAME": "1", "REFUSE_IN": asked.program.name} if asked.leaks else {}
        self.command, self.folder = [*(VALGRIND if asked.leaks else []), asked.program.resolve()], folder
        self.environment = environment(folder, PHOTRAK_THREADS=str(asked.threads),
                                       LD_PRELOAD=str(asked.library.resolve()), **leaks)
        self.out = folder / "out"

    def run(self, words, **refusal):
        """Status, standard output and error, files of the results."""
        shutil.rmtree(self.out, ignore_errors=True)
        self.out.mkdir()
        words = [word.replace("OUT", str(self.out)) for word in words]
        done = run([*self.command, *words], self.folder / "work", {**self.environment, **refusal})
        return *done, files_below(self.out)


def judge(result, good):
    """What is wrong with a run, or nothing."""
    status, output, errors, files = result
    if status is None:
        return "does not end"
    if status < 0:
        return f"signal {-status}"
    if any(name.endswith(".tmp") for name in files):
        return "leaves a temporary file"
    if status == 0:
        if output != good[1]:
            return "success with another output"
        missing = good[3].keys() - files.keys()
        if missing:
            return "success with results missing"
        changed = [name for name, text in files.items() if text != good[3].get(name)]
        return f"success with other results ({changed[0]})" if changed else ""
    if status == 99:
        return "a lost block or a wrong touch"
    if status != 1:
        return f"status {status}"
    return "" if b"memory" in errors else "status 1 without a word of memory"


def main():
    parser = options("refusing_heap")
    parser.add_argument("--threads", type=int, default=1)
    parser.add_argument("--leaks", action="store_true")
    asked = parser.parse_args()
    if asked.planted:
        asked.every = max(asked.every, 97)
        return prove(asked, PLANTED, torture)
    return 1 if torture(asked) else 0


def torture(asked):
    """How many runs of all scenarios had a fault."""
    with scratch() as folder:
        rack = Rack(asked, folder)
        rack.run(["run", "--out", "OUT", "nrz-link.top"])
        rack.out.rename(folder / "work/RESULTS")
        return sum(run_scenario(rack, scenario, asked) for scenario in asked.names or SCENARIOS)


def run_scenario(rack, scenario, asked):
    words = SCENARIOS[scenario]
    counted = rack.folder / "count"
    good = rack.run(words, REFUSE_COUNT=str(counted))
    if good[0] != 0:
        sys.exit(f"{scenario}: fails by itself: {good[2].decode(errors='replace')}")
    calls = int(counted.read_text())
    findings = Findings(asked.show, "status 0", "status 1")
    for number in range(asked.offset, calls + 1, asked.every):
        for mode in ("REFUSE_AT", "REFUSE_FROM"):
            result = rack.run(words, **{mode: str(number)})
            findings.note(judge(result, good) or f"status {result[0]}", f"{mode}={number}", result[2])
    return findings.tell(f"{scenario}: {calls} allocations")


if __name__ == "__main__":
    sys.exit(main())
