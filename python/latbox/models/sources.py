"""Where a model's text comes from: a file, plain or packed, or standard input; and what its name says of its format.

A packed text is known by its first bytes, not by its name, so that packed standard input is read too, and a plain file
with a wrong name is refused. All of it is held in memory: the readers are made for models, not for streams.
"""

from __future__ import annotations

import bz2
import codecs
import errno
import gzip
import lzma
import os
import sys
import zlib
from typing import Callable

from ..errors import ReadError, UsageError, naming

# Format: what `--format` and the ends of names say. "mps" is fixed or free, whichever reads.
FORMATS = ("opt", "lp", "mps", "fixed-mps", "free-mps")
ENDINGS = {".opt": "opt", ".lp": "lp", ".mps": "mps"}
PACKED_ENDINGS = (".gz", ".bz2", ".xz")
PACKINGS: tuple[tuple[bytes, str, Callable[[bytes], bytes]], ...] = (
    (b"\x1f\x8b", "gzip", gzip.decompress), (b"BZh", "bzip2", bz2.decompress), (b"\xfd7zXZ\0", "xz", lzma.decompress))


def shown_name(path: str) -> str:
    return "standard input" if path == "-" else path


def format_of(path: str, form: str | None = None) -> str:
    """The format that is asked for, or that of the name; a UsageError if there is neither."""
    found = form or format_of_name(path)
    if form is not None and form not in FORMATS:
        raise UsageError("--format=%s: one of %s is wanted" % (form, ", ".join(FORMATS)))
    if found is None and path == "-":
        raise UsageError("standard input has no name that tells its format: say --format=%s" % "|".join(FORMATS))
    if found is None:
        raise UsageError("%s: its name does not end in .opt, .lp or .mps (or that and .gz, .bz2, .xz): say --format=%s" %
                         (path, "|".join(FORMATS)))
    return found


def format_of_name(path: str) -> str | None:
    name = path.lower()
    for ending in PACKED_ENDINGS:
        name = name.removesuffix(ending)
    return ENDINGS.get(os.path.splitext(name)[1])


def read(path: str) -> str:
    """The text; bytes that are no UTF-8 pass through to the names in the output. Line ends become `\\n`."""
    if path == "-":
        with naming("standard input"), open(0, "rb", closefd=False) as file:  # sys.stdin is None where it is closed
            data = file.read()
    else:
        with open(path, "rb") as file:
            data = file.read()
    return decoded(unpacked(data, path))


def unpacked(data: bytes, path: str = "") -> bytes:
    for mark, name, unpack in PACKINGS:
        if data.startswith(mark):
            try:
                return unpack(data)
            except (OSError, EOFError, ValueError, zlib.error, lzma.LZMAError) as error:
                raise ReadError("it begins like a %s file and cannot be unpacked: %s" % (name, error)) from None
    if path.lower().endswith(PACKED_ENDINGS) and data:
        raise ReadError("its name ends in %s, and it is not packed" % os.path.splitext(path)[1])
    return data


def decoded(data: bytes) -> str:
    """UTF-8, or UTF-16 where its mark says so, as Windows' own tools write it."""
    if data.startswith((codecs.BOM_UTF16_LE, codecs.BOM_UTF16_BE)):
        text = data.decode("utf-16", errors="replace")
    else:
        text = data.decode("utf-8", errors="surrogateescape").removeprefix("\ufeff")
    return text.replace("\r\n", "\n").replace("\r", "\n")


def write(path: str | None, text: str) -> None:
    """The way out: a file, or standard output where there is no path or it is "-"."""
    if path is None or path == "-":
        with naming("standard output"):
            if sys.stdout is None:  # as Python has it where it is closed
                raise OSError(errno.EBADF, os.strerror(errno.EBADF))
            sys.stdout.buffer.write(encoded(text))
            sys.stdout.buffer.flush()
    else:
        with naming(path):
            write_file(path, text)


def write_file(path: str, text: str) -> None:
    """The file is there as a whole or as it was before. Devices and pipes are written to as they are. Throws OSError."""
    if os.path.exists(path) and not os.path.isfile(path):
        with open(path, "wb") as file:
            file.write(encoded(text))
    else:
        _replace(os.path.realpath(path), encoded(text))


def require_place(path: str) -> None:
    """That write_file() has a folder to write to. Throws OSError."""
    path = os.path.realpath(path)
    if os.path.isdir(path):
        raise IsADirectoryError(errno.EISDIR, os.strerror(errno.EISDIR), path)
    if not os.path.exists(path):
        folder = os.path.dirname(path)
        os.stat(os.path.join(folder, os.curdir))  # Throws where it is no folder, too.
        if not os.access(folder, os.W_OK):
            raise PermissionError(errno.EACCES, os.strerror(errno.EACCES), folder)


def encoded(text: str) -> bytes:
    return text.encode("utf-8", errors="surrogateescape")


def _replace(path: str, data: bytes) -> None:
    beside = "%s.%d.new" % (path, os.getpid())
    try:
        with open(beside, "wb") as file:
            file.write(data)
        os.replace(beside, path)
    except BaseException:
        if os.path.exists(beside):
            os.remove(beside)
        raise
