"""What a log of the solver (--verb=1 or --verb=2) says about its run, as series over the lines of the log.

A log may be cut anywhere and hold anything between its lines: what doesn't read as a line of the solver is passed over.
"""

import bisect
import math
import re

TARGET = re.compile(r"T\(bestTarget\) = (\S+), S\(bestTarget\) = (\S+?)(?: -- \{ (.*) \})?\s*\Z")
DEVIATION = re.compile(r"\[len,f,fs,fm,fc,tn\] = (\S+) [01] \S+ \S+ (\S+) \S+ \}")
SIEVEABLE = re.compile(r"Sieveable in/homogenous vectors: \(([0-9]{1,18}), ([0-9]{1,18})\)\s*\Z")
COUNTS = {
    "pairwise": re.compile(r"Pairwise collections: ([0-9]{1,18})\s*\Z"),
    "sampling": re.compile(r"Sampling collections: ([0-9]{1,18})\s*\Z"),
    "solutions": re.compile(r"Solutions found: ([0-9]{1,18})\s*\Z"),
}
ITERATIONS = re.compile(r"Total iterations: ([0-9]{1,18})\s*\Z")
RUNNING_TIME = re.compile(r"Total running time: (.*?)(?: -- Program end)?\s*\Z")
SECONDS = re.compile(r"([0-9]{1,18}) sec\(s\)\Z|[0-9:]+ (?:hour\(s\):)?min\(s\):sec\(s\) == ([0-9]{1,18}) secs\Z")
EVENTS = {
    "regenerated": re.compile(r"\|-> Lattice was regenerated ==> Re-Looping \.\.\."),
    "extended": re.compile(r"\|-> Switching to extended precision"),
    "shuffled": re.compile(r"\|-> Shuffling base vectors"),
}
RESULT_FILE = re.compile(r"\t(.*)\.sol\s*\Z")
BANNER = re.compile(r"<< \S+ v\S+ \+\+\+ PID: [0-9]+ >>")
MIXED = re.compile(r"(-?)(?:([0-9]+):)?([0-9]+)/([0-9]+)\Z")


class Marks:
    """A quantity that grows with the log, known at some lines; between them it's taken to grow evenly by lines."""

    def __init__(self):
        self.lines, self.values = [-1], [0.0]

    def add(self, line, value):
        if value > self.values[-1]:
            self.lines.append(line)
            self.values.append(float(value))

    def end(self, lines, rest):
        """`rest` is what the quantity grows at most behind its last mark."""
        self.lines.append(lines)
        self.values.append(self.values[-1] + rest)

    def at(self, line):
        after = min(max(bisect.bisect_left(self.lines, line), 1), len(self.lines) - 1)
        line0, line1 = self.lines[after - 1:after + 1]
        value0, value1 = self.values[after - 1:after + 1]
        return value0 + (value1 - value0) * (min(line, line1) - line0) / (line1 - line0)


class Run:
    """Series are lists of (line, value); `events` lists of lines."""

    def __init__(self):
        self.name = ""
        self.target, self.slack = [], []
        self.inhomogeneous, self.homogeneous = [], []
        self.counts = {key: [] for key in COUNTS}
        self.first_length, self.best_length, self.broken = [], [], []
        self.events = {key: [] for key in EVENTS}
        self.seconds, self.iterations = Marks(), Marks()
        self.last_second = self.last_iteration = 0

    def empty(self):
        return not (self.target or self.first_length or self.counts["pairwise"] or self.counts["solutions"]
                    or self.last_iteration)


def number(text):
    """A number of a report as a float, or None if it is infinite or none."""
    match = MIXED.match(text)
    try:
        if match:
            sign, whole, part, below = match.groups()
            value = int(whole or 0) + int(part) / int(below)
            value = -value if sign else value
        else:
            value = float(text)
    except (ValueError, OverflowError, ZeroDivisionError):
        return None
    # Beyond this the differences of a scale overflow.
    return value if abs(value) < 1e300 else None


def length(text):
    """The Euclidean length of a vector `[ 1 2 3 ]`, or None."""
    words = text.split()
    if len(words) < 3 or words[0] != "[" or words[-1] != "]":
        return None
    values = [number(word) for word in words[1:-1]]
    if any(value is None for value in values):
        return None
    size = math.hypot(*values)
    return size if 0 < size < math.inf else None


def seconds(text):
    match = SECONDS.match(text)
    return int(match.group(1) or match.group(2)) if match else None


def read_run(text):
    """The last run of a log that says anything."""
    lines = text.split("\n")
    starts = [i for i, line in enumerate(lines) if BANNER.match(line)] or [0]
    for first, last in reversed(list(zip(starts, starts[1:] + [len(lines)]))):
        run = _read(lines[first:last])
        if not run.empty():
            return run
    return run


def _read(lines):
    run = Run()
    for i, line in enumerate(lines):
        before = lines[i - 1] if i else ""
        _take_times(run, i, line)
        _take_report(run, i, line, before)
        for key, pattern in EVENTS.items():
            if pattern.search(line):
                run.events[key].append(i)
        match = RESULT_FILE.match(line)
        if match:
            run.name = match.group(1)
    run.seconds.end(len(lines), 1)
    run.iterations.end(len(lines), 0)
    return run


def _take_times(run, i, line):
    match = ITERATIONS.match(line)
    if match:
        run.last_iteration = max(run.last_iteration, int(match.group(1)))
        run.iterations.add(i, int(match.group(1)))
    match = RUNNING_TIME.match(line) or TARGET.match(line)
    time = seconds(match.group(match.lastindex) or "") if match else None
    if time is not None:
        run.last_second = max(run.last_second, time)
        run.seconds.add(i, time)


def _take_report(run, i, line, before):
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
    if before.startswith("B[1]:"):
        _append(run.first_length, i, length(line))


def _append(series, i, value):
    if value is not None:
        series.append((i, value))
