"""The three solvers on an LP file: what each claims, and the point that it gives, by name.

A cell is a dictionary of plain values, so that it goes into a JSON file as it is:

  claim     "optimal"    a point, and that there is no better one
            "point"      a point, and no more
            "infeasible" that there is no point
            "unbounded"
            "none"       nothing
            "failed"     it ended without an answer: that is no answer either, and a fault
  objective of the point, computed exactly from the model, as text; None without a point or an objective
  fault     what is wrong with the point, "" if it is one
  cpu       CPU seconds, of all processes of the solver
  seconds   by the clock
  columns   integer columns that glpsol's preprocessor has left; glpsol only
"""

from __future__ import annotations

import json
import os
import re
import sys
from fractions import Fraction
from typing import Any

from limited_run import LimitedRun
from models import TREE, Instance

from latbox.models.model import finite  # noqa: E402
from latbox.solving import checking

Cell = dict[str, Any]
Claim = tuple[str, "dict[str, Fraction] | None"]
# A solver keeps its limit by the clock itself, and then writes what it has; this is for one that does not.
PATIENCE = 3


class Latbox:
    name = "latbox-solve"

    def __init__(self, script: str, engines: str) -> None:
        self.script, self.engines = script, engines

    def command(self, path: str, folder: str, limit: float) -> list[str]:
        return ["env", "LATBOX_BIN_DIR=" + self.engines, sys.executable, self.script, "--quiet", "--zero-exit", "--time=%g" % limit,
                "--json=" + os.path.join(folder, "events"), path]

    def claim(self, folder: str, run: LimitedRun) -> Claim:
        end = last_event(os.path.join(folder, "events"))
        if end is None or end["event"] != "end":
            return "failed", None
        values = end["values"] and {name: Fraction(value) for name, value in end["values"].items()}
        if end["status"] in ("optimal", "infeasible", "unbounded"):
            return end["status"], values
        return "point" if values else "none", values


class Glpsol:
    name = "glpsol"
    claims = {"o": "optimal", "f": "point", "n": "infeasible", "u": "none"}

    def command(self, path: str, folder: str, limit: float) -> list[str]:
        return ["glpsol", "--lp", path, "--tmlim", "%d" % limit, "--write", os.path.join(folder, "answer"), "--wglp",
                os.path.join(folder, "names")]

    def claim(self, folder: str, run: LimitedRun) -> Claim:
        """Its answer counts columns; the model as it has read it tells their names."""
        fields = lines_of(folder, "answer")
        status = next((f[4] for f in fields if f[:2] == ["s", "mip"]), "u")
        if any("NO PRIMAL FEASIBLE" in line or "NO INTEGER FEASIBLE" in line for _, line in run.lines):
            return "infeasible", None
        if any("UNBOUNDED" in line for _, line in run.lines):
            return "unbounded", None
        claim = self.claims[status]
        if claim not in ("optimal", "point"):
            return claim, None
        names = {f[2]: f[3] for f in lines_of(folder, "names") if f[:2] == ["n", "j"]}
        return claim, {names[f[1]]: rounded(f[2]) for f in fields if f[0] == "j"}

    @staticmethod
    def columns_left(run: LimitedRun) -> int | None:
        """Of the preprocessor; None where the run did not come that far."""
        lines = [line for _, line in run.lines]
        if any("BY MIP PREPROCESSOR" in line or "HAS NO PRIMAL FEASIBLE" in line for line in lines):
            return 0
        if "Preprocessing..." not in lines:
            return None
        for line in lines[lines.index("Preprocessing...") :]:
            match = re.match(r"(\d+|one) integer variable", line)
            if match:
                return 1 if match.group(1) == "one" else int(match.group(1))
        return None


class Cbc:
    name = "cbc"

    def command(self, path: str, folder: str, limit: float) -> list[str]:
        return ["cbc", path, "-timemode", "elapsed", "-sec", "%g" % limit, "-solve", "-solution", os.path.join(folder, "answer"),
                "-quit"]

    def claim(self, folder: str, run: LimitedRun) -> Claim:
        """Columns at zero are not in its answer, and `**` marks one that it finds violated itself."""
        fields = lines_of(folder, "answer")
        head = " ".join(fields[0]) if fields else ""
        if "nfeasible" in head:
            return "infeasible", None
        if not head or "no integer solution" in head:
            return "none", None
        values = {f[-3]: rounded(f[-2]) for f in fields[1:]}
        return "optimal" if head.startswith("Optimal") else "point", values


def last_event(path: str) -> dict[str, Any] | None:
    if not os.path.exists(path):
        return None
    with open(path, encoding="utf-8") as file:
        lines = file.read().splitlines()
    event: dict[str, Any] | None = json.loads(lines[-1]) if lines else None
    return event


def lines_of(folder: str, name: str) -> list[list[str]]:
    """Words of each line that has some; none if there is no such file."""
    path = os.path.join(folder, name)
    if not os.path.exists(path):
        return []
    with open(path, encoding="utf-8") as file:
        return [line.split() for line in file if line.strip()]


def rounded(text: str) -> Fraction:
    """The whole number that a floating-point solver means."""
    return Fraction(round(float(text)))


def judged(instance: Instance, claim: str, values: dict[str, Fraction] | None) -> Cell:
    """The claim and its point, exactly by the model; the limit and times come later."""
    cell: Cell = {"claim": claim, "objective": None, "fault": ""}
    if values is not None:
        # The constant of the objective is a column that is no number of theirs to choose.
        x = [finite(v.lower) if v.lower == v.upper else values.get(v.name, Fraction(0)) for v in instance.model.variables]
        cell["fault"] = checking.fault(instance.model, x) or ""
        if checking.has_objective(instance.model):
            cell["objective"] = str(checking.objective_of(instance.model, x))
    return cell


def measured(solver: Any, instance: Instance, limit: float, folder: str) -> Cell:
    """`folder` is for this run alone, empty."""
    run = LimitedRun(solver.command(instance.path, folder, limit), PATIENCE * limit)
    cell = judged(instance, *solver.claim(folder, run))
    if cell["claim"] == "failed":
        cell["fault"] = run.lines[-1][1] if run.lines else "status %d" % run.status
    cell.update(cpu=round(run.cpu, 2), seconds=round(run.seconds, 2))
    if isinstance(solver, Glpsol):
        cell["columns"] = solver.columns_left(run)
    return cell


def default_script() -> str:
    return os.path.join(TREE, "python", "bin", "latbox-solve")
