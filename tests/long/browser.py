#!/usr/bin/env python3
"""Headless Chromium signs in to the launcher in the sandbox: with one tab, and with two tabs, spare connections, a
denied consent, reload and back. Each sign-in redeems one code, the launcher shows the user, and later requests change
nothing.

    browser.py BUILD [ROUNDS]"""

import collections
import json
import os
import pathlib
import re
import select
import subprocess
import sys
import tempfile

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "e2e"))
from desktop import DEADLINE, Desktop, check, wait_for
from sandbox_run import Sandbox, stand_apart
from tour import SIGN_IN, SIGN_IN_BUTTON, SIGN_IN_COLUMN, SIGN_OUT, USER_CARD

CONSENT = "Sign in to VOLO Launcher"
DONE = "Sign-in complete\n\nYou can close this tab and return to VOLO Launcher."
REFUSED = "127.0.0.1 refused to connect."  # Chromium's page when the listener has stopped
USER = "Ada Sandbox ada@sandbox.test"


class Browser:
    """Chromium, controlled through a pipe. It trusts the sandbox's authority and reaches this machine only."""

    def __init__(self, home, authority):
        (home / ".pki/nssdb").mkdir(parents=True)
        database = f"sql:{home}/.pki/nssdb"
        subprocess.run(["certutil", "-A", "-d", database, "-n", "sandbox", "-t", "C,,", "-i", authority], check=True)
        self.log = home / "net.json"
        self.process = subprocess.Popen(  # Chromium reads commands from descriptor 3 and answers on descriptor 4
            ["sh", "-c", 'exec chromium "$@" 3<&0 4>&1 </dev/null >/dev/null 2>&1', "chromium", "--headless",
             "--no-sandbox", "--remote-debugging-pipe", f"--user-data-dir={home}/profile", f"--log-net-log={self.log}",
             "--host-resolver-rules=MAP * ~NOTFOUND, EXCLUDE 127.0.0.1"],
            env={**os.environ, "HOME": str(home)}, stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        self.unread, self.calls = b"", 0

    def call(self, method, parameters, session=None):
        self.calls += 1
        message = {"id": self.calls, "method": method, "params": parameters, "sessionId": session}
        self.process.stdin.write(json.dumps({k: v for k, v in message.items() if v is not None}).encode() + b"\0")
        self.process.stdin.flush()
        answer = {}
        while answer.get("id") != self.calls:
            while b"\0" not in self.unread:
                check(f"an answer to {method}", select.select([self.process.stdout], [], [], DEADLINE)[0])
                received = os.read(self.process.stdout.fileno(), 65536)
                check("a running browser", received)
                self.unread += received
            text, self.unread = self.unread.split(b"\0", 1)
            answer = json.loads(text)
        return answer.get("result", {})  # a page that is changing answers with an error


class Tab:
    """A tab that shows the consent page."""

    def __init__(self, browser, address):
        target = browser.call("Target.createTarget", {"url": address})
        session = browser.call("Target.attachToTarget", target | {"flatten": True})["sessionId"]
        self.call = lambda method, parameters: browser.call(method, parameters, session)
        self.listener = re.search(r"redirect_uri=http%3A%2F%2F127\.0\.0\.1%3A(\d+)", address)[1]
        self.see(CONSENT)

    def run(self, script):
        return self.call("Runtime.evaluate", {"expression": script}).get("result", {}).get("value")

    def see(self, text):
        wait_for(lambda: f"{text!r} in the browser, which reads {self.run('document.body.innerText')!r}",
                 lambda: text in (self.run("document.body.innerText") or ""))

    def reload(self, text):
        self.run("document.body.textContent = ''")  # the old page must not be read as the new one
        self.call("Page.reload", {})
        self.see(text)

    def connect(self):
        """Opens two connections to the listener that carry no request."""
        link = f"<link rel=preconnect href=http://127.0.0.1:{self.listener}"
        self.run(f"document.head.insertAdjacentHTML('beforeend', '{link}>{link} crossorigin>')")
        connections = ["ss", "-Htn", "state", "established", "dst", f"127.0.0.1:{self.listener}"]
        wait_for("spare connections", lambda: subprocess.check_output(connections).count(b"\n") >= 2)

    def press(self, button, text):
        self.run(f"document.querySelector('button[value={button}]').click()")
        self.see(text)


def sign_in(window, browser, addresses, denies):
    addresses.write_text("")
    window.click(SIGN_IN)
    address = wait_for("the address", lambda: re.search(r"(.+)\n", addresses.read_text()))[1]
    first, second = Tab(browser, address), Tab(browser, address)
    if denies:
        second.connect()
        second.press("deny", DONE)
        window.see("Google sign-in was not completed (access_denied).", SIGN_IN_COLUMN)
        second.reload(DONE)
        first.connect()
    first.press("allow", DONE)
    window.see(USER, USER_CARD)
    first.reload(REFUSED)  # the listener has stopped
    first.run("history.back()")
    first.see(CONSENT)
    first.reload(CONSENT)
    for tab in (first,) if denies else (first, second):
        tab.press("allow", REFUSED)
    window.see(USER, USER_CARD)
    window.click(SIGN_OUT)
    window.see("Sign in", SIGN_IN_BUTTON)


def main():
    build, rounds = sys.argv[1], int(sys.argv[2]) if len(sys.argv) > 2 else 10
    stand_apart(build)
    with tempfile.TemporaryDirectory(prefix="volo-long-") as folder, Desktop() as desktop:
        root = pathlib.Path(folder)
        opener = f"""sh -c 'echo "$0" >> {root}/addresses'"""
        with Sandbox(desktop, build, "--with-editor", "--browser", opener, root=root / "sandbox") as sandbox:
            window = desktop.window("VOLO Launcher")
            window.see("Sign in", SIGN_IN_BUTTON)
            browser = Browser(root / "browser", sandbox.root / "authority.pem")
            for number in range(rounds):
                sign_in(window, browser, root / "addresses", number % 2 == 1)
            browser.call("Browser.close", {})
            browser.process.communicate(timeout=DEADLINE)
            sandbox.close(window)
        seen = collections.Counter(re.findall("provider: (token|userinfo|refused.*)", "\n".join(sandbox.lines)))
        expected = {"token": rounds, "userinfo": rounds, "refused: consent denied": rounds // 2}
        check(f"{expected}, not {seen}", seen == expected)
        icons = set(re.findall(r"http://127\.0\.0\.1:\d+/favicon\.ico", browser.log.read_text(errors="replace")))
        check("requests for the icon", icons)
    print(f"{rounds} sign-ins, {rounds // 2} after a denied consent, icons at {len(icons)} listeners: all as expected")


if __name__ == "__main__":
    main()
