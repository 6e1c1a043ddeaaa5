"""Reading is linear: a program of 20 MB is read in seconds. It fails the reader's last check, so that nothing else runs."""

import random
import time

import harness

MESSAGE = "The dimensions of the solution properties (lx, rx, dx) differ (1, %d, 1)"


class ReadingSpeedTest(harness.Case):
    def big_program(self, megabytes):
        """Rows of 10,000 ten-digit numbers; lx and dx are too short."""
        columns = 10_000
        rows = megabytes * 10**6 // (11 * columns)
        draw = random.Random(1)
        with open(self.path("prog.opt"), "w", encoding="utf-8") as file:
            file.write("[ ]\n[ ]\n[\n")
            for _ in range(rows):
                row = " ".join(map(str, (draw.randrange(10**9, 10**10) for _ in range(columns))))
                file.write("[ " + row + " ]\n")
            file.write("]\n[ %s ]\n[ ]\n[ ]\n[ ]\n[ 0 ]\n[ 0 ]\n" % " ".join(["1"] * rows))
            file.write("[ %s ]\n" % " ".join(["9"] * columns))
        return columns

    def test_20_megabytes(self):
        columns = self.big_program(20)
        start = time.monotonic()
        result = self.run_solver("prog.opt", limit=120)
        self.assert_fails(result, MESSAGE % columns)
        # A quadratic reader needs hours; the figure is for the reader of the log.
        print("20 MB read in %.1f s" % (time.monotonic() - start))

    def test_a_long_comment_and_much_white_space(self):
        self.write("prog.opt", "/*" + "*" * 10**7 + "*/" + " \n" * 5 * 10**6 + "[ ] [ 1 ]")
        self.assert_fails(self.run_solver("prog.opt", limit=120), "Matrix: bad input")


if __name__ == "__main__":
    harness.main()
