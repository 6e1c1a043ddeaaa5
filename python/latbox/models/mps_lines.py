"""A data line of an MPS file as its fields, in free or in fixed form.

A field of the fixed form stands in fixed columns, one of the free form is a word. In both a `$` where a name would stand
in field 3 or 5, or behind all fields, begins a comment, unless a row or column has just that name: free files have such
names, and in the fixed form nothing else can be meant. Fields are counted from 0, as they are in `fields`.
"""

from __future__ import annotations

import re
from typing import Container

from ..errors import Place, ReadError

# First and last column of the six fields of a fixed line, from 0.
FIXED_FIELDS = ((1, 3), (4, 12), (14, 22), (24, 36), (39, 47), (49, 61))
WORD = re.compile(r"\S+")
# The first field of a free line that may be a comment; in the sections of values it is the second.
FIRST_COMMENT = {"ROWS": 2, "BOUNDS": 2}

class Line:
    """The fields of a data line: without blanks at the ends, none of them empty but the names of a fixed line."""

    __slots__ = ("text", "number", "fields", "_first")

    def __init__(self, text: str, number: int, fields: list[str], first: int | None = None) -> None:
        self.text = text
        self.number = number
        self.fields = fields
        self._first = first  # which of the fixed fields is the first, None in free form

    def place(self, k: int | None = None) -> Place:
        """The place of field k, or of the line. Found when it is asked for: most lines are never asked."""
        if k is None:
            return Place(self.number)
        if self._first is not None:
            first, last = FIXED_FIELDS[self._first + k]
            field = self.text[first:last]
            return Place(self.number, first + (len(field) - len(field.lstrip()) if field.strip() else 0) + 1)
        return Place(self.number, [match.start() + 1 for match in WORD.finditer(self.text)][k])

    def error(self, message: str, k: int | None = None) -> ReadError:
        return ReadError(message, self.place(k))


def free_line(text: str, number: int, section: str, names: Container[str]) -> Line:
    fields = text.split()
    if "$" in text:
        for k in range(FIRST_COMMENT.get(section, 1), len(fields)):
            if fields[k].startswith("$") and fields[k] not in names:
                return Line(text, number, fields[:k])
    return Line(text, number, fields)


def fixed_line(text: str, number: int, section: str, names: Container[str]) -> Line:
    """The fields by their columns; the type field of ROWS and BOUNDS comes first, elsewhere there is none."""
    text = text.expandtabs()
    if "$" in text:
        text = _without_comment(text, names)
    fields = [text[first:last].strip() for first, last in FIXED_FIELDS]
    between = text[3:4] + text[12:14] + text[22:24] + text[36:39] + text[47:49] + text[61:]
    if between and not between.isspace():
        raise ReadError("there is text between the fields of a fixed line", Place(number, _first_between(text) + 1))
    if section == "ROWS":
        used = 0, 2
    elif section == "BOUNDS":
        used = 0, 4 if fields[3] else 3
    else:
        last = len(fields)
        while last > 4 and not fields[last - 1] and not fields[last - 2]:
            last -= 2
        used = 1, last
    return Line(text, number, fields[slice(*used)], used[0])


def _first_between(text: str) -> int:
    """Where the first character stands that is in no field."""
    return next(at for at, letter in enumerate(text)
                if not letter.isspace() and not any(first <= at < last for first, last in FIXED_FIELDS))


def _without_comment(text: str, names: Container[str]) -> str:
    """It begins in field 3, or behind field 4."""
    for at, letter in enumerate(text):
        if letter == "$" and (at == FIXED_FIELDS[2][0] or at >= FIXED_FIELDS[3][1]) and text[at - 1].isspace():
            last = next((end for first, end in FIXED_FIELDS if at == first), len(text))
            if text[at:last].strip() not in names:
                return text[:at].rstrip()
    return text
