#!/usr/bin/env python3
"""latbox-all --proof-format=vipr: certificates that an exact reader checks rule by rule (tests/proof/vipr_reader.py), and what
is said where there is none."""

import os
import random
import sys

import harness
from programs import opt
from test_complete import Case, NINE, NOTHING, ONE, SMALLEST
from test_proof import KINDS

sys.path.append(os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "proof"))
import vipr_random  # pylint: disable=wrong-import-position
from vipr_reader import Certificate  # pylint: disable=wrong-import-position

def split(rows, columns, seed):
    """A market split without a planted point: half of each row's sum."""
    pick = random.Random(seed)
    ag = [[pick.randrange(100) for _ in range(columns)] for _ in range(rows)]
    return opt(ag=ag, bg=[sum(row) // 2 for row in ag], rx=[1] * columns)


# No point, by a tree of more than a hundred thousand nodes.
HARD = split(6, 49, 1)


class Certificates(Case):
    def certify(self, text, *options):
        return self.run_all(text, "--quiet=1", "--resume=0", "--proof=p.vipr", "--proof-format=vipr", *options)

    def exists(self):
        return os.path.exists(self.path("p.vipr"))

    def relation(self):
        with open(self.path("p.vipr"), encoding="ascii") as file:
            return Certificate(file.read()).check()

    def test_kinds_of_programs(self):
        for kind, (text, verdict) in KINDS.items():
            with self.subTest(kind):
                result = self.certify(text)
                told = result.out.splitlines()[-1]
                self.assertEqual(told, "verdict: " + (verdict or "none"))
                if told.startswith("verdict: all"):
                    self.assertEqual(result.status, 2, result.err)
                    continue
                self.assertEqual(result.status, 20 if told == "verdict: none" else 10, result.err)
                self.assertEqual(self.relation().split()[0], "infeasible" if told == "verdict: none" else "range")
                os.remove(self.path("p.vipr"))

    def test_the_best_value_in_units(self):
        self.certify(SMALLEST)
        self.assertEqual(self.relation(), "range 1 1")

    def test_points_are_not_of_its_kind(self):
        for text in (ONE, NINE):
            result = self.certify(text)
            self.assertEqual(result.status, 2)
            self.assertIn("no proof was written: a VIPR certificate says that there is no point, or which is the best one",
                          result.err)
            self.assertFalse(self.exists())

    def test_a_tree_that_is_too_large(self):
        result = self.certify(HARD)
        self.assertEqual(result.out.splitlines()[-1], "verdict: none")
        self.assertEqual(result.status, 2, result.err)
        self.assertIn("no proof was written: a VIPR certificate is written of at most 100000 nodes", result.err)
        self.assertFalse(self.exists())

    def test_options(self):
        for options, message in ((["--proof-format=vipr"], "--proof-format=vipr: a proof is wanted, --proof=FILE"),
                                 (["--proof=p.vipr", "--proof-format=tex"], "--proof-format=tex: latbox or vipr is wanted")):
            result = self.run_all(NOTHING, *options)
            self.assertEqual(result.status, 2)
            self.assertIn(message, result.err)
        result = self.run_all(NOTHING, "--resume=0", "--proof=p.proof", "--proof-format=latbox")
        self.assertEqual(result.status, 20)
        with open(self.path("p.proof"), encoding="ascii") as file:
            self.assertTrue(file.read().startswith("latbox-proof 1\n"))

    def test_random_programs(self):
        counts, wrong = vipr_random.judge_range(harness.latbox_all(), 50_000, 50_120)
        self.assertEqual(wrong, [])
        for relation in ("infeasible", "range", "refused"):
            self.assertGreater(counts[relation], 5, relation)


if __name__ == "__main__":
    harness.main()
