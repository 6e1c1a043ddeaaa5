"""Diophantine systems, equal sums of powers, unit fractions, approximation and integer relations."""

from fractions import Fraction
from math import comb, isqrt
from random import Random

from gallery.opt import MINIMISE, Program, unit


def diophantine_system():
    m, n, bound = 4, 20, 9
    random = Random(420)
    rows = [[random.randrange(1, 1001) for _ in range(n)] for _ in range(m)]
    x = [random.randrange(bound + 1) for _ in range(n)]
    return Program("""
        A system of linear Diophantine equations with bounds: four equations, twenty variables from 0 to 9.

        Random coefficients from 1 to 1000, the right-hand sides from a random point. Aardal, Hurkens and Lenstra (2000) solve such
        systems by a reduced basis of the integer kernel.""",
                   [bound] * n, [(row, sum(a * b for a, b in zip(row, x))) for row in rows])


def vanishing_signs(about, n, zeros):
    """0/1 vectors x such that the polynomial with coefficients 2 x - 1 has so many zeros at 1."""
    rows = [[comb(i, k) for i in range(n)] for k in range(zeros)]
    return Program(about, [1] * n, [(row, sum(row) // 2) for row in rows])


def signs_48():
    return vanishing_signs("""
        Signs with vanishing moments: a polynomial of 48 coefficients, each +1 or -1, that is divisible by (x - 1)^6. In
        other words, the numbers 0 to 47 fall into two sets with equal sums of k-th powers for k from 0 to 5, a
        Prouhet-Tarry-Escott problem.

        Prouhet's classes (1851) give divisibility by (x - 1)^m at length 2^m, here 64. Byrnes asked whether less is enough;
        Boyd (1997) showed that it is not up to m = 5, and that 48 is the least length for m = 6. Variable i is 1 where
        coefficient i is +1; equation k holds the binomial coefficients over k, with smaller numbers than powers.""", 48, 6)


def signs_96():
    return vanishing_signs("""
        Signs with vanishing moments: a polynomial of 96 coefficients, each +1 or -1, that is divisible by (x - 1)^7.

        96 is the least length for 7 (Boyd, 1997); Berend and Golan (2006) went on to 8, with length 144. The equations are as
        in signs_48.opt.""", 96, 7)


def tarry_escott_8():
    top = 25
    nothing = [0] * top
    powers = [[v ** e for v in range(1, top + 1)] for e in (2, 4, 6)]
    equations = [(row + [-v for v in row], 0) for row in powers]
    equations += [([1] * top + nothing, 4), (nothing + [1] * top, 4), (unit(2 * top, top - 1), 1)]
    apart = [(unit(2 * top, i, top + i), 0, 1) for i in range(top)]
    return Program("""
        An ideal solution of the Prouhet-Tarry-Escott problem of size 8: two sets of eight whole numbers with equal sums of
        k-th powers for all k from 1 to 7; more than 7 is impossible with eight numbers.

        Both sets are taken symmetric, so that odd powers cancel: plus and minus a, where a is among four numbers from 1 to 25,
        with equal sums of second, fourth and sixth powers. Variables 1 to 25 choose the first set, 26 to 50 the second; no
        number is in both, and 25 is in the first. Tarry knew the solution 2, 16, 21, 25 and 5, 14, 23, 24 about 1913; in this
        range it is the only one, by complete search.""", [1] * (2 * top), equations, apart)


UNIT_TOP = 3 ** 3 * 5 * 7 * 11
UNIT_DIVISORS = [d for d in range(3, 400, 2) if UNIT_TOP % d == 0]


def unit_fractions():
    return Program("""
        An Egyptian fraction: 1 as the sum of nine different unit fractions with odd denominators, which is the least number
        of them.

        The denominators offered are the %d divisors of 10395 = 27 * 5 * 7 * 11 between 3 and 400: %s. Three of the sums have nine terms,
        by complete search, and none has fewer.""" %
                   (len(UNIT_DIVISORS), ", ".join(map(str, UNIT_DIVISORS))), [1] * len(UNIT_DIVISORS),
                   [([UNIT_TOP // d for d in UNIT_DIVISORS], UNIT_TOP), ([1] * len(UNIT_DIVISORS), 9)])


def log2(value, digits):
    """floor(10^digits log2(value)) for 1 <= value < 2, bit after bit by squaring."""
    scale, x, part = 10 ** (2 * digits), Fraction(value), 0
    bits = 4 * digits
    for _ in range(bits):
        x = Fraction(int(x * x * scale), scale)
        part *= 2
        if x >= 2:
            x, part = x / 2, part + 1
    return part * 10 ** digits // 2 ** bits


TEMPERAMENT_UNIT = 10 ** 9
TEMPERAMENT_MISS = TEMPERAMENT_UNIT // 8
TEMPERAMENT_LOGARITHMS = [log2(Fraction(p, 2 ** e), 9) for p, e in ((3, 1), (5, 2), (7, 2), (11, 3))]


def common_denominator(about, values, scale, miss, top, targets=()):
    """q = 1 + x1 with | q value - p | <= miss for each value; p are the other variables. All in units of 1/scale."""
    rows = [([value] + [-scale * u for u in unit(len(values), i)], -miss - value, miss - value)
            for i, value in enumerate(values)]
    return Program(about, [top] * (len(values) + 1), (), rows, targets)


def temperament():
    return common_denominator("""
        Equal temperament: into how many equal steps must an octave be divided so that the harmonics 3, 5, 7 and 11 are met
        within an eighth of a step? Least number of steps, up to 1000.

        Simultaneous Diophantine approximation of the binary logarithms of 3/2, 5/4, 7/4 and 11/8, here to nine digits. The
        number of steps is 1 + the first variable, so that 0 is excluded; the others are the steps of each harmonic. The
        optimum is 270 steps, a value of 269, by trying every number in turn.""",
                              TEMPERAMENT_LOGARITHMS, TEMPERAMENT_UNIT, TEMPERAMENT_MISS, 1000,
                              [(MINIMISE, [1, 0, 0, 0, 0])])


def approximation():
    scale = 10 ** 20
    roots = [isqrt(v * scale ** 2) % scale for v in (2, 3, 5, 7)]
    return common_denominator("""
        Simultaneous approximation: a common denominator q up to 10^12 with which the square roots of 2, 3, 5 and 7 (their parts
        behind the point, to twenty digits) are approximated within 1/(1000 q).

        Dirichlet's theorem promises such a q; to find one is what Lenstra, Lenstra and Lovasz (1982) gave as an application of
        their basis reduction. q is 1 + the first variable, the numerators are the others. There are too many q to be tried one
        by one.""", roots, scale, scale // 1000, 10 ** 12)


def cube_root(n):
    x = 1 << (n.bit_length() // 3 + 1)
    while True:
        y = (2 * x + n // (x * x)) // 3
        if y >= x:
            return x
        x = y


def integer_relation():
    digits, guard, bound = 14, 20, 40
    fine = 10 ** (digits + guard)
    alpha = isqrt(2 * fine ** 2) + cube_root(3 * fine ** 3)
    powers = [fine]
    for _ in range(6):
        powers.append(powers[-1] * alpha // fine)
    powers = [(v + 10 ** guard // 2) // 10 ** guard for v in powers]
    middle = bound * sum(powers[:6]) - powers[6]
    return Program("""
        An integer relation: which polynomial x^6 + c5 x^5 + ... + c0 with coefficients from -40 to 40 vanishes at 3.142...?
        The number is sqrt(2) + the cube root of 3, given to fourteen digits.

        Its powers 0 to 5 times 10^14 stand in the row, rounded; the sides leave room for the rounding. Variable i is
        c(i-1) + 40, so that lower bounds are 0. The polynomial is x^6 - 6 x^4 - 6 x^3 + 12 x^2 - 36 x + 1, the point
        (41, 4, 52, 34, 34, 40). Kannan, Lenstra and Lovasz (1988) find minimal polynomials so.""",
                   [2 * bound] * 6, (), [(powers[:6], middle - 40, middle + 40)])


PROGRAMS = {
    "diophantine_system": diophantine_system,
    "signs_48": signs_48,
    "signs_96": signs_96,
    "tarry_escott_8": tarry_escott_8,
    "unit_fractions": unit_fractions,
    "temperament": temperament,
    "approximation": approximation,
    "integer_relation": integer_relation,
}
