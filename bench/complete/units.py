"""What is measured by itself and kept in the record: one program under one task, or a pair of runs side by side.

A unit that was measured is a cell, a dictionary of plain values. It counts as long as program, binary and, for a pair, the
reference's sources are the same.
"""

import contextlib
import os
import shutil
import statistics
import tempfile
import threading
import time
from collections.abc import Callable, Iterator
from dataclasses import dataclass
from typing import Any

import machine
import measure
import verdicts
from cells import hash_of
from reference import Reference
from verdicts import Run, Solver

Cell = dict[str, Any]

# Runs up to so many CPU seconds are repeated, and the median counts.
CHEAP = 1.0
MODERATE = 10.0
ONE_THREAD = "--threads=1"
QUIET = "--quiet=1"


@dataclass
class Tools:
    solver: Solver
    # None: the reference is left out.
    reference: Reference | None
    # CPU seconds of a run that has no bar of its own.
    limit: float
    # Where long runs keep their points and checkpoints.
    work: str


def repeats(cpu: float) -> int:
    return 5 if cpu < CHEAP else 3 if cpu < MODERATE else 1


def median(runs: list[Run], key: str = "cpu") -> float:
    return round(statistics.median(run[key] for run in runs), 4)


def first_fault(runs: list[Run]) -> str:
    return next((run["fault"] for run in runs if run["fault"]), "")


def ours(tools: Tools, text: str, options: list[str], limit: float) -> Run:
    with tempfile.TemporaryDirectory(dir=measure.scratch()) as folder:
        return verdicts.run(tools.solver, text, options, limit, folder)


class Unit:
    """`program` is its name, `variant` what tells it from other units on that program in the same bar."""

    pairs = False

    def __init__(self, program: str, text: str, variant: str = "") -> None:
        self.program, self.text = program, text
        self.name = (program + " " + variant).strip()

    def measure(self, tools: Tools) -> Cell:
        """Without what tells when it counts."""
        raise NotImplementedError

    def is_current(self, cell: Cell | None, tools: Tools) -> bool:
        """Whether the cell tells what measuring anew would, or more. A run that came to no end may come to it under a higher
        limit."""
        return (cell is not None and cell["text"] == self.hash() and cell.get("binary") == hash_of(tools.solver.binary) and
                (not self.pairs or tools.reference is None or cell["reference_version"] == tools.reference.version) and
                (cell["ended"] or cell["limit"] >= tools.limit))

    def measured(self, tools: Tools) -> Cell:
        return {"ended": True, **self.measure(tools), "text": self.hash(), "binary": hash_of(tools.solver.binary),
                "reference_version": tools.reference and tools.reference.version, "limit": tools.limit,
                "load": machine.load()}

    def hash(self) -> str:
        return verdicts.hash_of_text(self.text)


class VerdictUnit(Unit):
    """A verdict within so many CPU seconds, one thread."""

    # A run may take so many times its bar before it is ended.
    PATIENCE = 5

    def __init__(self, program: str, text: str, options: list[str], verdict: str, seconds: float, variant: str = "") -> None:
        super().__init__(program, text, variant)
        self.options, self.verdict, self.seconds = options, verdict, seconds

    def measure(self, tools: Tools) -> Cell:
        def once() -> Run:
            return ours(tools, self.text, [QUIET, ONE_THREAD, *self.options], self.PATIENCE * self.seconds + 5)

        runs = [once()]
        if runs[0]["verdict"]:
            runs += [once() for _ in range(repeats(runs[0]["cpu"]) - 1)]
        wrong = next((run["verdict"] for run in runs if run["verdict"] not in ("", self.verdict)), "")
        fault = first_fault(runs) or ("%s, not %s" % (wrong, self.verdict) if wrong else "")
        return {"verdict": runs[0]["verdict"], "fault": fault, "cpu": median(runs)}


class CompleteUnit(Unit):
    """All points, beside boxenum at its better block size; the runs take turns."""

    pairs = True
    BLOCKS = (20, 30)

    def measure(self, tools: Tools) -> Cell:
        sides: dict[str, Callable[[], Run]] = {
            "ours": lambda: ours(tools, self.text, [QUIET, ONE_THREAD, "--all=1"], tools.limit)}
        for block in self.BLOCKS if tools.reference else ():
            sides["block %d" % block] = lambda block=block: tools.reference.enumerate(self.text, block, tools.limit)
        rounds = [{side: run() for side, run in sides.items()}]
        for _ in range(repeats(sum(run["cpu"] for run in rounds[0].values())) - 1):
            rounds.append({side: run() for side, run in sides.items()})
        return self.cell({side: [each[side] for each in rounds] for side in sides})

    def cell(self, runs: dict[str, list[Run]]) -> Cell:
        mine = runs.pop("ours")
        found = {side: median(theirs) for side, theirs in runs.items() if all(r["count"] is not None for r in theirs)}
        faults = [first_fault(mine)] + ["%s: %s" % (side, first_fault(r)) for side, r in runs.items() if first_fault(r)]
        counts = {run["count"] for theirs in runs.values() for run in theirs if run["count"] is not None}
        told = {run["verdict"] for run in mine if run["verdict"]}
        if counts and told and told != {"all %d" % count if count else "none" for count in counts}:
            faults.append("%s, the reference has %s" % (", ".join(told), ", ".join(map(str, counts))))
        best = min(found, key=found.get, default="")
        return {"verdict": mine[0]["verdict"], "fault": next(filter(None, faults), ""), "cpu": median(mine),
                "reference": found.get(best), "which": best, "ended": bool(told) and len(found) == len(runs)}


