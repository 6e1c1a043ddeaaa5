"""Market splits, subset sums, partitions and knapsacks: few rows with large coefficients."""

import heapq
from random import Random

from gallery.opt import MINIMISE, Program, unit


def planted_split(seed, m, n):
    """(rows, right-hand sides) with entries 0 to 99, and a 0/1 vector of weight n/2 that satisfies them."""
    random = Random(seed)
    rows = [[random.randrange(100) for _ in range(n)] for _ in range(m)]
    chosen = set(random.sample(range(n), n // 2))
    return rows, [sum(a for i, a in enumerate(row) if i in chosen) for row in rows]


def market_split_6x50():
    rows, sides = planted_split(6050, 6, 50)
    return Program("""
        A market split: 50 customers are divided between two divisions such that each of six products is split at exactly
        the demanded figure.

        Cornuejols and Dawande (1998) proposed these small 0/1 programs, random entries from 0 to 99, because branch and bound
        fails on them: with m rows and 10 (m - 1) columns it has to look at almost every corner of the cube. Basis reduction
        is what works. This one was made around a solution, so that there is one.""", [1] * 50, list(zip(rows, sides)))


def market_split_windows():
    rows, sides = planted_split(440, 4, 40)
    return Program("""
        A market split with tolerance: 40 customers, four products, and each split may miss its figure by one.

        The same kind of program as with equations, as two-sided inequations. It was made around a solution; the tolerance
        brings more.""", [1] * 40, (), [(row, side - 1, side + 1) for row, side in zip(rows, sides)])


def market_split_deviation():
    m, n = 3, 20
    random = Random(320)
    rows = [[random.randrange(100) for _ in range(n)] for _ in range(m)]
    equations = []
    for i, row in enumerate(rows):
        misses = unit(2 * m, 2 * i)
        misses[2 * i + 1] = -1
        equations.append((row + misses, sum(row) // 2))
    return Program("""
        The least deviation of a market split: 20 customers are to be divided in two halves for three products; variables
        21 to 26 are what each half lacks and has too much, and their sum is minimised.

        The form in which Cornuejols and Dawande (1998) stated market splits as optimisation. The optimum is 4, by looking
        at all 2^20 divisions.""", [1] * n + ["inf"] * (2 * m), equations, (), [(MINIMISE, [0] * n + [1] * (2 * m))])


def subset_sum_40():
    n = 40
    random = Random(4040)
    row = [random.randrange(2 ** (n - 1), 2 ** n) for _ in range(n)]
    chosen = random.sample(range(n), n // 2)
    return Program("""
        A subset sum of density 1: which of 40 numbers of 40 bits add up to the right-hand side?

        The problem behind the knapsack ciphers. Lagarias and Odlyzko (1985) solved almost all instances of low density by
        basis reduction; around density 1, as many numbers as they have bits, they are hardest. Half of the numbers were added
        up to make this one; about one more solution is to be expected by chance.""",
                   [1] * n, [(row, sum(row[i] for i in chosen))])


def partition_40():
    n = 40
    random = Random(40)
    row = [random.randrange(10 ** 9, 10 ** 10) for _ in range(n)]
    row[0] += sum(row) % 2
    return Program("""
        Number partitioning: 40 numbers of ten digits are divided in two sets with equal sums.

        Random numbers have a perfect partition with high probability while they have fewer bits than there are numbers, here
        33 against 40, and none beyond. Differencing heuristics of simple kind stay far from it, and linear relaxation says
        nothing: one half of everything is always right.""", [1] * n, [(row, sum(row) // 2)])


def frobenius(row):
    """The greatest number that is no sum of numbers of the row: shortest ways in the residues of the least one."""
    least, *others = sorted(row)
    far = [None] * least
    heap = [(0, 0)]
    while heap:
        length, at = heapq.heappop(heap)
        if far[at] is None:
            far[at] = length
            for step in others:
                if far[(at + step) % least] is None:
                    heapq.heappush(heap, (length + step, (at + step) % least))
    return max(far) - least


def coins(about, row):
    side = frobenius(row) + 1
    return Program(about, [side // a for a in row], [(row, side)])


def coin_problem():
    return coins("""
        The coin problem: coins of 12223, 12224, 36674, 61119 and 85569 are to pay 89643482 exactly.

        89643481 is the Frobenius number of these coins, the greatest sum that cannot be paid (the generator of this file
        computes it), so that each greater sum can. Aardal and Lenstra (2004) use coefficients p M + r with small p and r, as
        these, to make equality knapsacks that branch and bound hardly solves; how hard depends on the solver's preprocessing.
        """, [12223, 12224, 36674, 61119, 85569])


def equality_knapsack():
    return coins("""
        An equality knapsack: eight numbers around 25067 to 119169, each as often as needed, are to add up to 33367336.

        33367335 is the Frobenius number of the coefficients (computed by the generator of this file), so that this is the
        least right-hand side from which on all have a solution. One of the equality knapsacks of Aardal and Lenstra (2004).
        """, [25067, 49300, 49717, 62124, 87608, 88025, 113673, 119169])


PROGRAMS = {
    "market_split_6x50": market_split_6x50,
    "market_split_windows": market_split_windows,
    "market_split_deviation": market_split_deviation,
    "subset_sum_40": subset_sum_40,
    "partition_40": partition_40,
    "coin_problem": coin_problem,
    "equality_knapsack": equality_knapsack,
}
