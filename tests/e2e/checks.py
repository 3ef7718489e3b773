#!/usr/bin/env python3
"""What the tour does not show: what the launcher must not do, and what it does where something is missing.

    checks.py [--build DIRECTORY] NAME      exit status 77: not possible on this machine"""

import argparse
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import time

from desktop import Desktop, NotSeen, missing_programs, wait_for
from sandbox_run import WINE, Sandbox, command_of, isolate, stand_apart
from tour import (DIALOG, EDITOR_WINDOW, INSTALL_ACTION, INSTALLS_CARD, INSTALLS_TAB, MADE_UP, NEW_PROJECT,
                  SIGN_IN_BUTTON, SIGN_IN_COLUMN, STAR_X, USER_CARD, WHOLE, check, name_box, row)

SKIPPED = 77
GOOGLE_HOSTS = "accounts.google.com oauth2.googleapis.com openidconnect.googleapis.com"
WINDOWS_LIBRARIES = {name + ".dll" for name in (
    "advapi32", "comdlg32", "crypt32", "dwmapi", "gdi32", "kernel32", "msvcrt", "ole32", "opengl32", "shell32",
    "user32", "ws2_32")}
ADD_PROJECT = (958, 32)
NOWHERE = (600, 560)  # of the Projects screen: nothing reacts to the pointer there


def sign_in(desktop):
    window = desktop.window("VOLO Launcher")
    window.see("Sign in", SIGN_IN_BUTTON)
    window.click((236, 383))
    return window


def leaks(build):
    """Client secret, codes, verifiers and tokens stay in memory and in files for the user alone."""
    with tempfile.TemporaryDirectory() as folder, Desktop() as desktop:
        secrets_file = pathlib.Path(folder) / "secrets"
        with Sandbox(desktop, build, "--secrets-file", str(secrets_file)) as sandbox:
            window = sign_in(desktop)
            browser = wait_for("the browser", lambda: sandbox.processes("xdg-open"))[0]
            exposed = {"the browser's arguments": (browser / "cmdline").read_bytes()}
            window.see("Ada Sandbox", USER_CARD)
            sandbox.told("update server: 200 /statements/")  # the editor's installation is part of it
            process, = sandbox.processes("volo-launcher")
            token = sandbox.settings()["auth%2FrefreshToken"]
            wait_for("the secrets", lambda: token in secrets_file.read_text().split())
            secrets = secrets_file.read_text().split()
            check("client secret, code, verifier and two tokens", len(secrets) >= 5)
            check("the token where it belongs", token.encode() in sandbox.settings_file.read_bytes())

            for name in ("cmdline", "environ", "comm"):
                exposed[f"/proc/.../{name}"] = (process / name).read_bytes()
            exposed["the output"] = "\n".join(sandbox.lines).encode()
            for file in sandbox.root.rglob("*"):
                if file.is_file() and file.stat().st_mode & 0o044 and file.name != "launcher_config.json":
                    exposed[str(file)] = file.read_bytes()
            check("files that others may read", len(exposed) > 8)
            for place, contents in exposed.items():
                found = [secret for secret in secrets if secret.encode() in contents]
                check(f"no secret in {place}", not found)
            window.close()
            sandbox.status()
            check("no secret in the output", not any(secret in line for secret in secrets for line in sandbox.lines))


def refused_sign_in(build):
    """Whatever goes wrong at Google's end is told on the sign-in screen, and leaves no session behind."""
    for option, message in (
            ("--deny-consent", "Google sign-in was not completed (access_denied)."),
            ("--token-500", "Google rejected the sign-in (token endpoint returned HTTP 500)."),
            ("--token-garbage", "Google returned an unexpected token response."),
            ("--no-email", "Google did not return an account email.")):
        with Desktop() as desktop, Sandbox(desktop, build, option) as sandbox:
            window = sign_in(desktop)
            window.see(message, SIGN_IN_COLUMN)
            window.see("Sign in", SIGN_IN_BUTTON)
            check("no session", not sandbox.settings().get("auth%2FrefreshToken"))
            print(f"{option}: {message}")
            window.close()
            check("exit status 0", sandbox.status() == 0)


