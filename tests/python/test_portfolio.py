"""The course of a run, where it needs no engine to be seen."""

from __future__ import annotations

import time
import unittest
from types import SimpleNamespace
from unittest import mock

import support  # noqa: F401
import harness
from solve_support import KNAPSACK

from latbox.models import read_text
from latbox.solving.portfolio import Portfolio
from latbox.solving.settings import Settings


class RenewalTest(unittest.TestCase):
    def renewed(self, seconds: float, limit: float | None, rewriting: float) -> bool:
        """Whether a search that lags begins anew at this time, if a rewriting takes so long."""
        portfolio = Portfolio(read_text(KNAPSACK, "lp"), Settings(time=limit), time.monotonic() - seconds)
        portfolio._statement = portfolio._stated()
        portfolio._program = portfolio._statement.program
        list(portfolio._take_corners())
        portfolio._rewriting_seconds = rewriting
        lagging = SimpleNamespace(is_over=False, best=None, letter="S", stop=lambda: None)
        portfolio._searches.append(lagging)  # type: ignore[arg-type]
        with mock.patch.object(portfolio, "_start_search") as start:
            start.side_effect = lambda number, rewriting: portfolio._searches.append(lagging)  # type: ignore[arg-type]
            portfolio._renew_searches()
        return start.called

    def test_in_time(self) -> None:
        """That of a large model took half a second, in which nobody looked at the clock."""
        self.assertTrue(self.renewed(5, 10, 0.5))
        self.assertTrue(self.renewed(5, None, 50))
        self.assertFalse(self.renewed(9, 10, 0.5))
        self.assertFalse(self.renewed(1, None, 0.5))


if __name__ == "__main__":
    harness.main()
