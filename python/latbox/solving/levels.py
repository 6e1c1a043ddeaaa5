"""The N best points: level by level of the objective.

The complete engine lists all best points; then those with the next worse objective are the best ones of a program in which the
objective must be worse by one unit, and so on until there are enough.
"""

from __future__ import annotations

import math
from fractions import Fraction

from ..models.model import INF
from .program import Condition, Program


def has_levels(program: Program) -> bool:
    """Whether the objective is one linear row, so that a row can ask for worse ones."""
    return len(program.targets) == 1 and abs(program.targets[0].wanted) == INF


def worse_than(program: Program, norm: Fraction) -> Program:
    """The points with a target norm above `norm`. Requires levels."""
    target = program.targets[0]
    sign = -1 if target.wanted == INF else 1
    terms = {j: sign * a for j, a in target.terms.items()}
    return Program(program.columns, program.conditions + [Condition(terms, norm + unit(program), INF, "worse")],
                   program.targets)


def unit(program: Program) -> Fraction:
    """Target norms are multiples of it, up to a constant that the grid's origin makes 0."""
    steps = [Fraction(a) / 10 ** program.columns[j].digits for j, a in program.targets[0].terms.items()]
    below = math.lcm(*(a.denominator for a in steps))
    return Fraction(math.gcd(*(int(a * below) for a in steps)), below)
