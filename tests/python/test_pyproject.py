"""What pip installs is what the other installations bring: the same commands, the same files, the same version."""

from __future__ import annotations

import fnmatch
import importlib
import os
import re
import subprocess
import sys
import tomllib
import unittest

import support
import harness

PACKAGE = os.path.join(support.PACKAGE, "latbox")


def project() -> dict:
    with open(os.path.join(support.PACKAGE, "pyproject.toml"), "rb") as file:
        return tomllib.load(file)


def starters() -> dict[str, str]:
    """{command: what it calls, as an entry point says it}, of python/bin."""
    found = {}
    folder = os.path.join(support.PACKAGE, "bin")
    for name in os.listdir(folder):
        with open(os.path.join(folder, name), encoding="utf-8") as file:
            match = re.search(r"^from (latbox[.\w]*) import (\w+)", file.read(), re.MULTILINE)
        assert match, name
        found[name] = "%s:%s" % match.groups()
    return found


def files() -> list[tuple[str, str]]:
    """(folder below the package with dots, name of a file) of all that is no cache."""
    found = []
    for folder, _, names in os.walk(PACKAGE):
        below = os.path.relpath(folder, PACKAGE)
        if "__pycache__" not in below.split(os.sep):
            found += [("" if below == "." else below, name) for name in names]
    return found


class ProjectTest(harness.Case):
    def test_commands(self) -> None:
        self.assertIn("latbox-solve", starters())
        self.assertEqual(project()["project"]["scripts"], starters())

    def test_each_command_is_there(self) -> None:
        for entry in project()["project"]["scripts"].values():
            module, _, function = entry.partition(":")
            self.assertTrue(callable(getattr(importlib.import_module(module), function)), entry)

    def test_commands_as_pip_starts_them(self) -> None:
        """From any folder, with the package in the path and nothing beside it."""
        for name, entry in project()["project"]["scripts"].items():
            module, _, function = entry.partition(":")
            done = subprocess.run([sys.executable, "-c", "import sys; from %s import %s; sys.exit(%s())" % (module, function, function),
                                   "--help"], cwd=self.folder, env=dict(os.environ, PYTHONPATH=support.PACKAGE), stdin=subprocess.DEVNULL,
                                  stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, timeout=harness.LIMIT, check=False)
            self.assertEqual((done.returncode, done.stderr), (0, ""), name)
            self.assertTrue(done.stdout.startswith("usage: " + name), done.stdout)

    def test_files(self) -> None:
        """Each folder of modules is a package, and all that is no module is named."""
        data = project()["tool"]["setuptools"]["package-data"]["latbox"]
        for folder, name in files():
            path = os.path.join(folder, name)
            if name.endswith(".py"):
                self.assertTrue(os.path.exists(os.path.join(PACKAGE, folder, "__init__.py")), path)
            else:
                self.assertTrue(any(fnmatch.fnmatch(path, pattern) for pattern in data), "%s is in no package-data" % path)

    def test_version(self) -> None:
        with open(os.path.join(support.ROOT, "CMakeLists.txt"), encoding="utf-8") as file:
            match = re.search(r"project\(latbox VERSION ([0-9.]+)", file.read())
        self.assertEqual(project()["project"]["version"], match and match[1])


if __name__ == "__main__":
    harness.main()
