"""latbox-solve, from its arguments to its exit status."""

from __future__ import annotations

import os
import signal
import sys
import time
from collections.abc import Sequence
from contextlib import ExitStack
from typing import IO

from ..errors import LatboxError, PlacedError, UsageError, place_text
from ..models import Model, read_model
from ..models.sources import shown_name
from ..solving import statuses
from ..solving.events import End
from ..solving.portfolio import Portfolio, Settings
from . import answer, options as table
from .json_lines import JsonLines
from .options import Options
from .progress import Display
from .version import version_text

NAME = "latbox-solve"
STOPS = (signal.SIGINT, signal.SIGTERM, signal.SIGHUP)


class TooLate(BaseException):
    """The time is up, or the user has had enough, before anything could be searched."""

    def __init__(self, status: str) -> None:
        super().__init__(status)
        self.status = status


def main(arguments: Sequence[str] | None = None) -> int:
    """The exit status; messages stand on standard error."""
    started = time.monotonic()
    try:
        options = table.parse(sys.argv[1:] if arguments is None else arguments)
        if options.help:
            return say(table.usage())
        if options.version:
            return say(version_text())
        return Command(options, started).run()
    except (UsageError, PlacedError) as error:
        return fail(str(error), statuses.USAGE)
    except LatboxError as error:
        return fail(str(error), statuses.FAILURE)
    except MemoryError:
        return fail("out of memory", statuses.FAILURE)
    except OSError as error:
        return fail(os_error_text(error), statuses.FAILURE)


def say(text: str) -> int:
    sys.stdout.buffer.write(text.encode("utf-8", "surrogateescape"))
    sys.stdout.buffer.flush()
    return 0


def fail(message: str, status: int) -> int:
    try:
        sys.stderr.write("%s: %s\n" % (NAME, message.encode("utf-8", "surrogateescape").decode("utf-8", "replace")))
        sys.stderr.flush()
    except (OSError, ValueError):
        pass
    return status


def os_error_text(error: OSError) -> str:
    where = "%s: " % error.filename if error.filename else ""
    return where + (error.strerror or str(error))


class Command:
    def __init__(self, options: Options, started: float) -> None:
        self.options = options
        self.started = started
        self.portfolio: Portfolio | None = None
        self.is_launched = False
        self.stops = 0

    def run(self) -> int:
        for number in STOPS:
            signal.signal(number, self._stop)
        signal.signal(signal.SIGALRM, self._late)
        if self.options.time is not None:
            signal.setitimer(signal.ITIMER_REAL, max(1e-3, self.options.time - (time.monotonic() - self.started)))
        try:
            model = self._read()
            if self.options.check is not None:
                return self._check(model)
            end = self._solve(model)
        except TooLate as late:
            signal.setitimer(signal.ITIMER_REAL, 0)
            model, end = Model(), End(late.status, None, None, None, [], 0, time.monotonic() - self.started)
        return self._tell(model, end)

    # ------------------------------------------------------------- signals

    def _stop(self, number: int, frame: object) -> None:
        """The first one ends it with the answer so far, the second one at once."""
        self.stops += 1
        if self.stops > 1:
            if self.portfolio is not None:
                self.portfolio.abandon()
            os._exit(128 + number)
        if self.is_launched:
            self.portfolio.interrupt()
        else:
            raise TooLate(statuses.INTERRUPTED)

    def _late(self, number: int, frame: object) -> None:
        if not self.is_launched:
            raise TooLate(statuses.UNKNOWN)

    # ------------------------------------------------------------- the parts

    def _read(self) -> Model:
        try:
            model = read_model(self.options.model, self.options.format)
        except OSError as error:
            raise UsageError("%s: %s" % (shown_name(self.options.model), error.strerror or error)) from None
        if not self.options.quiet:
            for note in model.notes:
                print(place_text(shown_name(self.options.model), note.place) + "note: " + note.message, file=sys.stderr)
        return model

    def _check(self, model: Model) -> int:
        path = self.options.check
        try:
            with open(path, encoding="utf-8", errors="surrogateescape") as file:
                content = file.read()
        except OSError as error:
            raise UsageError("--check=%s: %s" % (path, error.strerror)) from None
        text, well = answer.check_text(model, path, answer.read_points(model, content, path))
        say(text)
        return 0 if well else statuses.FAILURE

    def _settings(self, log: IO[str] | None) -> Settings:
        options = self.options

        def write(line: str) -> None:
            log.write("%.3f %s\n" % (time.monotonic() - self.started, line))
            log.flush()

        return Settings(options.engine, options.digits, options.time, options.solutions, options.target, options.gap,
                        options.seed, options.threads, options.memory, {}, options.proof, write if log else None)

    def _solve(self, model: Model) -> End:
        options = self.options
        with ExitStack() as stack:
            log = stack.enter_context(open(options.log, "w", encoding="utf-8")) if options.log else None
            tellers = []
            if options.json:
                tellers.append(JsonLines(stack.enter_context(self._json_file()), model, options.model))
            if not options.quiet:
                display = Display(sys.stderr, model, shown_name(options.model))
                stack.callback(display.clear)
                tellers.append(display)
            self.portfolio = Portfolio(model, self._settings(log), self.started)
            events = self.portfolio.events()
            stack.callback(events.close)
            for event in events:
                self.is_launched = True
                for teller in tellers:
                    teller.tell(event)
                if isinstance(event, End):
                    return event
        raise AssertionError("a solution has an end")

    def _json_file(self) -> IO[str]:
        if self.options.json == "-":
            return open(os.dup(1), "w", encoding="utf-8")
        return open(self.options.json, "w", encoding="utf-8")

    def _tell(self, model: Model, end: End) -> int:
        options = self.options
        status = statuses.exit_status(end.status, end.x is not None, options.zero_exit)
        if options.output is not None:
            answer.write_whole(options.output, answer.output_text(model, end))
        if not options.quiet:
            for note in end.notes:
                print("note: " + note, file=sys.stderr)
        if options.json != "-":
            say(answer.text(model, end, options.all_values))
        return status
