"""Market splits, subset sums, partitions and knapsacks: few rows with large coefficients."""

import heapq
from random import Random

from gallery import opt


def planted_split(seed, m, n):
    """(rows, right-hand sides) with entries 0 to 99 that a 0/1 vector of weight n/2 satisfies."""
    random = Random(seed)
    rows = [[random.randrange(100) for _ in range(n)] for _ in range(m)]
    chosen = set(random.sample(range(n), n // 2))
    return rows, [sum(a for i, a in enumerate(row) if i in chosen) for row in rows]


def market_split_6x50():
    rows, sides = planted_split(6050, 6, 50)
    return opt.text("", [1] * 50, list(zip(rows, sides)))


def market_split_deviation():
    """Three rows, 20 customers, both slacks of each row as variables; the right-hand side is half the row."""
    m, n = 3, 20
    random = Random(320)
    rows = [[random.randrange(100) for _ in range(n)] for _ in range(m)]
    equations = []
    for i, row in enumerate(rows):
        slacks = [0] * (2 * m)
        slacks[2 * i:2 * i + 2] = [1, -1]
        equations.append((row + slacks, sum(row) // 2))
    return opt.text("", [1] * n + [20] * (2 * m), equations, (), [(opt.MINIMISE, [0] * n + [1] * (2 * m))])


def market_split_windows():
    rows, sides = planted_split(440, 4, 40)
    return opt.text("", [1] * 40, (), [(row, side - 1, side + 1) for row, side in zip(rows, sides)])


def subset_sum(n):
    random = Random(4040)
    row = [random.randrange(2 ** (n - 1), 2 ** n) for _ in range(n)]
    chosen = random.sample(range(n), n // 2)
    return opt.text("", [1] * n, [(row, sum(row[i] for i in chosen))])


def frobenius(row):
    """The greatest number that is no sum of the numbers of the row: shortest ways in the residues of the least."""
    least, *others = sorted(row)
    far = [None] * least
    heap = [(0, 0)]
    while heap:
        length, at = heapq.heappop(heap)
        if far[at] is not None:
            continue
        far[at] = length
        for step in others:
            if far[(at + step) % least] is None:
                heapq.heappush(heap, (length + step, (at + step) % least))
    return max(far) - least


COINS = [12223, 12224, 36674, 61119, 85569]


def coin_problem():
    side = frobenius(COINS) + 1
    return opt.text("", [side // a for a in COINS], [(COINS, side)])


def equality_knapsack(n=10):
    """Coefficients p M + r with small p and r: the hard kind for branch and bound."""
    random = Random(1010)
    row = [random.randrange(2, 11) * 10 ** 4 + random.randrange(-10, 11) for _ in range(n)]
    side = frobenius(row) + 1
    return opt.text("", [side // a for a in row], [(row, side)])


def partition(n=36, digits=12):
    random = Random(36)
    row = [random.randrange(10 ** (digits - 1), 10 ** digits) for _ in range(n)]
    return opt.text("", [1] * n, (), (), [(sum(row) // 2, row)])


PROGRAMS = {
    "market_split_6x50": market_split_6x50,
    "market_split_deviation": market_split_deviation,
    "market_split_windows": market_split_windows,
    "subset_sum_40": lambda: subset_sum(40),
    "coin_problem": coin_problem,
    "equality_knapsack": equality_knapsack,
    "partition_36": partition,
}
