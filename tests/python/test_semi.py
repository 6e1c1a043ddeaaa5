"""Semi variables whose text leaves an end open: rows close it, or it is told that none does."""

from __future__ import annotations

import itertools
import os
import random
import unittest
from fractions import Fraction

import support  # noqa: F401
import harness

import latbox
from latbox.models import Model, read_text
from latbox.models.model import INF, Row, Variable
from latbox.solving import checking, semi
from latbox.solving.statement import Infeasible

# 0 or at least 5, of two decimals where it is continuous; 7 x <= 60 - y.
OPEN = "maximize\n x + y\nsubject to\n c: 7 x + y <= 60\nbounds\n x >= 5\n y <= 4\n%s\nsemi-continuous\n x\nend\n"
WHOLE = OPEN % "generals\n x y"


def random_model(draw: random.Random) -> Model:
    model = Model()
    for j in range(2):
        low = draw.choice([1, 2, 4])
        ends: tuple = (low, INF) if draw.random() < 0.6 else (-INF, -low)
        model.variables.append(Variable("x%d" % j, integer=True, lower=ends[0], upper=ends[1], semi=True))
    for i in range(draw.randint(1, 3)):
        coefficients = {j: Fraction(draw.choice([-2, -1, 1, 2, 3])) for j in range(2)}
        side = draw.randint(-4, 9)
        model.rows.append(Row("r%d" % i, None, draw.choice([-INF, Fraction(side - 6)]), Fraction(side), coefficients))
    # Often all that closes them.
    if draw.random() < 0.7:
        signs = {j: Fraction(1 if variable.upper == INF else -1) for j, variable in enumerate(model.variables)}
        model.rows.append(Row("size", None, -INF, Fraction(draw.randint(0, 9)), signs))
    return model


def points(model: Model) -> set[tuple[int, ...]]:
    box = itertools.product(range(-12, 13), repeat=2)
    return {x for x in box if checking.fault(model, [Fraction(v) for v in x]) is None}


class ClosedTest(unittest.TestCase):
    def test_random_models_keep_their_points(self) -> None:
        draw = random.Random(11)
        ended = emptied = 0
        for _ in range(100):
            model = random_model(draw)
            wanted = points(model)
            try:
                closed = semi.closed(model)
            except Infeasible:
                self.assertEqual(wanted, set())
                continue
            self.assertEqual(points(closed), wanted)
            ended += not any(semi.needs_end(variable) for variable in closed.variables)
            emptied += any(variable.lower > variable.upper for variable in closed.variables)
        self.assertGreater(ended, 20)
        self.assertGreater(emptied, 3)

    def test_the_model_stays_as_it_is(self) -> None:
        model = read_text(WHOLE, "lp")
        self.assertEqual((semi.closed(model).variables[0].lower, semi.closed(model).variables[0].upper), (5, 8))
        self.assertEqual(model.variables[0].upper, INF)

    def test_nothing_to_close(self) -> None:
        model = read_text(WHOLE.replace("x >= 5", "0 <= x"), "lp")
        self.assertIs(semi.closed(model), model)

    def test_on_a_grid(self) -> None:
        """x of two decimals: 7 x <= 60 leaves 8.57."""
        closed = semi.closed(read_text(OPEN % "generals\n y", "lp"), 2)
        self.assertEqual(closed.variables[0].upper, Fraction(857, 100))


class SolvedTest(unittest.TestCase):
    def setUp(self) -> None:
        os.environ["LATBOX_BIN_DIR"] = os.path.dirname(harness.Settings.binary)

    def solved(self, text: str) -> latbox.Result:
        return latbox.Model(read_text(text, "lp")).solve()

    def test_closed_by_a_row(self) -> None:
        result = self.solved(WHOLE)
        self.assertEqual((result.status, result.x), ("optimal", (8, 4)))

    def test_its_least_value_is_too_large(self) -> None:
        result = self.solved(WHOLE.replace("x >= 5", "x >= 9"))
        self.assertEqual((result.status, result.x), ("optimal", (0, 4)))

    def test_nothing_closes_it(self) -> None:
        with self.assertRaisesRegex(latbox.ModelError, "variable x is 0 or from 5 to inf: both ends must be finite, or follow from the rows"):
            self.solved(WHOLE.replace("7 x + y", "y"))


if __name__ == "__main__":
    harness.main()
