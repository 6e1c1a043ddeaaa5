"""The package as a library: latbox.solve, latbox.read, solutions(), exact numbers, arrays, Ctrl-C."""

from __future__ import annotations

import os
import pathlib
import pickle
import signal
import struct
import subprocess
import sys
import tempfile
import threading
import types
import unittest
from decimal import Decimal
from fractions import Fraction
from unittest import mock

import support  # noqa: F401
import harness
from solve_support import FOUR_POINTS, KNAPSACK, NO_POINT, UNBOUNDED, engines_of, hard, hard_objective

import latbox
from latbox import UsageError
from latbox.solving.events import Found, Start

FOWLS = [[1, 1, 1], [5, 3, Fraction(1, 3)]]
BIRDS = [(0, 25, 75), (4, 18, 78), (8, 11, 81), (12, 4, 84)]


class ApiCase(harness.Case):
    def setUp(self) -> None:
        super().setUp()
        os.environ["LATBOX_BIN_DIR"] = os.path.dirname(harness.Settings.binary)

    def model(self, name: str, text: str) -> latbox.Model:
        self.write(name, text)
        return latbox.read(self.path(name))

    def assert_no_engine(self) -> None:
        self.assertEqual(engines_of(os.getpid()), [])


class SolveTest(ApiCase):
    def test_equations(self) -> None:
        result = latbox.solve(FOWLS, [100, 100], 0, 100)
        self.assertEqual(result.status, "optimal")
        self.assertIn(result.x, BIRDS)
        self.assertEqual((result.objective, result.bound, result.points), (None, None, [result.x]))
        self.assertEqual(sorted(latbox.solve(FOWLS, [100, 100], 0, 100, solutions="all").points), BIRDS)
        self.assert_no_engine()

    def test_sides_and_objective(self) -> None:
        result = latbox.solve([[1, 2, 3]], [(None, 10)], 0, [4, 4, 4], objective=[3, 5, 7.5], sense="max")
        self.assertEqual((result.status, result.objective, result.bound), ("optimal", 27, 27))
        self.assertEqual(result.x[0] * 3 + result.x[1] * 5 + result.x[2] * Fraction(15, 2), 27)
        result = latbox.solve([[2, 3]], [(7, 8)], 0, None, objective=[1, 1])
        self.assertEqual((result.status, result.objective), ("optimal", 3))
        self.assertEqual(latbox.solve([[2, 2]], [7], 0, 9).status, "infeasible")

    def test_numbers_of_any_kind_and_length(self) -> None:
        big = 10**6000 + 7
        self.assertEqual(latbox.solve([[big, 3]], [2 * big + 9], 0, 9).x, (2, 3))
        self.assertEqual(latbox.solve([[Fraction(1, big), 1]], [Fraction(3, big) + 4], 0, 9).x, (3, 4))
        self.assertEqual(latbox.solve([[1]], [big], 0, None).x, (big,))
        self.assertEqual(latbox.solve([[0.1, Decimal("0.01")]], [Decimal("0.35")], 0, [3, 9]).x, (3, 5))

    def test_digits(self) -> None:
        result = latbox.solve([[2, 3]], [(None, 7.5)], 0, [2, 9], objective=[1, 1], sense="max", digits=[1, 0])
        self.assertEqual((result.status, result.objective, result.x, result.bound), ("feasible", 3, (2, 1), None))
        self.assertIn("on a grid of 1 digit", result.notes[0])
        self.assertEqual(latbox.solve([[2]], [5], 0, 9, digits=2).x, (Fraction(5, 2),))
        self.assertEqual(latbox.solve([[3]], [1], 0, 9, digits=2).status, "unknown")

    def test_digits_are_never_unbounded(self) -> None:
        result = latbox.solve([[1, -2]], [(None, 3.5)], 2, None, objective=[1, 1], sense="max", digits=[1, 0])
        self.assertEqual((result.status, result.bound), ("feasible", None))
        further = [x + 10**6 * step for x, step in zip(result.x, result.ray)]
        self.assertLessEqual(further[0] - 2 * further[1], Fraction(7, 2))
        self.assertGreater(sum(further), result.objective)

    def test_types_of_numbers(self) -> None:
        result = latbox.solve([[2]], [5], 0, 9, digits=1, objective=[2])
        self.assertEqual((type(result.x[0]), type(result.objective)), (Fraction, int))
        self.assertIs(type(latbox.solve([[2]], [4], 0, 9).x[0]), int)

    def test_settings(self) -> None:
        arguments = ([[3, 4, 5]], [(None, 11)], 0, 9)
        for engine in ("auto", "complete"):
            result = latbox.solve(*arguments, objective=[2, 3, 4], sense="max", engine=engine, threads=1, seed=5, time=60)
            self.assertEqual((result.status, result.objective), ("optimal", 8))
        result = latbox.solve(*arguments, objective=[2, 3, 4], sense="max", target=1)
        self.assertIn(result.status, ("feasible", "optimal"))
        self.assertEqual(len(latbox.solve(*arguments, objective=[2, 3, 4], sense="max", solutions=3).points), 3)
        self.assertIn(latbox.solve(*arguments, objective=[2, 3, 4], sense="max", gap="50%").status, ("feasible", "optimal"))

    def test_unbounded(self) -> None:
        result = latbox.solve([[1, -2]], [(None, 3)], [2, 0], None, objective=[1, 1], sense="max")
        self.assertEqual(result.status, "unbounded")
        for k in (0, 1, 5, 100):
            x = [a + k * step for a, step in zip(result.x, result.ray)]
            self.assertTrue(x[0] - 2 * x[1] <= 3 and x[0] >= 2 and x[1] >= 0 and sum(x) >= sum(result.x) + k)

    def test_wrong_arguments(self) -> None:
        one = ([[1, 2]], [3], 0, 1)
        for arguments, settings, message in (
                (([[1, 2], [3]], [1, 2], 0, 1), {}, "A: row 2 has 1 entry, and the first one has 2"),
                (([[1, 2]], [1, 2], 0, 1), {}, "A has 1 row, and b has 2 entries"),
                (([[1, 2]], [1], 0, [1]), {}, "A has 2 columns, and upper has 1 entry"),
                (([[1, 2]], [1], [0] * 3, 1), {}, "A has 2 columns, and lower has 3 entries"),
                (([[1, "a"]], [1], 0, 1), {}, "A: 'a' is not a number"),
                (([[1, float("nan")]], [1], 0, 1), {}, "A: nan is not a number"),
                (([[1, 2]], [None], 0, 1), {}, "b: entry 1 is None"),
                (([], [], 0, 1), {}, "A has no columns"),
                ((5, [1], 0, 1), {}, "A: a sequence is wanted"),
                (one, {"objective": [1]}, "A has 2 columns, and objective has 1 entry"),
                (one, {"sense": "maximise"}, "sense='maximise': 'min' or 'max' is wanted"),
                (one, {"digits": 19}, "digits=19: a number of digits from 0 to 18 is wanted"),
                (one, {"digits": 1.5}, "digits=1.5: a number of digits from 0 to 18 is wanted"),
                (one, {"time": 0}, "time=0: seconds above 0 are wanted"),
                (one, {"time": "2m"}, "time='2m': seconds above 0 are wanted"),
                (one, {"time": Decimal("nan")}, "time=Decimal('NaN'): seconds above 0 are wanted"),
                (one, {"time": float("inf")}, "time=inf: seconds above 0 are wanted"),
                (one, {"solutions": 0}, "solutions=0: a number of points from 1 to 10^15, or 'all' is wanted"),
                (one, {"solutions": 10**16}, "solutions=%d: a number of points from 1 to 10^15, or 'all' is wanted" % 10**16),
                (one, {"solutions": [1]}, "solutions=[1]: a number of points from 1 to 10^15, or 'all' is wanted"),
                (one, {"engine": "both"}, "engine='both': 'auto', 'search' or 'complete' is wanted"),
                (one, {"gap": -1}, "gap=-1: a number of 0 or more, or a text as '0.1%' is wanted"),
                (one, {"gap": "x"}, "gap='x': a number of 0 or more, or a text as '0.1%' is wanted"),
                (one, {"gap": "1%%"}, "gap='1%%': a number of 0 or more, or a text as '0.1%' is wanted"),
                (one, {"gap": "1_0"}, "gap='1_0': a number of 0 or more, or a text as '0.1%' is wanted"),
                (one, {"gap": "1e999999999"}, "gap='1e999999999': a number of 0 or more, or a text as '0.1%' is wanted"),
                (one, {"target": Decimal("1e999999999")}, "target: the exponent of '1E+999999999' is beyond 100000"),
                (([[1, 2]], [3], 0, Decimal("snan")), {}, "upper: Decimal('sNaN') is not a number"),
                (([[1, 2]], [3], 0, float("-inf")), {}, "upper: -inf is not a number"),
                (([{1, 2}], [3], 0, 1), {}, "A: row 1: a sequence is wanted"),
                (([[1, 2]], {3}, 0, 1), {}, "b: a sequence is wanted"),
                (([[1, 2]], [3], {0: 0, 1: 0}, 1), {}, "lower: a sequence is wanted"),
                (one, {"objective": {0: 1, 1: 1}}, "objective: a sequence is wanted"),
                (one, {"sense": ["min"]}, "sense=['min']: 'min' or 'max' is wanted"),
                (one, {"threads": -1}, "threads=-1: a whole number, 0 or more, is wanted"),
                (one, {"threads": 10**6}, "threads=1000000: 1024 or less are wanted"),
                (one, {"seed": 1.5}, "seed=1.5: a whole number, 0 or more, is wanted"),
                (([1, 2], [1], 0, 1), {}, "A: row 1: a sequence is wanted"),
                (one, {"memory": "4G"}, "memory='4G': a number of bytes, 134217728 or more, is wanted"),
                (one, {"memory": 2**70}, "memory=%d: a number of bytes, 134217728 or more, is wanted" % 2**70),
                (one, {"memory": 1000}, "memory=1000: a number of bytes, 134217728 or more, is wanted"),
                (one, {"solutions": 2, "target": 5}, "target: it goes with one point, not with solutions"),
                (one, {"solutions": "all", "gap": 5}, "gap: it goes with one point, not with solutions"),
                (one, {"engine": "search", "solutions": "all"},
                 "solutions='all': the search alone cannot know that it has them all")):
            with self.assertRaises(UsageError) as caught:
                latbox.solve(*arguments, **settings)
            self.assertEqual(str(caught.exception), message)

    def test_no_engine(self) -> None:
        os.environ["LATBOX_BIN_DIR"] = self.folder
        with self.assertRaises(latbox.EngineError):
            latbox.solve([[1, 2]], [3], 0, 1)


