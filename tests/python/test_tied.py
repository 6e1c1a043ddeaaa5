"""Continuous variables that equations tie to grids: which are, with how many digits, and that the model keeps its points."""

from __future__ import annotations

import itertools
import random
import unittest
from fractions import Fraction

import support  # noqa: F401
import harness

from latbox.models import INF, Model, opt_writer, read_text
from latbox.models.model import Row
from latbox.models.tied import with_tied_on_grids
from latbox.solving.events import End
from latbox.solving.portfolio import Portfolio
from latbox.solving.settings import Settings

# As other packages write 1 <= x + y <= 3, and a total cost.
RANGE = "min\n o: x + y\nst\n c: x + y - ~r_1 = 1\n d: x - y >= -2\nbounds\n 0 <= ~r_1 <= 2\n x <= 5\n y <= 5\ngeneral\n x y\nend\n"
COST = "min\n o: cost\nst\n c: cost - 1.25 x - 0.5 y = 0.1\n d: x + y >= 1\nbounds\n cost free\n x <= 5\n y <= 5\ngeneral\n x y\nend\n"


def digits(model: Model) -> dict[str, int | None]:
    """{continuous variable: its digits, None if it is not tied}"""
    after = with_tied_on_grids(model).variables
    return {v.name: w.digits if w.integer else None for v, w in zip(model.variables, after) if not v.integer}


def answer(model: Model) -> End:
    return next(event for event in Portfolio(model, Settings(threads=1, time=60)).events() if isinstance(event, End))


class TiedTest(unittest.TestCase):
    def test_which_are(self) -> None:
        for rows, expected in (
                ("c: x + z = 3", {"z": 0}), ("c: 2 z - x = 3", {"z": 1}), ("c: 8 z - x = 3", {"z": 3}), ("c: 3 z - 6 x = 9", {"z": 0}),
                ("c: 3 z - x = 9", {"z": None}), ("c: z - 0.05 x = 0.5", {"z": 2}), ("c: x + z >= 3", {"z": None}),
                ("c: x + z + w = 3", {"z": None, "w": None}), ("c: z - x + w = 3\n d: 2 w - x = 0", {"z": 1, "w": 1}),
                ("c: z + 1e-19 x = 3", {"z": None}), ("c: 3 z - x = 9\n d: z + 2 x = 1", {"z": 0}), ("c: 0 w + z = 7\n d: w >= 1", {"z": 0, "w": None})):
            model = read_text("min\n x\nst\n %s\ngeneral\n x\nend\n" % rows, "lp")
            self.assertEqual(digits(model), expected, rows)

    def test_what_has_values_of_its_own_is_left_alone(self) -> None:
        model = read_text(RANGE.replace("end", "semi\n ~r_1\nend"), "lp")
        self.assertIs(with_tied_on_grids(model), model)
        model = read_text(RANGE, "lp")
        model.variables[2].digits = 2
        self.assertIs(with_tied_on_grids(model), model)

    def test_fixed_ones_count(self) -> None:
        text = "min\n x\nst\n c: x + z + w = 3\nbounds\n w = %s\ngeneral\n x\nend\n"
        for value, expected in (("0.5", 1), ("2", 0), ("inf", None)):
            model = read_text(text % value, "lp") if value != "inf" else read_text(text % 1, "lp")
            if value == "inf":
                model.variables[2].lower = model.variables[2].upper = INF
            self.assertEqual(digits(model)["z"], expected, value)
        model.rows.append(Row("no", None, INF, INF, {1: Fraction(1)}))
        self.assertEqual(digits(model)["z"], None)

    def test_the_same_points(self) -> None:
        """Against a grid that is finer than any that the rows need."""
        draw = random.Random(1)
        tied = 0
        for _ in range(300):
            a, b, c = (Fraction(draw.randint(1, 9), draw.choice([1, 2, 4, 5])) for _ in range(3))
            side = Fraction(draw.randint(-9, 9), draw.choice([1, 2]))
            model = Model()
            for name in "xyz":
                model.add_variable(name)
            for variable in model.variables:
                variable.integer, variable.lower, variable.upper = variable.name != "z", Fraction(-2), Fraction(2)
            model.rows.append(Row("c", None, side, side, {0: a, 1: -b, 2: c}))
            after = with_tied_on_grids(model).variables[2]
            for x, y in itertools.product(range(-2, 3), repeat=2):
                z = (side - a * x + b * y) / c
                self.assertTrue(not after.integer or (z / after.step).denominator == 1)
            tied += after.integer
        self.assertGreater(tied, 50)


class SolvedTest(unittest.TestCase):
    def test_rows_with_two_sides_as_others_write_them(self) -> None:
        """`variable ~r_1 is continuous: declare it integer, or ask for a decimal grid`, of a model with whole numbers alone."""
        end = answer(read_text(RANGE, "lp"))
        self.assertEqual((end.status, end.objective), ("optimal", 1))
        self.assertEqual(answer(read_text(RANGE.replace("min", "max"), "lp")).objective, 3)

    def test_a_cost_that_is_a_variable(self) -> None:
        end = answer(read_text(COST, "lp"))
        assert end.x is not None
        self.assertEqual((end.status, end.objective, end.x[0]), ("optimal", Fraction(6, 10), Fraction(6, 10)))

    def test_all_points(self) -> None:
        settings = Settings(threads=1, time=60, solutions=0)
        end = next(event for event in Portfolio(read_text(RANGE, "lp"), settings).events() if isinstance(event, End))
        self.assertEqual((end.status, sorted(map(tuple, end.points))),
                         ("all", sorted((x, y, x + y - 1) for x in range(6) for y in range(6) if 1 <= x + y <= 3 and x - y >= -2)))

    def test_converted(self) -> None:
        text = opt_writer.opt_text(read_text(COST.replace("cost free", "cost >= -9"), "lp"), "m")
        self.assertIn("[ 2 0 0 ]", text)


if __name__ == "__main__":
    harness.main()
