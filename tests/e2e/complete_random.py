#!/usr/bin/env python3
"""latbox-all on random programs against exhaustive search: complete_random.py BINARY FIRST LAST [RECORD]

Program number i is made from i alone. The generator and the counter share nothing with latbox-all. With a RECORD the
numbers that were right are kept there, and the same command goes on behind them. Prints the programs that are wrong and
a line of totals; exit status 0 if none is wrong.
"""

import itertools
import os
import random
import subprocess
import sys
import tempfile
from fractions import Fraction

import checker
from programs import opt

INF = float("inf")
# A box of more points than this is not counted one by one.
LARGEST = 60000


def text_of(value):
    if value in (INF, -INF):
        return "inf" if value > 0 else "-inf"
    value = Fraction(value)
    return str(value.numerator) if value.denominator == 1 else "%d/%d" % (value.numerator, value.denominator)


class Maker:
    """One random program with finite boxes; every tenth has long coefficients."""

    def __init__(self, number):
        self.random = random.Random(number)
        pick = self.random
        self.n = pick.choice([1, 2, 3, 4, 5, 6, 7, 8, 9, 10])
        self.planted = pick.random() < 0.55
        self.size = pick.choice([2, 5, 9, 40])
        self.fractions = pick.random() < 0.2
        # Coefficients that no floating-point number holds: 20 to 60 digits.
        self.long = number % 10 == 9
        if self.long:
            self.size = 10 ** pick.randint(20, 60)
        self.dx = [pick.choice([0, 0, 0, 0, 0, 1]) if self.n <= 5 else 0 for _ in range(self.n)]
        self.boxes()

    def boxes(self):
        pick = self.random
        budget = LARGEST
        self.lx, self.rx, self.grid = [], [], []
        for digits in self.dx:
            scale = 10 ** digits
            width = pick.randint(0, 9) if self.n <= 4 else pick.choice([1, 1, 1, 2, 3])
            if pick.random() < 0.05:
                width = 0
            width = min(width, budget - 1)
            budget //= width + 1
            low = pick.choice([0, 0, 0, pick.randint(-6, 6)])
            self.grid.append([Fraction(low * 1 + k, scale) for k in range(width + 1)])
            loose = pick.random() < 0.1
            self.lx.append(Fraction(low, scale) - (Fraction(1, 3 * scale) if loose else 0))
            self.rx.append(Fraction(low + width, scale) + (Fraction(1, 3 * scale) if loose else 0))
        self.point = [pick.choice(values) for values in self.grid]

    def coefficient(self):
        pick = self.random
        if pick.random() < 0.25:
            return Fraction(0)
        value = Fraction(pick.randint(-self.size, self.size) if pick.random() < 0.6 else pick.randint(1, self.size))
        return value / pick.choice([1, 2, 3, 10]) if self.fractions else value

    def row(self):
        return [self.coefficient() for _ in range(self.n)]

    def value(self, row):
        return sum((a * x for a, x in zip(row, self.point)), Fraction(0))

    def side(self, row):
        """The row's value at the planted point, or somewhere near."""
        return self.value(row) + (0 if self.planted else self.random.randint(-self.size, self.size))

    def program(self):
        pick = self.random
        equations = pick.choice([0, 0, 1, 1, 2, 3]) if self.n > 1 else pick.choice([0, 0, 1])
        inequations = pick.choice([0, 1, 2, 3])
        targets = pick.choice([0, 0, 1, 1, 2, 3])
        if equations + inequations + targets == 0:
            equations = 1
        ag = [self.row() for _ in range(equations)]
        bg = [self.side(row) for row in ag]
        if ag and pick.random() < 0.15:
            factor = pick.choice([2, 3, -1])
            ag.append([factor * a for a in ag[0]])
            bg.append(factor * bg[0] + (pick.random() < 0.2))
        au = [self.row() for _ in range(inequations)]
        lu, ru = [], []
        for row in au:
            middle = self.side(row)
            low = middle - Fraction(pick.randint(0, 2 * self.size), pick.choice([1, 1, 2]))
            high = middle + pick.randint(0, 2 * self.size)
            kind = pick.random()
            if kind < 0.25:
                low = -INF
            elif kind < 0.5:
                high = INF
            elif kind < 0.6:
                low = high = middle
            lu.append(low)
            ru.append(high)
        at = [self.row() for _ in range(targets)]
        dt = [pick.choice([-INF, INF, self.value(row) + pick.randint(-4, 4)]) for row in at]
        show = lambda rows: [[text_of(a) for a in row] for row in rows]
        line = lambda values: [text_of(value) for value in values]
        return opt(dt=line(dt), at=show(at), ag=show(ag), bg=line(bg), au=show(au), lu=line(lu), ru=line(ru),
                   dx=self.dx, lx=line(self.lx), rx=line(self.rx))


