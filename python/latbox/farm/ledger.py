"""Which pieces are open, out or done, and how much of the search that is.

The largest go out first: what begins last is small, and few cores wait for the end of the last one (Graham, Bounds on
multiprocessing timing anomalies, 1969: at most a third above the best order, and close to it where pieces are many).
"""

from __future__ import annotations

import heapq


class Ledger:
    def __init__(self) -> None:
        self._estimates: dict[int, float] = {}
        self._waiting: list[tuple[float, int]] = []
        self._failures: dict[int, int] = {}
        self._done_estimate = 0.0
        self._open_estimate = 0.0
        self._finished: dict[int, int] = {}  # piece -> its points
        self.points = 0

    # ------------------------------------------------------------- its pieces

    def expect(self, piece: int, estimate: float) -> None:
        """It counts, and does not go out by itself."""
        self._estimates[piece] = max(1.0, estimate)
        self._open_estimate += self._estimates[piece]

    def add(self, piece: int, estimate: float) -> None:
        self.expect(piece, estimate)
        self._give_back(piece)

    def next(self) -> int | None:
        """The largest that waits; it is out then."""
        while self._waiting:
            piece = heapq.heappop(self._waiting)[1]
            if self.is_open(piece):
                return piece
        return None

    def _give_back(self, piece: int) -> None:
        heapq.heappush(self._waiting, (-self._estimates[piece], piece))

    def fail(self, piece: int) -> int:
        """It goes out again; how often that has happened to it."""
        self._failures[piece] = self._failures.get(piece, 0) + 1
        self._give_back(piece)
        return self._failures[piece]

    def finish(self, piece: int, points: int) -> None:
        self._finished[piece] = points
        self.points += points
        self._close(self._estimates[piece])

    def reopen(self, piece: int) -> None:
        """It was done, and was not believed after all."""
        self.points -= self._finished.pop(piece)
        self._done_estimate -= self._estimates[piece]
        self._open_estimate += self._estimates[piece]

    def split(self, piece: int, points: int, left: float) -> None:
        """It has brought these points, and so many nodes are left of it for pieces that take its place."""
        self.points += points
        estimate = self._estimates.pop(piece)
        self._close(estimate)
        self._done_estimate -= min(left, estimate)

    def _close(self, estimate: float) -> None:
        self._open_estimate -= estimate
        self._done_estimate += estimate

    # ------------------------------------------------------------- what they are together

    def is_open(self, piece: int) -> bool:
        """It counts and is not done."""
        return piece in self._estimates and piece not in self._finished

    @property
    def done(self) -> int:
        return len(self._finished)

    @property
    def open(self) -> int:
        """Not done yet, whether out or not."""
        return len(self._estimates) - self.done

    @property
    def share(self) -> float:
        """Of the nodes that were expected, from 0 to 1."""
        whole = self._done_estimate + self._open_estimate
        return self._done_estimate / whole if self.open else 1.0
