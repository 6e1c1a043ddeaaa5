"""Programs that need exact numbers: the ladder gives what a run in extended precision from the start gives."""

import random
import re

import harness
import programs

# Decides nothing in the programs below, and cannot be held in standard precision: the run stays exact to its end.
FORCED = "--snorm=-4/3"
FREE = "--snorm=-1"

# No step may draw a random number, for a run that is repeated exactly draws at other times.
NO_DRAW = ("--sol=0", "--variate=0", "--sample=0")

UP = "Switching to extended precision\n"
DOWN = "Using standard precision\n"


def long_knapsack(digits, seed):
    """An equation with coefficients of so many digits and a known solution."""
    draw = random.Random(seed)
    row = [draw.randrange(10**(digits - 1), 10**digits) for _ in range(6)]
    x = [draw.randrange(10) for _ in row]
    return programs.opt(ag=[row], bg=[sum(a * b for a, b in zip(row, x))], rx=[9] * 6)


def long_inequation(digits, seed):
    """A two-sided inequation with coefficients of so many digits, and slack that is wide enough for some solutions."""
    draw = random.Random(seed)
    row = [draw.randrange(10**(digits - 1), 10**digits) for _ in range(5)]
    middle = sum(row) * 2
    return programs.opt(au=[row], lu=[middle - row[0] // 3], ru=[middle + row[0] // 3], rx=[4] * 5)


def wide_box(digits):
    """Boxes of so many digits; rx * 2 passes the bound of standard precision with 9 and with 18 digits."""
    width = 10**digits
    return programs.opt(au=[[3, 5, 7], [2, -1, 4]], lu=[width, -width // 3], ru=[width + 5, width // 2],
                        lx=[-width, 0, -5], rx=[2 * width, width + 7, 3 * width])


THIRDS = programs.opt(au=[["1/3", "1/7", 2], [1, "2:1/3", "-5/11"]], lu=["7/3", 0], ru=["17/3", "22/7"], rx=[9, 9, 9])
THIRDS_IN_BOUNDS = programs.opt(au=[[3, 4, 5]], lu=["37/3"], ru=["64/3"], lx=["1/3", "-4/3", 0], rx=["20/3", 5, "13/3"])
THIRDS_WITH_TARGET = programs.opt(dt=["-inf"], at=[["1/3", "2/7", 5]], au=[["1/3", "1/7", 2]], lu=["7/3"], ru=["47/3"],
                                  rx=[9, 9, 9])
THIRDS_IN_EQUATION = programs.opt(ag=[["1/3", "1/6", "1/7"]], bg=["5/2"], rx=[20, 20, 20])

PROGRAMS = {
    **{"equation of %d digits" % digits: long_knapsack(digits, digits) for digits in (8, 12, 20, 40, 100)},
    **{"inequation of %d digits" % digits: long_inequation(digits, digits) for digits in (8, 12, 20, 40, 100)},
    **{"box of %d digits" % digits: wide_box(digits) for digits in (8, 9, 10, 17, 18, 19, 30)},
    "thirds in a row": THIRDS,
    "thirds in bounds": THIRDS_IN_BOUNDS,
    "thirds in a target": THIRDS_WITH_TARGET,
    "thirds in an equation": THIRDS_IN_EQUATION,
    "small": programs.SMALL,
    "many solutions": programs.ENDLESS,
    "target": programs.TARGET,
    "long target": programs.LONG_TARGET,
    "market split": programs.market_split(2, 12, 3),
}


class LadderTest(harness.Case):
    def outcome(self, program, *options):
        """Output and what stands in the files: the stars without times and parameters, and the lattice."""
        for name in ("prog.sol", "prog.lat"):
            if self.exists(name):
                self.remove(name)
        self.write("prog.opt", program)
        result = self.run_solver("--verb=2", *NO_DRAW, *options, "prog.opt")
        self.assert_ends_well(result)
        stars = sorted((star.target_norm, star.slack_norm, star.x, star.targets) for star in self.stars())
        # The last number is the time of the best vector.
        lattice = re.sub(r"\n-?\d+\n\n// B", r"\n\n// B", self.read("prog.lat"))
        return result.out, stars, lattice

    def assert_same(self, name, *options):
        program = PROGRAMS[name]
        free = self.outcome(program, FREE, *options)
        forced = self.outcome(program, FORCED, *options)
        self.assertNotIn(DOWN, forced[0])
        self.assertEqual(free[1], forced[1])
        self.assertEqual(free[2], forced[2])

    def test_the_result_is_that_of_extended_precision(self):
        for name in PROGRAMS:
            for options in (("--iters=1",), ("--iters=4", "--consistency=1"), ("--iters=3", "--deep=1", "--eprune=0")):
                with self.subTest(program=name, options=options):
                    self.assert_same(name, *options)


if __name__ == "__main__":
    harness.main()
