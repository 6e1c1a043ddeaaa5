#!/usr/bin/env python3
"""The command that runs latbox-solve beside glpsol and cbc on textbook models: what it takes for a model, believes, keeps, writes."""

import json
import os
import shutil
import subprocess
import sys
import unittest
from fractions import Fraction
from typing import Any

import harness

TREE = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
MATHPROG = os.path.join(TREE, "bench", "mathprog")
sys.path[:0] = [os.path.join(TREE, "bench", "textbook"), os.path.join(TREE, "bench", "comparison")]
import models  # noqa: E402
import solvers  # noqa: E402
import verdict  # noqa: E402

from latbox.models import read_text  # noqa: E402

BAG = "maximize\n value: 5 a + 3 b + 2 ~r_0\nsubject to\n weight: 3 a + 2 b <= 7\nbounds\n a <= 2\n b <= 2\n ~r_0 = 1\ngeneral\n a b\nend\n"
PAGE = "<!-- mathprog: written by bench/mathprog -->\nold\n<!-- mathprog: end -->\n"


def cell(claim: str, objective: str | None = None, **more: Any) -> dict[str, Any]:
    return {"claim": claim, "objective": objective, "fault": "", "cpu": 0.5, "seconds": 0.5, "columns": 9, "load": 1.0, **more}


class Run:
    """What a solver has left."""

    def __init__(self, lines: list[str]) -> None:
        self.lines, self.status = [(0.0, line) for line in lines], 0


class ModelsTest(unittest.TestCase):
    def test_a_constant_is_not_decided(self) -> None:
        self.assertTrue(models.is_whole(read_text(BAG, "lp")))
        self.assertFalse(models.is_whole(read_text(BAG.replace(" a b\nend", " a\nend"), "lp")))
        self.assertFalse(models.is_whole(read_text("minimize\n x\nsubject to\n c: x >= 1\nbounds\n x = 1\nend\n", "lp")))


class AnswersTest(harness.Case):
    def instance(self) -> models.Instance:
        return models.Instance("bag", "bag.lp", "hash", read_text(BAG, "lp"))

    def test_points_are_judged_by_the_model(self) -> None:
        good = solvers.judged(self.instance(), "optimal", {"a": Fraction(1), "b": Fraction(2)})
        self.assertEqual((good["fault"], good["objective"]), ("", "13"))
        bad = solvers.judged(self.instance(), "optimal", {"a": Fraction(2), "b": Fraction(2)})
        self.assertIn("weight is 10", bad["fault"])

    def test_glpsol(self) -> None:
        self.write("names", "p mip max 1 2 2\nn i 1 weight\nn j 1 a\nn j 2 b\ne o f\n")
        for letter, claim in (("o", "optimal"), ("f", "point")):
            self.write("answer", "c Status\ns mip 1 2 %s 13\ni 1 7\nj 1 1\nj 2 1.9999999\ne o f\n" % letter)
            self.assertEqual(solvers.Glpsol().claim(self.path(""), Run([])), (claim, {"a": 1, "b": 2}))
        self.write("answer", "s mip 1 2 u 0\n")
        self.assertEqual(solvers.Glpsol().claim(self.path(""), Run([])), ("none", None))
        self.assertEqual(solvers.Glpsol().claim(self.path(""), Run(["PROBLEM HAS NO INTEGER FEASIBLE SOLUTION"])), ("infeasible", None))

    def test_columns_that_are_left(self) -> None:
        lines = ["64 integer variables, all of which are binary", "Preprocessing...", "3 rows, 2 columns, 5 non-zeros"]
        for text, left in (("57 integer variables, 3 of which are binary", 57), ("one integer variable, which is binary", 1)):
            self.assertEqual(solvers.Glpsol.columns_left(Run([*lines, text])), left)
        self.assertEqual(solvers.Glpsol.columns_left(Run(["Objective value = 3", "INTEGER OPTIMAL SOLUTION FOUND BY MIP PREPROCESSOR"])), 0)
        self.assertIsNone(solvers.Glpsol.columns_left(Run(lines[:1])))

    def test_cbc(self) -> None:
        point = "\n      0 a                 1        5\n**    1 b           1.9999999        3\n"
        for head, answer in (("Optimal - objective value 13", ("optimal", {"a": 1, "b": 2})),
                             ("Stopped on time - objective value 13", ("point", {"a": 1, "b": 2})),
                             ("Integer infeasible - objective value 0", ("infeasible", None)),
                             ("Stopped on time (no integer solution - continuous used) - objective value 0", ("none", None))):
            self.write("answer", head + point)
            self.assertEqual(solvers.Cbc().claim(self.path(""), Run([])), answer)

    def test_latbox(self) -> None:
        solver = solvers.Latbox("latbox-solve", "")
        end = {"event": "end", "status": "optimal", "values": {"a": "1", "b": 2}}
        for status, values, claim in (("optimal", end["values"], "optimal"), ("feasible", end["values"], "point"),
                                      ("unknown", None, "none"), ("infeasible", None, "infeasible")):
            self.write("events", json.dumps({**end, "status": status, "values": values}) + "\n")
            self.assertEqual(solver.claim(self.path(""), Run([])), (claim, values and {"a": 1, "b": 2}))
        self.write("events", '{"event": "start"}\n')
        self.assertEqual(solver.claim(self.path(""), Run([])), ("failed", None))


