#!/usr/bin/env python3
"""The comparison's command: what it reads, keeps, verifies and writes."""

import json
import os
import signal
import stat
import subprocess
import sys
import threading
import unittest
import unittest.mock

import checker
import harness

TREE = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
COMPARE = os.path.join(TREE, "bench", "compare")
sys.path.insert(0, os.path.join(TREE, "bench", "comparison"))
import answer  # noqa: E402
import cells  # noqa: E402
import columns  # noqa: E402
import kernels  # noqa: E402
import limited_run  # noqa: E402
import measure  # noqa: E402
import mps  # noqa: E402
import peers  # noqa: E402
import solver  # noqa: E402
import tables  # noqa: E402

# 3 x + 5 y = 14 over 0..9: (3, 1) only.
EQUATION = "[]\n[]\n[[3 5]]\n[14]\n[]\n[]\n[]\n[0 0]\n[0 0]\n[9 9]\n"
# x + y to be large below 2 x + 3 y <= 12: (6, 0).
TARGET = "[inf]\n[[1 1]]\n[]\n[]\n[[2 3]]\n[0]\n[12]\n[0 0]\n[0 0]\n[9 9]\n"


class Ended:
    """What a run has left, for those who only read it."""

    def __init__(self, lines=(), cpu=1.5, timed_out=False):
        self.lines, self.cpu, self.timed_out = list(lines), cpu, timed_out

    improvements = limited_run.LimitedRun.improvements


def cell(status, at=0.5, value=None, cpu=None, **more):
    made = answer.made(status, Ended(cpu=at if cpu is None else cpu, timed_out=status == "none"), at, value)
    return {**made, "limit": 120, "program": "p", "tool": "t", **more}


class Answers(unittest.TestCase):
    """Nothing counts before the exact check has seen it."""

    def test_a_planted_wrong_point_is_called_wrong(self):
        got = answer.judged(checker.Program(EQUATION), [3, 2], Ended(), None, False)
        self.assertEqual((got["status"], got["note"]), ("wrong", "equation 1 gives 19, not 14"))

    def test_a_point_outside_of_its_bounds_is_called_wrong(self):
        got = answer.judged(checker.Program(EQUATION), [-2, 4], Ended(), None, False)
        self.assertEqual(got["status"], "wrong")

    def test_a_right_point_is_solved_after_the_whole_run(self):
        got = answer.judged(checker.Program(EQUATION), [3, 1], Ended(cpu=0.25), None, False)
        self.assertEqual((got["status"], got["at"], got["value"]), ("solved", 0.25, None))

    def test_a_target_is_computed_and_not_believed(self):
        got = answer.judged(checker.Program(TARGET), [6, 0], Ended(), 0.5, True)
        self.assertEqual((got["status"], got["value"], got["at"], got["cpu"]), ("proven", "6", 0.5, 1.5))


class Peers(unittest.TestCase):
    """Their answers as they write them."""

    GLPSOL = "c Problem:\ns mip 1 2 %s 0\ni 1 14\nj 1 3\nj 2 1\ne o f\n"

    def test_glpsol_optimal_feasible_and_nothing(self):
        self.assertEqual(peers.Glpsol.read(self.GLPSOL % "o", 2), ([3, 1], True))
        self.assertEqual(peers.Glpsol.read(self.GLPSOL % "f", 2), ([3, 1], False))
        self.assertIsNone(peers.Glpsol.read(self.GLPSOL % "n", 2))
        self.assertIsNone(peers.Glpsol.read("", 2))

    def test_cbc_leaves_zeros_out_and_marks_violated_variables(self):
        text = "Optimal - objective value 6.00000000\n      0 X0                  3                      0\n"
        self.assertEqual(peers.Cbc.read(text, 2), ([3, 0], True))
        text = "Stopped on time - objective value 6.0\n**    1 X1      0.99999999999999     0\n"
        self.assertEqual(peers.Cbc.read(text, 2), ([0, 1], False))
        self.assertIsNone(peers.Cbc.read("Infeasible - objective value 0\n", 2))

    def test_a_run_without_a_point(self):
        feasible, target = checker.Program(EQUATION), checker.Program(TARGET)

        def status(program, lines, timed_out=False):
            run = Ended(lines, timed_out=timed_out)
            return peers.without_point(peers.Glpsol, program, run, run.improvements(peers.Glpsol.incumbent))["status"]

        self.assertEqual(status(feasible, [(0.1, "PROBLEM HAS NO INTEGER FEASIBLE SOLUTION")]), "refuted")
        self.assertEqual(status(feasible, [], timed_out=True), "none")
        self.assertEqual(status(feasible, [(0.1, "Memory allocation error")]), "ended")
        self.assertEqual(status(target, [(0.1, "+ 9: mip = 5.000e+00 <= 6.0")], timed_out=True), "unchecked")

    def test_the_program_as_mps(self):
        lines = mps.mps(checker.Program(TARGET)).splitlines()
        for line in (" N T", " L U0", " X0 T -1", " X1 U0 3", " R U0 12", " G U0 12", " UP B X1 9"):
            self.assertIn(line, lines)

    def test_fractions_are_multiplied_away(self):
        program = checker.Program(EQUATION.replace("[[3 5]]\n[14]", "[[1/2 1/3]]\n[5/6]"))
        lines = mps.mps(program).splitlines()
        for line in (" X0 E0 3", " X1 E0 2", " R E0 5"):
            self.assertIn(line, lines)

    def test_digits_and_several_targets_are_left_out(self):
        self.assertTrue(mps.comparable(checker.Program(TARGET)))
        self.assertFalse(mps.comparable(checker.Program(TARGET.replace("[0 0]\n[0 0]", "[1 0]\n[0 0]"))))
        self.assertFalse(mps.comparable(checker.Program(TARGET.replace("[inf]\n", "[7]\n"))))


