#!/usr/bin/env python3
"""latbox-all --proof: proofs of all kinds of verdicts, checked by latbox-check; runs that go on, refusals, and what is said
where there is no proof."""

import os
import re
import subprocess

import harness
from programs import opt
from test_complete import Case, ENDLESS, NINE, NOTHING, ONE, SMALLEST

# Six coefficients without a common divisor to speak of, and a side that they do not reach: 10^10 nodes for cuts alone.
KNAPSACK = opt(ag=[[12137, 24269, 36405, 36407, 48545, 60683]], bg=[58925134], rx=["inf"] * 6)
SLACK = opt(dt=["-inf", "1/2"], at=[[1, 0], [0, 1]], au=[[1, 1]], lu=[0], ru=[3], rx=[3, 3])

KINDS = {
    "one point": (ONE, "all 1"),
    "no point": (NOTHING, "none"),
    "an inequation": (NINE, "all 9"),
    "the best one": (SMALLEST, "optimum 1/10"),
    "maximised": (opt(dt=["inf"], at=[[3, 2]], au=[[2, 3]], lu=["-inf"], ru=[11], rx=[4, 4]), "optimum -14"),
    "wanted values": (opt(dt=[7, "5/2"], at=[[2, 3, 0], [1, 0, "1/3"]], au=[[1, 1, 1]], lu=[3], ru=[4], rx=[4, 4, 4]),
                      "optimum 1/6 1/6"),
    "a slack norm": (SLACK, "optimum 1/2 1/2"),
    "digits and fractions": (opt(ag=[["1/3", "2/7", 1]], bg=["22/21"], dx=[0, 1, 2], lx=[-2, -1, "-1/2"], rx=[2, 1, "1/2"]),
                             None),
    "open bounds that rows close": (opt(ag=[[5, 7]], bg=[116], rx=["inf", "inf"]), "all 3"),
    "open bounds that a target closes": (opt(dt=[-3], at=[[1, 2]], ag=[[1, 1]], bg=[4], lx=[0, "-inf"], rx=["inf", "inf"]),
                                         "optimum 0"),
    "divisibility": (opt(ag=[[6, 10, 15], [2, 0, 2]], bg=[1, 3], lx=["-inf"] * 3, rx=["inf"] * 3), "none"),
    "divisibility of a combination": (opt(ag=[[2, 0, 1], [0, 2, 1]], bg=[1, 2], lx=["-inf"] * 3, rx=["inf"] * 3), "none"),
    "a contradiction over the rationals": (opt(ag=[[1, 1, 2], [2, 3, 1], [4, 5, 5]], bg=[1, 5, 8], lx=["-inf"] * 3,
                                               rx=["inf"] * 3), "none"),
    "a contradiction of rows": (opt(au=[[1, 1, 0], [-1, 0, 1], [0, 1, 1]], lu=["-inf", "-inf", 8], ru=[3, 4, "inf"],
                                    lx=["-inf"] * 3, rx=["inf"] * 3), "none"),
    "fixed variables": (opt(ag=[[3, 5, 2]], bg=[20], lx=[0, 0, 3], rx=[4, 4, 3]), "all 1"),
    "everything fixed": (opt(au=[[1, 1]], lu=[0], ru=[9], lx=[2, 3], rx=[2, 3]), "all 1"),
    "everything fixed, and wrong": (opt(au=[[1, 1]], lu=[0], ru=[4], lx=[2, 3], rx=[2, 3]), "none"),
    "targets that cancel each other": (opt(dt=["-inf", "inf", "1/2"], at=[[0, 4], [0, 4], [1, 0]], au=[[1, 1]], lu=[0], ru=[3],
                                           rx=[3, 3]), "optimum 1/2 1/2"),
    "targets that are zero": (opt(dt=["inf"], at=[[0, 0]], au=[[1, 1]], lu=[1], ru=[2], rx=[2, 2]), "optimum 0"),
    "a knapsack": (KNAPSACK, "none"),
}


class ProofCase(Case):
    def setUp(self):
        super().setUp()
        self.checker = harness.latbox_check()
        if "--proof" not in self.run_check("--help").out:
            self.skipTest("latbox-check does not check proofs")

    def run_check(self, *arguments):
        done = subprocess.run([self.checker, *arguments], cwd=self.folder, timeout=harness.LIMIT, capture_output=True,
                              text=True, check=False)
        return harness.Result(done.returncode, done.stdout, done.stderr)

    def exists(self, name):
        return os.path.exists(os.path.join(self.folder, name))

    def prove(self, text, *options):
        """The verdict, which the proof says too."""
        result = self.run_all(text, "--quiet=1", "--resume=0", "--proof=p.proof", *options)
        self.assertIn(result.status, (10, 20), result.err)
        self.assertEqual(result.err, "")
        verdict = result.out.splitlines()[-1].removeprefix("verdict: ")
        checked = self.run_check("--proof=p.proof", "p.opt")
        said = checked.out.splitlines()[-1]
        points = re.match(r"best points: (\d+)\n", result.out)
        # Fractions of the verdict are those of a .sol line.
        wanted = re.sub(r"(-?)(\d+):(\d+)/(\d+)", lambda m: "%s%d/%s" % (m[1], int(m[2]) * int(m[4]) + int(m[3]), m[4]), verdict)
        if points:
            wanted += ", %s points" % points[1]
        self.assertEqual((checked.status, said), (0, "proof: " + wanted), checked.out + checked.err)
        return wanted


