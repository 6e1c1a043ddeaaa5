"""latbox-names: the solutions of a converted program by the names and in the coordinates of its model.

    latbox-names [--json | --csv] [--nonzero] [--first=N] PROGRAM.opt [PROGRAM.sol]

The program must be one that latbox-convert wrote: the map at its head tells the names. Objective values are computed from
the solution and contain the model's constant.
"""

from __future__ import annotations

import argparse
import csv
import io
import json
import os
import re
import sys
from fractions import Fraction
from typing import Callable, TypeVar

from .errors import Place, ReadError, UsageError
from .models import model, name_map, sources
from .models.name_map import NameMap
from .tool import Parser, run_tool

T = TypeVar("T")
MIXED = re.compile(r"(-?)(?:([0-9]+):)?([0-9]+)/([0-9]+)\Z")


class Solution:
    """The model's values in the order of the columns, and what the file says about them."""

    def __init__(self, values: list[Fraction], objective: Fraction | None, seconds: int) -> None:
        self.values = values
        self.objective = objective
        self.seconds = seconds


def number(text: str) -> Fraction:
    """A number of a .sol or .opt file: 12, 1.5, -3/4, 2:1/3."""
    match = MIXED.match(text)
    if not match:
        return model.number(text)
    sign, whole, part, below = match.groups()
    value = Fraction(int(part), int(below)) + int(whole or 0)
    return -value if sign else value


def vector(text: str) -> list[Fraction]:
    match = re.match(r"\s*\[([^][]*)\]\s*\Z", text)
    if not match:
        raise ValueError(text)
    return [number(word) for word in match.group(1).split()]


def target_row(text: str) -> list[Fraction]:
    """The target row of a converted program, empty if there is none."""
    plain = re.sub(r"//[^\n]*", " ", text)
    items = re.match(r"\s*\[[^][]*\]\s*\[\s*(?:\[([^][]*)\])?\s*\]", plain)
    if not items:
        raise ReadError("it does not begin like a .opt file")
    try:
        return [number(word) for word in (items.group(1) or "").split()]
    except (ReadError, ZeroDivisionError) as error:
        raise ReadError("its target row is damaged: %s" % error) from None


def read_solutions(text: str, names: NameMap, target: list[Fraction]) -> list[Solution]:
    """The solutions of a .sol text, in its order."""
    found = []
    for place, line in enumerate(text.split("\n"), 1):
        if not line.strip():
            continue
        fields = line.split(" | ")
        try:
            x, seconds = vector(fields[0]), int(fields[4])
        except (ReadError, ValueError, IndexError, ZeroDivisionError):
            raise ReadError("this is no line of a .sol file", Place(place)) from None
        if len(x) != len(names.columns):
            raise ReadError("the solution has %d values and the program %d variables" % (len(x), len(names.columns)),
                            Place(place))
        found.append(Solution([column.original(value) for column, value in zip(names.columns, x)],
                              objective_value(names, target, x), seconds))
    return found


def objective_value(names: NameMap, target: list[Fraction], x: list[Fraction]) -> Fraction | None:
    if names.objective is None:
        return None
    return names.objective[1] + sum((a * value for a, value in zip(target, x)), Fraction(0))


def decimal(value: Fraction) -> str:
    """A number as the exact decimal it is: the models' numbers are decimals, and so is all that follows from them."""
    shift = 0
    while (value * 10**shift).denominator != 1:
        shift += 1
        if shift > 100000 or value.denominator % 2 and value.denominator % 5:
            return str(value)
    digits = str(abs(value * 10**shift).numerator).rjust(shift + 1, "0")
    point = len(digits) - shift
    return ("-" if value < 0 else "") + digits[:point] + ("." + digits[point:] if shift else "")


# ----------------------------------------------------------------- the three forms


def as_table(names: NameMap, solutions: list[Solution], nonzero: bool) -> str:
    lines = []
    width = max((len(column.name) for column in names.columns), default=0)
    for count, solution in enumerate(solutions, 1):
        head = "Solution %d" % count
        if names.objective:
            head += ": %s = %s (%s)" % (names.objective[2] or "objective", decimal(solution.objective or Fraction(0)),
                                        "maximise" if names.objective[0] else "minimise")
        lines.append(head + ", found after %d s" % solution.seconds)
        lines += ["  %-*s  %s" % (width, column.name, decimal(value))
                  for column, value in zip(names.columns, solution.values) if value != 0 or not nonzero]
        lines.append("")
    lines.append("%d solution(s)" % len(solutions))
    return "\n".join(lines) + "\n"


