#!/usr/bin/env python3
"""An integer program in the CPLEX LP form as a .opt file.

    python3 tools/lp_to_opt.py [--digits=N] MODEL.lp [PROGRAM.opt]

What cannot be stated is refused with exit status 1, and the line of the model says why. See tools/README.md.
"""

import re
from fractions import Fraction

import converter
from model import INF, Model, Refusal, Row, bound, number

# A section begins a line; what stands behind its word belongs to it.
SECTIONS = (
    ("maximise", r"max(?:imi[sz]e|imum)?"),
    ("minimise", r"min(?:imi[sz]e|imum)?"),
    ("rows", r"subject\s+to|such\s+that|s\.?t\.?"),
    ("bounds", r"bounds?"),
    ("integer", r"generals?|gen|integers?|int"),
    ("binary", r"binar(?:y|ies)|bin"),
    ("semicontinuous variables", r"semi(?:-continuous|s)?"),
    ("special ordered sets", r"sos[12]?"),
    ("lazy rows", r"lazy\s+constraints"),
    ("user cuts", r"user\s+cuts"),
    ("general constraints", r"general\s+constraints|gencons?"),
    ("a piecewise linear objective", r"pwlobj"),
    ("several objectives", r"multi-objectives"),
    ("end", r"end"),
)
READ = ("maximise", "minimise", "rows", "bounds", "integer", "binary", "end")
# The longest heading first: "general constraints" is not the section of the integers.
HEADINGS = [(name, re.compile(r"\s*(?:%s)(?=\s|$)" % pattern, re.IGNORECASE))
            for name, pattern in sorted(SECTIONS, key=lambda section: section[0] in READ)]

TOKEN = re.compile(r"""\s*(?:
    (?P<number>(?:[0-9]+\.?[0-9]*|\.[0-9]+)(?:[eE][+-]?[0-9]+)?)
  | (?P<arrow>->|<->)
  | (?P<relation><=|=<|>=|=>|<|>|=)
  | (?P<sign>[+-])
  | (?P<colon>::?)
  | (?P<name>[A-Za-z!"\#$%&(),;?@_'`{}|~\x80-\U0010ffff][][A-Za-z0-9!"\#$%&(),.;?@_'`{}|~/\x80-\U0010ffff]*)
  | (?P<other>\S)
)""", re.VERBOSE)
INFINITY = re.compile(r"inf(?:inity)?\Z", re.IGNORECASE)


class Token:
    def __init__(self, kind, text, line):
        self.kind = kind
        self.text = text
        self.line = line


def sections(text):
    """[(name, line, tokens)]: the file by its headings, comments gone."""
    found = []
    for place, line in enumerate(text.split("\n"), 1):
        line = line.split("\\", 1)[0].rstrip()
        name, line = heading(line)
        if name:
            found.append((name, place, []))
        if not line.strip():
            continue
        if not found:
            raise Refusal("the file must begin with Minimize or Maximize", place)
        found[-1][2].extend(Token(match.lastgroup, match.group(match.lastgroup), place)
                            for match in TOKEN.finditer(line))
        if found[-1][0] == "end":
            raise Refusal("there is text behind End", place)
    return found


def heading(line):
    for name, pattern in HEADINGS:
        match = pattern.match(line)
        if match:
            return name, line[match.end():]
    return None, line


