#!/usr/bin/env python3
"""Checks of the built programs that the tour does not make.

    checks.py [--build DIRECTORY] NAME      exit status 77: not possible on this machine"""

import argparse
import contextlib
import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys
import tempfile

from desktop import Desktop, NotSeen, check, missing_programs, wait_for
from sandbox_run import WINE, Sandbox, be_google, command_of, is_for_windows, stand_apart
from tour import (DIALOG, EDITOR_WINDOW, INSTALL_ACTION, INSTALLS_CARD, INSTALLS_TAB, NEW_PROJECT, SIGN_IN,
                  SIGN_IN_BUTTON, SIGN_IN_COLUMN, USER_CARD, WHOLE, name_box)

SKIPPED = 77
WINDOWS_LIBRARIES = {name + ".dll" for name in (
    "advapi32", "comdlg32", "crypt32", "dwmapi", "gdi32", "kernel32", "msvcrt", "ole32", "opengl32", "shell32",
    "user32", "ws2_32")}
ADD_PROJECT = (958, 32)
NOWHERE = (600, 560)  # a place of the Projects screen that does not react to the pointer


def skip(reason):
    print("SKIPPED: " + reason)
    sys.exit(SKIPPED)


@contextlib.contextmanager
def launcher_window(build, *options):
    """Runs the sandbox. With --stored-session waits for the signed-in user, otherwise for the sign-in button. At the end
    closes the window and checks the exit status."""
    with Desktop() as desktop, Sandbox(desktop, build, *options) as sandbox:
        window = desktop.window("VOLO Launcher")
        if "--stored-session" in options:
            window.see("Ada Sandbox", USER_CARD)
        else:
            window.see("Sign in", SIGN_IN_BUTTON)
        yield desktop, sandbox, window
        sandbox.close(window)


def leaks(build):
    """Client secret, codes, verifiers and tokens stay in memory and in files that only the user can read."""
    with tempfile.TemporaryDirectory() as folder:
        secrets_file = pathlib.Path(folder) / "secrets"
        with launcher_window(build, "--secrets-file", str(secrets_file)) as (_, sandbox, window):
            window.click(SIGN_IN)
            browser = wait_for("the browser", lambda: sandbox.processes("xdg-open"))[0]
            exposed = {"the browser's arguments": (browser / "cmdline").read_bytes()}
            window.see("Ada Sandbox", USER_CARD)
            sandbox.see("update server: 200 /statements/")
            process, = sandbox.processes("volo-launcher")
            token = sandbox.settings()["auth%2FrefreshToken"]
            wait_for("the secrets", lambda: token in secrets_file.read_text().split())
            secrets = secrets_file.read_text().split()
            check("client secret, code, verifier and two tokens", len(secrets) >= 5)
            for name in ("cmdline", "environ", "comm"):
                exposed[f"/proc/.../{name}"] = (process / name).read_bytes()
            for file in sandbox.root.rglob("*"):
                if file.is_file() and file.stat().st_mode & 0o044 and file.name != "launcher_config.json":
                    exposed[str(file)] = file.read_bytes()
            check("files that others may read", len(exposed) > 7)
        exposed["the output"] = "\n".join(sandbox.lines).encode()
        for place, contents in exposed.items():
            check(f"no secret in {place}", not any(secret.encode() in contents for secret in secrets))


def faults(build):
    """The screens show what went wrong at the servers, and no editor is installed."""
    with launcher_window(build, "--deny-consent") as (_, sandbox, window):
        window.click(SIGN_IN)
        window.see("Google sign-in was not completed (access_denied).", SIGN_IN_COLUMN)
    for option, message in (
            ("--truncate=100000", "The editor package download failed."),
            ("--corrupt=50000", "The downloaded package failed its checksum verification."),
            ("--manifest-status=302", "The update server returned HTTP 302 for the manifest."),
            ("--release=revoked", "Authenticity check failed: this release was withdrawn by its publisher.")):
        with launcher_window(build, "--stored-session", option) as (_, sandbox, window):
            window.click(INSTALLS_TAB)
            window.see(message, INSTALLS_CARD)
            window.see("Retry", INSTALL_ACTION)
            check("no editor", not list(sandbox.launcher.rglob("editor.exe")))


