"""The events of a run, as many as a page can use: what is old is thinned, so that a week takes a few megabytes.

Kept are lines of JSON, as they come. Of a kind that comes without end (progress, bounds, points) two neighbours may not be nearer
to each other than a part of their age: so the last minutes are whole, and a week ago one in half an hour or so stands for the rest.
That makes a number of lines that grows with the logarithm of the time alone. The first and the last of each kind stay, and those
where a curve is least or greatest, as the best point is. Of the values of points, which may be long, those of the last ones and of the
best one are kept. The server thins, and then sends the whole anew: a page keeps what it is sent, and all pages show the same.
"""

from __future__ import annotations

import json
import re
from collections.abc import Collection, Iterator
from dataclasses import dataclass
from typing import Any

MOST_LINES = 12000
# Seconds of the run between two lines of progress; more where much comes at once, an old log that is read.
BETWEEN_PROGRESS = 0.25
BETWEEN_OLD_PROGRESS = 2.0
MUCH = 20000  # lines of progress in a turn
PROGRESS = re.compile(rb'\s*\{"event": "progress", "time": ([0-9.]+),')
# What the curves of a page are drawn from and need not go one way.
MEASURES = tuple(re.compile(rb'"%s": (-?[0-9][0-9.e+-]*)' % key) for key in (b"violated", b"share", b"rate", b"basis", b"collected"))
# {kind: so many lines for each e-fold of the age}; what comes without end of itself.
DENSITY = {"progress": 400.0, "bound": 150.0, "point": 150.0}
# Of any other kind: actions and settings, by hand.
MOST_OTHERS = 1000
ENDS = ("end", "failure")
# These tell of the whole run.
ALWAYS = ("start", *ENDS)
LEAST_SHARE = 1e-3  # of that density; who needs less is no run
MOST_POINTS = 8  # that keep their values
MOST_SIZE = 16 << 20  # bytes of all lines
# A line longer than this loses its values: a page cannot show a table of so many.
MOST_BYTES = 1 << 20


Ratio = tuple[int, int]  # the lower one is greater than 0


@dataclass(eq=False)
class Line:
    kind: str
    time: float
    text: bytes  # JSON of an object, without a line's end
    has_values: bool = False
    objective: Ratio | None = None

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
        self._best: Line | None = None  # with values, of those with an objective
        self._sense: str | None = None
        self._size = 0  # of all lines, about
        self._is_anew = False  # what was sent before is to be forgotten
        self._most = most
        self.is_over = False  # an end was told
        self.has_begun = False

    def clear(self) -> None:
        """What comes next is of something else."""
        self._lines.clear()
        self._fresh.clear()
        self._holders.clear()
        self._best = self._sense = self._skipped = None
        self._progress = -1.0
        self._size = 0
        self._is_anew = True
        self.is_over = self.has_begun = False

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
            self.clear()
            self.has_begun = True
            self._sense = json.loads(line.text).get("sense")
        self.is_over = line.kind in ENDS
        self._fresh.append(line)
        self._size += len(line.text)
        if line.kind == "point" and line.has_values:
            self._hold(line)

    def _hold(self, point: Line) -> None:
        known = self._best
        if point.objective is not None and (known is None or known.objective is None
                                            or is_less(point.objective, known.objective) == (self._sense != "max") and point.objective != known.objective):
            self._best = point
            if known is not None and known not in self._holders:
                self._forget(known)
        self._holders.append(point)
        if len(self._holders) > MOST_POINTS:
            self._forget(self._holders.pop(0))

    def _forget(self, point: Line) -> None:
        if point is not self._best:
            self._size -= len(point.text)
            point.forget_values()
            self._size += len(point.text)

    def news(self) -> tuple[list[bytes], bool]:
        """(lines, whether they are all there is: what was sent before is to be forgotten)."""
        self._take_skipped()
        fresh, self._fresh, self._count = self._fresh, [], 0
        is_anew, self._is_anew = self._is_anew, False
        self._lines += fresh
        if len(self._lines) > self._most or self._size > MOST_SIZE:
            self._thin()
            return self.whole(), True
        return [line.text for line in fresh], is_anew

    def whole(self) -> list[bytes]:
        return [line.text for line in self._lines]

    def size(self) -> int:
        """Bytes of text."""
        return sum(len(line.text) for line in self._lines)

    def _thin(self) -> None:
        share = 1.0
        landmarks = {id(line) for line in extremes(self._lines)}
        while self._is_too_much() and share > LEAST_SHARE:
            self._lines = thinned(self._lines, share, landmarks)
            share /= 2
        while self._is_too_much():
            # No line of a run: what came at once, or is much too long. The older half goes, but for the start.
            half = len(self._lines) // 2
            self._lines = [line for line in self._lines[:half] if line.kind == "start"] + self._lines[half:]

    def _is_too_much(self) -> bool:
        self._size = self.size()
        return len(self._lines) > self._most * 3 // 4 or self._size > MOST_SIZE * 3 // 4


def thinned(lines: list[Line], share: float = 1.0, landmarks: Collection[int] = ()) -> list[Line]:
    """From the newest on, what is not too near to its newer neighbour of the same kind; and the landmarks, by their id()."""
    if not lines:
        return []
    now = max(line.time for line in lines)
    newer: dict[str, float] = {}
    others = MOST_OTHERS * share
    kept = []
    for line in reversed(lines):
        if id(line) in landmarks or line.has_values:
            pass  # they are few
        elif line.kind in DENSITY:
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


def extremes(lines: list[Line]) -> Iterator[Line]:
    """The first of each kind that is thinned; the points of the least and the greatest objective; the ends of each curve's range."""
    firsts: dict[str, Line] = {}
    for line in lines:
        if line.kind in DENSITY:
            firsts.setdefault(line.kind, line)
    yield from firsts.values()
    least: Line | None = None
    greatest: Line | None = None
    for line in lines:
        if line.objective is not None:
            least = line if least is None or is_less(line.objective, least.objective) else least
            greatest = line if greatest is None or is_less(greatest.objective, line.objective) else greatest
    yield from (line for line in (least, greatest) if line is not None)
    progress = [line for line in lines if line.kind == "progress"]
    for measure in MEASURES:
        found = [(seconds(match[1]), k) for k, line in enumerate(progress) if (match := measure.search(line.text))]
        if found:
            yield progress[min(found)[1]]
            yield progress[max(found)[1]]


def is_less(a: Ratio, b: Ratio) -> bool:
    return a[0] * b[1] < b[0] * a[1]


def ratio(value: object) -> Ratio | None:
    """Of a value of the JSON lines; None for what is none."""
    try:
        if isinstance(value, (int, float)):
            return value.as_integer_ratio()
        above, _, below = str(value).partition("/")
        found = int(above), int(below or 1)
        return found if found[1] > 0 else None
    except (ValueError, OverflowError):
        return None


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
    return Line(kind, time, text, has_values, ratio(event.get("objective")) if kind == "point" else None)


def refuse(word: str) -> None:
    raise ValueError(word)


def without_values(event: dict[str, Any]) -> bytes:
    for key in ("values", "ray"):
        if event.get(key):
            event[key] = None
            event["omitted"] = True
    return json.dumps(event).encode()
