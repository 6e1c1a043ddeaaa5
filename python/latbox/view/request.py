"""One request, judged and answered: who gets in, what can be had, what can be asked for.

The standard library's handler reads it, once all of it has come, and writes the answer into memory, so that nobody waits for anybody.
Four doors, in this order: the Host must be ours (a foreign name that was made to lead here is not), an Origin must be ours, the token
in the path must be right, compared in constant time, and what acts must be a POST with a body of JSON, which no foreign page can send
unasked. A GET changes nothing.
"""

from __future__ import annotations

import hmac
import json
import os
import re
from http.server import BaseHTTPRequestHandler
from io import BytesIO
from typing import Any

from ..solving import steering

PAGE = os.path.join(os.path.dirname(os.path.abspath(__file__)), "page")
FILES = {"": ("index.html", "text/html; charset=utf-8"), "style.css": ("style.css", "text/css; charset=utf-8"),
         "icon.svg": ("icon.svg", "image/svg+xml"),
         **{name: (name, "text/javascript; charset=utf-8") for name in ("run.js", "chart.js", "page.js")}}
EVENTS, ACT = "events", "act"
MOST_HEAD = 8192
MOST_BODY = 1024
LENGTH = re.compile(rb"\r?\ncontent-length:[ \t]*([0-9]{1,9})[ \t]*\r?\n", re.IGNORECASE)

HEADERS = {
    "Content-Security-Policy": "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self'; connect-src 'self'; "
                               "base-uri 'none'; form-action 'none'; frame-ancestors 'none'",
    "X-Content-Type-Options": "nosniff",
    "X-Frame-Options": "DENY",
    "Referrer-Policy": "no-referrer",  # the address holds the token
    "Cross-Origin-Opener-Policy": "same-origin",
    "Cross-Origin-Resource-Policy": "same-origin",
    "Cache-Control": "no-store",
    "Connection": "close",
}


class Refused(Exception):
    """A request is not served: status and reason."""

    def __init__(self, status: int, reason: str) -> None:
        super().__init__(reason)
        self.status = status


class Gate:
    """What a request is held against. `actions`: those that the run takes."""

    def __init__(self, port: int, token: str, actions: tuple[str, ...]) -> None:
        self.hosts = {"%s:%d" % (name, port) for name in ("127.0.0.1", "localhost")}
        if port == 80:
            self.hosts |= {"127.0.0.1", "localhost"}
        self.origins = {"http://" + host for host in self.hosts}
        self.token = token.encode()
        self.actions = actions


def is_whole(data: bytes) -> bool:
    """Whether a request has come to its end. Throws Refused for one that is too large."""
    head, end, body = data.partition(b"\r\n\r\n")
    if len(head) > MOST_HEAD:
        raise Refused(431, "the head of the request is too large")
    if not end:
        return False
    match = LENGTH.search(head + b"\r\n")
    length = int(match[1]) if match else 0
    if length > MOST_BODY:
        raise Refused(413, "the body of the request is too large")
    return len(body) >= length


