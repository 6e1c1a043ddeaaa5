"""Which machines are believed: a worker whose results are refused again and again gets no more of them.

The engine blocks machines by the name that they give themselves, not single workers, and one that wants to come back takes
another name: this keeps broken machines away, and the password strangers.
"""

from __future__ import annotations

from collections import Counter

# So many refusals, and more of them than results that were taken, block a machine.
MOST_REFUSALS = 3


class Trust:
    def __init__(self) -> None:
        self._taken: Counter[str] = Counter()
        self._refused: Counter[str] = Counter()
        self.blocked: set[str] = set()

    def take(self, host: str) -> None:
        self._taken[host] += 1

    def refuse(self, host: str) -> bool:
        """Whether that is enough to block it, now."""
        self._refused[host] += 1
        refused = self._refused[host]
        if host in self.blocked or refused < MOST_REFUSALS or refused <= self._taken[host]:
            return False
        self.blocked.add(host)
        return True
