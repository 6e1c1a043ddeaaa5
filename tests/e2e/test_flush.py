"""What the operator waits for stands in a pipe as soon as it is written, while the run goes on."""

import subprocess

import harness
import programs


class FlushTest(harness.Case):
    def setUp(self):
        super().setUp()
        self.write("prog.opt", programs.ENDLESS)

    def test_banner_and_first_report(self):
        session = self.start("--sol=0", "prog.opt")
        session.wait_for(r"\A<< latbox v2\.2\.2 \+\+\+ PID: %d >>\n" % session.process.pid)
        session.wait_for("Solutions found: ")
        self.assertTrue(session.running())

    def test_each_iteration(self):
        session = self.start("--sol=0", "--verb=1", "prog.opt")
        for iteration in (1, 2, 3):
            session.wait_for("Total iterations: %d\n" % iteration)
        self.assertTrue(session.running())

    def test_progress_lines_and_answers(self):
        session = self.start("--sol=0", "--verb=2", "prog.opt")
        session.wait_for("Preparing optimization program ...\n")
        session.wait_for("Lattice dimension: M = ")
        session.ask("STOP\n", "> Status: stopped\n")
        session.ask("HELP\n", "  --tnorm ")
        self.assertTrue(session.running())

    def test_into_a_file(self):
        with open(self.path("out"), "wb") as out:
            process = subprocess.Popen([harness.Settings.binary, "--sol=0", "prog.opt"], cwd=self.folder, stdout=out,
                                       stdin=subprocess.PIPE)
        try:
            harness.wait_until(lambda: "Solutions found: " in self.read("out"), "a report in the file")
            self.assertIsNone(process.poll())
        finally:
            process.kill()
            process.wait()
            process.stdin.close()


if __name__ == "__main__":
    harness.main()
