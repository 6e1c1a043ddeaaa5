"""What a run holds of its page: a process that serves it, a pipe of events to it, and a pipe of orders from it.

The run never waits: a pipe that is full is written to later, progress that finds it full is left out, and a server that takes nothing
at all, or is gone, is forgotten. It has a session of its own, so that Ctrl-C does not reach it, and none of the run's streams, so that
nobody waits for it; it ends by itself when the pipe does (server.py).
"""

from __future__ import annotations

import fcntl
import json
import os
import select
import subprocess
import sys
import time
from collections import deque
from collections.abc import Callable

from ..solving.steering import Order
from . import address

PIPE_SIZE = 1 << 20
F_SETPIPE_SZ = 1031
MOST_QUEUED = 64 << 20  # bytes; what takes less in is broken
# Points without objective come by the thousand; a page shows the last ones.
POINTS_AT_ONCE = 20
BETWEEN_POINTS = 0.25  # seconds
LAST_SECONDS = 0.5  # for what is not yet written at the end
SERVE = os.path.join(os.path.dirname(os.path.abspath(__file__)), "serve.py")


class View:
    """Serves from the first moment on; tell() brings it events. Throws UsageError if the port cannot be had."""

    def __init__(self, port: int = 0) -> None:
        listener = address.listen(port)
        token = address.new_token()
        self.link = address.link(listener, token)
        self._queue: deque[memoryview] = deque()
        self._queued = 0
        self._points = 0  # that were told since
        self._since = 0.0
        self._held: Callable[[], str] | None = None  # the newest point that was not
        self._rest = b""
        with listener:
            self._process = subprocess.Popen([sys.executable, "-I", "-S", SERVE, str(listener.fileno()), str(os.getpid())],
                                             stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                                             pass_fds=[listener.fileno()], start_new_session=True)
        assert self._process.stdin is not None and self._process.stdout is not None
        self._in, self._out = self._process.stdin.fileno(), self._process.stdout.fileno()
        for pipe in (self._in, self._out):
            os.set_blocking(pipe, False)
        self._grow()
        self._put(token)

    def _grow(self) -> None:
        try:
            fcntl.fcntl(self._in, F_SETPIPE_SZ, PIPE_SIZE)
        except OSError:
            pass  # the smaller one does, too

    # ------------------------------------------------------------- events

    def tell(self, kind: str, text: Callable[[], str]) -> None:
        """An event of this kind; text() is its JSON. It is not called for what is left out."""
        if self._in < 0:
            return
        now = time.monotonic()
        if now - self._since > BETWEEN_POINTS:
            self._since, self._points = now, 0
        if self._held is not None and (self._points < POINTS_AT_ONCE or kind in ("end", "failure")):
            held, self._held = self._held, None
            self._points += 1
            self._put(held())
        if kind == "point":
            self._points += 1
            if self._points > POINTS_AT_ONCE:
                self._held = text
                return
        self._push()
        if kind != "progress" or not self._queue:
            self._put(text())

    def fail(self, message: str, seconds: float) -> None:
        """The run ends without an answer."""
        self.tell("failure", lambda: json.dumps({"event": "failure", "time": round(seconds, 3), "text": message}))

    def _put(self, text: str) -> None:
        if self._in < 0:
            return
        data = memoryview(text.encode() + b"\n")
        self._queue.append(data)
        self._queued += len(data)
        if self._queued > MOST_QUEUED:
            self._close()
        else:
            self._push()

    def _push(self) -> None:
        try:
            while self._queue:
                count = os.write(self._in, self._queue[0])
                self._queued -= count
                if count < len(self._queue[0]):
                    self._queue[0] = self._queue[0][count:]
                else:
                    self._queue.popleft()
        except BlockingIOError:
            pass
        except OSError:
            self._close()

    def close(self) -> None:
        """Nothing more comes. The server ends by itself, and is not waited for."""
        end = time.monotonic() + LAST_SECONDS
        while self._queue and (rest := end - time.monotonic()) > 0:
            select.select([], [self._in], [], rest)
            self._push()
        self._close()
        # It may go on for whoever looks: no zombie of ours, and no complaint.
        self._process.returncode = self._process.poll() or 0

    def _close(self) -> None:
        self._queue.clear()
        self._queued = 0
        if self._in >= 0:
            assert self._process.stdin is not None and self._process.stdout is not None
            self._process.stdin.close()
            self._process.stdout.close()
        self._in = self._out = -1

    # ------------------------------------------------------------- orders

    def fileno(self) -> int:
        return self._out

    def orders(self) -> list[Order]:
        found = []
        while self._out >= 0:
            try:
                data = os.read(self._out, 1 << 16)
            except BlockingIOError:
                break
            except OSError:
                data = b""
            if not data:
                self._close()
                break
            whole, _, self._rest = (self._rest + data).rpartition(b"\n")
            found += [Order(**json.loads(line)) for line in whole.split(b"\n") if line]
        return found
