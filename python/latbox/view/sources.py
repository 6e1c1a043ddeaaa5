"""Whence the server has its events: a pipe from the run, or a file that may grow."""

from __future__ import annotations

import os

PIECE = 1 << 20  # read at a time
PIECES = 4  # in a turn: the server looks at its windows in between
MOST_LINE = 8 << 20  # a line that is longer is none: a point of 300,000 variables
HEAD = 512  # bytes at the beginning of a file by which it is known again: one that was written anew may be as long as it was


class Lines:
    """Cuts what comes into lines."""

    def __init__(self) -> None:
        self._rest = b""
        self._is_too_long = False

    def cut(self, data: bytes) -> list[bytes]:
        whole, end, rest = data.rpartition(b"\n")
        if not end:
            self._rest += rest
            found = []
        else:
            found = (self._rest + whole).split(b"\n")
            if self._is_too_long:
                del found[0]
            self._rest, self._is_too_long = rest, False
        if len(self._rest) > MOST_LINE:
            self._rest, self._is_too_long = b"", True
        return found

    def clear(self) -> None:
        self._rest, self._is_too_long = b"", False


class Pipe:
    times = 0  # that it began anew

    def __init__(self, number: int) -> None:
        os.set_blocking(number, False)
        self._number = number
        self._lines = Lines()

    def lines(self) -> tuple[list[bytes], bool]:
        found: list[bytes] = []
        for _ in range(PIECES):
            try:
                data = os.read(self._number, PIECE)
            except BlockingIOError:
                break
            except OSError:
                data = b""
            if not data:
                return found + self._lines.cut(b"\n"), False
            found += self._lines.cut(data)
        return found, True


class File:
    """Followed for ever. One that was cut or replaced is read anew."""

    def __init__(self, path: str) -> None:
        """Throws OSError."""
        self._path = path
        self._file = open(path, "rb")
        self._lines = Lines()
        self._place = 0
        self._head = b""
        self.times = 0  # that it began anew

    def lines(self) -> tuple[list[bytes], bool]:
        self._look()
        found: list[bytes] = []
        for _ in range(PIECES):
            data = self._file.read(PIECE)
            if not data:
                break
            if len(self._head) < HEAD:
                self._head += data[: HEAD - len(self._head)]
            self._place += len(data)
            found += self._lines.cut(data)
        return found, True

    def close(self) -> None:
        self._file.close()

    def _look(self) -> None:
        try:
            known, now = os.fstat(self._file.fileno()), os.stat(self._path)
            if (known.st_dev, known.st_ino) != (now.st_dev, now.st_ino):
                file = open(self._path, "rb")
                self._file.close()
                self._file = file
            elif now.st_size >= self._place and os.pread(self._file.fileno(), len(self._head), 0) == self._head:
                return
        except OSError:
            return  # it is away for a moment, or for good: what was read stays
        self._file.seek(0)
        self._place = 0
        self._head = b""
        self.times += 1
        self._lines.clear()
