"""latbox-all on one program, and whether what it says is so: its verdict, its exit status and every point of its file.

A run is a dictionary of plain values, so that it goes into a JSON file as it is:

  verdict   the text behind "verdict: ", or "" where there is none
  fault     what is wrong with it, or ""; a run that its limit has ended has no verdict, which is no fault
  cpu       CPU seconds, user and system; those at which it told its estimate of the search are `began`, or 0
  seconds   by the clock
  resident  KB at most
"""

import hashlib
import itertools
import os
import re
import subprocess
from dataclasses import dataclass
from typing import Any

import checker
from limited_run import LimitedRun

Run = dict[str, Any]

STATUS = {"all": 10, "optimum": 10, "found": 11, "unknown": 12, "none": 20}
# Files up to so many lines are judged in Python, longer ones by latbox-check, which shares no code with the search either.
FEW = 2000
# The line that is told when preparation and reduction are done.
ESTIMATE = re.compile(r"estimate", re.IGNORECASE)


@dataclass
class Solver:
    """The program under test, and the one that judges what Python is too slow for."""

    binary: str
    checker: str

    @staticmethod
    def at(binary: str) -> "Solver":
        return Solver(os.path.abspath(binary), os.path.join(os.path.dirname(os.path.abspath(binary)), "latbox-check"))


def run(solver: Solver, text: str, options: list[str], limit: float, folder: str) -> Run:
    return judged(solver, execute(solver, text, options, limit, folder), text, folder, "--count=1" not in options)


def execute(solver: Solver, text: str, options: list[str], limit: float, folder: str) -> LimitedRun:
    """In the folder, which keeps program, points and checkpoint: the same command there goes on from an earlier one."""
    path = os.path.join(folder, "program.opt")
    if not os.path.exists(path):
        with open(path, "w", encoding="utf-8") as file:
            file.write(text)
    return LimitedRun([solver.binary, *options, path], limit)


def judged(solver: Solver, done: LimitedRun, text: str, folder: str, lists: bool = True) -> Run:
    lines = [line for _, line in done.lines]
    verdict = next((line.removeprefix("verdict: ") for line in reversed(lines) if line.startswith("verdict: ")), "")
    fault = "" if done.timed_out else fault_of(done, verdict)
    if not fault and lists and verdict and not done.timed_out:
        fault = fault_of_points(solver, verdict, text, folder)
    began = next((cpu for cpu, line in done.lines if ESTIMATE.search(line)), 0)
    return {"verdict": "" if done.timed_out else verdict, "fault": fault, "cpu": done.cpu, "seconds": done.seconds,
            "began": began, "resident": done.resident}


def fault_of(done: LimitedRun, verdict: str) -> str:
    if not verdict:
        return "no verdict, status %s: %s" % (done.status, done.lines[-1][1] if done.lines else "")
    if STATUS.get(verdict.split()[0]) != done.status:
        return "status %s does not belong to the verdict" % done.status
    return ""


def fault_of_points(solver: Solver, verdict: str, text: str, folder: str) -> str:
    """The file of points against the verdict: each line true, none twice, as many as are told."""
    path = os.path.join(folder, "program.all")
    with open(path, "rb") as file:
        count = sum(1 for _ in file)
    wanted = points_told(verdict)
    if count != wanted:
        return "%d points in the file, %d told" % (count, wanted)
    if count > FEW:
        return fault_by_checker(solver, folder)
    program = checker.Program(text)
    with open(path, encoding="utf-8") as file:
        stars = checker.read_stars(file.read())
    wrong = next((reason for _, reason in checker.verdicts(program, stars) if reason), "")
    if not wrong and verdict.startswith("optimum") and stars[0].target_norm != checker.number(verdict.split()[1]):
        wrong = "the point in the file has target norm %s" % stars[0].target_norm
    return wrong


def points_told(verdict: str) -> int:
    kind, *rest = verdict.split()
    if kind in ("all", "found"):
        return int(rest[0])
    return 1 if kind == "optimum" else 0


def fault_by_checker(solver: Solver, folder: str) -> str:
    if not os.path.exists(solver.checker):
        return "not verified: latbox-check is not built"
    done = subprocess.run([solver.checker, "--quiet", "program.opt", "program.all"], cwd=folder, stdin=subprocess.DEVNULL,
                          capture_output=True, text=True, check=False)
    return "" if done.returncode == 0 else "latbox-check: " + last_line(done.stdout + done.stderr)


def last_line(text: str) -> str:
    return text.strip().rsplit("\n", 1)[-1]


def hash_of_text(text: str) -> str:
    return hashlib.sha256(text.encode()).hexdigest()[:16]


def with_sides(text: str, sides: list[int]) -> str:
    """The program with other right-hand sides of its equations, the fourth item of a file without thresholds."""
    text = checker.without_comments(text)
    depths = itertools.accumulate((c == "[") - (c == "]") for c in text)
    ends = [i for i, (c, depth) in enumerate(zip(text, depths)) if c == "]" and depth == 0]
    return text[:ends[2] + 1] + "\n[ " + " ".join(map(str, sides)) + " ]" + text[ends[3] + 1:]