class Tokens:
    """The tokens of a section, taken one after the other."""

    def __init__(self, tokens, line):
        self.tokens = tokens
        self.at = 0
        self.last = line

    def kind(self, ahead=0):
        return self.tokens[self.at + ahead].kind if self.at + ahead < len(self.tokens) else None

    def text(self):
        return self.tokens[self.at].text if self.at < len(self.tokens) else "the end of the section"

    @property
    def line(self):
        return self.tokens[self.at].line if self.at < len(self.tokens) else self.last

    def take(self, kind, what):
        if self.kind() != kind:
            self.refuse(what)
        self.last = self.line
        self.at += 1
        return self.tokens[self.at - 1].text

    def refuse(self, what):
        if self.text() in ("[", "]", "^"):
            raise Refusal("a quadratic term cannot be stated in a .opt file", self.line)
        if self.kind() == "arrow":
            raise Refusal("an indicator row cannot be stated in a .opt file", self.line)
        raise Refusal("expected %s, found %s" % (what, self.text()), self.line)

    def label(self):
        """A name with a colon behind it, or None."""
        if self.kind() != "name" or self.kind(1) != "colon":
            return None
        name = self.take("name", "a name")
        self.take("colon", "a colon")
        return name

    def sign(self):
        sign = 1
        while self.kind() == "sign":
            sign = -sign if self.take("sign", "a sign") == "-" else sign
        return sign

    def at_infinity(self):
        return self.kind() == "name" and INFINITY.match(self.text()) is not None

    def at_value(self):
        """A number that is no coefficient, or an infinity: what a side of a row or a bound may be."""
        ahead = 0
        while self.kind(ahead) == "sign":
            ahead += 1
        if self.kind(ahead) == "name":
            return INFINITY.match(self.tokens[self.at + ahead].text) is not None
        return self.kind(ahead) == "number" and self.kind(ahead + 1) in ("relation", None)

    def value(self):
        """A signed number or infinity."""
        sign = self.sign()
        if self.at_infinity():
            self.take("name", "a number")
            return sign * INF
        line = self.line
        value = bound(self.take("number", "a number"), line)
        return sign * value

    def relation(self):
        return self.take("relation", "<=, >= or =").replace("=<", "<").replace("=>", ">")[0]


def read_lp(text):
    """The model of a text in LP form."""
    parts = sections(text)
    if not parts or parts[0][0] not in ("maximise", "minimise"):
        raise Refusal("the file must begin with Minimize or Maximize", 1)
    if parts[-1][0] != "end":
        raise Refusal("the file ends without End", text.count("\n") + 1)
    reader = _Reader()
    for name, line, tokens in parts:
        if name not in READ:
            raise Refusal("%s cannot be stated in a .opt file" % name, line)
        reader.take(name, Tokens(tokens, line))
    return reader.finish()


