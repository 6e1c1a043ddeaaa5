"""A stream that people look at: lines of text, and a last line in place where it is a terminal.

Who closes the terminal still gets files and exit status: nothing here fails.
"""

from __future__ import annotations

import os
from typing import IO

CLEAR = "\r\x1b[K"
LEAST_WIDTH = 20


class StatusLine:
    """Requires that only this writes to the stream while it is in use."""

    def __init__(self, stream: IO[str]) -> None:
        self._stream = stream
        self.is_in_place = is_terminal(stream)
        self._shown = False

    def write(self, text: str) -> None:
        try:
            self._stream.write(text)
            self._stream.flush()
        except (OSError, ValueError):
            pass

    def show(self, words: list[str]) -> None:
        """In place, as many of the words as there is room for; elsewhere a line of all."""
        if self.is_in_place:
            self.write(CLEAR + fitted(words, self._width() - 1))
            self._shown = True
        else:
            self.write("  ".join(words) + "\n")

    def clear(self) -> None:
        """Nothing is left of the line in place."""
        if self._shown:
            self.write(CLEAR)
            self._shown = False

    def _width(self) -> int:
        try:
            columns = os.get_terminal_size(self._stream.fileno()).columns
        except OSError:
            columns = 80
        return max(LEAST_WIDTH, columns or 80)


def is_terminal(stream: IO[str]) -> bool:
    try:
        return stream.isatty() and os.environ.get("TERM") != "dumb"
    except ValueError:
        return False


def fitted(words: list[str], width: int) -> str:
    line = ""
    for word in words:
        longer = line + "  " + word if line else word
        if len(longer) <= width:
            line = longer
    return line[:width]
