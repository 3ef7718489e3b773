#!/usr/bin/env python3
"""Builds the Windows installer, installs and removes the launcher under Wine.

usage: windows_test.py <folder of the repository> <build folder>"""

import pathlib
import shutil
import subprocess
import sys
import tempfile
import time

from checking import check, run

WINE = str(pathlib.Path(sys.argv[1], "cmake/wine-run"))
BUILD = sys.argv[2]
KEY = r"HKCU\Software\Microsoft\Windows\CurrentVersion\Uninstall"


def wine(*command):
    return subprocess.run([WINE, "--collect", *command], capture_output=True, text=True, timeout=120, check=False)


def folder_of(variable):
    path = wine("cmd", "/c", f"echo %{variable}%").stdout.strip()
    return pathlib.Path(wine("winepath", "-u", path).stdout.strip())


def registered():
    return "VOLO Launcher" in wine("reg", "query", KEY, "/s").stdout


def main():
    with tempfile.TemporaryDirectory() as folder:
        run("cpack", "-G", "NSIS", "-B", folder, cwd=BUILD)
        setup, = pathlib.Path(folder).glob("*-setup.exe")
        check("the installer asks for no administrator", b'level="asInvoker"' in setup.read_bytes())
        check("no launcher is installed before", not registered())
        target = folder_of("LOCALAPPDATA") / "Programs/VOLO Launcher"
        check("it installs", wine(setup, "/S").returncode == 0)
        for name in ("volo-launcher.exe", "Roboto-Medium.ttf", "background.png", "licences/OpenSSL.txt"):
            check(f"{name} is installed", (target / name).is_file())
        check("it is registered", registered())
        shortcut = folder_of("APPDATA") / "Microsoft/Windows/Start Menu/Programs/VOLO Launcher.lnk"
        check("it has an entry in the start menu", shortcut.exists())

        (target / "editor").mkdir()
        (target / "editor/editor.exe").write_text("an installed editor")
        (target / "launcher_config.json").write_text("{}")
        wine(target / "Uninstall.exe", "/S")  # it starts a copy of itself and ends
        deadline = time.monotonic() + 120
        while registered() and time.monotonic() < deadline:
            time.sleep(0.2)
        check("it is no longer registered", not registered())
        left = {str(path.relative_to(target)) for path in target.rglob("*") if path.is_file()}
        check(f"editor and configuration are left, and nothing else: {left}",
              left == {"editor/editor.exe", "launcher_config.json"})
        check("it has no entry in the start menu", not shortcut.exists())
        shutil.rmtree(target)


if __name__ == "__main__":
    main()
