"""Models in MPS form, fixed or free.

The form has no standard and many dialects. What is read beyond the oldest text: integer columns between markers whose
INTEND is missing, `$` comments and repeated names left blank (mps_lines.py), the sense of the objective in a section, in
its head line, or in a comment `*SENSE:Maximize`, bounds of semicontinuous and semi-integer columns. Where readers differ,
a note of the model says what is done; what could mean two things is refused.

A text is read in free form first, which reads every fixed file whose names hold no blanks and stand on every line; where
it fails, the fixed columns may fit. If neither does, the error of the one that got further is the likelier one.
"""

from __future__ import annotations

import re
from dataclasses import dataclass, replace
from fractions import Fraction
from typing import Container

from ..errors import Place, ReadError
from .model import INF, Bound, Model, Row, bound, finite, limited, number
from .mps_lines import Line, fixed_line, free_line

SECTIONS = ("NAME", "OBJSENSE", "OBJSENS", "OBJNAME", "ROWS", "COLUMNS", "RHS", "RANGES", "BOUNDS", "ENDATA")
REFUSED_SECTIONS = {
    "SOS": "special ordered sets", "SOS1": "special ordered sets", "SOS2": "special ordered sets",
    "SETS": "special ordered sets", "QUADOBJ": "a quadratic objective", "QMATRIX": "a quadratic objective",
    "QSECTION": "quadratic terms", "QCMATRIX": "quadratic rows", "CSECTION": "cones", "INDICATORS": "indicator rows",
    "GENCONS": "general constraints", "PWLOBJ": "a piecewise linear objective", "LAZYCONS": "lazy rows",
    "USERCUTS": "user cuts", "SCENARIOS": "scenarios",
}
SENSES = {word + end: word == "MAX" for word in ("MAX", "MIN") for end in ("", "IMIZE", "IMISE", "IMUM")}
SENSE_COMMENT = re.compile(r"\*\s*SENSE\s*:\s*(\w+)\s*\Z", re.IGNORECASE)
VALUELESS_BOUNDS = ("FR", "MI", "PL", "BV")
VALUE_BOUNDS = ("UP", "LO", "FX", "UI", "LI", "SC", "SI")
# The types that say where a column begins, and where it ends.
LOWER_BOUNDS = {"LO", "LI", "FX", "MI", "FR", "BV"}
UPPER_BOUNDS = {"UP", "UI", "FX", "PL", "FR", "BV", "SC", "SI"}
DATA_SECTIONS = ("ROWS", "COLUMNS", "RHS", "RANGES", "BOUNDS")
LINES = {"free-mps": free_line, "fixed-mps": fixed_line}


@dataclass(frozen=True)
class MpsDialect:
    """`form` is mps (either), free-mps or fixed-mps; `marker_bound` the upper bound of an integer column between markers
    that has no bound at all: 1, as the oldest readers had it and most have, or INF."""

    form: str = "mps"
    marker_bound: Bound = Fraction(1)

    def in_form(self, form: str) -> MpsDialect:
        return replace(self, form=form)


def read_mps(text: str, dialect: MpsDialect = MpsDialect()) -> Model:
    """The model of an MPS text."""
    if dialect.form != "mps":
        return _Reader(dialect).read(text)
    try:
        return _Reader(dialect.in_form("free-mps")).read(text)
    except ReadError as error:
        free_error = error
    try:
        return _Reader(dialect.in_form("fixed-mps")).read(text)
    except ReadError as fixed_error:
        further = free_error.place is None or fixed_error.place and fixed_error.place.line > free_error.place.line
        raise (fixed_error if further else free_error) from None


