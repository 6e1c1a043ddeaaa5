"""A program as one that no rule of the search can hurt, and the way back for its points.

The search is given a program of its own: lower bounds 0, two finite sides for each row, equations as equations, one target in
whole numbers that is minimised. Nothing that is proven rests on it, for each point that comes back is checked against the
model; what is rewritten too freely costs time, not truth. The steps, all in exact whole numbers:

1. A column counts steps of its grid; each row is multiplied by the common denominator of its coefficients, its sides are
   rounded inwards. A target with a value gets two columns, what exceeds it and what falls short.
2. Bounds from activities, in a few rounds over the rows. Columns that stay open get bounds of our own, far away.
3. Fixed columns go into the sides. Each column is counted from its lower bound.
4. Each row loses its common factor and gets the sides that it can reach; one that asks for nothing goes, and one with a single
   value is an equation.
5. So does the objective, which counts as a row where a point is known: only better ones are of use.
6. With a seed, columns and rows are put in another order: the draws of the search are fixed, so this is what varies it.
"""

from __future__ import annotations

import math
import random
from fractions import Fraction

from ..models.model import INF
from .activity import Box, WholeRow
from .program import Column, Condition, Program, Target, Terms
from .statement import Infeasible

ROUNDS = 8
# Bounds of our own: steps from the end that a column has, or from 0 to either side. The least that leaves room is taken.
FAR = [10**3, 10**6, 10**12]


class Rewriting:
    """`program` is for the search; point() leads back. `is_exact`: it has the same points, no bound was made up."""

    def __init__(self, program: Program, limit: Fraction | None = None, seed: int = 0) -> None:
        """With a `limit`, points with a target norm below it are wanted. Throws Infeasible: proven only if is_exact."""
        self.is_exact = True
        self._source = program
        self._low: list[int] = []  # the ends of the source's columns, in steps
        self._high: list[int] = []
        self._kept: list[int] = []  # those that are left, in the order of the program's columns
        self.limit = limit
        distances = FAR[:]
        while True:
            try:
                self._rewrite(distances[0], seed)
                return
            except Infeasible as reason:
                distances.pop(0)
                reason.is_proven = self.is_exact
                if self.is_exact or not distances:
                    raise

    # ------------------------------------------------------------- the way back

    def point(self, z: list[Fraction]) -> list[Fraction]:
        """The values of the source's columns."""
        whole = self._low[:]
        for value, j in zip(z, self._kept):
            whole[j] += int(value)
        return [Fraction(whole[j], 10**column.digits) for j, column in enumerate(self._source.columns)]

    # ------------------------------------------------------------- the steps

    def _rewrite(self, far: int, seed: int) -> None:
        self._count_steps()
        self._take_targets()
        self._box.propagate(self._rows, ROUNDS)
        self._close_columns(far)
        self._low, self._high = self._box.closed()
        self._kept = [j for j, (low, high) in enumerate(zip(self._low, self._high)) if low != high]
        draw = random.Random(seed)
        if seed:
            draw.shuffle(self._kept)
        self._place = {j: place for place, j in enumerate(self._kept)}
        conditions = [row for row in map(self._condition, self._rows) if row is not None]
        if seed:
            draw.shuffle(conditions)
        columns = [Column(0, self._high[j] - self._low[j]) for j in self._kept]
        target = self._target()
        self.program = Program(columns, conditions, [Target(target, -INF)] if target else [])

    def _count_steps(self) -> None:
        self._box = Box(self._source)
        self._rows = self._box.whole_rows(self._source)

    def _take_targets(self) -> None:
        """One objective, to be minimised, as Fractions for whole columns: its value is the target norm."""
        self._objective: dict[int, Fraction] = {}
        for target in self._source.targets:
            terms, scale = self._box.whole_terms(target.terms)
            if abs(target.wanted) == INF:
                sign = -1 if target.wanted == INF else 1
                for j, a in terms.items():
                    self._objective[j] = self._objective.get(j, Fraction(0)) + Fraction(sign * a, scale)
            else:
                self._take_goal(terms, scale, Fraction(target.wanted))
        if self.limit is not None and self._objective:
            scale = math.lcm(1, *(a.denominator for a in self._objective.values()))
            terms = {j: int(a * scale) for j, a in self._objective.items() if a}
            self._rows.append(WholeRow(terms, None, math.ceil(self.limit * scale) - 1, "better than what is known"))

    def _take_goal(self, terms: dict[int, int], scale: int, wanted: Fraction) -> None:
        more = wanted.denominator // math.gcd(wanted.denominator, scale)
        terms, scale = {j: a * more for j, a in terms.items()}, scale * more
        value = int(wanted * scale)
        least, greatest = self._box.activity(terms)
        for sign, most in ((-1, None if greatest is None else max(0, greatest - value)),
                           (1, None if least is None else max(0, value - least))):
            j = len(self._box.low)
            self._box.low.append(0)
            self._box.high.append(most)
            terms[j] = sign
            self._objective[j] = Fraction(1, scale)
        self._rows.append(WholeRow(terms, value, value, "a value to be reached"))

    # ------------------------------------------------------------- bounds

    def _close_columns(self, far: int) -> None:
        box = self._box
        if not any(end is None for end in box.low + box.high):
            return
        self.is_exact = False
        for j, (low, high) in enumerate(zip(box.low, box.high)):
            if low is None:
                box.low[j] = -far if high is None else high - far
            if high is None:
                box.high[j] = far if low is None else low + far
        box.propagate(self._rows, ROUNDS)

    # ------------------------------------------------------------- what is written

    def _condition(self, row: WholeRow) -> Condition | None:
        least, greatest = self._reach(row.terms)
        low = least if row.low is None else max(row.low, least)
        high = greatest if row.high is None else min(row.high, greatest)
        if low <= least and high >= greatest:
            return None
        terms = {self._place[j]: a for j, a in row.terms.items() if j in self._place}
        if not terms:
            raise Infeasible("row %s cannot hold" % row.name)
        offset = sum(a * self._low[j] for j, a in row.terms.items())
        factor = math.gcd(*terms.values())
        low, high = -((offset - low) // factor), (high - offset) // factor
        if low > high:
            raise Infeasible("row %s cannot hold" % row.name)
        return Condition({j: a // factor for j, a in terms.items()}, low, high, row.name)

    def _reach(self, terms: dict[int, int]) -> tuple[int, int]:
        """The least and the greatest value between the ends of all columns."""
        ends = [(a * self._low[j], a * self._high[j]) for j, a in terms.items()]
        return sum(min(pair) for pair in ends), sum(max(pair) for pair in ends)

    def _target(self) -> Terms:
        terms = {self._place[j]: a for j, a in self._objective.items() if a and j in self._place}
        if not terms:
            return {}
        scale = math.lcm(*(a.denominator for a in terms.values()))
        factor = math.gcd(*(int(a * scale) for a in terms.values()))
        return {j: int(a * scale) // factor for j, a in terms.items()}
