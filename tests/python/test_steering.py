"""What steers a run and what is told of its pace: rates of late, times in words, options as a search begins with them."""

from __future__ import annotations

import time
import unittest
from unittest import mock

import support  # noqa: F401
import harness

from latbox.solving import pace, steering
from latbox.solving.complete_engine import CompleteEngine, Progress
from latbox.solving.search_engine import SearchEngine
from latbox.solving.search_engine import Progress as SearchProgress


class PaceTest(unittest.TestCase):
    def test_a_steady_count(self) -> None:
        found = pace.Pace()
        self.assertIsNone(found.of(0.0, 0))
        rates = [found.of(k / 5, 1000 * (k // 10)) for k in range(1, 500)]
        self.assertTrue(all(rate is None for rate in rates[:9]))
        for rate in rates[100:]:
            self.assertAlmostEqual(rate, 500.0, delta=1e-6)

    def test_what_was_long_ago_does_not_count(self) -> None:
        found = pace.Pace()
        for k in range(100):
            found.of(float(k), 1e6 * k)
        for k in range(100, 130):
            last = found.of(float(k), 1e6 * 99 + 10 * (k - 99))
        self.assertAlmostEqual(last, 10.0, delta=1e-6)

    def test_a_count_that_stands_still_gets_slower(self) -> None:
        found = pace.Pace()
        for k in range(10):
            found.of(float(k), 100.0 * k)
        rates = [found.of(float(k), 900.0) for k in (10, 40, 400)]
        self.assertGreater(rates[0], rates[1])
        self.assertLess(rates[2], 3)

    def test_a_count_that_begins_anew(self) -> None:
        found = pace.Pace()
        found.of(0.0, 0)
        found.of(1.0, 5000)
        self.assertIsNone(found.of(2.0, 10))
        self.assertEqual(found.of(3.0, 30), 20)

    def test_durations(self) -> None:
        for seconds, text in ((None, None), (0.24, "0.2 s"), (5, "5.0 s"), (59, "59 s"), (90, "1.5 min"), (7200, "2.0 h"), (86400 * 20, "20 days"),
                              (86400 * 3653, "10 years")):
            self.assertEqual(pace.duration(seconds), text)


class TimeLeftTest(unittest.TestCase):
    def test_a_pause_is_no_work(self) -> None:
        engine = CompleteEngine.__new__(CompleteEngine)
        engine._started = time.monotonic() - 100
        engine._paused_before = 7.0  # of the run, before this engine began
        for share, paused, expected in ((0.5, 7.0, 100), (0.5, 67.0, 40), (0.1, 67.0, 360), (None, 0.0, None), (0.0001, 0.0, None), (1.0, 0.0, None)):
            engine.progress = Progress(share)
            left = engine.seconds_left(paused)
            if expected is None:
                self.assertIsNone(left)
            else:
                self.assertAlmostEqual(left, expected, delta=5)


class SearchTest(unittest.TestCase):
    def test_what_a_block_of_statistics_tells(self) -> None:
        engine = SearchEngine.__new__(SearchEngine)
        engine.progress, engine.process = SearchProgress(), mock.Mock()
        engine._looking, engine._before, engine._idle, engine._settings = True, "", 0, []
        block = ("> Setting: verb = 2", "Total iterations: 4", "", "Pairwise collections: 35", "Sampling collections: 5", "[ 1 ] -- { [len,f,fs,fm,fc,tn] = 25 0 1 1 3 4 }",
                 "B[1]: ", "[ 3 0 4 ]", "No primary improvement since 6 consecutive iteration(s)", "> Setting: beta = 30")
        for line in (*block, "Total iterations: 5", "B[1]: ", "damaged"):
            engine._take(line)
        known = engine.progress
        self.assertEqual((known.iteration, known.pairwise, known.sampling, known.violated, known.basis, known.idle), (5, 35, 5, 3, 5.0, 6))
        self.assertEqual(engine.settings(), [("beta", "30")])
        self.assertEqual(engine.settings(), [])
        engine.process.write.assert_called_once_with("SET verb=0\n")


class OptionsTest(unittest.TestCase):
    def test_as_a_search_begins(self) -> None:
        found = steering.present({"beta": 30, "eprune": 0, "sol": 1, "deep": "x"})
        self.assertEqual((found["beta"], found["eprune"], found["deep"], found["pair"]), (30, 0, 0, 1))
        self.assertNotIn("sol", found)

    def test_ranges(self) -> None:
        beta = steering.BY_KEY["beta"]
        self.assertEqual([beta.takes(value) for value in (1, 2, 1000, 1001)], [False, True, True, False])


if __name__ == "__main__":
    harness.main()
