#!/usr/bin/env python3
"""The tour: a person's first half hour with the launcher, by a robot, on a virtual screen.

    tour.py --sandbox PROGRAM --out DIRECTORY

Prints a line for each step once its outcome has been observed, on the screen or on the disk, and keeps a picture of it
in DIRECTORY. Ends with status 0 only if every step was observed; the first that was not ends the tour."""

import argparse
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import tempfile
import time

from desktop import Desktop, NotSeen, missing_programs, plain, wait_for

USER = "Ada Sandbox"
FIRST, SECOND = "Appendix Demo", "Zebra Clinic"  # created in this order, so that the newest is not the first by name

# Places in the launcher's window, which is 1180 x 740 at the first start.
SIGN_IN_PANEL = (40, 220, 400, 280)
SIGN_IN_LABEL, SIGN_IN = (84, 368, 304, 32), (236, 384)
USER_CARD = (40, 636, 156, 44)
SIGN_OUT = (105, 702)
PROJECTS_ROW, INSTALLS_ROW = (80, 34), (80, 76)
CONTENT = (212, 60, 960, 660)
DIALOG = (300, 220, 600, 320)
SEARCH_BOX, SEARCH_CROSS = (740, 32), (851, 32)
NEW_PROJECT = (1093, 32)
HEADER_STAR, HEADER_NAME = (248, 79), (296, 79)
NAMES = (270, 98, 440, 240)  # of the first rows of the list
FIRST_ROW, FIRST_STAR = (500, 124), (248, 124)
STAR_GOLD = (251, 191, 36)
NOTICE = (236, 64, 900, 32)


