"""Points that need no engine: each column at its value nearest to 0, at its lower end, at its upper end.

One of them is often a point where all rows have one side: a knapsack has the empty one, a cover the full one. Where both engines are
lost in a large model, the answer is at least not `unknown`. It costs a look at the rows for each.
"""

from __future__ import annotations

from collections.abc import Iterator
from fractions import Fraction

from ..models.model import INF
from .program import Column, Program


def corners(program: Program) -> Iterator[list[Fraction]]:
    """They are in the box; whether the rows hold is for others to see. The column's ends must be on its grid."""
    shown: list[list[Fraction]] = []
    for corner in ([nearest(column) for column in program.columns], [lower(column) for column in program.columns],
                   [upper(column) for column in program.columns]):
        if corner not in shown:
            shown.append(corner)
            yield corner


def nearest(column: Column) -> Fraction:
    """To 0."""
    return Fraction(max(column.lower, min(column.upper, Fraction(0))))


def lower(column: Column) -> Fraction:
    return nearest(column) if column.lower == -INF else Fraction(column.lower)


def upper(column: Column) -> Fraction:
    return nearest(column) if column.upper == INF else Fraction(column.upper)
