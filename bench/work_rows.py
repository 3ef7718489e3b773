"""The rows without a window: hash, container, extraction, download, installation."""

import json
import os
import pathlib
import random
import shutil
import socket
import subprocess
import zipfile

from desktop import wait_for
from measure import Row, cost

FILES = 3106
SMALLEST, LARGEST = 16384, 16 << 20  # bytes of a file in the archive


def make_archive(path, editor):
    """Files of this machine's own /usr, always the same ones, in random order. The launcher refuses names with a colon."""
    found = []
    for top in ("/usr/lib", "/usr/share"):
        for folder, folders, names in os.walk(top):
            folders.sort()
            found += [os.path.join(folder, name) for name in sorted(names) if ":" not in folder + name]
    random.Random(1).shuffle(found)
    with zipfile.ZipFile(path, "w", zipfile.ZIP_DEFLATED) as archive:
        archive.write(editor, "editor.exe")
        for file in found:
            if os.path.isfile(file) and not os.path.islink(file) and SMALLEST <= os.path.getsize(file) <= LARGEST:
                archive.write(file)
                if len(archive.namelist()) == FILES:
                    break


class Nginx:
    """Serves a folder over TLS inside a `with` block. Every program that uses `environment` trusts it."""

    def __init__(self, folder, site):
        self.folder = folder
        self.certificate = folder / "certificate.pem"
        key = folder / "key.pem"
        subprocess.run(["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes",
                        "-days", "2", "-subj", "/CN=bench", "-addext", "subjectAltName=IP:127.0.0.1", "-keyout", key,
                        "-out", self.certificate], check=True, capture_output=True)
        with socket.socket() as free:
            free.bind(("127.0.0.1", 0))
            self.port = free.getsockname()[1]
        self.url = f"https://127.0.0.1:{self.port}"
        self.environment = {**os.environ, "SSL_CERT_FILE": str(self.certificate)}
        temporary = "".join(f"{kind}_temp_path {folder}/{kind};" for kind in
                            ("client_body", "proxy", "fastcgi", "uwsgi", "scgi"))
        (folder / "nginx.conf").write_text(
            f"{'user root;' if os.getuid() == 0 else ''} daemon off; worker_processes 1; pid {folder}/nginx.pid;"
            f"error_log stderr; events {{}} http {{ access_log off; sendfile on; {temporary}"
            f"server {{ listen 127.0.0.1:{self.port} ssl; ssl_certificate {self.certificate};"
            f"ssl_certificate_key {key}; ssl_protocols TLSv1.3; root {site}; }} }}")

    def __enter__(self):
        self.process = subprocess.Popen(["/usr/sbin/nginx", "-p", self.folder, "-c", self.folder / "nginx.conf"],
                                        stdin=subprocess.DEVNULL)
        wait_for("nginx", lambda: socket.socket().connect_ex(("127.0.0.1", self.port)) == 0)
        return self

    def __exit__(self, *_):
        self.process.terminate()
        self.process.wait()


def publish(build, archive, folder, url):
    """Publishes the archive as a sealed package in folder/site. Returns the manifest."""
    key, program = folder / "publisher.key", build / "bin/volo-publish"
    subprocess.run([program, "keygen", key], check=True, capture_output=True)
    subprocess.run([program, "release", "--zip", archive, "--version", "1.0", "--platform", "linux", "--base-url", url,
                    "--sign-key", key, "--out", folder / "site"], check=True, capture_output=True)
    return json.loads((folder / "site/manifest.json").read_text())


