"""The process that serves the page of a run: serve.py SOCKET RUN, both numbers.

Standard input brings the token in its first line, then events; standard output takes orders. link.py starts it, by this name, from
wherever the package lies. It reads no more of the package than it needs: a tenth of a second and ten megabytes less.
"""

from __future__ import annotations

import json
import os
import signal
import socket
import sys
import types
from dataclasses import asdict

HERE = os.path.dirname(os.path.abspath(__file__))

if __name__ == "__main__":
    sys.dont_write_bytecode = True
    package = types.ModuleType("latbox")
    package.__path__ = [os.path.dirname(HERE)]
    sys.modules["latbox"] = package

from latbox.solving import steering  # noqa: E402
from latbox.view.server import Server  # noqa: E402
from latbox.view.sources import Pipe  # noqa: E402


class Orders:
    """Those of the page go to the run."""

    def __init__(self, run: int) -> None:
        os.set_blocking(1, False)
        self._run = run
        self._signalled = False

    def give(self, order: steering.Order, has_begun: bool) -> None:
        # Before the engines run nobody reads orders; the first signal ends the run with what it has, at any time.
        if order.action == steering.STOP and not has_begun and not self._signalled and os.getppid() == self._run:
            self._signalled = True
            os.kill(self._run, signal.SIGTERM)
            return
        try:
            os.write(1, json.dumps(asdict(order)).encode() + b"\n")
        except OSError:
            pass  # the run is gone, or hears nothing: the page sees that nothing happens


def first_line(number: int) -> str:
    """No more than that is read."""
    found = b""
    while not found.endswith(b"\n"):
        byte = os.read(number, 1)
        if not byte:
            raise SystemExit(1)
        found += byte
    return found.decode().strip()


def main(listener: int, run: int) -> None:
    for number in (signal.SIGINT, signal.SIGHUP):
        signal.signal(number, signal.SIG_IGN)
    orders = Orders(run)
    server = Server(socket.socket(fileno=listener), first_line(0), Pipe(0),
                    lambda order: orders.give(order, server.history.has_begun))
    signal.signal(signal.SIGTERM, lambda number, frame: server.stop())
    server.run()


if __name__ == "__main__":
    main(int(sys.argv[1]), int(sys.argv[2]))
