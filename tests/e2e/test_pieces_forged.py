#!/usr/bin/env python3
"""latbox-all on folders of pieces that are not as it has left them: written by hand with all digests right, torn at any byte, killed
at any time, on a full disk. What it tells is true, or it tells what is wrong."""

import os
import random
import resource
import shutil
import subprocess

import farm_liars
import harness
import pieces_random
from forged_pieces import Forger, changed
from test_complete import SMALLEST
from test_pieces import BEST, MANY, PiecesCase, market_split

FAR = 10**400


class ForgedCase(PiecesCase):
    in_memory = True

    def begin(self, text, count, *options):
        super().begin(text, count, *options)
        self.forger = Forger(self.path("d"))

    def undivided(self):
        return self.pieces.run("--out=u.all", "--resume=0", *self.options, statuses=(10, 20), name="p.opt")

    def take(self, number, *lines):
        self.write("r", self.forger.result(number, *lines))
        return self.call("--take=r", "--job=%d" % number)

    def assert_not_taken(self, reason, number, *lines):
        result = self.take(number, *lines)
        self.assertEqual((result.status, result.out), (1, ""), lines)
        self.assertRegex(result.err, r"\Alatbox-all: r: not taken: .*" + reason)
        self.assertFalse(self.exists("d/%d.result" % number))


class ManifestTest(ForgedCase):
    def test_no_piece_goes_deeper_than_the_lattice(self):
        for text in (MANY, BEST):
            self.begin(text, 1)
            rank = int(self.forger.read("manifest").split("\nrank ")[1].split()[0])
            prefixes = ["%s*>1<-1" % ("0," * level) for level in range(rank)] + ["0," * rank + "*>0<-1"]
            self.forger.write_manifest(["piece 1 - 5 " + " ".join(prefixes)])
            for options in (("--job=1",), ("--pieces=1",), ("--join=1",), ("--job=1", "--split=2")):
                result = self.call(*options)
                self.assertEqual((result.status, result.out), (1, ""), options)
                self.assertIn("d/manifest: piece 1 goes deeper than the lattice", result.err)
            # Nor does a manifest that says so of its lattice.
            self.forger.write_manifest(self.forger.bodies(), lambda head: head.replace("rank %d" % rank, "rank 99"))
            for options in (("--job=1",), ("--job=1", "--split=2")):
                self.assertIn("d/lattice: its rank is not that of the manifest", self.call(*options).err)
            shutil.rmtree(self.path("d"))

    def test_half_lines_from_anywhere(self):
        for text in (MANY, BEST):
            for far in (1000, 10**18, -10**30, FAR, -FAR):
                self.begin(text, 1)
                self.forger.write_manifest(["piece 1 - 5 *>%d" % far, "piece 2 - 5 *<%d" % (far - 1)])
                self.do_all()
                self.assert_joins()
                shutil.rmtree(self.path("d"))
                os.remove(self.path("j.all"))

    def test_random_changes(self):
        """Honest jobs of forged manifests: what is joined is what there is, or nothing."""
        draw = random.Random(14)
        kinds = {10: 0, 20: 0, 1: 0}
        for text, options in ((MANY, ("--all=1",)), (MANY, ("--count=1",)), (SMALLEST, ())):
            self.begin(text, 4, *options)
            undivided = self.undivided()
            bodies = self.forger.bodies()
            for _ in range(20):
                for name in os.listdir(self.path("d")):
                    if name[0].isdigit():
                        os.remove(self.path("d/" + name))
                forged = changed(bodies, draw)
                self.forger.write_manifest(forged)
                for body in forged:
                    self.assertIn(self.call("--job=" + body.split()[1], "--quiet=1").status, (0, 1, 2), forged)
                result = self.call("--join=1", "--quiet=1", "--out=j.all")
                self.assertIn(result.status, kinds, forged)
                kinds[result.status] += 1
                if result.status == 1:
                    self.assertEqual(result.out, "")
                    self.assertRegex(result.err, r"\Alatbox-all: .*(manifest|piece \d+)", forged)
                else:
                    self.assertEqual((result.status, result.out), undivided, forged)
            shutil.rmtree(self.path("d"))
        self.assertGreater(kinds[1], 10)
        self.assertGreater(kinds[10], 2)


