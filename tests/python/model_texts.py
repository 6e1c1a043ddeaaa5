"""Models as texts of LP, MPS and .opt, written here from plain data: the package has readers of these and no writers that
they could share a mistake with."""

from dataclasses import dataclass, field
from fractions import Fraction

INF = float("inf")


@dataclass
class Plain:
    """minimise or maximise c x + constant (c empty: no objective), rows (coefficients, lower, upper), integer x in boxes."""

    maximise: bool = False
    c: list = field(default_factory=list)
    constant: Fraction = Fraction(0)
    rows: list = field(default_factory=list)
    lower: list = field(default_factory=list)
    upper: list = field(default_factory=list)
    semi: list = field(default_factory=list)  # whether a column may be 0 besides; empty: none may. Not for .opt
    continuous: int = -1  # a column that is not integer. Not for .opt

    def size(self):
        return len(self.lower)


def decimal(value):
    """Exactly, as the formats take it: the value must be a decimal."""
    value = Fraction(value)
    if value.denominator == 1:
        return str(value.numerator)
    digits = 0
    while (value * 10**digits).denominator != 1:
        digits += 1
        assert digits < 30, value
    scaled = abs(int(value * 10**digits))
    return "%s%d.%0*d" % ("-" if value < 0 else "", scaled // 10**digits, digits, scaled % 10**digits)


def name(j):
    return "v%d" % j


def terms(coefficients):
    parts = []
    for j, a in enumerate(coefficients):
        if a:
            parts.append("%s %s %s" % ("-" if a < 0 else "+", decimal(abs(a)), name(j)))
    return " ".join(parts) or "0 " + name(0)


def lp(plain):
    lines = ["maximize" if plain.maximise else "minimize"]
    unused = [j for j in range(plain.size()) if not any(a[j] for a, _, _ in plain.rows) and not (plain.c and plain.c[j])]
    # A variable must stand in a row or in the objective.
    zeros = "".join(" + 0 " + name(j) for j in unused)
    if plain.c:
        constant = (" + " if plain.constant >= 0 else " - ") + decimal(abs(plain.constant)) if plain.constant else ""
        lines.append(" obj: " + terms(plain.c) + zeros + constant)
    else:
        lines.append(" obj:" + zeros)
    lines.append("subject to")
    for i, (a, low, high) in enumerate(plain.rows):
        if low == high:
            lines.append(" r%d: %s = %s" % (i, terms(a), decimal(low)))
        elif low == -INF:
            lines.append(" r%d: %s <= %s" % (i, terms(a), decimal(high)))
        elif high == INF:
            lines.append(" r%d: %s >= %s" % (i, terms(a), decimal(low)))
        else:
            lines.append(" r%d: %s <= %s <= %s" % (i, decimal(low), terms(a), decimal(high)))
    if not plain.rows:
        lines.append(" r0: %s >= -1000000" % name(0))
    lines.append("bounds")
    for j, (low, high) in enumerate(zip(plain.lower, plain.upper)):
        left = "-inf" if low == -INF else decimal(low)
        right = "inf" if high == INF else decimal(high)
        lines.append(" %s <= %s <= %s" % (left, name(j), right))
    lines += ["general"] + [" " + name(j) for j in range(plain.size()) if j != plain.continuous]
    semis = [" " + name(j) for j, semi in enumerate(plain.semi) if semi]
    return "\n".join(lines + ["semi-continuous"] * bool(semis) + semis + ["end", ""])


def mps(plain):
    """Free MPS; an objective's constant is minus its right side."""
    lines = ["NAME random", "OBJSENSE", "    MAX" if plain.maximise else "    MIN", "ROWS", " N obj"]
    kinds = []
    for i, (_, low, high) in enumerate(plain.rows):
        kind = "E" if low == high else "L" if low == -INF else "G"
        kinds.append(kind)
        lines.append(" %s r%d" % (kind, i))
    lines += ["COLUMNS", " M1 'MARKER' 'INTORG'"]
    for j in range(plain.size()):
        lines += [" M3 'MARKER' 'INTEND'"] * (j == plain.continuous) + [" M4 'MARKER' 'INTORG'"] * (j == plain.continuous + 1 > 0)
        cells = [("obj", plain.c[j])] if plain.c and plain.c[j] else []
        cells += [("r%d" % i, a[j]) for i, (a, _, _) in enumerate(plain.rows) if a[j]]
        for row, value in cells or [("obj", 0)]:
            lines.append(" %s %s %s" % (name(j), row, decimal(value)))
    lines += [" M2 'MARKER' 'INTEND'"] * (plain.continuous != plain.size() - 1) + ["RHS"]
    if plain.constant:
        lines.append(" RHS obj %s" % decimal(-plain.constant))
    ranges = []
    for i, (_, low, high) in enumerate(plain.rows):
        side = high if kinds[i] == "L" else low
        lines.append(" RHS r%d %s" % (i, decimal(side)))
        if kinds[i] == "G" and high != INF:
            ranges.append(" RNG r%d %s" % (i, decimal(high - low)))
    if ranges:
        lines += ["RANGES"] + ranges
    lines.append("BOUNDS")
    for j, (low, high) in enumerate(zip(plain.lower, plain.upper)):
        lines.append(" MI BND %s" % name(j) if low == -INF else " LO BND %s %s" % (name(j), decimal(low)))
        kind = "UP" if not (plain.semi and plain.semi[j]) else "SC" if j == plain.continuous else "SI"
        lines.append(" PL BND %s" % name(j) if high == INF else " %s BND %s %s" % (kind, name(j), decimal(high)))
    return "\n".join(lines + ["ENDATA", ""])


def opt(plain):
    """The constant has no place in it."""

    def vector(values):
        return "[ %s ]" % " ".join("inf" if v == INF else "-inf" if v == -INF else str(Fraction(v)) for v in values)

    def matrix(rows):
        return "[ %s ]" % "\n  ".join(map(vector, rows))

    equations = [row for row in plain.rows if row[1] == row[2]]
    inequations = [row for row in plain.rows if row[1] != row[2]]
    target = [plain.c] if plain.c and any(plain.c) else []
    if not target and not plain.rows:
        equations = [([0] * plain.size(), 0, 0)]
    n = plain.size()
    return "\n".join([vector([INF if plain.maximise else -INF] * len(target)), matrix(target),
                      matrix([r[0] for r in equations]), vector([r[1] for r in equations]),
                      matrix([r[0] for r in inequations]), vector([r[1] for r in inequations]),
                      vector([r[2] for r in inequations]), vector([0] * n), vector(plain.lower), vector(plain.upper), ""])
