"""Both engines side by side on one model, until the first proven verdict or another end.

The search has a rewritten program (rewriting.py), the complete engine the model as plainly as can be (statement.py). All that is
proven comes from the complete engine, or from a best point that meets its bound; all points, from whomever, are checked against
the model before anybody else sees them. What the search has found the complete engine is told, which verifies it and then looks
for better ones only. Two statements that contradict each other end it as an internal error.

Nothing here runs in a thread: one loop waits for the pipes of all engines, and for orders to steer them (steering.py), a twentieth
of a second at most. A pause stops the engines' processes and the clock of the run; nothing else moves meanwhile.
"""

from __future__ import annotations

import os
import selectors
import time
from collections.abc import Generator, Iterator
from dataclasses import replace
from fractions import Fraction

from ..errors import EngineError, InternalError
from ..models.model import Model
from ..models.tied import with_tied_on_grids
from . import checking, pace, proof, semi, statuses, steering, unbounded
from .activity import narrowed
from .clock import Clock
from .complete_engine import CompleteEngine, Task
from .corners import corners
from .events import Action, Bound, End, Event, Found, Point, Progress, Setting, Start
from .finds import Finds
from .inquiry import Inquiry, Question
from .program import MANY_CELLS, MOST_CELLS
from .search_engine import SearchEngine
from .searches import Searches
from .settings import ALL, AUTO, LEAST_SHARE, SEARCH, Settings
from .statement import Infeasible, Statement, grid_text
from .tuning import rank, tuning
from .work_folder import WorkFolder

TICK = 0.05
BETWEEN_PROGRESS = 0.2
# What a list of points may take to be written out once its engine is told to end.
PATIENCE = 0.15
# One process of the search for so many threads.
THREADS_A_SEARCH = 4