def points(program):
    """Every point, by trying all."""
    values = []
    for digits, low, high in zip(program.dx, program.lx, program.rx):
        scale = 10 ** int(digits)
        first, last = -((-low * scale) // 1), (high * scale) // 1
        values.append([Fraction(k, scale) for k in range(int(first), int(last) + 1)])
    # Whole numbers are several times faster than fractions.
    rows = [scaled(row, b, b) for row, b in zip(program.ag, program.bg)]
    rows += [scaled(row, low, high) for row, low, high in zip(program.au, program.lu, program.ru)]
    grids = [[(v, int(v * 10)) for v in column] for column in values]
    for candidate in itertools.product(*grids):
        for row, low, high in rows:
            total = 0
            for a, (_, tenths) in zip(row, candidate):
                total += a * tenths
            if not low <= total <= high:
                break
        else:
            yield tuple(v for v, _ in candidate)


def scaled(row, low, high):
    """The row as whole numbers for values in tenths."""
    common = 1
    for a in [*row, *(side for side in (low, high) if abs(side) != INF)]:
        common = common * Fraction(a).denominator // gcd(common, Fraction(a).denominator)
    side = lambda value: value if abs(value) == INF else int(value * common * 10)
    return [int(a * common) for a in row], side(low), side(high)


def gcd(a, b):
    while b:
        a, b = b, a % b
    return a


class Fault(Exception):
    pass


def require(condition, *what):
    if not condition:
        raise Fault(" ".join(map(str, what)))


def run(binary, folder, *options):
    done = subprocess.run([binary, "--quiet=1", *options, "p.opt"], cwd=folder, capture_output=True, text=True,
                          timeout=300, check=False)
    require(done.returncode in (10, 11, 12, 20), options, "status", done.returncode, done.stderr)
    return done.returncode, done.stdout.splitlines()


def listed(folder):
    with open(os.path.join(folder, "p.all"), encoding="utf-8") as file:
        return checker.read_stars(file.read())


def judge(binary, folder, number):
    """Raises Fault; returns the number of points."""
    text = Maker(number).program()
    with open(os.path.join(folder, "p.opt"), "w", encoding="utf-8") as file:
        file.write(text)
    program = checker.Program(text)
    truth = set(points(program))
    judge_all(binary, folder, program, truth)
    if program.dt:
        judge_best(binary, folder, program, truth)
    judge_first(binary, folder, truth)
    return len(truth)


def judge_all(binary, folder, program, truth):
    status, out = run(binary, folder, "--all=1")
    stars = listed(folder)
    require(len(stars) == len(set(tuple(star.x) for star in stars)), "a point twice")
    require(set(tuple(star.x) for star in stars) == truth, "all:", len(stars), "points, not", len(truth))
    wanted = (10, ["verdict: all %d" % len(truth)]) if truth else (20, ["verdict: none"])
    require((status, out) == wanted, "all:", status, out)
    for star in stars:
        require((star.target_norm, star.slack_norm) == program.norms(star.x), "norms of", star.x)


def judge_best(binary, folder, program, truth):
    status, out = run(binary, folder)
    stars = listed(folder)
    if not truth:
        require((status, out, stars) == (20, ["verdict: none"], []), "best:", status, out)
        return
    best = min(program.norms(x) for x in truth)
    ties = set(x for x in truth if program.norms(x) == best)
    verdict = "verdict: optimum " + mixed(best[0]) + ("" if best[1] == 0 else " " + mixed(best[1]))
    require((status, out) == (10, [verdict]), "best:", status, out, "not", verdict)
    require(len(stars) == 1 and tuple(stars[0].x) in ties, "the best point is", [star.x for star in stars])
    status, out = run(binary, folder, "--ties=1")
    require((status, out) == (10, ["best points: %d" % len(ties), verdict]), "ties:", status, out, len(ties))
    require(sorted(tuple(star.x) for star in listed(folder)) == sorted(ties), "ties: other points")


def judge_first(binary, folder, truth):
    status, out = run(binary, folder, "--first=1")
    stars = listed(folder)
    require((status, out) == ((11, ["verdict: found 1"]) if truth else (20, ["verdict: none"])), "first:", status, out)
    require(len(stars) == bool(truth) and all(tuple(star.x) in truth for star in stars), "first: no point")


def mixed(value):
    sign, value = ("-" if value < 0 else ""), abs(value)
    whole, rest = divmod(value, 1)
    if rest == 0:
        return sign + str(whole)
    return sign + ("%d:" % whole if whole else "") + "%d/%d" % (rest.numerator, rest.denominator)


def judge_range(binary, first, last, done=(), report=lambda number: None):
    """(numbers that are wrong, how many programs have none, one, many points)."""
    wrong = []
    kinds = [0, 0, 0]
    memory = "/dev/shm" if os.access("/dev/shm", os.W_OK) else None
    with tempfile.TemporaryDirectory(dir=memory) as folder:
        for number in range(first, last):
            if number in done:
                continue
            try:
                kinds[min(judge(binary, folder, number), 2)] += 1
                report(number)
            except (Fault, subprocess.TimeoutExpired) as fault:
                wrong.append((number, str(fault)))
    return wrong, kinds


def main(arguments):
    if len(arguments) not in (4, 5):
        sys.exit("usage: %s BINARY FIRST LAST [RECORD]" % arguments[0])
    record = arguments[4] if len(arguments) == 5 else os.devnull
    done = set()
    if os.path.isfile(record):
        with open(record, encoding="utf-8") as file:
            done = set(int(line) for line in file.read().split("\n")[:-1])
    with open(record, "a", encoding="utf-8") as file:
        wrong, kinds = judge_range(os.path.abspath(arguments[1]), int(arguments[2]), int(arguments[3]), done,
                                   lambda number: print(number, file=file, flush=True))
    for number, fault in wrong:
        print("program %d: %s" % (number, fault))
    total = int(arguments[3]) - int(arguments[2])
    print("%d of %d right (%d from the record); none, one, many points among the new ones: %d, %d, %d" %
          (total - len(wrong), total, total - len(wrong) - sum(kinds), *kinds))
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
