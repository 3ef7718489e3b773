#!/usr/bin/env python3
"""Two runs of volo-publish publish different archives into one directory at once. The package on offer is whole.

    publishing.py VOLO_PUBLISH [ROUNDS]"""

import os
import pathlib
import subprocess
import sys
import tempfile
import zipfile


def main():
    program, rounds = os.path.abspath(sys.argv[1]), int(sys.argv[2]) if len(sys.argv) > 2 else 50
    refusals = 0
    for number in range(rounds):
        with tempfile.TemporaryDirectory(prefix="volo-long-") as folder:
            def start(command):
                return subprocess.Popen([program, *command.split()], cwd=folder, stdout=subprocess.DEVNULL,
                                        stderr=subprocess.DEVNULL)

            for name in ("first", "second"):
                with zipfile.ZipFile(pathlib.Path(folder, name), "w") as archive:
                    archive.writestr("editor.exe", os.urandom(4_000_000))
            start("keygen key").wait()
            running = [start(f"release --zip {name} --version 1 --platform linux --base-url https://a --sign-key key "
                             "--force --out site") for name in ("first", "second")]
            statuses = [process.wait() for process in running]
            refusals += statuses.count(1)
            if 0 not in statuses or start("inspect site/manifest.json").wait() != 0:
                sys.exit(f"FAIL round {number}: statuses {statuses}")
    print(f"{rounds} rounds, {refusals} runs refused: the package on offer was always whole")


if __name__ == "__main__":
    main()
