"""What the tests of latbox-solve share: the command as it is started, models, and engines of paper."""

from __future__ import annotations

import os
import random
import stat
import subprocess
import sys
import time
from collections.abc import Callable

import support
import harness

COMMAND = os.path.join(support.PACKAGE, "bin", "latbox-solve")

KNAPSACK = """\\ five things
maximize
 obj: 6 x1 + 9 x2 + 14 x3 + 19 x4 + 35 x5 + 4
subject to
 cap: 2 x1 + 3 x2 + 4 x3 + 7 x4 + 9 x5 <= 20
bounds
 -1 <= x1 <= 3
 -1 <= x2 <= 3
 -1 <= x3 <= 3
 -1 <= x4 <= 3
 -1 <= x5 <= 3
general
 x1 x2 x3 x4 x5
end
"""
# Its only optimum is 90, with x4 = -1 and x5 = 3; the next best point has 89.

NO_POINT = "minimize\n obj: x\nsubject to\n c: 3 x + 5 y = 7\nbounds\n x <= 2\n y <= 2\ngeneral\n x y\nend\n"
UNBOUNDED = "maximize\n obj: x + y\nsubject to\n c: x - 2 y <= 3\nbounds\n x >= 2\ngeneral\n x y\nend\n"
FOUR_POINTS = "[ ] [ ] [ [ 1 1 1 ] [ 5 3 1/3 ] ] [ 100 100 ] [ ] [ ] [ ] [ 0 0 0 ] [ 0 0 0 ] [ 20 33 100 ]\n"
CONTINUOUS = "maximize\n obj: x + y\nsubject to\n c: 2 x + 3 y <= 7.5\nbounds\n x <= 2\n y <= 9\ngeneral\n y\nend\n"


