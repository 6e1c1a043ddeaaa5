"""Continuous variables that are not free: an equation in which all others take whole numbers or decimals leaves them decimals, too.

Writers of LP files, which have no rows with two sides of their own in some dialects, state 1 <= x + y <= 3 as x + y - r = 1 with a
continuous r from 0 to 2; modellers write down a total cost as a variable. Such a variable needs no grid from the user, and nothing is
lost by the one that it has by itself: x = (b - sum of a_j x_j) / a is a multiple of the common denominator of b / a and all a_j / a,
times the step of x_j. Where that divides no small power of ten, the variable stays what it is. One that is tied ties others.

The cost is a look at each nonzero of the equations. Semicontinuous variables are left alone, and those that have
digits already.
"""

from __future__ import annotations

import math
from dataclasses import replace
from fractions import Fraction

from .model import INF, Model, Row, Variable, finite

# Decimals, as many as a user may ask for.
MOST_DIGITS = 18


def with_tied_on_grids(model: Model) -> Model:
    """The model with the tied variables as integer ones with digits: it has the same points. The model itself, if there are none."""
    variables = list(model.variables)
    continuous = {j for j, variable in enumerate(variables) if variable.is_continuous}
    equations = [row for row in model.rows if row.lower == row.upper and abs(row.lower) != INF] if continuous else []
    missing = [{j for j, a in row.coefficients.items() if a and j in continuous} for row in equations]
    rows_of: dict[int, list[int]] = {}
    for i, columns in enumerate(missing):
        for j in columns:
            rows_of.setdefault(j, []).append(i)
    ready = [i for i, columns in enumerate(missing) if len(columns) == 1]
    found = False
    while ready:
        i = ready.pop()
        if len(missing[i]) != 1:
            continue  # another equation has tied its last one meanwhile
        j = next(iter(missing[i]))
        digits = digits_of(equations[i], j, variables)
        if digits is None:
            continue
        variables[j] = replace(variables[j], integer=True, digits=digits)
        found = True
        for k in rows_of[j]:
            missing[k].discard(j)
            if len(missing[k]) == 1:
                ready.append(k)
    return model.with_variables(variables) if found else model


def digits_of(row: Row, j: int, variables: list[Variable]) -> int | None:
    """Of the decimals that the equation leaves its variable j, the others being on grids or fixed; None if there are no such."""
    if variables[j].semi or variables[j].digits:
        return None
    a = row.coefficients[j]
    offset = finite(row.lower)
    steps = []
    for k, b in row.coefficients.items():
        if k == j or not b:
            continue
        other = variables[k]
        if other.integer:
            steps.append(b * other.step)
        elif abs(other.lower) == INF:
            return None
        else:
            offset -= b * finite(other.lower)
    common = math.lcm((offset / a).denominator, *((step / a).denominator for step in steps))
    return next((digits for digits in range(MOST_DIGITS + 1) if 10**digits % common == 0), None)
