"""Where texts come from: packed files, names that tell the format, line ends, bytes that are no UTF-8."""

from __future__ import annotations

import bz2
import gzip
import lzma
import os

import support
import harness
from latbox.errors import LatboxError, PlacedError, ReadError, UsageError
from latbox.models import read_model, sources
from test_lp import LP
from test_mps import MPS

PACK = {".gz": gzip.compress, ".bz2": bz2.compress, ".xz": lzma.compress}
SMALL = "[ ] [ ] [ [ 1 1 ] ] [ 1 ] [ ] [ ] [ ] [ 0 0 ] [ 0 0 ] [ 1 1 ]\n"


class SourcesTest(support.ToolsCase):
    def test_every_format_in_every_packing(self) -> None:
        for name, text in (("m.lp", LP), ("m.MPS", MPS), ("m.opt", SMALL)):
            for ending, pack in {"": bytes, **PACK}.items():
                self.write(name + ending, pack(text.encode()))
                self.assertEqual(len(read_model(self.path(name + ending)).variables), 2)

    def test_formats_of_names(self) -> None:
        for name, form in (("a.lp", "lp"), ("A.LP.GZ", "lp"), ("b.c.mps.xz", "mps"), ("p.opt.bz2", "opt")):
            self.assertEqual(sources.format_of(name), form)
        self.assertEqual(sources.format_of("m.lp", "free-mps"), "free-mps")
        for name, form, message in (
                ("-", None, "standard input has no name that tells its format: say --format=opt|lp|mps|fixed-mps|free-mps"),
                ("m.gz", None, "m.gz: its name does not end in .opt, .lp or .mps (or that and .gz, .bz2, .xz): say "
                               "--format=opt|lp|mps|fixed-mps|free-mps"),
                ("m.lp", "xls", "--format=xls: one of opt, lp, mps, fixed-mps, free-mps is wanted")):
            with self.assertRaises(UsageError) as caught:
                sources.format_of(name, form)
            self.assertEqual(str(caught.exception), message)

    def test_damaged_packings(self) -> None:
        for ending, name in ((".gz", "gzip"), (".bz2", "bzip2"), (".xz", "xz")):
            data = PACK[ending](LP.encode() * 50)
            for damage in (data[:-5], data[:30], data[:25] + b"\xff\xff\xff\xff" + data[29:]):
                with self.assertRaisesRegex(ReadError, "^it begins like a %s file and cannot be unpacked: ." % name):
                    sources.unpacked(damage)
        self.write("m.lp.gz", LP)
        with self.assertRaises(ReadError) as caught:
            read_model(self.path("m.lp.gz"))
        self.assertEqual(str(caught.exception), self.path("m.lp.gz") + ": its name ends in .gz, and it is not packed")

    def test_line_ends_and_byte_order_mark(self) -> None:
        for end in ("\n", "\r\n", "\r"):
            self.write("m.lp", b"\xef\xbb\xbf" + LP.replace("\n", end).encode())
            self.assertEqual(len(read_model(self.path("m.lp")).rows), 2)
            self.write("m.lp", LP.replace("c2: y", "c2: ^").replace("\n", end))
            with self.assertRaisesRegex(ReadError, "m.lp, line 5, column 6: "):
                read_model(self.path("m.lp"))

    def test_utf_16(self) -> None:
        """Windows' own tools write it, and the first line was said to be none of the form."""
        for form in ("utf-16-le", "utf-16-be"):
            self.write("m.lp", ("\ufeff" + LP.replace("y", "ý")).replace("\n", "\r\n").encode(form))
            self.assertEqual([v.name for v in read_model(self.path("m.lp")).variables], ["x", "ý"])
        self.write("m.lp", b"\xff\xfe\x00\xd8x")
        self.assertRaises(ReadError, read_model, self.path("m.lp"))

    def test_errors_have_file_line_and_column(self) -> None:
        self.write("m.lp", LP.replace("c2: y", "c1: y"))
        with self.assertRaises(PlacedError) as caught:
            read_model(self.path("m.lp"))
        error = caught.exception
        self.assertIsInstance(error, LatboxError)
        self.assertEqual((error.file, error.place, error.message), (self.path("m.lp"), (5, 2), "row c1 stands twice"))
        self.assertEqual(str(error), self.path("m.lp") + ", line 5, column 2: row c1 stands twice")

    def test_no_file(self) -> None:
        self.assertRaises(FileNotFoundError, read_model, self.path("none.lp"))
        self.assertRaises(IsADirectoryError, read_model, os.path.join(self.folder, ""), "lp")

    def test_any_bytes(self) -> None:
        self.write("m.lp", LP.encode().replace(b"y", b"\xff\xc3"))
        self.assertEqual(read_model(self.path("m.lp")).variables[1].name, "\udcff\udcc3")


if __name__ == "__main__":
    harness.main()
