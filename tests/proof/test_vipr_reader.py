#!/usr/bin/env python3
"""The exact reader of VIPR certificates, rule by rule."""

import unittest

from vipr_reader import Broken, Certificate, Malformed

# min x + y, 4x + y >= 1, 4x - y <= 2.
HEAD = """% a comment
VER 1.1
VAR 2
x y
INT 2
0 1
OBJ min
2  0 1  1 1
CON 2 0
C1 G 1  2  0 4  1 1
C2 L 2  2  0 4  1 -1
"""
RANGE = "RTP range 1 1\n"
SOLUTIONS = "SOL 2\nfeas 2  0 1  1 2\nopt 1  1 1\n"
DERIVED = """DER 4
C3 G -1/2  1  1 1   { lin 2  0 1/2  1 -1/2 } 3
C4 G 0     1  1 1   { rnd 1  2 1 } 4
C5 G 1/4   OBJ      { lin 2  0 1/4  3 3/4 } 5
C6 G 1     OBJ      { rnd 1  4 1 } 0
"""
WHOLE = HEAD + RANGE + SOLUTIONS + DERIVED

# 2x + 2y = 1 by a split on x: no point with 0 <= x, y <= 1.
SPLIT = """VER 1.1
VAR 2 x y INT 2 0 1
OBJ min 0
CON 5 4
a G 0 1 0 1
b L 1 1 0 1
c G 0 1 1 1
d L 1 1 1 1
e E 1 2 0 2 1 2
RTP infeas
SOL 0
DER 9
l L 0 1 0 1 { asm } -1
g G 1 1 0 1 { asm } -1
l1 L 1/2 1 1 1 { lin 2 4 1/2 0 -1 } -1
l2 L 0 1 1 1 { rnd 1 7 1 } -1
l3 G 1 0 { lin 3 4 1 5 -2 8 -2 } -1
g1 L -1/2 1 1 1 { lin 2 4 1/2 6 -1 } -1
g2 L -1 0 { lin 2 10 2 2 -2 } -1
u G 1 0 { uns 9 5 11 6 } -1
w G 1 0 { lin 1 12 1 } -1
"""


def check(text: str) -> str:
    return Certificate(text).check()


class WellFormed(unittest.TestCase):
    def test_range(self) -> None:
        self.assertEqual(check(WHOLE), "range 1 1")

    def test_infeasible_by_a_split(self) -> None:
        self.assertEqual(check(SPLIT), "infeasible")

    def test_open_ends(self) -> None:
        self.assertEqual(check(HEAD + "RTP range 1 inf\nSOL 0\n" + DERIVED), "range 1 inf")
        self.assertEqual(check(HEAD + "RTP range -inf 1\n" + SOLUTIONS + DERIVED), "range -inf 1")

    def test_values(self) -> None:
        self.assertEqual(check(WHOLE.replace("-1/2  1  1 1", "-0.5 1 1 1").replace("1/4  3 3/4", "25e-2 3 .75")), "range 1 1")

    def test_maximisation(self) -> None:
        text = WHOLE.replace("OBJ min\n2  0 1  1 1", "OBJ max\n2 0 -1 1 -1").replace("range 1 1", "range -1 -1")
        text = text.replace("C5 G 1/4   OBJ", "C5 G 1/4 2 0 1 1 1").replace(
            "C6 G 1     OBJ      { rnd 1  4 1 } 0", "C6 L -1 OBJ { rnd 1 4 -1 } 0")
        self.assertEqual(check(text), "range -1 -1")

    def test_of_a_solution(self) -> None:
        text = WHOLE.replace("DER 4", "DER 5").replace("C3 G", "C0 L 1 OBJ { sol } -1\nC3 G").replace(
            "{ rnd 1  2 1 } 4", "{ rnd 1  3 1 } 5").replace("0 1/4  3 3/4 } 5", "0 1/4  4 3/4 } 6").replace(
                "{ rnd 1  4 1 } 0", "{ rnd 1  5 1 } 0").replace("1 -1/2 } 3", "1 -1/2 } 4")
        self.assertEqual(check(text), "range 1 1")
        self.assertBroken(text.replace("C0 L 1 OBJ", "C0 L 1/2 OBJ"), "no solution dominates")

    def assertBroken(self, text: str, why: str) -> None:
        with self.assertRaisesRegex(Broken, why):
            check(text)


