"""Both engines side by side on one model, until the first proven verdict or another end.

The search has a rewritten program (rewriting.py), the complete engine the model as plainly as can be (statement.py). All that is
proven comes from the complete engine, or from a best point that meets its bound; all points, from whomever, are checked against
the model before anybody else sees them. What the search has found the complete engine is told, which verifies it and then looks
for better ones only. Two statements that contradict each other end it as an internal error.

Nothing here runs in a thread: one loop waits for the pipes of all engines, a twentieth of a second at most.
"""

from __future__ import annotations

import os
import selectors
import shutil
import tempfile
import time
from collections.abc import Callable, Iterator
from dataclasses import dataclass, field
from fractions import Fraction

from ..errors import EngineError, InternalError, UsageError
from ..models.model import INF, Model
from . import checking, statuses
from .complete_engine import CompleteEngine, Task
from .events import Bound, End, Event, Found, Point, Progress, Start
from .program import MOST_CELLS
from .rewriting import Rewriting
from .search_engine import SearchEngine
from .statement import Infeasible, Statement
from .tuning import rank, tuning

AUTO, SEARCH, COMPLETE = "auto", "search", "complete"
ALL = 0  # solutions: all of them

TICK = 0.05
BETWEEN_PROGRESS = 0.2
# What a list of points may take to be written out once its engine is told to end.
PATIENCE = 0.15
LETTERS = "STUVWXYZ"


@dataclass
class Gap:
    """How far the best point may be from the bound: by an amount, or by a part of max(1, |objective|)."""

    value: Fraction
    relative: bool = False

    def holds(self, objective: Fraction, bound: Fraction) -> bool:
        scale = max(Fraction(1), abs(objective)) if self.relative else Fraction(1)
        return abs(objective - bound) <= self.value * scale


@dataclass
class Settings:
    engine: str = AUTO
    digits: int | None = None
    time: float | None = None  # seconds
    solutions: int = 1  # ALL, or so many
    target: Fraction | None = None
    gap: Gap | None = None
    seed: int = 0
    threads: int = 0  # 0: one for each processor
    memory: int | None = None  # bytes, of all engines together
    search_options: dict[str, object] = field(default_factory=dict)
    proof: str | None = None  # a folder
    log: Callable[[str], None] | None = None


