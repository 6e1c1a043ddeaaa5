"""Programs in the solver's own form, .opt, as models by their plain meaning.

A program has no names: its variables become x1, x2, ..., its equations g1, g2, ..., its inequations u1, u2, ... Targets to
be minimised or maximised are one objective, since their norms are added: a single one keeps its direction, several are
minimised as their sum, the maximised ones negated. A value to be reached becomes a goal. Thresholds say nothing of the
program's points; there is a note.

The items stand in a fixed order without keywords, so that a wrong one shows itself only by its shape: messages say which
item it is and what it should have been. What the solver passes over in the middle of a number is refused here.
"""

from __future__ import annotations

import bisect
import re
from fractions import Fraction
from typing import NamedTuple

from ..errors import Place, ReadError, counted
from .model import INF, LONGEST_NUMBER, Bound, Goal, Model, Row, finite, int_of_digits, shown

# A slash directly behind a digit belongs to the number.
TOKEN = re.compile(r"(?:\s+|//[^\n]*|/\*.*?\*/)*(?P<token>[][=]|-?inf(?=/[/*])|/\*|[^\s][^\s\[\]=]*)?", re.DOTALL)
WHOLE = re.compile(r"[+-]?[0-9]+\Z", re.ASCII)
DECIMAL = re.compile(r"([+-]?)([0-9]*)[.,](0*[1-9][0-9]*)\Z", re.ASCII)
FRACTION = re.compile(r"([+-]?)(?:([0-9]+):)?([0-9]+)/([0-9]+)\Z", re.ASCII)
INFINITE = {"inf": INF, "-inf": -INF}
GREATEST_DIGITS = 10_000


class Vector(NamedTuple):
    """Numbers, and where their bracket stands; where each of them does is looked for when a message needs it."""

    values: list[Bound]
    at: int

    def __len__(self) -> int:
        return len(self.values)


class Matrix(NamedTuple):
    rows: list[Vector]
    at: int

    def __len__(self) -> int:
        return len(self.rows)

    @property
    def columns(self) -> int:
        return len(self.rows[0]) if self.rows else 0


def read_opt(text: str) -> Model:
    """The model of a .opt text. Behind the last item nothing is read."""
    return _Reader(text).model()


