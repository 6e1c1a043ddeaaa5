"""The saved lattice of a program that is small enough to be worked out by hand, and the run that goes on from it."""

import re

import harness
import programs


class SmallExampleTest(harness.Case):
    def setUp(self):
        super().setUp()
        self.write("prog.opt", programs.SMALL)

    def seconds(self, text):
        """The only figure of a .lat file that differs between runs."""
        found = re.search(r"\n(\d+)\n\n//", text)
        self.assertTrue(found, text)
        return found.group(1)

    def test_iters_0_writes_the_lattice_and_ends(self):
        result = self.run_solver("--iters=0", "prog.opt")
        self.assert_ends_well(result)
        self.assertRegex(result.out, r"\A<< latbox v2\.2\.2 \+\+\+ PID: \d+ >>\n\Z")
        text = self.read("prog.lat")
        self.assertEqual(text, programs.SMALL_LATTICE % self.seconds(text))
        self.assertFalse(self.exists("prog.sol"))

    def test_equations_leave_the_lattice(self):
        # x1 + x2 = 4 within 0..4: one variable is left to choose, so two rows of one less than four columns.
        self.write("prog.opt", programs.opt(ag=[[1, 1]], bg=[4], rx=[4, 4]))
        self.assert_ends_well(self.run_solver("--iters=0", "prog.opt"))
        rows = self.basis()
        self.assertEqual([len(row) for row in rows], [3, 3])
        self.assert_same_lattice_as_by_hand(rows)

    def basis(self):
        text = self.read("prog.lat")
        return [[int(field) for field in line.strip("[] ").split()]
                for line in text[:text.index("]\n\n")].splitlines()[1:]]

    def assert_same_lattice_as_by_hand(self, rows):
        # Width 4, R = 4, c = 1: a solution (a, 4 - a) is (2 a - 4, 4 - 2 a, 1), a kernel vector (2, -2, 0).
        kernel = [row for row in rows if row[-1] == 0]
        particular = [row for row in rows if row[-1] != 0]
        self.assertIn(kernel, ([[2, -2, 0]], [[-2, 2, 0]]))
        self.assertEqual(abs(particular[0][-1]), 1)
        self.assertEqual(particular[0][0], -particular[0][1])
        self.assertEqual(particular[0][0] % 2, 0)

    def test_bounds_of_a_target(self):
        # min x1 + 2 x2: the corners give 0 and 12, and the lower bound is the negated norm of the worse one.
        self.write("prog.opt", programs.opt(dt=["-inf"], at=[[1, 2]], au=[[1, 1]], lu=[1], ru=[3], rx=[4, 4]))
        self.assert_ends_well(self.run_solver("--iters=0", "prog.opt"))
        self.assertIn("\n0\n(-12, 12)\n", self.read("prog.lat"))

    def test_second_run_reads_the_lattice_and_goes_on(self):
        self.run_solver("--iters=0", "prog.opt")
        # The same lattice in another basis: only a run that reads it can keep it.
        changed = self.read("prog.lat").replace("[ 4 0 2 0 ]", "[ 8 2 2 0 ]")
        self.write("prog.lat", changed)
        self.assert_ends_well(self.run_solver("--iters=0", "prog.opt"))
        self.assertEqual(self.read("prog.lat"), changed)
        result = self.run_solver("--verb=2", "--iters=3", "prog.opt")
        self.assert_ends_well(result)
        self.assertIn("-> Reading lat file ...", result.out)
        self.assertNotIn("Generating lattice", result.out)
        self.assertTrue(self.stars())

    def test_an_older_lattice_is_generated_anew(self):
        self.run_solver("--iters=0", "prog.opt")
        self.write("prog.lat", self.read("prog.lat").replace("[ 4 0 2 0 ]", "[ 8 2 2 0 ]"))
        self.age("prog.lat", 100)
        result = self.run_solver("--verb=2", "--iters=0", "prog.opt")
        self.assert_ends_well(result)
        self.assertIn("-> Generating lattice ...", result.out)
        text = self.read("prog.lat")
        self.assertEqual(text, programs.SMALL_LATTICE % self.seconds(text))

    def test_a_benchmark_run_reads_no_lattice(self):
        self.run_solver("--iters=0", "prog.opt")
        self.write("prog.lat", self.read("prog.lat").replace("[ 4 0 2 0 ]", "[ 8 2 2 0 ]"))
        self.assert_ends_well(self.run_solver("--iters=0", "--bench=1", "prog.opt"))
        text = self.read("prog.lat")
        self.assertEqual(text, programs.SMALL_LATTICE % self.seconds(text))

    def test_no_iterations_end_while_the_console_is_open(self):
        session = self.start("--iters=0", "prog.opt")
        self.assertEqual(session.wait(), 0)
        self.assertEqual(session.err, "")
        self.assertRegex(session.out, r"\A<< latbox v2\.2\.2 \+\+\+ PID: \d+ >>\n\Z")
        self.assertTrue(self.exists("prog.lat"))

    def test_a_name_with_two_points(self):
        # Everything behind the first of them goes, in two steps, so that the files load twice.
        self.write("a.opt", programs.SMALL)
        self.assert_ends_well(self.run_solver("--iters=2", "--sol=0", "a.b.opt"))
        self.assertTrue(self.exists("a.lat"))
        self.assertFalse(self.exists("a.b.lat"))

    def test_the_first_of_two_loads_counts_an_iteration(self):
        # Symptom: a run of three iterations on such a name made all three of them, where the first goes to the load.
        self.write("a.opt", programs.SMALL)
        result = self.run_solver("--verb=1", "--iters=3", "--sol=0", "a.b.opt")
        self.assert_ends_well(result)
        head = "------------------------- Some statistics --------------------------\n\nTotal iterations: "
        self.assertEqual([piece[:2] for piece in result.out.split(head)[1:]], ["2\n", "3\n"])
        self.assertEqual(result.out.count("Program end"), 1)

    def test_the_report_of_a_load_at_verb_2(self):
        result = self.run_solver("--verb=2", "--iters=1", "--sol=0", "prog.opt")
        self.assert_ends_well(result)
        for line in ("|-> Reading files ...", "|    |-> Reading opt file ...", "|    |-> Generating lattice ...",
                     "Preparing optimization program ...", "Checking trivial solutions ...",
                     "Optimization program: Targets = 0, Equations = 0, Inequations = 1, Variables = 2",
                     "\nLattice dimension: M = 3, N = 4\n", "\nLattice rank = 3\n",
                     "\nInteger-linear dependencies: 0\n\n"):
            self.assertIn(line, result.out)


if __name__ == "__main__":
    harness.main()
