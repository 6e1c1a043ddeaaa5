"""What the tests of the package share: where it is, its commands as they are started, programs and their points.

Every test file is run as `python3 test_x.py BINARY EXAMPLES_DIR [unittest options]`, like those of tests/e2e.
"""

from __future__ import annotations

import itertools
import os
import shutil
import subprocess
import sys
from fractions import Fraction
from typing import Callable

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.normpath(os.path.join(HERE, "..", ".."))
PACKAGE = os.path.join(ROOT, "python")
sys.path[:0] = [PACKAGE, os.path.join(ROOT, "tests", "e2e")]
sys.dont_write_bytecode = True

import checker  # noqa: E402
import harness  # noqa: E402
import models as drawn_models  # noqa: E402

from latbox.models import Model, MpsDialect, name_map, opt_writer, read_text  # noqa: E402

Points = dict[tuple[Fraction, ...], "Fraction | None"]


def reader(form: str) -> Callable[[str], Model]:
    """text -> Model, in one of the formats."""
    return lambda text: read_text(text, form, MpsDialect())


def converted(read: Callable[[str], Model], text: str, digits: int | None = None) -> str:
    return opt_writer.opt_text(read(text), "drawn", digits)


def program_points(text: str) -> Points:
    """{point in the model's coordinates: objective or None} of a program's text."""
    names = name_map.read_map(text)
    program = checker.Program(text)
    grids = [drawn_models.grid(int(d), low, high) for d, low, high in zip(program.dx, program.lx, program.rx)]
    found = {}
    for x in itertools.product(*grids):
        if program.violation(x) is None:
            value = None
            if names.objective:
                value = names.objective[1] + (checker.dot(program.at[0], x) if program.at else 0)
            found[tuple(column.original(v) for column, v in zip(names.columns, x))] = value
    return found


class ToolsCase(harness.Case):
    def tool(self, name: str, *arguments: str, status: int = 0, stdin: bytes = b"") -> harness.Result:
        """A command of the package, as a clone starts it."""
        done = subprocess.run([sys.executable, os.path.join(PACKAGE, "bin", name), *arguments], cwd=self.folder,
                              check=False, timeout=harness.LIMIT, input=stdin, stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, env=dict(os.environ, PYTHONDONTWRITEBYTECODE="1"))
        self.assertEqual(done.returncode, status, done.stderr.decode())
        return harness.Result(done.returncode, done.stdout.decode(errors="surrogateescape"), done.stderr.decode())

    def example(self, name: str) -> None:
        shutil.copy(os.path.join(ROOT, "examples", "models", name), self.folder)