class _Reader:
    def __init__(self, dialect: MpsDialect) -> None:
        self.dialect = dialect
        self.line_of = LINES[dialect.form]
        self.model = Model()
        self.section = ""
        self.seen: set[str] = set()
        self.sense_place: Place | None = None
        self.comment_sense: tuple[bool, Place] | None = None
        self.objective_name: tuple[str, Place] | None = None
        self.rows: dict[str, Row] = {}
        self.kinds: dict[str, str] = {}  # of the rows: N, L, G, E
        self.column = -1
        self.column_name = ""
        self.marker: Place | None = None  # the INTORG that is open
        self.sets: dict[str, str] = {}
        self.right_sides: dict[str, str] = {}  # as they are written; their numbers are in `values`
        self.ranges: dict[str, str] = {}
        self.bounded: dict[int, set[str]] = {}  # position -> kinds of bounds seen
        self.values: dict[str, Fraction] = {}  # numbers of the text repeat, and making a Fraction is dear

    def read(self, text: str) -> Model:
        place = 0
        for place, line in enumerate(text.split("\n"), 1):
            if line.startswith("*"):
                self.comment(line, place)
            elif line and not line.isspace():
                self.take(line, place)
                if self.section == "ENDATA":
                    return self.finish(place)
        raise ReadError("the file ends without ENDATA", Place(place))

    def take(self, text: str, place: int) -> None:
        if text[0] not in " \t":
            self.head(text, place)
        elif self.section in DATA_SECTIONS:
            names: Container[str] = self.model.names() if self.section == "BOUNDS" else self.rows
            getattr(self, "take_" + self.section.lower())(self.line_of(text, place, self.section, names))
        elif self.section in ("OBJSENSE", "OBJSENS"):
            self.sense(text.strip(), _at(text, text.strip(), place))
        elif self.section == "OBJNAME":
            self.objective_name = text.strip(), _at(text, text.strip(), place)
        else:
            raise ReadError("a data line outside of all sections", Place(place))

    def number(self, line: Line, k: int) -> Fraction:
        text = line.fields[k]
        value = self.values.get(text)
        if value is None:
            try:
                value = self.values[text] = number(text)
            except ReadError as error:
                raise line.error(error.message, k) from None
        return value

    # ------------------------------------------------------------- section heads

    def head(self, text: str, place: int) -> None:
        words = text.split(None, 1)
        key, rest = words[0].upper(), words[1].strip() if len(words) > 1 else ""
        if self.section in ("OBJSENSE", "OBJSENS") and key in SENSES and not rest:
            self.sense(key, Place(place, 1))
            return
        self.check_head(key, Place(place, 1))
        self.seen.add(key)
        self.section = key
        if key == "NAME":
            # Some writers say behind the name that the form is free.
            self.model.name = re.sub(r"(^|\s+)FREE(IEEE)?$", "", rest)
        elif key in ("OBJSENSE", "OBJSENS") and rest:
            self.sense(rest, _at(text, rest, place))
        elif key == "OBJNAME" and rest:
            self.objective_name = rest, _at(text, rest, place)

    def check_head(self, key: str, place: Place) -> None:
        if key in REFUSED_SECTIONS:
            raise ReadError("section %s is not read: %s" % (key, REFUSED_SECTIONS[key]), place)
        if key not in SECTIONS:
            raise ReadError("unknown section %s" % key, place)
        if key in self.seen:
            raise ReadError("section %s stands twice" % key, place)
        if key in ("COLUMNS", "RHS", "RANGES", "BOUNDS") and "ROWS" not in self.seen:
            raise ReadError("section %s before ROWS" % key, place)
        if key in ("RHS", "RANGES", "BOUNDS") and "COLUMNS" not in self.seen:
            raise ReadError("section %s before COLUMNS" % key, place)

    def sense(self, text: str, place: Place) -> None:
        if text.upper() not in SENSES:
            raise ReadError("%r is no sense of an objective" % text, place)
        if self.sense_place:
            raise ReadError("a second sense of the objective", place)
        self.sense_place = place
        self.model.maximise = SENSES[text.upper()]

    def comment(self, text: str, place: int) -> None:
        """A comment says nothing, but for the sense of the objective before the rows begin, where a writer leaves it."""
        match = SENSE_COMMENT.match(text) if not self.rows else None
        if match and match[1].upper() in SENSES:
            self.comment_sense = SENSES[match[1].upper()], Place(place, 1)

    # ------------------------------------------------------------- rows and columns

    def take_rows(self, line: Line) -> None:
        fields = line.fields
        if len(fields) != 2:
            raise line.error("a line of ROWS has a type and a name")
        kind, name = fields[0].upper(), fields[1]
        if kind not in ("N", "L", "G", "E"):
            raise line.error("unknown type of row %r" % fields[0], 0)
        if not name:
            raise line.error("a row has an empty name", 1)
        if name in self.rows:
            raise line.error("row %s stands twice" % name, 1)
        self.rows[name] = Row(name, line.place(1))
        self.kinds[name] = kind

    def take_columns(self, line: Line) -> None:
        fields = line.fields
        if len(fields) >= 3 and fields[1].strip("'") == "MARKER":
            self.take_marker(line)
            return
        if len(fields) not in (3, 5):
            raise line.error("a line of COLUMNS has a column and one or two pairs of row and value")
        self.take_column_name(line)
        for k in range(1, len(fields), 2):
            row = self.row(line, k)
            if self.column in row.coefficients:
                raise line.error("column %s stands twice in row %s" % (self.column_name, row.name), k)
            row.coefficients[self.column] = self.number(line, k + 1)

    def take_column_name(self, line: Line) -> None:
        """A new column begins unless the name is that of the line before; a blank name (of a fixed line) repeats it."""
        name = line.fields[0]
        if self.column >= 0 and name in (self.column_name, ""):
            return
        try:
            self.column = self.model.add_variable(name, line.place(0))
        except ReadError as error:
            raise line.error(error.message, 0) from None
        self.column_name = name
        self.model.variables[self.column].integer = self.marker is not None

    def take_marker(self, line: Line) -> None:
        at = max((k for k, field in enumerate(line.fields) if field), default=0)
        word = line.fields[at].strip("'")
        if word not in ("INTORG", "INTEND"):
            raise line.error("marker %s: only INTORG and INTEND are read" % word, at)
        if (word == "INTORG") == (self.marker is not None):
            raise line.error("marker %s stands twice" % word, at)
        self.marker = line.place(at) if word == "INTORG" else None

    def row(self, line: Line, k: int) -> Row:
        row = self.rows.get(line.fields[k])
        if row is None:
            raise line.error("unknown row %r" % line.fields[k], k)
        return row

    # ------------------------------------------------------------- right-hand sides and ranges

    def pairs(self, line: Line) -> list[tuple[Row, int]]:
        """The rows of a line and where their values are; the set may be left out, a second set is refused."""
        count = len(line.fields)
        if count not in (2, 3, 4, 5):
            raise line.error("a line of %s has a set and one or two pairs of row and value" % self.section)
        if count % 2:
            self.one_set(line, 0)
        return [(self.row(line, k), k + 1) for k in range(count % 2, count, 2)]

    def one_set(self, line: Line, k: int) -> None:
        """A blank name is that of the line before, and one that is left out is any."""
        name = line.fields[k]
        if name and self.sets.setdefault(self.section, name) != name:
            raise line.error("a second set in %s, %r beside %r: leave one" %
                             (self.section, name, self.sets[self.section]), k)

    def take_rhs(self, line: Line) -> None:
        for row, k in self.pairs(line):
            if row.name in self.right_sides:
                raise line.error("row %s has two right-hand sides" % row.name, k - 1)
            self.number(line, k)
            self.right_sides[row.name] = line.fields[k]

    def take_ranges(self, line: Line) -> None:
        for row, k in self.pairs(line):
            if row.name in self.ranges:
                raise line.error("row %s has two ranges" % row.name, k - 1)
            if self.kinds[row.name] == "N":
                raise line.error("row %s is free and cannot have a range" % row.name, k - 1)
            self.number(line, k)
            self.ranges[row.name] = line.fields[k]

    # ------------------------------------------------------------- bounds

    def take_bounds(self, line: Line) -> None:
        kind = line.fields[0].upper()
        if kind not in VALUELESS_BOUNDS + VALUE_BOUNDS:
            raise line.error("unknown type of bound %r" % line.fields[0], 0)
        at, value = self.bound_fields(kind, line)
        name = line.fields[at]
        position = self.model.position(name)
        if position is None:
            raise line.error("unknown column %r" % name, at)
        kinds = self.bounded.setdefault(position, set())
        if kind in kinds:
            raise line.error("column %s has two bounds of type %s" % (name, kind), 0)
        variable = self.model.variables[position]
        variable.place = line.place(at)
        before = variable.lower, variable.upper
        if kind in VALUELESS_BOUNDS:
            self.valueless_bound(position, kind)
        else:
            self.value_bound(position, kind, kinds, self.bound(line, value), line)
        for types, old, new in zip((LOWER_BOUNDS, UPPER_BOUNDS), before, (variable.lower, variable.upper)):
            if kind in types and kinds & types and old != new:
                self.model.note("%s has a bound of type %s behind one of type %s: the last one counts" %
                                (name, kind, sorted(kinds & types)[0]), line.place())
        kinds.add(kind)

    def bound(self, line: Line, k: int | None) -> Bound:
        if k is None:
            return INF
        try:
            value = bound(line.fields[k])
            self.model.note_long(value, line.place(k))
            return value
        except ReadError as error:
            raise line.error(error.message, k) from None

    def bound_fields(self, kind: str, line: Line) -> tuple[int, int | None]:
        """Where column and value are: the set may be left out, and so may the value where it has no meaning."""
        count = len(line.fields) - 1
        if kind in VALUE_BOUNDS:
            if kind in ("SC", "SI") and count == 2 and self.is_set_and_column(line):
                return 2, None
            if count not in (2, 3):
                raise line.error("a bound of type %s has a set, a column and a value" % kind)
            if count == 3:
                self.one_set(line, 1)
            return count - 1, count
        if count not in (1, 2, 3):
            raise line.error("a bound of type %s has a set and a column" % kind)
        if count == 3:
            self.one_set(line, 1)
        return (2 if count == 3 or count == 2 and self.is_set_and_column(line) else 1), None

    def is_set_and_column(self, line: Line) -> bool:
        """Of two fields behind the type, which may be a column and a value, too."""
        first, second = line.fields[1:3]
        if self.model.position(second) is None:
            return False
        is_open = self.dialect.form == "free-mps" and self.sets.get(self.section) != first
        if is_open and first != second and self.model.position(first) is not None:
            raise line.error("%s may be a set or a column here, and %s a column or a value: name the set" % (first, second), 1)
        self.one_set(line, 1)
        return True

    def valueless_bound(self, position: int, kind: str) -> None:
        variable = self.model.variables[position]
        if kind == "BV":
            variable.integer = True
            variable.lower, variable.upper = Fraction(0), Fraction(1)
        if kind in ("FR", "MI"):
            variable.lower = -INF
        if kind in ("FR", "PL"):
            variable.upper = INF

    def value_bound(self, position: int, kind: str, kinds: set[str], value: Bound, line: Line) -> None:
        variable = self.model.variables[position]
        if kind in ("LI", "UI", "SI"):
            variable.integer = True
        if kind in ("SC", "SI"):
            variable.semi = True
            # A semicontinuous column without an upper bound is written with 0 for it by some.
            variable.upper = INF if value == 0 else value
        if kind in ("LO", "LI", "FX"):
            variable.lower = value
        if kind in ("UP", "UI", "FX"):
            variable.upper = value
        if kind in ("UP", "UI") and value < 0 and not kinds & {"LO", "LI", "MI", "FR", "BV", "FX"}:
            # The oldest readers took a negative upper bound alone for a variable without a lower one.
            self.model.note("%s has a negative upper bound and no lower one before it: taken as not bounded below" %
                            variable.name, line.place())
            variable.lower = -INF

    # ------------------------------------------------------------- the end

    def finish(self, place: int) -> Model:
        if "COLUMNS" not in self.seen:
            raise ReadError("there is no section COLUMNS", Place(place))
        if self.marker:
            self.model.note("marker INTORG without INTEND: all columns behind it are integer", self.marker)
        self.take_comment_sense()
        self.marker_bounds()
        objective = self.choose_objective()
        for name, row in self.rows.items():
            if name == objective:
                self.model.objective = row
                self.take_constant(row)
            elif self.kinds[name] == "N":
                self.model.left_out.append(name)
            else:
                self.sides(row)
                if (row.lower, row.upper) == (-INF, INF):
                    self.model.left_out.append(name)
                else:
                    self.model.rows.append(row)
        return self.model

    def take_comment_sense(self) -> None:
        if not self.comment_sense:
            return
        maximise, place = self.comment_sense
        if not self.sense_place:
            self.model.maximise = maximise
            self.model.note("the comment says the sense of the objective: %s" % ("maximise" if maximise else "minimise"),
                            place)
        elif self.model.maximise != maximise:
            raise ReadError("the comment and OBJSENSE say different senses of the objective", place)

    def take_constant(self, objective: Row) -> None:
        """The right side of the objective, which stands on the other side of its sign."""
        side = self.values.get(self.right_sides.get(objective.name, ""), Fraction(0))
        if side:
            self.model.note("the right-hand side of the objective is its constant, negated; some readers do not negate it", objective.place)
        self.model.constant = -side

    def choose_objective(self) -> str | None:
        free = [name for name, kind in self.kinds.items() if kind == "N"]
        if self.objective_name is None:
            return free[0] if free else None
        name, place = self.objective_name
        if name not in free:
            raise ReadError("OBJNAME %s is no free row" % name, place)
        return name

    def marker_bounds(self) -> None:
        """Integer columns between markers without any bound: the dialects differ, so it is said what is done."""
        bare = [v for j, v in enumerate(self.model.variables) if v.integer and j not in self.bounded]
        for variable in bare:
            variable.upper = self.dialect.marker_bound
        if bare:
            self.model.note("%d integer column(s) without a bound, the first is %s: taken as 0 to %s; a line in BOUNDS says "
                            "otherwise, PL for no upper one" %
                            (len(bare), bare[0].name, self.dialect.marker_bound), bare[0].place)

    def sides(self, row: Row) -> None:
        right = self.side(self.right_sides, row)
        kind = self.kinds[row.name]
        if kind == "E" and abs(right) == INF:
            raise ReadError("row %s equals an infinity" % row.name, row.place)
        row.lower = -INF if kind == "L" else right
        row.upper = INF if kind == "G" else right
        if row.name not in self.ranges or abs(right) == INF:
            return
        width = self.side(self.ranges, row)
        if kind == "L" or kind == "E" and width < 0:
            row.lower = -INF if abs(width) == INF else finite(right) - abs(finite(width))
        else:
            row.upper = INF if abs(width) == INF else finite(right) + abs(finite(width))

    def side(self, texts: dict[str, str], row: Row) -> Bound:
        """Of a right-hand side or a range; 0 where there is none."""
        text = texts.get(row.name)
        if text is None:
            return Fraction(0)
        side = limited(self.values[text], text)
        self.model.note_long(side, row.place)
        return side


def _at(text: str, part: str, line: int) -> Place:
    return Place(line, text.find(part) + 1)
