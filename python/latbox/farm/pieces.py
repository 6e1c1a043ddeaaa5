"""What latbox-all is asked of pieces, and what its answers say."""

from __future__ import annotations

import re
from dataclasses import dataclass

from ..errors import EngineError, LatboxError, UsageError
from ..solving.statuses import USAGE
from .desk import Answer

CUT = re.compile(r"split: ([0-9]+) pieces?(?:, ([0-9]+) to ([0-9]+))?\Z")
TAKEN = re.compile(r"piece ([0-9]+): (?:done|open ([0-9]+) prefix(?:es)?), ([0-9]+) points?, ([0-9]+) nodes?(?:,? best (.+))?\Z")
STANDING = re.compile(r"([0-9]+) (open|partial|done|split) ([-+.0-9a-z]+) ([0-9]+) ([0-9]+)\Z")

# What is wrong, on standard error.
SAID = re.compile(r"^latbox-all: (.*)$", re.MULTILINE)

# Nothing is done of it; something is, and what is left stands in its result; all is; other pieces stand for what is left.
OPEN, PARTIAL, DONE, SPLIT = "open", "partial", "done", "split"


@dataclass(frozen=True)
class Standing:
    """A piece that counts, as it stands in the folder."""

    piece: int
    state: str
    estimate: float  # nodes
    points: int  # of its result
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
        raise failure(answer, "--pieces")
    found = []
    for line in answer.out:
        match = STANDING.match(line)
        if match:
            found.append(Standing(int(match[1]), match[2], float(match[3]), int(match[4]), int(match[5])))
        elif line:
            raise EngineError("latbox-all --pieces=1 says %r" % line)
    return found


def cut(answer: Answer) -> range:
    """Of --split: the new pieces."""
    match = CUT.match(answer.out[-1]) if answer.out else None
    if answer.status != 0 or not match:
        raise failure(answer, "--split")
    first = int(match[2] or 1)
    return range(first, first + int(match[1]))


def taken(answer: Answer) -> Taken | None:
    """Of --take; None where the result is refused, for the reason on standard error. Throws EngineError for what is neither, as a
    full disk, which is not the worker's."""
    if answer.status == 1 and ": not taken: " in answer.err:
        return None
    match = TAKEN.match(answer.out[-1]) if answer.out else None
    if answer.status != 0 or not match:
        raise failure(answer, "--take")
    return Taken(int(match[2] or 0), int(match[3]), int(match[4]), match[5])


def failure(answer: Answer, call: str) -> LatboxError:
    """In the words of latbox-all, if it has any; wrong input is the user's."""
    words = said(answer)
    if answer.status == USAGE:
        return UsageError(words)
    return EngineError(words or "latbox-all %s failed with status %d" % (call, answer.status))


def said(answer: Answer) -> str:
    """What is wrong, without the name of who says so."""
    return "\n".join(match[1] for match in SAID.finditer(answer.err)) or answer.err
