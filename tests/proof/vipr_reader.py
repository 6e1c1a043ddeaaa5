#!/usr/bin/env python3
"""An exact reader of VIPR 1.1 certificates: vipr_reader.py FILE

Checks every rule of the format in rationals and prints the relation that is proven, `infeasible` or `range LB UB`; exit
status 0. A certificate that breaks a rule: a line with the constraint and the reason, exit status 1; a text that is none:
exit status 2. The incomplete forms of a reason (`lin weak`, `lin incomplete`) are refused: they prove nothing as they stand.

One pass; a derived constraint is forgotten where its line says that nothing refers to it any more.
"""

import re
import sys
from collections.abc import Iterator
from dataclasses import dataclass
from fractions import Fraction
from math import ceil, floor

Form = dict[int, Fraction]
SIGN = {"G": 1, "E": 0, "L": -1}
VALUE = re.compile(r"[+-]?(\d+\.?\d*([eE][+-]?\d+)?|\.\d+([eE][+-]?\d+)?|\d+/\d+)")


class Malformed(Exception):
    """The text is no certificate."""


class Broken(Exception):
    """A rule is broken."""


@dataclass(frozen=True)
class Constraint:
    """form SENSE side; sense as in SIGN."""

    name: str
    sense: int
    side: Fraction
    form: Form

    def is_absurd(self) -> bool:
        if self.form:
            return False
        return self.side > 0 if self.sense > 0 else self.side < 0 if self.sense < 0 else self.side != 0

    def dominates(self, other: "Constraint") -> bool:
        if self.is_absurd():
            return True
        if self.form != other.form:
            return False
        if other.sense > 0:
            return self.sense >= 0 and self.side >= other.side
        if other.sense < 0:
            return self.sense <= 0 and self.side <= other.side
        return self.sense == 0 and self.side == other.side

    def keeps(self, values: Form) -> bool:
        value = sum((a * values.get(i, Fraction(0)) for i, a in self.form.items()), Fraction(0))
        return value >= self.side if self.sense > 0 else value <= self.side if self.sense < 0 else value == self.side


@dataclass
class Solution:
    name: str
    values: Form


class Words:
    """The words of a text, comment lines before its first word left out."""

    def __init__(self, text: str) -> None:
        lines = text.split("\n")
        while lines and lines[0].startswith("%"):
            lines.pop(0)
        self._words: Iterator[str] = iter("\n".join(lines).replace("{", " { ").replace("}", " } ").split())

    def take(self) -> str:
        word = next(self._words, None)
        if word is None:
            raise Malformed("the text ends too early")
        return word

    def expect(self, *wanted: str) -> None:
        for word in wanted:
            found = self.take()
            if found != word:
                raise Malformed("%s where %s should stand" % (found, word))

    def is_over(self) -> bool:
        return next(self._words, None) is None

    def index(self, end: int, what: str) -> int:
        word = self.take()
        if not re.fullmatch(r"\d+", word):
            raise Malformed("%s is no %s" % (word, what))
        if int(word) >= end:
            raise Broken("%s %s is not below %d" % (what, word, end))
        return int(word)

    def count(self, what: str) -> int:
        word = self.take()
        if not re.fullmatch(r"\d+", word):
            raise Malformed("%s is no number of %s" % (word, what))
        return int(word)

    def value(self) -> Fraction:
        word = self.take()
        if not VALUE.fullmatch(word):
            raise Malformed("%s is no value" % word)
        if "/" in word and int(word.split("/")[1]) == 0:
            raise Malformed("%s divides by 0" % word)
        return Fraction(word)


