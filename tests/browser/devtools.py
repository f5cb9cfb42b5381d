"""Headless Chromium driven over its DevTools pipe, with the standard library only.

Chromium reads commands from file descriptor 3 and writes answers and events
to 4, each a JSON text ended by a NUL byte; no port is opened.
"""

import base64
import fcntl
import json
import os
import select
import shutil
import signal
import sys
import tempfile
import time

# CTest reads this exit status as "skipped".
SKIPPED = 77

FLAGS = [
    "--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
    "--disable-background-networking", "--disable-component-update", "--disable-sync",
    "--remote-debugging-pipe", "--allow-file-access-from-files",
]


def find_chromium():
    """The browser's path; exits as skipped where there is none."""
    for name in ("chromium", "chromium-browser", "google-chrome"):
        path = shutil.which(name)
        if path:
            return path
    print("SKIPPED: no Chromium on this machine (scripts/setup chromium installs it)")
    sys.exit(SKIPPED)


class Failure(Exception):
    pass


class Browser:
    """One Chromium process with one page, its console watched from the start."""

    def __init__(self, width=1000, height=700, timeout=30):
        self.timeout = timeout
        self.profile = tempfile.mkdtemp(prefix="lbx-chromium-")
        self.log = open(os.path.join(self.profile, "chromium.log"), "wb")
        to_browser, self.commands = self._pipe()
        self.answers, from_browser = self._pipe()
        path = find_chromium()
        self.pid = os.posix_spawn(path, [path, *FLAGS, f"--user-data-dir={self.profile}", "about:blank"], os.environ,
                                  # The log may itself be 3 or 4: placed first.
                                  file_actions=[(os.POSIX_SPAWN_DUP2, self.log.fileno(), 1),
                                                (os.POSIX_SPAWN_DUP2, self.log.fileno(), 2),
                                                (os.POSIX_SPAWN_DUP2, to_browser, 3),
                                                (os.POSIX_SPAWN_DUP2, from_browser, 4)],
                                  # A group of its own, with its helper processes, to be ended whole.
                                  setpgroup=0)
        os.close(to_browser)
        os.close(from_browser)
        self.next_id = 0
        self.pending = b""
        self.events = []
        self.problems = []
        target = self._first_page()
        self.session = self.call("Target.attachToTarget", targetId=target, flatten=True, session=None)["sessionId"]
        for domain in ("Page", "Runtime", "Log"):
            self.call(domain + ".enable")
        self.call("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=1, mobile=False)

    @staticmethod
    def _pipe():
        # Above the standard streams and whatever the spawn maps onto 3 and 4.
        read, write = os.pipe()
        moved = [fcntl.fcntl(fd, fcntl.F_DUPFD_CLOEXEC, 10) for fd in (read, write)]
        os.close(read)
        os.close(write)
        return moved

    def _first_page(self):
        deadline = time.monotonic() + self.timeout
        while time.monotonic() < deadline:
            pages = [t["targetId"] for t in self.call("Target.getTargets", session=None)["targetInfos"]
                     if t["type"] == "page"]
            if pages:
                return pages[0]
            time.sleep(0.1)
        raise Failure("Chromium opened no page")

    def _group_alive(self):
        for entry in os.listdir("/proc"):
            try:
                with open(f"/proc/{entry}/stat") as stat:
                    fields = stat.read().rsplit(")", 1)[1].split()
            except (OSError, IndexError):
                continue
            if fields[0] != "Z" and int(fields[2]) == self.pid:
                return True
        return False

    def close(self):
        try:
            os.killpg(self.pid, signal.SIGTERM)
            os.waitpid(self.pid, 0)
        except OSError:
            pass
        # Its helpers outlive it by a moment, and one writes its state into
        # the profile on the way out: gone first, so that nothing is left.
        deadline = time.monotonic() + 5
        while self._group_alive() and time.monotonic() < deadline:
            time.sleep(0.05)
        for fd in (self.commands, self.answers):
            os.close(fd)
        self.log.close()
        shutil.rmtree(self.profile, ignore_errors=True)

    def __enter__(self):
        return self

    def __exit__(self, *exc):
        self.close()

    def _read_message(self, deadline):
        while b"\0" not in self.pending:
            left = deadline - time.monotonic()
            if left <= 0 or not select.select([self.answers], [], [], left)[0]:
                raise Failure("Chromium did not answer in time")
            chunk = os.read(self.answers, 1 << 20)
            if not chunk:
                raise Failure("Chromium closed its pipe; see its log")
            self.pending += chunk
        text, self.pending = self.pending.split(b"\0", 1)
        message = json.loads(text)
        if "method" in message:
            self._note(message)
        return message

    def _note(self, event):
        self.events.append(event)
        method, params = event["method"], event.get("params", {})
        if method == "Runtime.exceptionThrown":
            details = params["exceptionDetails"]
            self.problems.append("exception: " + details.get("exception", {}).get("description", details["text"]))
        elif method == "Runtime.consoleAPICalled" and params["type"] in ("error", "assert"):
            self.problems.append("console." + params["type"] + ": " +
                                 " ".join(str(a.get("value", a.get("description"))) for a in params["args"]))
        elif method == "Log.entryAdded" and params["entry"]["level"] == "error":
            entry = params["entry"]
            self.problems.append("log: " + entry["text"] + (" " + entry["url"] if entry.get("url") else ""))

    def call(self, method, session="page", **params):
        """Sends one command and returns its result; raises on an error answer."""
        self.next_id += 1
        message = {"id": self.next_id, "method": method, "params": params}
        if session == "page":
            message["sessionId"] = self.session
        os.write(self.commands, json.dumps(message).encode() + b"\0")
        deadline = time.monotonic() + self.timeout
        while True:
            answer = self._read_message(deadline)
            if answer.get("id") == self.next_id:
                if "error" in answer:
                    raise Failure(f"{method}: {answer['error'].get('message')}")
                return answer["result"]

    def wait_for(self, method, timeout=None):
        deadline = time.monotonic() + (timeout or self.timeout)
        while True:
            for i, event in enumerate(self.events):
                if event["method"] == method:
                    return self.events.pop(i)
            self._read_message(deadline)

    def open(self, url):
        self.events.clear()
        self.call("Page.navigate", url=url)
        self.wait_for("Page.loadEventFired")

    def evaluate(self, expression):
        """The value of a JavaScript expression in the page; promises are awaited."""
        result = self.call("Runtime.evaluate", expression=expression, returnByValue=True, awaitPromise=True)
        if "exceptionDetails" in result:
            raise Failure(f"{expression!r} threw: {result['exceptionDetails'].get('exception', {}).get('description')}")
        return result["result"].get("value")

    def wait_until(self, expression, timeout=10):
        deadline = time.monotonic() + timeout
        while not self.evaluate(expression):
            if time.monotonic() > deadline:
                raise Failure(f"still false after {timeout} s: {expression}")
            time.sleep(0.05)

    def choose(self, selector, paths):
        """Hands files to a file picker of the page, as a person choosing them would."""
        root = self.call("DOM.getDocument", depth=-1)["root"]["nodeId"]
        picker = self.call("DOM.querySelector", nodeId=root, selector=selector)["nodeId"]
        if picker == 0:
            raise Failure(f"no {selector} on the page")
        self.call("DOM.setFileInputFiles", nodeId=picker, files=[str(p) for p in paths])

    def screenshot(self, path):
        data = self.call("Page.captureScreenshot", format="png")["data"]
        with open(path, "wb") as out:
            out.write(base64.b64decode(data))


class Checks:
    """Collects failed expectations and reports them in a closing line CTest and people can read."""

    def __init__(self):
        self.passed = 0
        self.failed = []

    def expect(self, condition, what):
        if condition:
            self.passed += 1
        else:
            self.failed.append(what)
            print("FAILED: " + what)

    def finish(self):
        print(f"{self.passed} passed, {len(self.failed)} failed")
        return 1 if self.failed else 0
