"""The two programs of a model: the plain one for the complete engine, the rewritten one for the search; and the way back.

Drawn models are held against exhaustive search: all points of the rewritten program, led back, are all points of the model.
"""

from __future__ import annotations

import itertools
import random
import unittest
from fractions import Fraction

import support  # noqa: F401
import harness
import random_models
import model_texts

from latbox.errors import ModelError
from latbox.models import INF, read_text
from latbox.solving import checking
from latbox.solving.program import Column, Condition, Program
from latbox.solving.rewriting import Rewriting
from latbox.solving.statement import Infeasible, Statement, grid_text
from latbox.solving.tuning import GENERAL, KNAPSACKS, MARKET_SPLIT, ONE_EQUATION, kind_of, tuning

BOUNDS = "min\n obj: 2 x - 3 y + z\nst\n r: x + y + z >= 2\n s: 2 x + 4 y <= 9\nbounds\n -2 <= x <= 3\n 1 <= y <= 4\n z = 2\n" \
         "general\n x y z\nend\n"


def statement(text: str, form: str = "lp", digits: int | None = None) -> Statement:
    return Statement(read_text(text, form), digits)


def points(program: Program) -> set[tuple]:
    """All points of a program in whole columns."""
    ranges = [range(int(column.lower), int(column.upper) + 1) for column in program.columns]
    return {x for x in itertools.product(*ranges)
            if all(row.lower <= sum(a * x[j] for j, a in row.terms.items()) <= row.upper for row in program.conditions)}


class StatementTest(unittest.TestCase):
    def test_what_is_said_plainly(self) -> None:
        program = statement(BOUNDS).program
        self.assertEqual([(c.lower, c.upper) for c in program.columns], [(-2, 3), (1, 4)])
        self.assertEqual([(row.terms, row.lower, row.upper) for row in program.conditions],
                         [({0: 1, 1: 1}, 0, INF), ({0: 2, 1: 4}, -INF, 9)])
        self.assertEqual([(t.terms, t.wanted) for t in program.targets], [({0: 2, 1: -3}, -INF)])

    def test_there_and_back(self) -> None:
        found = statement(BOUNDS)
        self.assertEqual(found.point([3, 1]), [3, 1, 2])
        self.assertEqual(found.columns([Fraction(3), Fraction(1), Fraction(2)]), [3, 1])
        self.assertEqual(found.objective(Fraction(3)), 5)  # z = 2 counts
        self.assertEqual(found.norm(Fraction(5)), 3)
        maximised = statement(BOUNDS.replace("min\n", "max\n"))
        self.assertEqual((maximised.objective(Fraction(-3)), maximised.norm(Fraction(5))), (5, -3))

    def test_semi_integers(self) -> None:
        found = statement("min\n obj: x\nst\n c: x + y >= 1\nbounds\n 3 <= x <= 5\n y <= 9\ngeneral\n x y\n"
                          "semi-continuous\n x\nend\n")
        values = {x for x, _, _ in points_of(found)}
        self.assertEqual(values, {0, 3, 4, 5})
        self.assertEqual(found.columns([Fraction(4), Fraction(1)]), [4, 1, 1])
        self.assertEqual(found.columns([Fraction(0), Fraction(1)]), [0, 1, 0])

    def test_continuous_columns(self) -> None:
        text = "min\n obj: x\nst\n c: 3 x + y = 2\nbounds\n 0.35 <= x <= 4\n y <= 9\ngeneral\n y\nend\n"
        with self.assertRaises(ModelError):
            statement(text)
        found = statement(text, digits=1)
        self.assertEqual(grid_text(found.model, 2), "2 digits")
        self.assertEqual((found.program.columns[0].lower, found.program.columns[0].digits), (Fraction(2, 5), 1))
        fixed = statement(text.replace("0.35 <= x <= 4", "x = 0.35"))
        self.assertEqual(grid_text(fixed.model, 2), "")
        self.assertEqual(fixed.program.conditions[0].lower, Fraction(19, 20))

    def test_what_nothing_can_satisfy(self) -> None:
        for text, message in (
                ("min\n obj: x\nst\n c: x + y >= 1\nbounds\n 3 <= x <= 2\ngeneral\n x y\nend\n",
                 "x has no value: its bounds are 3 and 2"),
                ("min\n obj: x\nst\n c: x >= 1\nbounds\n x = 0\ngeneral\n x\nend\n",
                 "row c cannot hold: its value is 0, and its sides are 1 and inf")):
            with self.assertRaises(Infeasible) as caught:
                statement(text)
            self.assertEqual(str(caught.exception), message)


