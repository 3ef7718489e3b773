#!/usr/bin/env python3
# Checks which files of src/ may include which headers.
#
# usage: check_includes.py <folder of the repository> <platform>...

import pathlib
import re
import sys

# A logic file includes headers of its own folder and of folders with a lower number.
LAYER = {"crypto": -1, "system": 0, "config": 1, "ui": 1, "signin": 2, "install": 2, "projects": 3, "shell": 4}

# Plain records without logic: every folder may include them.
RECORDS = {"projects/project_entry.h"}

HUB = "shell/launcher_app.h"

# A source may include the hub if it defines a member of LauncherApp or a function that takes a LauncherApp.
TAKES_THE_APPLICATION = re.compile(r"\bLauncherApp::\w|\b(?:const )?LauncherApp ?&")

OPERATING_SYSTEM = re.compile(
    r"^(unistd|fcntl|dirent|dlfcn|poll|pthread|pwd|sched|semaphore|spawn|syslog|termios|ifaddrs|netdb"
    r"|windows|winsock2|ws2tcpip|shellapi|shlobj\w*|shlwapi|tlhelp32|commdlg|objbase|dwmapi|process|io|direct)\.h$"
    r"|^(sys|arpa|net|netinet|linux|X11|wayland)/",
    re.IGNORECASE,
)

INCLUDE = re.compile(r'^\s*#\s*include\s*(?:"([^"]+)"|<([^>]+)>)', re.MULTILINE)


def is_screen(path):
    return path.name.endswith(("_screen.cpp", "_screen.h", "_widgets.cpp", "_widgets.h"))


def problems_of(path, inside, text, platforms):
    folder = inside.split("/")[0]
    if folder not in LAYER:
        yield "its folder is missing in LAYER"
        return
    is_platform_file = (
        (folder == "system" and path.stem.endswith(tuple(f"_{platform}" for platform in platforms)))
        or inside.startswith("ui/ui_host")
        or inside == "shell/main.cpp"
    )
    uses_hub = is_screen(path) or folder == "shell" or TAKES_THE_APPLICATION.search(text)
    for quoted, angled in INCLUDE.findall(text):
        included = quoted or angled
        target = included.split("/")[0]
        if included == HUB:
            if not uses_hub or (path.suffix == ".h" and folder != "shell" and not is_screen(path)):
                yield f"includes {HUB}, but is not a screen and defines no function with a LauncherApp"
        elif target in LAYER and target != folder and included not in RECORDS:
            if target == "ui" and folder != "shell" and not is_screen(path):
                yield f"includes {included}: only shell/ and the screens include ui/"
            elif LAYER[target] >= LAYER[folder] and not uses_hub:
                yield f"includes {included}, which is not below {folder}/"
        if included.endswith("_screen.h") and not is_screen(path):
            yield f"includes {included}: only screens include screens"
        if re.search(r"\bim(gui|gui_\w+)\.h$", included) and folder not in ("ui", "shell") and not is_screen(path):
            yield f"includes {included}: only ui/, shell/ and the screens include Dear ImGui"
        if OPERATING_SYSTEM.search(included) and not is_platform_file:
            yield f"includes {included}, an operating-system header, outside of the platform's files"
        if quoted and not re.match(r"^[a-z]+/\w+\.h$", quoted):
            yield f'includes "{quoted}" without its folder: use folder/file.h'


def main():
    source, platforms = pathlib.Path(sys.argv[1]) / "src", sys.argv[2:]
    files = sorted(path for path in source.rglob("*") if path.suffix in (".h", ".cpp"))
    problems = []
    for path in files:
        inside = path.relative_to(source).as_posix()
        text = re.sub(r"//.*", "", path.read_text(encoding="utf-8"))
        problems += [f"{inside}: {problem}" for problem in problems_of(path, inside, text, platforms)]
    print(*problems, f"{len(files)} files, {len(problems)} problems", sep="\n")
    return 1 if problems or len(files) < 20 else 0


if __name__ == "__main__":
    sys.exit(main())
