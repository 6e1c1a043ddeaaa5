"""The bars of latbox-all: what is measured for each, what it is to reach, and whether it does.

A bar makes its units from a folder of instances; those whose file is missing are left out and named. Of the cells of its
units it makes one line of figures and the judgement: met, not met, or open where something has not been measured.
"""

import math
import os
import re
from collections.abc import Callable, Iterable, Iterator
from dataclasses import dataclass

from units import Cell, CompleteUnit, FirstUnit, LongUnit, ThreadsUnit, Unit, VerdictUnit
from verdicts import with_sides

Pairs = list[tuple[Unit, Cell]]
# The figures, and whether the bar is kept; None: they do not tell.
Told = tuple[str, bool | None]


class Instances:
    """The programs of a folder and of its folder `complete`, whose README.md tells how many points they have."""

    def __init__(self, folder: str) -> None:
        self.folders = [folder, os.path.join(folder, "complete")]
        self.missing: list[str] = []

    def text(self, name: str) -> str | None:
        for folder in self.folders:
            path = os.path.join(folder, name + ".opt")
            if os.path.exists(path):
                with open(path, encoding="utf-8") as file:
                    return file.read()
        self.missing.append(name)
        return None

    def counts(self) -> dict[str, int]:
        path = os.path.join(self.folders[1], "README.md")
        if not os.path.exists(path):
            return {}
        with open(path, encoding="utf-8") as file:
            return {name: int(count) for name, count in re.findall(r"^\| (\w+) \| (\d+)\b", file.read(), re.MULTILINE)}


@dataclass
class Bar:
    name: str
    # What is measured, and what it is to reach.
    work: str
    wanted: str
    units: Callable[[Instances], Iterator[Unit]]
    # Of cells without a fault, at least one.
    told: Callable[[Pairs], Told]

    def judge(self, pairs: Pairs, all_there: bool) -> tuple[str, str]:
        """The figures, and "met", "not met" or "open"."""
        faults = ["**%s: %s**" % (unit.name, cell["fault"]) for unit, cell in pairs if cell["fault"]]
        if faults:
            return "; ".join(faults), "not met"
        if not pairs:
            return "not measured", "open"
        figure, met = self.told(pairs)
        return figure, "open" if met is None or not all_there else "met" if met else "not met"


# ----------------------------------------------------------------- verdicts in time


def programs(instances: Instances, names: Iterable[str]) -> Iterator[tuple[str, str]]:
    for name in names:
        text = instances.text(name)
        if text is not None:
            yield name, text


def none_or_all(count: int) -> str:
    return "all %d" % count if count else "none"


def count_units(instances: Instances) -> Iterator[Unit]:
    known = {"sts_7": 30, "sts_9": 840, **instances.counts()}
    for name, text in programs(instances, known):
        yield VerdictUnit(name, text, ["--all=1"], none_or_all(known[name]), 10)


# (name, right-hand side, number of points where they are few)
KNAPSACKS = [("knap_cuww1_Fp1", 89643482, 1), ("knap_cuww3_Fp1", 58925135, 2), ("knap_prob1_Fp1", 33367336, None)]


def knapsack_units(instances: Instances) -> Iterator[Unit]:
    for plain, side, count in KNAPSACKS:
        for name, text in programs(instances, (plain, plain + "_box")):
            yield VerdictUnit(name, text, ["--first=1"], "found 1", 0.1, "first")
            if count is not None:
                yield VerdictUnit(name, text, ["--all=1"], none_or_all(count), 0.1, "all")
            yield VerdictUnit(name, with_sides(text, [side - 1]), ["--all=1"], "none", 0.1, "one less")


# (name, verdict, CPU seconds)
TARGETS = [("mkp_n20_s1", "optimum -827", 1), ("mkp_n30_s1", "optimum -1165", 10), ("msopt_3x20_half", "optimum 1", 5),
           ("msopt_3x20_planted", "optimum 0", 1)]


def target_units(instances: Instances) -> Iterator[Unit]:
    for name, verdict, seconds in TARGETS:
        for _, text in programs(instances, [name]):
            yield VerdictUnit(name, text, [], verdict, seconds)


def in_time(pairs: Pairs) -> Told:
    """Of units with a bar each: how many keep it, and those that come nearest to it or break it."""
    good = [u.name for u, cell in pairs if cell["verdict"] and cell["cpu"] < u.seconds]
    last, cell = max(pairs, key=lambda pair: pair[1]["cpu"] / pair[0].seconds)
    figure = "%d of %d right and in time; nearest to its bar or furthest beyond: %s, %s" % (
        len(good), len(pairs), last.name, seconds(cell))
    return figure, len(good) == len(pairs)


def seconds(cell: Cell) -> str:
    return "%.3g s%s" % (cell["cpu"], "" if cell["verdict"] else " and no verdict")


# ----------------------------------------------------------------- beside the reference


COMPLETE = ("ms_5x40_s1", "ms_6x50_s1", "ms_07_200_248", "ms_07_050_001", "ms_08_200_000")


def complete_units(instances: Instances) -> Iterator[Unit]:
    for name, text in programs(instances, COMPLETE):
        yield CompleteUnit(name, text)


