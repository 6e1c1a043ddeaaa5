"""A browser without a screen, driven over its DevTools protocol by the standard library alone: for tests of pages.

Messages are JSON texts that end with a zero byte, on two pipes (file descriptors 3 and 4 of the browser).
"""

from __future__ import annotations

import base64
import json
import os
import select
import shutil
import signal
import subprocess
import tempfile
import time
from collections.abc import Callable
from typing import Any

NAMES = ("chromium", "chromium-browser", "google-chrome")
# The machine may be busy: whoever waits for longer than this waits in vain.
LIMIT = 120.0


def program() -> str | None:
    return next((found for name in NAMES if (found := shutil.which(name))), None)


class Browser:
    """Starts at once; close() it. It looks at nothing but what it is told to: a profile of its own, no first run, no updates."""

    def __init__(self, *options: str) -> None:
        path = program()
        assert path is not None
        self._folder = tempfile.mkdtemp(prefix="latbox-browser")
        theirs_in, self._out = os.pipe()
        self._in, theirs_out = os.pipe()

        def place_pipes() -> None:
            # Both are moved out of the way first: each may be the number that the other one wants.
            source, sink = os.dup(theirs_in), os.dup(theirs_out)
            os.dup2(source, 3)
            os.dup2(sink, 4)

        arguments = [path, "--headless=new", "--no-sandbox", "--disable-gpu", "--remote-debugging-pipe", "--no-first-run", "--disable-extensions",
                     "--disable-background-networking", "--disable-component-update", "--disable-sync", "--disable-default-apps",
                     "--disable-dev-shm-usage", "--no-default-browser-check", "--hide-scrollbars", "--metrics-recording-only", "--password-store=basic",
                     "--disable-features=Translate,OptimizationHints,MediaRouter", "--user-data-dir=" + self._folder, *options, "about:blank"]
        self._process = subprocess.Popen(arguments, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                                         close_fds=False, preexec_fn=place_pipes, process_group=0,
                                         env={**os.environ, "HOME": self._folder})
        os.close(theirs_in)
        os.close(theirs_out)
        self._rest = b""
        self._next = 0
        self._answers: dict[int, dict[str, Any]] = {}
        self.pages: dict[str, Page] = {}

    def page(self, width: int = 1200, height: int = 900, dark: bool = False, context: str | None = None) -> Page:
        target = self.call("Target.createTarget", url="about:blank", **({"browserContextId": context} if context else {}))["targetId"]
        session = self.call("Target.attachToTarget", targetId=target, flatten=True)["sessionId"]
        page = self.pages[session] = Page(self, session, target)
        page.call("Page.enable")
        page.call("Network.enable")
        page.call("Runtime.enable")
        page.size(width, height, dark)
        return page

    def call(self, method: str, session: str | None = None, **parameters: Any) -> dict[str, Any]:
        self._next += 1
        number = self._next
        message = {"id": number, "method": method, "params": parameters, **({"sessionId": session} if session else {})}
        data = json.dumps(message).encode() + b"\0"
        while data:
            data = data[os.write(self._out, data) :]
        end = time.monotonic() + LIMIT
        while number not in self._answers:
            if not self.listen(end - time.monotonic()):
                raise AssertionError("the browser does not answer to " + method)
        answer = self._answers.pop(number)
        if "error" in answer:
            raise AssertionError("%s: %s" % (method, answer["error"].get("message")))
        return answer["result"]

    def listen(self, seconds: float) -> bool:
        """Takes what the browser says within that time; False: it says nothing."""
        if not select.select([self._in], [], [], max(0.0, seconds))[0]:
            return False
        data = os.read(self._in, 1 << 20)
        if not data:
            raise AssertionError("the browser has ended")
        *whole, self._rest = (self._rest + data).split(b"\0")
        for text in whole:
            message = json.loads(text)
            if "id" in message:
                self._answers[message["id"]] = message
            elif message.get("sessionId") in self.pages:
                self.pages[message["sessionId"]].take(message["method"], message["params"])
        return True

    def close(self) -> None:
        for end in (self._in, self._out):
            os.close(end)
        try:
            self._process.wait(5)
        except subprocess.TimeoutExpired:
            pass
        try:
            os.killpg(self._process.pid, signal.SIGKILL)
        except OSError:
            pass
        self._process.wait()
        shutil.rmtree(self._folder, ignore_errors=True)


class Page:
    """One window."""

    def __init__(self, browser: Browser, session: str, target: str) -> None:
        self._browser = browser
        self._target = target
        self._session = session
        self.requests: list[str] = []  # addresses
        self.complaints: list[str] = []  # of the console: exceptions, refusals of the policy

    def call(self, method: str, **parameters: Any) -> dict[str, Any]:
        return self._browser.call(method, self._session, **parameters)

    def take(self, method: str, parameters: dict[str, Any]) -> None:
        if method == "Network.requestWillBeSent":
            self.requests.append(parameters["request"]["url"])
        elif method == "Runtime.exceptionThrown":
            details = parameters["exceptionDetails"]
            self.complaints.append(details.get("exception", {}).get("description") or details["text"])
        elif method == "Runtime.consoleAPICalled" and parameters["type"] in ("error", "assert"):
            self.complaints.append(json.dumps(parameters["args"]))
        elif method == "Log.entryAdded" and parameters["entry"]["level"] == "error":
            self.complaints.append(parameters["entry"]["text"])

    def close(self) -> None:
        """Windows that are open draw, and take the time of the others."""
        self._browser.call("Target.closeTarget", targetId=self._target)

    def to_front(self) -> None:
        self.call("Page.bringToFront")

    def size(self, width: int, height: int, dark: bool = False) -> None:
        self.call("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=1, mobile=False)
        self.call("Emulation.setEmulatedMedia", features=[{"name": "prefers-color-scheme", "value": "dark" if dark else "light"}])

    def open(self, address: str) -> None:
        self.call("Page.navigate", url=address)

    def value(self, script: str) -> Any:
        """Of an expression; promises are waited for."""
        answer = self.call("Runtime.evaluate", expression=script, returnByValue=True, awaitPromise=True, userGesture=True)
        if "exceptionDetails" in answer:
            details = answer["exceptionDetails"]
            raise AssertionError(details.get("exception", {}).get("description") or details["text"])
        return answer["result"].get("value")

    def wait(self, script: str, holds: Callable[[Any], bool] = bool, limit: float = LIMIT) -> Any:
        """The value of the expression once it holds."""
        end = time.monotonic() + limit
        while True:
            try:
                value = self.value(script)
            except AssertionError:
                value = None  # between two pages
                if time.monotonic() > end:
                    raise
            if value is not None and holds(value):
                return value
            if time.monotonic() > end:
                raise AssertionError("in vain: %s is %r; complaints: %s" % (script, value, self.complaints))
            self._browser.listen(0.05)

    def picture(self, path: str, whole: bool = False) -> None:
        shot = self.call("Page.captureScreenshot", format="png", captureBeyondViewport=whole, **(
            {"clip": {**self.call("Page.getLayoutMetrics")["cssContentSize"], "scale": 1}} if whole else {}))
        with open(path, "wb") as file:
            file.write(base64.b64decode(shot["data"]))
