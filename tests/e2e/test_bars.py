#!/usr/bin/env python3
"""The command that measures the bars of latbox-all: what it verifies, keeps and writes. In the place of the reference programs
stand programs of a line, in the place of latbox-all, where it would take long or must lie, scripts."""

import json
import os
import shutil
import subprocess
import sys
import unittest
from typing import Any

import harness
from programs import opt

TREE = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
BARS = os.path.join(TREE, "bench", "bars")
sys.path[:0] = [os.path.join(TREE, "bench", "complete"), os.path.join(TREE, "bench", "comparison")]
import bars  # noqa: E402
import bars_table  # noqa: E402
import units  # noqa: E402
import verdicts  # noqa: E402

# 3 x + 5 y = 14 over 0..4: (3, 1) only.
ONE = opt(ag=[[3, 5]], bg=[14], rx=[4, 4])
# x1 + 2 x2 + 4 x3 + 8 x4 = 6 over 0..1: 0110 only.
BITS = opt(ag=[[1, 2, 4, 8]], bg=[6], rx=[1] * 4)
FOUND = "[ 3 1 ] | 0 | [ ] | 0 | 0 | -"
CELL = {"verdict": "all 1", "fault": "", "cpu": 1.0, "reference": 2.0, "ended": True, "load": 1.0}


def script(points: list[str], verdict: str, status: int) -> str:
    """A program in the place of latbox-all, which writes these lines and ends so."""
    lines = "".join("echo '%s'\n" % line for line in points)
    return "#!/bin/sh\nfor f; do :; done\n{\n:\n%s} >\"${f%%.opt}.all\"\necho '%s'\nexit %d\n" % (lines, verdict, status)


class Case(harness.Case):
    def solver(self, points: list[str], verdict: str, status: int) -> verdicts.Solver:
        return verdicts.Solver.at(self.write_program("latbox-all", script(points, verdict, status)))

    def tools(self, solver: verdicts.Solver, limit: float = 60) -> units.Tools:
        return units.Tools(solver, None, limit, self.path("work"))


