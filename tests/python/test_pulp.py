"""latbox as a solver of PuLP: integer models get what PuLP's default solver gives them, and the rest of its word is kept.

Where the Python of the tests has no PuLP, that of the system may have Debian's, and runs them.
"""

from __future__ import annotations

import contextlib
import importlib.util
import io
import os
import random
import re
import subprocess
import sys
import unittest
from typing import Any, Callable

SYSTEM = "/usr/bin/python3"
HERE = os.path.abspath(__file__)


def is_able(python: str) -> bool:
    done = subprocess.run([python, "-c", "import sys, pulp; sys.exit(sys.version_info < (3, 11))"], stdin=subprocess.DEVNULL,
                          stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=False)
    return done.returncode == 0


HAS_PULP = importlib.util.find_spec("pulp") is not None
if not HAS_PULP and __name__ == "__main__" and os.path.exists(SYSTEM) and is_able(SYSTEM):
    os.execv(SYSTEM, [SYSTEM, HERE, *sys.argv[1:]])

import support  # noqa: E402
import documents  # noqa: E402
import harness  # noqa: E402

import latbox  # noqa: E402
from latbox.solving import statuses  # noqa: E402
from solve_support import engines_of, hard, hard_objective  # noqa: E402

if HAS_PULP:
    import pulp
    from pulp import LpMaximize, LpMinimize, LpProblem, LpVariable, lpSum

    import latbox.pulp
    from latbox.pulp import LATBOX

# ----------------------------------------------------------------- the models

MODELS: list[Callable[[], Any]] = []


def model(build: Callable[[], Any]) -> Callable[[], Any]:
    MODELS.append(build)
    return build


def whole(name: str, low: int | None = 0, high: int | None = None) -> Any:
    return LpVariable(name, low, high, cat="Integer")


@model
def knapsack() -> Any:
    problem = LpProblem("knapsack", LpMaximize)
    take = [LpVariable("take%d" % i, cat="Binary") for i in range(12)]
    draw = random.Random(4)
    weights, values = ([draw.randrange(10, 60) for _ in take] for _ in "wv")
    problem += lpSum(v * x for v, x in zip(values, take))
    problem += lpSum(w * x for w, x in zip(weights, take)) <= 150
    return problem


@model
def bounded_knapsack() -> Any:
    problem = LpProblem("bag", LpMaximize)
    x = [whole("x%d" % i, -1, 3) for i in range(5)]
    problem += lpSum(v * y for v, y in zip((6, 9, 14, 19, 35), x)) + 4
    problem += lpSum(w * y for w, y in zip((2, 3, 4, 7, 9), x)) <= 20
    return problem


@model
def assignment() -> Any:
    problem = LpProblem("assignment", LpMinimize)
    cost = [[9, 2, 7, 8], [6, 4, 3, 7], [5, 8, 1, 8], [7, 6, 9, 4]]
    x = LpVariable.dicts("x", (range(4), range(4)), cat="Binary")
    problem += lpSum(cost[i][j] * x[i][j] for i in range(4) for j in range(4))
    for k in range(4):
        problem += lpSum(x[k][j] for j in range(4)) == 1, "worker_%d" % k
        problem += lpSum(x[i][k] for i in range(4)) == 1, "task_%d" % k
    return problem


@model
def transport() -> Any:
    problem = LpProblem("transport", LpMinimize)
    x = {(i, j): whole("x_%d_%d" % (i, j)) for i in range(2) for j in range(3)}
    problem += lpSum(((3, 5, 4), (6, 2, 7))[i][j] * x[i, j] for i, j in x)
    for i, stock in enumerate((20, 25)):
        problem += lpSum(x[i, j] for j in range(3)) <= stock
    for j, need in enumerate((12, 14, 9)):
        problem += lpSum(x[i, j] for i in range(2)) >= need
    return problem


@model
def set_cover() -> Any:
    problem = LpProblem("cover", LpMinimize)
    sets = ({1, 2, 3}, {2, 4}, {3, 4, 5}, {5, 6}, {1, 6}, {2, 5})
    x = [LpVariable("s%d" % i, cat="Binary") for i in range(len(sets))]
    problem += lpSum(x)
    for item in range(1, 7):
        problem += lpSum(y for y, held in zip(x, sets) if item in held) >= 1
    return problem


