"""The command that measures which options of the search pay: what it runs and what it shows."""

import os
import subprocess
import sys

import harness

COMMAND = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "bench", "tuning")


class TuningTest(harness.Case):
    def run_command(self, *arguments: str) -> harness.Result:
        done = subprocess.run([sys.executable, COMMAND, *arguments], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, text=True, timeout=harness.LIMIT, check=False)
        return harness.Result(done.returncode, done.stdout, done.stderr)

    def measure(self, *arguments: str) -> list[str]:
        result = self.run_command("--engines=" + os.path.dirname(harness.Settings.binary), *arguments)
        self.assertEqual((result.status, result.err), (0, ""))
        return result.out.splitlines()

    def test_a_point_and_an_optimum(self) -> None:
        for name, kind in (("ms_3x20_s1", "market split"), ("cutting", "general")):
            lines = self.measure("--only=" + name, "--seeds=2", "--limit=30", "--choices=; --beta=30")
            self.assertEqual(lines[0], "| program | kind | rank | defaults | `--beta=30` |")
            self.assertEqual(len(lines), 3)
            self.assertRegex(lines[2], r"\A\| %s \| %s \| [0-9]+ \| [0-9.]+ \| [0-9.]+ \|\Z" % (name, kind))

    def test_a_limit_is_told(self) -> None:
        lines = self.measure("--only=sts_13", "--seeds=2", "--limit=0.1", "--choices=--iters=-1")
        self.assertRegex(lines[2], r" \| 0\.10 \(0 of 2\) \|\Z")

    def test_what_is_no_option(self) -> None:
        result = self.run_command("--foo=1")
        self.assertEqual((result.status, result.out), (1, ""))
        self.assertTrue(result.err.startswith("Unknown: --foo=1\n"), result.err)


if __name__ == "__main__":
    harness.main()