class Runs(harness.Case):
    """A process under a limit of CPU time."""

    def python(self, code, limit, enough=None):
        return limited_run.LimitedRun([sys.executable, "-u", "-c", code], limit, enough)

    def test_lines_and_improvements(self):
        run = self.python("print('T = 3')\nprint('T = 3')\nprint('T = 2')", 20)
        self.assertEqual([line for _, line in run.lines], ["T = 3", "T = 3", "T = 2"])
        self.assertEqual([value for _, value in run.improvements(r"T = (\d)")], ["3", "2"])
        self.assertFalse(run.timed_out)
        self.assertGreater(run.cpu, 0)

    @unittest.mock.patch.object(limited_run, "PATIENCE", 1000)
    def test_the_limit_is_of_cpu_time(self):
        run = self.python("while True: pass", 0.3)
        self.assertTrue(run.timed_out)
        self.assertGreaterEqual(run.cpu, 0.3)

    def test_a_line_that_is_read_behind_the_end_has_its_time(self):
        """It had 0 s: the process was gone from /proc."""

        class Late(limited_run.LimitedRun):
            def follow(self):
                harness.wait_until(self.has_ended, "its end")
                super().follow()

            def has_ended(self):
                with open("/proc/%d/stat" % self.process.pid, encoding="utf-8") as file:
                    return file.read().rpartition(")")[2].split()[0] == "Z"

        run = Late([sys.executable, "-c", "import time\nwhile time.process_time() < 0.1: pass\nprint('done')"], 20)
        (seconds, line), = run.lines
        self.assertEqual(line, "done")
        self.assertGreater(seconds, 0.05)

    def test_what_is_enough_ends_the_run_and_is_no_time_out(self):
        run = self.python("print('done')\nwhile True: pass", 20, lambda line: line.startswith("done"))
        self.assertFalse(run.timed_out)

    def test_a_run_that_is_killed_from_outside_tells_nothing(self):
        with self.assertRaises(limited_run.Cut):
            self.python("import os\nos.kill(os.getpid(), 15)", 20)

    def test_a_solver_that_lies_is_called_wrong(self):
        """A script in the solver's place writes a star whose point breaks the equation."""
        liar = self.write_program("liar", "#!/bin/sh\nfor f; do :; done\n"
                                  "printf '[ 3 2 ] | 0 | [ ] | 0 | 0 | p\\n' > \"${f%.opt}.sol\"\n")
        os.mkdir(self.path("run"))
        got = solver.run(liar, "", checker.Program(EQUATION), EQUATION, 5, self.path("run"))
        self.assertEqual(got["status"], "wrong")

    def test_the_optimum_is_told_by_the_reported_norm(self):
        reached = solver.reaches(checker.Program(TARGET), "6")
        self.assertTrue(reached("T(bestTarget) = -6, S(bestTarget) = 0 -- { 0 sec(s) }"))
        self.assertFalse(reached("T(bestTarget) = -5, S(bestTarget) = 0 -- { 0 sec(s) }"))
        self.assertFalse(reached("T(bestTarget) = inf, S(bestTarget) = 0"))


