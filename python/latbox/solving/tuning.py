"""Which options the search gets, by the kind of program and the rank of the lattice. All of it is measured, by bench/tuning:
docs/solve.md has the table, docs/benchmarks.md the figures.
"""

from __future__ import annotations

from typing import NamedTuple

from .program import Program


class Tuning(NamedTuple):
    kind: str
    most_rank: int | None  # it holds up to this rank; None: for any
    options: dict[str, int]


MARKET_SPLIT, ONE_EQUATION, KNAPSACKS, GENERAL = "market split", "one equation", "knapsacks", "general"

# The first row of the kind that the rank lets through, else the last one. Where equations have numbers almost everywhere and columns
# are 0 or 1, reduction finds the points, and to look at each branch of a block costs less than more iterations do. Beyond these ranks
# there are designs and sums of powers, whose numbers are small or of a pattern: there the defaults are better. The best points of
# knapsacks lie in the corners of the box, and the metric that is bent towards the box finds them.
TABLE = [
    Tuning(MARKET_SPLIT, 40, {"eprune": 0, "beta": 30}),
    Tuning(MARKET_SPLIT, 60, {"eprune": 0}),
    Tuning(ONE_EQUATION, 60, {"eprune": 0}),
    Tuning(KNAPSACKS, 60, {"scale": 1}),
    Tuning(GENERAL, None, {}),
]

LEAST_FILLED = 0.5


def rank(program: Program) -> int:
    """Of the lattice, if no equation depends on others."""
    return max(0, len(program.columns) - sum(row.is_equation() for row in program.conditions))


def tuning(program: Program) -> Tuning:
    """For a rewritten program."""
    kind, size = kind_of(program), rank(program)
    rows = (row for row in TABLE if row.kind == kind and (row.most_rank is None or size <= row.most_rank))
    return next(rows, TABLE[-1])


def kind_of(program: Program) -> str:
    rows = program.conditions
    equations = sum(row.is_equation() for row in rows)
    filled = sum(len(row.terms) for row in rows)
    binary = all(column.upper == 1 for column in program.columns)
    if not rows or not binary or filled < LEAST_FILLED * len(rows) * len(program.columns):
        return GENERAL
    if equations == len(rows) and not program.targets:
        return ONE_EQUATION if equations == 1 else MARKET_SPLIT
    return KNAPSACKS if equations == 0 and program.targets else GENERAL
