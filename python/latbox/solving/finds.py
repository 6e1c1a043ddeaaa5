"""The points of the model that are known: the best one, and all of them where more than one is wanted."""

from __future__ import annotations

from fractions import Fraction

from ..models.model import Model
from . import checking
from .events import Point


class Finds:
    def __init__(self, model: Model, wanted: int) -> None:
        """`wanted`: so many points, 0 for all. Where it is one, a point that is no better than the best is none."""
        self._model = model
        self._wanted = wanted
        self._best: tuple[Fraction | None, Point] | None = None
        self._points: dict[tuple[Fraction, ...], Point] = {}

    def take(self, x: Point) -> tuple[bool, bool]:
        """Whether this point of the model is a new one, and whether it is the best one now."""
        objective, known = self.objective_of(x), self.objective
        is_better = self._best is None or (objective is not None and known is not None and
                                           checking.is_better(self._model, objective, known))
        is_new = is_better
        if self._wanted != 1:
            key = tuple(x)
            is_new = key not in self._points
            self._points.setdefault(key, x)
        if is_better:
            self._best = objective, x
        return is_new, is_better

    def objective_of(self, x: Point) -> Fraction | None:
        return checking.objective_of(self._model, x) if checking.states_objective(self._model) else None

    @property
    def best(self) -> Point | None:
        return self._best[1] if self._best is not None else None

    @property
    def objective(self) -> Fraction | None:
        """Of the best point; None without one, or without an objective."""
        return self._best[0] if self._best is not None else None

    @property
    def count(self) -> int:
        return len(self._points) if self._wanted != 1 else int(self._best is not None)

    @property
    def all(self) -> list[Point]:
        """As they came. Requires that more than one is wanted."""
        return list(self._points.values())

    def points(self) -> list[Point]:
        """Best first, and no more than are wanted."""
        if self._wanted == 1:
            return [self._best[1]] if self._best else []
        points = self.all
        if checking.has_objective(self._model):
            points.sort(key=lambda x: checking.objective_of(self._model, x), reverse=self._model.maximise)
        return points[: self._wanted or None]
