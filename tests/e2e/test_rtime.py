"""--rtime ends the run within two seconds of its time, whatever the solver is doing then.

What is measured is the running time that the process itself reports, less what a busy machine has made of it.
"""

import re

import checker
import harness
import programs

LATENESS = 2


class TimeLimitTest(harness.Case):
    def assert_ends_in_time(self, session, seconds, lateness):
        """`lateness` began with the run."""
        self.assertEqual(session.wait(), 0)
        self.assertEqual(session.err, "")
        self.assertEqual(session.out.count("\nGot signal: Terminated\n"), 1)
        last = re.search(r"\nTotal running time: (\d+) sec\(s\) -- Program end\n\Z", session.out)
        self.assertTrue(last, session.out[-500:])
        self.assertGreaterEqual(int(last.group(1)), seconds)
        self.assertLessEqual(min(int(last.group(1)), int(lateness.seconds())), seconds + LATENESS)

    def run_into_limit(self, seconds, phase):
        """The progress line at which the time limit came must be that of the phase, which lasts for minutes."""
        for limit in harness.growing(seconds):
            session = self.start("--verb=2", "--sol=0", "--rtime=%d" % limit, "prog.opt")
            self.assert_ends_in_time(session, limit, harness.Lateness(session.process))
            last = session.out[:session.out.index("\nGot signal: ")].rstrip().rsplit("\n", 1)[-1]
            if re.search(phase, last):
                break
        self.assertRegex(last, phase)

    def limit_within(self, phase, *options):
        """The limit is set once the phase has begun, and comes while it goes on: left alone it lasts for minutes.

        From the start there is a limit beyond reach, since a block's time would follow a shorter one.
        """
        session = self.start("--verb=2", "--sol=0", "--rtime=100000", *options, "prog.opt")
        session.wait_for(phase)
        session.ask("SET rtime=1\n", "> Setting: rtime = 1\n")
        self.assertEqual(session.wait(), 0)
        self.assertEqual(session.err, "")
        self.assertEqual(session.out.count("\nGot signal: Terminated\n"), 1)
        progress = session.out[:session.out.index("\nGot signal: ")].replace("> Setting: rtime = 1\n", "")
        self.assertRegex(progress.rstrip().rsplit("\n", 1)[-1], phase)
        return progress

    def end_after(self, *phases, options=()):
        """For phases that are too short to be hit for sure: the limit is set when each of them has begun once."""
        session = self.start("--verb=2", "--sol=0", "--rtime=100000", *options, "prog.opt")
        for phase in phases:
            session.wait_for(r"\|-> " + phase)
        session.ask("SET rtime=1\n", "> Setting: rtime = 1\n")
        self.assertEqual(session.wait(), 0)
        self.assertEqual(session.err, "")
        self.assertEqual(session.out.count("\nGot signal: Terminated\n"), 1)
        return session.out

    def test_reduction(self):
        self.write("prog.opt", programs.knapsacks(4, 400, 4, 1))
        progress = self.end_after(r"BKZ enumeration \( beta = 2, deep = 0 \)", options=("--beta=2",))
        self.assertTrue(in_standard_precision(progress))

    def test_reduction_in_extended_precision(self):
        self.write("prog.opt", programs.knapsacks(4, 200, 8, 1))
        progress = self.end_after(r"BKZ enumeration \( beta = 2, deep = 0 \)", options=("--beta=2",))
        self.assertFalse(in_standard_precision(progress))

    def test_enumeration(self):
        self.write("prog.opt", programs.market_split(7, 60, 1))
        progress = self.limit_within(r"\|-> BKZ enumeration \( beta = 54, deep = 0 \)", "--eprune=0", "--beta=60")
        self.assertTrue(in_standard_precision(progress))

    def test_enumeration_in_extended_precision(self):
        self.write("prog.opt", programs.market_split(7, 60, 1))
        progress = self.limit_within(r"\|-> BKZ enumeration \( beta = 54, deep = 0 \)", "--eprune=0", "--beta=60",
                                     "--snorm=1/3")
        self.assertNotIn("Using standard precision", progress)

    def test_preparation_in_extended_precision(self):
        # The kernel of equations with long coefficients: the lattice is not there when the time is up.
        self.write("prog.opt", programs.equations(60, 120, 40, 1))
        self.run_into_limit(1, r"\|    \|    \|->|\|    \|-> (Optimization|Switching)")

    def test_reading_of_solutions(self):
        self.write("prog.opt", programs.SMALL)
        self.write("prog.sol", "[ 1 1 ] | 0 | [ ] | 0 | 77 | --verb=0 | 2.2.2\n" * 150000)
        self.end_after("Reading sol file")
        self.assertIn((1, 1), {tuple(star.x) for star in checker.read_stars(self.read("prog.sol"))})

    def test_recombination(self):
        self.write("prog.opt", programs.market_split(4, 30, 1))
        self.limit_within(r"\|-> Pairwise recombination", "--pairLimit=100000", "--collectLimit=100000")

    def test_sampling(self):
        self.write("prog.opt", programs.market_split(6, 150, 1))
        self.limit_within(r"\|-> Random Sampling \(", "--pair=0", "--reinsert=0", "--variate=0", "--sample=1",
                            "--sampleLimit=100000000", "--beta=2")

    def test_short_phases(self):
        self.write("prog.opt", programs.market_split(4, 30, 1))
        self.end_after("Inserting best inhomogenous vector", "Heuristic Sorting", "Shuffling base vectors", "Trimming",
                       "Scaling", "Translating", "Sieving", "Lattice consistency checking",
                       options=("--scale=1", "--translate=1", "--consistency=1", "--sieve=1", "--beta=5"))

    def test_a_regenerated_lattice(self):
        self.write("prog.opt", programs.LONG_TARGET)
        self.end_after("Regenerating lattice")

    def test_iterations(self):
        self.write("prog.opt", programs.ENDLESS)
        for seconds in harness.growing(1):
            session = self.start("--sol=0", "--rtime=%d" % seconds, "prog.opt")
            self.assert_ends_in_time(session, seconds, harness.Lateness(session.process))
            iterations = int(re.findall(r"Total iterations: (\d+)\n", session.out)[-1])
            if iterations > 1:
                break
        self.assertGreater(iterations, 1)

    def test_stopped(self):
        for options in ((), ("--snorm=1/3",)):
            self.write("prog.opt", programs.ENDLESS)
            self.assert_ends_in_time(*self.stop_in_time(3, *options))

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
