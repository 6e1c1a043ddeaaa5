"""A point held against the model as the user wrote it, in exact arithmetic, by nothing that the rewriting knows."""

from __future__ import annotations

from fractions import Fraction

from ..errors import counted
from ..models.model import INF, Bound, Model, Row
from . import exact

Point = list[Fraction]


def fault(model: Model, x: Point) -> str | None:
    """What is wrong with the point, in words; None for a point of the model."""
    if len(x) != len(model.variables):
        return "it has %s for %s" % (counted(len(x), "value"), counted(len(model.variables), "variable"))
    for variable, value in zip(model.variables, x):
        if variable.semi and value == 0:
            continue
        if variable.integer and (value / variable.step).denominator != 1:
            return "%s = %s is not a multiple of %s" % (variable.name, exact.text(value), exact.text(variable.step))
        if not variable.lower <= value <= variable.upper:
            return "%s = %s is outside %s .. %s" % (variable.name, exact.text(value), shown(variable.lower), shown(variable.upper))
    for row in model.rows:
        value = value_of(row, x)
        if not row.lower <= value <= row.upper:
            return "row %s is %s, and its sides are %s and %s" % (row.name, exact.text(value), shown(row.lower), shown(row.upper))
    return None


def shown(end: Bound) -> str:
    return str(end) if abs(end) == INF else exact.text(Fraction(end))


def value_of(row: Row, x: Point) -> Fraction:
    return sum((a * x[j] for j, a in row.coefficients.items()), Fraction(0))


def objective_of(model: Model, x: Point) -> Fraction:
    """What the model's objective is at the point: a model to be maximised counts its goals' distances negated."""
    value = model.constant
    if model.objective is not None:
        value += value_of(model.objective, x)
    away = sum((abs(value_of(goal.row, x) - goal.value) for goal in model.goals), Fraction(0))
    return value - away if model.maximise else value + away


def has_objective(model: Model) -> bool:
    """Whether two points can differ in it."""
    rows = [model.objective] if model.objective is not None else []
    return any(any(row.coefficients.values()) for row in rows + [goal.row for goal in model.goals])


def states_objective(model: Model) -> bool:
    """Whether its text has one, be it the same for all points."""
    return model.objective is not None or bool(model.goals)


def is_better(model: Model, a: Fraction, b: Fraction) -> bool:
    return a > b if model.maximise else a < b


def ray_fault(model: Model, ray: list[Fraction]) -> str | None:
    """What is wrong with a ray that is to lead from any point to better ones without end; None if it does."""
    for variable, step in zip(model.variables, ray):
        if variable.integer and (step / variable.step).denominator != 1:
            return "%s does not go in steps of its grid" % variable.name
        if (step < 0 and variable.lower != -INF) or (step > 0 and variable.upper != INF):
            return "%s meets its bound" % variable.name
    for row in model.rows:
        step = value_of(row, ray)
        if (step < 0 and row.lower != -INF) or (step > 0 and row.upper != INF):
            return "row %s meets its side" % row.name
    gain = value_of(model.objective, ray) if model.objective is not None else Fraction(0)
    gain = gain if model.maximise else -gain
    if gain <= sum((abs(value_of(goal.row, ray)) for goal in model.goals), Fraction(0)):
        return "the objective does not get better along it"
    return None
