"""Bounds of columns from rows, by activities: with the others of a row where they take least of it, what is left bounds each column.
All in exact whole numbers, so each bound follows from the rows; how many rounds are gone is a matter of cost alone.

A round costs the nonzeros of the rows.
"""

from __future__ import annotations

import math
from collections.abc import Callable
from dataclasses import dataclass, replace
from fractions import Fraction

from ..models.model import INF, Bound, Model
from .program import Program, Terms
from .statement import Infeasible, Statement

# Chains of rows, each of which closes the next, are as long as they are; more rounds than this are slow convergence.
MOST_ROUNDS = 200


@dataclass
class WholeRow:
    terms: dict[int, int]
    low: int | None  # None: no side
    high: int | None
    name: str


class Box:
    """The ends of columns, None where there is none. A column counts steps of its grid."""

    def __init__(self, program: Program) -> None:
        self._digits = [column.digits for column in program.columns]
        self.low = [whole(column.lower, 10**column.digits, math.ceil) for column in program.columns]
        self.high = [whole(column.upper, 10**column.digits, math.floor) for column in program.columns]

    def whole_terms(self, terms: Terms) -> tuple[dict[int, int], int]:
        """For columns that count steps, with what the row was multiplied by."""
        steps = {j: Fraction(a) / 10 ** self._digits[j] for j, a in terms.items()}
        scale = math.lcm(1, *(a.denominator for a in steps.values()))
        return {j: int(a * scale) for j, a in steps.items()}, scale

    def whole_rows(self, program: Program) -> list[WholeRow]:
        """Each row times the common denominator of its coefficients, its sides rounded inwards."""
        rows = []
        for row in program.conditions:
            terms, scale = self.whole_terms(row.terms)
            rows.append(WholeRow(terms, whole(row.lower, scale, math.ceil), whole(row.upper, scale, math.floor), row.name))
        return rows

    def activity(self, terms: dict[int, int]) -> tuple[int | None, int | None]:
        """The least and the greatest value, as far as there are any."""
        least: int | None = 0
        greatest: int | None = 0
        for j, a in terms.items():
            low, high = (self.low[j], self.high[j]) if a > 0 else (self.high[j], self.low[j])
            least = None if least is None or low is None else least + a * low
            greatest = None if greatest is None or high is None else greatest + a * high
        return least, greatest

    def ends(self, column: int) -> tuple[Bound, Bound]:
        """Of the values of a column, which are multiples of its step."""
        low, high, step = self.low[column], self.high[column], Fraction(1, 10 ** self._digits[column])
        return -INF if low is None else low * step, INF if high is None else high * step

    def propagate(self, rows: list[WholeRow], rounds: int) -> None:
        """Throws Infeasible."""
        for _ in range(rounds):
            if not any([self._narrow(row) for row in rows]):
                return

    def _narrow(self, row: WholeRow) -> bool:
        """Bounds of its columns from the row; true if one was found."""
        found = False
        if row.high is not None:
            found = self._narrow_side(row.terms, 1, row.high, row.name)
        if row.low is not None:
            found = self._narrow_side(row.terms, -1, -row.low, row.name) or found
        return found

    def _narrow_side(self, terms: dict[int, int], sign: int, side: int, name: str) -> bool:
        """sign * terms <= side."""
        rest = side
        missing = []
        for j, a in terms.items():
            end = self.low[j] if sign * a > 0 else self.high[j]
            if end is None:
                missing.append(j)
                if len(missing) > 1:
                    return False
            else:
                rest -= sign * a * end
        if not missing and rest < 0:
            raise Infeasible("row %s cannot hold" % name)
        found = False
        for j in missing or terms:
            a = sign * terms[j]
            low, high = self.low[j], self.high[j]
            # a (z - end) <= rest, where a missing end counts as 0
            if a > 0:
                most = (low or 0) + rest // a
                if high is None or most < high:
                    self.high[j], found = most, True
                    high = most
            else:
                least = (high or 0) - rest // -a
                if low is None or least > low:
                    self.low[j], found = least, True
                    low = least
            if low is not None and high is not None and low > high:
                raise Infeasible("row %s leaves a column no value" % name)
        return found

    def closed(self) -> tuple[list[int], list[int]]:
        """The ends of all columns. Requires that none is missing."""
        low = [end for end in self.low if end is not None]
        high = [end for end in self.high if end is not None]
        assert len(low) == len(self.low) and len(high) == len(self.high)
        return low, high


def narrowed(model: Model, statement: Statement) -> Model:
    """The model with the bounds that its rows imply for its integer variables: the same points, and variables that are fixed now.

    Throws Infeasible: proven, for the statement must have no grid."""
    box = Box(statement.program)
    box.propagate(box.whole_rows(statement.program), MOST_ROUNDS)
    variables = list(model.variables)
    for j, column in statement.column_of.items():
        variable = variables[j]
        if variable.integer and not variable.semi:
            lower, upper = box.ends(column)
            variables[j] = replace(variable, lower=lower, upper=upper)
    return model.with_variables(variables)


def whole(bound: Bound, scale: int, towards: Callable[[Fraction], int]) -> int | None:
    return None if abs(bound) == INF else towards(Fraction(bound) * scale)
