"""The processes of the search: each under a seed of its own, which permutes columns and rows, for its draws are fixed.

With an objective, one that lags behind the best point begins anew with a row that asks for better ones. That costs it its basis, so
it is done at growing distances.
"""

from __future__ import annotations

import time
from collections.abc import Callable, Iterator
from fractions import Fraction

from .clock import Clock
from .events import Progress
from .program import Program
from .rewriting import Rewriting
from .search_engine import SearchEngine
from .settings import SEARCH, Settings
from .statement import Infeasible

# Seconds until a search that lags behind begins anew; each time twice as long.
FIRST_RENEWAL = 2.0
# The time that is left then must be as long as so many rewritings: nothing else is done meanwhile, nor is the time looked at.
REWRITINGS_LEFT = 4


class Searches:
    """begin() comes first; start() brings the engines, of which there are none before."""

    def __init__(self, settings: Settings, part: Callable[[str], str]) -> None:
        """`part`: makes a new folder for an engine, of this name and a number."""
        self.engines: list[SearchEngine] = []
        self._settings = settings
        self._part = part
        self._memory: int | None = None
        # Options that were set while it went: those of a search that begins anew, too.
        self._set: dict[str, int] = {}
        self._renewal = FIRST_RENEWAL
        self._next_renewal = FIRST_RENEWAL
        self._rewriting_seconds = 0.0  # that a rewriting takes

    # ------------------------------------------------------------- beginning

    def begin(self, program: Program) -> None:
        self._program = program

    def rewritten(self, number: int) -> Rewriting | None:
        """The program under the seed of this number; None where it cannot hold, which the complete engine will find.

        Throws Infeasible where only the search is asked, and the rewriting proves it."""
        began = time.monotonic()
        try:
            rewriting = Rewriting(self._program, seed=self._settings.seed + number)
            self._rewriting_seconds = time.monotonic() - began
            return rewriting
        except Infeasible as reason:
            if self._settings.engine == SEARCH and reason.is_proven:
                raise
            return None

    def start(self, first: Rewriting, count: int, memory: int | None) -> None:
        """So many, with `memory` bytes each. `first`: rewritten(0)."""
        self._memory = memory
        for number in range(count):
            rewriting = first if number == 0 else self.rewritten(number)
            if rewriting is not None and rewriting.program.columns:
                self.engines.append(self._engine(number, rewriting))

    def _engine(self, number: int, rewriting: Rewriting) -> SearchEngine:
        count = 0 if self._program.targets else self._settings.solutions
        options = {**self._settings.search_options, **self._set}
        return SearchEngine(rewriting, count, number, self._part("search"), self._memory, options, self._settings.log)

    # ------------------------------------------------------------- its course

    def renew(self, limit: Fraction, clock: Clock) -> None:
        """Those that know no point of this target norm begin anew below it, if it is time to."""
        left = clock.left()
        if clock.seconds() < self._next_renewal or (left is not None and left <= REWRITINGS_LEFT * self._rewriting_seconds):
            return
        lagging = [engine for engine in self.engines if not engine.is_over and (engine.best is None or engine.best > limit)]
        if not lagging:
            return
        self._next_renewal = clock.seconds() + self._renewal
        self._renewal *= 2
        for engine in lagging:
            place = self.engines.index(engine)
            self.drop(engine)
            try:
                rewriting = Rewriting(self._program, limit, self._settings.seed + engine.number)
            except Infeasible:
                continue  # there may be none: the complete engine will say so
            if rewriting.program.columns:
                self.engines.insert(place, self._engine(engine.number, rewriting))

    def drop(self, engine: SearchEngine) -> None:
        engine.stop()
        self.engines.remove(engine)

    def drop_all(self) -> None:
        """There is nothing left to find."""
        for engine in self.engines[:]:
            self.drop(engine)

    def set(self, key: str, value: int) -> None:
        """An option of steering.py, for all of them."""
        self._set[key] = value
        for engine in self.engines:
            engine.set(key, value)

    def settings(self) -> Iterator[tuple[str, str]]:
        """(key, value) as the console of the first one has taken it since the last call: once for all of them."""
        for place, engine in enumerate(self.engines):
            taken = engine.settings()
            if place == 0:
                yield from taken

    # ------------------------------------------------------------- how far they are

    def are_over(self) -> bool:
        return all(engine.is_over for engine in self.engines)

    def tell(self, progress: Progress) -> None:
        """Puts into it what is known of the search; nothing if there is none."""
        known = [engine.progress for engine in self.engines]
        if not known:
            return
        progress.iteration = sum(one.iteration for one in known)
        progress.violated = min((one.violated for one in known if one.violated is not None), default=None)
        progress.basis = min((one.basis for one in known if one.basis is not None), default=None)
        progress.collected = sum(one.pairwise + one.sampling for one in known)
        progress.idle = min(one.idle for one in known)
