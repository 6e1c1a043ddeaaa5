#!/usr/bin/env python3
"""Proofs of latbox-all against exhaustive search: random_proofs.py LATBOX_ALL LATBOX_CHECK FROM TO RECORD [KEEP]

Program number i is made from i alone and has all that programs have: targets with and without a wanted value, digits,
fractions, rows with one side, open bounds. Of each the verdicts `all`, `optimum` and `optimum` with its ties are proven;
both checkers must then say what exhaustive search says, and latbox-check that the listed points are those of the proof.
The plain checker is spared walks that are long; how many proofs it has seen is printed. A record is gone on from; KEEP
is a folder for what went wrong.
"""

import os
import sys
import tempfile

import plain_checker
import trial


class Trial:
    def __init__(self, prover: str, checker: str, folder: str) -> None:
        self.prover, self.checker, self.folder = prover, checker, folder

    def judge(self, number: int) -> list[str]:
        """What there was to be seen. Raises Fault."""
        candidate = trial.program(number)
        trial.write(self.folder, "p.opt", candidate.text)
        seen = {candidate.kind}
        for kind in trial.kinds(candidate.program):
            true = trial.truth(candidate.program, candidate.points, kind)
            _, text = trial.proved(self.prover, self.folder, kind)
            for points in ([], ["p.all"]):
                told = trial.checked(self.checker, self.folder, *points)
                trial.require(told == (trial.PROVED, true), kind, "latbox-check", *points, "says", *told, "true:", true)
            seen |= self.plain(kind, text, candidate.text, true)
        return sorted(seen)

    @staticmethod
    def plain(kind: str, text: str, program: str, true: str) -> set[str]:
        searches = plain_checker.Proof(text).searches
        seen = {"contradiction" if search.contradiction else search.goal for search in searches}
        if sum(search.nodes for search in searches if not search.contradiction) > trial.MOST_NODES:
            return seen | {kind + "-long"}
        mine = trial.plain(text, program)
        trial.require(mine == (trial.PROVED, true), kind, "plain:", *mine, "true:", true)
        return seen | {kind + "-plain"}


def main(arguments: list[str]) -> int:
    if len(arguments) not in (6, 7):
        sys.exit("usage: %s LATBOX_ALL LATBOX_CHECK FROM TO RECORD [KEEP]" % arguments[0])
    record = trial.Record(arguments[5], int(arguments[3]), int(arguments[4]))
    wrong = 0
    with tempfile.TemporaryDirectory(dir="/dev/shm" if os.access("/dev/shm", os.W_OK) else None) as folder:
        for number, fault in record.go_on(Trial(*map(os.path.abspath, arguments[1:3]), folder).judge):
            wrong += 1
            print("program %d: %s" % (number, fault), flush=True)
            trial.keep(folder, arguments[6:], number)
    print("%d programs right, %d wrong; %s" % (len(record.done), wrong, ", ".join(map(record.share, (
        "none", "one", "many", "points", "better", "slack", "equal", "contradiction", "all-plain", "optimum-plain", "ties-plain",
        "all-long", "optimum-long", "ties-long")))))
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
