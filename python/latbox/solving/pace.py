"""How fast a count grows of late, and a time in words."""

from __future__ import annotations

from collections import deque

# Seconds that count as of late: the complete engine tells its nodes every two seconds.
WINDOW = 10.0
UNITS = ((1.0, "s"), (60.0, "min"), (3600.0, "h"), (86400.0, "days"), (365.25 * 86400.0, "years"))


class Pace:
    """Of a count that never falls, but for a count that begins anew."""

    def __init__(self) -> None:
        self._seen: deque[tuple[float, float]] = deque()

    def of(self, seconds: float, count: float) -> float | None:
        """A second, over the window until now; None before the count has grown."""
        if self._seen and count < self._seen[-1][1]:
            self._seen.clear()
        if not self._seen or count != self._seen[-1][1]:
            self._seen.append((seconds, count))
        while len(self._seen) > 2 and self._seen[1][0] <= seconds - WINDOW:
            self._seen.popleft()
        (first, low), (last, high) = self._seen[0], self._seen[-1]
        # A count that stands still for longer than the window gets slower and slower.
        span = max(last - first, seconds - first - WINDOW)
        return (high - low) / span if high > low and span > 0 else None


def duration(seconds: float | None) -> str | None:
    """With two digits or the whole number, in the unit that suits it: as the complete engine writes times."""
    if seconds is None:
        return None
    unit, name = next(((unit, name) for unit, name in reversed(UNITS) if seconds >= unit), UNITS[0])
    return "%.*f %s" % (0 if seconds / unit >= 10 else 1, seconds / unit, name)
