"""What --version says: the house's version, the commit it was built from, and the engines with their libraries."""

from __future__ import annotations

import os
import platform
import subprocess

from ..errors import EngineError
from ..solving import binaries

LIMIT = 5.0


def version() -> tuple[str, str]:
    """Version and commit; an installed package knows both, a clone asks git."""
    try:
        from .. import build_info  # written by the build

        return build_info.VERSION, build_info.COMMIT
    except ImportError:
        return clone_version()


def clone_version() -> tuple[str, str]:
    folder = os.path.dirname(os.path.abspath(__file__))
    commit = first_line(["git", "-C", folder, "rev-parse", "--short=12", "HEAD"])
    engine = engine_line(binaries.SEARCH)
    return engine.split()[1].lstrip("v") if " v" in engine else "unknown", commit or "unknown"


def version_text() -> str:
    number, commit = version()
    lines = ["latbox-solve %s, commit %s" % (number, commit), "Python %s" % platform.python_version()]
    lines += [engine_line(name) for name in (binaries.SEARCH, binaries.COMPLETE)]
    return "".join(line + "\n" for line in lines)


def engine_line(name: str) -> str:
    try:
        path = binaries.find(name)
    except EngineError as error:
        return "%s: %s" % (name, error)
    if name == binaries.COMPLETE:
        return "%s (%s)" % (", ".join(output([path, "--version"]).splitlines()), path)
    # The console solver tells its version in the banner of a run alone.
    banner = first_line([path, "--iters=0", os.devnull])
    words = banner.strip("<> ").split(" +++ ")[0]
    return "%s (%s)" % (words or name, path)


def first_line(arguments: list[str]) -> str:
    return output(arguments).split("\n")[0].strip()


def output(arguments: list[str]) -> str:
    try:
        done = subprocess.run(arguments, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, stdin=subprocess.DEVNULL,
                              timeout=LIMIT, check=False)
    except (OSError, subprocess.TimeoutExpired):
        return ""
    return done.stdout.decode("utf-8", "replace")
