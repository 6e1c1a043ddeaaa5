"""--rtime ends the run within two seconds of its time, whatever the solver is doing then.

What is measured is the running time that the process itself reports.
"""

import re

import harness
import programs

LATENESS = 2


class TimeLimitTest(harness.Case):
    def assert_ends_in_time(self, session, seconds):
        self.assertEqual(session.wait(), 0)
        self.assertEqual(session.err, "")
        self.assertEqual(session.out.count("\nGot signal: Terminated\n"), 1)
        last = re.search(r"\nTotal running time: (\d+) sec\(s\) -- Program end\n\Z", session.out)
        self.assertTrue(last, session.out[-500:])
        self.assertGreaterEqual(int(last.group(1)), seconds)
        self.assertLessEqual(int(last.group(1)), seconds + LATENESS)

    def run_into_limit(self, seconds, phase, *options):
        """The progress line at which the time limit came must be that of the phase."""
        session = self.start("--verb=2", "--sol=0", "--rtime=%d" % seconds, *options, "prog.opt")
        self.assert_ends_in_time(session, seconds)
        progress = session.out[:session.out.index("\nGot signal: ")]
        self.assertRegex(progress.rstrip().rsplit("\n", 1)[-1], phase)
        return progress

    def test_reduction(self):
        self.write("prog.opt", programs.knapsacks(4, 400, 4, 1))
        progress = self.run_into_limit(2, r"\|-> BKZ enumeration \( beta = 2, deep = 0 \)", "--beta=2")
        self.assertTrue(in_standard_precision(progress))

    def test_reduction_in_extended_precision(self):
        self.write("prog.opt", programs.knapsacks(4, 200, 8, 1))
        progress = self.run_into_limit(2, r"\|-> BKZ enumeration \( beta = 2, deep = 0 \)", "--beta=2")
        self.assertFalse(in_standard_precision(progress))

    def test_enumeration(self):
        self.write("prog.opt", programs.market_split(7, 60, 1))
        progress = self.run_into_limit(1, r"\|-> BKZ enumeration \( beta = 54, deep = 0 \)", "--eprune=0", "--beta=60")
        self.assertTrue(in_standard_precision(progress))

    def test_enumeration_in_extended_precision(self):
        self.write("prog.opt", programs.market_split(7, 60, 1))
        progress = self.run_into_limit(2, r"\|-> BKZ enumeration \( beta = 54, deep = 0 \)", "--eprune=0", "--beta=60",
                                       "--snorm=1/3")
        self.assertNotIn("Using standard precision", progress)

    def test_preparation_in_extended_precision(self):
        # The kernel of equations with long coefficients: the lattice is not there when the time is up.
        self.write("prog.opt", programs.equations(60, 120, 40, 1))
        self.run_into_limit(1, r"\|    \|    \|->|\|    \|-> (Optimization|Switching)")

    def test_iterations(self):
        self.write("prog.opt", programs.ENDLESS)
        session = self.start("--sol=0", "--rtime=1", "prog.opt")
        self.assert_ends_in_time(session, 1)
        self.assertGreater(int(re.findall(r"Total iterations: (\d+)\n", session.out)[-1]), 1)

    def test_stopped(self):
        for options in ((), ("--snorm=1/3",)):
            self.write("prog.opt", programs.ENDLESS)
            session = self.start("--sol=0", "--rtime=3", *options, "prog.opt")
            session.wait_for("Solutions found: ")
            session.ask("STOP\n", "> Status: stopped\n")
            self.assert_ends_in_time(session, 3)

    def test_the_limit_may_change_on_the_way(self):
        self.write("prog.opt", programs.ENDLESS)
        session = self.start("--sol=0", "--rtime=100000", "prog.opt")
        session.wait_for("Solutions found: ")
        session.ask("SET rtime=1\n", "> Setting: rtime = 1\n")
        self.assertEqual(session.wait(), 0)
        self.assertTrue(session.out.endswith(" -- Program end\n"))

    def test_without_a_timer_there_is_no_limit(self):
        self.write("prog.opt", programs.ENDLESS)
        session = self.start("--sol=0", "--verb=1", "prog.opt")
        session.wait_for("Solutions found: ")
        session.ask("SET rtime=1\n", "> Setting: rtime = 1\n")
        session.wait_for(r"Total running time: [3-9]\d* sec\(s\)\n")
        session.ask("STATUS\n", "> Status: running\n")


def in_standard_precision(progress):
    return progress.rfind("Using standard precision") > progress.rfind("Switching to extended precision")


if __name__ == "__main__":
    harness.main()
