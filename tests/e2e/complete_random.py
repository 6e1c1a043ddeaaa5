#!/usr/bin/env python3
"""latbox-all on random programs against exhaustive search: complete_random.py [--long] BINARY FIRST LAST [RECORD]

Program number i is made from i alone (complete_programs.py), its points are listed by other means (complete_count.py);
neither shares anything with latbox-all. Where latbox-check is built beside it, each verdict is proven to it. --long: coefficients of 20 to 60 digits, boxes of up to 10^6 steps. With a RECORD
the numbers that were right are kept there, and the same command goes on behind them. Prints the programs that are wrong, a
line of totals and the shares of the kinds; exit status 0 if none is wrong.
"""

import os
import re
import subprocess
import sys
import tempfile
from fractions import Fraction

import checker
import complete_programs


class Fault(Exception):
    pass


def require(condition, *what):
    if not condition:
        raise Fault(" ".join(map(str, what)))


def run(binary, folder, *options):
    # A checkpoint of the program before is none of this one's.
    done = subprocess.run([binary, "--quiet=1", "--resume=0", *options, "p.opt"], cwd=folder, capture_output=True,
                          text=True, timeout=300, check=False)
    require(done.returncode in (10, 11, 12, 20), options, "status", done.returncode, done.stderr)
    return done.returncode, done.stdout.splitlines()


def prove(binary, folder, *options):
    """As run, with a proof; the checker must say the same."""
    checks = os.path.join(os.path.dirname(binary), "latbox-check")
    if not os.path.exists(checks):
        return run(binary, folder, *options)
    proof = os.path.join(folder, "p.proof")
    if os.path.exists(proof):
        os.remove(proof)
    status, out = run(binary, folder, "--proof=p.proof", *options)
    require(os.path.exists(proof), options, "no proof of", out)
    done = subprocess.run([checks, "--proof=p.proof", "p.opt", "p.all"], cwd=folder, capture_output=True, text=True,
                          timeout=300, check=False)
    require(done.returncode == 0 and done.stdout.splitlines()[-1:] == [said(out)], options, out, "proof:", done.stdout,
            done.stderr)
    return status, out


def said(out):
    """The last line of latbox-check for the lines of latbox-all: fractions are plain there."""
    words = out[-1].split()[1:]
    ties = ", %s points" % out[0].split()[-1] if len(out) == 2 else ""
    return "proof: " + " ".join([words[0]] + [str(Fraction(checker.number(word))) for word in words[1:]]) + ties


def listed(folder):
    with open(os.path.join(folder, "p.all"), encoding="utf-8") as file:
        return checker.read_stars(file.read())


def judge(binary, folder, candidate):
    """Raises Fault."""
    with open(os.path.join(folder, "p.opt"), "w", encoding="utf-8") as file:
        file.write(candidate.text)
    judge_all(binary, folder, candidate.program, candidate.points)
    if candidate.program.dt:
        judge_best(binary, folder, candidate.program, candidate.points)
    judge_first(binary, folder, candidate.points)


def judge_all(binary, folder, program, truth):
    status, out = prove(binary, folder, "--all=1")
    stars = listed(folder)
    require(len(stars) == len(set(tuple(star.x) for star in stars)), "a point twice")
    require(set(tuple(star.x) for star in stars) == truth, "all:", len(stars), "points, not", len(truth))
    wanted = (10, ["verdict: all %d" % len(truth)]) if truth else (20, ["verdict: none"])
    require((status, out) == wanted, "all:", status, out)
    for star in stars:
        require((star.target_norm, star.slack_norm) == program.norms(star.x), "norms of", star.x)


def judge_best(binary, folder, program, truth):
    status, out = prove(binary, folder)
    stars = listed(folder)
    if not truth:
        require((status, out, stars) == (20, ["verdict: none"], []), "best:", status, out)
        return
    best = min(program.norms(x) for x in truth)
    ties = set(x for x in truth if program.norms(x) == best)
    verdict = "verdict: optimum " + mixed(best[0]) + ("" if best[1] == 0 else " " + mixed(best[1]))
    require((status, out) == (10, [verdict]), "best:", status, out, "not", verdict)
    require(len(stars) == 1 and tuple(stars[0].x) in ties, "the best point is", [star.x for star in stars])
    status, out = prove(binary, folder, "--ties=1")
    require((status, out) == (10, ["best points: %d" % len(ties), verdict]), "ties:", status, out, len(ties))
    require(sorted(tuple(star.x) for star in listed(folder)) == sorted(ties), "ties: other points")


