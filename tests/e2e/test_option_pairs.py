"""Every pair of option settings on small programs of all kinds: the run ends well, and every star holds.

PRODUCT=N runs by hand the first N combinations of the full product of all settings, in an order that a fixed seed
shuffles, on every program; PRODUCT=all runs it whole, which takes days.
"""

import itertools
import os
import random

import harness
import programs

SETTINGS = {
    "consistency": (0, 1), "eenum": (1, 0), "beta": (20, 3), "eprune": (3, 2, 1, 0), "btime": (0, 1), "deep": (0, 1),
    "collectLimit": (100, 5), "pair": (1, 0), "pairLimit": (10, 2), "sieve": (0, 1), "sample": (0, 1),
    "sampleLimit": (1000, 20), "scale": (0, 1), "translate": (0, 1), "reinsert": (1, 0), "variate": (1, 0),
    "verb": (0, 1, 2), "sol": (0, 1), "bench": (0, 2),
    # A third has no exact value in standard precision: the run stays in extended precision.
    "snorm": ("-1", "1/3"),
}

BIG = 10**24 + 7

PROGRAMS = {
    "two_sided rows": programs.SMALL,
    "minimised target": programs.TARGET,
    "many solutions": programs.ENDLESS,
    "no solution": programs.NOTHING,
    "maximised target": programs.opt(dt=["inf"], at=[[3, 5, 7]], au=[[2, 3, 4]], lu=[0], ru=[11], rx=[3, 3, 3]),
    "target with a value": programs.opt(dt=[17], at=[[3, 5, 7]], au=[[2, 3, 4]], lu=[4], ru=[19], rx=[3, 3, 3]),
    "two targets": programs.opt(dt=["-inf", 9], at=[[1, 2, 3], [4, 1, 2]], au=[[2, 3, 4]], lu=[4], ru=[19], rx=[3, 3, 3]),
    "equations": programs.opt(ag=[[3, 5, 8, 13], [2, 7, 1, 9]], bg=[29, 19], rx=[4] * 4),
    "equation and rows": programs.opt(ag=[[3, 5, 8, 13]], bg=[29], au=[[1, 1, 1, 1]], lu=[2], ru=[6], rx=[4] * 4),
    "decimal digits": programs.opt(dt=["-inf"], at=[[4, 7]], au=[["0.2", "0.35"]], lu=["0.4"], ru=["0.7"], dx=[1, 1], rx=[2, 2]),
    "a fixed variable": programs.opt(dt=["-inf"], at=[[5, 9, 4]], ag=[[3, 7, 2]], bg=[25], lx=[0, 2, 0], rx=[9, 2, 9]),
    "free variables": programs.opt(ag=[[12, 35, 77], [1, -1, 1]], bg=[1, 4], lx=["-inf"] * 3, rx=["inf"] * 3),
    "fractions": programs.opt(ag=[[5, 3, "1/3"], [1, 1, 1]], bg=[100, 100], rx=[20, 33, 100]),
    "25 digits": programs.opt(au=[[BIG, 2 * BIG + 1, 3 * BIG + 5]], lu=[BIG], ru=[4 * BIG], rx=[3, 3, 3]),
}


def covering_runs(draw):
    """Runs, each a choice of one value per option, that hold every pair of settings at least once (greedy)."""
    missing = {frozenset(pair) for one, other in itertools.combinations(SETTINGS, 2)
               for pair in itertools.product(((one, a) for a in SETTINGS[one]), ((other, b) for b in SETTINGS[other]))}
    while missing:
        run = dict(min(missing, key=sorted_pair))
        for option in draw.sample(sorted(set(SETTINGS) - set(run)), len(SETTINGS) - len(run)):
            run[option] = max(SETTINGS[option], key=lambda value: gain(missing, run, option, value))
        missing -= {frozenset(pair) for pair in itertools.combinations(run.items(), 2)}
        yield run


def sorted_pair(pair):
    return sorted((option, str(value)) for option, value in pair)


def gain(missing, run, option, value):
    return sum(frozenset(((option, value), setting)) in missing for setting in run.items())


def product_runs(draw, count):
    """So many different runs of the full product, or all of them."""
    size = 1
    for values in SETTINGS.values():
        size *= len(values)
    chosen = range(size) if count == "all" else draw.sample(range(size), min(size, int(count)))
    for number in chosen:
        run = {}
        for option, values in SETTINGS.items():
            number, index = divmod(number, len(values))
            run[option] = values[index]
        yield run


class OptionPairsTest(harness.Case):
    in_memory = True

    def one(self, run):
        arguments = ["--iters=3"] + ["--%s=%s" % setting for setting in run.items()]
        for name, program in PROGRAMS.items():
            with self.subTest(program=name, options=" ".join(arguments)):
                for leftover in ("prog.sol", "prog.lat"):
                    if self.exists(leftover):
                        self.remove(leftover)
                self.write("prog.opt", program)
                self.assert_ends_well(self.run_solver(*arguments, "prog.opt"))
                self.stars()

    def test_all_pairs(self):
        runs = list(covering_runs(random.Random(1)))
        held = {frozenset(pair) for run in runs for pair in itertools.combinations(run.items(), 2)}
        for one, other in itertools.combinations(SETTINGS, 2):
            for a, b in itertools.product(SETTINGS[one], SETTINGS[other]):
                self.assertIn(frozenset(((one, a), (other, b))), held)
        for run in runs:
            self.one(run)

    def test_product(self):
        count = os.environ.get("PRODUCT")
        if not count:
            self.skipTest("PRODUCT=N runs N combinations of the full product")
        for run in product_runs(random.Random(2), count):
            self.one(run)


if __name__ == "__main__":
    harness.main()