class Kept(harness.Case):
    """The cells in their file."""

    def test_a_cell_is_read_back(self):
        kept = cells.Cells(self.path("cells.json"))
        kept.put("a", "latbox", cell("solved"))
        kept.note({"limit": 120})
        again = cells.Cells(self.path("cells.json"))
        self.assertEqual(again.get("a", "latbox"), cell("solved"))
        self.assertEqual(again.facts, {"limit": 120})
        self.assertIsNone(cells.Cells(self.path("cells.json"), fresh=True).get("a", "latbox"))

    def test_what_makes_a_cell_invalid(self):
        kept = cells.Cells(self.path("cells.json"))
        kept.put("a", "latbox", cell("none", limit=5))
        self.assertTrue(kept.valid("a", "latbox", "p", "t", 5))
        self.assertFalse(kept.valid("a", "latbox", "p", "t", 120), "a longer run may find more")
        self.assertFalse(kept.valid("a", "latbox", "p", "another binary", 5))
        self.assertFalse(kept.valid("a", "latbox", "another program", "t", 5))
        self.assertFalse(kept.valid("b", "latbox", "p", "t", 5))
        kept.put("a", "latbox", cell("solved", limit=5))
        self.assertTrue(kept.valid("a", "latbox", "p", "t", 120), "it ended by itself")

    def test_another_binary_leaves_the_peers_cells(self):
        kept = cells.Cells(self.path("cells.json"))
        kept.put("a", "glpsol", cell("solved", tool="5.0"))
        self.assertTrue(kept.valid("a", "glpsol", "p", "5.0", 120))
        self.assertFalse(kept.valid("a", "glpsol", "p", "5.1", 120))

    def test_the_proven_optimum(self):
        kept = cells.Cells(self.path("cells.json"))
        kept.put("a", "latbox", cell("solved", value="2"))
        self.assertIsNone(kept.optimum("a"))
        kept.put("a", "cbc", cell("proven", value="1"))
        self.assertEqual(kept.optimum("a"), "1")
        self.assertIsNone(kept.optimum("aa"))


class Medians(unittest.TestCase):
    def test_the_median_is_of_the_runs_that_end_alike(self):
        runs = [cell("solved", at) for at in (0.9, 0.1, 0.3, 0.2)] + [cell("none", 7)]
        self.assertEqual(measure.medians(runs)["at"], 0.25)

    def test_a_run_that_used_its_time_up_keeps_its_own_cpu_time(self):
        runs = [cell("solved", 0.2, "1", cpu=120, timed_out=True), cell("solved", 0.4, "1", cpu=1, timed_out=True)]
        self.assertEqual(measure.medians(runs)["cpu"], 120)
        self.assertAlmostEqual(measure.medians(runs)["at"], 0.3)

    def test_short_runs_are_repeated_and_long_ones_not(self):
        class Column:
            tool, runs = "t", 0

            def __init__(self, at):
                self.at = at

            def run(self, *_):
                self.runs += 1
                return cell("solved", self.at)

        class Instance:
            hash = "p"

        short, long = Column(0.1), Column(measure.SHORT + 1)
        measure.measured(short, Instance, 120, None)
        measure.measured(long, Instance, 120, None)
        self.assertEqual((short.runs, long.runs), (measure.REPEATS, 1))

    def test_a_run_that_the_clock_ended_is_measured_anew(self):
        class Column:
            tool = "t"

            @staticmethod
            def run(*_):
                return cell("none", 40)

        class Instance:
            hash = "p"

        self.assertEqual(measure.measured(Column, Instance, 120, None)["limit"], 40)
        self.assertEqual(measure.measured(Column, Instance, 30, None)["limit"], 30)

    def test_programs_in_natural_order(self):
        self.assertEqual(sorted(["sts_13", "sts_9", "km_2", "sts_7"], key=measure.natural),
                         ["km_2", "sts_7", "sts_9", "sts_13"])


class Filled(harness.Case):
    def test_a_signal_that_wakes_no_waiting_thread_is_handled_while_a_run_goes_on(self):
        """The run sends it to its own thread, so that the first one, which waits, hears of it only if it looks up."""
        heard, told = threading.Event(), []
        before = signal.signal(signal.SIGUSR1, lambda *_: heard.set())
        self.addCleanup(signal.signal, signal.SIGUSR1, before)

        class Column:
            name, tool = "c", "t"

            @staticmethod
            def run(*_):
                signal.pthread_kill(threading.get_ident(), signal.SIGUSR1)
                told.append(heard.wait(harness.LIMIT))
                return cell("none", measure.SHORT)

        class Instance:
            name, hash = "a", "p"

        measure.fill([(Instance, Column)], cells.Cells(self.path("cells.json")), measure.SHORT, 1, lambda _: None)
        self.assertEqual(told, [True])

    def test_a_run_that_fails_ends_the_comparison(self):
        class Column:
            name, tool = "c", "t"

            @staticmethod
            def run(*_):
                raise limited_run.Cut("so")

        class Instance:
            name, hash = "a", "p"

        with self.assertRaisesRegex(limited_run.Cut, "^so$"):
            measure.fill([(Instance, Column)], cells.Cells(self.path("cells.json")), 1, 1, lambda _: None)


