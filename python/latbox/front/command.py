"""latbox-solve, from its arguments to its exit status."""

from __future__ import annotations

import io
import os
import signal
import sys
import time
from collections.abc import Callable, Sequence
from contextlib import ExitStack
from typing import IO, TYPE_CHECKING

from ..errors import LatboxError, PlacedError, UsageError, naming, os_error_text, place_text
from ..models import Model, read_model
from ..models.sources import require_place, shown_name, write_file
from ..solving import proof, statuses
from ..solving.events import End, Event
from ..solving.portfolio import Portfolio
from ..solving.settings import Settings
from . import answer, options as table
from .json_lines import KINDS, JsonLines
from .options import Options
from .progress import Display
from .version import version_text

if TYPE_CHECKING:
    from ..view.link import View

NAME = "latbox-solve"
STOPS = (signal.SIGINT, signal.SIGTERM, signal.SIGHUP)


class TooLate(BaseException):
    """The time is up, or the user has had enough, before anything could be searched."""

    def __init__(self, status: str) -> None:
        super().__init__(status)
        self.status = status


def main(arguments: Sequence[str] | None = None) -> int:
    """The exit status; messages stand on standard error."""
    started = time.monotonic() - age()
    open_standard_streams()
    sys.set_int_max_str_digits(0)  # the numbers of models are exact, and may be long
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


def open_standard_streams() -> None:
    """One that is closed becomes /dev/null: else the next file that is opened would be taken for it."""
    for number in (0, 1, 2):
        try:
            os.fstat(number)
        except OSError:
            os.open(os.devnull, os.O_RDWR)
    if sys.stderr is None:
        sys.stderr = open(2, "w", encoding="utf-8", closefd=False)
    # Names go out as they came in, like those on standard output.
    if isinstance(sys.stderr, io.TextIOWrapper):
        sys.stderr.reconfigure(encoding="utf-8", errors="surrogateescape")


def catch_stops(stop: Callable[[int, object], None]) -> None:
    """Each of STOPS calls it, but for a SIGHUP that is ignored: who has started it by nohup wants it to go on."""
    for number in STOPS:
        if number != signal.SIGHUP or signal.getsignal(number) != signal.SIG_IGN:
            signal.signal(number, stop)


def age() -> float:
    """Seconds since this process began: what Python takes to start and to read the package counts too."""
    try:
        with open("/proc/self/stat", encoding="ascii", errors="replace") as file:
            ticks = int(file.read().rpartition(")")[2].split()[19])
        seconds = time.clock_gettime(time.CLOCK_BOOTTIME) - ticks / os.sysconf("SC_CLK_TCK")
    except (OSError, ValueError, IndexError):
        return time.process_time()
    return max(0.0, seconds)


def say(text: str) -> int:
    """To standard output. Throws OSError, which names it."""
    data = text.encode("utf-8", "surrogateescape")
    try:
        # An unbuffered stream, which the environment may ask for, writes less than all when a signal comes.
        while data:
            data = data[os.write(1, data) :]
    except OSError as error:
        # Python would try once more when it ends, and complain.
        os.dup2(os.open(os.devnull, os.O_WRONLY), 1)
        raise OSError(error.errno, error.strerror, "standard output") from None
    return 0


def tell_user(text: str) -> None:
    """A line on standard error. Who does not read it still gets the answer."""
    try:
        sys.stderr.write(text + "\n")
        sys.stderr.flush()
    except (OSError, ValueError):
        pass


def fail(message: str, status: int, name: str = NAME) -> int:
    tell_user("%s: %s" % (name, message))
    return status


class LogFile:
    """Lines with their time. Throws OSError, which names it."""

    def __init__(self, path: str, started: float) -> None:
        self._name = "--log=" + path
        self._started = started
        with naming(self._name):
            self._file = open(path, "w", encoding="utf-8")

    def write(self, line: str) -> None:
        with naming(self._name):
            self._file.write("%.3f %s\n" % (time.monotonic() - self._started, line))
            self._file.flush()

    def close(self) -> None:
        close_quietly(self._file)


def close_quietly(file: IO[str]) -> None:
    """What could not be written was told when it was written."""
    try:
        file.close()
    except OSError:
        pass


