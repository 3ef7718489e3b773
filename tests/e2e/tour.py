#!/usr/bin/env python3
"""The tour: operates the launcher in its sandbox with mouse and keys, and checks screen, disk and processes after every
step. Prints a line and saves a picture for each step; exit status 0 if every step succeeded."""

import argparse
import contextlib
import pathlib
import subprocess
import sys
import tempfile
import time

from desktop import Desktop, NotSeen, check, missing_programs, wait_for
from sandbox_run import Sandbox, be_google, stand_apart

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
YELLOW = (0xFB, 0xBF, 0x24)

NAME = "My First Simulation"
EMOJI_NAME = "Heart 😀"
MADE_UP = ["Cholecystectomy", "Appendectomy", "Hernia repair", "Colonoscopy"]


def row(number, x=NAME_X, shift=0):
    return x, FIRST_ROW + shift + ROW_HEIGHT * number + ROW_HEIGHT / 2


def name_box(number, shift=0):
    return 272, FIRST_ROW + shift + ROW_HEIGHT * number + 4, 300, 24


class Tour:
    def __init__(self, desktop, hold, pictures):
        self.desktop, self.hold, self.pictures = desktop, hold, pictures
        self.sandbox = self.window = None
        self.number = 0

    @contextlib.contextmanager
    def step(self, name, description):
        """Runs a block, prints its line and saves its picture. A failure ends the tour."""
        self.number += 1
        name = f"{self.number:02} {name}"
        failure = None
        try:
            yield
        except (NotSeen, OSError, subprocess.TimeoutExpired) as error:
            failure = str(error)
        if self.window:
            self.window.picture(str(self.pictures / f"{name.replace(' ', '-')}.png"))
        print(f"FAIL {name}: not seen: {failure}" if failure else f"ok   {name}: {description}", flush=True)
        if failure:
            raise SystemExit(1)

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


def sign_in(tour):
    sandbox = tour.sandbox
    with tour.step("start", "the window shows the sign-in screen"):
        window = tour.window = tour.desktop.window("VOLO Launcher")
        window.see("Welcome to VOLO Launcher", SIGN_IN_COLUMN)
        window.see("Sign in", SIGN_IN_BUTTON)
    with tour.step("browser", "the launcher waits for the browser"):
        window.click(SIGN_IN)
        window.see("Finish signing in in your browser.", SIGN_IN_COLUMN)
        tour.release_held("browser")
        sandbox.see("identity provider: consent")
    with tour.step("shell", "Ada Sandbox is signed in"):
        window.see("Ada Sandbox ada@sandbox.test", USER_CARD)
        sandbox.see("reads: Sign-in complete")


def open_projects(tour):
    window, sandbox = tour.window, tour.sandbox
    with tour.step("dialog", "a new project gets a name"):
        window.click(NEW_PROJECT)
        window.see("Create a new project", DIALOG)
        window.click(window.find("VOLO project", DIALOG))  # the hint
        window.type(NAME)
        window.see(sandbox.name_of(sandbox.projects / NAME)[-len(f"VOLO Projects/{NAME}"):], DIALOG)
    with tour.step("creation", "the project is first in the list and its file is on disk"):
        window.press("Return")  # tesseract cannot read the white label of the blue button
        window.see_no("Create a new project", DIALOG)
        window.see(NAME, name_box(0))
        window.see("Cholecystectomy", name_box(1))
        check("the project's file", (sandbox.projects / NAME / f"{NAME}.zantorproj").is_file())
        check("the project first in Launcher.conf", sandbox.listed() == [NAME, *MADE_UP])
    with tour.step("installation", "opening the project first installs the editor, and the project waits"):
        window.click(row(0))
        window.see("Downloading", INSTALLS_CARD)
        window.see("Cancel download", INSTALL_ACTION)
        window.click(PROJECTS_TAB)
        window.see("Installing VOLO Editor before opening this project...", NOTICE)
    with tour.step("verification", "nothing is installed before the publisher's statement arrives"):
        window.click(INSTALLS_TAB)
        tour.release_held("package")
        window.see("Installing editor 1.0.0", INSTALLS_CARD)
        check("no editor process", not sandbox.processes("editor.exe"))
        check("no editor yet", not (sandbox.launcher / "editor/editor.exe").exists())
    with tour.step("editor", "the editor is installed and shows the waiting project"):
        tour.release_held("statement")
        tour.see_editor(NAME)
        tour.see_marker("1.0.0")
        window.come_forward()
        window.see("Installed — version 1.0.0", INSTALLS_CARD)
        window.click(PROJECTS_TAB)
        window.see("VOLO 1.0.0", EDITOR_COLUMN)
    with tour.step("second_click", "a second editor is refused"):
        window.click(row(1))
        window.see("VOLO Editor is already open.", NOTICE)
        check("one editor", len(sandbox.processes("editor.exe")) == 1)
    with tour.step("another_project", "another project opens after the editor is closed"):
        tour.close_editor()
        time.sleep(2)  # the launcher ignores clicks for two seconds after starting an editor
        window.click(row(3, shift=NOTICE_HEIGHT))
        tour.see_editor("Hernia repair")
        tour.close_editor()
        window.see("Hernia repair", name_box(0))


