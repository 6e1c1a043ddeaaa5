"""latbox-plot: a picture of a run, from the log of the solver or from the JSON lines of latbox-solve, as SVG.

    latbox-plot [--x=time|iteration] LOG [PICTURE.svg]
    latbox-plot --view[=PORT] LOG

LOG is the standard output of latbox with --verb=1 or, for all panels, --verb=2, or what latbox-solve --json wrote. A log may
be cut anywhere and hold anything between its lines. --view serves a page of it instead, which follows it while it grows.
"""

from __future__ import annotations

import argparse
import math
import os
import sys
from typing import Callable

from . import json_log, run_log
from .errors import LatboxError, UsageError
from .models import sources
from .picture import (EVENT_HEIGHT, GAP, HEAD, LEFT, PANEL, RIGHT, TAIL, WIDTH, Drawing, Mark, Panel, Point, document,
                      tick_text, ticks, xml_text)
from .run_log import Series
from .tool import Parser, is_same_file, run_tool

EVENTS = "events: lattice regenerated, steps in extended precision, basis vectors shuffled"
Log = run_log.Run | json_log.Run
Place = Callable[[float], float]  # from a line of the log to x


# ----------------------------------------------------------------- panels


def panels(run: Log, place: Place) -> list[Panel]:
    """The panels for which the log has something."""

    def over(series: Series) -> list[Point]:
        return [(place(i), value) for i, value in series]

    if isinstance(run, json_log.Run):
        found = panels_of_json(run, over)
    else:
        found = panels_of_log(run, over)
    return [panel for panel in found if panel.series]


def panels_of_log(run: run_log.Run, over: Callable[[Series], list[Point]]) -> list[Panel]:
    solutions = Panel("solutions found", whole=True)
    if not run.target:
        solutions.add("solutions", "one", over(run.counts["solutions"]))
    target = Panel("best target (smaller is better)")
    if best_so_far(run.target) != run.target:
        target.add("as reported", "faint", over(run.target))
    target.add("best so far", "one", over(best_so_far(run.target)))
    target.dots = over(finds(run))
    slack = Panel("slack of the best point")
    if any(value != 0 for _, value in run.slack):
        slack.add("slack", "one", over(run.slack))
    broken = Panel("bounds that the best inhomogeneous vector breaks", whole=True)
    if any(value != 0 for _, value in run.broken):
        broken.add("bounds", "one", over(run.broken))
    sizes = Panel("vectors in the collections", whole=True)
    sizes.add("inhomogeneous", "one", over(run.inhomogeneous))
    sizes.add("homogeneous", "two", over(run.homogeneous))
    collected = Panel("vectors collected since the start", whole=True)
    collected.add("pairwise", "one", over(run.counts["pairwise"]))
    collected.add("sampling", "two", over(run.counts["sampling"]))
    basis = Panel("length: first basis vector, best inhomogeneous vector", log=True)
    basis.add("first of the basis", "one", over(run.first_length))
    basis.add("best inhomogeneous", "two", over(run.best_length))
    return [solutions, target, slack, broken, sizes, collected, basis]


def panels_of_json(run: json_log.Run, over: Callable[[Series], list[Point]]) -> list[Panel]:
    better = {"min": " (smaller is better)", "max": " (greater is better)"}.get(run.sense or "", "")
    value = Panel("best value and proven bound" + better if run.bound else "best value" + better)
    value.add("best value", "one", over(run.best))
    value.add("proven bound", "two", over(run.bound))
    value.dots = over(run.finds)
    points = Panel("points found", whole=True)
    if not run.best:
        points.add("points", "one", over(run.points))
    violated = Panel("violation of the nearest point")
    violated.add("violation", "one", over(run.violated))
    share = Panel("share of the complete search, in percent")
    share.add("share", "one", over(run.share))
    nodes = Panel("nodes of the complete search", whole=True)
    if any(value != 0 for _, value in run.nodes):
        nodes.add("nodes", "one", over(run.nodes))
    return [points, value, violated, share, nodes]


def best_so_far(series: Series) -> Series:
    best, found = math.inf, []
    for i, value in series:
        best = min(best, value)
        found.append((i, best))
    return found


def finds(run: run_log.Run) -> Series:
    """The reports of a better point; what a resumed run brings with it is no find of its own."""
    found, best = [], math.inf
    for i, value in run.target:
        if value < best and not (best == math.inf and run.resumed):
            found.append((i, value))
        best = min(best, value)
    return found


