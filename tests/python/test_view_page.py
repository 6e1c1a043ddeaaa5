"""The page in a browser without a screen: what it shows, what its buttons do, that two windows agree, that nothing leaves the machine."""

from __future__ import annotations

import json
import re
import signal
import unittest
import xml.etree.ElementTree as ElementTree
from typing import Any

import support  # noqa: F401
import browser
import harness
from solve_support import SolveCase, hard_objective
from test_view_run import LINK
from view_support import START, Served, ServedCase, point, progress, until

from latbox.solving.steering import Order

SENTENCE = "document.getElementById('sentence').textContent"
STATE = "document.documentElement.dataset.state"
LOG = "[...document.querySelectorAll('#log li')].map(li => li.textContent.replaceAll('\u00a0', ' '))"
CHART = "#chart-value-and-bound"
ALL_SHOWN = """(() => {
  const text = (id) => document.getElementById(id).textContent;
  return {log: %s, values: text('values'), points: text('last-points'), best: document.querySelectorAll('.facts dd .value')[1].textContent,
          finds: [...document.querySelectorAll('%s .letter')].map(node => node.textContent), options: text('option-list'), size: text('size')};
})()""" % (LOG, CHART)


@unittest.skipUnless(browser.program(), "there is no Chromium: the page is not looked at (apt-get install chromium)")
class PageCase(ServedCase):
    browser: browser.Browser

    @classmethod
    def setUpClass(cls) -> None:
        cls.browser = browser.Browser()

    @classmethod
    def tearDownClass(cls) -> None:
        cls.browser.close()

    def page(self, **size: Any) -> browser.Page:
        page = self.browser.page(**size)
        self.addCleanup(page.close)
        return page

    def shown(self, served: Served, events: int = 1, **size: Any) -> browser.Page:
        """A window that has so many events."""
        page = self.page(**size)
        page.call("Log.enable")
        page.open(served.link)
        page.wait("Number(document.documentElement.dataset.events || 0)", lambda count: count >= events)
        return page

    def started(self) -> Served:
        """A run with three finds, a bound, and something in each panel."""
        served = self.served()
        served.source.tell(START, point(0.5, 5), progress(0.6, best=5, bound=20, points=1))
        until(lambda: len(served.server.history.whole()) == 3, "three events")
        served.source.tell(point(1.5, 7, "T"), progress(1.6, best=7, bound=20, points=1, share=0.2))
        until(lambda: len(served.server.history.whole()) == 5, "five events")
        served.source.tell(point(2.5, 11, "C"), progress(3.0, best=11, bound=18, points=1, share=0.25, basis=2.5, collected=90, rate=5e3, left_seconds=7300.0))
        until(lambda: len(served.server.history.whole()) == 7, "seven events")
        return served


