#!/usr/bin/env python3
"""Runs volo-publish, and checks its files with tools that share no code with it."""

import base64
import hashlib
import json
import os
import pathlib
import shlex
import shutil
import stat
import subprocess
import sys
import tempfile
import unittest
import zipfile

try:
    from cryptography.hazmat.primitives.ciphers.aead import AESGCM
except ImportError:
    AESGCM = None

PROGRAM = os.path.abspath(sys.argv.pop(1))
WINDOWS = os.environ.get("VOLO_PLATFORM") == "windows"  # files have no modes there
RELEASE = ("release --zip editor.zip --version 1.4.2 --platform linux "
           "--base-url https://updates.example/linux --sign-key first.key --out site")


def sha256(data):
    return hashlib.sha256(data).hexdigest()


class Program(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="volo publish "))
        self.addCleanup(shutil.rmtree, self.folder)
        self.site = self.folder / "site"
        with zipfile.ZipFile(self.folder / "editor.zip", "w", zipfile.ZIP_DEFLATED) as archive:
            archive.writestr("editor.exe", "editor")
            archive.writestr("data/Ünicode", "t" * 70000)
        for name in ("first", "second"):
            self.publish(f"keygen {name}.key")

    def shell(self, command, status=0):
        done = subprocess.run(command, shell=True, cwd=self.folder, capture_output=True, text=True)
        self.assertEqual(done.returncode, status, f"{command}: {done.stdout}{done.stderr}")
        return done

    def publish(self, arguments, status=0):
        return self.shell(f"{shlex.quote(PROGRAM)} {arguments}", status)

    def test_exit_status_and_message_match(self):
        cases = [
            ("--help", 0, ""),
            ("--version", 0, ""),
            ("", 2, "subcommand is required"),
            (RELEASE + " --days 93", 2, "--days"),
            (RELEASE + " --sign-key a --sign-key b --sign-key c --sign-key d", 2, "four times"),
            ("statement --out site --all", 2, "--sign-key is required"),
            ("statement --out site --revoke --sign-key first.key", 2, "--revoke needs"),
            ("statement --out site --version 1 --sign-key first.key", 1, "No release statement"),
            ("keygen no/such/folder/key", 1, "could not be written"),
            (RELEASE.replace("editor.zip", "no.zip"), 1, "no.zip does not exist"),
            ("statement --out site --revoke --offered --sign-key first.key", 2, "excludes"),
            ("inspect first.key", 1, "is neither"),
            (RELEASE + " --sign-key editor.zip", 1, "not an Ed25519 private key"),
            ("inspect editor.zip", 0, ""),
            ("inspect editor.zip --keys AAAA", 1, "--keys takes"),
            (RELEASE + " --days 10", 0, "warning: The statement ends in 10 days"),
            ("statement --out site", 3, "volo-publish statement --out site --offered"),
            ("statement --out site --offered --sign-key first.key --sign-key second.key", 0, ""),
        ]
        for arguments, status, words in cases:
            with self.subTest(arguments):
                done = self.publish(arguments, status)
                self.assertIn(words, done.stderr)
                self.assertEqual(done.stderr == "", words == "", done.stderr)
                self.assertEqual(done.stdout == "", status in (1, 2), done.stdout)

    def test_files_are_readable_for_a_web_server(self):
        said = self.shell(f"umask 077; {shlex.quote(PROGRAM)} {RELEASE}").stdout
        configuration = json.loads(said.split("launcher_config.json:")[1])
        self.assertEqual(configuration["artifact_authenticity_url"], "https://updates.example/linux/statements")
        for path in [self.site, *self.site.rglob("*")]:
            if path.name != "lock.tmp" and not WINDOWS:
                self.assertEqual(stat.S_IMODE(path.stat().st_mode), 0o755 if path.is_dir() else 0o644, path)

    def test_private_key_stays_secret(self):
        key = self.folder / "new.key"
        said = self.shell(f"umask 0; {shlex.quote(PROGRAM)} keygen new.key").stdout
        self.assertTrue(WINDOWS or stat.S_IMODE(key.stat().st_mode) == 0o600)
        first = key.read_text()
        self.assertIn("exists", self.publish("keygen new.key", status=1).stderr)
        self.assertEqual(key.read_text(), first)
        key.chmod(0o644)
        warned = self.publish(RELEASE + " --sign-key new.key")
        self.assertTrue(WINDOWS or "other users" in warned.stderr, warned.stderr)
        said += warned.stdout + warned.stderr
        self.publish("keygen new.key --force")
        self.assertTrue(WINDOWS or stat.S_IMODE(key.stat().st_mode) == 0o600)
        self.assertNotEqual(key.read_text(), first)
        self.assertEqual(list(self.folder.glob("*.tmp")), [])
        published = b"".join(file.read_bytes() for file in self.site.rglob("*") if file.is_file())
        secret = base64.b64decode(first.splitlines()[1], validate=True)[-32:]  # the end of the PKCS #8 structure
        for form in (secret, secret.hex().encode(), base64.b64encode(secret), first.splitlines()[1][22:62].encode()):
            self.assertNotIn(form, said.encode() + published)

    @unittest.skipUnless(AESGCM and shutil.which("openssl") and shutil.which("unzip"), "a tool is missing")
    def test_other_tools_read_what_it_publishes(self):
        self.publish(RELEASE + " --sign-key second.key")
        manifest = json.loads((self.site / "manifest.json").read_text())
        name = manifest["url"].removeprefix("https://updates.example/linux/")
        package = (self.site / name).read_bytes()
        self.assertEqual(name, f"editor-1.4.2-{sha256(package)[:16]}.container")
        self.assertEqual(sha256(package), manifest["sha256"])
        self.assertEqual(package[:12], b"ZANTOR1\0\1\x0c\x10\0")
        self.assertEqual(int.from_bytes(package[12:20], "big"), len(package) - 48)
        key = base64.b64decode(manifest["encryption"]["key"], validate=True)
        opened = AESGCM(key).decrypt(package[20:32], package[32:], None)
        self.assertEqual(opened, (self.folder / "editor.zip").read_bytes())
        self.assertEqual(sha256(opened), manifest["plaintext_sha256"])
        self.assertEqual((manifest["version"], manifest["platform"]), ("1.4.2", "linux"))

        body, *signatures = (self.site / "statements" / (sha256(package) + ".txt")).read_bytes().split(b"ed25519: ")
        lines = body.decode("ascii").split("\n")
        self.assertEqual(lines[:5], ["release-statement-v1", "version: 1.4.2", f"size: {len(package)}",
                                     "sha256: " + sha256(package), "plaintext-sha256: " + sha256(opened)])
        self.assertEqual(int(lines[6][11:]) - int(lines[5][12:]), 30 * 86400)
        self.assertEqual(lines[7:], ["status: ok", ""])
        (self.folder / "body").write_bytes(body)
        for signature, owner in zip(signatures, ("first", "second"), strict=True):
            (self.folder / "signature").write_bytes(base64.b64decode(signature))
            for name in ("first", "second"):
                self.shell(f"openssl pkey -in {name}.key -pubout -out public.pem && openssl pkeyutl -verify -rawin "
                           "-pubin -inkey public.pem -sigfile signature -in body", status=int(name != owner))


if __name__ == "__main__":
    unittest.main()
