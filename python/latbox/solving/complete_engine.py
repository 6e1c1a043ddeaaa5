"""latbox-all at work on a program: its points, its proven bound, its verdict.

Its verdict stands on standard output, its points in a file, its progress on standard error. A file of points that others
have found lies beside the program; it looks into it while it works, and believes what it has verified.
"""

from __future__ import annotations

import os
import re
import time
from collections.abc import Callable
from dataclasses import dataclass
from fractions import Fraction

from ..errors import EngineError
from . import binaries, exact, points
from .process import Process
from .program import Program

VERDICT = re.compile(r"verdict: (all|optimum|none|found|unknown) ?(.*)\Z")
PROGRESS = re.compile(r"(?:(?P<share>[-+.0-9e]+) % done, )?(?P<nodes>[-+.0-9e]+) nodes, .*? points?"
                      r"(?:, best (?P<best>\S+))?(?:, none below (?P<least>[^\s,]+))?(?:, about (?P<left>.*) left)?\Z")
# Below it the share tells nothing of the time.
LEAST_SHARE = 0.001
OPEN = "these variables need finite bounds: "


@dataclass
class Task:
    """What is asked of it."""

    all: bool = False
    ties: bool = False
    first: bool = False
    limit: int = 0
    threads: int = 1
    seed: int = 0
    proof: str | None = None


@dataclass
class Progress:
    """As far as it is known: the share of the tree, from 0 to 1; the time left, in words."""

    share: float | None = None
    nodes: float = 0
    left: str | None = None


class CompleteEngine:
    """Starts at once. news() is called again and again until verdict is there."""

    letter = "C"

    def __init__(self, program: Program, task: Task, folder: str, memory: int | None = None, log: Callable[[str], None] | None = None,
                 notes: str = "", paused: float = 0.0) -> None:
        """`paused`: seconds for which the run stood still before."""
        self.progress = Progress()
        self.least: Fraction | None = None  # no target norm is below it: proven
        self.verdict: tuple[str, str] | None = None  # (word, rest), None while it works
        self.told: tuple[str, str] | None = None  # the same, before its proof is written
        self.open_columns: list[int] | None = None  # it cannot begin: these columns need bounds; told once, then []
        # A proof lies beside the program that it speaks of.
        self._program = os.path.join(os.path.dirname(task.proof) if task.proof else folder, "program.opt")
        self._best = os.path.join(folder, "known.sol")
        self._program_has_targets = bool(program.targets)
        self._task = task
        with open(self._program, "w", encoding="utf-8", errors="surrogateescape") as file:
            file.write(program.text(notes))
        out = os.path.join(folder, "points.all")
        self._file = points.Follower(out)
        self.process = Process(self._arguments(task, out), folder, memory, log)
        self._started = time.monotonic()
        self._paused_before = paused

    def _arguments(self, task: Task, out: str) -> list[str]:
        options: dict[str, object] = {"out": out, "threads": task.threads, "seed": task.seed, "resume": 0, "checkpoint": 0}
        options.update({key: 1 for key in ("all", "ties", "first") if getattr(task, key)})
        if not (task.all or task.first or task.ties or task.proof) and self._program_has_targets:
            options["best"] = self._best
        if task.limit:
            options["limit"] = task.limit
        if task.proof:
            options["proof"] = task.proof
        return [binaries.find(binaries.COMPLETE), *("--%s=%s" % option for option in options.items()), self._program]

    def news(self) -> list[list[Fraction]]:
        """Points that are new. Progress, bound and verdict are brought up to date. Throws EngineError if it broke."""
        ended = self.process.status()
        out, err = self.process.read()
        for line in err:
            self._take_progress(line)
        found = self._file.points()
        for line in out:
            match = VERDICT.match(line)
            if match:
                self.told = (match[1], match[2])
                if match[1] == "optimum":
                    self.least = exact.number(match[2].split()[0])
        # Its proof is whole once the process has ended.
        if ended is not None or not self._task.proof:
            self.verdict = self.told
        if ended is not None and not self.is_over:
            self._take_end(ended)
        return found

    def _take_progress(self, line: str) -> None:
        match = PROGRESS.search(line)
        if match:
            share = match["share"]
            self.progress = Progress(float(share) / 100 if share else None, float(match["nodes"]), match["left"])
            if match["least"]:
                self.least = exact.number(match["least"])

    def seconds_left(self, paused: float) -> float | None:
        """As it estimates the time left itself, by the share that is done, but of the time of work: the run was paused for so long."""
        share = self.progress.share
        if share is None or not LEAST_SHARE <= share < 1:
            return None
        worked = time.monotonic() - self._started - (paused - self._paused_before)
        return max(0.0, worked) * (1 - share) / share

    def _take_end(self, status: int) -> None:
        words = self.process.words.strip()
        if OPEN in words:
            names = words[words.index(OPEN) + len(OPEN) :].split("\n")[0]
            self.open_columns = [int(name.lstrip("x")) - 1 for name in re.findall(r"x[0-9]+", names)]
        elif status < 0:
            raise EngineError(("latbox-all was ended by signal %d %s" % (-status, words)).strip())
        else:
            raise EngineError("latbox-all failed with status %d: %s" % (status, words))

    def offer(self, values: list[Fraction]) -> None:
        """A point of the program that somebody else has found: of use where the best one is wanted."""
        draft = self._best + ".tmp"
        with open(draft, "w", encoding="ascii") as file:
            file.write(points.text_of(values) + "\n")
        os.replace(draft, self._best)

    @property
    def is_over(self) -> bool:
        return self.verdict is not None or self.open_columns is not None

    @property
    def is_proving(self) -> bool:
        """It has told its verdict, and is writing the proof, which may take far longer."""
        return self.told is not None and self.verdict is None

    @property
    def has_proven(self) -> bool:
        """A proof is written, and whole."""
        return self._task.proof is not None and self.verdict is not None and self.verdict[0] != "unknown"

    def end(self, patience: float) -> list[list[Fraction]]:
        """Ends it, with the points that it still writes within `patience` seconds."""
        self.process.ask_to_end()
        self.process.wait(patience)
        found = self._file.points()
        self.process.stop()
        return found

    def stop(self) -> None:
        """Its process is gone when this returns."""
        self.process.stop()
        self._file.close()
