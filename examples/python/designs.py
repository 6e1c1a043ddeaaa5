"""Block designs with a prescribed group, from generators of the group: the system of Kramer and Mesner.

A t-(v, k, lambda) design takes k-subsets ("blocks") of v points, so that each t-subset lies in exactly lambda of them. If it is to
stay the same under a group, it takes whole orbits of k-subsets: one variable for each orbit of k-subsets, one equation for each orbit
of t-subsets, and the entry counts the blocks of the orbit that hold a t-subset.

    python3 designs.py

looks for the Steiner system S(5, 6, 12) with PSL(2, 11), which acts on the 12 points of the projective line over the field of 11.
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


def projective_line(p):
    """Generators of PSL(2, p) as permutations of 0, ..., p - 1 and infinity, which is p: x + 1, s x with a square s, -1 / x."""
    primitive = next(g for g in range(1, p) if len({pow(g, e, p) for e in range(p - 1)}) == p - 1)
    square = primitive * primitive % p
    return [tuple((x + 1) % p for x in range(p)) + (p,), tuple(square * x % p for x in range(p)) + (p,),
            (p,) + tuple(-pow(x, -1, p) % p for x in range(1, p)) + (0,)]


def is_design(blocks, points, t, level):
    count = dict.fromkeys(combinations(range(points), t), 0)
    for block in blocks:
        for subset in combinations(block, t):
            count[subset] += 1
    return set(count.values()) == {level}


def main(points=12, t=5, k=6, level=1):
    generators = projective_line(points - 1)
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