class FirstUnit(Unit):
    """A first point by one seed, beside boxfind."""

    pairs = True

    def __init__(self, program: str, text: str, seed: int, block: int, share: float) -> None:
        super().__init__(program, text, "seed %d" % seed)
        self.seed, self.block, self.share = seed, block, share

    def measure(self, tools: Tools) -> Cell:
        turns = [lambda: ours(tools, self.text, [QUIET, ONE_THREAD, "--first=1", "--seed=%d" % self.seed], tools.limit)]
        if tools.reference:
            turns.append(lambda: tools.reference.find(self.text, self.block, self.share, tools.limit, self.seed))
        # Whoever runs second finds the machine as the first has left it: they take turns in that too.
        order = range(len(turns)) if self.seed % 2 else reversed(range(len(turns)))
        runs = {side: turns[side]() for side in order}
        mine, theirs = runs[0], runs.get(1)
        fault = mine["fault"] or (theirs and theirs["fault"] and "boxfind: " + theirs["fault"]) or ""
        if mine["verdict"] not in ("", "found 1"):
            fault = fault or "%s, not found 1" % mine["verdict"]
        # A side that its limit has ended has taken that long at least.
        return {"verdict": mine["verdict"], "fault": fault, "cpu": round(mine["cpu"], 4),
                "reference": theirs and round(theirs["cpu"], 4),
                "ended": mine["verdict"] != "" and (theirs is None or theirs["count"] is not None)}


class ThreadsUnit(Unit):
    """The tree by two threads beside one, by the clock from the estimate on; the runs take turns."""

    ROUNDS = 3

    def measure(self, tools: Tools) -> Cell:
        runs: dict[int, list[Run]] = {1: [], 2: []}
        for _ in range(self.ROUNDS):
            for threads, mine in runs.items():
                mine.append(ours(tools, self.text, ["--threads=%d" % threads, "--all=1"], tools.limit))
        every = runs[1] + runs[2]
        fault = first_fault(every)
        if len({run["verdict"] for run in every}) > 1:
            fault = fault or "not the same verdict by one thread and by two"
        # Before the estimate there is one thread, whose CPU time is less disturbed than the clock.
        tree = {threads: statistics.median(run["seconds"] - run["began"] for run in mine) for threads, mine in runs.items()}
        return {"verdict": runs[1][0]["verdict"], "fault": fault, "ended": all(run["verdict"] for run in every), "one": round(tree[1], 3), "two": round(tree[2], 3),
                "whole": not all(run["began"] for run in every)}


class LongUnit(Unit):
    """One run by two threads and by the clock, in a folder that stays: a comparison that was cut goes on where the run's
    own checkpoint is, and the seconds of all its parts count."""

    PATIENCE = 4

    def __init__(self, program: str, text: str, options: list[str], verdict: str, seconds: float) -> None:
        super().__init__(program, text)
        self.options, self.verdict, self.seconds = options, verdict, seconds

    def measure(self, tools: Tools) -> Cell:
        folder = os.path.join(tools.work, "%s-%s-%s" % (self.program, self.hash(), hash_of(tools.solver.binary)))
        os.makedirs(folder, exist_ok=True)
        with meter(os.path.join(folder, "seconds")) as before:
            done = verdicts.execute(tools.solver, self.text, [QUIET, "--threads=2", *self.options],
                                    self.PATIENCE * self.seconds, folder)
        run = verdicts.judged(tools.solver, done, self.text, folder)
        fault = run["fault"]
        if run["verdict"] not in ("", self.verdict):
            fault = fault or "%s, not %s" % (run["verdict"], self.verdict)
        if not fault:
            shutil.rmtree(folder)
        return {"verdict": run["verdict"], "fault": fault, "cpu": round(run["cpu"], 1),
                "seconds": round(before + run["seconds"], 1), "resident": run["resident"]}


@contextlib.contextmanager
def meter(path: str, every: float = 5.0) -> Iterator[float]:
    """The seconds that the file tells. While the context lasts those that pass are added to it every few seconds, so that a
    kill loses no more."""
    before, start, ended = 0.0, time.monotonic(), threading.Event()
    if os.path.exists(path):
        with open(path, encoding="utf-8") as file:
            before = float(file.read())

    def keep() -> None:
        with open(path + ".new", "w", encoding="utf-8") as file:
            file.write("%f" % (before + time.monotonic() - start))
        os.replace(path + ".new", path)

    def follow() -> None:
        while not ended.wait(every):
            keep()

    thread = threading.Thread(target=follow)
    thread.start()
    try:
        yield before
    finally:
        ended.set()
        thread.join()
        keep()
