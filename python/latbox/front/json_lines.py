"""What happens, as JSON: an event a line, for programs that watch. docs/solve.md holds the schema."""

from __future__ import annotations

import json
from fractions import Fraction
from typing import IO, Any

from ..models.model import Model
from ..solving import checking
from ..solving.events import Bound, End, Event, Found, Point, Progress, Start

# What every reader of JSON holds exactly.
GREATEST = 2**53
MAKERS = {"C": "complete", "P": "presolve"}


class JsonLines:
    def __init__(self, file: IO[str], model: Model, name: str) -> None:
        self._file = file
        self._model = model
        self._name = name

    def tell(self, event: Event) -> None:
        """Writes a line, as a whole. Throws OSError."""
        self._file.write(json.dumps(self.object_of(event), ensure_ascii=True) + "\n")
        self._file.flush()

    def object_of(self, event: Event) -> dict[str, Any]:
        if isinstance(event, Start):
            return self._start(event)
        if isinstance(event, Found):
            return {"event": "point", "time": rounded(event.seconds), "objective": value_of(event.objective),
                    "by": MAKERS.get(event.letter, "search"), "letter": event.letter, "values": self._values(event.x)}
        if isinstance(event, Bound):
            return {"event": "bound", "time": rounded(event.seconds), "bound": value_of(event.value)}
        if isinstance(event, Progress):
            return {"event": "progress", "time": rounded(event.seconds), "best": value_of(event.objective),
                    "bound": value_of(event.bound), "points": event.points, "iteration": event.iteration,
                    "violated": event.violated, "nodes": event.nodes, "share": event.share, "left": event.left}
        return self._end(event)

    def _start(self, event: Start) -> dict[str, Any]:
        model = self._model
        return {"event": "start", "time": 0.0, "model": self._name,
                "sense": ("max" if model.maximise else "min") if checking.states_objective(model) else None,
                "variables": len(model.variables), "rows": len(model.rows), "rank": event.rank, "kind": event.kind,
                "searches": event.searches, "threads": event.threads}

    def _end(self, event: End) -> dict[str, Any]:
        return {"event": "end", "time": rounded(event.seconds), "status": event.status,
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


def rounded(seconds: float) -> float:
    return round(seconds, 3)
