#!/usr/bin/env python3
"""The plain checker: each condition of docs/proof.md is one that a proof can break, and naive proofs prove what is true."""

import collections
import contextlib
import io
import os
import random
import re
import tempfile
import unittest

import naive_prover
import plain_checker
import trial

THREE = "[ ] [ ] [ [ 1 1 1 ] ] [ 2 ] [ ] [ ] [ ] [ 0 0 0 ] [ 0 0 0 ] [ 1 1 1 ]"
# x1 + x2 + x3 = 2 with all within 0..1: two are 1.
THREE_PROOF = """latbox-proof 1
verdict all 3
search points
objective 0
derive 0
lattice 2 1 0
equations 1
coordinates
point 1 1 0
basis 1 -1 0
basis 0 1 -1
dual 1 0 0
dual 0 0 -1
constant 1 1 1
level 1 1 0 0 0 -1
level 0 1 1 1 0 0
side 0 1 0
walk nodes 6 points 3
end
"""

# Of eight points (0, 2, 3) and (1, 1, 4) have the least norm, -2, and the slacks 1 and 2. Made by the naive prover.
VALUED = """[ 5 inf ] [ [ 1 2 0 ] [ 0 0 1 ] ] [ [ 2 3 1 ] ] [ 9 ] [ [ 1 1 1 ] ] [ -inf ] [ 6 ]
[ 0 0 0 ] [ 0 0 0 ] [ 4 4 4 ]"""
VALUED_PROOF = """latbox-proof 1
verdict optimum -2 1 1
point 0 2 3
search better
objective 2
norm 1
norm -1
derive 5
upper x2 3 r1 1
class x3 1 1 r1 1
lower r2 1
lower r3 1
lower r4 1
lattice 2 1 3
equations 1
coordinates 4 3 2
point 9 0 -9 0 18 0
basis 2 -1 -1 1 1 0
basis 1 -1 1 0 -2 1
dual 0 -1 0 0 0 -1
dual 0 0 0 0 0 1
constant 0 0 0 0 0 0
level 1 100 1 0 0 0 0 0 1
side 0 0 0 0 0 1
level 0 2967 1 -3 -6 -2 0 0 0
side 0 1 0 0 0 0
walk nodes 48 points 0
search slack
objective 1
distance 1
derive 4
upper x2 3 r1 1
lower r2 1
upper x2 2 r3 1
lower r3 1
lattice 2 1 2
equations 1
coordinates 2 3
point 0 0 9 9 0
basis -1 0 2 1 -1
basis -2 1 1 0 0
dual 0 0 0 0 -1
dual 0 1 0 0 0
constant 0 0 0 0 0
level 1 1 1 0 1 0 0 0
side 0 1 0 0 0
level 0 1735 1 -2 -4 0 1 2
side 0 0 0 0 -1
walk nodes 21 points 0
search equal
objective 1
linear
derive 7
upper x2 3 r1 1
lower r2 1
upper x3 1 r3 -1
lower x3 1 r3 -1
upper x1 2 r1 1
upper x2 3 r1 1
lower r2 1
lattice 1 2 1
equations 1 3
coordinates 2
point -15 12 0
basis 3 -2 1
dual 0 0 1
constant 0 0 0
level 0 63 1 1 0 0
side 3 0 0
walk nodes 3 points 1
end
"""

# 2 x + 4 y = 7: no class modulo 2.
ODD = "[ ] [ ] [ [ 2 4 ] ] [ 7 ] [ ] [ ] [ ] [ 0 0 ] [ 0 0 ] [ 9 9 ]"
ODD_PROOF = """latbox-proof 1
verdict none
search points
objective 0
derive 1
class 0 2 4 r1 2
contradiction
end
"""


def said(program: str, proof: str) -> str:
    status, line = trial.plain(proof, program)
    return line if status != trial.NO_PROOF else "grammar: " + line


class Case(unittest.TestCase):
    maxDiff = None

    def assert_refused(self, program: str, proof: str, old: str, new: str, reason: str) -> None:
        self.assertIn(old, proof)
        self.assertIn("refused: " + reason, said(program, proof.replace(old, new, 1)), new)


