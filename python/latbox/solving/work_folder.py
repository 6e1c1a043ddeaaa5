"""A folder for the engines' files, which is gone with the run.

A run that is killed by SIGKILL leaves its folder; the next run removes it. Which one is left over a lock tells: its owner holds
it as long as it lives, in whatever container.
"""

from __future__ import annotations

import fcntl
import glob
import os
import shutil
import tempfile

PREFIX = "latbox-solve-"
LOCK = "lock"


class WorkFolder:
    def __init__(self) -> None:
        """Throws OSError."""
        clear_left_over()
        self.path = tempfile.mkdtemp(prefix=PREFIX)
        # Locked before it has its name: another run that clears away takes no folder of which it cannot get the lock.
        draft = os.path.join(self.path, LOCK + ".new")
        self._lock = open(draft, "w", encoding="ascii")
        fcntl.flock(self._lock, fcntl.LOCK_EX)
        os.rename(draft, os.path.join(self.path, LOCK))
        self._runs = 0

    def part(self, name: str) -> str:
        """A new folder in it, for one engine."""
        self._runs += 1
        path = os.path.join(self.path, "%d-%s" % (self._runs, name))
        os.mkdir(path)
        return path

    def remove(self) -> None:
        shutil.rmtree(self.path, ignore_errors=True)
        self._lock.close()


def clear_left_over() -> None:
    """Removes what killed runs of this user have left. One that is being made has no lock yet and stays."""
    for path in glob.glob(os.path.join(glob.escape(tempfile.gettempdir()), PREFIX + "*")):
        try:
            if os.stat(path).st_uid != os.getuid():
                continue
            with open(os.path.join(path, LOCK), "r", encoding="ascii") as lock:
                fcntl.flock(lock, fcntl.LOCK_EX | fcntl.LOCK_NB)
                shutil.rmtree(path, ignore_errors=True)
        except OSError:
            continue
