"""Block designs with a prescribed group: Kramer-Mesner systems.

One variable for each orbit of k-subsets, one equation for each orbit of t-subsets; the entry counts the k-subsets of the
orbit that contain a given t-subset. Orbits are found by extending representatives point by point, so that the subsets
never have to be listed.
"""

from functools import lru_cache
from itertools import permutations
from math import factorial

from gallery.opt import Program


def extensions(points, canonical, orbits):
    """(orbits of the next size, per orbit of this size how often an extension by one point lies in each of them)"""
    found = [[canonical(tuple(sorted(s + (p,)))) for p in range(points) if p not in s] for s in orbits]
    larger = sorted(set().union(*found))
    return larger, [[row.count(s) for s in larger] for row in found]


def kramer_mesner(points, canonical, t, k):
    """The matrix of t- against k-subsets: the steps between are multiplied, which counts each way to add the points."""
    orbits, matrix = [()], None
    for size in range(k):
        orbits, step = extensions(points, canonical, orbits)
        if size >= t:
            matrix = product(matrix, step) if matrix else step
    return [[entry // factorial(k - t) for entry in row] for row in matrix]


def product(left, right):
    columns = list(zip(*right))
    return [[sum(a * b for a, b in zip(row, column)) for column in columns] for row in left]


def listed(group):
    """The canonical form of a subset under a group whose elements are listed as permutations (tuples)."""
    known = {}

    def canonical(subset):
        if subset not in known:
            images = {tuple(sorted(g[p] for p in subset)) for g in group}
            least = min(images)
            known.update((image, least) for image in images)
        return known[subset]
    return canonical


def affine(v, multipliers, fixed=0):
    """x -> a x + b on the residues of v, and so many fixed points behind them."""
    return [tuple((a * x + b) % v for x in range(v)) + tuple(range(v, v + fixed)) for a in multipliers for b in range(v)]


def usable(matrix, level):
    """Columns without an entry above the level: the others are 0 in each solution."""
    return [j for j in range(len(matrix[0])) if all(row[j] <= level for row in matrix)]


def system(about, matrix, level):
    kept = usable(matrix, level)
    return Program(about, [1] * len(kept), [([row[j] for j in kept], level) for row in matrix])


# ----------------------------------------------------------------- projective lines


class Field:
    """GF(p^e) as numbers below q = p^e, digits to the base p; `reduction` gives x^e, lowest digit first."""

    def __init__(self, p, e, reduction):
        self.p, self.e, self.q = p, e, p ** e
        self.reduction = reduction
        self.plus = [[self.add(a, b) for b in range(self.q)] for a in range(self.q)]
        self.times = [[self.multiply(a, b) for b in range(self.q)] for a in range(self.q)]
        self.negative = [row.index(0) for row in self.plus]
        self.inverse = [None] + [self.times[a].index(1) for a in range(1, self.q)]
        self.frobenius = [self.power(a, p) for a in range(self.q)]

    def digits(self, a):
        return [a // self.p ** i % self.p for i in range(self.e)]

    def number(self, digits):
        return sum(d % self.p * self.p ** i for i, d in enumerate(digits))

    def add(self, a, b):
        return self.number([x + y for x, y in zip(self.digits(a), self.digits(b))])

    def multiply(self, a, b):
        total = [0] * self.e
        shifted = self.digits(a)
        for digit in self.digits(b):
            total = [x + digit * y for x, y in zip(total, shifted)]
            top = shifted[-1]
            shifted = [x + top * y for x, y in zip([0] + shifted[:-1], self.reduction)]
        return self.number(total)

    def power(self, a, n):
        result = 1
        for _ in range(n):
            result = self.times[result][a]
        return result


class ProjectiveLine:
    """The points 0 to q-1 and infinity = q under PGammaL(2, q). One map of PGL(2, q) takes a given ordered triple to
    infinity, 0, 1; the powers of the Frobenius map follow."""

    def __init__(self, field):
        self.field = field
        self.points = field.q + 1
        self.known = {}

    def difference(self, a, b):
        """a - b; infinity minus a number is 1 and the other way round -1, which cancels in a ratio."""
        f = self.field
        if a == b:
            return 0
        if a == f.q:
            return 1
        return f.negative[1] if b == f.q else f.plus[a][f.negative[b]]

    def maps(self, subset):
        """The maps of PGL that bring three points of the subset to infinity, 0, 1, as (a, b, factor)."""
        f = self.field
        for a, b, c in permutations(subset, 3):
            yield a, b, f.times[self.difference(c, a)][f.inverse[self.difference(c, b)]]

    def image(self, a, b, factor, x):
        f = self.field
        if x == a:
            return f.q
        return f.times[factor][f.times[self.difference(x, b)][f.inverse[self.difference(x, a)]]]

    def canonical(self, subset):
        if len(subset) < 3:
            return tuple(range(len(subset)))
        if subset not in self.known:
            self.known[subset] = min(self.images(subset))
        return self.known[subset]

    def images(self, subset):
        frobenius = self.field.frobenius + [self.field.q]
        for a, b, factor in self.maps(subset):
            image = sorted(self.image(a, b, factor, x) for x in subset)
            yield tuple(image)
            for _ in range(self.field.e - 1):
                image = sorted(frobenius[x] for x in image)
                yield tuple(image)


@lru_cache
def line_of_33():
    return ProjectiveLine(Field(2, 5, [1, 0, 1, 0, 0]))


def on_33_points(about, t, level):
    matrix = kramer_mesner(33, line_of_33().canonical, t, 8)
    return system(about, matrix, level)


def design_7_33_8_10():
    return on_33_points("""
        A 7-design: blocks of 8 out of 33 points such that each 7 points lie in exactly ten blocks.

        One variable for each orbit of 8-subsets under the group PGammaL(2, 32) of order 163680 on the projective line, one
        equation for each orbit of 7-subsets; the entry counts the 8-subsets of the orbit that contain a given 7-subset (Kramer
        and Mesner, 1976). Betten, Kerber, Kohnert, Laue and Wassermann (1995) found the first 7-designs with small
        parameters in this system, by basis reduction.""", 7, 10)


def design_6_33_8_36():
    return on_33_points("""
        A 6-design: blocks of 8 out of 33 points such that each 6 points lie in exactly 36 blocks.

        Orbits of 6- and 8-subsets under PGammaL(2, 32). Magliveras and Leavitt (1984) found designs with these parameters,
        the first simple 6-designs known.""", 6, 36)


def steiner_5_6_12():
    matrix = kramer_mesner(12, listed(affine(11, [1], 1)), 5, 6)
    return system("""
        The Steiner system S(5, 6, 12): hexads of twelve points such that each five points lie in exactly one hexad.

        Known since Witt and Carmichael in the 1930s; it is unique but for the names of the points, and belongs to the Mathieu group M12. Only
        a rotation of order 11 is prescribed here: one variable for each orbit of hexads, one equation for each orbit of
        quintuples. There are two solutions, by complete search.""", matrix, 1)


def quadruples_16():
    matrix = kramer_mesner(16, listed(affine(15, [1], 1)), 3, 4)
    return system("""
        A Steiner quadruple system of order 16: quadruples such that each triple of points lies in exactly one.

        Hanani (1960) proved that such systems exist for all orders that are 2 or 4 modulo 6; on 16 points there are 1054163 up
        to isomorphism (Kaski, Ostergard and Pottonen, 2006). Here a rotation of 15 points with one fixed point is prescribed.
        """, matrix, 1)


def cyclic_triples_31():
    matrix = kramer_mesner(31, listed(affine(31, [1])), 2, 3)
    return system("""
        A cyclic Steiner triple system on 31 points, the same as five triples whose differences are all numbers from 1 to 30.

        One variable for each orbit of triples under the rotation, one equation for each difference. Peltesohn (1939) showed how
        to make cyclic systems of every possible order but 9; of order 31 there are 80 up to isomorphism. Branch and bound finds
        one at once, too.""", matrix, 1)


def difference_family_37_4():
    matrix = kramer_mesner(37, listed(affine(37, [1, 10, 26])), 2, 4)
    return system("""
        A 2-(37, 4, 1) design, or three blocks of four residues of 37 in which each difference occurs once.

        Prescribed is the group of all x -> a x + b with a in {1, 10, 26}, the cubic roots of 1: 111 elements. A small program.
        """, matrix, 1)


def all_triples(v, about):
    matrix = kramer_mesner(v, listed([tuple(range(v))]), 2, 3)
    return system(about, matrix, 1)


def triples_9():
    return all_triples(9, """
        Steiner triple systems on nine points with no symmetry prescribed: one variable for each of the 84 triples, one equation
        for each of the 36 pairs.

        All of them are the affine plane of order 3 under other names: 9! / 432 = 840 solutions.""")


def triples_13():
    return all_triples(13, """
        Steiner triple systems on 13 points with no symmetry prescribed: 286 triples, 78 pairs.

        There are two up to isomorphism, with groups of order 39 and 6, that is 13! / 39 + 13! / 6 = 1197504000 solutions. So
        many make it easy for branch and bound; the lattice is large, and the search needs a larger block and no pruning.""")


PROGRAMS = {
    "design_7_33_8_10": design_7_33_8_10,
    "design_6_33_8_36": design_6_33_8_36,
    "steiner_5_6_12": steiner_5_6_12,
    "quadruples_16": quadruples_16,
    "cyclic_triples_31": cyclic_triples_31,
    "difference_family_37_4": difference_family_37_4,
    "triples_9": triples_9,
    "triples_13": triples_13,
}
