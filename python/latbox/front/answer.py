"""The end: status, objective, values by name; and the file that --output writes and --check reads."""

from __future__ import annotations

import re
from fractions import Fraction

from ..errors import Place, ReadError, counted
from ..models.model import Model
from ..solving import checking
from ..solving.events import End, Point

BEGIN = "# point "
VALUE = re.compile(r"[+-]?[0-9]+(?:/0*[1-9][0-9]*)?\Z", re.ASCII)


def text(model: Model, end: End, all_values: bool = False) -> str:
    """What stands on standard output."""
    lines = ["status: " + end.status]
    if end.objective is not None:
        lines.append("objective: %s" % end.objective)
    if end.bound is not None:
        lines.append("bound: %s" % end.bound)
    lines += ["points: %d" % end.count, "time: %.2f s" % end.seconds]
    for number, x in enumerate(end.points, 1):
        block = [heading(model, number, x)] if end.count > 1 else []
        block += values(model, x, all_values)
        lines += ["", *block] if block else []
    if end.ray is not None:
        lines += ["", "ray:"] + values(model, end.ray, all_values)
    return "".join(line + "\n" for line in lines)


def heading(model: Model, number: int, x: Point) -> str:
    words = "point %d" % number
    return words + (", objective %s:" % checking.objective_of(model, x) if checking.states_objective(model) else ":")


def values(model: Model, x: Point, all_values: bool) -> list[str]:
    return ["%s = %s" % (variable.name, value) for variable, value in zip(model.variables, x) if value or all_values]


# ----------------------------------------------------------------- files


def output_text(model: Model, end: End) -> str:
    """All values of all points; lines that begin with # and a blank are comments, and one begins each point."""
    lines = ["# status: %s" % end.status]
    if end.objective is not None:
        lines.append("# objective: %s" % end.objective)
    for number, x in enumerate(end.points, 1):
        lines += [BEGIN + str(number)] + values(model, x, True)
    return "".join(line + "\n" for line in lines)


def read_points(model: Model, content: str, path: str) -> list[Point]:
    """The points of a file of output_text(). Throws ReadError with file and line."""
    points: list[dict[int, Fraction]] = []
    for number, line in enumerate(content.split("\n"), 1):
        name, sign, value = line.rpartition(" = ")
        j = model.position(name)
        # There are names that begin like a comment.
        if j is None and line.startswith(BEGIN):
            points.append({})
        if not line.strip() or j is None and line.startswith("# "):
            continue
        place = Place(number)
        if not sign or not VALUE.match(value):
            raise ReadError("a line `name = p/q` is wanted", place, path)
        if j is None:
            raise ReadError("the model has no variable %s" % name, place, path)
        if not points:
            points.append({})
        if j in points[-1]:
            raise ReadError("%s has a value already" % name, place, path)
        points[-1][j] = Fraction(value)
    if not points:
        raise ReadError("there is no point in it", None, path)
    for number, point in enumerate(points, 1):
        for j, variable in enumerate(model.variables):
            if j not in point:
                raise ReadError("point %d has no value for %s" % (number, variable.name), None, path)
    return [[point[j] for j in range(len(model.variables))] for point in points]


def check_text(model: Model, path: str, points: list[Point]) -> tuple[str, bool]:
    """What the check says, and whether all is well."""
    lines = []
    wrong = 0
    for number, x in enumerate(points, 1):
        fault = checking.fault(model, x)
        wrong += fault is not None
        if fault:
            lines.append("point %d: wrong: %s" % (number, fault))
        elif checking.states_objective(model):
            lines.append("point %d: ok, objective %s" % (number, checking.objective_of(model, x)))
        else:
            lines.append("point %d: ok" % number)
    twice = len(points) - len({tuple(x) for x in points})
    if twice:
        lines.append("%s twice" % counted(twice, "point stands", "points stand"))
    well = not wrong and not twice
    lines.append("%s: %s, %s" % (path, counted(len(points), "point"), "all well" if well else "%d wrong" % wrong))
    return "".join(line + "\n" for line in lines), well
