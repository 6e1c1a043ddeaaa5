"""The options of latbox-solve, in one table: parsing, the usage, the manual page and the completion come from it.

Strict and conventional: `--time 20` or `--time=20`; an unknown, repeated or malformed one ends the run with status 2, its name,
and what would be right.
"""

from __future__ import annotations

import re
from collections.abc import Sequence
from dataclasses import dataclass
from fractions import Fraction

from ..errors import UsageError
from ..models import FORMATS
from ..solving.settings import ALL, AUTO, COMPLETE, LEAST_MEMORY, MOST_THREADS, SEARCH, Gap
from ..tool import is_same_file
from .parsing import HELP, Option, Parser, Wanted, take_between, take_choice, take_path, take_time, take_whole

NUMBER = re.compile(r"[+-]?(?:[0-9]+(?:\.[0-9]*)?|\.[0-9]+)(?:[eE][+-]?[0-9]{1,4})?\Z", re.ASCII)
FRACTION = re.compile(r"[+-]?[0-9]+/0*[1-9][0-9]*\Z", re.ASCII)
MEMORY = re.compile(r"([0-9]+(?:\.[0-9]*)?|\.[0-9]+)([KMGT])B?\Z", re.ASCII)

BYTES = {"K": 1 << 10, "M": 1 << 20, "G": 1 << 30, "T": 1 << 40}
MOST_DIGITS = 18
MOST_SEED = 2**63 - 1
MOST_SOLUTIONS = 10**15
MEMORY_END = 1 << 62


def take_memory(text: str) -> int:
    match = MEMORY.match(text)
    if not match or not LEAST_MEMORY <= (value := int(Fraction(match[1]) * BYTES[match[2]])) < MEMORY_END:
        raise Wanted("an amount of memory of 128M or more is wanted, as 4G or 500M (K, M, G, T)")
    return value


def take_number(text: str) -> Fraction:
    if not NUMBER.match(text) and not FRACTION.match(text):
        raise Wanted("a number is wanted, as 12, -2.5 or 7/3")
    return Fraction(text)


def take_gap(text: str) -> Gap:
    number = text.removesuffix("%")
    if not (NUMBER.match(number) or FRACTION.match(number)) or Fraction(number) < 0:
        raise Wanted("a number of 0 or more is wanted, as 5 or 0.1%")
    value = Fraction(number)
    return Gap(value / 100, True) if text.endswith("%") else Gap(value)


def take_solutions(text: str) -> int:
    if text == "all":
        return ALL
    return take_whole(1, MOST_SOLUTIONS, "a number of points, 1 or more, or all is wanted")(text)


def take_file(text: str) -> str:
    if text == "-":
        raise Wanted("the name of a file is wanted; - goes with --json alone")
    return take_path(text)


ENGINES = (AUTO, SEARCH, COMPLETE)

TABLE = [
    Option("time", "T", take_time, "End after T seconds with the answer so far; 0.5, 2m, 1h are times too."),
    Option("solutions", "N|all", take_solutions, "So many points instead of one: with an objective the N best.", ("all",)),
    Option("target", "V", take_number, "End when the objective is as good as V."),
    Option("gap", "V|V%", take_gap, "End when the objective is within V of the proven bound, or V% of max(1, |objective|)."),
    Option("engine", "NAME", take_choice(*ENGINES), "auto: both engines side by side; search, complete: one alone.", ENGINES),
    Option("digits", "N", take_between("a number of digits", 0, MOST_DIGITS),
           "Continuous columns take decimals of N digits; without it they are refused."),
    Option("format", "NAME", take_choice(*FORMATS), "The format of the model: opt, lp, mps (fixed or free), fixed-mps, free-mps; "
                                                    "else its name tells.", FORMATS),
    Option("threads", "N", take_between("a number of threads", 1, MOST_THREADS),
           "Threads of all engines together; else one for each processor."),
    Option("seed", "N", take_whole(0, MOST_SEED, "a whole number from 0 to 2^63 - 1 is wanted"),
           "Put columns and rows in another order for the search."),
    Option("memory", "SIZE", take_memory, "Memory of all engines together, as 4G or 500M."),
    Option("output", "FILE", take_file, "Write the values of all variables, one `name = p/q` a line."),
    Option("check", "FILE", take_file, "Solve nothing; check the points of a file that --output wrote."),
    Option("proof", "DIR", take_file, "Write the program, the map of its names and the proof to a folder."),
    Option("json", "FILE", take_path, "Write what happens as JSON, an event a line; - is standard output, in place of the answer."),
    Option("log", "FILE", take_file, "Write what the engines print, line by line, with times."),
    Option("options", "FILE", take_file, "Take options from a file, one key=value a line; the command line goes before it."),
    Option("all-values", "", None, "Show the values that are 0 too."),
    Option("view", "PORT", take_whole(0, 65535, "a port of this machine is wanted, a number up to 65535"),
           "Serve a page to watch and steer the run by, on this machine alone, and print its link.", default="0"),
    Option("quiet", "", None, "Show the answer alone."),
    Option("zero-exit", "", None, "Exit status 0 for every answer."),
    HELP,
    Option("version", "", None, "Show the version, its commit, and the engines."),
]
PARSER = Parser("latbox-solve", "model", "MODEL",
                "Solves an integer model: .opt, LP or MPS, also packed; - is standard input.", TABLE)