class VerdictsTest(Case):
    """Nothing counts before it has been verified."""

    def fault(self, points: list[str], verdict: str, status: int, text: str = ONE) -> str:
        folder = self.path("run")
        shutil.rmtree(folder, ignore_errors=True)
        os.mkdir(folder)
        return verdicts.run(self.solver(points, verdict, status), text, [], 60, folder)["fault"]

    def test_what_is_so(self) -> None:
        self.assertEqual(self.fault([FOUND], "verdict: all 1", 10), "")
        self.assertEqual(self.fault([FOUND], "verdict: found 1", 11), "")
        self.assertEqual(self.fault([], "verdict: none", 20), "")
        self.assertEqual(self.fault([], "verdict: unknown", 12), "")

    def test_points_that_are_none(self) -> None:
        self.assertEqual(self.fault([FOUND.replace("3 1", "3 2")], "verdict: all 1", 10), "equation 1 gives 19, not 14")
        self.assertEqual(self.fault([FOUND, FOUND], "verdict: all 2", 10), "stands twice")
        self.assertEqual(self.fault([FOUND], "verdict: all 2", 10), "1 points in the file, 2 told")
        self.assertEqual(self.fault([FOUND], "verdict: none", 20), "1 points in the file, 0 told")

    def test_a_status_that_does_not_belong_to_the_verdict(self) -> None:
        self.assertEqual(self.fault([FOUND], "verdict: all 1", 11), "status 11 does not belong to the verdict")
        self.assertEqual(self.fault([], "bad", 2), "no verdict, status 2: bad")

    def test_an_optimum_is_that_of_its_point(self) -> None:
        text = opt(dt=["-inf"], at=[[1]], rx=[4])
        self.assertEqual(self.fault(["[ 1 ] | 1 | [ 1 ] | 0 | 0 | -"], "verdict: optimum 0", 10, text),
                         "the point in the file has target norm 1")

    def test_long_files_are_judged_by_latbox_check(self) -> None:
        if not os.path.exists(harness.latbox_check()):
            self.skipTest("latbox-check is not built")
        text = opt(au=[[1, 1]], lu=[0], ru=[999], rx=[99, 99])
        lines = ["[ %d %d ] | 0 | [ ] | 0 | 0 | -" % (n // 100, n % 100) for n in range(verdicts.FEW + 1)]
        self.write("all", "\n".join(lines) + "\n")
        solver = self.solver([], "verdict: all %d" % len(lines), 10)
        self.write("latbox-all", self.read("latbox-all").replace("{\n:\n", "{\ncat %s\n" % self.path("all")))
        solver.checker = harness.latbox_check()
        os.mkdir(self.path("run"))
        self.assertEqual(verdicts.run(solver, text, [], 60, self.path("run"))["fault"], "")
        self.write("all", "\n".join(lines[:-1] + [lines[0]]) + "\n")
        self.assertIn("latbox-check: ", verdicts.run(solver, text, [], 60, self.path("run"))["fault"])

    def test_other_sides(self) -> None:
        self.assertEqual(verdicts.with_sides(ONE, [13]).split(), ONE.replace("14", "13").split())


class UnitsTest(Case):
    def test_another_verdict_than_the_known_one_is_a_fault(self) -> None:
        tools = self.tools(self.solver([FOUND], "verdict: all 1", 10))
        self.assertEqual(units.VerdictUnit("p", ONE, [], "all 1", 1).measure(tools)["fault"], "")
        self.assertEqual(units.VerdictUnit("p", ONE, [], "none", 1).measure(tools)["fault"], "all 1, not none")

    def test_when_a_cell_counts(self) -> None:
        unit = units.VerdictUnit("p", ONE, [], "all 1", 1)
        tools = self.tools(self.solver([FOUND], "verdict: all 1", 10))
        cell = json.loads(json.dumps(unit.measured(tools)))
        self.assertTrue(unit.is_current(cell, tools))
        self.assertFalse(unit.is_current(None, tools))
        self.assertFalse(units.VerdictUnit("p", BITS, [], "all 1", 1).is_current(cell, tools), "another program")
        cut = {**cell, "ended": False}
        self.assertTrue(unit.is_current(cut, tools))
        self.assertFalse(unit.is_current(cut, self.tools(tools.solver, 61)), "a longer run may end")
        self.solver([FOUND], "verdict: all 2", 10)
        self.assertFalse(unit.is_current(cell, tools), "another binary")

    def test_counts_of_both_sides_must_agree(self) -> None:
        unit = units.CompleteUnit("p", ONE)
        mine = [{"verdict": "all 1", "fault": "", "cpu": 1.0}]

        def cell(*counts: int | None) -> units.Cell:
            theirs = {"block %d" % i: [{"count": count, "fault": "", "cpu": 3.0 + i}] for i, count in enumerate(counts)}
            return unit.cell({"ours": mine, **theirs})

        self.assertEqual({key: cell(1, 1)[key] for key in ("fault", "reference", "which", "ended")},
                         {"fault": "", "reference": 3.0, "which": "block 0", "ended": True})
        self.assertEqual(cell(1, 2)["fault"], "all 1, the reference has 1, 2")
        self.assertEqual((cell(None, 1)["reference"], cell(None, 1)["ended"]), (4.0, False))
        self.assertIsNone(cell()["reference"])

    def test_seconds_of_a_run_that_was_cut_add_up(self) -> None:
        self.write("seconds", "5.0")
        with units.meter(self.path("seconds"), every=0.01) as before:
            self.assertEqual(before, 5)
            harness.wait_until(lambda: float(self.read("seconds")) > 5, "the file is written")
            between = float(self.read("seconds"))
        self.assertGreaterEqual(float(self.read("seconds")), between)

    def test_a_long_run_leaves_its_folder_only_where_it_has_a_fault(self) -> None:
        tools = self.tools(self.solver([FOUND], "verdict: all 1", 10))
        self.assertEqual(units.LongUnit("p", ONE, [], "all 1", 1).measure(tools)["fault"], "")
        self.assertEqual(os.listdir(self.path("work")), [])
        self.assertEqual(units.LongUnit("p", ONE, [], "all 2", 1).measure(tools)["fault"], "all 1, not all 2")
        self.assertEqual(len(os.listdir(self.path("work"))), 1)

    def test_two_threads_count_from_the_estimate_on(self) -> None:
        solver = self.solver([FOUND], "verdict: all 1", 10)
        cell = units.ThreadsUnit("p", ONE).measure(self.tools(solver))
        self.assertEqual((cell["fault"], cell["whole"]), ("", True))
        self.write("latbox-all", self.read("latbox-all").replace("{\n:\n", "i=0; while [ $i -lt 100000 ]; do i=$((i + 1)); done\n"
                                                                  "echo 'estimate: few nodes' >&2\n{\n:\n"))
        cell = units.ThreadsUnit("p", ONE).measure(self.tools(solver))
        self.assertEqual((cell["fault"], cell["whole"]), ("", False))


class BarsTest(Case):
    def judged(self, name: str, cells: list[dict[str, Any]], whole: bool = True) -> tuple[str, str]:
        bar = next(bar for bar in bars.BARS if bar.name == name)
        unit = units.VerdictUnit("p", ONE, [], "all 1", 2)
        return bar.judge([(unit, cell) for cell in cells], whole)

    def test_every_verdict_in_time(self) -> None:
        self.assertEqual(self.judged("counts", [CELL])[1], "met")
        self.assertEqual(self.judged("counts", [CELL, {**CELL, "cpu": 2.5}]),
                         ("1 of 2 right and in time; nearest to its bar or furthest beyond: p, 2.5 s", "not met"))
        self.assertEqual(self.judged("counts", [{**CELL, "verdict": ""}])[1], "not met")

    def test_a_fault_is_never_met(self) -> None:
        for bar in bars.BARS:
            self.assertEqual(self.judged(bar.name, [{**CELL, "fault": "bad"}]), ("**p: bad**", "not met"))

    def test_what_is_not_measured_is_open(self) -> None:
        for bar in bars.BARS:
            self.assertEqual(self.judged(bar.name, []), ("not measured", "open"))
        self.assertEqual(self.judged("counts", [CELL], whole=False)[1], "open")
        self.assertEqual(self.judged("complete", [{**CELL, "reference": None}])[1], "open")
        self.assertEqual(self.judged("first", [{**CELL, "reference": None}])[1], "open")

    def test_sums_and_means(self) -> None:
        cells = [{**CELL, "cpu": 1.0, "reference": 1.5}, {**CELL, "cpu": 4.0, "reference": 2.5}]
        self.assertEqual(self.judged("complete", cells), ("sum of 2: 5 s, boxenum 4 s: 1.25 times", "not met"))
        self.assertEqual(self.judged("first", cells), ("geometric mean of 2: 2 s, boxfind 1.94 s: 1.03 times", "not met"))
        cells[1]["reference"] = 4.5
        self.assertEqual([self.judged(name, cells)[1] for name in ("complete", "first")], ["met", "met"])
        cells[0]["ended"], cells[0]["verdict"] = False, ""
        self.assertEqual([self.judged(name, cells)[1] for name in ("complete", "first")], ["not met", "not met"])

    def test_threads_memory_and_published_times(self) -> None:
        cell = {**CELL, "one": 3.6, "two": 2.0, "whole": True}
        self.assertEqual(self.judged("threads", [cell]), ("p: 1.80, whole runs", "met"))
        self.assertEqual(self.judged("threads", [{**cell, "two": 2.1}])[1], "not met")
        cell = {**CELL, "seconds": 1.0, "resident": 199 * 1024}
        self.assertEqual(self.judged("large", [cell]), ("all 1, 1 s, 199 MB", "met"))
        self.assertEqual(self.judged("large", [{**cell, "resident": 201 * 1024}])[1], "not met")
        self.assertEqual(self.judged("published", [cell])[1], "met")
        self.assertEqual(self.judged("published", [{**cell, "seconds": 2.0}])[1], "not met")

    def test_counts_come_from_the_table_beside_the_programs(self) -> None:
        os.mkdir(self.path("complete"))
        self.write("complete/README.md", "| program | points |\n|---|---|\n| a | 0 | - |\n| b | 7 (one program) |\n"
                                         "| c | not known |\n")
        self.write("complete/a.opt", ONE)
        self.write("b.opt", BITS)
        instances = bars.Instances(self.folder)
        self.assertEqual(instances.counts(), {"a": 0, "b": 7})
        self.assertEqual([(u.name, u.verdict) for u in bars.count_units(instances)], [("a", "none"), ("b", "all 7")])
        self.assertEqual(instances.missing, ["sts_7", "sts_9"])

    def test_every_unit_of_a_bar_has_a_name_of_its_own(self) -> None:
        instances = bars.Instances(os.path.join(TREE, "bench", "instances"))
        for bar in bars.BARS:
            names = [unit.name for unit in bar.units(instances)]
            self.assertEqual(len(names), len(set(names)), bar.name)

    def test_the_usage_names_every_row(self) -> None:
        done = subprocess.run([sys.executable, BARS, "--help"], capture_output=True, text=True, check=True)
        self.assertIn(", ".join(bar.name for bar in bars.BARS), done.stdout)

    def test_the_page_of_the_tree_has_its_place(self) -> None:
        with open(os.path.join(TREE, "docs", "benchmarks.md"), encoding="utf-8") as file:
            self.assertIn("<!-- bars: written by bench/bars -->", file.read())

    def test_every_cell_has_a_line(self) -> None:
        for cell, beside in ((CELL, "2 s"), ({**CELL, "which": "block 20"}, "2 s block 20"), ({**CELL, "reference": None}, ""),
                             ({**CELL, "one": 2.0, "two": 1.0}, "1 s with two"), ({**CELL, "seconds": 2.0}, "")):
            self.assertEqual(bars_table.line_of(cell)[2], beside)
        self.assertEqual(bars_table.line_of({**CELL, "verdict": ""})[0], "none when the limit came")


SHOWS = '#include <cstdio>\nint main(int, char** a) { std::printf("%s", a[1]); }\n'
SOLUTION = "SOL 0110  at 0.000 s enum, 7 nodes\\n"


class WholeRuns(Case):
    """The command itself: latbox-all and stand-ins of the reference on small programs by the names of the rows."""

    def setUp(self) -> None:
        super().setUp()
        binary = harness.latbox_all()
        if not os.path.exists(binary) or shutil.which("g++") is None:
            self.skipTest("latbox-all is not built, or there is no compiler")
        self.options = ["--binary=" + binary]
        for folder in ("programs", "reference", "bin"):
            os.mkdir(self.path(folder))
        for name in ("ms_5x40_s1", "ms_8x70_s1"):
            self.write("programs/%s.opt" % name, BITS)
        self.write("programs/sts_7.opt", ONE)
        self.write("page.md", "<!-- bars: written by bench/bars -->\n<!-- bars: end -->\n")
        self.write("reference/boxenum.cpp", SHOWS % (SOLUTION + "RES %s red 0 s sols 1 complete\\n"))
        self.write("reference/boxfind.cpp", SHOWS % (SOLUTION + "FIND %s FOUND\\n"))
        self.write("reference/opt2cen.py", "import subprocess, sys, shutil\nsubprocess.run(['fplll'], check=True)\n"
                                           "shutil.copy(sys.argv[1], sys.argv[2])\n")
        self.write_program("bin/fplll", "#!/bin/sh\nexit 0\n")

    def measure(self, *options: str) -> subprocess.CompletedProcess[str]:
        command = [sys.executable, BARS, *self.options, "--instances=" + self.path("programs"),
                   "--reference=" + self.path("reference"), "--record=" + self.path("cells.json"),
                   "--work=" + self.path("work"), "--doc=" + self.path("page.md"), *options]
        return subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=2 * harness.LIMIT,
                              check=False, env=dict(os.environ, PATH=self.path("bin") + os.pathsep + os.environ["PATH"]))

    def test_measures_keeps_and_writes(self) -> None:
        first = self.measure("--row=complete", "--row=first")
        self.assertEqual((first.returncode, first.stderr), (0, ""))
        self.assertEqual(first.stdout.count("\nfirst: ms_8x70_s1 seed "), 10, first.stdout)
        self.assertIn("not there: ms_6x50_s1\n", first.stdout)
        page = self.read("page.md")
        self.assertRegex(page, r"\| complete \| ms_5x40_s1 \| all 1 \| [\d.]+ s \| [\d.]+ s block \d0 \|")
        self.assertRegex(page, r"\| first \| ms_8x70_s1 seed 7 \| found 1 \| [\d.]+ s \| [\d.]+ s \|")
        self.assertRegex(page, r"so far: sum of 1: [\d.]+ s, boxenum [\d.]+ s: [\d.]+ times \|.*\| open \|")
        kept = self.read("cells.json")
        again = self.measure("--row=complete", "--row=first")
        self.assertNotRegex(again.stdout, "ms_[58]x")
        self.assertEqual(json.loads(self.read("cells.json"))["cells"], json.loads(kept)["cells"])
        anew = self.measure("--row=complete", "--fresh")
        self.assertIn("complete: ms_5x40_s1: all 1", anew.stdout)
        self.assertEqual(json.loads(self.read("cells.json"))["cells"].keys(), json.loads(kept)["cells"].keys())

    def test_a_reference_that_is_wrong_is_called_so(self) -> None:
        self.write("reference/boxenum.cpp", SHOWS % (SOLUTION.replace("0110", "1110") + "RES %s sols 1 complete\\n"))
        done = self.measure("--row=complete")
        self.assertIn("block 20: equation 1 gives 7, not 6", done.stdout)
        self.write("reference/boxenum.cpp", SHOWS % (SOLUTION + "RES %s sols 2 complete\\n"))
        done = self.measure("--row=complete")
        self.assertIn("all 1, the reference has 2", done.stdout)

    def test_a_row_without_the_reference(self) -> None:
        done = self.measure("--row=counts", "--reference=", "--doc=")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertIn("counts: sts_7: **all 1, not all 30**", done.stdout)
        done = self.measure("--row=complete", "--reference=", "--doc=")
        self.assertIn("boxenum came to no end or was left out", done.stdout)

    def test_what_it_does_not_know(self) -> None:
        for option in ("--nonsense", "--row=none", "--fresh=1", "file.opt"):
            done = self.measure(option)
            self.assertNotEqual(done.returncode, 0)
            self.assertIn("Unknown", done.stderr)

    def test_a_reference_that_does_not_compile(self) -> None:
        self.write("reference/boxenum.cpp", "no program\n")
        done = self.measure("--row=complete")
        self.assertNotEqual(done.returncode, 0)
        self.assertIn("boxenum.cpp", done.stderr)

    def test_a_cut_measurement_keeps_what_it_has(self) -> None:
        """A script in the place of latbox-all has an answer to the first row and none to the second; asked to end, it ends."""
        self.write_program("latbox-all", script([FOUND], "verdict: all 1", 10).replace(
            "for f; do :; done\n", "for f; do :; done\ngrep -q 14 \"$f\" || { trap 'exit 12' TERM; while :; do :; done; }\n"))
        command = [sys.executable, BARS, "--binary=" + self.path("latbox-all"), "--instances=" + self.path("programs"),
                   "--record=" + self.path("cells.json"), "--doc=", "--row=counts", "--row=complete"]
        with subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True) as process:
            self.assertIn("counts: sts_7: ", process.stdout.readline())
            self.assertIn("counts: ", process.stdout.readline())
            process.terminate()
            _, err = process.communicate(timeout=harness.LIMIT)
        self.assertNotEqual(process.returncode, 0)
        self.assertIn("the same command goes on from there", err)
        self.assertEqual(list(json.loads(self.read("cells.json"))["cells"]), ["counts | sts_7"])

    def test_a_killed_measurement_leaves_nothing_behind(self) -> None:
        self.write_program("latbox-all", "#!/bin/sh\necho $$ >'%s'\nwhile :; do sleep 1; done\n" % self.path("pid"))
        command = [sys.executable, BARS, "--binary=" + self.path("latbox-all"), "--instances=" + self.path("programs"),
                   "--record=" + self.path("cells.json"), "--doc=", "--row=counts"]
        with subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL) as process:
            harness.wait_until(lambda: self.exists("pid") and self.read("pid").endswith("\n"), "the run has begun")
            process.kill()
        pid = int(self.read("pid"))
        self.addCleanup(subprocess.run, ["kill", "-KILL", str(pid)], stderr=subprocess.DEVNULL, check=False)
        harness.wait_until(lambda: not runs(pid), "the run has ended")


def runs(pid: int) -> bool:
    try:
        with open("/proc/%d/stat" % pid, encoding="utf-8") as file:
            return file.read().rsplit(")", 1)[1].split()[0] != "Z"
    except OSError:
        return False


if __name__ == "__main__":
    harness.main()
