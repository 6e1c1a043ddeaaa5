"""What happens, as JSON: an event a line, for programs that watch. docs/solve.md holds the schema."""

from __future__ import annotations

import json
from fractions import Fraction
from typing import IO, Any

from ..models.model import Model
from ..models.sources import shown_name
from ..solving import checking
from ..solving.events import Action, Bound, End, Event, Found, Point, Progress, Setting, Start
from ..solving.steering import TABLE
from .size import size, warnings

# What every reader of JSON holds exactly.
GREATEST = 2**53
MAKERS = {"C": "complete", "P": "presolve"}


KINDS: dict[type, str] = {Start: "start", Found: "point", Bound: "bound", Progress: "progress", Action: "action", Setting: "setting",
                          End: "end"}


class JsonLines:
    """Of one run."""

    def __init__(self, model: Model, name: str) -> None:
        self._model = model
        self._name = name

    def write(self, event: Event, file: IO[str]) -> None:
        """A line, as a whole. Throws OSError."""
        file.write(self.line(event) + "\n")
        file.flush()

    def line(self, event: Event) -> str:
        return json.dumps({"event": KINDS[type(event)], **self.object_of(event)}, ensure_ascii=True)

    def object_of(self, event: Event) -> dict[str, Any]:
        if isinstance(event, Start):
            return self._start(event)
        if isinstance(event, Found):
            return {"time": rounded(event.seconds), "objective": value_of(event.objective),
                    "by": MAKERS.get(event.letter, "search"), "letter": event.letter, "values": self._values(event.x)}
        if isinstance(event, Bound):
            return {"time": rounded(event.seconds), "bound": value_of(event.value)}
        if isinstance(event, Progress):
            return {"time": rounded(event.seconds), "best": value_of(event.objective),
                    "bound": value_of(event.bound), "points": event.points, "iteration": event.iteration,
                    "violated": event.violated, "nodes": event.nodes, "share": event.share, "left": event.left,
                    "left_seconds": rounded(event.left_seconds), "rate": rounded(event.rate), "basis": event.basis,
                    "collected": event.collected, "idle": event.idle, "paused": rounded(event.paused)}
        if isinstance(event, Action):
            return {"time": rounded(event.seconds), "action": event.action, "key": event.key, "value": event.value}
        if isinstance(event, Setting):
            return {"time": rounded(event.seconds), "key": event.key, "value": event.value}
        return self._end(event)

    def _start(self, event: Start) -> dict[str, Any]:
        model = self._model
        return {"time": 0.0, "model": self._name,
                "sense": ("max" if model.maximise else "min") if checking.states_objective(model) else None,
                "variables": len(model.variables), "rows": len(model.rows), "rank": event.rank, "kind": event.kind,
                "searches": event.searches, "threads": event.threads, "began": rounded(event.began), "limit": event.limit,
                "size": size(model, shown_name(self._name), event), "warnings": warnings(model, event),
                "options": [{"key": option.key, "value": event.options[option.key], "default": option.default, "least": option.least,
                             "most": option.most, "text": option.text, "from_when": option.from_when}
                            for option in TABLE if option.key in event.options]}

    def _end(self, event: End) -> dict[str, Any]:
        return {"time": rounded(event.seconds), "status": event.status,
                "objective": value_of(event.objective), "bound": value_of(event.bound), "points": event.count,
                "values": None if event.x is None else self._values(event.x),
                "ray": None if event.ray is None else self._values(event.ray), "notes": event.notes}

    def _values(self, x: Point) -> dict[str, Any]:
        return {variable.name: value_of(value) for variable, value in zip(self._model.variables, x)}


def value_of(value: Fraction | None) -> int | str | None:
    """A whole number up to 2^53 as a number, all else as text, so that nothing is rounded on the way."""
    if value is None:
        return None
    value = Fraction(value)
    return int(value) if value.denominator == 1 and abs(value) <= GREATEST else str(value)


def rounded(number: float | None) -> float | None:
    return None if number is None else round(number, 3)
