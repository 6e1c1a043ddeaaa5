"""The measured bars as markdown: a line for each bar, then a line for each program beside what it was measured against."""

import machine
from bars import BARS, Bar, Instances
from cells import Cells
from tables import lines_of
from units import Cell, Tools, Unit


def table(cells: Cells, instances: Instances, tools: Tools) -> str:
    measured = [(bar, *found(bar, cells, instances, tools)) for bar in BARS]
    rows = [[bar.work, figure_of(bar, pairs, whole), bar.wanted, bar.judge(pairs, whole)[1]] for bar, pairs, whole in measured]
    lines = [[bar.name, unit.name, *line_of(cell)] for bar, pairs, _ in measured for unit, cell in pairs]
    text = "%s\n\n%s" % (circumstances(cells, measured), lines_of(["work", "measured", "bar", ""], rows))
    return text + "\n\n" + lines_of(["row", "program", "verdict", "latbox-all", "beside it"], lines) if lines else text


def found(bar: Bar, cells: Cells, instances: Instances, tools: Tools) -> tuple[list[tuple[Unit, Cell]], bool]:
    """The units with a cell that counts, and whether that is all."""
    missing = len(instances.missing)
    units = list(bar.units(instances))
    pairs = [(unit, cell) for unit in units if unit.is_current(cell := cells.get(bar.name, unit.name), tools)]
    return pairs, len(pairs) == len(units) and len(instances.missing) == missing


def figure_of(bar: Bar, pairs: list[tuple[Unit, Cell]], whole: bool) -> str:
    figure = bar.judge(pairs, whole)[0]
    return figure if whole or not pairs else "not all is measured; so far: " + figure


def line_of(cell: Cell) -> list[str]:
    verdict = cell["verdict"] or "none when the limit came"
    if cell["fault"]:
        verdict = "**%s**" % cell["fault"]
    if "one" in cell:
        return [verdict, "%.3g s by the clock with one thread" % cell["one"], "%.3g s with two" % cell["two"]]
    if "seconds" in cell:
        return [verdict, "%.0f s by the clock, %.0f s of CPU" % (cell["seconds"], cell["cpu"]), ""]
    beside = cell.get("reference")
    return [verdict, "%.3g s" % cell["cpu"], "" if beside is None else ("%.3g s %s" % (beside, cell.get("which", ""))).strip()]


def circumstances(cells: Cells, measured: list[tuple[Bar, list[tuple[Unit, Cell]], bool]]) -> str:
    facts, loads = cells.facts, [cell["load"] for _, pairs, _ in measured for _, cell in pairs]
    text = "Measured on %s with latbox-all (SHA-256 %s..), %s. Machine: %s" % (
        facts.get("date", machine.today()), facts.get("tool", "unknown"), beside(facts.get("reference")), machine.described())
    if loads:
        text += "; while it was measured, between %.1f and %.1f processes wanted a processor" % (min(loads), max(loads))
    return text + "."


def beside(version: str | None) -> str:
    return "the reference programs (SHA-256 %s..) beside it" % version if version else "without the reference programs"
