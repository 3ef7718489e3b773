#!/usr/bin/env python3
"""The tour: operates the launcher in its sandbox with mouse and keys, and checks screen, disk and processes after every
step. Prints a line and saves a picture for each step; exit status 0 if every step succeeded."""

import argparse
import pathlib
import subprocess
import sys
import tempfile
import time

from desktop import Desktop, NotSeen, check, missing_programs, wait_for
from sandbox_run import Sandbox, stand_apart

# The layout of a launcher window of 1180 x 740 at scale 1: places (x, y) and boxes (left, top, width, height).
SIGN_IN = (236, 383)
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
EMOJI_NAME = "Heart 😀"
MADE_UP = ["Cholecystectomy", "Appendectomy", "Hernia repair", "Colonoscopy"]


def row(number, x=NAME_X, shift=0):
    return x, FIRST_ROW + shift + ROW_HEIGHT * number + ROW_HEIGHT / 2


def name_box(number, shift=0):
    return 272, FIRST_ROW + shift + ROW_HEIGHT * number + 4, 300, 24


def is_yellow(colour):
    red, _, blue = colour
    return red > 180 and blue < 80


class Tour:
    def __init__(self, desktop, hold, pictures):
        self.desktop, self.hold, self.pictures = desktop, hold, pictures
        self.sandbox = None
        self.window = None
        self.number = 0

    def step(self, action):
        """Runs one of the steps below. Its name and description are those of the function."""
        self.number += 1
        name = f"{self.number:02} {action.__name__}"
        failure = None
        try:
            action(self)
        except (NotSeen, OSError, subprocess.TimeoutExpired) as error:
            failure = str(error)
        if self.window:
            self.window.picture(str(self.pictures / f"{name.replace(' ', '-')}.png"))
        print(f"FAIL {name}: not seen: {failure}" if failure else f"ok   {name}: {action.__doc__}", flush=True)
        if failure:
            raise SystemExit(1)

    # --- signing in ------------------------------------------------------------------------------------------------

    def start(self):
        """the window shows the sign-in screen"""
        self.window = self.desktop.window("VOLO Launcher")
        wait_for("a window of 1180 x 740", lambda: self.window.size() == (1180, 740))
        self.window.see("Welcome to VOLO Launcher", SIGN_IN_COLUMN)
        self.window.see("Sign in", SIGN_IN_BUTTON)

    def browser(self):
        """the launcher waits for the browser"""
        self.window.click(SIGN_IN)
        self.window.see("Finish signing in in your browser.", SIGN_IN_COLUMN)
        self.release_held("browser")
        self.sandbox.see("identity provider: consent")

    def shell(self):
        """Ada Sandbox is signed in"""
        self.window.see("Ada Sandbox ada@sandbox.test", USER_CARD)
        self.sandbox.see("identity provider: userinfo")
        self.sandbox.see("reads: Sign-in complete")
        check("the session in Launcher.conf", self.sandbox.settings().get("auth%2FrefreshToken", "").startswith("1//0"))
        check("Launcher.conf readable by its owner only",
              self.sandbox.windows or self.sandbox.settings_file.stat().st_mode & 0o777 == 0o600)

    # --- a project, from nothing to the editor -------------------------------------------------------------------------

    def dialog(self):
        """a new project gets a name"""
        self.window.click(NEW_PROJECT)
        self.window.see("Create a new project", DIALOG)
        self.window.click(self.window.find("VOLO project", DIALOG))  # the hint
        self.window.type(NAME)
        self.window.see(self.sandbox.name_of(self.sandbox.projects / NAME)[-len(f"VOLO Projects/{NAME}"):], DIALOG)

    def creation(self):
        """the project is first in the list and its file is on disk"""
        self.window.press("Return")  # tesseract cannot read the white label of the blue button
        self.window.see_no("Create a new project", DIALOG)
        self.window.see(NAME, name_box(0))
        self.window.see("Cholecystectomy", name_box(1))
        file = self.sandbox.projects / NAME / f"{NAME}.zantorproj"
        check("the bytes of the project file",
              file.read_bytes() == PROJECT_FILE.replace("\n", self.sandbox.line_end).encode())
        check("the project first in Launcher.conf", self.sandbox.listed() == [NAME, *MADE_UP])

    def installation(self):
        """opening the project first installs the editor, and the project waits"""
        self.window.click(row(0))
        self.window.see("Downloading", INSTALLS_CARD)
        self.window.see("Cancel download", INSTALL_ACTION)
        self.window.click(PROJECTS_TAB)
        self.window.see("Installing VOLO Editor before opening this project...", NOTICE)

    def verification(self):
        """nothing is installed before the publisher's statement arrives"""
        self.window.click(INSTALLS_TAB)
        self.release_held("package")
        self.window.see("Installing editor 1.0.0", INSTALLS_CARD)
        check("no editor process", not self.sandbox.processes("editor.exe"))
        check("no editor yet", not (self.sandbox.launcher / "editor/editor.exe").exists())

    def editor(self):
        """the editor is installed and shows the waiting project"""
        self.release_held("statement")
        self.see_editor(NAME)
        self.see_marker("1.0.0")
        self.window.come_forward()
        self.window.see("Installed — version 1.0.0", INSTALLS_CARD)
        self.window.click(PROJECTS_TAB)
        self.window.see("VOLO 1.0.0", EDITOR_COLUMN)

    def second_click(self):
        """a second editor is refused"""
        self.window.click(row(1))
        self.window.see("VOLO Editor is already open.", NOTICE)
        check("one editor", len(self.sandbox.processes("editor.exe")) == 1)

    def another_project(self):
        """another project opens after the editor is closed"""
        self.close_editor()
        time.sleep(2)  # the launcher ignores clicks for two seconds after starting an editor
        self.window.click(row(3, shift=NOTICE_HEIGHT))
        self.see_editor("Hernia repair")
        self.close_editor()
        self.window.see("Hernia repair", name_box(0))
        check("the opened project first", self.sandbox.listed()[:2] == ["Hernia repair", NAME])

    # --- the editor kept current ---------------------------------------------------------------------------------------

    def update(self):
        """a newer version is found and installed"""
        self.sandbox.publish("1.1.0")
        self.window.click(INSTALLS_TAB)
        (self.hold / "manifest").touch()
        self.window.click(self.window.find("Check for updates", INSTALL_ACTION))
        self.window.see("Checking for updates", INSTALLS_CARD)
        self.release_held("manifest")
        self.window.see("Installed — version 1.1.0", INSTALLS_CARD)
        self.see_marker("1.1.0")

    def cancel(self):
        """a download is cancelled and the editor stays"""
        self.sandbox.publish("1.2.0")
        (self.hold / "package").touch()
        self.window.click(self.window.find("Check for updates", INSTALL_ACTION))
        self.window.click(self.window.find("Cancel download", INSTALL_ACTION))
        self.window.see("Download cancelled.", INSTALLS_CARD)
        self.see_marker("1.1.0")
        check("no partial package", not list(self.sandbox.launcher.rglob("*.part")))

    def retry(self):
        """the second attempt installs the version"""
        self.release_held("package")
        self.window.click(self.window.find("Retry", INSTALL_ACTION))
        self.window.see("Installed — version 1.2.0", INSTALLS_CARD)
        self.see_marker("1.2.0")

    # --- the list ------------------------------------------------------------------------------------------------------

    def search(self):
        """the search narrows the list, and its cross clears it"""
        self.window.click(PROJECTS_TAB)
        self.window.click(SEARCH)
        self.window.type("scop")
        self.window.see("Colonoscopy", name_box(0))
        self.window.type("xx")
        self.window.see("No matching projects", EMPTY_LIST)
        self.window.click(SEARCH_CLEAR)
        self.window.see("Hernia repair", name_box(0))

    def sort(self):
        """the list sorts by name in both directions"""
        stored = self.sandbox.listed()
        for order in (sorted(stored, key=str.lower), sorted(stored, key=str.lower, reverse=True)):
            self.window.click(NAME_HEADER)
            for number, name in enumerate(order):
                self.window.see(name, name_box(number))
        check("the stored order unchanged", self.sandbox.listed() == stored)

    def star(self):
        """a project becomes a favorite"""
        x, y = row(0, STAR_X)
        check("no star yet", not is_yellow(self.window.colour(x, y)))
        self.window.click((x, y))
        wait_for("a yellow star", lambda: is_yellow(self.window.colour(x, y)))
        entry = self.sandbox.listed().index(NAME) + 1
        wait_for("the favorite in Launcher.conf",
                 lambda: self.sandbox.settings()[f"Projects%5C{entry}%5Cfavorite"] == "true")

    def menu(self):
        """the project's menu opens its folder"""
        self.window.click(row(0), button=3)
        self.window.see("Remove from Favorites", WHOLE)
        self.window.click(self.window.find("Show in File Manager", WHOLE))
        if self.sandbox.windows:  # Wine's file manager opens a window
            self.desktop.window(NAME).close()
            wait_for("the folder's window closed", lambda: not self.desktop.windows(NAME))
            self.window.come_forward()
        else:
            self.sandbox.see(f"browser: shows the folder {self.sandbox.projects / NAME}")

    def removal(self):
        """a project leaves the list and stays on disk"""
        self.window.click(row(4, DOTS_X))
        self.window.click(self.window.find("Remove From List", WHOLE))
        wait_for("one project fewer in Launcher.conf", lambda: "Appendectomy" not in self.sandbox.listed())
        self.window.see_no("Appendectomy", LIST)
        check("the project still on disk", (self.sandbox.projects / "Appendectomy/Appendectomy.zantorproj").is_file())

    def undo(self):
        """Ctrl+Z brings the removed project back"""
        self.window.press("ctrl+z")
        self.window.see("Appendectomy", LIST)
        wait_for("the project in Launcher.conf", lambda: "Appendectomy" in self.sandbox.listed())

    def zoom(self):
        """Ctrl and + enlarge the window's content, and Ctrl and 0 bring it back"""
        def height():
            return self.window.find("Colonoscopy", WHOLE)[1]

        normal = height()
        self.window.press("ctrl+plus", "ctrl+plus")
        wait_for("larger rows", lambda: height() > 1.1 * normal)
        self.window.press("ctrl+0")
        wait_for("rows of the normal size", lambda: abs(height() - normal) < 3)

    def emoji(self):
        """a project whose name has emoji is in the list and on disk"""
        self.window.press("ctrl+n")
        self.window.see("Create a new project", DIALOG)
        self.window.tool("type", "--delay", "200", EMOJI_NAME)  # xdotool maps a key for the emoji, which takes a while
        self.window.press("Return")
        self.window.see_no("Create a new project", DIALOG)
        self.window.see("Heart", LIST)
        check("the project's file", (self.sandbox.projects / EMOJI_NAME / f"{EMOJI_NAME}.zantorproj").is_file())
        check("the project first in Launcher.conf", self.sandbox.listed()[0] == EMOJI_NAME)

    # --- the end -------------------------------------------------------------------------------------------------------

    def sign_out(self):
        """the sign-in screen returns and the session is removed"""
        self.window.click(SIGN_OUT)
        self.window.see("Sign in", SIGN_IN_BUTTON)
        check("no session in Launcher.conf", self.sandbox.settings()["auth%2FrefreshToken"] == "")
        check("the projects still in Launcher.conf", len(self.sandbox.listed()) == len(MADE_UP) + 2)

    def close(self):
        """the launcher ends with its window"""
        window, self.window = self.window, None
        self.sandbox.close(window)

    def stored_session(self):
        """the next start needs no sign-in"""
        self.window = self.desktop.window("VOLO Launcher")
        self.window.see("Ada Sandbox ada@sandbox.test", USER_CARD)
        self.window.see("Heart", name_box(0))
        self.sandbox.see("identity provider: refresh")
        check("no consent asked", not any("consent" in line for line in self.sandbox.lines))

    # --- what several steps need ---------------------------------------------------------------------------------------

    def release_held(self, what):
        (self.hold / what).unlink()

    def see_marker(self, version):
        marker = self.sandbox.launcher / "editor/.zantor_editor_version"
        check(f"the version marker {version}", marker.read_text(encoding="utf-8").strip() == version)

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

    def close_editor(self):
        self.desktop.window("VOLO Editor").close()
        wait_for("the end of the editor", lambda: not self.sandbox.processes("editor.exe"))
        self.window.come_forward()