class Tables(harness.Case):
    def test_a_cell_in_words(self):
        for told, expected in (
                (tables.words(None), "not measured"),
                (tables.words(cell("solved", 0.123)), "0.12 s, verified"),
                (tables.words(cell("solved", 12.3)), "12 s, verified"),
                (tables.words(cell("solved", 0.5, "2"), "1"), "2 at 0.50 s, optimum is 1, verified"),
                (tables.words(cell("solved", 0.5, "1"), "1"), "1 at 0.50 s, verified"),
                (tables.words(cell("proven", 0.5, "1", cpu=2), "1"), "1 at 0.50 s, proven after 2.00 s, verified"),
                (tables.words(cell("wrong", 0.5)), "**wrong** after 0.50 s"),
                (tables.words(cell("none", 120)), "none in 120 s"),
                (tables.words(cell("refuted", 3)), "claims that there is no solution, 3.00 s: unverified"),
                (tables.words(cell("refuted", 3), None, True), "claims that there is no solution, 3.00 s: **wrong**"),
                (tables.words(cell("unchecked", 3, "7")), "7 at 3.00 s, unverified")):
            self.assertEqual(told, expected)

    def test_an_aim_needs_its_time_or_its_optimum(self):
        self.assertTrue(tables.meets(cell("solved", 0.9), 1, None))
        self.assertFalse(tables.meets(cell("solved", 1.1), 1, None))
        self.assertFalse(tables.meets(cell("wrong", 0.1), 1, None))
        self.assertFalse(tables.meets(cell("solved", 0.1, "2"), 120, "1"))
        self.assertFalse(tables.meets(None, 1, None))

    def test_every_aim_is_about_a_program_of_the_tree(self):
        there = {name[:-len(".opt")] for name in os.listdir(os.path.join(TREE, "bench", "instances"))}
        self.assertEqual([name for name, _, _ in tables.AIMS if name not in there], [])

    def test_the_marked_place_alone_is_rewritten(self):
        page = "a\n<!-- x: written by bench/compare -->\nold\n<!-- x: end -->\nb\n"
        self.write("page.md", page)
        tables.rewrite(self.path("page.md"), {"x": "new \\1"})
        self.assertEqual(self.read("page.md"), page.replace("\nold\n", "\n\nnew \\1\n\n"))
        with self.assertRaises(SystemExit):
            tables.rewrite(self.path("page.md"), {"y": "lost"})

    def test_the_page_of_the_tree_has_all_places(self):
        with open(os.path.join(TREE, "docs", "benchmarks.md"), encoding="utf-8") as file:
            page = file.read()
        for name in ("programs", "aims", "kernels"):
            self.assertIn("<!-- %s: written by bench/compare -->" % name, page)

    def test_best_options_by_the_first_pattern_that_fits(self):
        self.assertEqual(columns.best_options("knap_prob1_Fp1_box"), "")
        self.assertEqual(columns.best_options("knap_prob1_Fp1"), "--scale=1")
        self.assertEqual(columns.columns_for("km_3"), ["", columns.UNPRUNED])


class Kernels(unittest.TestCase):
    REPORT = {"context": {"fplll": "5.4.4"}, "benchmarks": [
        {"run_name": "ours", "aggregate_name": "median", "cpu_time": 2, "real_time": 9, "time_unit": "ms"},
        {"run_name": "ours", "aggregate_name": "mean", "cpu_time": 7, "real_time": 9, "time_unit": "ms"},
        {"run_name": "theirs/manual_time", "aggregate_name": "median", "cpu_time": 9, "real_time": 4, "time_unit": "ms",
         "nodes": 5e6}]}

    def told(self, *row):
        return list(kernels.lines([row], kernels.medians(self.REPORT), self.REPORT["context"]))

    def test_the_median_and_the_time_that_counts(self):
        self.assertEqual(self.told("LLL", "ours", "theirs", "fplll", None),
                         ["| LLL | 2 ms | 4 ms | fplll 5.4.4 | 0.50 |"])

    def test_without_the_library_and_without_ours(self):
        self.assertEqual(self.told("LLL", "ours", "absent", "NTL", None), ["| LLL | 2 ms |  |  |  |"])
        self.assertEqual(self.told("LLL", "absent", "theirs", "fplll", None), [])

    def test_every_row_names_benchmarks_of_its_program(self):
        for program, rows in kernels.ROWS.items():
            with open(os.path.join(TREE, "bench", program + ".cpp"), encoding="utf-8") as file:
                source = file.read()
            for name in {name.split("/")[0] for row in rows for name in row[1:3] if name}:
                self.assertIn("BENCHMARK(%s)" % name, source)


