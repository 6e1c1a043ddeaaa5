"""The server of the page by itself: who gets in, what is refused, what strangers can do to it; and that a week of events is thinned."""

from __future__ import annotations

import json
import os
import re
import resource
import socket
import time
import unittest
from collections import Counter

import support
import harness
from view_support import START, ServedCase, point, progress, read_all, until

from latbox.errors import UsageError
from latbox.solving import steering
from latbox.solving.steering import Order
from latbox.view import address, follow, history, request, server, sources
from latbox.view.console_log import ConsoleLog
from latbox.view.history import History
from latbox.view.purse import Purse


class DoorsTest(ServedCase):
    def test_the_page_and_its_parts(self) -> None:
        served = self.served()
        for place in request.FILES:
            status, answer = served.ask(place)
            self.assertEqual(status, 200, place)
            head, _, body = answer.partition(b"\r\n\r\n")
            self.assertEqual(int(re.search(rb"Content-Length: (\d+)", head)[1]), len(body))
            self.assertEqual(served.ask(place, "HEAD")[1].partition(b"\r\n\r\n")[2], b"")
        self.assertEqual(served.ask("no.html")[0], 404)
        self.assertEqual(served.ask("../serve.py")[0], 404)

    def test_every_answer_forbids_what_is_outside(self) -> None:
        served = self.served()
        for answer in (served.ask()[1], served.ask("x")[1], served.ask(token="wrong")[1]):
            self.assertIn(b"Content-Security-Policy: default-src 'none'; script-src 'self';", answer)
            self.assertIn(b"Referrer-Policy: no-referrer", answer)
            self.assertIn(b"Cache-Control: no-store", answer)

    def test_nothing_in_the_page_comes_from_outside(self) -> None:
        for name in os.listdir(request.PAGE):
            with open(os.path.join(request.PAGE, name), encoding="utf-8") as file:
                text = file.read()
            found = re.findall(r"https?://[^\"'\s)]+", text)
            self.assertEqual([url for url in found if url != "http://www.w3.org/2000/svg"], [], name)

    def test_token(self) -> None:
        served = self.served()
        for token in ("", "x", served.token[:-1], served.token + "x", served.token.swapcase(), "%00", "\u00e9"):
            self.assertEqual(served.ask(token=token)[0], 403, token)
            self.assertEqual(served.ask("events", token=token)[0], 403, token)
            self.assertEqual(served.ask("act", "POST", b'{"action": "stop"}', token=token)[0], 403, token)
        self.assertEqual(served.orders, [])
        self.assertGreaterEqual(len(served.token), 32)
        self.assertNotEqual(served.token, address.new_token())

    def test_host(self) -> None:
        served = self.served()
        self.assertEqual(served.ask(Host="localhost:%d" % served.port)[0], 200)
        for host in ("example.org", "example.org:%d" % served.port, "127.0.0.1", "127.0.0.1:1", "127.0.0.1.example.org:%d" % served.port, None):
            self.assertEqual(served.ask(Host=host)[0], 403, host)
            self.assertEqual(served.ask("act", "POST", b'{"action": "stop"}', Host=host)[0], 403, host)
        twice = served.request().replace(b"Host: ", b"Host: example.org\r\nHost: ", 1)
        self.assertEqual(served.exchange(twice)[0], 403)
        self.assertEqual(served.orders, [])

    def test_origin(self) -> None:
        served = self.served()
        for origin in ("http://example.org", "null", "https://127.0.0.1:%d" % served.port, "http://127.0.0.1:1", "http://127.0.0.1"):
            for place in ("", "events"):
                self.assertEqual(served.ask(place, Origin=origin)[0], 403, origin)
            self.assertEqual(served.ask("act", "POST", b'{"action": "stop"}', Origin=origin)[0], 403, origin)
        self.assertEqual(served.ask("act", "POST", b'{"action": "stop"}', Origin=None)[0], 403)
        self.assertEqual(served.orders, [])

    def test_no_action_by_get(self) -> None:
        served = self.served()
        for method in ("GET", "HEAD", "PUT", "DELETE", "OPTIONS", "TRACE"):
            for place in ("act", "act?action=stop", "act/stop"):
                self.assertIn(served.ask(place, method, b'{"action": "stop"}', Origin=served.origin)[0], (404, 405, 501), method)
        for place in ("", "events", "page.js"):
            self.assertEqual(served.ask(place, "POST", b'{"action": "stop"}')[0], 405, place)
        self.assertEqual(served.orders, [])

    def test_actions(self) -> None:
        served = self.served()
        for action in (steering.PAUSE, steering.GO_ON, steering.STOP):
            self.assertEqual(served.act(action=action)[0], 202)
        self.assertEqual(served.act(action="set", key="beta", value=30)[0], 202)
        self.assertEqual(served.orders, [Order("pause"), Order("go on"), Order("stop"), Order("set", "beta", 30)])

    def test_actions_that_are_none(self) -> None:
        served = self.served()
        for body in (b"", b"{", b"[]", b"null", b'{"action": 1}', b'{"action": "quit"}', b"\xff", b"[" * 500, b'{"action": "set"}',
                     b'{"action": "set", "key": "verb", "value": 2}', b'{"action": "set", "key": "sol", "value": 1}',
                     b'{"action": "set", "key": "beta\\nSTOP", "value": 3}'):
            self.assertEqual(served.ask("act", "POST", body)[0], 400, body)
        for value in (1, 1001, -5, "30", "30\nSTOP", 2.5, None, True, [3]):
            self.assertEqual(served.act(action="set", key="beta", value=value)[0], 400, value)
        self.assertIn(b"beta: a whole number from 2 to 1000 is wanted", served.act(action="set", key="beta", value=1)[1])
        self.assertEqual(served.ask("act", "POST", b'{"action": "stop"}', Content_Type="text/plain")[0], 415)
        self.assertEqual(served.ask("act", "POST", b'{"action": "stop"}', Content_Type="application/x-www-form-urlencoded")[0], 415)
        # Two lengths, none, one that is no number; and what stands behind the body is none of it.
        whole = served.request("act", "POST", b'{"action": "stop"}')
        for length in (b"Content-Length: 5\r\nContent-Length: 18", b"X: 18", b"Content-Length: +18", b"Content-Length: \xc2\xb2"):
            self.assertEqual(served.exchange(whole.replace(b"Content-Length: 18", length))[0], 400, length)
        self.assertEqual(served.exchange(whole[:-1].replace(b"Content-Length: 18", b"Content-Length: 17"))[0], 400)
        self.assertEqual(served.orders, [])

    def test_a_log_takes_no_actions(self) -> None:
        served = self.served(is_steered=False)
        self.assertEqual(served.act(action="stop")[0], 409)
        self.assertFalse(self.window(served).until("state")["steered"])

    def test_loopback_only(self) -> None:
        listener = address.listen(0)
        self.addCleanup(listener.close)
        self.assertEqual(listener.getsockname()[0], "127.0.0.1")
        with self.assertRaisesRegex(UsageError, r"--view=%d: the port cannot be had: " % listener.getsockname()[1]):
            address.listen(listener.getsockname()[1])


