"""How much processor time strangers get: a purse that is filled slowly, and from which what they cost is paid.

Whoever connects without end can cost the run no more than that: while the purse is empty nobody new is heard. A niceness would not
do: next to engines that take all processors it makes even a single page wait, and on a machine with room it limits nothing.
"""

from __future__ import annotations

import time

# Of one processor; a page that is opened costs about 0.02 s.
RATE = 0.005
MOST = 0.1


class Purse:
    def __init__(self, rate: float = RATE, most: float = MOST) -> None:
        self._rate = rate
        self._most = most
        self._left = most
        self._seen = time.monotonic()

    def pay(self, seconds: float) -> None:
        """It may be overdrawn by what one turn costs."""
        self._fill()
        self._left -= seconds

    def wait(self) -> float:
        """Seconds until something can be spent; 0: now."""
        self._fill()
        return max(0.0, -self._left / self._rate)

    def _fill(self) -> None:
        now = time.monotonic()
        self._left = min(self._most, self._left + (now - self._seen) * self._rate)
        self._seen = now