class Portfolio:
    """Solves a model: iterate over events(). Leaving the iteration, by whatever, ends the engines."""

    def __init__(self, model: Model, settings: Settings, started: float | None = None) -> None:
        """`started`: of the clock time.monotonic(), from which the time counts."""
        self.model = model
        self.settings = settings
        self.has_objective = checking.has_objective(model)
        self._clock = Clock(started, settings.time)
        self._interrupted = False
        self._pace = pace.Pace()
        self._process = os.getpid()
        self._folder: WorkFolder | None = None
        self._complete: CompleteEngine | None = None
        self._rays: CompleteEngine | None = None
        self._searches = Searches(settings, self._part)
        self._finds = Finds(model, settings.solutions)
        self._inquiry = Inquiry(self._finds, settings)
        self._have_served = False  # a point has come from an engine, or from the rewriting
        self._ray: Point | None = None
        self._on_grids = with_tied_on_grids(model)  # what is stated; points are checked against the model itself
        self._grid = grid_text(self._on_grids, settings.digits)  # of continuous columns, of which nothing is proven; or ""
        self._notes: list[str] = []
        self.is_proven = False  # once there is an end: its status was proven, if only of the grid

    def interrupt(self) -> None:
        """The next event is the last one: the answer so far."""
        self._interrupted = True

    def abandon(self) -> None:
        """Ends the engines and clears away, at once; for whoever ends the process behind it. A child that was forked off with an
        iteration leaves what is its parent's."""
        if os.getpid() != self._process:
            return
        self._stop()
        if self._folder is not None:
            self._folder.remove()

    def events(self) -> Generator[Event, None, None]:
        """Throws LatboxError: ModelError before anything starts, EngineError if no engine can go on."""
        self._process = os.getpid()
        self._folder = WorkFolder()
        try:
            yield from self._run()
        finally:
            self.abandon()

    # ------------------------------------------------------------- the course of it

    def _run(self) -> Iterator[Event]:
        if self.settings.proof is not None:
            proof.folder(self.settings.proof)
        try:
            self._statement = self._stated()
            self._program = self._statement.program
            self._inquiry.begin(self._statement)
            self._searches.begin(self._program)
            if not self._program.columns:
                yield from self._take([], "P")
                yield self._end(statuses.OPTIMAL if self.settings.solutions == 1 else statuses.ALL)
                return
            if self._program.cells() > MOST_CELLS:
                self._notes.append("%d rows by %d columns are far beyond what lattices are for" %
                                   (len(self._program.conditions), len(self._program.columns)))
                yield self._end(statuses.UNKNOWN)
                return
            yield self._launch()
            if self._presolved is not None:
                self._have_served = True
                yield from self._take(self._presolved, "P")
            elif self.settings.solutions == 1:
                yield from self._take_corners()
        except Infeasible as reason:
            self._notes.append(str(reason))
            yield self._end(statuses.INFEASIBLE)
            return
        try:
            status = yield from self._race()
        except KeyboardInterrupt:
            status = statuses.INTERRUPTED
        self._end_pause()
        if status in (None, statuses.INTERRUPTED):
            yield from self._last_points()
            status = self._told_without_proof() or status
        yield self._end(status or self._open_status())

    def _stated(self) -> Statement:
        """A large model without what its rows fix: the engines are given whole rows, whose zeros cost too. Throws Infeasible."""
        digits = self.settings.digits
        model = semi.closed(self._on_grids, digits)
        statement = Statement(model, digits)
        if statement.program.cells() <= MANY_CELLS or self._grid:
            return statement
        return Statement(narrowed(model, statement), digits)

    def _launch(self) -> Start:
        """Starts the engines on their shares of the threads. Throws Infeasible if the search alone is asked and sees it."""
        settings = self.settings
        threads = settings.threads or os.cpu_count() or 1
        rewritten = self._searches.rewritten(0) if self._wants_search() else None
        searches = 0
        self._presolved = rewritten.point([]) if rewritten and not rewritten.program.columns else None
        if rewritten is not None and rewritten.program.columns:
            searches = threads if settings.engine == SEARCH else max(1, threads // THREADS_A_SEARCH)
        if settings.memory:
            shares = settings.memory // LEAST_SHARE - (settings.engine != SEARCH)  # for searches
            searches = min(searches, max(1, shares))
        self._threads = 0 if settings.engine == SEARCH else max(1, threads - searches)
        self._memory = settings.memory // (searches + bool(self._threads)) if settings.memory else None
        if self._threads:
            self._ask(self._inquiry.first())
            self._start_rays()
        if rewritten is not None:
            self._searches.start(rewritten, searches, self._memory)
        program = rewritten.program if rewritten else self._program
        kind = tuning(program)
        options = steering.present({**kind.options, **settings.search_options}) if searches else {}
        return Start(rank(program), kind.kind, searches, self._threads, settings.time, time.time() - self.seconds(), options)

    def _wants_search(self) -> bool:
        settings = self.settings
        if settings.engine != AUTO:
            return settings.engine == SEARCH
        return settings.solutions == 1 or (settings.solutions != ALL and not self._inquiry.is_optimising)

    # ------------------------------------------------------------- engines

    def _ask(self, question: Question) -> None:
        """The complete engine; another one that was there ends."""
        if self._complete is not None:
            self._complete.stop()
        task = replace(question.task, threads=self._threads)
        notes = proof.name_map(self._statement) if task.proof else ""
        self._complete = CompleteEngine(question.program, task, self._part("complete"), self._memory, self.settings.log, notes, self.paused())

    def _start_rays(self) -> None:
        program = unbounded.ray_program(self._program)
        if program is not None:
            self._rays = CompleteEngine(program, Task(first=True), self._part("rays"), self._memory, self.settings.log)

    def _part(self, name: str) -> str:
        """A new folder for an engine."""
        assert self._folder is not None
        return self._folder.part(name)

    def _engines(self) -> list[SearchEngine | CompleteEngine]:
        return [*self._searches.engines, *filter(None, (self._complete, self._rays))]

    def _stop(self) -> None:
        for engine in self._engines():
            engine.stop()

    # ------------------------------------------------------------- the race

    def _race(self) -> Generator[Event, None, str | None]:
        """Returns the status, None for a stop without a proof."""
        next_progress = 0.0
        while True:
            yield from self._obey()
            if self._clock.is_paused and not self._interrupted:
                self._wait()
                continue
            for engine in [*self._searches.engines, self._complete]:
                if engine is not None:
                    yield from self._hear(engine)
            self._hear_of_rays()
            yield from self._take_bound()
            if self._complete is not None and self._complete.is_proving:
                self._searches.drop_all()
            self._renew_searches()
            for key, value in self._searches.settings():
                yield Setting(key, value, self.seconds())
            status, is_over = self._verdict()
            if is_over:
                return status
            now = self.seconds()
            if self._interrupted:
                return statuses.INTERRUPTED
            if self._clock.is_late():
                return None
            if now >= next_progress:
                next_progress = now + BETWEEN_PROGRESS
                yield self._progress()
            self._wait()

    def _hear(self, engine: SearchEngine | CompleteEngine) -> Iterator[Event]:
        """An engine that breaks is left out, as long as there is another one, or a point that took more than a look at the corners."""
        try:
            found = engine.news()
        except EngineError as error:
            if isinstance(engine, SearchEngine):
                self._searches.drop(engine)
            else:
                self._complete = None
                engine.stop()
            if not self._have_served and not self._searches.engines and self._complete is None:
                raise
            self._notes.append(str(error))
            return
        for values in found:
            self._have_served = True
            yield from self._take(values, engine.letter)
            if isinstance(engine, SearchEngine) and self._inquiry.is_optimising:
                norm = self._norm_of(values)
                engine.best = norm if engine.best is None else min(engine.best, norm)

    def _norm_of(self, values: list[Fraction]) -> Fraction:
        return self._statement.norm(checking.objective_of(self.model, self._statement.point(values)))

    def _renew_searches(self) -> None:
        known = self._finds.objective
        if known is not None and self._inquiry.is_optimising:
            self._searches.renew(self._statement.norm(known), self._clock)

    def _hear_of_rays(self) -> None:
        if self._rays is None:
            return
        try:
            steps = self._rays.news()
        except EngineError as error:
            self._notes.append(str(error))
            self._rays = None
            return
        if steps:
            self._ray = unbounded.whole(self._statement.direction(steps[0]))
            wrong = checking.ray_fault(self.model, self._ray)
            if wrong:
                raise InternalError("a ray that was found is none: %s" % wrong)
        if self._rays.is_over:
            self._rays.stop()
            self._rays = None
            if self._ray is not None and self._finds.best is None and self._threads:
                self._ask(self._inquiry.rescue())

    def _wait(self) -> None:
        """For a word of an engine, a tick at most."""
        left = None if self._clock.is_paused else self._clock.left()
        tick = TICK if left is None else max(0.0, min(TICK, left))
        with selectors.DefaultSelector() as selector:
            for engine in [] if self._clock.is_paused else self._engines():
                for pipe in engine.process.pipes():
                    selector.register(pipe, selectors.EVENT_READ)
            if self.settings.steering is not None and self.settings.steering.fileno() >= 0:
                selector.register(self.settings.steering, selectors.EVENT_READ)
            if selector.get_map():
                selector.select(tick)
            else:
                time.sleep(tick)

    # ------------------------------------------------------------- orders

    def _obey(self) -> Iterator[Event]:
        """Each order that changes something is an event."""
        if self.settings.steering is None:
            return
        for order in self.settings.steering.orders():
            before = self.seconds()
            if self._follows(order):
                is_set = order.action == steering.SET
                # A pause takes no time of work: it ends when it began, however long the engines take to be woken.
                when = before if order.action == steering.GO_ON else self.seconds()
                yield Action(order.action, when, order.key if is_set else None, order.value if is_set else None)
                if order.action in (steering.PAUSE, steering.GO_ON):
                    yield self._progress()

    def _follows(self, order: steering.Order) -> bool:
        """Whether there was something to do."""
        if order.action == steering.PAUSE and not self._clock.is_paused:
            self._clock.pause()
            for engine in self._engines():
                engine.process.pause()
        elif order.action == steering.GO_ON and self._clock.is_paused:
            self._end_pause()
        elif order.action == steering.STOP and not self._interrupted:
            self.interrupt()
        elif order.action == steering.SET and order.key in steering.BY_KEY and steering.BY_KEY[order.key].takes(order.value):
            self._searches.set(order.key, order.value)
        else:
            return False
        return True

    def _end_pause(self) -> None:
        if self._clock.is_paused:
            self._clock.go_on()
            for engine in self._engines():
                engine.process.go_on()

    # ------------------------------------------------------------- points and bounds

    def _take(self, values: list[Fraction], letter: str) -> Iterator[Event]:
        """A point of the program becomes one of the model, if it is one."""
        x = self._statement.point(values)
        wrong = checking.fault(self.model, x)
        if wrong:
            raise InternalError("a point that was found (%s) is no point of the model: %s" % (letter, wrong))
        if self._inquiry.has_enough():
            return
        is_new, is_better = self._finds.take(x)
        if is_better and self._complete is not None and letter != self._complete.letter:
            self._complete.offer(self._statement.columns(x))
        if is_new:
            yield Found(x, self._finds.objective_of(x), self.seconds(), letter)

    def _take_corners(self) -> Iterator[Event]:
        for values in corners(self._program):
            if self._clock.is_late() or self._interrupted:
                return
            if checking.fault(self.model, self._statement.point(values)) is None:
                yield from self._take(values, "P")

    def _take_bound(self) -> Iterator[Event]:
        least = self._complete.least if self._complete is not None else None
        if least is not None and self._inquiry.take_least(least) and self._inquiry.bound is not None and not self._grid:
            yield Bound(self._inquiry.bound, self.seconds())

    # ------------------------------------------------------------- verdicts

    def _verdict(self) -> tuple[str | None, bool]:
        """A status that is proven, if one is, and whether it is over."""
        if self._ray is not None and self._finds.best is not None:
            return statuses.UNBOUNDED, True
        if self._complete is not None and self._complete.verdict is not None:
            word, rest = self._complete.verdict
            answer = self._inquiry.heard(word, rest)
            if isinstance(answer, Question):
                self._ask(answer)
            status = answer if isinstance(answer, str) else None
            if status is not None or self._complete.is_over:
                return status, status is not None or self._are_through()
        if self.settings.solutions == 1 and self._finds.best is not None:
            objective = self._finds.objective
            if not self._inquiry.is_optimising or (objective == self._inquiry.bound and self.settings.proof is None):
                return statuses.OPTIMAL, True
            if objective is not None and self._is_good_enough(objective):
                return None, True
        if self._inquiry.has_enough():
            return statuses.OPTIMAL, True
        if self._complete is not None and self._complete.open_columns is not None:
            question = self._inquiry.at_open(self._complete.open_columns)
            self._complete.open_columns = []
            if question is not None:
                self._ask(question)
        return None, self._are_through()

    def _is_good_enough(self, objective: Fraction) -> bool:
        target, gap = self.settings.target, self.settings.gap
        if target is not None and not checking.is_better(self.model, target, objective):
            return True
        return gap is not None and self._inquiry.bound is not None and gap.holds(objective, self._inquiry.bound)

    def _are_through(self) -> bool:
        """Whether no engine goes on that could bring an end."""
        if any(engine is not None and not engine.is_over for engine in (self._complete, self._rays)):
            return False
        if self._searches.are_over():
            return True
        # The search goes on by itself; who has asked for both does not want to wait for it without end.
        return self.settings.engine != SEARCH and self.settings.time is None and self._finds.best is not None

    # ------------------------------------------------------------- progress and the end

    def seconds(self) -> float:
        """Of work: pauses do not count."""
        return self._clock.seconds()

    def paused(self) -> float:
        return self._clock.paused()

    def _progress(self) -> Progress:
        count = self._finds.count if self.settings.solutions != 1 else int(self._finds.best is not None)
        progress = Progress(self.seconds(), self._finds.objective, None if self._grid else self._inquiry.bound, count)
        self._searches.tell(progress)
        if self._complete is not None:
            known_of_it = self._complete.progress
            progress.nodes = known_of_it.nodes
            progress.share = known_of_it.share
            progress.rate = self._pace.of(progress.seconds, known_of_it.nodes)
            progress.left_seconds = self._complete.seconds_left(self.paused())
            # Its own estimate takes a pause for work.
            progress.left = known_of_it.left if not self.paused() else pace.duration(progress.left_seconds)
        progress.paused = self.paused()
        return progress

    def _last_points(self) -> Iterator[Event]:
        """What the engines have written and nobody has read."""
        for engine in self._searches.engines:
            for values in engine.end():
                yield from self._take(values, engine.letter)
        if self._complete is not None:
            patience = PATIENCE if self.settings.solutions != 1 else 0.0
            for values in self._complete.end(patience):
                yield from self._take(values, self._complete.letter)

    def _told_without_proof(self) -> str | None:
        """The status, where the complete engine had nothing left to do but its proof."""
        if self._complete is None or not self._complete.is_proving or self._complete.told is None:
            return None
        answer = self._inquiry.heard(*self._complete.told)
        return answer if isinstance(answer, str) else None

    def _open_status(self) -> str:
        return statuses.FEASIBLE if self._finds.best is not None else statuses.UNKNOWN

    def _end(self, status: str) -> End:
        self._stop()
        if self._inquiry.open_note and status not in (statuses.OPTIMAL, statuses.INFEASIBLE, statuses.UNBOUNDED):
            self._notes.append(self._inquiry.open_note)
        if status == statuses.UNBOUNDED and self.settings.solutions != 1:
            self._notes.append("there are better and better points without end: one of them is shown")
        if self.settings.proof is not None and (self._complete is None or not self._complete.has_proven):
            self._notes.append(proof.missing(self._why_no_proof(status)))
        self.is_proven = status in (statuses.OPTIMAL, statuses.ALL, statuses.INFEASIBLE)
        ray = self._ray if status == statuses.UNBOUNDED else None
        if self._grid:
            self._notes.append("continuous columns were taken on a grid of %s: nothing is proven of what lies between" % self._grid)
            if ray is not None:
                self._notes.append("from the point the ray leads to better and better ones, without end")
            if self.is_proven or ray is not None:
                status = self._open_status()
        points = self._finds.points()[: 1 if status == statuses.UNBOUNDED else None]
        objective = self._finds.objective_of(points[0]) if points else None
        if status in (statuses.OPTIMAL, statuses.ALL):
            self._inquiry.bound = objective
        bound = None if self._grid or status == statuses.INFEASIBLE else self._inquiry.bound
        return End(status, points[0] if points else None, objective, bound, points,
                   len(points), self.seconds(), ray, self._notes)

    def _why_no_proof(self, status: str) -> str:
        if self._complete is not None and self._complete.is_proving:
            return proof.UNFINISHED
        if status == statuses.OPTIMAL and not self.has_objective:
            return proof.SPEAKS
        if status == statuses.UNBOUNDED:
            return proof.RAY
        if status in (statuses.OPTIMAL, statuses.ALL, statuses.INFEASIBLE):
            return proof.NOTHING
        return proof.OPEN
