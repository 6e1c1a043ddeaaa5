#!/usr/bin/env python3
"""CPU time to the first solution, for each program of a folder and each set of options, as a markdown table.

    python3 bench/time_to_solution.py [options] FOLDER

  --binary=PATH     the solver; default build/release/latbox
  --limit=SECONDS   CPU seconds of each run; default 20
  --options=TEXT    one more column of the solver with these options; "" means the defaults. Default: two columns,
                    the defaults and "--eprune=0 --beta=30"
  --only=TEXT       the programs whose names contain TEXT
  --no-peers        the solver alone

Beside it glpsol and cbc (branch and bound) solve the same programs where they are installed. A time counts the process's
own user and system seconds, so that a busy machine disturbs little. Every answer is checked exactly against the program
as the user wrote it, the peers' too: their tolerances can take a point for feasible that is not. Programs with targets
run to the limit, or to the proof of the optimum; their cells show the best value and when it was reached.
"""

import os
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import time
from fractions import Fraction

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "tests", "e2e"))
import checker  # noqa: E402

CPU_TICK = os.sysconf("SC_CLK_TCK")
# A run that gets no processor must end too.
PATIENCE = 4

# ----------------------------------------------------------------- a run under a limit of CPU time


class Run:
    """A process, its lines with the CPU time at which each came, and its end."""

    def __init__(self, command, limit):
        self.process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                        stderr=subprocess.STDOUT, text=True, errors="replace")
        self.lines = []
        reader = threading.Thread(target=self.follow)
        reader.start()
        self.timed_out = not self.wait(limit)
        reader.join()

    def follow(self):
        for line in self.process.stdout:
            self.lines.append((self.cpu_now(), line.rstrip("\n")))

    def cpu_now(self):
        try:
            with open("/proc/%d/stat" % self.process.pid, encoding="utf-8") as file:
                fields = file.read().rsplit(")", 1)[1].split()
            return (int(fields[11]) + int(fields[12])) / CPU_TICK
        except (OSError, IndexError):
            return 0.0

    def wait(self, limit):
        """False if the limit ended the run. The end is asked for first, so that files are written."""
        start = time.monotonic()
        stop = None
        while True:
            pid, _, usage = os.wait4(self.process.pid, os.WNOHANG)
            if pid:
                self.process.returncode = 0
                self.cpu = usage.ru_utime + usage.ru_stime
                return stop is None
            now = time.monotonic()
            if stop is None and (self.cpu_now() > limit or now - start > PATIENCE * limit):
                self.process.send_signal(signal.SIGTERM)
                stop = now
            elif stop is not None and now - stop > 5:
                self.process.kill()
            time.sleep(0.01 if now - start < 2 else 0.1)

    def improvements(self, pattern):
        """(CPU time, value) for each change of the value that the pattern finds in a line."""
        steps = []
        for cpu, line in self.lines:
            match = re.search(pattern, line)
            if match and (not steps or steps[-1][1] != match.group(1)):
                steps.append((cpu, match.group(1)))
        return steps


def seconds(value):
    return "%.2f s" % value if value < 10 else "%.0f s" % value


def plain(value):
    return "%d" % value if value == int(value) else "%g" % value


# ----------------------------------------------------------------- the solver


def run_solver(binary, options, program, text, limit, folder):
    path = os.path.join(folder, "program.opt")
    for end in (".opt", ".sol", ".lat"):
        if os.path.exists(path[:-4] + end):
            os.unlink(path[:-4] + end)
    with open(path, "w", encoding="utf-8") as file:
        file.write(text)
    run = Run([binary, *options.split(), path], limit)
    best = best_star(program, path[:-4] + ".sol")
    if best is None:
        failed = next((line for _, line in run.lines if "FAIL" in line or "NO SOLUTIONS" in line), None)
        return failed or "none in %s" % seconds(run.cpu)
    if not program.at:
        return seconds(run.cpu)
    steps = run.improvements(r"T\(bestTarget\) = ([^ ,]+)")
    return "%s at %s" % (plain(shown(program, best)), seconds(steps[-1][0] if steps else run.cpu))


