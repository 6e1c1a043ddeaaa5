"""A linear integer model as a modelling format states it: names, exact numbers, bounds, rows."""

import re
import sys
from fractions import Fraction

INF = float("inf")

# What the modelling formats take for "no bound".
INFINITE_FROM = Fraction(10) ** 20
# 1e999999999 is a number of the formats and nothing that anybody means; as a fraction it would fill the memory.
GREATEST_EXPONENT = 4000

NUMBER = re.compile(r"[+-]?(?:[0-9]+\.?[0-9]*|\.[0-9]+)(?:[eEdD]([+-]?[0-9]+))?\Z")
INFINITE = re.compile(r"([+-]?)inf(?:inity)?\Z", re.IGNORECASE)


class Refusal(Exception):
    """The model can't be read or can't be stated as a program; `line` is the place in its file, if there is one."""

    def __init__(self, message, line=None):
        super().__init__(message)
        self.line = line


class Variable:
    """lower <= x <= upper; whole numbers if `integer`. The bounds are a Fraction or an infinity."""

    def __init__(self, name, line):
        self.name = name
        self.line = line
        self.integer = False
        self.lower = Fraction(0)
        self.upper = INF


class Row:
    """lower <= sum of coefficients times variables <= upper; coefficients by the variable's position."""

    def __init__(self, name, line, lower=-INF, upper=INF):
        self.name = name
        self.line = line
        self.coefficients = {}
        self.lower = lower
        self.upper = upper


class Model:
    def __init__(self, name=""):
        self.name = name
        self.maximise = False
        self.objective = None  # a Row without sides, or None
        self.constant = Fraction(0)  # of the objective
        self.variables = []
        self.rows = []
        self.left_out = []  # names of rows that ask for nothing
        self._positions = {}

    def position(self, name):
        """The position of a variable, or None."""
        return self._positions.get(name)

    def add_variable(self, name, line):
        if not name:
            raise Refusal("a variable has an empty name", line)
        if name in self._positions:
            raise Refusal("variable %s stands twice" % name, line)
        self._positions[name] = len(self.variables)
        self.variables.append(Variable(name, line))
        return self._positions[name]


def number(text, line):
    """The exact value of a finite number."""
    match = NUMBER.match(text)
    if not match:
        raise Refusal("%r is not a number" % text, line)
    if match.group(1) and abs(int(match.group(1))) > GREATEST_EXPONENT:
        raise Refusal("the exponent of %s is beyond %d" % (text, GREATEST_EXPONENT), line)
    return Fraction(re.sub("[dD]", "e", text))


def bound(text, line):
    """A number, or an infinity in words or as a number from 1e20 on."""
    match = INFINITE.match(text)
    if match:
        return -INF if match.group(1) == "-" else INF
    value = number(text, line)
    if abs(value) < INFINITE_FROM:
        return value
    return INF if value > 0 else -INF


def read_text(path):
    """The text of a file. Bytes that are no UTF-8 pass through to the names in the output."""
    with open(path, encoding="utf-8", errors="surrogateescape", newline=None) as file:
        return file.read()


def write_text(path, text):
    data = text.encode("utf-8", errors="surrogateescape")
    if path is None:
        sys.stdout.buffer.write(data)
        sys.stdout.buffer.flush()
    else:
        with open(path, "wb") as file:
            file.write(data)
