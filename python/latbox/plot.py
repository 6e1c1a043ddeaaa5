#!/usr/bin/env python3
"""A picture of a run: what a log of the solver says about best target, slack, collections and basis, as SVG.

    python3 tools/plot_run.py [--x=time|iteration] LOG > run.svg

LOG is the standard output of a run with --verb=1 or, for all panels, --verb=2. See tools/README.md.
"""

import argparse
import math
import os
import sys
from xml.sax.saxutils import escape

import model
import run_log

WIDTH, LEFT, RIGHT = 820, 88, 20
HEAD, PANEL, GAP, TAIL = 62, 104, 40, 52
EVENT_HEIGHT = 16
# The pixels that share the least and the greatest value of a series: a log of a day must not make a file of a day.
BUCKET = 2

# Blue and vermilion, sky blue and orange on dark ground: people with any kind of colour vision can tell them apart
# (M. Okabe and K. Ito, 2008). The second series differs in its stroke too. Plain rules without variables, which not
# every viewer knows.
STYLE = """
  text { font: 12px system-ui, -apple-system, "Segoe UI", sans-serif; fill: #59636e; }
  .title { font-size: 15px; font-weight: 600; fill: #1f2328; }
  .head { font-weight: 600; fill: #1f2328; }
  .ground { fill: #ffffff; }
  .grid { stroke: #d8dee4; stroke-width: 1; fill: none; }
  .axis { stroke: #59636e; stroke-width: 1; fill: none; }
  .one, .two, .faint { fill: none; stroke-width: 1.8; stroke-linejoin: round; }
  .one, .faint { stroke: #0072b2; }
  .two { stroke: #d55e00; stroke-dasharray: 6 3; }
  .faint { stroke-width: 1; opacity: 0.5; }
  .dot { fill: #0072b2; }
  @media (prefers-color-scheme: dark) {
    text { fill: #9198a1; }
    .title, .head { fill: #e6edf3; }
    .ground { fill: #0d1117; }
    .grid { stroke: #30363d; }
    .axis { stroke: #9198a1; }
    .one, .faint { stroke: #56b4e9; }
    .two { stroke: #e69f00; }
    .dot { fill: #56b4e9; }
  }
"""


class Panel:
    """Series that share a y-axis: (label, class, [(x, y)], steps or not)."""

    def __init__(self, title, log=False, whole=False):
        self.title = title
        self.log = log
        self.whole = whole
        self.series = []

    def add(self, label, style, points, steps=True):
        if points:
            self.series.append((label, style, points, steps))

    def values(self):
        return [y for _, _, points, _ in self.series for _, y in points]


# ----------------------------------------------------------------- panels


def panels(run, place):
    """The panels for which the log has something; `place` takes a line of the log to x."""

    def over(series):
        return [(place(i), value) for i, value in series]

    found = []
    target = Panel("best target (smaller is better)")
    if best_so_far(run.target) != run.target:
        target.add("as reported", "faint", over(run.target))
    target.add("best so far", "one", over(best_so_far(run.target)))
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
    found += [panel for panel in (target, slack, broken, sizes, collected, basis) if panel.series]
    if not run.target:
        solutions = Panel("solutions found", whole=True)
        solutions.add("solutions", "one", over(run.counts["solutions"]))
        found = [solutions] * bool(solutions.series) + found
    return found


def best_so_far(series):
    best, found = math.inf, []
    for i, value in series:
        best = min(best, value)
        found.append((i, best))
    return found


# ----------------------------------------------------------------- scales


def nice_step(span, count):
    raw = span / count
    power = 10.0 ** math.floor(math.log10(raw))
    return next(power * k for k in (1, 2, 2.5, 5, 10) if power * k >= raw * 0.999)


def ticks(low, high, count, whole=False):
    step = nice_step(high - low, count)
    if whole:
        step = max(1.0, step)
    first = math.ceil(low / step - 1e-9)
    return [k * step for k in range(first, math.floor(high / step + 1e-9) + 1)]


def tick_text(value):
    if value == 0:
        return "0"
    if abs(value) >= 1e7 or abs(value) < 1e-3:
        return "%.3g" % value
    return ("%.6g" % value).replace("-", "\u2212")


def power_text(exponent):
    return "10" + str(exponent).translate(str.maketrans("-0123456789", "⁻⁰¹²³⁴⁵⁶⁷⁸⁹"))


