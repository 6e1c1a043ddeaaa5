"""What stands in the folder of the pieces: the manifest, and what the farm itself keeps there.

    DIR/manifest, program.opt, lattice, best, K.result    written by latbox-all alone
    DIR/manager/lock          held while a farm is at work here
    DIR/manager/search        the options by which the search was cut
    DIR/manager/port          where the farm listens, also when it is started again
    DIR/manager/password      drawn where none is given; nobody else may read it
    DIR/manager/log           what was refused, lost or split, with the time
    DIR/manager/incoming/     what workers have sent, until latbox-all --take believes it

The manifest is read as lines: those before the first `piece K ...` are its head, and that tells of piece K. It only grows.
A task needs the head and its own line, so that is what a worker gets: a manifest that grows would have to be sent anew each time.
"""

from __future__ import annotations

import fcntl
import os
import re
import secrets
import time

from ..errors import LatboxError, UsageError
from ..models.sources import write_file

PIECE_LINE = re.compile(r"piece ([0-9]+) ")
# One of these is in every folder that a farm or latbox-all has begun.
OURS = ("manager", "manifest", "program.opt")
PARTIAL_ARRIVAL = re.compile(r"([0-9]+)\.[0-9]+\Z")


class Folder:
    """Requires that latbox-all has no call of this farm at work while the manifest is read."""

    def __init__(self, path: str) -> None:
        self.path = os.path.abspath(path)
        self._head = ""
        self._lines: dict[int, str] = {}
        self._read = 0  # bytes of the manifest
        self._arrivals = 0

    def own(self, name: str) -> str:
        return os.path.join(self.path, "manager", name)

    def file(self, name: str) -> str:
        return os.path.join(self.path, name)

    def enter(self) -> None:
        """Makes what is missing, and keeps every other farm out until this process ends. Throws UsageError where it cannot be made, or
        is somebody else's."""
        try:
            if os.path.isdir(self.path) and os.listdir(self.path) and not any(os.path.exists(self.file(name)) for name in OURS):
                raise UsageError("--jobs=%s: it is not empty, and no folder of pieces" % self.path)
            os.makedirs(self.own("incoming"), exist_ok=True)
        except OSError as error:
            raise UsageError("--jobs=%s: a folder cannot be made there: %s" % (self.path, error.strerror)) from None
        lock = os.open(self.own("lock"), os.O_WRONLY | os.O_CREAT, 0o644)
        try:
            fcntl.flock(lock, fcntl.LOCK_EX | fcntl.LOCK_NB)
        except BlockingIOError:
            os.close(lock)
            raise LatboxError("%s: another latbox-farm is at work there" % self.path) from None

    # ------------------------------------------------------------- the farm's own

    def hold_to(self, search: list[str], program: str) -> None:
        """Whoever goes on must ask for the same search. Throws UsageError."""
        text = "".join(option + "\n" for option in search)
        if not self.is_cut:
            write_file(self.own("search"), text)
            return
        if self._content(self.file("program.opt")) != self._content(program):
            raise UsageError("%s holds the pieces of another program; --jobs=DIR names another folder" % self.path)
        before = self._cut_by()
        # What latbox-all has cut without shares of a proof can be proven all the same.
        if before is not None and before != search and before != [option for option in search if option != "--proof=1"]:
            raise UsageError("%s was cut by %s; --jobs=DIR names another folder" %
                             (self.path, "the options " + " ".join(before) if before else "no options of the search"))
        if before is not None:
            write_file(self.own("search"), "".join(option + "\n" for option in before))

    def _cut_by(self) -> list[str] | None:
        """The options, as this farm has kept them, or as the head of the manifest tells them; None where neither does."""
        if os.path.exists(self.own("search")):
            return self._content(self.own("search")).decode("utf-8", "replace").split()
        options = re.search(rb"^options (.*)$", self._content(self.file("manifest")), re.MULTILINE)
        return ["--" + word for word in options[1].decode("ascii", "replace").split() if word.endswith("=1")] if options else None

    def _content(self, path: str) -> bytes:
        try:
            with open(path, "rb") as file:
                return file.read()
        except FileNotFoundError:
            return b""

    def port(self) -> int | None:
        text = self._content(self.own("port")).decode("ascii", "replace").strip()
        return int(text) if re.fullmatch("[0-9]{1,5}", text) else None

    def keep_port(self, port: int) -> None:
        write_file(self.own("port"), "%d\n" % port)

    def password(self) -> str:
        """The path of a file with 128 bits that nobody can guess, mode 0600."""
        path = self.own("password")
        if not self._content(path).strip():
            draft = path + ".new"
            with open(os.open(draft, os.O_WRONLY | os.O_CREAT | os.O_TRUNC, 0o600), "w", encoding="ascii") as file:
                os.fchmod(file.fileno(), 0o600)
                file.write(secrets.token_hex(16) + "\n")
            os.replace(draft, path)
        return path

    def log(self, words: str) -> None:
        with open(self.own("log"), "a", encoding="utf-8", errors="replace") as file:
            file.write("%s %s\n" % (time.strftime("%Y-%m-%d %H:%M:%S"), words))

    # ------------------------------------------------------------- what comes in

    def arrival(self, piece: int) -> str:
        """A path where nothing lies."""
        while True:
            self._arrivals += 1
            path = self.own("incoming/%d.%d" % (piece, self._arrivals))
            if not os.path.exists(path):
                return path

    def left_arrivals(self) -> list[tuple[int, str]]:
        """(piece, path) of what came before a farm was killed; it may be torn."""
        found = [(PARTIAL_ARRIVAL.match(name), name) for name in sorted(os.listdir(self.own("incoming")))]
        return [(int(match[1]), self.own("incoming/" + name)) for match, name in found if match]

    # ------------------------------------------------------------- the manifest

    @property
    def is_cut(self) -> bool:
        return os.path.exists(self.file("manifest"))

    def read_manifest(self) -> None:
        """The lines that are new."""
        with open(self.file("manifest"), "rb") as file:
            file.seek(self._read)
            data = file.read()
        data = data[: data.rfind(b"\n") + 1]
        self._read += len(data)
        for line in data.decode("utf-8", "replace").splitlines(keepends=True):
            match = PIECE_LINE.match(line)
            if match:
                self._lines[int(match[1])] = line
            elif not self._lines:
                self._head += line

    def best(self) -> str:
        """Points to begin with, as lines; "" where none is known. Their reader believes what it has verified."""
        return self._content(self.file("best")).decode("ascii", "replace")

    def result(self, piece: int) -> str:
        return self.file("%d.result" % piece)

    def drop_result(self, piece: int) -> None:
        """It is not believed any more, and stands aside."""
        os.replace(self.result(piece), self.own("%d.disputed" % piece))

    def is_comparable(self, piece: int) -> bool:
        """Two results of it must be the same: not so where a search is for better points than are known."""
        return " proof:" in self._lines[piece] or not os.path.exists(self.file("best"))

    def files(self) -> dict[str, str]:
        """What every worker needs, by its name in a folder of pieces."""
        return {name: self.file(name) for name in ("program.opt", "lattice", "proof") if os.path.exists(self.file(name))}

    def manifest_of(self, piece: int) -> str:
        """All that a worker need know of it."""
        return self._head + self._lines[piece]
