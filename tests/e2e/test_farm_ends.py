#!/usr/bin/env python3
"""latbox-farm with the real engine: small programs, how it ends and what it goes on from, passwords, ports and catalogs."""

import os
import re
import signal
import stat

import farm_support
import harness
from complete_kills import TASKS, hard_knapsack
from farm_support import FarmCase, load_tests  # noqa: F401
from programs import market_split
from test_complete import NINE, NOTHING, ONE

LONG = market_split(6, 50, 1)


class PlainTest(FarmCase):
    def farm(self, text, *options, workers=1):
        self.write("p.opt", text)
        farm = self.begin(*options)
        for _ in range(workers):
            self.hire()
        status = farm.wait()
        return harness.Result(status, farm.out, farm.err)

    def test_small_programs(self):
        for name, text in (("one", ONE), ("nine", NINE)):
            with self.subTest(name):
                alone = self.alone(text)
                self.assert_same(alone, self.farm(text, "--pieces=5"))
            self.forget()

    def test_what_presolve_decides_needs_no_worker(self):
        alone = self.alone(NOTHING, "--proof=p.proof")
        self.assert_same(alone, self.farm(NOTHING, "--proof=p.proof", workers=0))
        self.assertEqual(alone.verdict, "verdict: none\n")

    def test_what_overruns_is_cut_again(self):
        text = TASKS[0].text
        alone = self.alone(text)
        result = self.farm(text, "--pieces=1", "--job-rtime=0.1", workers=2)
        self.assert_same(alone, result)
        self.assertRegex(self.log(), r"piece \d+ has overrun, \d+ pieces more")

    def test_counts(self):
        result = self.farm(NINE, "--count=1", "--pieces=3")
        self.assertEqual((result.status, result.out), (10, "verdict: all 9\n"))
        self.assertFalse(self.exists("p.all"))


class EndTest(FarmCase):
    def test_stopped_and_going_on(self):
        text = LONG
        alone = self.alone(text)
        for number in (signal.SIGINT, signal.SIGTERM):
            farm = self.begin("--pieces=30")
            self.hire()
            before = len(self.results())
            harness.wait_until(lambda: len(self.results()) > before, "a result")
            farm.kill(number)
            self.assertIn(farm.wait(), (11, 12))
            self.assertRegex(farm.out, r"\Averdict: (unknown|found \d+)\n\Z")
            self.assertIn("and the same command goes on from it\n", farm.err)
        farm = self.begin("--pieces=30")
        self.assert_same(alone, harness.Result(farm.wait(), farm.out, farm.err))

    def test_stopped_with_a_best_point(self):
        self.write("p.opt", hard_knapsack(5, 40, 1))
        farm = self.begin("--pieces=4")
        self.hire()
        harness.wait_until(lambda: self.exists("jobs/best"), "a point")
        farm.kill(signal.SIGINT)
        self.assertEqual(farm.wait(), 11)
        self.assertEqual(farm.out, "verdict: found 1\n")

    def test_two_farms_in_one_folder(self):
        self.write("p.opt", LONG)
        first = self.begin("--pieces=30")
        first.wait_for("a worker is started by", "err")
        second = self.begin()
        self.assertEqual(second.wait(), 1)
        self.assertIn("another latbox-farm is at work there", second.err)
        self.assertTrue(first.running())

    def test_another_search(self):
        self.write("p.opt", NINE)
        self.assertEqual(self.begin("--jobs=none.jobs", "--pieces=3", "--all=2").wait(), 2)
        first = self.begin("--pieces=3")
        self.hire()
        self.assertEqual(first.wait(), 10)
        second = self.begin("--pieces=3", "--all=1")
        self.assertEqual((second.wait(), second.out), (2, ""))
        self.assertIn("--jobs=DIR names another folder", second.err)
        # The same search that is done needs no worker any more.
        third = self.begin("--pieces=3")
        self.assertEqual((third.wait(), third.out), (10, "verdict: all 9\n"))

    def test_a_port_that_is_taken(self):
        self.write("p.opt", NINE)
        first = self.begin(has_port=True)
        harness.wait_until(lambda: self.exists("jobs/manager/port"), "a port")
        port = self.read("jobs/manager/port").strip()
        self.assertIn(int(port), range(9123, 10000))
        second = self.begin("--port=" + port, jobs="other", has_port=True)
        self.assertEqual(second.wait(), 1)
        self.assertIn("latbox-farm: port %s is taken; --port=P takes another one\n" % port, second.err)
        self.assertTrue(first.running())

    def test_a_program_that_is_none(self):
        self.write("p.opt", "[ 1 x")
        farm = self.begin()
        self.assertEqual((farm.wait(), farm.out), (2, ""))
        self.assertRegex(farm.err, r"\nlatbox-farm: .*p\.opt:1:\d+: ")


class PasswordTest(FarmCase):
    def test_a_worker_with_another_one_gets_nothing(self):
        self.write("p.opt", NINE)
        farm = self.begin("--pieces=3")
        self.write("guess", "0" * 32)
        stranger = self.hire(password=self.path("guess"))
        farm.wait_for("a worker is started by", "err")
        self.hire()
        self.assertEqual(farm.wait(), 10)
        self.assertEqual([name for _, _, names in os.walk(stranger.folder) for name in names if "latbox-all" in name], [])

    def test_where_it_stands_and_what_is_printed(self):
        self.write("p.opt", NINE)
        farm = self.begin()
        farm.wait_for(r"a worker is started by: work_queue_worker --password=%s \S+ %s\n" %
                      (re.escape(self.path("jobs/manager/password")), self.read_when("jobs/manager/port").strip()), "err")
        self.assertEqual(stat.S_IMODE(os.stat(self.path("jobs/manager/password")).st_mode), 0o600)
        self.assertNotIn(self.read("jobs/manager/password").strip(), farm.err)

    def test_the_user_s_own(self):
        self.write("p.opt", NINE)
        self.write("empty", "\n")
        self.assertEqual(self.begin("--password=empty", jobs="a").wait(), 2)
        self.assertEqual(self.begin("--password=none", jobs="b").wait(), 2)
        self.assertFalse(self.exists("a") or self.exists("b"))
        self.write("word", "of mine\n")
        os.chmod(self.path("word"), 0o644)
        farm = self.begin("--password=word", "--pieces=3")
        self.hire(password=self.path("word"))
        self.assertEqual(farm.wait(), 10)
        self.assertIn("word: others may read this password\n", farm.err)
        self.assertFalse(self.exists("jobs/manager/password"))

    def test_no_name_goes_out(self):
        """Whatever the environment says; who listens where a catalog would be hears nothing."""
        self.write("p.opt", NINE)
        heard = farm_support.Ear()
        self.addCleanup(heard.close)
        farm = self.begin("--pieces=3", WORK_QUEUE_NAME="latbox-test", CATALOG_HOST="127.0.0.1", CATALOG_PORT=str(heard.port))
        self.hire()
        self.assertEqual(farm.wait(), 10)
        self.assertEqual(heard.heard(), b"")

    def test_the_catalog_that_was_asked_for(self):
        self.write("p.opt", NINE)
        heard = farm_support.Ear()
        self.addCleanup(heard.close)
        farm = self.begin("--pieces=3", "--catalog=127.0.0.1:%d" % heard.port)
        self.hire()
        self.assertEqual(farm.wait(), 10)
        self.assertIn(b"latbox-p", heard.heard())


if __name__ == "__main__":
    harness.main()
