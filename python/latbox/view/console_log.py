"""The log of the console solver (--verb=1 or --verb=2) as events, line by line as it grows; solving/report.py knows its lines.

It tells seconds as whole numbers, and no values by name: its targets are points without values, found by the search. A block of
statistics becomes an event of progress. A start goes before the first of them, once it is known whether there are targets.
"""

from __future__ import annotations

import json
from typing import Any

from ..solving import report

BLOCK_END = "--------------------"  # alone on its line it ends a block of statistics
COUNTED = (("collected", report.COUNTS["pairwise"]), ("sampled", report.COUNTS["sampling"]), ("points", report.COUNTS["solutions"]),
           ("iteration", report.ITERATIONS))


class ConsoleLog:
    """events(line) for each line, whole."""

    def __init__(self, name: str) -> None:
        self._name = name
        self._begin()

    def _begin(self) -> None:
        self._has_started = False
        self._time = 0.0
        self._before = ""
        self._best: float | None = None
        self._known: dict[str, Any] = {}

    def events(self, line: bytes) -> list[bytes]:
        text = line.decode("utf-8", "replace")
        if report.BANNER.match(text):
            self._begin()
        found = self._take(text)
        self._before = text
        if found and not self._has_started:
            self._has_started = True
            found.insert(0, self._start())
        return [json.dumps(event).encode() for event in found]

    def _start(self) -> dict[str, Any]:
        return {"event": "start", "time": 0.0, "model": self._name, "sense": None if self._best is None else "min", "searches": 1, "threads": 0,
                "size": [], "warnings": [], "options": []}

    def _take(self, text: str) -> list[dict[str, Any]]:
        for key, pattern in COUNTED:
            if match := pattern.match(text):
                self._known[key] = int(match[1])
        if match := report.DEVIATION.search(text):
            self._known["violated"] = report.number(match[2])
        if self._before.startswith(report.FIRST_OF_BASIS):
            self._known["basis"] = report.length(text) or self._known.get("basis")
        if match := report.SETTING.match(text):
            return [{"event": "setting", "time": self._time, "key": match[1], "value": match[2]}]
        if match := report.TARGET.match(text):
            return self._take_target(report.number(match[1]))
        if match := report.RUNNING_TIME.match(text):
            self._time = max(self._time, float(report.seconds(match[1]) or 0))
            if "Program end" in text:
                return [self._end()]
        return [self._progress()] if text.startswith(BLOCK_END) and "iteration" in self._known else []

    def _take_target(self, value: float | None) -> list[dict[str, Any]]:
        if value is None or (self._best is not None and value >= self._best):
            return []
        self._best = value
        return [{"event": "point", "time": self._time, "objective": plain(value), "by": "search", "letter": "S", "values": None}]

    def _progress(self) -> dict[str, Any]:
        known = self._known
        return {"event": "progress", "time": self._time, "best": plain(self._best), "bound": None,
                "points": known.get("points", int(self._best is not None)), "iteration": known.get("iteration"),
                "violated": known.get("violated"), "nodes": None, "share": None, "left": None, "left_seconds": None, "rate": None,
                "basis": known.get("basis"), "collected": known.get("collected", 0) + known.get("sampled", 0), "idle": None, "paused": 0.0}

    def _end(self) -> dict[str, Any]:
        points = self._known.get("points", int(self._best is not None))
        return {"event": "end", "time": self._time, "status": "feasible" if points else "unknown", "objective": plain(self._best), "bound": None,
                "points": points, "values": None, "ray": None, "notes": []}


def plain(value: float | None) -> float | int | None:
    return int(value) if value is not None and value == int(value) and abs(value) <= 2**53 else value
