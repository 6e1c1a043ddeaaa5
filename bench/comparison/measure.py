"""Fills the cells: the short runs of every row first, so that a cut comparison has something in each."""

import os
import statistics
import tempfile
from concurrent.futures import FIRST_EXCEPTION, ThreadPoolExecutor, wait

import answer
import cells as store
import checker
import machine
import peers
import solver

# Seconds; below, the first run is repeated, and the median counts.
SHORT = 5
REPEATS = 5
# Seconds. A signal that comes just before the first thread falls asleep at a lock does not wake it, and the first thread
# alone runs the handlers: so often it looks up.
LOOK_UP = 0.05


class Instance:
    def __init__(self, path):
        self.name = os.path.basename(path)[:-len(".opt")]
        self.hash = store.hash_of(path)
        with open(path, encoding="utf-8") as file:
            self.text = file.read()
        self.program = checker.Program(self.text)


def instances(folder, only=""):
    """All programs of the folder; natural order, so that 9 stands before 13."""
    names = [name for name in os.listdir(folder) if name.endswith(".opt") and only in name]
    return [Instance(os.path.join(folder, name)) for name in sorted(names, key=natural)]


def natural(name):
    parts, digits = [""], False
    for c in name:
        if c.isdigit() != digits:
            parts.append("")
            digits = c.isdigit()
        parts[-1] += c
    return [(int(p), "") if p.isdigit() else (-1, p) for p in parts]


class SolverColumn:
    """This solver with one set of options."""

    def __init__(self, binary, options):
        self.binary, self.options = os.path.abspath(binary), options
        self.name = ("latbox " + options).strip()
        self.tool = store.hash_of(binary)

    def run(self, instance, limit, folder, optimum):
        return solver.run(self.binary, self.options, instance.program, instance.text, limit, folder, optimum)


class PeerColumn:
    def __init__(self, peer):
        self.peer, self.name, self.tool = peer, peer.name, peer.version()

    def run(self, instance, limit, folder, _):
        return peers.run(self.peer, instance.program, limit, folder)


def measured(column, instance, limit, optimum):
    """The cell. A run for an optimum that it does not reach goes to its limit; its repeats end when they may have passed
    its best value."""
    first = once(column, instance, limit, optimum)
    runs = [first]
    if answer.answered(first) and first["at"] < SHORT:
        again = min(limit, 2 * first["at"] + 1) if first["timed_out"] else limit
        runs += [once(column, instance, again, optimum) for _ in range(REPEATS - 1)]
    # A run that the clock ended had less than its limit: another comparison, on a quieter machine, measures it anew.
    had = min(limit, first["cpu"]) if first["timed_out"] else limit
    return {**first, **medians(runs), "limit": had, "program": instance.hash, "tool": column.tool,
            "load": machine.load()}


def medians(runs):
    """Of the runs that end like the first one; all do but for what the limit of a repeat cuts."""
    alike = [r for r in runs if (r["status"], r["value"]) == (runs[0]["status"], runs[0]["value"])]
    whole = [r["cpu"] for r in alike if r["timed_out"] == runs[0]["timed_out"]]
    times = [r["at"] for r in alike]
    cpu = runs[0]["cpu"] if runs[0]["timed_out"] else statistics.median(whole)
    return {"at": round(statistics.median(times), 4), "cpu": round(cpu, 4), "times": times}


def once(column, instance, limit, optimum):
    with tempfile.TemporaryDirectory(dir=scratch()) as folder:
        return column.run(instance, limit, folder, optimum)


def scratch():
    """The solver puts its state into a file after each iteration: in memory, lest the disk be measured."""
    return "/dev/shm" if os.access("/dev/shm", os.W_OK) else None


def missing(todo, cells, limit):
    """(instance, column) pairs whose cell does not tell yet what a run under this limit would."""
    return [(i, c) for i, c in todo if not cells.valid(i.name, c.name, i.hash, c.tool, limit)]


def fill(todo, cells, limit, jobs, say):
    for step in sorted({min(SHORT, limit), limit}):
        def one(pair, step=step):
            instance, column = pair
            cell = measured(column, instance, step, cells.optimum(instance.name))
            cells.put(instance.name, column.name, cell)
            say("%s: %s: %s, %.2f s" % (instance.name, column.name, cell["status"], cell["at"]))

        with ThreadPoolExecutor(jobs) as pool:
            runs = [pool.submit(one, pair) for pair in missing(todo, cells, step)]
            try:
                finish(runs)
            except BaseException:
                pool.shutdown(wait=True, cancel_futures=True)
                raise


def finish(runs):
    """Waits for the futures; raises what the first of them that fails does."""
    waiting = set(runs)
    while waiting:
        done, waiting = wait(waiting, LOOK_UP, FIRST_EXCEPTION)
        for run in done:
            run.result()
