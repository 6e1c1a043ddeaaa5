"""Rules of this design that a user can meet and may not expect, and the options that decide what ends a run."""

import os
import re

import checker
import harness
import programs
from programs import opt


class RowsTest(harness.Case):
    def solve(self, text, *options):
        self.write("prog.opt", text)
        result = self.run_solver("--iters=20", *options, "prog.opt")
        self.assert_ends_well(result)
        return result

    def assert_solved(self, text):
        self.solve(text)
        self.assertTrue(self.stars())

    def test_equal_sides_alone_are_an_equation(self):
        self.assert_solved(opt(au=[[3, 5]], lu=[14], ru=[14], rx=[4, 4]))

    def test_equal_sides_replace_the_equation_of_their_number(self):
        self.solve(opt(ag=[[1, 1]], bg=[4], au=[[1, 0]], lu=[1], ru=[1], rx=[4, 4]), "--sol=0")
        stars = checker.read_stars(self.read("prog.sol"))
        # What is left is x1 = 1: the equation x1 + x2 = 4 has gone.
        self.assertEqual({star.x[0] for star in stars}, {1})
        self.assertNotEqual({star.x[1] for star in stars}, {3})

    def test_a_missing_lower_side(self):
        self.assert_solved(opt(ag=[[2, 3]], bg=[12], au=[[1, 1]], lu=["-inf"], ru=[8], rx=[4, 4]))

    def test_a_variable_without_lower_bound(self):
        self.assert_solved(opt(ag=[[3, 5]], bg=[1], lx=["-inf", 0], rx=[0, 4]))

    def test_a_variable_without_upper_bound(self):
        self.assert_solved(opt(ag=[[3, -5]], bg=[1], lx=[0, 0], rx=["inf", 9]))

    def test_lower_bounds_above_and_below_zero(self):
        self.assert_solved(opt(ag=[[3, 5]], bg=[1], lx=[-4, -4], rx=[4, 4]))

    def test_a_fraction_that_standard_precision_cannot_hold(self):
        self.assert_solved(opt(ag=[["1/3", "1/7", "-1/11"]], bg=["2/231"], rx=[20, 20, 20]))

    def test_decimals_beside_a_fixed_variable(self):
        # 1000.3 - 1000 was a little less than 0.3 in standard precision: one of the two solutions was lost.
        self.solve(opt(au=[["0.1", 1]], lu=["1000.15"], ru=["1000.3"], lx=[0, 1000], rx=[9, 1000]), "--sol=0")
        self.assertEqual({star.x[0] for star in checker.read_stars(self.read("prog.sol"))}, {2, 3})

    def test_all_variables_but_one_are_fixed(self):
        self.assert_solved(opt(au=[[2, 3, 4]], lu=[9], ru=[14], lx=[1, 2, 0], rx=[1, 2, 3]))


class EndTest(harness.Case):
    """programs.TARGET has its optimum at 40."""

    def run_target(self, *options):
        self.write("prog.opt", programs.TARGET)
        result = self.run_solver("--iters=20", *options, "prog.opt")
        self.assert_ends_well(result)
        self.stars()
        return result

    def test_a_target_alone_makes_no_solution(self):
        # snorm is -1 unless it is given, and no slack norm is that small.
        for options in ((), ("--tnorm=1000",)):
            result = self.run_target(*options)
            self.assertNotIn("Solutions found", result.out)
            self.assertIn("\nTotal iterations: 20\n", result.out)
            self.assertRegex(result.out, r"\nT\(bestTarget\) = \d+, S\(bestTarget\) = 0 -- \{ \d+ sec\(s\) \}\n")

    def test_both_norms_decide(self):
        for options in (("--snorm=0", "--tnorm=1000"), ("--snorm=-inf", "--tnorm=1000"), ("--snorm=0",)):
            result = self.run_target(*options)
            self.assertIn("Solutions found: 1\n", result.out)
            # What was found is known to the next run, which would count it too.
            os.remove(self.path("prog.sol"))

    def test_a_norm_that_is_never_reached(self):
        self.assertNotIn("Solutions found", self.run_target("--snorm=0", "--tnorm=39").out)

    def test_no_number_of_solutions_ends_the_run(self):
        self.write("prog.opt", programs.SMALL)
        for limit in ("0", "-1", "-inf"):
            result = self.run_solver("--sol=" + limit, "--iters=3", "prog.opt")
            self.assert_ends_well(result)
            self.assertIn("\nTotal iterations: 3\n", result.out)
            self.assertTrue(self.stars())

    def test_the_best_value_is_the_first_line(self):
        result = self.run_target()
        best = re.findall(r"T\(bestTarget\) = (\d+)", result.out)[-1]
        self.assertEqual(self.read("prog.sol").split(" | ")[1], best)

    def test_a_value_that_is_reached_ends_the_run(self):
        self.write("prog.opt", opt(dt=[137], at=[[19, 23, 31, 44]], rx=[3] * 4))
        result = self.run_solver("--iters=200", "prog.opt")
        self.assert_ends_well(result)
        self.assertEqual(self.stars()[0].slack_norm, 0)
        self.assertIn("Solutions found: 1\n", result.out)



class CollectionsTest(harness.Case):
    def test_a_negative_limit_leaves_one_vector_of_each_kind(self):
        # Symptom: a limit below 0 kept nothing, so that sieving had nothing to work with.
        self.write("prog.opt", programs.ENDLESS)
        result = self.run_solver("--sol=0", "--iters=2", "--collectLimit=-1", "--sieve=1", "--verb=1", "prog.opt")
        self.assert_ends_well(result)
        counts = re.findall(r"^Sieveable in/homogenous vectors: (.*)$", result.out, re.MULTILINE)
        self.assertEqual(counts, ["(1, 1)", "(1, 1)"])
        self.assertTrue(self.stars())


if __name__ == "__main__":
    harness.main()
