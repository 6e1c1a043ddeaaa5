"""The engines' files of points, followed while they grow and while they are replaced."""

from __future__ import annotations

import os
from fractions import Fraction
from unittest import mock

import support  # noqa: F401
import harness
from solve_support import SolveCase

from latbox.models import read_text
from latbox.solving import points
from latbox.solving.points import Follower
from latbox.solving.rewriting import Rewriting
from latbox.solving.search_engine import SearchEngine
from latbox.solving.statement import Statement

MODEL = "[ -inf ] [ [ 1 1 ] ] [ ] [ ] [ [ 3 5 ] ] [ 7 ] [ 90 ] [ 0 0 ] [ 0 0 ] [ 9 9 ]"


class FollowerTest(SolveCase):
    def replace(self, text: str) -> None:
        self.write("f.new", text)
        os.replace(self.path("f.new"), self.path("f.sol"))

    def test_a_file_that_grows(self) -> None:
        follower = Follower(self.path("f.sol"))
        self.addCleanup(follower.close)
        self.assertEqual(follower.points(), [])
        self.write("f.sol", "[ 1 -2:1/3 ] | 0\n[ 3 ")
        self.assertEqual(follower.points(), [[1, Fraction(-7, 3)]])
        self.write("f.sol", "[ 1 -2:1/3 ] | 0\n[ 3 4 ] | 0\n")
        self.assertEqual(follower.points(), [[3, 4]])
        self.assertEqual(follower.points(), [])

    def test_a_file_that_is_replaced_and_one_that_goes(self) -> None:
        follower = Follower(self.path("f.sol"))
        self.addCleanup(follower.close)
        self.replace("[ 1 ] | 0\n")
        self.assertEqual(follower.points(), [[1]])
        self.replace("[ 2 ] | 0\n[ 1 ] | 0\n")
        self.assertEqual(follower.points(), [[2], [1]])
        os.remove(self.path("f.sol"))
        self.assertEqual(follower.points(), [])
        self.replace("[ 5 ] | 0\n")
        self.assertEqual(follower.points(), [[5]])


class SearchEngineTest(SolveCase):
    def test_each_point_is_read_once(self) -> None:
        """The front grew by ten MB in a quarter of an hour: all points of a search were kept, and read again with each new one."""
        self.paper_engine("latbox", "sleep 60\n")
        with mock.patch.dict(os.environ, LATBOX_BIN_DIR=self.path("paper")):
            engine = SearchEngine(Rewriting(Statement(read_text(MODEL, "opt")).program), 0, 0, self.folder)
        self.addCleanup(engine.stop)
        lines, found = [], []
        with mock.patch.object(points, "point", wraps=points.point) as reader:
            for x in range(9):
                lines.insert(0, "[ %d 8 ] | 0 | [ ] | 0 | 0 | p | v\n" % x)
                self.write("program.new", "".join(lines))
                os.replace(self.path("program.new"), self.path("program.sol"))
                found += engine.news()
        self.assertEqual(found, [[x, 8] for x in range(9)])
        self.assertEqual(reader.call_count, 9)


if __name__ == "__main__":
    harness.main()
