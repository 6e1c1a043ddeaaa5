"""What a log of the solver (--verb=1 or --verb=2) says about its run, as series over the lines of the log.

A log may be cut anywhere and hold anything between its lines: what doesn't read as a line of the solver is passed over.

Times of a run come from two kinds of lines. `Total running time` is the time that has passed. The time behind a target is
when its point was found, which in a resumed run may have been in a run before this one; it tells something of this run
only where the target is new in it, and never more than the running time that is told next.
"""

from __future__ import annotations

import bisect
import math
import re

from .solving.report import (BANNER, COUNTS, DEVIATION, FIRST_OF_BASIS, ITERATIONS, RUNNING_TIME, SIEVEABLE, TARGET, length, number,
                             seconds)

EVENTS = {
    "regenerated": re.compile(r"\|-> Lattice was regenerated ==> Re-Looping \.\.\."),
    "extended": re.compile(r"\|-> Switching to extended precision"),
    "shuffled": re.compile(r"\|-> Shuffling base vectors"),
}
RESULT_FILE = re.compile(r"\t(.*)\.sol\s*\Z")


# (line of the log, value); the lines may be read as any quantity that grows with the log.
Series = list[tuple[float, float]]


class Marks:
    """A quantity that grows with the log, known at some lines; between them it's taken to grow evenly by lines."""

    def __init__(self) -> None:
        self.lines: list[float] = [-1]
        self.values = [0.0]

    def add(self, line: float, value: float) -> None:
        if value > self.values[-1]:
            self.lines.append(line)
            self.values.append(float(value))

    def end(self, lines: float, rest: float) -> None:
        """`rest` is what the quantity grows at most behind its last mark."""
        self.lines.append(lines)
        self.values.append(self.values[-1] + rest)

    def at(self, line: float) -> float:
        after = min(max(bisect.bisect_left(self.lines, line), 1), len(self.lines) - 1)
        line0, line1 = self.lines[after - 1:after + 1]
        value0, value1 = self.values[after - 1:after + 1]
        return value0 + (value1 - value0) * (min(line, line1) - line0) / (line1 - line0)


class Run:
    """Series are lists of (line, value); `events` lists of lines."""

    def __init__(self) -> None:
        self.name = ""
        self.target: Series = []
        self.slack: Series = []
        self.inhomogeneous: Series = []
        self.homogeneous: Series = []
        self.counts: dict[str, Series] = {key: [] for key in COUNTS}
        self.first_length: Series = []
        self.best_length: Series = []
        self.broken: Series = []
        self.events: dict[str, list[float]] = {key: [] for key in EVENTS}
        self.seconds, self.iterations = Marks(), Marks()
        self.last_second = self.last_iteration = 0
        self.resumed = False  # the first target is that of a run before this one

    def facts(self) -> list[str]:
        """What a title says."""
        found = ["%d iterations" % self.last_iteration, "%d s" % self.last_second]
        if self.target and not any(value != 0 for _, value in self.slack):
            found.append("slack 0 throughout")
        if self.counts["solutions"]:
            found.append("%d solution(s)" % max(value for _, value in self.counts["solutions"]))
        return found

    def empty(self) -> bool:
        return not (self.target or self.first_length or self.counts["pairwise"] or self.counts["solutions"]
                    or self.last_iteration)


def read_run(text: str) -> Run:
    """The last run of a log that says anything."""
    lines = text.split("\n")
    starts = [i for i, line in enumerate(lines) if BANNER.match(line)] or [0]
    for first, last in reversed(list(zip(starts, starts[1:] + [len(lines)]))):
        run = _read(lines[first:last])
        if not run.empty():
            return run
    return run


def _read(lines: list[str]) -> Run:
    run = Run()
    for i, line in enumerate(lines):
        before = lines[i - 1] if i else ""
        _take_iterations(run, i, line)
        _take_report(run, i, line, before)
        for key, pattern in EVENTS.items():
            if pattern.search(line):
                run.events[key].append(i)
        match = RESULT_FILE.match(line)
        if match:
            run.name = match.group(1)
    _take_times(run, lines)
    run.seconds.end(len(lines), 1)
    run.iterations.end(len(lines), 0)
    return run


def _take_iterations(run: Run, i: int, line: str) -> None:
    match = ITERATIONS.match(line)
    if match:
        run.last_iteration = max(run.last_iteration, int(match.group(1)))
        run.iterations.add(i, int(match.group(1)))


def _take_times(run: Run, lines: list[str]) -> None:
    """Running times as they are told, and between them the times of finds that can be of this run."""
    told: list[tuple[int, int, str | None]] = []  # line, seconds, target or None
    for i, line in enumerate(lines):
        match = RUNNING_TIME.match(line) or TARGET.match(line)
        time = seconds(match.group(match.lastindex or 0)) if match else None
        if match and time is not None:
            told.append((i, time, match.group(1) if match.re is TARGET else None))
    following = _following(told)
    known: set[str] = set()
    for (i, time, target), limit in zip(told, following):
        if target is not None:
            run.resumed = run.resumed or not known and time > limit
            new = target not in known
            known.add(target)
            # The first target may be an old one, and nothing tells.
            if not new or len(known) == 1 or time > limit:
                continue
        run.last_second = max(run.last_second, time)
        run.seconds.add(i, time)


def _following(told: list[tuple[int, int, str | None]]) -> list[float]:
    """For each time the next running time behind it, or infinity."""
    found, limit = [], math.inf
    for _, time, target in reversed(told):
        found.append(limit)
        if target is None:
            limit = time
    return found[::-1]


def _take_report(run: Run, i: int, line: str, before: str) -> None:
    match = TARGET.match(line)
    if match:
        for series, text in zip((run.target, run.slack), match.groups()):
            _append(series, i, number(text))
    match = SIEVEABLE.match(line)
    if match:
        run.inhomogeneous.append((i, int(match.group(1))))
        run.homogeneous.append((i, int(match.group(2))))
    for key, pattern in COUNTS.items():
        match = pattern.match(line)
        if match:
            run.counts[key].append((i, int(match.group(1))))
    match = DEVIATION.search(line)
    if match:
        squared, broken = number(match.group(1)), number(match.group(2))
        _append(run.best_length, i, math.sqrt(squared) if squared and squared > 0 else None)
        _append(run.broken, i, broken if broken is not None and broken >= 0 else None)
    if before.startswith(FIRST_OF_BASIS):
        _append(run.first_length, i, length(line))


def _append(series: Series, i: int, value: float | None) -> None:
    if value is not None:
        series.append((i, value))
