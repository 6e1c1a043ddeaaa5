"""The options of latbox-farm, in one table: parsing, the usage, the manual page and the completion come from it.

What the search is asked for has the words and values of latbox-all, to which it is handed on.
"""

from __future__ import annotations

import os
import re
from collections.abc import Sequence
from dataclasses import dataclass
from fractions import Fraction

from ..errors import UsageError
from ..front.parsing import HELP, Option, Parser, Wanted, take_between, take_choice, take_name, take_path, take_time

SHARE = re.compile(r"([0-9]+(?:\.[0-9]*)?|\.[0-9]+)(%?)\Z", re.ASCII)
CATALOG = re.compile(r"[A-Za-z0-9.-]+(:[0-9]{1,5})?\Z")
SWITCH = ("0", "1")
MOST_PIECES = 10**7
# What latbox-all would refuse in the end, when all is done.
SOLVERS = (".opt", ".sol", ".lat")


def take_share(text: str) -> Fraction:
    match = SHARE.match(text)
    value = Fraction(match[1]) / (100 if match[2] else 1) if match else Fraction(-1)
    if not 0 <= value <= 1:
        raise Wanted("a share from 0 to 1 is wanted, as 0.05 or 5%")
    return value


def take_catalog(text: str) -> str:
    match = CATALOG.match(text)
    if not match or (match[1] and not 1 <= int(match[1][1:]) <= 65535):
        raise Wanted("the name of a host is wanted, with or without :PORT")
    return text


def take_switch(text: str) -> bool:
    return take_choice(*SWITCH)(text) == "1"


TABLE = [
    Option("port", "P", take_between("a port", 1, 65535),
           "Listen there; else where DIR says, or at the first free port from 9123 on."),
    Option("pieces", "N", take_between("a number of pieces", 1, MOST_PIECES),
           "Cut the search into about N pieces; 1000 unless given."),
    Option("jobs", "DIR", take_name("a folder"), "The folder of the pieces; NAME.jobs unless given. A farm goes on from what stands there."),
    Option("catalog", "HOST", take_catalog, "Tell this catalog of Work Queue, HOST or HOST:PORT, that workers are wanted."),
    Option("password", "FILE", take_path, "What workers have to know; else a password is drawn and kept in DIR."),
    Option("verify", "SHARE", take_share, "Check this share of the pieces, drawn at random, on other workers; 0.05 or 5%."),
    Option("job-rtime", "T", take_time, "Take back a piece after T seconds (s, m, h, d), and split what is left of it; 10m unless given."),
    Option("silence", "T", take_time, "Give up a worker that has not answered for T seconds (s, m, h, d); 60 unless given."),
    Option("all", "0|1", take_switch, "List all points, also where there are targets.", SWITCH),
    Option("ties", "0|1", take_switch, "List all best points, not one of them.", SWITCH),
    Option("count", "0|1", take_switch, "Count what would be listed, and write no file.", SWITCH),
    Option("out", "FILE", take_path, "Where points are written; NAME.all unless given."),
    Option("proof", "FILE", take_path, "Write a proof of the verdict that latbox-check can check."),
    Option("threads", "N", take_between("a number of threads", 0, 1024),
           "Threads here, where all is joined; 0, the default: one for each core."),
    Option("quiet", "0|1", take_switch, "No lines of progress, and no command for workers.", SWITCH),
    HELP,
    Option("version", "", None, "Show the version, its commit, and the programs."),
]
PARSER = Parser("latbox-farm", "program", "FILE.opt",
                "Cuts the complete search of latbox-all into pieces, has them done by workers of Work Queue wherever these run, and\n"
                "tells verdict and status of latbox-all.", TABLE)
usage = PARSER.usage


@dataclass
class Options:
    """An attribute for each option of the table, `-` being `_`, and `program`."""

    program: str = ""
    port: int | None = None
    pieces: int = 1000
    jobs: str = ""
    catalog: str | None = None
    password: str | None = None
    verify: Fraction = Fraction(0)
    job_rtime: float = 600.0
    silence: float = 60.0
    all: bool = False
    ties: bool = False
    count: bool = False
    out: str = ""
    proof: str | None = None
    threads: int = 0
    quiet: bool = False
    help: bool = False
    version: bool = False


def parse(arguments: Sequence[str]) -> Options:
    """Throws UsageError."""
    options = Options()
    programs, _ = PARSER.parse(arguments, options)
    if options.help or options.version:
        return options
    options.program = PARSER.one(programs)
    # As latbox-all has it: NAME.all stands beside NAME.opt.
    name = os.path.splitext(options.program)[0]
    options.jobs = options.jobs or name + ".jobs"
    options.out = options.out or name + ".all"
    if os.path.realpath(options.out) == os.path.realpath(options.program):
        raise UsageError("--out=%s: that is the program" % options.out)
    for name, path in (("out", options.out), ("proof", options.proof or "")):
        if os.path.splitext(path)[1] in SOLVERS:
            raise UsageError("--%s=%s: a program or a file of the solver is not written over" % (name, path))
    return options
