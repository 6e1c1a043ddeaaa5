#!/usr/bin/env python3
"""latbox-all on random programs, and what judges it there: the programs, the counters, the records."""

import os
import re

import checker
import complete_count
import complete_programs
import harness

FOLDER = os.path.dirname(os.path.abspath(__file__))
ALL_RIGHT = r"%d of %d right; no point (\S+) %%, one (\S+) %%, many (\S+) %%, rank 4 or more (\S+) %%\n"


class Case(harness.ScriptCase):
    scripts = FOLDER

    def start(self, *arguments):
        return super().start("complete_random.py", *arguments)


class SearchTest(Case):
    def setUp(self):
        super().setUp()
        self.binary = harness.latbox_all()
        if not os.path.exists(self.binary):
            self.skipTest("latbox-all is not built (GMP or libfplll is not installed)")

    def test_against_exhaustive_search(self):
        # Two at a time, since most of it is waiting for programs to start.
        halves = [self.start(self.binary, 0, 500), self.start(self.binary, 500, 1000)]
        for half in halves:
            self.assert_shares(self.output(half), 500)

    def test_long_coefficients_and_wide_boxes(self):
        self.assert_shares(self.output(self.start("--long", self.binary, 0, 80)), 80)

    def assert_shares(self, out, count):
        shares = re.fullmatch(ALL_RIGHT % (count, count), out)
        self.assertTrue(shares, out)
        none, one, many, large = map(float, shares.groups())
        self.assertGreaterEqual(min(none, one, many), 20)
        self.assertGreaterEqual(large, 33.3)


class JudgeTest(Case):
    def lying(self, text):
        """A program in the place of latbox-all."""
        return self.write_program("liar", "#!/bin/sh\n" + text)

    def test_lies_are_found(self):
        # Numbers 0 to 5: none, one, many, none, one, many.
        out = self.output(self.start(self.lying(": > p.all\necho verdict: none\nexit 20\n"), 0, 6))
        self.assertIn("2 of 6 right", out)
        for number in (1, 2, 4, 5):
            self.assertIn("program %d: all: 0 points, not " % number, out)
        out = self.output(self.start(self.lying("echo killed >&2\nexit 1\n"), 0, 6))
        self.assertIn("0 of 6 right", out)
        self.assertIn("status 1 killed", out)

    def test_a_record_is_gone_on_from(self):
        liar = self.lying(": > p.all\necho verdict: none\nexit 20\n")
        self.write("record", "1 one 5\n2 many 0\n4 one 1\n5 ma")
        out = self.output(self.start(liar, 0, 6, "record"))
        self.assertIn("5 of 6 right; no point 40.0 %, one 40.0 %, many 20.0 %, rank 4 or more ", out)
        self.assertIn("program 5: all: 0 points, not ", out)
        self.write("record", self.read("record") + "5 many 4\n")
        out = self.output(self.start(self.lying("exit 1\n"), 0, 6, "record"))
        self.assertIn("6 of 6 right; no point 33.3 %, one 33.3 %, many 33.3 %", out)


class CountTest(Case):
    def test_two_counters_agree(self):
        kinds = dict.fromkeys(complete_programs.KINDS, 0)
        for number in range(60):
            candidate = complete_programs.ordinary(number)
            whole = complete_count.Whole(candidate.program)
            self.assertEqual(set(map(whole.x, complete_count.solved_points(whole))), candidate.points, number)
            kinds[candidate.kind] += 1
            for x in candidate.points:
                self.assertIsNone(candidate.program.violation(x), number)
        self.assertTrue(all(kinds.values()), kinds)

    def test_a_line_and_a_known_rank(self):
        # 3 x + 5 y = 10^30 + 2: from the upper end on, where y is 0, each fifth x is a point's.
        side = 10**30 + 2
        text = complete_programs.opt(ag=[[3 * 10**25, 5 * 10**25, 0]], bg=[side * 10**25], au=[[0, 0, 1]], lu=[1], ru=["inf"],
                                     lx=[side // 3 - 15000, -10**6, 0], rx=[side // 3, 10**6, 1])
        whole = complete_count.Whole(checker.Program(text))
        points = list(complete_count.solved_points(whole))
        self.assertEqual(len(points), 3001)
        self.assertTrue(all(3 * x + 5 * y == side and z == 1 for x, y, z in points))
        # x and y on a line, z fixed by its row.
        self.assertEqual(complete_count.rank_of(whole), 1)
        with self.assertRaises(complete_count.TooMany):
            list(complete_count.solved_points(whole, 100))


if __name__ == "__main__":
    harness.main()
