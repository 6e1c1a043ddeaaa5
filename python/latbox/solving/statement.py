"""A model as the program of the complete engine: as plainly as the format allows, for what is proven of the program is
told of the model.

latbox-all takes any bounds, one-sided rows and decimals, and closes what is open by itself. So a variable is a column with
the same bounds, and a row is a row. What the format has no words for:

- a variable that is fixed off its grid (continuous, at 1/3, say) becomes part of the sides of its rows;
- a semi variable x, 0 or within lower..upper, gets a column y in 0..1 besides: lower y <= x <= upper y;
- the constant of the objective stays outside;
- a row or variable that nothing can satisfy by itself ends it here: Infeasible.
"""

from __future__ import annotations

from collections.abc import Callable, Sequence
from fractions import Fraction
from math import ceil, floor

from ..errors import ModelError
from ..models.model import INF, Bound, Model, Variable, without_grid
from .program import Column, Condition, Number, Program, Target, Terms, number_text

Point = list[Fraction]


class Infeasible(Exception):
    """No point can satisfy this: the message says what. Not proven where bounds were made up."""

    is_proven = True


class Statement:
    """`program` states the model; point() and columns() lead from one to the other."""

    def __init__(self, model: Model, digits: int | None = None) -> None:
        """Throws ModelError for a continuous variable without digits and for a semi variable that semi.py would have to close first,
        Infeasible where a bound or a row says so."""
        self.model = model
        self.program = Program()
        self.fixed: dict[int, Fraction] = {}
        self.column_of: dict[int, int] = {}
        self._semi: list[tuple[int, int]] = []  # variable, its column of 0 and 1
        for variable in model.variables:
            require_grid(variable, digits)
        for j, variable in enumerate(model.variables):
            self._add(j, variable, digits)
        for j, variable in enumerate(model.variables):
            if variable.semi and j in self.column_of:
                self._add_switch(j, variable)
        for row in model.rows:
            self._add_row(row.name, row.coefficients, row.lower, row.upper)
        self._add_targets()

    # ------------------------------------------------------------- there and back

    def point(self, values: Sequence[Number]) -> Point:
        """The values of the model's variables at a point of the program."""
        return [self.fixed[j] if j in self.fixed else Fraction(values[self.column_of[j]])
                for j in range(len(self.model.variables))]

    def columns(self, x: Point) -> Point:
        """The point of the program that stands for a point of the model."""
        values = [Fraction(0)] * len(self.program.columns)
        for j, column in self.column_of.items():
            values[column] = x[j]
        for j, switch in self._semi:
            values[switch] = Fraction(x[j] != 0)
        return values

    def direction(self, steps: Sequence[Number]) -> Point:
        """As point(), of a difference of two points."""
        return [Fraction(0) if j in self.fixed else Fraction(steps[self.column_of[j]])
                for j in range(len(self.model.variables))]

    def names(self, columns: list[int]) -> list[str]:
        """Of the variables that these columns stand for."""
        by_column = {column: self.model.variables[j].name for j, column in self.column_of.items()}
        return [by_column[column] for column in columns if column in by_column]

    # ------------------------------------------------------------- variables

    def _add(self, j: int, variable: Variable, digits: int | None) -> None:
        low, high = variable.lower, variable.upper
        if low > high or low == INF or high == -INF:
            if variable.semi:
                self.fixed[j] = Fraction(0)
                return
            raise Infeasible("%s has no value: its bounds are %s and %s" % (variable.name, number_text(low), number_text(high)))
        if low == high and not variable.semi and (not variable.integer or low % variable.step == 0):
            self.fixed[j] = Fraction(low)
            return
        places = variable.digits if variable.integer else variable.digits or digits or 0
        step = Fraction(1, 10**places)
        low, high = rounded(low, step, ceil), rounded(high, step, floor)
        if low > high and not variable.semi:
            raise Infeasible("%s has no value: its bounds are %s and %s, without a multiple of %s between them" %
                             (variable.name, number_text(variable.lower), number_text(variable.upper), step))
        if variable.semi and (low > high or low == high == 0):
            self.fixed[j] = Fraction(0)
            return
        self.column_of[j] = len(self.program.columns)
        self.program.columns.append(Column(low, high, places))

    def _add_switch(self, j: int, variable: Variable) -> None:
        column = self.program.columns[self.column_of[j]]
        low, high = column.lower, column.upper
        column.lower, column.upper = min(low, Fraction(0)), max(high, Fraction(0))
        if low <= 0 <= high:
            return
        if abs(low) == INF or abs(high) == INF:
            raise ModelError("variable %s is 0 or from %s to %s: both ends must be finite, or follow from the rows" %
                             (variable.name, number_text(low), number_text(high)), variable.place)
        switch = len(self.program.columns)
        self.program.columns.append(Column(Fraction(0), Fraction(1)))
        self._semi.append((j, switch))
        x = self.column_of[j]
        at_least: Terms = {x: Fraction(1), switch: -Fraction(low)}
        at_most: Terms = {x: Fraction(1), switch: -Fraction(high)}
        self.program.conditions += [Condition(at_least, Fraction(0), INF, variable.name),
                                    Condition(at_most, -INF, Fraction(0), variable.name)]

    # ------------------------------------------------------------- rows

    def _terms(self, coefficients: dict[int, Fraction]) -> tuple[Terms, Fraction]:
        """In the program's columns, and what the fixed variables add."""
        terms: Terms = {}
        constant = Fraction(0)
        for j, a in coefficients.items():
            if j in self.fixed:
                constant += a * self.fixed[j]
            elif a != 0:
                terms[self.column_of[j]] = a
        return terms, constant

    def _add_row(self, name: str, coefficients: dict[int, Fraction], lower: Bound, upper: Bound) -> None:
        if lower > upper or lower == INF or upper == -INF:
            raise Infeasible("row %s cannot hold: its sides are %s and %s" % (name, number_text(lower), number_text(upper)))
        terms, constant = self._terms(coefficients)
        if not terms:
            if not lower <= constant <= upper:
                raise Infeasible("row %s cannot hold: its value is %s, and its sides are %s and %s" %
                                 (name, number_text(constant), number_text(lower), number_text(upper)))
            return
        if lower == -INF and upper == INF:
            return
        self.program.conditions.append(Condition(terms, shifted(lower, -constant), shifted(upper, -constant), name))

    def _add_targets(self) -> None:
        """self.constant: what the objective has besides, counted as something to be minimised."""
        self.sign = -1 if self.model.maximise else 1
        self.constant = self.sign * self.model.constant
        if self.model.objective is not None:
            terms, constant = self._terms(self.model.objective.coefficients)
            self.constant += self.sign * constant
            if terms:
                self.program.targets.append(Target(terms, INF if self.model.maximise else -INF))
        for goal in self.model.goals:
            terms, constant = self._terms(goal.row.coefficients)
            if terms:
                self.program.targets.append(Target(terms, goal.value - constant))
            else:
                self.constant += abs(constant - goal.value)

    def objective(self, norm: Fraction) -> Fraction:
        """The model's objective where the program's target norm is `norm`."""
        return self.sign * (norm + self.constant)

    def norm(self, objective: Fraction) -> Fraction:
        return self.sign * objective - self.constant


def require_grid(variable: Variable, digits: int | None) -> None:
    """Throws ModelError for a continuous variable that nobody has given digits."""
    if variable.is_continuous and not variable.digits and digits is None:
        raise without_grid(variable)


def grid_text(model: Model, digits: int | None) -> str:
    """Of the continuous variables: "2 digits", "1 to 3 digits"; "" if there are none."""
    found = sorted({variable.digits or digits or 0 for variable in model.variables if variable.is_continuous})
    ends = " to ".join(str(d) for d in dict.fromkeys(found[:1] + found[-1:]))
    return ends and ends + (" digit" if found == [1] else " digits")


def rounded(bound: Bound, step: Fraction, towards: Callable[[Fraction], int]) -> Bound:
    """The nearest multiple of the step on that side; infinities stay."""
    return bound if abs(bound) == INF else towards(Fraction(bound) / step) * step


def shifted(side: Bound, by: Fraction) -> Bound:
    return side if abs(side) == INF else side + by
