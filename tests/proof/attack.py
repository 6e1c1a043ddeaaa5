#!/usr/bin/env python3
"""Changed proofs, none of which may prove what is false: attack.py LATBOX_ALL LATBOX_CHECK FROM TO RECORD [KEEP]

Of seed s: a small program, a proof of it (both the same for eight seeds), and a change or several: of a number, a sign,
a line, a level, a point, the verdict, or of the program. Then, mostly, the counts (nodes, points, verdict) become those
of the walk that the changed proof asks for, so that what is left to refuse it is what the walk meets. Either it is
refused, by both checkers, or it proves what exhaustive search finds true. The proofs are those of LATBOX_ALL; of the
naive prover where that is `naive`, and for every fourth program. A record is gone on from; KEEP is a folder for what
went wrong. A proof has reached the walk if all of it but its counts was right, and a walk was in it.
"""

import copy
import functools
import os
import random
import re
import sys
import tempfile
from collections.abc import Callable

import naive_prover
import plain_checker
import trial
from plain_checker import Level, Proof, Search, dot


def text_of(proof: Proof) -> str:
    """The file, with its counts of lines and numbers put right."""
    def line(*parts: object) -> None:
        lines.append(" ".join(" ".join(map(str, part)) if isinstance(part, list) else str(part) for part in parts if part != []))

    lines: list[str] = []
    line("latbox-proof 1")
    line("verdict", proof.kind, proof.norms, [] if proof.count is None else proof.count)
    if proof.point is not None:
        line("point", proof.point)
    for search in proof.searches:
        line("search", search.goal)
        line("objective", len(search.objective))
        for kind, signs in search.objective:
            line(kind, signs)
        line("derive", len(search.steps))
        for step in search.steps:
            line(step.string)
        if search.contradiction:
            line("contradiction")
            continue
        line("lattice", len(search.basis), len(search.equations), len(search.coordinates))
        line("equations", search.equations)
        line("coordinates", search.coordinates)
        line("point", search.point)
        for word, vectors in (("basis", search.basis), ("dual", search.dual), ("constant", [search.constant])):
            for vector in vectors:
                line(word, vector)
        for level in reversed(search.levels):
            line("level", level.number, level.divisor, len(level.sides), level.main)
            for side in level.sides:
                line("side", side)
        line("walk nodes %d points %d" % (search.nodes, search.points))
    line("end")
    return "\n".join(lines) + "\n"


