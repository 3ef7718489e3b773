#!/usr/bin/env python3
"""Kills the launcher's operations, and lets their system calls fail, at every call that changes the disk. The disk must
then hold the old state, the new state or nothing, and the next run must repair it.

    faults.py DRIVER [--only install|settings|create]"""

import argparse
import collections
import concurrent.futures
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

CHANGING = ("openat,write,pwrite64,writev,rename,renameat,renameat2,unlink,unlinkat,mkdir,mkdirat,rmdir,chmod,fchmod,"
            "fchmodat,fsync,syncfs,ftruncate,close,link,flock")
FAULTS = {"KILL": CHANGING, "EIO": CHANGING, "ENOSPC": "openat,write,pwrite64,writev,rename,mkdir,mkdirat,close",
          "EACCES": "openat,rename,renameat,unlink,unlinkat,mkdir,mkdirat,rmdir,chmod,fchmod,fchmodat"}
EDITOR_FILES = ("editor.exe", "data/model.bin", "data/picture.bin", "lib/part", "lib/part~1", "help/page")


def traced(driver, arguments, options, log="/dev/null"):
    return subprocess.run(["strace", "-o", log, "-y", *options, driver, *map(str, arguments)],
                          capture_output=True, check=False, timeout=120).returncode


def points(driver, arguments, root):
    """The calls below `root` that change the disk: (name, number of the call among those of its name)."""
    log = root.parent / "calls"
    if traced(driver, arguments, ["-e", f"trace={CHANGING}"], log) != 0:
        sys.exit(f"{arguments[0]} fails without a fault")
    lines = log.read_text(errors="replace").splitlines()
    if unsynced(lines):
        sys.exit(f"{arguments[0]} does not wait until {unsynced(lines)} is on the disk")
    counts, found = collections.Counter(), []
    for line in lines:
        call = re.match(r"(\w+)\(", line)
        if not call:
            continue
        counts[call[1]] += 1
        opens_to_read = call[1] == "openat" and "O_WRONLY" not in line and "O_RDWR" not in line and "O_CREAT" not in line
        if str(root) in line and not opens_to_read:
            found.append((call[1], counts[call[1]]))
    return found


def unsynced(lines):
    """A file that is renamed before it is on the disk, or the settings' folder if its renamed file may vanish again."""
    def synced(path, calls):
        return any(re.match(rf"(fsync|syncfs)\(\d+<{re.escape(path)}[/>]", call) for call in calls)

    for number, line in enumerate(lines):
        renamed = re.match(r'rename\w*\(.*?"([^"]+)", ', line)
        if not renamed:
            continue
        folder, name = os.path.split(renamed[1])
        if not synced(renamed[1], lines[:number]):
            return renamed[1]
        if name == "Launcher.conf.tmp" and not synced(folder, lines[number:]):
            return folder
    return None


def whole(folder, version):
    return all((folder / name).is_file() and (folder / name).read_text() ==
               (version + " ") * -(-40000 // len(version + " ")) for name in EDITOR_FILES)


class Install:
    """An editor of version 1 is replaced by version 2."""

    versions = ("1", "2")

    def prepare(self, driver, root):
        subprocess.run([driver, "install", root, "1"], check=True)

    def arguments(self, root):
        return ["install", root, "2"]

    def problem(self, root, succeeded):
        editor = root / "launcher/editor"
        marker = editor / ".zantor_editor_version"
        version = marker.read_text().strip() if marker.exists() else ""
        if succeeded and not whole(editor, "2"):
            return "success without a whole editor"
        if version in self.versions and (editor / "editor.exe").exists() and not whole(editor, version):
            return f"half an editor under the marker of version {version}"
        if (editor / "editor.exe").exists() and not any(whole(editor, one) for one in self.versions):
            return "half an editor"
        return None

    def repaired(self, root):
        left = [path.name for path in root.glob("downloads/*.part")] + [path.name for path in root.glob("launcher/*staging")]
        return whole(root / "launcher/editor", "2") and not left


class FirstInstall(Install):
    """An editor is installed where there is none."""

    def prepare(self, driver, root):
        (root / "launcher").mkdir()


class Settings:
    """A list of 300 projects is replaced by a list of 200."""

    sizes = ("300", "200")

    def prepare(self, driver, root):
        subprocess.run([driver, "settings", root, "300"], check=True)

    def arguments(self, root):
        return ["settings", root, "200"]

    def size(self, root):
        text = next(root.rglob("Launcher.conf")).read_text()
        size = re.search(r"^Projects%5Csize=(\d+)$", text, re.M)[1]
        return size if text.endswith("\n") and text.count("%5Cpath=") == int(size) else "a part"

    def problem(self, root, succeeded):
        size = self.size(root)
        if size not in (("200",) if succeeded else self.sizes):
            return f"{size} of the projects"
        return None

    def repaired(self, root):
        return self.size(root) == "200" and len(list(root.rglob("Launcher*"))) == 1


class Create:
    """A project is created."""

    content = "ZantorProject:\n  Name: One\n  FormatVersion: 1\n"

    def prepare(self, driver, root):
        (root / "projects").mkdir()

    def arguments(self, root):
        return ["create", root, "One"]

    def problem(self, root, succeeded):
        file = root / "projects/One/One.zantorproj"
        # The file's own write errors are not reported: an editor reads an empty project as a new one.
        if file.exists() and file.read_text() not in ("", self.content):
            return "a part of a project file"
        return "success without a project file" if succeeded and not file.exists() else None

    def repaired(self, root):  # an interrupted creation leaves a folder that is not overwritten
        return (root / "projects/One").is_dir()


def try_point(driver, case, prepared, fault, call, number):
    with tempfile.TemporaryDirectory(prefix="volo-long-") as folder:
        root = pathlib.Path(folder, "root")
        shutil.copytree(prepared, root, symlinks=True)
        inject = f"inject={call}:{'signal' if fault == 'KILL' else 'error'}={fault}:when={number}"
        status = traced(driver, case.arguments(root), ["-e", f"trace={call}", "-e", inject])
        problem = case.problem(root, status == 0)
        subprocess.run([driver, *map(str, case.arguments(root))], capture_output=True, check=False)
        return problem or (None if case.repaired(root) else "not repaired by the next run")


def main():
    options = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    options.add_argument("driver")
    options.add_argument("--only", default="")
    arguments = options.parse_args()
    total = failures = 0
    for case in (Install(), FirstInstall(), Settings(), Create()):
        if arguments.only not in type(case).__name__.lower():
            continue
        with tempfile.TemporaryDirectory(prefix="volo-long-") as folder:
            prepared, measured = pathlib.Path(folder, "prepared"), pathlib.Path(folder, "root")
            prepared.mkdir()
            case.prepare(arguments.driver, prepared)
            shutil.copytree(prepared, measured, symlinks=True)
            found = points(arguments.driver, case.arguments(measured), measured)
            jobs = [(fault, *point) for fault, calls in FAULTS.items() for point in found if point[0] in calls.split(",")]
            with concurrent.futures.ThreadPoolExecutor(4) as pool:
                problems = list(pool.map(lambda job: try_point(arguments.driver, case, prepared, *job), jobs))
        for job, problem in zip(jobs, problems):
            if problem:
                print(f"FAIL {type(case).__name__}: {job[0]} at {job[1]} {job[2]}: {problem}")
        failures += sum(map(bool, problems))
        total += len(jobs)
        print(f"{type(case).__name__}: {len(jobs)} faults at {len(found)} calls", flush=True)
    print(f"{total} faults, {failures} problems")
    sys.exit(1 if failures or not total else 0)


if __name__ == "__main__":
    main()