class VerdictTest(unittest.TestCase):
    def row(self, ours: dict[str, Any], glpsol: dict[str, Any], cbc: dict[str, Any]) -> dict[str, dict[str, Any]]:
        return dict(zip(verdict.SOLVERS, (ours, glpsol, cbc)))

    def test_a_better_point_refutes_an_optimum(self) -> None:
        row = self.row(cell("optimal", "12"), cell("point", "13"), cell("none"))
        self.assertEqual(verdict.disproof(verdict.OURS, row, -1), "13 is better")
        self.assertEqual(verdict.disproof(verdict.OURS, row, 1), "")
        self.assertEqual(verdict.disproof(verdict.GLPSOL, row, -1), "")

    def test_a_point_that_is_none_refutes_nothing(self) -> None:
        row = self.row(cell("infeasible"), cell("optimal", "13", fault="row c is 8"), cell("none"))
        self.assertEqual(verdict.disproof(verdict.OURS, row, -1), "")
        self.assertEqual(verdict.disproof(verdict.GLPSOL, row, -1), "row c is 8")
        row[verdict.CBC] = cell("point", "1")
        self.assertEqual(verdict.disproof(verdict.OURS, row, -1), "there is a point")

    def test_the_bar(self) -> None:
        for theirs, inside in ((cell("optimal", cpu=1.0, columns=60), True), (cell("optimal", cpu=1.1), False),
                               (cell("optimal", columns=61), False), (cell("point"), False), (cell("infeasible", columns=None), False)):
            self.assertEqual(verdict.in_bar(self.row(cell("none"), theirs, cell("none"))), inside)

    def test_words(self) -> None:
        self.assertEqual(verdict.words(cell("optimal", "13"), ""), "optimal 13, 0.5 s, verified")
        self.assertEqual(verdict.words(cell("infeasible"), ""), "infeasible, 0.5 s, unverified")
        self.assertEqual(verdict.words(cell("optimal", "13"), "14 is better"), "**wrong**: optimal: 14 is better, 0.5 s")
        self.assertEqual(verdict.words(cell("failed", fault="no engine"), "no engine"), "**failed**: no engine, 0.5 s")


class CommandTest(harness.Case):
    """On a folder of two examples, one of which has a continuous column."""

    def setUp(self) -> None:
        super().setUp()
        engine = harness.latbox_all()
        if not all(map(shutil.which, ("glpsol", "cbc", engine))):
            self.skipTest("not all solvers are there")

    def run_it(self, *options: str) -> str:
        command = [sys.executable, MATHPROG, "--examples=" + self.path("examples"), "--limit=10", "--record=" + self.path("r.json"),
                   "--engines=" + os.path.dirname(harness.Settings.binary), "--work=" + self.path("work"), "--doc=" + self.path("page.md"),
                   *options]
        done = subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=harness.LIMIT, check=False)
        self.assertEqual(done.returncode, 0, done.stderr)
        return done.stdout

    def test_it_measures_once_and_writes_the_page(self) -> None:
        os.mkdir(self.path("examples"))
        self.write("examples/bag.mod", "var a integer >= 0 <= 2; var b integer >= 0 <= 2; maximize v: 5*a + 3*b;\n"
                                       "s.t. weight: 3*a + 2*b <= 7; end;\n")
        self.write("examples/mix.mod", "var a >= 0 <= 2; maximize v: 5*a; s.t. weight: 3*a <= 7; end;\n")
        self.write("page.md", PAGE)
        lines = self.run_it().splitlines()
        self.assertEqual([line.split(":")[1].strip() for line in lines], list(verdict.SOLVERS))
        page = self.read("page.md")
        self.assertRegex(page, r"\n\| bag \| 1 x 2 \| \d \| optimal 11, .* verified \| optimal 11, .* \| optimal 11, .* \| met \|\n")
        self.assertNotIn("mix", page)
        self.assertIn("Wrong statuses of latbox-solve: 0 of 1. The bar is met by 1 of 1 models.", page)
        self.assertEqual(self.run_it(), "")
        self.assertEqual(len(self.run_it("--fresh").splitlines()), 3)
        self.assertEqual(self.run_it("--table"), "")


if __name__ == "__main__":
    harness.main()
