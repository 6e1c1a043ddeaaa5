"""latbox-solve end to end: what it answers, by status, exit status and values; its files."""

from __future__ import annotations

import json
import os
from fractions import Fraction

import support  # noqa: F401
import harness
import solve_support
from solve_support import CONTINUOUS, FOUR_POINTS, KNAPSACK, NO_POINT, UNBOUNDED, SolveCase, hard, hard_objective

from latbox.front import answer
from latbox.models import read_text
from latbox.solving import statuses
from latbox.solving.events import End


# The sum of two columns is to be great, and one of them has no end.
OPEN_OPT = "[ inf ] [ [ 1 1 ] ] [ ] [ ] [ [ 1 -2 ] ] [ -inf ] [ 3 ] [ 0 0 ] [ 2 0 ] [ inf inf ]\n"


class AnswerTest(SolveCase):
    def setUp(self) -> None:
        super().setUp()
        self.write("m.lp", KNAPSACK)

    def assert_answer(self, result: harness.Result, exit_status: int, **lines: object) -> dict[str, str]:
        found = self.answer(result)
        for key, value in lines.items():
            self.assertEqual(found.get(key), None if value is None else str(value), result.out + result.err)
        self.assertEqual(result.status, exit_status, result.err)
        return found

    def test_optimal(self) -> None:
        for engine in ("auto", "complete"):
            result = self.solve("--engine", engine, "m.lp")
            self.assertRegex(result.out, r"\Astatus: optimal\nobjective: 90\nbound: 90\npoints: 1\ntime: [0-9.]+ s\n\n"
                                         r"x4 = -1\nx5 = 3\n\Z")
            self.assertEqual(result.status, 10)
        self.assertEqual(self.left_over(), [])

    def test_all_values(self) -> None:
        result = self.solve("--all-values", "m.lp")
        self.assertTrue(result.out.endswith("\n\nx1 = 0\nx2 = 0\nx3 = 0\nx4 = -1\nx5 = 3\n"), result.out)

    def test_where_all_is_0_nothing_follows(self) -> None:
        """The answer ended with a blank line."""
        self.write("z.lp", "minimize\n obj: x\nsubject to\n c: x <= 3\ngeneral\n x\nend\n")
        self.assertRegex(self.solve("z.lp").out, r"\Astatus: optimal\nobjective: 0\nbound: 0\npoints: 1\ntime: [0-9.]+ s\n\Z")

    def test_quiet_is_the_answer_alone(self) -> None:
        self.assertEqual(self.solve("--quiet", "m.lp").err, "")

    def test_infeasible(self) -> None:
        self.write("n.lp", NO_POINT)
        self.assert_answer(self.solve("n.lp"), 20, status="infeasible", points=0, objective=None)
        self.assert_answer(self.solve("--zero-exit", "n.lp"), 0, status="infeasible")

    def test_infeasible_before_any_engine(self) -> None:
        self.write("n.lp", "minimize\n obj: x\nsubject to\n c: x >= 1\nbounds\n 1.2 <= x <= 1.8\ngeneral\n x\nend\n")
        result = self.solve("n.lp")
        self.assert_answer(result, 20, status="infeasible", points=0)
        self.assertIn("note: x has no value: its bounds are 6/5 and 9/5, without a multiple of 1 between them\n", result.err)

    def test_all_points(self) -> None:
        self.write("f.opt", FOUR_POINTS)
        result = self.solve("--solutions", "all", "f.opt")
        self.assert_answer(result, 10, status="all", points=4)
        for number in range(1, 5):
            self.assertIn("\n\npoint %d:\n" % number, result.out)
        self.assert_answer(self.solve("--solutions=5", "f.opt"), 10, status="all", points=4)
        self.assert_answer(self.solve("--solutions=3", "f.opt"), 10, status="optimal", points=3)
        self.assert_answer(self.solve("f.opt"), 10, status="optimal", points=1)

    def test_the_best_points_in_their_order(self) -> None:
        result = self.solve("--solutions", "4", "m.lp")
        self.assert_answer(result, 10, status="optimal", points=4, objective=90)
        values = [line.partition("objective ")[2].rstrip(":") for line in result.out.splitlines() if line.startswith("point ")]
        self.assertEqual(values, sorted(values, reverse=True))
        everything = self.solve("--solutions", "all", "m.lp")
        best = [line.partition("objective ")[2].rstrip(":") for line in everything.out.splitlines()
                if line.startswith("point ")][:4]
        self.assertEqual(values, best)

    def test_unbounded(self) -> None:
        self.write("u.lp", UNBOUNDED)
        result = self.solve("--all-values", "u.lp")
        self.assert_answer(result, 13, status="unbounded", points=1)
        self.assertRegex(result.out, r"\n\nx = [0-9]+\ny = [0-9]+\n\nray:\n")

    def test_a_ray_is_whole(self) -> None:
        """It went in tenths where the columns do."""
        self.write("u.opt", "[ inf ] [ [ 1 1 ] ] [ ] [ ] [ [ 1 -20 ] ] [ -inf ] [ 3 ] [ 1 1 ] [ 0 0 ] [ inf 9/2 ]\n")
        self.assert_answer(self.solve("u.opt"), 10, status="optimal")
        self.write("u.opt", "[ inf ] [ [ 1 1 ] ] [ ] [ ] [ [ 10 -3 ] ] [ -inf ] [ 3 ] [ 1 1 ] [ 0 0 ] [ inf inf ]\n")
        result = self.solve("--all-values", "u.opt")
        self.assert_answer(result, 13, status="unbounded")
        self.assertRegex(result.out, r"\nray:\nx1 = [0-9]+\nx2 = [1-9][0-9]*\n\Z")

    def test_without_a_point_nothing_is_unbounded(self) -> None:
        self.write("u.lp", UNBOUNDED.replace("x - 2 y <= 3", "2 x - 2 y = 3"))
        self.assert_answer(self.solve("u.lp"), 20, status="infeasible")

    def test_a_limit_without_and_with_a_point(self) -> None:
        self.write("h.opt", hard())
        self.assert_answer(self.solve("--time", "1", "h.opt"), 12, status="unknown", points=0)
        self.write("o.opt", hard_objective())
        result = self.solve_in_time(4, lambda found: found.status == 11, "--engine=search", "o.opt")
        self.assert_answer(result, 11, status="feasible", points=1)

    def test_no_time_at_all(self) -> None:
        self.assert_answer(self.solve("--time=0.001", "m.lp"), 12, status="unknown", points=0)

    def test_target_and_gap(self) -> None:
        self.write("o.opt", hard_objective())
        result = self.solve("--target", "1000000", "o.opt")
        self.assert_answer(result, 11, status="feasible")
        self.assertLessEqual(int(self.answer(result)["objective"]), 1000000)
        self.assert_answer(self.solve("--gap", "100000", "o.opt"), 11, status="feasible")
        self.assert_answer(self.solve("--gap=0", "m.lp"), 10, status="optimal", objective=90)

    def test_a_grid_proves_nothing(self) -> None:
        self.write("c.lp", CONTINUOUS)
        self.assertEqual(self.solve("c.lp").err, "latbox-solve: c.lp, line 6, column 2: variable x is continuous: declare it integer, or ask for "
                                                 "a decimal grid with --digits=N\n")
        self.assertEqual(self.solve("c.lp").status, 2)
        result = self.solve("--digits=2", "c.lp")
        self.assert_answer(result, 11, status="feasible", bound=None)
        self.assertIn("on a grid of 2 digits", result.err)
        self.write("n.lp", "minimize\n obj: y\nsubject to\n c: x + y >= 0\nbounds\n 0.33 <= x <= 0.34\n y <= 1\ngeneral\n y\nend\n")
        self.assert_answer(self.solve("--digits=1", "n.lp"), 12, status="unknown", points=0)
        self.assertEqual(self.solve("n.lp").status, 2)
        self.write("c.lp", CONTINUOUS.replace("<= 7.5", "<= -1"))
        self.assert_answer(self.solve("--digits=2", "c.lp"), 12, status="unknown", points=0)

    def test_a_grid_is_not_unbounded(self) -> None:
        """`feasible` is the most that can be said with continuous columns; the ray is shown and told of."""
        self.write("u.lp", UNBOUNDED.replace("general\n x y", "general\n y"))
        for digits in (0, 2):
            result = self.solve("--digits=%d" % digits, "--json=j.txt", "u.lp")
            self.assert_answer(result, 11, status="feasible", points=1)
            self.assertRegex(result.out, r"\n\nray:\n")
            self.assertIn("note: from the point the ray leads to better and better ones, without end\n", result.err)
            end = json.loads(self.read("j.txt").splitlines()[-1])
            self.assertEqual((end["status"], set(end["ray"])), ("feasible", {"x", "y"}))

    def test_what_is_proven_on_a_grid_is_no_bound(self) -> None:
        self.write("c.lp", CONTINUOUS)
        result = self.solve("--digits=2", "--json=-", "c.lp")
        events = [json.loads(line) for line in result.out.splitlines()]
        self.assertEqual({event.get("bound") for event in events}, {None})

    def test_a_semi_continuous_column_without_decimals(self) -> None:
        self.write("c.lp", "minimize\n obj: x + y\nsubject to\n c: y >= 0\nbounds\n 0.33 <= x <= 0.34\n y <= 1\n"
                           "general\n y\nsemi-continuous\n x\nend\n")
        self.assert_answer(self.solve("--digits=1", "c.lp"), 11, status="feasible", objective=0)

    def test_a_semi_column_whose_bounds_leave_nothing_is_0(self) -> None:
        self.write("c.lp", "maximize\n obj: x + y\nsubject to\n c: x + y <= 9\nbounds\n 3 <= x <= 2\n y <= 1\n"
                           "general\n x y\nsemi-continuous\n x\nend\n")
        self.assert_answer(self.solve("c.lp"), 10, status="optimal", objective=1, y=1)

    def test_the_best_of_several_targets_are_not_all(self) -> None:
        """Six points have a sum of 5 or nearly; two are asked for, and more exist."""
        self.write("g.opt", "[ 5 ] [ [ 1 1 ] ] [ ] [ ] [ ] [ ] [ ] [ 0 0 ] [ 0 0 ] [ 3 3 ]\n")
        self.assert_answer(self.solve("--solutions=2", "g.opt"), 10, status="optimal", points=2)
        self.assert_answer(self.solve("--solutions=16", "g.opt"), 10, status="all", points=16)

    def test_the_search_alone(self) -> None:
        """What the rewriting leaves no choice needs no search; with an objective the best that it meets are told."""
        self.write("f.lp", "minimize\n obj: x + y\nsubject to\n c: x + y = 2\nbounds\n x <= 1\n y <= 1\ngeneral\n x y\nend\n")
        self.assert_answer(self.solve("--engine=search", "f.lp"), 11, status="feasible", objective=2)
        found = self.answer(self.solve_in_time(3, lambda told: "points: 2\n" in told.out, "--engine=search", "--solutions=2", "m.lp"))
        self.assertEqual((found["status"], found["points"]), ("feasible", "2"))

    def test_open_columns_are_told_once(self) -> None:
        self.write("o.lp", "minimize\n obj:\nsubject to\n c: 3 x + 5 y = 1\nbounds\n x free\n y free\ngeneral\n x y\nend\n")
        result = self.solve("--solutions=all", "o.lp")
        self.assert_answer(result, 11, status="feasible", points=1)
        self.assertEqual(result.err.count("nothing bounds"), 1, result.err)

    def test_more_than_one_point_of_an_unbounded_model(self) -> None:
        """`unknown` was the answer, where `unbounded` can be proven."""
        self.write("u.lp", UNBOUNDED)
        for count in ("2", "all"):
            result = self.solve("--all-values", "--solutions", count, "u.lp")
            self.assert_answer(result, 13, status="unbounded", points=1)
            self.assertRegex(result.out, r"\n\nx = [0-9]+\ny = [0-9]+\n\nray:\n")
            self.assertIn("note: there are better and better points without end: one of them is shown\n", result.err)
            self.assertNotIn("nothing bounds", result.err)
        self.write("u.lp", UNBOUNDED.replace("x - 2 y <= 3", "2 x - 2 y = 3"))
        self.assert_answer(self.solve("--solutions=2", "u.lp"), 20, status="infeasible")

    def test_best_points_without_end(self) -> None:
        """As many as are wanted are as good as the best one: proven, for the best level has no end."""
        self.write("t.lp", "minimize\n x\nsubject to\n c: x + y - 2000 z >= 0\n d: y >= 1\nbounds\n z >= 1\ngeneral\n x y z\nend\n")
        result = self.solve("--solutions=3", "--output=t.txt", "t.lp")
        self.assert_answer(result, 10, status="optimal", points=3, objective=0, bound=0)
        self.assertIn("t.txt: 3 points, all well\n", self.solve("--check=t.txt", "t.lp").out)
        self.assertNotIn("nothing bounds", result.err)
        result = self.solve("--solutions=all", "t.lp")
        self.assert_answer(result, 11, status="feasible", objective=0, bound=0)
        self.assertEqual(result.err.count("nothing bounds"), 1, result.err)
        self.write("t.opt", "[ 5 ] [ [ 1 1 ] ] [ ] [ ] [ ] [ ] [ ] [ 0 0 ] [ -inf 0 ] [ inf 3 ]\n")
        self.assert_answer(self.solve("--solutions=2", "t.opt"), 11, status="feasible", objective=0, bound=0)

    def test_points_without_end_and_without_objective(self) -> None:
        self.write("o.lp", "minimize\n obj:\nsubject to\n c: 3 x + 5 y = 1\nbounds\n x free\n y free\ngeneral\n x y\nend\n")
        for engine in ("auto", "complete"):
            result = self.solve("--solutions=2000", "--engine", engine, "--output=o.txt", "o.lp")
            self.assert_answer(result, 10, status="optimal", points=2000)
            self.assertIn("o.txt: 2000 points, all well\n", self.solve("--check=o.txt", "o.lp").out)

    def test_an_objective_that_says_nothing(self) -> None:
        text = "maximize\n obj: 7\nsubject to\n c: x + y = 2\ngeneral\n x y\nend\n"
        self.write("c.lp", text)
        self.assert_answer(self.solve("--output=o.txt", "c.lp"), 10, status="optimal", objective=7, bound=7)
        self.assertIn("# objective: 7\n", self.read("o.txt"))
        self.assertIn("point 1: ok, objective 7\n", self.solve("--check=o.txt", "c.lp").out)
        result = self.solve("--solutions=all", "c.lp")
        self.assert_answer(result, 10, status="all", objective=7, bound=7, points=3)
        self.assertEqual(result.err.count(" s: objective 7\n"), 1, result.err)
        self.write("c.lp", text.replace("7", "0 x"))
        self.assert_answer(self.solve("c.lp"), 10, status="optimal", objective=0, bound=0)
        self.write("c.lp", text.replace("7", ""))
        self.assert_answer(self.solve("c.lp"), 10, status="optimal", objective=None, bound=None)
        self.write("c.lp", text.replace("x + y = 2", "2 x + 2 y = 5"))
        self.assert_answer(self.solve("c.lp"), 20, status="infeasible", objective=None, bound=None)

    def test_a_line_for_each_better_point_and_no_other(self) -> None:
        """All points were told, one by one, where all were wanted."""
        result = self.solve("--solutions=all", "m.lp")
        values = [int(line.partition(": objective ")[2]) for line in result.err.splitlines() if ": objective " in line]
        self.assertEqual(values, sorted(set(values)))
        self.assertLess(len(values), int(self.answer(result)["points"]))

    def test_what_is_proven_to_be_best_is_the_bound(self) -> None:
        for settings in (["--solutions=3"], ["--solutions=all"]):
            self.assert_answer(self.solve(*settings, "m.lp"), 10, objective=90, bound=90)

    def test_all_columns_are_fixed(self) -> None:
        self.write("c.lp", "maximize\n obj: x + 2\nsubject to\n c: x + y <= 7\nbounds\n x = 3\n y = 4\ngeneral\n x y\nend\n")
        self.assert_answer(self.solve("c.lp"), 10, status="optimal", objective=5, bound=5, x=3, y=4)

    def test_standard_input(self) -> None:
        self.assert_answer(self.solve("--format=lp", "-", stdin=KNAPSACK.encode()), 10, status="optimal", objective=90)
        closed = self.solve("--format=lp", "-", prepare=lambda: os.close(0))
        self.assertEqual((closed.status, closed.err),
                         (2, "latbox-solve: standard input, line 1: the file must begin with Minimize or Maximize\n"))

    def test_seeds_and_threads(self) -> None:
        for seed in range(3):
            self.assert_answer(self.solve("--seed=%d" % seed, "--threads=%d" % (1 + 4 * seed), "m.lp"), 10, objective=90)

    def test_the_table_is_what_happens(self) -> None:
        """Each status of the table is one of the above, and its exit status stands in the documents."""
        self.assertEqual({(s.name, s.has_point): s.exit_status for s in statuses.TABLE},
                         {("optimal", True): 10, ("all", True): 10, ("feasible", True): 11, ("interrupted", True): 11,
                          ("unknown", False): 12, ("interrupted", False): 12, ("unbounded", True): 13, ("infeasible", False): 20})

    def test_models_that_are_none(self) -> None:
        for name, text, message in (
                ("a.lp", "minimize\n obj: x +\nend\n", "a.lp, line "),
                ("missing.lp", None, "missing.lp: No such file or directory"),
                ("a.xyz", "", "a.xyz: its name does not end in .opt, .lp or .mps")):
            if text is not None:
                self.write(name, text)
            result = self.solve(name)
            self.assertEqual((result.status, result.out), (2, ""))
            self.assertTrue(result.err.startswith("latbox-solve: " + message), result.err)


