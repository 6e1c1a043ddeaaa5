#!/usr/bin/env python3
"""latbox-all: folders of pieces, their jobs and results, and the joined verdict."""

import os
import random
import re
import shutil
import signal
import subprocess
import time

import complete_kills
import harness
import pieces_random
from programs import opt
from test_complete import NOTHING, SMALLEST, Case

# Points in number, a search of moments.
MANY = opt(au=[[3, 5, 7, 4, 6]], lu=[20], ru=[40], rx=[4] * 5)
BEST = complete_kills.knapsack(24, 2)


def market_split(rows: int, columns: int) -> str:
    draw = random.Random(1)
    matrix = [[draw.randrange(200) for _ in range(columns)] for _ in range(rows)]
    return opt(ag=matrix, bg=[sum(row) // 2 for row in matrix], rx=[1] * columns)


# The lattice's point lies half way between others, and rounding sent it to and fro.
HALF_WAY = opt(dt=["inf", "inf"], at=[[2, 0, 1, 0, 0, 0, 0, 1, -1], [2, 0, 1, 0, 0, 0, 1, -1, -1]], au=[[0, 1, 0, 2, 0, 2, 2, 0, 2]],
               lu=["-inf"], ru=[-4], lx=[0, 0, 0, -1, 0, 0, -3, 0, 0], rx=[1, 1, 2, 2, 1, 1, -1, 1, 2])


class PiecesCase(Case):
    def begin(self, text: str, count: int, *options: str) -> None:
        self.write("p.opt", text)
        self.options = tuple(option for option in options if not option.startswith("--proof"))
        self.pieces = pieces_random.Pieces(self.binary, self.folder)
        self.pieces.split(count, *options)

    def call(self, *options: str) -> harness.Result:
        done = subprocess.run([self.binary, "--jobs=d", *options], cwd=self.folder, capture_output=True, text=True,
                              timeout=pieces_random.LIMIT, check=False)
        return harness.Result(done.returncode, done.stdout, done.stderr)

    def do_all(self) -> None:
        while self.pieces.open():
            for number, state in self.pieces.listed():
                if state == "open":
                    self.assertEqual(self.call("--job=%d" % number).status, 0)
                elif state == "partial":
                    self.assertEqual(self.call("--job=%d" % number, "--split=2").status, 0)

    def assert_joins(self, *proof: str) -> None:
        """As the undivided run; with `proof`, its proof too."""
        mine = [option % "u" for option in proof]
        undivided = self.pieces.run("--out=u.all", *self.options, *mine, statuses=(10, 20), name="p.opt")
        theirs = [option % "j" for option in proof]
        self.assertEqual(self.pieces.run("--join=1", "--out=j.all", *theirs, statuses=(10, 20)), undivided)
        self.assertEqual(self.pieces.lines("j.all"), self.pieces.lines("u.all"))
        self.assertEqual(self.pieces.bytes("j.proof"), self.pieces.bytes("u.proof"))

    def assert_missing(self, *texts: str) -> None:
        """The join names these and writes nothing."""
        result = self.call("--join=1", "--out=j.all", "--proof=j.proof")
        self.assertEqual((result.status, result.out), (1, ""))
        for text in texts:
            self.assertRegex(result.err, text)
        self.assertFalse(self.exists("j.all") or self.exists("j.proof") or self.exists("j.all.resume"))

    def damage(self, name: str, change) -> None:
        data = self.read_bytes(name)
        self.write(name, change(data))
        self.assertNotEqual(self.read_bytes(name), data)


class JoinTest(PiecesCase):
    def test_all_points_with_the_same_proof(self) -> None:
        self.begin(MANY, 7, "--proof=1")
        self.do_all()
        self.assert_joins("--proof=%s.proof")

    def test_no_point(self) -> None:
        self.begin(opt(ag=[[4, 6, 9, 10]], bg=[23], au=[[1, 1, 1, 1]], lu=[5], ru=[9], rx=[3, 3, 3, 3]), 4)
        self.do_all()
        self.assert_joins("--proof=%s.proof")

    def test_presolve_leaves_no_pieces(self) -> None:
        self.begin(NOTHING, 4, "--proof=1")
        self.assertEqual(self.pieces.listed(), [])
        self.assert_joins("--proof=%s.proof")

    def test_the_best_and_the_ties(self) -> None:
        for options in ((), ("--ties=1",), ("--ties=1", "--count=1")):
            shutil.rmtree(self.path("d"), True)
            self.begin(BEST, 5, *options)
            self.do_all()
            self.assert_joins("--proof=%s.proof")

    def test_a_point_half_way(self) -> None:
        self.begin(HALF_WAY, 10, "--count=1")
        self.do_all()
        self.assert_joins()

    def test_all_points_of_a_program_with_targets_are_counted(self) -> None:
        self.begin(SMALLEST, 3, "--all=1", "--count=1")
        self.do_all()
        self.assert_joins()

    def test_several_threads(self) -> None:
        self.begin(market_split(6, 50), 3)
        for number in self.pieces.open():
            self.assertEqual(self.call("--job=%d" % number, "--threads=3", "--quiet=1").status, 0)
        self.assert_joins()

    def test_a_proof_without_shares_is_made_by_the_join(self) -> None:
        self.begin(MANY, 3)
        self.do_all()
        self.assert_joins("--proof=%s.proof")

    def test_shares_are_not_missed_where_no_proof_is_wanted(self) -> None:
        self.begin(MANY, 3, "--proof=1")
        for number in (1, 2, 3):
            self.call("--job=%d" % number)
        self.assertEqual(self.call("--join=1", "--out=j.all").status, 10)
        os.remove(self.path("j.all"))
        os.remove(self.path("j.all.resume"))
        self.assert_missing("piece 4 has no result")


class SplitTest(PiecesCase):
    def test_the_same_again_changes_nothing(self) -> None:
        self.begin(MANY, 4)
        before = self.read_bytes("d/manifest")
        result = self.call("--split=9", "p.opt")
        self.assertEqual((result.status, result.out), (0, "split: 4 pieces, 1 to 4\n"))
        self.assertEqual(self.read_bytes("d/manifest"), before)

    def test_another_program_or_other_options_are_refused(self) -> None:
        self.begin(BEST, 4)
        result = self.call("--split=4", "--ties=1", "p.opt")
        self.assertEqual(result.status, 2)
        self.assertIn("pieces of another program, or of other options", result.err)
        self.write("p.opt", MANY)
        self.assertEqual(self.call("--split=4", "p.opt").status, 2)

    def test_a_folder_of_somebody_else_stays(self) -> None:
        self.write("p.opt", MANY)
        os.mkdir(self.path("d"))
        self.write("d/notes", "mine")
        result = self.call("--split=4", "p.opt")
        self.assertEqual(result.status, 2)
        self.assertIn("is not empty, and no folder of pieces of this program", result.err)
        self.assertEqual(os.listdir(self.path("d")), ["notes"])

    def test_children_instead_of_the_parent(self) -> None:
        self.begin(MANY, 3)
        lines = self.read("d/manifest").splitlines()
        result = self.call("--job=2", "--split=3")
        self.assertEqual((result.status, result.out), (0, "split: 3 pieces, 4 to 6\n"))
        self.assertEqual(self.read("d/manifest").splitlines()[:len(lines)], lines)
        self.assertEqual(self.call("--job=2", "--split=2").out, "split: 3 pieces, 4 to 6\n")
        self.assertIn((2, "split"), self.pieces.listed())
        for number in (1, 3, 4, 5):
            self.call("--job=%d" % number)
        self.assert_missing("piece 6 has no result")
        self.call("--job=6")
        self.assert_joins()

    def test_the_parent_instead_of_its_children(self) -> None:
        self.begin(MANY, 3)
        self.call("--job=2", "--split=3")
        for number in (1, 2, 3, 5):
            self.call("--job=%d" % number)
        self.assertEqual(self.pieces.listed(), [(1, "done"), (2, "done"), (3, "done")])
        self.assert_joins()

    def test_a_piece_that_is_done_is_not_split(self) -> None:
        self.begin(MANY, 3)
        self.call("--job=2")
        self.assertEqual(self.call("--job=2", "--split=3").status, 2)

    def test_a_piece_past_its_time_is_split_again(self) -> None:
        self.begin(market_split(7, 60), 2)
        result = self.call("--job=1", "--job-rtime=0.05", "--quiet=1")
        self.assertEqual(result.status, 0, result.err)
        self.assertRegex(result.out, r"piece 1: open \d+ prefixes, \d+ points, \d+ nodes\n")
        self.assertEqual(self.call("--job=1", "--quiet=1").out, result.out)
        self.assertEqual(dict(self.pieces.listed())[1], "partial")
        self.assert_missing("piece 1 is not done to its end", "piece 2 has no result")
        self.call("--job=1", "--split=3")
        self.assertEqual(dict(self.pieces.listed())[1], "split")
        self.do_all()
        self.assert_joins()

    def test_an_objective_past_its_time_is_split_again(self) -> None:
        self.begin(complete_kills.knapsack(60, 1), 2)
        result = self.call("--job=1", "--job-rtime=0.3", "--quiet=1")
        self.assertRegex(result.out, r"piece 1: (open|done)")
        self.assertIn(dict(self.pieces.listed())[1], ("partial", "done"))


class KillTest(PiecesCase):
    def launch(self, *options: str) -> subprocess.Popen:
        process = subprocess.Popen([self.binary, "--jobs=d", "--quiet=1", *options], cwd=self.folder,
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        self.addCleanup(process.communicate)
        self.addCleanup(process.kill)
        return process

    def checkpoint(self) -> bytes:
        return self.read_bytes("d/1.checkpoint") if self.exists("d/1.checkpoint") else b""

    def launch_to_checkpoint(self) -> subprocess.Popen:
        """Until it has written one of its own."""
        before = self.checkpoint()
        process = self.launch("--job=1", "--checkpoint=0.05")
        end = time.monotonic() + harness.LIMIT
        while self.checkpoint() == before and process.poll() is None and time.monotonic() < end:
            time.sleep(0.01)
        return process

    def test_a_job_that_is_killed_goes_on(self) -> None:
        self.begin(market_split(7, 60), 1)
        for number in (signal.SIGKILL, signal.SIGKILL, signal.SIGTERM):
            process = self.launch_to_checkpoint()
            process.send_signal(number)
            process.communicate(timeout=pieces_random.LIMIT)
            self.assertFalse(self.exists("d/1.result"))
            self.assertTrue(self.exists("d/1.checkpoint"))
        self.assertEqual(process.returncode, 12)
        self.assertEqual(self.call("--job=1", "--quiet=1").status, 0)
        self.assertEqual(sorted(os.listdir(self.path("d"))), ["1.result", "lattice", "manifest", "program.opt"])
        self.assert_joins()

    def test_one_process_at_a_time_does_a_piece(self) -> None:
        self.begin(market_split(7, 60), 1)
        process = self.launch_to_checkpoint()
        result = self.call("--job=1")
        self.assertEqual(result.status, 1)
        self.assertIn("another process does this piece", result.err)


class DamageTest(PiecesCase):
    def setUp(self) -> None:
        super().setUp()
        self.begin(MANY, 3)
        self.do_all()

    def test_a_result_that_is_missing(self) -> None:
        os.remove(self.path("d/2.result"))
        self.assert_missing("piece 2 has no result", "1 pieces are missing")

    def test_a_result_that_is_torn_or_changed(self) -> None:
        changes = [lambda data: data[:-7], lambda data: data[:len(data) // 2],
                   lambda data: data[:40] + bytes([data[40] ^ 1]) + data[41:], lambda data: b""]
        whole = self.read_bytes("d/2.result")
        for change in changes:
            self.damage("d/2.result", change)
            self.assert_missing("2.result: ", "piece 2 has no result")
            self.write("d/2.result", whole)
        self.assert_joins()

    def test_a_damaged_result_is_made_anew(self) -> None:
        self.damage("d/2.result", lambda data: data[:-7])
        result = self.call("--job=2")
        self.assertEqual(result.status, 0)
        self.assertIn("the piece is done anew", result.err)
        self.assert_joins()

    def test_a_result_of_another_piece_or_manifest(self) -> None:
        shutil.copy(self.path("d/1.result"), self.path("d/2.result"))
        self.assert_missing("is no result of piece 2 of this manifest")
        self.write("p.opt", MANY.replace("20", "21"))
        self.call("--jobs=e")
        self.pieces.run("--jobs=e", "--split=3", name="p.opt")
        self.pieces.run("--jobs=e", "--job=2", name="--threads=1")
        shutil.copy(self.path("e/2.result"), self.path("d/2.result"))
        self.assert_missing("is no result of piece 2 of this manifest")

    def test_a_manifest_or_lattice_that_was_changed(self) -> None:
        for name in ("manifest", "lattice", "program.opt"):
            whole = self.read_bytes("d/" + name)
            self.damage("d/" + name, lambda data: data.replace(b"4", b"3", 1))
            self.assert_missing(name)
            self.write("d/" + name, whole)
        self.damage("d/manifest", lambda data: b"\n".join(data.split(b"\n")[:-2]) + b"\n")
        self.assert_missing("the pieces are not all of the search")


class TakeTest(PiecesCase):
    def setUp(self) -> None:
        super().setUp()
        self.begin(MANY, 2)
        self.call("--job=1")
        self.call("--job=2")
        self.result = self.read("d/2.result")
        os.remove(self.path("d/2.result"))

    def seal(self, text: str) -> str:
        """With the digest of what is there now: somebody who lies, not a damage."""
        body = text[:text.rindex("end ")]
        sums = [0xcbf29ce484222325, 0x84222325cbf29ce4]
        for byte in body.encode():
            sums = [(value ^ byte) * 0x100000001b3 % 2 ** 64 for value in sums]
        return body + "end %016x%016x\n" % tuple(sums)

    def assert_not_taken(self, text: str, reason: str) -> None:
        self.write("r", text)
        result = self.call("--take=r", "--job=2")
        self.assertEqual((result.status, result.out), (1, ""))
        self.assertRegex(result.err, "r: not taken: .*" + reason)
        self.assertFalse(self.exists("d/2.result"))

    def test_a_result_is_taken_once(self) -> None:
        self.write("r", self.result)
        self.assertEqual(self.seal(self.result), self.result)
        for _ in range(2):
            result = self.call("--take=r", "--job=2")
            self.assertEqual(result.status, 0, result.err)
            self.assertRegex(result.out, r"piece 2: done, \d+ points, \d+ nodes\n")
        self.assert_joins()

    def test_what_is_no_result(self) -> None:
        self.assert_not_taken(self.result[:-3], "its end is missing, or it was changed")
        self.assert_not_taken("", "its end is missing")
        self.assert_not_taken(self.read("d/1.result"), "no result of piece 2")

    def test_a_wrong_point(self) -> None:
        wrong = re.sub(r"\[ \d", "[ 9", self.result, count=1)
        self.assert_not_taken(self.seal(wrong), "point 1: ")

    def test_a_point_of_another_piece(self) -> None:
        other = re.search(r"^\[.*\n", self.read("d/1.result"), re.MULTILINE).group(0)
        wrong = re.sub(r"^\[.*\n", lambda match: other, self.result, count=1, flags=re.MULTILINE)
        self.assert_not_taken(self.seal(wrong), "point 1: a point of another piece")

    def test_a_line_that_is_not_that_of_its_point(self) -> None:
        for old, new in ((r"\] \| 0 \| \[ \] \| 0 \|", "] | 1 | [ ] | 0 |"), (r"\| (\d+) \| --", r"| x | --"), (r"^\[ ", "[  "),
                         (r"\| --(.*)", r"| --\1 | 5")):
            wrong = re.sub(old, new, self.result, count=1, flags=re.MULTILINE)
            self.assertNotEqual(wrong, self.result)
            self.assert_not_taken(self.seal(wrong), "point 1: another line than that of its point")

    def test_a_point_twice(self) -> None:
        first, second = re.findall(r"^\[.*\n", self.result, re.MULTILINE)[:2]
        # Another writing of the same values is the same point.
        self.assert_not_taken(self.seal(self.result.replace(second, first)), "point 2: stands there twice")
        self.assert_not_taken(self.seal(self.result.replace(second, re.sub(r"\[ (\d+)", r"[ 0\1", first))), "twice|point 2: ")

    def test_a_point_less(self) -> None:
        wrong = re.sub(r"^\[.*\n", "", self.result, count=1, flags=re.MULTILINE)
        self.assert_not_taken(self.seal(wrong), r"\d+ points, not \d+")

    def test_what_is_left_is_no_part_of_the_piece(self) -> None:
        wrong = self.result.replace("\npoints ", "\nopen .\npoints ")
        self.assert_not_taken(self.seal(wrong), "what is left is no part of the piece")


class BestTest(PiecesCase):
    def test_a_bound_below_the_best_point_is_refused(self) -> None:
        self.begin(BEST, 2)
        self.call("--job=1")
        self.call("--job=2")
        seal = TakeTest.seal
        result = re.sub(r"\nbound .*", "\nbound -1000000000", self.read("d/2.result"))
        result = re.sub(r"\npoints 1\n\[.*\n", "\npoints 0\n", result)
        self.write("d/2.result", seal(self, result))
        self.assert_missing("complete below -1000000000 alone")

    def test_a_point_that_is_none_is_not_the_best(self) -> None:
        self.begin(BEST, 2)
        self.write("d/best", "[ " + "1 " * BEST.count("\n") + "] | -1 |\n[ x ]\n")
        self.do_all()
        self.assert_joins()


class OptionTest(PiecesCase):
    def test_what_does_not_go_together(self) -> None:
        self.begin(MANY, 2)
        for options, text in ((("--job=1", "--out=x"), "--job and --out exclude each other"),
                              (("--join=1", "--job=1"), "--join and --job exclude each other"),
                              (("--split=2", "--first=1", "p.opt"), "--split and --first exclude each other"),
                              (("--split=0", "p.opt"), "a whole number, 1 or more, is wanted"),
                              (("--split=2", "--proof=x", "p.opt"), "0 or 1, for a folder of pieces, is wanted"),
                              (("--take=r",), "the number of a piece is wanted"),
                              (("--job=1", "p.opt"), "the folder has its program"),
                              (("--job=9",), "has no such piece"), ((), "--split, --job, --take, --pieces or --join")):
            result = self.call(*options)
            self.assertEqual((result.status, result.out), (2, ""), options)
            self.assertIn(text, result.err)

    def test_a_folder_that_is_none(self) -> None:
        self.pieces = pieces_random.Pieces(self.binary, self.folder)
        for options in (("--job=1",), ("--join=1",), ("--pieces=1",), ("--take=r", "--job=1")):
            self.assertEqual(self.call(*options).status, 2, options)


class RandomTest(harness.Case):
    in_memory = True

    def test_random_programs(self) -> None:
        binary = harness.latbox_all()
        if not os.path.exists(binary):
            self.skipTest("this build has no latbox-all")
        self.assertEqual(pieces_random.judge_range(binary, 0, 25), [])


class StaticTest(PiecesCase):
    def test_the_worker_program_needs_no_library(self) -> None:
        job = os.path.join(os.path.dirname(self.binary), "latbox-job")
        if not os.path.exists(job):
            self.skipTest("this build has no static libraries")
        with open(job, "rb") as file:
            self.assertNotIn(b"/ld-linux", file.read())
        self.begin(MANY, 2)
        for number in (1, 2):
            done = subprocess.run([job, "--jobs=d", "--job=%d" % number], cwd=self.folder, env={}, timeout=pieces_random.LIMIT,
                                  capture_output=True, check=False)
            self.assertEqual(done.returncode, 0)
        self.assert_joins()


if __name__ == "__main__":
    harness.main()
