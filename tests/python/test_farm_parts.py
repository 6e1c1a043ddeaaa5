"""The parts of latbox-farm that need no engine: the folder, the ledger, whom it believes, answers of latbox-all, the line of progress."""

from __future__ import annotations

import io
import os
import signal
import stat
import subprocess
import sys
import unittest
import unittest.mock
from fractions import Fraction

import support
import harness

from latbox.errors import EngineError, LatboxError, UsageError
from latbox.farm import pieces
from latbox.farm.desk import Answer
from latbox.farm.folder import Folder
from latbox.farm.ledger import Ledger
from latbox.farm.manager import Manager
from latbox.farm.progress import Display, State, parts
from latbox.farm.trust import Trust
from latbox.farm.verifying import Verifying, claims

MANIFEST = "latbox-all pieces 1\nhead 0f\npiece 1 - 100 3 aa\npiece 2 - 200 4 bb\n"


class FolderTest(harness.Case):
    def entered(self) -> Folder:
        folder = Folder(self.path("jobs"))
        folder.enter()
        return folder

    def test_a_password_is_drawn_once_and_nobody_else_reads_it(self) -> None:
        path = self.entered().password()
        with open(path, encoding="ascii") as file:
            drawn = file.read()
        self.assertRegex(drawn, r"\A[0-9a-f]{32}\n\Z")
        self.assertEqual(stat.S_IMODE(os.stat(path).st_mode), 0o600)
        self.assertEqual(Folder(self.path("jobs")).password(), path)
        with open(path, encoding="ascii") as file:
            self.assertEqual(file.read(), drawn)
        os.mkdir(self.path("other"))
        other = Folder(self.path("other"))
        other.enter()
        with open(other.password(), encoding="ascii") as file:
            self.assertNotEqual(file.read(), drawn)

    def test_the_port_is_kept(self) -> None:
        folder = self.entered()
        self.assertIsNone(folder.port())
        folder.keep_port(9124)
        self.assertEqual(Folder(self.path("jobs")).port(), 9124)

    def test_one_farm_at_a_time(self) -> None:
        self.entered()
        with self.assertRaisesRegex(LatboxError, "another latbox-farm is at work there"):
            self.entered()

    def test_a_folder_of_somebody_else(self) -> None:
        self.write("file", "mine")
        os.mkdir(self.path("notes"))
        self.write("notes/mine", "x")
        for name, reason in (("file", "a folder cannot be made there: Not a directory"), ("notes", "it is not empty, and no folder of pieces"),
                             ("file/deeper", "a folder cannot be made there: Not a directory")):
            with self.assertRaises(UsageError) as caught:
                Folder(self.path(name)).enter()
            self.assertEqual(str(caught.exception), "--jobs=%s: %s" % (self.path(name), reason))
        self.assertEqual(os.listdir(self.path("notes")), ["mine"])

    def test_a_manifest_that_is_damaged_is_read_all_the_same(self) -> None:
        folder = self.entered()
        with open(self.path("jobs/manifest"), "wb") as file:
            file.write(b"x\xff\npiece 1 - 2 \xe9 aa\n")
        folder.read_manifest()
        with open(self.path("jobs/manifest"), "ab") as file:
            file.write(b"piece 2 - 2 . bb\npiece 3")
        folder.read_manifest()
        self.assertTrue(folder.manifest_of(2).endswith("piece 2 - 2 . bb\n"))

    def test_the_manifest_for_one_piece(self) -> None:
        folder = self.entered()
        self.write("jobs/manifest", MANIFEST)
        folder.read_manifest()
        self.assertEqual(folder.manifest_of(2), "latbox-all pieces 1\nhead 0f\npiece 2 - 200 4 bb\n")
        with open(self.path("jobs/manifest"), "a", encoding="ascii") as file:
            file.write("piece 3 2 50 4,1 cc\npiece 4 2 70 4,2")
        folder.read_manifest()
        self.assertEqual(folder.manifest_of(3), "latbox-all pieces 1\nhead 0f\npiece 3 2 50 4,1 cc\n")
        with open(self.path("jobs/manifest"), "a", encoding="ascii") as file:
            file.write(" dd\n")
        folder.read_manifest()
        self.assertEqual(folder.manifest_of(4), "latbox-all pieces 1\nhead 0f\npiece 4 2 70 4,2 dd\n")

    def test_who_goes_on_asks_for_the_same(self) -> None:
        folder = self.entered()
        self.write("p.opt", "a")
        folder.hold_to(["--all=1"], self.path("p.opt"))
        self.write("jobs/manifest", MANIFEST)
        self.write("jobs/program.opt", "a")
        folder.hold_to(["--all=1"], self.path("p.opt"))
        with self.assertRaisesRegex(UsageError, r"was cut by the options --all=1; --jobs=DIR names another folder\Z"):
            folder.hold_to(["--ties=1"], self.path("p.opt"))
        self.write("jobs/manager/search", "")
        with self.assertRaisesRegex(UsageError, r"was cut by no options of the search; "):
            folder.hold_to(["--ties=1"], self.path("p.opt"))
        self.write("p.opt", "b")
        with self.assertRaisesRegex(UsageError, r"holds the pieces of another program; --jobs=DIR names another folder\Z"):
            folder.hold_to(["--all=1"], self.path("p.opt"))

    def test_a_folder_that_no_farm_has_cut(self) -> None:
        folder = self.entered()
        self.write("p.opt", "a")
        self.write("jobs/program.opt", "a")
        self.write("jobs/manifest", MANIFEST.replace("head", "options all=0 ties=1 count=0 proof=0\nhead"))
        with self.assertRaisesRegex(UsageError, r"was cut by the options --ties=1; "):
            folder.hold_to([], self.path("p.opt"))
        folder.hold_to(["--ties=1"], self.path("p.opt"))
        folder.hold_to(["--ties=1", "--proof=1"], self.path("p.opt"))

    def test_what_came_in_before_a_kill(self) -> None:
        folder = self.entered()
        first = folder.arrival(7)
        self.write(first, "x")
        again = Folder(self.path("jobs"))
        self.assertEqual(again.left_arrivals(), [(7, first)])
        self.assertNotEqual(again.arrival(7), first)


