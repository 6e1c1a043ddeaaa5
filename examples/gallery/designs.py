"""Block designs with a prescribed group: Kramer-Mesner systems.

One variable for each orbit of k-subsets, one equation for each orbit of t-subsets; the entry counts the k-subsets of the
orbit that contain a given t-subset. Orbits are found by extending representatives point by point, so that the subsets
never have to be listed.
"""

from itertools import combinations, permutations

from gallery import opt


def representatives(points, canonical, size):
    """One subset for each orbit of subsets of the size, in order: sorted tuples, canonical ones."""
    orbits = {()}
    for _ in range(size):
        orbits = {canonical(tuple(sorted(s + (p,)))) for s in orbits for p in range(points) if p not in s}
    return sorted(orbits)


def kramer_mesner(points, canonical, t, k):
    """(matrix, the representatives of its columns)"""
    columns = {s: j for j, s in enumerate(representatives(points, canonical, k))}
    matrix = []
    for small in representatives(points, canonical, t):
        row = [0] * len(columns)
        rest = [p for p in range(points) if p not in small]
        for added in combinations(rest, k - t):
            row[columns[canonical(tuple(sorted(small + added)))]] += 1
        matrix.append(row)
    return matrix, sorted(columns)


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


def system(comment, matrix, level):
    kept = usable(matrix, level)
    return opt.text(comment, [1] * len(kept), [([row[j] for j in kept], level) for row in matrix])


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
        self.squares = {self.times[a][a] for a in range(1, self.q)}
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
    """The points 0 to q-1 and infinity = q. A map that takes an ordered triple to infinity, 0, 1 is unique in PGL(2, q);
    it lies in PSL(2, q) for half of the triples, and with the Frobenius map e times as many maps make PGammaL."""

    def __init__(self, field, special=False, semilinear=False):
        self.field = field
        self.special = special
        self.semilinear = semilinear
        self.points = field.q + 1
        self.known = {}

    def difference(self, a, b):
        """a - b; infinity minus a number is 1 and the other way round -1, which ratios and determinants cancel."""
        f = self.field
        if a == b:
            return 0
        if a == f.q:
            return 1
        return f.negative[1] if b == f.q else f.plus[a][f.negative[b]]

    def maps(self, subset):
        """The maps that bring three points of the subset to infinity, 0, 1, as (a, b, factor)."""
        f = self.field
        for a, b, c in permutations(subset, 3):
            factor = f.times[self.difference(c, a)][f.inverse[self.difference(c, b)]]
            if not self.special or self.is_square(a, b, c):
                yield a, b, factor

    def is_square(self, a, b, c):
        f = self.field
        return f.times[f.times[self.difference(b, a)][self.difference(c, b)]][self.difference(c, a)] in f.squares

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
            for _ in range(self.field.e - 1 if self.semilinear else 0):
                image = sorted(frobenius[x] for x in image)
                yield tuple(image)


def design_7_33_8_10():
    line = ProjectiveLine(Field(2, 5, [1, 0, 1, 0, 0]), semilinear=True)
    matrix, _ = kramer_mesner(33, line.canonical, 7, 8)
    return system("", matrix, 10)


def steiner_5_7_28():
    line = ProjectiveLine(Field(3, 3, [2, 1, 0]), special=True)
    matrix, _ = kramer_mesner(28, line.canonical, 5, 7)
    return system("", matrix, 1)


def steiner_5_6_24():
    line = ProjectiveLine(Field(23, 1, [0]), special=True)
    matrix, _ = kramer_mesner(24, line.canonical, 5, 6)
    return system("", matrix, 1)


def cyclic(v, multipliers, t, k, level, fixed=0):
    matrix, _ = kramer_mesner(v + fixed, listed(affine(v, multipliers, fixed)), t, k)
    return system("", matrix, level)


PROGRAMS = {
    "design_7_33_8_10": design_7_33_8_10,
    "steiner_5_7_28": steiner_5_7_28,
    "steiner_5_6_24": steiner_5_6_24,
    "difference_37_4": lambda: cyclic(37, [1, 10, 26], 2, 4, 1),
    "difference_31_3": lambda: cyclic(31, [1], 2, 3, 1),
    "difference_41_5": lambda: cyclic(41, [1, 10, 18, 16, 37], 2, 5, 1),
    "triples_13": lambda: cyclic(13, [1], 2, 3, 1),
    "design_6_14_7_4": lambda: cyclic(13, [1, 3, 9], 6, 7, 4, fixed=1),
    "design_3_16_4_1": lambda: cyclic(15, [1], 3, 4, 1, fixed=1),
    "sts_9": lambda: cyclic(9, [1], 2, 3, 1) ,
}