def best_star(program, path):
    """The x of the best star, every star having been checked."""
    if not os.path.exists(path):
        return None
    with open(path, encoding="utf-8") as file:
        stars = checker.read_stars(file.read())
    for star in stars:
        checker.check_star(program, star)
    return stars[0].x if stars else None


def shown(program, x):
    """The value of the first target, which is the only one of these programs."""
    return checker.dot(program.at[0], x)


# ----------------------------------------------------------------- branch and bound beside it


def comparable(program):
    """Whole variables and at most one target with a direction: what the conversion below carries."""
    return not any(program.dx) and len(program.at) <= 1 and not program.finite_targets


def whole(row, sides):
    """The row and its sides times the common denominator: MPS has no fractions."""
    factor = 1
    for value in [*row, *(s for s in sides if abs(s) != checker.INF)]:
        denominator = Fraction(value).denominator
        factor *= denominator // gcd(factor, denominator)
    return [int(v * factor) for v in row], [s if abs(s) == checker.INF else int(s * factor) for s in sides]


def gcd(a, b):
    while b:
        a, b = b, a % b
    return a


def mps_rows(program):
    """(kind, name, coefficients, right-hand side, range) of each row; the target first, to be minimised."""
    sign = -1 if program.dt and program.dt[0] > 0 else 1
    target = program.at[0] if program.at else [0] * program.n
    yield "N", "T", whole([sign * v for v in target], [])[0], 0, None
    for i, (row, b) in enumerate(zip(program.ag, program.bg)):
        row, (b,) = whole(row, [b])
        yield "E", "E%d" % i, row, b, None
    for i, (row, low, high) in enumerate(zip(program.au, program.lu, program.ru)):
        row, (low, high) = whole(row, [low, high])
        if abs(high) == checker.INF:
            yield "G", "U%d" % i, row, low, None
        else:
            yield "L", "U%d" % i, row, high, None if abs(low) == checker.INF else high - low


def mps(program):
    rows = list(mps_rows(program))
    lines = ["NAME PROGRAM FREE", "ROWS"] + [" %s %s" % row[:2] for row in rows] + ["COLUMNS", " M1 'MARKER' 'INTORG'"]
    for j in range(program.n):
        lines += [" X%d %s %d" % (j, name, row[j]) for _, name, row, _, _ in rows if row[j]]
    lines += [" M2 'MARKER' 'INTEND'", "RHS"]
    lines += [" R %s %d" % (name, side) for _, name, _, side, _ in rows if side]
    lines += ["RANGES"] + [" G %s %d" % (row[1], row[4]) for row in rows if row[4] is not None] + ["BOUNDS"]
    for j, (low, high) in enumerate(zip(program.lx, program.rx)):
        lines += [" MI B X%d" % j if low == -checker.INF else " LO B X%d %d" % (j, low)]
        lines += [" PL B X%d" % j if high == checker.INF else " UP B X%d %d" % (j, high)]
    return "\n".join(lines + ["ENDATA", ""])


class Glpsol:
    name = "glpsol"
    incumbent = r"mip = +(-?[0-9.e+]+)"

    @staticmethod
    def command(path, answer):
        return ["glpsol", "--freemps", path, "--write", answer]

    @staticmethod
    def x(answer, n):
        values = [0] * n
        with open(answer, encoding="utf-8") as file:
            fields = [line.split() for line in file]
        if not any(f[:2] == ["s", "mip"] and f[4] in ("o", "f") for f in fields):
            return None
        for f in fields:
            if f and f[0] == "j":
                values[int(f[1]) - 1] = round(float(f[2]))
        return values

    @staticmethod
    def refuted(lines):
        return any("NO INTEGER FEASIBLE" in line or "NO PRIMAL FEASIBLE" in line for line in lines)


