"""What is tried with both checkers: one program, one proof, the verdicts that exhaustive search allows."""

import contextlib
import os
import shutil
import subprocess
import sys
from collections.abc import Callable, Iterator
from fractions import Fraction

sys.path.append(os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "e2e"))

# pylint: disable=wrong-import-position
import complete_count
import complete_programs
import plain_checker
from checker import FormatError
from checker import Program as Judged
from complete_programs import Candidate

# Seconds after which a checker hangs, on a busy machine too.
HANGS = 60
# The plain checker is slow: walks that are longer are left to the other one.
MOST_NODES = 4000
PROVED, REFUSED, NO_PROOF = 0, 1, 2

sys.set_int_max_str_digits(0)
sys.setrecursionlimit(10**5)


class Fault(Exception):
    """What must not be."""


class TooLong(Exception):
    """A walk that the plain checker is spared."""


def require(condition: object, *what: object) -> None:
    if not condition:
        raise Fault(" ".join(map(str, what)))


def program(number: int) -> Candidate:
    """A small program with all its points; its number may be moved on to one whose points can be listed."""
    while not (candidate := complete_programs.ordinary(number)):
        number += 1000003
    return candidate


def listed(text: str) -> Candidate | None:
    """A changed program with all its points, if it is one and they can be listed."""
    with contextlib.suppress(FormatError, complete_count.TooMany):
        if any(digits % 1 or not 0 <= digits <= 4 for digits in Judged(text).dx):
            return None
        candidate = Candidate(text, complete_count.tried_points)
        box = complete_count.finite_box(candidate.whole)
        tried = 1
        for low, high in box or []:
            tried *= max(high - low + 1, 0)
        if tried <= complete_count.MOST_TRIED:
            candidate.list()
            return candidate
    return None


def truth(judged: Judged, points: set[tuple[Fraction, ...]], kind: str) -> str:
    """The last line of a checker that has seen a proof of this kind: all, optimum or ties."""
    if not points:
        return "proof: none"
    if kind == "all":
        return "proof: all %d" % len(points)
    norms = [judged.norms(x) for x in points]
    best = min(norms)
    text = "proof: optimum %s" % best[0] + (" %s" % best[1] if best[1] else "")
    return text + (", %d points" % norms.count(best) if kind == "ties" else "")


def kinds(judged: Judged) -> list[str]:
    return ["all", "optimum", "ties"] if judged.dt else ["all"]


def plain(proof: str, text: str, most: int = 10 * MOST_NODES) -> tuple[int, str]:
    """Status and last line of the plain checker. Raises TooLong."""
    def compare(search: plain_checker.Search, walk: plain_checker.Walk, wanted: int) -> None:
        told = search.nodes
        search.nodes = min(told, most)
        try:
            plain_checker.compare(search, walk, wanted)
        except plain_checker.Refused:
            if walk.nodes > most and told > most:
                raise TooLong from None
            raise

    try:
        return PROVED, "proof: " + plain_checker.verdict(plain_checker.Program(text), plain_checker.Proof(proof), compare)
    except plain_checker.Refused as reason:
        return REFUSED, "proof: refused: %s" % reason
    except plain_checker.Malformed as reason:
        return NO_PROOF, str(reason)


def checked(binary: str, folder: str, *points: str) -> tuple[int, str]:
    """Status and last line of latbox-check on p.proof and p.opt. Raises Fault if it ends otherwise than a checker does."""
    try:
        done = subprocess.run([binary, "--proof=p.proof", "p.opt", *points], cwd=folder, capture_output=True, text=True,
                              timeout=HANGS, check=False)
    except subprocess.TimeoutExpired:
        raise Fault("latbox-check hangs") from None
    last = (done.stdout.splitlines() or [""])[-1]
    require(done.returncode in (PROVED, REFUSED, NO_PROOF), "latbox-check: status", done.returncode, done.stderr[-300:])
    if done.returncode == REFUSED:
        require(last.startswith("proof: refused: "), "latbox-check: refused, and says", last)
    if done.returncode == NO_PROOF:
        require(done.stderr and not last.startswith("proof: "), "latbox-check: status 2, and says", last, done.stderr)
    return done.returncode, last


def agreed(mine: tuple[int, str], other: tuple[int, str]) -> None:
    require(mine[0] == other[0] and (mine[0] != PROVED or mine[1] == other[1]), "plain:", *mine, "latbox-check:", *other)


def write(folder: str, name: str, text: str) -> None:
    with open(os.path.join(folder, name), "w", encoding="latin-1", newline="") as file:
        file.write(text)


def proved(binary: str, folder: str, kind: str) -> tuple[str, str]:
    """The verdict of latbox-all on p.opt, and its proof, which stays as p.proof. Raises Fault."""
    path = os.path.join(folder, "p.proof")
    with contextlib.suppress(FileNotFoundError):
        os.remove(path)
    options = {"all": ["--all=1"], "optimum": [], "ties": ["--ties=1"]}[kind]
    done = subprocess.run([binary, "--quiet=1", "--resume=0", "--proof=p.proof", *options, "p.opt"], cwd=folder, timeout=300,
                          capture_output=True, text=True, check=False)
    require(done.returncode in (10, 20), kind, "latbox-all: status", done.returncode, done.stderr[-300:])
    require(os.path.exists(path), kind, "latbox-all: no proof", done.stderr[-300:])
    with open(path, encoding="latin-1", newline="") as file:
        return (done.stdout.splitlines() or [""])[-1], file.read()


class Record:
    """A file with one line for each number that is done; with it the same command goes on where it was ended."""

    def __init__(self, path: str, first: int, last: int) -> None:
        self.path, self.range = path, range(first, last)
        self.done: dict[int, list[str]] = {}
        if os.path.isfile(path):
            with open(path, encoding="utf-8") as file:
                # A kill may have torn a line, which then counts for nothing.
                lines = [line.split() for line in file.read().split("\n") if line.endswith(" .")]
            self.done = {int(line[0]): line[1:-1] for line in lines if int(line[0]) in self.range}

    def go_on(self, judge: Callable[[int], list[str]]) -> Iterator[tuple[int, str]]:
        """Judges what is not done; yields what is wrong."""
        with open(self.path, "a", encoding="utf-8") as file:
            print(file=file)
            for number in self.range:
                if number in self.done:
                    continue
                try:
                    self.done[number] = judge(number)
                except (Fault, subprocess.TimeoutExpired) as fault:
                    yield number, str(fault)
                    continue
                print(number, *self.done[number], ".", file=file, flush=True)

    def share(self, word: str) -> str:
        count = sum(word in words for words in self.done.values())
        return "%d %s" % (count, word)


def keep(folder: str, where: list[str], number: int) -> None:
    """Copies what went wrong to the folder that is told, if one is."""
    for name in ("p.opt", "p.proof") if where else ():
        if os.path.exists(os.path.join(folder, name)):
            os.makedirs(where[0], exist_ok=True)
            shutil.copy(os.path.join(folder, name), os.path.join(where[0], "%d%s" % (number, name[1:])))
