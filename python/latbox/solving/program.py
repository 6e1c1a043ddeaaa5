"""A program as the engines read it: columns on decimal grids, rows with sides, targets; and its .opt text.

The text is dense, one number for each column in each row, so its size is the product of both.
"""

from __future__ import annotations

from collections.abc import Sequence
from dataclasses import dataclass, field
from fractions import Fraction
from typing import Union

from ..models.model import INF, Bound
from . import exact

Number = Union[int, Fraction]
Terms = dict[int, Number]  # coefficients by column; none of them is 0

# Numbers in the text of a program that the engines cannot be asked to read.
MOST_CELLS = 40_000_000
# That take them a second to read and prepare: worth a closer look at what can be left out.
MANY_CELLS = 1_000_000


@dataclass
class Column:
    """A column takes multiples of 1 / 10**digits from lower to upper."""

    lower: Bound
    upper: Bound
    digits: int = 0


@dataclass
class Condition:
    """lower <= terms <= upper."""

    terms: Terms
    lower: Bound
    upper: Bound
    name: str = ""

    def is_equation(self) -> bool:
        return self.lower == self.upper


@dataclass
class Target:
    """terms are minimised (wanted -INF), maximised (INF), or brought near to a value."""

    terms: Terms
    wanted: Bound


@dataclass
class Program:
    columns: list[Column] = field(default_factory=list)
    conditions: list[Condition] = field(default_factory=list)
    targets: list[Target] = field(default_factory=list)

    def cells(self) -> int:
        return (len(self.conditions) + len(self.targets) + 1) * len(self.columns)

    def text(self, notes: str = "") -> str:
        """The program as a .opt file. Requires a column; `notes` are lines of comments."""
        equations = [row for row in self.conditions if row.is_equation()]
        inequations = [row for row in self.conditions if not row.is_equation()]
        if not equations and not inequations and not self.targets:
            # The format finds the number of columns in the rows, so there must be one.
            equations = [Condition({}, 0, 0, "no rows: every point of the box is feasible")]
        items = [
            vector([target.wanted for target in self.targets]),
            self._matrix([(target.terms, "") for target in self.targets]),
            self._matrix([(row.terms, row.name) for row in equations]),
            vector([row.lower for row in equations]),
            self._matrix([(row.terms, row.name) for row in inequations]),
            vector([row.lower for row in inequations]),
            vector([row.upper for row in inequations]),
            vector([column.digits for column in self.columns]),
            vector([column.lower for column in self.columns]),
            vector([column.upper for column in self.columns]),
        ]
        return notes + "\n".join(items) + "\n"

    def _matrix(self, rows: list[tuple[Terms, str]]) -> str:
        if not rows:
            return "[ ]"
        lines = ["["]
        for terms, name in rows:
            cells = ["0"] * len(self.columns)
            for j, a in terms.items():
                cells[j] = exact.text(a)
            lines.append("  [ %s ]" % " ".join(cells) + (" // " + comment(name) if name else ""))
        return "\n".join(lines + ["]"])


def vector(values: Sequence[Bound | int]) -> str:
    return "[ %s]" % "".join(number_text(value) + " " for value in values)


def number_text(value: Bound) -> str:
    if value == INF:
        return "inf"
    return "-inf" if value == -INF else exact.text(Fraction(value))


def comment(name: str) -> str:
    """A name as part of a line comment."""
    return name.replace("\n", " ").replace("\r", " ")
