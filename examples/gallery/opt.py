"""A program of the gallery, and the text of its `.opt` file."""

import textwrap
from typing import NamedTuple

MINIMISE = "-inf"
WIDTH = 117


class Program(NamedTuple):
    """`equations` are (row, right-hand side), `inequations` (row, low, high), `targets` (kind or value, row); all
    variables are whole numbers from 0 to their entry in `upper`. A blank line in `about` begins a paragraph."""

    about: str
    upper: list
    equations: list = ()
    inequations: list = ()
    targets: list = ()


def text(program, measured):
    """The whole file; `measured` becomes the last paragraph of its comment."""
    zeros = [0] * len(program.upper)
    return "\n".join([
        comment(program.about + "\n\n" + measured),
        vector(kind for kind, _ in program.targets), matrix(row for _, row in program.targets),
        matrix(row for row, _ in program.equations), vector(side for _, side in program.equations),
        matrix(row for row, _, _ in program.inequations),
        vector(low for _, low, _ in program.inequations), vector(high for _, _, high in program.inequations),
        vector(zeros), vector(zeros), vector(program.upper), ""])


def comment(about):
    paragraphs = [" ".join(part.split()) for part in about.strip().split("\n\n")]
    filled = ["\n".join(textwrap.wrap(part, WIDTH, initial_indent="   ", subsequent_indent="   ")) for part in paragraphs]
    return "/* " + "\n\n".join(filled).lstrip() + " */\n"


def vector(values):
    return "[ " + "".join("%s " % value for value in values) + "]"


def matrix(rows):
    lines = ["  %s\n" % vector(row) for row in rows]
    return "[\n" + "".join(lines) + "]" if lines else "[ ]"


def unit(n, *places):
    """A row of n zeros, with ones at the places."""
    row = [0] * n
    for place in places:
        row[place] = 1
    return row
