"""What the complete engine is asked, and what its verdicts are taken for: without the engine."""

from __future__ import annotations

import os
import tempfile
import unittest
from fractions import Fraction

import support  # noqa: F401
import harness
from solve_support import KNAPSACK, UNBOUNDED

from latbox.errors import InternalError
from latbox.models import read_text
from latbox.solving import statuses
from latbox.solving.finds import Finds
from latbox.solving.inquiry import Inquiry, Question
from latbox.solving.settings import ALL, Settings
from latbox.solving.statement import Statement

PAIR = "minimize\nsubject to\n c: x + y = 3\nbounds\n x <= 3\n y <= 3\ngeneral\n x y\nend\n"
# All (t, t) are as good as each other.
BEST_WITHOUT_END = "minimize\n x - y\nsubject to\n c: x - y >= 0\nbounds\n x free\n y free\ngeneral\n x y\nend\n"


def whole(*values: int) -> list[Fraction]:
    return [Fraction(value) for value in values]


class InquiryCase(unittest.TestCase):
    def begin(self, text: str, **settings: object) -> Question:
        """The first question about the model, whose inquiry and points the test has then."""
        model = read_text(text, "lp")
        wanted = Settings(**settings)  # type: ignore[arg-type]
        self.finds = Finds(model, wanted.solutions)
        self.inquiry = Inquiry(self.finds, wanted)
        self.inquiry.begin(Statement(model))
        return self.inquiry.first()

    def next(self, answer: str | Question | None) -> Question:
        assert isinstance(answer, Question), answer
        return answer


class FirstQuestionTest(InquiryCase):
    def asked(self, text: str, **settings: object) -> tuple[bool, bool, bool, int, int]:
        """(all, ties, first, limit, targets)"""
        question = self.begin(text, **settings)
        task = question.task
        return task.all, task.ties, task.first, task.limit, len(question.program.targets)

    def test_by_what_is_wanted(self) -> None:
        self.assertEqual(self.asked(KNAPSACK), (False, False, False, 0, 1))
        self.assertEqual(self.asked(PAIR), (False, False, True, 0, 0))
        self.assertEqual(self.asked(KNAPSACK, solutions=ALL), (True, False, False, 0, 1))
        self.assertEqual(self.asked(PAIR, solutions=ALL), (False, False, False, 0, 0))
        self.assertEqual(self.asked(PAIR, solutions=3), (False, False, False, 3, 0))
        self.assertEqual(self.asked(KNAPSACK, solutions=3), (False, True, False, 3, 1))

    def test_a_point_of_an_open_program_has_a_target(self) -> None:
        """With which it is sought in growing boxes."""
        self.assertEqual(self.asked(PAIR.replace(" x <= 3\n", "")), (False, False, True, 0, 1))

    def test_with_a_proof_one_point_is_an_optimum_of_nothing(self) -> None:
        with tempfile.TemporaryDirectory() as folder:
            self.assertEqual(self.asked(PAIR, proof=folder), (False, False, False, 0, 1))
            self.assertEqual(self.inquiry.first().task.proof, os.path.join(os.path.abspath(folder), "program.proof"))


class VerdictTest(InquiryCase):
    def test_none(self) -> None:
        self.begin(KNAPSACK)
        self.assertEqual(self.inquiry.heard("none", ""), statuses.INFEASIBLE)
        self.finds.take(whole(0, 0, 0, 0, 0))
        with self.assertRaisesRegex(InternalError, "latbox-all says that there is no point, and one is known"):
            self.inquiry.heard("none", "")

    def test_the_optimum(self) -> None:
        """The knapsack's constant is in the objective, and not in the norm."""
        self.begin(KNAPSACK)
        self.finds.take(whole(-1, -1, 3, 0, 3))
        with self.assertRaisesRegex(InternalError, "latbox-all says that the optimum is 90, and the best point has 136"):
            self.inquiry.heard("optimum", "-86")
        self.begin(KNAPSACK)
        self.finds.take(whole(0, 0, 0, -1, 3))
        self.assertEqual(self.inquiry.heard("optimum", "-86"), statuses.OPTIMAL)
        self.assertEqual(self.inquiry.bound, 90)

    def test_all(self) -> None:
        self.begin(PAIR, solutions=ALL)
        self.finds.take(whole(0, 3))
        with self.assertRaisesRegex(InternalError, "latbox-all says that there are 2 points, and 1 are known"):
            self.inquiry.heard("all", "2")
        self.assertEqual(self.inquiry.heard("all", "1"), statuses.ALL)

    def test_enough_of_many(self) -> None:
        self.begin(PAIR, solutions=2)
        self.finds.take(whole(0, 3))
        self.assertFalse(self.inquiry.has_enough())
        self.assertIsNone(self.inquiry.heard("found", "1"))
        self.finds.take(whole(1, 2))
        self.assertTrue(self.inquiry.has_enough())
        self.assertEqual(self.inquiry.heard("found", "2"), statuses.OPTIMAL)

    def test_what_it_does_not_know(self) -> None:
        self.begin(KNAPSACK)
        self.assertIsNone(self.inquiry.heard("unknown", ""))


