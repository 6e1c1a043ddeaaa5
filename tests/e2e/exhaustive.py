"""Exhaustive search of small programs, exact: what the solver's results are compared with."""

import math
from fractions import Fraction

import checker


def solve(program, limit=5_000_000):
    """(count of feasible points, best target norm or None), by depth-first search with interval bounds.

    All variables need finite bounds. Raises OverflowError beyond `limit` nodes, so that a test never hangs here.
    """
    search = _Search(program, limit)
    search.descend(0, search.start)
    return search.count, search.best


class _Search:
    def __init__(self, program, limit):
        self.program = program
        self.limit = limit
        self.nodes = 0
        self.count = 0
        self.best = None
        self.values = [list(self.grid(i)) for i in range(program.n)]
        self.rows = [(plain(row), b, b) for row, b in zip(program.ag, program.bg)]
        self.rows += [(plain(row), low, high) for row, low, high in zip(program.au, program.lu, program.ru)]
        self.start = [0] * len(self.rows)
        self.x = [None] * program.n
        self.reach = [self.tails(row) for row, _, _ in self.rows]

    def grid(self, i):
        scale = 10 ** max(int(self.program.dx[i]), 0)
        low, high = self.program.lx[i], self.program.rx[i]
        for k in range(math.ceil(low * scale), math.floor(high * scale) + 1):
            yield k if scale == 1 else Fraction(k, scale)

    def tails(self, row):
        """Per depth, the least and greatest that the variables from there on can add to the row."""
        tails = [(0, 0)]
        for a, values in zip(reversed(row), reversed(self.values)):
            ends = (a * values[0], a * values[-1]) if values else (0, 0)
            tails.append((tails[-1][0] + min(ends), tails[-1][1] + max(ends)))
        return tails[::-1]

    def descend(self, depth, sums):
        self.nodes += 1
        if self.nodes > self.limit:
            raise OverflowError("more than %d nodes" % self.limit)
        for (_, low, high), reach, total in zip(self.rows, self.reach, sums):
            if total + reach[depth][1] < low or total + reach[depth][0] > high:
                return
        if depth == self.program.n:
            self.leaf()
            return
        for value in self.values[depth]:
            self.x[depth] = value
            self.descend(depth + 1, [s + row[depth] * value for s, (row, _, _) in zip(sums, self.rows)])

    def leaf(self):
        self.count += 1
        norm, _ = self.program.norms(self.x)
        if self.best is None or norm < self.best:
            self.best = norm


def plain(row):
    """Whole numbers as int, which is several times faster than Fraction."""
    return [int(a) if a.denominator == 1 else a for a in row]


def solve_text(text, limit=5_000_000):
    return solve(checker.Program(text), limit)