def update_editor(tour):
    window, sandbox = tour.window, tour.sandbox
    with tour.step("update", "a newer version is found and installed"):
        sandbox.publish("1.1.0")
        window.click(INSTALLS_TAB)
        (tour.hold / "manifest").touch()
        window.click(window.find("Check for updates", INSTALL_ACTION))
        window.see("Checking for updates", INSTALLS_CARD)
        tour.release_held("manifest")
        window.see("Installed — version 1.1.0", INSTALLS_CARD)
        tour.see_marker("1.1.0")
    with tour.step("cancel", "a download is cancelled and the editor stays"):
        sandbox.publish("1.2.0")
        (tour.hold / "package").touch()
        window.click(window.find("Check for updates", INSTALL_ACTION))
        window.click(window.find("Cancel download", INSTALL_ACTION))
        window.see("Download cancelled.", INSTALLS_CARD)
        tour.see_marker("1.1.0")
    with tour.step("retry", "the second attempt installs the version"):
        tour.release_held("package")
        window.click(window.find("Retry", INSTALL_ACTION))
        window.see("Installed — version 1.2.0", INSTALLS_CARD)
        tour.see_marker("1.2.0")


def look_through_the_list(tour):
    window, sandbox = tour.window, tour.sandbox
    with tour.step("search", "the search narrows the list, and its cross clears it"):
        window.click(PROJECTS_TAB)
        window.click(SEARCH)
        window.type("scop")
        window.see("Colonoscopy", name_box(0))
        window.type("xx")
        window.see("No matching projects", EMPTY_LIST)
        window.click(SEARCH_CLEAR)
        window.see("Hernia repair", name_box(0))
    with tour.step("sort", "the list sorts by name in both directions"):
        names = sorted(sandbox.listed(), key=str.lower)
        for order in (names, names[::-1]):
            window.click(NAME_HEADER)
            for number, name in enumerate(order):
                window.see(name, name_box(number))
    with tour.step("star", "a project becomes a favorite"):
        star = row(0, STAR_X)
        check("no star yet", window.colour(*star) != YELLOW)
        window.click(star)
        wait_for("a yellow star", lambda: window.colour(*star) == YELLOW)
        favorite = f"Projects%5C{sandbox.listed().index(NAME) + 1}%5Cfavorite"
        wait_for("the favorite in Launcher.conf", lambda: sandbox.settings()[favorite] == "true")
    with tour.step("menu", "the project's menu opens its folder"):
        window.click(row(0), button=3)
        window.see("Remove from Favorites", WHOLE)
        window.click(window.find("Show in File Manager", WHOLE))
        if sandbox.windows:  # Wine's file manager opens a window
            tour.desktop.window(NAME).close()
            wait_for("the folder's window closed", lambda: not tour.desktop.windows(NAME))
            window.come_forward()
        else:
            sandbox.see(f"browser: shows the folder {sandbox.projects / NAME}")