def hard(rows: int = 11, columns: int = 100) -> str:
    """A market split that nobody solves in the time of a test."""
    state = 12345
    matrix = []
    for _ in range(rows):
        row = []
        for _ in range(columns):
            state = (state * 1103515245 + 12345) % 2**31
            row.append(state // 7 % 100)
        matrix.append(row)

    def vector(values: list) -> str:
        return "[ %s ]" % " ".join(map(str, values))

    return "[ ] [ ] [ %s ] %s [ ] [ ] [ ] %s %s %s\n" % (
        "\n".join(map(vector, matrix)), vector([sum(row) // 2 for row in matrix]), vector([0] * columns),
        vector([0] * columns), vector([1] * columns))


def hard_objective(rows: int = 8, columns: int = 60) -> str:
    """Points are found at once, the best one in no time of a test: the deviation from a market split."""
    text = hard(rows, columns)
    matrix, _, rest = text.removeprefix("[ ] [ ] [ ").partition(" ] [ ")
    del rest
    lines = matrix.split("\n")
    sides = [sum(map(int, line.strip("[] ").split())) // 2 for line in lines]

    def vector(values: list) -> str:
        return "[ %s ]" % " ".join(map(str, values))

    n = columns + 2 * rows
    deviations = [[int(j == 2 * i) - int(j == 2 * i + 1) for j in range(2 * rows)] for i in range(rows)]
    equations = [line.rstrip("] ") + " %s ]" % " ".join(map(str, extra)) for line, extra in zip(lines, deviations)]
    return "[ -inf ] [ %s ] [ %s ] %s [ ] [ ] [ ] %s %s %s\n" % (
        vector([0] * columns + [1] * 2 * rows), "\n".join(equations), vector(sides), vector([0] * n), vector([0] * n),
        vector([1] * columns + [5000] * 2 * rows))


def stable_set(nodes: int = 50, edges: int = 600) -> str:
    """The largest set of nodes without an edge: branch and bound has its optimum in less than a second, the walk of a proof never."""
    pairs = random.Random(1).sample([(i, j) for j in range(nodes) for i in range(j)], edges)
    rows = "".join("x%d + x%d <= 1\n" % pair for pair in pairs)
    names = ["x%d" % i for i in range(nodes)]
    return "Maximize\n%s\nSubject To\n%sBinary\n%s\nEnd\n" % (" + ".join(names), rows, " ".join(names))


class SolveCase(support.ToolsCase):
    """Each test has a folder of its own for models and for what the engines write."""

    def setUp(self) -> None:
        super().setUp()
        os.mkdir(self.path("work"))

    def environment(self, **extra: str) -> dict[str, str]:
        own = {"PYTHONDONTWRITEBYTECODE": "1", "TMPDIR": self.path("work"),
               "LATBOX_BIN_DIR": os.path.dirname(harness.Settings.binary)}
        return {**os.environ, **own, **extra}

    def solve(self, *arguments: str, stdin: bytes = b"", prepare=None, **extra: str) -> harness.Result:
        done = subprocess.run([sys.executable, COMMAND, *arguments], cwd=self.folder, input=stdin, timeout=harness.LIMIT,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False, preexec_fn=prepare,
                              env=self.environment(**extra))
        return harness.Result(done.returncode, done.stdout.decode(), done.stderr.decode())

    def solve_in_time(self, seconds: float, has_come: Callable[[harness.Result], bool], *arguments: str) -> harness.Result:
        """With a limit of so many seconds; of more where the machine was too busy for what was to come."""
        for limit in harness.growing(seconds):
            result = self.solve("--time=%g" % limit, *arguments)
            if has_come(result):
                break
        return result

    def begin(self, *arguments: str, **extra: str) -> harness.Session:
        """The command while it works."""
        environment = self.environment(**extra)
        session = harness.Session(["/usr/bin/env", *("%s=%s" % item for item in environment.items()), sys.executable, COMMAND,
                                   *arguments], self.folder)
        self.addCleanup(session.close)
        return session

    def answer(self, result: harness.Result) -> dict[str, str]:
        """The lines `key: value` and `name = value` of an answer."""
        found = {}
        for line in result.out.splitlines():
            for sign in (": ", " = "):
                if sign in line:
                    key, _, value = line.partition(sign)
                    found[key] = value
                    break
        return found

    def left_over(self) -> list[str]:
        return os.listdir(self.path("work"))

    def paper_engine(self, name: str, script: str) -> None:
        """A program of that name in the folder `paper`; whoever wants it says LATBOX_BIN_DIR=paper."""
        os.makedirs(self.path("paper"), exist_ok=True)
        path = os.path.join(self.path("paper"), name)
        with open(path, "w", encoding="utf-8") as file:
            file.write("#!/bin/sh\n" + script)
        os.chmod(path, os.stat(path).st_mode | stat.S_IXUSR)

    def solve_on_paper(self, *arguments: str) -> harness.Result:
        done = subprocess.run([sys.executable, COMMAND, *arguments], cwd=self.folder, timeout=harness.LIMIT,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False,
                              env=dict(self.environment(), LATBOX_BIN_DIR=self.path("paper")))
        return harness.Result(done.returncode, done.stdout.decode(), done.stderr.decode())


def engines_of(front: int) -> list[int]:
    """The processes that this one has started."""
    found = []
    for name in os.listdir("/proc"):
        if name.isdigit():
            state = state_of(int(name))
            if state and state[1] == front:
                found.append(int(name))
    return found


def state_of(process: int) -> tuple[str, int] | None:
    """Its state and its parent; None if there is none."""
    try:
        with open("/proc/%d/stat" % process, encoding="utf-8", errors="replace") as file:
            fields = file.read().rpartition(")")[2].split()
    except OSError:
        return None
    return fields[0], int(fields[1])


def is_alive(process: int) -> bool:
    """A zombie whose parent has not looked yet runs no more."""
    state = state_of(process)
    return state is not None and state[0] not in "ZX"


def seconds_until(condition, limit: float) -> float:
    begin = time.monotonic()
    while not condition():
        if time.monotonic() - begin > limit:
            raise AssertionError("not within %s s" % limit)
        time.sleep(0.01)
    return time.monotonic() - begin
