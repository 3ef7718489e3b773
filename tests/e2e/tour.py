#!/usr/bin/env python3
"""The tour: a robot uses the launcher as a person does, in its sandbox, and looks at everything that should happen: on
the screen, on the disk, in the process list. One line and one picture for each step; exit status 0 if all were seen."""

import argparse
import pathlib
import subprocess
import sys
import tempfile
import time

from desktop import Desktop, NotSeen, missing_programs, wait_for
from sandbox_run import Sandbox, stand_apart

# Where things are in a launcher window of 1180 x 740 at scale 1: places (x, y) and boxes (left, top, width, height).
SIGN_IN_COLUMN = (70, 200, 340, 330)
SIGN_IN_BUTTON = (180, 366, 112, 34)
USER_CARD = (50, 636, 146, 42)
SIGN_OUT = (105, 702)
PROJECTS_TAB = (105, 34)
NEW_PROJECT = (1093, 32)
SEARCH = (750, 32)
SEARCH_CLEAR = (851, 32)
NAME_HEADER = (293, 79)
EDITOR_COLUMN = (934, 98, 150, 52)
LIST = (272, 98, 480, 460)
EMPTY_LIST = (400, 330, 580, 130)
NOTICE = (240, 68, 700, 26)
INSTALLS_TAB = (105, 76)
INSTALLS_CARD = (270, 60, 880, 170)
INSTALL_ACTION = (900, 160, 250, 60)
WHOLE = (0, 0, 1180, 740)
EDITOR_WINDOW = (0, 0, 760, 420)
DIALOG = (330, 200, 520, 360)
ROW_HEIGHT, FIRST_ROW, NOTICE_HEIGHT = 52, 98, 40
STAR_X, NAME_X, DOTS_X = 248, 330, 1136

NAME = "My First Simulation"
PROJECT_FILE = f"ZantorProject:\n  Name: {NAME}\n  FormatVersion: 1\n"
MADE_UP = ["Cholecystectomy", "Appendectomy", "Hernia repair", "Colonoscopy"]


def row(number, x=NAME_X, shift=0):
    return x, FIRST_ROW + shift + ROW_HEIGHT * number + ROW_HEIGHT / 2


def name_box(number, shift=0):
    return 272, FIRST_ROW + shift + ROW_HEIGHT * number + 4, 300, 24


def is_yellow(colour):
    red, _, blue = colour
    return red > 180 and blue < 80


def check(what, fact):
    if not fact:
        raise NotSeen(what)


