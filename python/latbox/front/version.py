"""What --version says: the house's version, the commit it was built from, and the engines with their libraries."""

from __future__ import annotations

import os
import platform
import subprocess

from .. import version
from ..errors import EngineError
from ..solving import binaries

LIMIT = 5.0


def version_text() -> str:
    lines = ["latbox-solve %s, commit %s" % (version.version(), version.commit()), "Python %s" % platform.python_version()]
    # The console solver tells its version in the banner of a run alone.
    lines.append(engine_line(binaries.SEARCH, ["--iters=0", os.devnull]))
    lines.append(engine_line(binaries.COMPLETE, ["--version"]))
    return "".join(line + "\n" for line in lines)


def engine_line(name: str, arguments: list[str]) -> str:
    """Its name, its version and libraries as far as it tells them, and where it is."""
    try:
        path = binaries.find(name)
        done = subprocess.run([path, *arguments], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                              stdin=subprocess.DEVNULL, timeout=LIMIT, check=False)
    except (EngineError, OSError, subprocess.TimeoutExpired) as error:
        return "%s: %s" % (name, error)
    lines = done.stdout.decode("utf-8", "replace").strip().split("\n")
    words = lines[0].strip("<> ").split(" +++ ")[0] if name == binaries.SEARCH else ", ".join(lines)
    return "%s (%s)" % (words or name, path)
