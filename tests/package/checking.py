"""What the tests of this folder share."""

import subprocess
import sys


def check(what, fact):
    if not fact:
        sys.exit(f"not so: {what}")


def run(*command, **options):
    """Runs a command that must succeed, and returns what it prints."""
    done = subprocess.run(command, capture_output=True, text=True, check=False, **options)
    check(f"{command} succeeds: {done.stdout}{done.stderr}", done.returncode == 0)
    return done.stdout
