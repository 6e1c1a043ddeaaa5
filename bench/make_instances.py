#!/usr/bin/env python3
"""Writes the programs of the benchmark tables: python3 make_instances.py FOLDER

Every run writes the same bytes: the draws come from a congruential sequence of our own, not from a library that may
change. Programs whose names end in `planted` have a solution by construction; what is known of the others stands in the
comment in their first line.
"""

import itertools
import os
import sys


class Draws:
    """A linear congruential sequence (D. E. Knuth, MMIX)."""

    def __init__(self, seed):
        self.state = seed

    def next(self, low, high):
        self.state = (self.state * 6364136223846793005 + 1442695040888963407) % 2**64
        return low + (self.state >> 33) % (high - low + 1)

    def chosen(self, n, k):
        """k of n positions as zeros and ones."""
        order = list(range(n))
        for i in range(n - 1, 0, -1):
            j = self.next(0, i)
            order[i], order[j] = order[j], order[i]
        ones = set(order[:k])
        return [1 if i in ones else 0 for i in range(n)]


class Program:
    """The items of a .opt file with their usual values: all variables 0 or 1, no targets, no rows."""

    def __init__(self, remark, n):
        self.remark = remark
        self.dt, self.at = [], []
        self.ag, self.bg = [], []
        self.au, self.lu, self.ru = [], [], []
        self.lx, self.rx = [0] * n, [1] * n

    def text(self):
        items = [vector(self.dt), matrix(self.at), matrix(self.ag), vector(self.bg), matrix(self.au), vector(self.lu),
                 vector(self.ru), vector([0] * len(self.rx)), vector(self.lx), vector(self.rx)]
        return "// %s\n%s\n" % (self.remark, "\n".join(items))


def vector(values):
    return "[ %s]" % "".join("%s " % value for value in values)


def matrix(rows):
    return "[\n%s]" % "".join("  %s\n" % vector(row) for row in rows)


def dot(row, x):
    return sum(a * b for a, b in zip(row, x))


# ----------------------------------------------------------------- the kinds


