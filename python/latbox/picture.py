"""Pictures of series over one axis, as SVG: panels one below the other, with scales, grids, marks and legends.

Plain text and no library, since a picture of a run must be drawn wherever the run was. The size of a picture is bounded
by its width in pixels, not by the length of its series.
"""

from __future__ import annotations

import math
from typing import Iterable, Sequence
from xml.sax.saxutils import escape

Point = tuple[float, float]
Mark = tuple[float, str]  # where on an axis, and what is written there

WIDTH, LEFT, RIGHT = 820, 88, 20
HEAD, PANEL, GAP, TAIL = 62, 104, 40, 52
EVENT_HEIGHT = 16
# The pixels that share the least and the greatest value of a series: a log of a day must not make a file of a day.
BUCKET = 2
# Marks on a y-axis: with fewer nobody can read a value off, more would touch.
FEWEST_MARKS, MOST_MARKS = 3, 7

# Numbers from here on are written in three digits.
LONG = 1e7

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
  .dot { fill: #ffffff; stroke: #0072b2; stroke-width: 1.5; }
  @media (prefers-color-scheme: dark) {
    text { fill: #9198a1; }
    .title, .head { fill: #e6edf3; }
    .ground { fill: #0d1117; }
    .grid { stroke: #30363d; }
    .axis { stroke: #9198a1; }
    .one, .faint { stroke: #56b4e9; }
    .two { stroke: #e69f00; }
    .dot { fill: #0d1117; stroke: #56b4e9; }
  }
"""


class Panel:
    """Series that share a y-axis: (label, class, [(x, y)], steps or not), and points to be marked."""

    def __init__(self, title: str, log: bool = False, whole: bool = False) -> None:
        self.title = title
        self.log = log
        self.whole = whole
        self.series: list[tuple[str, str, list[Point], bool]] = []
        self.dots: list[Point] = []

    def add(self, label: str, style: str, points: list[Point], steps: bool = True) -> None:
        if points:
            self.series.append((label, style, points, steps))

    def values(self) -> list[float]:
        return [y for _, _, points, _ in self.series for _, y in points]


# ----------------------------------------------------------------- scales


def nice_step(span: float, count: int) -> float:
    raw = span / count
    power = 10.0 ** math.floor(math.log10(raw))
    return next(power * k for k in (1, 2, 2.5, 5, 10) if power * k >= raw * 0.999)


def ticks(low: float, high: float, count: int, whole: bool = False) -> list[float]:
    step = nice_step(high - low, count)
    if whole:
        step = max(1.0, step)
    first = math.ceil(low / step - 1e-9)
    return [k * step for k in range(first, math.floor(high / step + 1e-9) + 1)]


def tick_text(value: float) -> str:
    if value == 0:
        return "0"
    if abs(value) >= LONG or abs(value) < 1e-3:
        return "%.3g" % value
    return ("%.6g" % value).replace("-", "\u2212")


def power_text(exponent: int) -> str:
    return "10" + str(exponent).translate(str.maketrans("-0123456789", "⁻⁰¹²³⁴⁵⁶⁷⁸⁹"))


def multiple_text(factor: float, exponent: int) -> str:
    if -3 <= exponent < 6:
        return tick_text(factor * 10.0**exponent)
    if factor == 1:
        return power_text(exponent)
    return "%g\u00d7%s" % (round(factor, 6), power_text(exponent))


class Scale:
    """The y-axis of a panel: from a value to a pixel, and its ticks."""

    def __init__(self, panel: Panel, top: float) -> None:
        values = [math.log10(y) for y in panel.values()] if panel.log else panel.values()
        low, high = min(values), max(values)
        if panel.whole:
            low, high = min(low, 0), max(high, 1)
        if high - low < 1e-9 * max(1.0, abs(high)):
            # Of a float of many digits 1 is no part, and its ticks are told in three.
            room = 1 if abs(high) < LONG else abs(high) / 10
            low, high = low - room, high + room
        self.log = panel.log
        self.low, self.high = low, high
        self.bottom = top + PANEL
        self.marks = self.log_marks() if panel.log else [(y, tick_text(y)) for y in ticks(low, high, 4, panel.whole)]

    def log_marks(self) -> list[Mark]:
        """Powers of ten, or 1, 2 and 5 times them, or plain steps within a decade: the coarsest that gives enough."""
        exponents = range(math.floor(self.low), math.floor(self.high) + 1)
        for stride in (50, 20, 10, 5, 4, 3, 2, 1):
            marks = [(float(e), power_text(e)) for e in exponents if e % stride == 0 and self.low <= e]
            if len(marks) >= FEWEST_MARKS:
                return marks[::-(-len(marks) // MOST_MARKS)]
        for factors in ((1, 3), (1, 2, 5)):
            marks = [(e + math.log10(k), multiple_text(k, e)) for e in exponents for k in factors]
            marks = [mark for mark in marks if self.low <= mark[0] <= self.high]
            if len(marks) >= FEWEST_MARKS:
                return marks[::-(-len(marks) // MOST_MARKS)]
        return self.marks_within_a_decade()

    def marks_within_a_decade(self) -> list[Mark]:
        exponent = math.floor(self.low)
        ends = 10 ** (self.low - exponent), 10 ** (self.high - exponent)
        # Even steps of the value, as many as it takes: a span that is none for powers may be uneven for them, too.
        for count in (3, 4, 6, 8):
            steps = ticks(*ends, count)
            if len(steps) >= FEWEST_MARKS:
                break
        return [(exponent + math.log10(step), multiple_text(step, exponent)) for step in steps]

    def pixel(self, value: float) -> float:
        return self.pixel_of_mark(math.log10(value) if self.log else value)

    def pixel_of_mark(self, mark: float) -> float:
        return self.bottom - 4 - (mark - self.low) / (self.high - self.low) * (PANEL - 8)


# ----------------------------------------------------------------- drawing


class Drawing:
    def __init__(self, x_high: float, x_label: str, x_marks: list[Mark]) -> None:
        self.parts: list[str] = []
        self.x_high = x_high
        self.x_label = x_label
        self.x_marks = x_marks

    def x(self, value: float) -> float:
        return LEFT + value / self.x_high * (WIDTH - LEFT - RIGHT)

    def text(self, x: float, y: float, text: str, style: str = "", anchor: str = "start") -> None:
        style = ' class="%s"' % style if style else ""
        anchor = ' text-anchor="%s"' % anchor if anchor != "start" else ""
        self.parts.append('<text x="%s" y="%s"%s%s>%s</text>' % (short(x), short(y), style, anchor, escape(text)))

    def path(self, style: str, data: str) -> None:
        self.parts.append('<path class="%s" d="%s"/>' % (style, data))

    def frame(self, top: float, height: int) -> None:
        """The vertical grid that all panels share."""
        self.path("grid", "".join("M%s %sv%d" % (short(self.x(x)), short(top), height) for x, _ in self.x_marks))

    def panel(self, panel: Panel, top: float) -> None:
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
        self.dots(panel.dots, scale)
        if len(panel.series) > 1:
            self.legend(panel.series, top - 8)

    def legend(self, series: Sequence[tuple[str, str, list[Point], bool]], y: float) -> None:
        """From the right, as no width of a text is known here but by guess."""
        x: float = WIDTH - RIGHT
        for label, style, _, _ in reversed(series):
            self.text(x, y, label, anchor="end")
            x -= sum(4 if c in "fijlrt " else 10 if c in "mw" else 7.3 for c in label) + 30
            self.path(style, "M%s %dh22" % (short(x), y - 4))
            x -= 16

    def series(self, style: str, points: list[Point], steps: bool, scale: Scale) -> None:
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
            self.dots(points, scale)

    def dots(self, points: Iterable[Point], scale: Scale) -> None:
        """Small rings; those that would lie on each other are one."""
        seen = set()
        for x, y in points:
            pixel = self.x(x), scale.pixel(y)
            cell = int(pixel[0] // 3), int(pixel[1] // 3)
            if cell not in seen:
                seen.add(cell)
                self.parts.append('<circle class="dot" cx="%s" cy="%s" r="2.6"/>' % (short(pixel[0]), short(pixel[1])))

    def event_rows(self, title: str, events: list[tuple[str, list[float]]], top: float) -> None:
        self.text(LEFT, top - 8, title, "head")
        self.frame(top, EVENT_HEIGHT * len(events))
        for k, (label, places) in enumerate(events):
            y = top + EVENT_HEIGHT * k
            marks = sorted({round(self.x(x)) for x in places})
            self.path("one", "".join("M%d %dv%d" % (x, y + 3, EVENT_HEIGHT - 6) for x in marks))
            self.text(LEFT - 8, y + 12, label, anchor="end")
        self.path("axis", "M%d %dH%d" % (LEFT, top + EVENT_HEIGHT * len(events), WIDTH - RIGHT))

    def x_axis(self, y: float) -> None:
        for x, text in self.x_marks:
            self.text(self.x(x), y + 18, text, anchor="middle")
        self.text((LEFT + WIDTH - RIGHT) / 2, y + 38, self.x_label, anchor="middle")


def short(value: float) -> str:
    return "%g" % round(value, 1)


def thin(pixels: list[Point]) -> list[Point]:
    """At most the first, the least, the greatest and the last of every few pixels."""
    groups: dict[int, list[Point]] = {}
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


def document(drawing: Drawing, name: str, facts: str, height: float) -> str:
    """The whole file."""
    head = ('<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 %d %d" width="%d" height="%d" role="img">\n'
            '<title>%s</title>\n<desc>%s</desc>\n<style>%s</style>\n<rect class="ground" width="%d" height="%d"/>\n' %
            (WIDTH, height, WIDTH, height, escape(name), escape(facts), STYLE, WIDTH, height))
    return head + "\n".join(drawing.parts) + "\n</svg>\n"


def xml_text(text: str) -> str:
    """Without the characters that XML has no place for."""
    return "".join(c for c in text if c in "\t\n" or " " <= c <= "\ud7ff" or "\ue000" <= c <= "\ufffd" or c > "\uffff")