class LedgerTest(unittest.TestCase):
    def test_the_largest_goes_out_first(self) -> None:
        ledger = Ledger()
        for piece, estimate in ((1, 10.0), (2, 30.0), (3, 20.0)):
            ledger.add(piece, estimate)
        self.assertEqual([ledger.next() for _ in range(4)], [2, 3, 1, None])
        self.assertEqual(ledger.open, 3)

    def test_shares(self) -> None:
        ledger = Ledger()
        ledger.add(1, 75.0)
        ledger.add(2, 25.0)
        ledger.finish(2, 5)
        self.assertEqual((ledger.share, ledger.points, ledger.done, ledger.open), (0.25, 5, 1, 1))
        # Of 75 nodes 30 are left for two others.
        ledger.split(1, 2, 30.0)
        ledger.add(3, 20.0)
        ledger.add(4, 10.0)
        self.assertEqual((ledger.share, ledger.points, ledger.open), (0.7, 7, 2))
        ledger.finish(3, 0)
        ledger.finish(4, 0)
        self.assertEqual((ledger.share, ledger.open), (1.0, 0))

    def test_what_fails_goes_out_again_and_is_counted(self) -> None:
        ledger = Ledger()
        ledger.add(1, 10.0)
        for times in (1, 2, 3):
            self.assertEqual(ledger.next(), 1)
            self.assertEqual(ledger.fail(1), times)

    def test_what_is_not_believed_after_all_is_open_again(self) -> None:
        ledger = Ledger()
        ledger.add(1, 10.0)
        ledger.add(2, 10.0)
        ledger.next()
        ledger.finish(1, 4)
        ledger.reopen(1)
        ledger.fail(1)
        self.assertEqual((ledger.points, ledger.share, ledger.open), (0, 0.0, 2))
        self.assertEqual({ledger.next(), ledger.next()}, {1, 2})

    def test_what_is_done_meanwhile_does_not_go_out(self) -> None:
        ledger = Ledger()
        ledger.add(1, 10.0)
        ledger.finish(1, 0)
        self.assertIsNone(ledger.next())
        self.assertFalse(ledger.is_open(1))


class TrustTest(unittest.TestCase):
    def test_three_refusals_and_more_than_were_taken(self) -> None:
        trust = Trust()
        self.assertEqual([trust.refuse("a") for _ in range(7)], [0, 0, 60, 0, 0, 240, 0])
        for _ in range(3):
            trust.take("b")
        self.assertEqual([trust.refuse("b") for _ in range(4)], [0, 0, 0, 60])


