"""Programs that need exact numbers: the ladder gives what a run in extended precision from the start gives."""

import random
import re
import unittest

import harness
import programs

# Decides nothing in the programs below, and cannot be held in standard precision: the run stays exact to its end.
FORCED = "--snorm=-4/3"
FREE = "--snorm=-1"

# No step may draw a random number, for a run that is repeated exactly draws at other times.
NO_DRAW = ("--sol=0", "--variate=0", "--sample=0")

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
        self.assertEqual(result.status, 0)
        # With very long numbers a kernel takes more transformations than are usual, which warns and harms nothing.
        self.assertEqual(result.err.replace("*** TT.MN > T_MAT_NBR\n", ""), "")
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

    def assert_all_the_same(self, *options):
        for name in PROGRAMS:
            with self.subTest(program=name):
                self.assert_same(name, *options)

    def test_the_result_is_that_of_extended_precision(self):
        self.assert_all_the_same("--iters=1")

    def test_the_result_with_remembered_transformations(self):
        self.assert_all_the_same("--iters=4", "--consistency=1")

    def test_the_result_with_full_enumeration(self):
        self.assert_all_the_same("--iters=3", "--eprune=0", "--pair=0", "--reinsert=0")

    # No equation or wide box among them: with deep insertion the first vector never changes, and a block that begins
    # with one that is much longer than the others takes for ever, in either precision.
    def test_the_result_with_deep_insertion(self):
        for name in ("thirds in a row", "thirds in bounds", "thirds in a target", "inequation of 20 digits", "target",
                     "inequation of 40 digits", "many solutions", "long target"):
            with self.subTest(program=name):
                self.assert_same(name, "--iters=3", "--deep=1")

    def test_large_target_terms_that_cancel(self):
        # Symptom: a line with a target value that was 61 off, for the two terms were rounded.
        self.write("prog.opt", programs.opt(dt=["inf"], at=[[1234567890123457, -1234567890123456]], au=[[1, -1]],
                                            lu=[-1], ru=[0], rx=[1000003, 1000003]))
        self.assert_ends_well(self.run_solver("--iters=3", "prog.opt"))
        self.assertEqual(self.stars()[0].target_norm, -1000003)

    def switches(self, name, *options):
        """The announcements of changed precision in their order, and the whole output."""
        out = self.outcome(PROGRAMS[name], FREE, "--iters=2", *options)[0]
        return re.findall(r"-> (Switching to extended|Using standard) precision\n", out), out

    def test_every_program_is_read_exactly(self):
        switches, out = self.switches("small")
        self.assertEqual(switches, ["Switching to extended", "Using standard"])
        self.assertIn("|    |-> Reading opt file ...\n|    |    |-> Switching to extended precision\n"
                      "|    |    |-> Using standard precision\n", out)

    def test_changes_of_precision_alternate(self):
        for name in PROGRAMS:
            switches, _ = self.switches(name)
            self.assertEqual(switches[::2], ["Switching to extended"] * ((len(switches) + 1) // 2), name)
            self.assertEqual(switches[1::2], ["Using standard"] * (len(switches) // 2), name)

    def test_an_overflow_is_repeated_and_the_run_comes_back(self):
        switches, _ = self.switches("equation of 8 digits")
        self.assertGreater(len(switches), 2)
        self.assertEqual(switches[-1], "Using standard")

    def test_what_no_long_double_holds_keeps_the_run_exact(self):
        for name in ("thirds in a row", "thirds in bounds", "equation of 40 digits", "inequation of 100 digits"):
            switches, _ = self.switches(name)
            self.assertEqual(switches, ["Switching to extended"], name)

    def test_silent_below_verb_2(self):
        self.write("prog.opt", PROGRAMS["equation of 20 digits"])
        for verb in ("0", "1"):
            result = self.run_solver("--verb=" + verb, "--iters=2", "--sol=0", "prog.opt")
            self.assert_ends_well(result)
            self.assertNotIn("precision", result.out)


FREE_VARIABLES = {
    "below": dict(lx=["-inf", 0], rx=[100, 10]),
    "above": dict(lx=[-100, 0], rx=["inf", 10]),
    "on both sides": dict(lx=["-inf", "-inf"], rx=["inf", "inf"]),
}


class WideningTest(harness.Case):
    """Free variables have working bounds, which a candidate beyond them widens; the lattice is made anew then."""

    def program(self, bounds):
        return programs.opt(au=[[17, 23]], lu=[1000], ru=[1004], **bounds)

    def loop_again(self, name):
        """The run loops again, the file never loses a star to the next run, and the count that is shown never falls."""
        self.write("prog.opt", self.program(FREE_VARIABLES[name]))
        first = self.run_solver("--sol=0", "--iters=6", "--verb=2", "prog.opt")
        self.assert_ends_well(first)
        self.assertIn("|    |-> Lattice was regenerated ==> Re-Looping ...\n", first.out)
        before = {tuple(star.x) for star in self.stars()}
        self.assertTrue(before)
        self.assert_ends_well(self.run_solver("--sol=0", "--iters=6", "prog.opt"))
        self.assertLessEqual(before, {tuple(star.x) for star in self.stars()})
        counts = [int(count) for count in re.findall(r"Solutions found: (\d+)\n", first.out)]
        self.assertEqual(counts, sorted(counts))

    def test_free_above(self):
        self.loop_again("above")

    def test_free_below(self):
        self.loop_again("below")

    def test_free_on_both_sides(self):
        self.loop_again("on both sides")


if __name__ == "__main__":
    harness.main()
