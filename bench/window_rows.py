"""The rows of the launcher's window: at rest, memory, first frame, frame time."""

import contextlib
import http.server
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "tests/e2e"))

from desktop import wait_for  # noqa: E402
from measure import Row, share_at_rest  # noqa: E402
from sandbox_run import Sandbox  # noqa: E402
from setup import tmpfs  # noqa: E402
from tour import USER_CARD  # noqa: E402

BESIDE = ("volo-launcher", "Roboto-Medium.ttf", "background.png")
CONFIGURATION = '{"google_client_id": "bench", "google_client_secret": "bench"}'
PAGE = b"""<!doctype html><title>Bench</title><h1>Projects</h1>
<script>requestAnimationFrame(() => requestAnimationFrame(() => fetch("/painted")))</script>"""
SECONDS_AT_REST = 10


def stage(build, folder):
    """A launcher's folder with a program of this build. Nobody is signed in."""
    folder.mkdir(parents=True)
    for name in BESIDE:
        if (build / "bin" / name).exists():
            shutil.copy2(build / "bin" / name, folder)
    (folder / "launcher_config.json").write_text(CONFIGURATION)
    return folder / "volo-launcher"


class Program:
    """A program with a window. Its home folder lasts, so that only the first start fills the caches of the drivers."""

    def __init__(self, desktop, path, home, watch, empty_frames=1):
        home.mkdir()
        self.path = path
        self.frames = home / "frames"
        self.environment = {**desktop.environment, "HOME": str(home), "XDG_CONFIG_HOME": str(home),
                            "XDG_RUNTIME_DIR": str(home), "LD_PRELOAD": str(watch), "VOLO_FRAMES": str(self.frames),
                            "VOLO_EMPTY_FRAMES": str(empty_frames)}

    @contextlib.contextmanager
    def shown(self):
        """Starts it and waits for its first frame. Gives the process, and the milliseconds that the frame took."""
        self.frames.unlink(missing_ok=True)
        began = time.monotonic()
        with subprocess.Popen([self.path], env=self.environment, stdin=subprocess.DEVNULL) as process:
            wait_for(f"the first frame of {self.path}",
                     lambda: self.frames.exists() and self.frames.read_text().endswith("\n"))
            try:
                wall, processor = (float(word) / 1000 for word in self.frames.read_text().split())
                yield process, {"wall": wall - began * 1000, "CPU": processor}
            finally:
                process.terminate()

    def first_frame(self):
        with self.shown() as (_, figures):
            return figures

    def rest(self):
        with self.shown() as (process, _):
            time.sleep(3)  # the picture is decoded, and the animations end
            return share_at_rest(f"/proc/{process.pid}", SECONDS_AT_REST)


class Chromium:
    """A window of Chromium without its controls, with a profile that lasts. It counts as painted one frame after its
    first."""

    def __init__(self, desktop, home):
        self.desktop = desktop
        self.home = home

    def measure(self):
        painted = []

        class Answer(http.server.BaseHTTPRequestHandler):
            def do_GET(self):
                if self.path == "/painted":
                    painted.append(time.monotonic())
                self.send_response(200)
                self.send_header("Content-Type", "text/html")
                self.end_headers()
                self.wfile.write(PAGE if self.path == "/" else b"")

            def log_message(self, *_):
                pass

        server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Answer)
        threading.Thread(target=server.serve_forever, daemon=True).start()
        command = ["chromium", f"--app=http://127.0.0.1:{server.server_port}/", f"--user-data-dir={self.home}",
                   "--no-first-run", "--no-default-browser-check", "--password-store=basic",
                   "--window-size=1180,740"] + (["--no-sandbox"] if os.getuid() == 0 else [])
        environment = {**self.desktop.environment, "HOME": str(self.home)}
        began = time.monotonic()
        with subprocess.Popen(command, env=environment, start_new_session=True, stdin=subprocess.DEVNULL,
                              stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL) as process:
            wait_for("Chromium's first frame", lambda: painted)
            time.sleep(2)  # its services have started
            memory = sum(pss(one) for one in family(process.pid))
            os.killpg(process.pid, signal.SIGTERM)
        server.shutdown()
        server.server_close()
        return {"wall": 1000 * (painted[0] - began), "memory": memory}


