"""latbox.sh, started as a stranger starts it: from another folder, with input and signals that reach the solver."""

import os
import signal
import subprocess

import harness
import programs


def script():
    return os.path.join(os.path.dirname(harness.Settings.examples), "latbox.sh")


def is_release_build():
    """latbox.sh runs build/release; with another binary under test it would build that one first."""
    release = os.path.join(os.path.dirname(harness.Settings.examples), "build", "release", "latbox")
    return os.path.realpath(release) == os.path.realpath(harness.Settings.binary)


class ScriptTest(harness.Case):
    def setUp(self):
        super().setUp()
        if not is_release_build():
            self.skipTest("not the release build")
        os.mkdir(self.path("deep"))
        self.write("prog.opt", programs.SMALL)

    def run_script(self, *arguments, stdin=b"", path=None):
        done = subprocess.run([path or script(), *arguments], cwd=self.path("deep"), input=stdin, timeout=harness.LIMIT,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False)
        return harness.Result(done.returncode, done.stdout.decode(), done.stderr.decode())

    def test_paths_are_those_of_the_caller(self):
        result = self.run_script("--iters=2", "../prog.opt")
        self.assert_ends_well(result)
        self.assertTrue(result.out.startswith("<< latbox v"))
        self.assertIn("\n\t../prog.sol\n", result.out)
        self.assertTrue(self.stars())

    def test_through_a_link(self):
        os.symlink(script(), self.path("link"))
        self.assert_ends_well(self.run_script("--iters=0", "../prog.opt", path="../link"))

    def test_the_exit_status_is_the_solver_s(self):
        self.assert_fails(self.run_script("missing.opt"), "Could not read opt file: missing.opt")

    def test_input_reaches_the_solver(self):
        result = self.run_script("--sol=0", "--rtime=1", "../prog.opt", stdin=b"HELP\n")
        self.assert_ends_well(result)
        self.assertIn("  --help | Display this help information.", result.out)

    def test_signals_reach_the_solver(self):
        self.write("prog.opt", programs.ENDLESS)
        session = harness.Session([script(), "--sol=0", "../prog.opt"], self.path("deep"))
        self.addCleanup(session.close)
        session.wait_for("Solutions found: ")
        session.kill(signal.SIGINT)
        self.assertEqual(session.wait(), 0)
        self.assertIn("\nGot signal: Interrupt\n", session.out)

    def test_two_starts_at_once(self):
        sessions = []
        for number in range(3):
            name = "prog%d.opt" % number
            self.write(name, programs.SMALL)
            sessions.append(harness.Session([script(), "--iters=0", "../" + name], self.path("deep")))
            self.addCleanup(sessions[-1].close)
        self.assertEqual([session.wait() for session in sessions], [0, 0, 0])


if __name__ == "__main__":
    harness.main()