class Scale:
    """The y-axis of a panel: from a value to a pixel, and its ticks."""

    def __init__(self, panel, top):
        values = [math.log10(y) for y in panel.values()] if panel.log else panel.values()
        low, high = min(values), max(values)
        if panel.whole:
            low, high = min(low, 0), max(high, 1)
        if high - low < 1e-9 * max(1.0, abs(high)):
            low, high = low - 1, high + 1
        self.log = panel.log
        self.low, self.high = low, high
        self.bottom = top + PANEL
        self.marks = self.log_marks() if panel.log else [(y, tick_text(y)) for y in ticks(low, high, 4, panel.whole)]

    def log_marks(self):
        exponents = range(math.ceil(self.low), math.floor(self.high) + 1)
        if len(exponents) < 2:
            return self.marks_within_a_decade()
        stride = -(-len(exponents) // 5)
        return [(y, power_text(y)) for y in exponents if y % stride == 0]

    def marks_within_a_decade(self):
        exponent = math.floor(self.low)
        values = ticks(10 ** (self.low - exponent), 10 ** (self.high - exponent), 3)
        if -3 <= exponent < 6:
            return [(exponent + math.log10(value), tick_text(value * 10.0**exponent)) for value in values]
        return [(exponent + math.log10(value), "%g\u00d7%s" % (round(value, 6), power_text(exponent)))
                for value in values]

    def pixel(self, value):
        return self.pixel_of_mark(math.log10(value) if self.log else value)

    def pixel_of_mark(self, mark):
        return self.bottom - 4 - (mark - self.low) / (self.high - self.low) * (PANEL - 8)


# ----------------------------------------------------------------- drawing


class Drawing:
    def __init__(self, x_high, x_label, x_marks):
        self.parts = []
        self.x_high = x_high
        self.x_label = x_label
        self.x_marks = x_marks

    def x(self, value):
        return LEFT + value / self.x_high * (WIDTH - LEFT - RIGHT)

    def text(self, x, y, text, style="", anchor="start"):
        style = ' class="%s"' % style if style else ""
        anchor = ' text-anchor="%s"' % anchor if anchor != "start" else ""
        self.parts.append('<text x="%s" y="%s"%s%s>%s</text>' % (short(x), short(y), style, anchor, escape(text)))

    def path(self, style, data):
        self.parts.append('<path class="%s" d="%s"/>' % (style, data))

    def frame(self, top, height):
        """The vertical grid that all panels share."""
        self.path("grid", "".join("M%s %sv%d" % (short(self.x(x)), short(top), height) for x, _ in self.x_marks))

    def panel(self, panel, top):
        scale = Scale(panel, top)
        self.text(LEFT, top - 8, panel.title, "head")
        self.frame(top, PANEL)
        for mark, text in scale.marks:
            y = short(scale.pixel_of_mark(mark))
            self.path("grid", "M%d %sH%d" % (LEFT, y, WIDTH - RIGHT))
            self.text(LEFT - 8, scale.pixel_of_mark(mark) + 4, text, anchor="end")
        self.path("axis", "M%d %dv%dH%d" % (LEFT, top, PANEL, WIDTH - RIGHT))
        for _, style, points, steps in panel.series:
            self.series(style, points, steps, scale)
        if len(panel.series) > 1:
            self.legend(panel.series, top - 8)

    def legend(self, series, y):
        """From the right, as no width of a text is known here but by guess."""
        x = WIDTH - RIGHT
        for label, style, _, _ in reversed(series):
            self.text(x, y, label, anchor="end")
            x -= sum(4 if c in "fijlrt " else 10 if c in "mw" else 7.3 for c in label) + 30
            self.path(style, "M%s %dh22" % (short(x), y - 4))
            x -= 16

    def series(self, style, points, steps, scale):
        pixels = thin([(self.x(x), scale.pixel(y)) for x, y in points])
        data = "M%s %s" % (short(pixels[0][0]), short(pixels[0][1]))
        last = pixels[0][1]
        for x, y in pixels[1:]:
            if steps and short(y) == short(last):
                continue
            data += "H%sV%s" % (short(x), short(y)) if steps else "L%s %s" % (short(x), short(y))
            last = y
        self.path(style, data + "H%s" % short(self.x(self.x_high)))
        if len(points) == 1:
            self.parts.append('<circle class="dot" cx="%s" cy="%s" r="3"/>' % tuple(map(short, pixels[0])))

    def event_rows(self, events, top):
        title = "events: lattice regenerated, steps in extended precision, basis vectors shuffled"
        self.text(LEFT, top - 8, title, "head")
        self.frame(top, EVENT_HEIGHT * len(events))
        for k, (label, places) in enumerate(events):
            y = top + EVENT_HEIGHT * k
            marks = sorted({round(self.x(x)) for x in places})
            self.path("one", "".join("M%d %dv%d" % (x, y + 3, EVENT_HEIGHT - 6) for x in marks))
            self.text(LEFT - 8, y + 12, label, anchor="end")
        self.path("axis", "M%d %dH%d" % (LEFT, top + EVENT_HEIGHT * len(events), WIDTH - RIGHT))

    def x_axis(self, y):
        for x, text in self.x_marks:
            self.text(self.x(x), y + 18, text, anchor="middle")
        self.text((LEFT + WIDTH - RIGHT) / 2, y + 38, self.x_label, anchor="middle")


def short(value):
    return "%g" % round(value, 1)


def thin(pixels):
    """At most the first, the least, the greatest and the last of every few pixels."""
    groups = {}
    for point in pixels:
        groups.setdefault(int(point[0] // BUCKET), []).append(point)
    kept = []
    for group in groups.values():
        if len(group) > 4:
            middle = sorted({min(range(len(group)), key=lambda i: group[i][1]),
                             max(range(len(group)), key=lambda i: group[i][1])} - {0, len(group) - 1})
            group = [group[0]] + [group[i] for i in middle] + [group[-1]]
        kept += group
    return kept


def time_axis(run):
    """(place, greatest x, label, marks) in the unit that suits the length of the run."""
    high = run.seconds.at(math.inf)
    for unit, name in ((3600, "hours"), (60, "minutes"), (1, "seconds")):
        if high >= 3 * unit or unit == 1:
            break
    marks = [(x, tick_text(x)) for x in ticks(0, high / unit, 8)]
    return (lambda line: run.seconds.at(line) / unit), high / unit, "time in " + name, marks


def iteration_axis(run):
    high = max(run.iterations.at(math.inf), 1)
    return run.iterations.at, high, "iteration", [(x, tick_text(x)) for x in ticks(0, high, 8, True)]


def title(run):
    facts = ["%d iterations" % run.last_iteration, "%d s" % run.last_second]
    if run.target:
        facts.append("best target " + tick_text(best_so_far(run.target)[-1][1]))
        if not any(value != 0 for _, value in run.slack):
            facts.append("slack 0 throughout")
    if run.counts["solutions"]:
        facts.append("%d solution(s)" % max(value for _, value in run.counts["solutions"]))
    return os.path.basename(run.name) or "a run", ", ".join(facts)


def svg(run, axis):
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
        drawing.event_rows(events, top)
        top += EVENT_HEIGHT * len(events) + GAP
    drawing.x_axis(top - GAP)
    height = top - GAP + TAIL
    head = ('<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 %d %d" width="%d" height="%d" role="img">\n'
            '<title>%s</title>\n<desc>%s</desc>\n<style>%s</style>\n<rect class="ground" width="%d" height="%d"/>\n' %
            (WIDTH, height, WIDTH, height, escape(name), escape(facts), STYLE, WIDTH, height))
    return head + "\n".join(drawing.parts) + "\n</svg>\n"


def xml_text(text):
    """Without the characters that XML has no place for."""
    return "".join(c for c in text if c in "\t\n" or " " <= c <= "\ud7ff" or "\ue000" <= c <= "\ufffd" or c > "\uffff")


def main():
    parser = argparse.ArgumentParser(description="A picture of a run, from its log, as SVG on standard output.")
    parser.add_argument("log", help="standard output of the solver with --verb=1 or --verb=2")
    parser.add_argument("--x", choices=("time", "iteration"), default="time", help="the shared axis; default time")
    options = parser.parse_args()
    try:
        run = run_log.read_run(model.read_text(options.log))
    except OSError as error:
        sys.exit(str(error))
    if run.empty():
        sys.exit("%s: no report of a run in it; run the solver with --verb=2" % options.log)
    model.write_text(None, xml_text(svg(run, options.x)))


if __name__ == "__main__":
    main()
