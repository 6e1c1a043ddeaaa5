#!/usr/bin/env python3
"""Damaged models for the readers: whatever the text, a reader makes a model or raises a ReadError, and nothing else.

    python3 tests/python/fuzz_readers.py [--seconds=60] [--first=0] [--folder=FAILURES]

Each number is one text: the same one in every run, so that a run is continued with --first and a failure repeated with
--first=N --seconds=0. What fails is written to the folder and told; the exit status is 1 then.
"""

from __future__ import annotations

import argparse
import bz2
import functools
import gzip
import lzma
import os
import random
import sys
import time

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, os.path.join(HERE, "..", "..", "python"))

from latbox.errors import ModelError, ReadError  # noqa: E402
from latbox.models import opt_writer, read_text, sources  # noqa: E402

MODELS = os.path.join(HERE, "..", "..", "examples", "models")
WORDS = ("inf", "-inf", "-", "1e30", "nan", "<=", ">=", "=", ":", "\n", "\n ", "", "'MARKER'", "'INTORG'", "\\", "[", "]", "\t",
         "\x00", "free", "$", "*", "1/0", "2:1/3", "//", "/*", "*/", "SC", "BV", "MI", "End", "RHS", "1e4001", "0", "-1", "^",
         "->", "\u0663", "\ud800", "1" * 5000, ".", "+", "OBJSENSE\n MAX\n", "RANGES\n", "semi\n", "kt", "NAME", "FREE")
OPT = """// a program
[ -inf 5 ] = [ 3 inf ] // targets
[ [ 1 2 -1/2 ] [ 0 1 2.5 ] ]
[ [ 1 1 1 ] ] [ 3 ]
[ [ 2:1/3 1 0 ] /* two */ [ 0 -1 1 ] ] [ 1 -inf ] [ 8 2 ]
[ 0 0 1 ] [ 0 -inf 0.5 ] [ 4 inf 2 ]
"""
FIXED = """NAME          T
ROWS
 N  COST
 L  R 1       $ a row
 G  R 2
COLUMNS
    X X       COST      1.0            R 1       2
              R 2       1.0
RHS
    RHS       R 1       4
ENDATA
"""


@functools.lru_cache
def seeds() -> list[tuple[str, str]]:
    """(format, text) of models to be damaged."""
    found = [("opt", OPT), ("fixed-mps", FIXED)]
    for name in sorted(os.listdir(MODELS)):
        with open(os.path.join(MODELS, name), encoding="utf-8") as file:
            text = file.read()
        forms = ("lp",) if name.endswith(".lp") else ("mps", "free-mps")
        found += [(form, text) for form in forms]
    return found


def damaged(text: str, source: random.Random) -> str:
    for _ in range(source.randint(1, 4)):
        kind = source.random()
        at = source.randrange(len(text) + 1)
        if kind < 0.4:
            words = text.split(" ")
            at = source.randrange(len(words))
            words[at:at + source.randint(0, 2)] = [source.choice(WORDS + tuple(words[:50])) for _ in range(source.randint(0, 2))]
            text = " ".join(words)
        elif kind < 0.7:
            text = text[:at] + source.choice("\n -+.:=<[]1eE/$*\u00e9\x00\\") + text[at + source.randint(0, 3):]
        elif kind < 0.8:
            text = text[:at]
        else:
            lines = text.split("\n")
            at = source.randrange(len(lines))
            lines[at:at + source.randint(0, 2)] = [source.choice(lines) for _ in range(source.randint(0, 2))]
            text = "\n".join(lines)
    return text


def one(number: int) -> tuple[str, str]:
    """The text of a number, and its format."""
    source = random.Random(number)
    form, text = source.choice(seeds())
    return form, damaged(text, source)


def try_text(form: str, text: str) -> None:
    """Raises what a reader, or the writer of what was read, must not raise."""
    try:
        opt_writer.opt_text(read_text(text, form), "m")
    except (ReadError, ModelError):
        pass


def try_packed(number: int) -> None:
    """Packed bytes, damaged: they are unpacked or refused."""
    source = random.Random(number)
    data = bytearray(source.choice((gzip.compress, bz2.compress, lzma.compress))(b"max x\nst\n x <= 3\nend\n" * 20))
    for _ in range(source.randint(1, 5)):
        data[source.randrange(len(data))] = source.randrange(256)
    try:
        sources.unpacked(bytes(data[:source.choice((len(data), source.randrange(len(data))))]), "m.lp.gz")
    except ReadError:
        pass


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__.split("\n", 1)[0])
    parser.add_argument("--seconds", type=float, default=60)
    parser.add_argument("--first", type=int, default=0)
    parser.add_argument("--folder", default=".")
    options = parser.parse_args()
    sys.set_int_max_str_digits(0)
    number, failures, end = options.first, 0, time.monotonic() + options.seconds
    while True:
        form, text = one(number)
        try:
            try_text(form, text)
            try_packed(number)
        except Exception as error:  # pylint: disable=broad-except
            failures += 1
            path = os.path.join(options.folder, "failure_%d.%s" % (number, form))
            with open(path, "w", encoding="utf-8", errors="surrogatepass") as file:
                file.write(text)
            print("%s: %r" % (path, error))
        number += 1
        if time.monotonic() >= end:
            break
    print("%d texts from %d to %d, %d failure(s); go on with --first=%d" % (number - options.first, options.first,
                                                                            number - 1, failures, number))
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
