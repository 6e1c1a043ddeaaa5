"""What is to be thought of the claims, and the table of them."""

from __future__ import annotations

from fractions import Fraction
from typing import Any

from cells import Cells
from models import Instance
from tables import lines_of

OURS, GLPSOL, CBC = "latbox-solve", "glpsol", "cbc"
SOLVERS = (OURS, GLPSOL, CBC)
# The bar: proven wherever glpsol proves it within so many seconds of CPU, and so many integer columns are left.
SOON = 1.0
FEW = 60
Cell = dict[str, Any]


def disproof(name: str, row: dict[str, Cell], sign: int) -> str:
    """Why the claim of a solver is wrong, "" if nothing says so. `sign`: -1 where the objective is to be large. Points are
    believed if they were verified, and claims that there is no point or no better one never."""
    cell = row[name]
    if cell["fault"]:
        return cell["fault"]
    points = [other for other in row.values() if other["claim"] in ("optimal", "point") and not other["fault"]]
    if cell["claim"] == "infeasible" and points:
        return "there is a point"
    if cell["claim"] == "optimal" and cell["objective"] is not None:
        best = min((sign * Fraction(other["objective"]) for other in points), default=None)
        if best is not None and best < sign * Fraction(cell["objective"]):
            return "%s is better" % (sign * best)
    return ""


def in_bar(row: dict[str, Cell]) -> bool:
    theirs = row[GLPSOL]
    return (theirs["claim"] in ("optimal", "infeasible") and theirs["cpu"] <= SOON and theirs["columns"] is not None
            and theirs["columns"] <= FEW)


def is_proven(cell: Cell) -> bool:
    return cell["claim"] in ("optimal", "infeasible") and not cell["fault"]


def words(cell: Cell, wrong: str) -> str:
    """One cell of the table."""
    cpu = "%.1f s" % cell["cpu"]
    if cell["claim"] == "failed":
        return "**failed**: %s, %s" % (cell["fault"], cpu)
    if wrong:
        return "**wrong**: %s: %s, %s" % (cell["claim"], wrong, cpu)
    if cell["claim"] == "none":
        return "nothing, %s" % cpu
    value = "" if cell["objective"] is None else " " + cell["objective"]
    verified = ", unverified" if cell["claim"] == "infeasible" else ", verified"
    return "%s%s, %s%s" % (cell["claim"], value, cpu, verified)


def rows_of(cells: Cells, instances: list[Instance]) -> list[tuple[Instance, dict[str, Cell]]]:
    """Of what has been measured by all three."""
    found = []
    for instance in instances:
        row = {name: cells.get(instance.name, name) for name in SOLVERS}
        if all(row.values()):
            found.append((instance, row))
    return found


def table(cells: Cells, instances: list[Instance]) -> str:
    facts, rows = cells.facts, rows_of(cells, instances)
    head = ["model", "rows x columns", "left", *SOLVERS, "bar"]
    lines = []
    wrong_ones, barred, met = 0, 0, 0
    for instance, row in rows:
        sign = -1 if instance.model.maximise else 1
        wrong = {name: disproof(name, row, sign) for name in SOLVERS}
        wrong_ones += bool(wrong[OURS])
        is_met = is_proven(row[OURS]) and not wrong[OURS]
        bar = ("met" if is_met else "**not met**") if in_bar(row) else ""
        barred, met = barred + in_bar(row), met + (in_bar(row) and is_met)
        left = row[GLPSOL]["columns"]
        lines.append([instance.name, instance.size(), "" if left is None else str(left)]
                     + [words(row[name], wrong[name]) for name in SOLVERS] + [bar])
    loads = [cell["load"] for _, row in rows for cell in row.values()]
    text = "Measured on %s with latbox (SHA-256 %s..), glpsol %s, cbc %s. Machine: %s" % tuple(
        facts.get(key, "unknown") for key in ("date", OURS, GLPSOL, CBC, "machine"))
    if loads:
        text += "; between %.1f and %.1f processes wanted a processor" % (min(loads), max(loads))
    text += ". Limit: %s s by the clock a run." % ("%g" % facts.get("limit", 0))
    proven = ["%s %d" % (name, sum(is_proven(row[name]) for _, row in rows)) for name in SOLVERS]
    bars = "Wrong statuses of latbox-solve: %d of %d. The bar is met by %d of %d models. Proven: %s." % (
        wrong_ones, len(rows), met, barred, ", ".join(proven))
    return "\n\n".join([text, bars, lines_of(head, lines)])