def as_json(names: NameMap, solutions: list[Solution], nonzero: bool) -> str:
    """By hand where numbers stand: json has no exact ones of its own."""
    entries = []
    for solution in solutions:
        values = ", ".join("%s: %s" % (json.dumps(column.name), decimal(value))
                           for column, value in zip(names.columns, solution.values) if value != 0 or not nonzero)
        objective = "null" if solution.objective is None else decimal(solution.objective)
        entries.append('    {"objective": %s, "seconds": %d, "values": {%s}}' % (objective, solution.seconds, values))
    head = {"problem": names.problem, "objective": names.objective[2] if names.objective else None,
            "sense": ("max" if names.objective[0] else "min") if names.objective else None}
    fields = ["  %s: %s" % (json.dumps(key), json.dumps(value)) for key, value in head.items()]
    listed = "[\n%s\n  ]" % ",\n".join(entries) if entries else "[]"
    return "{\n%s\n}\n" % ",\n".join(fields + ['  "solutions": ' + listed])


def as_csv(names: NameMap, solutions: list[Solution], nonzero: bool) -> str:
    """One line per solution; columns that are 0 in all of them can be left out."""
    kept = [i for i in range(len(names.columns)) if not nonzero or any(s.values[i] != 0 for s in solutions)]
    out = io.StringIO()
    writer = csv.writer(out, lineterminator="\n")
    writer.writerow(["solution", "objective", "seconds"] + [names.columns[i].name for i in kept])
    for count, solution in enumerate(solutions, 1):
        objective = "" if solution.objective is None else decimal(solution.objective)
        writer.writerow([count, objective, solution.seconds] + [decimal(solution.values[i]) for i in kept])
    return out.getvalue()


# ----------------------------------------------------------------- command line


def parser() -> Parser:
    found = Parser("latbox-names", "The solutions of a converted program by the names of its model.")
    found.add_argument("opt", metavar="PROGRAM.opt", help="the program")
    found.add_argument("sol", nargs="?", metavar="PROGRAM.sol", help="its solutions; the program's name with .sol if left out")
    form = found.add_mutually_exclusive_group()
    form.add_argument("--json", dest="form", action="store_const", const=as_json, default=as_table,
                      help="as JSON, all numbers exact")
    form.add_argument("--csv", dest="form", action="store_const", const=as_csv, help="as lines with commas, one a solution")
    found.add_argument("--nonzero", action="store_true", help="leave out the variables that are 0")
    found.add_argument("--first", type=_count, metavar="N", help="the first N solutions only, which are the best")
    return found


def _count(text: str) -> int:
    if not re.fullmatch("[0-9]{1,9}", text, re.ASCII):
        raise argparse.ArgumentTypeError("a number of solutions is wanted, not %r" % text)
    return int(text)


def read(path: str, take: Callable[[str], T]) -> T:
    """take(text) of a file; an error gets the file's name."""
    try:
        return take(sources.read(path))
    except ReadError as error:
        raise error.in_file(path)


def name_solutions(options: argparse.Namespace) -> None:
    if options.opt == "-" and not options.sol:
        raise UsageError("PROGRAM.sol is wanted too: nothing lies beside standard input")
    names, target = read(options.opt, lambda text: (name_map.read_map(text), target_row(text)))
    sol = options.sol or os.path.splitext(options.opt)[0] + ".sol"
    if not options.sol and not os.path.exists(sol):
        solutions = []  # the solver removes the file of a program without solutions
    else:
        solutions = read(sol, lambda text: read_solutions(text, names, target))
    sources.write(None, options.form(names, solutions[:options.first], options.nonzero))


def main(arguments: list[str] | None = None) -> int:
    """The command; its exit status is 0, 1 for files that are refused, 2 for a wrong command line."""
    return run_tool(parser(), name_solutions, arguments)


if __name__ == "__main__":
    sys.exit(main())