def sums(pairs: Pairs) -> Told:
    mine, theirs = sum(cell["cpu"] for _, cell in pairs), [cell["reference"] for _, cell in pairs]
    figure = "sum of %d: %.3g s" % (len(pairs), mine)
    if None in theirs:
        return figure + "; boxenum came to no end or was left out", None
    ratio = mine / sum(theirs)
    return "%s, boxenum %.3g s: %.2f times" % (figure, sum(theirs), ratio), ended(pairs) and ratio <= 1


# Block size and share per level of boxfind: the best known for the number of rows.
FIRST = [("ms_8x70_s1", 40, 0.8), ("ms_9x80_s1", 40, 0.8), ("ms_09_050_000", 40, 0.8), ("ms_09_100_000", 40, 0.8),
         ("ms_09_200_000", 40, 0.8), ("ms_10_050_000", 45, 0.75)]
SEEDS = range(1, 11)


def first_units(instances: Instances) -> Iterator[Unit]:
    for name, block, share in FIRST:
        for _, text in programs(instances, [name]):
            for seed in SEEDS:
                yield FirstUnit(name, text, seed, block, share)


def geometric(values: list[float]) -> float:
    return math.exp(sum(map(math.log, values)) / len(values))


def means(pairs: Pairs) -> Told:
    mine, theirs = geometric([cell["cpu"] for _, cell in pairs]), [cell["reference"] for _, cell in pairs]
    figure = "geometric mean of %d: %.3g s" % (len(pairs), mine)
    if not ended(pairs):
        figure += " (%d came to no end on one side, and count with what they took)" % sum(not c["ended"] for _, c in pairs)
    if None in theirs:
        return figure + "; boxfind was left out", None
    ratio = mine / geometric(theirs)
    found = all(cell["verdict"] for _, cell in pairs)
    return "%s, boxfind %.3g s: %.2f times" % (figure, geometric(theirs), ratio), found and ratio <= 1


def ended(pairs: Pairs) -> bool:
    return all(cell["ended"] for _, cell in pairs)


# ----------------------------------------------------------------- two threads


def thread_units(instances: Instances) -> Iterator[Unit]:
    for name, text in programs(instances, ("ms_08_200_000", "ms_07_050_001")):
        yield ThreadsUnit(name, text)


def ratios(pairs: Pairs) -> Told:
    figures = ["%s: %.2f%s" % (unit.name, cell["one"] / cell["two"], ", whole runs" if cell["whole"] else "")
               for unit, cell in pairs]
    return "; ".join(figures), ended(pairs) and all(cell["one"] / cell["two"] >= 1.8 for _, cell in pairs)


LARGE_MEMORY = 200 * 1024


def large_units(instances: Instances) -> Iterator[Unit]:
    for name, text in programs(instances, ["km_7_33_8_10_PGL2_32"]):
        yield LongUnit(name, text, ["--all=1"], "all 4996426", 600)


def large(pairs: Pairs) -> Told:
    (unit, cell), = pairs
    figure = "%s, %.0f s, %.0f MB" % (cell["verdict"] or "no verdict", cell["seconds"], cell["resident"] / 1024)
    return figure, bool(cell["verdict"]) and cell["seconds"] < unit.seconds and cell["resident"] < LARGE_MEMORY


# (name, published seconds)
PUBLISHED = [("ms_10_100_000", 443), ("ms_10_200_000", 6386)]


def published_units(instances: Instances) -> Iterator[Unit]:
    for name, published in PUBLISHED:
        for _, text in programs(instances, [name]):
            yield LongUnit(name, text, ["--first=1"], "found 1", published)


def below_published(pairs: Pairs) -> Told:
    figures = ["%s: %s after %.0f s" % (unit.name, cell["verdict"] or "no verdict", cell["seconds"]) for unit, cell in pairs]
    return "; ".join(figures), all(cell["verdict"] and cell["seconds"] < unit.seconds for unit, cell in pairs)


# ----------------------------------------------------------------- all of them, those that take longest last


BARS = [
    Bar("knapsacks", "equality knapsacks with and without bounds: a first point, all where they are few, none with a right-hand "
        "side one less", "each below 0.1 s", knapsack_units, in_time),
    Bar("targets", "an optimum, proven", "1, 10, 5, 1 s", target_units, in_time),
    Bar("counts", "all points of programs whose number of points is known", "the exact count, each below 10 s", count_units,
        in_time),
    Bar("complete", "all points, beside boxenum at its better of blocks 20 and 30", "sum at most boxenum's; aim: half of it",
        complete_units, sums),
    Bar("threads", "tree search by two threads beside one, by the clock", "1.8 times one", thread_units, ratios),
    Bar("first", "a first point by ten seeds each, beside boxfind", "geometric mean at most boxfind's; aim: a third of it",
        first_units, means),
    Bar("large", "all designs of km_7_33_8_10_PGL2_32 in a file, two threads, by the clock",
        "4,996,426, below 600 s and 200 MB", large_units, large),
    Bar("published", "a first point by one run of two threads, by the clock", "ms_10_100_000 443 s, ms_10_200_000 6386 s",
        published_units, below_published),
]
