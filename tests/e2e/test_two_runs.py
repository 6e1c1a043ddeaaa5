"""Two runs of one program at once: they write the same files, each as a whole, and neither complains."""

import harness
import programs


class TwoRunsTest(harness.Case):
    def test_side_by_side(self):
        # Symptom: now and then one of them printed "*** prog.lat: No such file or directory".
        for program in (programs.ENDLESS, programs.LONG_TARGET):
            with self.subTest(program=program):
                for name in ("prog.sol", "prog.lat"):
                    if self.exists(name):
                        self.remove(name)
                self.write("prog.opt", program)
                sessions = [self.start("--sol=0", "--iters=300", "prog.opt") for _ in range(2)]
                for session in sessions:
                    self.assertEqual(session.wait(), 0)
                    self.assertEqual(session.err, "")
                self.assertTrue(self.stars())
                self.assertFalse(self.exists("prog.lat.tmp"))
                self.assertFalse(self.exists("prog.sol.tmp"))
                # The lattice reads back, and a third run goes on from it.
                self.assert_ends_well(self.run_solver("--sol=0", "--iters=1", "prog.lat"))


if __name__ == "__main__":
    harness.main()
