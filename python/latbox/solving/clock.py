"""The time of work of a run: pauses do not count, and its limit is one of work."""

from __future__ import annotations

import time


class Clock:
    def __init__(self, started: float | None, limit: float | None) -> None:
        """`started`: of the clock time.monotonic(), None for now. The limit in seconds, None for none."""
        self._started = time.monotonic() if started is None else started
        self._limit = limit
        self._paused = 0.0  # seconds of pauses that are over
        self._pause_began: float | None = None

    def seconds(self) -> float:
        now = time.monotonic() if self._pause_began is None else self._pause_began
        return now - self._started - self._paused

    def left(self) -> float | None:
        """Seconds, 0 or less behind the limit; None without one."""
        return None if self._limit is None else self._limit - self.seconds()

    def is_late(self) -> bool:
        return self._limit is not None and self.seconds() >= self._limit

    @property
    def is_paused(self) -> bool:
        return self._pause_began is not None

    def paused(self) -> float:
        """Seconds of all pauses."""
        return self._paused + (time.monotonic() - self._pause_began if self._pause_began is not None else 0.0)

    def pause(self) -> None:
        """Requires that it goes."""
        self._pause_began = time.monotonic()

    def go_on(self) -> None:
        """Requires a pause."""
        self._paused = self.paused()
        self._pause_began = None