def points_of(found: Statement) -> set[tuple]:
    return points(found.program)


class RewritingTest(unittest.TestCase):
    def assert_harmless(self, program: Program) -> None:
        """No rule of the search finds anything to take hold of."""
        for column in program.columns:
            self.assertEqual(column.lower, 0)
            self.assertGreater(column.upper, 0)
            self.assertLess(column.upper, INF)
            self.assertEqual(column.digits, 0)
        for row in program.conditions:
            self.assertTrue(row.terms)
            for value in (*row.terms.values(), row.lower, row.upper):
                self.assertIsInstance(value, int)
            self.assertLessEqual(row.lower, row.upper)
        for target in program.targets:
            self.assertEqual(target.wanted, -INF)
            self.assertTrue(all(isinstance(a, int) for a in target.terms.values()))

    def test_drawn_models(self) -> None:
        for seed in range(400):
            plain = random_models.random_model(seed)
            model = read_text(model_texts.mps(plain), "free-mps")
            expected = {tuple(x) for x in itertools.product(*random_models.stated_box(plain))
                        if checking.fault(model, [Fraction(v) for v in x]) is None}
            with self.subTest(seed=seed):
                self.assertEqual(self.led_back(model, seed), expected)

    def led_back(self, model, seed: int) -> set[tuple]:
        try:
            found = Statement(model)
            if not found.program.columns:
                return {tuple(found.point([]))}
            rewriting = Rewriting(found.program, seed=seed % 3)
        except Infeasible:
            return set()
        self.assertTrue(rewriting.is_exact)
        self.assert_harmless(rewriting.program)
        return {tuple(found.point(rewriting.point([Fraction(v) for v in z]))) for z in points(rewriting.program)}

    def test_the_objective_keeps_its_order(self) -> None:
        found = statement(BOUNDS)
        rewriting = Rewriting(found.program)
        target = rewriting.program.targets[0]
        seen = {}
        for z in points(rewriting.program):
            x = found.point(rewriting.point([Fraction(v) for v in z]))
            seen[checking.objective_of(found.model, x)] = sum(a * z[j] for j, a in target.terms.items())
        values = sorted(seen)
        self.assertEqual([seen[v] for v in values], sorted(seen.values()))
        self.assertEqual(len(set(seen.values())), len(values))

    def test_a_limit_leaves_better_points(self) -> None:
        found = statement(BOUNDS)
        everything = {tuple(found.point(x)) for x in points(found.program)}
        rewriting = Rewriting(found.program, limit=Fraction(0))
        left = {tuple(found.point(rewriting.point([Fraction(v) for v in z]))) for z in points(rewriting.program)}
        self.assertEqual(left, {x for x in everything if 2 * x[0] - 3 * x[1] < 0})
        with self.assertRaises(Infeasible):
            Rewriting(found.program, limit=Fraction(-100))

    def test_a_value_to_be_reached(self) -> None:
        found = statement("[ 50 ] [ [ 19 23 31 ] ] [ ] [ ] [ ] [ ] [ ] [ 0 0 0 ] [ 0 0 0 ] [ 1 1 1 ]", "opt")
        rewriting = Rewriting(found.program)
        self.assert_harmless(rewriting.program)
        self.assertEqual(len(rewriting.program.columns), 5)
        best = min(points(rewriting.program), key=lambda z: sum(a * z[j] for j, a in rewriting.program.targets[0].terms.items()))
        self.assertEqual(found.point(rewriting.point([Fraction(v) for v in best])), [1, 0, 1])

    def test_open_columns_get_far_bounds(self) -> None:
        found = statement("min\n obj:\nst\n c: 17 x - 23 y = 5\nbounds\n x free\n y free\ngeneral\n x y\nend\n")
        rewriting = Rewriting(found.program)
        self.assertFalse(rewriting.is_exact)
        self.assert_harmless(rewriting.program)
        far = statement("min\n obj:\nst\n c: x - y = 0\n d: x + y >= 100000\nbounds\n x free\n y free\ngeneral\n x y\nend\n")
        self.assertFalse(Rewriting(far.program).is_exact)
        none = statement("min\n obj:\nst\n c: 2 x - 2 y = 1\nbounds\n x free\n y free\ngeneral\n x y\nend\n")
        with self.assertRaises(Infeasible) as caught:
            Rewriting(none.program)
        self.assertFalse(caught.exception.is_proven)

    def test_seeds_change_the_order_alone(self) -> None:
        draw = random.Random(5)
        rows = [" c%d: %s = 100" % (i, " + ".join("%d x%d" % (draw.randint(1, 99), j) for j in range(12))) for i in range(3)]
        text = "min\n obj:\nst\n%s\nbinary\n %s\nend\n" % ("\n".join(rows), " ".join("x%d" % j for j in range(12)))
        found = statement(text)
        texts = [Rewriting(found.program, seed=seed).program.text() for seed in (0, 0, 1, 2)]
        self.assertEqual(texts[0], texts[1])
        self.assertEqual(len(set(texts)), 3)

    def test_tuning(self) -> None:
        split = "min\n obj:\nst\n c: 31 x + 17 y + 5 z = 36\n d: 7 x + 19 y + 23 z = 30\nbinary\n x y z\nend\n"
        for text, kind in ((split, MARKET_SPLIT), (split.replace("= 36", "<= 36"), GENERAL), (split.replace("obj:", "obj: x"), GENERAL),
                           (split.replace("binary", "general"), GENERAL), (split.replace("7 x + 19 y + 23 z = 30", "x <= 1"), GENERAL),
                           (split.replace(" d: 7 x + 19 y + 23 z = 30\n", ""), ONE_EQUATION),
                           (split.replace("obj:", "obj: x").replace("=", "<="), KNAPSACKS), (split.replace("=", "<="), GENERAL)):
            self.assertEqual(kind_of(statement(text).program), kind, text)

    def test_options_depend_on_the_rank(self) -> None:
        def row(count: int, n: int) -> tuple:
            conditions = [Condition({j: 3 * j + 7 + i for j in range(n)}, 90, 90) for i in range(count)]
            return tuning(Program([Column(0, 1) for _ in range(n)], conditions))[:2]

        self.assertEqual([row(5, n) for n in (40, 45, 46, 65)], [(MARKET_SPLIT, 40)] * 2 + [(MARKET_SPLIT, 60)] * 2)
        self.assertEqual([row(1, n) for n in (20, 61)], [(ONE_EQUATION, 60)] * 2)
        self.assertEqual([row(5, 66), row(1, 62), row(0, 9)], [(GENERAL, None)] * 3)


