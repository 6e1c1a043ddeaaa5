#!/usr/bin/env python3
"""Writes the generated programs of the gallery: python3 examples/make_gallery.py FOLDER

The same text comes out every time. With --table instead of a folder the rows of README.md are printed.
"""

import json
import os
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, HERE)
from gallery import codes, designs, diophantine, measured, opt, planning, puzzles, splits  # noqa: E402

PROGRAMS = {**splits.PROGRAMS, **designs.PROGRAMS, **codes.PROGRAMS, **diophantine.PROGRAMS, **planning.PROGRAMS,
            **puzzles.PROGRAMS}


def gallery():
    """(name, program, options) of each program."""
    with open(os.path.join(HERE, "expected.json"), encoding="utf-8") as file:
        expected = json.load(file)
    for name, make in PROGRAMS.items():
        yield name, make(), expected[name]["options"]


def texts():
    """The files: name and text."""
    return {name + ".opt": opt.text(program, measured.sentence(name, options)) for name, program, options in gallery()}


def table():
    return [measured.table_line(*row) for row in gallery()]


def main(arguments):
    if len(arguments) != 2:
        sys.exit(__doc__)
    if arguments[1] == "--table":
        print("\n".join(table()))
        return
    for name, text in texts().items():
        with open(os.path.join(arguments[1], name), "w", encoding="utf-8") as file:
            file.write(text)


if __name__ == "__main__":
    main(sys.argv)