class ModelTest(ApiCase):
    def test_read_and_solve(self) -> None:
        model = self.model("m.lp", KNAPSACK)
        self.assertEqual(model.names, ("x1", "x2", "x3", "x4", "x5"))
        result = model.solve(time=60)
        self.assertEqual((result.status, result.objective, result.x["x4"], result.x[4]), ("optimal", 90, -1, 3))
        self.assertEqual(result.x.as_dict(), {"x1": 0, "x2": 0, "x3": 0, "x4": -1, "x5": 3})
        with self.assertRaises(KeyError):
            result.x["x6"]
        self.assertEqual(self.model("n.lp", NO_POINT).solve().status, "infeasible")
        self.assertEqual(self.model("u.lp", UNBOUNDED).solve().status, "unbounded")

    def test_events(self) -> None:
        seen: list = []
        self.model("m.lp", KNAPSACK).solve(on_event=seen.append)
        self.assertIsInstance(seen[0], Start)
        self.assertTrue(any(isinstance(event, Found) for event in seen))

    def test_fault(self) -> None:
        model = self.model("m.lp", KNAPSACK)
        self.assertIsNone(model.fault([0, 0, 0, -1, 3]))
        self.assertEqual(model.fault([0, 0, 0, 0, 3]), "row cap is 27, and its sides are -inf and 20")

    def test_solutions_are_lazy(self) -> None:
        model = self.model("f.opt", FOUR_POINTS)
        self.assertEqual(sorted(model.solutions()), BIRDS)
        self.assert_no_engine()
        found = []
        for x in model.solutions():
            found.append(x)
            if len(found) == 2:
                break
        self.assertEqual(len(set(found)), 2)
        self.assert_no_engine()

    def test_leaving_the_loop_ends_a_search_that_would_not(self) -> None:
        """A box of 2^60 points."""
        points = latbox.matrix_model([[1] * 60], [(0, 60)], 0, 1).solutions(threads=1)
        self.assertEqual(len(next(points)), 60)
        self.assertNotEqual(engines_of(os.getpid()), [])
        points.close()
        self.assert_no_engine()

    def test_a_child_that_leaves_the_loop_takes_nothing_from_its_parent(self) -> None:
        with mock.patch.object(tempfile, "tempdir", self.folder):
            points = latbox.matrix_model([[1] * 60], [(0, 60)], 0, 1).solutions(threads=1)
            next(points)
        before = engines_of(os.getpid()), sorted(os.walk(self.folder))
        child = os.fork()
        if child == 0:
            points.close()
            os._exit(0)
        self.assertEqual(os.waitpid(child, 0)[1], 0)
        self.assertEqual((engines_of(os.getpid()), sorted(os.walk(self.folder))), before)
        self.assertEqual(len(next(points)), 60)
        points.close()
        self.assert_no_engine()

    def test_an_exception_in_the_loop_ends_the_engine(self) -> None:
        with self.assertRaises(ZeroDivisionError):
            for _ in self.model("f.opt", FOUR_POINTS).solutions():
                1 / 0
        self.assert_no_engine()

    def test_points_that_are_missing_are_told(self) -> None:
        """A loop that ends in silence would say that it has had all of them."""
        with self.assertRaisesRegex(latbox.EngineError, "^not all points are known: nothing bounds x1, x2"):
            list(latbox.matrix_model([[1, -1]], [0], 0, None).solutions())
        self.assertEqual(len(list(latbox.matrix_model([[1, 1]], [Fraction(1, 2)], 0, 3, digits=1).solutions())), 6)
        self.assertEqual(list(latbox.matrix_model([[2, 2]], [1], 0, 3).solutions()), [])

    def test_ctrl_c_in_the_loop_is_no_end_of_the_points(self) -> None:
        points = self.model("h.opt", hard()).solutions()
        timer = threading.Timer(0.5, os.kill, (os.getpid(), signal.SIGINT))
        timer.start()
        with self.assertRaises(KeyboardInterrupt):
            list(points)
        self.assert_no_engine()

    def test_numbers_longer_than_python_prints(self) -> None:
        long = 10**5000
        self.assertEqual(latbox.solve([[1, 1]], [1], long, 3).status, "infeasible")
        self.assertEqual(latbox.solve([[0, 0]], [long], 0, 3).status, "infeasible")
        self.assertEqual(latbox.solve([[long, 1]], [long + 1], 0, 3).x, (1, 1))

    def test_time(self) -> None:
        self.assertEqual(self.model("h.opt", hard()).solve(time=0.5).status, "unknown")
        self.assertEqual(list(self.model("h.opt", hard()).solutions(time=0.5)), [])

    def test_points_keep_their_names(self) -> None:
        point = self.model("m.lp", KNAPSACK).solve().x
        self.assertEqual(pickle.loads(pickle.dumps(point)).as_dict(), point.as_dict())

    def test_models_go_to_other_processes(self) -> None:
        model = pickle.loads(pickle.dumps(self.model("m.lp", KNAPSACK)))
        self.assertEqual(model.solve().x["x4"], -1)

    def test_solutions_refuses_before_the_loop(self) -> None:
        """Who makes the iterator in one place and runs it in another must hear of a wrong setting where it stands."""
        with self.assertRaisesRegex(UsageError, "^time=0: seconds above 0 are wanted$"):
            self.model("m.lp", KNAPSACK).solutions(time=0)

    def test_names_of_files(self) -> None:
        """In the words of Python, not of the command."""
        self.write("m.lp", KNAPSACK)
        path = self.path("m.lp")
        self.assertEqual(latbox.read(os.fsencode(path)).names, latbox.read(pathlib.Path(path)).names)
        formats = "one of opt, lp, mps, fixed-mps, free-mps"
        for arguments, message in (((path, "LP"), "format='LP': %s is wanted" % formats),
                                   ((path, ["lp"]), "format=['lp']: %s is wanted" % formats),
                                   (("-",), "standard input: its name does not tell its format: format='lp', say, is wanted, " + formats),
                                   (("m.txt",), "m.txt: its name does not tell its format: format='lp', say, is wanted, " + formats),
                                   (("a\0.lp",), "path='a\\x00.lp': no file has such a name")):
            with self.assertRaises(UsageError) as caught:
                latbox.read(*arguments)
            self.assertEqual(str(caught.exception), message)

    def test_read_errors(self) -> None:
        self.write("m.lp", "maximize\n obj: x +\n")
        with self.assertRaises(latbox.ReadError) as caught:
            latbox.read(self.path("m.lp"))
        self.assertIsInstance(caught.exception, latbox.LatboxError)
        self.assertEqual(caught.exception.file, self.path("m.lp"))
        model = self.model("c.lp", "min\n obj: x\nst\n c: x >= 0.5\nend\n")
        for solve in (model.solve, lambda: list(model.solutions())):
            with self.assertRaises(latbox.ModelError) as caught:
                solve()
            self.assertTrue(str(caught.exception).startswith(self.path("c.lp") + ", line 2, column 7: variable x is continuous"))


