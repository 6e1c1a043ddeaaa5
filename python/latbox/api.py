"""Solving from Python: models from files, and models as matrices.

    import latbox

    result = latbox.solve([[1, 1, 1], [5, 3, Fraction(1, 3)]], [100, 100], 0, 100)
    result.status, result.x          # 'optimal', Point(8, 11, 81)

    model = latbox.read("model.lp")
    result = model.solve(time=20)
    result.objective, result.x["name"]
    for x in model.solutions():      # all points, as they are found
        print(x.as_dict())

All numbers are exact: ints and Fractions of any length. Every point has been checked against the model in exact arithmetic.

The engines are processes. They end with the call that started them, also when it is left by an exception; with the loop over
solutions(); and when the thread that started them ends. Ctrl-C ends solve() with the best point so far, its status being
"interrupted"; a second one is KeyboardInterrupt at once. That is where Ctrl-C is Python's own, as in scripts and notebooks; a
program that handles it by itself keeps its handler.
"""

from __future__ import annotations

import os
import signal
from collections.abc import Callable, Generator, Iterable, Iterator, Sequence
from contextlib import contextmanager
from dataclasses import dataclass, field
from fractions import Fraction
from typing import Any

from . import models
from .arguments import digits_of, engine_of, gap_of, memory_of, solutions_of, target_of, threads_of, time_of, whole_of
from .arrays import Exact, Number, as_array, columns_of, count, dimensions, end_of, entries, exact, is_array, listed, plain, sparse, spread
from .errors import EngineError, PlacedError, UsageError, counted
from .models import sources
from .models.model import ASK_FOR_DIGITS, INF, Row
from .solving import checking, statuses
from .solving.events import End, Event, Found
from .solving.portfolio import Portfolio
from .solving.settings import ALL, AUTO, COMPLETE, SEARCH, Settings


class Point(tuple[Number, ...]):
    """The values of all variables in the order of the model, ints and Fractions; also by name: point["x1"]."""

    names: tuple[str, ...]

    def __new__(cls, values: Sequence[Fraction], names: tuple[str, ...]) -> Point:
        point = tuple.__new__(cls, [plain(value) for value in values])
        point.names = names
        return point

    def __getitem__(self, key: Any) -> Any:
        if isinstance(key, str):
            try:
                return super().__getitem__(self.names.index(key))
            except ValueError:
                raise KeyError(key) from None
        return super().__getitem__(key)

    def __getnewargs__(self) -> tuple[Any, ...]:
        return tuple(self), self.names

    def __repr__(self) -> str:
        return "Point(%s)" % ", ".join(map(str, self))

    def as_dict(self) -> dict[str, Number]:
        """{name: value}, all variables."""
        return dict(zip(self.names, self))


@dataclass
class Result:
    """The answer to a model.

    status: "optimal" (proven; without an objective: a point), "all" (all points, proven), "infeasible" (proven), "feasible",
    "unknown", "interrupted", "unbounded". x and objective belong to the best point, None if no point is known; bound is what no
    point can surpass, proven; points holds all that were asked for, best first. With status "unbounded", and with "feasible" where
    continuous variables were taken on a grid, ray may be there: the points x + k * ray, k = 0, 1, ... have better and better
    objectives. x, points and ray hold numpy arrays if the model came as one.
    """

    status: str
    objective: Number | None
    bound: Number | None
    x: Any
    points: list[Any]
    ray: Any = None
    seconds: float = 0.0
    notes: list[str] = field(default_factory=list)


