"""Diophantine systems, equal sums of powers, unit fractions, approximation and integer relations."""

from fractions import Fraction
from math import isqrt, lcm
from random import Random

from gallery import opt


def system_of_equations(m=4, n=20, top=1000, bound=9):
    random = Random(420)
    rows = [[random.randrange(1, top + 1) for _ in range(n)] for _ in range(m)]
    x = [random.randrange(bound + 1) for _ in range(n)]
    return opt.text("", [bound] * n, [(row, sum(a * b for a, b in zip(row, x))) for row in rows])


def vanishing_signs(n, zeros):
    """0/1 vectors x such that the polynomial with coefficients 2 x - 1 has so many zeros at 1."""
    rows = [[binomial(i, k) for i in range(n)] for k in range(zeros)]
    return opt.text("", [1] * n, [(row, sum(row) // 2) for row in rows])


def binomial(n, k):
    result = 1
    for i in range(k):
        result = result * (n - i) // (i + 1)
    return result


def tarry_escott():
    """Two sets of four numbers from 1 to 25, 25 in the first, with equal sums of 2nd, 4th and 6th powers."""
    top = 25
    nothing = [0] * top
    equations = [([v ** e for v in range(1, top + 1)] + [-v ** e for v in range(1, top + 1)], 0) for e in (2, 4, 6)]
    equations += [([1] * top + nothing, 4), (nothing + [1] * top, 4)]
    equations += [([0] * (top - 1) + [1] + nothing, 1)]
    windows = []
    for i in range(top):
        row = nothing + nothing
        row[i] = row[top + i] = 1
        windows.append((row, 0, 1))
    return opt.text("", [1] * (2 * top), equations, windows)


def tarry_escott_signs(top=25):
    equations = [([v ** e for v in range(1, top + 1)], sum(v ** e for v in range(1, top + 1))) for e in (0, 2, 4, 6)]
    return opt.text("", [2] * top, equations + [([0] * (top - 1) + [1], 2)])


def unit_fractions():
    """1 as the sum of nine different odd unit fractions."""
    top = 3 ** 3 * 5 * 7 * 11
    divisors = [d for d in range(3, 400, 2) if top % d == 0]
    return opt.text("// " + str(divisors), [1] * len(divisors), [([top // d for d in divisors], top), ([1] * len(divisors), 9)])


def log2(value, digits):
    """floor(10^digits * log2(value)), by squaring."""
    x, whole, part, bit = Fraction(value), 0, Fraction(0), Fraction(1)
    while x >= 2:
        x, whole = x / 2, whole + 1
    for _ in range(4 * digits):
        bit /= 2
        x = Fraction(int(x * x * 10 ** (2 * digits)), 10 ** (2 * digits))
        if x >= 2:
            x, part = x / 2, part + bit
    return int((whole + part) * 10 ** digits)


def temperament():
    """The least number of equal steps of an octave such that four intervals are met within a twelfth of a step."""
    digits = 9
    intervals = [log2(Fraction(p, q), digits) for p, q in ((3, 2), (5, 4), (7, 4), (11, 8), (13, 8))]
    n = len(intervals)
    tops = 2000
    rows = []
    for i, value in enumerate(intervals):
        row = [value] + [0] * n
        row[i + 1] = -10 ** digits
        rows.append((row, -10 ** digits // 10, 10 ** digits // 10))
    return opt.text("", [tops] + [tops] * n, (), rows, [(opt.MINIMISE, [1] + [0] * n)])


def approximation():
    """A common denominator up to 10^12 of the square roots of 2, 3, 5, 7 (their parts behind the point)."""
    digits, top = 20, 10 ** 12
    roots = [isqrt(v * 10 ** (2 * digits)) % 10 ** digits for v in (2, 3, 5, 7)]
    rows = []
    for i, value in enumerate(roots):
        row = [value] + [0] * 4
        row[i + 1] = -10 ** digits
        rows.append((row, -10 ** (digits - 3), 10 ** (digits - 3)))
    return opt.text("", [top] * 5, (), rows)


def integer_relation():
    """The monic polynomial of degree 6 with the zero sqrt(2) + cbrt(3)."""
    digits, bound = 30, 40
    unit = 10 ** digits
    alpha = isqrt(2 * unit ** 2) + cube_root(3 * unit ** 3)
    powers = [unit]
    for _ in range(6):
        powers.append(powers[-1] * alpha // unit)
    middle = bound * sum(powers[:6])
    return opt.text("", [2 * bound] * 6 , (), [(powers[:6], middle - powers[6] - 10 ** 5, middle - powers[6] + 10 ** 5)])


def cube_root(n):
    x = 1 << (n.bit_length() // 3 + 1)
    while True:
        y = (2 * x + n // (x * x)) // 3
        if y >= x:
            return x
        x = y


PROGRAMS = {
    "diophantine_system": system_of_equations,
    "byrnes_48": lambda: vanishing_signs(48, 6),
    "byrnes_32": lambda: vanishing_signs(32, 5),
    "tarry_escott_8": tarry_escott,
    "tarry_escott_8s": tarry_escott_signs,
    "unit_fractions": unit_fractions,
    "temperament": temperament,
    "approximation": approximation,
    "integer_relation": integer_relation,
}
