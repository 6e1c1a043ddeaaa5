"""From a file to a Model: the source is opened, its format found, the text read."""

from __future__ import annotations

from ..errors import ReadError
from . import lp, mps, opt, sources
from .model import Model
from .mps import MpsDialect


def read_model(path: str, form: str | None = None, dialect: MpsDialect = MpsDialect()) -> Model:
    """The model in a file: plain or packed as .gz, .bz2 or .xz; `-` is standard input.

    `form` is one of sources.FORMATS; without it the file's name tells (`-` needs it). Raises a ReadError, with file, line and
    column as far as they are known, or an OSError.
    """
    try:
        found = sources.format_of(path, form)
        return read_text(sources.read(path), found, dialect)
    except ReadError as error:
        raise error.in_file(sources.shown_name(path))


def read_text(text: str, form: str, dialect: MpsDialect = MpsDialect()) -> Model:
    """The model of a text in one of sources.FORMATS."""
    if form == "opt":
        return opt.read_opt(text)
    if form == "lp":
        return lp.read_lp(text)
    return mps.read_mps(text, dialect.in_form(form))
