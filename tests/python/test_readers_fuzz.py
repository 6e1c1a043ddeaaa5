"""A few hundred damaged models: the readers make a model or raise a ReadError. fuzz_readers.py does more of it."""

from __future__ import annotations

import unittest

import support
import fuzz_readers
import harness
from latbox.errors import ReadError
from latbox.models import read_text
from test_lp import LP
from test_mps import MPS, fixed


class FuzzTest(unittest.TestCase):
    def test_damaged_models(self) -> None:
        for number in range(600):
            form, text = fuzz_readers.one(number)
            with self.subTest(number=number):
                fuzz_readers.try_text(form, text)

    def test_damaged_packings(self) -> None:
        for number in range(200):
            with self.subTest(number=number):
                fuzz_readers.try_packed(number)

    def test_what_is_damaged_was_whole(self) -> None:
        """Else the damage would end in the first line."""
        formats = set()
        for form, text in fuzz_readers.seeds():
            self.assertGreater(len(read_text(text, form).variables), 0)
            formats.add(form)
        self.assertEqual(formats, {"opt", "lp", "mps", "free-mps", "fixed-mps"})

    def test_many_get_through_and_many_do_not(self) -> None:
        read = 0
        for number in range(300):
            form, text = fuzz_readers.one(number)
            try:
                read_text(text, form)
                read += 1
            except ReadError:
                pass
        self.assertGreater(read, 30)
        self.assertLess(read, 270)

    def test_cut_anywhere(self) -> None:
        """A file without its end is refused: half a model is another model."""
        for text, form in ((MPS, "mps"), (MPS, "free-mps"), (fixed(MPS), "fixed-mps"), (LP, "lp")):
            for at in range(len(text) - 2):
                self.assertRaises(ReadError, read_text, text[:at], form)


if __name__ == "__main__":
    harness.main()