class Model:
    """A model that has been read, or made of matrices."""

    def __init__(self, model: models.Model, wrap: Callable[[Point], Any] | None = None, file: str | None = None) -> None:
        """`file`: what errors of the model name as its place."""
        self.model = model
        self._file = file
        self._wrap = wrap or as_it_is
        self._names = tuple(variable.name for variable in model.variables)

    @property
    def names(self) -> tuple[str, ...]:
        """The names of the variables, in order."""
        return self._names

    @property
    def notes(self) -> list[str]:
        """What the reader did where readers of the format differ, or left out."""
        return [note.message for note in self.model.notes]

    def __repr__(self) -> str:
        name = " " + self.model.name if self.model.name else ""
        return "<latbox.Model%s: %s, %s>" % (name, counted(len(self._names), "variable"), counted(len(self.model.rows), "row"))

    def solve(self, time: float | None = None, solutions: int | str = 1, target: Exact | None = None,
              gap: Exact | str | None = None, engine: str = AUTO, digits: int | None = None, threads: int = 0, seed: int = 0,
              memory: int | None = None, on_event: Callable[[Event], None] | None = None) -> Result:
        """Solves it.

        time: seconds of the clock; None: until it is proven.
        solutions: so many points, with an objective the best ones; "all".
        target: end with an objective as good as this.  gap: end within this distance of the proven bound, "1%" relative.
        engine: "auto", "search", "complete".  threads: of all engines together; 0: one for each processor.
        digits: the decimals of continuous variables; the status is "feasible" or "unknown" at most then.
        seed: varies the search.  memory: bytes, of all engines together.
        on_event: is called with each event (latbox.solving.events) as it happens.

        Raises UsageError, ModelError (a continuous variable without digits), EngineError. Ctrl-C ends it with the best so far.
        """
        settings = Settings(engine_of(engine), digits_of(digits), time_of(time), solutions_of(solutions), target_of(target),
                            gap_of(gap), whole_of("seed", seed), threads_of(threads), memory_of(memory))
        if settings.engine == SEARCH and settings.solutions == ALL:
            raise UsageError("solutions='all': the search alone cannot know that it has them all")
        if settings.solutions != 1 and (target is not None or gap is not None):
            raise UsageError("%s: it goes with one point, not with solutions" % ("gap" if target is None else "target"))
        with self._placed():
            return self._result(last_event(Portfolio(self.model, settings), on_event or (lambda event: None)))

    def solutions(self, time: float | None = None, threads: int = 0, digits: int | None = None) -> Generator[Any, None, None]:
        """All points, each once, in no order, as they are found. Leaving the loop ends the engine.

        With a time it may end before all are there. Where it cannot come to an end by itself, for nothing bounds a variable or the
        engine breaks, EngineError is raised behind the points that are known. Raises as solve() otherwise; Ctrl-C as it is.
        """
        settings = Settings(COMPLETE, digits_of(digits), time_of(time), ALL, threads=threads_of(threads))
        return self._points(Portfolio(self.model, settings))

    def _points(self, portfolio: Portfolio) -> Generator[Any, None, None]:
        events = portfolio.events()
        try:
            while True:
                # Here alone: in the body of the loop Ctrl-C is Python's.
                with self._placed(), deferred_ctrl_c(portfolio) as pressed:
                    event = next(events)
                # Not behind the points that have come already: the body may take its time for each.
                if pressed:
                    raise KeyboardInterrupt
                if isinstance(event, Found):
                    yield self._wrap(Point(event.x, self._names))
                elif isinstance(event, End):
                    require_all(event, portfolio)
                    return
        finally:
            events.close()

    def fault(self, x: Iterable[Exact]) -> str | None:
        """What is wrong with a point, in words; None if it is a point of the model. Exact."""
        return checking.fault(self.model, [exact("x", value) for value in listed("x", x)])

    @contextmanager
    def _placed(self) -> Iterator[None]:
        """An error that has a place in the model gets its file; an option that it names is an argument here."""
        try:
            yield
        except PlacedError as error:
            error.message = error.message.replace(ASK_FOR_DIGITS, ASK_FOR_DIGITS.lstrip("-"))
            raise error.in_file(self._file) if self._file else error

    def _result(self, end: End) -> Result:
        points = [self._wrap(Point(x, self._names)) for x in end.points]
        return Result(end.status, None if end.objective is None else plain(end.objective),
                      None if end.bound is None else plain(end.bound), points[0] if points else None, points,
                      None if end.ray is None else self._wrap(Point(end.ray, self._names)), end.seconds, end.notes)


def as_it_is(point: Point) -> Any:
    return point


def read(path: str | os.PathLike[str], format: str | None = None) -> Model:
    """The model of a file: .opt, CPLEX LP, fixed or free MPS, also packed as .gz, .bz2, .xz; "-" is standard input.

    format: "opt", "lp", "mps", "fixed-mps", "free-mps" where the name does not tell. Raises ReadError (with file, line, column),
    UsageError, OSError.
    """
    path = os.fsdecode(path)
    if "\0" in path:
        raise UsageError("path=%r: no file has such a name" % path)
    if format is not None and not (isinstance(format, str) and format in models.FORMATS):
        raise UsageError("format=%r: one of %s is wanted" % (format, ", ".join(models.FORMATS)))
    if format is None and sources.format_of_name(path) is None:
        raise UsageError("%s: its name does not tell its format: format='lp', say, is wanted, one of %s" %
                         (sources.shown_name(path), ", ".join(models.FORMATS)))
    return Model(models.read_model(path, format), file=sources.shown_name(path))


def solve(A: Iterable[Any], b: Iterable[Any], lower: Any, upper: Any, objective: Iterable[Any] | None = None, sense: str = "min",
          digits: int | Iterable[int] = 0, time: float | None = None, **settings: Any) -> Result:
    """Finds whole x with A x = b and lower <= x <= upper, the best one if there is an objective.

    A: rows of numbers, all of one length n, or a numpy array of shape (m, n).
    b: m entries, each a number, or a pair (least, greatest) of what the row may be; None in it stands for no side.
    lower, upper: n numbers, or one for all; None or an infinity stands for no bound.
    objective: n numbers; sense: "min" or "max".
    digits: decimals of x, one number for all or n of them; where it is not 0 x is continuous and taken on that grid, and the
        status is at most "feasible" or "unknown".
    Numbers: ints, Fractions, Decimals of any length; a float counts as the decimal that Python shows of it, and one of numpy as
        the decimal that numpy shows of it.
    Other settings: as of Model.solve().

    Raises UsageError where shapes or numbers are wrong, else as Model.solve().
    """
    return matrix_model(A, b, lower, upper, objective, sense, digits).solve(time=time, **settings)