class WholeRuns(harness.Case):
    """The command itself over two examples, this solver alone."""

    def compare(self, *options):
        command = [sys.executable, COMPARE, "--binary=" + harness.Settings.binary, "--no-peers", "--limit=2",
                   "--instances=" + self.path("programs"), "--results=" + self.path("cells.json"), *options]
        return subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=harness.LIMIT,
                              check=False)

    def setUp(self):
        super().setUp()
        os.mkdir(self.path("programs"))
        for name in ("market_split", "steiner_7"):
            with open(os.path.join(harness.Settings.examples, name + ".opt"), encoding="utf-8") as file:
                self.write("programs/%s.opt" % name, file.read())

    def test_measures_keeps_and_writes(self):
        page = "".join("<!-- %s: written by bench/compare -->\n<!-- %s: end -->\n" % (n, n) for n in ("programs", "aims"))
        self.write("page.md", page)
        first = self.compare("--doc=" + self.path("page.md"))
        self.assertEqual(first.returncode, 0, first.stderr)
        self.assertEqual(len(first.stdout.splitlines()), 4, first.stdout)
        self.assertRegex(self.read("page.md"), r"\| market_split \| .* s, verified \|")
        self.assertRegex(self.read("page.md"), r"\| steiner_7 \| 21 x 35 \| not measured \|")
        kept = self.read("cells.json")
        self.assertEqual({len(c["times"]) for c in json.loads(kept)["cells"].values()}, {measure.REPEATS})
        again = self.compare("--doc=" + self.path("page.md"))
        self.assertEqual((again.returncode, again.stdout), (0, ""), "nothing was left to measure")
        self.assertEqual(json.loads(self.read("cells.json"))["cells"], json.loads(kept)["cells"])

    def test_only_and_options_show_a_table(self):
        done = self.compare("--only=steiner", "--options=--beta=10", "--doc=")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertRegex(done.stdout, r"\| program \| rows x variables \| `--beta=10` \|\n")
        self.assertNotIn("market_split", done.stdout)

    def test_what_it_does_not_know(self):
        for option in ("--nonsense", "--limit", "--fresh=1", "file.opt"):
            done = self.compare(option)
            self.assertNotEqual(done.returncode, 0)
            self.assertIn("Unknown: " + option, done.stderr)

    def test_help_and_mode(self):
        done = self.compare("--help")
        self.assertEqual((done.returncode, done.stdout.splitlines()[2]), (0, "    bench/compare [options]"))
        self.assertTrue(os.stat(COMPARE).st_mode & stat.S_IXUSR)

    def test_a_cut_comparison_says_so_and_keeps_what_it_has(self):
        """In the solver's place a script that gives up on the first program and never ends on the second."""
        self.write_program("script", "#!/bin/sh\nfor f; do :; done\ngrep -q inf \"$f\" || exit 0\nwhile :; do :; done\n")
        os.mkdir(self.path("two"))
        self.write("two/a.opt", EQUATION)
        self.write("two/b.opt", TARGET)
        command = [sys.executable, COMPARE, "--binary=" + self.path("script"), "--no-peers", "--limit=100",
                   "--instances=" + self.path("two"), "--results=" + self.path("cells.json"), "--doc="]
        with subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True) as process:
            self.assertIn("a: latbox: ended", process.stdout.readline())
            process.terminate()
            _, err = process.communicate(timeout=harness.LIMIT)
        self.assertNotEqual(process.returncode, 0)
        self.assertIn("the same command goes on from there", err)
        # The other cells of the first program may be measured before the signal arrives.
        cells = list(json.loads(self.read("cells.json"))["cells"])
        self.assertIn("a | latbox", cells)
        self.assertEqual([cell for cell in cells if not cell.startswith("a | ")], [])


if __name__ == "__main__":
    harness.main()