# ----------------------------------------------------------------- axes and title


def time_axis(run: Log) -> tuple[Place, float, str, list[Mark]]:
    """(place, greatest x, label, marks) in the unit that suits the length of the run."""
    high = run.seconds.at(math.inf)
    for unit, name in ((3600, "hours"), (60, "minutes"), (1, "seconds")):
        if high >= 3 * unit or unit == 1:
            break
    marks = [(x, tick_text(x)) for x in ticks(0, high / unit, 8)]
    return (lambda line: run.seconds.at(line) / unit), high / unit, "time in " + name, marks


def iteration_axis(run: Log) -> tuple[Place, float, str, list[Mark]]:
    high = max(run.iterations.at(math.inf), 1)
    return run.iterations.at, high, "iteration", [(x, tick_text(x)) for x in ticks(0, high, 8, True)]


def title(run: Log) -> tuple[str, str]:
    facts = run.facts()
    if isinstance(run, run_log.Run) and run.target:
        facts.insert(2, "best target " + tick_text(best_so_far(run.target)[-1][1]))
    return os.path.basename(run.name) or "a run", ", ".join(facts)


def svg(run: Log, axis: str) -> str:
    place, high, label, marks = {"time": time_axis, "iteration": iteration_axis}[axis](run)
    drawing = Drawing(high, label, marks)
    name, facts = title(run)
    drawing.text(LEFT, 24, name, "title")
    drawing.text(WIDTH - RIGHT, 24, facts, anchor="end")
    top = HEAD
    for panel in panels(run, place):
        drawing.panel(panel, top)
        top += PANEL + GAP
    events = [(key, [place(i) for i in lines]) for key, lines in run.events.items() if lines]
    if events:
        drawing.event_rows(EVENTS, events, top)
        top += EVENT_HEIGHT * len(events) + GAP
    drawing.x_axis(top - GAP)
    return document(drawing, name, facts, top - GAP + TAIL)


# ----------------------------------------------------------------- command line


def read(text: str) -> Log:
    """The last run of a log, whichever of the two kinds it is."""
    return json_log.read_run(text) if json_log.is_json(text) else run_log.read_run(text)


def plot(options: argparse.Namespace) -> None:
    if options.view is not None:
        if options.picture is not None:
            raise UsageError("--view: it draws no file, and %s was given" % options.picture)
        from .view import follow  # a picture is drawn without it

        follow.serve(options.log, options.view)
        return
    if options.picture is not None and is_same_file(options.log, options.picture):
        raise UsageError("%s: that is the log" % options.picture)
    run = read(sources.read(options.log))
    if run.empty():
        raise LatboxError("%s: no report of a run in it; run latbox with --verb=2, or latbox-solve with --json=FILE" %
                          sources.shown_name(options.log))
    if options.x == "iteration" and isinstance(run, json_log.Run) and not run.iterations.at(math.inf):
        raise LatboxError("%s: it tells no iterations; leave out --x=iteration" % sources.shown_name(options.log))
    sources.write(options.picture, xml_text(svg(run, options.x)))


def parser() -> Parser:
    found = Parser("latbox-plot", "A picture of a run, from its log, as SVG.")
    found.add_argument("log", metavar="LOG", help="standard output of latbox with --verb=1 or --verb=2, or the JSON lines of "
                       "latbox-solve; - for standard input")
    found.add_argument("picture", nargs="?", metavar="PICTURE.svg", help="the picture's file; standard output if it is left out")
    found.add_argument("--x", choices=("time", "iteration"), default="time", help="the shared axis; default time")
    found.add_argument("--view", metavar="PORT", type=port, nargs="?", const=0, help="serve a page of the log on this machine alone, print its link, and follow "
                       "the log until Ctrl-C; --view alone takes any port")
    return found


def port(text: str) -> int:
    if not (text.isascii() and text.isdecimal()) or not 0 <= int(text) <= 65535:
        raise argparse.ArgumentTypeError("a port of this machine is wanted, a number up to 65535")
    return int(text)


def main(arguments: list[str] | None = None) -> int:
    """The command; its exit status is 0, 1 for a log that tells nothing, 2 for a wrong command line."""
    given = sys.argv[1:] if arguments is None else arguments
    # The value is optional, and never the next word: that is the log.
    return run_tool(parser(), plot, ["--view=0" if word == "--view" else word for word in given])


if __name__ == "__main__":
    sys.exit(main())