class CheckingTest(unittest.TestCase):
    def test_faults(self) -> None:
        model = read_text(BOUNDS, "lp")
        for x, words in (([3, 1, 2], "row s is 10, and its sides are -inf and 9"), ([0, 1, 2], None), ([0, 1], "it has 2 values for 3 variables"),
                         ([Fraction(1, 2), 1, 2], "x = 1/2 is not a multiple of 1"), ([0, 0, 2], "y = 0 is outside 1 .. 4"),
                         ([-2, 1, 2], "row r is 1, and its sides are 2 and inf")):
            self.assertEqual(checking.fault(model, [Fraction(v) for v in x]), words)

    def test_objective(self) -> None:
        model = read_text(BOUNDS, "lp")
        self.assertEqual(checking.objective_of(model, [Fraction(v) for v in (3, 1, 2)]), 5)
        near = read_text("[ 50 -inf ] [ [ 19 23 31 ] [ 1 1 1 ] ] [ ] [ ] [ ] [ ] [ ] [ 0 0 0 ] [ 0 0 0 ] [ 1 1 1 ]", "opt")
        self.assertEqual(checking.objective_of(near, [Fraction(v) for v in (1, 1, 0)]), 10)

    def test_rays(self) -> None:
        model = read_text("max\n obj: x + y\nst\n c: x - 2 y <= 3\nbounds\n x >= 2\n z <= 4\ngeneral\n x y z\nend\n"
                          .replace("<= 3\n", "<= 3\n d: z >= 0\n"), "lp")
        for ray, words in (([1, 1, 0], None), ([3, 1, 0], "row c meets its side"), ([1, 1, 1], "z meets its bound"),
                           ([-1, 0, 0], "x meets its bound"), ([0, 0, 0], "the objective does not get better along it"),
                           ([Fraction(1, 2), 1, 0], "x does not go in steps of its grid")):
            self.assertEqual(checking.ray_fault(model, [Fraction(v) for v in ray]), words)


if __name__ == "__main__":
    harness.main()
