#!/usr/bin/env python3
"""latbox-all: killed, stopped, changed and resumed; checkpoints, threads, full disks."""

import os
import random
import re
import resource
import shutil
import signal
import subprocess
import time
from typing import Callable, Optional

import checker
import complete_kills
import harness
from programs import knapsacks, opt
from test_complete import ENDLESS, NOTHING, ONE, Case
from test_faults import as_nobody

# Its search takes seconds, and its points come all the time.
LONG = complete_kills.TASKS[0].text
MANY = opt(au=[[3, 5, 7, 4, 6]], lu=[20], ru=[40], rx=[4] * 5)
# Its first points come at once, its last search takes long.
ENDLESS_BEST = complete_kills.hard_knapsack(10, 60, 1)
BEST = complete_kills.knapsack(30, 2)


def market_split(rows: int, columns: int) -> str:
    """Half of a sum of drawn coefficients each; of 10 rows and 90 columns points are hardly to be expected."""
    draw = random.Random(1)
    matrix = [[draw.randrange(500) for _ in range(columns)] for _ in range(rows)]
    return opt(ag=matrix, bg=[sum(row) // 2 for row in matrix], rx=[1] * columns)


def no_longer_than(size: int) -> Callable[[], None]:
    """A limit on the size of files stands in for a full disk."""
    return lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (size, resource.RLIM_INFINITY))


class ResumeCase(Case):
    def launch(self, *options: str) -> subprocess.Popen:
        # Python ignores the signal of a file that gets too long, and so does what it starts.
        process = subprocess.Popen([self.binary, *options, "p.opt"], cwd=self.folder, stdout=subprocess.PIPE,
                                   stderr=subprocess.PIPE, text=True, restore_signals=False)
        self.addCleanup(process.communicate)
        self.addCleanup(process.kill)
        return process

    def assert_stops_in_time(self, process: subprocess.Popen, number: int, threads: int = 1) -> tuple[int, str]:
        """Within two seconds, and one for what comes before and behind; its status and output."""
        start, lateness = time.monotonic(), harness.Lateness(process, threads)
        stopped = self.stop(process, number)
        self.assertLess(min(time.monotonic() - start, lateness.seconds()), 3)
        return stopped

    def stop(self, process: subprocess.Popen, number: int) -> tuple[int, str]:
        process.send_signal(number)
        out, _ = process.communicate(timeout=harness.LIMIT)
        return process.returncode, out

    def run_on(self, *options: str, prepare: Optional[Callable[[], None]] = None) -> harness.Result:
        """The program that is there, again."""
        done = subprocess.run([self.binary, *options, "p.opt"], cwd=self.folder, timeout=harness.LIMIT,
                              capture_output=True, text=True, check=False, preexec_fn=prepare,
                              restore_signals=prepare is None)
        return harness.Result(done.returncode, done.stdout, done.stderr)

    def assert_goes_on(self, result: harness.Result) -> None:
        self.assertIn("goes on from p.all", result.err)

    def assert_begins_anew(self, result: harness.Result) -> None:
        self.assertNotIn("goes on from", result.err)

    def points(self, name: str = "p.all") -> list[tuple]:
        """Each once."""
        found = [tuple(star.x) for star in checker.read_stars(self.read(name))]
        self.assertEqual(len(found), len(set(found)))
        program = checker.Program(self.read("p.opt"))
        self.assertTrue(all(program.violation(x) is None for x in found))
        return sorted(found)

    def all_points(self, text: str, *options: str) -> list[tuple]:
        """Of a run that nobody disturbs, whose files are gone behind it."""
        self.write("p.opt", text)
        result = self.run_on(*options, "--out=truth", "--quiet=1")
        self.assertIn(result.status, (10, 20), result.err)
        found = self.points("truth")
        for name in os.listdir(self.folder):
            if name.startswith("truth"):
                self.remove(name)
        return found

    def files(self) -> dict[str, bytes]:
        return {name: self.read_bytes(name) for name in os.listdir(self.folder)}


class KillTest(ResumeCase):
    def test_killed_and_resumed(self) -> None:
        wrong, totals = complete_kills.kill_many(self.binary, 16)
        self.assertEqual(wrong, [], totals)
        self.assertGreater(totals.resumed, 0, totals)


class EndedTest(ResumeCase):
    def test_an_ended_run_gives_its_verdict_at_once(self) -> None:
        for text, options, status in ((MANY, (), 10), (NOTHING, (), 20), (BEST, (), 10), (BEST, ("--first=1",), 11),
                                      (complete_kills.tied_knapsack(20, 1), ("--ties=1",), 10), (MANY, ("--count=1",), 10)):
            with self.subTest(options=options):
                first = self.run_all(text, *options)
                self.assertEqual(first.status, status, first.err)
                before = self.files()
                again = self.run_on(*options, "--threads=1", "--limit=3" if options == () else "--quiet=1")
                self.assertEqual((again.status, again.out, again.err), (status, first.out, ""))
                self.assertEqual(self.files(), before)

    def test_a_run_whose_only_point_is_listed_does_not_list_it_again(self) -> None:
        self.assert_verdict(self.run_all(ONE, "--limit=1"), "found 1", 11)
        self.assert_verdict(self.run_on(), "all 1", 10)
        self.assertEqual(self.points(), [(3, 1)])

    def test_another_file_in_the_place_of_the_points(self) -> None:
        """A verdict is told about its own file alone."""
        for content in (b"", b"somebody's own lines, more than there were\n" * 1000, None):
            self.assertEqual(self.run_all(BEST).status, 10)
            truth = self.points()
            self.remove("p.all")
            if content is not None:
                self.write("p.all", content)
            result = self.run_on()
            self.assertEqual(result.status, 10)
            self.assert_begins_anew(result)
            self.assertEqual(self.points(), truth)
            if content:
                self.assertEqual(self.read_bytes("p.all.old"), content)


class ChangedTest(ResumeCase):
    def test_resume_0(self) -> None:
        truth = self.all_points(MANY)
        self.run_all(MANY, "--limit=5")
        old = self.read("p.all"), self.read("p.all.resume")
        result = self.run_on("--resume=0")
        self.assert_verdict(result, "all %d" % len(truth), 10)
        self.assert_begins_anew(result)
        self.assertEqual((self.read("p.all.old"), self.read("p.all.resume.old")), old)
        self.assertEqual(self.points(), truth)

    def test_other_options_or_another_program_begin_anew(self) -> None:
        for change in (("--first=1",), ("--all=1",), ("--ties=1",), "program"):
            with self.subTest(change):
                self.run_all(complete_kills.tied_knapsack(20, 1))
                old = self.read("p.all"), self.read("p.all.resume")
                if change == "program":
                    result = self.run_all(complete_kills.tied_knapsack(20, 2))
                else:
                    result = self.run_on(*change, *(("--rtime=1",) if change == ("--all=1",) else ()))
                self.assertIn(result.status, (10, 11, 12))
                self.assert_begins_anew(result)
                self.assertEqual((self.read("p.all.old"), self.read("p.all.resume.old")), old)

    def test_a_count_has_a_checkpoint_of_its_own(self) -> None:
        truth = self.all_points(MANY)
        self.run_all(MANY, "--limit=5")
        before = self.files()
        self.assert_verdict(self.run_on("--count=1"), "all %d" % len(truth), 10)
        after = self.files()
        self.assertEqual({name: after[name] for name in before}, before)
        self.assert_goes_on(self.run_on())
        self.assertEqual(self.points(), truth)

    def test_the_limit_may_change(self) -> None:
        truth = self.all_points(MANY)
        self.assert_verdict(self.run_all(MANY, "--limit=5"), "found 5", 11)
        for limit in (10, 10, 37):
            result = self.run_on("--limit=%d" % limit)
            self.assert_verdict(result, "found %d" % limit, 11)
            self.assert_goes_on(result)
            self.assertEqual(len(self.points()), limit)
        self.assert_verdict(self.run_on("--limit=0"), "all %d" % len(truth), 10)
        self.assertEqual(self.points(), truth)

    def test_the_number_of_threads_may_change(self) -> None:
        truth = self.all_points(LONG)
        self.write("p.opt", LONG)
        for limit, threads in ((20, 1), (50, 3), (90, 2), (130, 8)):
            result = self.run_on("--limit=%d" % limit, "--threads=%d" % threads)
            self.assert_verdict(result, "found %d" % limit, 11)
        self.assert_verdict(self.run_on("--threads=2"), "all %d" % len(truth), 10)
        self.assertEqual(self.points(), truth)

    def test_all_numbers_of_threads_say_the_same(self) -> None:
        for task in (complete_kills.TASKS[0], complete_kills.TASKS[3]):
            truth = self.all_points(task.text, "--threads=1")
            for threads in (2, 3, 8):
                self.assertEqual(self.all_points(task.text, "--threads=%d" % threads), truth)


class DamageTest(ResumeCase):
    def interrupted(self, text: str = MANY) -> list[tuple]:
        """Points of the whole, of which some are listed."""
        truth = self.all_points(text)
        self.run_all(text, "--limit=9")
        return truth

    def test_a_points_file_that_is_gone_or_shortened(self) -> None:
        for content in (None, "", "half a line"):
            truth = self.interrupted()
            self.remove("p.all")
            if content is not None:
                self.write("p.all", content)
            result = self.run_on()
            self.assert_begins_anew(result)
            self.assert_verdict(result, "all %d" % len(truth), 10)
            self.assertEqual(self.points(), truth)

    def test_what_stands_behind_the_known_points_goes(self) -> None:
        truth = self.interrupted()
        with open(self.path("p.all"), "a", encoding="utf-8") as file:
            file.write("[ 0 0 ")
        result = self.run_on()
        self.assert_goes_on(result)
        self.assertEqual(self.points(), truth)

    def test_a_points_file_of_the_same_length(self) -> None:
        """Edited, or somebody's own: the run must not go on from it, nor write over it."""
        for edit in (lambda text: text.replace("[ ", "[  ", 1)[:-1], lambda text: "x" * len(text), lambda text: text + "a note\n",
                     lambda text: "\n".join(text.split("\n")[1::-1] + text.split("\n")[2:])):
            for options, truth in (("--limit=9",), self.interrupted()), ((), self.all_points(MANY)):
                self.run_all(MANY, *options, "--resume=0")
                other = edit(self.read("p.all"))
                self.write("p.all", other)
                before = self.read("p.all.resume")
                result = self.run_on()
                self.assert_begins_anew(result)
                self.assertIn("p.all is not the file that p.all.resume was written beside", result.err)
                self.assert_verdict(result, "all %d" % len(truth), 10)
                self.assertEqual(self.points(), truth)
                self.assertEqual((self.read("p.all.old"), self.read("p.all.resume.old")), (other, before))

    def test_somebodys_file_in_the_place_of_a_point_that_is_not_the_best_yet(self) -> None:
        for content in ("somebody's\n", "somebody's"):
            self.write("p.opt", ENDLESS_BEST)
            process = self.launch()
            harness.wait_until(lambda: self.exists("p.all") and self.read("p.all"), "a point")
            self.assertEqual(self.stop(process, signal.SIGTERM)[0], 11)
            self.write("p.all", content)
            result = self.run_on("--rtime=0.5")
            self.assertIn(result.status, (11, 12), result.err)
            self.assert_begins_anew(result)
            self.assertEqual(self.read("p.all.old"), content)
            self.remove("p.all")

    def test_a_damaged_checkpoint_is_kept_and_not_taken(self) -> None:
        for damage in (lambda data: data[:-7], lambda data: data[:len(data) // 2], lambda data: b"", lambda data: b"\0" * 9,
                       lambda data: data.replace(b"points 9", b"points 8")):
            truth = self.interrupted()
            damaged = damage(self.read_bytes("p.all.resume"))
            self.write("p.all.resume", damaged)
            listed = self.read("p.all")
            result = self.run_on()
            self.assert_begins_anew(result)
            self.assertEqual(self.points(), truth)
            self.assertEqual((self.read_bytes("p.all.resume.old"), self.read("p.all.old")), (damaged, listed))
            for name in ("p.all", "p.all.resume"):
                self.remove(name)

    def test_a_run_killed_at_its_beginning_does_not_lose_what_is_kept(self) -> None:
        self.write("p.all", "somebody's\n")
        # Its reduction takes minutes.
        self.write("p.opt", knapsacks(30, 200, 100, 1))
        for _ in range(2):
            process = self.launch()
            self.assertIn(" 0 nodes", process.stderr.readline())
            self.stop(process, signal.SIGKILL)
            self.assertEqual((self.read("p.all"), self.read("p.all.old")), ("", "somebody's\n"))


class StopTest(ResumeCase):
    def test_sigterm_writes_a_checkpoint(self) -> None:
        for text in (LONG, complete_kills.hard_knapsack(5, 40, 1)):
            truth = self.all_points(text)
            self.write("p.opt", text)
            process = self.launch("--threads=2")
            harness.wait_until(lambda: self.exists("p.all.resume"), "the search")
            status, out = self.stop(process, signal.SIGTERM)
            self.assertIn(status, (11, 12), out)
            result = self.run_on()
            self.assertEqual(result.status, 10)
            self.assert_goes_on(result)
            self.assertEqual(self.points(), truth)
            for name in ("p.all", "p.all.resume"):
                self.remove(name)

    def test_a_run_that_is_stopped_at_once_loses_nothing(self) -> None:
        """It was stopped before it had come to where the one before was, and wrote that it knew nothing."""
        truth = self.all_points(LONG)
        self.write("p.opt", LONG)
        self.assertEqual(self.run_on("--limit=50", "--threads=1").status, 11)
        before = 50
        for _ in range(3):
            result = self.run_on("--rtime=0.000001", "--threads=1")
            self.assertEqual(result.status, 11, result.err)
            self.assert_goes_on(result)
            self.assertGreaterEqual(len(self.points()), before)
            before = len(self.points())
        self.assertEqual(self.run_on().status, 10)
        self.assertEqual(self.points(), truth)

    def test_the_time_may_be_up_again_and_again(self) -> None:
        truth = self.all_points(LONG)
        self.write("p.opt", LONG)
        seconds = 0.1
        while self.run_on("--rtime=%g" % seconds, "--threads=2").status != 10:
            seconds *= 1.3
        self.assertEqual(self.points(), truth)

    def test_two_seconds_also_in_a_reduction(self) -> None:
        # Takes minutes.
        self.write("p.opt", knapsacks(30, 200, 100, 1))
        process = self.launch("--quiet=1")
        harness.wait_until(lambda: self.exists("p.all"), "the reduction")
        self.assertEqual(self.assert_stops_in_time(process, signal.SIGTERM), (12, "verdict: unknown\n"))

    def test_two_seconds_in_a_search(self) -> None:
        self.write("p.opt", ENDLESS)
        process = self.launch("--quiet=1", "--threads=2", "--checkpoint=0.2")
        harness.wait_until(lambda: self.exists("p.all") and self.read("p.all"), "the first points")
        status, out = self.assert_stops_in_time(process, signal.SIGTERM, threads=2)
        self.assertEqual((status, out), (11, "verdict: found %d\n" % self.read("p.all").count("\n")))


class FirstTest(ResumeCase):
    """The passes for a first point, of a program that has none for as long as a test takes."""

    def setUp(self) -> None:
        super().setUp()
        self.write("p.opt", market_split(10, 90))

    def passes(self) -> tuple[int, int]:
        """What a checkpoint says: the stages and trials that are over, and the passes of the open stage."""
        text = self.read("p.all.resume") if self.exists("p.all.resume") else ""
        made = re.search(r"^piece 1 (\d+) ", text, re.MULTILINE)
        return text.count("\nsearch "), int(made.group(1)) if made else 0

    def test_passes_that_are_made_are_not_made_again(self) -> None:
        before = (0, 0)
        for options in (("--threads=1",), ("--threads=2",), ("--threads=1", "--seed=5")):
            process = self.launch("--first=1", "--checkpoint=0.05", *options)
            harness.wait_until(lambda: self.passes() > before, "another pass")
            self.assertEqual(self.stop(process, signal.SIGKILL)[0], -signal.SIGKILL)
            self.assertGreater(self.passes(), before)
            before = self.passes()
        result = self.run_on("--first=1", "--rtime=0.5")
        self.assert_verdict(result, "unknown", 12)
        self.assert_goes_on(result)
        self.assertGreaterEqual(self.passes(), before)

    def test_two_seconds_in_passes(self) -> None:
        for threads in (1, 2):
            before = self.passes()
            process = self.launch("--first=1", "--checkpoint=0.05", "--quiet=1", "--threads=%d" % threads)
            harness.wait_until(lambda: self.passes() > before, "a pass")
            self.assertEqual(self.assert_stops_in_time(process, signal.SIGINT, threads), (12, "verdict: unknown\n"))


class DiskTest(ResumeCase):
    def test_a_full_disk_for_the_points(self) -> None:
        truth = self.all_points(LONG)
        self.write("p.opt", LONG)
        self.run_on("--limit=40")
        size = len(self.read("p.all.resume"))
        result = self.run_on("--quiet=1", "--checkpoint=0.05", prepare=no_longer_than(size + 3000))
        self.assertEqual((result.status, result.out), (1, ""))
        self.assertRegex(result.err, r"^latbox-all: p\.all[a-z.]*: File too large\n$")
        result = self.run_on()
        self.assert_goes_on(result)
        self.assert_verdict(result, "all %d" % len(truth), 10)
        self.assertEqual(self.points(), truth)

    def test_a_full_disk_noticed_between_the_points(self) -> None:
        """By the thread beside the search, which empties the buffer behind the first point."""
        self.write("p.opt", LONG)
        for threads in ("1", "2"):
            result = self.run_on("--quiet=1", "--checkpoint=0", "--resume=0", "--threads=" + threads,
                                 prepare=no_longer_than(10))
            self.assertEqual((result.status, result.out), (1, ""))
            self.assertRegex(result.err, r"^latbox-all: p\.all[a-z.]*: File too large\n$")

    def test_a_full_disk_for_the_checkpoint_alone(self) -> None:
        """It fills up during the search, whose two threads the failure must end too."""
        self.write("p.opt", ENDLESS)
        process = self.launch("--count=1", "--quiet=1", "--threads=2", "--checkpoint=0.05")
        harness.wait_until(lambda: self.exists("p.all.count.resume"), "a checkpoint")
        resource.prlimit(process.pid, resource.RLIMIT_FSIZE, (10, resource.RLIM_INFINITY))
        out, err = process.communicate(timeout=harness.LIMIT)
        self.assertEqual((process.returncode, out), (1, ""))
        self.assertEqual(err, "latbox-all: p.all.count.resume.tmp: File too large\n")
        for seconds in harness.growing(0.1):
            result = self.run_on("--count=1", "--rtime=%g" % seconds)
            self.assertIn("goes on from p.all.count.resume", result.err)
            if result.status != 12:
                break
        self.assertEqual(result.status, 11)

    def test_a_read_only_folder(self) -> None:
        # Where another user gets to.
        binary = self.path("latbox-all")
        shutil.copy(self.binary, binary)
        os.chmod(binary, 0o755)
        self.write("p.opt", MANY)
        os.chmod(self.folder, 0o555)
        self.addCleanup(os.chmod, self.folder, 0o755)
        self.binary = binary
        result = self.run_on("--quiet=1", prepare=as_nobody)
        self.assertEqual((result.status, result.out, result.err), (1, "", "latbox-all: p.all: Permission denied\n"))
        self.assertFalse(self.exists("p.all"))


if __name__ == "__main__":
    harness.main()
