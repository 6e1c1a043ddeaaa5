"""What latbox-solve shows while it works: on terminals wide and narrow, without one, through a pipe."""

from __future__ import annotations

import fcntl
import os
import pty
import re
import struct
import subprocess
import sys
import termios
import threading
import unittest

import support  # noqa: F401
import harness
from solve_support import COMMAND, KNAPSACK, SolveCase, hard, hard_objective

from latbox.front import progress, terminal
from latbox.solving.events import Progress


class TerminalTest(SolveCase):
    def on_terminal(self, columns: int, *arguments: str, term: str = "xterm") -> tuple[str, str, int]:
        """(what the terminal has got, standard output, exit status)."""
        front, back = pty.openpty()
        fcntl.ioctl(back, termios.TIOCSWINSZ, struct.pack("HHHH", 24, columns, 0, 0))
        pieces: list[bytes] = []

        def collect() -> None:
            while True:
                try:
                    piece = os.read(front, 65536)
                except OSError:  # the other side has closed
                    return
                pieces.append(piece)

        reader = threading.Thread(target=collect)
        reader.start()
        done = subprocess.run([sys.executable, COMMAND, *arguments], cwd=self.folder, stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=back, timeout=harness.LIMIT, check=False,
                              env=self.environment(TERM=term))
        os.close(back)
        reader.join(harness.LIMIT)
        os.close(front)
        return b"".join(pieces).decode(), done.stdout.decode(), done.returncode

    def assert_shown(self, columns: int, seconds: float, pattern: str, *arguments: str) -> None:
        """Within so many seconds, or more where the machine is busy."""
        for limit in harness.growing(seconds):
            shown, _, _ = self.on_terminal(columns, "--time=%g" % limit, *arguments)
            if re.search(pattern, shown):
                return
        self.assertRegex(shown, pattern)

    def lines_in_place(self, text: str) -> list[str]:
        return re.findall(r"\r\x1b\[K([^\r\n]+)", text)

    def test_forty_columns(self) -> None:
        self.write("o.opt", hard_objective())
        for seconds in harness.growing(4):
            shown, answer, status = self.on_terminal(40, "--time=%d" % seconds, "--engine=search", "o.opt")
            lines = [line for line in self.lines_in_place(shown) if re.match(r"[0-9.]+ s", line)]
            if len(lines) > 3:
                break
        self.assertEqual(status, 11)
        self.assertGreater(len(lines), 3, shown)
        for line in lines:
            self.assertLess(len(line), 40)
        self.assertTrue(any("  best " in line for line in lines), lines)
        # Nothing stays in place: the end takes it away, or a find did so just before, and left its own line.
        self.assertRegex(shown, r"(\r\x1b\[K|\n)\Z")
        self.assertNotIn("\r", answer)

    def test_a_wide_one_shows_more(self) -> None:
        self.write("m.lp", KNAPSACK)
        self.assert_shown(200, 4, r"\r\x1b\[K[0-9.]+ s  best 90  iteration [0-9]+", "--engine=search", "m.lp")

    def test_finds_stand_in_lines_of_their_own(self) -> None:
        self.write("o.opt", hard_objective())
        self.assert_shown(80, 3, r"\r\x1b\[KS [0-9.]+ s: objective [0-9]+\r\n", "--engine=search", "--threads=1", "o.opt")

    def test_a_dumb_terminal_gets_lines(self) -> None:
        self.write("h.opt", hard())
        shown, _, _ = self.on_terminal(80, "--time=1", "h.opt", term="dumb")
        self.assertNotIn("\x1b", shown)

    def test_quiet_shows_nothing(self) -> None:
        self.write("h.opt", hard())
        self.assertEqual(self.on_terminal(80, "--time=1", "--quiet", "h.opt")[0], "")

    def test_through_a_pipe_a_line_each_ten_seconds(self) -> None:
        self.write("h.opt", hard())
        result = self.solve("--time=11", "h.opt")
        self.assertEqual(len(re.findall(r"(?m)^10\.[0-9] s", result.err)), 1, result.err)
        self.assertNotIn("\x1b", result.err)

    def test_without_standard_error(self) -> None:
        self.write("h.opt", hard())
        result = self.solve("--time=1", "h.opt", prepare=lambda: os.close(2))
        self.assertEqual(result.status, 12)
        self.assertTrue(result.out.startswith("status: unknown\n"))

    def test_names_go_out_as_they_came_in(self) -> None:
        """They were shown as `b\\udce9g.lp`, or with a sign for what is no UTF-8."""
        name = os.fsdecode(b"b\xe9g.lp")
        self.write(name, KNAPSACK)
        for arguments, line in (([name], b": 5 integer columns"), (["--check", name, name], b", line 1: a line")):
            done = subprocess.run([sys.executable, COMMAND, *arguments], cwd=self.folder, env=self.environment(LC_ALL="C", PYTHONUTF8="0"),
                                  stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False)
            self.assertIn(b"b\xe9g.lp" + line, done.stderr)

    def test_standard_error_whose_reader_has_gone(self) -> None:
        self.write("o.opt", hard_objective())
        read, write = os.pipe()
        os.close(read)
        for seconds in harness.growing(1):
            done = subprocess.run([sys.executable, COMMAND, "--time=%d" % seconds, "--engine=search", "o.opt"], cwd=self.folder,
                                  stdout=subprocess.PIPE, stderr=write, timeout=2 * harness.LIMIT, check=False, env=self.environment())
            if done.returncode != 12:
                break
        os.close(write)
        self.assertEqual(done.returncode, 11)


