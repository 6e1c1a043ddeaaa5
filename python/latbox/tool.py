"""What the small commands share: their command line, and how they end; and what all commands ask of files.

Exit status 0; 1 where input is refused or a file cannot be read or written; 2 where the command line is wrong. The reason
stands on standard error in one line. A reader that closes the pipe early ends the command quietly.
"""

from __future__ import annotations

import argparse
import os
import sys
from typing import Any, Callable

from .errors import LatboxError, UsageError, os_error_text
from .version import version_line


class Parser(argparse.ArgumentParser):
    """A parser without abbreviated options: what is a part of one option today may be a part of two tomorrow."""

    def __init__(self, name: str, description: str) -> None:
        super().__init__(prog=name, description=description, allow_abbrev=False)
        self.add_argument("--version", action="version", version=version_line(name), help="show the version and exit")


def run_tool(parser: Parser, work: Callable[[argparse.Namespace], Any], arguments: list[str] | None) -> int:
    options = parser.parse_args(arguments)
    sys.set_int_max_str_digits(0)  # the numbers of models are exact, and may be long
    try:
        work(options)
    except UsageError as error:
        parser.error(str(error))
    except LatboxError as error:
        return _fail(str(error))
    except BrokenPipeError:
        _forget_output()
        return 1
    except OSError as error:
        _forget_output()
        return _fail(os_error_text(error))
    except KeyboardInterrupt:
        return 130
    return 0


def _forget_output() -> None:
    """What could not be written is not tried again when Python ends, which would complain and change the status."""
    if sys.stdout is not None:
        os.dup2(os.open(os.devnull, os.O_WRONLY), sys.stdout.fileno())


def _fail(message: str) -> int:
    print(message, file=sys.stderr)
    return 1


def is_same_file(a: str, b: str) -> bool:
    """Devices and standard output take what comes from wherever."""
    if "-" in (a, b) or any(os.path.exists(path) and not os.path.isfile(path) for path in (a, b)):
        return False
    return os.path.realpath(a) == os.path.realpath(b) or (os.path.exists(a) and os.path.exists(b) and os.path.samefile(a, b))