class EventsTest(ServedCase):
    def test_what_was_and_what_comes(self) -> None:
        served = self.served()
        served.source.tell(START, point(0.5, 7))
        first = self.window(served)
        until(lambda: len(served.server.history.whole()) == 2, "two events")
        second = self.window(served)
        self.assertEqual(second.until("state")["more"], True)
        self.assertEqual(second.until("whole"), [START, point(0.5, 7)])
        served.source.tell(point(1.5, 9, "C"))
        for window in (first, second):
            self.assertEqual(window.until("news", lambda events: events[-1]["time"] == 1.5)[-1], point(1.5, 9, "C"))

    def test_of_much_progress_some_and_the_last_one_count(self) -> None:
        served = self.served()
        window = self.window(served)
        served.source.tell(START, *(progress(k / 100) for k in range(50)))
        found = window.until("whole", lambda events: bool(events))
        self.assertEqual([event["time"] for event in found], [0.0, 0.0, 0.25, 0.49])

    def test_a_start_begins_anew(self) -> None:
        served = self.served()
        served.source.tell(START, point(1, 1))
        window = self.window(served)
        until(lambda: len(served.server.history.whole()) == 2, "two events")
        served.source.tell({**START, "model": "other.lp"})
        self.assertEqual(window.until("whole", lambda events: events[:1] == [{**START, "model": "other.lp"}]), [{**START, "model": "other.lp"}])

    def test_a_log_that_is_replaced(self) -> None:
        """By that of a run that needed no engines, and so has no start: nothing of the old one stays."""
        served = self.served()
        served.source.tell(START, point(1, 1))
        window = self.window(served)
        window.until("whole", lambda events: len(events) == 2)
        served.source.times = 1
        self.assertEqual(window.until("whole"), [])
        end = {"event": "end", "time": 0.1, "status": "infeasible"}
        served.source.tell(end)
        window.until("news", lambda events: events == [end])
        self.assertEqual(self.window(served).until("whole"), [end])

    def test_it_ends_with_its_run_when_nobody_looks(self) -> None:
        served = self.served()
        served.source.tell(START)
        served.source.end()
        until(lambda: not served.is_running(), "its end")

    def test_it_stays_while_somebody_looks(self) -> None:
        served = self.served()
        window = self.window(served)
        served.source.tell(START, {"event": "end", "time": 2.0, "status": "optimal", "values": {"x": 1}})
        served.source.end()
        self.assertFalse(window.until("state", lambda state: not state["more"])["steered"])
        again = self.window(served)
        self.assertEqual(again.until("whole")[-1]["status"], "optimal")
        self.assertEqual(served.act(action="pause")[0], 409)
        self.assertEqual(served.orders, [])
        self.assertTrue(served.is_running())

    def test_beats(self) -> None:
        window = self.window(self.served())
        self.assertIn("silent", window.until("beat"))


