"""Where the engines are: LATBOX_BIN_DIR, beside the installed package, the build tree of a clone, PATH; in this order."""

from __future__ import annotations

import os
import shutil
from collections.abc import Iterator

from ..errors import EngineError

BIN_DIR = "LATBOX_BIN_DIR"
SEARCH, COMPLETE = "latbox", "latbox-all"
# The complete search for machines that have nothing of ours, and where an installation keeps it.
JOB = "latbox-job"
JOB_FOLDERS = ("", os.path.join(os.pardir, "libexec", "latbox"))


def find(name: str) -> str:
    """The path of an engine's program. Throws EngineError, which says where it was looked for."""
    folder = os.environ.get(BIN_DIR)
    if folder:
        path = os.path.join(folder, name)
        if is_program(path):
            return os.path.abspath(path)
        raise EngineError("%s is not in %s, the folder that %s names" % (name, folder, BIN_DIR))
    for path in candidates(name):
        if is_program(path):
            return path
    found = shutil.which(name)
    if found:
        return os.path.abspath(found)
    raise EngineError("%s is not found, neither beside this package nor in PATH: build or install it, or name its folder in %s" %
                      (name, BIN_DIR))


def job_program() -> str:
    """What a worker gets: the static program that was built with latbox-all; where there is none, that itself, which needs its
    libraries there. Throws EngineError."""
    complete = find(COMPLETE)
    beside = [os.path.join(os.path.dirname(complete), folder, JOB) for folder in JOB_FOLDERS]
    return next((os.path.normpath(path) for path in beside if is_program(path)), complete)


def candidates(name: str) -> Iterator[str]:
    """prefix/bin for prefix/lib/python3/dist-packages/latbox; build/release of the clone for python/latbox."""
    folder = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
    clone = os.path.dirname(folder)
    if os.path.basename(folder) == "python" and os.path.exists(os.path.join(clone, "CMakePresets.json")):
        yield os.path.join(clone, "build", "release", name)
    while folder != os.path.dirname(folder):
        folder = os.path.dirname(folder)
        yield os.path.join(folder, "bin", name)


def is_program(path: str) -> bool:
    return os.path.isfile(path) and os.access(path, os.X_OK)
