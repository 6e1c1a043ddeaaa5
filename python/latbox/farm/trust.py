"""Which machines are believed: one whose results are refused again and again gets no pieces for a while, and each time for longer.

The engine blocks machines by the name that they give themselves, not single workers, and one that wants to come back takes
another name: this keeps broken machines away, and the password strangers. An honest worker beside a broken one is blocked with it,
so no block is for ever.
"""

from __future__ import annotations

from collections import Counter

# So many refusals, and more of them than results that were taken, since the last block.
MOST_REFUSALS = 3
# Seconds, and by what they grow.
FIRST_BLOCK = 60
LONGER = 4


class Trust:
    def __init__(self) -> None:
        self._taken: Counter[str] = Counter()
        self._refused: Counter[str] = Counter()
        self._blocks: Counter[str] = Counter()

    def take(self, host: str) -> None:
        self._taken[host] += 1

    def refuse(self, host: str) -> int:
        """For how many seconds it gets nothing now; 0: it goes on."""
        self._refused[host] += 1
        if self._refused[host] < MOST_REFUSALS or self._refused[host] <= self._taken[host]:
            return 0
        self._refused[host] = self._taken[host] = 0
        self._blocks[host] += 1
        return int(FIRST_BLOCK * LONGER ** (self._blocks[host] - 1))
