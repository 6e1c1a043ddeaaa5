"""The page of a log: JSON lines of latbox-solve, or what the console solver prints; of a run that is over, or goes on elsewhere."""

from __future__ import annotations

import os
import signal
import sys

from ..errors import LatboxError
from ..models import sources as texts
from . import address
from .console_log import ConsoleLog
from .server import Server
from .sources import File, Lines, Pipe


EVENT = b'{"event": '


class Log:
    """Lines of any of the two kinds, as events. They are JSON from the first line on that looks like an event; what stands before may be
    anything, the rest of a line that was cut."""

    def __init__(self, path: str) -> None:
        """Throws OSError."""
        self._name = os.path.basename(texts.shown_name(path))
        self._lines = source_of(path)
        self._is_json = False
        self.times = 0  # that it began anew
        self._console = ConsoleLog(self._name)

    def lines(self) -> tuple[list[bytes], bool]:
        found, more = self._lines.lines()
        if self._lines.times != self.times:
            self.times = self._lines.times
            self._is_json = False
            self._console = ConsoleLog(self._name)
        events = []
        for line in found:
            self._is_json = self._is_json or line.lstrip().startswith(EVENT)
            events += [line] if self._is_json else self._console.events(line)
        return events, more


def source_of(path: str) -> Pipe | Packed | File:
    if path == "-":
        return Pipe(0)
    if os.path.isdir(path):
        raise LatboxError("%s: it is a folder" % path)
    if not os.path.isfile(path) and os.path.exists(path):  # a pipe has no size, and cannot be read twice
        return Pipe(os.open(path, os.O_RDONLY | os.O_NONBLOCK))
    return Packed(path) if is_packed(path) else File(path)


class Packed:
    """Is over."""

    times = 0

    def __init__(self, path: str) -> None:
        self._rest = Lines().cut(texts.encoded(texts.read(path)) + b"\n")

    def lines(self) -> tuple[list[bytes], bool]:
        found, self._rest = self._rest, []
        return found, True


def is_packed(path: str) -> bool:
    with open(path, "rb") as file:
        first = file.read(8)
    return any(first.startswith(mark) for mark, _, _ in texts.PACKINGS)


def serve(path: str, port: int) -> None:
    """Until it is ended by a signal. Throws UsageError for a port that cannot be had."""
    log = Log(path)
    listener = address.listen(port)
    token = address.new_token()
    server = Server(listener, token, log, None, stays=True)
    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, lambda number, frame: server.stop())
    print("watch it at " + address.link(listener, token))
    sys.stdout.flush()
    server.run()