def pointer_at_rest(build):
    """Whoever comes back from another window and clicks without moving the mouse hits what is under it."""
    with Desktop() as desktop, Sandbox(desktop, build) as sandbox:
        window = desktop.window("VOLO Launcher")
        window.see("Sign in", SIGN_IN_BUTTON)
        window.point(236, 383)
        other = subprocess.Popen(["xev", "-geometry", "40x40+1200+740", "-name", "elsewhere"], env=desktop.environment,
                                 stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL)
        try:
            desktop.window("elsewhere")  # takes the keyboard
            wait_for("the button as it is when nobody points", lambda: window.colour(200, 383) == (0x0D, 0x6E, 0xFD))
            window.come_forward()
            window.tool("click", "1")
            window.see("Ada Sandbox", USER_CARD)
        finally:
            other.kill()
            other.wait()
        window.close()
        check("exit status 0", sandbox.status() == 0)


def dialog(build):
    """While a dialog of the desktop is open, it stays in front; the launcher shows its last image, and hears nothing."""
    if shutil.which("zenity") is None:
        print("SKIPPED: no zenity here")
        sys.exit(SKIPPED)
    with Desktop() as desktop, Sandbox(desktop, build, "--stored-session") as sandbox:
        window = desktop.window("VOLO Launcher")
        window.see("Ada Sandbox", USER_CARD)
        window.click(NEW_PROJECT)
        browse = window.find("Browse", DIALOG)
        place = (180, 700)  # on "Sign out"
        shown = window.colour(*place)
        window.click(browse)
        chooser = desktop.window("Choose project location")

        def owner():
            return desktop.run("xprop", "-id", chooser.identifier, "WM_TRANSIENT_FOR")[1].decode().split()[-1]

        wait_for("a dialog that belongs to the window", lambda: owner() == hex(int(window.identifier)))
        chooser.tool("windowmove", chooser.identifier, "0", "0")
        wait_for("the dialog over the window", lambda: window.colour(*place) != shown)
        chooser.tool("windowmove", chooser.identifier, "400", "0")
        wait_for("what it had covered", lambda: window.colour(*place) == shown)
        window.click(place)  # nobody listens
        chooser.come_forward()
        chooser.press("Escape")
        wait_for("the dialog gone", lambda: not desktop.windows("Choose project location"))
        window.come_forward()
        window.see("Create a new project", DIALOG)
        window.close()
        check("exit status 0", sandbox.status() == 0)


def gallery(build):
    """Every state has a picture, and none looks like another: what should have led to it has worked."""
    with tempfile.TemporaryDirectory() as folder, Desktop() as desktop:
        out = pathlib.Path(folder) / "pictures"
        status, _ = desktop.run(str(pathlib.Path(build) / "bin/volo-gallery"), "--scale", "1", "--out", str(out),
                                "--home", folder + "/home")
        check("status 0", status == 0)
        pictures = {}
        for file in out.iterdir():
            pictures.setdefault(file.read_bytes(), []).append(file.name)
        print(f"{len(pictures)} pictures")
        check("two sizes of each state", len(pictures) >= 100)
        alike = [names for names in pictures.values() if len(names) > 1]
        check(f"no two alike, as are {alike}", not alike)


def bare_environment(folder, display=None):
    """A user's environment with nothing in it but what the launcher asks for."""
    environment = {"PATH": os.environ["PATH"], "HOME": folder, "APPDATA": folder, "XDG_RUNTIME_DIR": folder}
    for name in ("ASAN_OPTIONS", "LSAN_OPTIONS", "UBSAN_OPTIONS", "TSAN_OPTIONS", "WINEPREFIX"):
        if name in os.environ:
            environment[name] = os.environ[name]
    return {**environment, "DISPLAY": display} if display else environment


class Launcher(subprocess.Popen):
    """What it says goes into files: of a pipe nobody would see the end while Wine's own programs, which it may have
    woken, hold it too."""

    def __init__(self, build, environment):
        self.said = [tempfile.TemporaryFile("w+") for _ in range(2)]
        super().__init__(command_of(build, "volo-launcher"), env=environment, stdin=subprocess.DEVNULL,
                         stdout=self.said[0], stderr=self.said[1])

    def texts(self):
        """Its output and its errors."""
        for file in self.said:
            file.seek(0)
        return [file.read() for file in self.said]


