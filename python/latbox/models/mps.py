#!/usr/bin/env python3
"""An integer program in MPS form, fixed or free, as a .opt file.

    python3 tools/mps_to_opt.py [--digits=N] [--fixed | --free] [--marker-bounds=inf|1] MODEL.mps [PROGRAM.opt]

What cannot be stated is refused with exit status 1, and the line of the model says why. See tools/README.md.
"""

import re
from fractions import Fraction

import converter
from model import INF, Model, Refusal, Row, bound, number

SECTIONS = ("NAME", "OBJSENSE", "OBJSENS", "OBJNAME", "ROWS", "COLUMNS", "RHS", "RANGES", "BOUNDS", "ENDATA")
REFUSED_SECTIONS = {
    "SOS": "special ordered sets", "SOS1": "special ordered sets", "SOS2": "special ordered sets",
    "SETS": "special ordered sets", "QUADOBJ": "a quadratic objective", "QMATRIX": "a quadratic objective",
    "QSECTION": "quadratic terms", "QCMATRIX": "quadratic rows", "CSECTION": "cones", "INDICATORS": "indicator rows",
    "GENCONS": "general constraints", "PWLOBJ": "a piecewise linear objective", "LAZYCONS": "lazy rows",
    "USERCUTS": "user cuts", "SCENARIOS": "scenarios",
}
# First and last column of the six fields of a fixed line, from 0.
FIXED_FIELDS = ((1, 3), (4, 12), (14, 22), (24, 36), (39, 47), (49, 61))
VALUELESS_BOUNDS = ("FR", "MI", "PL", "BV")
VALUE_BOUNDS = ("UP", "LO", "FX", "UI", "LI")


class Line:
    """A data line as its fields: without blanks at the ends, none of them empty but the names of a fixed line."""

    def __init__(self, fields, place):
        self.fields = fields
        self.place = place


def free_fields(text, section):
    del section
    return text.split()


def fixed_fields(text, section):
    """The fields by their columns; the type field of ROWS and BOUNDS comes first, elsewhere there is none."""
    text = text.expandtabs()
    for comment in (FIXED_FIELDS[2][0], FIXED_FIELDS[4][0]):
        if text[comment:comment + 1] == "$":
            text = text[:comment]
    fields = [text[first:last].strip() for first, last in FIXED_FIELDS]
    between = [text[last:first] for (_, last), (first, _) in zip(FIXED_FIELDS, FIXED_FIELDS[1:] + ((len(text), 0),))]
    if any(gap.strip() for gap in between):
        raise Refusal("there is text between the fields of a fixed line")
    if section == "ROWS":
        return fields[:2]
    if section == "BOUNDS":
        return fields[:4] if fields[3] else fields[:3]
    while len(fields) > 3 and not fields[-1] and not fields[-2]:
        fields = fields[:-2]
    return fields[1:]


def read_mps(text, fields=free_fields, marker_bound=INF, warn=lambda message, line=None: None):
    """The model of an MPS text."""
    reader = _Reader(fields, marker_bound, warn)
    place = 0
    for place, line in enumerate(text.split("\n"), 1):
        if not line.strip() or line.startswith("*"):
            continue
        reader.take(line, place)
        if reader.section == "ENDATA":
            return reader.finish(place)
    raise Refusal("the file ends without ENDATA", place)


