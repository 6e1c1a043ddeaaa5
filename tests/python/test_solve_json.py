"""The JSON lines: every event has the keys that docs/solve.md tells, and values of their kinds."""

from __future__ import annotations

import json
import os
import re
import unittest
from fractions import Fraction

import support
import harness
from solve_support import KNAPSACK, NO_POINT, UNBOUNDED, SolveCase, hard_objective

from latbox.front import json_lines

Schema = dict[str, dict[str, str]]


def documented() -> Schema:
    """{event: {key: kind}} from the table of the documents."""
    with open(os.path.join(support.ROOT, "docs", "solve.md"), encoding="utf-8") as file:
        text = file.read()
    found: Schema = {}
    table = text[text.index("<!-- schema -->") : text.index("<!-- schema: end -->")]
    for event, key, kind in re.findall(r"(?m)^\| `(\w+)` \| `(\w+)` \| ([^|]+?) \|", table):
        found.setdefault(event, {})[key] = kind
    return found


def is_value(value: object) -> bool:
    if isinstance(value, bool):
        return False
    if isinstance(value, int):
        return abs(value) <= 2**53
    return isinstance(value, str) and re.fullmatch(r"-?[0-9]+(/[0-9]+)?", value) is not None


OPTION = {"key": str, "value": int, "default": int, "least": int, "most": int, "text": str, "from_when": str}
KINDS = {
    "text": lambda v: isinstance(v, str),
    "seconds": lambda v: isinstance(v, (int, float)) and not isinstance(v, bool) and v >= 0,
    "whole number": lambda v: isinstance(v, int) and not isinstance(v, bool),
    "share": lambda v: isinstance(v, (int, float)) and 0 <= v <= 1,
    "count": lambda v: isinstance(v, (int, float)) and not isinstance(v, bool),
    "value": is_value,
    "values": lambda v: isinstance(v, dict) and all(map(is_value, v.values())),
    "texts": lambda v: isinstance(v, list) and all(isinstance(text, str) for text in v),
    "min or max": lambda v: v in ("min", "max"),
    "options": lambda v: isinstance(v, list) and all({key: type(value) for key, value in option.items()} == OPTION for option in v),
}


def fault(event: dict, schema: Schema) -> str | None:
    """What is not as documented."""
    kinds = schema[event["event"]]
    if set(event) != set(kinds):
        return "%s: its keys are %s" % (event["event"], sorted(event))
    for key, kind in kinds.items():
        kind, _, null = kind.partition(" or null")
        if not ((event[key] is None and kind != kinds[key]) or KINDS[kind](event[key])):
            return "%s: %s is %r, no %s" % (event["event"], key, event[key], kinds[key])
    return None


class JsonTest(SolveCase):
    def events(self, *arguments: str) -> list[dict]:
        result = self.solve("--json=j", *arguments)
        self.assertNotIn(result.status, (1, 2), result.err)
        return [json.loads(line, parse_float=float) for line in self.read("j").splitlines()]

    def hard_events(self, model: str) -> list[dict]:
        """Of a run that its limit ends, once it has told of its progress."""
        for seconds in harness.growing(4):
            events = self.events("--time=%d" % seconds, model)
            if {"progress", "point"} <= {event["event"] for event in events}:
                break
        return events

    def test_every_event_is_as_documented(self) -> None:
        schema = documented()
        self.assertEqual(set(schema), {"start", "progress", "point", "bound", "action", "setting", "end"})
        self.write("m.lp", KNAPSACK)
        self.write("n.lp", NO_POINT)
        self.write("u.lp", UNBOUNDED)
        self.write("o.opt", hard_objective())
        seen = set()
        for arguments in (["m.lp"], ["n.lp"], ["u.lp"], ["o.opt"], ["--solutions=3", "m.lp"]):
            events = self.hard_events(*arguments) if arguments == ["o.opt"] else self.events(*arguments)
            self.assertEqual(events[-1]["event"], "end")
            times = [event["time"] for event in events]
            self.assertEqual(times, sorted(times))
            for event in events:
                seen.add(event["event"])
                self.assertIsNone(fault(event, schema))
        # The others answer to a page: test_view_run.py.
        self.assertEqual(seen, set(schema) - {"action", "setting"})

    def test_an_end_before_anything_began(self) -> None:
        self.write("m.lp", KNAPSACK)
        end, = self.events("--time=0.001", "m.lp")
        self.assertEqual((end["event"], end["status"], end["values"]), ("end", "unknown", None))
        self.assertEqual(json.loads(self.solve("--time=0.001", "--json=-", "m.lp").out)["status"], "unknown")

    def test_the_last_line_is_the_answer(self) -> None:
        self.write("m.lp", KNAPSACK)
        end = self.events("m.lp")[-1]
        self.assertEqual((end["status"], end["objective"], end["values"]["x5"]), ("optimal", 90, 3))


class ValueTest(unittest.TestCase):
    def test_nothing_is_rounded(self) -> None:
        for value, expected in ((5, 5), (2**53, 2**53), (-(2**53), -(2**53)), (2**53 + 1, str(2**53 + 1)),
                                (Fraction(1, 3), "1/3"), (Fraction(-7, 2), "-7/2"), (None, None)):
            self.assertEqual(json_lines.value_of(value), expected)


if __name__ == "__main__":
    harness.main()