class JoinTest(ForgedCase):
    def test_shares_of_the_proof_are_not_the_search(self):
        self.begin(MANY, 3, "--proof=1")
        self.do_all()
        self.forger.write_manifest([body for body in self.forger.bodies() if "proof:" in body])
        for number in self.pieces_that("proof:"):
            self.call("--job=%d" % number)
        self.assert_missing("the pieces are not all of the search")

    def pieces_that(self, have):
        return [int(body.split()[1]) for body in self.forger.bodies() if have in body]

    def test_a_proof_that_does_not_fit_is_told_before_anything_is_written(self):
        self.begin(MANY, 2, "--proof=1")
        self.do_all()
        number = self.pieces_that("proof:")[0]
        whole = self.read("d/%d.result" % number)
        unlike = r"the proof's pieces have met \d+ points, and those of the search \d+"
        for met, complaint in ((999, unlike), (2**64 - 1, "more points than can be counted")):
            self.write("d/%d.result" % number, self.forger.result(number, "nodes 9", "met %d" % met, "points 0"))
            self.assert_missing(complaint)
        self.write("d/%d.result" % number, whole)
        proof = self.read_bytes("d/proof")
        for text in (b"", proof[:-9]):
            self.write("d/proof", text)
            self.assert_missing("d/proof: is not the one that the manifest was written for")
        self.write("d/proof", proof)
        self.assert_joins("--proof=%s.proof")

    def test_a_piece_that_was_split_again_and_again(self):
        self.begin(MANY, 1)
        self.forger.write_manifest(["piece 1 - 5 ."] + ["piece %d %d 5 ." % (number, number - 1) for number in range(2, 60000)])
        self.call("--job=59999")
        self.assert_joins()


class ResultTest(ForgedCase):
    def test_numbers_that_are_none(self):
        self.begin(MANY, 1, "--count=1")
        for lines in (("nodes -1", "points 0"), ("nodes 1", "points -5"), ("nodes 1", "points 99999999999999999999"), ("nodes x", "points 0")):
            self.assert_not_taken("r: a value is missing or none", 1, *lines)
        self.assert_not_taken("more than belongs to 'points'", 1, "nodes 1", "points 3 4")

    def test_more_points_than_can_be_counted(self):
        self.begin(MANY, 2, "--count=1")
        for number in (1, 2):
            self.write("d/%d.result" % number, self.forger.result(number, "nodes 1", "points %d" % (2**64 - 1)))
        self.assert_missing(r"piece \d: more points than can be counted")

    def test_a_pipe_is_no_result(self):
        self.begin(MANY, 1)
        os.mkfifo(self.path("d/1.result"))
        self.assert_missing("piece 1 has no result")

    def test_bounds_that_are_none(self):
        self.begin(BEST, 1)
        for bound in ("x", "-", "inf", "1e5", "1/0"):
            self.assert_not_taken("r: its bound (is not a number|has the denominator 0)", 1, "nodes 1", "bound " + bound, "points 0")
            self.write("d/1.result", self.forger.result(1, "nodes 1", "bound " + bound, "points 0"))
            self.assert_missing("d/1.result: its bound ", "piece 1 has no result")
            os.remove(self.path("d/1.result"))

    def test_what_is_left_is_done_whatever_it_is(self):
        """No lie about it keeps others from ending."""
        for left in (["*"], ["0,*"], ["*>%d" % FAR], ["*>-%d" % FAR], ["%d,*>0<-1" % FAR], ["0>%d,*>0<-1" % FAR], ["0,*>-%d" % 10**30],
                     ["0,*>-%d<-%d" % (FAR, FAR + 1), "1,*"]):
            self.begin(MANY, 1)
            self.assertEqual(self.take(1, "nodes 1", *("open " + prefix for prefix in left), "points 0").status, 0)
            self.do_all()
            self.assertIn(self.call("--join=1", "--out=j.all").status, (10, 20))
            shutil.rmtree(self.path("d"))

    def test_what_is_left_goes_no_deeper_than_the_lattice(self):
        for text in (MANY, BEST):
            self.begin(text, 1)
            self.assert_not_taken("r: goes deeper than the lattice", 1, "nodes 1", "open %s*>1<0" % ("0," * 40), "points 0")
            shutil.rmtree(self.path("d"))

    def test_torn_at_any_byte(self):
        self.begin(MANY, 3)
        self.call("--job=1")
        data = self.read_bytes("d/1.result")
        for size in [*range(0, len(data), 11), len(data) - 1]:
            self.write("r", data[:size])
            result = self.call("--take=r", "--job=1")
            self.assertEqual((result.status, result.out), (1, ""))
            self.assertIn("r: not taken: r: its end is missing, or it was changed", result.err)
        self.do_all()
        self.assert_joins()


