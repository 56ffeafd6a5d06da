"""Runs photrak while the file calls on its folder of results fail, or kill it, each once.

The folder holds the results of an earlier run with another launch power. Whatever fails, a file
under a final name is that of the earlier run or that of the present one, whole; tables that grow
hold whole rows. Where a call failed, the status is 1 and standard error tells the reason in the
system's words, or all results are there. A run or scan after a kill leaves nothing of the killed one behind.

Usage: tools/torture disk [--every K] [--offset J] [--program PROGRAM] [SCENARIO...]
  --every K   each K-th call only (default 1), from the J-th (default 1)
"""
import argparse
import collections
import errno
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
BUILD = ROOT / "build/release"
SECONDS = 60
DURATION = re.compile(rb"calculation time = \S+")  # the one thing in a log that differs each time

# The arguments of a scenario; OUT is the folder of the results, SET makes the earlier run another.
SCENARIOS = {
    "run": ["run", "--out", "OUT", "--table", "OUT/table.csv", "SET", "eye-10g.top"],
    "scan": ["scan", "--out", "OUT", "--table", "OUT/table.csv", "SET", "ber-power.top"],
    "save": ["params", "-o", "OUT/fiber.prm", "SET", "Fiber", "eye-10g.top"],
    "report": ["report", "-o", "OUT/page.html", "RESULTS"],
}
SETS = {"run": "launch=2e-3", "scan": "received=-20"}
# Appended to as a run goes on: such a file is whole with its last whole row.
GROWING = (".csv", ".bdt")
# Replaced after each point of a scan: whole with lines like those of the last point's file.
REPLACED = (".ber", ".pcb")
MODES = [("DISK_AT", errno.ENOSPC), ("DISK_FROM", errno.ENOSPC), ("DISK_AT", errno.EIO), ("DISK_FROM", errno.EIO),
         ("DISK_AT", errno.EACCES), ("DISK_AT", errno.EMFILE), ("DISK_AT", errno.EINTR), ("DISK_AT", 0)]


class Torture:
    def __init__(self, program, disk, folder):
        self.program, self.folder, self.out = str(program), folder, folder / "out"
        self.environment = dict(os.environ, HOME=str(folder), PHOTRAK_THREADS="1")
        self.environment.pop("DISPLAY", None)
        self.faults = {"LD_PRELOAD": str(disk), "DISK_BELOW": str(self.out)}
        shutil.copytree(ROOT / "examples", folder / "work")

    def words(self, scenario, is_earlier):
        words = []
        for word in SCENARIOS[scenario]:
            if word == "SET":
                if is_earlier and scenario in SETS:
                    words += ["--set", SETS[scenario]]
            else:
                words.append(word.replace("OUT", str(self.out)))
        return words

    def run(self, scenario, is_earlier=False, **faults):
        """Status (negative: a signal, None: no end) and standard error."""
        environment = {**self.environment, **(self.faults | faults if faults else {})}
        try:
            done = subprocess.run([self.program, *self.words(scenario, is_earlier)], cwd=self.folder / "work",
                                  timeout=SECONDS, stdin=subprocess.DEVNULL, capture_output=True, env=environment)
            return done.returncode, done.stderr
        except subprocess.TimeoutExpired:
            return None, b""

    def files(self):
        return {str(p.relative_to(self.out)): DURATION.sub(b"", p.read_bytes())
                for p in self.out.rglob("*") if p.is_file()}

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
        whole = name.endswith(GROWING) and text.endswith(b"\n") and (
            good.get(name, b"").startswith(text) or text.startswith(earlier.get(name, b"\0")))
        if not (whole or name.endswith(GROWING) and not text):
            return name
    missing = [name for name in earlier if name not in files and not name.startswith(".photrak")]
    return missing[0] + " (gone)" if missing else ""


def judge(result, files, earlier, good, number):
    status, errors = result
    if status is None:
        return "does not end"
    name = torn(files, earlier, good)
    if name:
        return f"torn: {name}"
    if any(name.endswith(".tmp") for name in files):
        return "leaves a temporary file"
    if status == 0:
        lost = [name for name, text in good.items() if name != "log.txt" and files.get(name) != text]
        told = b"could not write" in errors  # the log alone is a warning
        if lost:
            return f"success without {lost[0]}"
        return "" if told or files.get("log.txt") == good.get("log.txt") else "a log lost without a word"
    if status != 1:
        return f"status {status}"
    return "" if os.strerror(number).encode() in errors else "status 1 without the reason"


def run_scenario(torture, scenario, asked):
    torture.restore({})
    if scenario != "report":
        torture.run(scenario, is_earlier=True)
    earlier = torture.files()
    counted = torture.folder / "count"
    done = torture.run(scenario, DISK_COUNT=str(counted))
    if done[0] != 0:
        sys.exit(f"{scenario}: fails by itself: {done[1].decode(errors='replace')}")
    good, calls = torture.files(), int(counted.read_text())
    kinds, shown, points = collections.Counter(), collections.defaultdict(list), 0

    def note(fault, status, point, errors):
        kinds[fault or f"status {status}"] += 1
        if fault and len(shown[fault]) < asked.show:
            shown[fault].append((*point, errors[-300:].decode(errors="replace")))

    for number in range(asked.offset, calls + 1, asked.every):
        for mode, error in MODES:
            torture.restore(earlier)
            result = torture.run(scenario, **{mode: str(number), "DISK_ERROR": str(error)})
            fault = judge(result, torture.files(), earlier, good, error)
            note(fault, result[0], (mode, number, errno.errorcode.get(error, "half a write")), result[1])
            points += 1
        torture.restore(earlier)
        torture.run(scenario, DISK_KILL=str(number))
        name = torn(torture.files(), earlier, good)
        note(f"torn by a kill: {name}" if name else "", "killed", ("DISK_KILL", number), b"")
        again = torture.run(scenario)
        left = [name for name in torture.files() if name.startswith(".photrak") and scenario in SETS]
        note(f"left by a kill: {left[0]}" if left else "", again[0], ("DISK_KILL", number), again[1])
        points += 1
    faults = sum(n for kind, n in kinds.items() if not kind.startswith("status"))
    print(f"{scenario}: {calls} calls, {points} runs, {faults} faults;",
          ", ".join(f"{kind}: {n}" for kind, n in kinds.most_common()), flush=True)
    for fault, examples in shown.items():
        for example in examples:
            print(f"  {fault}: {example}", flush=True)
    return faults


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("scenarios", nargs="*")
    parser.add_argument("--every", type=int, default=1)
    parser.add_argument("--offset", type=int, default=1)
    parser.add_argument("--program", type=pathlib.Path, default=BUILD / "bin/photrak")
    parser.add_argument("--disk", type=pathlib.Path, default=BUILD / "torture/failing_disk.so")
    parser.add_argument("--show", type=int, default=3, help="examples of each kind of failure")
    asked = parser.parse_args()
    with tempfile.TemporaryDirectory(dir="/dev/shm" if os.access("/dev/shm", os.W_OK) else None) as name:
        torture = Torture(asked.program.resolve(), asked.disk.resolve(), pathlib.Path(name))
        torture.run("run")
        torture.out.rename(torture.folder / "work/RESULTS")
        faults = sum(run_scenario(torture, scenario, asked) for scenario in asked.scenarios or SCENARIOS)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
