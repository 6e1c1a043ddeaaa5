"""This solver on one program."""

import os
import re

import answer
import checker
from limited_run import LimitedRun

BEST_TARGET = r"T\(bestTarget\) = ([^ ,]+)"


def run(binary, options, program, text, limit, folder, optimum=None):
    """`folder` is a folder for this run alone, empty. The solver proves no optimum and would use its time up; where the
    optimum is known, as a value in text, reaching it ends the run."""
    path = os.path.join(folder, "program.opt")
    with open(path, "w", encoding="utf-8") as file:
        file.write(text)
    done = LimitedRun([binary, *options.split(), path], limit, reaches(program, optimum))
    try:
        best = best_star(program, path[:-4] + ".sol")
    except (checker.Wrong, checker.FormatError) as wrong:
        return answer.made("wrong", done, note=str(wrong))
    if best is None:
        return without_star(done)
    steps = done.improvements(BEST_TARGET)
    return answer.judged(program, best, done, steps[-1][0] if steps else None, False)


def reaches(program, optimum):
    """Whether a line reports the optimum. The solver minimises: what is to be large is reported with its sign turned."""
    if optimum is None:
        return None
    norm = -float(optimum) if program.dt[0] > 0 else float(optimum)

    def reached(line):
        match = re.search(BEST_TARGET, line)
        return match is not None and match.group(1) != "inf" and float(match.group(1)) == norm

    return reached


def best_star(program, path):
    """The x of the best star, or None. Every claim of every star has been checked then, by checker.Wrong."""
    if not os.path.exists(path):
        return None
    with open(path, encoding="utf-8") as file:
        stars = checker.read_stars(file.read())
    for star in stars:
        checker.check_star(program, star)
    return stars[0].x if stars else None


def without_star(done):
    texts = [line for _, line in done.lines]
    if any("NO SOLUTIONS" in line for line in texts):
        return answer.made("refuted", done)
    failure = next((line for line in texts if "FAIL" in line), "")
    return answer.made("none" if done.timed_out else "ended", done, note=failure.strip("* "))