def second_instance(build):
    """Of twenty launchers started at once one opens a window, and the others say why they do not."""
    with tempfile.TemporaryDirectory() as folder, Desktop() as desktop:
        environment = bare_environment(folder, desktop.display)
        started = [Launcher(build, environment) for _ in range(20)]
        try:
            wait_for("nineteen refusals", lambda: sum(one.poll() is not None for one in started) == 19)
            for one in started:
                if one.poll() is not None:
                    output, errors = one.texts()
                    check("status 0", one.returncode == 0)
                    check(f"the message, not {errors!r}", errors == "[Launcher] VOLO Launcher is already running.\n")
                    check("nothing else", output == "")
            window = desktop.window("VOLO Launcher")
            check("one window", len(desktop.windows("VOLO Launcher")) == 1)
            window.see("Launcher not configured", WHOLE)
            window.close()
            survivor = next(one for one in started if one.poll() is None)
            check("status 0", survivor.wait(20) == 0)
        finally:
            for one in started:
                one.kill()
                one.wait()


def no_display(build):
    """Without a display the launcher says so and fails, and a next start is not taken for a second one."""
    with tempfile.TemporaryDirectory() as folder:
        for environment in (bare_environment(folder), bare_environment(folder, ":99999"), bare_environment(folder)):
            launcher = Launcher(build, environment)
            launcher.wait(30)
            output, errors = launcher.texts()
            check(f"status 1, not {launcher.returncode}", launcher.returncode == 1)
            check(f"one message, not {errors!r}",
                  errors.startswith("[Launcher] UI host failed: ") and len(errors.splitlines()) == 1)
            check("a reason", len(errors.split("failed: ", 1)[1].strip()) > 3)
            check("nothing else", output == "")


def processor_seconds(process):
    fields = (process / "stat").read_text().rsplit(") ", 1)[1].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


def idle(build, seconds=8.0):
    """A launcher that nobody touches costs next to nothing: below 1% of a processor here."""
    with Desktop() as desktop, Sandbox(desktop, build, "--stored-session", "--with-editor", "--projects", "12") as sandbox:
        window = desktop.window("VOLO Launcher")
        window.see("Ada Sandbox", USER_CARD)
        window.point(*NOWHERE)
        sandbox.told("update server: 200 /manifest.json")
        process, = sandbox.processes("volo-launcher")

        def share():
            before, began = processor_seconds(process), time.monotonic()
            time.sleep(seconds)
            return (processor_seconds(process) - before) / (time.monotonic() - began)

        window.see("Cholecystectomy", WHOLE)
        shares = [share()]
        if shares[0] >= 0.01:  # another look: the last moves of the start may have been in the first
            shares.append(share())
        print("of a processor: " + ", ".join(f"{100 * one:.2f}%" for one in shares))
        check("less than 1% of a processor", shares[-1] < 0.01)


def damaged_package(build):
    """Whatever arrives instead of a release: the user is told, and there is no editor afterwards."""
    checksum = "The downloaded package failed its checksum verification."
    authenticity = "Authenticity check failed: "
    for fault, message in (
            ("--truncate=100000", "The editor package download failed."),
            ("--corrupt=50000", checksum),
            ("--manifest-status=302", "The update server returned HTTP 302 for the manifest."),
            ("--no-update-server", "Could not reach the update server, and no local editor was found."),
            ("--release=wrong-hash", checksum),
            ("--release=wrong-archive-hash", "The decrypted editor package failed plaintext checksum verification."),
            ("--release=wrong-key", "artifact has been tampered with or key is invalid."),
            ("--release=untrusted", authenticity + "the release is not signed by a trusted key."),
            ("--release=unsigned", authenticity + "no release statement is published for this package."),
            ("--release=expired", authenticity + "the release statement has expired."),
            ("--release=revoked", authenticity + "this release was withdrawn by its publisher.")):
        with Desktop() as desktop, Sandbox(desktop, build, "--stored-session", fault) as sandbox:
            window = desktop.window("VOLO Launcher")
            window.see("Ada Sandbox", USER_CARD)
            window.click(INSTALLS_TAB)
            window.see("Failed", INSTALLS_CARD)
            window.see(message, INSTALLS_CARD)
            window.see("Retry", INSTALL_ACTION)
            print(f"{fault}: {message}")
            check("no editor", not list(sandbox.launcher.rglob("editor.exe")))
            check("no part of a package", not list(sandbox.launcher.rglob("*.part")))
            if fault != "--release=wrong-key":  # then it stays, unread
                check("no opened package", not list(sandbox.launcher.rglob("*.decrypted.zip")))
            window.close()
            check("exit status 0", sandbox.status() == 0)


