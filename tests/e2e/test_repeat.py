"""Two runs of the same input give the same bytes, but for times and the process id."""

import os
import re

import harness
import programs


def without_times(text):
    text = re.sub(r"PID: \d+", "PID: ?", text)
    text = re.sub(r"(\d+:)*\d+ [a-z(]+\)(:[a-z(]+\))*( == \d+ secs)?", "TIME", text)
    return text


def sol_without_times(text):
    """The lines without their times, in an order of their own: the file's order asks for the time too."""
    return sorted(re.sub(r"(?m)^((?:[^|]*\|){4}) \d+ ", r"\1 ? ", text).splitlines())


def lat_without_times(text):
    return re.sub(r"\n\d+\n\n//", "\n?\n\n//", text)


class RepeatTest(harness.Case):
    in_memory = True

    def outcome(self, program, arguments):
        for name in ("prog.sol", "prog.lat"):
            if self.exists(name):
                os.remove(self.path(name))
        self.write("prog.opt", program)
        result = self.run_solver(*arguments, "prog.opt")
        self.assert_ends_well(result)
        sol = sol_without_times(self.read("prog.sol")) if self.exists("prog.sol") else None
        return without_times(result.out), sol, lat_without_times(self.read("prog.lat"))

    def assert_repeats(self, program, *arguments):
        first = self.outcome(program, arguments)
        self.assertEqual(first, self.outcome(program, arguments))
        return first

    def test_times_are_what_is_masked(self):
        self.assertEqual(without_times("after: 3 sec(s) } 1:00 min(s):sec(s) == 60 secs } 1:01:01 "
                                       "hour(s):min(s):sec(s) == 3661 secs PID: 12 >>"),
                         "after: TIME } TIME } TIME PID: ? >>")

    def test_standard_precision(self):
        for program in (programs.SMALL, programs.TARGET, programs.ENDLESS, programs.NOTHING):
            self.assert_repeats(program, "--sol=0", "--iters=5", "--verb=2")

    def test_extended_precision(self):
        # A 25-digit row cannot be held in standard precision, so the run stays in extended precision.
        big = 10**24 + 7
        program = programs.opt(au=[[big, 2 * big + 1, 3 * big + 5]], lu=[big], ru=[4 * big], rx=[3, 3, 3])
        out, _, _ = self.assert_repeats(program, "--sol=0", "--iters=3", "--verb=2")
        self.assertIn("Switching to extended precision", out)

    def test_with_the_switches(self):
        for switch in ("--consistency=1", "--pair=0", "--variate=0", "--reinsert=0", "--eenum=0"):
            self.assert_repeats(programs.TARGET, "--sol=0", "--iters=4", "--verb=1", switch)

    # Every heuristic alone, and all of them together.
    QUIET = ("--pair=0", "--reinsert=0", "--variate=0")
    ALONE = (("--pair=1",), ("--sieve=1",), ("--sample=1", "--sampleLimit=50"), ("--scale=1",), ("--translate=1",),
             ("--reinsert=1",), ("--variate=1",), ("--deep=1",), ("--eprune=0", "--beta=30"))
    TOGETHER = tuple(option for options in ALONE for option in options)
    # A row of thirds and one of 25 digits: steps go into extended precision and come back, or stay there.
    BIG = 10**24 + 7
    LADDER = programs.opt(dt=["-inf"], at=[[5, 9, 4, 11]], au=[["1/3", "7/3", 2, 8], [2, 4, 3, 9]], lu=[10, 25],
                          ru=[36, 33], rx=[6, 6, 6, 6])
    EXTENDED = programs.opt(au=[[BIG, 2 * BIG + 1, 3 * BIG + 5, 5 * BIG - 2]], lu=[BIG], ru=[4 * BIG], rx=[3] * 4)

    def assert_all_repeat(self, program, *arguments):
        for options in (*self.ALONE, self.TOGETHER):
            with self.subTest(options=options):
                quiet = [option for option in self.QUIET if option[:-1] + "1" not in options]
                self.assert_repeats(program, "--sol=0", "--verb=2", *quiet, *options, *arguments)

    def test_each_heuristic_alone_and_all_together(self):
        for program in (programs.TARGET, programs.ENDLESS, programs.NOTHING):
            self.assert_all_repeat(program, "--iters=6")

    def test_each_heuristic_across_the_ladder(self):
        self.assert_all_repeat(self.LADDER, "--iters=5")
        self.assert_all_repeat(self.EXTENDED, "--iters=3")

    def test_each_heuristic_in_extended_precision(self):
        # A third has no exact value in standard precision: the run stays in extended precision.
        self.assert_all_repeat(programs.TARGET, "--iters=3", "--snorm=-4/3")

    def test_the_heuristics_speak(self):
        # What repeats above did happen: every search prints its line.
        out, _, _ = self.assert_repeats(programs.ENDLESS, "--sol=0", "--verb=2", "--iters=6", *self.TOGETHER)
        for line in ("Pairwise recombination", "Sieving", "Random Sampling", "Trimming"):
            self.assertIn("-> " + line, out)

    def test_a_resumed_run_repeats(self):
        def resumed():
            self.outcome(programs.TARGET, ("--sol=0", "--iters=2"))
            result = self.run_solver("--sol=0", "--iters=3", "--verb=1", "prog.opt")
            self.assert_ends_well(result)
            return without_times(result.out), sol_without_times(self.read("prog.sol"))
        self.assertEqual(resumed(), resumed())


if __name__ == "__main__":
    harness.main()
