"""Bounds from activities: the same points, and what chains of rows fix is fixed."""

from __future__ import annotations

import itertools
import random
import unittest
from fractions import Fraction

import support
import harness

from latbox import matrix_model
from latbox.models import Model
from latbox.solving import activity, checking, portfolio
from latbox.solving.statement import Infeasible, Statement


def chain(length: int) -> Model:
    """x1 = 1, and each one is as great as the one before it: rows from the last one on, so that a round fixes one column."""
    rows = [[Fraction(j == i) - Fraction(j == i + 1) for j in range(length)] for i in reversed(range(length - 1))]
    rows.append([Fraction(j == 0) for j in range(length)])
    return matrix_model(rows, [0] * (length - 1) + [1], 0, 1).model


def points(model: Model, low: int, high: int) -> set[tuple[int, ...]]:
    box = itertools.product(range(low, high + 1), repeat=len(model.variables))
    return {x for x in box if checking.fault(model, [Fraction(v) for v in x]) is None}


class NarrowedTest(unittest.TestCase):
    def test_a_chain_is_fixed(self) -> None:
        model = chain(40)
        narrowed = activity.narrowed(model, Statement(model))
        self.assertEqual({(v.lower, v.upper) for v in narrowed.variables}, {(1, 1)})
        self.assertEqual(Statement(narrowed).program.columns, [])
        self.assertEqual({(v.lower, v.upper) for v in model.variables}, {(0, 1)})

    def test_random_models_keep_their_points(self) -> None:
        draw = random.Random(7)
        closer = infeasible = 0
        for _ in range(100):
            rows = [[draw.randint(-4, 4) for _ in range(3)] for _ in range(draw.randint(1, 4))]
            sides = [(low, low + draw.randint(0, 4)) for low in (draw.randint(-6, 6) for _ in rows)]
            lower, upper = draw.choice([-2, None]), draw.choice([3, None])
            model = matrix_model(rows, sides, lower, upper).model
            wanted = points(model, -3, 4)
            try:
                narrowed = activity.narrowed(model, Statement(model))
            except Infeasible:
                infeasible += 1
                self.assertEqual(wanted, set())
                continue
            self.assertEqual(points(narrowed, -3, 4), wanted)
            closer += any(a.lower != b.lower or a.upper != b.upper for a, b in zip(model.variables, narrowed.variables))
        self.assertGreater(closer, 20)
        self.assertGreater(infeasible, 3)

    def test_a_grid_of_decimals_stays(self) -> None:
        model = matrix_model([[2, 3]], [Fraction(7, 2)], 0, 9, digits=1).model
        for variable in model.variables:
            variable.integer = True  # as .opt programs have them
        narrowed = activity.narrowed(model, Statement(model))
        # y <= 1.1, so x >= 0.1; x <= 1.7, so y >= 0.1; and then x <= 1.6.
        tenths = [(10 * v.lower, 10 * v.upper) for v in narrowed.variables]
        self.assertEqual(tenths, [(1, 16), (1, 11)])


class LargeModelTest(unittest.TestCase):
    def test_a_large_model_is_narrowed_before_it_is_refused(self) -> None:
        """Its rows times columns are too many for a program, and nothing is left of them."""
        model = chain(60)
        most, many = portfolio.MOST_CELLS, portfolio.MANY_CELLS
        portfolio.MOST_CELLS = portfolio.MANY_CELLS = 100  # type: ignore[attr-defined]
        try:
            *_, end = portfolio.Portfolio(model, portfolio.Settings()).events()
        finally:
            portfolio.MOST_CELLS, portfolio.MANY_CELLS = most, many  # type: ignore[attr-defined]
        self.assertEqual((end.status, end.x), ("optimal", [1] * 60))


if __name__ == "__main__":
    harness.main()