class FilesTest(SolveCase):
    def setUp(self) -> None:
        super().setUp()
        self.write("m.lp", KNAPSACK)

    def test_output_and_check(self) -> None:
        self.assertEqual(self.solve("--output=o.txt", "m.lp").status, 10)
        self.assertEqual(self.read("o.txt"), "# status: optimal\n# objective: 90\n# point 1\nx1 = 0\nx2 = 0\nx3 = 0\nx4 = -1\n"
                                             "x5 = 3\n")
        result = self.solve("--check", "o.txt", "m.lp")
        self.assertEqual((result.status, result.out), (0, "point 1: ok, objective 90\no.txt: 1 point, all well\n"))
        self.assertEqual(sorted(os.listdir(self.folder)), ["m.lp", "o.txt", "work"])

    def test_what_check_finds(self) -> None:
        self.solve("--output=o.txt", "--solutions=2", "m.lp")
        good = self.read("o.txt")
        for old, new, status, message in (
                ("x5 = 3", "x5 = 4", 1, "point 1: wrong: x5 = 4 is outside -1 .. 3\n"),
                ("x5 = 3", "x5 = 5/2", 1, "point 1: wrong: x5 = 5/2 is not a multiple of 1\n"),
                ("x1 = 0", "x1 = 3", 1, "point 1: wrong: row cap is 26, and its sides are -inf and 20\n"),
                ("x1 = 0", "x9 = 0", 2, "latbox-solve: o.txt, line 4: the model has no variable x9\n"),
                ("x1 = 0", "x2 = 0", 2, "latbox-solve: o.txt, line 5: x2 has a value already\n"),
                ("x1 = 0\n", "", 2, "latbox-solve: o.txt: point 1 has no value for x1\n"),
                ("x1 = 0", "x1 = 0.5", 2, "latbox-solve: o.txt, line 4: a line `name = p/q` is wanted\n")):
            self.write("o.txt", good.replace(old, new, 1))
            result = self.solve("--check=o.txt", "m.lp")
            self.assertEqual(result.status, status, result.out + result.err)
            self.assertIn(message, result.out + result.err)
        self.write("o.txt", "\ufeff" + good[good.index("x1"):good.index("# point 2")].replace("\n", "\r\n"))
        self.assertEqual(self.solve("--check=o.txt", "m.lp").out, "point 1: ok, objective 90\no.txt: 1 point, all well\n")
        first = good[good.index("# point 1"):good.index("# point 2")]
        self.write("o.txt", first + first.replace("point 1", "point 2"))
        result = self.solve("--check=o.txt", "m.lp")
        self.assertEqual((result.status, result.out.splitlines()[2]), (1, "1 point stands twice"))
        self.write("o.txt", "")
        self.assertEqual(self.solve("--check=o.txt", "m.lp").err, "latbox-solve: o.txt: there is no point in it\n")
        self.assertEqual(self.solve("--check=none", "m.lp").err, "latbox-solve: --check=none: No such file or directory\n")

    def test_names_that_begin_like_comments(self) -> None:
        """Those of fixed MPS hold blanks: the lines of `# a` and `# point` were passed over, and the point had no value for them."""
        model = read_text("NAME\nROWS\n N  o\n G  c\nCOLUMNS\n    M         'MARKER'                 'INTORG'\n" +
                          "".join("    %-8s  o         1              c         1\n" % name for name in ("# a", "# point", "#")) +
                          "RHS\n    R         c         2\nENDATA\n", "fixed-mps")
        x = [Fraction(1), Fraction(1), Fraction(0)]
        end = End("optimal", x, Fraction(2), Fraction(2), [x], 1, 0.5)
        written = answer.output_text(model, end)
        self.assertEqual(written, "# status: optimal\n# objective: 2\n# point 1\n# a = 1\n# point = 1\n# = 0\n")
        self.assertEqual(answer.read_points(model, written, "o.txt"), end.points)

    def test_log(self) -> None:
        self.solve("--log=l.txt", "m.lp")
        log = self.read("l.txt")
        self.assertRegex(log, r"(?m)^[0-9.]+ latbox-all\[[0-9]+\]: .*-86$")
        self.assertRegex(log, r"(?m)^[0-9.]+ latbox\[[0-9]+\]: << latbox v")

    def test_options_file(self) -> None:
        self.write("o.conf", "# mine\nsolutions = 2\n\nquiet\nengine=complete\n")
        result = self.solve("--options", "o.conf", "m.lp")
        self.assertEqual((result.status, result.err, self.answer(result)["points"]), (10, "", "2"))
        self.assertEqual(self.answer(self.solve("--options", "o.conf", "--solutions=3", "m.lp"))["points"], "3")

    def test_proof_folder(self) -> None:
        if "--proof" not in self.run_complete_help():
            self.skipTest("this latbox-all writes no proofs")
        self.assertEqual(self.solve("--proof=p", "m.lp").status, 10)
        self.assertEqual(sorted(os.listdir(self.path("p"))), ["program.opt", "program.proof"])
        self.assertIn("// x5 = x5\n", self.read("p/program.opt"))
        self.assert_proven("optimum -86")
        self.write("n.lp", NO_POINT)
        self.assertEqual(self.solve("--proof=p", "n.lp").status, 20)
        self.assert_proven("none")
        self.assertEqual(self.solve("--proof=p", "--solutions=all", "m.lp").status, 10)
        self.assert_proven("all ")

    def test_what_has_become_of_the_proof(self) -> None:
        """It is told, and one that another run has left does not stay."""
        if "--proof" not in self.run_complete_help():
            self.skipTest("this latbox-all writes no proofs")
        self.assertIn("note: latbox-check --proof=p/program.proof p/program.opt checks the proof\n", self.solve("--proof=p", "m.lp").err)
        self.write("h.opt", hard())
        result = self.solve("--proof=p", "--time=1", "h.opt")
        self.assertEqual(result.status, 12)
        self.assertIn("no proof is written: the complete search has not come to its end", result.err)
        self.assertNotIn("program.proof", os.listdir(self.path("p")))

    def test_no_time_leaves_no_old_proof(self) -> None:
        os.makedirs(self.path("p"))
        self.write("p/program.proof", "old")
        result = self.solve("--proof=p", "--time=0.001", "m.lp")
        self.assertEqual((result.status, result.err), (12, "note: no proof is written: the complete search has not come to its end\n"))
        self.assertEqual(os.listdir(self.path("p")), [])

    def test_no_proof_is_told(self) -> None:
        """A proof that an earlier run has left is gone, and it is said why there is none."""
        point, fixed = "the point speaks for itself", "nothing had to be searched"
        for text, settings, reason in (("[ ] [ ] [ [ 3 5 7 11 ] ] [ 13 ] [ ] [ ] [ ] [ 0 0 0 0 ] [ 0 0 0 0 ] [ 9 9 9 9 ]\n", [], point),
                                       ("[ -inf ] [ [ 1 ] ] [ ] [ ] [ ] [ ] [ ] [ 0 ] [ 3 ] [ 3 ]\n", [], fixed),
                                       # Nothing was said where a second task without a proof had found the point.
                                       (OPEN_OPT, [], "point and ray speak for themselves"),
                                       (OPEN_OPT, ["--solutions=all"], "point and ray speak for themselves"),
                                       (hard_objective(), ["--time=1"], "the complete search has not come to its end")):
            self.write("m.opt", text)
            os.makedirs(self.path("p"), exist_ok=True)
            self.write("p/program.proof", "old")
            result = self.solve("--proof=p", *settings, "m.opt")
            is_there = os.path.exists(self.path("p/program.proof"))
            if is_there:
                self.assertNotEqual(self.read("p/program.proof"), "old")
            if reason is not point or not is_there:  # the complete engine may be the first one to find it
                self.assertIn("no proof is written: " + reason, result.err)

    def assert_proven(self, verdict: str) -> None:
        result = self.run_latbox_check("--proof=p/program.proof", "p/program.opt")
        self.assertEqual((result.status, result.err), (0, ""), result.out)
        self.assertIn(verdict, result.out)

    def run_complete_help(self) -> str:
        import subprocess

        engine = harness.latbox_all()
        return subprocess.run([engine, "--help"], stdout=subprocess.PIPE, check=True, text=True).stdout

    def test_no_output_takes_the_place_of_another_file(self) -> None:
        """--output=m.lp left a list of values where the model had been."""
        os.link(self.path("m.lp"), self.path("link.lp"))
        self.write("o.conf", "quiet\n")
        for arguments, message in ((["--output=m.lp"], "--output=m.lp: that is the model"),
                                   (["--json=work/../m.lp"], "--json=work/../m.lp: that is the model"),
                                   (["--log=link.lp"], "--log=link.lp: that is the model"),
                                   (["--options=o.conf", "--log=o.conf"], "--log=o.conf: that is the file of --options"),
                                   (["--output=a", "--json=./a"], "--json=./a: that is the file of --output")):
            result = self.solve(*arguments, "m.lp")
            self.assertEqual((result.status, result.err), (2, "latbox-solve: %s\n" % message))
        self.assertEqual((self.read("m.lp"), self.read("o.conf")), (KNAPSACK, "quiet\n"))
        self.assertEqual(self.solve("--output=/dev/null", "--log=/dev/null", "--json=-", "m.lp").status, 10)

    def test_json_in_place_of_the_answer(self) -> None:
        result = self.solve("--json=-", "--quiet", "m.lp")
        events = [json.loads(line) for line in result.out.splitlines()]
        self.assertEqual((events[0]["event"], events[-1]["event"], result.status), ("start", "end", 10))

    def test_json_where_nothing_could_begin(self) -> None:
        """The time is up before the model is read."""
        for name in ("-", "e.json"):
            result = self.solve("--json=" + name, "--time=0.001", "m.lp")
            lines = (result.out if name == "-" else self.read(name)).splitlines()
            self.assertEqual([json.loads(line)["event"] for line in lines], ["end"])
            self.assertEqual((json.loads(lines[0])["status"], result.status), ("unknown", 12))


if __name__ == "__main__":
    harness.main()
