#!/usr/bin/env python3
"""Builds the Linux packages and uses them as a packager, an administrator and a user do.

usage: linux_test.py <build folder>"""

import os
import pathlib
import subprocess
import sys
import tarfile
import tempfile

from checking import check, run

BUILD = sys.argv[1]
OLD = 1_000_000_000  # a date that no file of the build has
NEEDED = {"volo-launcher", "Roboto-Medium.ttf", "background.png"}


def build_packages(folder):
    run("cpack", "-B", folder, cwd=BUILD, env={**os.environ, "SOURCE_DATE_EPOCH": str(OLD)})
    return {path.suffix: path for path in pathlib.Path(folder).iterdir() if path.is_file()}


def archive_has_one_folder(archive):
    with tarfile.open(archive) as tar:
        folder, = {name.split("/")[0] for name in tar.getnames()}
        for name in (*NEEDED, "launcher_config.example.json", "LICENSE", "licences/miniz.txt"):
            check(f"{name} is in the archive and readable for all", tar.getmember(f"{folder}/{name}").mode & 0o444 == 0o444)


def desktop_data_is_valid(root):
    entry, = root.glob("usr/share/applications/*.desktop")
    metainfo, = root.glob("usr/share/metainfo/*.metainfo.xml")
    check("entry and metainfo have the same name", metainfo.name == entry.stem + ".metainfo.xml")
    run("desktop-file-validate", entry)
    run("appstreamcli", "validate", "--no-net", metainfo)
    check("an icon of this name", list(root.glob(f"usr/share/icons/hicolor/scalable/apps/{entry.stem}.svg")))


def starter_makes_and_refreshes_a_copy(root):
    home = root / "home"
    copy = home / ".local/share/volo-launcher"
    configuration = root / "etc/volo-launcher/launcher_config.json"

    def start():  # without a display the launcher ends at once
        environment = {"PATH": os.environ["PATH"], "HOME": str(home)}
        subprocess.run([root / "usr/bin/volo-launcher"], env=environment, capture_output=True, timeout=60, check=False)
        check("the configuration is copied", (copy / "launcher_config.json").read_text() == configuration.read_text())
        for name in NEEDED:
            packaged = root / "usr/libexec/volo-launcher" / name
            check(f"{name} is copied", (copy / name).read_bytes() == packaged.read_bytes())

    start()
    check("the program can be started", os.access(copy / "volo-launcher", os.X_OK))
    (copy / "editor").mkdir()
    configuration.write_text("{}")
    (copy / "background.png").write_text("of an older package")
    start()
    check("the editor is kept, and nothing else is left", {path.name for path in copy.iterdir()} ==
          {*NEEDED, "editor", "launcher_config.json", "launcher_config.example.json"})


def main():
    with tempfile.TemporaryDirectory() as folder:
        packages, again = build_packages(folder + "/first"), build_packages(folder + "/second")
        for suffix, package in packages.items():
            check(f"{package.name} has the same bytes when packed again",
                  package.read_bytes() == again[suffix].read_bytes())
        archive_has_one_folder(packages[".gz"])
        root = pathlib.Path(folder, "root")
        run("dpkg-deb", "-x", packages[".deb"], root)
        depends = run("dpkg-deb", "-f", packages[".deb"], "Depends")
        for library in ("libssl3", "libglfw3", "libc6", "xdg-utils", "libdecor-0-plugin-1-gtk", "libgl1"):
            check(f"{library} is a dependency: {depends}", library in depends)
        check("root owns every file", " root/root " in run("dpkg-deb", "-c", packages[".deb"]).splitlines()[-1])
        check("the configuration belongs to the administrator",
              "/etc/volo-launcher/launcher_config.json" in run("dpkg-deb", "-I", packages[".deb"], "conffiles"))
        desktop_data_is_valid(root)
        starter_makes_and_refreshes_a_copy(root)


if __name__ == "__main__":
    main()
