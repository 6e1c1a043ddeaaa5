"""Linear codes: n points of a projective space of which no hyperplane holds more than n - d."""

from itertools import product

from gallery.opt import Program


def points(q, k):
    """One vector for each point of the projective space: the first entry that is not 0 is 1. q is prime."""
    return [v for v in product(range(q), repeat=k) if any(v) and next(x for x in v if x) == 1]


def normal(v, q):
    lead = next(x for x in v if x)
    inverse = pow(lead, -1, q)
    return tuple(x * inverse % q for x in v)


def apply(matrix, v, q):
    return tuple(sum(a * b for a, b in zip(row, v)) % q for row in matrix)


def cycles(*lengths):
    """The matrix of a permutation of coordinates with cycles of these lengths."""
    size = sum(lengths)
    matrix, first = [[0] * size for _ in range(size)], 0
    for length in lengths:
        for i in range(length):
            matrix[first + i][first + (i + 1) % length] = 1
        first += length
    return matrix


def orbits(matrix, q, k):
    left = dict.fromkeys(points(q, k))
    result = []
    while left:
        orbit, v = [], next(iter(left))
        while v in left:
            del left[v]
            orbit.append(v)
            v = normal(apply(matrix, v, q), q)
        result.append(orbit)
    return result


def code(about, matrix, q, n, d):
    """0/1 variables: the orbits of points that are taken; one row for each orbit of hyperplanes.

    The matrix of a permutation, which is orthogonal: it moves hyperplanes as it moves points."""
    found = orbits(matrix, q, len(matrix))
    rows = []
    for hyperplane in (orbit[0] for orbit in found):
        on = [sum(sum(a * b for a, b in zip(hyperplane, v)) % q == 0 for v in orbit) for orbit in found]
        rows.append((on, 0, n - d))
    return Program(about, [1] * len(found), [([len(orbit) for orbit in found], n)], rows)


def code_24_7_10():
    return code("""
        A binary linear code of length 24, dimension 7 and minimum distance 10.

        Such a code is the same as 24 points of the projective space PG(6, 2) of which no hyperplane holds more than
        24 - 10 = 14. Prescribed is a symmetry of order 3 (two cycles of three coordinates), as Braun, Kohnert and Wassermann
        (2005) do with larger groups: one variable for each orbit of points, one inequation for each orbit of hyperplanes, one
        equation for the length. Distance 10 is the best: by the Griesmer bound distance 12 needs length 26, and distance 11 would
        give distance 12 with one more digit.""", cycles(3, 3, 1), 2, 24, 10)


def code_20_5_12():
    return code("""
        A ternary linear code of length 20, dimension 5 and minimum distance 12: 20 points of PG(4, 3) of which no hyperplane
        holds more than 8.

        Prescribed is the cyclic shift of the five coordinates. The code meets the Griesmer bound, 12 + 4 + 2 + 1 + 1 = 20.
        """, cycles(5), 3, 20, 12)


PROGRAMS = {"code_24_7_10": code_24_7_10, "code_20_5_12": code_20_5_12}