class InterruptTest(ApiCase):
    def test_ctrl_c_keeps_the_best(self) -> None:
        model = self.model("o.opt", hard_objective())
        found = threading.Event()

        def interrupt() -> None:
            found.wait(harness.LIMIT)
            os.kill(os.getpid(), signal.SIGINT)

        thread = threading.Thread(target=interrupt)
        thread.start()
        result = model.solve(on_event=lambda event: found.set() if isinstance(event, Found) else None)
        thread.join()
        self.assertEqual(result.status, "interrupted")
        self.assertIsNone(model.fault(result.x))
        self.assert_no_engine()

    def test_ctrl_c_while_an_engine_starts(self) -> None:
        """It ran on when solve() was over, for nobody had kept it yet; and in solutions() too."""
        start = subprocess.Popen
        presses = [0]

        def interrupted(*arguments, **settings):
            process = start(*arguments, **settings)
            presses[0] += 1
            if presses[0] == 1:
                signal.raise_signal(signal.SIGINT)
            return process

        model = self.model("o.opt", hard_objective())
        with mock.patch.object(subprocess, "Popen", interrupted):
            self.assertEqual(model.solve(threads=1).status, "interrupted")
            self.assert_no_engine()
            presses[0] = 0
            with self.assertRaises(KeyboardInterrupt):
                list(model.solutions(threads=1))
            self.assert_no_engine()
        self.assertIs(signal.getsignal(signal.SIGINT), signal.default_int_handler)

    def test_ctrl_c_in_the_loop_does_not_wait_for_its_points(self) -> None:
        def events(portfolio):
            signal.raise_signal(signal.SIGINT)
            for _ in range(3):
                yield Found([Fraction(1)] * 5, None, 0.0, "C")

        with mock.patch.object(latbox.api.Portfolio, "events", events), self.assertRaises(KeyboardInterrupt):
            next(self.model("m.lp", KNAPSACK).solutions())

    def test_a_handler_of_the_program_stays(self) -> None:
        heard: list = []
        before = signal.signal(signal.SIGINT, lambda number, frame: heard.append(number))
        self.addCleanup(signal.signal, signal.SIGINT, before)
        result = self.model("m.lp", KNAPSACK).solve(on_event=lambda event: heard or signal.raise_signal(signal.SIGINT))
        self.assertEqual((heard, result.status), ([signal.SIGINT], "optimal"))

    def test_a_second_ctrl_c_is_at_once(self) -> None:
        def twice(event: object) -> None:
            signal.raise_signal(signal.SIGINT)
            with self.assertRaises(KeyboardInterrupt):
                signal.raise_signal(signal.SIGINT)
            raise ZeroDivisionError

        with self.assertRaises(ZeroDivisionError):
            self.model("m.lp", KNAPSACK).solve(on_event=twice)
        self.assert_no_engine()

    def test_from_another_thread(self) -> None:
        results: list = []
        thread = threading.Thread(target=lambda: results.append(latbox.solve(FOWLS, [100, 100], 0, 100)))
        thread.start()
        thread.join()
        self.assertEqual(results[0].status, "optimal")