class Command:
    """One run. Its first signal ends it with the answer so far, a second one at once."""

    def __init__(self, options: Options, started: float) -> None:
        self.options = options
        self.started = started
        self.portfolio: Portfolio | None = None
        self.is_launched = False
        self.stops = 0
        self.display: Display | None = None
        self.view: View | None = None

    def run(self) -> int:
        if self.options.view is None:
            return self._run()
        from ..view.link import View  # a run without a page begins without it

        self.view = View(self.options.view)
        try:
            tell_user("watch it at " + self.view.link)
            return self._run()
        except LatboxError as error:
            self.view.fail(str(error), time.monotonic() - self.started)
            raise
        finally:
            self.view.close()

    def _run(self) -> int:
        catch_stops(self._stop)
        signal.signal(signal.SIGALRM, self._late)
        if self.options.time is not None:
            signal.setitimer(signal.ITIMER_REAL, max(1e-3, self.options.time - (time.monotonic() - self.started)))
        try:
            model = self._read()
            if self.options.check is not None:
                self._end_alarm()
                return self._check(model, self.options.check)
            self._try_files()
            try:
                end = self._solve(model)
            except PlacedError as error:
                raise error.in_file(shown_name(self.options.model))
        except TooLate as late:
            self._end_alarm()
            self._try_files()
            notes = [proof.missing(proof.OPEN)] if self.options.proof is not None else []
            model, end = Model(), End(late.status, None, None, None, [], 0, time.monotonic() - self.started, notes=notes)
            self._tell_end(model, end)
        return self._tell(model, end)

    # ------------------------------------------------------------- signals

    def _stop(self, number: int, frame: object) -> None:
        """The first one ends it with the answer so far, the second one at once."""
        self.stops += 1
        if self.stops > 1:
            if self.display is not None:
                self.display.clear()
            if self.portfolio is not None:
                self.portfolio.abandon()
            os._exit(128 + number)
        if self.portfolio is not None and self.is_launched:
            self.portfolio.interrupt()
        else:
            raise TooLate(statuses.INTERRUPTED)

    def _late(self, number: int, frame: object) -> None:
        if not self.is_launched:
            raise TooLate(statuses.UNKNOWN)

    def _end_alarm(self) -> None:
        """From here on others look at the time; an alarm while Python ends would kill it, for its handler is gone by then."""
        signal.setitimer(signal.ITIMER_REAL, 0)

    # ------------------------------------------------------------- the parts

    def _read(self) -> Model:
        try:
            model = read_model(self.options.model, self.options.format)
        except OSError as error:
            raise UsageError("%s: %s" % (shown_name(self.options.model), error.strerror or error)) from None
        if not self.options.quiet:
            for note in model.notes:
                tell_user(place_text(shown_name(self.options.model), note.place) + "note: " + note.message)
        return model

    def _check(self, model: Model, path: str) -> int:
        try:
            with open(path, encoding="utf-8-sig", errors="surrogateescape") as file:
                content = file.read()
        except OSError as error:
            raise UsageError("--check=%s: %s" % (path, error.strerror)) from None
        text, well = answer.check_text(model, path, answer.read_points(model, content, path))
        say(text)
        return 0 if well else statuses.FAILURE

    def _try_files(self) -> None:
        """What could not be written in the end is told before the work. Throws OSError, which names the option."""
        options = self.options
        if options.output is not None:
            with naming("--output=" + options.output):
                require_place(options.output)
        if options.proof is not None:
            with naming("--proof=" + options.proof):
                proof.folder(options.proof)

    def _settings(self, log: LogFile | None) -> Settings:
        options = self.options
        return Settings(options.engine, options.digits, options.time, options.solutions, options.target, options.gap,
                        options.seed, options.threads, options.memory, {}, options.proof, log.write if log else None, self.view)

    def _solve(self, model: Model) -> End:
        with ExitStack() as stack:
            tellers = self._tellers(model, stack)
            log = LogFile(self.options.log, self.started) if self.options.log else None
            if log is not None:
                stack.callback(log.close)
            self.portfolio = Portfolio(model, self._settings(log), self.started)
            events = self.portfolio.events()
            stack.callback(events.close)
            for event in events:
                if not self.is_launched:
                    self._end_alarm()
                self.is_launched = True
                for tell in tellers:
                    tell(event)
                if isinstance(event, End):
                    return event
        raise AssertionError("a solution has an end")

    def _tellers(self, model: Model, stack: ExitStack) -> list[Callable[[Event], None]]:
        """Whoever wants to be told of each event."""
        options = self.options
        tellers: list[Callable[[Event], None]] = []
        if options.json:
            tellers.append(self._json_teller(options.json, model, stack))
        if self.view is not None:
            tellers.append(self._view_teller(self.view, model))
        if not options.quiet:
            self.display = Display(sys.stderr, model, shown_name(options.model))
            stack.callback(self.display.clear)
            tellers.append(self.display.tell)
        return tellers

    def _json_teller(self, path: str, model: Model, stack: ExitStack) -> Callable[[Event], None]:
        name = "--json=" + path
        with naming(name):
            file = open(os.dup(1) if path == "-" else path, "w", encoding="utf-8")
        stack.callback(close_quietly, file)
        lines = JsonLines(model, self.options.model)

        def tell(event: Event) -> None:
            with naming(name):
                lines.write(event, file)

        return tell

    def _view_teller(self, view: View, model: Model) -> Callable[[Event], None]:
        lines = JsonLines(model, self.options.model)
        return lambda event: view.tell(KINDS[type(event)], lambda: lines.line(event))

    def _tell_end(self, model: Model, end: End) -> None:
        """The end alone, where nothing could begin."""
        if self.view is not None:
            self._view_teller(self.view, model)(end)
        if self.options.json:
            with ExitStack() as stack:
                self._json_teller(self.options.json, model, stack)(end)

    def _tell(self, model: Model, end: End) -> int:
        options = self.options
        status = statuses.exit_status(end.status, end.x is not None, options.zero_exit)
        if not options.quiet:
            notes = end.notes + ([proof.note(options.proof)] if options.proof is not None else [])
            for note in filter(None, notes):
                tell_user("note: " + note)
        if options.json != "-":
            say(answer.text(model, end, options.all_values))
        # Last: where the file cannot be written the answer has been shown.
        if options.output is not None:
            with naming("--output=" + options.output):
                write_file(options.output, answer.output_text(model, end))
        return status
