#!/usr/bin/env python3
"""latbox-farm with the real engine on the loopback: workers and the manager die or stand still, and points, verdict and proof are
those of latbox-all alone."""

import re

import harness
from complete_kills import TASKS, knapsack, tied_knapsack
from farm_support import FarmCase, load_tests  # noqa: F401
from programs import market_split

LONG = market_split(6, 50, 1)

# Programs whose search takes a second or some, with the options of the run.
DISTURBED = {
    "all_points": (TASKS[0].text,),
    "many_points": (market_split(3, 38, 7),),
    "no_point": (LONG,),
    "the_best_point": (knapsack(30, 2),),
    "all_best_points": (tied_knapsack(22, 1), "--ties=1"),
}


class DisturbedTest(FarmCase):
    """Of three workers one is killed in a piece, two stand still for longer than their time-out, and then the manager is killed."""

    def disturb(self, text, *options):
        options = ("--proof=p.proof", *options)
        alone = self.alone(text, *options)
        farm = self.begin("--pieces=12", *options)
        killed, *stopped = [self.hire() for _ in range(3)]
        harness.wait_until(self.results, "a result")
        killed.stop_in_a_piece()
        killed.kill()
        for worker in stopped:
            worker.stop_in_a_piece()
        # More where an honest one has had to wait for its turn for so long.
        harness.wait_until(lambda: self.gone() >= 3, "three that are gone")
        farm.kill()
        farm.wait()
        port = self.read("jobs/manager/port")
        for worker in stopped:
            worker.go_on()
        farm = self.begin("--pieces=12", *options)
        # Those that stood still take some seconds to find it again.
        self.hire()
        status = farm.wait()
        self.assertEqual(self.read("jobs/manager/port"), port)
        self.assert_same(alone, harness.Result(status, farm.out, farm.err))

    def gone(self):
        return sum(map(int, re.findall(r"(\d+) workers? gone", self.log())))


def make_disturbed(text, options):
    return lambda self: self.disturb(text, *options)


for name, (text, *options) in DISTURBED.items():
    setattr(DisturbedTest, "test_" + name, make_disturbed(text, options))


if __name__ == "__main__":
    harness.main()
