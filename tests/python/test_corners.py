"""Points that need no engine: corners of the box that happen to be points of the model."""

from __future__ import annotations

import unittest
from fractions import Fraction

import support  # noqa: F401
import harness
from solve_support import KNAPSACK, SolveCase

from latbox.models.model import INF
from latbox.solving.corners import corners
from latbox.solving.program import Column, Program


class CornersTest(unittest.TestCase):
    def corners(self, *ends: tuple[float, float]) -> list[list[Fraction]]:
        return list(corners(Program([Column(low if abs(low) == INF else Fraction(low), high if abs(high) == INF else Fraction(high))
                                     for low, high in ends])))

    def test_nearest_lowest_greatest(self) -> None:
        self.assertEqual(self.corners((-1, 3), (2, 5), (-7, -4)), [[0, 2, -4], [-1, 2, -7], [3, 5, -4]])

    def test_each_once(self) -> None:
        self.assertEqual(self.corners((0, 1), (0, 1)), [[0, 0], [1, 1]])

    def test_ends_that_are_not_there(self) -> None:
        self.assertEqual(self.corners((-INF, 3), (2, INF), (-INF, INF), (-INF, -2)), [[0, 2, 0, -2], [3, 2, 0, -2]])


class AnswerTest(SolveCase):
    """Engines that stand still tell nothing: what is known needed none."""

    def lost(self, model: str, *arguments: str) -> dict[str, str]:
        for engine in ("latbox", "latbox-all"):
            self.paper_engine(engine, "exec sleep 100\n")
        self.write("m.lp", model)
        return self.answer(self.solve_on_paper(*arguments, "m.lp"))

    def test_a_knapsack_has_the_empty_one(self) -> None:
        """It was `unknown` where the engines were lost, in large models say."""
        found = self.lost(KNAPSACK, "--target=4")
        self.assertEqual((found["status"], found["objective"]), ("feasible", "4"))

    def test_a_cover_has_the_full_one(self) -> None:
        found = self.lost(KNAPSACK.replace("<= 20", ">= 20"), "--target=0")
        self.assertEqual((found["status"], found["objective"]), ("feasible", "253"))

    def test_without_objective_a_point_is_all(self) -> None:
        self.assertEqual(self.lost("min\n obj:\nst\n c: x + y <= 7\nbinary\n x y\nend\n")["status"], "optimal")


if __name__ == "__main__":
    harness.main()
