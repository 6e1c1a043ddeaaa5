"""Where a page is: a socket on the loopback address alone, and the link with its token."""

from __future__ import annotations

import secrets
import socket

from ..errors import UsageError

BACKLOG = 64  # connections that the kernel keeps for us
HOST = "127.0.0.1"


def listen(port: int) -> socket.socket:
    """Port 0: one that is free. Throws UsageError."""
    listener = socket.socket(socket.AF_INET, socket.SOCK_STREAM)
    # Only a port whose last server is gone can be taken again at once.
    listener.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
    try:
        listener.bind((HOST, port))
        listener.listen(BACKLOG)
    except OSError as error:
        listener.close()
        raise UsageError("--view=%d: the port cannot be had: %s" % (port, error.strerror)) from None
    return listener


def new_token() -> str:
    return secrets.token_urlsafe(24)


def link(listener: socket.socket, token: str) -> str:
    return "http://%s:%d/%s/" % (HOST, listener.getsockname()[1], token)