FIRST_RUN = (Tour.start, Tour.browser, Tour.shell, Tour.dialog, Tour.creation, Tour.installation, Tour.verification,
             Tour.editor, Tour.second_click, Tour.another_project, Tour.update, Tour.cancel, Tour.retry, Tour.search,
             Tour.sort, Tour.star, Tour.menu, Tour.removal, Tour.undo, Tour.zoom, Tour.emoji, Tour.sign_out, Tour.close)
SECOND_RUN = (Tour.stored_session, Tour.close)


def take(build, pictures):
    with tempfile.TemporaryDirectory(prefix="volo-tour-") as folder, Desktop() as desktop:
        root = pathlib.Path(folder) / "world"
        hold = pathlib.Path(folder) / "hold"
        hold.mkdir()
        for what in ("browser", "package", "statement"):
            (hold / what).touch()
        tour = Tour(desktop, hold, pictures)
        for steps, options in ((FIRST_RUN, ("--projects", str(len(MADE_UP)), "--hold", hold)),
                               (SECOND_RUN, ("--stored-session",))):
            with Sandbox(desktop, build, *options, root=root) as tour.sandbox:
                for step in steps:
                    tour.step(step)


def main():
    options = argparse.ArgumentParser(description=__doc__)
    options.add_argument("--build", default="build/linux", help="the folder of the built programs")
    options.add_argument("--out", default="out/tour", help="the folder for the pictures")
    arguments = options.parse_args()
    if missing_programs():
        sys.exit("not installed: " + ", ".join(missing_programs()))
    stand_apart(arguments.build)
    pictures = pathlib.Path(arguments.out)
    pictures.mkdir(parents=True, exist_ok=True)
    began = time.monotonic()
    take(arguments.build, pictures)
    print(f"[tour] every step succeeded in {time.monotonic() - began:.0f} s; the pictures are in {pictures}")


if __name__ == "__main__":
    main()
