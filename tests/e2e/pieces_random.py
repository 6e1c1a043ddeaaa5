#!/usr/bin/env python3
"""Pieces of random programs against the undivided run: pieces_random.py BINARY FIRST LAST

Program number i is made from i alone (complete_programs.py), and so is what is done with it: what is searched for, how
many pieces there are, which of them are split again before or after they are done, in which order, and which results go
through --take. Verdict, status, points and proof of the join must be those of the undivided run. Prints the programs that
are wrong and a line of totals; exit status 0 if none is wrong.
"""

import os
import random
import shutil
import subprocess
import sys
import tempfile

import complete_programs

KINDS = (("--all=1",), ("--all=1", "--count=1"), (), ("--ties=1",), ("--count=1",))
LIMIT = 300


class Fault(Exception):
    pass


def require(condition, *what):
    if not condition:
        raise Fault(" ".join(map(str, what)))


class Pieces:
    """latbox-all on a folder of pieces "d" of the program p.opt."""

    def __init__(self, binary, folder):
        self.binary = binary
        self.folder = folder

    def run(self, *options, statuses=(0,), name=None):
        arguments = [self.binary, "--quiet=1", *options] + ([name] if name else ["--jobs=d"])
        done = subprocess.run(arguments, cwd=self.folder, capture_output=True, text=True, timeout=LIMIT, check=False)
        require(done.returncode in statuses, options, "status", done.returncode, done.stdout, done.stderr)
        return done.returncode, done.stdout

    def split(self, count, *options):
        self.run("--jobs=d", "--split=%d" % count, *options, name="p.opt")

    def listed(self):
        """(number, state) of each piece that matters."""
        return [(int(line.split()[0]), line.split()[1]) for line in self.run("--pieces=1")[1].splitlines()]

    def open(self):
        return [number for number, state in self.listed() if state in ("open", "partial")]

    def path(self, *names):
        return os.path.join(self.folder, *names)

    def lines(self, name):
        """Of a points file, sorted, without times and parameters; nothing if there is none."""
        if not os.path.exists(self.path(name)):
            return None
        with open(self.path(name), encoding="utf-8") as file:
            return sorted(line.split("|")[:4] for line in file)

    def bytes(self, name):
        if not os.path.exists(self.path(name)):
            return None
        with open(self.path(name), "rb") as file:
            return file.read()


def do_elsewhere(pieces, number):
    """The job is done in a folder with what a worker gets, and its result is taken."""
    worker = pieces.path("w")
    shutil.rmtree(worker, ignore_errors=True)
    os.mkdir(worker)
    for name in ("program.opt", "lattice", "best", "proof"):
        if os.path.exists(pieces.path("d", name)):
            shutil.copy(pieces.path("d", name), worker)
    with open(pieces.path("d", "manifest"), encoding="utf-8") as file:
        lines = [line for line in file if not line.startswith("piece ") or line.startswith("piece %d " % number)]
    with open(os.path.join(worker, "manifest"), "w", encoding="utf-8") as file:
        file.writelines(lines)
    pieces.run("--jobs=w", "--job=%d" % number, name="--threads=1")
    pieces.run("--take=w/%d.result" % number, "--job=%d" % number)


def do_all(pieces, draw):
    while True:
        left = pieces.open()
        if not left:
            return
        number = draw.choice(left)
        choice = draw.random()
        if choice < 0.15:
            pieces.run("--job=%d" % number, "--split=%d" % draw.randint(1, 4))
        elif choice < 0.5:
            do_elsewhere(pieces, number)
        else:
            pieces.run("--job=%d" % number)


def judge(binary, folder, number, text):
    """Raises Fault."""
    draw = random.Random(number)
    for name in os.listdir(folder):
        path = os.path.join(folder, name)
        shutil.rmtree(path) if os.path.isdir(path) else os.remove(path)
    pieces = Pieces(binary, folder)
    with open(pieces.path("p.opt"), "w", encoding="utf-8") as file:
        file.write(text)
    kind = draw.choice(KINDS)
    proves = draw.random() < 0.5
    proof = ("--proof=u.proof",) if proves else ()
    undivided = pieces.run("--out=u.all", *kind, *proof, statuses=(10, 20), name="p.opt")
    pieces.split(draw.randint(1, 12), *kind, *(("--proof=1",) if draw.random() < 0.7 else ()))
    do_all(pieces, draw)
    joined = pieces.run("--join=1", "--out=j.all", *(("--proof=j.proof",) if proves else ()), statuses=(10, 20))
    require(joined == undivided, kind, "joined:", joined, "not", undivided)
    require(pieces.lines("j.all") == pieces.lines("u.all"), kind, "other points")
    require(pieces.bytes("j.proof") == pieces.bytes("u.proof"), kind, "another proof")


def judge_range(binary, first, last, make=complete_programs.ordinary):
    """(number, what is wrong) of those that are."""
    memory = "/dev/shm" if os.access("/dev/shm", os.W_OK) else None
    wrong = []
    with tempfile.TemporaryDirectory(dir=memory) as folder:
        for number in range(first, last):
            try:
                judge(binary, folder, number, make(number).text)
            except (Fault, subprocess.TimeoutExpired) as fault:
                wrong.append((number, str(fault)))
    return wrong


def main(arguments):
    if len(arguments) != 4:
        sys.exit("usage: %s BINARY FIRST LAST" % arguments[0])
    first, last = int(arguments[2]), int(arguments[3])
    wrong = judge_range(os.path.abspath(arguments[1]), first, last)
    for number, fault in wrong:
        print("program %d: %s" % (number, fault))
    print("%d of %d right" % (last - first - len(wrong), last - first))
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
