"""Cutting, loading and scheduling: inequations and a target."""

from itertools import product
from random import Random

from gallery import opt


def patterns(lengths, bar, waste):
    tops = [bar // length for length in lengths]
    for counts in product(*(range(t + 1) for t in tops)):
        used = sum(a * b for a, b in zip(counts, lengths))
        if bar - waste <= used <= bar:
            yield counts, bar - used


def cutting():
    """Bars of 100 are cut into pieces; demands exactly met with up to one piece more, the least waste."""
    lengths, demand, bar = [17, 23, 29, 37, 41], [30, 25, 22, 18, 14], 100
    found = list(patterns(lengths, bar, 12))
    rows = [([counts[i] for counts, _ in found], want, want + 1) for i, want in enumerate(demand)]
    return opt.text("", [10] * len(found), (), rows, [(opt.MINIMISE, [waste for _, waste in found])])


def cutting_bars():
    lengths, demand, bar = [17, 23, 29, 37, 41], [30, 25, 22, 18, 14], 100
    found = list(patterns(lengths, bar, 9))
    rows = [([counts[i] for counts, _ in found], want) for i, want in enumerate(demand)]
    return opt.text("", [10] * len(found), rows, (), [(opt.MINIMISE, [1 for _ in found])])


def scheduling(jobs=12, machines=3):
    random = Random(123)
    times = [[random.randrange(10, 60) for _ in range(jobs)] for _ in range(machines)]
    costs = [[random.randrange(10, 60) for _ in range(jobs)] for _ in range(machines)]
    n = jobs * machines
    equations = [([int(i % jobs == j) for i in range(n)], 1) for j in range(jobs)]
    load = [sum(row) // machines for row in times]
    windows = [([times[m][i % jobs] if i // jobs == m else 0 for i in range(n)], load[m] * 3 // 4 - 4, load[m] * 3 // 4 + 4) for m in range(machines)]
    return opt.text("", [1] * n, equations, windows, [(opt.MINIMISE, costs[0] + costs[1] + costs[2])])


PROGRAMS = {"cutting": cutting, "cutting_bars": cutting_bars, "scheduling": scheduling}
