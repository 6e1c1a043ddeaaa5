"""What is shown while it works: a header, a line for each better point, and how far it is; all on standard error.

On a terminal the last line is written in place, as wide as the terminal allows; elsewhere one line comes each ten seconds.
"""

from __future__ import annotations

from fractions import Fraction
from typing import IO

from ..errors import counted
from ..models.model import Model
from ..solving import checking, exact
from ..solving.events import Action, Bound, End, Event, Found, Progress, Start
from .size import header
from .terminal import StatusLine

BETWEEN_LINES = 10.0


class Display:
    """Requires that only this writes to the stream while it is in use."""

    def __init__(self, stream: IO[str], model: Model, name: str) -> None:
        self._line = StatusLine(stream)
        self._model = model
        self._name = name
        self._next = BETWEEN_LINES
        self._last = Progress(0.0)
        self._best: Fraction | None = None

    def tell(self, event: Event) -> None:
        if isinstance(event, Start):
            self._line.write("".join(line + "\n" for line in header(self._model, self._name, event)))
        elif isinstance(event, Found):
            self._take_find(event)
        elif isinstance(event, Progress):
            self._take_progress(event)
        elif isinstance(event, Action):
            self._take_action(event)
        elif isinstance(event, End):
            self.clear()

    def clear(self) -> None:
        """Nothing is left of the line in place."""
        self._line.clear()

    # ------------------------------------------------------------- its parts

    def _take_find(self, event: Found) -> None:
        if self._last.points and not self._is_better(event.objective):
            return
        self._best = event.objective
        self.clear()
        self._line.write("%s %s: %s\n" % (event.letter, clock(event.seconds),
                                          "a point" if event.objective is None else "objective %s" % short(event.objective)))
        self._last.points = max(1, self._last.points)

    def _take_action(self, event: Action) -> None:
        """Who looks at the terminal must know why nothing moves."""
        self.clear()
        what = event.action if event.key is None else "%s %s=%s" % (event.action, event.key, event.value)
        self._line.write("page %s: %s\n" % (clock(event.seconds), what))

    def _is_better(self, objective: Fraction | None) -> bool:
        return objective is not None and self._best is not None and checking.is_better(self._model, objective, self._best)

    def _take_progress(self, event: Progress) -> None:
        self._last = event
        if self._line.is_in_place:
            self._line.show(parts(event))
        elif event.seconds >= self._next:
            self._next = event.seconds - event.seconds % BETWEEN_LINES + BETWEEN_LINES
            self._line.show(parts(event))


def parts(event: Progress) -> list[str]:
    """Whatever is known, the more important the earlier."""
    found = [clock(event.seconds)]
    if event.objective is not None:
        found.append("best " + short(event.objective))
    elif event.points:
        found.append(counted(event.points, "point"))
    if event.bound is not None:
        found.append("bound " + short(event.bound))
    if event.violated is not None and not event.points:
        found.append("nearest breaks %d" % event.violated)
    if event.share is not None:
        found.append("%.3g %% done" % (100 * event.share))
    if event.left is not None:
        found.append(event.left + " left")
    if event.nodes:
        found.append("%.3g nodes" % event.nodes)
    if event.iteration:
        found.append("iteration %d" % event.iteration)
    return found



def clock(seconds: float) -> str:
    if seconds < 60:
        return "%.1f s" % seconds
    minutes, rest = divmod(int(seconds), 60)
    hours, minutes = divmod(minutes, 60)
    return "%d:%02d:%02d" % (hours, minutes, rest) if hours else "%d:%02d" % (minutes, rest)


def short(value: Fraction) -> str:
    """A number in a line: long ones are rounded, which shows by `~`."""
    digits = exact.text(value)
    if len(digits) <= 16:
        return digits
    try:
        return "~%.9g" % float(value)
    except OverflowError:
        return digits[:6] + "..(%d digits)" % len(digits)
