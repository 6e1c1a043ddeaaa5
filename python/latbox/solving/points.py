"""The engines' files of points, followed while they grow or are put in each other's place."""

from __future__ import annotations

import os
from collections.abc import Iterable
from fractions import Fraction
from typing import BinaryIO

from ..errors import EngineError
from . import exact

def text_of(values: Iterable[Fraction]) -> str:
    """The beginning of a .sol line, which is all that is read of it."""
    return "[ %s ]" % " ".join(map(exact.mixed, values))


class Follower:
    """New whole lines of a file that another process appends to, or replaces by a rename.

    The file that was read last stays open: while it is, no other one can get its number, by which it is known again.
    """

    def __init__(self, path: str) -> None:
        self.path = path
        self._file: BinaryIO | None = None
        self._offset = 0

    def points(self) -> list[list[Fraction]]:
        """Those of lines()."""
        return [point(line) for line in self.lines()]

    def lines(self) -> list[str]:
        """Those that have come since the last call; of a file that took another's place, all."""
        file = self._current()
        if file is None:
            return []
        file.seek(self._offset)
        data = file.read()
        whole = data[: data.rfind(b"\n") + 1]
        self._offset += len(whole)
        return whole.decode().splitlines()

    def _current(self) -> BinaryIO | None:
        """The file that has the name now, or had it last; None if there was none yet."""
        try:
            if self._file is None or not os.path.samestat(os.stat(self.path), os.fstat(self._file.fileno())):
                self.close()
                self._file = open(self.path, "rb")
                self._offset = 0
        except FileNotFoundError:
            pass
        return self._file

    def close(self) -> None:
        if self._file is not None:
            self._file.close()
            self._file = None


def point(line: str) -> list[Fraction]:
    """The point of a line `[ x1 x2 ... ] | ...`."""
    begin, end = line.find("["), line.find("]")
    try:
        if begin != 0 or end < 0:
            raise ValueError
        return [exact.number(word) for word in line[begin + 1 : end].split()]
    except (ValueError, ZeroDivisionError):
        raise EngineError("an engine wrote a line of points that cannot be read: " + line[:80]) from None
