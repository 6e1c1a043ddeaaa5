"""The lines in which latbox reports, as patterns, and the numbers in them. Whoever reads its output or its log reads it by these."""

from __future__ import annotations

import math
import re

TARGET = re.compile(r"T\(bestTarget\) = (\S+), S\(bestTarget\) = (\S+?)(?: -- \{ (.*) \})?\s*\Z")
DEVIATION = re.compile(r"\[len,f,fs,fm,fc,tn\] = (\S+) [01] \S+ \S+ (\S+) \S+ \}")
SIEVEABLE = re.compile(r"Sieveable in/homogenous vectors: \(([0-9]{1,18}), ([0-9]{1,18})\)\s*\Z")
COUNTS = {
    "pairwise": re.compile(r"Pairwise collections: ([0-9]{1,18})\s*\Z"),
    "sampling": re.compile(r"Sampling collections: ([0-9]{1,18})\s*\Z"),
    "solutions": re.compile(r"Solutions found: ([0-9]{1,18})\s*\Z"),
}
ITERATIONS = re.compile(r"Total iterations: ([0-9]{1,18})\s*\Z")
RUNNING_TIME = re.compile(r"Total running time: (.*?)(?: -- Program end)?\s*\Z")
SECONDS = re.compile(r"([0-9]{1,18}) sec\(s\)\Z|[0-9:]+ (?:hour\(s\):)?min\(s\):sec\(s\) == ([0-9]{1,18}) secs\Z")
FIRST_OF_BASIS = "B[1]:"  # the line behind it is the vector
SETTING = re.compile(r"> Setting: (\w+) = (.*?)\s*\Z")
BANNER = re.compile(r"<< \S+ v\S+ \+\+\+ PID: [0-9]+ >>")
MIXED = re.compile(r"(-?)(?:([0-9]+):)?([0-9]+)/([0-9]+)\Z")


def number(text: str) -> float | None:
    """A number of a report as a float, or None if it is infinite or none."""
    match = MIXED.match(text)
    try:
        if match:
            sign, whole, part, below = match.groups()
            value = int(whole or 0) + int(part) / int(below)
            value = -value if sign else value
        else:
            value = float(text)
    except (ValueError, OverflowError, ZeroDivisionError):
        return None
    # Beyond this the differences of a scale overflow.
    return value if abs(value) < 1e300 else None


def length(text: str) -> float | None:
    """The Euclidean length of a vector `[ 1 2 3 ]`, or None."""
    words = text.split()
    if len(words) < 3 or words[0] != "[" or words[-1] != "]":
        return None
    values = [number(word) for word in words[1:-1]]
    finite = [value for value in values if value is not None]
    if len(finite) < len(values):
        return None
    size = math.hypot(*finite)
    return size if 0 < size < math.inf else None


def seconds(text: str) -> int | None:
    match = SECONDS.match(text)
    return int(match.group(1) or match.group(2)) if match else None
