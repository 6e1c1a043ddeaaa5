"""A run that is killed and started again keeps its solutions and their times."""

import os
import re
import signal

import checker
import harness
import programs


def points(stars):
    return {tuple(star.x) for star in stars}


class ResumeTest(harness.Case):
    def setUp(self):
        super().setUp()
        self.write("prog.opt", programs.ENDLESS)

    def run_until_solutions(self):
        session = self.start("--sol=0", "prog.opt")
        session.wait_for("Solutions found: ")
        return session

    def assert_kept(self, before):
        """Another short run: what was known is known again, with the time of its first discovery."""
        result = self.run_solver("--sol=0", "--iters=2", "prog.opt")
        self.assert_ends_well(result)
        after = {tuple(star.x): star.time for star in self.stars()}
        for star in before:
            self.assertEqual(after.get(tuple(star.x)), star.time, star.x)

    def test_killed(self):
        session = self.run_until_solutions()
        # What an iteration has announced it has also written, so the file is whole here.
        session.kill(signal.SIGKILL)
        self.assertEqual(session.wait(), -signal.SIGKILL)
        before = self.stars()
        self.assertTrue(before)
        self.assert_kept(before)

    def test_terminated_and_interrupted(self):
        for number in (signal.SIGTERM, signal.SIGINT):
            session = self.run_until_solutions()
            session.kill(number)
            self.assertEqual(session.wait(), 0)
            before = self.stars()
            self.assertTrue(before)
            self.assert_kept(before)

    def test_times_survive(self):
        self.assert_ends_well(self.run_solver("--sol=0", "--iters=3", "prog.opt"))
        lines = self.read("prog.sol").splitlines()
        aged = [re.sub(r"^((?:[^|]*\|){4}) \d+ ", r"\1 %d " % (1000 + place), line)
                for place, line in enumerate(lines)]
        self.write("prog.sol", "".join(line + "\n" for line in aged))
        before = self.stars()
        self.assertEqual([star.time for star in before], [1000 + place for place in range(len(lines))])
        self.assert_kept(before)

    def test_a_time_of_0_survives(self):
        self.write("prog.opt", programs.SMALL)
        self.write("prog.sol", "[ 1 1 ] | 0 | [ ] | 0 | 0 | --verb=0 | 2.2.2\n")
        self.assert_ends_well(self.run_solver("--sol=0", "--iters=1", "prog.opt"))
        self.assertEqual([star.time for star in self.stars() if star.x == [1, 1]], [0])

    def test_solutions_of_a_file_count(self):
        # sol=2 with two known solutions ends the run before the search has begun.
        self.write("prog.opt", programs.SMALL)
        self.write("prog.sol", "[ 1 1 ] | 0 | [ ] | 0 | 5 | p | 2.2.2\n[ 1 2 ] | 0 | [ ] | 0 | 6 | p | 2.2.2\n")
        result = self.run_solver("--sol=2", "--iters=1000000", "prog.opt")
        self.assert_ends_well(result)
        self.assertLessEqual({(1, 1), (1, 2)}, points(self.stars()))

    def test_the_better_of_two_points_that_hardly_differ(self):
        # Symptom: a difference within the tolerance of standard precision was none, so that the first point stayed.
        self.write("prog.opt", programs.opt(dt=["-inf"], at=[[1, "1.0000000005", 2]], ag=[[1, 1, 1]], bg=[1], rx=[1] * 3))
        points = ("[ 0 1 0 ] | 1.0000000005 | [ 1.0000000005 ] | 0 | 5 | p | 2.2.2\n",
                  "[ 1 0 0 ] | 1 | [ 1 ] | 0 | 6 | p | 2.2.2\n")
        for lines in (points, points[::-1]):
            self.write("prog.sol", "".join(lines))
            result = self.run_solver("--sol=0", "--iters=2", "prog.opt")
            self.assert_ends_well(result)
            report = result.out[result.out.rindex("* Terminated *"):]
            self.assertIn("\nT(bestTarget) = 1, S(bestTarget) = 0 -- { 6 sec(s) }\n", report)
            self.assertEqual([star.target_norm for star in self.stars()][0], 1)

    def test_what_is_written_reads_back(self):
        for program in (programs.SMALL, programs.TARGET):
            self.write("prog.opt", program)
            self.assert_ends_well(self.run_solver("--sol=0", "--iters=5", "prog.opt"))
            first = self.stars()
            self.assertTrue(first)
            self.assert_ends_well(self.run_solver("--sol=0", "--iters=1", "prog.opt"))
            best = min(star.target_norm for star in first)
            self.assertLessEqual(min(star.target_norm for star in self.stars()), best)
            for name in ("prog.sol", "prog.lat"):
                os.remove(self.path(name))

    def test_a_lattice_with_a_bounded_target_is_read_again(self):
        # Symptom: "QQ: parse error1" on the second run, for the comma behind the first bound was read into the number.
        self.write("prog.opt", programs.TARGET)
        self.assert_ends_well(self.run_solver("--sol=0", "--iters=3", "prog.opt"))
        self.assertRegex(self.read("prog.lat"), r"\n1\n\(-\d+, \d+\)\n")
        result = self.run_solver("--sol=0", "--iters=3", "--verb=2", "prog.opt")
        self.assert_ends_well(result)
        self.assertIn("-> Reading lat file ...", result.out)

    def unchecked_points(self):
        # With a lower bound that is not 0 the box of the lattice is not that of the program.
        return points(checker.read_stars(self.read("prog.sol")))

    def test_fractions_of_a_wide_range_survive(self):
        # Symptoms: stars that a later run threw away as not part of the lattice; and "Precision lost during conversion".
        for upper in ([4, 9973, 499], [4, 99991, 997]):
            self.write("prog.opt", programs.opt(au=[[1, 1, 0]], lu=[7], ru=[12], lx=[-1, 0, 0], rx=upper))
            self.assert_ends_well(self.run_solver("--sol=30", "--iters=3", "prog.opt"))
            before = self.unchecked_points()
            self.assertTrue(before)
            for _ in range(4):
                result = self.run_solver("--sol=1000", "--iters=3", "--verb=2", "prog.opt")
                self.assert_ends_well(result)
                self.assertIn("-> Reading lat file ...", result.out)
                self.assertNotIn("Star-Vector", result.out)
            self.assertLessEqual(before, self.unchecked_points())
            for name in ("prog.sol", "prog.lat"):
                self.remove(name)

    def test_fractions_in_long_combinations_survive(self):
        # Symptom: the second run, exact from its stars on, took two of three known points for no part of the lattice.
        self.write("prog.opt", programs.opt(dt=["-inf", "inf"], at=[[-95, -819], ["4.16", -3]], au=[[959, -58]],
                                            lu=[36953], ru=[37054], lx=[-1, -2], rx=[40, 40]))
        self.assert_ends_well(self.run_solver("--sol=30", "--iters=3", "prog.opt"))
        before = self.unchecked_points()
        self.assertGreater(len(before), 1)
        for _ in range(2):
            result = self.run_solver("--sol=30", "--iters=3", "--verb=2", "prog.opt")
            self.assert_ends_well(result)
            self.assertNotIn("Star-Vector", result.out)
        self.assertLessEqual(before, self.unchecked_points())

    def test_a_variable_is_fixed_otherwise_between_two_runs(self):
        # Symptom: the points with the former value stayed in the file.
        for value in (5, 3):
            self.write("prog.opt", programs.opt(dt=["-inf"], at=[[1, 1, 1]], au=[[1, 1, 1]], lu=[3], ru=[12],
                                                lx=[0, value, 0], rx=[4, value, 4]))
            if self.exists("prog.lat"):
                self.age("prog.lat", 60)
            self.assert_ends_well(self.run_solver("--iters=3", "prog.opt"))
            self.assertEqual({star.x[1] for star in self.stars()}, {value})

    def test_a_benchmark_run_reads_no_solutions(self):
        self.write("prog.opt", programs.SMALL)
        self.write("prog.sol", "[ 1 1 ] | 0 | [ ] | 0 | 4711 | p | 2.2.2\n")
        self.assert_ends_well(self.run_solver("--sol=0", "--iters=1", "--bench=1", "prog.opt"))
        self.assertNotIn(4711, [star.time for star in self.stars()])

    def test_the_line_of_a_solution(self):
        self.write("prog.opt", programs.TARGET)
        self.assert_ends_well(self.run_solver("--sol=0", "--iters=5", "--beta=18", "prog.opt"))
        for line in self.read("prog.sol").splitlines():
            self.assertRegex(line, r"\A\[ (-?\d+ )+\] \| -?\d+ \| \[ (-?\d+ )+\] \| 0 \| \d+ \| "
                                   r"--help=0 --verb=0 .*--beta=18 .*--sol=0 .*--tnorm=-inf \| 2\.2\.2\Z")
        norms = [star.target_norm for star in self.stars()]
        self.assertEqual(norms, sorted(norms))


if __name__ == "__main__":
    harness.main()