usage = PARSER.usage


@dataclass
class Options:
    """An attribute for each option of the table, `-` being `_`, and `model`."""

    model: str = ""
    time: float | None = None
    solutions: int = 1
    target: Fraction | None = None
    gap: Gap | None = None
    engine: str = AUTO
    digits: int | None = None
    format: str | None = None
    threads: int = 0  # one for each processor
    seed: int = 0
    memory: int | None = None
    output: str | None = None
    check: str | None = None
    proof: str | None = None
    json: str | None = None
    log: str | None = None
    options: str | None = None
    view: int | None = None  # a port, 0: any
    all_values: bool = False
    quiet: bool = False
    zero_exit: bool = False
    help: bool = False
    version: bool = False


def parse(arguments: Sequence[str]) -> Options:
    """Throws UsageError."""
    options = Options()
    models, given = PARSER.parse(arguments, options)
    if options.options is not None:
        read_file(options, options.options, given)
    if not options.help and not options.version:
        options.model = PARSER.one(models)
        exclude(options)
        require_own_files(options)
    return options


def read_file(options: Options, path: str, given: set[str]) -> None:
    """Lines key=value, a switch alone; # begins a comment line. What the command line gave stays."""
    try:
        with open(path, encoding="utf-8-sig") as file:
            lines = file.read().splitlines()
    except (OSError, UnicodeDecodeError) as error:
        raise UsageError("--options=%s: %s" % (path, getattr(error, "strerror", None) or "it is no text")) from None
    before = set(given)
    for number, line in enumerate(map(str.strip, lines), 1):
        if not line or line.startswith("#"):
            continue
        name, sign, value = line.partition("=")
        name, value = name.strip(), value.strip()
        place = "%s, line %d: %s" % (path, number, name)
        if name not in PARSER.by_name or name in ("options", "help", "version"):
            raise UsageError("%s: unknown option; %skey=value is wanted, the keys are those of --help" %
                             (place, "" if name in PARSER.by_name else PARSER.guess(name)))
        option = PARSER.by_name[name]
        if option.value and not sign and option.default is None:
            raise UsageError("%s: a value is wanted, %s=%s" % (place, name, option.value))
        PARSER.take(Options() if name in before else options, option, value if sign else option.default, set() if name in before else given,
             place)


def exclude(options: Options) -> None:
    if options.engine == SEARCH and options.solutions == ALL:
        raise UsageError("--solutions=all: the search alone cannot know that it has them all; --engine=auto or complete is wanted")
    if options.view is not None and options.check is not None:
        raise UsageError("--view: there is no run to watch with --check")
    for name in ("target", "gap"):
        if getattr(options, name) is not None and options.solutions != 1:
            raise UsageError("--%s: it goes with one point, not with --solutions" % name)
    if options.proof is not None and options.engine == SEARCH:
        raise UsageError("--proof: the search proves nothing; --engine=auto or complete is wanted")
    if options.proof is not None and options.solutions > 1:
        raise UsageError("--proof: it goes with one point or all, not with --solutions=%d" % options.solutions)


def require_own_files(options: Options) -> None:
    """Nothing that is read is written over, nor does one output take another's place."""
    taken = {"the model": options.model, "--options": options.options, "--check": options.check}
    for name in ("output", "json", "log"):
        path = getattr(options, name)
        for what, other in taken.items():
            if path is not None and other is not None and is_same_file(path, other):
                raise UsageError("--%s=%s: that is %s" % (name, path, what if what == "the model" else "the file of " + what))
        taken["--" + name] = path
