"""One run of the sandbox on a desktop, and what the disk and the process list tell about it."""

import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import threading

from desktop import NotSeen, wait_for

ISOLATED = "VOLO_E2E_ISOLATED"
WINE = str(pathlib.Path(__file__).resolve().parents[2] / "cmake/wine-run")

os.environ.setdefault("WINEPREFIX", str(pathlib.Path(os.environ.get("XDG_CACHE_HOME", pathlib.Path.home() / ".cache"),
                                                     "volo-launcher/wine")))


def is_for_windows(build):
    return (pathlib.Path(build) / "bin/volo-launcher.exe").exists()


def command_of(build, program):
    path = str(pathlib.Path(build) / "bin" / program)
    return [WINE, path + ".exe"] if is_for_windows(build) else [path]


def permitted_namespaces(*kinds):
    """The command that runs another in namespaces of its own; None where the machine does not permit that. An ordinary
    user may have to be root of a user namespace for it."""
    for who in ([], ["--map-root-user"]):
        command = ["unshare", *who, "--pid", "--mount", "--fork", "--mount-proc", "--kill-child", *kinds]
        if shutil.which("unshare") and subprocess.run(command + ["true"], capture_output=True, check=False).returncode == 0:
            return command
    return None


def isolate(*kinds):
    """Goes on in a process list of its own, and what else is named; False where that is not permitted. The launcher
    refuses to open a project while any "editor.exe" runs on the machine, another test's included."""
    if ISOLATED in os.environ:
        return True
    command = permitted_namespaces(*kinds)
    if command is None:
        return False
    os.environ[ISOLATED] = "1"
    sys.stdout.flush()
    os.execvp("unshare", command + [sys.executable, *sys.argv])


def stand_apart(build):
    """Keeps other tests' programs out of sight: by a process list of our own, or a Windows that starts anew. That one is
    also needed because its desktop stays on the screen on which it first came up, which may have been none."""
    if is_for_windows(build):
        subprocess.run([WINE, "--end"], check=False)
    else:
        isolate()


class Sandbox:
    """Started by `with`; at its end the launcher, the sandbox and all that they started are gone."""

    def __init__(self, desktop, build, *options, root=None):
        self.desktop = desktop
        self.temporary = None if root else tempfile.TemporaryDirectory(prefix="volo-e2e-")
        self.root = pathlib.Path(root or self.temporary.name).resolve()
        self.windows = is_for_windows(build)
        self.build = build
        self.command = self.call("volo-sandbox", "--root", self.root, *options)
        self.launcher = self.root / "apps/volo/launcher"
        self.settings_file = self.root / "home/AppData/ZANTOR/Launcher.conf"
        self.projects = self.root / "home/Documents/VOLO Projects"
        self.line_end = "\r\n" if self.windows else "\n"
        self.lines = []

    def __enter__(self):
        self.process = subprocess.Popen(self.command, env=self.desktop.environment, stdin=subprocess.DEVNULL,
                                        stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        self.reader = threading.Thread(target=self.collect, daemon=True)
        self.reader.start()
        return self

    def __exit__(self, failure, *_):
        self.process.terminate()
        self.process.wait()
        if self.windows:
            subprocess.run([WINE, "--end"], check=False)
        self.reader.join()
        self.process.stdout.close()
        if failure:
            print("\n".join(self.lines), file=sys.stderr)
        if self.temporary:
            self.temporary.cleanup()

    def collect(self):
        for line in self.process.stdout:
            self.lines.append(line.rstrip("\n"))

    def told(self, text):
        wait_for(f'a line "{text}" of the sandbox', lambda: any(text in line for line in self.lines))

    def publish(self, version):
        """Another version of the sample editor, published as a deployer does it."""
        address = next(line for line in self.lines if "update server: https" in line).split()[-1]
        done = subprocess.run(
            self.call("volo-publish", "release", "--zip", self.root / "sample-editor.zip", "--version", version,
                      "--platform", "windows" if self.windows else "linux", "--base-url", address,
                      "--sign-key", self.root / "publisher.key", "--out", self.root / "site"),
            capture_output=True, text=True, check=False)
        if done.returncode != 0:
            raise NotSeen(f"version {version} published: {done.stderr}")

    def status(self, deadline=20):
        """The launcher's exit status, once it has ended by itself."""
        return self.process.wait(deadline)

    def name_of(self, path):
        """How the programs call a path."""
        return "Z:" + str(path).replace("/", "\\") if self.windows else str(path)

    def call(self, program, *arguments):
        """The command that runs one of our programs; paths among the arguments are told as it calls them."""
        told = [self.name_of(one) if isinstance(one, pathlib.Path) else one for one in arguments]
        return command_of(self.build, program) + told

    def settings(self):
        """Launcher.conf as a dictionary of its lines."""
        try:
            lines = self.settings_file.read_text(encoding="utf-8").splitlines()
        except FileNotFoundError:
            return {}
        return dict(line.split("=", 1) for line in lines if "=" in line)

    def listed(self):
        """The names of the projects in stored order."""
        settings = self.settings()
        return [settings[f"Projects%5C{number}%5Cname"]
                for number in range(1, int(settings.get("Projects%5Csize", "0")) + 1)]

    def favourites(self):
        settings = self.settings()
        return [name for number, name in enumerate(self.listed(), 1)
                if settings[f"Projects%5C{number}%5Cfavorite"] == "true"]

    def processes(self, program):
        """The living processes of this run whose executable has this name: a list of their folders in /proc."""
        found = []
        for process in pathlib.Path("/proc").glob("[0-9]*"):
            try:
                if self.windows:  # what runs there is Wine; the program is what it was asked to run
                    name = (self.arguments(process) or [""])[0].replace("\\", "/").removeprefix("Z:")
                else:
                    name = os.readlink(process / "exe")
                executable = pathlib.Path(name)
                if executable.name == program and self.root in executable.parents:
                    found.append(process)
            except OSError:  # gone meanwhile, or not ours to look at
                pass
        return found

    def arguments(self, process):
        return [one.decode() for one in (process / "cmdline").read_bytes().split(b"\0") if one]
