"""Which options the search gets, by the rank of the lattice and the kind of program. All of it is measured: docs/solve.md has the
table, docs/benchmarks.md the programs.
"""

from __future__ import annotations

from typing import NamedTuple

from .program import Program


class Tuning(NamedTuple):
    kind: str
    options: dict[str, int]


# Equations that have numbers almost everywhere, columns of 0 and 1, no objective: reduction finds the points, and what it costs
# to look at each branch of a larger block is less than what more iterations cost.
MARKET_SPLIT = Tuning("market split", {"eprune": 0, "beta": 30})
# One or two equations with large numbers and wide columns.
OTHER = Tuning("general", {})

TABLE = [MARKET_SPLIT, OTHER]

LEAST_EQUATIONS = 2
LEAST_FILLED = 0.5


def rank(program: Program) -> int:
    """Of the lattice, if no equation depends on others."""
    return max(0, len(program.columns) - sum(row.is_equation() for row in program.conditions))


def tuning(program: Program) -> Tuning:
    """For a rewritten program."""
    rows = program.conditions
    cells = len(rows) * len(program.columns)
    filled = sum(len(row.terms) for row in rows)
    binary = all(column.upper == 1 for column in program.columns)
    if (len(rows) >= LEAST_EQUATIONS and all(row.is_equation() for row in rows) and binary and not program.targets
            and filled >= LEAST_FILLED * cells):
        return MARKET_SPLIT
    return OTHER
