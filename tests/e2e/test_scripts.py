"""latbox.sh, started as a stranger starts it: from another folder, with input and signals that reach the solver."""

import os
import shutil
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


STAND_INS = {
    "g++": "exit 0\n",
    "cmake": "mkdir -p build/release && echo > build/release/build.ninja && echo configured\n",
    # Builds a solver that repeats its input, in STEPS steps; says nothing of them if there are none.
    "ninja": r"""
echo "ninja: Entering directory"
echo "[0/2] Re-checking globbed directories..."
[ "$STEPS" -gt 0 ] || { echo "ninja: no work to do."; exit 0; }
for step in $(seq "$STEPS"); do echo "[$step/$STEPS] Building CXX object $step.o"; done
[ -z "$BROKEN" ] || { echo "1.cpp:1: error: it is broken"; exit 1; }
printf '#!/bin/sh\ncat\n' > "$2/latbox" && chmod +x "$2/latbox"
""",
}


class BuildingTest(harness.Case):
    """What latbox.sh tells while it builds, with stand-ins for the tools."""

    def setUp(self) -> None:
        super().setUp()
        os.mkdir(self.path("tools"))
        for name, text in STAND_INS.items():
            self.write_program("tools/" + name, "#!/bin/sh\n" + text)
        shutil.copy(script(), self.folder)
        shutil.copytree(os.path.join(os.path.dirname(script()), "scripts"), self.path("scripts"))

    def start(self, steps: int, broken: str = "") -> harness.Result:
        variables = dict(os.environ, PATH=self.path("tools") + os.pathsep + os.environ["PATH"], STEPS=str(steps),
                         BROKEN=broken)
        done = subprocess.run([self.path("latbox.sh")], env=variables, input=b"input\n", timeout=harness.LIMIT,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False)
        return harness.Result(done.returncode, done.stdout.decode(), done.stderr.decode())

    def test_every_twentieth_is_told_and_the_output_is_the_solver_s(self) -> None:
        result = self.start(60)
        told = ["the first start builds the solver", "configuring build/release",
                "building, 60 steps; what the tools say is in build/build.log"]
        told += ["built %d of 60" % step for step in range(3, 61, 3)]
        self.assertEqual(result.err, "".join("latbox: %s\n" % line for line in told))
        self.assertEqual((result.status, result.out), (0, "input\n"))
        self.assertIn("[60/60] Building CXX object 60.o\n", self.read("build/build.log"))

    def test_nothing_is_told_where_nothing_is_built(self) -> None:
        self.start(1)
        result = self.start(0)
        self.assertEqual((result.status, result.out, result.err), (0, "input\n", ""))

    def test_a_build_that_fails_shows_why(self) -> None:
        result = self.start(2, broken="yes")
        self.assertEqual((result.status, result.out), (1, ""))
        self.assertIn("\n1.cpp:1: error: it is broken\n", result.err)
        self.assertIn("\nlatbox: failed: ninja -C %s/build/release latbox\n" % os.path.realpath(self.folder), result.err)


TOOLS = ("bash", "cat", "chmod", "dirname", "env", "flock", "id", "mkdir", "nproc", "printf", "readlink", "seq", "sh", "tee")


class WantedTest(harness.Case):
    """What test.sh would like to have for some tests: it is tried once, and nothing depends on it."""

    def setUp(self) -> None:
        super().setUp()
        os.mkdir(self.path("tools"))
        stand_ins = {**STAND_INS, "ctest": "echo tested\n", "python3": '[ -z "$PULP" ]\n', "sudo": '"$@"\n',
                     "work_queue_worker": "", "parallel": "",
                     "apt-get": '[ "$1" != install ] || { echo "$*" >> "$CALLS"; exit "$FAILS"; }\n'}
        for name, text in stand_ins.items():
            self.write_program("tools/" + name, "#!/bin/sh\n" + text)
        for name in TOOLS:
            os.symlink(str(shutil.which(name)), self.path("tools/" + name))
        folder = os.path.dirname(script())
        shutil.copy(os.path.join(folder, "test.sh"), self.folder)
        shutil.copytree(os.path.join(folder, "scripts"), self.path("scripts"))

    def start(self, missing: bool, fails: bool) -> harness.Result:
        variables = {"PATH": self.path("tools"), "PULP": "missing" * missing, "CALLS": self.path("calls"), "FAILS": str(int(fails)),
                     "STEPS": "0"}
        done = subprocess.run([self.path("tools/bash"), self.path("test.sh")], env=variables, stdin=subprocess.DEVNULL,
                              timeout=harness.LIMIT, stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False)
        return harness.Result(done.returncode, done.stdout.decode(), done.stderr.decode())

    def calls(self) -> list[str]:
        return self.read("calls").splitlines() if os.path.exists(self.path("calls")) else []

    def test_what_is_there_is_not_installed(self) -> None:
        result = self.start(missing=False, fails=True)
        self.assertEqual((result.status, result.out, self.calls()), (0, "tested\n", []), result.err)

    def test_it_is_tried_once_and_the_tests_run(self) -> None:
        result = self.start(missing=True, fails=True)
        self.assertEqual((result.status, result.out), (0, "tested\n"), result.err)
        self.assertIn("latbox: going on without python3-pulp python3-workqueue: the tests that need it are skipped\n", result.err)
        self.assertEqual(self.start(missing=True, fails=True).out, "tested\n")
        self.assertEqual(self.calls(), ["install -y --no-install-recommends python3-pulp python3-workqueue"])

    def test_it_is_installed(self) -> None:
        result = self.start(missing=True, fails=False)
        self.assertEqual((result.status, result.out, len(self.calls())), (0, "tested\n", 1), result.err)
        self.assertNotIn("going on without", result.err)


if __name__ == "__main__":
    harness.main()
