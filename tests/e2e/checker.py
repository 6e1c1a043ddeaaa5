#!/usr/bin/env python3
"""Exact, independent check of solutions: python3 checker.py FILE.opt [FILE.sol]

Everything the solver claims in a .sol line is computed again from the program as the user wrote it, with
fractions.Fraction and no code of the solver's. One line is printed per star, then a verdict; the exit status is 0 only
if every star holds.
"""

import re
import sys
from fractions import Fraction

INF = float("inf")


class FormatError(Exception):
    """A text that is no .opt or .sol file."""


class Wrong(Exception):
    """A star that claims something untrue."""


# ----------------------------------------------------------------- numbers and tokens


def number(text):
    """The value of one number: integer, decimal, fraction, mixed number `2:1/3`, exponent form, inf, -inf."""
    body, negative = (text[1:], True) if text.startswith("-") else (text, False)
    if body == "inf":
        return -INF if negative else INF
    try:
        value = unsigned(body)
    except (ValueError, ZeroDivisionError):
        raise FormatError("not a number: %r" % text) from None
    return -value if negative else value


def unsigned(body):
    if not re.fullmatch(r"[0-9.,:/eE+-]+", body):
        raise ValueError(body)
    if ":" in body:
        whole, part = body.split(":")
        return Fraction(whole) + Fraction(part)
    return Fraction(body.replace(",", "."))


def without_comments(text):
    return re.sub(r"//[^\n]*|/\*.*?\*/", " ", text, flags=re.DOTALL)


class Items:
    """The bracketed items of a text, taken one after the other."""

    def __init__(self, text):
        self.tokens = re.findall(r"[\[\]=|]|[^\s\[\]=|]+", without_comments(text))
        self.at = 0

    def peek(self):
        return self.tokens[self.at] if self.at < len(self.tokens) else None

    def take(self, expected=None):
        token = self.peek()
        if token is None or (expected is not None and token != expected):
            raise FormatError("expected %r, found %r" % (expected, token))
        self.at += 1
        return token

    def vector(self):
        self.take("[")
        values = []
        while self.peek() != "]":
            values.append(number(self.take()))
        self.take("]")
        return values

    def matrix(self):
        self.take("[")
        rows = []
        while self.peek() != "]":
            rows.append(self.vector())
        self.take("]")
        return rows


# ----------------------------------------------------------------- the program


class Program:
    """An optimisation program as its file states it."""

    def __init__(self, text):
        items = Items(text)
        self.dt = items.vector()
        self.kt = list(self.dt)
        if items.peek() == "=":
            items.take("=")
            self.kt = items.vector()
        self.at = items.matrix()
        self.ag = items.matrix()
        self.bg = items.vector()
        self.au = items.matrix()
        self.lu = items.vector()
        self.ru = items.vector()
        self.dx = items.vector()
        self.lx = items.vector()
        self.rx = items.vector()
        self.n = len(self.rx)
        self.require_shape()

    def require_shape(self):
        for name, rows, sides in (("targets", self.at, (self.dt, self.kt)), ("equations", self.ag, (self.bg,)),
                                  ("inequations", self.au, (self.lu, self.ru))):
            if any(len(side) != len(rows) for side in sides) or any(len(row) != self.n for row in rows):
                raise FormatError("the %s do not fit together" % name)
        if not len(self.lx) == len(self.dx) == self.n > 0:
            raise FormatError("lx, rx and dx do not fit together")

    @property
    def finite_targets(self):
        return any(abs(d) != INF for d in self.dt)

    def violation(self, x):
        """The first condition that x breaks, as text, or None."""
        for i, value in enumerate(x):
            digits = max(int(self.dx[i]), 0)
            if (value * 10**digits).denominator != 1:
                return "x%d = %s is off its grid of %d digits" % (i + 1, value, digits)
            if not self.lx[i] <= value <= self.rx[i]:
                return "x%d = %s is outside [%s, %s]" % (i + 1, value, self.lx[i], self.rx[i])
        for i, row in enumerate(self.ag):
            if dot(row, x) != self.bg[i]:
                return "equation %d gives %s, not %s" % (i + 1, dot(row, x), self.bg[i])
        for i, row in enumerate(self.au):
            if not self.lu[i] <= dot(row, x) <= self.ru[i]:
                return "inequation %d gives %s, outside [%s, %s]" % (i + 1, dot(row, x), self.lu[i], self.ru[i])
        return None

    def norms(self, x):
        """(target norm, slack norm) of x: smaller is better; the slack norm is the distance from finite targets."""
        target = slack = Fraction(0)
        for row, d in zip(self.at, self.dt):
            value = dot(row, x)
            if abs(d) == INF:
                target += value if d < 0 else -value
            else:
                target += abs(value - d)
                slack += abs(value - d)
        return target, slack


