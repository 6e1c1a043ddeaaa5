"""A model as the text of a .opt file: bounds on the grid, variables from 0 on, every row with two finite sides.

What is done, in this order:

1. Bounds are rounded inwards to the grid of the variable, whole numbers or decimals of a fixed number of digits.
2. Bounds that are missing are taken from rows that imply them.
3. Every variable is counted from its lower bound; one that has an upper bound only is counted downwards from it. One
   without bounds stays as it is.
4. A row with one side gets the other from its activity, the least or greatest value that the bounds allow. A row of the
   solver with an infinite side must hold at the corners of the box, or the run ends; a side that costs nothing spares
   the user that.
5. Sides are moved inwards to values that the row can take. A row whose sides are equal then is written as an equation,
   and one that has a single value is left out: an inequation with equal sides would take an equation's place, and one
   whose sides become equal later would end the run.
"""

from __future__ import annotations

import math
from fractions import Fraction
from typing import Iterable

from ..errors import ModelError
from . import name_map
from .model import INF, Bound, Model, Row, Variable, finite, without_grid
from .tied import with_tied_on_grids

# Passes over the rows in search of missing bounds. Each bound is found at most once, so this only caps the time.
GREATEST_PASSES = 100


def opt_text(model: Model, source: str, digits: int | None = None) -> str:
    """The program's text; `digits` is the grid of the continuous variables, None if there may be none."""
    if not model.variables:
        raise ModelError("the model has no variables")
    if model.goals:
        raise ModelError("a value to be reached: such a program is the solver's own and is not rewritten",
                         model.goals[0].row.place)
    return _Program(with_tied_on_grids(model), digits).text(source)


# Coefficients, sides and name of a row of the program.
_Placed = tuple[list[Fraction], Fraction, Fraction, str]