class ArrayTest(ApiCase):
    """numpy itself where it is; else what the package asks of it, in a few lines."""

    def numpy(self):
        try:
            import numpy

            return numpy
        except ImportError:
            return self.paper_numpy()

    def paper_numpy(self):
        module = types.ModuleType("numpy")

        class Scalar:
            ndim = 0

            def __init__(self, value, dtype=None):
                self.value = value
                self.dtype = types.SimpleNamespace(kind="f" if dtype == "float32" else "i")

            def __str__(self):
                return "%.9g" % self.value if isinstance(self.value, float) else str(self.value)

            def item(self):
                """What Python makes of a float of fewer digits."""
                return self.value if self.dtype.kind == "i" else struct.unpack("f", struct.pack("f", self.value))[0]

        class Array(list):
            def __init__(self, values, dtype=None):
                super().__init__(Array(v, dtype) if isinstance(v, (list, tuple)) else v for v in values)
                self.dtype = dtype
                self.ndim = 1 + (len(self) > 0 and isinstance(self[0], Array))

            def __iter__(self):
                return (v if isinstance(v, Array) else Scalar(v, self.dtype) for v in super().__iter__())

            def tolist(self):
                return [v.tolist() if isinstance(v, Array) else v for v in super().__iter__()]

        def zeros(shape):
            """Without rows; a number of no shape."""
            if shape == ():
                return Scalar(0)
            array = Array([])
            array.ndim, array.shape = len(shape), shape
            return array

        Scalar.__module__ = Array.__module__ = "numpy"
        module.array, module.int64, module.zeros, module.float32 = Array, "int64", zeros, "float32"
        sys.modules["numpy"] = module
        self.addCleanup(sys.modules.pop, "numpy")
        return module

    def test_arrays_in_arrays_out(self) -> None:
        numpy = self.numpy()
        result = latbox.solve(numpy.array([[1, 1, 1], [5, 3, 2]]), numpy.array([9, 25]), numpy.array([0, 0, 0]),
                              numpy.array([9, 9, 9]), objective=numpy.array([1, 2, 3]))
        self.assertEqual(result.status, "optimal")
        self.assertEqual(type(result.x).__module__, "numpy")
        x = result.x.tolist()
        self.assertEqual((sum(x), 5 * x[0] + 3 * x[1] + 2 * x[2]), (9, 25))

    def test_what_does_not_fit(self) -> None:
        numpy = self.numpy()
        result = latbox.solve(numpy.array([[1, 1]]), [10**30], 0, [10**30, 0])
        self.assertEqual(result.x.tolist(), [10**30, 0])

    def test_floats_of_fewer_digits(self) -> None:
        """A float32 of 0.1 is shown as 0.1, and not the 0.10000000149011612 that Python makes of it."""
        numpy = self.numpy()
        result = latbox.solve(numpy.array([[0.1, 0.2]], dtype=numpy.float32), numpy.array([0.3], dtype=numpy.float32), 0, [1, 9])
        self.assertEqual((result.status, result.x.tolist()), ("optimal", [1, 1]))

    def test_arrays_of_other_shapes(self) -> None:
        """No dimension: a number. No rows: the columns are known all the same."""
        numpy = self.numpy()
        self.assertEqual(latbox.solve(numpy.zeros((0, 3)), numpy.zeros((0,)), numpy.zeros(()), 0).x.tolist(), [0, 0, 0])
        for arguments, message in (((numpy.zeros(()), [1], 0, 1), "A: a sequence is wanted"),
                                   (([[1, 2]], numpy.zeros(()), 0, 1), "b: a sequence is wanted")):
            with self.assertRaises(UsageError) as caught:
                latbox.solve(*arguments)
            self.assertEqual(str(caught.exception), message)
        with self.assertRaisesRegex(UsageError, "^A: .* is not a number$"):
            latbox.solve([[numpy.array([1, 2]), 2]], [1], 0, 1)


if __name__ == "__main__":
    harness.main()
