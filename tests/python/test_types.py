"""Each call of the package is given what it takes: mypy, in its strict form, where it is installed."""

from __future__ import annotations

import os
import shutil
import subprocess
import unittest

import support
import harness

MYPY = shutil.which("mypy")


@unittest.skipUnless(MYPY, "mypy is not installed (Debian: mypy)")
class TypesTest(harness.Case):
    def complaints(self, folder: str) -> list[str]:
        """Of mypy on the package in a folder, with the settings of pyproject.toml there."""
        done = subprocess.run([str(MYPY), "--cache-dir=" + os.devnull], cwd=folder, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, text=True, timeout=harness.LIMIT, check=False)
        lines = done.stdout.splitlines()
        self.assertTrue(lines and (lines[-1].startswith("Success") or "error" in done.stdout), done.stdout)
        return [line for line in lines if ": error: " in line]

    def test_the_package(self) -> None:
        self.assertEqual(self.complaints(support.PACKAGE), [])

    def test_the_settings_say_no(self) -> None:
        shutil.copy(os.path.join(support.PACKAGE, "pyproject.toml"), self.folder)
        os.mkdir(self.path("latbox"))
        self.write("latbox/__init__.py", "def half(x: int) -> int:\n    return x // 2\n\n\ndef third(x):\n    return half(\"3\")\n")
        self.assertEqual([line.split("error: ")[1] for line in self.complaints(self.folder)],
                         ["Function is missing a type annotation  [no-untyped-def]",
                          'Argument 1 to "half" has incompatible type "str"; expected "int"  [arg-type]'])


if __name__ == "__main__":
    harness.main()
