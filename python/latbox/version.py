"""The version of the package, and the commit it was made from.

An installation has a file build_info.py with both; a clone has none, and its version stands in CMakeLists.txt; what pip has
installed is known to importlib.
"""

from __future__ import annotations

import importlib
import os
import re
import subprocess

ROOT = os.path.normpath(os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", ".."))


def version() -> str:
    try:
        return str(importlib.import_module(".build_info", __package__).VERSION)
    except ImportError:
        pass
    try:
        with open(os.path.join(ROOT, "CMakeLists.txt"), encoding="utf-8") as file:
            match = re.search(r"project\(latbox VERSION ([0-9.]+)", file.read())
    except OSError:
        match = None
    if match:
        return match[1]
    # Here, for it takes longer to import than the rest of the package, and few need it.
    from importlib import metadata

    try:
        return metadata.version("latbox")
    except metadata.PackageNotFoundError:
        return "unknown"


def commit() -> str:
    """The short name of the commit, or `unknown`."""
    try:
        return str(importlib.import_module(".build_info", __package__).COMMIT)
    except ImportError:
        pass
    if not os.path.exists(os.path.join(ROOT, ".git")):
        return "unknown"
    try:
        done = subprocess.run(["git", "-C", ROOT, "rev-parse", "--short=7", "HEAD"], stdout=subprocess.PIPE,
                              stderr=subprocess.DEVNULL, timeout=5, check=False)
    except (OSError, subprocess.TimeoutExpired):
        return "unknown"
    return done.stdout.decode().strip() or "unknown"


def version_line(program: str) -> str:
    return "%s %s" % (program, version())
