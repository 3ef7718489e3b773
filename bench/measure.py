"""Measures contestants in turn, and says how sure a ratio is."""

import dataclasses
import os
import pathlib
import random
import statistics
import subprocess
import sys
import time

RESAMPLES = 2000


@dataclasses.dataclass
class Row:
    """One line of the table. Without a reference the ratio is the value itself, in the unit that the name ends with."""
    name: str
    ours: list
    reference: list
    goal: float

    def figures(self):
        ratios = [a / b for a, b in zip(self.ours, self.reference)] if self.reference else self.ours
        low, high = interval(ratios)
        return {"name": self.name, "ours": statistics.median(self.ours),
                "reference": statistics.median(self.reference) if self.reference else None,
                "ratio": statistics.median(ratios), "low": low, "high": high, "goal": self.goal}


def interval(values):
    """The bootstrap interval of the median, 95%."""
    chance = random.Random(1)
    medians = sorted(statistics.median(chance.choices(values, k=len(values))) for _ in range(RESAMPLES))
    return medians[int(RESAMPLES * 0.025)], medians[int(RESAMPLES * 0.975)]


def cost(*command, **options):
    """Runs a command to its end: the seconds of processor and of the clock that it and its children took."""
    began = time.monotonic()
    with subprocess.Popen([str(word) for word in command], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                          **options) as process:
        _, status, usage = os.wait4(process.pid, 0)
        wall = time.monotonic() - began
        process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        raise SystemExit(f"{' '.join(map(str, command))} ended with status {process.returncode}")
    return {"CPU": usage.ru_utime + usage.ru_stime, "wall": wall}


class Contest:
    """Runs contestants in turn, each as often as the others, and one in another place every time."""

    def __init__(self, pairs, title):
        self.pairs = pairs
        self.title = title

    def run(self, **contestants):
        """Every contestant is a function that returns a dictionary of figures. The first round is the warm-up."""
        rounds = {name: [] for name in contestants}
        names = list(contestants)
        for number in range(self.pairs + 1):
            say(f"{self.title}: " + (f"pair {number} of {self.pairs}" if number else "warm-up"))
            for name in names:
                figures = contestants[name]()
                if number:
                    rounds[name].append(figures)
            names = names[1:] + names[:1]
        return {name: {key: [one[key] for one in figures] for key in figures[0]} for name, figures in rounds.items()}


def say(text, end=None):
    """A progress line: it replaces the one before on a terminal."""
    if sys.stderr.isatty():
        print(f"\r\033[K{text}", end=end or "", file=sys.stderr, flush=True)
    elif end or "pair" not in text:
        print(text, file=sys.stderr, flush=True)


def processor_seconds(process):
    """What all threads of a process have used so far. `process` is its folder in /proc."""
    total = 0
    for thread in (pathlib.Path(process) / "task").iterdir():
        total += int((thread / "schedstat").read_text().split()[0])
    return total / 1e9


def waits(process):
    """How often the main thread has waited so far."""
    process = pathlib.Path(process)
    for line in (process / "task" / process.name / "status").read_text().splitlines():
        if line.startswith("voluntary_ctxt_switches:"):
            return int(line.split()[1])
    raise LookupError("voluntary_ctxt_switches")


def share_at_rest(process, seconds):
    """Per cent of a core, and wakes of the main thread per second."""
    used, waited, began = processor_seconds(process), waits(process), time.monotonic()
    time.sleep(seconds)
    passed = time.monotonic() - began
    return {"share": 100 * (processor_seconds(process) - used) / passed, "wakes": (waits(process) - waited) / passed}


def table(rows):
    lines = [f"{'work':58} {'ours':>9} {'reference':>9} {'ratio':>7} {'95% interval':>15} {'goal':>6}"]
    for row in rows:
        one = row.figures()
        reference = f"{one['reference']:9.3f}" if one["reference"] is not None else " " * 9
        met = "" if one["low"] <= one["goal"] else "  missed"
        lines.append(f"{one['name']:58} {one['ours']:9.3f} {reference} {one['ratio']:7.3f} "
                     f"{one['low']:7.3f} {one['high']:7.3f} {one['goal']:6.2f}{met}")
    return "\n".join(lines)
