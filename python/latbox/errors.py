"""What can go wrong, as exceptions: all of them are LatboxErrors, so that a caller may catch everything with one name.

    LatboxError
      PlacedError       has a file, a line and a column, as far as they are known
        ReadError       a text is no model
        ModelError      a model cannot be stated as a program or is used in a way it does not allow
      UsageError        an option or an argument is wrong
      EngineError       an engine is not found, does not start or breaks its word
        InternalError   what an engine or the rewriting says cannot be true: nothing of it is an answer
"""

from __future__ import annotations

from collections.abc import Iterator
from contextlib import contextmanager
from typing import NamedTuple


class Place(NamedTuple):
    """Where something stands in a text; lines and columns count from 1, column 0 stands for the line as a whole."""

    line: int
    column: int = 0


class LatboxError(Exception):
    """The base of all exceptions of this package."""


class PlacedError(LatboxError):
    """Something is wrong at a place: `file`, `place` (each None where it is not known) and `message`, without the place."""

    def __init__(self, message: str, place: Place | None = None, file: str | None = None) -> None:
        super().__init__(message)
        self.message = message
        self.place = place
        self.file = file

    def __str__(self) -> str:
        return place_text(self.file, self.place) + self.message

    def in_file(self, file: str) -> PlacedError:
        """The same error, with the file in which it was met unless that is known."""
        self.file = self.file or file
        return self


class ReadError(PlacedError):
    """A text cannot be read as a model."""


class ModelError(PlacedError):
    """A model is read, and cannot be stated as asked: a continuous column without digits, bounds that leave nothing."""


class UsageError(LatboxError):
    """An option or an argument is wrong; the message names it and says what would be right."""


class EngineError(LatboxError):
    """An engine is not found, does not start, or prints what it must not."""


class InternalError(EngineError):
    """A point that is none, or a verdict that another one contradicts. Please report it, with the model."""


def os_error_text(error: OSError) -> str:
    """`m.lp: No such file or directory`."""
    where = "%s: " % error.filename if error.filename else ""
    return where + (error.strerror or str(error))


@contextmanager
def naming(what: str) -> Iterator[None]:
    """An OSError within gets this as its file's name: the option that it comes from, say."""
    try:
        yield
    except OSError as error:
        raise OSError(error.errno, error.strerror or str(error), what) from None


def counted(number: int, word: str, many: str = "") -> str:
    """1 point, 2 points; `many` where that is not the word with an s."""
    return "%d %s" % (number, word if number == 1 else many or word + "s")


def place_text(file: str | None, place: Place | None) -> str:
    """`m.lp, line 3, column 7: `, and as much of it as there is."""
    parts = [file] if file else []
    if place:
        parts.append("line %d" % place.line)
        parts += ["column %d" % place.column] * bool(place.column)
    return ", ".join(parts) + ": " if parts else ""
