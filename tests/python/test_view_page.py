"""The page in a browser without a screen: what it shows, what its buttons do, that two windows agree, that nothing leaves the machine."""

from __future__ import annotations

import json
import re
import signal
import threading
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
        bad = "<img src=x onerror=window.bad=1>" + "y" * 200
        served.source.tell({**START, "model": bad, "size": [bad], "warnings": [bad]}, {**point(1, 2), "letter": "<b>", "values": {bad: 1, "__proto__": 2}},
                           progress(1.5, best=2, points=1), {"event": "failure", "time": 2, "text": bad})
        page = self.shown(served, 4)
        page.wait(STATE, lambda state: state == "failed")
        self.assertEqual(page.value("document.querySelectorAll('img, b').length"), 0)
        page.size(360, 800)
        page.wait("innerWidth", lambda width: width == 360)
        self.assertLessEqual(page.value("document.documentElement.scrollWidth"), 360)
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

    def test_long_values_are_compared_exactly(self) -> None:
        """Two that are the same as floats: neither is a bound met, nor the newer find overlooked, nor a table sorted wrongly."""
        served = self.served()
        long = "12345678901234567890123456789%d"
        values = {"a": long % 5, "b": long % 3, "c": "-%s/7" % (long % 1), "d": 2}
        served.source.tell(START, {**point(1, 0), "objective": long % 0}, {**point(20, 0, "C"), "objective": long % 5, "values": values},
                           progress(40, best=long % 5, bound=long % 9, points=1))
        page = self.shown(served, 4)
        facts = page.wait("document.querySelector('.facts').textContent.replaceAll('\u00a0', ' ')", lambda text: "from the best value" in text)
        self.assertNotIn("met by", facts)
        self.assertRegex(facts, r"C, 2[0-9] s ago")
        self.assertIn("At most 4 (below 0.001\u00a0%) could be gained", page.value("document.getElementById('advice').textContent"))
        self.assertIn((long % 5)[-3:], page.value("document.getElementById('best-note').textContent"))
        page.value("document.querySelector('button.sort[data-by=value]').click()")
        names = page.wait("[...document.querySelectorAll('#values tbody th')].map(n => n.textContent)", lambda found: found[0] == "c")
        self.assertEqual(names, ["c", "d", "b", "a"])
        self.assertIn("345\u202f678\u202f901\u202f234\u202f567\u202f895", page.value("document.getElementById('values').textContent"))

    def test_a_value_beyond_all_floats(self) -> None:
        served = self.served()
        served.source.tell(START, {**point(1, 0), "objective": "7" * 400}, progress(2, best="7" * 400, bound="8" * 400, points=1))
        page = self.shown(served, 3)
        self.assertEqual(page.wait(SENTENCE, lambda text: "best" in text), "Running, best value 777777777777… (400 digits).")
        self.assertEqual(page.complaints, [])

    def test_millions_of_points(self) -> None:
        served = self.served()
        start = {**START, "sense": None}
        served.source.tell(start, {**point(1, 0), "objective": None}, progress(2, points=1234567, share=0.5, left_seconds=7300.0))
        page = self.shown(served, 3)
        page.wait(SENTENCE, lambda text: text == "Running, 1\u202f234\u202f567 points so far.")
        self.assertIn("all points are known", page.value("document.getElementById('advice').textContent"))
        served.source.tell({"event": "end", "time": 3, "status": "all", "objective": None, "bound": None, "points": 1234567, "values": None, "ray": None, "notes": []})
        page.wait(SENTENCE, lambda text: text == "All points are known: 1\u202f234\u202f567.")

    def test_the_best_point_stays_behind_worse_ones(self) -> None:
        """Where all points are wanted they come in any order."""
        served = self.served()
        served.source.tell(START, point(1, 50), *(point(2 + k, k) for k in range(20)), progress(30, best=50, points=21))
        page = self.shown(served, 20)
        self.assertEqual(page.wait("[...document.querySelectorAll('#values td')].map(n => n.textContent)", bool), ["50", "−1"])
        self.assertEqual(page.value("document.querySelectorAll('#last-points li').length"), 8)
        self.assertNotIn("too many", page.value("document.getElementById('last-points').textContent"))
        # The same for a window that was there while they came.
        served.source.tell(*(point(40 + k, k) for k in range(20)))
        page.wait("document.getElementById('last-points').textContent", lambda text: "59" in text)
        self.assertEqual(page.value("[...document.querySelectorAll('#values td')].map(n => n.textContent)"), ["50", "−1"])

    def test_headline_and_figure_agree(self) -> None:
        served = self.served()
        served.source.tell(START, point(0.5, 5), progress(0.6, best=5, bound=20, points=1, share=0.0, left_seconds=None))
        page = self.shown(served, 3)
        page.wait("document.getElementById('advice').textContent", lambda text: "the last one 3" in text)
        for _ in range(20):
            words, facts = page.value("[document.getElementById('advice').textContent, document.querySelector('.facts').textContent]")
            ago = re.search(r"the last one (.+?) ago", words)[1]
            self.assertIn("S, %s ago" % ago, facts)
            page.wait("new Promise(done => setTimeout(() => done(1), 170))")

    def test_letters_do_not_lie_on_each_other(self) -> None:
        """Nor on rings, nor on the curve: from above or from below."""
        for sense, sign in (("max", 1), ("min", -1)):
            served = self.served()
            served.source.tell({**START, "sense": sense}, {"event": "bound", "time": 0.5, "bound": sign * 1530}, *({**point(1 + 0.3 * k, sign * k * k, "STC"[k % 3]), "by": "complete" if k % 3 == 2 else "search"} for k in range(40)))
            page = self.shown(served, 42, width=390)
            boxes = """[...document.querySelectorAll('%s .%s')].map(n => { const b = n.getBBox(); return [b.x + 1, b.y + 2, b.x + b.width - 1, b.y + b.height - 2]; })"""
            letters = page.wait(boxes % (CHART, "letter"), lambda found: len(found) > 5)
            rings = page.value(boxes % (CHART, "find"))
            for k, a in enumerate(letters):
                for b in letters[k + 1 :] + rings:
                    self.assertFalse(a[0] < b[2] and b[0] < a[2] and a[1] < b[3] and b[1] < a[3], (sense, a, b))
            on_curve = page.value("""(() => { const curves = document.querySelectorAll('%s .curve'); return [...document.querySelectorAll('%s .letter')].filter(n => {
                const b = n.getBBox(); for (const curve of curves) for (let s = 0; s < curve.getTotalLength(); s += 0.5) { const p = curve.getPointAtLength(s);
                if (p.x > b.x + 1 && p.x < b.x + b.width - 1 && p.y > b.y + 3 && p.y < b.y + b.height - 3) return true; } return false; }).map(n => n.textContent); })()""" % (CHART, CHART))
            self.assertEqual(on_curve, [], sense)
            self.assertEqual(page.value("document.querySelector('%s .makers').textContent" % CHART), "S, T found by the search; C found by the complete search")

    def test_since_when(self) -> None:
        """Of a run that began on another day the day too."""
        served = self.served()
        served.source.tell({**START, "began": 1.7e9}, progress(5))
        page = self.shown(served, 2)
        self.assertRegex(page.wait("document.querySelector('.facts .note').textContent", bool), r"since .*14|since .*15")

    def test_contrast(self) -> None:
        """4.5 for text, 3 for curves and for the edge of what can be filled in, each colour that any state shows."""
        served = self.started()
        for dark in (False, True):
            page = self.shown(served, 7, dark=dark)
            page.wait("document.querySelectorAll('figure:not([hidden])').length")
            found = page.value("""(() => {
              const light = (hex) => [1, 3, 5].map(k => parseInt(hex.slice(k, k + 2), 16) / 255).map(v => v <= 0.04045 ? v / 12.92 : ((v + 0.055) / 1.055) ** 2.4)
                .reduce((sum, v, k) => sum + v * [0.2126, 0.7152, 0.0722][k], 0);
              const of = (name) => light(getComputedStyle(document.documentElement).getPropertyValue('--' + name).trim());
              const ratio = (a, b) => (Math.max(of(a), of(b)) + 0.05) / (Math.min(of(a), of(b)) + 0.05);
              const pairs = ['text', 'soft', 'one', 'two', 'go', 'wait', 'bad', 'calm', 'focus', 'edge'].flatMap(name => ['ground', 'raised'].map(ground => [name, ground]));
              return pairs.map(([a, b]) => [a, b, ratio(a, b)]); })()""")
            for name, ground, ratio in found:
                self.assertGreaterEqual(ratio, 3.0 if name in ("edge", "focus") else 4.5, (name, ground, dark))
            # What the sheet says is what is shown: no colour is mixed beside the variables.
            shown = page.value("[...new Set([...document.querySelectorAll('input[type=number], select')].map(n => getComputedStyle(n).borderTopColor))]")
            edge = page.value("getComputedStyle(document.documentElement).getPropertyValue('--edge').trim()")
            self.assertEqual(shown, ["rgb(%d, %d, %d)" % tuple(bytes.fromhex(edge[1:]))])

    def test_focus_is_seen(self) -> None:
        """By Tab backwards through all of the page: nothing that is reached hides behind the bar, and each shows a frame and has a name of its own."""
        page = self.shown(self.started(), 7, height=500)
        page.wait("document.querySelectorAll('#option-list li').length")
        seen = []
        for _ in range(60):
            for kind in ("keyDown", "keyUp"):
                page.call("Input.dispatchKeyEvent", type=kind, key="Tab", code="Tab", windowsVirtualKeyCode=9, modifiers=8)
            found = page.value("""(() => { const n = document.activeElement, b = n.getBoundingClientRect();
              return [n === document.body ? '' : n.id || n.textContent, b.bottom - document.querySelector('.bar').offsetHeight, b.top - innerHeight,
                      getComputedStyle(n).outlineStyle, n.tagName, Math.max(b.height, n.labels && n.labels[0] ? n.labels[0].getBoundingClientRect().height : 0)]; })()""")
            if not found[0]:
                continue
            self.assertGreater(found[1], 5, found)
            self.assertLess(found[2], -5, found)
            self.assertNotEqual(found[3], "none", found)
            self.assertGreaterEqual(found[5], 23.9, found)
            seen.append(found[0])
        self.assertTrue({"pause", "stop", "zeros", "window", "log", "option-beta"} <= set(seen), seen)
        page.call("Accessibility.enable")
        nodes = [node for node in page.call("Accessibility.getFullAXTree")["nodes"] if not node["ignored"]]
        names = [(node["role"]["value"], node.get("name", {}).get("value", "")) for node in nodes
                 if any(p["name"] == "focusable" and p["value"]["value"] for p in node.get("properties", [])) or node["role"]["value"] in ("region", "table")]
        self.assertGreater(len(names), 25)
        self.assertEqual([name for name in names if not name[1] or "↕" in name[1]], [])
        self.assertEqual(len(names), len(set(names)), names)

    def test_the_page_does_not_shout(self) -> None:
        """What a screen reader is told by itself stays still while curves grow; what is read from a curve stays at its time."""
        served = self.started()
        page = self.shown(served, 7)
        page.wait("document.querySelector('%s svg')?.childElementCount > 3" % CHART)
        self.assertEqual(page.value("document.getElementById('heard').textContent + document.getElementById('said').textContent"), "")
        page.value("document.querySelector('%s svg').focus()" % CHART)
        page.call("Input.dispatchKeyEvent", type="keyDown", key="ArrowLeft", code="ArrowLeft")
        before = page.wait("document.querySelector('%s .readout').textContent" % CHART)
        page.value("""(() => { window.told = []; new MutationObserver(all => all.forEach(m => window.told.push(m.target.textContent)))
          .observe(document.body, {subtree: true, childList: true, characterData: true});
          window.loud = () => [...document.querySelectorAll('output, [role=status], [aria-live]')].filter(n => n.getAttribute('aria-live') !== 'off').map(n => n.textContent).join('|'); })()""")
        loud = page.value("window.loud()")
        for k in range(12):
            served.source.tell(progress(4.0 + k / 4, best=11, bound=18 - k / 100, points=1))
            page.wait("new Promise(done => setTimeout(() => done(1), 200))")
        page.wait("window.told.length", lambda count: count > 3)
        self.assertEqual(page.value("document.querySelector('%s .readout').textContent" % CHART), before)
        self.assertEqual(page.value("window.loud()"), loud)
        page.value("document.querySelector('%s svg').dispatchEvent(new PointerEvent('pointermove', {bubbles: true}))" % CHART)
        self.assertEqual(page.value("document.querySelector('%s .readout').getAttribute('aria-live')" % CHART), "off")



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

    def test_the_answer_that_there_is_no_point_is_saved(self) -> None:
        served = self.served()
        served.source.tell(START, {"event": "end", "time": 9.0, "status": "infeasible", "objective": None, "bound": None, "points": 0, "values": None, "ray": None, "notes": []})
        page = self.shown(served, 2)
        page.value("URL.createObjectURL = blob => { window.saved = blob.text(); return '#'; }")
        page.wait("!document.getElementById('save-answer').disabled")
        page.value("document.getElementById('save-answer').click()")
        self.assertEqual(page.value("window.saved"), "# status: infeasible\n")


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

    def test_a_server_that_goes_away_takes_no_orders(self) -> None:
        served = self.started()
        page = self.shown(served, 7)
        page.wait("!document.getElementById('stop').disabled")
        served.close()
        page.wait(STATE, lambda state: state == "lost")
        self.assertTrue(page.value("['pause', 'stop'].every(id => document.getElementById(id).disabled)"))
        page.wait("document.getElementById('advice').textContent", lambda text: re.match(r"The last word came \d.* ago", text))

    def test_a_server_that_stands_still(self) -> None:
        """Its connections stay, and nothing comes: the page says so, and is there again when it goes on."""
        served = self.started()
        page = self.shown(served, 7)
        page.wait(STATE, lambda state: state == "running")
        goes_on = threading.Event()
        self.addCleanup(goes_on.set)
        turn = served.server._turn

        def held() -> None:
            goes_on.wait()
            turn()

        served.server._turn = held
        page.wait(STATE, lambda state: state == "lost")
        goes_on.set()
        page.wait(STATE, lambda state: state == "running")
        until(lambda: len(served.server._windows) == 1, "the window, and no other")

    def test_a_run_that_says_nothing(self) -> None:
        """Stopped from outside, while its server goes on."""
        served = self.started()
        page = self.shown(served, 7)
        page.wait(STATE, lambda state: state == "running")
        served.server._last_word -= 100.0
        page.wait(STATE, lambda state: state == "silent")
        self.assertEqual(page.value("document.getElementById('heard').textContent"), page.value(SENTENCE))
        self.assertRegex(page.value(SENTENCE), r"No word for [12].min \d+.s, best value 11\.")
        served.source.tell(progress(4.0, best=11, bound=18, points=1))
        page.wait(STATE, lambda state: state == "running")
        self.assertEqual(page.value("document.getElementById('heard').textContent"), "The run goes on.")

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
