"""The comment map at the head of a converted program: how its columns come back to the names of the model.

    //@ map 1
    //@ problem NAME
    //@ objective min|max CONSTANT NAME
    //@ variable OFFSET SCALE NAME

One `variable` line per column, in order: the model's value is OFFSET + SCALE times the column's; SCALE is 1, or -1 for
a variable that has an upper bound and no lower one. The name is the rest of the line, so it may hold blanks.
CONSTANT is what the columns don't say of the objective; a model without one has no `objective` line.
"""

from __future__ import annotations

from dataclasses import dataclass
from fractions import Fraction

from ..errors import Place, ReadError

MARK = "//@ "
VERSION = "1"


@dataclass
class Column:
    name: str
    offset: Fraction
    scale: Fraction | int

    def original(self, value: Fraction) -> Fraction:
        """The model's value of the program's."""
        return self.offset + self.scale * value


class NameMap:
    def __init__(self) -> None:
        self.problem = ""
        self.objective: tuple[bool, Fraction, str] | None = None  # (maximise, constant, name)
        self.columns: list[Column] = []

    def text(self) -> str:
        lines = ["map " + VERSION, "problem " + self.problem]
        if self.objective:
            maximise, constant, name = self.objective
            lines.append("objective %s %s %s" % ("max" if maximise else "min", constant, name))
        lines += ["variable %s %s %s" % (column.offset, column.scale, column.name) for column in self.columns]
        return "".join(MARK + line.rstrip() + "\n" for line in lines)


def read_map(text: str) -> NameMap:
    """The map of a program's text; a ReadError if it has none or one that is damaged."""
    found = NameMap()
    version = None
    for place, line in enumerate(text.split("\n"), 1):
        if not line.startswith(MARK):
            continue
        key, _, rest = line[len(MARK):].rstrip("\r").partition(" ")
        if key == "map":
            version = rest
        else:
            _take(found, key, rest, place)
    if version is None:
        raise ReadError("there is no map of names in it: it was not written by latbox-convert")
    if version != VERSION:
        raise ReadError("its map of names has version %s, not %s" % (version, VERSION))
    return found


def _take(found: NameMap, key: str, rest: str, line: int) -> None:
    try:
        if key == "problem":
            found.problem = rest
        elif key == "objective":
            sense, constant, name = rest.split(" ", 2) if rest.count(" ") > 1 else rest.split(" ") + [""]
            found.objective = ({"max": True, "min": False}[sense], Fraction(constant), name)
        elif key == "variable":
            offset, scale, name = rest.split(" ", 2)
            found.columns.append(Column(name, Fraction(offset), Fraction(scale)))
        else:
            raise KeyError(key)
    except (ValueError, KeyError, ZeroDivisionError):
        raise ReadError("this line of the map of names is damaged", Place(line)) from None
