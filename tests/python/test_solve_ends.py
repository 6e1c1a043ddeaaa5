"""How latbox-solve ends: by signals, by SIGKILL, on full disks, without engines, with engines that lie; and two at once."""

from __future__ import annotations

import fcntl
import os
import resource
import signal
import struct
import subprocess
import sys
import tempfile
import termios
from unittest import mock

import support  # noqa: F401
import harness
from solve_support import (COMMAND, FOUR_POINTS, KNAPSACK, SolveCase, engines_of, hard, hard_objective, is_alive,
                           seconds_until, stable_set)

from latbox.solving import work_folder

# Seconds that are allowed; a machine that is busy with other tests gets no more.
GONE_WITHIN = 2.0

# Runs a command, and gets SIGINT with its first import from the package.
BEGUN = """
import builtins, os, runpy, signal, sys
plain = builtins.__import__
def interrupted(name, *rest):
    if name.startswith("latbox"):
        os.kill(os.getpid(), signal.SIGINT)
    return plain(name, *rest)
builtins.__import__ = interrupted
runpy.run_path(sys.argv[1], run_name="__main__")
"""


class SignalTest(SolveCase):
    def engines(self, session: harness.Session) -> list[int]:
        """Once both run. The session's process is the front: env has become it."""
        front = session.process.pid
        harness.wait_until(lambda: len(engines_of(front)) >= 2, "both engines run")
        return engines_of(front)

    def assert_gone(self, engines: list[int]) -> None:
        seconds_until(lambda: not any(map(is_alive, engines)), GONE_WITHIN)

    def test_sigkill_leaves_no_engine(self) -> None:
        self.write("h.opt", hard())
        session = self.begin("h.opt")
        engines = self.engines(session)
        session.kill(signal.SIGKILL)
        session.wait()
        self.assert_gone(engines)
        self.assertEqual(len(self.left_over()), 1)
        # What it has left the next one clears away.
        self.write("m.lp", KNAPSACK)
        self.assertEqual(self.solve("m.lp").status, 10)
        self.assertEqual(self.left_over(), [])

    def test_the_first_signal_brings_the_answer_so_far(self) -> None:
        self.write("o.opt", hard_objective())
        for number in (signal.SIGINT, signal.SIGTERM):
            session = self.begin("--output=o.txt", "o.opt")
            engines = self.engines(session)
            session.wait_for("objective", "err")
            session.kill(number)
            self.assertEqual(session.wait(), 11)
            self.assertRegex(session.out, r"\Astatus: interrupted\nobjective: [0-9]+\n")
            self.assertIn("# status: interrupted\n", self.read("o.txt"))
            self.assert_gone(engines)
            self.assertEqual(self.left_over(), [])

    def test_a_verdict_stands_without_its_proof(self) -> None:
        """The optimum is known while the proof is being written, which takes far longer."""
        self.write("s.lp", stable_set())
        session = self.begin("--proof=p", "--json=events", "s.lp")

        def is_known() -> bool:
            events = self.read("events").splitlines() if self.exists("events") else []
            return any('"event": "bound"' in event and '"bound": 9' in event for event in events)

        harness.wait_until(is_known, "the optimum is known")
        session.kill(signal.SIGINT)
        self.assertEqual(session.wait(), 10)
        self.assertRegex(session.out, r"\Astatus: optimal\nobjective: 9\nbound: 9\n")
        self.assertIn("note: no proof is written: it was not finished when the run ended\n", session.err)
        self.assertEqual(os.listdir(self.path("p")), ["program.opt"])

    def test_without_a_point(self) -> None:
        self.write("h.opt", hard())
        session = self.begin("h.opt")
        self.engines(session)
        session.kill(signal.SIGINT)
        self.assertEqual(session.wait(), 12)
        self.assertRegex(session.out, r"\Astatus: interrupted\npoints: 0\n")

    def test_started_by_nohup_it_goes_on(self) -> None:
        """Who logs out got `interrupted`."""
        self.write("h.opt", hard())
        process = subprocess.Popen(["nohup", sys.executable, COMMAND, "--quiet", "h.opt"], cwd=self.folder, stdin=subprocess.DEVNULL,
                                   env=self.environment(), stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        self.addCleanup(process.communicate)
        self.addCleanup(process.kill)
        harness.wait_until(lambda: len(engines_of(process.pid)) >= 2, "both engines run")
        process.send_signal(signal.SIGHUP)
        with self.assertRaises(subprocess.TimeoutExpired):
            process.wait(0.5)
        process.send_signal(signal.SIGTERM)
        self.assertEqual(process.wait(harness.LIMIT), 12)

    def test_ctrl_c_while_python_begins(self) -> None:
        """It left a trace of Python's imports."""
        process = subprocess.Popen([sys.executable, "-c", BEGUN, COMMAND], cwd=self.folder, env=self.environment(), stderr=subprocess.PIPE)
        self.assertEqual((process.communicate(timeout=harness.LIMIT)[1], process.returncode), (b"", -signal.SIGINT))

    def test_no_alarm_is_left(self) -> None:
        """One that came while Python ended killed it behind its answer, with status 142."""
        self.write("m.lp", KNAPSACK)
        program = ("import signal, sys; from latbox.front.command import main; main(sys.argv[1:]); "
                   "print(signal.getitimer(signal.ITIMER_REAL)[0])")
        for arguments in (["m.lp"], ["--output=o.txt", "m.lp"], ["--check=o.txt", "m.lp"]):
            done = subprocess.run([sys.executable, "-c", program, "--time=100", *arguments], cwd=self.folder, check=True,
                                  env=self.environment(PYTHONPATH=support.PACKAGE), stdout=subprocess.PIPE, stderr=subprocess.PIPE)
            self.assertEqual(done.stdout.decode().splitlines()[-1], "0.0", arguments)

    def test_the_second_signal_ends_it_at_once(self) -> None:
        """The answer is more than a pipe holds that nobody reads: the first signal is heard and changes nothing."""
        names = ["x%d_%s" % (j, "y" * 200) for j in range(600)]
        self.write("m.lp", "minimize\n obj: %s\nbounds\n%s\ngeneral\n%s\nend\n" % (
            " + ".join(names), "\n".join(" %s = 7" % name for name in names), "\n".join(names)))
        self.write("o.txt", "mine\n")
        process = subprocess.Popen([sys.executable, COMMAND, "--quiet", "--output=o.txt", "m.lp"], cwd=self.folder,
                                   env=self.environment(), stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        self.addCleanup(process.communicate)
        self.addCleanup(process.kill)
        harness.wait_until(lambda: waiting_in(process.stdout) >= 65536, "the pipe is full")
        process.send_signal(signal.SIGINT)
        with self.assertRaises(subprocess.TimeoutExpired):
            process.wait(0.5)
        process.send_signal(signal.SIGINT)
        self.assertEqual(process.wait(harness.LIMIT), 128 + signal.SIGINT)
        self.assertEqual(self.read("o.txt"), "mine\n")
        self.assertEqual(self.left_over(), [])


def waiting_in(pipe) -> int:
    """Bytes that nobody has read."""
    return struct.unpack("i", fcntl.ioctl(pipe.fileno(), termios.FIONREAD, b"\0" * 4))[0]


class DiskTest(SolveCase):
    def setUp(self) -> None:
        super().setUp()
        self.write("m.lp", KNAPSACK)

    def test_outputs_that_cannot_be_written(self) -> None:
        for option in ("--output", "--json", "--log"):
            result = self.solve("--quiet", option + "=/dev/full", "m.lp")
            self.assertEqual((result.status, result.err),
                             (1, "latbox-solve: %s=/dev/full: No space left on device\n" % option))
            result = self.solve("--quiet", option + "=none/o", "m.lp")
            self.assertEqual((result.status, result.err),
                             (1, "latbox-solve: %s=none/o: No such file or directory\n" % option))
            self.assertEqual(self.left_over(), [])

    def test_the_answer_is_shown_before_its_file_fails(self) -> None:
        self.assertTrue(self.solve("--quiet", "--output=/dev/full", "m.lp").out.startswith("status: optimal\n"))

    def test_a_place_that_is_none_is_told_before_the_work(self) -> None:
        self.write("h.opt", hard())
        self.write("file", "")
        for option, reason in (("--output=none/o", "No such file or directory"), ("--output=work", "Is a directory"),
                               ("--output=file/o", "Not a directory"), ("--proof=file", "File exists"), ("--proof=file/p", "Not a directory")):
            result = self.solve(option, "h.opt")
            self.assertEqual((result.status, result.out, result.err), (1, "", "latbox-solve: %s: %s\n" % (option, reason)))

    def test_standard_output_is_full(self) -> None:
        result = self.solve("--quiet", "m.lp", prepare=lambda: os.dup2(os.open("/dev/full", os.O_WRONLY), 1))
        self.assertEqual((result.status, result.err), (1, "latbox-solve: standard output: No space left on device\n"))

    def test_standard_error_is_full(self) -> None:
        """Where there was a note, there was no answer."""
        self.write("n.mps", "NAME\nROWS\n N c\n L r\nCOLUMNS\n M 'MARKER' 'INTORG'\n x c -1 r 1\nRHS\n b r 7\nENDATA\n")
        with open("/dev/full", "wb") as full:
            done = subprocess.run([sys.executable, COMMAND, "--proof=p", "n.mps"], cwd=self.folder, env=self.environment(), check=False,
                                  stdout=subprocess.PIPE, stderr=full)
        self.assertEqual((done.returncode, done.stdout.decode().splitlines()[0]), (10, "status: optimal"))

    def test_no_room_for_the_engines(self) -> None:
        """Files of 4 KB at most: the points of this program are more, its text is less."""
        self.write("f.opt", "[ ] [ ] [ ] [ ] [ [ %s ] ] [ 0 ] [ 3 ] %s %s %s\n" % (
            "1 " * 40, *("[ %s]" % (value * 40) for value in ("0 ", "0 ", "1 "))))

        def limit() -> None:
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (4096, 4096))

        result = self.solve("--quiet", "--solutions=all", "f.opt", prepare=limit)
        self.assertNotEqual(result.status, 10)
        self.assertIn(result.status, (1, 11))
        self.assertNotIn("status: all", result.out)
        self.assertEqual(self.left_over(), [])

    def test_no_folder_for_the_engines(self) -> None:
        os.rmdir(self.path("work"))
        result = self.solve("--quiet", "m.lp", TMPDIR="/proc/self")
        self.assertIn(result.status, (1, 10))  # Python looks for another folder where there is one
        self.assertTrue(result.out or result.err.startswith("latbox-solve: "))


class EngineTest(SolveCase):
    def setUp(self) -> None:
        super().setUp()
        self.write("m.lp", KNAPSACK)
        self.write("f.opt", FOUR_POINTS)

    def test_no_engine_is_found(self) -> None:
        os.mkdir(self.path("paper"))
        result = self.solve_on_paper("--quiet", "m.lp")
        self.assertEqual((result.status, result.out), (1, ""))
        self.assertEqual(result.err, "latbox-solve: latbox-all is not in %s, the folder that LATBOX_BIN_DIR names\n" %
                         self.path("paper"))
        self.assertEqual(self.left_over(), [])

    LIAR = """for a; do case $a in --out=*) out=${a#--out=};; esac; done
echo '%s | 0 | [ ] | 0 | 0 | ' > "$out"
echo 'verdict: %s'
exit 10
"""

    def test_a_point_that_is_none_is_no_answer(self) -> None:
        self.paper_engine("latbox-all", self.LIAR % ("[ 3 3 3 3 3 ]", "optimum -100"))
        result = self.solve_on_paper("--quiet", "--engine=complete", "m.lp")
        self.assertEqual((result.status, result.out), (1, ""))
        self.assertEqual(result.err, "latbox-solve: a point that was found (C) is no point of the model: row cap is 75, and its "
                                     "sides are -inf and 20\n")

    def test_a_verdict_that_does_not_fit_its_point(self) -> None:
        self.paper_engine("latbox-all", self.LIAR % ("[ 0 0 0 0 0 ]", "optimum -40"))
        result = self.solve_on_paper("--quiet", "--engine=complete", "m.lp")
        self.assertEqual((result.status, result.out), (1, ""))
        self.assertEqual(result.err, "latbox-solve: latbox-all says that the optimum is 44, and the best point has 4\n")
        self.paper_engine("latbox-all", self.LIAR % ("[ 0 0 0 0 0 ]", "none"))
        result = self.solve_on_paper("--quiet", "--engine=complete", "m.lp")
        self.assertEqual(result.err, "latbox-solve: latbox-all says that there is no point, and one is known\n")
        self.paper_engine("latbox-all", self.LIAR % ("[ 8 11 81 ]", "all 4"))
        result = self.solve_on_paper("--quiet", "--engine=complete", "--solutions=all", "f.opt")
        self.assertEqual(result.err, "latbox-solve: latbox-all says that there are 4 points, and 1 are known\n")

    def test_an_engine_that_breaks(self) -> None:
        self.paper_engine("latbox-all", "echo 'latbox-all: out of memory' >&2; exit 1\n")
        result = self.solve_on_paper("--quiet", "--engine=complete", "m.lp")
        self.assertEqual((result.status, result.err),
                         (1, "latbox-solve: latbox-all failed with status 1: latbox-all: out of memory\n"))
        self.paper_engine("latbox-all", "kill -9 $$\n")
        self.assertEqual(self.solve_on_paper("--quiet", "--engine=complete", "m.lp").err,
                         "latbox-solve: latbox-all was ended by signal 9\n")

    def test_the_other_engine_goes_on(self) -> None:
        os.makedirs(self.path("paper"))
        os.symlink(harness.Settings.binary, self.path("paper/latbox"))
        self.paper_engine("latbox-all", "echo 'latbox-all: out of memory' >&2; exit 1\n")
        result = self.solve_on_paper("--time=%d" % harness.LIMIT, "f.opt")
        self.assertEqual((result.status, self.answer(result)["status"]), (10, "optimal"))

    def test_a_search_that_breaks(self) -> None:
        self.paper_engine("latbox", "echo 'out of memory' >&2; exit 3\n")
        result = self.solve_on_paper("--quiet", "--engine=search", "m.lp")
        self.assertEqual((result.status, result.err), (1, "latbox-solve: latbox failed with status 3: out of memory\n"))
        os.symlink(harness.latbox_all(), self.path("paper/latbox-all"))
        self.write("h.opt", hard_objective())
        for seconds in harness.growing(5):
            result = self.solve_on_paper("--time=%d" % seconds, "h.opt")
            if result.status != 12:
                break
        self.assertEqual(result.status, 11)
        self.assertIn("note: latbox failed with status 3: out of memory", result.err)

    def test_little_memory(self) -> None:
        if harness.address_sanitizer():
            self.skipTest("its shadow memory leaves no room for limits")
        self.write("o.opt", hard_objective())
        result = self.solve("--memory=128M", "--time=2", "o.opt")
        self.assertIn(result.status, (1, 11, 12), result.err)
        self.assertEqual(self.left_over(), [])

    def test_the_least_memory_is_enough_for_a_small_model(self) -> None:
        """However many threads there are: no more searches than have room."""
        if harness.address_sanitizer():
            self.skipTest("its shadow memory leaves no room for limits")
        for threads in (1, 2, 64):
            result = self.solve("--memory=128M", "--threads=%d" % threads, "m.lp")
            self.assertEqual((result.status, self.answer(result)["status"]), (10, "optimal"), result.err)
            self.assertNotIn("note: ", result.err)
        searches = self.solve_in_time(0.5, lambda told: bool(told.err), "--memory=128M", "--threads=64", "--engine=search", "m.lp")
        self.assertIn("search (general) x 2\n", searches.err)


class TwoRunsTest(SolveCase):
    def test_two_fronts_on_one_model(self) -> None:
        self.write("m.lp", KNAPSACK)
        sessions = [self.begin("--quiet", "m.lp") for _ in range(3)]
        for session in sessions:
            self.assertEqual(session.wait(), 10)
            self.assertIn("objective: 90\n", session.out)
        self.assertEqual(self.left_over(), [])

    def test_a_run_that_clears_away_takes_no_folder_that_is_being_made(self) -> None:
        """The other run comes between the making of the lock's file and the lock."""
        lock = fcntl.flock

        def late(file: object, operation: int) -> None:
            if not operation & fcntl.LOCK_NB:
                work_folder.clear_left_over()
            lock(file, operation)

        with mock.patch.object(fcntl, "flock", late), mock.patch.object(tempfile, "tempdir", self.path("work")):
            folder = work_folder.WorkFolder()
        self.assertTrue(os.path.isdir(folder.part("engine")))
        folder.remove()
        self.assertEqual(self.left_over(), [])

    def test_a_model_that_changes_between_runs(self) -> None:
        self.write("m.lp", KNAPSACK)
        self.assertIn("objective: 90\n", self.solve("m.lp").out)
        self.write("m.lp", KNAPSACK.replace("<= 20", "<= 10"))
        self.assertIn("objective: 54\n", self.solve("m.lp").out)
        self.assertEqual(sorted(os.listdir(self.folder)), ["m.lp", "work"])


if __name__ == "__main__":
    harness.main()