class Request(BaseHTTPRequestHandler):
    """After it is made: `answer`, and what else is to be done: `wants_events`, `order`."""

    protocol_version = "HTTP/1.1"
    server_version = "latbox"
    sys_version = ""

    def __init__(self, data: bytes, gate: Gate) -> None:
        self._data = data
        self._gate = gate
        self.wants_events = False
        self.order: steering.Order | None = None
        super().__init__(None, ("127.0.0.1", 0), None)  # type: ignore[arg-type]

    @property
    def answer(self) -> bytes:
        return self._out.getvalue()

    # ------------------------------------------------------------- what the base class calls

    def setup(self) -> None:
        self.rfile = BytesIO(self._data)
        self._out = BytesIO()
        self.wfile = self._out

    def handle(self) -> None:
        self.handle_one_request()

    def finish(self) -> None:
        pass

    def log_message(self, format: str, *values: Any) -> None:
        pass

    def send_error(self, code: int, message: str | None = None, explain: str | None = None) -> None:
        """As plain text; also where the base class refuses what is no HTTP."""
        self._send(code, "text/plain; charset=utf-8", ((message or "refused") + "\n").encode("utf-8", "replace"))

    def do_GET(self) -> None:
        self._serve(self._get)

    do_HEAD = do_GET

    def do_POST(self) -> None:
        self._serve(self._post)

    # ------------------------------------------------------------- the doors

    def _serve(self, answer: Any) -> None:
        try:
            answer(self._place())
        except Refused as refused:
            self.send_error(refused.status, str(refused))

    def _place(self) -> str:
        """The path behind the token, once who asks is let in."""
        gate = self._gate
        hosts: list[str] = self.headers.get_all("Host", [])
        origins: list[str] = self.headers.get_all("Origin", [])
        if len(hosts) != 1 or hosts[0].strip().lower() not in gate.hosts:
            raise Refused(403, "this is not the host that was asked for")
        if origins and (len(origins) != 1 or origins[0].strip().lower() not in gate.origins):
            raise Refused(403, "another page may not ask")
        token, _, place = self.path.removeprefix("/").partition("?")[0].partition("/")
        if not hmac.compare_digest(token.encode("utf-8", "replace"), gate.token):
            raise Refused(403, "the link is not right: take it as it was printed")
        return place

    def _get(self, place: str) -> None:
        if place == EVENTS and self.command == "GET":
            self.wants_events = True
            self._head(200, {"Content-Type": "text/event-stream; charset=utf-8"})
        elif place in FILES:
            name, kind = FILES[place]
            with open(os.path.join(PAGE, name), "rb") as file:
                self._send(200, kind, file.read())
        elif place == ACT:
            raise Refused(405, "actions are not for the asking: POST them")
        else:
            raise Refused(404, "there is no such page")

    def _post(self, place: str) -> None:
        if place != ACT:
            raise Refused(405 if place in FILES or place == EVENTS else 404, "nothing is posted here")
        if not self.headers.get("Origin"):
            raise Refused(403, "an action needs its Origin")
        if self.headers.get_content_type() != "application/json" or self.headers.get("Transfer-Encoding"):
            raise Refused(415, "a body of JSON is wanted")
        lengths: list[str] = self.headers.get_all("Content-Length", [])
        if len(lengths) != 1 or not lengths[0].strip().isdecimal():
            raise Refused(400, "a body of one length is wanted")
        self.order = order_of(self.rfile.read(min(int(lengths[0]), MOST_BODY)), self._gate.actions)
        self._send(202, "application/json", b"{}\n")

    # ------------------------------------------------------------- answers

    def _send(self, status: int, kind: str, body: bytes) -> None:
        if not hasattr(self, "request_version"):
            self.request_version = self.protocol_version
        self._head(status, {"Content-Type": kind, "Content-Length": str(len(body))})
        if getattr(self, "command", None) != "HEAD":
            self._out.write(body)

    def _head(self, status: int, more: dict[str, str]) -> None:
        self.send_response(status)
        for name, value in {**more, **HEADERS}.items():
            self.send_header(name, value)
        self.end_headers()


def order_of(body: bytes, actions: tuple[str, ...]) -> steering.Order:
    """Throws Refused."""
    try:
        asked = json.loads(body.decode("utf-8"))
    except (ValueError, RecursionError):
        raise Refused(400, "that is no JSON") from None
    if not isinstance(asked, dict) or not isinstance(asked.get("action"), str):
        raise Refused(400, "an action is wanted")
    action = asked["action"]
    if action not in actions:
        raise Refused(400 if action not in steering.ACTIONS else 409, "nothing here takes this action")
    if action != steering.SET:
        return steering.Order(action)
    option = steering.BY_KEY.get(str(asked.get("key")))
    value = asked.get("value")
    if option is None:
        raise Refused(400, "there is no such option")
    if isinstance(value, bool) or not isinstance(value, int) or not option.takes(value):
        raise Refused(400, "%s: a whole number from %d to %d is wanted" % (option.key, option.least, option.most))
    return steering.Order(action, option.key, value)