@model
def bins() -> Any:
    problem = LpProblem("bins", LpMinimize)
    sizes = (6, 5, 4, 3, 2)
    used = [LpVariable("used%d" % b, cat="Binary") for b in range(3)]
    inside = LpVariable.dicts("in", (range(5), range(3)), cat="Binary")
    problem += lpSum(used)
    for i in range(5):
        problem += lpSum(inside[i][b] for b in range(3)) == 1
    for b in range(3):
        problem += lpSum(size * inside[i][b] for i, size in enumerate(sizes)) <= 10 * used[b]
    return problem


@model
def coins() -> Any:
    """Equations alone."""
    problem = LpProblem("coins", LpMinimize)
    x = [whole("c%d" % worth) for worth in (1, 7, 13, 31)]
    problem += lpSum(x)
    problem += lpSum(worth * y for worth, y in zip((1, 7, 13, 31), x)) == 107
    return problem


@model
def maximise_beside_relaxation() -> Any:
    """The best point is none that rounding would find."""
    problem = LpProblem("rounding", LpMaximize)
    x, y = whole("x"), whole("y")
    problem += x + y
    problem += -2 * x + 2 * y >= 1
    problem += -8 * x + 10 * y <= 13
    return problem


@model
def infeasible_rows() -> Any:
    problem = LpProblem("contradiction", LpMinimize)
    x, y = whole("x", 0, 10), whole("y", 0, 10)
    problem += x + y
    problem += x + y >= 15
    problem += x + 2 * y <= 12
    return problem


@model
def infeasible_in_whole_numbers() -> Any:
    problem = LpProblem("parity", LpMinimize)
    x, y = whole("x", 0, 9), whole("y", 0, 9)
    problem += x
    problem += 6 * x + 4 * y == 21
    return problem


@model
def unbounded() -> Any:
    problem = LpProblem("ray", LpMaximize)
    x, y = whole("x"), whole("y")
    problem += x + y
    problem += x - 2 * y <= 3
    return problem


@model
def unbounded_below() -> Any:
    problem = LpProblem("down", LpMinimize)
    x = whole("x", None, 5)
    problem += 2 * x
    problem += x <= 3
    return problem


@model
def negative_bounds() -> Any:
    problem = LpProblem("negative", LpMinimize)
    x, y, z = whole("x", -7, -2), whole("y", -5, 5), whole("z", -9, 0)
    problem += 3 * x - 2 * y + z
    problem += x + y + z >= -8
    problem += 2 * x - 3 * z <= 14
    return problem


@model
def free_integers() -> Any:
    problem = LpProblem("free", LpMinimize)
    x, y = whole("x", None), whole("y", None)
    problem += 2 * x + 3 * y
    problem += x + y >= -7
    problem += x - y <= 4
    problem += y - 2 * x <= 11
    return problem


@model
def fixed_and_fractional_bounds() -> Any:
    problem = LpProblem("bounds", LpMaximize)
    x, y, z = whole("x", 4, 4), LpVariable("y", 0.5, 3.5, cat="Integer"), whole("z", 0, 8)
    problem += x + 2 * y + 3 * z
    problem += 2 * x + 3 * y + 5 * z <= 31
    return problem


@model
def fractional_coefficients() -> Any:
    problem = LpProblem("fractions", LpMaximize)
    x, y = whole("x", 0, 20), whole("y", 0, 20)
    problem += 1.25 * x + 0.75 * y - 0.5
    problem += 0.3 * x + 0.2 * y <= 2.9
    problem += 0.1 * x + 0.4 * y <= 3.1
    return problem


@model
def odd_names() -> Any:
    problem = LpProblem("odd", LpMaximize)
    x, y, z = (whole(name, 0, 4) for name in ("a [1]->b", "e9", "\u00e4 % {free}"))
    problem += x + 2 * y + 4 * z, "the objective: a + b"
    problem += 3 * x + 2 * y + 5 * z <= 23, "row <= 1"
    return problem


@model
def no_objective() -> Any:
    problem = LpProblem("any", LpMinimize)
    x, y = whole("x", 0, 40), whole("y", 0, 40)
    problem += 5 * x + 7 * y == 61
    return problem


@model
def constant_objective() -> Any:
    problem = LpProblem("constant", LpMaximize)
    x, y = whole("x", 0, 9), whole("y", 0, 9)
    problem += 7
    problem += 3 * x - 2 * y == 5
    return problem


