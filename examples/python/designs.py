"""Block designs with a prescribed group, from generators of the group: the system of Kramer and Mesner.

A t-(v, k, lambda) design takes k-subsets ("blocks") of v points, so that each t-subset lies in exactly lambda of them. If it is to
stay the same under a group, it takes whole orbits of k-subsets: one variable for each orbit of k-subsets, one equation for each orbit
of t-subsets, and the entry counts the blocks of the orbit that hold a t-subset.

    python3 designs.py

finds all Steiner systems S(5, 6, 12) that stay the same under x + 1 and 3 x on the residues of 11, a twelfth point being fixed.
"""

from itertools import combinations
from math import comb

import latbox


def orbits(generators, points, size):
    """The orbits of the subsets of this size, each a list of sorted tuples."""
    found, seen = [], set()
    for start in combinations(range(points), size):
        if start in seen:
            continue
        orbit = [start]
        seen.add(start)
        for subset in orbit:  # which grows
            for generator in generators:
                image = tuple(sorted(generator[p] for p in subset))
                if image not in seen:
                    seen.add(image)
                    orbit.append(image)
        found.append(orbit)
    return found


def kramer_mesner(small, large):
    """entry: how many blocks of a large orbit hold the first subset of a small one."""
    return [[sum(set(orbit[0]) <= set(block) for block in blocks) for blocks in large] for orbit in small]


def affine(p, factor):
    """Generators of the group of x + 1 and factor * x on the residues of p, which leaves one more point, p, in its place."""
    return [tuple((x + 1) % p for x in range(p)) + (p,), tuple(factor * x % p for x in range(p)) + (p,)]


def is_design(blocks, points, t, level):
    count = dict.fromkeys(combinations(range(points), t), 0)
    for block in blocks:
        for subset in combinations(block, t):
            count[subset] += 1
    return set(count.values()) == {level}


def main(points=12, t=5, k=6, level=1, factor=3):
    generators = affine(points - 1, factor)
    small, large = orbits(generators, points, t), orbits(generators, points, k)
    matrix = kramer_mesner(small, large)
    print("%d-(%d, %d, %d): %d equations, %d orbits of blocks" % (t, points, k, level, len(small), len(large)))
    for row in matrix:
        print(*row)
    result = latbox.solve(matrix, [level] * len(small), 0, 1, solutions="all")
    print("%s: %d designs" % (result.status, len(result.points)))
    for x in result.points:
        blocks = [block for taken, orbit in zip(x, large) if taken for block in orbit]
        assert len(blocks) * comb(k, t) == level * comb(points, t) and is_design(blocks, points, t, level)
        print("%d blocks, the first ones %s" % (len(blocks), " ".join(map(str, sorted(blocks)[:3]))))


if __name__ == "__main__":
    main()
