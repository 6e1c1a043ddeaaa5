"""The rules of the package: imports lead downward, every file says what it is, the standard library is enough."""

from __future__ import annotations

import ast
import os
import sys
import unittest

import support
import harness

FOLDER = os.path.join(support.PACKAGE, "latbox")
# From the bottom: a module imports from its own layer and those before it. Modules of the package itself that are not
# named here are commands or the public face, and may import all.
LAYERS = (("errors", "version", "tool"), ("models",), ("solving",), ("view",), ("front",), ("farm",))


def layer(module: str) -> int:
    """Of a module by its first name below the package."""
    first = module.split(".")[0]
    return next((k for k, names in enumerate(LAYERS) if first in names), len(LAYERS))


def sources() -> dict[str, str]:
    """{dotted name below the package: text}"""
    found = {}
    for folder, _, names in os.walk(FOLDER):
        for name in names:
            if name.endswith(".py"):
                path = os.path.join(folder, name)
                with open(path, encoding="utf-8") as file:
                    found[os.path.relpath(path, FOLDER)[:-3].replace(os.sep, ".")] = file.read()
    return found


def imported(module: str, text: str) -> list[str]:
    """Modules of the package that a module imports, as dotted names below it."""
    parents = module.split(".")[:-1]
    found = []
    for node in ast.walk(ast.parse(text)):
        if isinstance(node, ast.ImportFrom) and node.level:
            base = parents[:len(parents) - node.level + 1]
            found += [".".join(base + ([node.module] if node.module else [alias.name])) for alias in node.names]
        elif isinstance(node, ast.ImportFrom) and (node.module or "").startswith("latbox."):
            found.append((node.module or "")[len("latbox."):])
    return found


def upward(tree: dict[str, str]) -> list[str]:
    return ["%s imports %s" % (module, other) for module, text in sorted(tree.items())
            for other in imported(module, text) if layer(other) > layer(module)]


class LayersTest(unittest.TestCase):
    def test_imports_lead_downward(self) -> None:
        tree = sources()
        self.assertIn("models.lp", tree)
        self.assertEqual(upward(tree), [])

    def test_every_file_says_what_it_is(self) -> None:
        silent = [module for module, text in sources().items() if text.strip() and not ast.get_docstring(ast.parse(text))]
        self.assertEqual(silent, [])

    def test_the_standard_library_is_enough(self) -> None:
        """What else a module imports is asked for where it is used, and may be missing."""
        for module, text in sources().items():
            for node in ast.parse(text).body:
                names = [alias.name for alias in node.names] if isinstance(node, ast.Import) else []
                names += [node.module or ""] if isinstance(node, ast.ImportFrom) and not node.level else []
                for name in names:
                    first = name.split(".")[0]
                    self.assertTrue(first in sys.stdlib_module_names or first == "latbox", "%s imports %s" % (module, name))

    def test_the_rules_say_no(self) -> None:
        for text in ("from ..front import command\n", "from ..solving.statuses import X\n", "from .. import front\n",
                     "from latbox.front import x\n", "from ..api import x\n"):
            self.assertEqual(len(upward({"models.lp": text})), 1, text)
        for text in ("from ..errors import Place\n", "from . import lp\n", "from .model import INF\n", "import front\n"):
            self.assertEqual(upward({"models.lp": text}), [], text)
        self.assertEqual(upward({"convert": "from .front import x\n", "front.a": "from ..models.lp import x\n"}), [])


if __name__ == "__main__":
    harness.main()
