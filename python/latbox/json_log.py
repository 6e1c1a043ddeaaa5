"""What the JSON lines of latbox-solve say about a run, as series over its events.

One object a line, with `event` and `time`, the seconds since the start. What is no such object, or lacks what its event
should have, is passed over: a file may be cut, and later versions may say more.
"""

from __future__ import annotations

import json
import math
from fractions import Fraction
from typing import Any

from .run_log import Series


class Clock:
    """A quantity that is known exactly at every event, and never falls."""

    def __init__(self) -> None:
        self.values: list[float] = []

    def add(self, value: float | None) -> None:
        last = self.values[-1] if self.values else 0.0
        self.values.append(last if value is None else max(last, value))

    def at(self, event: float) -> float:
        if not self.values:
            return 0.0
        return self.values[int(min(max(event, 0), len(self.values) - 1))]


class Run:
    """Series are lists of (number of the event, value)."""

    def __init__(self) -> None:
        self.name = ""
        self.sense: str | None = None
        self.status = ""
        self.best: Series = []
        self.bound: Series = []
        self.share: Series = []  # in percent
        self.nodes: Series = []
        self.violated: Series = []
        self.points: Series = []  # counted as they are told
        self.count: float | None = None  # as the end tells
        self.finds: Series = []
        self.events: dict[str, list[float]] = {}
        self.seconds, self.iterations = Clock(), Clock()

    def empty(self) -> bool:
        return not self.seconds.values

    def facts(self) -> list[str]:
        """What a title says."""
        found = [self.status] * bool(self.status) + ["%.3g s" % self.seconds.at(math.inf)]
        if self.best:
            found.append("best %.12g" % self.best[-1][1])
        if self.bound:
            found.append("bound %.12g" % self.bound[-1][1])
        if self.count is not None:
            found.append("%d point(s)" % self.count)
        return found


def is_json(text: str) -> bool:
    """Whether the first line that is not blank looks like an object."""
    return text.lstrip()[:1] == "{"


def read_run(text: str) -> Run:
    """The last run of the lines: each begins with its start."""
    run = Run()
    for line in text.split("\n"):
        event = _object(line)
        if event is None:
            continue
        if event.get("event") == "start":
            run = Run()
        _take(run, event)
    # A run of no length has no axis.
    if run.seconds.values and run.seconds.at(math.inf) <= 0:
        run.seconds.values[-1] = 1e-3
    return run


def _object(line: str) -> dict[str, Any] | None:
    """The event of a line, or None."""
    try:
        event = json.loads(line)
    except (ValueError, RecursionError):
        return None
    if not isinstance(event, dict) or number(event.get("time")) is None:
        return None
    return event


def number(value: object) -> float | None:
    """An int, a float, or a text "p/q" as a float; None for what is none or beyond what can be drawn."""
    if isinstance(value, bool) or not isinstance(value, (int, float, str)):
        return None
    try:
        found = float(Fraction(value)) if isinstance(value, str) else float(value)
    except (ValueError, OverflowError, ZeroDivisionError):
        return None
    return found if abs(found) < 1e300 else None


def _take(run: Run, event: dict[str, Any]) -> None:
    i = len(run.seconds.values)
    run.seconds.add(number(event["time"]))
    run.iterations.add(number(event.get("iteration")))
    kind = event.get("event")
    if kind == "start":
        run.name = str(event.get("model") or "")
        run.sense = event.get("sense") if event.get("sense") in ("min", "max") else None
    elif kind == "point":
        run.points.append((i, (run.points[-1][1] if run.points else 0) + 1))
        _take_best(run, i, number(event.get("objective")))
    elif kind in ("progress", "bound", "end"):
        _take_best(run, i, number(event.get("best" if kind == "progress" else "objective")))
        for series, key, factor in ((run.bound, "bound", 1), (run.share, "share", 100), (run.nodes, "nodes", 1),
                                    (run.violated, "violated", 1)):
            value = number(event.get(key))
            if value is not None:
                series.append((i, value * factor))
        if kind == "end":
            run.status = str(event.get("status") or "")
            run.count = number(event.get("points"))


def _take_best(run: Run, i: int, value: float | None) -> None:
    """A value that is better than all before is a find."""
    if value is None:
        return
    known = run.best[-1][1] if run.best else None
    if known is None or (value > known if run.sense == "max" else value < known):
        run.best.append((i, value))
        run.finds.append((i, value))
