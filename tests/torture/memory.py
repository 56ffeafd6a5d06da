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
import argparse
import collections
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
VALGRIND = ["valgrind", "-q", "--leak-check=full", "--errors-for-leak-kinds=definite", "--error-exitcode=99",
            "--soname-synonyms=somalloc=nouserintercepts", "--show-mismatched-frees=no"]
DURATION = re.compile(rb"calculation time = \S+")  # the one thing in a log that differs each time

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


class Torture:
    def __init__(self, program, heap, threads, folder, leaks):
        self.command, self.folder = [*(VALGRIND if leaks else []), str(program)], folder
        self.environment = dict(os.environ, PHOTRAK_THREADS=str(threads), LD_PRELOAD=str(heap), HOME=str(folder))
        self.environment.pop("DISPLAY", None)
        if leaks:
            self.environment["REFUSE_BY_NAME"] = "1"
        self.out = folder / "out"
        shutil.copytree(ROOT / "examples", folder / "work")

    def run(self, words, **refusal):
        """Status (negative: a signal, None: no end), standard output and error, files of the results."""
        shutil.rmtree(self.out, ignore_errors=True)
        self.out.mkdir()
        arguments = [word.replace("OUT", str(self.out)) for word in words]
        try:
            done = subprocess.run([*self.command, *arguments], cwd=self.folder / "work", timeout=SECONDS,
                                  stdin=subprocess.DEVNULL, capture_output=True,
                                  env={**self.environment, **refusal})
            status, output, errors = done.returncode, done.stdout, done.stderr
        except subprocess.TimeoutExpired:
            status, output, errors = None, b"", b""
        files = {str(p.relative_to(self.out)): DURATION.sub(b"", p.read_bytes())
                 for p in self.out.rglob("*") if p.is_file()}
        return status, output, errors, files


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
    parser = argparse.ArgumentParser()
    parser.add_argument("scenarios", nargs="*")
    parser.add_argument("--every", type=int, default=1)
    parser.add_argument("--offset", type=int, default=1)
    parser.add_argument("--threads", type=int, default=1)
    parser.add_argument("--program", type=pathlib.Path, default=BUILD / "bin/photrak")
    parser.add_argument("--heap", type=pathlib.Path, default=BUILD / "torture/refusing_heap.so")
    parser.add_argument("--leaks", action="store_true")
    parser.add_argument("--planted", action="store_true")
    parser.add_argument("--show", type=int, default=3, help="examples of each kind of failure")
    asked = parser.parse_args()
    if asked.planted:
        return prove(asked)
    return 1 if torture(asked) else 0


def torture(asked):
    """How many runs of all scenarios had a fault."""
    failures = 0
    with tempfile.TemporaryDirectory(dir="/dev/shm" if os.access("/dev/shm", os.W_OK) else None) as name:
        rack = Torture(asked.program.resolve(), asked.heap.resolve(), asked.threads, pathlib.Path(name),
                       asked.leaks)
        rack.run(["run", "--out", "OUT", "nrz-link.top"])
        rack.out.rename(rack.folder / "work/RESULTS")
        for scenario in asked.scenarios or SCENARIOS:
            failures += run_scenario(rack, scenario, asked)
    return failures


def commands_of(target):
    return subprocess.run(["ninja", "-C", BUILD, "-t", "commands", target], check=True, text=True,
                          capture_output=True).stdout.splitlines()


def prove(asked):
    """Links photrak with each planted fault before its libraries; 0 if all are found."""
    missed = 0
    for file, text, instead in PLANTED:
        source = (ROOT / file).read_text()
        if source.count(text) != 1:
            sys.exit(f"{file}: '{text}' does not stand there once")
        compiling = next(line for line in commands_of("bin/photrak") if line.endswith(f" {ROOT / file}"))
        linking = commands_of("bin/photrak")[-1]
        with tempfile.TemporaryDirectory() as name:
            faulty, linked = pathlib.Path(name) / "faulty.cpp", BUILD / "bin/photrak-faulty"
            faulty.write_text(source.replace(text, instead))
            own = re.search(r" -o (\S+)", compiling)[1]
            compiled = f"{name}/faulty.o"
            compiling = compiling.replace(f" -o {own}", f" -o {compiled}")
            compiling = compiling.replace(f" {ROOT / file}", f" -I{(ROOT / file).parent} -Wno-error {faulty}")
            linking = linking.replace(" -o bin/photrak ", f" -o {linked} ")
            linking = (linking.replace(own, compiled) if own in linking else
                       linking.replace(" -rdynamic ", f" -rdynamic {compiled} "))
            try:
                for command in (compiling, linking):
                    subprocess.run(command, shell=True, check=True, cwd=BUILD)
                asked.program, asked.every = linked, max(asked.every, 97)
                found = torture(asked)
            finally:
                linked.unlink(missing_ok=True)
        print(f"planted in {file}: {'found' if found else 'MISSED'}", flush=True)
        missed += not found
    return 1 if missed else 0


def run_scenario(rack, scenario, asked):
    words = SCENARIOS[scenario]
    counted = rack.folder / "count"
    good = rack.run(words, REFUSE_COUNT=str(counted))
    if good[0] != 0:
        sys.exit(f"{scenario}: fails by itself: {good[2].decode(errors='replace')}")
    calls = int(counted.read_text())
    kinds = collections.Counter()
    shown = collections.defaultdict(list)
    points = 0
    for number in range(asked.offset, calls + 1, asked.every):
        for mode in ("REFUSE_AT", "REFUSE_FROM"):
            result = rack.run(words, **{mode: str(number)})
            fault = judge(result, good)
            points += 1
            kinds["status 0" if result[0] == 0 and not fault else "status 1" if not fault else fault] += 1
            if fault and len(shown[fault]) < asked.show:
                shown[fault].append((mode, number, result[2][-300:].decode(errors="replace")))
    faults = points - kinds["status 0"] - kinds["status 1"]
    print(f"{scenario}: {calls} allocations, {points} runs, {faults} faults;",
          ", ".join(f"{kind}: {n}" for kind, n in kinds.most_common()), flush=True)
    for fault, examples in shown.items():
        for mode, number, text in examples:
            print(f"  {fault}: {mode}={number}: {text.strip()!r}", flush=True)
    return faults


if __name__ == "__main__":
    sys.exit(main())
