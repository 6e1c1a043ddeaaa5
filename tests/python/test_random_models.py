"""A hundred random models from each format against exhaustive search, and a hundred of other kinds by other settings; random_models.py
and random_kinds.py do more of it."""

from __future__ import annotations

import os
import unittest

import support  # noqa: F401
import harness
import random_kinds
import random_models

COUNT = 100


class RandomModelsTest(unittest.TestCase):
    def test_models(self) -> None:
        os.environ["LATBOX_BIN_DIR"] = os.path.dirname(harness.Settings.binary)
        for seed in range(COUNT):
            with self.subTest(seed=seed):
                self.assertIsNone(random_models.wrong(seed))

    def test_kinds(self) -> None:
        os.environ["LATBOX_BIN_DIR"] = os.path.dirname(harness.Settings.binary)
        for seed in range(COUNT):
            with self.subTest(seed=seed):
                self.assertIsNone(random_kinds.wrong(seed))

    def test_the_models_are_of_all_kinds(self) -> None:
        """Else the test would say little."""
        statuses = [random_models.exhaustive(random_models.random_model(seed))[0] for seed in range(COUNT)]
        plain = [random_models.random_model(seed) for seed in range(COUNT)]
        self.assertGreater(statuses.count("infeasible"), 10)
        self.assertGreater(statuses.count("optimal"), 50)
        self.assertTrue(any(model.maximise for model in plain) and any(not model.c for model in plain))
        kinds = [random_kinds.random_model(seed) for seed in range(COUNT)]
        self.assertGreater(sum(any(model.semi) for model, _, _ in kinds), 30)
        self.assertGreater(sum(bool(chains) for _, _, chains in kinds), 30)


if __name__ == "__main__":
    harness.main()