def dot(row, x):
    return sum((a * b for a, b in zip(row, x)), Fraction(0))


# ----------------------------------------------------------------- the stars


class Star:
    """One line of a .sol file."""

    def __init__(self, line):
        fields = line.split(" | ")
        if len(fields) not in (6, 7):
            raise FormatError("a star has %d fields" % len(fields))
        self.x = Items(fields[0]).vector()
        self.target_norm = number(fields[1])
        self.targets = Items(fields[2]).vector()
        self.slack_norm = number(fields[3])
        self.time = int(fields[4])
        self.parameters = fields[5]
        self.version = fields[6] if len(fields) == 7 else ""


def read_stars(text):
    return [Star(line) for line in text.splitlines() if line.strip()]


def check_star(program, star):
    """Raises Wrong unless every figure of the star follows from the program."""
    if len(star.x) != program.n:
        raise Wrong("x has %d components, not %d" % (len(star.x), program.n))
    broken = program.violation(star.x)
    if broken:
        raise Wrong(broken)
    target, slack = program.norms(star.x)
    if program.finite_targets:
        check_deviations(program, star, target, slack)
    else:
        values = [dot(row, star.x) for row in program.at]
        require("target values", star.targets, values)
        require("target norm", star.target_norm, target)
        require("slack norm", star.slack_norm, slack)


def check_deviations(program, star, target, slack):
    """Finite targets: the star shows the sum of both deviation variables, in an order of the solver's own.

    The two variables may be above zero together, so that sum is the true distance or larger by an even number. The
    slack norm is exact where no other row stands before the deviations; with others the solver takes it from them.
    """
    if len(star.targets) != len(program.dt):
        raise Wrong("%d target values, not %d" % (len(star.targets), len(program.dt)))
    excess = star.target_norm - target
    if excess < 0 or excess % 2 != 0:
        raise Wrong("target norm %s does not follow from %s" % (star.target_norm, target))
    if not program.ag and not program.au:
        require("slack norm", star.slack_norm, slack)


def require(what, claimed, true):
    if claimed != true:
        raise Wrong("%s: claimed %s, true %s" % (what, claimed, true))


def verdicts(program, stars):
    """(star, None or what is wrong with it) for each star, duplicates included.

    One point may stand several times with different deviations from targets with a value.
    """
    seen = set()
    for star in stars:
        try:
            check_star(program, star)
            if (tuple(star.x), tuple(star.targets)) in seen:
                raise Wrong("stands twice")
            yield star, None
        except Wrong as wrong:
            yield star, str(wrong)
        seen.add((tuple(star.x), tuple(star.targets)))


def main(arguments):
    opt = arguments[1]
    sol = arguments[2] if len(arguments) > 2 else re.sub(r"\.opt$", "", opt) + ".sol"
    with open(opt, encoding="utf-8") as file:
        program = Program(file.read())
    with open(sol, encoding="utf-8") as file:
        stars = read_stars(file.read())
    wrong = 0
    for place, (star, reason) in enumerate(verdicts(program, stars), 1):
        wrong += reason is not None
        print("star %d: target norm %s, slack norm %s: %s" %
              (place, star.target_norm, star.slack_norm, reason or "holds"))
    print("%d star(s), %d wrong" % (len(stars), wrong))
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
