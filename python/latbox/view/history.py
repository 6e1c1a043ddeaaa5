"""The events of a run, as many as a page can use: what is old is thinned, so that a week takes a few megabytes.

Kept are lines of JSON, as they come. Of a kind that comes without end (progress, bounds, points) two neighbours may not be nearer
to each other than a part of their age: so the last minutes are whole, and a week ago one in half an hour or so stands for the rest.
That makes a number of lines that grows with the logarithm of the time alone. Of the values of points, which may be long, those of
the last ones are kept. The server thins, and then sends the whole anew: a page keeps what it is sent, and all pages show the same.
"""

from __future__ import annotations

import json
import re
from dataclasses import dataclass
from typing import Any

MOST_LINES = 12000
# Seconds of the run between two lines of progress; more where much comes at once, an old log that is read.
BETWEEN_PROGRESS = 0.25
BETWEEN_OLD_PROGRESS = 2.0
MUCH = 20000  # lines of progress in a turn
PROGRESS = re.compile(rb'\s*\{"event": "progress", "time": ([0-9.]+),')
# {kind: so many lines for each e-fold of the age}; what comes without end of itself.
DENSITY = {"progress": 400.0, "bound": 150.0, "point": 150.0}
# Of any other kind: actions and settings, by hand.
MOST_OTHERS = 1000
ENDS = ("end", "failure")
# These tell of the whole run.
ALWAYS = ("start", *ENDS)
MOST_POINTS = 8  # that keep their values
# A line longer than this loses its values: a page cannot show a table of so many.
MOST_BYTES = 1 << 20


@dataclass
class Line:
    kind: str
    time: float
    text: bytes  # JSON of an object, without a line's end
    has_values: bool = False

    def forget_values(self) -> None:
        self.text = without_values(json.loads(self.text))
        self.has_values = False


class History:
    """add() takes what comes; news() is what was added since the last call; whole() is all. Progress that comes faster than a page can
    show it is left out, but for the last."""

    def __init__(self, most: int = MOST_LINES) -> None:
        self._lines: list[Line] = []
        self._fresh: list[Line] = []
        self._skipped: bytes | None = None  # the last progress, if it came too soon behind another one
        self._progress = -1.0  # when the last one came that was taken
        self._count = 0  # that came since
        self._holders: list[Line] = []  # the last points
        self._most = most
        self.is_over = False  # an end was told
        self.has_begun = False

    def add(self, text: bytes) -> None:
        """A line that is no event is passed over. A start begins anew: of a log with several runs the last counts."""
        if match := PROGRESS.match(text):
            self._count += 1
            between = BETWEEN_PROGRESS if self._count < MUCH else BETWEEN_OLD_PROGRESS
            # Without reading it: of most lines no more is wanted than when they came.
            if 0 <= seconds(match[1]) - self._progress < between:
                self._skipped = text
                return
            self._progress = seconds(match[1])
            self._skipped = None
        else:
            self._take_skipped()
        self._take(text)

    def _take_skipped(self) -> None:
        skipped, self._skipped = self._skipped, None
        if skipped is not None:
            self._take(skipped)

    def _take(self, text: bytes) -> None:
        line = line_of(text)
        if line is None:
            return
        if line.kind == "start":
            self.has_begun = True
            self._lines.clear()
            self._fresh.clear()
            self._holders.clear()
            self._progress = -1.0
        self.is_over = line.kind in ENDS
        self._fresh.append(line)
        if line.kind == "point" and line.has_values:
            self._holders.append(line)
            if len(self._holders) > MOST_POINTS:
                self._holders.pop(0).forget_values()

    def news(self) -> tuple[list[bytes], bool]:
        """(lines, whether they are all there is: what was sent before is to be forgotten)."""
        self._take_skipped()
        fresh, self._fresh, self._count = self._fresh, [], 0
        is_new = bool(fresh) and fresh[0].kind == "start"
        self._lines += fresh
        if len(self._lines) > self._most:
            self._thin()
            return self.whole(), True
        return [line.text for line in fresh], is_new

    def whole(self) -> list[bytes]:
        return [line.text for line in self._lines]

    def size(self) -> int:
        """Bytes of text."""
        return sum(len(line.text) for line in self._lines)

    def _thin(self) -> None:
        share = 1.0
        while len(self._lines) > self._most * 3 // 4:
            self._lines = thinned(self._lines, share)
            share /= 2


def thinned(lines: list[Line], share: float = 1.0) -> list[Line]:
    """From the newest on, what is not too near to its newer neighbour of the same kind."""
    if not lines:
        return []
    now = max(line.time for line in lines)
    newer: dict[str, float] = {}
    others = MOST_OTHERS * share
    kept = []
    for line in reversed(lines):
        if line.kind in DENSITY:
            near = (now - line.time) / (DENSITY[line.kind] * share)
            if line.kind in newer and newer[line.kind] - line.time < near:
                continue
            newer[line.kind] = line.time
        elif line.kind not in ALWAYS:
            others -= 1
            if others < 0:
                continue
        kept.append(line)
    return kept[::-1]


def seconds(text: bytes) -> float:
    try:
        return float(text)
    except ValueError:
        return -1.0


def line_of(text: bytes) -> Line | None:
    """None for what is no event. Numbers are not touched: the text is kept as it is, unless it is too long."""
    try:
        # What a page would choke on, or what would break the lines of its stream, is none either.
        text = text.decode("utf-8").strip().replace("\r", " ").encode()
        event = json.loads(text.decode("utf-8"), parse_constant=refuse)
        kind, time = event["event"], float(event["time"])
    except (ValueError, TypeError, KeyError, RecursionError, OverflowError):
        return None
    if not isinstance(kind, str) or not 0 <= time < float("inf"):
        return None
    has_values = bool(event.get("values"))
    if len(text) > MOST_BYTES:
        text, has_values = without_values(event), False
        if len(text) > MOST_BYTES:
            return None
    return Line(kind, time, text, has_values)


def refuse(word: str) -> None:
    raise ValueError(word)


def without_values(event: dict[str, Any]) -> bytes:
    for key in ("values", "ray"):
        if event.get(key):
            event[key] = None
            event["omitted"] = True
    return json.dumps(event).encode()
