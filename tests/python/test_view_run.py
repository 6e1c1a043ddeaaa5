"""latbox-solve --view and latbox-plot --view without a browser: orders steer the run, and the run is what it would be without a page."""

from __future__ import annotations

import gzip
import json
import os
import re
import signal
import socket
import subprocess
import sys
import time
from collections import deque

import support
import harness
from solve_support import KNAPSACK, SolveCase, engines_of, hard_objective, is_alive, state_of
from test_solve_json import documented, fault
from view_support import Client, Window, until

from latbox.view.link import View

LINK = r"watch it at (http://127\.0\.0\.1:[0-9]+/[-\w]+/)\n"


class RunCase(SolveCase):
    def watched(self, *arguments: str) -> tuple[harness.Session, Client]:
        """A run and its link."""
        session = self.begin("--view", *arguments)
        session.wait_for(LINK, "err")
        return session, Client(re.search(LINK, session.err)[1])

    def window(self, client: Client) -> Window:
        found = client.window()
        self.addCleanup(found.close)
        return found

    def hard_run(self, *arguments: str) -> tuple[harness.Session, Client, Window]:
        """One that goes on, once it has a point."""
        self.write("o.opt", hard_objective())
        session, client = self.watched(*arguments, "o.opt")
        window = self.window(client)
        window.event("point")
        return session, client, window

    def server_of(self, session: harness.Session) -> int:
        return next(n for n in engines_of(session.process.pid) if "serve.py" in command_of(n))

    def engines(self, session: harness.Session) -> list[int]:
        return [n for n in engines_of(session.process.pid) if re.search(r"latbox(-all)?\0--", command_of(n))]


def command_of(process: int) -> str:
    try:
        with open("/proc/%d/cmdline" % process, encoding="utf-8", errors="replace") as file:
            return file.read()
    except OSError:
        return ""


class OrdersTest(RunCase):
    def states(self, session: harness.Session) -> set[str]:
        return {(state_of(n) or "?")[0] for n in self.engines(session)}

    def test_pause_and_go_on(self) -> None:
        session, client, window = self.hard_run("--json=j")
        self.assertEqual(client.act(action="pause")[0], 202)
        self.assertEqual(window.event("action")["action"], "pause")
        until(lambda: self.states(session) == {"T"}, "all engines stand still")
        self.assertEqual(len(self.engines(session)), 2)
        begin = time.monotonic()
        client.act(action="pause")  # nothing to do: no event
        time.sleep(1.5)  # a pause that can be measured
        length = time.monotonic() - begin
        client.act(action="go on")
        self.assertEqual(window.event("action")["action"], "go on")
        until(lambda: "T" not in self.states(session), "all engines go on")
        client.act(action="stop")
        self.assertEqual(session.wait(), 11)
        for action in ("pause", "go on", "stop"):
            self.assertRegex(session.err, r"(?m)^page [0-9:.]+( s)?: %s$" % action)
        events = [json.loads(line) for line in self.read("j").splitlines()]
        self.assertEqual([event["action"] for event in events if event["event"] == "action"], ["pause", "go on", "stop"])
        pause, on = [k for k, event in enumerate(events) if event["event"] == "action"][:2]
        self.assertEqual(events[pause]["time"], events[on]["time"])
        self.assertEqual([event["event"] for event in events[pause + 1 : on]], ["progress"])
        self.assertGreaterEqual(events[on + 1]["paused"], length)
        times = [event["time"] for event in events]
        self.assertEqual(times, sorted(times))
        self.assertEqual(events[-1]["status"], "interrupted")

    def test_the_time_limit_is_one_of_work(self) -> None:
        begin = time.monotonic()
        self.write("o.opt", hard_objective())
        session, client = self.watched("--time=8", "--json=j", "o.opt")
        window = self.window(client)
        window.event("start")
        client.act(action="pause")
        window.event("action")
        time.sleep(max(0.0, begin + 8.5 - time.monotonic()))
        self.assertTrue(session.running())
        client.act(action="go on")
        self.assertIn(session.wait(), (11, 12))
        self.assertGreaterEqual(json.loads(self.read("j").splitlines()[-1])["time"], 8)

    def test_a_signal_ends_a_paused_run(self) -> None:
        session, client, window = self.hard_run()
        client.act(action="pause")
        until(lambda: self.states(session) == {"T"}, "all engines stand still")
        engines = self.engines(session)
        session.kill(signal.SIGINT)
        self.assertEqual(session.wait(), 11)
        self.assertFalse(any(map(is_alive, engines)))

    def test_a_paused_run_that_is_killed_leaves_nothing(self) -> None:
        session, client, _ = self.hard_run()
        client.act(action="pause")
        until(lambda: self.states(session) == {"T"}, "all engines stand still")
        engines = self.engines(session)
        session.kill(signal.SIGKILL)
        session.wait()
        until(lambda: not any(map(is_alive, engines)), "their end")

    def test_set(self) -> None:
        session, client, window = self.hard_run("--engine=search", "--json=j")
        for key, value in (("beta", 24), ("pair", 0)):
            self.assertEqual(client.act(action="set", key=key, value=value)[0], 202)
        until(lambda: self.read("j").count('"setting"') == 2, "the search has taken both")
        client.act(action="stop")
        session.wait()
        found = [json.loads(line) for line in self.read("j").splitlines()]
        for event in found:
            self.assertIsNone(fault(event, documented()))
        self.assertEqual([(e["key"], e["value"]) for e in found if e["event"] == "setting"], [("beta", "24"), ("pair", "0")])
        self.assertEqual([(e["key"], e["value"]) for e in found if e.get("action") == "set"], [("beta", 24), ("pair", 0)])
        present = {option["key"]: (option["least"], option["value"], option["most"]) for option in found[0]["options"]}
        self.assertEqual((present["beta"], present["eprune"], present["pair"]), ((2, 20, 1000), (0, 3, 3), (0, 1, 1)))

    def test_stop_while_the_model_is_read(self) -> None:
        session, client = self.watched("--format=lp", "-")
        window = self.window(client)
        client.act(action="stop")
        client.act(action="stop")  # as one who presses twice
        self.assertEqual(session.wait(), 12)
        self.assertTrue(session.out.startswith("status: interrupted\n"))
        self.assertEqual(window.event("end")["status"], "interrupted")


