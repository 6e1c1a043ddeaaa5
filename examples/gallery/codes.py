"""Linear codes: n points of a projective space of which no hyperplane holds more than n - d."""

from itertools import product

from gallery import opt


def points(q, k):
    """One vector for each point of the projective space: the first entry that is not 0 is 1. q is prime."""
    return [v for v in product(range(q), repeat=k) if any(v) and next(x for x in v if x) == 1]


def normal(v, q):
    lead = next(x for x in v if x)
    inverse = pow(lead, -1, q)
    return tuple(x * inverse % q for x in v)


def apply(matrix, v, q):
    return tuple(sum(a * b for a, b in zip(row, v)) % q for row in matrix)


def power(matrix, n, q):
    size = len(matrix)
    result = [[int(i == j) for j in range(size)] for i in range(size)]
    for _ in range(n):
        result = [[sum(result[i][l] * matrix[l][j] for l in range(size)) % q for j in range(size)] for i in range(size)]
    return result


def companion(coefficients):
    """The matrix of x -> x * root for x^k = sum of coefficients."""
    k = len(coefficients)
    return [[0] * (k - 1) + [coefficients[0]]] + \
        [[int(j == i) for j in range(k - 1)] + [coefficients[i + 1]] for i in range(k - 1)]


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


def code(comment, matrix, q, n, d):
    """0/1 variables: the orbits of points that are taken; one row for each orbit of hyperplanes."""
    k = len(matrix)
    taken = orbits(matrix, q, k)
    transposed = [list(column) for column in zip(*matrix)]
    rows = []
    for hyperplane in (orbit[0] for orbit in orbits(transposed, q, k)):
        row = [sum(sum(a * b for a, b in zip(hyperplane, v)) % q == 0 for v in orbit) for orbit in taken]
        rows.append((row, 0, n - d))
    return opt.text(comment, [1] * len(taken), [([len(orbit) for orbit in taken], n)], rows)


# x^6 = x + 1 has a root of order 364 * 2 over GF(3).
SINGER = companion([1, 1, 0, 0, 0, 0])


def hill(order):
    return code("", power(SINGER, 364 // order, 3), 3, 56, 36)


IDENTITY4 = [[int(i == j) for j in range(4)] for i in range(4)]
PROGRAMS = {
    "code_56_6_36": lambda: hill(7),
    "code_56_14": lambda: hill(14),
    "code_10_4_6": lambda: code("", IDENTITY4, 3, 10, 6),
    "code_15_5_7": lambda: code("", power(companion([1, 0, 1, 0, 0]), 31, 2), 2, 15, 7),
    "code_23_11": lambda: code("", power(companion([1, 0, 1, 0, 0,0,0,0,0,0,0]), 1, 2), 2, 23, 8) if 0 else code("", power(companion([1, 1, 0, 0, 0, 0, 0, 0]), 51, 2), 2, 24, 12),
    "code_20_5_12": lambda: code("", power(companion([1, 2, 0, 0, 0]), 11, 3), 3, 22, 13),
}