class ProofTest(Case):
    def test_what_is_true_is_proven(self) -> None:
        self.assertEqual(said(THREE, THREE_PROOF), "proof: all 3")
        self.assertEqual(said(VALUED, VALUED_PROOF), "proof: optimum -2 1, 1 points")
        self.assertEqual(said(VALUED, VALUED_PROOF[:VALUED_PROOF.index("search equal")].replace("-2 1 1", "-2 1", 1) + "end\n"),
                         "proof: optimum -2 1")

    def test_words_of_a_line_may_stand_apart(self) -> None:
        self.assertEqual(said(THREE, THREE_PROOF.replace("dual 1 0 0", "\t dual  01 \t-0 0 ")), "proof: all 3")

    def test_what_is_no_proof(self) -> None:
        for old, new in (("latbox-proof 1", "latbox-proof 2"), ("all 3", "all"), ("all 3", "all -3"), ("all 3", "some 3"),
                         ("all 3", "all 3\npoint 1 1 0"), ("search points", "search"), ("search points", "search point"),
                         ("search points", "search points points"), ("objective 0", "objective 1"), ("derive 0", "derive"),
                         ("derive 0", "derive 1"), ("derive 0", "derive 1\nupper y1 1"), ("derive 0", "derive 1\nupper x1 1 r1"),
                         ("derive 0", "derive 1\nclass x1 1"), ("derive 0", "derive 1\nupper x1 1 1"),
                         ("derive 0", "derive 1\nupper 1 1"), ("derive 0", "derive 1\nupper x-1 1"),
                         ("lattice 2 1 0", "lattice 3 1 0"), ("lattice 2 1 0", "lattice 2 1"), ("equations 1", "equations -1"),
                         ("equations 1\n", ""), ("coordinates\n", "coordinates\n\n"), ("dual 1 0 0\n", ""), ("0 -1\n", "0 -1.0\n"),
                         ("level 1 1 0", "level -1 1 0"), ("level 1 1 0", "level 1 1 1"), ("level 0 1 1", "level 0 1 0"),
                         ("nodes 6 points", "points 6 nodes"), ("points 3", "points"), ("end\n", "end"), ("end\n", "end\nend\n"),
                         ("end\n", ""), ("point 1 1 0", "point 1 1 0\r"), ("point 1 1 0", "point 1 1 \u0660"),
                         ("constant 1 1 1", "constant 1 1 +1"), ("walk", "contradiction\nwalk")):
            self.assertIn(old, THREE_PROOF)
            self.assertIn("grammar: ", said(THREE, THREE_PROOF.replace(old, new, 1)), (old, new))
        for old, new in (("point 0 2 3\n", ""), ("-2 1 1\n", "-2\n"), ("-2 1 1", "-2 2/2 1"), ("-2 1 1", "-2 1/1 1"),
                         ("point 0 2 3", "point 0/2 2 3"), ("-2 1 1", "-2 1 1 1"), ("linear", "linear 1"), ("norm 1", "norm x"),
                         ("norm 1", "form 1"), ("-2 1 1", "-2 1/0 1")):
            self.assertIn(old, VALUED_PROOF)
            self.assertIn("grammar: ", said(VALUED, VALUED_PROOF.replace(old, new, 1)), (old, new))

    def test_the_lattice_must_be_all_of_it(self) -> None:
        part = THREE_PROOF.replace("lattice 2", "lattice 1").replace("basis 0 1 -1\n", "").replace("dual 0 0 -1\n", "")
        part = part.replace("level 1 1 0 0 0 -1\n", "")
        self.assertIn("refused: the basis may be a part of the kernel", said(THREE, part))
        # Rank 1 modulo the prime, and 2 over the rationals, is not seen.
        text = THREE.replace("[ [ 1 1 1 ] ] [ 2 ]", "[ [ 1 1 1 ] [ 1 2147483648 1 ] ] [ 2 2147483649 ]")
        self.assertIn("refused: A K is not 0", said(text, THREE_PROOF.replace("lattice 2 1 0\nequations 1", "lattice 2 2 0\nequations 1 2")))
        proof = part.replace("lattice 1 1 0\nequations 1", "lattice 1 2 0\nequations 1 2").replace("basis 1 -1 0", "basis 1 0 -1")
        proof = proof.replace("side 0 1 0", "side 0 0 1")
        self.assertIn("refused: the basis may be a part of the kernel", said(text, proof))

    def test_conditions_of_the_lattice(self) -> None:
        for old, new, reason in (
                ("point 1 1 0", "point 1 1 1", "A x0 is not b"), ("basis 1 -1 0", "basis 1 -1 1", "A K is not 0"),
                ("dual 1 0 0", "dual 1 1 0", "D K is not I"), ("dual 1 0 0", "dual 2 0 0", "D K is not I"),
                ("equations 1", "equations 2", "there is no r2"), ("equations 1", "equations 0", "there is no r0"),
                ("equations 1", "equations 1 1", "other numbers of rows"), ("lattice 2 1 0", "lattice 2 1 1", "other numbers of rows"),
                ("lattice 2 1 0\nequations 1", "lattice 2 2 0\nequations 1 1", "a row stands twice"),
                ("point 1 1 0", "point 1 1 0 0", "a vector without"), ("side 0 1 0", "side 0 1", "a vector without"),
                ("constant 1 1 1", "constant 1 1", "a vector without"), ("basis 1 -1 0", "basis 1 -1", "a vector without"),
                ("dual 1 0 0", "dual 1 0", "a vector without"), ("level 0 1 1 1 0 0", "level 0 1 1 1 0", "a vector without")):
            self.assert_refused(THREE, THREE_PROOF, old, new, reason)
        self.assert_refused(VALUED, VALUED_PROOF, "equations 1\ncoordinates 4", "equations 2\ncoordinates 4", "an equation with a range")
        self.assertIn("an open column", said(THREE.replace("[ 1 1 1 ]", "[ 1 inf 1 ]"), THREE_PROOF)
                      if THREE.count("[ 1 1 1 ]") == 1 else said(THREE[:-9] + "[ 1 inf 1 ]", THREE_PROOF))
        self.assert_refused(VALUED, VALUED_PROOF, "lower r2 1\nlower r3 1\n", "lower r3 1\nlower r3 1\n", "an open column")

    def test_conditions_of_the_cuts(self) -> None:
        for old, new, reason in (
                ("constant 1 1 1", "constant 1 1 0", "the constant is not constant"),
                ("level 1 1", "level 0 1", "level 0: another is due"), ("level 1 1", "level 1 0", "level 1: another is due"),
                ("level 1 1", "level 1 -1", "level 1: another is due"), ("level 1 1 0 0 0 -1", "level 1 1 0 1 0 -1", "level 1: no cut"),
                ("level 1 1 0 0 0 -1", "level 1 1 0 0 0 1", "level 1: the main vector leads nowhere"),
                ("level 1 1 0 0 0 -1", "level 1 1 0 0 0 0", "level 1: the main vector leads nowhere"),
                ("level 1 1 0 0 0 -1", "level 1 1 1 0 0 -1\nside 1 0 0", "level 1: no cut")):
            self.assert_refused(THREE, THREE_PROOF, old, new, reason)
        # All at level 0 that leads on is a cut; of a side vector there nothing is asked.
        self.assertIn("proof: ", said(THREE, THREE_PROOF.replace("side 0 1 0", "side 7 -5 3")))

    def test_conditions_of_steps(self) -> None:
        for old, new, reason in (
                ("upper x2 3 r1 1", "upper x2 0 r1 1", "a step by 0 or less"), ("class x3 1 1", "class x3 1 0", "a step by 0 or less"),
                ("class x3 1 1", "class x3 -1 1", "a step by 0 or less"), ("upper x2 3 r1 1", "upper x4 3 r1 1", "there is no x4"),
                ("upper x2 3 r1 1", "upper x0 3 r1 1", "there is no x0"), ("upper x2 3 r1 1", "upper x2 3 r5 1", "there is no r5"),
                ("upper x2 3 r1 1", "upper r0 3 r1 1", "there is no r0"),
                ("upper x2 3 r1 1", "upper x2 3 r1 1 r1 1", "a row stands twice in a step"),
                ("upper x2 3 r1 1", "upper x2 3 r2 -1", "a step takes an end that is not there"),
                ("class x3 1 1 r1 1", "class x3 1 1 r2 1", "a class by a row that has a range"),
                ("class x3 1 1 r1 1", "class x3 1 2 r1 1", "the class is not known")):
            self.assert_refused(VALUED, VALUED_PROOF, old, new, reason)

    def test_objective_rows(self) -> None:
        for old, new, reason in (
                ("norm 1", "norm 2", "wrong signs"), ("norm 1", "norm", "wrong signs"), ("norm 1", "norm 1 1", "wrong signs"),
                ("norm 1", "distance 1", "no row for better"), ("norm 1", "linear", "no row for better")):
            self.assert_refused(VALUED, VALUED_PROOF, old, new, reason)
        self.assert_refused(THREE, THREE_PROOF, "objective 0", "objective 1\nnorm", "no row for points")

    def test_contradictions(self) -> None:
        self.assertEqual(said(ODD, ODD_PROOF), "proof: none")
        self.assert_refused(ODD, ODD_PROOF, "class 0 2 4 r1 2", "class 0 2 4 r1 4", "points: contradiction is False")
        self.assertEqual(said(ODD, ODD_PROOF.replace("class 0 2 4 r1 2", "class x1 2 4 r1 1")), "proof: none")
        self.assertEqual(said(ODD, ODD_PROOF.replace("class 0 2 4 r1 2", "class r1 1 2")), "proof: none")
        # x1 + x2 = 9 with both below 5.
        text = "[ ] [ ] [ [ 1 1 ] ] [ 9 ] [ ] [ ] [ ] [ 0 0 ] [ 0 0 ] [ 4 4 ]"
        for step in ("lower 0 7 r1 1", "upper 0 1 r1 -2", "upper r1 1", "lower x1 1 r1 1", "upper 0 1 r1 1"):
            expected = "proof: none" if step != "upper 0 1 r1 1" else "proof: refused: points: contradiction is False"
            self.assertEqual(said(text, ODD_PROOF.replace("class 0 2 4 r1 2", step)), expected, step)
        # What stands behind a contradiction is not looked at; a contradiction must be told, and proves no points.
        self.assertEqual(said(ODD, ODD_PROOF.replace("derive 1\n", "derive 2\n").replace("contra", "upper x9 0\ncontra")), "proof: none")
        self.assert_refused(ODD, ODD_PROOF, "verdict none", "verdict all 1", "points: contradiction is True")
        self.assert_refused(THREE.replace("[ 2 ]", "[ 4 ]"), THREE_PROOF, "derive 0", "derive 1\nupper r1 1", "points: contradiction is True")
        # A side that nothing keeps, an equation whose side is no whole number of steps.
        empty = ODD_PROOF.replace("derive 1\nclass 0 2 4 r1 2", "derive 0")
        self.assertEqual(said("[ ] [ ] [ ] [ ] [ [ 1 ] ] [ inf ] [ inf ] [ 0 ] [ 0 ] [ 9 ]", empty), "proof: none")
        self.assertEqual(said("[ ] [ ] [ [ 1 ] ] [ 1/20 ] [ ] [ ] [ ] [ 1 ] [ 0 ] [ 9 ]", empty), "proof: none")
        self.assertEqual(said("[ ] [ ] [ [ 1 ] ] [ 1/2 ] [ ] [ ] [ ] [ 1 ] [ 0 ] [ 9 ]", empty),
                         "proof: refused: points: contradiction is False")

    def test_columns_without_a_value_end_the_search(self) -> None:
        # No kernel, and the one value outside of 0..1.
        text = "[ ] [ ] [ [ 1 2 ] [ 1 0 ] ] [ 9 5 ] [ ] [ ] [ ] [ 0 0 ] [ 0 0 ] [ 9 1 ]"
        proof = THREE_PROOF[:THREE_PROOF.index("lattice")].replace("all 3", "none") + (
            "lattice 0 2 0\nequations 2 1\ncoordinates\npoint 5 2\nconstant 0 0\nwalk nodes 0 points 0\nend\n")
        self.assertEqual(said(text, proof), "proof: none")
        self.assert_refused(text, proof, "walk nodes 0", "walk nodes 1", "points: 0 nodes, not 1")
        self.assertEqual(said(text.replace("[ 9 1 ]", "[ 9 2 ]"), proof.replace("none", "all 1").replace("points 0", "points 1")), "proof: all 1")
        self.assertIn("refused", said(text.replace("[ 9 1 ]", "[ 9 2 ]"), proof))
        # The same beside a kernel.
        text = "[ ] [ ] [ [ 1 1 0 ] [ 0 0 2 ] ] [ 3 4 ] [ ] [ ] [ ] [ 0 0 0 ] [ 0 0 0 ] [ 9 9 1 ]"
        proof = THREE_PROOF[:THREE_PROOF.index("lattice")].replace("all 3", "none") + (
            "lattice 1 2 0\nequations 1 2\ncoordinates\npoint 0 3 2\nbasis 1 -1 0\ndual 1 0 0\nconstant 0 0 0\n"
            "level 0 1 0 1 0 0\nwalk nodes 0 points 0\nend\n")
        self.assertEqual(said(text, proof), "proof: none")
        # 3 divides x1 - 2, and 0..1 holds no such number; the cuts are looked at nevertheless.
        text = "[ ] [ ] [ [ 1 3 ] ] [ 2 ] [ ] [ ] [ ] [ 0 0 ] [ 0 -5 ] [ 1 5 ]"
        proof = THREE_PROOF[:THREE_PROOF.index("lattice")].replace("all 3", "none") + (
            "lattice 1 1 0\nequations 1\ncoordinates\npoint 2 0\nbasis -3 1\ndual 0 1\nconstant 0 0\nlevel 0 1 0 0 1\n"
            "walk nodes 0 points 0\nend\n")
        self.assertEqual(said(text, proof), "proof: none")
        self.assert_refused(text, proof, "level 0 1 0 0 1", "level 0 1 0 1 0", "level 0: the main vector leads nowhere")

    def test_counts_and_verdicts(self) -> None:
        for old, new, reason in (
                ("nodes 6", "nodes 7", "points: 6 nodes, not 7"), ("nodes 6", "nodes 5", "more than 5 nodes"),
                ("points 3\n", "points 2\n", "points: 3 points"), ("all 3", "all 2", "points: 3 points, not 2"),
                ("all 3", "all 0", "a count of 0"), ("all 3", "none", "points: 3 points, not 0"),
                ("all 3", "optimum 0 0\npoint 1 1 0", "no targets")):
            self.assert_refused(THREE, THREE_PROOF, old, new, reason)
        for old, new, reason in (
                ("point 0 2 3", "point 0 2 4", "the point or its norms"), ("point 0 2 3", "point 1 1 4", "the point or its norms"),
                ("point 0 2 3", "point 0 2", "no targets, or a point"), ("-2 1 1", "-3 1 1", "the point or its norms"),
                ("-2 1 1", "-2 2 1", "the point or its norms"), ("-2 1 1", "-2 1 0", "a count of 0"),
                ("-2 1 1", "-2 1", "the searches are not"), ("-2 1 1", "-2 1 2", "equal: 1 points, not 2"),
                ("search slack", "search equal", "the searches are not")):
            self.assert_refused(VALUED, VALUED_PROOF, old, new, reason)
        proof = VALUED_PROOF.replace("-2 1 1\npoint 0 2 3", "-1 0 1\npoint 1 2 1")
        self.assertIn("the searches are not ['better', 'equal']", said(VALUED, proof))