class Portfolio:
    """Solves a model: iterate over events(). Leaving the iteration, by whatever, ends the engines."""

    def __init__(self, model: Model, settings: Settings, started: float | None = None) -> None:
        """`started`: of the clock time.monotonic(), from which --time counts."""
        self.model = model
        self.settings = settings
        self.has_objective = checking.has_objective(model)
        self._started = time.monotonic() if started is None else started
        self._interrupted = False
        self._complete: CompleteEngine | None = None
        self._searches: list[SearchEngine] = []
        self._best: tuple[Fraction | None, Point] | None = None
        self._points: dict[tuple, Point] = {}  # where more than one is wanted
        self._bound: Fraction | None = None
        self._notes: list[str] = []
        self._folder = ""

    def interrupt(self) -> None:
        """The next event is the last one: the answer so far."""
        self._interrupted = True

    def abandon(self) -> None:
        """Ends the engines and clears away, at once; for whoever ends the process behind it."""
        self._stop()
        if self._folder:
            shutil.rmtree(self._folder, ignore_errors=True)

    def events(self) -> Iterator[Event]:
        """Throws LatboxError: ModelError before anything starts, EngineError if no engine can go on."""
        self._folder = tempfile.mkdtemp(prefix="latbox-")
        try:
            yield from self._run()
        finally:
            self._stop()
            shutil.rmtree(self._folder, ignore_errors=True)

    # ------------------------------------------------------------- the course of it

    def _run(self) -> Iterator[Event]:
        try:
            self._statement = Statement(self.model, self.settings.digits)
        except Infeasible as reason:
            self._notes.append(str(reason))
            yield self._end(statuses.INFEASIBLE)
            return
        if not self._statement.program.columns:
            yield from self._take([], "P")
            yield self._end(statuses.OPTIMAL if self.settings.solutions == 1 else statuses.ALL)
            return
        if self._statement.program.cells() > MOST_CELLS:
            self._notes.append("%d rows by %d columns are far beyond what lattices are for" %
                               (len(self._statement.program.conditions), len(self._statement.program.columns)))
            yield self._end(statuses.UNKNOWN)
            return
        try:
            try:
                yield self._launch()
            except Infeasible as reason:
                self._notes.append(str(reason))
                yield self._end(statuses.INFEASIBLE)
                return
            status = yield from self._race()
        except KeyboardInterrupt:
            status = statuses.INTERRUPTED
        if status is None or not statuses.status_of(status, self._has_point()).exit_status in (10, 20):
            yield from self._last_points()
        yield self._end(self._open_status() if status is None else status)

    def _launch(self) -> Start:
        """Starts the engines on their shares of the threads."""
        settings = self.settings
        threads = settings.threads or os.cpu_count() or 1
        wants_search = settings.engine != COMPLETE and (settings.solutions == 1 or
                                                        (settings.solutions != ALL and not self.has_objective))
        rewritten = self._rewritten(0) if wants_search else None
        searches = 0
        if rewritten is not None:
            searches = threads if settings.engine == SEARCH else max(1, threads // 4)
        threads = 0 if settings.engine == SEARCH else max(1, threads - searches)
        each = settings.memory // (searches + bool(threads)) if settings.memory else None
        if threads:
            self._start_complete(threads, each)
        for number in range(searches):
            self._start_search(number, rewritten if number == 0 else self._rewritten(number), each)
        self._is_listing = settings.solutions != 1
        program = rewritten.program if rewritten else self._statement.program
        return Start(rank(program), tuning(program).kind, searches, threads)

    def _rewritten(self, number: int) -> Rewriting | None:
        """The program of the search under the seed of this number; None where there is nothing to be searched."""
        try:
            rewriting = Rewriting(self._statement.program, seed=self.settings.seed + number)
        except Infeasible:
            if self.settings.engine == SEARCH:
                raise
            return None
        return rewriting if rewriting.program.columns and rewriting.program.conditions else None

    def _folder_for(self, name: str) -> str:
        path = os.path.join(self._folder, name)
        os.mkdir(path)
        return path

    def _start_complete(self, threads: int, memory: int | None) -> None:
        task = Task(threads=threads, seed=self.settings.seed)
        if self.settings.solutions == ALL:
            task.all = True
        elif not self.has_objective:
            task.first = self.settings.solutions == 1
            task.limit = 0 if task.first else self.settings.solutions
        self._complete = CompleteEngine(self._statement.program, task, self._folder_for("complete"), memory,
                                        self.settings.log)

    def _start_search(self, number: int, rewriting: Rewriting | None, memory: int | None) -> None:
        if rewriting is None:
            return
        letter = LETTERS[min(number, len(LETTERS) - 1)]
        count = 0 if self.has_objective else self.settings.solutions
        self._searches.append(SearchEngine(rewriting, count, letter, self._folder_for("search%d" % number), memory,
                                           self.settings.search_options, self.settings.log))

    def _race(self) -> Iterator[Event]:
        """Returns the status, None for a stop without a proof."""
        next_progress = 0.0
        while True:
            for engine in self._engines():
                yield from self._hear(engine)
            yield from self._take_bound()
            status, is_over = self._verdict()
            if is_over:
                return status
            now = self.seconds()
            if self._interrupted:
                return statuses.INTERRUPTED
            if self.settings.time is not None and now >= self.settings.time:
                return None
            if now >= next_progress:
                next_progress = now + BETWEEN_PROGRESS
                yield self._progress()
            self._wait()

    def _hear(self, engine) -> Iterator[Event]:
        for values in engine.news():
            yield from self._take(values, engine.letter)

    def _wait(self) -> None:
        """For a word of an engine, a tick at most."""
        tick = TICK
        if self.settings.time is not None:
            tick = max(0.0, min(tick, self.settings.time - self.seconds()))
        with selectors.DefaultSelector() as selector:
            for engine in self._engines():
                for pipe in engine.process.pipes():
                    selector.register(pipe, selectors.EVENT_READ)
            if selector.get_map():
                selector.select(tick)
            else:
                time.sleep(tick)

    # ------------------------------------------------------------- points and bounds

    def _take(self, values: list[Fraction], letter: str) -> Iterator[Event]:
        """A point of the program becomes one of the model, if it is one."""
        x = self._statement.point(values)
        wrong = checking.fault(self.model, x)
        if wrong:
            raise InternalError("a point that was found (%s) is no point of the model: %s" % (letter, wrong))
        objective = checking.objective_of(self.model, x) if self.has_objective else None
        is_better = self._best is None or (objective is not None and
                                           checking.is_better(self.model, objective, self._best[0]))
        if self.settings.solutions != 1:
            key = tuple(x)
            if key in self._points or (self.settings.solutions and len(self._points) >= self.settings.solutions):
                return
            self._points[key] = x
        elif not is_better:
            return
        if is_better:
            self._best = objective, x
            if self._complete is not None and letter != self._complete.letter:
                self._complete.offer(self._statement.columns(x))
        yield Found(x, objective, self.seconds(), letter)

    def _take_bound(self) -> Iterator[Event]:
        if not self.has_objective or self._complete is None or self._complete.least is None:
            return
        value = self._statement.objective(self._complete.least)
        if self._bound is None or checking.is_better(self.model, self._bound, value):
            self._bound = value
            yield Bound(value, self.seconds())

    def _verdict(self) -> tuple[str | None, bool]:
        """A status that is proven, and whether it is over."""
        settings = self.settings
        if self._complete is not None and self._complete.verdict is not None:
            return self._heard(*self._complete.verdict), True
        if settings.solutions == 1 and self._best is not None:
            objective = self._best[0]
            if objective is None or objective == self._bound:
                return statuses.OPTIMAL, True
            if settings.target is not None and not checking.is_better(self.model, settings.target, objective):
                return None, True
            if settings.gap is not None and self._bound is not None and settings.gap.holds(objective, self._bound):
                return None, True
        if settings.solutions > 1 and not self.has_objective and len(self._points) >= settings.solutions:
            return statuses.OPTIMAL, True
        return None, self._are_through()

    def _are_through(self) -> bool:
        """Whether no engine goes on that could bring an end."""
        searching = [engine for engine in self._searches if not engine.is_over]
        if self._complete is not None and not self._complete.is_over:
            return False
        if self._complete is not None and self._complete.open_columns is not None:
            return not searching or (self.settings.time is None and self._has_point())
        return not searching

    def _heard(self, word: str, rest: str) -> str | None:
        """The status that belongs to a verdict, if that can be true."""
        if word == "none":
            if self._has_point():
                raise InternalError("latbox-all says that there is no point, and one is known")
            return statuses.INFEASIBLE
        if word == "optimum":
            from .points import number

            objective = self._statement.objective(number(rest.split()[0]))
            if self._best is None or objective != self._best[0]:
                raise InternalError("latbox-all says that %s is the optimum, and the best point has %s" %
                                    (objective, self._best[0] if self._best else "none"))
            self._bound = objective
            return statuses.OPTIMAL
        if word == "all":
            if int(rest) != len(self._points):
                raise InternalError("latbox-all says that there are %s points, and %d are known" % (rest, len(self._points)))
            return statuses.ALL
        if word == "found" and not self.has_objective and self._has_point():
            enough = self.settings.solutions == 1 or len(self._points) == self.settings.solutions
            return statuses.OPTIMAL if enough else None
        return None

    def _has_point(self) -> bool:
        return self._best is not None

    # ------------------------------------------------------------- progress and the end

    def seconds(self) -> float:
        return time.monotonic() - self._started

    def _progress(self) -> Progress:
        progress = Progress(self.seconds(), self._best[0] if self._best else None, self._bound,
                            len(self._points) if self.settings.solutions != 1 else int(self._has_point()))
        if self._searches:
            progress.iteration = sum(engine.progress.iteration for engine in self._searches)
            known = [e.progress.violated for e in self._searches if e.progress.violated is not None]
            progress.violated = min(known) if known else None
        if self._complete is not None:
            progress.nodes = self._complete.progress.nodes
            progress.share = self._complete.progress.share
            progress.left = self._complete.progress.left
        return progress

    def _last_points(self) -> Iterator[Event]:
        """What the engines have written and nobody has read."""
        for engine in self._searches:
            for values in engine.end():
                yield from self._take(values, engine.letter)
        if self._complete is not None:
            patience = PATIENCE if self.settings.solutions != 1 else 0.0
            for values in self._complete.end(patience):
                yield from self._take(values, self._complete.letter)

    def _open_status(self) -> str:
        return statuses.FEASIBLE if self._has_point() else statuses.UNKNOWN

    def _end(self, status: str, ray: Point | None = None) -> End:
        self._stop()
        points = list(self._points.values())
        if self.settings.solutions == 1:
            points = [self._best[1]] if self._best else []
        elif self.has_objective:
            points.sort(key=lambda x: checking.objective_of(self.model, x), reverse=self.model.maximise)
        if self._on_grid() and status in (statuses.OPTIMAL, statuses.ALL, statuses.INFEASIBLE):
            status = self._open_status()
        bound = None if self._on_grid() else self._bound
        return End(status, points[0] if points else None, self._best[0] if self._best else None, bound, points,
                   len(points), self.seconds(), ray, self._notes)

    def _on_grid(self) -> bool:
        return hasattr(self, "_statement") and self._statement.on_grid

    def _stop(self) -> None:
        for engine in self._engines():
            engine.stop()

    def _engines(self) -> list:
        return [*self._searches, *([self._complete] if self._complete else [])]
