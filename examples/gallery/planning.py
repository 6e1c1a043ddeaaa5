"""Cutting and scheduling: inequations and a target."""

from itertools import product
from random import Random

from gallery.opt import MINIMISE, Program


def patterns(lengths, bar, waste):
    """The ways to cut a bar into pieces with no more than so much waste, as counts of the lengths."""
    for counts in product(*(range(bar // length + 1) for length in lengths)):
        if bar - waste <= sum(a * b for a, b in zip(counts, lengths)) <= bar:
            yield counts


def cutting():
    lengths, demand = [17, 23, 29, 37, 41], [30, 25, 22, 18, 14]
    ways = list(patterns(lengths, 100, 6))
    listed = ", ".join(" + ".join(str(l) for l, count in zip(lengths, way) for _ in range(count)) for way in ways)
    return Program("""
        Cutting stock: 30, 25, 22, 18 and 14 pieces of length 17, 23, 29, 37 and 41 are cut from bars of 100, from as few bars
        as possible.

        One variable for each of the %d patterns that leave no more than 6: %s. The pieces have a total length of 2963, so that 30 bars
        are needed at least. Cutting stock (Kantorovich; Gilmore and Gomory, 1961) is at home in linear programming, and branch
        and bound solves this at once.""" % (len(ways), listed),
                   [15] * len(ways), [([way[i] for way in ways], want) for i, want in enumerate(demand)], (),
                   [(MINIMISE, [1] * len(ways))])


def schedule(about, seed, jobs, machines):
    random = Random(seed)
    times = [[random.randrange(10, 60) for _ in range(jobs)] for _ in range(machines)]
    costs = [[random.randrange(10, 60) for _ in range(jobs)] for _ in range(machines)]
    pairs = [(m, j) for m in range(machines) for j in range(jobs)]
    equations = [([int(j == job) for _, j in pairs], 1) for job in range(jobs)]
    windows = []
    for machine, row in enumerate(times):
        load = sum(row) // machines
        windows.append(([row[j] if m == machine else 0 for m, j in pairs], load - 2, load + 2))
    return Program(about, [1] * len(pairs), equations, windows, [(MINIMISE, [costs[m][j] for m, j in pairs])])


def scheduling():
    return schedule("""
        Scheduling with balanced machines: twelve jobs go to three machines, on which they take different times and cost
        differently; the load of each machine must be within 2 of a third of all its times; least cost.

        A generalised assignment problem with two-sided loads, random data. Variables machine by machine. The optimum is 344,
        proven by branch and bound in no time.""", 1, 12, 3)


def scheduling_16():
    return schedule("""
        Scheduling with balanced machines: sixteen jobs and four machines, otherwise as scheduling.opt.

        The optimum is 497, proven by branch and bound. Optimising a long target is not what basis reduction is best at: it
        takes much longer to arrive there.""", 2, 16, 4)


PROGRAMS = {"cutting": cutting, "scheduling": scheduling, "scheduling_16": scheduling_16}