class ProofTest(ProofCase):
    def test_every_kind(self):
        for name, (text, verdict) in KINDS.items():
            with self.subTest(name):
                proven = self.prove(text)
                if verdict:
                    self.assertEqual(proven, verdict)

    def test_every_task(self):
        for options in (["--all=1"], ["--count=1"], ["--ties=1"], ["--ties=1", "--count=1"], ["--limit=0"]):
            for text in (SMALLEST, SLACK, KINDS["wanted values"][0], KINDS["targets that are zero"][0]):
                with self.subTest(options):
                    self.prove(text, *options)

    def test_the_points_are_those_of_the_file(self):
        self.prove(NINE)
        done = self.run_check("--proof=p.proof", "p.opt", "p.all")
        self.assertEqual(done.status, 0, done.out + done.err)
        lines = self.read("p.all").splitlines(keepends=True)
        self.write("less.all", "".join(lines[:-1]))
        self.assertEqual(self.run_check("--proof=p.proof", "p.opt", "less.all").status, 1)

    def test_it_is_the_proof_of_this_program(self):
        self.prove(ONE)
        self.write("q.opt", ONE.replace("14", "8"))
        self.assertEqual(self.run_check("--proof=p.proof", "q.opt").status, 1)


class ResumeTest(ProofCase):
    def proof(self, *options, status=10):
        result = self.run_plain("--quiet=1", "--proof=p.proof", *options, "p.opt")
        self.assertEqual((result.status, result.err), (status, ""))
        text = self.read("p.proof")
        os.remove(os.path.join(self.folder, "p.proof"))
        return text

    def test_a_finished_run_brings_the_same_proof(self):
        for options in ([], ["--ties=1"], ["--count=1"], ["--ties=1", "--count=1"]):
            self.write("p.opt", SLACK)
            fresh = self.proof("--resume=0", *options)
            self.assertEqual(self.proof(*options), fresh)
            self.assertEqual(self.run_plain("--quiet=1", *options, "p.opt").err, "")

    def test_threads_bring_the_same_proof(self):
        self.copy_example("market_split_6x50.opt")
        one = self.proof("--resume=0", "--threads=1")
        self.assertEqual(self.proof("--resume=0", "--threads=2"), one)
        self.assertEqual(self.run_check("--help").status, 0)

    def copy_example(self, name):
        with open(os.path.join(harness.Settings.examples, name), encoding="utf-8") as file:
            self.write("p.opt", file.read())


class NoProofTest(ProofCase):
    def assert_no_proof(self, result, reason):
        self.assertEqual(result.err.splitlines()[-1], "latbox-all: no proof was written: " + reason)
        self.assertEqual(self.read("p.proof"), "as it was\n")
        self.assertFalse(self.exists("p.proof.tmp"))

    def setUp(self):
        super().setUp()
        self.write("p.proof", "as it was\n")

    def test_a_search_that_is_stopped(self):
        result = self.run_all(ENDLESS, "--quiet=1", "--count=1", "--proof=p.proof", "--rtime=0.3")
        # On a busy machine the time may be up before the first point.
        self.assertIn(result.status, (11, 12))
        self.assert_no_proof(result, "the run was stopped")

    def test_a_proof_that_is_stopped(self):
        ResumeTest.copy_example(self, "market_split_6x50.opt")
        self.assertEqual(self.run_plain("--quiet=1", "p.opt").status, 10)
        result = self.run_plain("--quiet=1", "--proof=p.proof", "--rtime=0.001", "p.opt")
        self.assertEqual((result.out, result.status), ("verdict: all 1\n", 10))
        self.assert_no_proof(result, "the run was stopped")

    def test_a_place_that_cannot_be_written(self):
        result = self.run_all(ONE, "--quiet=1", "--proof=nowhere/p.proof")
        self.assertEqual((result.out, result.status), ("verdict: all 1\n", 10))
        self.assert_no_proof(result, "nowhere/p.proof.tmp: No such file or directory")

    def test_a_program_that_cannot_be_taken(self):
        text = opt(ag=[[1, -1]], bg=[0], rx=["inf", "inf"])
        result = self.run_all(text, "--proof=p.proof")
        self.assert_refused(result, "these variables need finite bounds: x1, x2")
        self.assertEqual(self.read("p.proof"), "as it was\n")

    def test_a_file_that_was_there_is_replaced_by_a_proof(self):
        self.prove(ONE)
        self.assertNotEqual(self.read("p.proof"), "as it was\n")


class RefusalTest(ProofCase):
    def test_options_that_exclude_it(self):
        for option, name in (("--first=1", "first"), ("--limit=3", "limit")):
            result = self.run_all(ONE, "--proof=p.proof", option)
            self.assert_refused(result, "--proof and --%s exclude each other" % name)

    def test_files_that_are_not_written_over(self):
        for name in ("p.opt", "./p.opt", "q.opt", "p.sol", "p.lat", "p.all", "p.all.old", "p.all.resume", "p.all.tmp"):
            result = self.run_all(ONE, "--proof=" + name)
            self.assert_refused(result, "--proof=%s: a proof is not written over a program, a file of the solver, or the points"
                                % name)
        result = self.run_all(ONE, "--out=x", "--proof=x")
        self.assertEqual(result.status, 2)

    def test_a_folder(self):
        os.mkdir(os.path.join(self.folder, "q"))
        self.assert_refused(self.run_all(ONE, "--proof=q"), "--proof=q: is there and is no regular file")


if __name__ == "__main__":
    harness.main()
