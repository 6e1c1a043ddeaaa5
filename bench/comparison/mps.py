"""A program as free MPS, which both peers read. Whole variables and one target with a direction is what is carried."""

from fractions import Fraction
from math import lcm

import checker


def comparable(program):
    return not any(program.dx) and len(program.at) <= 1 and not program.finite_targets


def infinite(value):
    return abs(value) == checker.INF


def whole(row, sides):
    """The row and its sides times the common denominator: MPS has no fractions."""
    factor = lcm(*(Fraction(v).denominator for v in [*row, *sides] if not infinite(v)))
    return [int(v * factor) for v in row], [s if infinite(s) else int(s * factor) for s in sides]


def rows_of(program):
    """(kind, name, coefficients, right-hand side, range) of each row; the target first, to be minimised."""
    sign = -1 if program.dt and program.dt[0] > 0 else 1
    target = program.at[0] if program.at else [0] * program.n
    yield "N", "T", whole([sign * v for v in target], [])[0], 0, None
    for i, (row, b) in enumerate(zip(program.ag, program.bg)):
        row, (b,) = whole(row, [b])
        yield "E", "E%d" % i, row, b, None
    for i, (row, low, high) in enumerate(zip(program.au, program.lu, program.ru)):
        row, (low, high) = whole(row, [low, high])
        if infinite(high):
            yield "G", "U%d" % i, row, low, None
        else:
            yield "L", "U%d" % i, row, high, None if infinite(low) else high - low


def mps(program):
    """The text. Variable j (from 0) is called Xj."""
    rows = list(rows_of(program))
    lines = ["NAME PROGRAM FREE", "ROWS"] + [" %s %s" % row[:2] for row in rows] + ["COLUMNS", " M1 'MARKER' 'INTORG'"]
    for j in range(program.n):
        # The target's entry stands even when it is 0: a column that is in no row must be declared too.
        lines += [" X%d %s %d" % (j, name, row[j]) for kind, name, row, _, _ in rows if row[j] or kind == "N"]
    lines += [" M2 'MARKER' 'INTEND'", "RHS"]
    lines += [" R %s %d" % (name, side) for _, name, _, side, _ in rows if side]
    lines += ["RANGES"] + [" G %s %d" % (row[1], row[4]) for row in rows if row[4] is not None] + ["BOUNDS"]
    for j, (low, high) in enumerate(zip(program.lx, program.rx)):
        lines += [" MI B X%d" % j if infinite(low) else " LO B X%d %d" % (j, low)]
        lines += [" PL B X%d" % j if infinite(high) else " UP B X%d %d" % (j, high)]
    return "\n".join(lines + ["ENDATA", ""])
