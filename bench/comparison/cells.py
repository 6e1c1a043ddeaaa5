"""The measured cells of the table, kept one by one in a JSON file, so that a cut comparison goes on where it was.

A cell is the answer of one column on one program, with what it is good for: the hash of the program's file, the hash of
the solver's binary or the version of the peer, and the limit it ran under.
"""

import hashlib
import json
import os
import threading


def hash_of(path):
    with open(path, "rb") as file:
        return hashlib.sha256(file.read()).hexdigest()[:16]


class Cells:
    """Safe for several threads. `path` is replaced as a whole at each cell: a cut leaves the old or the new one."""

    def __init__(self, path, fresh=False):
        self.path = path
        self.lock = threading.Lock()
        self.cells = {}
        self.facts = {}
        if not fresh and os.path.exists(path):
            with open(path, encoding="utf-8") as file:
                stored = json.load(file)
            self.cells, self.facts = stored["cells"], stored["facts"]

    @staticmethod
    def key(program, column):
        return "%s | %s" % (program, column)

    def get(self, program, column):
        """The cell whatever it is good for, or None."""
        return self.cells.get(self.key(program, column))

    def put(self, program, column, cell):
        with self.lock:
            self.cells[self.key(program, column)] = cell
            self.save()

    def optimum(self, program):
        """The value that a column has proven for the program, or None."""
        found = [c["value"] for key, c in self.cells.items() if key.startswith(program + " | ") and c["status"] == "proven"]
        return found[0] if found else None

    def note(self, facts):
        with self.lock:
            self.facts.update(facts)
            self.save()

    def save(self):
        os.makedirs(os.path.dirname(os.path.abspath(self.path)), exist_ok=True)
        with open(self.path + ".new", "w", encoding="utf-8") as file:
            json.dump({"facts": self.facts, "cells": self.cells}, file, indent=1, sort_keys=True)
        os.replace(self.path + ".new", self.path)

    def valid(self, program, column, program_hash, tool, limit):
        """Whether the cell still tells what a run under this limit would."""
        cell = self.get(program, column)
        return (cell is not None and cell["program"] == program_hash and cell["tool"] == tool and
                (cell["limit"] >= limit or ended_by_itself(cell)))


def ended_by_itself(cell):
    return not cell["timed_out"]