class SameRunTest(RunCase):
    """With a page, without one, with one that breaks: the run is the same, and waits for nobody."""

    def test_the_answer_is_the_same(self) -> None:
        self.write("m.lp", KNAPSACK)
        plain, watched = self.solve("--quiet", "m.lp"), self.solve("--quiet", "--view", "m.lp")
        self.assertEqual(re.sub("time: .*", "", watched.out), re.sub("time: .*", "", plain.out))
        self.assertEqual((watched.status, plain.err), (plain.status, ""))
        self.assertRegex(watched.err, r"\A%s\Z" % LINK)

    def test_a_server_that_stands_still_does_not_hold_it_up(self) -> None:
        session, _, _ = self.hard_run("--json=j")
        server = self.server_of(session)
        os.kill(server, signal.SIGSTOP)
        try:
            known = self.read("j").count("\n")
            until(lambda: self.read("j").count("\n") > known + 10, "the run goes on")
            session.kill(signal.SIGINT)
            self.assertEqual(session.wait(), 11)
        finally:
            os.kill(server, signal.SIGKILL)

    def test_a_server_that_is_gone_does_not_hold_it_up(self) -> None:
        session, _, _ = self.hard_run("--json=j")
        os.kill(self.server_of(session), signal.SIGKILL)
        known = self.read("j").count("\n")
        until(lambda: self.read("j").count("\n") > known + 10, "the run goes on")
        session.kill(signal.SIGINT)
        self.assertEqual(session.wait(), 11)

    def test_nobody_looks_and_nothing_is_left(self) -> None:
        self.write("o.opt", hard_objective())
        session, _ = self.watched("o.opt")
        server = self.server_of(session)
        session.kill(signal.SIGINT)
        session.wait()
        until(lambda: not is_alive(server), "the end of the server")

    def test_killed_and_nothing_is_left(self) -> None:
        session, _, window = self.hard_run()
        server = self.server_of(session)
        session.kill(signal.SIGKILL)
        session.wait()
        self.assertFalse(window.until("state", lambda state: not state["more"])["steered"])
        os.kill(server, signal.SIGTERM)
        until(lambda: not is_alive(server), "the end of the server")

    def test_the_last_word_comes(self) -> None:
        """To whoever looks, though the run does not wait for it; and a page that comes then sees it too."""
        session, client, window = self.hard_run()
        session.kill(signal.SIGINT)
        session.wait()
        end = window.event("end")
        self.assertEqual(end["status"], "interrupted")
        self.assertEqual(self.window(client).until("whole")[-1], end)

    def test_a_failure_is_told(self) -> None:
        session, client = self.watched("--format=lp", "-")
        window = self.window(client)
        session.send("minimize\n x\nsubject to\n c: x >= >= 1\nend\n")
        session.process.stdin.close()
        self.assertEqual(session.wait(), 2)
        self.assertIn("line 4", window.event("failure")["text"])

    def test_a_failure_behind_a_thousand_points(self) -> None:
        """The newest one comes before it, though most were left out."""
        theirs, ours = os.pipe()
        self.addCleanup(os.close, theirs)
        view = View.__new__(View)
        view._queue, view._queued, view._points, view._since, view._held, view._in = deque(), 0, 0, time.monotonic() + 1e6, None, ours
        for k in range(1000):
            view.tell("point", lambda k=k: "point %d" % k)
        view.fail("it broke", 1.5)
        os.close(ours)
        with os.fdopen(os.dup(theirs), "rb") as file:
            told = file.read().decode().splitlines()
        self.assertEqual(told[-2], "point 999")
        self.assertEqual(json.loads(told[-1])["text"], "it broke")

    def test_the_port(self) -> None:
        self.write("m.lp", KNAPSACK)
        with socket.socket() as taken:
            taken.bind(("127.0.0.1", 0))
            taken.listen()
            port = taken.getsockname()[1]
            refused = self.solve("--view=%d" % port, "m.lp")
        self.assertEqual(refused.status, 2)
        self.assertRegex(refused.err, r"\Alatbox-solve: --view=%d: the port cannot be had: .*\n\Z" % port)
        self.assertIn("http://127.0.0.1:%d/" % port, self.solve("--view=%d" % port, "m.lp").err)
        for value in ("x", "-1", "65536", ""):
            refused = self.solve("--view=" + value, "m.lp")
            self.assertEqual((refused.status, refused.err), (2, "latbox-solve: --view=%s: a port of this machine is wanted, a number up to 65535\n" % value))
        self.assertRegex(self.solve("--view", "--check=x", "m.lp").err, "--view: there is no run to watch with --check")


