"""The points of a program, by trying all values of some variables and solving for the others; and how large a search a
program is. Exact, and without a line of latbox-all's.

Values are whole steps of each variable's grid, rows whole numbers: the text says x, the counters say z = 10^dx x.
"""

import itertools
from fractions import Fraction
from math import gcd

INF = float("inf")
# No more values than these are tried.
MOST_TRIED = 60000


class TooMany(Exception):
    """More points than are asked for, or more values than can be tried."""


def floor(value):
    return value if abs(value) == INF else value.numerator // value.denominator


def ceil(value):
    return value if abs(value) == INF else -(-value.numerator // value.denominator)


class Whole:
    """A program in whole numbers: a row is (coefficients, low, high), a box (low, high); sides may be infinite."""

    def __init__(self, program):
        self.scales = [10 ** int(digits) for digits in program.dx]
        self.box = [(ceil(low * scale), floor(high * scale))
                    for low, high, scale in zip(program.lx, program.rx, self.scales)]
        self.rows = [self.row(row, side, side) for row, side in zip(program.ag, program.bg)]
        self.rows += [self.row(row, low, high) for row, low, high in zip(program.au, program.lu, program.ru)]

    def row(self, coefficients, low, high):
        steps = [Fraction(a) / scale for a, scale in zip(coefficients, self.scales)]
        common = 1
        for a in steps:
            common = common * a.denominator // gcd(common, a.denominator)
        return [int(a * common) for a in steps], ceil(low * common), floor(high * common)

    def x(self, z):
        return tuple(Fraction(value, scale) for value, scale in zip(z, self.scales))


# Presolve: only what it takes to tell how large the search is.


def propagated(whole, rounds=50):
    """The boxes that activities and divisibility leave; None if they leave nothing."""
    box = list(whole.box)
    for _ in range(rounds):
        before = list(box)
        for coefficients, low, high in whole.rows:
            if not narrow(box, coefficients, low, high):
                return None
        if box == before:
            break
    return box if all(low <= high for low, high in box) else None


def narrow(box, coefficients, low, high):
    """Narrows boxes by one row; False: it cannot be kept."""
    fixed = sum(a * box[j][0] for j, a in enumerate(coefficients) if a and box[j][0] == box[j][1])
    free = [(j, a) for j, a in enumerate(coefficients) if a and box[j][0] != box[j][1]]
    if not free:
        return low <= fixed <= high
    divisor = gcd(*(a for _, a in free))
    low, high = ceil_by(low - fixed, divisor), floor_by(high - fixed, divisor)
    free = [(j, a // divisor) for j, a in free]
    ends = [sorted((a * box[j][0], a * box[j][1])) for j, a in free]
    if low > high or sum(most for _, most in ends) < low or sum(least for least, _ in ends) > high:
        return False
    for k, (j, a) in enumerate(free):
        most = high - sum(least for i, (least, _) in enumerate(ends) if i != k)
        least = low - sum(most for i, (_, most) in enumerate(ends) if i != k)
        if a < 0:
            most, least = -least, -most
        box[j] = (max(box[j][0], ceil_by(least, abs(a))), min(box[j][1], floor_by(most, abs(a))))
        if box[j][0] > box[j][1]:
            return False
    return True


def floor_by(value, divisor):
    return value if abs(value) == INF else value // divisor


def ceil_by(value, divisor):
    return value if abs(value) == INF else -(-value // divisor)


def rank_of(whole):
    """Variables that are not fixed less independent equations, after presolve; 0 where that leaves no point."""
    box = propagated(whole)
    if box is None:
        return 0
    free = [j for j, (low, high) in enumerate(box) if low != high]
    rows = [[Fraction(row[j]) for j in free] for row, low, high in whole.rows if low == high]
    rank = 0
    for column in range(len(free)):
        pivot = next((i for i in range(rank, len(rows)) if rows[i][column]), None)
        if pivot is None:
            continue
        rows[rank], rows[pivot] = rows[pivot], rows[rank]
        for i in range(rank + 1, len(rows)):
            factor = rows[i][column] / rows[rank][column]
            if factor:
                rows[i] = [a - factor * b for a, b in zip(rows[i], rows[rank])]
        rank += 1
    return len(free) - rank


# Counting


def finite_box(whole):
    """The boxes, those that are open closed by activities."""
    box = whole.box
    if any(abs(end) == INF for ends in box for end in ends):
        closed = propagated(whole)
        if closed is None:
            return None
        box = [own if max(map(abs, own)) != INF else new for own, new in zip(box, closed)]
    if any(abs(end) == INF for ends in box for end in ends):
        raise TooMany
    return box if all(low <= high for low, high in box) else None


def tried_points(whole):
    """Every point, by trying all."""
    box = finite_box(whole)
    if box is None:
        return
    for z in itertools.product(*(range(low, high + 1) for low, high in box)):
        for coefficients, low, high in whole.rows:
            total = 0
            for a, value in zip(coefficients, z):
                total += a * value
            if not low <= total <= high:
                break
        else:
            yield z


def solved_points(whole, most=INF):
    """Every point: all values of all variables but the widest two are tried, and these are solved for. Raises TooMany."""
    box = finite_box(whole)
    if box is None:
        return
    order = sorted(range(len(box)), key=lambda j: box[j][1] - box[j][0])
    small, wide = order[:-2], order[-2:]
    tried = 1
    for j in small:
        tried *= box[j][1] - box[j][0] + 1
    # Without an equation between the two, the values of the shorter one are tried too.
    if not any(low == high and any(row[j] for j in wide) for row, low, high in whole.rows):
        tried *= box[wide[0]][1] - box[wide[0]][0] + 1
    if tried > MOST_TRIED:
        raise TooMany
    found = 0
    for values in itertools.product(*(range(box[j][0], box[j][1] + 1) for j in small)):
        rows = []
        for coefficients, low, high in whole.rows:
            part = sum(coefficients[j] * value for j, value in zip(small, values))
            rows.append(([coefficients[j] for j in wide], low - part, high - part))
        for ends in solved(rows, [box[j] for j in wide], most - found):
            found += 1
            z = [0] * len(box)
            for j, value in zip((*small, *wide), (*values, *ends)):
                z[j] = value
            yield tuple(z)


def solved(rows, box, most):
    """The points of a program of one or two variables."""
    if len(box) == 1:
        yield from line(rows, box, (0,), (1,), most)
        return
    equation = next((row for row in rows if row[1] == row[2] and any(row[0])), None)
    if equation is None:
        for y in range(box[0][0], box[0][1] + 1):
            yield from line(rows, box, (y, 0), (0, 1), most)
        return
    (a, b), side, _ = equation
    divisor, s, t = extended_gcd(a, b)
    if side % divisor == 0:
        start = (s * (side // divisor), t * (side // divisor))
        yield from line(rows, box, start, (b // divisor, -a // divisor), most)


def line(rows, box, start, direction, most):
    """The points start + t * direction that keep rows and boxes."""
    low, high = -INF, INF
    units = [(tuple(int(i == j) for i in range(len(box))), *box[j]) for j in range(len(box))]
    for coefficients, least, greatest in (*rows, *units):
        base = sum(a * v for a, v in zip(coefficients, start))
        slope = sum(a * v for a, v in zip(coefficients, direction))
        if slope == 0:
            if not least <= base <= greatest:
                return
            continue
        least, greatest = least - base, greatest - base
        if slope < 0:
            least, greatest, slope = -greatest, -least, -slope
        low, high = max(low, ceil_by(least, slope)), min(high, floor_by(greatest, slope))
    if high - low + 1 > most:
        raise TooMany
    for t in range(low, high + 1):
        yield tuple(v + t * d for v, d in zip(start, direction))


def extended_gcd(a, b):
    """(g, s, t) with s a + t b = g, the greatest common divisor of a and b, g > 0. Not both are 0."""
    (r, s, t), (next_r, next_s, next_t) = (a, 1, 0), (b, 0, 1)
    while next_r:
        q = r // next_r
        (r, s, t), (next_r, next_s, next_t) = (next_r, next_s, next_t), (r - q * next_r, s - q * next_s, t - q * next_t)
    return (r, s, t) if r > 0 else (-r, -s, -t)
