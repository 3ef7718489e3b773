#!/usr/bin/env python3
"""Two launchers install different versions into one folder, and are killed at random moments. Whatever is left, an
editor that the launcher would start is whole.

    restarts.py DRIVER [ROUNDS]"""

import pathlib
import random
import subprocess
import sys
import tempfile
import time

from faults import Install, whole


def main():
    driver, rounds = sys.argv[1], int(sys.argv[2]) if len(sys.argv) > 2 else 200
    chance = random.Random(1)
    case, killed, installed = Install(), 0, 0
    with tempfile.TemporaryDirectory(prefix="volo-long-") as folder:
        root = pathlib.Path(folder)
        for number in range(rounds):
            running = [subprocess.Popen([driver, "install", root, version]) for version in case.versions]
            for process in running:
                time.sleep(chance.uniform(0, 0.25))
                if chance.random() < 0.7 and process.poll() is None:
                    process.kill()
                    killed += 1
            statuses = [process.wait(60) for process in running]
            problem = case.problem(root, False)
            installed += 0 in statuses
            if problem:
                sys.exit(f"FAIL round {number}: {problem}")
        subprocess.run([driver, "install", root, "2"], check=True)
        if not whole(root / "launcher/editor", "2"):
            sys.exit("FAIL: the last run does not repair")
    print(f"{rounds} rounds, {killed} kills, {installed} rounds with an install: the editor was always whole")


if __name__ == "__main__":
    main()