def production_endpoints(build):
    """The launcher as it ships asks Google's own hosts, which in this network of our own are the sandbox."""
    if not isolate("--net"):
        print("SKIPPED: this machine does not permit network and mount namespaces")
        sys.exit(SKIPPED)
    with tempfile.TemporaryDirectory() as folder:
        hosts = pathlib.Path(folder) / "hosts"
        hosts.write_text(f"127.0.0.1 localhost {GOOGLE_HOSTS}\n")
        subprocess.run(["mount", "--bind", str(hosts), "/etc/hosts"], check=True)
        subprocess.run(["ip", "link", "set", "lo", "up"], check=True)
        with Desktop() as desktop, Sandbox(desktop, build, "--as-google") as sandbox:
            shipped = pathlib.Path(build) / "bin/volo-launcher"
            staged = sandbox.launcher / "volo-launcher"
            window = sign_in(desktop)
            check("the launcher as it ships", staged.read_bytes() == shipped.read_bytes())
            window.see("Ada Sandbox ada@sandbox.test", USER_CARD)
            for event in ("consent", "code", "token", "userinfo"):
                sandbox.told("identity provider: " + event)
            window.close()
            check("exit status 0", sandbox.status() == 0)


def windows_dialogs(build):
    """Windows' own dialogs, answered with keys: a project from disk, a folder for new ones, and never mind."""
    with Desktop() as desktop, Sandbox(desktop, build, "--stored-session", "--projects", "2") as sandbox:
        file = sandbox.root / "home/A project of mine/Mine too.zantorproj"
        file.parent.mkdir(parents=True)
        file.write_text("ZantorProject:\n  Name: Mine too\n  FormatVersion: 1\n")
        window = desktop.window("VOLO Launcher")
        window.see("Ada Sandbox", USER_CARD)
        button = (ADD_PROJECT[0] - 60, ADD_PROJECT[1] - 12, 120, 24)
        unlit = window.look(button)
        for keys in (["Escape"], [sandbox.name_of(file), "Return"]):
            before = sandbox.listed()
            window.point(*NOWHERE)  # what is clicked before the dialog has quite gone is dropped
            wait_for("the window listening again", lambda: window.look(button) == unlit)
            window.click(ADD_PROJECT)
            dialog = desktop.window("Open")
            if keys[0] == "Escape":
                dialog.press("Escape")
            else:
                dialog.type(keys[0])
                dialog.press(keys[1])
            wait_for("the dialog closed", lambda: not desktop.windows("Open"))
            window.come_forward()
            if keys[0] == "Escape":
                check("nothing added", sandbox.listed() == before)
        editor = desktop.window("VOLO Editor")  # what is added is opened
        editor.see("Name: Mine too", EDITOR_WINDOW)
        editor.close()
        wait_for("the editor closed", lambda: not desktop.windows("VOLO Editor"))
        window.come_forward()
        window.see("Mine too", name_box(0))
        wait_for("the project in Launcher.conf", lambda: sandbox.listed() == ["Mine too", *before])

        window.click(NEW_PROJECT)
        for key, location in (("Escape", "home\\Documents\\VOLO Projects"), ("Return", "Desktop")):
            window.click(window.find("Browse", DIALOG))
            dialog = desktop.window("Browse for Folder")
            dialog.see("Choose project location", (0, 0, 320, 60))
            dialog.press(key)
            wait_for("the dialog closed", lambda: not desktop.windows("Browse for Folder"))
            window.come_forward()
            window.see(location, DIALOG)
        window.press("Escape")
        window.close()
        check("exit status 0", sandbox.status() == 0)