class Certificate:
    """Reads and checks at once. After check(): `relation`, `lower` and `upper` (None: not proven)."""

    def __init__(self, text: str) -> None:
        self._words = Words(text)
        self._constraints: dict[int, Constraint] = {}
        self._assumptions: dict[int, frozenset[int]] = {}
        self._solutions: list[Solution] = []
        self._names: set[str] = set()
        self.variables: list[str] = []
        self.integers: set[int] = set()
        self.is_minimised = True
        self.objective: Form = {}
        self.relation = ""
        self.lower: Fraction | None = None
        self.upper: Fraction | None = None

    def check(self) -> str:
        self._words.expect("VER", "1.1")
        self._read_problem()
        self._read_relation()
        self._check_solutions()
        last = self._check_derivations()
        if not self._words.is_over():
            raise Malformed("something stands behind the last derivation")
        self._check_relation(last)
        if self.relation == "infeas":
            return "infeasible"
        return "range %s %s" % ("-inf" if self.lower is None else self.lower, "inf" if self.upper is None else self.upper)

    def problem(self) -> list[Constraint]:
        """The constraints as read, bounds first. Before derivations forget them: requires check() not to have run."""
        return [self._constraints[i] for i in sorted(self._constraints)]

    def read_problem(self) -> None:
        """For who wants to compare the problem alone."""
        self._words.expect("VER", "1.1")
        self._read_problem()

    def _read_problem(self) -> None:
        words = self._words
        words.expect("VAR")
        self.variables = [words.take() for _ in range(words.count("variables"))]
        words.expect("INT")
        self.integers = {words.index(len(self.variables), "variable") for _ in range(words.count("integers"))}
        words.expect("OBJ")
        sense = words.take()
        if sense not in ("min", "max"):
            raise Malformed("%s is neither min nor max" % sense)
        self.is_minimised = sense == "min"
        self.objective = self._form()
        words.expect("CON")
        count, bounds = words.count("constraints"), words.count("bounds")
        if bounds > count:
            raise Broken("%d bounds among %d constraints" % (bounds, count))
        for i in range(count):
            constraint = self._constraint()
            if i < bounds and len(constraint.form) != 1:
                raise Broken("%s stands among the bounds" % constraint.name)
            self._keep(i, constraint, frozenset())

    def _read_relation(self) -> None:
        words = self._words
        words.expect("RTP")
        self.relation = words.take()
        if self.relation == "range":
            lower, upper = words.take(), words.take()
            self.lower = None if lower == "-inf" else self._rational(lower)
            self.upper = None if upper == "inf" else self._rational(upper)
        elif self.relation != "infeas":
            raise Malformed("%s is no relation to prove" % self.relation)

    @staticmethod
    def _rational(word: str) -> Fraction:
        if not VALUE.fullmatch(word):
            raise Malformed("%s is no value" % word)
        return Fraction(word)

    def _form(self) -> Form:
        form: Form = {}
        for _ in range(self._words.count("terms")):
            i = self._words.index(len(self.variables), "variable")
            if i in form:
                raise Broken("variable %d stands twice" % i)
            form[i] = self._words.value()
        return {i: a for i, a in form.items() if a != 0}

    def _constraint(self) -> Constraint:
        name, sense = self._words.take(), self._words.take()
        if sense not in SIGN:
            raise Malformed("%s is none of E, L, G" % sense)
        if name in self._names:
            raise Broken("the name %s stands twice" % name)
        self._names.add(name)
        side = self._words.value()
        word = self._words.take()
        if word == "OBJ":
            return Constraint(name, SIGN[sense], side, self.objective)
        if not re.fullmatch(r"\d+", word):
            raise Malformed("%s is no number of terms" % word)
        form: Form = {}
        for _ in range(int(word)):
            i = self._words.index(len(self.variables), "variable")
            if i in form:
                raise Broken("variable %d stands twice in %s" % (i, name))
            form[i] = self._words.value()
        return Constraint(name, SIGN[sense], side, {i: a for i, a in form.items() if a != 0})

    def _keep(self, index: int, constraint: Constraint, assumptions: frozenset[int]) -> None:
        self._constraints[index] = constraint
        self._assumptions[index] = assumptions

    def _check_solutions(self) -> None:
        words = self._words
        words.expect("SOL")
        for _ in range(words.count("solutions")):
            solution = Solution(words.take(), self._form())
            for constraint in self._constraints.values():
                if not constraint.keeps(solution.values):
                    raise Broken("solution %s breaks %s" % (solution.name, constraint.name))
            for i in self.integers:
                if solution.values.get(i, Fraction(0)).denominator != 1:
                    raise Broken("solution %s: %s is not whole" % (solution.name, self.variables[i]))
            self._solutions.append(solution)

    def _value(self, solution: Solution) -> Fraction:
        return sum((c * solution.values.get(i, Fraction(0)) for i, c in self.objective.items()), Fraction(0))

    def _best(self) -> Fraction | None:
        values = [self._value(solution) for solution in self._solutions]
        return (min(values) if self.is_minimised else max(values)) if values else None

    def _check_derivations(self) -> int:
        """The index of the last constraint."""
        words = self._words
        words.expect("DER")
        first = len(self._constraints)
        # Of a derived constraint: the last one that may refer to it.
        forget: dict[int, list[int]] = {}
        count = words.count("derivations")
        for index in range(first, first + count):
            constraint = self._constraint()
            try:
                self._keep(index, constraint, self._reason(index, constraint))
            except Broken as broken:
                raise Broken("%s: %s" % (constraint.name, broken)) from None
            last = words.take()
            if not re.fullmatch(r"-1|\d+", last):
                raise Malformed("%s: %s is no index" % (constraint.name, last))
            if last != "-1":
                forget.setdefault(max(int(last), index), []).append(index)
            for old in forget.pop(index, []):
                if old != first + count - 1:
                    del self._constraints[old], self._assumptions[old]
        return first + count - 1

    def _old(self, index: int) -> int:
        i = self._words.index(index, "constraint")
        if i not in self._constraints:
            raise Broken("constraint %d is used behind its last use" % i)
        return i

    def _reason(self, index: int, constraint: Constraint) -> frozenset[int]:
        """The assumptions of the constraint."""
        self._words.expect("{")
        kind = self._words.take()
        if kind == "asm":
            assumptions = frozenset([index])
        elif kind in ("lin", "rnd"):
            assumptions = self._combination(index, constraint, kind == "rnd")
        elif kind == "uns":
            assumptions = self._unsplit(index, constraint)
        elif kind == "sol":
            assumptions = self._of_solution(constraint)
        else:
            raise Malformed("%s is no reason" % kind)
        self._words.expect("}")
        return assumptions

    def _combination(self, index: int, constraint: Constraint, rounds: bool) -> frozenset[int]:
        form: Form = {}
        side, signs = Fraction(0), set()
        assumptions: frozenset[int] = frozenset()
        used: set[int] = set()
        word = self._words.take()
        if word in ("weak", "incomplete"):
            raise Broken("a reason that is not complete proves nothing")
        if not re.fullmatch(r"\d+", word):
            raise Malformed("%s is no number of terms" % word)
        for _ in range(int(word)):
            i = self._old(index)
            if i in used:
                raise Broken("constraint %d stands twice" % i)
            used.add(i)
            factor = self._words.value()
            old = self._constraints[i]
            signs.add((factor > 0) * old.sense - (factor < 0) * old.sense)
            side += factor * old.side
            for j, a in old.form.items():
                form[j] = form.get(j, Fraction(0)) + factor * a
            assumptions |= self._assumptions[i]
        signs.discard(0)
        if len(signs) == 2:
            raise Broken("inequations of both directions are added")
        sum_ = Constraint("", signs.pop() if signs else 0, side, {j: a for j, a in form.items() if a != 0})
        if rounds:
            sum_ = self._rounded(sum_)
        if not sum_.dominates(constraint):
            raise Broken("the %s does not dominate it" % ("rounded combination" if rounds else "combination"))
        return assumptions

    def _rounded(self, constraint: Constraint) -> Constraint:
        if constraint.sense == 0:
            raise Broken("an equation is not rounded")
        if not self._is_whole(constraint.form):
            raise Broken("a combination that is not whole is rounded")
        side = ceil(constraint.side) if constraint.sense > 0 else floor(constraint.side)
        return Constraint(constraint.name, constraint.sense, Fraction(side), constraint.form)

    def _is_whole(self, form: Form) -> bool:
        return all(i in self.integers and a.denominator == 1 for i, a in form.items())

    def _unsplit(self, index: int, constraint: Constraint) -> frozenset[int]:
        i1, l1, i2, l2 = (self._old(index) for _ in range(4))
        for i in (i1, i2):
            if not self._constraints[i].dominates(constraint):
                raise Broken("constraint %d does not dominate it" % i)
        low, high = self._constraints[l1], self._constraints[l2]
        if low.sense > 0:
            low, high = high, low
        if low.sense >= 0 or high.sense <= 0 or low.form != high.form or high.side != low.side + 1:
            raise Broken("constraints %d and %d are no two sides of a split" % (l1, l2))
        if low.side.denominator != 1 or not self._is_whole(low.form):
            raise Broken("constraints %d and %d split what is not whole" % (l1, l2))
        return (self._assumptions[i1] - {l1}) | (self._assumptions[i2] - {l2})

    def _of_solution(self, constraint: Constraint) -> frozenset[int]:
        best = self._best()
        if best is None:
            raise Broken("there is no solution")
        if not Constraint("", -1 if self.is_minimised else 1, best, self.objective).dominates(constraint):
            raise Broken("no solution dominates it")
        return frozenset()

    def _check_relation(self, last: int) -> None:
        proven = self._constraints.get(last, Constraint("", 0, Fraction(0), {}))
        if self._assumptions.get(last):
            raise Broken("the last constraint stands under assumptions")
        if self.relation == "infeas":
            if not proven.is_absurd():
                raise Broken("the last constraint is no absurdity")
            return
        near, far = (self.lower, self.upper) if self.is_minimised else (self.upper, self.lower)
        if near is not None and not proven.dominates(Constraint("", 1 if self.is_minimised else -1, near, self.objective)):
            raise Broken("the last constraint does not prove the bound")
        if far is None:
            return
        best = self._best()
        if best is None or (best > far if self.is_minimised else best < far):
            raise Broken("no solution has the other bound")


def main(arguments: list[str]) -> int:
    if len(arguments) != 1:
        print(__doc__, file=sys.stderr)
        return 2
    try:
        with open(arguments[0], encoding="ascii") as file:
            print(Certificate(file.read()).check())
    except Broken as broken:
        print("refused: %s" % broken)
        return 1
    except (Malformed, OSError, UnicodeDecodeError) as error:
        print("%s: %s" % (arguments[0], error), file=sys.stderr)
        return 2
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