@model
def no_rows() -> Any:
    problem = LpProblem("box", LpMaximize)
    x, y = whole("x", -3, 8), whole("y", -6, 2)
    problem += 2 * x - 3 * y
    return problem


@model
def empty_row_and_repeated_terms() -> Any:
    problem = LpProblem("terms", LpMaximize)
    x, y = whole("x", 0, 6), whole("y", 0, 6)
    problem += x + y + x - 0 * y
    problem += 2 * x + 3 * y - x <= 13 + y
    problem += 0 * x + 0 * y <= 5
    return problem


@model
def magic_square() -> Any:
    problem = LpProblem("magic", LpMaximize)
    cell = LpVariable.dicts("is", (range(3), range(3), range(1, 10)), cat="Binary")
    at = [[lpSum(k * cell[i][j][k] for k in range(1, 10)) for j in range(3)] for i in range(3)]
    problem += at[0][0]
    for i in range(3):
        problem += lpSum(at[i]) == 15
        problem += lpSum(at[j][i] for j in range(3)) == 15
        for j in range(3):
            problem += lpSum(cell[i][j].values()) == 1
    problem += at[0][0] + at[1][1] + at[2][2] == 15
    problem += at[0][2] + at[1][1] + at[2][0] == 15
    for k in range(1, 10):
        problem += lpSum(cell[i][j][k] for i in range(3) for j in range(3)) == 1
    return problem


# ----------------------------------------------------------------- the tests


class PulpCase(harness.Case):
    def setUp(self) -> None:
        if not HAS_PULP:
            self.skipTest("python3-pulp is not installed")
        super().setUp()
        os.environ["LATBOX_BIN_DIR"] = os.path.dirname(harness.Settings.binary)

    def solve(self, problem: Any, **settings: Any) -> Any:
        """(status, sol_status)"""
        status = problem.solve(LATBOX(**{"msg": False, "threads": 2, **settings}))
        self.assertEqual(status, problem.status)
        self.assertEqual(engines_of(os.getpid()), [])
        return problem.status, problem.sol_status

    def assert_refused(self, problem: Any, message: str, **settings: Any) -> None:
        with self.assertRaises(pulp.PulpSolverError) as caught:
            self.solve(problem, **settings)
        self.assertEqual(str(caught.exception), "LATBOX: " + message)

    def from_opt(self, text: str, maximise: bool = False) -> Any:
        """The problem of an .opt program, in PuLP."""
        stated = support.reader("opt")(text)
        problem = LpProblem("program", LpMaximize if maximise else LpMinimize)
        x = [whole(v.name, int(v.lower), int(v.upper)) for v in stated.variables]
        if stated.objective:
            problem += lpSum(int(a) * x[j] for j, a in stated.objective.coefficients.items())
        for row in stated.rows:
            problem += lpSum(int(a) * x[j] for j, a in row.coefficients.items()) == int(row.upper)
        return problem


def default_solver() -> Any:
    """PuLP's default is cbc. Debian leaves the copy out that PuLP would bring along, and the package depends on Debian's own;
    LpSolverDefault may be something else there, as other solvers are installed, which cannot read each of the models."""
    return pulp.COIN_CMD(msg=False)


def objective(problem: Any) -> Any:
    """Its value; PuLP leaves 0 times a variable of its own, which has no value, where there was a constant alone."""
    if problem.objective is None:
        return None
    return problem.objective.constant + sum(factor * variable.varValue for variable, factor in problem.objective.items() if factor)


class AsTheDefaultSolverTest(PulpCase):
    def test_models(self) -> None:
        self.assertGreaterEqual(len(MODELS), 20)
        default = default_solver()
        seen = set()
        for build in MODELS:
            with self.subTest(build.__name__):
                theirs, ours = build(), build()
                theirs.solve(default)
                told = self.solve(ours)
                self.assertEqual(told[0], theirs.status)
                # Of what is infeasible in whole numbers alone PuLP says (-1, 0) where cbc did it, (-1, -1) where others did.
                self.assertIn(theirs.sol_status, (told[1], 0) if told[0] == pulp.LpStatusInfeasible else (told[1],))
                seen.add(told)
                if told == (1, 1):
                    self.assertEqual(objective(ours), objective(theirs))
                    self.assertTrue(all(type(variable.varValue) is int for variable in ours.variables()))
                    self.assertTrue(all(variable.valid(0) for variable in ours.variables()))
                    self.assertTrue(all(constraint.valid(1e-9) for constraint in ours.constraints.values()))
        self.assertEqual(seen, {(1, 1), (-1, -1), (-2, -2)})


