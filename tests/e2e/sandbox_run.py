"""One run of the sandbox on a desktop, with what the disk and the process list show of it."""

import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import threading

from desktop import check, wait_for

ISOLATED = "VOLO_E2E_ISOLATED"
GOOGLE_HOSTS = "accounts.google.com oauth2.googleapis.com openidconnect.googleapis.com"
WINE = str(pathlib.Path(__file__).resolve().parents[2] / "cmake/wine-run")

os.environ.setdefault("WINEPREFIX", str(pathlib.Path(os.environ.get("XDG_CACHE_HOME", pathlib.Path.home() / ".cache"),
                                                     "volo-launcher/wine")))


def is_for_windows(build):
    return (pathlib.Path(build) / "bin/volo-launcher.exe").exists()


def command_of(build, program):
    path = str(pathlib.Path(build) / "bin" / program)
    return [WINE, path + ".exe"] if is_for_windows(build) else [path]


def isolate(*kinds):
    """Restarts this script in a process namespace, and in namespaces of the given kinds; False when that is not
    permitted. The launcher opens no project while any "editor.exe" runs on the machine, so other tests must not be seen."""
    if ISOLATED in os.environ:
        return True
    for who in ([], ["--map-root-user"]):  # an ordinary user has to be root of a user namespace
        command = ["unshare", *who, "--pid", "--mount", "--fork", "--mount-proc", "--kill-child", *kinds]
        if shutil.which("unshare") and subprocess.run(command + ["true"], capture_output=True, check=False).returncode == 0:
            os.environ[ISOLATED] = "1"
            sys.stdout.flush()
            os.execvp("unshare", command + [sys.executable, *sys.argv])
    return False


def be_google():
    """Restarts this script where Google's host names are this machine; False when that is not permitted."""
    if not isolate("--net"):
        return False
    with tempfile.NamedTemporaryFile("w") as hosts:
        hosts.write(f"127.0.0.1 localhost {GOOGLE_HOSTS}\n")
        hosts.flush()
        subprocess.run(["mount", "--bind", hosts.name, "/etc/hosts"], check=True)
    subprocess.run(["ip", "link", "set", "lo", "up"], check=True)
    return True


def stand_apart(build):
    """Hides the programs of other tests: by a process namespace, or by a restart of Wine. Wine also needs the restart
    because its desktop stays on the screen of its first program."""
    if is_for_windows(build):
        subprocess.run([WINE, "--end"], check=False)
    else:
        isolate()


class Sandbox:
    """Runs inside a `with` block. At its end the sandbox, the launcher and their children have ended."""

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
        self.lines = []

    def __enter__(self):
        self.process = subprocess.Popen(self.command, env=self.desktop.environment, stdin=subprocess.DEVNULL,
                                        stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        self.reader = threading.Thread(
            target=lambda: self.lines.extend(line.rstrip("\n") for line in self.process.stdout), daemon=True)
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

    def close(self, window):
        """Closes the launcher's window and checks that it ends with status 0."""
        window.close()
        check("exit status 0", self.process.wait(20) == 0)

    def see(self, text):
        wait_for(f'a line "{text}" of the sandbox', lambda: any(text in line for line in self.lines))

    def publish(self, version):
        """Publishes another version of the sample editor with volo-publish."""
        address = next(line for line in self.lines if "update server: https" in line).split()[-1]
        done = subprocess.run(
            self.call("volo-publish", "release", "--zip", self.root / "sample-editor.zip", "--version", version,
                      "--platform", "windows" if self.windows else "linux", "--base-url", address,
                      "--sign-key", self.root / "publisher.key", "--out", self.root / "site"),
            capture_output=True, text=True, check=False)
        check(f"version {version} published: {done.stderr}", done.returncode == 0)

    def name_of(self, path):
        """A path as the programs see it."""
        return "Z:" + str(path).replace("/", "\\") if self.windows else str(path)

    def call(self, program, *arguments):
        """The command that runs one of our programs. Arguments may be paths."""
        return command_of(self.build, program) + [
            self.name_of(one) if isinstance(one, pathlib.Path) else one for one in arguments]

    def settings(self):
        """Launcher.conf as a dictionary of its lines."""
        if not self.settings_file.exists():
            return {}
        lines = self.settings_file.read_text(encoding="utf-8").splitlines()
        return dict(line.split("=", 1) for line in lines if "=" in line)

    def listed(self):
        """The names of the projects in stored order."""
        settings = self.settings()
        return [settings[f"Projects%5C{number}%5Cname"]
                for number in range(1, int(settings.get("Projects%5Csize", "0")) + 1)]

    def processes(self, program):
        """The folders in /proc of this run's processes whose executable has this name."""
        found = []
        for process in pathlib.Path("/proc").glob("[0-9]*"):
            try:
                if self.windows:  # the executable is Wine's; the program is its first argument
                    name = (self.arguments(process) or [""])[0].replace("\\", "/").removeprefix("Z:")
                else:
                    name = os.readlink(process / "exe")
                executable = pathlib.Path(name)
                if executable.name == program and self.root in executable.parents:
                    found.append(process)
            except OSError:  # the process has ended, or belongs to another user
                pass
        return found

    def arguments(self, process):
        return [one.decode() for one in (process / "cmdline").read_bytes().split(b"\0") if one]
