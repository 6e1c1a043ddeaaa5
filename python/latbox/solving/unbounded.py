"""Whether an objective has no end: a ray is sought, along which each point leads to better ones.

A step of the ray is a whole point of a cone: what a row or a bound keeps from growing must not grow, and the objective gets
better by one at least. Scaled up, each rational ray is such a point, so that the complete engine answers exactly: with a ray, or
with the proof that there is none. With a point of the model, both together prove that the objective is unbounded; each is
checked.
"""

from __future__ import annotations

import math
from fractions import Fraction

from ..models.model import INF, Bound
from .program import Column, Condition, Program, Target, Terms


def is_open(program: Program) -> bool:
    """Whether a column has an end that nothing states."""
    return any(column.lower == -INF or column.upper == INF for column in program.columns)


def ray_program(program: Program) -> Program | None:
    """The cone of the rays; None where there can be none. Its columns are those of the program."""
    linear = [target for target in program.targets if abs(target.wanted) == INF]
    if not is_open(program) or not linear:
        return None
    columns = [Column(growth(column.lower, -INF), growth(column.upper, INF), column.digits) for column in program.columns]
    conditions = [Condition(row.terms, growth(row.lower, -INF), growth(row.upper, INF), row.name) for row in program.conditions]
    # A distance that grows along the ray would have to be weighed against the rest: rays along which none does are enough.
    conditions += [Condition(target.terms, Fraction(0), Fraction(0)) for target in program.targets if target not in linear]
    gain: Terms = {}
    for target in linear:
        for j, a in target.terms.items():
            gain[j] = gain.get(j, Fraction(0)) + (-a if target.wanted == INF else a)
    gain = {j: a for j, a in gain.items() if a}
    if not gain:
        return None
    conditions.append(Condition(gain, -INF, Fraction(-1), "better"))
    conditions = [row for row in conditions if row.lower != -INF or row.upper != INF]
    # With a target, points of open programs are sought in growing boxes.
    return Program(columns, conditions, [Target(gain, INF)])


def any_point(program: Program) -> Program:
    """The same points, with a target if there is none: points of open programs are sought in growing boxes then."""
    if program.targets or not is_open(program):
        return program
    j = next(j for j, column in enumerate(program.columns) if column.lower == -INF or column.upper == INF)
    return Program(program.columns, program.conditions, [Target({j: Fraction(1)}, -INF)])


def whole(ray: list[Fraction]) -> list[Fraction]:
    """The same ray in whole numbers, where its columns take decimals."""
    scale = math.lcm(*(step.denominator for step in ray))
    return [step * scale for step in ray]


def growth(end: Bound, infinity: float) -> Bound:
    """Of a bound or side, that of a ray: it may not move towards an end that there is."""
    return end if end == infinity else Fraction(0)
