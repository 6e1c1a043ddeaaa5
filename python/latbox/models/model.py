"""A linear integer model as a modelling format states it: names, exact numbers, bounds, rows.

All numbers are Fractions; a bound or side that is missing is `INF` or `-INF`, which compare with Fractions and are never
calculated with. A model says what its text says, nothing is rounded, implied or shifted here.
"""

from __future__ import annotations

import copy
import re
import sys
from dataclasses import dataclass, field
from fractions import Fraction
from typing import KeysView, Union

from ..errors import ModelError, Place, ReadError

INF = float("inf")
Bound = Union[Fraction, float]  # a Fraction, INF or -INF

# What the modelling formats take for "no bound", if it is written as such: see limited().
INFINITE_FROM = Fraction(10) ** 20
POWER_OF_TEN = re.compile(r"-?1e\+([0-9]+)\Z")
# 1e999999999 is a number of the formats and nothing that anybody means; as a fraction it would fill the memory.
GREATEST_EXPONENT = 4000
# As in the programs of the solver.
LONGEST_NUMBER = 100_000

NUMBER = re.compile(r"([+-]?)([0-9]*)(?:\.([0-9]*))?(?:[eEdD]([+-]?[0-9]+))?\Z", re.ASCII)
INFINITE = re.compile(r"([+-]?)inf(?:inity)?\Z", re.IGNORECASE)


@dataclass
class Variable:
    """lower <= x <= upper. An integer variable takes multiples of 1 / 10**digits (digits is 0 but for the decimals of
    .opt programs), one that is not integer is continuous. A `semi` variable may be 0 besides (lower..upper need not
    contain 0)."""

    name: str
    place: Place | None = None
    integer: bool = False
    lower: Bound = Fraction(0)
    upper: Bound = INF
    semi: bool = False
    digits: int = 0

    @property
    def step(self) -> Fraction:
        """What the values of an integer variable are multiples of."""
        return Fraction(1, 10**self.digits)

    @property
    def is_continuous(self) -> bool:
        """Whether it takes what no grid holds. One that is fixed takes its value, whatever that is."""
        return not self.integer and (self.semi or self.lower != self.upper)


# How the command says that its user has to give digits.
ASK_FOR_DIGITS = "--digits=N"


def without_grid(variable: Variable) -> ModelError:
    """A continuous variable that nobody has given digits."""
    return ModelError("variable %s is continuous: declare it integer, or ask for a decimal grid with %s" % (variable.name, ASK_FOR_DIGITS),
                      variable.place)


@dataclass
class Row:
    """lower <= sum of coefficients times variables <= upper; coefficients by the variable's position."""

    name: str
    place: Place | None = None
    lower: Bound = -INF
    upper: Bound = INF
    coefficients: dict[int, Fraction] = field(default_factory=dict)


@dataclass
class Goal:
    """A row that is to come as near to `value` as possible: |row - value| is added to what is minimised."""

    row: Row
    value: Fraction


@dataclass
class Note:
    """What a reader did where readers of the format differ, or left out: to be told, no error."""

    message: str
    place: Place | None = None


def finite(bound: Bound) -> Fraction:
    """A bound that is known to be finite, as the Fraction that it is then."""
    assert isinstance(bound, Fraction)
    return bound


