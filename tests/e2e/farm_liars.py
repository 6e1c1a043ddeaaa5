"""Workers that lie: real ones, in whose store the program of the jobs is replaced by one that changes each result first."""

import os
import sys

SUMS = (0xCBF29CE484222325, 0x84222325CBF29CE4)


def digest(text):
    """As latbox-all has it."""
    sums = list(SUMS)
    for byte in text.encode():
        sums = [(one ^ byte) * 0x100000001B3 & (1 << 64) - 1 for one in sums]
    return "%016x%016x" % tuple(sums)


def sealed(lines):
    text = "".join(line + "\n" for line in lines)
    return text + "end %s\n" % digest(text)


def torn(lines):
    return sealed(lines)[: len(sealed(lines)) // 2]


def damaged(lines):
    text = sealed(lines)
    return text.replace("nodes ", "nodes 1", 1)


def wrong(lines):
    """A point that is none: the first value is another one; where there is no point, one of zeros."""
    place = next(i for i, line in enumerate(lines) if line.startswith("points "))
    points = lines[place + 1 :]
    if not points:
        return damaged(lines)
    words = points[0].split()
    words[1] = str(int(words[1]) + 1)
    return sealed(lines[: place + 1] + [" ".join(words)] + points[1:])


def empty(lines):
    """It has found nothing, it says."""
    place = next(i for i, line in enumerate(lines) if line.startswith("points "))
    return sealed(lines[:place] + ["points 0"])


LIES = {"torn": torn, "damaged": damaged, "wrong": wrong, "empty": empty}

# The count of lies is kept beside the worker's store: after so many it is honest, and as fast as any.
WRAPPER = """#!/bin/sh
[ "$(cat '%(left)s')" != 0 ] || exec '%(real)s' "$@"
'%(real)s' "$@" && exec '%(python)s' '%(here)s/farm_liars.py' %(kind)s '%(left)s' "$@"
"""


def lie(arguments, kind, left):
    """What the program does once the job is done."""
    number = next(word.split("=")[1] for word in arguments if word.startswith("--job="))
    path = "jobs/%s.result" % number
    with open(left, encoding="ascii") as file:
        count = int(file.read())
    with open(path, encoding="ascii") as file:
        lines = file.read().split("\n")[:-2]
    if count == 0 or (kind in ("wrong", "empty") and "points 0" in lines):
        return
    with open(left, "w", encoding="ascii") as file:
        file.write(str(count - 1))
    with open(path, "w", encoding="ascii") as file:
        file.write(LIES[kind](lines))


def spoil(worker, real, kind, times):
    """From its second piece on this worker lies so many times. It stands still meanwhile, so that it has no time for more."""
    worker.stop_in_a_piece()

    def programs():
        return [os.path.join(folder, name) for folder, _, names in os.walk(worker.folder) for name in names
                if name.endswith(("latbox-all", "latbox-job")) and os.path.basename(folder) == "cache"]

    left = worker.folder + ".lies"
    with open(left, "w", encoding="ascii") as file:
        file.write(str(times))
    script = worker.folder + ".liar"
    with open(script, "w", encoding="utf-8") as file:
        file.write(WRAPPER % {"python": sys.executable, "real": real, "here": os.path.dirname(os.path.abspath(__file__)),
                              "kind": kind, "left": left})
    os.chmod(script, 0o755)
    (path,) = programs()
    os.replace(script, path)
    worker.go_on()
    return left


if __name__ == "__main__":
    lie(sys.argv[3:], sys.argv[1], sys.argv[2])
