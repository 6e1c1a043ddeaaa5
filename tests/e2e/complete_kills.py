#!/usr/bin/env python3
"""latbox-all killed at many moments: complete_kills.py BINARY MOMENTS [SEED]

Runs are killed (SIGKILL) again and again, each time resumed by the same command, some with another number of threads,
and in the end left alone: points, their number and the verdict must be those of a run that nobody disturbed. A fourth of
the moments are right after a find has reached the file, another fourth while a checkpoint is put together, the others
anywhere. Prints what went wrong and a line of totals; exit status 0 if nothing did.
"""

import os
import random
import subprocess
import sys
import tempfile
import time
from dataclasses import dataclass, field
from typing import Callable, Optional

import checker
from programs import market_split, opt

LIMIT = 300
# A run is killed at most so many times.
MOST_KILLS = 4
WAYS = ("find", "checkpoint", "time", "time")


def knapsack(columns: int, seed: int) -> str:
    """Four rows and long values: some improvements, each a search of its own."""
    draw = random.Random(seed)
    au = [[draw.randint(1, 99) for _ in range(columns)] for _ in range(4)]
    at = [[draw.randint(1, 99) for _ in range(columns)]]
    return opt(dt=["inf"], at=at, au=au, lu=["-inf"] * 4, ru=[sum(row) // 2 for row in au], rx=[1] * columns)


def hard_knapsack(rows: int, columns: int, seed: int) -> str:
    """Values near the mean of the rows, of which linear programs tell little: it takes a lattice, or no end."""
    draw = random.Random(seed)
    au = [[draw.randint(1, 99) for _ in range(columns)] for _ in range(rows)]
    at = [[sum(row[j] for row in au) // rows + draw.randint(0, 10) for j in range(columns)]]
    return opt(dt=["inf"], at=at, au=au, lu=["-inf"] * rows, ru=[sum(row) // 2 for row in au], rx=[1] * columns)


def tied_knapsack(columns: int, seed: int) -> str:
    """Short numbers: many best points."""
    draw = random.Random(seed)
    au = [[draw.randint(1, 9) for _ in range(columns)] for _ in range(2)]
    at = [[draw.randint(1, 3) for _ in range(columns)]]
    return opt(dt=["inf"], at=at, au=au, lu=["-inf"] * 2, ru=[sum(row) // 2 for row in au], rx=[1] * columns)


def triples(points: int) -> str:
    """Steiner triple systems: of all triples, those that hold each pair once."""
    blocks = [(a, b, c) for c in range(points) for b in range(c) for a in range(b)]
    pairs = [(a, b) for b in range(points) for a in range(b)]
    ag = [[int(a in block and b in block) for block in blocks] for a, b in pairs]
    return opt(ag=ag, bg=[1] * len(pairs), rx=[1] * len(blocks))


@dataclass
class Task:
    """A program with options, and what a run that nobody disturbs makes of it."""

    name: str
    text: str
    options: tuple[str, ...] = ()
    # Which point is found may depend on the way there.
    any_point: bool = False
    seconds: float = 0
    answer: tuple = ()


TASKS = (
    Task("a market split", market_split(5, 50, 1)),
    Task("triple systems", triples(9)),
    Task("a count", market_split(6, 54, 3), ("--count=1",)),
    Task("a knapsack", hard_knapsack(5, 40, 1)),
    Task("ties", tied_knapsack(60, 3), ("--ties=1",)),
    Task("a first point", market_split(6, 56, 5), ("--first=1",), True),
)


@dataclass
class Totals:
    # Kills, by their way; those that left a half-made checkpoint; resumed runs; kills with two threads.
    kills: dict[str, int] = field(default_factory=lambda: dict.fromkeys(WAYS, 0))
    torn: int = 0
    resumed: int = 0
    two_threads: int = 0
    runs: int = 0

    def all_kills(self) -> int:
        return sum(self.kills.values())

    def __str__(self) -> str:
        return ("%d kills (%d after a find, %d at a checkpoint, %d anywhere; %d left it half made; %d with two threads), "
                "%d went on from a checkpoint; %d runs" %
                (self.all_kills(), self.kills["find"], self.kills["checkpoint"], self.kills["time"], self.torn,
                 self.two_threads, self.resumed, self.runs))


class Fault(Exception):
    pass


def require(condition: object, *what: object) -> None:
    if not condition:
        raise Fault(" ".join(map(str, what)))


def points(folder: str, program: checker.Program) -> list[tuple]:
    """All complete lines of the file, each a true point."""
    path = os.path.join(folder, "p.all")
    if not os.path.exists(path):
        return []
    with open(path, encoding="utf-8") as file:
        text = file.read()
    stars = checker.read_stars(text[:text.rfind("\n") + 1])
    for star in stars:
        require(program.violation(star.x) is None, "no point:", star.x)
    return [tuple(star.x) for star in stars]


def finish(binary: str, folder: str, task: Task, threads: int = 1) -> tuple[tuple, str]:
    """The answer of a run to the end, and its standard error."""
    command = [binary, *task.options, "--threads=%d" % threads, "p.opt"]
    done = subprocess.run(command, cwd=folder, capture_output=True, text=True, timeout=LIMIT, check=False)
    found = sorted(points(folder, checker.Program(task.text)))
    return (done.returncode, done.stdout, len(found) if task.any_point else found), done.stderr


def measure(binary: str, task: Task) -> None:
    with tempfile.TemporaryDirectory() as folder:
        write_program(folder, task)
        start = time.monotonic()
        task.answer, _ = finish(binary, folder, task)
        task.seconds = time.monotonic() - start
        require(task.answer[0] in (10, 11), task.name, "is no task:", task.answer)


def write_program(folder: str, task: Task) -> None:
    with open(os.path.join(folder, "p.opt"), "w", encoding="utf-8") as file:
        file.write(task.text)


def signature(path: str) -> Optional[tuple[int, int]]:
    try:
        status = os.stat(path)
    except FileNotFoundError:
        return None
    return status.st_ino, status.st_size


def moment(way: str, folder: str, task: Task, pick: random.Random) -> Callable[[], bool]:
    """Whether it has come, asked again and again from the start of a run."""
    if way == "time":
        end = time.monotonic() + pick.random() * task.seconds
        return lambda: time.monotonic() >= end
    path = os.path.join(folder, "p.all" if way == "find" else checkpoint_of(task) + ".tmp")
    # The first file is empty: it tells of no find.
    seen = [signature(path)]
    left = [pick.randint(1, 4)]

    def has_come() -> bool:
        now = signature(path)
        if now in (seen[0], None) or (way == "find" and now[1] == 0):
            seen[0] = now if way == "checkpoint" else seen[0]
            return False
        seen[0] = now
        left[0] -= 1
        return left[0] <= 0
    return has_come


def checkpoint_of(task: Task) -> str:
    return "p.all.count.resume" if "--count=1" in task.options else "p.all.resume"


def kill_once(binary: str, folder: str, task: Task, pick: random.Random, totals: Totals, way: str) -> bool:
    """False: the run came to its end before."""
    threads = pick.choice((1, 2))
    command = [binary, *task.options, "--threads=%d" % threads, "--checkpoint=0.05", "p.opt"]
    has_come = moment(way, folder, task, pick)
    with subprocess.Popen(command, cwd=folder, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True) as process:
        while process.poll() is None and not has_come():
            if way == "time":
                time.sleep(0.002)
        process.kill()
        out, err = process.communicate()
    totals.resumed += "goes on from" in err
    if process.returncode >= 0:
        require((process.returncode, out) == task.answer[:2], "a run that was not killed:", out, err)
        return False
    totals.kills[way] += 1
    totals.torn += os.path.exists(os.path.join(folder, checkpoint_of(task) + ".tmp"))
    totals.two_threads += threads == 2
    points(folder, checker.Program(task.text))
    return True


def disturb(binary: str, task: Task, pick: random.Random, totals: Totals, ways: tuple[str, ...] = WAYS) -> None:
    """Raises Fault."""
    totals.runs += 1
    with tempfile.TemporaryDirectory() as folder:
        write_program(folder, task)
        for _ in range(pick.randint(1, MOST_KILLS)):
            if not kill_once(binary, folder, task, pick, totals, pick.choice(ways)):
                break
        answer, err = finish(binary, folder, task, pick.choice((1, 2)))
        totals.resumed += "goes on from" in err
        require(answer == task.answer, answer[:2], len(answer[2]) if not task.any_point else answer[2], "not",
                task.answer[:2], err)


def ways_left(totals: Totals, moments: int) -> tuple[str, ...]:
    """Those that are behind, if any."""
    behind = tuple(way for way in ("find", "checkpoint") if totals.kills[way] < moments // 4)
    return behind if behind and totals.all_kills() >= moments - moments // 4 else WAYS


def kill_many(binary: str, moments: int, seed: int = 0, tasks: tuple[Task, ...] = TASKS,
              report: Callable[[str], None] = lambda text: None) -> tuple[list[str], Totals]:
    """What went wrong, and how often what was done."""
    wrong: list[str] = []
    totals = Totals()
    for task in tasks:
        measure(binary, task)
    number = seed
    while totals.all_kills() < moments or min(totals.kills.values()) < moments // 4:
        task = tasks[number % len(tasks)]
        try:
            disturb(binary, task, random.Random(number), totals, ways_left(totals, moments))
        except (Fault, subprocess.TimeoutExpired) as fault:
            wrong.append("run %d, %s: %s" % (number, task.name, fault))
            report(wrong[-1])
        number += 1
    return wrong, totals


def main(arguments: list[str]) -> int:
    if len(arguments) not in (3, 4):
        sys.exit("usage: %s BINARY MOMENTS [SEED]" % arguments[0])
    seed = int(arguments[3]) if len(arguments) == 4 else 0
    wrong, totals = kill_many(os.path.abspath(arguments[1]), int(arguments[2]), seed,
                              report=lambda text: print(text, flush=True))
    print("%d of %d runs right: %s" % (totals.runs - len(wrong), totals.runs, totals))
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