class _Reader:
    def __init__(self, text: str) -> None:
        self.text = text
        self.at = 0  # where the token begins
        self.token: str | None = None
        self.next = 0  # where the rest of the text begins
        self.item = ""
        self.lines = [0] + [match.end() for match in re.finditer("\n", text)]
        self.known: dict[str, Bound] = {}  # numbers of the text repeat, and making a Fraction is dear
        self.finite: set[str] = set()  # those of them that stand everywhere

    # ------------------------------------------------------------- tokens

    def error(self, message: str, at: int) -> ReadError:
        return ReadError(message, self.place(at))

    def place(self, at: int) -> Place:
        line = bisect.bisect_right(self.lines, at)
        return Place(line, at - self.lines[line - 1] + 1)

    def entry(self, vector: Vector, k: int) -> int:
        """Where entry k of a vector stands."""
        self.token, self.next = None, vector.at + 1
        for _ in range(k + 1):
            self.token = None
            self.look()
        return self.at

    def look(self) -> str | None:
        """The token that is not taken yet, None at the end of the text."""
        if self.token is None and self.next <= len(self.text):
            match = TOKEN.match(self.text, self.next)
            assert match  # of anything, if only of nothing
            self.token = match["token"]
            self.at = match.start("token") if self.token is not None else len(self.text)
            if self.token is not None and self.token.startswith("/*"):
                raise self.error("this comment is not closed", self.at)
            self.next = match.end()
        return self.token

    def take(self, token: str, what: str) -> int:
        if self.look() != token:
            found = "the end of the file" if self.token is None else shown(self.token)
            raise self.error("%s: expected %s, found %s" % (self.item, what, found), self.at)
        self.token = None
        return self.at

    # ------------------------------------------------------------- items

    def vector(self, item: str, infinite: bool) -> Vector:
        self.item = item
        self.take("[", "a vector, [ ... ]")
        return self.entries(infinite)

    def entries(self, infinite: bool) -> Vector:
        """The entries behind the bracket that was taken, and the closing one."""
        found = Vector([], self.at)
        end = self.text.find("]", self.next)
        plain = self.text[self.next:end] if end >= 0 else ""
        if end >= 0 and not any(mark in plain for mark in ("[", "=", "//", "/*")):
            # Most vectors are words and blanks.
            words = plain.split()
            if not set(words) <= self.finite:
                found.values.extend(self.element(word, infinite, found) for word in words)
            else:
                found.values.extend(map(self.known.__getitem__, words))
            self.next = end + 1
            return found
        while self.look() not in ("]", "[", "=", None):
            assert self.token is not None
            found.values.append(self.element(self.token, infinite, found))
            self.token = None
        self.take("]", "a number or ]")
        return found

    def matrix(self, item: str) -> Matrix:
        self.item = item
        found = Matrix([], self.take("[", "a matrix, [ [ ... ] ... ]"))
        while self.look() == "[":
            self.take("[", "[")
            row = self.entries(False)
            found.rows.append(row)
            if len(row) != found.columns:
                raise self.error("%s: this row has %s, the first has %d" % (item, counted(len(row), "entry", "entries"), found.columns), row.at)
        self.take("]", "a row, [ ... ], or ]")
        return found

    def element(self, text: str, infinite: bool, vector: Vector) -> Bound:
        value = self.known.get(text)
        if value is None:
            value = self.known[text] = self.new_element(text, vector)
            if abs(value) != INF:
                self.finite.add(text)
        if not infinite and abs(value) == INF:
            raise self.error("%s: %s is not allowed here" % (self.item, text), self.entry(vector, len(vector)))
        return value

    def new_element(self, text: str, vector: Vector) -> Bound:
        if text in INFINITE:
            return INFINITE[text]
        try:
            if len(text) > LONGEST_NUMBER:
                raise ValueError(": it is longer than %d characters" % LONGEST_NUMBER)
            return exact(text)
        except ValueError as error:
            raise self.error("%s: %s is not a number%s" % (self.item, shown(text), error),
                             self.entry(vector, len(vector))) from None

    # ------------------------------------------------------------- the program

    def model(self) -> Model:
        dt = self.vector("dt", True)
        kt = None
        if self.look() == "=":
            self.item = "kt"
            self.take("=", "=")
            kt = self.vector("kt", True)
        at = self.matrix("At")
        ag, bg = self.matrix("Ag"), self.vector("bg", False)
        au, lu, ru = self.matrix("Au"), self.vector("lu", True), self.vector("ru", True)
        dx, lx, rx = self.vector("dx", False), self.vector("lx", True), self.vector("rx", True)
        self.check_shapes(at, dt, kt, ag, bg, au, lu, ru, (dx, lx, rx))
        model = Model()
        for j in range(len(dx)):
            self.variable(model, j, dx, lx, rx)
        for i, row in enumerate(ag.rows):
            model.rows.append(self.row("g%d" % (i + 1), row, bg.values[i], bg.values[i]))
        for i, row in enumerate(au.rows):
            model.rows.append(self.inequation(i, row, lu, ru))
        self.targets(model, dt, at)
        if kt is not None:
            model.note("thresholds are left out: they only guide the search", self.place(kt.at))
        return model

    def check_shapes(self, at: Matrix, dt: Vector, kt: Vector | None, ag: Matrix, bg: Vector, au: Matrix, lu: Vector,
                     ru: Vector, bounds: tuple[Vector, Vector, Vector]) -> None:
        """In the order of the items, each against those before it."""
        if kt is not None and len(kt) != len(dt):
            raise self.error("kt: it has %s, and dt has %d" % (counted(len(kt), "entry", "entries"), len(dt)), kt.at)
        columns = next((matrix.columns for matrix in (at, au, ag) if matrix.rows), 0)
        for name, matrix, side, vector in (("At", at, "dt", dt), ("Ag", ag, "bg", bg), ("Au", au, "lu", lu),
                                           ("Au", au, "ru", ru)):
            if len(matrix) != len(vector):
                raise self.error("%s: it has %s, and %s has %s" % (name, counted(len(matrix), "row"), side,
                                                                  counted(len(vector), "entry", "entries")), matrix.at)
            if matrix.rows and matrix.columns != columns:
                raise self.error("%s: it has %s, and the program %s" % (name, counted(matrix.columns, "column"),
                                                                    counted(columns, "variable")), matrix.at)
        if columns == 0:
            raise self.error("there is no row that tells the number of variables", bounds[0].at)
        for name, vector in zip(("dx", "lx", "rx"), bounds):
            if len(vector) != columns:
                raise self.error("%s: it has %s, and the program %s" % (name, counted(len(vector), "entry", "entries"),
                                                                    counted(columns, "variable")), vector.at)

    def variable(self, model: Model, j: int, dx: Vector, lx: Vector, rx: Vector) -> None:
        digits, low, high = dx.values[j], lx.values[j], rx.values[j]
        if not 0 <= digits <= GREATEST_DIGITS or digits != int(digits):
            raise self.error("dx: %s digits: a whole number from 0 to %d is wanted" % (digits, GREATEST_DIGITS),
                             self.entry(dx, j))
        if low == INF or high == -INF or low > high:
            raise self.error("lx, rx: the bounds of x%d leave no value: %s to %s" % (j + 1, low, high), self.entry(lx, j))
        variable = model.variables[model.add_variable("x%d" % (j + 1), self.place(lx.at))]
        variable.integer = True
        variable.digits = int(digits)
        variable.lower, variable.upper = low, high

    def row(self, name: str, row: Vector, lower: Bound, upper: Bound) -> Row:
        return Row(name, self.place(row.at), lower, upper, {j: finite(a) for j, a in enumerate(row.values) if a})

    def inequation(self, i: int, row: Vector, lu: Vector, ru: Vector) -> Row:
        low, high = lu.values[i], ru.values[i]
        if low == -INF and high == INF:
            raise self.error("lu, ru: row u%d has no side" % (i + 1), self.entry(lu, i))
        if low == INF or high == -INF or low > high:
            raise self.error("lu, ru: the sides of row u%d leave no value: %s to %s" % (i + 1, low, high),
                             self.entry(lu, i))
        return self.row("u%d" % (i + 1), row, low, high)

    def targets(self, model: Model, dt: Vector, at: Matrix) -> None:
        rows = [self.row("t%d" % (i + 1), row, -INF, INF) for i, row in enumerate(at.rows)]
        linear = [(row, value == INF) for row, value in zip(rows, dt.values) if abs(value) == INF]
        model.goals = [Goal(row, finite(value)) for row, value in zip(rows, dt.values) if abs(value) != INF]
        if not linear:
            return
        if len(linear) == 1 and not model.goals:
            model.objective, model.maximise = linear[0]
            return
        total = Row("targets", linear[0][0].place)
        for row, maximise in linear:
            for j, a in row.coefficients.items():
                total.coefficients[j] = total.coefficients.get(j, Fraction(0)) + (-a if maximise else a)
        model.objective = total