def pointer_at_rest(build):
    """A click after coming back from another window hits the button under the pointer, without a move of the mouse."""
    with launcher_window(build) as (desktop, _, window):
        window.point(*SIGN_IN)
        other = subprocess.Popen(["xev", "-geometry", "40x40+1200+740", "-name", "elsewhere"], env=desktop.environment,
                                 stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL)
        try:
            desktop.window("elsewhere")  # takes the keyboard
            wait_for("a button without a highlight", lambda: window.colour(200, 383) == (0x0D, 0x6E, 0xFD))
            window.come_forward()
            window.tool("click", "1")
            window.see("Ada Sandbox", USER_CARD)
        finally:
            other.kill()
            other.wait()


def dialog(build):
    """While a dialog of the desktop is open, it stays in front; the launcher repaints its last image and ignores input."""
    if shutil.which("zenity") is None:
        skip("zenity is not installed")
    with launcher_window(build, "--stored-session") as (desktop, _, window):
        window.click(NEW_PROJECT)
        browse = window.find("Browse", DIALOG)
        place = (180, 700)  # on "Sign out"
        shown = window.colour(*place)
        window.click(browse)
        chooser = desktop.window("Choose project location")

        def owner():
            return desktop.run("xprop", "-id", chooser.identifier, "WM_TRANSIENT_FOR")[1].decode().split()[-1]

        wait_for("a transient window", lambda: owner() == hex(int(window.identifier)))
        chooser.tool("windowmove", chooser.identifier, "0", "400")  # it covers the place, also when it is small
        wait_for("the dialog over the window", lambda: window.colour(*place) != shown)
        chooser.tool("windowmove", chooser.identifier, "400", "0")
        wait_for("the repainted image", lambda: window.colour(*place) == shown)
        window.click(place)  # must not sign out
        chooser.come_forward()
        chooser.press("Escape")
        wait_for("the dialog closed", lambda: not desktop.windows("Choose project location"))
        window.come_forward()
        window.see("Create a new project", DIALOG)


def gallery(build):
    """Every state has a picture, and no two pictures are equal: every state was reached."""
    with tempfile.TemporaryDirectory() as folder, Desktop() as desktop:
        out = pathlib.Path(folder) / "pictures"
        subprocess.run([pathlib.Path(build) / "bin/volo-gallery", "--scale", "1", "--out", out, "--home", folder + "/home"],
                       env=desktop.environment, stdout=subprocess.DEVNULL, check=True)
        pictures = {}
        for file in out.iterdir():
            pictures.setdefault(file.read_bytes(), []).append(file.name)
        print(f"{len(pictures)} pictures")
        check("two sizes of each state", len(pictures) >= 100)
        check("no two equal pictures", not [names for names in pictures.values() if len(names) > 1])


def bare_environment(folder, display=None):
    """Only the variables that the launcher reads."""
    kept = ("PATH", "ASAN_OPTIONS", "LSAN_OPTIONS", "UBSAN_OPTIONS", "TSAN_OPTIONS", "WINEPREFIX")
    environment = {name: os.environ[name] for name in kept if name in os.environ}
    environment.update(HOME=folder, APPDATA=folder, XDG_RUNTIME_DIR=folder)
    return {**environment, "DISPLAY": display} if display else environment


class Launcher(subprocess.Popen):
    """A launcher without a sandbox. Its output goes to a file: Wine's own programs inherit a pipe and keep it open."""

    def __init__(self, build, environment):
        self.file = tempfile.TemporaryFile("w+")
        super().__init__(command_of(build, "volo-launcher"), env=environment, stdin=subprocess.DEVNULL,
                         stdout=self.file, stderr=self.file)

    def output(self):
        self.file.seek(0)
        return self.file.read()