class Refused(unittest.TestCase):
    def assertBroken(self, text: str, old: str, new: str, why: str) -> None:
        self.assertIn(old, text)
        with self.assertRaisesRegex(Broken, why):
            check(text.replace(old, new, 1))

    def test_domination(self) -> None:
        self.assertBroken(WHOLE, "C3 G -1/2", "C3 G -1/3", "combination does not dominate")
        self.assertBroken(WHOLE, "C3 G -1/2", "C3 L -1/2", "does not dominate")
        self.assertBroken(WHOLE, "C3 G -1/2", "C3 E -1/2", "does not dominate")
        self.assertBroken(WHOLE, "C3 G -1/2  1  1 1", "C3 G -1/2  1  1 2", "does not dominate")
        self.assertBroken(WHOLE, "C6 G 1 ", "C6 G 2 ", "rounded combination does not dominate")

    def test_weaker_constraints_are_dominated(self) -> None:
        self.assertEqual(check(WHOLE.replace("C3 G -1/2", "C3 G -3/4")), "range 1 1")
        # An absurdity dominates all.
        self.assertEqual(check(SPLIT.replace("u G 1 0 {", "u E 7 1 0 3 {").replace(
            "w G 1 0 { lin 1 12 1 }", "w G 1 0 { uns 9 5 11 6 }")), "infeasible")

    def test_directions(self) -> None:
        self.assertBroken(WHOLE, "0 1/2  1 -1/2", "0 1/2  1 1/2", "both directions")

    def test_rounding(self) -> None:
        self.assertBroken(WHOLE, "INT 2\n0 1", "INT 1\n0", "not whole")
        self.assertBroken(WHOLE, "{ rnd 1  2 1 }", "{ rnd 1  2 1/2 }", "not whole")
        self.assertBroken(SPLIT, "w G 1 0 { lin 1 12 1 }", "w E 1 2 0 2 1 2 { rnd 1 4 1 }", "equation is not rounded")

    def test_split(self) -> None:
        self.assertBroken(SPLIT, "{ uns 9 5 11 6 }", "{ uns 9 5 8 6 }", "constraint 8 does not dominate")
        self.assertBroken(SPLIT, "{ uns 9 5 11 6 }", "{ uns 9 5 11 1 }", "no two sides")
        self.assertBroken(SPLIT, "g G 1 1 0 1 { asm }", "g G 2 1 0 1 { asm }", "no two sides")
        self.assertBroken(SPLIT, "INT 2 0 1", "INT 1 1", "not whole")
        self.assertEqual(check(SPLIT.replace("{ uns 9 5 11 6 }", "{ uns 11 6 9 5 }")), "infeasible")

    def test_assumptions(self) -> None:
        self.assertBroken(SPLIT, "w G 1 0 { lin 1 12 1 }", "w G 1 0 { lin 1 9 1 }", "under assumptions")
        # Each side's own assumption is the one that falls.
        self.assertBroken(SPLIT, "{ uns 9 5 11 6 }", "{ uns 9 6 11 5 }", "under assumptions")

    def test_order(self) -> None:
        self.assertBroken(WHOLE, "{ rnd 1  2 1 }", "{ rnd 1  3 1 }", "not below 3")
        self.assertBroken(WHOLE, "{ lin 2  0 1/2  1 -1/2 }", "{ lin 2  0 1/2  0 1/2 }", "stands twice")

    def test_forgotten(self) -> None:
        self.assertBroken(WHOLE, "C3 G -1/2  1  1 1   { lin 2  0 1/2  1 -1/2 } 3",
                          "C3 G -1/2  1  1 1   { lin 2  0 1/2  1 -1/2 } 2", "behind its last use")
        self.assertBroken(SPLIT, "l2 L 0 1 1 1 { rnd 1 7 1 } -1", "l2 L 0 1 1 1 { rnd 1 7 1 } 8", "behind its last use")

    def test_incomplete_reasons(self) -> None:
        self.assertBroken(WHOLE, "{ lin 2  0 1/2  1 -1/2 }", "{ lin weak { 0 } 2 0 1/2 1 -1/2 }", "not complete")
        self.assertBroken(WHOLE, "{ lin 2  0 1/2  1 -1/2 }", "{ lin incomplete 0 1 }", "not complete")

    def test_solutions(self) -> None:
        self.assertBroken(WHOLE, "opt 1  1 1", "opt 1  1 0", "breaks C1")
        self.assertBroken(WHOLE, "opt 1  1 1", "opt 1  1 3/2", "y is not whole")
        self.assertBroken(WHOLE, "SOL 2\nfeas 2  0 1  1 2\nopt 1  1 1", "SOL 1\nfeas 2  0 1  1 2", "no solution has the other")

    def test_relation(self) -> None:
        self.assertBroken(WHOLE, "range 1 1", "range 2 2", "does not prove the bound")
        self.assertBroken(WHOLE, "RTP range 1 1", "RTP infeas", "no absurdity")
        self.assertBroken(SPLIT, "w G 1 0", "w G 0 0", "no absurdity")

    def test_names_and_indices(self) -> None:
        self.assertBroken(WHOLE, "C4 G", "C3 G", "C3 stands twice")
        self.assertBroken(WHOLE, "C2 L 2  2  0 4  1 -1", "C2 L 2  2  0 4  2 -1", "not below 2")
        self.assertBroken(WHOLE, "C2 L 2  2  0 4  1 -1", "C2 L 2  2  0 4  0 -1", "stands twice")
        self.assertBroken(WHOLE, "CON 2 0", "CON 2 1", "among the bounds")

    def test_texts(self) -> None:
        for old, new in (("VER 1.1", "VER 1.0"), ("OBJ min", "OBJ least"), ("C1 G", "C1 N"), ("DER 4", "DER 5"), ("DER 4", "DER 3"),
                         ("RTP range", "RTP ranges"), ("-1/2  1  1 1", "-1/0  1  1 1"), ("-1/2  1  1 1", "half  1  1 1"),
                         ("{ rnd", "{ round"), ("VAR 2", "VAR two"), ("} 0", "} x")):
            self.assertIn(old, WHOLE)
            with self.assertRaises((Malformed, Broken), msg=new) as caught:
                check(WHOLE.replace(old, new, 1))
            self.assertIsInstance(caught.exception, Malformed, msg=new)


if __name__ == "__main__":
    unittest.main()
