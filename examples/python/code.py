"""A linear code of length n, dimension k and minimum distance d over the field of a prime q, with a prescribed symmetry.

Its generator matrix has n columns, points of a projective space. A word is 0 where the column lies on a hyperplane, one for each
word and its multiples: so no hyperplane may hold more than n - d of the points. One 0/1 variable for each orbit of points under the
symmetry, one inequation for each orbit of hyperplanes.

    python3 code.py

finds a ternary code of length 20, dimension 5 and distance 12 which the cyclic shift of the five coordinates maps to itself. By the
Griesmer bound no shorter one has this distance.
"""

from itertools import product

import latbox


def projective_points(q, k):
    """One vector for each: its first entry that is not 0 is 1."""
    return [v for v in product(range(q), repeat=k) if any(v) and next(x for x in v if x) == 1]


def normal(v, q):
    inverse = pow(next(x for x in v if x), -1, q)
    return tuple(inverse * x % q for x in v)


def shift_orbits(q, k):
    """Those of the cyclic shift. It keeps products of vectors, so it moves hyperplanes as it moves points."""
    return [list(orbit) for orbit in dict.fromkeys(
        tuple(dict.fromkeys(sorted(normal(v[i:] + v[:i], q) for i in range(k)))) for v in projective_points(q, k))]


def dot(u, v, q):
    return sum(a * b for a, b in zip(u, v)) % q


def code(q, n, k, d):
    """The columns of a generator matrix, None if there are none with this symmetry."""
    orbits = shift_orbits(q, k)
    rows = [[len(orbit) for orbit in orbits]]
    sides = [(n, n)]
    for hyperplane in (orbit[0] for orbit in orbits):
        rows.append([sum(dot(hyperplane, v, q) == 0 for v in orbit) for orbit in orbits])
        sides.append((None, n - d))
    result = latbox.solve(rows, sides, 0, 1)
    print("%d orbits, status %s" % (len(orbits), result.status))
    return None if result.x is None else [v for taken, orbit in zip(result.x, orbits) if taken for v in orbit]


def distance(columns, q):
    """The least number of places that are not 0, over all words but that of 0."""
    k = len(columns[0])
    return min(sum(dot(word, v, q) != 0 for v in columns) for word in product(range(q), repeat=k) if any(word))


def main(q=3, n=20, k=5, d=12):
    columns = code(q, n, k, d)
    if columns:
        for row in zip(*columns):
            print(*row)
        print("length %d, dimension %d, distance %d" % (len(columns), k, distance(columns, q)))


if __name__ == "__main__":
    main()