class StatusTest(PulpCase):
    def test_each_has_its_pair(self) -> None:
        for status in statuses.TABLE:
            self.assertIn(status.pulp[0], pulp.LpStatus)
            self.assertIn(status.pulp[1], pulp.LpSolution)

    def test_feasible(self) -> None:
        problem = self.from_opt(hard_objective())
        self.assertEqual(self.solve(problem, timeLimit=1), (1, 2))
        self.assertTrue(all(constraint.valid(0) for constraint in problem.constraints.values()))

    def test_unknown(self) -> None:
        problem = self.from_opt(hard())
        self.assertEqual(self.solve(problem, timeLimit=0.5), (0, 0))
        self.assertEqual({variable.varValue for variable in problem.variables()}, {None})

    def test_a_gap_is_not_the_optimum(self) -> None:
        problem = bounded_knapsack()
        told = self.solve(problem, gapRel=1000)
        self.assertIn(told, ((1, 1), (1, 2)))
        self.assertEqual(problem.solver.result.status, {(1, 1): "optimal", (1, 2): "feasible"}[told])
        self.assertEqual(self.solve(bounded_knapsack(), gapAbs=0), (1, 1))


class ProblemTest(PulpCase):
    def test_solved_again(self) -> None:
        problem = bounded_knapsack()
        solver = LATBOX(msg=False, threads=2)
        problem.solve(solver)
        self.assertEqual((pulp.value(problem.objective), problem.solver.result.objective), (90, 90))
        problem += problem.variablesDict()["x4"] <= 2, "less"
        problem.solve()
        self.assertIs(problem.solver, solver)
        self.assertEqual((problem.status, pulp.value(problem.objective)), (1, 89 - 1))
        problem += problem.variablesDict()["x4"] >= 3, "more"
        self.assertEqual(self.solve(problem), (-1, -1))
        self.assertEqual({variable.varValue for variable in problem.variables()}, {None})
        del problem.constraints["less"]
        self.assertEqual(self.solve(problem), (1, 1))
        self.assertEqual(pulp.value(problem.objective), 90)

    def test_one_objective_after_the_other(self) -> None:
        problem = LpProblem("two", LpMaximize)
        x, y = whole("x", 0, 9), whole("y", 0, 9)
        problem += 2 * x + 3 * y <= 24
        self.assertEqual(problem.sequentialSolve([x + y, y], solver=LATBOX(msg=False, threads=2)), [1, 1])
        self.assertEqual((x.varValue, y.varValue), (9, 2))

    def test_numbers_of_any_length(self) -> None:
        problem = LpProblem("long", LpMinimize)
        big = 10**40 + 7
        x, y = whole("x", 0, 9), whole("y", 0, big)
        problem += y
        problem += big * x + 3 * y == 2 * big + 9
        self.assertEqual(self.solve(problem), (1, 1))
        self.assertEqual((x.varValue, y.varValue), (2, 3))

    def test_a_decimal_is_what_it_looks_like(self) -> None:
        problem = LpProblem("tenths", LpMinimize)
        x, y = whole("x", 0, 5), whole("y", 0, 5)
        problem += 0.1 * x + 0.2 * y == 0.3
        problem += x == 2, "even"
        self.assertEqual(self.solve(problem), (-1, -1))
        del problem.constraints["even"]
        self.assertEqual(self.solve(problem), (1, 1))
        self.assertEqual(x.varValue + 2 * y.varValue, 3)

    def test_continuous_variables(self) -> None:
        problem = LpProblem("mixed", LpMaximize)
        x, y = LpVariable("x", 0, 2), whole("y", 0, 9)
        problem += x + y
        problem += 2 * x + 3 * y <= 7.5
        self.assert_refused(problem, "variable x is continuous: declare it integer, or ask for a decimal grid with digits=N")
        self.assertEqual(self.solve(problem, digits=2), (1, 2))
        self.assertEqual((x.varValue, y.varValue), (2, 1))
        problem += x <= 1.25
        self.assertEqual(self.solve(problem, digits=2), (1, 2))
        self.assertEqual((x.varValue, type(x.varValue), y.varValue), (0.75, float, 2))