class ProgramTest(Case):
    def test_numbers(self) -> None:
        for text, value in (("12", "12"), ("-3", "-3"), ("+3", "3"), ("007", "7"), ("1.25", "5/4"), ("1,25", "5/4"), (".5", "1/2"),
                            ("5.50", "11/2"), ("-6/8", "-3/4"), ("2:1/3", "7/3"), ("-2:1/3", "-7/3"), ("-inf", "-inf")):
            self.assertEqual(str(plain_checker.Program.number(text)), value)
        for text in ("a", "INF", "-", "1e3", "5.", "5.0", "2:", "1/0", "1/", "2:3", "--1", "", "\u0661"):
            with self.assertRaises(plain_checker.Malformed, msg=text):
                plain_checker.Program.number(text)

    def test_comments_and_thresholds(self) -> None:
        text = VALUED.replace("[ 5 inf ]", "// [\n[ 5 /* ] // */ inf ] = [ 1 2 ]") + " // behind"
        self.assertEqual(said(text, VALUED_PROOF), "proof: optimum -2 1, 1 points")

    def test_what_is_no_program(self) -> None:
        for old, new in (("[ 9 ]", "[ 9 9 ]"), ("[ 9 ]", "[ inf ]"), ("[ 9 ]", "9"), ("[ 6 ]", "[ inf ]"), ("[ -inf ]", "[ 7 ]"),
                         ("[ [ 2 3 1 ] ]", "[ [ 2 3 ] ]"), ("[ [ 2 3 1 ] ]", "[ 2 3 1 ]"), ("[ 0 0 0 ]", "[ 0 0 1/2 ]"),
                         ("[ 4 4 4 ]", "[ 4 4 4"), ("[ 4 4 4 ]", "[ 4 4 -1 ]"), ("[ 4 4 4 ]", ""), ("[ 0 0 0 ]", "[ 0 0 10001 ]")):
            self.assertIn(old, VALUED)
            self.assertIn("grammar: ", said(VALUED.replace(old, new, 1), VALUED_PROOF), new)