class Tour:
    def __init__(self, desktop, sandbox, hold, pictures):
        self.desktop, self.sandbox, self.hold, self.pictures = desktop, sandbox, hold, pictures
        self.window = None
        self.number = 0

    def step(self, name, what, action):
        self.number += 1
        label = f"{self.number:02} {name}"
        failure = None
        try:
            action()
        except (NotSeen, OSError, subprocess.TimeoutExpired) as error:
            failure = str(error)
        if self.window:
            self.window.picture(str(self.pictures / f"{self.number:02}-{name}.png"))
        print(f"FAIL {label}: not seen: {failure}" if failure else f"ok   {label}: {what}", flush=True)
        if failure:
            raise SystemExit(1)

    # --- signing in ------------------------------------------------------------------------------------------------

    def sign_in_screen(self):
        self.window = self.desktop.window("VOLO Launcher")
        wait_for("a window of 1180 x 740", lambda: self.window.size() == (1180, 740))
        self.window.see("Welcome to VOLO Launcher", SIGN_IN_COLUMN)
        self.window.see("Sign in", SIGN_IN_BUTTON)

    def browser(self):
        self.window.click((236, 383))
        self.window.see("Finish signing in in your browser.", SIGN_IN_COLUMN)
        self.sandbox.told("identity provider: consent")

    def shell(self):
        self.window.see("Ada Sandbox ada@sandbox.test", USER_CARD)
        self.sandbox.told("identity provider: userinfo")
        self.sandbox.told("reads: Sign-in complete")
        check("the session in Launcher.conf", self.sandbox.settings().get("auth%2FrefreshToken", "").startswith("1//0"))
        check("Launcher.conf for its owner alone",
              self.sandbox.windows or self.sandbox.settings_file.stat().st_mode & 0o777 == 0o600)

    # --- a project, from nothing to the editor -------------------------------------------------------------------------

    def dialog(self):
        self.window.click(NEW_PROJECT)
        self.window.see("Create a new project", DIALOG)
        self.window.click(self.window.find("VOLO project", DIALOG))  # the hint
        self.window.type(NAME)
        self.window.see(self.sandbox.name_of(self.sandbox.projects / NAME)[-len(f"VOLO Projects/{NAME}"):], DIALOG)

    def creation(self):
        self.window.press("Return")  # the reader does not make out white on blue
        self.window.see_no("Create a new project", DIALOG)
        self.window.see(NAME, name_box(0))
        self.window.see("Cholecystectomy", name_box(1))
        file = self.sandbox.projects / NAME / f"{NAME}.zantorproj"
        check(f"the project file, byte for byte, at {file}",
              file.read_bytes() == PROJECT_FILE.replace("\n", self.sandbox.line_end).encode())
        check("the project first in Launcher.conf", self.sandbox.listed() == [NAME, *MADE_UP])

    def installation(self):
        self.window.click(row(0))
        self.window.see("Downloading", INSTALLS_CARD)
        self.window.see("Cancel download", INSTALL_ACTION)

    def waiting_project(self):
        self.window.click(PROJECTS_TAB)
        self.window.see("Installing VOLO Editor before opening this project...", NOTICE)
        check("no editor yet", not self.sandbox.processes("editor.exe"))

    def verification(self):
        self.window.click(INSTALLS_TAB)
        self.release_held("package")
        self.window.see("Installing editor 1.0.0", INSTALLS_CARD)
        check("no editor yet", not (self.sandbox.launcher / "editor/editor.exe").exists())

    def editor(self):
        self.release_held("statement")
        self.see_editor(NAME)
        self.see_marker("1.0.0")
        self.window.come_forward()
        self.window.see("Installed — version 1.0.0", INSTALLS_CARD)

    def version_in_list(self):
        self.window.click(PROJECTS_TAB)
        self.window.see("VOLO 1.0.0", EDITOR_COLUMN)

    # --- the editor kept current ---------------------------------------------------------------------------------------

    def release_held(self, what):
        (self.hold / what).unlink()

    def see_marker(self, version):
        marker = self.sandbox.launcher / "editor/.zantor_editor_version"
        check(f"the version marker {version}", marker.read_text(encoding="utf-8").strip() == version)

    def checking(self):
        self.sandbox.publish("1.1.0")
        self.window.click(INSTALLS_TAB)
        (self.hold / "manifest").touch()
        self.window.click(self.window.find("Check for updates", INSTALL_ACTION))
        self.window.see("Checking for updates", INSTALLS_CARD)

    def update(self):
        self.release_held("manifest")
        self.window.see("Installed — version 1.1.0", INSTALLS_CARD)
        self.window.see("VOLO 1.1.0", INSTALLS_CARD)
        self.see_marker("1.1.0")

    def cancel(self):
        self.sandbox.publish("1.2.0")
        (self.hold / "package").touch()
        self.window.click(self.window.find("Check for updates", INSTALL_ACTION))
        self.window.click(self.window.find("Cancel download", INSTALL_ACTION))
        self.window.see("Download cancelled.", INSTALLS_CARD)
        self.window.see("VOLO 1.1.0", INSTALLS_CARD)
        self.see_marker("1.1.0")
        check("no part of a package", not list(self.sandbox.launcher.rglob("*.part")))

    def retry(self):
        self.release_held("package")
        self.window.click(self.window.find("Retry", INSTALL_ACTION))
        self.window.see("Installed — version 1.2.0", INSTALLS_CARD)
        self.see_marker("1.2.0")
        self.window.click(PROJECTS_TAB)
        self.window.see("VOLO 1.2.0", EDITOR_COLUMN)

    def see_editor(self, name):
        window = self.desktop.window("VOLO Editor")
        for text in (f"Name: {name}", "FormatVersion: 1", "Working directory:"):
            window.see(text, EDITOR_WINDOW)
        process, = self.sandbox.processes("editor.exe")
        folder = self.sandbox.launcher / "editor"
        project = self.sandbox.projects / name / f"{name}.zantorproj"
        check("the editor's two arguments", self.sandbox.arguments(process) ==
              [self.sandbox.name_of(folder / "editor.exe"), self.sandbox.name_of(project)])
        check("the editor in its own folder", (process / "cwd").readlink() == folder)
        window.picture(str(self.pictures / f"{self.number:02}-editor-window.png"))

    def second_click(self):
        self.window.click(row(1))
        self.window.see("VOLO Editor is already open.", NOTICE)
        check("one editor", len(self.sandbox.processes("editor.exe")) == 1)

    def close_editor(self):
        self.desktop.window("VOLO Editor").close()
        wait_for("the editor ended", lambda: not self.sandbox.processes("editor.exe"))
        self.window.come_forward()

    def another_project(self):
        self.close_editor()
        time.sleep(2)  # a click within two seconds of the last start is refused, as the step before has seen
        self.window.click(row(3, shift=NOTICE_HEIGHT))
        self.see_editor("Hernia repair")
        self.close_editor()
        self.window.see("Hernia repair", name_box(0))
        check("the opened project first", self.sandbox.listed()[:2] == ["Hernia repair", NAME])

    # --- the list ------------------------------------------------------------------------------------------------------

    def search(self):
        self.window.click(SEARCH)
        self.window.type("scop")
        self.window.see("Colonoscopy", name_box(0))
        self.window.see_no("zantorproj", (272, 154, 480, 100))
        self.window.type("xx")
        self.window.see("No matching projects", EMPTY_LIST)

    def clear_search(self):
        self.window.click(SEARCH_CLEAR)
        self.window.see("Hernia repair", name_box(0))
        self.window.see("Colonoscopy", LIST)

    def sort(self):
        stored = self.sandbox.listed()
        for order in (sorted(stored, key=str.lower), sorted(stored, key=str.lower, reverse=True)):
            self.window.click(NAME_HEADER)
            for number, name in enumerate(order):
                self.window.see(name, name_box(number))
        check("the stored order untouched", self.sandbox.listed() == stored)

    def star(self):
        x, y = row(0, STAR_X)
        check("no star yet", not is_yellow(self.window.colour(x, y)))
        self.window.click((x, y))
        wait_for("a yellow star", lambda: is_yellow(self.window.colour(x, y)))
        self.check_favourite(NAME, "true")
        check("no editor opened", not self.sandbox.processes("editor.exe"))

    def check_favourite(self, name, value):
        number = self.sandbox.listed().index(name) + 1
        wait_for(f"favorite={value} in Launcher.conf",
                 lambda: self.sandbox.settings()[f"Projects%5C{number}%5Cfavorite"] == value)

    def menu(self):
        self.window.click(row(0), button=3)
        self.window.see("Remove from Favorites", WHOLE)
        self.window.click(self.window.find("Show in File Manager", WHOLE))
        if self.sandbox.windows:  # its file manager is a program with a window of its own
            self.desktop.window(NAME).close()
            wait_for("the folder's window closed", lambda: not self.desktop.windows(NAME))
            self.window.come_forward()
        else:
            self.sandbox.told(f"browser: shows the folder {self.sandbox.projects / NAME}")

    def removal(self):
        self.window.click(row(4, DOTS_X))
        self.window.click(self.window.find("Remove From List", WHOLE))
        wait_for("one project fewer in Launcher.conf", lambda: "Appendectomy" not in self.sandbox.listed())
        self.window.see_no("Appendectomy", LIST)
        check("the project still on disk", (self.sandbox.projects / "Appendectomy/Appendectomy.zantorproj").is_file())

    # --- the end -------------------------------------------------------------------------------------------------------

    def sign_out(self):
        self.window.click(SIGN_OUT)
        self.window.see("Sign in", SIGN_IN_BUTTON)
        check("no session in Launcher.conf", self.sandbox.settings()["auth%2FrefreshToken"] == "")
        check("the projects still in Launcher.conf", len(self.sandbox.listed()) == len(MADE_UP))

    def close(self):
        window, self.window = self.window, None  # nothing left to take a picture of
        window.close()
        check("exit status 0", self.sandbox.status() == 0)

    def stored_session(self):
        self.window = self.desktop.window("VOLO Launcher")
        self.window.see("Ada Sandbox ada@sandbox.test", USER_CARD)
        self.window.see("Hernia repair", name_box(0))
        self.sandbox.told("identity provider: refresh")
        check("no consent asked", not any("consent" in line for line in self.sandbox.lines))


