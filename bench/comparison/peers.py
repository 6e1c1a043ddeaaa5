"""Branch and bound on the same program: glpsol (GLPK) and cbc (COIN-OR)."""

import os
import re
import shutil
import subprocess

import answer
from limited_run import LimitedRun
from mps import comparable, mps


class Glpsol:
    name = "glpsol"
    incumbent = r"mip = +(-?[0-9.e+]+)"
    no_point = ("NO INTEGER FEASIBLE", "NO PRIMAL FEASIBLE")

    @staticmethod
    def version():
        return first_match(["glpsol", "--version"], r"Solver (\S+)")

    @staticmethod
    def command(path, solution):
        return ["glpsol", "--freemps", path, "--write", solution]

    @staticmethod
    def read(text, n):
        """(x, whether it claims the optimum), or None: the file tells the status apart from the values."""
        fields = [line.split() for line in text.splitlines()]
        status = next((f[4] for f in fields if f[:2] == ["s", "mip"]), None)
        if status not in ("o", "f"):
            return None
        values = [0] * n
        for f in fields:
            if f and f[0] == "j":
                values[int(f[1]) - 1] = round(float(f[2]))
        return values, status == "o"


class Cbc:
    name = "cbc"
    incumbent = r"(?:Integer solution of|Objective value:) +(-?[0-9.e+]+)"
    no_point = ("nfeasible",)

    @staticmethod
    def version():
        return first_match(["cbc", "-quit"], r"Version: (\S+)")

    @staticmethod
    def command(path, solution):
        return ["cbc", path, "-solve", "-solution", solution, "-quit"]

    @staticmethod
    def read(text, n):
        """As above. Variables at zero are not in the file; "**" marks one that the program itself finds violated."""
        lines = text.splitlines()
        if not lines or "nfeasible" in lines[0] or "no integer solution" in lines[0]:
            return None
        values = [0] * n
        for line in lines[1:]:
            match = re.match(r"(?:\*\*)?\s*\d+ X(\d+) +(\S+)", line)
            if match:
                values[int(match.group(1))] = round(float(match.group(2)))
        return values, lines[0].startswith("Optimal")


def first_match(command, pattern):
    out = subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, text=True, check=False).stdout
    match = re.search(pattern, out)
    return match.group(1) if match else "unknown"


def installed():
    return [peer for peer in (Glpsol, Cbc) if shutil.which(peer.name)]


def run(peer, program, limit, folder):
    """`folder` is a folder for this run alone, empty."""
    if not comparable(program):
        return answer.LEFT_OUT
    path, solution = os.path.join(folder, "program.mps"), os.path.join(folder, "answer")
    with open(path, "w", encoding="utf-8") as file:
        file.write(mps(program))
    # Line by line, so that the time of an incumbent is the time of its line.
    done = LimitedRun(["stdbuf", "-oL", *peer.command(path, solution)], limit)
    steps = done.improvements(peer.incumbent)
    point = None
    if not done.timed_out and os.path.exists(solution):
        with open(solution, encoding="utf-8") as file:
            point = peer.read(file.read(), program.n)
    if point:
        return answer.judged(program, point[0], done, steps[-1][0] if steps else None, point[1])
    return without_point(peer, program, done, steps)


def without_point(peer, program, done, steps):
    if steps and program.at:
        return answer.made("unchecked", done, steps[-1][0], answer.plain(abs(float(steps[-1][1]))))
    if done.timed_out:
        return answer.made("none", done)
    claim = next((line for _, line in done.lines if any(words in line for words in peer.no_point)), None)
    return answer.made("refuted" if claim else "ended", done, note=claim or "")