class LogTest(RunCase):
    def follow(self, *arguments: str) -> tuple[subprocess.Popen, Client]:
        process = subprocess.Popen([sys.executable, os.path.join(support.PACKAGE, "bin", "latbox-plot"), *arguments], cwd=self.folder,
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE, env=self.environment())
        self.addCleanup(self.end, process)
        return process, Client(re.match(LINK, process.stdout.readline().decode())[1])

    def end(self, process: subprocess.Popen) -> None:
        if process.poll() is None:
            process.kill()
        process.communicate()

    def test_a_log_that_grows(self) -> None:
        self.write("m.lp", KNAPSACK)
        self.solve("--json=j", "m.lp")
        lines = self.read_bytes("j").splitlines(keepends=True)
        self.write("growing", lines[0])
        process, client = self.follow("--view", "growing")
        window = self.window(client)
        self.assertFalse(window.until("state")["steered"])
        self.assertEqual(client.act(action="stop")[0], 409)
        window.until("whole", lambda events: len(events) == 1)
        with open(self.path("growing"), "ab") as file:
            file.write(b"".join(lines[1:]))
        self.assertEqual(window.event("end")["objective"], 90)
        process.send_signal(signal.SIGINT)
        self.assertEqual(process.wait(harness.LIMIT), 0)
        self.assertEqual(self.read_bytes("growing"), b"".join(lines))

    def test_what_the_console_solver_prints(self) -> None:
        self.write("o.opt", hard_objective())
        out = self.run_solver("--verb=2", "--iters=1", "--rtime=40", "o.opt").out
        self.write("run.log", out)
        _, client = self.follow("--view", "run.log")
        whole = self.window(client).until("whole", bool)
        self.assertEqual((whole[0]["event"], whole[-1]["event"]), ("start", "end"))
        self.assertTrue(any(event["event"] == "point" for event in whole))

    def test_packed_and_piped(self) -> None:
        """The two of which nothing is read again: they end, and the page stays."""
        line = b'{"event": "start", "time": 0, "model": "m"}\n'
        self.write("j.gz", gzip.compress(line))
        os.mkfifo(self.path("pipe"))
        for name in ("j.gz", "pipe"):
            if name == "pipe":
                feed = os.open(self.path(name), os.O_RDWR)
                self.addCleanup(os.close, feed)
                os.write(feed, line)
            process, client = self.follow("--view", name)
            self.assertEqual(self.window(client).event("start")["model"], "m", name)
            process.send_signal(signal.SIGTERM)
            self.assertEqual(process.wait(harness.LIMIT), 0)

    def test_refusals(self) -> None:
        self.write("j", b'{"event": "start", "time": 0}\n')
        for arguments, status, words in ((["--view", "j", "x.svg"], 2, "--view: it draws no file, and x.svg was given"), (["--view=x", "j"], 2, "a port of this machine"),
                                         (["--view", "none"], 1, "none"), (["--view", "."], 1, ".: it is a folder")):
            found = self.tool("latbox-plot", *arguments, status=status)
            self.assertIn(words, found.err)


class BenchTest(RunCase):
    """bench/view measures what the page costs: for a moment each, where it needs no browser."""

    def test_it_measures(self) -> None:
        self.write("once.py", """
import importlib.machinery, importlib.util, sys
sys.dont_write_bytecode = True
loader = importlib.machinery.SourceFileLoader("bench_view", sys.argv[1])
bench = importlib.util.module_from_spec(importlib.util.spec_from_loader("bench_view", loader))
loader.exec_module(bench)
bench.at_ten_events(1.0)
bench.under_attack(sys.argv[2], 1.0)
""")
        done = subprocess.run([sys.executable, self.path("once.py"), os.path.join(support.ROOT, "bench", "view"), os.path.dirname(harness.Settings.binary)],
                              env=self.environment(), stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=3 * harness.LIMIT, check=False)
        text = done.stdout.decode()
        self.assertEqual(done.returncode, 0, text)
        self.assertRegex(text, r"server, \d+ events in 1 s, one window +[\d.]+ %  < 1 % of a processor\n")
        self.assertRegex(text, r"share of the run, 200 connections at once +[\d.]+ %  > 98 %\n")


if __name__ == "__main__":
    harness.main()
