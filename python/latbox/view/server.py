"""The loop that serves the page: one thread, nothing in it waits, and what strangers can cost is limited.

A connection is a stranger until it has shown the token and asked for the events; then it is a window. Strangers have little time and
little room, and share a purse of processor time (purse.py): while it is empty they are not looked at, not even accepted. Windows
have a queue each; one that does not read is dropped, and its page asks anew. So 200 connections, half a request, junk and slow
readers cost the run nothing to speak of, and a window stays up beside them.

Events are sent by server-sent events, a few times a second: `whole` is all there is, `news` what came since, `state` and `beat` tell
that the run is there.
"""

from __future__ import annotations

import json
import selectors
import socket
import time
from collections import deque
from collections.abc import Callable
from typing import Any, Protocol

from ..solving import steering
from .history import History
from .purse import Purse
from .request import Gate, Refused, Request, is_whole

BETWEEN_TURNS = 0.25  # seconds: an event is on its way by then
BETWEEN_BEATS = 2.0
MOST_STRANGERS = 64
MOST_ACCEPTED = 32  # at once
MOST_WINDOWS = 12
STRANGER_SECONDS = 5.0  # from the connection to the end of its answer
SLOW_SECONDS = 20.0  # that a window may take to read something
MOST_QUEUED = 32 << 20  # bytes for a window
MOST_REQUESTS = 50.0  # a second, in the long run
MOST_ORDERS = 5.0
# When the run is over the page can be loaded anew for as long as one is open, and so many seconds more; if none is open then, so many.
LAST_SECONDS = 60.0
LAST_SECONDS_UNSEEN = 1.0


class Source(Protocol):
    """Whence events come. `times`: that it began anew, and with it what it tells of."""

    times: int

    def lines(self) -> tuple[list[bytes], bool]:
        """Those that have come, and whether there may be more; it does not wait."""


class Tap:
    """Lets so many pass in a second, in the long run; twice as many at once."""

    def __init__(self, rate: float) -> None:
        self._rate = rate
        self._left = 2 * rate
        self._seen = time.monotonic()

    def passes(self) -> bool:
        now = time.monotonic()
        self._left = min(2 * self._rate, self._left + (now - self._seen) * self._rate)
        self._seen = now
        if self._left < 1:
            return False
        self._left -= 1
        return True


class Connection:
    def __init__(self, peer: socket.socket) -> None:
        self.peer = peer
        self.data = b""
        self.queue: deque[memoryview] = deque()
        self.queued = 0
        self.is_window = False
        self.since = time.monotonic()  # it was accepted, or has read something

    def fileno(self) -> int:
        return self.peer.fileno()

    def put(self, data: bytes) -> None:
        if data:
            if not self.queue:
                self.since = time.monotonic() if self.is_window else self.since
            self.queue.append(memoryview(data))
            self.queued += len(data)

    def push(self) -> None:
        """As much as it takes. Throws OSError."""
        while self.queue:
            try:
                count = self.peer.send(self.queue[0])
            except BlockingIOError:
                return
            self.queued -= count
            if self.is_window:
                self.since = time.monotonic()
            if count < len(self.queue[0]):
                self.queue[0] = self.queue[0][count:]
            else:
                self.queue.popleft()


