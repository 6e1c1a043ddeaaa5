"""The header: how large a model is, how its numbers spread, and plain words where it is none for lattices."""

from __future__ import annotations

from collections.abc import Iterable
from fractions import Fraction

from ..errors import counted
from ..models.model import INF, Bound, Model
from ..models.tied import with_tied_on_grids
from ..solving import checking, exact
from ..solving.events import Start

# A lattice of this rank is beyond a complete search but for the easiest programs, and beyond reduction.
LARGE_RANK = 150
HUGE_RANK = 1000
SPARSE = 0.1


def header(model: Model, name: str, start: Start) -> list[str]:
    return size(model, name, start) + warnings(model, start)


def size(model: Model, name: str, start: Start) -> list[str]:
    lines = ["%s: %s, %s, %s%s" % (name, columns_text(model), counted(len(model.rows), "row"),
                                   counted(nonzeros(model), "nonzero"), sense_text(model))]
    ranges = [text for text in (range_text("coefficients", coefficients(model)), range_text("sides", sides(model)),
                                bounds_text(model)) if text]
    lines.append(", ".join(ranges + ["lattice of rank %d" % start.rank]))
    engines = []
    if start.searches:
        engines.append("search (%s)%s" % (start.kind, " x %d" % start.searches if start.searches > 1 else ""))
    if start.threads:
        engines.append("complete search on %s" % counted(start.threads, "thread"))
    lines.append(", ".join(engines))
    return [line for line in lines if line]


def columns_text(model: Model) -> str:
    binary = sum(v.integer and v.lower == 0 and v.upper == 1 for v in model.variables)
    continuous = sum(not v.integer for v in model.variables)
    whole = len(model.variables) - binary - continuous
    kinds = [(binary, "binary"), (whole, "integer"), (continuous, "continuous")]
    words = ["%d %s" % kind for kind in kinds if kind[0]]
    return (" + ".join(words) or "0") + " column" + ("" if len(model.variables) == 1 else "s")


def sense_text(model: Model) -> str:
    if not checking.states_objective(model):
        return ", no objective"
    return ", maximise" if model.maximise else ", minimise"


def nonzeros(model: Model) -> int:
    return sum(len(row.coefficients) for row in model.rows)


def coefficients(model: Model) -> Iterable[Fraction]:
    return (a for row in model.rows for a in row.coefficients.values())


def sides(model: Model) -> Iterable[Bound]:
    return (side for row in model.rows for side in (row.lower, row.upper) if abs(side) != INF)


def bounds(model: Model) -> Iterable[Bound]:
    return (end for variable in model.variables for end in (variable.lower, variable.upper))


def range_text(word: str, values: Iterable[Bound]) -> str:
    found = list(values)
    return "%s %s .. %s" % (word, plain(min(found)), plain(max(found))) if found else ""


def bounds_text(model: Model) -> str:
    """Open columns are counted: a range to infinity would not tell whether one is open or all are."""
    text = range_text("bounds", bounds(model))
    is_open = sum(variable.lower == -INF or variable.upper == INF for variable in model.variables)
    return "%s (%s open)" % (text, counted(is_open, "column")) if is_open else text


def plain(value: Bound) -> str:
    if abs(value) == INF:
        return str(value)
    digits = exact.text(Fraction(value))
    if len(digits) <= 12:
        return digits
    try:
        return "%.4g" % float(value)
    except OverflowError:
        return ("-" if value < 0 else "") + "1e%d" % (len(exact.digits(abs(int(value)))) - 1)


def warnings(model: Model, start: Start) -> list[str]:
    """Plain words, each with the kind of solver that is better at it."""
    continuous = sum(not v.integer for v in with_tied_on_grids(model).variables)
    cells = max(1, len(model.rows) * len(model.variables))
    filled = nonzeros(model) / cells
    if continuous == len(model.variables) and continuous:
        return ["all columns are continuous: that is a linear program, for a simplex or interior-point solver"]
    found = []
    if continuous:
        found.append("%s: a branch-and-cut solver takes them as they are, a lattice on a grid only" %
                     counted(continuous, "continuous column"))
    if start.rank > LARGE_RANK:
        unit = all(abs(a) == 1 for a in coefficients(model))
        binary = all(v.lower == 0 and v.upper == 1 for v in model.variables if v.integer)
        kind = ("a solver for satisfiability or exact cover" if unit and binary and filled < SPARSE
                else "a branch-and-cut solver")
        found.append("a lattice of rank %d is %s: %s is the better choice unless the rows are few and hard" %
                     (start.rank, "far too large" if start.rank > HUGE_RANK else "large", kind))
    return found
