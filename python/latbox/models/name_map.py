"""The comment map at the head of a converted program: how its columns come back to the names of the model.

    //@ map 1
    //@ problem NAME
    //@ objective min|max CONSTANT NAME
    //@ variable OFFSET SCALE NAME

One `variable` line per column, in order: the model's value is OFFSET + SCALE times the column's; SCALE is 1, or -1 for
a variable that has an upper bound and no lower one. The name is the rest of the line, so it may hold blanks.
CONSTANT is what the columns don't say of the objective; a model without one has no `objective` line.
"""

from fractions import Fraction

from model import Refusal

MARK = "//@ "
VERSION = "1"


class Column:
    def __init__(self, name, offset, scale):
        self.name = name
        self.offset = offset
        self.scale = scale

    def original(self, value):
        return self.offset + self.scale * value


class NameMap:
    def __init__(self):
        self.problem = ""
        self.objective = None  # (maximise, constant, name)
        self.columns = []

    def text(self):
        lines = ["map " + VERSION, "problem " + self.problem]
        if self.objective:
            maximise, constant, name = self.objective
            lines.append("objective %s %s %s" % ("max" if maximise else "min", constant, name))
        lines += ["variable %s %s %s" % (column.offset, column.scale, column.name) for column in self.columns]
        return "".join(MARK + line.rstrip() + "\n" for line in lines)


def read_map(text):
    """The map of a program's text; a Refusal if it has none or one that is damaged."""
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
        raise Refusal("there is no map of names in it: it was not written by mps_to_opt.py or lp_to_opt.py")
    if version != VERSION:
        raise Refusal("its map of names has version %s, not %s" % (version, VERSION))
    return found


def _take(found, key, rest, line):
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
        raise Refusal("this line of the map of names is damaged", line) from None