class _Program:
    def __init__(self, model: Model, digits: int | None) -> None:
        self.model = model
        self.digits = [_grid(variable, digits) for variable in model.variables]
        self.low: list[Bound] = []
        self.high: list[Bound] = []
        for variable, d in zip(model.variables, self.digits):
            low, high = _on_grid(variable, d)
            self.low.append(low)
            self.high.append(high)
        self.imply_bounds()
        self.columns = [_column(v.name, low, high) for v, low, high in zip(model.variables, self.low, self.high)]
        self.equations: list[_Placed] = []
        self.inequations: list[_Placed] = []
        self.notes = ["row %s has no sides and is left out" % name for name in model.left_out]
        for row in model.rows:
            self.place(row)

    # ------------------------------------------------------------- bounds that rows imply

    def imply_bounds(self) -> None:
        for _ in range(GREATEST_PASSES):
            if not any([self.bounds_from(row) for row in self.model.rows]):
                return

    def bounds_from(self, row: Row) -> bool:
        """Fills in missing bounds of the row's variables; true if there was one."""
        found = False
        for side, sign in ((row.upper, 1), (row.lower, -1)):
            if abs(side) == INF:
                continue
            terms = {j: sign * a for j, a in row.coefficients.items() if a != 0}
            found = self.bounds_from_side(terms, sign * finite(side)) or found
        return found

    def bounds_from_side(self, terms: dict[int, Fraction], side: Fraction) -> bool:
        """sum of terms <= side: a variable's bound follows if all others have theirs on the lesser side."""
        least = {j: self.lesser(j, a) for j, a in terms.items()}
        missing = [j for j, value in least.items() if abs(value) == INF]
        if len(missing) > 1:
            return False
        rest = side - sum((finite(value) for value in least.values() if abs(value) != INF), Fraction(0))
        # With every lesser side finite each term has a greatest value; else only the one that lacks it.
        return any([self.set_missing(j, terms[j], rest + (0 if missing else finite(least[j])))
                    for j in (missing or terms)])

    def lesser(self, j: int, a: Fraction) -> Bound:
        end = self.low[j] if a > 0 else self.high[j]
        return a * end if abs(end) != INF else -INF

    def set_missing(self, j: int, a: Fraction, greatest: Fraction) -> bool:
        """a x_j <= greatest."""
        step = Fraction(1, 10 ** self.digits[j])
        if a > 0 and self.high[j] == INF:
            self.high[j] = greatest / a // step * step
        elif a < 0 and self.low[j] == -INF:
            self.low[j] = -(greatest / -a // step * step)
        else:
            return False
        if self.low[j] > self.high[j]:
            variable = self.model.variables[j]
            raise ModelError("the rows leave no value for %s" % variable.name, variable.place)
        return True

    # ------------------------------------------------------------- rows

    def place(self, row: Row) -> None:
        """Counts the row in the new columns, closes it and puts it with the equations or the inequations."""
        if row.lower > row.upper:
            raise ModelError("row %s cannot hold: its sides are %s and %s" % (row.name, row.lower, row.upper), row.place)
        least, greatest = self.activity(row.coefficients)
        if row.lower > greatest:
            raise ModelError("row %s cannot hold: its greatest value is %s, and it asks for %s at least" %
                          (row.name, greatest, row.lower), row.place)
        if row.upper < least:
            raise ModelError("row %s cannot hold: its least value is %s, and it asks for %s at most" %
                          (row.name, least, row.upper), row.place)
        step = self.step(row.coefficients)
        if step == 0:
            self.notes.append("row %s has one value, holds, and is left out" % row.name)
            return
        sides = self.closed(row, max(row.lower, least), "least"), self.closed(row, min(row.upper, greatest), "greatest")
        dense, constant = self.dense(row.coefficients)
        low, high = -((constant - sides[0]) // step) * step, (sides[1] - constant) // step * step
        if low > high:
            raise ModelError("row %s cannot hold: it has no value from %s to %s" % (row.name, row.lower, row.upper),
                          row.place)
        (self.equations if low == high else self.inequations).append((dense, low, high, row.name))

    def closed(self, row: Row, side: Bound, word: str) -> Fraction:
        if abs(side) == INF:
            raise ModelError("row %s has one side only, and the bounds of its variables allow no %s value to close it: "
                          "bound the variables, or the row on both sides" % (row.name, word), row.place)
        return finite(side)

    def step(self, coefficients: dict[int, Fraction]) -> Fraction:
        """The row takes multiples of this, counted from its value at the offsets; 0 if it has one value only."""
        step = Fraction(0)
        for j, a in coefficients.items():
            if self.low[j] != self.high[j]:
                step = _gcd(step, a / 10 ** self.digits[j])
        return step

    def activity(self, coefficients: dict[int, Fraction]) -> tuple[Bound, Bound]:
        """The least and the greatest value of the row, in the model's coordinates."""
        ends: list[Bound] = [-INF, INF]
        for which, sign in ((0, 1), (1, -1)):
            values = [self.lesser(j, sign * a) for j, a in coefficients.items() if a != 0]
            if not any(abs(value) == INF for value in values):
                ends[which] = sign * sum(values, Fraction(0))
        return ends[0], ends[1]

    def dense(self, coefficients: dict[int, Fraction]) -> tuple[list[Fraction], Fraction]:
        """The coefficients of all columns, and what the offsets add."""
        row = [Fraction(0)] * len(self.columns)
        constant = Fraction(0)
        for j, a in coefficients.items():
            row[j] = a * self.columns[j].scale
            constant += a * self.columns[j].offset
        return row, constant

    # ------------------------------------------------------------- text

    def text(self, source: str) -> str:
        target, names = self.targets()
        names.problem = self.model.name
        equations, inequations = self.equations, self.inequations
        if not target and not equations and not inequations:
            # The format finds the number of variables in the rows, so there must be one.
            zero = Fraction(0)
            equations = [([zero] * len(self.columns), zero, zero, "no rows: every point of the box is feasible")]
        ranges = [_range(low, high) for low, high in zip(self.low, self.high)]
        items = [_vector(["inf" if self.model.maximise else "-inf"] if target else []),
                 _matrix([(row, name) for row, name in target]),
                 _matrix([(row, name) for row, _, _, name in equations]), _vector([low for _, low, _, _ in equations]),
                 _matrix([(row, name) for row, _, _, name in inequations]),
                 _vector([low for _, low, _, _ in inequations]), _vector([high for _, _, high, _ in inequations]),
                 _vector(self.digits), _vector([low for low, _ in ranges]), _vector([high for _, high in ranges])]
        notes = "".join("// %s\n" % note for note in ["converted from " + source] + self.notes)
        return notes + names.text() + "\n" + "\n".join(items) + "\n"

    def targets(self) -> tuple[list[tuple[list[Fraction], str]], name_map.NameMap]:
        names = name_map.NameMap()
        names.columns = self.columns
        if self.model.objective is None:
            return [], names
        row, shift = self.dense(self.model.objective.coefficients)
        names.objective = (self.model.maximise, self.model.constant + shift, self.model.objective.name)
        # A target that is the same everywhere would only keep the run from ending at the first solution.
        return ([(row, self.model.objective.name)] if any(row) else []), names


def _gcd(a: Fraction, b: Fraction) -> Fraction:
    return Fraction(math.gcd(a.numerator * b.denominator, b.numerator * a.denominator), a.denominator * b.denominator)


def _grid(variable: Variable, digits: int | None) -> int:
    """Decimal digits of a variable. A continuous one whose bounds are equal is a number, whatever its digits."""
    if variable.semi:
        raise ModelError("%s is semicontinuous, which cannot be stated in a .opt file" % variable.name, variable.place)
    if variable.integer:
        return variable.digits
    if variable.lower == variable.upper:
        return 0
    if digits is None:
        raise without_grid(variable)
    return digits


def _on_grid(variable: Variable, digits: int) -> tuple[Bound, Bound]:
    low, high = variable.lower, variable.upper
    if low > high or low == INF or high == -INF:
        raise ModelError("the bounds of %s leave no value: %s to %s" % (variable.name, low, high), variable.place)
    if low == high and not variable.integer:
        return low, high
    step = Fraction(1, 10 ** digits)
    if low != -INF:
        low = -(-low // step) * step
    if high != INF:
        high = high // step * step
    if low > high:
        raise ModelError("the bounds of %s leave no %s: %s to %s" %
                      (variable.name, "decimal of %d digits" % digits if digits else "whole number", variable.lower,
                       variable.upper), variable.place)
    return low, high


def _column(name: str, low: Bound, high: Bound) -> name_map.Column:
    if low != -INF:
        return name_map.Column(name, finite(low), 1)
    if high != INF:
        return name_map.Column(name, finite(high), -1)
    return name_map.Column(name, Fraction(0), 1)


def _range(low: Bound, high: Bound) -> tuple[Bound, Bound]:
    """The bounds of a column in its own coordinates."""
    if low == -INF and high == INF:
        return low, high
    if low == -INF or high == INF:
        return 0, INF
    return 0, high - low


def _vector(values: Iterable[object]) -> str:
    return "[ %s]" % "".join("%s " % value for value in values)


def _matrix(rows: list[tuple[list[Fraction], str]]) -> str:
    if not rows:
        return "[ ]"
    return "[\n%s]" % "".join("  %s // %s\n" % (_vector(row), name) for row, name in rows)
