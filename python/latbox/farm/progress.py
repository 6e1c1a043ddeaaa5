"""How far the farm is, in one line: pieces done and open, workers, cores, share, points, best, time left.

On a terminal the line is written in place, as wide as that is; elsewhere one comes each ten seconds. All on standard error.
"""

from __future__ import annotations

import time
from dataclasses import dataclass
from typing import IO

from ..errors import counted
from ..front.progress import BETWEEN_LINES, clock
from ..front.terminal import StatusLine

IN_PLACE = 1.0


@dataclass(frozen=True)
class State:
    done: int
    open: int
    workers: int
    cores: int
    share: float  # of the estimated nodes, 0 to 1
    points: int
    best: str | None = None
    compared: int = 0  # second results that are not there yet


class Display:
    """Lines of text, and the line of progress between them."""

    def __init__(self, stream: IO[str], quiet: bool) -> None:
        self._line = StatusLine(stream)
        self._quiet = quiet
        self._started = time.monotonic()
        self._next = self._started
        self._first_share: float | None = None

    def note(self, words: str) -> None:
        """A line of its own, unless all is to be quiet."""
        if not self._quiet:
            self.say(words)

    def say(self, words: str) -> None:
        """A line of its own."""
        self.clear()
        self._line.write(words + "\n")

    def tell(self, state: State, at_once: bool = False) -> None:
        """The line of progress, when it is time for one."""
        now = time.monotonic()
        if self._first_share is None:
            self._first_share = state.share
        if self._quiet or (now < self._next and not at_once):
            return
        self._next = now + (IN_PLACE if self._line.is_in_place else BETWEEN_LINES)
        self._line.show(parts(state, now - self._started, self._left(state, now)))

    def clear(self) -> None:
        self._line.clear()

    def _left(self, state: State, now: float) -> float | None:
        """Seconds, as long as all goes on as since the start."""
        gained = state.share - (self._first_share or 0.0)
        return (now - self._started) * (1 - state.share) / gained if gained > 0 else None


def parts(state: State, seconds: float, left: float | None) -> list[str]:
    """The more important the earlier."""
    found = [clock(seconds), "%s done, %d open" % (counted(state.done, "piece"), state.open),
             "%s, %s" % (counted(state.workers, "worker"), counted(state.cores, "core")),
             "%.3g %% done" % (100 * state.share), counted(state.points, "point")]
    if state.best is not None:
        found.append("best " + state.best)
    if state.compared:
        found.append("%d to be compared" % state.compared)
    if left is not None and state.open:
        found.append("about %s left" % clock(left))
    return found
