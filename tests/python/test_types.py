"""Each call of the package is given what it takes: mypy, in its strict form, where it is installed."""

from __future__ import annotations

import os
import shutil
import subprocess
import unittest

import support
import harness

MYPY = shutil.which("mypy")

# What a user writes: arrays that are no Sequence, as those of numpy, and an iterator that is left early.
SCRIPT = """
import pathlib
from collections.abc import Iterator

import latbox


class Array:
    def __iter__(self) -> Iterator[list[int]]:
        return iter([[1, 2]])


def use() -> str:
    result: latbox.Result = latbox.solve(Array(), [(None, 3)], 0, [4.5, None], objective=(1, 2), sense="max", time=2, threads=1)
    model: latbox.Model = latbox.read(pathlib.Path("m.lp"))
    points = model.solutions(threads=1)
    first = next(points)
    points.close()
    print(first["x1"], model.fault(first), model.solve(gap="5%", solutions="all").points)
    return result.status


def misuse(model: latbox.Model) -> None:
    latbox.solve(5, [1], 0, 1)
    model.solve(time="2m")
    model.solutions(tme=2)
"""


@unittest.skipUnless(MYPY, "mypy is not installed (Debian: mypy)")
class TypesTest(harness.Case):
    def complaints(self, folder: str, *arguments: str, **environment: str) -> list[str]:
        """Of mypy on the package in a folder, with the settings of pyproject.toml there."""
        done = subprocess.run([str(MYPY), "--cache-dir=" + os.devnull, *arguments], cwd=folder, stdin=subprocess.DEVNULL,
                              env={**os.environ, **environment}, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, text=True, timeout=harness.LIMIT, check=False)
        lines = done.stdout.splitlines()
        self.assertTrue(lines and (lines[-1].startswith("Success") or "error" in done.stdout), done.stdout)
        return [line for line in lines if ": error: " in line]

    def test_the_package(self) -> None:
        self.assertEqual(self.complaints(support.PACKAGE), [])

    def test_scripts_of_users(self) -> None:
        self.write("script.py", SCRIPT)
        self.write("mypy.ini", "[mypy]\nstrict = True\n[mypy-numpy.*]\nignore_missing_imports = True\nfollow_imports = skip\n")
        wrong = SCRIPT[:SCRIPT.index("    latbox.solve(5")].count("\n") + 1
        self.assertEqual([line.partition(": error: ")[0] for line in self.complaints(self.folder, "script.py", MYPYPATH=support.PACKAGE)],
                         ["script.py:%d" % (wrong + k) for k in range(3)])

    def test_the_settings_say_no(self) -> None:
        shutil.copy(os.path.join(support.PACKAGE, "pyproject.toml"), self.folder)
        os.mkdir(self.path("latbox"))
        self.write("latbox/__init__.py", "def half(x: int) -> int:\n    return x // 2\n\n\ndef third(x):\n    return half(\"3\")\n")
        self.assertEqual([line.split("error: ")[1] for line in self.complaints(self.folder)],
                         ["Function is missing a type annotation  [no-untyped-def]",
                          'Argument 1 to "half" has incompatible type "str"; expected "int"  [arg-type]'])


if __name__ == "__main__":
    harness.main()