class Work:
    """The input of all rows, made once per run. `memory` is a folder on tmpfs, `disk` one on a disk."""

    def __init__(self, build, memory, disk, archive):
        self.bench = build / "bin/volo-bench"
        self.memory = memory
        self.disk = disk
        self.site = memory / "site"
        self.archive = memory / "editor.zip"
        shutil.copyfile(archive, self.archive)
        self.server = Nginx(memory, self.site)
        self.manifest = publish(build, self.archive, memory, self.server.url)
        self.container = self.site / self.manifest["url"].rsplit("/", 1)[1]

    def hash(self, contest):
        turns = contest.run(ours=lambda: cost(self.bench, "hash", self.container),
                            reference=lambda: cost("openssl", "dgst", "-sha256", self.container))
        return rows("hash vs openssl dgst", turns, "reference", CPU=0.96)

    def open(self, contest):
        opened, copied = self.memory / "opened.zip", self.memory / "copied"
        key = self.manifest["encryption"]["key"]
        turns = contest.run(
            ours=lambda: without(opened, lambda: cost(self.bench, "open", self.container, opened, key)),
            reference=lambda: without(copied, lambda: cost("cp", "--reflink=never", self.container, copied)))
        return rows("open the container vs cp", turns, "reference", CPU=1.4, wall=1.4)

    def extract(self, contest):
        into = self.memory / "extracted"

        def filled(*command):
            into.mkdir()
            return cost(*command)

        turns = contest.run(
            ours=lambda: without(into, lambda: cost(self.bench, "extract", self.archive, into)),
            unzip=lambda: without(into, lambda: filled("unzip", "-q", self.archive, "-d", into)),
            bsdtar=lambda: without(into, lambda: filled("bsdtar", "-xf", self.archive, "-C", into)))
        return (rows("extract vs unzip", turns, "unzip", CPU=0.50, wall=0.28) +
                rows("extract vs bsdtar", turns, "bsdtar", CPU=0.97, wall=0.52))

    def download(self, contest):
        large, into = self.site / "large", self.memory / "downloaded"
        with open(large, "wb") as file:
            for _ in range(1024):
                file.write(os.urandom(1 << 20))
        with self.server as server:
            url = server.url + "/large"
            turns = contest.run(
                ours=lambda: without(into, lambda: cost(self.bench, "download", url, into, env=server.environment)),
                reference=lambda: without(into, lambda: cost("curl", "-sS", "--cacert", server.certificate, "-o", into,
                                                             url)))
        large.unlink()
        return rows("download of 1 GiB vs curl", turns, "reference", CPU=1.0, wall=1.03)

    def install(self, contest):
        return self.install_in(contest, self.memory / "launcher", "manifest to installed editor vs shell line", "", 0.42)

    def install_on_disk(self, contest):
        return self.install_in(contest, self.disk / "launcher", "the same on a disk, with syncs", "; sync -f .", 0.7)

    def install_in(self, contest, into, name, end, goal):
        """The shell line ends with what `end` adds. Its decrypter is the launcher's, in a process of its own."""
        with self.server as server:
            curl = f"curl -sS --cacert {server.certificate}"
            member = "python3 -c 'import json, sys; m = json.load(sys.stdin); print(m[\"url\"], m[\"sha256\"], " \
                     "m[\"encryption\"][\"key\"])'"
            line = (f"set -e; read -r url sum key < <({curl} {server.url}/manifest.json | {member}); "
                    f"{curl} -o package $url; echo $sum package | sha256sum -c --quiet; "
                    f"{self.bench} open package package.zip $key; unzip -q package.zip -d editor{end}")

            def shell():
                into.mkdir()
                return cost("bash", "-c", line, cwd=into)

            def ours():
                into.mkdir()
                return cost(self.bench, "install", server.url + "/manifest.json", into, env=server.environment)

            turns = contest.run(ours=lambda: without(into, ours), reference=lambda: without(into, shell))
        return rows(name, turns, "reference", wall=goal)


def without(path, work):
    """Does the work, then removes the file or folder that it has made, which is not measured."""
    figures = work()
    path = pathlib.Path(path)
    if path.is_dir():
        shutil.rmtree(path)
    else:
        path.unlink()
    return figures


def rows(name, turns, reference, **goals):
    return [Row(f"{name}, {key} s", turns["ours"][key], turns[reference][key], goal) for key, goal in goals.items()]
