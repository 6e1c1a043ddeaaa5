"""What latbox-all is asked of pieces, and what its answers say."""

from __future__ import annotations

import re
from dataclasses import dataclass

from ..errors import EngineError
from .desk import Answer

SPLIT = re.compile(r"split: ([0-9]+) pieces?\Z")
TAKEN = re.compile(r"piece ([0-9]+): (?:done|open ([0-9]+) prefix(?:es)?), ([0-9]+) points?, ([0-9]+) nodes?(?:,? best (.+))?\Z")
STANDING = re.compile(r"([0-9]+) (open|partial|done) ([-+.0-9a-z]+)(?: ([0-9]+) ([0-9]+))?\Z")

OPEN, PARTIAL, DONE = "open", "partial", "done"


@dataclass(frozen=True)
class Standing:
    """A piece that counts, as it stands in the folder."""

    piece: int
    state: str  # OPEN, PARTIAL, DONE
    estimate: float  # nodes
    points: int
    nodes: int


@dataclass(frozen=True)
class Taken:
    """A result that was believed and put in place."""

    unfinished: int  # prefixes; 0: the piece is done
    points: int
    nodes: int
    best: str | None


def listing(answer: Answer) -> list[Standing]:
    """Of --pieces=1."""
    if answer.status != 0:
        raise EngineError(answer.err or "latbox-all --pieces=1 failed with status %d" % answer.status)
    found = []
    for line in answer.out:
        match = STANDING.match(line)
        if match:
            found.append(Standing(int(match[1]), match[2], float(match[3]), int(match[4] or 0), int(match[5] or 0)))
        elif line:
            raise EngineError("latbox-all --pieces=1 says %r" % line)
    return found


def number_split(answer: Answer) -> int:
    """Of --split: the new pieces are the last so many lines of the manifest."""
    match = SPLIT.match(answer.out[-1]) if answer.out else None
    if answer.status != 0 or not match:
        raise EngineError(answer.err or "latbox-all --split failed with status %d" % answer.status)
    return int(match[1])


def taken(answer: Answer) -> Taken | None:
    """Of --take; None where the result is refused, for the reason on standard error. Throws EngineError for what is neither."""
    if answer.status == 1:
        return None
    match = TAKEN.match(answer.out[-1]) if answer.out else None
    if answer.status != 0 or not match:
        raise EngineError(answer.err or "latbox-all --take failed with status %d" % answer.status)
    return Taken(int(match[2] or 0), int(match[3]), int(match[4]), match[5])
