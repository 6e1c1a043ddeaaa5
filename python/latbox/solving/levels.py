"""The N best points: level by level of the objective.

The complete engine lists all best points; then those with the next worse objective are the best ones of a program in which the
objective must be worse by one unit, and so on until there are enough.

Where a level cannot be listed, for nothing bounds it, and the objective has a best value all the same, the best level has points
without end: a direction that the rows leave open and that does not touch the objective leads from each of its points to others. Then
a large enough box around one of them has as many as are wanted.
"""

from __future__ import annotations

import math
from fractions import Fraction

from ..models.model import INF
from .program import Column, Condition, Program

# From a best point, in units of each column. The least that has enough is taken.
DISTANCES = [10**3, 10**6, 10**12]


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


def near(program: Program, best: list[Fraction], distance: int) -> Program:
    """The points that are as good as this one and not farther from it than `distance`, in the columns that are open, without a
    target. Requires levels, or no target."""
    columns = [Column(middle - distance if column.lower == -INF else column.lower,
                      middle + distance if column.upper == INF else column.upper, column.digits)
               for column, middle in zip(program.columns, best)]
    conditions = program.conditions[:]
    for target in program.targets:
        value = sum((a * best[j] for j, a in target.terms.items()), Fraction(0))
        conditions.append(Condition(target.terms, value, value, "best"))
    return Program(columns, conditions, [])


def unit(program: Program) -> Fraction:
    """Target norms are multiples of it, up to a constant that the grid's origin makes 0."""
    steps = [Fraction(a) / 10 ** program.columns[j].digits for j, a in program.targets[0].terms.items()]
    below = math.lcm(*(a.denominator for a in steps))
    return Fraction(math.gcd(*(int(a * below) for a in steps)), below)