def matrix_model(A: Iterable[Any], b: Iterable[Any], lower: Any, upper: Any, objective: Iterable[Any] | None = None, sense: str = "min",
                 digits: int | Iterable[int] = 0) -> Model:
    """The model that solve() solves, for its solutions(), say. Variables are named x1, x2, ..., rows r1, r2, ..."""
    if not isinstance(sense, str) or sense not in ("min", "max"):
        raise UsageError("sense=%r: 'min' or 'max' is wanted" % (sense,))
    rows = [listed("A: row %d" % (i + 1), row) for i, row in enumerate(listed("A", A))]
    sides = listed("b", b)
    n = len(rows[0]) if rows else max(columns_of(A), *map(count, (lower, upper, objective)))
    if n == 0:
        raise UsageError("A has no columns")
    for i, row in enumerate(rows):
        if len(row) != n:
            raise UsageError("A: row %d has %s, and the first one has %d" % (i + 1, entries(len(row)), n))
    if len(sides) != len(rows):
        raise UsageError("A has %s, and b has %s" % (counted(len(rows), "row"), entries(len(sides))))
    model = models.Model()
    grids = spread("digits", digits, n)
    for j, (low, high, grid) in enumerate(zip(spread("lower", lower, n), spread("upper", upper, n), grids)):
        variable = model.variables[model.add_variable("x%d" % (j + 1))]
        variable.digits = digits_of(grid) or 0
        variable.integer = variable.digits == 0
        variable.lower, variable.upper = end_of("lower", low, -INF), end_of("upper", high, INF)
    for i, (row, side) in enumerate(zip(rows, sides)):
        side = list(side) if is_array(side) and dimensions(side) else side
        least, greatest = side if isinstance(side, (tuple, list)) and len(side) == 2 else (side, side)
        if least is None and greatest is None and not isinstance(side, (tuple, list)):
            raise UsageError("b: entry %d is None" % (i + 1))
        model.rows.append(Row("r%d" % (i + 1), None, end_of("b", least, -INF), end_of("b", greatest, INF), sparse("A", row)))
    if objective is not None:
        costs = listed("objective", objective)
        if len(costs) != n:
            raise UsageError("A has %s, and objective has %s" % (counted(n, "column"), entries(len(costs))))
        model.objective = Row("objective", None, coefficients=sparse("objective", costs))
        model.maximise = sense == "max"
    return Model(model, as_array if is_array(A) else None)


# ----------------------------------------------------------------- the course of it


def last_event(portfolio: Portfolio, tell: Callable[[Event], None]) -> End:
    """The end, whatever Ctrl-C does in between."""
    events = portfolio.events()
    with deferred_ctrl_c(portfolio):
        try:
            while True:
                try:
                    for event in events:
                        tell(event)
                        if isinstance(event, End):
                            return event
                    raise KeyboardInterrupt  # it came where there was nothing to tell yet
                except KeyboardInterrupt:
                    if events.gi_frame is None:
                        raise
                    portfolio.interrupt()
        finally:
            events.close()


@contextmanager
def deferred_ctrl_c(portfolio: Portfolio) -> Iterator[list[int]]:
    """The first Ctrl-C asks the run for its end, and stands in the list; the next one is Python's own.

    As an exception it could come between the start of an engine and the line that keeps it, which nobody would end then, or
    where a file is half closed. A handler that somebody else has set stays, and so it is in threads, which get no signals.
    """

    def ask(number: int, frame: object) -> None:
        signal.signal(signal.SIGINT, signal.default_int_handler)
        pressed.append(number)
        portfolio.interrupt()

    pressed: list[int] = []
    is_set = signal.getsignal(signal.SIGINT) is signal.default_int_handler
    try:
        if is_set:
            signal.signal(signal.SIGINT, ask)
    except ValueError:  # not in the main thread
        is_set = False
    try:
        yield pressed
    finally:
        if is_set:
            signal.signal(signal.SIGINT, signal.default_int_handler)


def require_all(end: End, portfolio: Portfolio) -> None:
    """That no point is missing, unless the time was up."""
    if end.status == statuses.INTERRUPTED:
        raise KeyboardInterrupt
    time = portfolio.settings.time
    if not portfolio.is_proven and (time is None or end.seconds < time):
        raise EngineError("not all points are known: " + "; ".join(end.notes))