def exact(text: str) -> Fraction:
    """The value of a number as the programs write them: 12, 1.5, -3/4, 2:1/3; a ValueError with a hint for others."""
    if WHOLE.match(text):
        return Fraction(int_of_digits(text))
    match = DECIMAL.match(text)
    if match:
        sign, whole, part = match.groups()
        return Fraction(int_of_digits(sign + whole + part), 10**len(part))
    match = FRACTION.match(text)
    if match:
        return _fraction(*match.groups())
    if re.match(r"[+-]?[0-9]+[.,]0*\Z", text):
        raise ValueError(": write it without the point")
    if "//" in text or "/*" in text:
        raise ValueError(": leave a blank before a comment")
    if re.match(r"[+-]?[0-9.]+[eE][+-]?[0-9]+\Z", text):
        raise ValueError(": write it without an exponent")
    raise ValueError("")


def _fraction(sign: str, whole: str | None, part: str, below: str) -> Fraction:
    denominator = int_of_digits(below)
    if denominator == 0:
        raise ValueError(": its denominator is 0")
    value = Fraction(int_of_digits(part), denominator)
    if whole is not None:
        if value >= 1 or part.startswith("0"):
            raise ValueError(": the fraction of a mixed number is below 1 and begins with no 0")
        value += int_of_digits(whole)
    return -value if sign == "-" else value