class _Reader:
    def __init__(self):
        self.model = Model()
        self.labels = set()
        self.seen = []

    def take(self, name, tokens):
        if name in ("maximise", "minimise"):
            self.objective(name, tokens)
        elif name != "end":
            if name == "rows" and "rows" in self.seen:
                raise Refusal("a second section of rows", tokens.last)
            {"rows": self.rows, "bounds": self.bounds, "integer": self.integers, "binary": self.binaries}[name](tokens)
        self.seen.append(name)

    # ------------------------------------------------------------- expressions

    def variable(self, name, line):
        position = self.model.position(name)
        return self.model.add_variable(name, line) if position is None else position

    def expression(self, row, tokens):
        """Reads terms into the row's coefficients; returns the sum of the constants."""
        constant = Fraction(0)
        first = True
        while first or tokens.kind() == "sign":
            constant += self.term(row, tokens)
            first = False
        return constant

    def term(self, row, tokens):
        sign = tokens.sign()
        line = tokens.line
        factor = None
        if tokens.kind() == "number":
            factor = number(tokens.take("number", "a number"), line)
        if tokens.kind() != "name" or tokens.kind(1) == "colon":
            if factor is None:
                tokens.refuse("a term")
            return sign * factor
        name = tokens.take("name", "a variable")
        if tokens.text() == "^":
            tokens.refuse("a linear term")
        position = self.variable(name, line)
        coefficient = sign * (1 if factor is None else factor)
        row.coefficients[position] = row.coefficients.get(position, Fraction(0)) + coefficient
        return 0

    # ------------------------------------------------------------- sections

    def objective(self, name, tokens):
        if self.seen:
            raise Refusal("a second objective", tokens.line)
        self.model.maximise = name == "maximise"
        row = Row(tokens.label() or "obj", tokens.line)
        if tokens.kind() is not None:
            self.model.constant = self.expression(row, tokens)
            self.model.objective = row
        if tokens.kind() is not None:
            tokens.refuse("a sign or Subject To")

    def rows(self, tokens):
        while tokens.kind() is not None:
            self.row(tokens)
            # `x >= 2 y` would otherwise be a row and the beginning of another.
            if tokens.kind() is not None and tokens.line == tokens.last and tokens.kind(1) != "colon":
                tokens.refuse("the end of the row")

    def row(self, tokens):
        line = tokens.line
        row = Row(self.row_name(tokens.label(), line), line)
        left = None
        if tokens.at_value():
            left = (tokens.value(), tokens.relation())
        constant = self.expression(row, tokens)
        if left is None or tokens.kind() == "relation":
            self.side(row, tokens.relation(), tokens, constant, left)
        if tokens.kind() == "arrow":
            tokens.refuse("a row")
        if left is not None:
            value, relation = left
            self.set_side(row, {"<": ">", ">": "<", "=": "="}[relation], value - constant)
        if abs(row.lower) == INF and abs(row.upper) == INF:
            self.model.left_out.append(row.name)
        else:
            self.model.rows.append(row)

    def row_name(self, label, line):
        if label is None:
            count = len(self.labels) + 1
            while "R%d" % count in self.labels:
                count += 1
            label = "R%d" % count
        if label in self.labels:
            raise Refusal("row %s stands twice" % label, line)
        self.labels.add(label)
        return label

    def side(self, row, relation, tokens, constant, left):
        line = tokens.line
        if left is not None and (relation == "=" or relation != left[1]):
            raise Refusal("row %s has two sides that do not go together" % row.name, line)
        value = tokens.value()
        if relation == "=" and abs(value) == INF:
            raise Refusal("row %s equals an infinity" % row.name, line)
        self.set_side(row, relation, value - constant)

    def set_side(self, row, relation, value):
        if relation in ("<", "="):
            row.upper = value
        if relation in (">", "="):
            row.lower = value

    def bounds(self, tokens):
        while tokens.kind() is not None:
            self.bound(tokens)

    def bound(self, tokens):
        left = None
        if tokens.kind() != "name" or tokens.at_infinity():
            value = tokens.value()
            left = (value, tokens.relation())
        line = tokens.line
        variable = self.known(tokens.take("name", "a variable"), line)
        variable.line = line
        if left is not None:
            self.set_side(variable, {"<": ">", ">": "<", "=": "="}[left[1]], left[0])
        if tokens.kind() == "relation":
            self.set_side(variable, tokens.relation(), tokens.value())
        elif left is None:
            if tokens.text().lower() != "free":
                tokens.refuse("<=, >=, = or free")
            tokens.take("name", "free")
            variable.lower, variable.upper = -INF, INF

    def known(self, name, line):
        position = self.model.position(name)
        if position is None:
            raise Refusal("unknown variable %s: it stands in no row and not in the objective" % name, line)
        return self.model.variables[position]

    def names(self, tokens):
        while tokens.kind() is not None:
            line = tokens.line
            yield self.known(tokens.take("name", "a variable"), line)

    def integers(self, tokens):
        for variable in self.names(tokens):
            variable.integer = True

    def binaries(self, tokens):
        """Binary on top of bounds: both hold, so that a binary variable which is fixed stays so."""
        for variable in self.names(tokens):
            variable.integer = True
            variable.lower = max(variable.lower, Fraction(0))
            variable.upper = min(variable.upper, Fraction(1))

    def finish(self):
        return self.model


if __name__ == "__main__":
    converter.run(lambda text, options, warn: read_lp(text), "An integer program in LP form as a .opt file.")