class ShownTest(PageCase):
    def test_a_glance_tells(self) -> None:
        page = self.shown(self.started(), 7)
        self.assertEqual(page.wait(STATE, lambda state: state == "running"), "running")
        self.assertEqual(page.value(SENTENCE), "Running, best value 11.")
        self.assertIn("Waiting pays:", page.value("document.querySelector('.advice').textContent"))
        facts = page.value("Object.fromEntries([...document.querySelectorAll('.facts > div:not([hidden])')].map(d => [d.querySelector('dt').textContent, d.querySelector('dd').textContent]))")
        self.assertTrue(facts["Best value"].startswith("11"))
        self.assertIn("63.6", facts["Proven bound"])
        self.assertRegex(facts["Complete search"], r"25.%about 2.h left; 5.000 nodes a second")
        self.assertIn("it is none for lattices", page.value("document.getElementById('about').textContent"))
        self.assertEqual(page.complaints, [])

    def test_curves_grow(self) -> None:
        served = self.started()
        page = self.shown(served, 7)
        curve = "document.querySelector('%s .curve.one')?.getAttribute('d')" % CHART
        before = page.wait(curve)
        self.assertEqual(page.value("[...document.querySelectorAll('%s .letter')].map(n => n.textContent)" % CHART), ["S", "T", "C"])
        self.assertEqual(page.value("document.querySelectorAll('%s .find').length" % CHART), 3)
        served.source.tell(point(6.0, 15, "C"), progress(6.1, best=15, bound=18, points=1))
        page.wait("document.querySelectorAll('%s .find').length" % CHART, lambda count: count == 4)
        self.assertNotEqual(page.value(curve), before)
        self.assertEqual(page.value(SENTENCE), "Running, best value 15.")

    def test_each_axis_has_readable_ticks_and_a_unit(self) -> None:
        served = self.started()
        page = self.shown(served, 7)
        for width in (1200, 390):
            page.size(width, 800)
            page.wait("document.querySelector('%s svg').getAttribute('width') <= %d" % (CHART, width))
            charts = page.wait("""[...document.querySelectorAll('figure:not([hidden])')].map(f => ({id: f.id, unit: f.querySelector('.axis-unit').textContent,
                time: f.querySelector('.unit').textContent, ticks: [...f.querySelectorAll('.tick')].map(t => {
                const box = t.getBoundingClientRect(), frame = f.querySelector('svg').getBoundingClientRect();
                return [t.textContent, t.getAttribute('text-anchor'), box.left >= frame.left - 1 && box.right <= frame.right + 8, parseFloat(getComputedStyle(t).fontSize)]})}))""")
            self.assertEqual([chart["id"] for chart in charts], ["chart-" + name for name in (
                "value-and-bound", "violation-of-the-nearest-point", "share-of-the-complete-search", "speed-of-the-complete-search",
                "quality-of-the-basis", "collections-of-the-search")])
            for chart in charts:
                self.assertTrue(chart["unit"] and chart["time"].startswith("time of work, "), chart)
                for anchor in ("end", "middle"):
                    labels = [label for label, which, _, _ in chart["ticks"] if which == anchor]
                    self.assertGreaterEqual(len(labels), 2, chart)
                    self.assertEqual(len(labels), len(set(labels)), chart)
                self.assertTrue(all(fits and size >= 11 for _, _, fits, size in chart["ticks"]), chart)

    def test_a_curve_has_a_table_behind_it(self) -> None:
        page = self.shown(self.started(), 7)
        page.wait("document.querySelectorAll('figure:not([hidden])').length > 4")
        self.assertTrue(page.value("[...document.querySelectorAll('figure:not([hidden])')].every(f => f.querySelector('svg').getAttribute('aria-label') && f.querySelector('summary'))"))
        page.value("document.querySelector('%s details').open = true" % CHART)
        page.wait("document.querySelectorAll('%s tbody tr').length >= 3" % CHART)
        first = page.value("[...document.querySelector('%s tbody tr').children].map(c => c.textContent)" % CHART)
        self.assertEqual(first[1:3], ["11", "18"])
        self.assertIn("objective", page.value("document.querySelector('%s thead').textContent" % CHART))

    def test_by_keyboard_and_by_ear(self) -> None:
        page = self.shown(self.started(), 7)
        page.wait("document.querySelectorAll('#option-list li').length")
        self.assertEqual(page.value("document.querySelectorAll('h1').length"), 1)
        self.assertEqual(page.value("[...document.querySelectorAll('input, select')].filter(i => !i.labels.length).length"), 0)
        self.assertEqual(page.value("[...document.querySelectorAll('button')].filter(b => !(b.textContent.trim() || b.getAttribute('aria-label'))).length"), 0)
        self.assertEqual(page.value("document.querySelectorAll('[tabindex]:not([tabindex=\"0\"])').length"), 0)
        self.assertEqual(page.value("document.getElementById('said').getAttribute('role')"), "status")
        # Tab leads through what can be pressed.
        seen = set()
        for _ in range(12):
            page.call("Input.dispatchKeyEvent", type="keyDown", key="Tab", code="Tab", windowsVirtualKeyCode=9)
            seen.add(page.value("document.activeElement.id"))
        self.assertTrue({"pause", "stop", "save-answer", "window"} <= seen, seen)
        page.value("document.querySelector('%s svg').focus()" % CHART)
        for key in ("Home", "ArrowRight", "End"):
            page.call("Input.dispatchKeyEvent", type="keyDown", key=key, code=key)
        self.assertRegex(page.wait("document.querySelector('%s .readout').textContent" % CHART), r"best value 11, proven bound 18")
    def test_values_sort_and_copy(self) -> None:
        page = self.shown(self.started(), 7)
        names = "[...document.querySelectorAll('#values tbody th')].map(n => n.textContent)"
        page.wait(names, bool)
        self.assertEqual(page.value(names), ["x1", "x10"])
        page.value("document.getElementById('zeros').click()")
        self.assertEqual(page.wait(names, lambda found: len(found) == 3), ["x1", "x2", "x10"])
        page.value("document.querySelector('button.sort[data-by=value]').click()")
        self.assertEqual(page.wait(names, lambda found: found[0] == "x10"), ["x10", "x2", "x1"])
        self.assertEqual(page.value("document.querySelectorAll('#values th')[1].getAttribute('aria-sort')"), "ascending")
        page.value("document.querySelector('button.sort[data-by=value]').click()")
        self.assertEqual(page.wait(names, lambda found: found[0] == "x1"), ["x1", "x2", "x10"])
        page.value("navigator.clipboard.writeText = async text => { window.copied = text; }; document.getElementById('copy').click()")
        self.assertEqual(page.wait("window.copied"), "x1 = 11\nx2 = 0\nx10 = -1\n")

    def test_a_narrow_window(self) -> None:
        served = self.started()
        for width, dark in ((390, False), (320, True), (1200, True)):
            page = self.shown(served, 7, width=width, dark=dark)
            page.wait("document.querySelectorAll('figure:not([hidden])').length")
            self.assertLessEqual(page.value("document.documentElement.scrollWidth"), width)
            ground = page.value("getComputedStyle(document.body).backgroundColor")
            self.assertEqual(sum(map(int, re.findall(r"\d+", ground)[:3])) < 200, dark)

    def test_names_are_text(self) -> None:
        served = self.served()
        bad = "<img src=x onerror=window.bad=1>"
        served.source.tell({**START, "model": bad, "size": [bad], "warnings": [bad]}, {**point(1, 2), "letter": "<b>", "values": {bad: 1, "__proto__": 2}},
                           progress(1.5, best=2, points=1), {"event": "failure", "time": 2, "text": bad})
        page = self.shown(served, 4)
        page.wait(STATE, lambda state: state == "failed")
        self.assertEqual(page.value("document.querySelectorAll('img, b').length"), 0)
        self.assertIn(bad, page.value("document.body.textContent"))
        self.assertIsNone(page.value("window.bad"))

    def test_long_numbers(self) -> None:
        served = self.served()
        long = "123456789012345678901234567890"
        served.source.tell(START, {**point(1, 0), "objective": long}, progress(2, best=long, bound=long[:-1] + "1", points=1),
                           {**point(3, 0), "objective": "7/3"}, progress(3.5, best=long, points=1))
        page = self.shown(served, 4)
        self.assertIn("≈ 1.23·10²⁹", page.wait(SENTENCE, lambda text: "best" in text))
        labels = page.wait("[...document.querySelectorAll('%s .tick[text-anchor=end]')].map(t => t.textContent)" % CHART, bool)
        self.assertEqual(len(labels), len(set(labels)))