class SolverTest(PulpCase):
    def test_what_it_shows(self) -> None:
        for msg in (True, False):
            shown, silence = io.StringIO(), io.StringIO()
            with contextlib.redirect_stderr(shown), contextlib.redirect_stdout(silence):
                self.solve(bounded_knapsack(), msg=msg)
            self.assertEqual(silence.getvalue(), "")
            if msg:
                lines = shown.getvalue().splitlines()
                self.assertEqual(lines[0], "bag: 5 integer columns, 1 row, 5 nonzeros, maximise")
                self.assertRegex(lines[-1], r"^status: optimal, objective 90, \d+\.\d\d s$")
            else:
                self.assertEqual(shown.getvalue(), "")

    def test_what_is_refused(self) -> None:
        self.assert_refused(knapsack(), "mip=False: it solves in whole numbers, and no relaxation", mip=False)
        self.assert_refused(knapsack(), "options=['--time=5']: it takes none; timeLimit, threads and the others are named",
                            options=["--time=5"])
        self.assert_refused(knapsack(), "time=-1: seconds above 0 are wanted", timeLimit=-1)
        self.assert_refused(knapsack(), "threads=-2: a whole number, 0 or more, is wanted", threads=-2)
        self.assert_refused(knapsack(), "gapRel and gapAbs: one of them is wanted", gapRel=0.1, gapAbs=1)
        self.assert_refused(knapsack(), "engine='cbc': 'auto', 'search' or 'complete' is wanted", engine="cbc")
        problem = no_rows()
        problem += problem.variables()[0] * float("nan") <= 3, "odd"
        self.assert_refused(problem, "odd: nan is not a number")
        problem = no_rows()
        problem.sos1["s"] = {variable: 1 for variable in problem.variables()}
        self.assert_refused(problem, "special ordered sets are not taken")
        problem = LpProblem("twice", LpMinimize)
        problem += whole("x") + whole("x")
        with self.assertRaises(pulp.PulpError):
            self.solve(problem)

    def test_the_document_is_right(self) -> None:
        with open(os.path.join(support.ROOT, "docs", "solve.md"), encoding="utf-8") as file:
            text = file.read()
        script, = (block.text() for block in documents.blocks(text) if block.kind() == "file" and block.argument == "bag_by_pulp.py")
        with contextlib.redirect_stdout(io.StringIO()) as shown, contextlib.redirect_stderr(io.StringIO()):
            exec(compile(script, "bag_by_pulp.py", "exec"), {})
        self.assertIn(shown.getvalue().strip(), re.findall(r"It prints `(.*)`\.", text))

    def test_copy(self) -> None:
        solver = LATBOX(msg=False, timeLimit=7, threads=2, gapRel=0.25, seed=3)
        self.assertEqual(solver.copy().toDict(), solver.toDict())
        self.assertEqual(solver.toDict()["threads"], 2)
        self.assertEqual(solver.copy().timeLimit, 7)

    def test_available(self) -> None:
        self.assertTrue(LATBOX().available())
        os.environ["LATBOX_BIN_DIR"] = self.folder
        self.assertFalse(LATBOX().available())
        self.assert_refused(knapsack(), "latbox is not in %s, the folder that LATBOX_BIN_DIR names" % self.folder, engine="search")


class WithoutPulpTest(unittest.TestCase):
    def test_latbox_needs_it_not(self) -> None:
        """-S: no Debian packages, no pip's."""
        code = ("import sys; sys.path.insert(0, %r); import latbox; print(latbox.solve.__name__)\n"
                "try:\n    import latbox.pulp\nexcept ImportError as error:\n    print(error)\n" % support.PACKAGE)
        done = subprocess.run([sys.executable, "-S", "-B", "-c", code], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                              stdin=subprocess.DEVNULL, env={k: v for k, v in os.environ.items() if k != "PYTHONPATH"}, check=False)
        self.assertEqual(done.stdout, "solve\nlatbox.pulp needs PuLP, which this Python does not find (Debian: python3-pulp)\n")
        self.assertEqual(latbox.__name__, "latbox")


if __name__ == "__main__":
    harness.main()