class Server:
    """`order(order)` is called with what a page asks for; None: nothing can be asked. run() returns when it is over."""

    def __init__(self, listener: socket.socket, token: str, source: Source, order: Callable[[steering.Order], None] | None,
                 stays: bool = False, purse: Purse | None = None) -> None:
        """`stays`: also when the source has ended and nobody looks."""
        self.history = History()
        self._listener = listener
        self._source = source
        self._order = order
        self._stays = stays
        self._gate = Gate(listener.getsockname()[1], token, steering.ACTIONS if order else ())
        self._purse = purse or Purse()
        self._requests, self._orders = Tap(MOST_REQUESTS), Tap(MOST_ORDERS)
        self._strangers: dict[int, Connection] = {}
        self._windows: dict[int, Connection] = {}
        self._known = selectors.DefaultSelector()
        # One selector within the other: without a word to its members all strangers are put aside and taken up again.
        self._others = selectors.EpollSelector()
        self._are_heard = False
        self._more = True  # events may come
        self._last_word = time.monotonic()
        self._end = 0.0  # it ends then, once nothing comes any more
        self._stopped = False
        self._whole: bytes | None = None
        self._times = source.times
        listener.setblocking(False)
        self._others.register(listener, selectors.EVENT_READ)

    def stop(self) -> None:
        """run() returns soon; for a handler of signals."""
        self._stopped = True

    def run(self) -> None:
        next_turn = next_beat = 0.0
        while not self._stopped:
            now = time.monotonic()
            if now >= next_turn:
                next_turn = now + BETWEEN_TURNS
                self._turn()
                if now >= next_beat:
                    next_beat = now + BETWEEN_BEATS
                    self._send(message("beat", {"silent": round(now - self._last_word, 1)}))
                if self._is_done():
                    break
            self._hear_strangers(self._purse.wait() <= 0)
            for key, _ in self._known.select(max(0.0, next_turn - time.monotonic())):
                if key.data is None:
                    self._serve_strangers()
                else:
                    self._serve_window(key.data)
        for connection in [*self._strangers.values(), *self._windows.values()]:
            connection.peer.close()

    def _is_done(self) -> bool:
        """Nothing comes any more, and nobody looks."""
        if self._more or self._stays:
            return False
        now = time.monotonic()
        if self._windows:
            self._end = now + LAST_SECONDS
        elif not self._end:
            self._end = now + LAST_SECONDS_UNSEEN
        return now > self._end

    # ------------------------------------------------------------- events

    def _turn(self) -> None:
        """What has come goes to the windows; who took too long is dropped."""
        if self._more:
            lines, self._more = self._source.lines()
            if self._source.times != self._times:
                self._times = self._source.times
                self.history.clear()
            for line in lines:
                self.history.add(line)
            if lines:
                self._last_word = time.monotonic()
            news, is_whole = self.history.news()
            if news or is_whole:
                self._whole = None
                self._send(self._all() if is_whole else events("news", news))
            if not self._more:
                self._gate.actions = ()
                self._whole = None
                self._send(message("state", self._state()))
        limit = time.monotonic()
        for connection in [c for c in self._strangers.values() if c.since + STRANGER_SECONDS < limit]:
            self._drop(connection)
        for connection in [c for c in self._windows.values() if c.queue and c.since + SLOW_SECONDS < limit]:
            self._drop(connection)

    def _state(self) -> dict[str, Any]:
        return {"more": self._more, "steered": self._order is not None and self._more, "log": self._stays}

    def _all(self) -> bytes:
        if self._whole is None:
            self._whole = message("state", self._state()) + events("whole", self.history.whole())
        return self._whole

    def _send(self, data: bytes) -> None:
        for window in list(self._windows.values()):
            window.put(data)
            if window.queued > MOST_QUEUED:
                self._drop(window)
            else:
                self._push(window)

    # ------------------------------------------------------------- windows

    def _serve_window(self, window: Connection) -> None:
        """It has nothing to say any more: what comes is its end, or junk."""
        try:
            said = window.peer.recv(4096)
        except BlockingIOError:
            self._push(window)
            return
        except OSError:
            said = b""
        del said
        self._drop(window)

    def _push(self, connection: Connection) -> None:
        selector = self._known if connection.is_window else self._others
        try:
            connection.push()
        except OSError:
            self._drop(connection)
            return
        if not connection.queue and not connection.is_window:
            self._drop(connection)
            return
        wanted = selectors.EVENT_WRITE if connection.queue else 0
        wanted |= selectors.EVENT_READ if connection.is_window or not wanted else 0
        selector.modify(connection, wanted, connection)

    def _drop(self, connection: Connection) -> None:
        group = self._windows if connection.is_window else self._strangers
        if group.pop(connection.fileno(), None) is not None:
            (self._known if connection.is_window else self._others).unregister(connection)
            connection.peer.close()

    # ------------------------------------------------------------- strangers

    def _hear_strangers(self, are_heard: bool) -> None:
        if are_heard and not self._are_heard:
            self._known.register(self._others, selectors.EVENT_READ, None)
        elif self._are_heard and not are_heard:
            self._known.unregister(self._others)
        self._are_heard = are_heard

    def _serve_strangers(self) -> None:
        before = time.thread_time()
        for key, mask in self._others.select(0):
            if key.data is None:
                self._accept()
            elif key.data.fileno() in self._strangers:
                self._serve_stranger(key.data, mask)
        self._purse.pay(time.thread_time() - before)

    def _accept(self) -> None:
        for _ in range(MOST_ACCEPTED):
            try:
                peer, _ = self._listener.accept()
            except OSError:
                return
            peer.setblocking(False)
            if len(self._strangers) >= MOST_STRANGERS:
                self._drop(min(self._strangers.values(), key=lambda c: c.since))
            stranger = Connection(peer)
            self._strangers[stranger.fileno()] = stranger
            self._others.register(stranger, selectors.EVENT_READ, stranger)
            # Who has asked already is served before another one takes the place.
            self._serve_stranger(stranger, selectors.EVENT_READ)

    def _serve_stranger(self, stranger: Connection, mask: int) -> None:
        if mask & selectors.EVENT_WRITE:
            self._push(stranger)
            return
        try:
            data = stranger.peer.recv(16384)
        except BlockingIOError:
            return
        except OSError:
            data = b""
        if not data:
            self._drop(stranger)
            return
        stranger.data += data
        try:
            if is_whole(stranger.data):
                self._answer(stranger)
        except Refused as refused:
            stranger.put(("HTTP/1.1 %d Refused\r\nContent-Length: 0\r\nConnection: close\r\n\r\n" % refused.status).encode())
            self._push(stranger)

    def _answer(self, stranger: Connection) -> None:
        if not self._requests.passes():
            raise Refused(429, "too many requests")
        try:
            request = Request(stranger.data, self._gate)
        except Exception:  # whatever it is that the handler stumbles over: no stranger ends the page
            raise Refused(400, "that is no request") from None
        if request.order is not None and self._order is not None:
            if not self._orders.passes():
                raise Refused(429, "too many actions")
            self._order(request.order)
        if request.wants_events:
            if len(self._windows) >= MOST_WINDOWS:
                raise Refused(503, "too many windows")
            self._admit(stranger)
        stranger.put(request.answer)
        if stranger.is_window:
            stranger.put(self._all())
        self._push(stranger)

    def _admit(self, stranger: Connection) -> None:
        self._others.unregister(stranger)
        del self._strangers[stranger.fileno()]
        stranger.is_window = True
        stranger.data = b""
        self._windows[stranger.fileno()] = stranger
        self._known.register(stranger, selectors.EVENT_READ, stranger)

def message(kind: str, content: object) -> bytes:
    return ("event: %s\ndata: %s\n\n" % (kind, json.dumps(content))).encode()


def events(kind: str, lines: list[bytes]) -> bytes:
    """Lines of JSON, as one array."""
    return b"event: %s\ndata: [%s]\n\n" % (kind.encode(), b",".join(lines))
