"""Random integer models, their texts in two modelling formats, and all their points.

The converters are held against this, and share nothing with it: a model is stated as data, written as text, and its
points are enumerated from the data.
"""

import itertools
from fractions import Fraction

INF = float("inf")


class Model:
    """variables: (name, digits, low, high), digits None for whole numbers; rows: (name, coefficients, low, high)."""

    def __init__(self, variables, rows, objective, maximise, constant):
        self.variables = variables
        self.rows = rows
        self.objective = objective  # None or coefficients
        self.maximise = maximise
        self.constant = constant

    def points(self, reach):
        """{point: objective} of all feasible points; a missing bound is looked for as far as `reach`."""
        grids = [grid(digits, -reach if low == -INF else low, reach if high == INF else high)
                 for _, digits, low, high in self.variables]
        return {x: self.value(x) for x in itertools.product(*grids) if self.holds(x)}

    def holds(self, x):
        return all(low <= dot(row, x) <= high for _, row, low, high in self.rows)

    def value(self, x):
        return None if self.objective is None else self.constant + dot(self.objective, x)


def grid(digits, low, high):
    if digits is not None and low == high:
        return [Fraction(low)]
    step = Fraction(1, 10 ** (digits or 0))
    first = -(-Fraction(low) // step)
    return [k * step for k in range(int(first), int(Fraction(high) // step) + 1)]


def dot(row, x):
    return sum(a * b for a, b in zip(row, x))


# ----------------------------------------------------------------- draws


def draw(random, digits=None, plain=False):
    """A model of up to four variables; `plain` keeps to what every reader of the formats understands alike."""
    n = random.randint(1, 4)
    variables = [("x%d" % j, *draw_variable(random, digits, plain)) for j in range(n)]
    rows = [("r%d" % i, *draw_row(random, n, plain)) for i in range(random.randint(0 if not plain else 1, 3))]
    # A variable without a bound gets one from a row, so that the points are finitely many.
    for j, (name, _, low, high) in enumerate(variables):
        if abs(low) == INF or abs(high) == INF:
            rows.append(("b" + name, [int(k == j) for k in range(n)], -4, random.randint(-2, 4)))
    objective = None if random.random() < 0.2 and not plain else [coefficient(random) for _ in range(n)]
    constant = 0 if objective is None or plain else Fraction(random.randint(-20, 20), 4)
    return Model(variables, rows, objective, random.random() < 0.5, constant)


def draw_variable(random, digits, plain):
    if digits is not None and random.random() < 0.6:
        low = Fraction(random.randint(-30, 30), 8)
        return digits, low, low + Fraction(random.randint(0, 6), 10)
    kind = random.random()
    low = random.randint(-3, 3)
    if plain or kind < 0.7:
        return None, low, low + random.randint(0, 4)
    if kind < 0.8:
        return None, -INF, low
    if kind < 0.9:
        return None, low - 4, INF
    return None, -INF, INF


def draw_row(random, n, plain):
    row = [coefficient(random) if random.random() < 0.8 else 0 for _ in range(n)]
    if not any(row):
        row[0] = 1
    middle = Fraction(random.randint(-12, 12), random.choice((1, 1, 2)))
    kind = random.random()
    if kind < 0.25:
        return row, middle, middle
    if kind < 0.5:
        return row, middle, INF
    if kind < 0.75 or plain:
        return row, -INF, middle
    return row, middle, middle + random.randint(1, 6)


def coefficient(random):
    return Fraction(random.randint(-8, 8), random.choice((1, 1, 1, 2, 4)))


# ----------------------------------------------------------------- texts


def decimal(value):
    """A fraction whose denominator divides a power of ten."""
    shift = 0
    while (Fraction(value) * 10**shift).denominator != 1:
        shift += 1
    digits = "%0*d" % (shift + 1, abs(int(Fraction(value) * 10**shift)))
    return ("-" if value < 0 else "") + (digits[:-shift] + "." + digits[-shift:] if shift else digits)


class Mps:
    """The text of a model in fixed or free form, with the kinds of bounds and ranges drawn at random."""

    def __init__(self, model, random, fixed, sense=True):
        self.model = model
        self.random = random
        self.fixed = fixed
        self.sense = sense

    def line(self, kind, *fields):
        if not self.fixed:
            return " " + " ".join([kind] * bool(kind) + [field for field in fields if field])
        widths = (8, 8, 12, 8, 12)
        gaps = ("", "  ", "  ", "   ", "  ")
        return " %-2s " % kind + "".join(gap + field.ljust(width)
                                         for field, width, gap in zip(fields, widths, gaps)).rstrip()

    def text(self):
        self.ranges, self.right_sides = [], []
        lines = ["* a random model", "NAME          DRAWN"]
        if self.model.maximise and self.sense:
            lines += ["OBJSENSE", "    MAX"]
        lines += ["ROWS"] + ([" N  cost"] if self.model.objective is not None else [])
        lines += [self.line(self.kind(name, low, high), name) for name, _, low, high in self.model.rows]
        lines += ["COLUMNS"] + self.columns()
        if self.model.constant:
            self.right_sides.append(("cost", -self.model.constant))
        lines += ["RHS"] + self.pairs("RHS", self.right_sides)
        lines += (["RANGES"] + self.pairs("RNG", self.ranges)) * bool(self.ranges)
        lines += ["BOUNDS"] + [line for variable in self.model.variables for line in self.bounds(*variable)]
        return "\n".join(lines + ["ENDATA"]) + "\n"

    def kind(self, name, low, high):
        if low == high:
            self.right_sides.append((name, low))
            return "E"
        if high == INF:
            self.right_sides.append((name, low))
            return "G"
        kind = "L" if low == -INF else self.random.choice(["L", "G", "E", "e"])
        self.right_sides.append((name, low if kind in "GE" else high))
        if low != -INF:
            self.ranges.append((name, low - high if kind == "e" else high - low))
        return kind.upper()

    def columns(self):
        lines, integer = [], False
        for j, (name, digits, _, _) in enumerate(self.model.variables):
            if (digits is None) != integer:
                integer = not integer
                lines.append(self.line("", "M%d" % j, "'MARKER'", "", "'INTORG'" if integer else "'INTEND'"))
            entries = [("cost", self.model.objective[j])] if self.model.objective is not None else []
            entries += [(row, a[j]) for row, a, _, _ in self.model.rows if a[j] != 0]
            # A column without entries must still be named.
            entries = entries or [(self.model.rows[0][0], 0)]
            lines += self.pairs(name, entries)
        return lines + [self.line("", "MEND", "'MARKER'", "", "'INTEND'")] * integer

    def pairs(self, first, entries):
        lines = []
        while entries:
            count = self.random.choice((1, 2))
            fields = [field for name, value in entries[:count] for field in (name, decimal(value))]
            lines.append(self.line("", first, *fields))
            entries = entries[count:]
        return lines

    def bounds(self, name, digits, low, high):
        if low == -INF:
            kinds = [("FR", "")] if high == INF else [("MI", ""), ("UP", decimal(high))]
        elif low == high:
            kinds = [("FX", decimal(low))]
        elif (low, high) == (0, 1) and digits is None:
            kinds = [("BV", "")]
        else:
            marks = self.random.choice((("LO", "UP"), ("LI", "UI"))) if digits is None else ("LO", "UP")
            kinds = [(marks[0], decimal(low))] + ([("PL", "")] if high == INF else [(marks[1], decimal(high))])
        return [self.line(kind, "BND", name, value) for kind, value in kinds]


class Lp:
    """The text of a model in LP form, with the forms of rows and bounds drawn at random."""

    def __init__(self, model, random):
        self.model = model
        self.random = random

    def text(self):
        choice = self.random.choice
        lines = ["\\ a random model", choice(("Maximize", "max", "MAXIMUM")) if self.model.maximise else
                 choice(("Minimize", "min", "minimise"))]
        if self.model.objective is not None:
            constant = self.model.constant
            end = " %s %s" % ("-" if constant < 0 else "+", decimal(abs(constant))) if constant else ""
            lines.append(" cost: " + self.expression(self.model.objective) + end)
        lines.append(choice(("Subject To", "st", "s.t.", "such that")))
        lines += [" %s: %s" % (name, self.row(self.expression(a), low, high)) for name, a, low, high in self.model.rows]
        # Names every variable, and asks for nothing.
        lines.append(" all: %s >= -inf" % self.expression([0] * len(self.model.variables)))
        lines += ["Bounds"] + [" " + line for variable in self.model.variables for line in self.bounds(*variable)]
        lines += ["General"] + [" " + name for name, digits, _, _ in self.model.variables if digits is None]
        return "\n".join(lines + ["End"]) + "\n"

    def expression(self, row):
        terms = ["%s %s %s" % ("-" if a < 0 else "+", "" if abs(a) == 1 else decimal(abs(a)), name)
                 for a, (name, _, _, _) in zip(row, self.model.variables)]
        return self.random.choice((" ", "\n   ", "  \\ more\n ")).join(terms)

    def row(self, expression, low, high):
        if low == high:
            return "%s = %s" % (expression, decimal(low))
        if low == -INF:
            return self.random.choice(("%s <= %s", "%s =< %s", "%s < %s")) % (expression, decimal(high))
        if high == INF:
            return "%s >= %s" % (expression, decimal(low))
        if self.random.random() < 0.5:
            return "%s <= %s <= %s" % (decimal(low), expression, decimal(high))
        return "%s >= %s >= %s" % (decimal(high), expression, decimal(low))

    def bounds(self, name, _, low, high):
        if low == -INF and high == INF:
            return [name + " free"]
        if low == high:
            return ["%s = %s" % (name, decimal(low))]
        words = ["-infinity" if low == -INF else decimal(low), "+inf" if high == INF else decimal(high)]
        if self.random.random() < 0.5:
            return ["%s <= %s <= %s" % (words[0], name, words[1])]
        return ["%s >= %s" % (name, words[0]), "%s <= %s" % (name, words[1])]
