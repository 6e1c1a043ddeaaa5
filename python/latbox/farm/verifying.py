"""A share of the pieces, drawn at random, is done once more by another worker: both results must say the same.

What a result claims of a piece without points cannot be computed again here, but it can be compared: a search visits the same nodes
on every processor, and so does the walk of a proof. Where two workers disagree nobody is believed: the piece goes out anew, and is
verified again. With an objective a search depends on what was known when it began, so that only the proof's pieces are compared.

Nobody outside knows which pieces are drawn. A farm that is started again draws among what is done from then on.
"""

from __future__ import annotations

import random
from collections import Counter
from fractions import Fraction


class Verifying:
    def __init__(self, share: Fraction) -> None:
        self._share = share
        self._draw = random.SystemRandom()
        self._suspects: set[int] = set()
        self._first: dict[int, str] = {}  # piece -> the worker whose result is in place
        self._failures: Counter[int] = Counter()
        self._held: list[int] = []

    @property
    def open(self) -> int:
        """So many have not been compared yet."""
        return len(self._first)

    def wants(self, piece: int) -> bool:
        return piece in self._suspects or (self._share > 0 and self._draw.random() < self._share)

    def begin(self, piece: int, worker: str) -> None:
        self._first[piece] = worker
        self.hold(piece)

    def hold(self, piece: int) -> None:
        """It waits for a worker other than the first, which is idle just now and would get it at once."""
        self._held.append(piece)

    def release(self, idle: str | None) -> list[int]:
        """What this idle worker can do; all that waits where nobody has anything to do."""
        found = [piece for piece in self._held if self._first[piece] != idle]
        self._held = [piece for piece in self._held if self._first[piece] == idle]
        return found

    def first_worker(self, piece: int) -> str:
        return self._first[piece]

    def fail(self, piece: int) -> int:
        """How often no second result has come."""
        self._failures[piece] += 1
        return self._failures[piece]

    def agree(self, piece: int) -> None:
        del self._first[piece]
        self._suspects.discard(piece)

    def disagree(self, piece: int) -> None:
        """It is verified whoever does it next."""
        del self._first[piece]
        self._suspects.add(piece)


def claims(text: str) -> list[str]:
    """What a result says of its piece: all but the times, the options behind each point, and the seal of these."""
    lines = text.splitlines()[:-1]
    return sorted(line.rsplit("|", 2)[0] if line.startswith("[") else line for line in lines)
