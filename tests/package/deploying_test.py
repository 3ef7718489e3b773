#!/usr/bin/env python3
"""Runs the commands of docs/deploying.md in their order against nginx, configured as docs/update-server.md says.

usage: deploying_test.py <folder of the repository> <volo-publish>"""

import contextlib
import pathlib
import re
import shutil
import socket
import subprocess
import sys
import tempfile
import textwrap
import time

from checking import check, run

REPOSITORY, PUBLISHER = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])
HOST = "updates.example.org"


@contextlib.contextmanager
def nginx(folder):
    """nginx on a port of this machine, with a certificate for the host of the document."""
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        port = probe.getsockname()[1]
    run("openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "2", "-subj", f"/CN={HOST}", "-addext",
        f"subjectAltName=DNS:{HOST}", "-keyout", folder / "server.key", "-out", folder / "server.pem")
    text = (REPOSITORY / "docs/update-server.md").read_text(encoding="utf-8")
    server = textwrap.dedent(re.search(r"## nginx\n\n((?:    .*\n|\n)+)", text).group(1))
    for old, new in (("listen 443 ssl", f"listen 127.0.0.1:{port} ssl"), ("/srv/www/updates", str(folder / "www")),
                     (r"/etc/ssl/[^;]*\.pem", str(folder / "server.pem")), (r"/etc/ssl/[^;]*\.key", str(folder / "server.key"))):
        server, count = re.subn(old, new, server)
        check(f"{old} is in the nginx configuration", count == 1)
    temporary = "".join(f"{kind}_temp_path {folder}/{kind};\n" for kind in
                        ("client_body", "proxy", "fastcgi", "uwsgi", "scgi"))
    log = folder / "error.log"
    log.touch()
    (folder / "nginx.conf").write_text(f"daemon off;\npid {folder}/pid;\nerror_log {log};\nevents {{}}\n"
                                       f"http {{\naccess_log off;\n{temporary}{server}\n}}\n")
    process = subprocess.Popen(["/usr/sbin/nginx", "-p", folder, "-c", folder / "nginx.conf", "-e", log],
                               stderr=subprocess.DEVNULL)
    try:
        deadline = time.monotonic() + 30
        while socket.socket().connect_ex(("127.0.0.1", port)) != 0:
            check(f"nginx starts: {log.read_text()}", time.monotonic() < deadline and process.poll() is None)
            time.sleep(0.05)
        yield port
    finally:
        process.terminate()
        process.wait()


def main():
    missing = [tool for tool in ("/usr/sbin/nginx", "rsync", "rclone", "curl", "zip") if shutil.which(tool) is None]
    if missing:
        print(f"SKIPPED: without {missing}. ./release installs them")
        sys.exit(77)
    with tempfile.TemporaryDirectory() as name, nginx(pathlib.Path(name)) as port:
        folder = pathlib.Path(name)
        folder.chmod(0o755)  # nginx reads as another user
        for directory in ("bin", "www", "store", "editor-1.4.1", "editor-1.4.2"):
            (folder / directory).mkdir()
        for version in ("1.4.1", "1.4.2"):
            (folder / f"editor-{version}/editor.exe").write_text(f"editor {version}")
        (folder / "bin/volo-publish").symlink_to(PUBLISHER)
        (folder / "bin/curl").write_text(f'#!/bin/sh\nexec /usr/bin/curl --cacert "{folder}/server.pem" '
                                         f'--connect-to {HOST}:443:127.0.0.1:{port} "$@"\n')
        # Two releases in one second: rsync would take manifests of equal size for the same file.
        (folder / "bin/rsync").write_text('#!/bin/sh\nexec /usr/bin/rsync --modify-window=-1 "$@"\n')
        for program in ("curl", "rsync"):
            (folder / "bin" / program).chmod(0o755)
        environment = {"PATH": f"{folder}/bin:/usr/bin:/bin", "HOME": name, "RCLONE_CONFIG_STORE_TYPE": "alias",
                       "RCLONE_CONFIG_STORE_REMOTE": str(folder / "store")}

        def shell(command):
            return run("bash", "-e", "-u", "-c", command, cwd=folder, env=environment)

        text = (REPOSITORY / "docs/deploying.md").read_text(encoding="utf-8")
        steps = re.findall(r"```sh\n(.*?)```", text, re.DOTALL)
        check("the document has commands", len(steps) > 8)
        for step in steps:
            shell(step.replace("/srv/www/updates/", f"{folder}/www/"))

        answer = shell(f"curl --fail -si https://{HOST}/linux/manifest.json")
        check("the newer release is offered", '"version": "1.4.2"' in answer)
        check("caches ask for the manifest each time", "Cache-Control: no-cache" in answer)
        statements = [path.read_text() for path in (folder / "www/linux/statements").iterdir()]
        older, newer = sorted(statements, key=lambda text: "version: 1.4.2" in text)
        check("the older release is withdrawn", "status: ok" not in older)
        check("only the new key signs in the end", newer.count("\ned25519: ") == 1)
        check("rclone uploads packages too", list(folder.glob("store/updates/linux/editor-*")))
        check("no private key is published", not list(folder.glob("www/**/*.key")))


if __name__ == "__main__":
    main()
