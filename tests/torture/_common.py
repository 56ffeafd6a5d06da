"""What the programs of this folder share: options, a scratch folder with the examples, runs, findings."""
import argparse
import collections
import contextlib
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
BUILD = ROOT / "build/release"
DURATION = re.compile(rb"calculation time = \S+")  # the one thing in a log that differs each time


def options(library=None):
    """The options of all; with the name of the library that is loaded before the program."""
    parser = argparse.ArgumentParser()
    parser.add_argument("names", nargs="*")
    parser.add_argument("--program", type=pathlib.Path, default=BUILD / "bin/photrak")
    parser.add_argument("--library", type=pathlib.Path, default=BUILD / f"torture/{library}.so")
    parser.add_argument("--every", type=int, default=1, help="each K-th only")
    parser.add_argument("--offset", type=int, default=1, help="from the J-th")
    parser.add_argument("--show", type=int, default=3, help="examples of each kind of fault")
    parser.add_argument("--planted", action="store_true", help="shows that faults are found")
    return parser


@contextlib.contextmanager
def scratch():
    """A folder that goes away, with the examples in its `work`."""
    with tempfile.TemporaryDirectory(dir="/dev/shm" if os.access("/dev/shm", os.W_OK) else None) as name:
        shutil.copytree(ROOT / "examples", pathlib.Path(name) / "work")
        yield pathlib.Path(name)


def environment(folder, **more):
    """That of a run: its home is the folder, one thread where nothing else is said, no display."""
    inherited = {name: value for name, value in os.environ.items() if name != "DISPLAY"}
    return {**inherited, "HOME": str(folder), "PHOTRAK_THREADS": "1", **more}


def run(command, folder, variables, seconds=60):
    """Status (negative: a signal, None: no end), standard output and error."""
    try:
        done = subprocess.run([str(word) for word in command], cwd=folder, env=variables, timeout=seconds,
                              stdin=subprocess.DEVNULL, capture_output=True)
        return done.returncode, done.stdout, done.stderr
    except subprocess.TimeoutExpired:
        return None, b"", b""


def files_below(folder):
    """The text of each file by its name, without the times in logs."""
    return {str(path.relative_to(folder)): DURATION.sub(b"", path.read_bytes())
            for path in folder.rglob("*") if path.is_file()}


class Findings:
    """Runs of a scenario by what came of them; the kinds in `faultless` are none of its faults."""

    def __init__(self, show, *faultless):
        self.show, self.faultless = show, faultless
        self.kinds, self.examples = collections.Counter(), collections.defaultdict(list)

    def note(self, kind, point="", errors=b""):
        self.kinds[kind] += 1
        if kind not in self.faultless and len(self.examples[kind]) < self.show:
            self.examples[kind].append(f"{point}: {errors[-300:].decode(errors='replace').strip()!r}")

    def tell(self, title):
        """Prints them; how many faults there are."""
        faults = sum(number for kind, number in self.kinds.items() if kind not in self.faultless)
        counts = ", ".join(f"{kind}: {number}" for kind, number in self.kinds.most_common())
        print(f"{title}, {self.kinds.total()} runs, {faults} faults; {counts}", flush=True)
        for kind, examples in self.examples.items():
            for example in examples:
                print(f"  {kind}: {example}", flush=True)
        return faults


def commands_of(target):
    return subprocess.run(["ninja", "-C", BUILD, "-t", "commands", target], check=True, text=True,
                          capture_output=True).stdout.splitlines()


def prove(asked, planted, torture):
    """Links photrak with each fault (file, text, what stands there instead) before its libraries, and
    tortures that; 0 if all are found."""
    missed = 0
    for file, text, instead in planted:
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
                asked.program = linked
                found = torture(asked)
            finally:
                linked.unlink(missing_ok=True)
        print(f"planted in {file}: {'found' if found else 'MISSED'}", flush=True)
        missed += not found
    return 1 if missed else 0
