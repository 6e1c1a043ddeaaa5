"""The models: MathProg examples of the glpk-utils package, as LP files, if all that they decide is whole.

glpsol says what a model is for a data section; nothing is taken from anywhere else.
"""

from __future__ import annotations

import os
import subprocess
import sys
from dataclasses import dataclass

TREE = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
sys.path[:0] = [os.path.join(TREE, "python"), os.path.join(TREE, "bench", "comparison")]
import cells  # noqa: E402
from latbox.errors import ReadError  # noqa: E402
from latbox.models import Model, read_model  # noqa: E402
from latbox.models.tied import with_tied_on_grids  # noqa: E402

# It takes minutes to be written, and is no model but a test of size.
LEFT_OUT = ("huge",)
# The folder of a model without data of its own, and of many files of data.
PUZZLES = "pbn"
SECONDS = 60


@dataclass
class Instance:
    name: str
    path: str  # the LP file
    hash: str
    model: Model

    def size(self) -> str:
        return "%d x %d" % (len(self.model.rows), len(self.model.variables))


def sources(folder: str) -> list[tuple[str, list[str]]]:
    """(name, arguments of glpsol) of all examples."""
    found = [(name[:-4], ["-m", name]) for name in sorted(os.listdir(folder)) if name.endswith(".mod")]
    pictures = os.path.join(folder, PUZZLES)
    if os.path.isdir(pictures):
        found += [("pbn " + name[:-4], ["-m", "%s/pbn.mod" % PUZZLES, "-d", "%s/%s" % (PUZZLES, name)])
                  for name in sorted(os.listdir(pictures)) if name.endswith(".dat")]
    return [(name, arguments) for name, arguments in found if name not in LEFT_OUT]


def write_lp(folder: str, arguments: list[str], path: str) -> bool:
    """Whether glpsol has made an LP file of it: some examples make none, and some want a database."""
    if not os.path.exists(path):
        # Lines of its own that a model prints go with the rest.
        command = ["glpsol", "--check", *arguments, "--wlp", path + ".new"]
        try:
            subprocess.run(command, cwd=folder, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                           timeout=SECONDS, check=False)
        except subprocess.TimeoutExpired:
            return False
        if not os.path.exists(path + ".new"):
            return False
        os.replace(path + ".new", path)
    return True


def is_whole(model: Model) -> bool:
    """Whether nothing but whole numbers is decided: a constant of the objective is a column that is fixed, and what glpsol makes of
    a row with two sides is one that the row ties to the others."""
    free = [variable for variable in with_tied_on_grids(model).variables if variable.lower != variable.upper]
    return bool(free) and all(variable.integer and not variable.digits for variable in free)


def instances(folder: str, work: str, only: str = "") -> list[Instance]:
    """The examples that are integer models; their LP files stay in `work`."""
    os.makedirs(work, exist_ok=True)
    found = []
    for name, arguments in sources(os.path.abspath(folder)):
        path = os.path.abspath(os.path.join(work, name.replace(" ", "_") + ".lp"))
        if only not in name or not write_lp(folder, arguments, path):
            continue
        try:
            model = read_model(path)
        except ReadError:
            continue  # without a column there is nothing to solve
        if is_whole(model):
            found.append(Instance(name, path, cells.hash_of(path), model))
    return found