class LineTest(unittest.TestCase):
    def test_the_more_important_words_stay(self) -> None:
        words = progress.parts(Progress(75.0, 44, 46, 1, 12, 3, 1.5e6, 0.25, "3 min"))
        self.assertEqual(words, ["1:15", "best 44", "bound 46", "25 % done", "3 min left", "1.5e+06 nodes", "iteration 12"])
        self.assertEqual(terminal.fitted(words, 26), "1:15  best 44  bound 46")
        self.assertEqual(terminal.fitted(words, 3), "")

    def test_long_numbers(self) -> None:
        self.assertEqual(progress.short(10**30 + 7), "~1e+30")
        self.assertEqual(progress.short(10**400), "100000..(401 digits)")
        self.assertEqual(progress.short(-12), "-12")

    def test_clock(self) -> None:
        self.assertEqual([progress.clock(s) for s in (3.21, 59.9, 61, 3725)], ["3.2 s", "59.9 s", "1:01", "1:02:05"])


class HeaderTest(SolveCase):
    def header(self, text: str, form: str = "lp") -> list[str]:
        self.write("m." + form, text)
        return self.solve_in_time(5, lambda told: told.err.count("\n") > 1, "--digits=1", "m." + form).err.splitlines()

    def test_sizes_and_ranges(self) -> None:
        lines = self.header("max\n obj: x + 2 y\nst\n c: 3 x - 7/1 y <= 9\nbounds\n x <= 1\n y <= 5\ngeneral\n x y\nend\n"
                            .replace("7/1", "7"))
        self.assertEqual(lines[0], "m.lp: 1 binary + 1 integer columns, 1 row, 2 nonzeros, maximise")
        self.assertEqual(lines[1], "coefficients -7 .. 3, sides 9 .. 9, bounds 0 .. 5, lattice of rank 2")

    def test_open_columns(self) -> None:
        """Bounds of 0 .. 0 were told of columns from 0 on."""
        for bounds, told in (("x <= 4", "bounds 0 .. inf (1 column open)"), ("x free\n y free", "bounds -inf .. inf (2 columns open)"),
                             ("x <= 4\n y <= 1", "bounds 0 .. 4")):
            lines = self.header("max\n obj: x\nst\n c: 2 x + 3 y <= 9\nbounds\n %s\ngeneral\n x y\nend\n" % bounds)
            self.assertEqual(lines[1], "coefficients 2 .. 3, sides 9 .. 9, %s, lattice of rank 2" % told)

    def test_plain_words(self) -> None:
        lines = self.header("max\n obj: x + y\nst\n c: 3 x + 7 y <= 9\nbounds\n x <= 1\n y <= 5\nend\n")
        self.assertIn("all columns are continuous: that is a linear program, for a simplex or interior-point solver", lines)
        names = ["x%d" % j for j in range(300)]
        text = "min\n obj:\nst\n" + "".join(" c%d: %s + %s + %s >= 1\n" % (j, names[j], names[(j + 11) % 300], names[(j + 50) % 300])
                                        for j in range(300))
        lines = self.header(text + "binary\n " + " ".join(names) + "\nend\n")
        self.assertTrue(any(line.startswith("a lattice of rank 300 is large: a solver for satisfiability or exact cover")
                            for line in lines), lines)


if __name__ == "__main__":
    harness.main()
