"""Numbers, vectors and matrices as users have them: what is taken for one, exactly, and what comes back.

Whole numbers, Fractions and Decimals are what they are. A float is the decimal that is shown of it, for 0.1 is meant as 0.1; numpy's
numbers and arrays are taken where numpy is, and it is never needed. Whatever is wrong is a UsageError with the argument's name.
"""

from __future__ import annotations

import math
from collections.abc import Mapping, Sequence, Set
from decimal import Decimal, InvalidOperation
from fractions import Fraction
from typing import Any, Union

from .errors import UsageError, counted
from .models.model import LONGEST_NUMBER, shown

Number = Union[int, Fraction]  # whole numbers are ints
Exact = Union[int, Fraction, Decimal, float]  # what is taken for a number; a float counts as its shortest decimal


def plain(value: Fraction) -> Number:
    return value.numerator if value.denominator == 1 else value


def exact(name: str, value: Any) -> Fraction:
    """The number that is meant. Throws UsageError."""
    value = from_numpy(value)
    if isinstance(value, float) and math.isfinite(value):
        return Fraction(float.__repr__(value))
    if isinstance(value, Decimal) and value.is_finite():
        if abs(int(value.as_tuple().exponent)) > LONGEST_NUMBER:
            raise UsageError("%s: the exponent of %s is beyond %d" % (name, shown(str(value)), LONGEST_NUMBER))
        return Fraction(value)
    if isinstance(value, (int, Fraction)):
        return Fraction(value)
    raise UsageError("%s: %r is not a number" % (name, value))


def from_numpy(value: Any) -> Any:
    """The number of Python that a number of numpy is; a float that is not Python's is the decimal that numpy shows of it, for a
    float32 of 0.1 is meant as 0.1. Whatever else comes goes as it came."""
    if isinstance(value, float) or dimensions(value) or not hasattr(value, "item"):
        return value
    if getattr(getattr(value, "dtype", None), "kind", "") != "f":
        return value.item()
    try:
        return Decimal(str(value))
    except InvalidOperation:  # a masked entry, which has no value
        return value


def dimensions(value: Any) -> int:
    """Of an array of numpy; 0 of a number, its own ones too."""
    return getattr(value, "ndim", 0)


def end_of(name: str, value: Any, missing: float) -> Fraction | float:
    """A bound or a side; `missing` is the infinity that stands for none."""
    value = from_numpy(value)
    is_infinite = isinstance(value, float) and math.isinf(value) or isinstance(value, Decimal) and value.is_infinite()
    if value is None or is_infinite and (value > 0) == (missing > 0):
        return missing
    return exact(name, value)


def is_sequence(value: Any) -> bool:
    """Its entries have an order that was meant: those of a set have none, and those of a dict are its keys."""
    is_single = hasattr(value, "ndim") and not value.ndim
    return hasattr(value, "__iter__") and not is_single and not isinstance(value, (str, bytes, Mapping, Set))


def count(value: Any) -> int:
    return len(value) if is_sequence(value) and hasattr(value, "__len__") else 0


def columns_of(A: Any) -> int:
    """Those that an array without rows has all the same."""
    return int(A.shape[1]) if dimensions(A) == 2 else 0


def listed(name: str, value: Any) -> list[Any]:
    if not is_sequence(value):
        raise UsageError("%s: a sequence is wanted" % name)
    return list(value)


def spread(name: str, value: Any, n: int) -> list[Any]:
    """One entry for each variable."""
    if isinstance(value, (Mapping, Set)):
        raise UsageError("%s: a sequence is wanted" % name)
    if not is_sequence(value):
        return [value] * n
    found = list(value)
    if len(found) != n:
        raise UsageError("A has %s, and %s has %s" % (counted(n, "column"), name, entries(len(found))))
    return found


def entries(number: int) -> str:
    return counted(number, "entry", "entries")


def sparse(name: str, row: Sequence[Any]) -> dict[int, Fraction]:
    values = ((j, exact(name, value)) for j, value in enumerate(row))
    return {j: value for j, value in values if value}


def is_array(value: Any) -> bool:
    return type(value).__module__.split(".")[0] == "numpy"


def as_array(point: Sequence[Number]) -> Any:
    """int64 where all values fit, objects else."""
    import numpy

    fits = all(isinstance(value, int) and abs(value) < 2**63 for value in point)
    return numpy.array(list(point), dtype=numpy.int64 if fits else object)
