#!/usr/bin/env python3
"""Builds the Windows installer, installs and removes the launcher under Wine.

usage: windows_test.py <folder of the repository> <build folder>"""

import pathlib
import subprocess
import sys
import tempfile

WINE = str(pathlib.Path(sys.argv[1], "cmake/wine-run"))
BUILD = sys.argv[2]
KEY = r"HKCU\Software\Microsoft\Windows\CurrentVersion\Uninstall"


def check(what, fact):
    if not fact:
        sys.exit(f"not so: {what}")


def wine(*command):
    return subprocess.run([WINE, "--collect", *command], capture_output=True, text=True, timeout=120, check=False)


def unix_path(windows_path):
    return pathlib.Path(wine("winepath", "-u", windows_path).stdout.strip())


def registered():
    return "VOLO Launcher" in wine("reg", "query", KEY, "/s").stdout


def main():
    with tempfile.TemporaryDirectory() as folder:
        subprocess.run(["cpack", "-G", "NSIS", "-B", folder], cwd=BUILD, stdout=subprocess.DEVNULL, check=True)
        setup, = pathlib.Path(folder).glob("*-setup.exe")
        check("the installer asks for no administrator", b'level="asInvoker"' in setup.read_bytes())
        check("no launcher is installed before", not registered())
        target = pathlib.Path(folder, "Programs", "VOLO Launcher")
        installed = "Z:" + str(target).replace("/", "\\")
        check("it installs", wine(setup, "/S", "/D=" + installed).returncode == 0)
        for name in ("volo-launcher.exe", "Roboto-Medium.ttf", "background.png", "licences/OpenSSL.txt"):
            check(f"{name} is installed", (target / name).is_file())
        check("it is registered", registered())
        shortcut = unix_path(wine("cmd", "/c", "echo %APPDATA%").stdout.strip()) / (
            "Microsoft/Windows/Start Menu/Programs/VOLO Launcher.lnk")
        check("it has an entry in the start menu", shortcut.exists())

        (target / "editor").mkdir()
        (target / "editor/editor.exe").write_text("an installed editor")
        (target / "launcher_config.json").write_text("{}")
        # _?= lets the uninstaller run in place, so that this call waits for its end.
        check("it is removed", wine(target / "Uninstall.exe", "/S", "_?=" + installed).returncode == 0)
        left = {str(path.relative_to(target)) for path in target.rglob("*") if path.is_file()}
        check(f"editor and configuration are left, and nothing else: {left}",
              left - {"Uninstall.exe"} == {"editor/editor.exe", "launcher_config.json"})
        check("it is no longer registered", not registered())
        check("it has no entry in the start menu", not shortcut.exists())


if __name__ == "__main__":
    main()