class Cbc:
    name = "cbc"
    incumbent = r"(?:Integer solution of|Objective value:) +(-?[0-9.e+]+)"

    @staticmethod
    def command(path, answer):
        return ["cbc", path, "-solve", "-solution", answer, "-quit"]

    @staticmethod
    def x(answer, n):
        values = [0] * n
        with open(answer, encoding="utf-8") as file:
            lines = file.read().splitlines()
        if not lines or "nfeasible" in lines[0] or "no integer solution" in lines[0]:
            return None
        for line in lines[1:]:
            match = re.match(r"(?:\*\*)?\s*\d+ X(\d+) +(\S+)", line)
            if match:
                values[int(match.group(1))] = round(float(match.group(2)))
        return values

    @staticmethod
    def refuted(lines):
        return any("nfeasible" in line for line in lines)


def run_peer(peer, program, limit, folder):
    if not comparable(program):
        return "not compared"
    path, answer = os.path.join(folder, "program.mps"), os.path.join(folder, "answer")
    if os.path.exists(answer):
        os.unlink(answer)
    with open(path, "w", encoding="utf-8") as file:
        file.write(mps(program))
    # Line by line, so that the time of an incumbent is the time of its line.
    run = Run(["stdbuf", "-oL", *peer.command(path, answer)], limit)
    steps = run.improvements(peer.incumbent)
    if run.timed_out or not os.path.exists(answer):
        if not steps or not program.at:
            return "none in %s" % seconds(run.cpu)
        return "%s at %s" % (plain(abs(float(steps[-1][1]))), seconds(steps[-1][0]))
    x = peer.x(answer, program.n)
    if x is None:
        refuted = peer.refuted([line for _, line in run.lines])
        return "%s after %s" % ("claims: no solution" if refuted else "gives up", seconds(run.cpu))
    if program.violation([Fraction(v) for v in x]):
        return "wrong answer after %s" % seconds(run.cpu)
    if not program.at:
        return seconds(run.cpu)
    found = "%s at %s" % (plain(shown(program, x)), seconds(steps[-1][0] if steps else run.cpu))
    return "%s, proven after %s" % (found, seconds(run.cpu))


# ----------------------------------------------------------------- the table


def parse(arguments):
    settings = {"binary": "build/release/latbox", "limit": 20.0, "options": [], "only": "", "peers": True, "folder": None}
    for argument in arguments:
        key, _, value = argument.lstrip("-").partition("=")
        if argument == "--no-peers":
            settings["peers"] = False
        elif argument.startswith("--options="):
            settings["options"].append(value)
        elif argument.startswith("--") and key in settings:
            settings[key] = float(value) if key == "limit" else value
        elif not argument.startswith("--") and settings["folder"] is None:
            settings["folder"] = argument
        else:
            sys.exit(__doc__)
    if settings["folder"] is None:
        sys.exit(__doc__)
    settings["options"] = settings["options"] or ["", "--eprune=0 --beta=30"]
    return settings


def show(cells):
    print("| " + " | ".join(cells) + " |", flush=True)


def main(arguments):
    settings = parse(arguments)
    peers = [p for p in (Glpsol, Cbc) if settings["peers"] and shutil.which(p.name)]
    show(["program", "rows x variables", *("`%s`" % o if o else "defaults" for o in settings["options"]),
          *(p.name for p in peers)])
    show(["---"] * (2 + len(settings["options"]) + len(peers)))
    with tempfile.TemporaryDirectory() as folder:
        for name in sorted(os.listdir(settings["folder"])):
            if not name.endswith(".opt") or settings["only"] not in name:
                continue
            with open(os.path.join(settings["folder"], name), encoding="utf-8") as file:
                text = file.read()
            program = checker.Program(text)
            cells = [run_solver(os.path.abspath(settings["binary"]), options, program, text, settings["limit"], folder)
                     for options in settings["options"]]
            cells += [run_peer(peer, program, settings["limit"], folder) for peer in peers]
            show([name[:-4], "%d x %d" % (len(program.ag) + len(program.au), program.n), *cells])


if __name__ == "__main__":
    main(sys.argv[1:])