class _Reader:
    def __init__(self, fields, marker_bound, warn):
        self.fields = fields
        self.marker_bound = marker_bound
        self.warn = warn
        self.model = Model()
        self.section = None
        self.seen = set()
        self.objective_name = None
        self.rows = {}  # name -> Row; a free row has the kind N
        self.kinds = {}
        self.column = None
        self.integer = False
        self.sets = {}
        self.right_sides = {}
        self.ranges = {}
        self.bounded = {}  # position -> kinds of bounds seen
        self.unbounded_markers = []

    def take(self, text, place):
        if text[0] not in " \t":
            self.head(text, place)
        elif self.section in ("ROWS", "COLUMNS", "RHS", "RANGES", "BOUNDS"):
            line = self.line(text, place)
            getattr(self, "take_" + self.section.lower())(line)
        elif self.section in ("OBJSENSE", "OBJSENS"):
            self.sense(text.strip(), place)
        elif self.section == "OBJNAME":
            self.objective_name = text.strip()
        else:
            raise Refusal("a data line outside of all sections", place)

    def line(self, text, place):
        try:
            return Line(self.fields(text, self.section), place)
        except Refusal as refusal:
            raise Refusal(str(refusal), place) from None

    # ------------------------------------------------------------- section heads

    def head(self, text, place):
        words = text.split(None, 1)
        key, rest = words[0].upper(), words[1].strip() if len(words) > 1 else ""
        if key in REFUSED_SECTIONS:
            raise Refusal("%s: %s cannot be stated in a .opt file" % (key, REFUSED_SECTIONS[key]), place)
        if key not in SECTIONS:
            raise Refusal("unknown section %s" % key, place)
        if key in self.seen:
            raise Refusal("section %s stands twice" % key, place)
        if key in ("COLUMNS", "RHS", "RANGES", "BOUNDS") and "ROWS" not in self.seen:
            raise Refusal("section %s before ROWS" % key, place)
        if key in ("RHS", "RANGES", "BOUNDS") and "COLUMNS" not in self.seen:
            raise Refusal("section %s before COLUMNS" % key, place)
        self.seen.add(key)
        self.section = key
        if key == "NAME":
            self.model.name = rest
        elif key in ("OBJSENSE", "OBJSENS") and rest:
            self.sense(rest, place)
        elif key == "OBJNAME" and rest:
            self.objective_name = rest

    def sense(self, text, place):
        word = text.upper()
        if word not in ("MAX", "MAXIMIZE", "MAXIMISE", "MIN", "MINIMIZE", "MINIMISE"):
            raise Refusal("%r is no sense of an objective" % text, place)
        self.model.maximise = word.startswith("MAX")

    # ------------------------------------------------------------- rows and columns

    def take_rows(self, line):
        if len(line.fields) != 2:
            raise Refusal("a line of ROWS has a type and a name", line.place)
        kind, name = line.fields[0].upper(), line.fields[1]
        if kind not in ("N", "L", "G", "E"):
            raise Refusal("unknown type of row %r" % line.fields[0], line.place)
        if not name:
            raise Refusal("a row has an empty name", line.place)
        if name in self.rows:
            raise Refusal("row %s stands twice" % name, line.place)
        self.rows[name] = Row(name, line.place)
        self.kinds[name] = kind

    def take_columns(self, line):
        fields = line.fields
        if len(fields) >= 3 and fields[1].strip("'") == "MARKER":
            self.marker(fields, line.place)
            return
        if len(fields) not in (3, 5):
            raise Refusal("a line of COLUMNS has a column and one or two pairs of row and value", line.place)
        if self.column is None or self.model.variables[self.column].name != fields[0]:
            self.column = self.model.add_variable(fields[0], line.place)
            self.model.variables[self.column].integer = self.integer
        for name, text in zip(fields[1::2], fields[2::2]):
            coefficients = self.row(name, line.place).coefficients
            if self.column in coefficients:
                raise Refusal("column %s stands twice in row %s" % (fields[0], name), line.place)
            coefficients[self.column] = number(text, line.place)

    def marker(self, fields, place):
        word = [field for field in fields[2:] if field][-1:] or [""]
        word = word[0].strip("'")
        if word not in ("INTORG", "INTEND"):
            raise Refusal("marker %s: only INTORG and INTEND can be stated in a .opt file" % word, place)
        if (word == "INTORG") == self.integer:
            raise Refusal("marker %s stands twice" % word, place)
        self.integer = word == "INTORG"

    def row(self, name, place):
        if name not in self.rows:
            raise Refusal("unknown row %r" % name, place)
        return self.rows[name]

    # ------------------------------------------------------------- right-hand sides and ranges

    def pairs(self, line):
        """The pairs of row and value of a line, whose set may be left out; a second set is refused."""
        fields = line.fields
        if len(fields) not in (2, 3, 4, 5):
            raise Refusal("a line of %s has a set and one or two pairs of row and value" % self.section, line.place)
        self.one_set(fields[0] if len(fields) % 2 else "", line.place)
        fields = fields[len(fields) % 2:]
        return [(self.row(name, line.place), number(text, line.place))
                for name, text in zip(fields[::2], fields[1::2])]

    def one_set(self, name, place):
        if self.sets.setdefault(self.section, name) != name:
            raise Refusal("a second set in %s, %r beside %r: leave one" % (self.section, name, self.sets[self.section]),
                          place)

    def take_rhs(self, line):
        for row, value in self.pairs(line):
            if row.name in self.right_sides:
                raise Refusal("row %s has two right-hand sides" % row.name, line.place)
            self.right_sides[row.name] = value

    def take_ranges(self, line):
        for row, value in self.pairs(line):
            if row.name in self.ranges:
                raise Refusal("row %s has two ranges" % row.name, line.place)
            if self.kinds[row.name] == "N":
                raise Refusal("row %s is free and cannot have a range" % row.name, line.place)
            self.ranges[row.name] = value

    # ------------------------------------------------------------- bounds

    def take_bounds(self, line):
        kind = line.fields[0].upper()
        if kind in ("SC", "SI"):
            raise Refusal("%s: a semicontinuous variable cannot be stated in a .opt file" % kind, line.place)
        if kind not in VALUELESS_BOUNDS + VALUE_BOUNDS:
            raise Refusal("unknown type of bound %r" % line.fields[0], line.place)
        name, text = self.bound_fields(kind, line)
        position = self.model.position(name)
        if position is None:
            raise Refusal("unknown column %r" % name, line.place)
        variable = self.model.variables[position]
        kinds = self.bounded.setdefault(position, set())
        if kind in kinds:
            raise Refusal("column %s has two bounds of type %s" % (name, kind), line.place)
        variable.line = line.place
        if kind in VALUELESS_BOUNDS:
            self.valueless_bound(variable, kind)
        else:
            self.value_bound(variable, kind, kinds, bound(text, line.place), line.place)
        kinds.add(kind)

    def bound_fields(self, kind, line):
        """(column, value or None): the set may be left out, and so may the value where it has no meaning."""
        fields = line.fields[1:]
        if kind in VALUE_BOUNDS:
            if len(fields) not in (2, 3):
                raise Refusal("a bound of type %s has a set, a column and a value" % kind, line.place)
            self.one_set(fields[0] if len(fields) == 3 else "", line.place)
            return fields[-2], fields[-1]
        if len(fields) not in (1, 2, 3):
            raise Refusal("a bound of type %s has a set and a column" % kind, line.place)
        with_set = len(fields) == 3 or len(fields) == 2 and self.model.position(fields[1]) is not None
        self.one_set(fields[0] if with_set else "", line.place)
        return fields[1 if with_set else 0], None

    def valueless_bound(self, variable, kind):
        if kind == "BV":
            variable.integer = True
            variable.lower, variable.upper = Fraction(0), Fraction(1)
        if kind in ("FR", "MI"):
            variable.lower = -INF
        if kind in ("FR", "PL"):
            variable.upper = INF

    def value_bound(self, variable, kind, kinds, value, place):
        if kind in ("LI", "UI"):
            variable.integer = True
        if kind in ("LO", "LI", "FX"):
            variable.lower = value
        if kind in ("UP", "UI", "FX"):
            variable.upper = value
        if kind in ("UP", "UI") and value < 0 and not kinds & {"LO", "LI", "MI", "FR", "BV", "FX"}:
            # The oldest readers took a negative upper bound alone for a variable without a lower one.
            self.warn("%s has a negative upper bound and no lower one before it: taken as not bounded below" %
                      variable.name, place)
            variable.lower = -INF

    # ------------------------------------------------------------- the end

    def finish(self, place):
        if self.integer:
            raise Refusal("marker INTORG without INTEND", place)
        if "COLUMNS" not in self.seen:
            raise Refusal("there is no section COLUMNS", place)
        self.marker_bounds()
        objective = self.choose_objective(place)
        for name, row in self.rows.items():
            if name == objective:
                self.model.objective = row
                self.model.constant = -self.right_sides.get(name, Fraction(0))
            elif self.kinds[name] == "N":
                self.model.left_out.append(name)
            else:
                self.sides(row)
                self.model.rows.append(row)
        return self.model

    def choose_objective(self, place):
        free = [name for name, kind in self.kinds.items() if kind == "N"]
        if self.objective_name is None:
            return free[0] if free else None
        if self.objective_name not in free:
            raise Refusal("OBJNAME %s is no free row" % self.objective_name, place)
        return self.objective_name

    def marker_bounds(self):
        """Integer columns between markers without any bound: the dialects differ, so it is said what is done."""
        bare = [v for j, v in enumerate(self.model.variables) if v.integer and j not in self.bounded]
        for variable in bare:
            variable.upper = self.marker_bound
        if bare:
            self.warn("%d integer column(s) without a bound, the first is %s: taken as 0 to %s (--marker-bounds)" %
                      (len(bare), bare[0].name, self.marker_bound), bare[0].line)

    def sides(self, row):
        right = self.right_sides.get(row.name, Fraction(0))
        kind = self.kinds[row.name]
        row.lower = -INF if kind == "L" else right
        row.upper = INF if kind == "G" else right
        if row.name not in self.ranges:
            return
        width = abs(self.ranges[row.name])
        if kind == "L" or kind == "E" and self.ranges[row.name] < 0:
            row.lower = right - width
        else:
            row.upper = right + width