class StrangersTest(ServedCase):
    def test_too_large(self) -> None:
        served = self.served()
        self.assertEqual(served.exchange(b"GET /" + b"x" * 20000)[0], 431)
        self.assertEqual(served.ask(X="y" * request.MOST_HEAD)[0], 431)
        self.assertEqual(served.ask("act", "POST", b" " * (request.MOST_BODY + 1))[0], 413)
        self.assertEqual(served.ask("act", "POST", b"{}", Content_Length="999999999")[0], 413)
        self.assertEqual(served.ask()[0], 200)

    def test_junk(self) -> None:
        served = self.served()
        for junk in (b"\r\n\r\n", b"\0" * 100 + b"\r\n\r\n", b"GET\r\n\r\n", b"GET / HTTP/9.9\r\n\r\n", b"\x16\x03\x01\x02\0\x01\0\r\n\r\n", b"A B C D\r\n\r\n",
                     b"GET /\xff\xfe HTTP/1.1\r\n\r\n", b"POST / HTTP/1.1\r\nContent-Length: -1\r\n\r\n", b"GET / HTTP/1.1\r\n" + b"a: b\r\n" * 200 + b"\r\n",
                     b"GET / HTTP/1.1\r\n: \r\n\r\n", b"GET / HTTP/1.1\r\nHost\r\n\r\n"):
            self.assertNotIn(served.exchange(junk)[0], (200, 202), junk)
        self.assertEqual(served.ask()[0], 200)
        self.assertTrue(served.is_running())

    def test_half_a_request_is_given_up(self) -> None:
        served = self.served()
        begin = time.monotonic()
        with served.connect() as silent, served.connect() as half:
            half.sendall(served.request()[:-2])
            self.assertEqual(read_all(silent), b"")
            self.assertEqual(read_all(half), b"")
        self.assertGreaterEqual(time.monotonic() - begin, server.STRANGER_SECONDS - 0.5)

    def test_two_hundred_connections(self) -> None:
        """That say nothing: who asks is served beside them, and a window hears what comes."""
        served = self.served()
        served.source.tell(START)
        window = self.window(served)
        # What comes beside a start in one turn is no news.
        window.until("whole", lambda events: bool(events))
        crowd = [served.connect() for _ in range(200)]
        try:
            self.assertEqual(served.ask()[0], 200)
            served.source.tell(point(1, 5))
            window.until("news", lambda events: events[-1]["event"] == "point")
            self.assertLessEqual(len(served.server._strangers), server.MOST_STRANGERS)
        finally:
            for peer in crowd:
                peer.close()

    def test_too_many_requests(self) -> None:
        served = self.served()
        begin = time.monotonic()
        found = Counter(served.ask("icon.svg")[0] for _ in range(250))
        self.assertGreaterEqual(found[200], 100)
        self.assertLessEqual(found[200], (2 + time.monotonic() - begin) * server.MOST_REQUESTS)
        self.assertEqual(set(found) - {200, 429}, set())
        tap = server.Tap(5.0)
        self.assertEqual(sum(tap.passes() for _ in range(1000)), 10)

    def test_too_many_actions(self) -> None:
        served = self.served()
        begin = time.monotonic()
        found = Counter(served.act(action="pause")[0] for _ in range(40))
        self.assertLessEqual(found[202], (2 + time.monotonic() - begin) * server.MOST_ORDERS)
        self.assertEqual(set(found) - {202, 429}, set())
        self.assertEqual(len(served.orders), found[202])

    def test_too_many_windows(self) -> None:
        served = self.served()
        windows = [self.window(served) for _ in range(server.MOST_WINDOWS)]
        self.assertEqual({window.status for window in windows}, {200})
        self.assertEqual(served.ask("events")[0], 503)
        windows[0].close()
        until(lambda: served.ask("events", "HEAD")[0] != 0 and len(served.server._windows) < server.MOST_WINDOWS, "a free place")
        self.assertEqual(self.window(served).status, 200)

    def test_a_window_that_does_not_read_is_dropped(self) -> None:
        served = self.served()
        slow = served.connect()
        slow.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 4096)
        slow.sendall(served.request("events"))
        self.addCleanup(slow.close)
        until(lambda: len(served.server._windows) == 1, "the window")
        old, server.MOST_QUEUED = server.MOST_QUEUED, 1 << 20
        try:
            other = self.window(served)
            for k in range(60):
                served.source.tell({"event": "note", "time": float(k), "text": "x" * 200000})
                other.until("news", lambda events: events[-1]["time"] == float(k))
                if len(served.server._windows) == 1:
                    break
            self.assertEqual(len(served.server._windows), 1)
        finally:
            server.MOST_QUEUED = old

    def test_the_purse(self) -> None:
        """What strangers cost is limited, whatever they do."""
        purse = Purse(0.01, 0.05)
        purse.pay(10.05)
        self.assertGreater(purse.wait(), 900)
        served = self.served(purse=Purse(0.01, 0.0))
        window = self.window(served)
        used = []
        served.source.tell(START)
        window.until("whole", lambda events: bool(events))
        clock = time.pthread_getcpuclockid(served._thread.ident)
        begin, cpu = time.monotonic(), time.clock_gettime(clock)
        crowd = []
        while time.monotonic() - begin < 2:
            crowd.append(socket.socket())
            crowd[-1].setblocking(False)
            crowd[-1].connect_ex(("127.0.0.1", served.port))
            if len(crowd) > 200:
                crowd.pop(0).close()
        used.append((time.clock_gettime(clock) - cpu) / (time.monotonic() - begin))
        for peer in crowd:
            peer.close()
        self.assertLess(used[0], 0.1)
        served.source.tell(point(3, 1))
        window.until("news", lambda events: events[-1]["event"] == "point")