class VerifyingTest(unittest.TestCase):
    def test_shares(self) -> None:
        for share, least, most in ((Fraction(0), 0, 0), (Fraction(1), 1000, 1000), (Fraction(1, 2), 300, 700)):
            verifying = Verifying(share)
            self.assertTrue(least <= sum(verifying.wants(piece) for piece in range(1000)) <= most)

    def test_what_two_disagree_about_is_verified_again(self) -> None:
        verifying = Verifying(Fraction(0))
        verifying.begin(3, "a")
        self.assertEqual((verifying.open, verifying.first_worker(3), verifying.wants(3)), (1, "a", False))
        verifying.disagree(3)
        self.assertEqual((verifying.open, verifying.wants(3), verifying.wants(4)), (0, True, False))
        verifying.begin(3, "b")
        verifying.agree(3)
        self.assertEqual((verifying.open, verifying.wants(3)), (0, False))

    def test_second_results_wait_for_another_worker(self) -> None:
        verifying = Verifying(Fraction(0))
        verifying.begin(3, "a")
        verifying.begin(4, "b")
        self.assertEqual(verifying.release("a"), [4])
        self.assertEqual(verifying.release("a"), [])
        verifying.hold(4)
        self.assertEqual(verifying.release(None), [3, 4])

    def test_claims(self) -> None:
        """Times, options and order make no difference; points and nodes do."""
        result = "nodes 3\npoints 2\n[ 1 ] | 0 | [ ] | 0 | 7 | --a\n[ 2 ] | 0 | [ ] | 0 | 7 | --a\nend 12\n"
        other = "nodes 3\npoints 2\n[ 2 ] | 0 | [ ] | 0 | 9 | --b\n[ 1 ] | 0 | [ ] | 0 | 8 | --b\nend 34\n"
        self.assertEqual(claims(result), claims(other))
        for change in (("nodes 3", "nodes 4"), ("[ 1 ]", "[ 3 ]"), ("points 2", "points 1")):
            self.assertNotEqual(claims(result), claims(result.replace(*change)))


class AnswerTest(unittest.TestCase):
    def test_listing(self) -> None:
        listed = pieces.listing(Answer(0, ["1 open 12.5 0 0", "2 done 3e+09 4 77", "3 partial 5 0 9", "4 split 7 0 0"], ""))
        self.assertEqual(listed, [pieces.Standing(1, "open", 12.5, 0, 0), pieces.Standing(2, "done", 3e9, 4, 77),
                                  pieces.Standing(3, "partial", 5.0, 0, 9), pieces.Standing(4, "split", 7.0, 0, 0)])

    def test_cut(self) -> None:
        self.assertEqual(pieces.cut(Answer(0, ["split: 3 pieces, 5 to 7"], "")), range(5, 8))
        self.assertEqual(len(pieces.cut(Answer(0, ["split: 0 pieces"], ""))), 0)
        with self.assertRaisesRegex(UsageError, r"\Ap.opt:1:3: a number\Z"):
            pieces.cut(Answer(2, [], "latbox-all: p.opt:1:3: a number"))

    def test_taken(self) -> None:
        for text, taken in (("piece 3: done, 4 points, 77 nodes", (0, 4, 77, None)),
                            ("piece 3: open 2 prefixes, 1 points, 5 nodes", (2, 1, 5, None)),
                            ("piece 3: done, 1 points, 5 nodes best -3:1/2 0", (0, 1, 5, "-3:1/2 0"))):
            self.assertEqual(pieces.taken(Answer(0, [text], "")), pieces.Taken(*taken))
        self.assertIsNone(pieces.taken(Answer(1, [], "latbox-all: r: not taken: it is torn")))
        with self.assertRaisesRegex(EngineError, "No space left"):
            pieces.taken(Answer(1, [], "latbox-all: 3.result.tmp: No space left on device"))

    def test_what_is_no_answer(self) -> None:
        for read, answer in ((pieces.taken, Answer(0, [], "")), (pieces.taken, Answer(3, [], "x")), (pieces.listing, Answer(1, [], "")),
                             (pieces.listing, Answer(0, ["1 lost 3 0 0"], "")), (pieces.cut, Answer(0, ["verdict: none"], "")),
                             (pieces.cut, Answer(1, [], "disk"))):
            with self.assertRaises(EngineError):
                read(answer)