class ActsTest(PageCase):
    def test_pause_and_go_on(self) -> None:
        served = self.started()
        page = self.shown(served, 7)
        page.wait("!document.getElementById('steering').hidden")
        page.value("document.getElementById('pause').click()")
        until(lambda: served.orders == [Order("pause")], "the order")
        served.source.tell({"event": "action", "time": 3.5, "action": "pause", "key": None, "value": None})
        page.wait(STATE, lambda state: state == "paused")
        self.assertEqual(page.value("document.getElementById('pause').textContent"), "Go on")
        self.assertIn("Paused", page.value("document.getElementById('heard').textContent"))
        self.assertIn("3.5 sPaused from the page.", page.value(LOG))
        page.value("document.getElementById('pause').click()")
        until(lambda: served.orders[1:] == [Order("go on")], "the order")
        served.source.tell({"event": "action", "time": 3.5, "action": "go on", "key": None, "value": None}, progress(3.6, best=11, points=1, paused=61.0))
        page.wait(STATE, lambda state: state == "running")
        self.assertIn("paused for 1\u00a0min", page.wait("document.querySelector('.facts').textContent", lambda text: "paused" in text))

    def test_set(self) -> None:
        served = self.started()
        page = self.shown(served, 7)
        page.wait("!!document.getElementById('option-beta')")
        self.assertEqual(page.value("[...document.querySelector('#option-list .present').children].map(n => n.textContent)"), ["20", "default"])
        self.assertIn("2 to 1000", page.value("document.getElementById('option-beta-text').textContent"))
        page.value("(() => { const input = document.getElementById('option-beta'); input.value = 30; input.form.requestSubmit(); })()")
        until(lambda: served.orders == [Order("set", "beta", 30)], "the order")
        served.source.tell({"event": "action", "time": 3.5, "action": "set", "key": "beta", "value": 30})
        page.wait("document.querySelector('#option-list .present').textContent", lambda text: "30 is asked for" in text)
        served.source.tell({"event": "setting", "time": 3.7, "key": "beta", "value": "30"})
        page.wait("document.querySelector('#option-list output').textContent", lambda text: text == "30")
        self.assertIn("3.7 sThe search has taken beta = 30.", page.value(LOG))
        # Out of its range nothing is sent.
        page.value("(() => { const input = document.getElementById('option-beta'); input.value = 1; input.form.requestSubmit(); })()")
        self.assertEqual(len(served.orders), 1)

    def test_a_real_run_is_stopped(self) -> None:
        case = RealRun("run")
        case.setUp()
        self.addCleanup(case.doCleanups)
        session, link = case.run_it()
        page = self.page()
        page.open(link)
        page.wait(SENTENCE, lambda text: "best value" in text)
        page.value("document.getElementById('stop').click()")
        self.assertEqual(session.wait(), 11)
        self.assertEqual(page.wait(STATE, lambda state: state == "over"), "over")
        self.assertRegex(page.value(SENTENCE), r"Stopped, with the value [\d\u202f]+\.")
        self.assertTrue(any("Stopped from the page" in line for line in page.value(LOG)))
        # Loaded anew behind the end.
        page.call("Page.reload")
        page.wait(STATE, lambda state: state == "over")
        self.assertTrue(any("Stopped from the page" in line for line in page.value(LOG)))

    def test_what_is_saved(self) -> None:
        served = self.started()
        page = self.shown(served, 7)
        page.wait("!document.getElementById('save-picture').disabled")
        page.value("URL.createObjectURL = blob => { window.saved = blob.text(); return '#'; }")

        def saved(what: str) -> str:
            page.value("document.getElementById('save-%s').click()" % what)
            return page.value("window.saved")

        self.assertEqual(saved("answer"), "# status: feasible\n# objective: 11\n# point 1\nx1 = 11\nx2 = 0\nx10 = -1\n")
        events = [json.loads(line) for line in saved("lines").splitlines()]
        self.assertEqual(events, [json.loads(line) for line in served.server.history.whole()])
        root = ElementTree.fromstring(saved("picture").encode())
        self.assertEqual(root.tag, "{http://www.w3.org/2000/svg}svg")
        texts = [node.text for node in root.iter("{http://www.w3.org/2000/svg}text")]
        self.assertTrue({"five.lp", "Running, best value 11.", "S", "T", "C"} <= set(texts), texts)