def family(process):
    """The process and all its descendants."""
    children = {}
    for status in pathlib.Path("/proc").glob("[0-9]*/stat"):
        with contextlib.suppress(OSError):
            children.setdefault(int(status.read_text().rsplit(")", 1)[1].split()[1]), []).append(int(status.parent.name))
    found = [process]
    for one in found:
        found += children.get(one, [])
    return found


def pss(process):
    """The memory of a process in MiB, with its part of what it shares."""
    with contextlib.suppress(OSError):
        for line in pathlib.Path(f"/proc/{process}/smaps_rollup").read_text().splitlines():
            if line.startswith("Pss:"):
                return int(line.split()[1]) / 1024
    return 0.0


def frame_milliseconds(build, projects):
    """Processor time of a frame, in the slowest column. The projects are made on tmpfs, because there are many."""
    environment = {**os.environ, "TMPDIR": str(tmpfs() or tempfile.gettempdir())}
    done = subprocess.run([build / "bin/volo-bench", "frames", str(projects)], check=True, capture_output=True,
                          env=environment)
    return float(done.stdout)


class Windows:
    def __init__(self, desktop, build, folder):
        self.desktop = desktop
        self.build = build
        watch = build / "bench/libvolo_frame_watch.so"
        self.launcher = Program(desktop, stage(build, folder / "launcher"), folder / "home", watch)
        self.minimal = Program(desktop, build / "bin/volo-minimal-window", folder / "minimal", watch, 0)
        self.chromium = Chromium(desktop, folder / "chromium")

    @contextlib.contextmanager
    def signed_in(self):
        """The launcher's folder in /proc, with the Projects screen shown and nothing left to do."""
        with Sandbox(self.desktop, self.build, "--stored-session", "--projects", "15") as sandbox:
            window = self.desktop.window("VOLO Launcher")
            window.see("Ada Sandbox", USER_CARD)
            wait_for("the editor installed", (sandbox.launcher / "editor/.zantor_editor_version").exists)
            window.point(5, 5)
            time.sleep(3)  # the last animation ends
            process, = sandbox.processes("volo-launcher")
            yield process

    def rest(self, contest):
        with self.signed_in() as process:
            ours = contest.run(ours=lambda: share_at_rest(process, SECONDS_AT_REST))["ours"]
        return [Row("at rest, Projects screen, % of a core", ours["share"], [], 0.03),
                Row("at rest, Projects screen, wakes a second", ours["wakes"], [], 1.0)]

    def memory(self, contest):
        def ours():
            with self.signed_in() as process:
                return {"memory": pss(process.name)}

        turns = contest.run(ours=ours, chromium=self.chromium.measure)
        return [Row("memory vs a Chromium window, PSS MiB", turns["ours"]["memory"], turns["chromium"]["memory"], 0.14)]

    def first(self, contest):
        turns = contest.run(ours=self.launcher.first_frame, minimal=self.minimal.first_frame, chromium=self.chromium.measure)
        return [Row(f"first frame vs {name}, {clock} ms", turns["ours"][clock], turns[key][clock], goal)
                for name, key, clock, goal in (("a minimal program", "minimal", "CPU", 0.87),
                                               ("a minimal program", "minimal", "wall", 0.87),
                                               ("a Chromium window", "chromium", "wall", 0.16))]

    def frame(self, contest):
        turns = contest.run(ours=lambda: {"ms": frame_milliseconds(self.build, 10000)})
        return [Row("frame with 10,000 projects, worst column, CPU ms", turns["ours"]["ms"], [], 1.0)]