class ProgressTest(unittest.TestCase):
    def test_the_line(self) -> None:
        self.assertEqual("  ".join(parts(State(3, 7, 1, 16, 0.3125, 5, "12"), 61, 140.0)),
                         "1:01  3 pieces done, 7 open  1 worker, 16 cores  31.2 % done  5 points  best 12  about 2:20 left")
        self.assertEqual("  ".join(parts(State(1, 0, 0, 0, 1.0, 1), 2.0, 0.0)), "2.0 s  1 piece done, 0 open  0 workers, 0 cores  100 % done  1 point")

    def test_no_terminal_no_flood(self) -> None:
        stream = io.StringIO()
        display = Display(stream, False)
        for _ in range(100):
            display.tell(State(0, 1, 0, 0, 0.0, 0))
        self.assertEqual(len(stream.getvalue().splitlines()), 1)

    def test_quiet(self) -> None:
        stream = io.StringIO()
        display = Display(stream, True)
        display.tell(State(0, 1, 0, 0, 0.0, 0), at_once=True)
        display.note("x")
        self.assertEqual(stream.getvalue(), "")


class ManagerTest(harness.Case):
    def test_the_time_of_a_job(self) -> None:
        """In the form that latbox-all reads, which knows no exponents and takes 0 for no limit; twice as long for what was cut."""
        with unittest.mock.patch.dict(os.environ, {"LATBOX_BIN_DIR": os.path.dirname(harness.Settings.binary)}):
            os.mkdir(self.path("jobs"))
            for given, told in ((20.0, "20.000"), (30 * 86400.0, "2592000.000"), (1e-7, "0.001")):
                folder = Folder(self.path("jobs"))
                self.write("jobs/manifest", MANIFEST)
                folder.read_manifest()
                manager = Manager(folder, unittest.mock.Mock(), Display(io.StringIO(), True), given, Fraction(0))
                manager._ledger.add(1, 5.0)
                self.assertTrue(manager._task(1).command.endswith(" --job-rtime=" + told))
                manager._replace(1, 0, [pieces.Standing(2, pieces.OPEN, 4.0, 0, 0)])
                self.assertEqual(manager._time_for(2), max(0.001, 2 * given))


class CommandTest(harness.Case):
    """By a Python that need not know the engine."""

    def farm(self, *arguments: str, python: tuple[str, ...] = (sys.executable,)) -> harness.Result:
        done = subprocess.run([*python, os.path.join(support.PACKAGE, "bin", "latbox-farm"), *arguments], cwd=self.folder,
                              timeout=harness.LIMIT, capture_output=True, text=True, check=False,
                              env={**os.environ, "PYTHONDONTWRITEBYTECODE": "1", "LATBOX_BIN_DIR": os.path.dirname(harness.Settings.binary)})
        return harness.Result(done.returncode, done.stdout, done.stderr)

    def test_the_module_is_missing(self) -> None:
        """-S: without the folder of the packages."""
        self.write("p.opt", "x")
        result = self.farm("p.opt", python=(sys.executable, "-S"))
        self.assertEqual((result.status, result.out, result.err.splitlines()[-1]),
                         (1, "", "latbox-farm: the module work_queue is missing: Debian has it in the package python3-workqueue, for "
                                 "/usr/bin/python3, and the workers in coop-computing-tools"))

    def test_no_program(self) -> None:
        result = self.farm("none.opt")
        self.assertEqual((result.status, result.err), (2, "latbox-farm: none.opt: No such file or directory\n"))
        self.assertEqual(os.listdir(self.folder), [])

    def test_no_folder_for_what_comes_out(self) -> None:
        self.write("p.opt", "x")
        for option in ("--out=no/p.all", "--proof=no/p.proof"):
            result = self.farm(option, "p.opt")
            self.assertEqual((result.status, result.err), (2, "latbox-farm: %s: there is no such folder\n" % option))
        self.assertEqual(os.listdir(self.folder), ["p.opt"])

    def test_ctrl_c_while_it_starts(self) -> None:
        """A module that it imports says so, and takes its time."""
        self.write("secrets.py", "import sys, time\nprint('here', file=sys.stderr, flush=True)\ntime.sleep(100)\n")
        with subprocess.Popen([sys.executable, os.path.join(support.PACKAGE, "bin", "latbox-farm"), "--help"], cwd=self.folder,
                              stderr=subprocess.PIPE, text=True, env={**os.environ, "PYTHONPATH": self.folder}) as started:
            self.addCleanup(started.kill)
            assert started.stderr is not None
            self.assertEqual(started.stderr.readline(), "here\n")
            started.send_signal(signal.SIGINT)
            self.assertEqual(started.stderr.read(), "")
        self.assertEqual(started.returncode, -signal.SIGINT)

    def test_help(self) -> None:
        result = self.farm("--help")
        self.assertEqual((result.status, result.err), (0, ""))
        self.assertTrue(result.out.startswith("usage: latbox-farm [options] FILE.opt\n"))


if __name__ == "__main__":
    harness.main()