class Model:
    """variables, rows, and what is minimised or maximised:

    objective row + constant (`maximise` tells the direction; None: any point will do), and for .opt programs with values
    to be reached the sum of |row - value| over `goals`, which is minimised together with the objective.
    """

    def __init__(self, name: str = "") -> None:
        self.name = name
        self.maximise = False
        self.objective: Row | None = None  # its sides mean nothing
        self.constant = Fraction(0)  # of the objective
        self.goals: list[Goal] = []
        self.variables: list[Variable] = []
        self.rows: list[Row] = []
        self.left_out: list[str] = []  # names of rows that ask for nothing
        self.notes: list[Note] = []
        self._positions: dict[str, int] = {}

    def position(self, name: str) -> int | None:
        """The position of a variable, or None."""
        return self._positions.get(name)

    def names(self) -> KeysView[str]:
        """Those of the variables, to look one up."""
        return self._positions.keys()

    def add_variable(self, name: str, place: Place | None = None) -> int:
        """A new variable, continuous from 0 on, and its position."""
        if not name:
            raise ReadError("a variable has an empty name", place)
        if name in self._positions:
            raise ReadError("variable %s stands twice" % name, place)
        self._positions[name] = len(self.variables)
        self.variables.append(Variable(name, place))
        return self._positions[name]

    def with_variables(self, variables: list[Variable]) -> Model:
        """The same model of variables that have other bounds or kinds; their names and their order are the same."""
        result = copy.copy(self)
        result.variables = variables
        return result

    def note(self, message: str, place: Place | None = None) -> None:
        self.notes.append(Note(message, place))

    def note_long(self, value: Bound, place: Place | None = None) -> None:
        """Tells, once, that a side or bound is a number here, and none for readers that calculate in floats."""
        message = "a side or bound of 1e20 or more that is written out is the number that it says, where other readers take it for none"
        is_long = abs(value) != INF and abs(finite(value)) >= INFINITE_FROM
        if is_long and all(note.message != message for note in self.notes):
            self.note(message, place)


def number(text: str, place: Place | None = None) -> Fraction:
    """The exact value of a finite decimal number."""
    match = NUMBER.match(text)
    if not match or not (match[2] or match[3]):
        raise ReadError("%s is not a number" % shown(text), place)
    sign, whole, part, exponent = match.groups()
    part = part or ""
    if len(whole) + len(part) > LONGEST_NUMBER:
        raise ReadError("%s is longer than %d digits" % (shown(text), LONGEST_NUMBER), place)
    power = -len(part)
    if exponent:
        if len(exponent) > 9 or abs(int(exponent)) > GREATEST_EXPONENT:
            raise ReadError("the exponent of %s is beyond %d" % (shown(text), GREATEST_EXPONENT), place)
        power += int(exponent)
    value = int_of_digits(sign + whole + part)
    if power >= 0:
        return Fraction(value * 10**power)
    return Fraction(value, 10**-power)


def int_of_digits(text: str) -> int:
    """int(text), for texts of any length: int() itself refuses those beyond some thousand digits."""
    if len(text) < 4000:
        return int(text)
    negative = text[0] == "-"
    digits = text.lstrip("+-")
    half = len(digits) // 2
    value: int = int_of_digits(digits[:-half]) * 10**half + int_of_digits(digits[-half:])
    return -value if negative else value


def bound(text: str, place: Place | None = None) -> Bound:
    """A number, or an infinity in words or as limited() knows it."""
    match = INFINITE.match(text)
    if match:
        return -INF if match[1] == "-" else INF
    return limited(number(text, place), text)


def limited(value: Fraction, text: str) -> Bound:
    """A side or bound as the formats mean it: from 1e20 on it is none, if it has an exponent or is what a writer of floats makes
    of one: a power of ten, or the double next to it. Any other number of so many digits is nobody's infinity, but an exact number
    of a model for lattices."""
    if abs(value) < INFINITE_FROM or not (set(text) & set("eEdD") or _is_round(value)):
        return value
    return INF if value > 0 else -INF


def _is_round(value: Fraction) -> bool:
    try:
        double = float(value)
    except OverflowError:
        return False
    match = POWER_OF_TEN.match(repr(double))
    if match is None:
        return abs(double) == sys.float_info.max and Fraction(double) == value
    return abs(value) in (10 ** int(match[1]), Fraction(abs(double)))


def shown(text: str) -> str:
    """A text in quotes for a message, its middle left out where it is long."""
    return repr(text) if len(text) <= 60 else repr(text[:30] + "..." + text[-20:])