def read_either(text, options, warn):
    """Free form reads every fixed file whose names hold no blanks; where it fails, the fixed columns may fit."""
    limit = INF if options.marker_bounds == "inf" else Fraction(1)
    if options.form:
        return read_mps(text, {"free": free_fields, "fixed": fixed_fields}[options.form], limit, warn)
    notes = []
    try:
        model = read_mps(text, free_fields, limit, lambda *note: notes.append(note))
    except Refusal as refusal:
        if not re.search(r"has a|unknown|not a number", str(refusal)):
            raise
        notes = []
        try:
            model = read_mps(text, fixed_fields, limit, lambda *note: notes.append(note))
        except Refusal:
            raise refusal from None
    for note in notes:
        warn(*note)
    return model


def add_options(parser):
    form = parser.add_mutually_exclusive_group()
    form.add_argument("--fixed", dest="form", action="store_const", const="fixed",
                      help="fields by their columns; names may hold blanks")
    form.add_argument("--free", dest="form", action="store_const", const="free", help="fields by blanks")
    parser.add_argument("--marker-bounds", choices=("inf", "1"), default="inf",
                        help="upper bound of integer columns that have no bound at all; default inf")


if __name__ == "__main__":
    converter.run(read_either, "An integer program in MPS form as a .opt file.", add_options)
