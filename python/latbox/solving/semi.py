"""Ends for semi variables that their text leaves open: 0 or at least 5, say. A column of 0 and 1 can switch such a variable only
between finite ends, so those that follow from the rows are taken, with 0 within the bounds and the switch away.
"""

from __future__ import annotations

from dataclasses import replace
from fractions import Fraction

from ..models.model import INF, Model, Variable
from .activity import MOST_ROUNDS, Box
from .statement import Statement


def closed(model: Model, digits: int | None = None) -> Model:
    """The same points; on a decimal grid, the same ones of the grid. What no row closes stays open. Throws Infeasible."""
    if not any(needs_end(variable) for variable in model.variables):
        return model
    statement = Statement(with_zero(model), digits)
    box = Box(statement.program)
    box.propagate(box.whole_rows(statement.program), MOST_ROUNDS)
    variables = list(model.variables)
    for j, variable in enumerate(model.variables):
        if needs_end(variable):
            lower, upper = box.ends(statement.column_of[j])
            variables[j] = replace(variable, lower=max(variable.lower, lower), upper=min(variable.upper, upper))
    return model.with_variables(variables)


def needs_end(variable: Variable) -> bool:
    """0 lies outside its bounds, one of which is infinite."""
    low, high = variable.lower, variable.upper
    return variable.semi and (0 < low < INF and high == INF or -INF < high < 0 and low == -INF)


def with_zero(model: Model) -> Model:
    """More points: those variables have 0 within their bounds, and all between."""
    return model.with_variables([replace(variable, semi=False, lower=min(variable.lower, Fraction(0)), upper=max(variable.upper, Fraction(0)))
                                 if needs_end(variable) else variable for variable in model.variables])