def judge_first(binary, folder, truth):
    status, out = run(binary, folder, "--first=1")
    stars = listed(folder)
    require((status, out) == ((11, ["verdict: found 1"]) if truth else (20, ["verdict: none"])), "first:", status, out)
    require(len(stars) == bool(truth) and all(tuple(star.x) in truth for star in stars), "first: no point")


def mixed(value):
    sign, value = ("-" if value < 0 else ""), abs(value)
    whole, rest = divmod(value, 1)
    if rest == 0:
        return sign + str(whole)
    return sign + ("%d:" % whole if whole else "") + "%d/%d" % (rest.numerator, rest.denominator)


class Tally:
    """How many programs were right, of which kinds they are, and which were wrong."""

    def __init__(self):
        self.right = 0
        self.kinds = dict.fromkeys(complete_programs.KINDS, 0)
        self.large = 0
        self.wrong = []

    def count(self, kind, rank):
        self.right += 1
        self.kinds[kind] += 1
        self.large += rank >= complete_programs.RANK

    def shares(self):
        """In the order of KINDS, then of programs whose search is not small."""
        return [count / max(1, self.right) for count in (*self.kinds.values(), self.large)]

    def text(self, total):
        parts = zip(("no point", "one", "many", "rank %d or more" % complete_programs.RANK), self.shares())
        return "%d of %d right; %s" % (self.right, total, ", ".join("%s %.1f %%" % (name, 100 * share)
                                                                  for name, share in parts))


def judge_range(binary, make, first, last, tally=None, done=(), report=lambda number, candidate: None):
    """Judges the programs that make(number) makes and that are not done."""
    tally = tally or Tally()
    memory = "/dev/shm" if os.access("/dev/shm", os.W_OK) else None
    with tempfile.TemporaryDirectory(dir=memory) as folder:
        for number in range(first, last):
            if number in done:
                continue
            candidate = make(number)
            try:
                judge(binary, folder, candidate)
            except (Fault, subprocess.TimeoutExpired) as fault:
                tally.wrong.append((number, str(fault)))
                continue
            tally.count(candidate.kind, candidate.rank)
            report(number, candidate)
    return tally


def read_record(path, first, last, tally):
    """The numbers that are done. Each line is a number, a kind and a rank; a kill may have torn one, which then counts for
    nothing."""
    done = set()
    if os.path.isfile(path):
        with open(path, encoding="utf-8") as file:
            for line in re.findall(r"^(\d+) (\w+) (\d+)$", file.read(), re.MULTILINE):
                number = int(line[0])
                if first <= number < last and number not in done and line[1] in tally.kinds:
                    done.add(number)
                    tally.count(line[1], int(line[2]))
    return done


def main(arguments):
    make = complete_programs.ordinary
    if "--long" in arguments:
        arguments.remove("--long")
        make = complete_programs.long
    if len(arguments) not in (4, 5):
        sys.exit("usage: %s [--long] BINARY FIRST LAST [RECORD]" % arguments[0])
    record = arguments[4] if len(arguments) == 5 else os.devnull
    first, last = int(arguments[2]), int(arguments[3])
    tally = Tally()
    done = read_record(record, first, last, tally)
    with open(record, "a", encoding="utf-8") as file:
        # Behind a torn line a new one begins.
        print(file=file)
        judge_range(os.path.abspath(arguments[1]), make, first, last, tally, done,
                    lambda number, candidate: print(number, candidate.kind, candidate.rank, file=file, flush=True))
    for number, fault in tally.wrong:
        print("program %d: %s" % (number, fault))
    print(tally.text(last - first))
    return 1 if tally.wrong else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