class Tour:
    def __init__(self, desktop, sandbox, out, root):
        self.desktop, self.sandbox, self.out, self.root = desktop, sandbox, out, root
        self.count = 0
        self.process = None
        self.window = None
        self.log = out / "sandbox.log"
        self.settings = root / "home/AppData/ZANTOR/Launcher.conf"
        self.launcher = root / "apps/volo/launcher"
        self.projects = root / "home/Documents/VOLO Projects"

    # --- the sandbox ---------------------------------------------------------------------------------------------

    def start(self, *options):
        with open(self.log, "ab") as log:
            self.process = subprocess.Popen([self.sandbox, "--root", str(self.root), *options], stdout=log,
                                            stderr=subprocess.STDOUT, env=self.desktop.environment)
        self.window = self.desktop.window("VOLO Launcher")

    def close_launcher(self):
        self.window.close()
        status = self.process.wait(20)
        self.process = None
        if status != 0:
            raise NotSeen(f"the launcher ended with status {status}, and not 0,")

    def stop(self):
        if self.process and self.process.poll() is None:
            self.process.send_signal(signal.SIGTERM)
            try:
                self.process.wait(10)
            except subprocess.TimeoutExpired:
                self.process.kill()

    # --- facts ---------------------------------------------------------------------------------------------------

    def setting(self, text):
        wait_for(f"{text!r} in {self.settings.name}",
                 lambda: self.settings.exists() and text in self.settings.read_text(errors="replace"))

    def editors(self):
        """Command lines of the editors that run from this sandbox."""
        found = []
        for folder in pathlib.Path("/proc").glob("[0-9]*"):
            try:
                if os.readlink(folder / "exe").startswith(str(self.launcher / "editor")):
                    found.append((folder / "cmdline").read_bytes().decode().split("\0")[:-1])
            except OSError:
                continue  # it has ended meanwhile, or is not ours to look at
        return found

    def see_rows(self, *names):
        """Waits until the list shows these names, from the top."""
        seen = ""

        def in_order():
            nonlocal seen
            seen = plain(self.window.read(NAMES))
            places = [seen.find(plain(name)) for name in names]
            return -1 not in places and places == sorted(places)

        try:
            wait_for("", in_order)
        except NotSeen:
            raise NotSeen(f"the rows {', '.join(names)} from the top; what stands there reads {seen}") from None

    # --- steps ---------------------------------------------------------------------------------------------------

    def step(self, name, action):
        self.count += 1
        window = self.window
        try:
            seen, window = action() or ("", None)
        except (NotSeen, OSError, subprocess.TimeoutExpired) as error:
            print(f"FAIL {self.count:02d}  {name}: not seen: {error}", flush=True)
            self.keep_picture(name, self.window)
            raise SystemExit(1) from None
        self.keep_picture(name, window or self.window)
        print(f"ok  {self.count:02d}  {seen}", flush=True)

    def keep_picture(self, name, window):
        if window:
            window.picture(str(self.out / f"{self.count:02d}-{name}.png"))

    def sign_in_screen(self):
        self.start("--slow-token", "1")
        self.window.see("Welcome to VOLO Launcher", SIGN_IN_PANEL)
        return f"the sign-in screen, in a window of {self.window.size()[0]} x {self.window.size()[1]}", None

    def press_sign_in(self):
        self.window.see("Sign in", SIGN_IN_LABEL)
        self.window.click(SIGN_IN)
        self.window.see("Finish signing in in your browser.", SIGN_IN_PANEL)
        return "Sign in pressed: the launcher waits for the browser", None

    def see_shell(self):
        self.window.see(USER, USER_CARD)
        self.setting("refreshToken")
        return f"signed in: the shell shows {USER}", None

    def editor_installed(self):
        version = self.launcher / "editor/.zantor_editor_version"
        self.window.click(INSTALLS_ROW)
        wait_for("an installed editor on the disk", version.exists)
        number = version.read_text().strip()
        self.window.see(number, CONTENT)
        return f"the editor {number} was downloaded, checked and installed", None

    def empty_list(self):
        self.window.click(PROJECTS_ROW)
        self.window.see("No projects", CONTENT)
        return "the Projects screen, with nothing in it yet", None

    def new_project_dialog(self):
        self.window.click(NEW_PROJECT)
        self.window.see("Create a new project", DIALOG)
        self.type_into_dialog(FIRST)
        return f'the dialog, with the name "{FIRST}" typed', None

    def type_into_dialog(self, name):
        self.window.type(name)
        self.window.see(f"VOLO Projects/{name}", DIALOG)  # the preview of the path

    def press_create(self, name):
        self.window.click(self.window.find("Create project", DIALOG))
        self.window.see_no("PROJECT NAME", DIALOG)
        file = self.projects / name / f"{name}.zantorproj"
        wait_for(f"{file} on the disk", file.exists)
        expected = f"ZantorProject:\n  Name: {name}\n  FormatVersion: 1\n".encode()
        if file.read_bytes() != expected:
            raise NotSeen(f"{expected!r} in {file}, but {file.read_bytes()!r}")
        self.setting(name)

    def create_first(self):
        self.press_create(FIRST)
        self.see_rows(FIRST)
        return f"{FIRST} stands in the list, and on the disk byte for byte", None

    def create_second(self):
        self.window.click(NEW_PROJECT)
        self.window.see("Create a new project", DIALOG)
        self.type_into_dialog(SECOND)
        self.press_create(SECOND)
        self.see_rows(SECOND, FIRST)
        return f"{SECOND} was created and stands first", None

    def search_matching(self):
        self.window.click(SEARCH_BOX)
        self.pause_for_cursor()
        self.window.type("APPEN")
        self.window.see_no(SECOND, NAMES)
        self.see_rows(FIRST)
        return "a search in capitals leaves the project that matches", None

    def pause_for_cursor(self):
        """A text field takes keys from the frame after the click that chose it."""
        before = self.window.look((670, 17, 190, 30))
        wait_for("the cursor in the search box", lambda: self.window.look((670, 17, 190, 30)) != before, 2)

    def search_nothing(self):
        self.window.type("xyz")
        self.window.see("No matching projects", CONTENT)
        return "a search that nothing matches says so", None

    def clear_search(self):
        self.window.click(SEARCH_CROSS)
        self.see_rows(SECOND, FIRST)
        return "the cross empties the search, and both are back", None

    def sort_ascending(self):
        self.window.click(HEADER_NAME)
        self.see_rows(FIRST, SECOND)
        return "sorted by name", None

    def sort_descending(self):
        self.window.click(HEADER_NAME)
        self.see_rows(SECOND, FIRST)
        return "sorted by name, the other way round", None

    def context_menu(self):
        self.window.click((FIRST_ROW[0], FIRST_ROW[1] + 52), button=3)
        for item in ("Open Project", "Add to Favorites", "Show in File Manager", "Remove From List"):
            self.window.see(item, CONTENT)
        return f"the menu of {FIRST}", None

    def add_to_favourites(self):
        self.window.click(self.window.find("Add to Favorites", CONTENT))
        self.window.see_no("Add to Favorites", CONTENT)
        self.window.click(HEADER_STAR)
        self.see_rows(FIRST, SECOND)
        wait_for("a golden star", lambda: self.window.colour(*FIRST_STAR) == STAR_GOLD)
        self.setting("favorite=true")
        return f"{FIRST} is a favourite, on the disk too, and the stars bring it to the top", None

    def open_project(self):
        self.window.click(FIRST_ROW)
        editor = self.desktop.window("VOLO Editor")
        editor.see("FormatVersion: 1", (0, 0, *editor.size()))
        file = str(self.projects / FIRST / f"{FIRST}.zantorproj")
        commands = self.editors()
        if [command[1:] for command in commands] != [[file]]:
            raise NotSeen(f"one editor with {file}, but {commands}")
        self.editor = editor
        return f"a click on the row opened {FIRST} in the editor", editor

    def refuse_second(self):
        self.window.come_forward()
        self.window.click(FIRST_ROW)
        self.window.see("VOLO Editor is already open.", NOTICE)
        if len(self.editors()) != 1:
            raise NotSeen(f"one editor, but {self.editors()}")
        return "a second click is refused with a notice, and starts none", None

    def close_editor(self):
        self.editor.close()
        wait_for("the end of the editor", lambda: not self.editors())
        return "the editor is closed, and the launcher still there", None

    def sign_out(self):
        self.window.click(SIGN_OUT)
        self.window.see("Welcome to VOLO Launcher", SIGN_IN_PANEL)
        wait_for("no token on the disk", lambda: "refreshToken=1//" not in self.settings.read_text())
        return "signed out: the sign-in screen is back", None

    def sign_in_again(self):
        self.press_sign_in()
        self.window.see(USER, USER_CARD)
        self.setting("refreshToken")
        return "signed in once more", None

    def restart(self):
        self.close_launcher()
        began = time.monotonic()
        self.start()
        self.window.see(USER, USER_CARD)
        self.see_rows(FIRST)
        return f"started anew: the shell shows at once, {time.monotonic() - began:.1f} s after the start", None

    def end(self):
        self.close_launcher()
        return "the window is closed, and everything has ended with it", None

    def take(self):
        for action in (self.sign_in_screen, self.press_sign_in, self.see_shell, self.editor_installed, self.empty_list,
                       self.new_project_dialog, self.create_first, self.create_second, self.search_matching,
                       self.search_nothing, self.clear_search, self.sort_ascending, self.sort_descending,
                       self.context_menu, self.add_to_favourites, self.open_project, self.refuse_second,
                       self.close_editor, self.sign_out, self.sign_in_again, self.restart, self.end):
            self.step(action.__name__.replace("_", "-"), action)


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("--sandbox", required=True, help="the program volo-sandbox")
    parser.add_argument("--out", required=True, type=pathlib.Path, help="folder for the pictures")
    options = parser.parse_args()
    if missing_programs():
        sys.exit("the tour needs " + ", ".join(missing_programs()))
    options.out.mkdir(parents=True, exist_ok=True)
    (options.out / "sandbox.log").unlink(missing_ok=True)
    for old in options.out.glob("[0-9][0-9]-*.png"):
        old.unlink()
    root = pathlib.Path(tempfile.mkdtemp(prefix="volo-tour-"))
    began = time.monotonic()
    try:
        with Desktop() as desktop:
            tour = Tour(desktop, options.sandbox, options.out, root)
            try:
                tour.take()
            finally:
                tour.stop()
    except NotSeen as error:
        sys.exit(f"FAIL 00  not seen: {error}")
    finally:
        shutil.rmtree(root, ignore_errors=True)
    print(f"the tour took {time.monotonic() - began:.0f} s; its pictures are in {options.out}")


if __name__ == "__main__":
    main()