class HistoryTest(unittest.TestCase):
    @staticmethod
    def week(step: float) -> tuple[History, int]:
        """A week with a line of progress each `step` seconds, and how often all was sent anew."""
        found = History()
        found.add(json.dumps(START).encode())
        text = json.dumps(progress(0.0, best=123456, bound=100000, violated=None))
        again = 0
        k = 0
        now = 0.0
        while now < 7 * 86400.0:
            now = round(now + step, 3)
            k += 1
            found.add(text.replace('"time": 0.0', '"time": %r' % now, 1).encode())
            if k % 100 == 0:
                found.add(json.dumps(point(now, k)).encode())
                found.add(json.dumps({"event": "bound", "time": now, "bound": k}).encode())
            if k % 2 == 0:
                again += found.news()[1]
        return found, again

    def test_a_simulated_week(self) -> None:
        """With a line in twelve seconds; what is kept grows with the logarithm of how many there are, and bench/view has all of them."""
        found, again = self.week(step=12.0)
        self.assertLess(found.size(), 8 << 20)
        self.assertLessEqual(len(found.whole()), history.MOST_LINES)
        events = [json.loads(line) for line in found.whole()]
        self.assertEqual(events[0]["event"], "start")
        times = [event["time"] for event in events if event["event"] == "progress"]
        self.assertEqual(times, sorted(times))
        self.assertEqual(times[-1], 7 * 86400.0)
        # The beginning is there, one in 50 minutes at least, and the last ten minutes whole as they came.
        self.assertLess(times[0], 3600)
        self.assertLess(max(b - a for a, b in zip(times, times[1:])), 3024 + 24)
        self.assertEqual(sum(t > times[-1] - 600 for t in times), 50)
        self.assertLess(again, 50)
        self.assertTrue(all(k in Counter(event["event"] for event in events) for k in ("point", "bound")))
        with_values = [event for event in events if event["event"] == "point" and event["values"]]
        self.assertEqual(len(with_values), history.MOST_POINTS)

    def test_thinning_keeps_what_is_rare(self) -> None:
        lines = [history.Line("start", 0, b"{}")] + [history.Line("progress", t / 10, b"{}") for t in range(30000)]
        lines += [history.Line("action", 3000.0 + t / 1000, b"{}") for t in range(900)]
        kept = Counter(line.kind for line in history.thinned(lines))
        self.assertEqual((kept["start"], kept["action"]), (1, 900))
        self.assertLess(kept["progress"], 4000)
        self.assertEqual(history.thinned([]), [])

    def test_thinning_keeps_first_last_best_and_extremes(self) -> None:
        """A week with one dip, one peak and one best point, each between neighbours that are kept instead of it otherwise."""
        for sense in ("max", "min"):
            found = History(most=2000)
            found.add(json.dumps({**START, "sense": sense}).encode())
            best = {"max": 10**30, "min": -(10**30)}[sense]
            odd = {30000: {"violated": 0}, 30600: {"rate": 9e9}, 31200: {"basis": 1.5}, 31800: {"collected": 10**9}, 32400: {"share": 0.99}, 33000: {"rate": 1.0}}
            for k in range(20000):
                now = 30.0 * k
                found.add(json.dumps(progress(now, **odd.get(now, {}))).encode())
                if k % 10 == 3:
                    value = best if k == 1203 else k % 97
                    found.add(json.dumps({**point(now + 1, 0), "objective": str(value)}).encode())
                if k % 50 == 49:
                    found.news()
            events = [json.loads(line) for line in found.whole()]
            self.assertLessEqual(len(events), 2000)
            shown = {event["time"] for event in events if event["event"] == "progress"}
            self.assertEqual({0.0, *odd, 30.0 * 19999} - shown, set())
            points = [event for event in events if event["event"] == "point"]
            self.assertEqual((points[0]["time"], points[-1]["time"]), (91.0, 30.0 * 19993 + 1))
            held = [event["objective"] for event in points if event["values"]]
            self.assertEqual(held.count(str(best)), 1, sense)
            self.assertEqual(len(held), 1 + history.MOST_POINTS)

    def test_what_no_run_tells_is_bounded_too(self) -> None:
        """By number, though all come at once, and by size; what has begun is still known."""
        for event in ({"event": "end", "time": 5, "status": "optimal"}, point(5, 1), {"event": "bound", "time": 5, "bound": 3}, {"event": "note", "time": 5}):
            found = History(most=400)
            found.add(json.dumps(START).encode())
            for _ in range(1000):
                found.add(json.dumps(event).encode())
            found.news()
            self.assertLessEqual(len(found.whole()), 400, event)
            self.assertEqual([json.loads(found.whole()[k])["event"] for k in (0, -1)], ["start", event["event"]])
        found = History()
        found.add(json.dumps(START).encode())
        for k in range(60):
            found.add(json.dumps({"event": "note", "time": k, "text": "x" * 1000000}).encode())
            found.news()
            self.assertLessEqual(found.size(), history.MOST_SIZE)
        self.assertEqual(json.loads(found.whole()[0]), START)
        self.assertEqual(json.loads(found.whole()[-1])["time"], 59)

    def test_a_better_point_takes_the_place_of_the_best(self) -> None:
        found = History()
        found.add(json.dumps({**START, "sense": "min"}).encode())
        for k, value in enumerate([5, *range(10, 30), 4, *range(10, 30), "9/2", "7/2", *range(10, 30)]):
            found.add(json.dumps({**point(k, 0), "objective": value}).encode())
        held = [event["objective"] for event in map(json.loads, found.news()[0]) if event.get("values")]
        self.assertEqual(held, ["7/2", *range(22, 30)])

    def test_dense_kinds_of_all_sorts_stay_below_the_limit(self) -> None:
        found = History(most=400)
        for k in range(800):
            for kind in ("progress", "point", "bound", "note", "action"):
                found.add(json.dumps({"event": kind, "time": k / 10}).encode())
            found.news()
            self.assertLessEqual(len(found.whole()), 400)

    def test_an_old_log_is_read_with_its_course(self) -> None:
        """An hour at once, not the last line of it alone; and of damaged lines the others."""
        found = History()
        for k in range(18000):
            text = json.dumps(progress(k / 5))
            found.add((text if k % 7 else text[:40]).encode())
        times = [json.loads(line)["time"] for line in found.news()[0]]
        self.assertGreater(len(times), 3000)
        self.assertEqual((times[0] < 1, times[-1]), (True, 17999 / 5))
        self.assertLess(max(b - a for a, b in zip(times, times[1:])), 1.0)

    def test_what_is_no_event(self) -> None:
        found = History()
        for text in (b"", b"junk", b"[]", b"1", b'{"event": 1, "time": 1}', b'{"event": "x"}', b'{"event": "x", "time": "a"}', b'{"event": "x", "time": -1}',
                     b'{"event": "x", "time": NaN}', b'{"event": "x", "time": 1, "y": Infinity}', b"\xff\xfe{", b"[" * 100000,
                     b'{"event": "x", "time": 1e999}', b'{"event": null, "time": 1}'):
            found.add(text)
        self.assertEqual(found.news(), ([], False))
        found.add(b' {"event": "x",\r "time": 1} \r')
        self.assertEqual(found.news()[0], [b'{"event": "x",  "time": 1}'])

    def test_a_line_that_is_too_long_loses_its_values(self) -> None:
        found = History()
        found.add(json.dumps(point(1, 2) | {"values": {"x%d" % k: k for k in range(200000)}}).encode())
        found.add(json.dumps({"event": "x", "time": 1, "text": "y" * history.MOST_BYTES}).encode())
        line, = found.news()[0]
        self.assertEqual(json.loads(line) | {"by": ""}, {**point(1, 2), "values": None, "omitted": True, "by": ""})


