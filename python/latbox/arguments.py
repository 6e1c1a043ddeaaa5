"""The settings of a run as arguments of Python: the values that the command takes, and what would be right else (UsageError)."""

from __future__ import annotations

import operator
from fractions import Fraction
from typing import Any

from .arrays import Exact, exact
from .errors import UsageError
from .front import options as table
from .front.parsing import Wanted
from .solving.settings import ALL, AUTO, COMPLETE, LEAST_MEMORY, MOST_THREADS, SEARCH, Gap


def target_of(target: Exact | None) -> Fraction | None:
    return None if target is None else exact("target", target)


def engine_of(engine: Any) -> str:
    if not isinstance(engine, str) or engine not in (AUTO, SEARCH, COMPLETE):
        raise UsageError("engine=%r: 'auto', 'search' or 'complete' is wanted" % (engine,))
    return engine


def digits_of(digits: Any) -> int | None:
    if digits is None:
        return None
    found = index(digits)
    if found is None or not 0 <= found <= table.MOST_DIGITS:
        raise UsageError("digits=%r: a number of digits from 0 to 18 is wanted" % (digits,))
    return found


def time_of(time: Any) -> float | None:
    if time is None:
        return None
    try:
        seconds = Fraction(0) if isinstance(time, bool) else exact("time", time)
    except UsageError:
        seconds = Fraction(0)
    if not 0 < seconds < 10**10:
        raise UsageError("time=%r: seconds above 0 are wanted" % (time,))
    return float(seconds)


def solutions_of(solutions: Any) -> int:
    if isinstance(solutions, str) and solutions == "all":
        return ALL
    found = index(solutions)
    if found is None or not 1 <= found <= table.MOST_SOLUTIONS:
        raise UsageError("solutions=%r: a number of points from 1 to 10^15, or 'all' is wanted" % (solutions,))
    return found


def gap_of(gap: Any) -> Gap | None:
    if gap is None:
        return None
    try:
        found = table.take_gap(gap) if isinstance(gap, str) else Gap(exact("gap", gap))
    except Wanted:
        found = Gap(Fraction(-1))
    if found.value < 0:
        raise UsageError("gap=%r: a number of 0 or more, or a text as '0.1%%' is wanted" % (gap,))
    return found


def memory_of(memory: Any) -> int | None:
    if memory is None:
        return None
    found = index(memory)
    if found is None or not LEAST_MEMORY <= found < table.MEMORY_END:
        raise UsageError("memory=%r: a number of bytes, %d or more, is wanted" % (memory, LEAST_MEMORY))
    return found


def threads_of(threads: Any) -> int:
    found = whole_of("threads", threads)
    if found > MOST_THREADS:
        raise UsageError("threads=%r: %d or less are wanted" % (threads, MOST_THREADS))
    return found


def whole_of(name: str, value: Any) -> int:
    found = index(value)
    if found is None or found < 0:
        raise UsageError("%s=%r: a whole number, 0 or more, is wanted" % (name, value))
    return found


def index(value: Any) -> int | None:
    """A whole number of whatever type, and no truth value; None for all else."""
    try:
        return None if isinstance(value, bool) else operator.index(value)
    except TypeError:
        return None