def windows_package(build):
    """The zip is one folder that starts anywhere, and its programs ask for nothing but what Windows brings along."""
    with tempfile.TemporaryDirectory(prefix="volo package ") as folder, Desktop() as desktop:
        subprocess.run(["cpack", "-B", folder], cwd=build, stdout=subprocess.DEVNULL, check=True)
        archive, = pathlib.Path(folder).glob("*.zip")
        shutil.unpack_archive(archive, pathlib.Path(folder, "unpacked"))
        launcher, = pathlib.Path(folder).glob("unpacked/*/volo-launcher.exe")
        beside = {one.name for one in launcher.parent.iterdir()}
        check("what it needs beside it",
              beside >= {"Roboto-Medium.ttf", "background.png", "launcher_config.example.json", "LICENSE", "licences"})
        for program in (launcher, *pathlib.Path(build, "bin").glob("volo-*.exe")):
            table = subprocess.run(["x86_64-w64-mingw32-objdump", "-p", program], capture_output=True, check=True)
            check("a program for the console", b"(Windows CUI)" in table.stdout)
            libraries = {name.decode().lower() for name in re.findall(rb"DLL Name: (\S+)", table.stdout)}
            check("a table of libraries", "kernel32.dll" in libraries)
            check(f"no library beside Windows' own: {libraries - WINDOWS_LIBRARIES}", libraries <= WINDOWS_LIBRARIES)
            version = "ProductVersion".encode("utf-16-le")
            for word in (b"PerMonitorV2", b"longPathAware", b"asInvoker", b">UTF-8<", version):
                check(f"{word} in {program.name}", word in program.read_bytes())
        running = subprocess.Popen([WINE, launcher], env=bare_environment(folder, desktop.display))
        window = desktop.window("VOLO Launcher")
        window.see("Running from launcher_config.example.json", WHOLE)
        window.close()
        check("status 0", running.wait(20) == 0)


def both_platforms(build):
    """What one platform's launcher writes into Launcher.conf the other's reads."""
    other = pathlib.Path(build).resolve().parent / "linux"
    if not (other / "bin/volo-sandbox").exists():
        print("SKIPPED: there is no Linux build beside this one")
        sys.exit(SKIPPED)
    with tempfile.TemporaryDirectory() as root, Desktop() as desktop:
        starred = ["Hernia repair"]
        for which, star, made_up in ((build, "Cholecystectomy", ["--projects", "4"]), (other, "Appendectomy", []),
                                     (build, "Colonoscopy", [])):
            with Sandbox(desktop, which, "--stored-session", *made_up, root=root) as sandbox:
                window = desktop.window("VOLO Launcher")
                window.see("Ada Sandbox", USER_CARD)
                check("the made-up projects", sandbox.listed() == MADE_UP)
                place = MADE_UP.index(star)
                window.see(star, name_box(place))
                window.click(row(place, STAR_X))
                starred.append(star)
                wait_for(f"{starred} starred in Launcher.conf", lambda: sorted(starred) == sorted(sandbox.favourites()))
                ends = {line[-1:] for line in sandbox.settings_file.read_bytes().split(b"\n")[:-1]}
                check(f"the platform's line ends, not {ends}", (ends == {b"\r"}) == sandbox.windows)
                window.close()
                check("exit status 0", sandbox.status() == 0)


CHECKS = (leaks, refused_sign_in, pointer_at_rest, dialog, gallery, second_instance, no_display, idle, damaged_package,
          production_endpoints, windows_dialogs, windows_package, both_platforms)


def main():
    options = argparse.ArgumentParser(description=__doc__)
    options.add_argument("--build", default="build/linux", help="where the programs were built")
    options.add_argument("name", choices=[one.__name__ for one in CHECKS])
    arguments = options.parse_args()
    if missing_programs():
        print("SKIPPED: not installed: " + ", ".join(missing_programs()))
        sys.exit(SKIPPED)
    one = next(one for one in CHECKS if one.__name__ == arguments.name)
    if one is not production_endpoints:
        stand_apart(arguments.build)
    try:
        one(arguments.build)
    except NotSeen as failure:
        sys.exit(f"FAIL {arguments.name}: not seen: {failure}")
    print(f"ok   {arguments.name}")


if __name__ == "__main__":
    main()