def market_split(m, n, seed, planted):
    """m equations with coefficients 0..99 over n zeros and ones; each asks for half of its sum, or for a planted half
    (G. Cornuejols, M. Dawande, "A class of hard small 0-1 programs", 1999)."""
    draws = Draws(seed)
    remark = "half of the variables planted" if planted else "half of each sum; nothing known of a solution"
    program = Program("market split %d x %d, %s" % (m, n, remark), n)
    program.ag = [[draws.next(0, 99) for _ in range(n)] for _ in range(m)]
    x = draws.chosen(n, n // 2)
    program.bg = [dot(row, x) if planted else sum(row) // 2 for row in program.ag]
    return program


def market_split_distance(m, n, seed):
    """The same as an optimisation: each equation may be missed, and the sum of the misses is to be minimised."""
    program = market_split(m, n, seed, False)
    program.remark = "market split %d x %d, half of each sum, least sum of misses" % (m, n)
    unit = [[int(i == j) for j in range(m)] for i in range(m)]
    program.ag = [row + unit[i] + [-u for u in unit[i]] for i, row in enumerate(program.ag)]
    program.dt, program.at = ["-inf"], [[0] * n + [1] * (2 * m)]
    program.lx += [0] * (2 * m)
    program.rx += ["inf"] * (2 * m)
    return program


def subset_sum(n, bits, seed):
    """n weights of so many bits, the sum of half of them: density about n / bits."""
    draws = Draws(seed)
    program = Program("subset sum, %d weights of %d bits, half of them planted" % (n, bits), n)
    program.ag = [[draws.next(2 ** (bits - 1), 2**bits - 1) for _ in range(n)]]
    program.bg = [dot(program.ag[0], draws.chosen(n, n // 2))]
    return program


def multi_knapsack(m, n, seed):
    """m capacities of half of all weights; values near the weights, so that no item is plainly the best."""
    draws = Draws(seed)
    program = Program("multi-row knapsack %d x %d, capacities are half of the sums" % (m, n), n)
    program.au = [[draws.next(5, 100) for _ in range(n)] for _ in range(m)]
    program.lu = [0] * m
    program.ru = [sum(row) // 2 for row in program.au]
    program.dt = ["inf"]
    program.at = [[sum(row[j] for row in program.au) // m + draws.next(0, 20) for j in range(n)]]
    return program


def steiner_triples(v):
    """Triples of v points that cover each pair once; there is such a system exactly for v = 1, 3 mod 6."""
    triples = list(itertools.combinations(range(v), 3))
    program = Program("Steiner triple system on %d points, exists" % v, len(triples))
    program.ag = [[int(set(pair) <= set(t)) for t in triples] for pair in itertools.combinations(range(v), 2)]
    program.bg = [1] * len(program.ag)
    return program


def cyclic_orbits(v, k):
    """The k-subsets of the integers mod v up to rotation, each orbit as the set of its members."""
    orbits, seen = [], set()
    for subset in itertools.combinations(range(v), k):
        if subset in seen:
            continue
        orbit = {tuple(sorted((p + s) % v for p in subset)) for s in range(v)}
        seen |= orbit
        orbits.append(orbit)
    return orbits


def cyclic_design(t, v, k, times, remark):
    """Blocks of k of v points that cover each t-subset so many times and are closed under rotation: one row per orbit
    of t-subsets, one variable per orbit of blocks (E. S. Kramer, D. M. Mesner, "t-designs on hypergraphs", 1976)."""
    blocks = cyclic_orbits(v, k)
    program = Program("cyclic %d-(%d,%d,%d) design, %s" % (t, v, k, times, remark), len(blocks))
    for orbit in cyclic_orbits(v, t):
        part = set(min(orbit))
        program.ag.append([sum(part <= set(block) for block in members) for members in blocks])
    program.bg = [times] * len(program.ag)
    return program


def equality_knapsack(weights, total, boxed):
    """One equation, unbounded variables: total is one more than the largest number that the weights cannot form
    (K. Aardal, A. K. Lenstra, "Hard equality constrained integer knapsacks", 2004)."""
    program = Program("equality knapsack with a solution, %s" % ("boxed" if boxed else "not boxed"), len(weights))
    program.ag, program.bg = [weights], [total]
    program.rx = [total // a for a in weights] if boxed else ["inf"] * len(weights)
    return program


KNAPSACKS = {
    "cuww1": ([12223, 12224, 36674, 61119, 85569], 89643482),
    "cuww3": ([12137, 24269, 36405, 36407, 48545, 60683], 58925135),
    "prob1": ([25067, 49300, 49717, 62124, 87608, 88025, 113673, 119169], 33367336),
}


def instances():
    for m, n in ((3, 20), (4, 30), (5, 40), (6, 50)):
        yield "market_split_%dx%d_planted" % (m, n), market_split(m, n, 10 * m + 1, True)
    yield "market_split_4x30_half", market_split(4, 30, 41, False)
    yield "market_split_3x20_distance", market_split_distance(3, 20, 31)
    for n in (20, 30, 40):
        yield "subset_sum_%d_planted" % n, subset_sum(n, n, n)
    for n in (20, 30):
        yield "multi_knapsack_5x%d" % n, multi_knapsack(5, n, n)
    for v in (7, 9, 13):
        yield "steiner_%02d" % v, steiner_triples(v)
    yield "cyclic_design_2_31_3_1", cyclic_design(2, 31, 3, 1, "exists")
    yield "cyclic_design_3_10_4_1", cyclic_design(3, 10, 4, 1, "exists")
    for name, (weights, total) in KNAPSACKS.items():
        yield "equality_knapsack_%s" % name, equality_knapsack(weights, total, False)
        yield "equality_knapsack_%s_boxed" % name, equality_knapsack(weights, total, True)


def main(arguments):
    if len(arguments) != 1:
        sys.exit("usage: make_instances.py FOLDER")
    os.makedirs(arguments[0], exist_ok=True)
    for name, program in instances():
        with open(os.path.join(arguments[0], name + ".opt"), "w", encoding="utf-8") as file:
            file.write(program.text())


if __name__ == "__main__":
    main(sys.argv[1:])
