"""What the tests of the page share: a server with a source of paper in a thread, requests as bytes, events as they are read."""

from __future__ import annotations

import json
import socket
import threading
import time
from collections.abc import Callable
from typing import Any

import support
import harness

from latbox.solving.steering import Order
from latbox.view import address
from latbox.view.purse import Purse
from latbox.view.server import Server

LIMIT = float(harness.LIMIT)
START = {"event": "start", "time": 0.0, "model": "five.lp", "sense": "max", "variables": 5, "rows": 1, "rank": 5, "kind": "general", "searches": 1,
         "threads": 1, "began": 1.7e9, "limit": None, "size": ["five.lp: 5 integer columns"], "warnings": ["it is none for lattices"],
         "options": [{"key": "beta", "value": 20, "default": 20, "least": 2, "most": 1000, "text": "vectors in a block", "from_when": "at once"}]}


def progress(seconds: float, **more: Any) -> dict[str, Any]:
    return {"event": "progress", "time": seconds, "best": None, "bound": None, "points": 0, "iteration": 1, "violated": 3, "nodes": 1e3, "share": 0.1,
            "left": "3 h", "left_seconds": 1e4, "rate": 1e3, "basis": 12.5, "collected": 7, "idle": 0, "paused": 0.0, **more}


def point(seconds: float, value: int, letter: str = "S") -> dict[str, Any]:
    return {"event": "point", "time": seconds, "objective": value, "by": "search", "letter": letter, "values": {"x1": value, "x2": 0, "x10": -1}}


class Script:
    """A source that tells what it is given."""

    times = 0

    def __init__(self) -> None:
        self._lines: list[bytes] = []
        self._more = True
        self._held = threading.Lock()

    def tell(self, *events: object) -> None:
        """They come in one turn, and once."""
        lines = [event if isinstance(event, bytes) else json.dumps(event).encode() for event in events]
        with self._held:
            self._lines += lines

    def end(self) -> None:
        self._more = False

    def lines(self) -> tuple[list[bytes], bool]:
        more = self._more
        with self._held:
            found, self._lines = self._lines, []
        return found, more


class Client:
    """Whoever has a link."""

    def __init__(self, link: str) -> None:
        self.link = link
        _, _, place, self.token, _ = link.split("/")
        self.port = int(place.split(":")[1])
        self.origin = "http://" + place

    def connect(self) -> socket.socket:
        return socket.create_connection(("127.0.0.1", self.port), LIMIT)

    def ask(self, place: str = "", method: str = "GET", body: bytes = b"", token: str | None = None, **headers: str | None) -> tuple[int, bytes]:
        """(status, head and body); headers by name, `_` for `-`; None: without it."""
        return self.exchange(self.request(place, method, body, token, **headers))

    def request(self, place: str = "", method: str = "GET", body: bytes = b"", token: str | None = None, **headers: str | None) -> bytes:
        given: dict[str, str | None] = {"Host": "127.0.0.1:%d" % self.port}
        if method == "POST":
            given |= {"Origin": self.origin, "Content-Type": "application/json", "Content-Length": str(len(body))}
        given |= {name.replace("_", "-"): value for name, value in headers.items()}
        lines = ["%s: %s\r\n" % item for item in given.items() if item[1] is not None]
        return ("%s /%s/%s HTTP/1.1\r\n%s\r\n" % (method, self.token if token is None else token, place, "".join(lines))).encode() + body

    def exchange(self, request: bytes) -> tuple[int, bytes]:
        with self.connect() as peer:
            peer.sendall(request)
            answer = read_all(peer)
        return int(answer.split(b" ", 2)[1]) if answer.startswith(b"HTTP/") else 0, answer

    def act(self, **order: object) -> tuple[int, bytes]:
        return self.ask("act", "POST", json.dumps(order).encode())

    def window(self) -> Window:
        return Window(self)


class Served(Client):
    """A server that runs until close()."""

    def __init__(self, is_steered: bool = True, purse: Purse | None = None) -> None:
        self.source = Script()
        self.orders: list[Order] = []
        listener = address.listen(0)
        token = address.new_token()
        super().__init__(address.link(listener, token))
        self.server = Server(listener, token, self.source, self.orders.append if is_steered else None, purse=purse or Purse(10.0, 10.0))
        self._listener = listener
        self._thread = threading.Thread(target=self.server.run)
        self._thread.start()

    def is_running(self) -> bool:
        return self._thread.is_alive()

    def close(self) -> None:
        self.server.stop()
        self._thread.join(LIMIT)
        self._listener.close()


class Window:
    """What a page sees: (kind, content) of each message."""

    def __init__(self, served: Client) -> None:
        self._peer = served.connect()
        self._peer.sendall(served.request("events"))
        self._data = b""
        head = self._until(b"\r\n\r\n").decode()
        self.status = int(head.split(" ", 2)[1])

    def _until(self, mark: bytes) -> bytes:
        while mark not in self._data:
            piece = self._peer.recv(1 << 16)
            if not piece:
                raise EOFError(self._data)
            self._data += piece
        found, _, self._data = self._data.partition(mark)
        return found

    def next(self) -> tuple[str, Any]:
        kind, content = self._until(b"\n\n").decode().split("\n")
        return kind.removeprefix("event: "), json.loads(content.removeprefix("data: "))

    def event(self, kind: str) -> dict[str, Any]:
        """The first one of that kind that comes, among news or in all that was."""
        end = time.monotonic() + LIMIT
        while time.monotonic() < end:
            found, content = self.next()
            if found in ("news", "whole") and any(event["event"] == kind for event in content):
                return next(event for event in content if event["event"] == kind)
        raise AssertionError("no %s" % kind)

    def until(self, kind: str, holds: Callable[[Any], bool] = lambda content: True) -> Any:
        end = time.monotonic() + LIMIT
        while time.monotonic() < end:
            found, content = self.next()
            if found == kind and holds(content):
                return content
        raise AssertionError("no %s" % kind)

    def close(self) -> None:
        self._peer.close()


def read_all(peer: socket.socket) -> bytes:
    found = b""
    try:
        while piece := peer.recv(1 << 16):
            found += piece
    except ConnectionError:
        pass
    return found


class ServedCase(harness.Case):
    def served(self, is_steered: bool = True, purse: Purse | None = None) -> Served:
        found = Served(is_steered, purse)
        self.addCleanup(found.close)
        return found

    def window(self, served: Served) -> Window:
        found = served.window()
        self.addCleanup(found.close)
        return found


def until(holds: Callable[[], bool], what: str) -> None:
    end = time.monotonic() + LIMIT
    while not holds():
        if time.monotonic() > end:
            raise AssertionError("not within %s s: %s" % (LIMIT, what))
        time.sleep(0.01)