class BoundTest(InquiryCase):
    def test_it_only_gets_better(self) -> None:
        self.begin(KNAPSACK)
        self.assertTrue(self.inquiry.take_least(Fraction(-100)))
        self.assertEqual(self.inquiry.bound, 104)
        self.assertFalse(self.inquiry.take_least(Fraction(-100)))
        self.assertFalse(self.inquiry.take_least(Fraction(-101)))
        self.assertTrue(self.inquiry.take_least(Fraction(-90)))
        self.assertEqual(self.inquiry.bound, 94)

    def test_of_a_level_it_says_nothing(self) -> None:
        self.begin(KNAPSACK, solutions=2)
        self.assertFalse(self.inquiry.take_least(Fraction(-100)))
        self.assertIsNone(self.inquiry.bound)


class LevelsTest(InquiryCase):
    def test_level_by_level(self) -> None:
        self.begin(KNAPSACK, solutions=2)
        self.finds.take(whole(0, 0, 0, 0, 0))  # met on the way: counts at its own level
        self.finds.take(whole(0, 0, 0, -1, 3))
        question = self.next(self.inquiry.heard("optimum", "-86"))
        self.assertTrue(question.task.ties)
        # Fewer are wanted now; of one a list that was cut off could not be told from a run that was.
        self.assertEqual(question.task.limit, 2)
        worse = question.program.conditions[-1]
        self.assertEqual((worse.name, worse.lower), ("worse", -85))
        self.finds.take(whole(-1, 0, 0, -1, 3))
        self.assertEqual(self.inquiry.heard("optimum", "-80"), statuses.OPTIMAL)

    def test_a_level_that_is_cut_off(self) -> None:
        self.begin(KNAPSACK, solutions=2)
        self.assertEqual(self.inquiry.heard("found", "2"), statuses.OPTIMAL)

    def test_no_further_level(self) -> None:
        self.begin(KNAPSACK, solutions=2)
        self.assertEqual(self.inquiry.heard("none", ""), statuses.INFEASIBLE)
        self.finds.take(whole(0, 0, 0, -1, 3))
        self.assertEqual(self.inquiry.heard("none", ""), statuses.ALL)


class WithoutEndTest(InquiryCase):
    def test_best_points_without_end_are_looked_for_near_one(self) -> None:
        self.begin(BEST_WITHOUT_END, solutions=2)
        best = self.next(self.inquiry.at_open([0, 1]))
        self.assertEqual(self.inquiry.open_note, "nothing bounds x, y: the complete search cannot come to an end")
        self.assertFalse(best.task.ties)
        self.finds.take(whole(5, 5))
        near = self.next(self.inquiry.heard("optimum", "0"))
        self.assertEqual((near.task.limit, near.program.targets), (2, []))
        self.assertEqual([(c.lower, c.upper) for c in near.program.columns], [(5 - 1000, 5 + 1000)] * 2)
        self.assertIsNone(self.inquiry.at_open([0]))  # it has what it needs
        for distance in (10**6, 10**12):
            near = self.next(self.inquiry.heard("all", "1"))
            self.assertEqual(near.program.columns[0].upper, 5 + distance)
        self.assertIsNone(self.inquiry.heard("all", "1"))
        self.finds.take(whole(6, 6))
        self.assertEqual(self.inquiry.heard("found", "2"), statuses.OPTIMAL)

    def test_where_no_point_is_known_any_will_do(self) -> None:
        self.begin(UNBOUNDED)
        self.assertTrue(self.next(self.inquiry.at_open([0])).task.first)
        self.assertIsNone(self.inquiry.at_open([0]))

    def test_told_once(self) -> None:
        self.begin(UNBOUNDED)
        self.assertIsNone(self.inquiry.at_open([]))
        self.assertEqual(self.inquiry.open_note, "")


if __name__ == "__main__":
    harness.main()
