"""The command line that both converters share."""

import argparse
import os
import sys

import model
import opt_writer


def run(read, description, add_options=lambda parser: None):
    """read(text, options, warn) makes the model. Exit status 0, or 1 with the reason on standard error."""
    parser = argparse.ArgumentParser(description=description)
    parser.add_argument("model", help="the model's file")
    parser.add_argument("opt", nargs="?", help="the program's file; standard output if it is left out")
    parser.add_argument("--digits", type=_digits, metavar="N",
                        help="give continuous variables a grid of N decimal digits instead of refusing them")
    add_options(parser)
    options = parser.parse_args()

    def warn(message, line=None):
        print(_place(options.model, line) + "note: " + message, file=sys.stderr)

    try:
        found = read(model.read_text(options.model), options, warn)
        text = opt_writer.opt_text(found, os.path.basename(options.model), options.digits)
        model.write_text(options.opt, text)
    except model.Refusal as refusal:
        sys.exit(_place(options.model, refusal.line) + str(refusal))
    except OSError as error:
        sys.exit(str(error))


def _place(path, line):
    return "%s: " % path if line is None else "%s, line %d: " % (path, line)


def _digits(text):
    value = int(text)
    if not 0 <= value <= 18:
        raise argparse.ArgumentTypeError("0 to 18 digits")
    return value
