"""The processes of the search, where none need run to be seen."""

from __future__ import annotations

import time
import unittest
from fractions import Fraction
from types import SimpleNamespace
from unittest import mock

import support  # noqa: F401
import harness
from solve_support import KNAPSACK

from latbox.models import read_text
from latbox.solving import searches as module
from latbox.solving.clock import Clock
from latbox.solving.events import Progress
from latbox.solving.searches import Searches
from latbox.solving.settings import SEARCH, Settings
from latbox.solving.statement import Infeasible, Statement

NOTHING = "maximize\n x + y\nsubject to\n 2 x + 2 y = 5\nbounds\n x <= 9\n y <= 9\ngenerals\n x y\nend\n"

KNOWN = Fraction(0)  # a target norm that points of the knapsack can go below


def engine(number: int, best: int | None = None, **more: object) -> SimpleNamespace:
    return SimpleNamespace(number=number, best=best, is_over=False, stop=mock.Mock(), set=mock.Mock(), **more)


def searches_of(text: str = KNAPSACK, **settings: object) -> Searches:
    searches = Searches(Settings(**settings), lambda name: name)  # type: ignore[arg-type]
    searches.begin(Statement(read_text(text, "lp")).program)
    return searches


class RenewalTest(unittest.TestCase):
    def renewed(self, seconds: float, limit: float | None, rewriting: float) -> bool:
        """Whether a search that lags begins anew at this time, if a rewriting takes so long."""
        searches = searches_of()
        searches._rewriting_seconds = rewriting
        searches.engines.append(engine(0))  # type: ignore[arg-type]
        with mock.patch.object(module, "SearchEngine") as begun:
            searches.renew(KNOWN, Clock(time.monotonic() - seconds, limit))
        return begun.called

    def test_in_time(self) -> None:
        """That of a large model took half a second, in which nobody looked at the clock."""
        self.assertTrue(self.renewed(5, 10, 0.5))
        self.assertTrue(self.renewed(5, None, 50))
        self.assertFalse(self.renewed(9, 10, 0.5))
        self.assertFalse(self.renewed(1, None, 0.5))

    def test_only_those_that_lag_each_under_its_seed(self) -> None:
        searches = searches_of(seed=100)
        first, second, tenth = engine(0, -1), engine(1, 0), engine(9)
        searches.engines += [first, tenth, second]  # type: ignore[list-item]
        with mock.patch.object(module, "SearchEngine", lambda rewriting, count, number, *_: engine(number)), \
                mock.patch.object(module, "Rewriting", wraps=module.Rewriting) as rewriting:
            searches.renew(KNOWN, Clock(time.monotonic() - 5, None))
        self.assertEqual([one.number for one in searches.engines], [0, 9, 1])
        self.assertEqual([call.args[2] for call in rewriting.call_args_list], [109])
        first.stop.assert_not_called()
        second.stop.assert_not_called()
        tenth.stop.assert_called_once()

    def test_at_growing_distances(self) -> None:
        searches = searches_of()
        begun = []
        with mock.patch.object(module, "SearchEngine", lambda rewriting, count, number, *_: engine(number)):
            for second in range(1, 32):
                searches.engines[:] = [engine(0)]  # type: ignore[list-item]
                before = searches.engines[0]
                searches.renew(KNOWN, mock.Mock(**{"seconds.return_value": float(second), "left.return_value": None}))
                if searches.engines[0] is not before:
                    begun.append(second)
        self.assertEqual(begun, [2, 4, 8, 16])


class BeginningTest(unittest.TestCase):
    def test_what_cannot_hold(self) -> None:
        """The complete engine will say so, unless it is not asked."""
        self.assertIsNone(searches_of(NOTHING).rewritten(0))
        with self.assertRaises(Infeasible):
            searches_of(NOTHING, engine=SEARCH).rewritten(0)

    def test_an_option_that_was_set_goes_to_all_and_to_those_that_come(self) -> None:
        searches = searches_of(search_options={"beta": 10, "deep": 1})
        one = engine(0)
        searches.engines.append(one)  # type: ignore[arg-type]
        searches.set("beta", 30)
        one.set.assert_called_once_with("beta", 30)
        first = searches.rewritten(0)
        assert first is not None
        with mock.patch.object(module, "SearchEngine") as begun:
            searches.start(first, 1, 1 << 30)
        self.assertEqual(begun.call_args.args[2:6], (0, "search", 1 << 30, {"beta": 30, "deep": 1}))


class TellingTest(unittest.TestCase):
    def test_of_several(self) -> None:
        searches = searches_of()
        searches.engines += [  # type: ignore[list-item]
            engine(0, progress=SimpleNamespace(iteration=3, violated=None, basis=2.5, pairwise=4, sampling=1, idle=7)),
            engine(1, progress=SimpleNamespace(iteration=5, violated=2, basis=None, pairwise=0, sampling=2, idle=6))]
        progress = Progress(1.0)
        searches.tell(progress)
        self.assertEqual((progress.iteration, progress.violated, progress.basis, progress.collected, progress.idle), (8, 2, 2.5, 7, 6))

    def test_of_none(self) -> None:
        progress = Progress(1.0)
        searches_of().tell(progress)
        self.assertIsNone(progress.iteration)
        self.assertIsNone(progress.idle)

    def test_settings_are_those_of_the_first_one(self) -> None:
        searches = searches_of()
        told = [mock.Mock(return_value=[("beta", "30")]), mock.Mock(return_value=[("beta", "30")])]
        searches.engines += [engine(k, settings=told[k]) for k in range(2)]  # type: ignore[misc]
        self.assertEqual(list(searches.settings()), [("beta", "30")])
        told[1].assert_called_once()


if __name__ == "__main__":
    harness.main()