def nudged(value: int, pick: random.Random) -> int:
    return pick.choice([value + 1, value - 1, -value, 2 * value, 0, value + pick.randint(-99, 99), value * 10**20, value // 2])


class Change:
    """Changes of a parsed proof. Each is a method; one for which there is nothing to change leaves it as it is."""

    def __init__(self, proof: Proof, points: list[tuple], judged, pick: random.Random) -> None:
        self.proof, self.points, self.judged, self.pick = proof, points, judged, pick
        self.search: Search = pick.choice([s for s in proof.searches if not s.contradiction] or proof.searches)
        self.rank = 0 if self.search.contradiction else len(self.search.basis)

    def level(self) -> Level:
        return self.pick.choice(self.search.levels)

    def replace(self, level: Level, **fields: object) -> None:
        self.search.levels[level.number] = level._replace(**fields)

    def divisor(self) -> None:
        level = self.level()
        self.replace(level, divisor=self.pick.choice([1, level.divisor + 1, 2 * level.divisor, nudged(level.divisor, self.pick)]))

    def main(self) -> None:
        """Another vector that leads on, or whatever."""
        level, pick = self.level(), self.pick
        others = [g for other in self.search.levels[level.number:] for g in [other.main, *other.sides]]
        factor, other = pick.randint(-3, 3), pick.choice(others + self.search.dual[level.number:])
        main = [pick.choice([1, 1, 2, 5]) * a + factor * b for a, b in zip(level.main, other)]
        if dot(main, self.search.basis[level.number]) < 0 and pick.random() < 0.9:
            main = [-a for a in main]
        self.replace(level, main=main)

    def sides(self) -> None:
        level, pick = self.level(), self.pick
        sides = list(level.sides)
        higher = [g for other in self.search.levels[level.number:] for g in [other.main, *other.sides]]
        if sides and pick.random() < 0.5:
            sides.pop(pick.randrange(len(sides)))
        else:
            vector = pick.choice(higher + self.search.dual[level.number:])
            sides.insert(pick.randint(0, len(sides)), [nudged(1, pick) * a for a in vector])
        pick.shuffle(sides)
        self.replace(level, sides=sides)

    def lowest(self) -> None:
        """A number of a cut of level 0: its side vectors need be orthogonal to nothing."""
        level, pick = self.search.levels[0], self.pick
        vectors = [list(g) for g in [level.main, *level.sides]]
        vector = pick.choice(vectors)
        vector[pick.randrange(len(vector))] += pick.choice([1, -1, 2, 7, 10**15])
        self.replace(level, main=vectors[0], sides=vectors[1:])

    def constant(self) -> None:
        factor = self.pick.choice([0, -1, 2, 1000])
        self.search.constant = [factor * a for a in self.search.constant]

    def base(self) -> None:
        """Another basis with its dual, or one that is none."""
        search, pick = self.search, self.pick
        i, j = (pick.randrange(self.rank) for _ in range(2))
        factor = pick.choice([1, -1, 2])
        if i != j:
            search.basis[i] = [a + factor * b for a, b in zip(search.basis[i], search.basis[j])]
            if pick.random() < 0.9:
                search.dual[j] = [a - factor * b for a, b in zip(search.dual[j], search.dual[i])]
        elif pick.random() < 0.5:
            search.basis[i] = [2 * a for a in search.basis[i]]

    def start(self) -> None:
        """Another point of the lattice."""
        factor, k = self.pick.choice([1, -1, 5, 10**6]), self.pick.choice(self.search.basis)
        self.search.point = [a + factor * b for a, b in zip(self.search.point, k)]

    def longer_dual(self) -> None:
        """A wider reach that belongs to no dual, or to another."""
        search, i = self.search, self.pick.randrange(self.rank)
        other = self.pick.choice([[a for a in search.constant], *search.dual])
        search.dual[i] = [a + b for a, b in zip(search.dual[i], other)]

    def smaller(self) -> None:
        """A part of the lattice."""
        search, place = self.search, self.pick.randrange(self.rank)
        for vectors in (search.basis, search.dual, search.levels):
            vectors.pop(place)
        search.levels = [level._replace(number=t) for t, level in enumerate(search.levels)]

    def fewer_rows(self) -> None:
        """One row less in the lattice, its column too if it has one."""
        search, pick = self.search, self.pick
        if search.coordinates and pick.random() < 0.7:
            place = pick.randrange(len(search.coordinates))
            column = len(search.point) - len(search.coordinates) + place
            search.coordinates.pop(place)
            for vector in [search.point, *search.basis, *search.dual, search.constant,
                           *(g for level in search.levels for g in [level.main, *level.sides])]:
                vector.pop(column)
        elif search.equations:
            search.equations.pop(pick.randrange(len(search.equations)))

    def steps(self) -> None:
        """A step dropped, doubled, or at another place."""
        steps, pick = self.search.steps, self.pick
        if steps:
            step = pick.choice(steps)
            if pick.random() < 0.6:
                steps.remove(step)
            if pick.random() < 0.6:
                steps.insert(pick.randint(0, len(steps)), step)

    def step_number(self) -> None:
        if self.search.steps:
            place = self.pick.randrange(len(self.search.steps))
            text = self.search.steps[place].string
            text = changed_number(text, self.pick)
            if self.pick.random() < 0.2:
                text = text.replace("upper", "l@wer").replace("lower", "upper").replace("@", "o")
            self.search.steps[place] = re.fullmatch(plain_checker.STEP, text) or self.search.steps[place]

    def random_step(self) -> None:
        """A step of any kind, and once more so that its row may stand twice in it."""
        pick, size, rows = self.pick, self.judged.n, len(self.judged.ag) + len(self.judged.au) + len(self.search.objective)
        form = pick.choice(["x%d" % pick.randint(1, size), "x%d" % pick.randint(1, size), "r%d" % pick.randint(1, rows + 1), "0"])
        terms = "".join(" r%d %d" % (pick.randint(1, rows or 1), pick.randint(-3, 3)) for _ in range(pick.choice([0, 1, 1, 2])))
        kind = pick.choice(["upper", "lower", "class"])
        divisors = " %d" % pick.choice([1, 1, 2, 3, 0]) + (" %d" % pick.choice([1, 2, 3, 5]) if kind == "class" else "")
        step = re.fullmatch(plain_checker.STEP, kind + " " + form + divisors + terms)
        self.search.steps.insert(pick.randint(0, len(self.search.steps)), step)

    def other_rows(self) -> None:
        """Another row in the lattice, or one twice."""
        if not self.search.contradiction:
            rows = self.pick.choice([self.search.equations, self.search.coordinates])
            rows.insert(0, self.pick.choice([*rows, self.pick.randint(0, len(self.judged.ag) + len(self.judged.au) + 1)]))
            self.pick.shuffle(rows)

    def signs(self) -> None:
        search, pick = self.search, self.pick
        if search.objective and pick.random() < 0.5:
            kind, signs = pick.choice(search.objective)
            search.objective[pick.randrange(len(search.objective))] = (kind, [pick.choice([-1, 0, 1, s]) for s in signs])
        elif search.goal != "points":
            kinds = ["norm", "distance", "linear"] if pick.random() < 0.2 or search.goal != "better" else ["norm"]
            kind, valued = pick.choice(kinds), sum(abs(d) != plain_checker.INF for d in self.judged.dt)
            signs = [pick.choice([-1, 0, 1]) for _ in range(valued if kind != "linear" else 0)]
            search.objective.insert(len(search.objective) if pick.random() < 0.8 else 0, (kind, signs))

    def another_point(self) -> None:
        """A point that is worse, with its true norms."""
        if self.proof.point is not None:
            x = self.pick.choice(self.points)
            self.proof.point, self.proof.norms = list(x), list(self.judged.norms(x))
            if self.pick.random() < 0.3:
                place = self.pick.randrange(len(x))
                self.proof.point[place] += self.pick.choice([1, -1])

    def norms(self) -> None:
        if self.proof.norms:
            self.proof.norms[self.pick.randrange(2)] += self.pick.choice([1, -1, plain_checker.Fraction(1, 2)])

    def verdict(self) -> None:
        proof, pick = self.proof, self.pick
        if proof.count is not None:
            proof.count = pick.choice([proof.count + 1, proof.count - 1, 2 * proof.count, 0])
        elif proof.kind == "optimum":
            proof.count = pick.randint(1, 2)
        else:
            proof.kind, proof.count = "all", 1
        proof.count = None if proof.count is not None and proof.count < 0 else proof.count

    def searches(self) -> None:
        searches, pick = self.proof.searches, self.pick
        if pick.random() < 0.5:
            searches.append(copy.deepcopy(pick.choice(searches)))
        else:
            searches.pop(pick.randrange(len(searches)))
        if pick.random() < 0.5:
            self.search.goal = pick.choice(["points", "better", "slack", "equal"])
        self.proof.searches = searches or [self.search]


# What mostly leaves a lattice and cuts, what mostly leaves none, and what is no part of them.
CUTS = [Change.divisor, Change.main, Change.sides, Change.lowest, Change.constant, Change.start]
LATTICE = [Change.base, Change.longer_dual, Change.smaller, Change.fewer_rows, Change.other_rows]
OTHERS = [Change.steps, Change.step_number, Change.signs, Change.norms, Change.verdict, Change.searches]
OTHERS += 2 * [Change.another_point, Change.random_step]


def changed_number(text: str, pick: random.Random) -> str:
    places = list(re.finditer(r"-?\d+", text))
    if not places:
        return text
    place = pick.choice(places)
    return text[:place.start()] + str(nudged(int(place[0]), pick)) + text[place.end():]


def changed_text(text: str, pick: random.Random) -> str:
    """A number changed, dropped or doubled somewhere, or a line dropped, doubled, exchanged or torn."""
    lines = text.split("\n")
    place, style = pick.randrange(len(lines) - 1), pick.randrange(10)
    words = lines[place].split(" ")
    if style < 5:
        lines[place] = changed_number(lines[place], pick)
    elif style == 5:
        words.pop(pick.randrange(len(words)))
        lines[place] = " ".join(words)
    elif style == 6:
        lines[place] += " " + pick.choice([*words, "x", "1/2", "+1", "", "\t"])
    elif style == 7:
        lines.pop(place)
    elif style == 8:
        lines.insert(place, pick.choice([lines[place], lines[pick.randrange(len(lines))]]))
    else:
        other = pick.randrange(len(lines) - 1)
        lines[place], lines[other] = lines[other], lines[place]
    return "\n".join(lines)


def changed_program(text: str, pick: random.Random) -> str:
    """Another number somewhere, mostly in bounds and sides."""
    lines = text.split("\n")
    candidates = [i for i, line in enumerate(lines) if re.search(r"\d", line)]
    place = pick.choice(candidates[-7:] if pick.random() < 0.7 else candidates)
    numbers = list(re.finditer(r"-?\d+", lines[place]))
    match = pick.choice(numbers)
    value = int(match[0]) + pick.choice([1, -1, 2, -2, 5])
    lines[place] = lines[place][:match.start()] + str(value) + lines[place][match.end():]
    return "\n".join(lines)


def repaired(text: str, program: str) -> tuple[str, bool]:
    """The proof with the counts of its own walks, and whether all is right in it up to these. Raises TooLong."""
    walks: list[tuple[Search, plain_checker.Walk]] = []

    def compare(search: Search, walk: plain_checker.Walk, _: int) -> None:
        try:
            walk.run(trial.MOST_NODES)
        except plain_checker.Refused:
            raise trial.TooLong from None
        walks.append((search, walk))

    reached, lines = True, text.split("\n")
    try:
        proof = Proof(text)
        plain_checker.verdict(plain_checker.Program(program), proof, compare)
    except plain_checker.Refused:
        reached = False
    except plain_checker.Malformed:
        return text, False
    for search, walk in walks:
        lines[search.walk_line - 1] = "walk nodes %d points %d" % (walk.nodes, walk.points)
        if search.goal == "points":
            lines[1] = "verdict all %d" % walk.points if walk.points else "verdict none"
        if search.goal == "equal" and walk.points and proof.count is not None:
            lines[1] = lines[1].rsplit(" ", 1)[0] + " %d" % walk.points
    return "\n".join(lines), reached and bool(walks)


class Attack:
    # So many changes of one proof.
    SHARED = 8

    def __init__(self, prover: str, checker: str, folder: str) -> None:
        self.prover, self.checker, self.folder = prover, checker, folder
        self.proof = functools.lru_cache(1)(self.made)

    def made(self, number: int) -> tuple[trial.Candidate, str]:
        """A program and a proof, mostly one with a tree to walk, and none with a large one."""
        pick = random.Random(number)
        while True:
            candidate = trial.program(number)
            number += 1000003
            kind = pick.choice(trial.kinds(candidate.program))
            if not candidate.points and pick.random() < 0.5:
                continue
            try:
                if self.prover == "naive" or pick.random() < 0.25:
                    text = naive_prover.prove(candidate.text, kind, candidate.points, pick)
                else:
                    trial.write(self.folder, "p.opt", candidate.text)
                    _, text = trial.proved(self.prover, self.folder, kind)
            except naive_prover.GivenUp:
                continue
            searches = Proof(text).searches
            nodes = [search.nodes for search in searches if not search.contradiction]
            if pick.random() < (1 if sum(nodes) else 0.1 if nodes else 0.02) and sum(nodes) <= trial.MOST_NODES // 4:
                return candidate, text

    def changed(self, candidate: trial.Candidate, text: str, pick: random.Random) -> tuple[str, trial.Candidate]:
        proof = Proof(text)
        program = candidate
        style = pick.random()
        if style < 0.08:
            program = trial.listed(changed_program(candidate.text, pick)) or candidate
        elif style < 0.09:
            program = trial.program(pick.randrange(10**6))
        changes = pick.choice([1, 1, 1, 2]) if program is candidate else pick.choice([0, 0, 1])
        if style > 0.95:
            text = changed_text(text, pick)
            return (text, program) if pick.random() < 0.8 else (changed_text(text, pick), program)
        for _ in range(changes):
            change = Change(proof, sorted(candidate.points), candidate.program, pick)
            self.apply(change, pick)
        return text_of(proof), program

    @staticmethod
    def apply(change: Change, pick: random.Random) -> None:
        style = pick.random() if change.rank else 1
        method: Callable[[Change], None] = pick.choice(CUTS if style < 0.75 else LATTICE if style < 0.82 else OTHERS)
        method(change)

    def judge(self, number: int) -> list[str]:
        """What became of the changed proof of this number. Raises Fault."""
        pick = random.Random(number)
        candidate, text = self.proof(number // self.SHARED)
        while True:
            changed, program = self.changed(candidate, text, pick)
            if changed == text and program is candidate:
                continue
            try:
                fixed, reached = repaired(changed, program.text)
                if pick.random() < 0.8:
                    changed = fixed
                mine = trial.plain(changed, program.text)
            except trial.TooLong:
                continue
            break
        trial.write(self.folder, "p.opt", program.text)
        trial.write(self.folder, "p.proof", changed)
        trial.agreed(mine, trial.checked(self.checker, self.folder))
        if mine[0] == trial.PROVED:
            true = {trial.truth(program.program, program.points, kind) for kind in trial.kinds(program.program)}
            trial.require(mine[1] in true, "proved is", mine[1], "true is", *sorted(true))
        outcome = ["true", "refused", "ungrammatical"][mine[0]]
        return [outcome] + (["reached", "reached-" + outcome] if reached else [])


def main(arguments: list[str]) -> int:
    if len(arguments) not in (6, 7):
        sys.exit("usage: %s LATBOX_ALL LATBOX_CHECK FROM TO RECORD [KEEP]" % arguments[0])
    prover = arguments[1] if arguments[1] == "naive" else os.path.abspath(arguments[1])
    record = trial.Record(arguments[5], int(arguments[3]), int(arguments[4]))
    wrong = 0
    with tempfile.TemporaryDirectory(dir="/dev/shm" if os.access("/dev/shm", os.W_OK) else None) as folder:
        for number, fault in record.go_on(Attack(prover, os.path.abspath(arguments[2]), folder).judge):
            wrong += 1
            print("seed %d: %s" % (number, fault), flush=True)
            trial.keep(folder, arguments[6:], number)
    print("%d changed proofs right, %d wrong; %s" % (len(record.done), wrong, ", ".join(map(record.share, (
        "refused", "ungrammatical", "true", "reached", "reached-refused", "reached-true")))))
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
