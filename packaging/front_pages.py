"""front_pages.py TEMPLATE PAGE VERSION: the manual page and the completion of latbox-solve and of latbox-farm, from the tables of
options and statuses that the program itself has. The name of the page tells which. Marks:

@VERSION@, @NAME@, @FUNCTION@, @MODELS@, @OPTIONS_AS_MANUAL@, @STATUSES_AS_MANUAL@, @OPTION_KEYS@, @OPTION_VALUES@, @FILE_KEYS@, @FOLDER_KEYS@, @VALUE_KEYS@.
"""

from __future__ import annotations

import os
import re
import sys

sys.dont_write_bytecode = True
sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "python"))

from latbox.farm import options as farm  # noqa: E402
from latbox.front import options as solve  # noqa: E402
from latbox.front.parsing import Option  # noqa: E402
from latbox.solving import statuses  # noqa: E402

# The options of a program, and how the names of the files end that it takes, as a pattern of the shell.
PROGRAMS = {"latbox-solve": (solve.TABLE, "{lp,mps,opt}{,.gz,.bz2,.xz}"), "latbox-farm": (farm.TABLE, "opt")}


def manual_text(text: str) -> str:
    """As the manual shows it; `such` words are bold."""
    escaped = text.replace("\\", "\\e").replace("-", "\\-")
    return re.sub("`([^`]*)`", r"\\fB\1\\fR", escaped)


def option_paragraph(option: Option) -> str:
    name = manual_text("--" + option.name)
    if option.default is not None:
        head = ".BI %s[= %s ]" % (name, option.value)
    else:
        head = ".BI %s= %s" % (name, option.value) if option.value else ".B %s" % name
    return ".TP\n%s\n%s\n" % (head, manual_text(option.text))


def status_paragraph(status: statuses.Status) -> str:
    return '.TP\n.B "status: %s"\nExit status %d: %s.\n' % (status.name, status.exit_status, manual_text(status.meaning))


def keys(table: list[Option], *values: str) -> str:
    """The options whose value may be the next word, with such a value, or any if none is named, as a pattern of the shell."""
    return "|".join("--" + option.name for option in table
                    if option.value and option.default is None and (not values or option.value in values))


def fill(text: str, name: str, version: str) -> str:
    table, models = PROGRAMS[name]
    marks = {
        "@VERSION@": version,
        "@NAME@": name,
        "@FUNCTION@": "_" + name.replace("-", "_"),
        "@MODELS@": models,
        "@OPTIONS_AS_MANUAL@\n": "".join(map(option_paragraph, table)),
        "@STATUSES_AS_MANUAL@\n": "".join(map(status_paragraph, statuses.TABLE)),
        "@OPTION_KEYS@": " ".join("--%s%s" % (option.name, "=" * bool(option.value and option.default is None)) for option in table),
        "@OPTION_VALUES@": " ".join("--%s=%s" % (option.name, choice) for option in table for choice in option.choices),
        "@FILE_KEYS@": keys(table, "FILE"),
        "@FOLDER_KEYS@": keys(table, "DIR"),
        "@VALUE_KEYS@": keys(table),
    }
    for mark, replacement in marks.items():
        text = text.replace(mark, replacement)
    left = re.search("@[A-Z_]+@", text)
    if left:
        raise SystemExit("%s is no mark" % left[0])
    return text


def main(template: str, page: str, version: str) -> None:
    with open(template, encoding="utf-8") as file:
        text = fill(file.read(), os.path.basename(page).rpartition(".")[0], version)
    with open(page, "w", encoding="utf-8") as file:
        file.write(text)


if __name__ == "__main__":
    main(*sys.argv[1:])
