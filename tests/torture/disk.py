"""Runs photrak while the file calls on its folder of results fail, or kill it, each once.

The folder holds the results of an earlier run with another launch power. Whatever fails, a file
under a final name is that of the earlier run or that of the present one, whole; tables that grow
hold whole rows. Where a call failed, the status is 1 and standard error tells the reason in the
system's words, or all results are there. The log tells by its last line how the run ended, and
speaks of nothing that was not done. A run or scan after a kill leaves nothing of the killed one behind.

Usage: tools/torture disk [--every K] [--offset J] [--program PROGRAM] [--planted] [SCENARIO...]
  --every K   each K-th call only (default 1), from the J-th (default 1)
  --planted   shows that faults are found: builds photrak with each of a few, which must fail
"""
import errno
import os
import shutil
import sys

from _common import Findings, environment, files_below, options, prove, run, scratch

# The arguments of a scenario; OUT is the folder of the results, SET makes the earlier run another.
SCENARIOS = {
    "run": ["run", "--out", "OUT", "--table", "OUT/table.csv", "SET", "eye-10g.top"],
    "scan": ["scan", "--out", "OUT", "--table", "OUT/table.csv", "SET", "ber-power.top"],
    "save": ["params", "-o", "OUT/fiber.prm", "SET", "Fiber", "eye-10g.top"],
    "report": ["report", "-o", "OUT/page.html", "OUT"],
}
SETS = {"run": "launch=2e-3", "scan": "received=-20"}
# Appended to as a run goes on: such a file is whole with its last whole row.
GROWING = (".csv", ".bdt")
# Replaced after each point of a scan: whole with lines like those of the last point's file.
REPLACED = (".ber", ".pcb")
# Faults by file, text and what stands there instead: a rename whose failure is passed over, a result
# that is written in place, a row that stays half.
PLANTED = [
    ("src/platform/file_system.cpp", "whole && ::rename(temporary.c_str(), target.c_str()) == 0",
     "whole && ::rename(temporary.c_str(), target.c_str()) < 2"),
    ("src/platform/file_system.cpp", ": Replace(path, text, Durability::Computable)", ": WriteWith(path, text, O_TRUNC)"),
    ("src/platform/file_system.cpp", "::ftruncate(file.Number(), former.st_size) != 0) {", "former.st_size < 0) {"),
]
MODES = [("DISK_FULL", errno.ENOSPC), *((mode, error) for mode in ("DISK_AT", "DISK_FROM")
                                        for error in (errno.ENOSPC, errno.EIO)),
         *(("DISK_AT", error) for error in (errno.EACCES, errno.EMFILE, errno.EINTR, 0))]


# How the log of a run ends that did not come to its end.
FAILED = b"The run failed before its end\n"
CLEAN = ("status 0", "status 1", "killed", "status -9")


class Rack:
    def __init__(self, asked, folder):
        self.program, self.folder, self.out = asked.program.resolve(), folder, folder / "out"
        self.environment = environment(folder)
        self.faults = {"LD_PRELOAD": str(asked.library.resolve()), "DISK_BELOW": str(self.out)}

    def run(self, scenario, is_earlier=False, **faults):
        """Status (negative: a signal, None: no end) and standard error."""
        words = []
        for word in SCENARIOS[scenario]:
            if word == "SET":
                words += ["--set", SETS[scenario]] if is_earlier and scenario in SETS else []
            else:
                words.append(word.replace("OUT", str(self.out)))
        variables = {**self.environment, **(self.faults | faults if faults else {})}
        status, _, errors = run([self.program, *words], self.folder / "work", variables)
        return status, errors

    def restore(self, files):
        shutil.rmtree(self.out, ignore_errors=True)
        self.out.mkdir()
        for name, text in files.items():
            (self.out / name).write_bytes(text)


def shape(text):
    """The numbers of words that the lines have; nothing for a text whose last line is cut."""
    return {len(line.split()) for line in text.splitlines()} if text.endswith(b"\n") else set()


