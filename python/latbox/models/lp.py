"""Models in the CPLEX LP form: an objective, rows, bounds and kinds of variables, written as one would by hand.

Where readers differ: a variable stands in the objective or in a row before bounds and kinds name it, so that a misspelt
name is no new variable; `binary` holds on top of the bounds, so that a binary variable that is fixed stays fixed; a
negative upper bound leaves the lower bound 0, with a note.
"""

from __future__ import annotations

from fractions import Fraction

from ..errors import Place, ReadError
from .lp_tokens import READ, Section, sections
from .model import INF, Bound, Model, Row, Variable, bound, finite, number

MIRRORED = {"<": ">", ">": "<", "=": "="}
ZERO, ONE = Fraction(0), Fraction(1)


def read_lp(text: str) -> Model:
    """The model of a text in LP form."""
    reader = _Reader()
    for section in sections(text):
        reader.take(section)
    return reader.finish()


class _Reader:
    def __init__(self) -> None:
        self.model = Model()
        self.labels: set[str] = set()
        self.given_labels: set[str] = set()  # none of them is for a row without a label
        self.unnamed = 0
        self.seen: list[str] = []
        self.lower_given: set[str] = set()
        self.binary: list[Variable] = []
        self.values: dict[str, Fraction] = {}  # numbers of the text repeat, and making a Fraction is dear

    def take(self, section: Section) -> None:
        if section.name not in READ:
            raise ReadError("%s are not read" % section.name if section.name.endswith("s") else
                            "%s is not read" % section.name, section.start)
        if section.name in ("maximise", "minimise"):
            self.objective(section)
        elif section.name == "rows" and "rows" in self.seen:
            raise ReadError("a second section of rows", section.start)
        elif section.name != "end":
            {"rows": self.rows, "bounds": self.bounds, "integer": self.integers, "binary": self.binaries,
             "semi": self.semis}[section.name](section)
        self.seen.append(section.name)

    # ------------------------------------------------------------- expressions

    def number(self, section: Section) -> Fraction:
        text = section.text()
        value = self.values.get(text)
        if value is None:
            value = self.values[text] = number(text, section.place())
        section.at += 1
        return value

    def expression(self, row: Row, section: Section) -> Fraction:
        """Reads terms into the row's coefficients; returns the sum of the constants."""
        constant = self.term(row, section)
        kinds = section.kinds
        while kinds[section.at] == "sign":
            if kinds[section.at + 1] == "number" and kinds[section.at + 2] == "name" and self.plain_term(row, section):
                continue
            constant += self.term(row, section)
        return constant

    def plain_term(self, row: Row, section: Section) -> bool:
        """Sign, number and a variable that is new to the row: what nearly all terms are, read without detours. False
        where it is something else."""
        at = section.at
        sign, factor, name = section.texts[at:at + 3]
        position = self.model.position(name)
        ahead = section.kinds[at + 3]
        if position is None or position in row.coefficients or ahead == "colon" or ahead == "other":
            return False
        value = self.values.get(factor)
        if value is None:
            value = self.values[factor] = number(factor, Place(*section.places[at + 1]))
        row.coefficients[position] = -value if sign == "-" else value
        section.at = at + 3
        return True

    def term(self, row: Row, section: Section) -> Fraction:
        sign = section.sign()
        factor = self.number(section) if section.kind() == "number" else None
        if section.kind() != "name" or section.kind(1) == "colon":
            if factor is None:
                section.refuse("a term")
            return sign * factor
        name = section.text()
        position = self.model.position(name)
        if position is None:
            if section.at_infinity():
                raise ReadError("an infinity is no term", section.place())
            position = self.model.add_variable(name, section.place())
        section.at += 1
        if section.text() == "^":
            section.refuse("a linear term")
        factor = ONE if factor is None else factor
        coefficient = factor if sign > 0 else -factor
        known = row.coefficients.get(position)
        row.coefficients[position] = coefficient if known is None else known + coefficient
        return ZERO

    def value(self, section: Section) -> Bound:
        """A signed number or infinity."""
        sign = section.sign()
        if section.at_infinity():
            section.at += 1
            return sign * INF
        place = section.place()
        value = sign * bound(section.take("number", "a number"), place)
        self.model.note_long(value, place)
        return value

    # ------------------------------------------------------------- objective and rows

    def objective(self, section: Section) -> None:
        if self.seen:
            raise ReadError("a second objective", section.start)
        self.model.maximise = section.name == "maximise"
        row = Row(section.label() or "obj", section.place())
        if section.kind() is not None:
            self.model.constant = self.expression(row, section)
            self.model.objective = row
        if section.kind() is not None:
            section.refuse("a sign or Subject To")

    def rows(self, section: Section) -> None:
        labelled = zip(section.texts, section.kinds, section.kinds[1:])
        self.given_labels = {text for text, kind, behind in labelled if (kind, behind) == ("name", "colon")}
        while section.kind() is not None:
            self.row(section)
            # `x >= 2 y` would otherwise be a row and the beginning of another.
            if section.on_line_of_the_last() and section.kind(1) != "colon":
                section.refuse("the end of the row")

    def row(self, section: Section) -> None:
        place = section.place()
        row = Row(self.row_name(section.label(), place), place)
        left = None
        if section.at_value():
            left = (self.value(section), section.relation())
        constant = self.expression(row, section)
        if left is None or section.kind() == "relation":
            self.side(row, section, constant, left[1] if left else None)
        if section.kind() == "arrow":
            section.refuse("a row")
        if left is not None:
            self.set_side(row, MIRRORED[left[1]], _moved(left[0], constant))
        if abs(row.lower) == INF and abs(row.upper) == INF and row.lower != row.upper:
            self.model.left_out.append(row.name)
        else:
            self.model.rows.append(row)

    def row_name(self, label: str | None, place: Place) -> str:
        """Rows without a label are counted with the others."""
        if label is None:
            self.unnamed = max(self.unnamed, len(self.labels)) + 1
            while "R%d" % self.unnamed in self.labels or "R%d" % self.unnamed in self.given_labels:
                self.unnamed += 1
            label = "R%d" % self.unnamed
        if label in self.labels:
            raise ReadError("row %s stands twice" % label, place)
        self.labels.add(label)
        return label

    def side(self, row: Row, section: Section, constant: Fraction, left: str | None) -> None:
        place = section.place()
        relation = section.relation()
        if left is not None and (relation == "=" or relation != left):
            raise ReadError("row %s has two sides that do not go together" % row.name, place)
        value = self.value(section)
        if relation == "=" and abs(value) == INF:
            raise ReadError("row %s equals an infinity" % row.name, place)
        self.set_side(row, relation, _moved(value, constant))

    def set_side(self, of: Row | Variable, relation: str, value: Bound) -> None:
        if relation in ("<", "="):
            of.upper = value
        if relation in (">", "="):
            of.lower = value

    # ------------------------------------------------------------- bounds and kinds

    def bounds(self, section: Section) -> None:
        while section.kind() is not None:
            self.bound(section)

    def bound(self, section: Section) -> None:
        left = None
        if section.kind() != "name" or section.at_infinity():
            place = section.place()
            left = (self.value(section), section.relation())
        variable = self.known(section)
        if left is not None:
            self.set_bound(variable, MIRRORED[left[1]], left[0], place)
        if section.kind() == "relation":
            place = section.place()
            relation = section.relation()
            if left is not None and (relation == "=" or relation != left[1]):
                raise ReadError("%s has two bounds that do not go together" % variable.name, place)
            self.set_bound(variable, relation, self.value(section), place)
        elif left is None:
            if section.text().lower() != "free":
                section.refuse("<=, >=, = or free")
            section.at += 1
            variable.lower, variable.upper = -INF, INF
            self.lower_given.add(variable.name)

    def set_bound(self, variable: Variable, relation: str, value: Bound, place: Place) -> None:
        if relation == "=" and abs(value) == INF:
            raise ReadError("%s equals an infinity" % variable.name, place)
        self.set_side(variable, relation, value)
        if relation != "<":
            self.lower_given.add(variable.name)

    def known(self, section: Section) -> Variable:
        place = section.place()
        name = section.take("name", "a variable")
        position = self.model.position(name)
        if position is None:
            raise ReadError("unknown variable %s: it stands in no row and not in the objective" % name, place)
        variable = self.model.variables[position]
        if section.name == "bounds":
            variable.place = place
        return variable

    def integers(self, section: Section) -> None:
        while section.kind() is not None:
            self.known(section).integer = True

    def binaries(self, section: Section) -> None:
        while section.kind() is not None:
            self.binary.append(self.known(section))

    def semis(self, section: Section) -> None:
        while section.kind() is not None:
            self.known(section).semi = True

    def finish(self) -> Model:
        for variable in self.binary:
            # On top of bounds, wherever they stand: both hold, so that a binary variable which is fixed stays so.
            variable.integer = True
            variable.lower, variable.upper = max(variable.lower, ZERO), min(variable.upper, ONE)
        for variable in self.model.variables:
            if variable.upper < 0 and variable.name not in self.lower_given:
                self.model.note("%s has a negative upper bound and no lower one: its lower bound is 0, as the form says" %
                                variable.name, variable.place)
        return self.model


def _moved(side: Bound, constant: Fraction) -> Bound:
    """The side of a row when a constant has gone over to it."""
    return side if abs(side) == INF else finite(side) - constant
