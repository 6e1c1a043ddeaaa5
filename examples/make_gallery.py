#!/usr/bin/env python3
"""Writes the generated programs of the gallery: python3 examples/make_gallery.py [FOLDER [NAME ...]]

The folder is the one of this script if none is given. The same text comes out every time.
"""

import os
import sys

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from gallery import codes, designs, diophantine, planning, puzzles, splits  # noqa: E402

PROGRAMS = {**splits.PROGRAMS, **designs.PROGRAMS, **codes.PROGRAMS, **diophantine.PROGRAMS, **planning.PROGRAMS,
            **puzzles.PROGRAMS}


def main(arguments):
    folder = arguments[1] if len(arguments) > 1 else os.path.dirname(os.path.abspath(__file__))
    for name in arguments[2:] or PROGRAMS:
        with open(os.path.join(folder, name + ".opt"), "w", encoding="utf-8") as file:
            file.write(PROGRAMS[name]())


if __name__ == "__main__":
    main(sys.argv)