def change_the_list(tour):
    window, sandbox = tour.window, tour.sandbox
    with tour.step("removal", "a project leaves the list and stays on disk"):
        window.click(row(4, DOTS_X))
        window.click(window.find("Remove From List", WHOLE))
        wait_for("one project fewer in Launcher.conf", lambda: "Appendectomy" not in sandbox.listed())
        window.see_no("Appendectomy", LIST)
        check("the project still on disk", (sandbox.projects / "Appendectomy/Appendectomy.zantorproj").is_file())
    with tour.step("undo", "Ctrl+Z brings the removed project back"):
        window.press("ctrl+z")
        window.see("Appendectomy", LIST)
        wait_for("the project in Launcher.conf", lambda: "Appendectomy" in sandbox.listed())
    with tour.step("zoom", "Ctrl and + enlarge the window's content, and Ctrl and 0 bring it back"):
        window.point(5, 5)  # a tooltip of the row below the pointer would cover other rows
        normal = window.find("Colonoscopy", WHOLE)[1]
        window.press("ctrl+plus", "ctrl+plus")
        wait_for("larger rows", lambda: window.find("Colonoscopy", WHOLE)[1] > 1.1 * normal)
        window.press("ctrl+0")
        wait_for("rows of the normal size", lambda: abs(window.find("Colonoscopy", WHOLE)[1] - normal) < 3)
    with tour.step("emoji", "a project whose name has emoji is in the list and on disk"):
        window.press("ctrl+n")
        window.see("Create a new project", DIALOG)
        window.type("Heart ")
        window.tool("type", "--delay", "2000", "😀")  # xdotool maps a key for it, and unmaps the key after the delay
        window.press("Return")
        window.see_no("Create a new project", DIALOG)
        window.see("Heart", LIST)
        check("the project's file", (sandbox.projects / EMOJI_NAME / f"{EMOJI_NAME}.zantorproj").is_file())
        check("the project first in Launcher.conf", sandbox.listed()[0] == EMOJI_NAME)


def sign_out(tour):
    with tour.step("sign_out", "the sign-in screen returns and the session is removed"):
        tour.window.click(SIGN_OUT)
        tour.window.see("Sign in", SIGN_IN_BUTTON)
        check("no session in Launcher.conf", tour.sandbox.settings()["auth%2FrefreshToken"] == "")


def come_back(tour):
    with tour.step("stored_session", "the next start needs no sign-in"):
        tour.window = tour.desktop.window("VOLO Launcher")
        tour.window.see("Ada Sandbox ada@sandbox.test", USER_CARD)
        tour.window.see("Heart", name_box(0))
        tour.sandbox.see("identity provider: refresh")
        check("no consent asked", not any("consent" in line for line in tour.sandbox.lines))


def close(tour):
    with tour.step("close", "the launcher ends with its window"):
        window, tour.window = tour.window, None
        tour.sandbox.close(window)


FIRST_RUN = (sign_in, open_projects, update_editor, look_through_the_list, change_the_list, sign_out, close)
SECOND_RUN = (come_back, close)


def take(build, pictures, always=()):
    with tempfile.TemporaryDirectory(prefix="volo-tour-") as folder, Desktop() as desktop:
        root = pathlib.Path(folder) / "world"
        hold = pathlib.Path(folder) / "hold"
        hold.mkdir()
        for what in ("browser", "package", "statement"):
            (hold / what).touch()
        tour = Tour(desktop, hold, pictures)
        for sections, options in ((FIRST_RUN, ("--projects", str(len(MADE_UP)), "--hold", hold)),
                                  (SECOND_RUN, ("--stored-session",))):
            with Sandbox(desktop, build, *options, *always, root=root) as tour.sandbox:
                for section in sections:
                    section(tour)


def main():
    options = argparse.ArgumentParser(description=__doc__)
    options.add_argument("--build", default="build/linux", help="the folder of the built programs")
    options.add_argument("--out", default="out/tour", help="the folder for the pictures")
    options.add_argument("--as-google", action="store_true",
                         help="with the shipped launcher, where Google's host names are this machine")
    arguments = options.parse_args()
    if missing_programs():
        sys.exit("not installed: " + ", ".join(missing_programs()))
    if arguments.as_google and not be_google():
        sys.exit("network and mount namespaces are not permitted")
    stand_apart(arguments.build)
    pictures = pathlib.Path(arguments.out)
    pictures.mkdir(parents=True, exist_ok=True)
    began = time.monotonic()
    take(arguments.build, pictures, ("--as-google",) if arguments.as_google else ())
    print(f"[tour] every step succeeded in {time.monotonic() - began:.0f} s; the pictures are in {pictures}")


if __name__ == "__main__":
    main()
