"""The checker must say no: a checker that accepts everything would pass every other test."""

import harness
import checker
import exhaustive

OPT = """// two targets
[ -inf inf ] = [ 9 2 ]
[ [ 1 1 ] [ 1/2 0 ] ] /* rows */
[ [ 1 2 ] ] [ 7 ]
[ [ 3 -1 ] ] [ 0 ] [ inf ]
[ 0 1 ] [ 0 0 ] [ 10 10 ]
"""
GOOD = "[ 3 2 ] | 3:1/2 | [ 5 1:1/2 ] | 0 | 4 | --verb=0 | 2.2.2"


class ReaderTest(harness.Case):
    def test_numbers(self):
        for text, value in (("5", 5), ("-5", -5), ("3/4", 0.75), ("2:1/4", 2.25), ("-2:1/4", -2.25), ("1.25", 1.25),
                            ("1,25", 1.25), (".5", 0.5), ("1e3", 1000), ("2E-2", checker.Fraction(1, 50)),
                            ("inf", checker.INF), ("-inf", -checker.INF)):
            self.assertEqual(checker.number(text), value, text)
        for text in ("", "-", "x", "1/0", "nan", "1:2:3", "in"):
            self.assertRaises(checker.FormatError, checker.number, text)

    def test_program(self):
        program = checker.Program(OPT)
        self.assertEqual(program.dt, [-checker.INF, checker.INF])
        self.assertEqual(program.kt, [9, 2])
        self.assertEqual(program.at[1], [checker.Fraction(1, 2), 0])
        self.assertEqual(program.rx, [10, 10])

    def test_programs_that_do_not_fit_together(self):
        for old, new in (("[ 7 ]", "[ 7 8 ]"), ("[ 0 1 ]", "[ 0 ]"), ("[ 1 2 ]", "[ 1 ]"), ("[ 10 10 ]", "[ 10")):
            self.assertRaises(checker.FormatError, checker.Program, OPT.replace(old, new))


class CheckerTest(harness.Case):
    def verdict(self, line, opt=OPT):
        return [reason for _, reason in checker.verdicts(checker.Program(opt), checker.read_stars(line))]

    def test_holds(self):
        self.assertEqual(self.verdict(GOOD), [None])

    def test_each_lie_is_found(self):
        lies = (("[ 3 2 ]", "[ 3 3 ]", "equation 1"), ("[ 3 2 ]", "[ 3 ]", "1 components"),
                ("[ 3 2 ]", "[ 11 -2 ]", "outside"), ("[ 3 2 ]", "[ 0 3.5 ]", "inequation 1"),
                ("[ 3 2 ]", "[ 3.5 1.75 ]", "off its grid"), ("[ 5 1:1/2 ]", "[ 5 1 ]", "target values"),
                ("3:1/2", "6:1/2", "target norm"), ("| 0 |", "| 1 |", "slack norm"))
        for old, new, reason in lies:
            self.assertIn(reason, self.verdict(GOOD.replace(old, new, 1))[0])

    def test_a_star_that_stands_twice(self):
        self.assertEqual(self.verdict(GOOD + "\n\n" + GOOD), [None, "stands twice"])

    def test_finite_target(self):
        opt = "[ 7 ] [ [ 2 3 ] ] [ ] [ ] [ ] [ ] [ ] [ 0 0 ] [ 0 0 ] [ 4 4 ]"
        self.assertEqual(self.verdict("[ 1 1 ] | 2 | [ 2 ] | 2 | 0 | p", opt), [None])
        self.assertEqual(self.verdict("[ 1 1 ] | 4 | [ 4 ] | 2 | 0 | p", opt), [None])
        for norms in ("| 1 | [ 1 ] | 2", "| 3 | [ 3 ] | 2", "| 2 | [ 2 ] | 0"):
            self.assertIsNotNone(self.verdict("[ 1 1 ] %s | 0 | p" % norms, opt)[0])


class ExhaustiveTest(harness.Case):
    def test_against_counting_by_hand(self):
        # x + 2 y = 7 within 0..10, y in tenths: y = 0.0, 0.5, ..., 3.5; 3 x >= y leaves out y = 3.5 alone.
        count, best = exhaustive.solve_text(OPT)
        self.assertEqual(count, 7)
        self.assertEqual(best, min(checker.Fraction(7 - 2 * y + y) - checker.Fraction(7 - 2 * y) / 2
                                   for y in (checker.Fraction(k, 2) for k in range(7))))

    def test_infeasible(self):
        self.assertEqual(exhaustive.solve_text("[ ] [ ] [ [ 2 2 ] ] [ 3 ] [ ] [ ] [ ] [ 0 0 ] [ 0 0 ] [ 9 9 ]"),
                         (0, None))


if __name__ == "__main__":
    harness.main()
