"""Whole numbers and fractions of any length, to text and back: Python itself refuses those beyond some thousand digits, and
its limit belongs to whoever runs this package."""

from __future__ import annotations

import re
from fractions import Fraction
from typing import Union

from ..models.model import int_of_digits

# Below what every Python prints and reads.
SHORT_BITS = 2000
MIXED = re.compile(r"([+-]?)(?:([0-9]+):)?([0-9]+)/([0-9]+)\Z", re.ASCII)
DECIMAL = re.compile(r"([+-]?)([0-9]*)(?:\.([0-9]*))?\Z", re.ASCII)


def text(value: Union[int, Fraction]) -> str:
    """5, -3, 7/3."""
    if isinstance(value, Fraction) and value.denominator != 1:
        return digits(value.numerator) + "/" + digits(value.denominator)
    return digits(int(value))


def digits(value: int) -> str:
    """str(value)."""
    if value.bit_length() < SHORT_BITS:
        return str(value)
    if value < 0:
        return "-" + digits(-value)
    half = value.bit_length() * 3 // 20
    high, low = divmod(value, 10**half)
    return digits(high) + digits(low).rjust(half, "0")


def mixed(value: Fraction) -> str:
    """As .sol files have it: -2:1/3 for minus seven thirds."""
    value = Fraction(value)
    whole, rest = divmod(abs(value.numerator), value.denominator)
    if not rest:
        return digits(value.numerator)
    sign = "-" if value < 0 else ""
    return sign + (digits(whole) + ":" if whole else "") + digits(rest) + "/" + digits(value.denominator)


def number(word: str) -> Fraction:
    """5, -1.25, 1.5e-7, 3/4, -2:1/3. Throws ValueError."""
    match = MIXED.match(word)
    if match:
        sign, whole, above, below = match.groups()
        value = Fraction(int_of_digits(above), int_of_digits(below)) + int_of_digits(whole or "0")
        return -value if sign == "-" else value
    match = DECIMAL.match(word)
    if not match or not (match[2] or match[3]):
        return Fraction(word)
    sign, whole, part = match[1], match[2], match[3] or ""
    value = Fraction(int_of_digits(whole + part), 10 ** len(part))
    return -value if sign == "-" else value