class RealRun(SolveCase):
    def run(self, result: object = None) -> None:  # no test of its own
        pass

    def run_it(self) -> tuple[harness.Session, str]:
        self.write("o.opt", hard_objective())
        session = self.begin("--view", "o.opt")
        session.wait_for(LINK, "err")
        return session, re.search(LINK, session.err)[1]


class WindowsTest(PageCase):
    def test_reload_and_a_second_window_show_the_same(self) -> None:
        served = self.started()
        first = self.shown(served, 7)
        served.source.tell(point(4.0, 12), {"event": "bound", "time": 4.1, "bound": 17}, {"event": "setting", "time": 4.2, "key": "beta", "value": "25"})
        first.wait("Number(document.documentElement.dataset.events)", lambda count: count == 10)
        second = self.shown(served, 10)
        known = first.value(ALL_SHOWN)
        self.assertEqual(second.wait(ALL_SHOWN, lambda shown: shown["finds"] == known["finds"]), known)
        first.to_front()
        first.call("Page.reload")
        first.wait("Number(document.documentElement.dataset.events || 0)", lambda count: count == 10)
        self.assertEqual(first.wait(ALL_SHOWN, lambda shown: shown["finds"] == known["finds"]), known)
        self.assertEqual(known["best"], "12")

    def test_a_server_that_goes_away_and_a_run_that_is_gone(self) -> None:
        served = self.started()
        page = self.shown(served, 7)
        served.source.end()
        page.wait(STATE, lambda state: state == "failed")
        self.assertEqual(page.value(SENTENCE), "The run is gone.")
        served.close()
        page.wait(STATE, lambda state: state == "lost")
        self.assertEqual(page.value("document.querySelectorAll('%s .find').length" % CHART), 3)

    def test_no_request_leaves_the_machine(self) -> None:
        served = self.started()
        page = self.shown(served, 7)
        page.wait("document.querySelectorAll('figure:not([hidden])').length")
        self.assertEqual([url for url in page.requests if not url.startswith(served.link)], [])
        self.assertGreaterEqual(len(page.requests), 6)
        self.assertEqual(page.complaints, [])
        # The policy forbids what the page does not do.
        self.assertEqual(page.value("fetch('http://127.0.0.2:9/').then(() => 'sent', error => error.name)"), "TypeError")
        self.assertTrue(page.wait("1") and any("Content Security Policy" in text for text in page.complaints), page.complaints)
        self.assertEqual(page.value("(() => { const s = document.createElement('script'); s.textContent = 'window.ran = 1'; document.head.append(s); return window.ran || 0; })()"), 0)

    def test_who_is_refused(self) -> None:
        served, other = self.started(), self.started()
        wrong = self.page()
        wrong.open(served.link.replace(served.token, "x" * len(served.token)))
        self.assertIn("the link is not right", wrong.wait("document.body.textContent", lambda text: bool(text.strip())))
        # Another page, of another origin, that knows the link: its own policy is put aside, ours must do.
        foreign = self.page()
        foreign.call("Page.setBypassCSP", enabled=True)
        foreign.open(other.link)
        foreign.wait(SENTENCE, lambda text: "Running" in text)
        for script in ("fetch('%sact', {method: 'POST', headers: {'Content-Type': 'application/json'}, body: '{\"action\": \"stop\"}'})",
                       "fetch('%sact', {method: 'POST', mode: 'no-cors', body: '{\"action\": \"stop\"}'})", "fetch('%sevents')"):
            foreign.value("%s.then(answer => answer.status, error => error.name)" % script % served.link)
        self.assertEqual(foreign.value("new Promise(done => { const s = new EventSource('%sevents'); s.onerror = () => done(s.readyState); s.onopen = () => done('open'); })" % served.link), 2)
        self.assertEqual((served.orders, other.orders), ([], []))
        self.assertEqual(len(served.server._windows), 0)


if __name__ == "__main__":
    signal.signal(signal.SIGPIPE, signal.SIG_IGN)
    harness.main()
