"""latbox at work on a rewritten program: the points of its .sol file, and how near it is.

Its standard input is its console. By default it prints what changes; once in a while it is asked to tell its statistics for one
iteration, which holds the number of iterations, how the nearest point breaks its bounds, and how far basis and collections are.
"""

from __future__ import annotations

import os
import re
import time
from collections.abc import Callable
from dataclasses import dataclass
from fractions import Fraction

from ..errors import EngineError
from . import binaries, points, report
from .process import Process
from .rewriting import Rewriting
from .tuning import tuning

IDLE = re.compile(r"No primary improvement since ([0-9]+) consecutive")
NEAREST = re.compile(r"\[len,f,fs,fm,fc,tn\] = \S+ \S+ \S+ \S+ ([0-9]+) ")
NUMBERS = ((report.ITERATIONS, "iteration"), (NEAREST, "violated"), (report.COUNTS["pairwise"], "pairwise"),
           (report.COUNTS["sampling"], "sampling"))
VERB = "verb"  # what it prints: of it only this file speaks
LETTERS = "STUVWXYZ"  # who has found a point
# Seconds between looks at the statistics.
BETWEEN_LOOKS = 1.0


@dataclass
class Progress:
    iteration: int = 0
    violated: int | None = None  # bounds that the nearest point breaks
    basis: float | None = None  # length of the first vector of the basis
    pairwise: int = 0  # vectors collected by recombination since the start, and
    sampling: int = 0  # by drawing
    idle: int = 0  # iterations without a nearer point


class SearchEngine:
    """Starts at once; news() is called again and again. It may end by itself, with or without the points asked for."""

    def __init__(self, rewriting: Rewriting, count: int, number: int, folder: str, memory: int | None = None,
                 options: dict[str, object] | None = None, log: Callable[[str], None] | None = None) -> None:
        """`count`: it ends when it has so many points of a program without objective; 0: it does not end. `number`: among the
        processes of the search, from 0."""
        self.number = number
        self.letter = LETTERS[min(number, len(LETTERS) - 1)]
        self.progress = Progress()
        # Of the target norm: what it has found, or was told to stay below.
        self.best: Fraction | None = rewriting.limit
        self.is_over = False
        self._rewriting = rewriting
        self._seen: set[int] = set()  # hashes of points: there may be many, and each is long
        self._next_look = time.monotonic() + BETWEEN_LOOKS / 4
        self._looking = False
        self._before = ""  # the line before this one
        self._idle = 0
        self._settings: list[tuple[str, str]] = []
        path = os.path.join(folder, "program.opt")
        with open(path, "w", encoding="utf-8", errors="surrogateescape") as file:
            file.write(rewriting.program.text())
        self._file = points.Follower(os.path.join(folder, "program.sol"))
        keys: dict[str, object] = {"sol": count, **tuning(rewriting.program).options, **(options or {})}
        arguments = [binaries.find(binaries.SEARCH), *("--%s=%s" % option for option in keys.items()), path]
        self.process = Process(arguments, folder, memory, log)

    def news(self) -> list[list[Fraction]]:
        """Points that are new, in the columns of the program that was rewritten. Throws EngineError if it broke."""
        ended = self.process.status()
        out, _ = self.process.read()
        for line in out:
            self._take(line)
        found = self._points()
        if ended is None:
            self._look()
        elif ended == 0:
            self.is_over = True
        elif not found:  # those that it has found come first
            what = "was ended by signal %d" % -ended if ended < 0 else "failed with status %d" % ended
            raise EngineError(("latbox %s: %s" % (what, self.process.words.strip())).rstrip(": "))
        return found

    def _points(self) -> list[list[Fraction]]:
        # The whole file comes again with each point that is new.
        return [self._rewriting.point(points.point(line)) for line in self._file.lines() if self._is_new(line)]

    def _is_new(self, line: str) -> bool:
        key = hash(line.partition("]")[0])  # of 64 bits; a point that has another one's is one that was not found
        if key in self._seen:
            return False
        self._seen.add(key)
        return True

    def _take(self, line: str) -> None:
        for pattern, key in NUMBERS:
            match = pattern.search(line)
            if match:
                setattr(self.progress, key, int(match[1]))
                if key == "iteration":
                    # It is told behind this line, unless it is 0: what is known is that of the block before.
                    self.progress.idle, self._idle = self._idle, 0
                    self._end_look()
        if self._before.startswith(report.FIRST_OF_BASIS):
            self.progress.basis = report.length(line) or self.progress.basis
        match = IDLE.match(line)
        if match:
            self._idle = int(match[1])
        match = report.SETTING.match(line)
        if match and match[1] != VERB:
            self._settings.append((match[1], match[2]))
        self._before = line

    def _end_look(self) -> None:
        """What else is looked for stands behind the iterations in the same block."""
        if self._looking:
            self._looking = False
            self.process.write("SET %s=0\n" % VERB)
            self._next_look = time.monotonic() + BETWEEN_LOOKS

    def _look(self) -> None:
        if not self._looking and time.monotonic() >= self._next_look:
            self._looking = True
            self.process.write("SET %s=2\n" % VERB)

    def set(self, key: str, value: int) -> None:
        """Asks for another value of an option of steering.py; settings() tells when it is taken."""
        self.process.write("SET %s=%d\n" % (key, value))

    def settings(self) -> list[tuple[str, str]]:
        """(key, value) of what its console has answered since the last call."""
        found, self._settings = self._settings, []
        return found

    def end(self) -> list[list[Fraction]]:
        """Ends it, with what it has written."""
        found = self._points()
        self.process.stop()
        return found

    def stop(self) -> None:
        """Its process is gone when this returns."""
        self.process.stop()
        self._file.close()
