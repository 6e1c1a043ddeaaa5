#!/usr/bin/env python3
"""VIPR certificates of random programs: vipr_random.py BINARY FIRST LAST

Program number i is made from i alone, as in complete_random.py, and its points are listed by other means. latbox-all writes
a certificate of its verdict. The reader of certificates must find it true; its problem must have the program's points and no
others, as far as some hundred points beside them tell; and its relation must be what exhaustive search finds. Prints what is
wrong, and a line of totals; exit status 0 if nothing is.
"""

import math
import os
import random
import subprocess
import sys
import tempfile
from fractions import Fraction

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path[:0] = [HERE, os.path.join(HERE, "..", "e2e")]
import complete_programs  # noqa: E402
from vipr_reader import Broken, Certificate, Malformed  # noqa: E402

OTHERS = 200


class Fault(Exception):
    pass


def require(condition: bool, *what: object) -> None:
    if not condition:
        raise Fault(" ".join(map(str, what)))


def unit_of(program: complete_programs.checker.Program) -> int:
    """Norms are whole multiples of its inverse."""
    unit = 1
    for row, wanted in zip(program.at, program.dt):
        for a, digits in zip(row, program.dx):
            unit = math.lcm(unit, Fraction(a / 10 ** max(int(digits), 0)).denominator)
        if abs(wanted) != complete_programs.INF:
            unit = math.lcm(unit, Fraction(wanted).denominator)
    return unit


def values_of(program: complete_programs.checker.Program, unit: int, count: int, x: tuple[Fraction, ...]) -> dict[int, Fraction]:
    """What the variables of the certificate are at x: steps of grids, then distances in units."""
    values = [value * 10 ** max(int(digits), 0) for value, digits in zip(x, program.dx)]
    for row, wanted in zip(program.at, program.dt):
        if abs(wanted) != complete_programs.INF and len(values) < count:
            values.append(unit * abs(complete_programs.checker.dot(row, x) - wanted))
    return dict(enumerate(map(Fraction, values)))


def compare_problem(text: str, candidate: complete_programs.Candidate, number: int) -> None:
    certificate = Certificate(text)
    certificate.read_problem()
    program, unit = candidate.program, unit_of(candidate.program)
    constraints = certificate.problem()
    pick = random.Random(number)
    others = [tuple(Fraction(pick.randint(*ends(low, high, int(digits))), 10 ** max(int(digits), 0))
                    for low, high, digits in zip(program.lx, program.rx, program.dx)) for _ in range(OTHERS)]
    for x in (*candidate.points, *others):
        values = values_of(program, unit, len(certificate.variables), x)
        keeps = all(constraint.keeps(values) for constraint in constraints)
        require(keeps == (x in candidate.points), "the problem differs at", *x)
        value = sum((c * values[i] for i, c in certificate.objective.items()), Fraction(0))
        if certificate.objective:
            require(value == unit * program.norms(x)[0], "the objective differs at", *x)


def ends(low: Fraction, high: Fraction, digits: int) -> tuple[int, int]:
    """A box that is a little wider than the bounds, in steps; where one is infinite, near 0."""
    scale = 10 ** max(digits, 0)
    least = math.ceil(low * scale) - 1 if low != -complete_programs.INF else -5
    most = math.floor(high * scale) + 1 if high != complete_programs.INF else 5
    return min(least, most), max(least, most)


def judge(binary: str, folder: str, number: int) -> str:
    """What the certificate says; raises Fault."""
    candidate = complete_programs.ordinary(number)
    program, truth = candidate.program, candidate.points
    with open(os.path.join(folder, "p.opt"), "w", encoding="utf-8") as file:
        file.write(candidate.text)
    path = os.path.join(folder, "p.vipr")
    if os.path.exists(path):
        os.remove(path)
    done = subprocess.run([binary, "--quiet=1", "--resume=0", "--proof=p.vipr", "--proof-format=vipr", "p.opt"], cwd=folder,
                          capture_output=True, text=True, timeout=300, check=False)
    if truth and not program.dt:
        require(done.returncode == 2 and not os.path.exists(path), "status", done.returncode, done.stderr)
        return "refused"
    require(done.returncode == (10 if truth else 20), "status", done.returncode, done.stderr)
    require(os.path.exists(path), "no certificate:", done.stderr)
    with open(path, encoding="ascii") as file:
        text = file.read()
    compare_problem(text, candidate, number)
    try:
        relation = Certificate(text).check()
    except (Broken, Malformed) as error:
        raise Fault("refused: %s" % error) from None
    best = unit_of(program) * min(program.norms(x)[0] for x in truth) if truth else None
    require(relation == ("infeasible" if best is None else "range %s %s" % (best, best)), relation, "but", best)
    return relation.split()[0]


def judge_range(binary: str, first: int, last: int) -> tuple[dict[str, int], list[str]]:
    """How many certificates of each relation were right, and what was wrong."""
    counts = dict.fromkeys(("infeasible", "range", "refused"), 0)
    wrong = []
    with tempfile.TemporaryDirectory() as folder:
        for number in range(first, last):
            try:
                counts[judge(binary, folder, number)] += 1
            except (Fault, subprocess.TimeoutExpired) as fault:
                wrong.append("program %d: %s" % (number, fault))
    return counts, wrong


def main(arguments: list[str]) -> int:
    if len(arguments) != 3:
        sys.exit(__doc__)
    counts, wrong = judge_range(os.path.abspath(arguments[0]), int(arguments[1]), int(arguments[2]))
    for line in wrong:
        print(line)
    print("; ".join("%s %d" % pair for pair in counts.items()) + "; wrong %d" % len(wrong))
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