def second_instance(build):
    """Of twenty launchers started at once one opens a window, and the others say why they do not."""
    with tempfile.TemporaryDirectory() as folder, Desktop() as desktop:
        started = [Launcher(build, bare_environment(folder, desktop.display)) for _ in range(20)]
        try:
            wait_for("nineteen refusals", lambda: sum(one.poll() is not None for one in started) == 19)
            survivor, = [one for one in started if one.poll() is None]
            for one in set(started) - {survivor}:
                check("status 0", one.returncode == 0)
                check("one message", one.output() == "[Launcher] VOLO Launcher is already running.\n")
            window = desktop.window("VOLO Launcher")
            window.see("Launcher not configured", WHOLE)
            if not is_for_windows(build):
                survivor.send_signal(signal.SIGPIPE)  # as a write to a closed connection does
            window.close()
            check("status 0", survivor.wait(20) == 0)
        finally:
            for one in started:
                one.kill()
                one.wait()


def no_display(build):
    """Without a display the launcher fails with a message, and does not block the next start."""
    with tempfile.TemporaryDirectory() as folder:
        for display in (None, ":99999", None):
            launcher = Launcher(build, bare_environment(folder, display))
            check("status 1", launcher.wait(30) == 1)
            check(f"one message with a reason, not {launcher.output()!r}",
                  re.fullmatch(r"\[Launcher\] UI host failed: .{4,}\n", launcher.output()))


def remembered_placement(build):
    """The size and the zoom of the window are on disk while the launcher still runs, so that a killed one keeps them."""
    with Desktop() as desktop, Sandbox(desktop, build) as sandbox:
        window = desktop.window("VOLO Launcher")
        window.see("Sign in", SIGN_IN_BUTTON)
        window.tool("windowsize", window.identifier, "1000", "600")
        window.press("ctrl+minus")
        file = sandbox.settings_file.with_name("Launcher.window")
        wait_for("size and zoom in Launcher.window",
                 lambda: file.is_file() and file.read_text().endswith(" 1000 600 0 90\n"))


def idle(build, seconds=10, projects=12):
    """An untouched launcher wakes once a second, and sends nothing to the X server. A frame looks at each project's
    folder and at a few files of the editor."""
    options = ("--stored-session", "--with-editor", "--projects", str(projects))
    with launcher_window(build, *options) as (_, sandbox, window):
        window.point(*NOWHERE)
        sandbox.see("update server: 200 /manifest.json")
        window.see("Cholecystectomy", WHOLE)
        process, = sandbox.processes("volo-launcher")
        for _ in range(2):  # the first look may still include the start
            trace = ["strace", "-p", process.name, "-e", "trace=%network,%file,ppoll,poll,writev"]
            calls = subprocess.run(["timeout", str(seconds), *trace], capture_output=True, text=True, check=False).stderr
            if "not permitted" in calls:
                skip("strace may not attach to a process here")
            wakes = len(re.findall(r"poll\(.*Timeout", calls))
            requests = len(re.findall(r"(?:writev|sendmsg|sendto)\(", calls))
            files = len(re.findall(r"(?:stat|statx|fstatat|openat|access)\(", calls))
            print(f"{wakes} wakes, {requests} requests and {files} looks at files in {seconds} s")
            if 1 <= wakes <= seconds + 1 and requests == 0 and files <= wakes * (projects + 5):
                return
        check("at most a wake a second, no request, and few looks at files", False)


def production_endpoints(build):
    """The shipped launcher asks Google's own hosts, which in a network namespace are the sandbox."""
    if not be_google():
        skip("network and mount namespaces are not permitted")
    with launcher_window(build, "--as-google") as (_, sandbox, window):
        window.click(SIGN_IN)
        shipped = pathlib.Path(build) / "bin/volo-launcher"
        check("the shipped launcher", (sandbox.launcher / "volo-launcher").read_bytes() == shipped.read_bytes())
        window.see("Ada Sandbox ada@sandbox.test", USER_CARD)
        sandbox.see("identity provider: userinfo")


