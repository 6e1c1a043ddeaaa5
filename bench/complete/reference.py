"""The reference programs, compiled here from a folder of their sources, on 0/1 equations:

  opt2cen.py FILE.opt FILE.cen            the kernel lattice, by the command fplll
  boxenum FILE.cen BLOCK cvp SECONDS      all solutions
  boxfind FILE.cen BLOCK SHARE SECONDS SEED   a first one, with STOPF in the environment

Of opt2cen.py the run of fplll alone counts, and not the interpreter's start: a stand-in for fplll in the search path measures
it. A run is a dictionary as in verdicts.py: `count`, `fault`, `cpu`; where it came to no end, `count` is None.
"""

import hashlib
import os
import re
import shlex
import shutil
import sys
from typing import Any

import checker
from limited_run import LimitedRun

Run = dict[str, Any]

SOURCES = ("boxenum.cpp", "boxfind.cpp", "opt2cen.py")
# As their authors compile them.
COMPILER = ["g++", "-O3", "-march=native", "-ffast-math", "-std=c++17"]
LIBRARIES = ["-lfplll", "-lmpfr", "-lgmp"]
STAND_IN = """#!/usr/bin/env bash
TIMEFORMAT='%%3U %%3S'
{ time %s "$@" 2>&3; } 3>&2 2>>"$FPLLL_SECONDS"
"""
# Seconds beyond the limit that a program is given, for what it does before it counts them.
GRACE = 60


class Reference:
    def __init__(self, sources: str, folder: str) -> None:
        """Compiles into the folder, when a program is first wanted; it keeps the lattices too."""
        self.sources, self.folder = os.path.abspath(sources), folder
        self.version = self.hash_of_sources()
        self.lattices: dict[str, tuple[str, float]] = {}

    def hash_of_sources(self) -> str:
        digest = hashlib.sha256()
        for name in SOURCES:
            with open(os.path.join(self.sources, name), "rb") as file:
                digest.update(file.read())
        return digest.hexdigest()[:16]

    def path(self, name: str) -> str:
        return os.path.join(self.folder, name)

    def program(self, name: str) -> str:
        path = self.path(name)
        if not os.path.exists(path):
            require([*COMPILER, os.path.join(self.sources, name + ".cpp"), "-o", path, *LIBRARIES])
        return path

    def lattice(self, text: str) -> tuple[str, float]:
        """The program's .cen file and the CPU seconds of fplll for it; made once."""
        key = hashlib.sha256(text.encode()).hexdigest()[:16]
        if key not in self.lattices:
            program, lattice, seconds = (self.path(key + end) for end in (".opt", ".cen", ".seconds"))
            with open(program, "w", encoding="utf-8") as file:
                file.write(text)
            search_path = self.stand_in() + os.pathsep + os.environ["PATH"]
            require([sys.executable, os.path.join(self.sources, "opt2cen.py"), program, lattice],
                    dict(os.environ, PATH=search_path, FPLLL_SECONDS=seconds))
            if not os.path.exists(seconds):
                raise SystemExit("opt2cen.py has not run fplll by the search path: its time is not known")
            with open(seconds, encoding="utf-8") as file:
                self.lattices[key] = lattice, sum(map(float, file.read().split()))
        return self.lattices[key]

    def stand_in(self) -> str:
        """The folder of the stand-in."""
        folder, fplll = self.path("bin"), shutil.which("fplll")
        if fplll is None:
            raise SystemExit("fplll is missing, which opt2cen.py runs (Debian: fplll-tools)")
        os.makedirs(folder, exist_ok=True)
        with open(os.path.join(folder, "fplll"), "w", encoding="utf-8") as file:
            file.write(STAND_IN % shlex.quote(fplll))
        os.chmod(os.path.join(folder, "fplll"), 0o755)
        return folder

    def enumerate(self, text: str, block: int, limit: float) -> Run:
        lattice, before = self.lattice(text)
        done = LimitedRun([self.program("boxenum"), lattice, str(block), "cvp", "%g" % limit], limit + GRACE)
        told = re.search(r"^RES .* sols (\d+) complete$", done.lines[-1][1]) if done.lines else None
        return made(text, done, before, int(told.group(1)) if told else None)

    def find(self, text: str, block: int, share: float, limit: float, seed: int) -> Run:
        lattice, before = self.lattice(text)
        done = LimitedRun([self.program("boxfind"), lattice, str(block), "%g" % share, "%g" % limit, str(seed)],
                          limit + GRACE, environment=dict(os.environ, STOPF="1"))
        found = any(line.startswith("SOL ") for _, line in done.lines)
        return made(text, done, before, 1 if found else None)


def require(command: list[str], environment: dict[str, str] | None = None) -> None:
    done = LimitedRun(command, GRACE, environment=environment)
    if done.timed_out or done.status != 0:
        raise SystemExit("\n".join([" ".join(command) + ": " + ("no end" if done.timed_out else "status %s" % done.status),
                                    *(line for _, line in done.lines)]))


def made(text: str, done: LimitedRun, before: float, count: int | None) -> Run:
    return {"count": count, "fault": fault_of(text, done), "cpu": before + done.cpu}


def fault_of(text: str, done: LimitedRun) -> str:
    """The solutions that are shown, of which boxenum shows twenty, judged exactly."""
    if done.status != 0 and not done.timed_out:
        return "status %s" % done.status
    program = checker.Program(text)
    for _, line in done.lines:
        shown = re.match(r"SOL ([01]+) ", line)
        if shown:
            x = [int(bit) for bit in shown.group(1)]
            broken = program.violation(x) if len(x) == program.n else "%d components, not %d" % (len(x), program.n)
            if broken:
                return broken
    return ""