class SourcesTest(harness.Case):
    def test_a_file_that_grows_is_cut_and_is_replaced(self) -> None:
        self.write("log", b"one\ntw")
        source = sources.File(self.path("log"))
        self.addCleanup(source.close)
        self.assertEqual(source.lines(), ([b"one"], True))
        with open(self.path("log"), "ab") as file:
            file.write(b"o\nthree\n")
        self.assertEqual(source.lines()[0], [b"two", b"three"])
        self.write("log", b"new\n")
        self.assertEqual((source.lines()[0], source.times), ([b"new"], 1))
        self.write("beside", b"other, and longer\n")
        os.replace(self.path("beside"), self.path("log"))
        self.assertEqual((source.lines()[0], source.times), ([b"other, and longer"], 2))
        os.remove(self.path("log"))
        self.assertEqual(source.lines(), ([], True))

    def test_a_file_that_is_written_anew_in_place(self) -> None:
        """By another run, and longer by the time somebody looks."""
        self.write("log", b'{"event": "start", "began": 1}\nold\n')
        source = sources.File(self.path("log"))
        self.addCleanup(source.close)
        self.assertEqual(len(source.lines()[0]), 2)
        self.write("log", b'{"event": "start", "began": 2}\nnew\n' + b"more\n" * 100)
        self.assertEqual((source.lines()[0][:2], source.times), ([b'{"event": "start", "began": 2}', b"new"], 1))

    def test_a_log_that_was_cut_at_its_head(self) -> None:
        """Or holds something else before its events: they are there."""
        for before in (b'objective": 5, "by": "search"}\n', b"\0\xff junk\n\n", b"{ 1 }\n"):
            self.write("j", before + json.dumps(START).encode() + b"\nnohup: ignoring input\n" + json.dumps(point(1, 5)).encode() + b"\n")
            found = History()
            log = follow.Log(self.path("j"))
            for line in log.lines()[0]:
                found.add(line)
            log._lines.close()
            self.assertEqual([json.loads(line) for line in found.whole() + found.news()[0]], [START, point(1, 5)])

    def test_a_pipe(self) -> None:
        theirs, ours = os.pipe()
        source = sources.Pipe(theirs)
        self.assertEqual(source.lines(), ([], True))
        os.write(ours, b"a\nb")
        self.assertEqual(source.lines(), ([b"a"], True))
        os.close(ours)
        self.assertEqual(source.lines(), ([b"b"], False))
        os.close(theirs)

    def test_a_line_without_end(self) -> None:
        old, sources.MOST_LINE = sources.MOST_LINE, 1000
        try:
            lines = sources.Lines()
            for _ in range(50):
                self.assertEqual(lines.cut(b"x" * 100), [])
            self.assertEqual(lines.cut(b"x\nnext\n"), [b"next"])
        finally:
            sources.MOST_LINE = old

    def test_the_log_of_the_console_solver(self) -> None:
        log = ("<< latbox v2.2.2 +++ PID: 7 >>\n\nT(bestTarget) = 12:1/2, S(bestTarget) = 0 -- { 1 sec(s) }\n\n"
               "Total iterations: 4\nTotal running time: 3 sec(s)\n\nPairwise collections: 35\n[ 1 2 ] -- { [len,f,fs,fm,fc,tn] = 25 0 1 1 3 4 }\n"
               "B[1]: \n[ 3 4 ]\n\n%s\n\nT(bestTarget) = 12:1/2, S(bestTarget) = 0 -- { 1 sec(s) }\njunk\n"
               "T(bestTarget) = 9, S(bestTarget) = 0 -- { 4 sec(s) }\nTotal iterations: 6\nTotal running time: 5 sec(s) -- Program end\n" % ("-" * 68))
        reader = ConsoleLog("run.log")
        events = [json.loads(event) for line in log.encode().split(b"\n") for event in reader.events(line)]
        self.assertEqual([event["event"] for event in events], ["start", "point", "progress", "point", "end"])
        start, first, middle, second, end = events
        self.assertEqual((start["model"], start["sense"]), ("run.log", "min"))
        self.assertEqual((first["objective"], second["objective"], end["objective"]), (12.5, 9, 9))
        self.assertEqual((middle["time"], middle["iteration"], middle["basis"], middle["collected"], middle["violated"]), (3.0, 4, 5.0, 35, 3))
        self.assertEqual((end["time"], end["status"]), (5.0, "feasible"))


class OptionsTest(unittest.TestCase):
    def test_they_are_those_of_the_console_solver(self) -> None:
        """Their defaults and ranges are told in the page that the build writes from its own table."""
        with open(os.path.join(support.ROOT, "docs", "options.md"), encoding="utf-8") as file:
            rows = dict((key, (default, values)) for key, default, values in
                        re.findall(r"(?m)^\| \[`(\w+)`\]\(#\w+\) \| [^|]+ \| `([^`]+)` \| (.+) \|$", file.read()))
        for option in steering.TABLE:
            default, values = rows[option.key]
            self.assertEqual(str(option.default), default, option.key)
            self.assertTrue(option.takes(option.default))
            self.assertEqual("`0` off" in values, (option.least, option.most) == (0, 1), option.key)
        left = set(rows) - set(steering.BY_KEY)
        self.assertEqual(left, {"help", "verb", "rtime", "iters", "sol", "bench", "snorm", "tnorm"})


if __name__ == "__main__":
    resource.setrlimit(resource.RLIMIT_NOFILE, (4096, resource.getrlimit(resource.RLIMIT_NOFILE)[1]))
    harness.main()