class MainTest(Case):
    def run_main(self, *arguments: str) -> tuple[int, str, str]:
        out, err = io.StringIO(), io.StringIO()
        with contextlib.redirect_stdout(out), contextlib.redirect_stderr(err):
            status = plain_checker.main(["plain", *arguments])
        return status, out.getvalue(), err.getvalue()

    def test_status_and_last_line(self) -> None:
        with tempfile.TemporaryDirectory() as folder:
            def path(name: str) -> str:
                return os.path.join(folder, name)

            trial.write(folder, "p.opt", THREE)
            for name, text in (("right", THREE_PROOF), ("false", THREE_PROOF.replace("all 3", "all 2")), ("no", THREE_PROOF[:-1])):
                trial.write(folder, name, text)
            self.assertEqual(self.run_main(path("right"), path("p.opt")), (0, "proof: all 3\n", ""))
            self.assertEqual(self.run_main(path("false"), path("p.opt")), (1, "proof: refused: points: 3 points, not 2\n", ""))
            status, out, err = self.run_main(path("no"), path("p.opt"))
            self.assertEqual((status, out), (2, ""))
            self.assertIn("line 19: more behind the end, or no line end", err)
            self.assertEqual(self.run_main(path("missing"), path("p.opt"))[:2], (2, ""))
            self.assertEqual(self.run_main(path("right"))[:2], (2, ""))