def windows_dialogs(build):
    """Windows' own dialogs add a project from disk and choose a folder, or are cancelled."""
    with launcher_window(build, "--stored-session", "--projects", "2") as (desktop, sandbox, window):
        file = sandbox.root / "home/A project of mine/Mine too.zantorproj"
        file.parent.mkdir(parents=True)
        file.write_text("ZantorProject:\n  Name: Mine too\n  FormatVersion: 1\n")
        button = (ADD_PROJECT[0] - 60, ADD_PROJECT[1] - 12, 120, 24)
        without_highlight = window.look(button)
        before = sandbox.listed()
        for path in (None, sandbox.name_of(file)):
            window.point(*NOWHERE)
            wait_for("the window taking input again", lambda: window.look(button) == without_highlight)
            window.click(ADD_PROJECT)
            chooser = desktop.window("Open")
            if path:
                chooser.type(path)
            chooser.press("Return" if path else "Escape")
            wait_for("the dialog closed", lambda: not desktop.windows("Open"))
            window.come_forward()
            check("nothing added yet", sandbox.listed() == before or path)
        editor = desktop.window("VOLO Editor")  # an added project is opened
        editor.see("Name: Mine too", EDITOR_WINDOW)
        editor.close()
        wait_for("the editor closed", lambda: not desktop.windows("VOLO Editor"))
        window.come_forward()
        window.see("Mine too", name_box(0))
        wait_for("the project in Launcher.conf", lambda: sandbox.listed() == ["Mine too", *before])

        window.click(NEW_PROJECT)
        for key, location in (("Escape", "home\\Documents\\VOLO Projects"), ("Return", "Desktop")):
            window.click(window.find("Browse", DIALOG))
            chooser = desktop.window("Browse for Folder")
            chooser.see("Choose project location", (0, 0, 320, 60))
            chooser.press(key)
            wait_for("the dialog closed", lambda: not desktop.windows("Browse for Folder"))
            window.come_forward()
            window.see(location, DIALOG)
        window.press("Escape")


def windows_package(build):
    """The zip is one folder that starts anywhere; its programs need only libraries of Windows."""
    with tempfile.TemporaryDirectory(prefix="volo package ") as folder, Desktop() as desktop:
        subprocess.run(["cpack", "-B", folder], cwd=build, stdout=subprocess.DEVNULL, check=True)
        archive, = pathlib.Path(folder).glob("*.zip")
        shutil.unpack_archive(archive, pathlib.Path(folder, "unpacked"))
        launcher, = pathlib.Path(folder).glob("unpacked/*/volo-launcher.exe")
        needed = {"Roboto-Medium.ttf", "background.png", "launcher_config.example.json", "LICENSE", "licences"}
        check("the files that it needs", {one.name for one in launcher.parent.iterdir()} >= needed)
        for program in (launcher, *pathlib.Path(build, "bin").glob("volo-*.exe")):
            table = subprocess.run(["x86_64-w64-mingw32-objdump", "-p", program], capture_output=True, check=True)
            check("a console program", b"(Windows CUI)" in table.stdout)
            libraries = {name.decode().lower() for name in re.findall(rb"DLL Name: (\S+)", table.stdout)}
            check(f"only libraries of Windows, not {libraries - WINDOWS_LIBRARIES}",
                  {"kernel32.dll"} <= libraries <= WINDOWS_LIBRARIES)
            version = "ProductVersion".encode("utf-16-le")
            for word in (b"PerMonitorV2", b"longPathAware", b"asInvoker", b">UTF-8<", version):
                check(f"{word} in {program.name}", word in program.read_bytes())
        running = subprocess.Popen([WINE, launcher], env=bare_environment(folder, desktop.display))
        window = desktop.window("VOLO Launcher")
        window.see("Running from launcher_config.example.json", WHOLE)
        window.close()
        check("status 0", running.wait(20) == 0)


CHECKS = {one.__name__: one for one in (
    leaks, faults, pointer_at_rest, remembered_placement, dialog, gallery, second_instance, no_display, idle,
    production_endpoints, windows_dialogs, windows_package)}


def main():
    options = argparse.ArgumentParser(description=__doc__)
    options.add_argument("--build", default="build/linux", help="the folder of the built programs")
    options.add_argument("name", choices=CHECKS)
    arguments = options.parse_args()
    if missing_programs():
        skip("not installed: " + ", ".join(missing_programs()))
    if arguments.name != "production_endpoints":
        stand_apart(arguments.build)
    try:
        CHECKS[arguments.name](arguments.build)
    except NotSeen as failure:
        sys.exit(f"FAIL {arguments.name}: not seen: {failure}")
    print(f"ok   {arguments.name}")


if __name__ == "__main__":
    main()
