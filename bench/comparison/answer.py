"""What a run has answered, judged exactly by the program as the user wrote it.

An answer is a dictionary of plain values, so that it goes into a JSON file as it is:

  status  "solved"    a point that holds; with a target, the best that was found
          "proven"    the same, and the run ended with the claim that no better one exists
          "wrong"     a point that the exact check refuses
          "unchecked" a value in the run's messages, of which it left no point
          "refuted"   the run ended with the claim that there is no point
          "none"      nothing when the limit came
          "ended"     the run ended by itself with nothing
          "left out"  the program cannot be stated to this solver
  value   the target's value, as text, or None
  cpu     CPU seconds of the whole run
  at      CPU seconds until the answer: until the best value came where there is a target, else `cpu`
  note    one line of the run's own words where it failed, or what the exact check says
  timed_out  whether the limit ended the run
"""

from fractions import Fraction

import checker


def made(status, run, at=None, value=None, note=""):
    at = run.cpu if at is None else at
    return {"status": status, "value": value, "cpu": round(run.cpu, 4), "at": round(at, 4), "note": note,
            "timed_out": run.timed_out}


LEFT_OUT = {"status": "left out", "value": None, "cpu": 0, "at": 0, "note": "", "timed_out": False}


def plain(value):
    return "%d" % value if value == int(value) else "%g" % value


def judged(program, x, run, at, proven):
    """The answer of a run that gave the point x; `at` counts only where there is a target."""
    x = [Fraction(v) for v in x]
    broken = program.violation(x)
    if broken:
        return made("wrong", run, note=broken)
    if not program.at:
        return made("solved", run)
    return made("proven" if proven else "solved", run, at, plain(checker.dot(program.at[0], x)))


def answered(answer):
    """Whether a time to the answer is worth a median."""
    return answer["status"] in ("solved", "proven", "wrong", "refuted")
