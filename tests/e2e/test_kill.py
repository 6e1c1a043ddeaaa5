"""Runs that are ended from outside at random moments lose nothing that was recorded, and leave no half file.

The standing test uses a few moments; by hand, more of them with LATBOX_KILLS=200 (LATBOX_KILL_SEED changes them).
"""

import os
import random
import re
import signal
import time

import checker
import harness
import programs

KILLS = int(os.environ.get("LATBOX_KILLS", "45"))
SEED = int(os.environ.get("LATBOX_KILL_SEED", "1"))

LONGEST = 0.15  # seconds from the banner to the signal; a run has loaded, reduced and iterated by then

LAT_END = "// B -- l, r -- c, R -- lx, rx, fx -- tu, At, dt, lrtu\n"

LINE = re.compile(r"\[ (\S+ )+\] \| \S+ \| \[ (\S+ )*\] \| \S+ \| -?\d+ \| --help=0 .* --tnorm=-inf \| 2\.2\.2\n")

REPORT = re.compile(r"\nGot signal: (Interrupt|Terminated)\n\n\*{26} Terminated \*{26}\n"
                    r"(|[^*]*\nThe following file contains the results: \n\n\tprog\.sol\n|\nT\(bestTarget\)[^*]*)"
                    r"\nTotal iterations: \d+\nTotal running time: \d+ sec\(s\) -- Program end\n\Z")


class KillTest(harness.Case):
    def setUp(self):
        super().setUp()
        self.random = random.Random(SEED)
        self.moments = []

    def run_until_signal(self, number):
        """A run whose parameters change all the time, so that it has new lines to write in every iteration."""
        if self.random.random() < 0.4 and self.exists("prog.lat"):
            self.age("prog.lat", 1000)
        session = self.start("--sol=0", "--rtime=60", "prog.opt")
        # The two signals are held back from the banner on; one that comes earlier ends a process that has begun nothing.
        session.wait_for("PID: ")
        moment = self.random.uniform(0, LONGEST)
        end = time.monotonic() + moment
        while time.monotonic() < end:
            session.send("SET beta=%d\n" % self.random.randint(2, 10**6))
            time.sleep(0.001)
        session.kill(number)
        status = session.wait()
        self.moments.append(moment)
        return session, status

    def assert_whole_report(self, session, status):
        self.assertEqual(status, 0)
        self.assertEqual(session.err, "")
        self.assertRegex(session.out, REPORT)
        self.assertEqual(session.out.count("Got signal: "), 1)
        self.assertEqual(self.leftovers(), [])

    def assert_whole_files(self):
        if self.exists("prog.lat"):
            self.assertTrue(self.read("prog.lat").endswith(LAT_END))
        if self.exists("prog.sol"):
            lines = self.read("prog.sol").splitlines(True)
            self.assertTrue(lines, "an empty file")
            for line in lines:
                self.assertRegex(line, LINE)

    def leftovers(self):
        return sorted(set(os.listdir(self.folder)) - {"prog.opt", "prog.lat", "prog.sol"})

    def points(self):
        return {tuple(star.x) for star in self.stars()}

    def best(self):
        return min((star.target_norm for star in self.stars()), default=checker.INF)

    def kill_again_and_again(self, number, state, is_kept):
        """After each signal the files are whole, the next run starts, and `state` of the .sol file is kept."""
        kept = state()
        for _ in range(max(KILLS // 6, 1)):
            session, status = self.run_until_signal(number)
            if number == signal.SIGKILL:
                self.assertEqual(status, -signal.SIGKILL)
                self.assertEqual(session.err, "")
            else:
                self.assert_whole_report(session, status)
            session.close()
            self.assert_whole_files()
            self.assertTrue(is_kept(kept, state()), "lost by the signal: %s" % (kept,))
            kept = state()
            self.assert_ends_well(self.run_solver("--sol=0", "--iters=2", "prog.opt"))
            self.assertTrue(is_kept(kept, state()), "lost by the next run: %s" % (kept,))
            kept = state()
        self.assertNotIn(kept, (set(), checker.INF))

    def kill_while_solutions_come(self, number):
        self.write("prog.opt", programs.ENDLESS)
        self.kill_again_and_again(number, self.points, lambda old, new: old <= new)

    # A better target regenerates the lattice, so that both files are written on the way.
    def kill_while_targets_come(self, number):
        self.write("prog.opt", programs.LONG_TARGET)
        self.kill_again_and_again(number, self.best, lambda old, new: new <= old)

    def test_terminated(self):
        self.kill_while_solutions_come(signal.SIGTERM)

    def test_interrupted(self):
        self.kill_while_solutions_come(signal.SIGINT)

    def test_killed(self):
        self.kill_while_solutions_come(signal.SIGKILL)

    def test_terminated_with_a_target(self):
        self.kill_while_targets_come(signal.SIGTERM)

    def test_interrupted_with_a_target(self):
        self.kill_while_targets_come(signal.SIGINT)

    def test_killed_with_a_target(self):
        self.kill_while_targets_come(signal.SIGKILL)


if __name__ == "__main__":
    harness.main()