class PartsTest(ForgedCase):
    def test_parts_of_the_folder_are_not_written_over(self):
        self.begin(MANY, 2, "--proof=1")
        self.do_all()
        os.symlink("d/manifest", self.path("link"))
        before = {name: self.read_bytes("d/" + name) for name in os.listdir(self.path("d"))}
        for name in ("d/manifest", "d/lattice", "d/proof", "d/best", "./d/../d/1.result", self.path("d/2.result"), "link"):
            for option in ("--out=", "--proof="):
                result = self.call("--join=1", option + name)
                self.assertEqual((result.status, result.out), (2, ""), option + name)
                self.assertIn(option + name + ": is a part of the folder of pieces", result.err)
        self.assertEqual({name: self.read_bytes("d/" + name) for name in os.listdir(self.path("d"))}, before)
        self.assert_joins("--proof=%s.proof")

    def test_more_pieces_than_anybody_counts(self):
        self.begin(MANY, 1, "--proof=1")
        for count in ("10000001", "18446744073709551615"):
            result = self.call("--job=2", "--split=" + count)
            self.assertEqual(result.status, 2)
            self.assertIn("a number of pieces, 10000000 or fewer, is wanted", result.err)
        self.forger.write_manifest([self.forger.bodies()[0], "piece 2 - 5 proof:0/%d" % 2**40])
        result = self.call("--job=2", "--split=2")
        self.assertEqual(result.status, 2)
        self.assertIn("--job=2: there are no parts so small of its share", result.err)


class EndTest(ForgedCase):
    def kill(self, seconds, *options):
        """By SIGKILL, after this time if it is there yet."""
        process = subprocess.Popen([self.binary, "--jobs=d", "--quiet=1", *options], cwd=self.folder, stdout=subprocess.DEVNULL,
                                   stderr=subprocess.DEVNULL)
        try:
            process.wait(seconds)
        except subprocess.TimeoutExpired:
            process.kill()
            process.wait()

    def test_killed_at_any_time(self):
        """Splitting, jobs, taking and joining, each after times from nothing to its own length."""
        self.write("p.opt", market_split(4, 32))
        self.pieces = pieces_random.Pieces(self.binary, self.folder)
        self.options = ()
        draw = random.Random(9)
        for _ in range(8):
            self.kill(draw.uniform(0, 0.15), "--split=3", "p.opt")
        self.pieces.split(3)
        for number in (1, 2, 3):
            for _ in range(3):
                self.kill(draw.uniform(0, 0.1), "--job=%d" % number, "--checkpoint=0.01")
        self.kill(0.03, "--job=1", "--split=2")
        self.do_all()
        for number in (2, 3):
            shutil.move(self.path("d/%d.result" % number), self.path("r"))
            for _ in range(4):
                self.kill(draw.uniform(0, 0.02), "--take=r", "--job=%d" % number)
            self.assertEqual(self.call("--take=r", "--job=%d" % number).status, 0)
        for _ in range(6):
            self.kill(draw.uniform(0, 0.05), "--join=1", "--out=j.all")
        for name in ("j.all", "j.all.resume"):
            if self.exists(name):
                os.remove(self.path(name))
        self.assert_joins()

    def limited(self, size, *options):
        def prepare():
            resource.setrlimit(resource.RLIMIT_FSIZE, (size, size))

        done = subprocess.run([self.binary, "--jobs=d", "--quiet=1", *options], cwd=self.folder, capture_output=True, text=True,
                              timeout=harness.LIMIT, check=False, preexec_fn=prepare, restore_signals=False)
        return harness.Result(done.returncode, done.stdout, done.stderr)

    def test_a_full_disk(self):
        """Each call ends with its reason, and nothing is lost: with room it does what it was to do."""
        self.write("p.opt", MANY)
        self.pieces = pieces_random.Pieces(self.binary, self.folder)
        self.options = ()

        def fails(*options):
            for size in (0, 100, 300):
                result = self.limited(size, *options)
                self.assertEqual((result.status, result.out), (1, ""), (size, options))
                self.assertIn("File too large", result.err)

        fails("--split=2", "p.opt")
        self.pieces.split(2)
        fails("--job=1")
        self.call("--job=1")
        shutil.move(self.path("d/1.result"), self.path("r"))
        fails("--take=r", "--job=1")
        self.call("--take=r", "--job=1")
        manifest = self.read("d/manifest")
        fails("--job=2", "--split=2")
        self.assertEqual(self.read("d/manifest"), manifest)
        self.do_all()
        fails("--join=1", "--out=j.all")
        for name in ("j.all", "j.all.resume"):
            if self.exists(name):
                os.remove(self.path(name))
        self.assert_joins()


if __name__ == "__main__":
    harness.main()
