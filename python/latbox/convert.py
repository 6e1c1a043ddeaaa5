"""latbox-convert: a model in LP, MPS or .opt form as a .opt file for the solver, with the names of the model in its head.

    latbox-convert [options] MODEL [PROGRAM.opt]

What cannot be stated is refused with exit status 1, and the place in the model says why.
"""

from __future__ import annotations

import argparse
import os
import re
import sys
from fractions import Fraction

from .errors import PlacedError, UsageError, place_text
from .models import FORMATS, INF, MpsDialect, read_model
from .models import opt_writer, sources
from .models.model import Note
from .tool import Parser, is_same_file, run_tool


def parser() -> Parser:
    found = Parser("latbox-convert", "A model in LP, MPS or .opt form as a .opt file for the solver.")
    found.add_argument("model", metavar="MODEL", help="the model's file, plain or as .gz, .bz2, .xz; - for standard input")
    found.add_argument("opt", nargs="?", metavar="PROGRAM.opt", help="the program's file; standard output if it is left out")
    found.add_argument("--format", choices=FORMATS, metavar="FORMAT",
                       help="one of %s, where the name does not tell" % ", ".join(FORMATS))
    found.add_argument("--digits", type=_digits, metavar="N",
                       help="give continuous variables a grid of N decimal digits instead of refusing them")
    form = found.add_mutually_exclusive_group()
    form.add_argument("--fixed", dest="mps", action="store_const", const="fixed-mps",
                      help="MPS: fields by their columns; names may hold blanks")
    form.add_argument("--free", dest="mps", action="store_const", const="free-mps", help="MPS: fields by blanks")
    found.add_argument("--marker-bounds", choices=("inf", "1"), default="1",
                       help="MPS: upper bound of integer columns that have no bound at all; default 1")
    return found


def _digits(text: str) -> int:
    if not re.fullmatch("[0-9]{1,2}", text, re.ASCII) or int(text) > 18:
        raise argparse.ArgumentTypeError("%r: a number of digits from 0 to 18 is wanted" % text)
    return int(text)


def convert(options: argparse.Namespace) -> None:
    form = options.format
    if options.opt is not None and is_same_file(options.model, options.opt):
        raise UsageError("%s: that is the model" % options.opt)
    if options.mps:
        if (form or sources.format_of_name(options.model)) not in (None, "mps", options.mps):
            raise UsageError("--fixed and --free are for MPS models")
        form = options.mps
    dialect = MpsDialect(marker_bound=INF if options.marker_bounds == "inf" else Fraction(1))
    model = read_model(options.model, form, dialect)
    name = sources.shown_name(options.model)
    for note in model.notes:
        _tell(name, note)
    try:
        # The name stands in a comment, which a line end in it would end.
        text = opt_writer.opt_text(model, " ".join(os.path.basename(name).splitlines()), options.digits)
    except PlacedError as error:
        raise error.in_file(name)
    sources.write(options.opt, text)


def _tell(name: str, note: Note) -> None:
    print(place_text(name, note.place) + "note: " + note.message, file=sys.stderr)


def main(arguments: list[str] | None = None) -> int:
    """The command; its exit status is 0, 1 for a model that is refused, 2 for a wrong command line."""
    return run_tool(parser(), convert, arguments)


if __name__ == "__main__":
    sys.exit(main())
