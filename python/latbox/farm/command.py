"""latbox-farm, from its arguments to its exit status: verdict and status are those of latbox-all."""

from __future__ import annotations

import os
import shlex
import signal
import socket
import sys
from collections.abc import Sequence

from .. import version
from ..errors import LatboxError, UsageError, os_error_text
from ..front.command import catch_stops, fail, open_standard_streams, say
from ..front.version import engine_line
from ..solving import binaries, statuses
from . import options as table
from .engine import Engine
from .folder import Folder
from .manager import Manager
from .options import Options
from .pieces import failure
from .progress import Display

NAME = "latbox-farm"
# As latbox-all has them, for a run that was stopped.
FOUND, UNKNOWN = 11, 12


def main(arguments: Sequence[str] | None = None) -> int:
    """The exit status; messages stand on standard error."""
    open_standard_streams()
    try:
        options = table.parse(sys.argv[1:] if arguments is None else arguments)
        if options.help:
            return say(table.usage())
        if options.version:
            return say("%s %s, commit %s\n%s\n" % (NAME, version.version(), version.commit(),
                                                   engine_line(binaries.COMPLETE, ["--version"])))
        return Command(options).run()
    except UsageError as error:
        return fail(str(error), statuses.USAGE, NAME)
    except LatboxError as error:
        return fail(str(error), statuses.FAILURE, NAME)
    except OSError as error:
        return fail(os_error_text(error), statuses.FAILURE, NAME)


class Command:
    """One run. Its first signal ends it with what is known, a second one at once; the folder stands in any case."""

    def __init__(self, options: Options) -> None:
        self._options = options
        self._display = Display(sys.stderr, options.quiet)
        self._folder = Folder(options.jobs)
        self._manager: Manager | None = None
        self._stops = 0
        self._signal = "nobody"

    def run(self) -> int:
        options, folder = self._options, self._folder
        catch_stops(self._stop)
        check_readable(options.program)
        binaries.job_program()
        for name, path in (("out", options.out), ("proof", options.proof)):
            if path is not None and not os.path.isdir(os.path.dirname(os.path.abspath(path))):
                raise UsageError("--%s=%s: there is no such folder" % (name, path))
        if options.password is not None and not is_private(options.password):
            self._display.note("%s: others may read this password" % options.password)
        folder.enter()
        folder.hold_to(self._search(), options.program)
        engine = self._engine()
        self._manager = Manager(folder, engine, self._display, options.job_rtime, options.verify)
        try:
            return self._work(self._manager, engine)
        finally:
            self._manager.end()
            self._display.clear()

    def _search(self) -> list[str]:
        """What latbox-all is asked for, as it is written there."""
        options = self._options
        asked = ["--%s=1" % name for name in ("all", "ties", "count") if getattr(options, name)]
        return asked + ["--proof=1"] * (options.proof is not None)

    def _engine(self) -> Engine:
        options, folder = self._options, self._folder
        password = os.path.abspath(options.password) if options.password is not None else folder.password()
        engine = Engine(options.port or folder.port(), password, options.silence)
        folder.keep_port(engine.port)
        worker = "work_queue_worker --password=%s %s %d" % (shlex.quote(password), socket.gethostname(), engine.port)
        self._display.note("a worker is started by: " + worker)
        if options.catalog is not None:
            project = "latbox-" + os.path.splitext(os.path.basename(options.program))[0]
            engine.advertise(project, options.catalog)
            self._display.note("or, wherever that catalog is known: work_queue_worker --password=%s --catalog=%s --manager-name=%s" %
                               (shlex.quote(password), options.catalog, shlex.quote(project)))
        return engine

    def _work(self, manager: Manager, engine: Engine) -> int:
        options, folder = self._options, self._folder
        if not folder.is_cut:
            manager.cut(["--split=%d" % options.pieces, "--jobs=" + folder.path, "--quiet=%d" % options.quiet, *self._search(),
                         os.path.abspath(options.program)])
        if not folder.is_cut or not manager.work():
            return self._stopped(manager)
        engine.dismiss()
        joining = ["--join=1", "--jobs=" + folder.path, "--threads=%d" % options.threads, "--quiet=%d" % options.quiet]
        if not options.count:
            joining.append("--out=" + os.path.abspath(options.out))
        if options.proof is not None:
            joining.append("--proof=" + os.path.abspath(options.proof))
        answer = manager.join(joining)
        if answer is None:
            return self._stopped(manager)
        self._display.clear()
        if answer.status in (statuses.FAILURE, statuses.USAGE):
            raise failure(answer, "--join")
        say("".join(line + "\n" for line in answer.out))
        return answer.status

    def _stopped(self, manager: Manager) -> int:
        self._display.note("stopped by %s; %s is whole, and the same command goes on from it" % (self._signal, self._folder.path))
        points = 1 if self._folder.best() else manager.points
        say("verdict: found %d\n" % points if points else "verdict: unknown\n")
        return FOUND if points else UNKNOWN

    def _stop(self, number: int, frame: object) -> None:
        self._stops += 1
        if self._stops > 1 or self._manager is None:
            self._display.clear()
            if self._manager is not None:
                self._manager.end()
            os._exit(128 + number)
        self._signal = signal.Signals(number).name
        self._manager.is_stopped = True


def check_readable(program: str) -> None:
    try:
        with open(program, "rb"):
            pass
    except OSError as error:
        raise UsageError("%s: %s" % (program, error.strerror)) from None


def is_private(path: str) -> bool:
    """Nobody but its owner may read it. Throws UsageError where it is none, or empty."""
    try:
        mode = os.stat(path).st_mode
        with open(path, "rb") as file:
            if not file.read().strip():
                raise UsageError("--password=%s: it is empty" % path)
    except OSError as error:
        raise UsageError("--password=%s: %s" % (path, error.strerror)) from None
    return not mode & 0o077
