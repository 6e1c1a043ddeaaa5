"""Strict and conventional command lines of one file and the options of a table: `--time 20` or `--time=20`; one that is unknown,
repeated or malformed is a usage error with its name, and what would be right. A program is its table and a few words about it.
"""

from __future__ import annotations

import re
from collections.abc import Callable, Sequence
from dataclasses import dataclass
from difflib import get_close_matches
from typing import Any

from ..errors import UsageError

TIME = re.compile(r"([0-9]+(?:\.[0-9]*)?|\.[0-9]+)(s|m|h|d)?\Z", re.ASCII)
SECONDS = {"s": 1, "m": 60, "h": 3600, "d": 86400}


class Wanted(Exception):
    """A value is malformed: what would be right."""


def take_time(text: str) -> float:
    match = TIME.match(text)
    if not match or not 0 < (value := float(match[1]) * SECONDS[match[2] or "s"]) < 1e10:
        raise Wanted("a time above 0 is wanted, as 20, 0.5 or 2m (s, m, h, d)")
    return value


def take_whole(least: int, most: int, wanted: str) -> Callable[[str], int]:
    def take(text: str) -> int:
        if not re.fullmatch("[0-9]{1,19}", text, re.ASCII) or not least <= int(text) <= most:
            raise Wanted(wanted)
        return int(text)

    return take


def take_between(what: str, least: int, most: int) -> Callable[[str], int]:
    return take_whole(least, most, "%s from %d to %d is wanted" % (what, least, most))


def take_choice(*choices: str) -> Callable[[str], str]:
    def take(text: str) -> str:
        if text not in choices:
            raise Wanted("%s or %s is wanted" % (", ".join(choices[:-1]), choices[-1]))
        return text

    return take


def take_name(what: str) -> Callable[[str], str]:
    def take(text: str) -> str:
        if not text:
            raise Wanted("the name of %s is wanted" % what)
        return text

    return take


take_path = take_name("a file")


@dataclass(frozen=True)
class Option:
    name: str
    value: str  # what stands for the value in the usage; "" for a switch
    take: Callable[[str], Any] | None
    text: str
    choices: tuple[str, ...] = ()  # values that the completion offers
    default: str | None = None  # the value where the option stands alone; None: it needs one

    @property
    def value_text(self) -> str:
        """How the value stands behind the name."""
        if self.default is not None:
            return "[=%s]" % self.value
        return " " + self.value if self.value else ""

    @property
    def key(self) -> str:
        return self.name.replace("-", "_")


HELP = Option("help", "", None, "Show this text.")


class Parser:
    """Of a program that takes one file, a `what` that the usage calls `form`, and the options of a table, into attributes of
    whatever object: option.key of each. The table has help and version, with which no file is wanted.
    """

    def __init__(self, program: str, what: str, form: str, about: str, table: Sequence[Option]) -> None:
        self.what = what
        self.form = "%s [options] %s" % (program, form)
        self.about = about
        self.table = table
        self.by_name = {option.name: option for option in table}

    def parse(self, arguments: Sequence[str], options: object) -> tuple[list[str], set[str]]:
        """What is no option, and the names of the options that were given. Throws UsageError."""
        given: set[str] = set()
        others: list[str] = []
        rest = list(arguments)
        while rest:
            argument = rest.pop(0)
            if argument == "--":
                others += rest
                break
            if argument == "-h":
                argument = "--help"
            if argument == "-" or not argument.startswith("-"):
                others.append(argument)
                continue
            name, sign, value = argument[2:].partition("=") if argument.startswith("--") else ("", "", "")
            if name not in self.by_name:
                raise UsageError("%s: unknown option; %s--help shows them" % (argument, self.guess(name or argument[1:].partition("=")[0], "--")))
            option = self.by_name[name]
            if option.value and not sign and option.default is None:
                if not rest:
                    raise UsageError("--%s: a value is wanted, --%s %s" % (name, name, option.value))
                value, sign = rest.pop(0), "="
            self.take(options, option, value if sign else option.default, given, "--%s" % name)
        return others, given

    def one(self, others: Sequence[str]) -> str:
        """The file, of what is no option. Throws UsageError."""
        if not others:
            raise UsageError("a %s is wanted: %s" % (self.what, self.form))
        if len(others) > 1:
            raise UsageError("%s: one %s is wanted, and %s was given" % (others[1], self.what, others[0]))
        return others[0]

    def guess(self, name: str, dashes: str = "") -> str:
        """What may be meant by a name that is none, in words; "" where nothing is near."""
        near = get_close_matches(name, self.by_name, 1)
        return "is %s%s meant? " % (dashes, near[0]) if near else ""

    def take(self, options: object, option: Option, value: str | None, given: set[str], place: str) -> None:
        if option.name in given:
            raise UsageError("%s: it was given before" % place)
        given.add(option.name)
        if option.take is None:
            if value is not None:
                raise UsageError("%s=%s: it stands without a value" % (place, value))
            setattr(options, option.key, True)
            return
        try:
            setattr(options, option.key, option.take(value or ""))
        except Wanted as wanted:
            raise UsageError("%s=%s: %s" % (place, value, wanted)) from None

    def usage(self) -> str:
        """What the program does, and a line for each option."""
        forms = [("--" + option.name + option.value_text, option.text) for option in self.table]
        width = max(len(form) for form, _ in forms) + 2
        lines = ["  %s%s\n" % (form.ljust(width), text) for form, text in forms]
        return "usage: %s\n\n%s\n\n%s" % (self.form, self.about, "".join(lines))