def torn(files, earlier, good):
    """A file under a final name that is neither of the earlier run nor of this one, or nothing."""
    for name, text in files.items():
        if name == "log.txt" or name.endswith((".tmp", ".lock")) or name.startswith(".photrak"):
            continue
        if text in (earlier.get(name), good.get(name)):
            continue
        if name.endswith(REPLACED) and shape(text) and shape(text) <= shape(good.get(name, b"")):
            continue
        if name.endswith(".html") and text.endswith(b"</html>\n"):
            continue  # it tells in words what it lacks
        whole = name.endswith(GROWING) and text.endswith(b"\n") and (
            good.get(name, b"").startswith(text) or text.startswith(earlier.get(name, b"\0")))
        if not (whole or name.endswith(GROWING) and not text):
            return name
    missing = [name for name in earlier if name not in files and not name.startswith(".photrak")]
    return missing[0] + " (gone)" if missing else ""


def unread(log, good):
    """What a log says that the program did not do: a last line that is cut, or one that no run writes."""
    if log and not log.endswith(b"\n"):
        return "a log with half a line"
    known = set(good.splitlines())
    for line in log.splitlines():
        if line not in known and not line.startswith((b"ERROR", b"WARNING")) and line + b"\n" != FAILED:
            return f"a log that says {line.decode(errors='replace')!r}"
    return ""


def judge(result, files, earlier, good, number):
    status, errors = result
    if status is None:
        return "does not end"
    name = torn(files, earlier, good)
    if name:
        return f"torn: {name}"
    # The log alone is a warning.
    told = b"could not write" in errors
    log, former, whole = (kept.get("log.txt", b"") for kept in (files, earlier, good))
    if status == 0:
        lost = [name for name, text in good.items() if name != "log.txt" and files.get(name) != text]
        if lost:
            return f"success without {lost[0]}"
        return "" if told or log == whole else "a log lost without a word"
    if status != 1:
        return f"status {status}"
    if os.strerror(number).encode() not in errors:
        return "status 1 without the reason"
    if told or log == former:
        return ""
    return unread(log, former + whole) or ("" if log.endswith(FAILED) else "a log that does not tell of the failure")


def run_scenario(rack, scenario, asked):
    rack.restore({})
    rack.run("run" if scenario == "report" else scenario, is_earlier=True)
    earlier = files_below(rack.out)
    counted = rack.folder / "count"
    done = rack.run(scenario, DISK_COUNT=str(counted))
    if done[0] != 0:
        sys.exit(f"{scenario}: fails by itself: {done[1].decode(errors='replace')}")
    good, calls = files_below(rack.out), int(counted.read_text())
    findings = Findings(asked.show, *CLEAN)

    def swept():
        """Nothing if the next run is whole and clears away what this one left."""
        again = rack.run(scenario)
        left = [name for name in files_below(rack.out) if name.startswith(".photrak")]
        return f"left: {left[0]}" if left and scenario in SETS else "" if again[0] == 0 else "a next run that fails"

    for number in range(asked.offset, calls + 1, asked.every):
        for mode, error in MODES:
            rack.restore(earlier)
            status, errors = rack.run(scenario, **{mode: str(number), "DISK_ERROR": str(error)})
            files = files_below(rack.out)
            fault = judge((status, errors), files, earlier, good, error)
            if not fault and any(name.endswith(".tmp") for name in files):
                fault = swept()  # it could not even be taken away
            findings.note(fault or f"status {status}", (mode, number, errno.errorcode.get(error, "half")), errors)
        rack.restore(earlier)
        status, _ = rack.run(scenario, DISK_KILL=str(number))
        files = files_below(rack.out)
        name = torn(files, earlier, good)
        fault = f"torn by a kill: {name}" if name else swept()
        findings.note(fault or f"status {status}", ("DISK_KILL", number))
    return findings.tell(f"{scenario}: {calls} calls")


def torture(asked):
    """How many runs of all scenarios had a fault."""
    with scratch() as folder:
        rack = Rack(asked, folder)
        return sum(run_scenario(rack, scenario, asked) for scenario in asked.names or SCENARIOS)


def main():
    asked = options("failing_disk").parse_args()
    if asked.planted:
        asked.every = max(asked.every, 3)
        return prove(asked, PLANTED, torture)
    return 1 if torture(asked) else 0


if __name__ == "__main__":
    sys.exit(main())
