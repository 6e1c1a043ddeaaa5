"""The text of an LP file as sections of tokens: comments gone, headings known, every token with its place."""

from __future__ import annotations

import re
from typing import NoReturn

from ..errors import Place, ReadError

# A section begins a line; what stands behind its word belongs to it.
SECTIONS = (
    ("maximise", r"max(?:imi[sz]e|imum)?"),
    ("minimise", r"min(?:imi[sz]e|imum)?"),
    ("rows", r"subject\s+to|such\s+that|s\.?t\.?"),
    ("bounds", r"bounds?"),
    ("integer", r"generals?|gen|integers?|int"),
    ("binary", r"binar(?:y|ies)|bin"),
    ("semi", r"semi(?:-continuous|s)?"),
    ("special ordered sets", r"sos[12]?"),
    ("lazy rows", r"lazy\s+constraints"),
    ("user cuts", r"user\s+cuts"),
    ("general constraints", r"general\s+constraints|gencons?"),
    ("a piecewise linear objective", r"pwlobj"),
    ("several objectives", r"multi-objectives"),
    ("end", r"end"),
)
READ = ("maximise", "minimise", "rows", "bounds", "integer", "binary", "semi", "end")
# The longest heading first: "general constraints" is not the section of the integers.
HEADINGS = [(name, re.compile(r"\s*(?:%s)(?=\s|$)" % pattern, re.IGNORECASE))
            for name, pattern in sorted(SECTIONS, key=lambda section: section[0] in READ)]
# What every heading begins with: one look spares most lines the others.
MAYBE_HEADING = re.compile(r"\s*(?:max|min|su|s\.?t|bou|gen|int|bin|sem|sos|laz|use|pwl|mul|end)", re.IGNORECASE)

# Beyond ASCII all but blanks, dashes and signs of arithmetic: a page that is copied has them, and `3 x \u2212 y` is no name.
BEYOND = r"\xa1-\xac\xae-\u167f\u1681-\u1fff\u2016-\u2027\u2030-\u205e\u2070-\u21ff\u2300-\u2fff\u3001-\ufefe\uff00-\U0010ffff"
NAME_START = r"A-Za-z!\"#$%&(),;?@_'`{}|~"
TOKEN = re.compile(r"""
    (?P<number>(?:[0-9]+\.?[0-9]*|\.[0-9]+)(?:[eE][+-]?[0-9]+)?)
  | (?P<sign>[+-](?!>))
  | (?P<name>(?![\xb7\xd7])[%s][][%s0-9./]*)
  | (?P<arrow>->|<->)
  | (?P<relation><=|=<|>=|=>|<|>|=)
  | (?P<colon>::?)
  | (?P<other>\S)
""" % (NAME_START + BEYOND, NAME_START + BEYOND), re.VERBOSE)
INFINITY = re.compile(r"inf(?:inity)?\Z", re.IGNORECASE)


class Section:
    """The tokens of a section, taken one after the other. Kinds and texts end in a None: what is behind the last."""

    def __init__(self, name: str, place: Place) -> None:
        self.name = name
        self.start = place
        self.kinds: list[str | None] = []
        self.texts: list[str] = []
        self.places: list[tuple[int, int]] = []
        self.at = 0

    def add_line(self, text: str, number: int, shift: int) -> None:
        """`shift` is the column of the text in its line, from 0."""
        found = list(TOKEN.finditer(text))
        self.kinds += [match.lastgroup for match in found]
        self.texts += [match[0] for match in found]
        self.places += [(number, match.start() + shift + 1) for match in found]

    def close(self) -> None:
        self.kinds += [None] * 4  # as far as anybody looks ahead
        self.texts.append("the end of the section")
        self.places.append(self.places[-1] if self.places else self.start)

    def kind(self, ahead: int = 0) -> str | None:
        return self.kinds[self.at + ahead] if self.at + ahead < len(self.kinds) else None

    def text(self) -> str:
        return self.texts[self.at]

    def place(self) -> Place:
        return Place(*self.places[self.at])

    def on_line_of_the_last(self) -> bool:
        """Whether a token follows on the line of the one that was taken last."""
        return self.kinds[self.at] is not None and self.places[self.at][0] == self.places[max(self.at - 1, 0)][0]

    def take(self, kind: str, what: str) -> str:
        if self.kinds[self.at] != kind:
            self.refuse(what)
        self.at += 1
        return self.texts[self.at - 1]

    def refuse(self, what: str) -> NoReturn:
        if self.text() in ("[", "]", "^"):
            raise ReadError("quadratic terms are not read", self.place())
        if self.kind() == "arrow":
            raise ReadError("indicator rows are not read", self.place())
        raise ReadError("expected %s, found %s" % (what, self.text()), self.place())

    def label(self) -> str | None:
        """A name with a colon behind it, or None."""
        if self.kind() != "name" or self.kind(1) != "colon":
            return None
        self.at += 2
        return self.texts[self.at - 2]

    def sign(self) -> int:
        sign = 1
        while self.kinds[self.at] == "sign":
            if self.texts[self.at] == "-":
                sign = -sign
            self.at += 1
        return sign

    def at_infinity(self) -> bool:
        return self.kind() == "name" and INFINITY.match(self.text()) is not None

    def at_value(self) -> bool:
        """A number that is no coefficient, or an infinity: what a side of a row or a bound may be."""
        ahead = 0
        while self.kind(ahead) == "sign":
            ahead += 1
        if self.kind(ahead) == "name":
            return INFINITY.match(self.texts[self.at + ahead]) is not None
        return self.kind(ahead) == "number" and self.kind(ahead + 1) in ("relation", None)

    def relation(self) -> str:
        return self.take("relation", "<=, >= or =").replace("=<", "<").replace("=>", ">")[0]


def sections(text: str) -> list[Section]:
    """The file by its headings."""
    found: list[Section] = []
    for number, line in enumerate(text.split("\n"), 1):
        line = line.split("\\", 1)[0].rstrip()
        shift = 0
        if MAYBE_HEADING.match(line):
            name, shift = _heading(line)
            if name:
                if found and found[-1].name == "end":
                    raise ReadError("there is text behind End", Place(number, _first(line)))
                found.append(Section(name, Place(number, _first(line))))
        if len(line) == shift or line.isspace():
            continue
        if not found:
            raise ReadError("the file must begin with Minimize or Maximize", Place(number, _first(line)))
        if found[-1].name == "end":
            raise ReadError("there is text behind End", Place(number, shift + _first(line[shift:])))
        found[-1].add_line(line[shift:], number, shift)
    if not found or found[0].name not in ("maximise", "minimise"):
        raise ReadError("the file must begin with Minimize or Maximize", Place(1))
    if found[-1].name != "end":
        raise ReadError("the file ends without End", Place(text.count("\n") + 1))
    for section in found:
        section.close()
    return found


def _first(text: str) -> int:
    return 1 + len(text) - len(text.lstrip())


def _heading(line: str) -> tuple[str | None, int]:
    """The section that the line begins, and where the rest of the line begins."""
    for name, pattern in HEADINGS:
        match = pattern.match(line)
        if match:
            return name, match.end()
    return None, 0
