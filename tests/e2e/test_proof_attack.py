#!/usr/bin/env python3
"""Proofs of latbox-all, valid ones and changed ones, with both checkers; and what tries them (tests/proof/)."""

import os
import re
import shutil
import subprocess
import sys

import harness

FOLDER = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "proof")
sys.path.append(FOLDER)
import trial  # pylint: disable=wrong-import-position
# Those whose walks are short enough for the plain checker.
EXAMPLES = ("blend", "cutting", "diet", "difference_family_37_4", "fixed", "half_infinite", "hundred_fowls", "knapsack",
            "market_split", "market_split_deviation", "reach_value", "scheduling", "steiner_7", "temperament", "threshold",
            "two_sided", "unit_fractions")


class Case(harness.ScriptCase):
    scripts = FOLDER

    def lying(self, name, text):
        """A program in the place of a checker or of a prover."""
        return self.write_program(name, "#!/bin/sh\n" + text)


class TrialTest(Case):
    def setUp(self):
        super().setUp()
        self.checker = harness.latbox_check()
        self.prover = harness.latbox_all()
        if not os.path.exists(self.checker) or not os.path.exists(self.prover):
            self.skipTest("latbox-all or latbox-check is not built (GMP or libfplll is not installed)")

    def test_examples(self):
        for name in EXAMPLES:
            shutil.copy(os.path.join(harness.Settings.examples, name + ".opt"), self.path("p.opt"))
            for option in ("--ties=0", "--ties=1") if trial.Judged(self.read("p.opt")).dt else ("--all=1",):
                subprocess.run([self.prover, "--quiet=1", "--resume=0", "--proof=p.proof", option, "p.opt"], cwd=self.folder,
                               timeout=harness.HOPELESS, check=False, stdout=subprocess.PIPE)
                status, line = trial.checked(self.checker, self.folder)
                self.assertEqual((status, line), trial.plain(self.read("p.proof"), self.read("p.opt")), (name, option))
                self.assertEqual(status, trial.PROVED, line)
                self.remove("p.proof")

    def test_random_programs(self):
        halves = [self.start("random_proofs.py", self.prover, self.checker, *ends, "record%d" % ends[0])
                  for ends in ((0, 75), (75, 150))]
        for half in halves:
            out = self.output(half)
            self.assertIn("75 programs right, 0 wrong; ", out)
            shares = {word: int(count) for count, word in re.findall(r"(\d+) ([\w-]+)", out)}
            self.assertGreaterEqual(min(shares[word] for word in ("none", "one", "many")), 15, out)
            self.assertGreaterEqual(shares["all-plain"], 70, out)

    def test_changed_proofs(self):
        halves = [self.start("attack.py", self.prover, self.checker, *ends, "record%d" % ends[0]) for ends in ((0, 60), (60, 120))]
        for half in halves:
            out = self.output(half)
            self.assertIn("60 changed proofs right, 0 wrong; ", out)
            shares = {word: int(count) for count, word in re.findall(r"(\d+) ([\w-]+)", out)}
            self.assertGreaterEqual(shares["reached"], 20, out)
            self.assertGreaterEqual(shares["refused"], 15, out)

    def test_a_checker_that_believes_is_found(self):
        out = self.output(self.start("attack.py", "naive", self.lying("liar", "echo proof: all 999\n"), 0, 8, "record", "kept"))
        self.assertRegex(out, r"\nseed 7: plain: [012] .* latbox-check: 0 proof: all 999\n")
        self.assertIn("\n0 changed proofs right, 8 wrong; ", out)
        self.assertTrue(os.listdir(self.path("kept")))

    def test_a_checker_that_crashes_is_found(self):
        out = self.output(self.start("attack.py", "naive", self.lying("liar", "kill -SEGV $$\n"), 0, 2, "record"))
        self.assertIn("seed 1: latbox-check: status -11", out)
        self.assertIn("0 changed proofs right, 2 wrong; ", out)

    def test_a_prover_without_a_proof_or_with_a_wrong_one_is_found(self):
        liar = self.lying("liar", "echo verdict: none\nexit 20\n")
        out = self.output(self.start("random_proofs.py", liar, self.checker, 0, 3, "r"))
        self.assertIn("program 0: all latbox-all: no proof", out)
        self.assertIn("0 programs right, 3 wrong; ", out)
        # Program 0 has no point, and no contradiction either.
        lines = "latbox-proof 1\nverdict none\nsearch points\nobjective 0\nderive 0\ncontradiction\nend\n"
        liar = self.lying("liar", "cat > p.proof <<END\n%sEND\nexit 20\n" % lines)
        out = self.output(self.start("random_proofs.py", liar, self.checker, 0, 3, "r"))
        self.assertIn("program 0: all latbox-check says 1 proof: refused: ", out)
        self.assertIn("0 programs right, 3 wrong; ", out)

    def test_a_record_is_gone_on_from(self):
        self.write("record", "0 none points .\n2 one points all-plain .\n3 many poin")
        out = self.output(self.start("random_proofs.py", self.lying("liar", "exit 1\n"), self.checker, 0, 4, "record"))
        self.assertIn("2 programs right, 2 wrong; 1 none, 1 one, 0 many, 2 points, ", out)
        self.assertIn("program 1: ", out)
        self.assertIn("program 3: ", out)


if __name__ == "__main__":
    harness.main()