class NaiveTest(Case):
    PROGRAMS = 130

    def test_naive_proofs_of_random_programs(self) -> None:
        seen: collections.Counter[str] = collections.Counter()
        for number in range(self.PROGRAMS):
            candidate = trial.program(number)
            for kind in trial.kinds(candidate.program):
                try:
                    text = naive_prover.prove(candidate.text, kind, candidate.points, random.Random(number))
                except naive_prover.GivenUp:
                    seen["given up"] += 1
                    continue
                self.assertEqual(said(candidate.text, text), trial.truth(candidate.program, candidate.points, kind), (number, kind))
                seen["verdicts"] += 1
                seen.update(set(re.findall(r"^(?:search \w+|(?:upper|lower|class) [xr0]|\w+)", text, re.MULTILINE)))
        self.assertGreater(seen["verdicts"], 4 * seen["given up"], seen)
        for line in ("search points", "search better", "search slack", "search equal", "norm", "distance", "linear", "upper x",
                     "lower x", "upper r", "lower r", "class x", "class r", "class 0", "contradiction", "side", "level"):
            self.assertGreaterEqual(seen[line], 3, (line, seen))

    def test_a_false_claim_of_the_naive_prover_is_refused(self) -> None:
        refused = 0
        for number in range(60):
            candidate = trial.program(number)
            if not candidate.points:
                continue
            kind = trial.kinds(candidate.program)[-1]
            points = sorted(candidate.points)
            norms = candidate.program.norms
            points.remove(min(points, key=norms))
            with contextlib.suppress(naive_prover.GivenUp):
                text = naive_prover.prove(candidate.text, kind, set(points), random.Random(number))
                status, line = trial.plain(text, candidate.text)
                self.assertEqual(status, trial.REFUSED, (number, line))
                refused += 1
        self.assertGreater(refused, 20)


if __name__ == "__main__":
    unittest.main()
