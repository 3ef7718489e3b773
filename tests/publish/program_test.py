#!/usr/bin/env python3
"""volo-publish as its users run it, and tools that share no code with it."""

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
import time
import unittest
import zipfile

try:
    from cryptography.hazmat.primitives.ciphers.aead import AESGCM
except ImportError:
    AESGCM = None

PROGRAM = os.path.abspath(sys.argv.pop(1))
WINDOWS = os.environ.get("VOLO_PLATFORM") == "windows"  # there a file has no mode
RELEASE = ("release --zip editor.zip --version 1.4.2 --platform linux "
           "--base-url https://updates.example/linux --sign-key first.key --out site")


def sha256(data):
    return hashlib.sha256(data).hexdigest()


class Program(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="volo publish "))
        self.addCleanup(shutil.rmtree, self.folder)
        with zipfile.ZipFile(self.folder / "editor.zip", "w", zipfile.ZIP_DEFLATED) as archive:
            archive.writestr("editor.exe", "editor")
            archive.writestr("data/text", "t" * 70000)
        for name in ("first", "second"):
            self.assertEqual(self.publish(f"keygen {name}.key").returncode, 0)

    def shell(self, command):
        return subprocess.run(command, shell=True, cwd=self.folder, capture_output=True, text=True)

    def publish(self, arguments):
        return self.shell(f"{shlex.quote(PROGRAM)} {arguments}")

    def test_exit_status_tells_what_happened(self):
        cases = [
            ("--help", 0, ""),
            ("", 2, "subcommand is required"),
            ("bogus", 2, "--help tells more"),
            ("keygen", 2, "FILE is required"),
            ("inspect", 2, "FILE is required"),
            ("release --zip editor.zip", 2, "is required"),
            (RELEASE + " --days 0", 2, "--days"),
            (RELEASE + " --days 93", 2, "--days"),
            (RELEASE + " --days x", 2, "--days"),
            (RELEASE + " --platform amiga", 2, "--platform"),
            (RELEASE + " more", 2, "more"),
            (RELEASE + " --sign-key a --sign-key b --sign-key c --sign-key d", 2, "four times"),
            ("statement --out site --all", 2, "--sign-key is required"),
            ("statement --out site --revoke --sign-key first.key", 2, "--revoke needs"),
            ("statement --out site --revoke --all --sign-key first.key", 2, "excludes"),
            ("statement --out site --version 1 --sign-key first.key", 1, "No release statement"),
            ("keygen first.key", 1, "exists"),
            ("keygen no/such/folder/key", 1, "could not be written"),
            ("inspect nothing", 1, "is no file"),
            ("inspect first.key", 1, "is neither"),
            ("inspect editor.zip --keys x", 1, "public keys"),
            (RELEASE + " --sign-key editor.zip", 1, "no Ed25519 private key"),
            (RELEASE + " --sign-key nothing", 1, "cannot be read"),
            (RELEASE.replace("1.4.2", "'1 '"), 1, "The version"),
            ("inspect editor.zip", 0, ""),
            (RELEASE + " --days 10", 0, "warning: The statement ends in 10 days"),
            ("statement --out site", 0, "warning: The statement of 1.4.2"),
            ("statement --out site --all --sign-key first.key --sign-key second.key", 0, ""),
            ("inspect site/manifest.json", 0, ""),
        ]
        for arguments, status, words in cases:
            with self.subTest(arguments):
                run = self.publish(arguments)
                self.assertEqual(run.returncode, status, run.stderr)
                self.assertIn(words, run.stderr)
                self.assertEqual(run.stderr == "", words == "", run.stderr)
                self.assertTrue(run.stderr == "" or run.stderr.startswith("volo-publish: "), run.stderr)
                self.assertEqual(run.stdout == "", status != 0, run.stdout)
        for command in ("release", "statement", "keygen", "inspect"):
            self.assertIn("volo-publish " + command, self.publish(command + " --help").stdout)

    def test_private_key_stays_with_its_owner(self):
        key = self.folder / "new.key"
        said = self.shell(f"umask 0; {shlex.quote(PROGRAM)} keygen new.key").stdout
        self.assertTrue(WINDOWS or stat.S_IMODE(key.stat().st_mode) == 0o600)
        first = key.read_text()
        self.assertEqual(self.publish("keygen new.key").returncode, 1)
        self.assertEqual(key.read_text(), first)
        key.chmod(0o644)
        warned = self.publish(RELEASE + " --sign-key new.key")
        self.assertTrue(WINDOWS or "other users" in warned.stderr, warned.stderr)
        said += warned.stdout + warned.stderr
        self.assertEqual(self.publish("keygen new.key --force").returncode, 0)
        self.assertTrue(WINDOWS or stat.S_IMODE(key.stat().st_mode) == 0o600)
        second = key.read_text()
        self.assertNotEqual(second, first)
        for command in (RELEASE + " --sign-key new.key", "statement --out site --all --sign-key new.key",
                        "inspect site/manifest.json", "inspect new.key"):
            run = self.publish(command)
            said += run.stdout + run.stderr
        published = b"".join(file.read_bytes() for file in (self.folder / "site").rglob("*") if file.is_file())
        self.assertIn(b"release-statement-v1", published)
        for pem in (first, second):
            body = pem.splitlines()[1]
            secret = base64.b64decode(body, validate=True)[16:]  # the last 32 bytes of the key
            self.assertEqual(len(secret), 32)
            for form in (secret, secret.hex().encode(), base64.b64encode(secret), body[22:62].encode()):
                self.assertNotIn(form, said.encode())
                self.assertNotIn(form, published)
        self.assertEqual(list(self.folder.glob("*.tmp")), [])

    def test_archives_of_another_library_are_judged(self):
        for method, words in ((0, ""), (8, ""), (12, "neither stored"), (14, "neither stored")):
            with zipfile.ZipFile(self.folder / "a.zip", "w", method) as archive:
                archive.writestr("editor.exe", "x" * 200000)
                archive.writestr("Ünicode/ß", "y" * 1000)
            run = self.publish("inspect a.zip")
            self.assertEqual((run.returncode, words in run.stderr), (1 if words else 0, True), run.stderr)
        with zipfile.ZipFile(self.folder / "a.zip", "w", 8) as archive:
            archive.writestr("editor.exe", str(list(range(20000))))
        damaged = bytearray((self.folder / "a.zip").read_bytes())
        damaged[damaged.index(b"PK\1\2") - 9] ^= 1
        (self.folder / "a.zip").write_bytes(damaged)
        self.assertIn("damaged", self.publish("inspect a.zip").stderr)

    @unittest.skipUnless(AESGCM and shutil.which("openssl") and shutil.which("unzip"), "a tool is missing")
    def test_other_tools_read_what_it_publishes(self):
        self.assertEqual(self.publish(RELEASE + " --sign-key second.key").returncode, 0)
        site = self.folder / "site"
        manifest = json.loads((site / "manifest.json").read_text())
        package = (site / manifest["url"].rsplit("/", 1)[1]).read_bytes()
        self.assertEqual(sha256(package), manifest["sha256"])
        self.assertEqual(package[:12], b"ZANTOR1\0\1\x0c\x10\0")
        self.assertEqual(int.from_bytes(package[12:20], "big"), len(package) - 48)
        key = base64.b64decode(manifest["encryption"]["key"], validate=True)
        opened = AESGCM(key).decrypt(package[20:32], package[32:], None)
        self.assertEqual(opened, (self.folder / "editor.zip").read_bytes())
        self.assertEqual(sha256(opened), manifest["plaintext_sha256"])
        self.assertEqual((manifest["version"], manifest["platform"]), ("1.4.2", "linux"))
        (self.folder / "opened.zip").write_bytes(opened)
        self.assertEqual(self.shell("unzip -t opened.zip").returncode, 0)

        statement = (site / "statements" / (manifest["sha256"] + ".txt")).read_bytes()
        body, *signatures = statement.split(b"ed25519: ")
        lines = body.decode("ascii").split("\n")
        self.assertEqual(lines[:5], ["release-statement-v1", "version: 1.4.2", f"size: {len(package)}",
                                     "sha256: " + manifest["sha256"],
                                     "plaintext-sha256: " + manifest["plaintext_sha256"]])
        self.assertEqual(int(lines[6][11:]) - int(lines[5][12:]), 30 * 86400)
        self.assertEqual(lines[7:], ["status: ok", ""])
        (self.folder / "body").write_bytes(body)
        for signature, owner in enumerate(("first", "second")):
            (self.folder / "signature").write_bytes(base64.b64decode(signatures[signature]))
            for name in ("first", "second"):
                verified = self.shell(f"openssl pkey -in {name}.key -pubout -out public.pem && openssl pkeyutl -verify "
                                      "-rawin -pubin -inkey public.pem -sigfile signature -in body").returncode
                self.assertEqual(verified == 0, name == owner)

    @unittest.skipUnless(AESGCM and shutil.which("openssl"), "a tool is missing")
    def test_it_reads_what_other_tools_make(self):
        made = self.shell("umask 077; openssl genpkey -algorithm ed25519 -out theirs.key && openssl pkey -in theirs.key "
                          "-pubout -outform DER | tail -c 32 | base64 > theirs.pub")
        self.assertEqual(made.returncode, 0, made.stderr)
        plain = (self.folder / "editor.zip").read_bytes()
        key, nonce = os.urandom(32), os.urandom(12)
        package = (b"ZANTOR1\0\1\x0c\x10\0" + len(plain).to_bytes(8, "big") + nonce +
                   AESGCM(key).encrypt(nonce, plain, None))
        theirs = self.folder / "theirs"
        (theirs / "statements").mkdir(parents=True)
        (theirs / "p").write_bytes(package)
        (theirs / "manifest.json").write_text(json.dumps({
            "version": "5", "url": "https://a/p", "sha256": sha256(package), "plaintext_sha256": sha256(plain),
            "encryption": {"key": base64.b64encode(key).decode()}}))
        now = int(time.time())
        body = (f"release-statement-v1\nversion: 5\nsize: {len(package)}\nsha256: {sha256(package)}\n"
                f"plaintext-sha256: {sha256(plain)}\nnot-before: {now}\nnot-after: {now + 86400 * 20}\n"
                "status: ok\n").encode()
        (self.folder / "body").write_bytes(body)
        signed = self.shell("openssl pkeyutl -sign -rawin -inkey theirs.key -in body -out signature")
        self.assertEqual(signed.returncode, 0, signed.stderr)
        signature = base64.b64encode((self.folder / "signature").read_bytes())
        (theirs / "statements" / (sha256(package) + ".txt")).write_bytes(body + b"ed25519: " + signature + b"\n")

        inspected = self.publish('inspect theirs/manifest.json --keys "$(cat theirs.pub)"')
        self.assertEqual(inspected.returncode, 0, inspected.stderr)
        self.assertIn("tag is good", inspected.stdout)
        self.assertIn("signed by a key given", inspected.stdout)
        renewed = self.publish("statement --out theirs --all --sign-key theirs.key")
        self.assertEqual((renewed.returncode, renewed.stderr), (0, ""))


if __name__ == "__main__":
    unittest.main()