def take(build, pictures):
    with tempfile.TemporaryDirectory(prefix="volo-tour-") as folder, Desktop() as desktop:
        root = pathlib.Path(folder) / "world"
        hold = pathlib.Path(folder) / "hold"
        hold.mkdir()
        for what in ("package", "statement"):
            (hold / what).touch()
        with Sandbox(desktop, build, "--projects", str(len(MADE_UP)), "--hold", hold, root=root) as sandbox:
            tour = Tour(desktop, sandbox, hold, pictures)
            tour.step("sign-in", "the sign-in screen", tour.sign_in_screen)
            tour.step("browser", "waiting for the browser", tour.browser)
            tour.step("shell", "signed in as Ada Sandbox", tour.shell)
            tour.step("dialog", "a name for a new project", tour.dialog)
            tour.step("creation", "the project stands first, and on disk byte for byte", tour.creation)
            tour.step("installation", "opening it begins with installing the editor", tour.installation)
            tour.step("waiting", "the project waits for it", tour.waiting_project)
            tour.step("verification", "the package is verified before anything of it is used", tour.verification)
            tour.step("editor", "the editor is installed and shows the project that waited", tour.editor)
            tour.step("version", "the list tells the editor's version", tour.version_in_list)
            tour.step("second-click", "a second editor is refused", tour.second_click)
            tour.step("another", "with the editor closed another project opens", tour.another_project)
            tour.step("checking", "the launcher looks for another version", tour.checking)
            tour.step("update", "and takes it in", tour.update)
            tour.step("cancel", "a download is cancelled, and the editor stays", tour.cancel)
            tour.step("retry", "and comes in at the second try", tour.retry)
            tour.step("search", "the search narrows the list", tour.search)
            tour.step("clear", "the cross brings all back", tour.clear_search)
            tour.step("sort", "the list sorts by name, both ways", tour.sort)
            tour.step("star", "a project becomes a favourite", tour.star)
            tour.step("menu", "its menu shows the project's folder", tour.menu)
            tour.step("removal", "a project leaves the list and stays on disk", tour.removal)
            tour.step("sign-out", "the sign-in screen again", tour.sign_out)
            tour.step("close", "the launcher ends with its window", tour.close)
        with Sandbox(desktop, build, "--stored-session", root=root) as sandbox:
            tour.sandbox = sandbox
            tour.step("restart", "a stored session shows the shell at once", tour.stored_session)
            tour.step("end", "the launcher ends with its window", tour.close)


def main():
    options = argparse.ArgumentParser(description=__doc__)
    options.add_argument("--build", default="build/linux", help="where the programs were built")
    options.add_argument("--out", default="out/tour", help="where the pictures go")
    arguments = options.parse_args()
    if missing_programs():
        sys.exit("not installed: " + ", ".join(missing_programs()))
    stand_apart(arguments.build)
    pictures = pathlib.Path(arguments.out)
    pictures.mkdir(parents=True, exist_ok=True)
    began = time.monotonic()
    take(arguments.build, pictures)
    print(f"[tour] all seen in {time.monotonic() - began:.0f} s; the pictures are in {pictures}")


if __name__ == "__main__":
    main()
