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
    return re.sub(r"(?m)^((?:[^|]*\|){4}) \d+ ", r"\1 ? ", text)


def lat_without_times(text):
    return re.sub(r"\n\d+\n\n//", "\n?\n\n//", text)


class RepeatTest(harness.Case):
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

    def test_a_resumed_run_repeats(self):
        def resumed():
            self.outcome(programs.TARGET, ("--sol=0", "--iters=2"))
            result = self.run_solver("--sol=0", "--iters=3", "--verb=1", "prog.opt")
            self.assert_ends_well(result)
            return without_times(result.out), sol_without_times(self.read("prog.sol"))
        self.assertEqual(resumed(), resumed())


if __name__ == "__main__":
    harness.main()
