#!/usr/bin/env python3
"""latbox-farm and workers that lie: results that are torn, damaged or wrong are not believed, whoever lies on is sent nothing, and
a lie about a piece without points is found by a second worker."""

import signal

import farm_liars
import harness
from complete_kills import TASKS
from farm_support import FarmCase, load_tests  # noqa: F401

# 236 points, a second.
TEXT = TASKS[0].text


class LiesTest(FarmCase):
    def begin_with_a_liar(self, kind, times, *options):
        farm = self.begin("--pieces=40", *options)
        liar = self.hire()
        left = farm_liars.spoil(liar, self.binary, kind, times)
        # Two of them: the honest worker that comes then may leave it no piece for more.
        harness.wait_until(lambda: int(self.read(left) or times) <= max(times - 2, 0), "its lies")
        return farm

    def assert_not_believed(self, kind, reason):
        alone = self.alone(TEXT)
        farm = self.begin_with_a_liar(kind, 2)
        self.hire()
        self.assert_same(alone, harness.Result(farm.wait(), farm.out, farm.err))
        self.assertRegex(self.log(), r"piece \d+ from \S+ \(127\.0\.0\.1:\d+\) is not taken: .*" + reason)
        self.assertEqual(self.log().count("is not taken"), 2)

    def test_a_torn_result(self):
        self.assert_not_believed("torn", "its end is missing, or it was changed")

    def test_a_damaged_result(self):
        self.assert_not_believed("damaged", "its end is missing, or it was changed")

    def test_a_wrong_point(self):
        self.assert_not_believed("wrong", "")

    def test_who_lies_on_is_blocked(self):
        self.write("p.opt", TEXT)
        farm = self.begin_with_a_liar("torn", 1000)
        farm.wait_for(r"\S+ gets no pieces for \d+:\d\d: too many of its results were refused", "err")
        farm.kill(signal.SIGTERM)
        self.assertIn(farm.wait(), (11, 12))

    def test_an_empty_piece_that_is_not_empty(self):
        alone = self.alone(TEXT)
        farm = self.begin_with_a_liar("empty", 1, "--verify=1")
        self.hire()
        self.assert_same(alone, harness.Result(farm.wait(), farm.out, farm.err))
        self.assertRegex(self.log(), r"piece \d+: 127\.0\.0\.1:\d+ and 127\.0\.0\.1:\d+ \(\S+\) disagree about it; it is done anew")

    def test_without_verifying_that_is_believed(self):
        """What the document says of it is so."""
        self.write("p.opt", TEXT)
        farm = self.begin_with_a_liar("empty", 1)
        self.assertEqual(farm.wait(), 10)
        self.assertRegex(farm.out, r"\Averdict: all \d+\n\Z")
        self.assertNotEqual(farm.out, "verdict: all 236\n")


if __name__ == "__main__":
    harness.main()
