#!/usr/bin/env python3
"""`rastrel doctor` on a server: each of its rows, good and bad.

usage: doctor_test.py RASTREL"""

import base64
import fcntl
import json
import os
import pathlib
import socket
import sqlite3
import subprocess
import sys
import tempfile
import time
import unittest

COMMAND = ""
LIMIT = 240
# A certificate of `openssl req -x509` from 2026-11-23 to 2126-10-30. Nobody asks for its signature here, so that the
# tests put other dates in its place.
CERTIFICATE = """MIIBhjCCASugAwIBAgIUGpQxCI7JIq0ysHB0J434TrVWk4EwCgYIKoZIzj0EAwIw
FzEVMBMGA1UEAwwMc2hvcC5leGFtcGxlMCAXDTI2MTEyMzA4MzcwNVoYDzIxMjYx
MDMwMDgzNzA1WjAXMRUwEwYDVQQDDAxzaG9wLmV4YW1wbGUwWTATBgcqhkjOPQIB
BggqhkjOPQMBBwNCAAR1biFQ1J2lR9zR7J+2FXAILkN7UjL0JRmKnoCdJxXgcOl3
FvfGIpBjG/D3UUOsTJ02TyRkGwlru5yt0CKKH/DVo1MwUTAdBgNVHQ4EFgQUuVad
rjkXyTdJG9SwK3s4SzFsV3YwHwYDVR0jBBgwFoAUuVadrjkXyTdJG9SwK3s4SzFs
V3YwDwYDVR0TAQH/BAUwAwEB/zAKBggqhkjOPQQDAgNJADBGAiEAl84fBBW19mMT
G5m/nO8w1/Bpw0pTU7KReEiqmOcK/f4CIQCwjiTP5hCfV4DH3M5+VOSi1K7vv4DN
1x7OKsZVw1ovFA=="""
DAY = 86400


class ServerDoctor(unittest.TestCase):
    def setUp(self):
        place = tempfile.TemporaryDirectory(prefix="rastrel-doctor-")
        self.addCleanup(place.cleanup)
        self.place = pathlib.Path(place.name)
        self.root = self.place / "root"
        self.environment = {**os.environ, "RASTREL_HOME": str(self.root), "HOME": str(self.place),
                            "CUPS_SERVER": str(self.place / "no-print-system")}
        self.run_command("printers")

    def run_command(self, *arguments, status=0):
        done = subprocess.run([COMMAND, *arguments], env=self.environment, capture_output=True, text=True, timeout=LIMIT,
                              check=False)
        self.assertEqual(done.returncode, status, done.stdout + done.stderr)
        return done.stdout

    def settings(self, text):
        path = self.root / "server.toml"
        path.write_text(text)
        path.chmod(0o600)

    def rows(self, name, bad):
        """The rows of that name, of a run that ends well or not."""
        lines = self.run_command("doctor", "--json", status=5 if bad else 0).splitlines()
        return [row for row in map(json.loads, lines) if row["name"] == name]

    def one(self, name, state, text):
        """The one row of that name has the state and the text; a run with a bad row fails."""
        rows = self.rows(name, state == "bad")
        self.assertEqual(len(rows), 1, rows)
        self.assertEqual(rows[0]["state"], state, rows)
        self.assertIn(text, rows[0]["text"])
        self.assertEqual("mend" in rows[0], state != "good", rows)
        return rows[0]

    def test_a_new_data_root_has_nothing_to_complain_of(self):
        self.one("server settings", "good", "none: every key has its default")
        self.one("queue", "good", "none yet")
        self.assertFalse((self.root / "server" / "queue.db").exists(), "doctor changes nothing")
        self.assertIn("  ok     server settings: none", self.run_command("doctor"))

    def test_a_fault_of_the_settings_has_its_place(self):
        self.settings("workers = 1\n")
        self.one("server settings", "good", "read")
        self.settings("workers = 1\nworker = 1\n")
        self.one("server settings", "bad", "server.toml:2:1")
        self.settings("workers = 1\n")
        (self.root / "server.toml").chmod(0o666)
        self.one("server settings", "bad", "server.toml")

    def test_ports_are_free_or_held(self):
        with socket.socket() as other, socket.socket() as free:
            other.bind(("127.0.0.1", 0))
            other.listen()
            free.bind(("127.0.0.1", 0))
            held, port = other.getsockname()[1], free.getsockname()[1]
            free.close()
            self.settings(f"[printer]\nport = {port}\n[web]\nport = {held}\n")
            self.assertEqual(self.rows("printer's port", True)[0]["text"], f"127.0.0.1 port {port} is free")
            self.one("page's port", "bad", f"127.0.0.1 port {held} is held by another program")
            # The lock of a server that runs.
            self.run_command("jobs", "list")
            with (self.root / "server" / "lock").open("w") as lock:
                fcntl.flock(lock, fcntl.LOCK_EX)
                self.one("page's port", "good", "is in use, while this data root's server runs")
        self.settings("[web]\naddress = '192.0.2.1'\ncertificate = '/x'\nkey = '/y'\n")
        self.one("page's port", "bad", "192.0.2.1")
        self.settings("[web]\non = false\n")
        self.assertEqual(self.rows("page's port", False), [])

    def test_the_folder_of_templates_is_there(self):
        with socket.socket() as free:
            free.bind(("127.0.0.1", 0))
            port = free.getsockname()[1]
        folder = self.place / "shop templates"
        self.settings(f"[web]\nport = {port}\ntemplates = '{folder}'\n")
        self.one("templates", "bad", "the folder is missing")
        folder.mkdir()
        self.one("templates", "good", "the folder is there")
        # That of the data root need not be there.
        self.settings(f"[web]\nport = {port}\n")
        self.assertEqual(self.rows("templates", False), [])

    def certificate(self, first, last, key_mode=0o600):
        """Settings with a certificate of these dates, in seconds."""
        text = base64.b64decode(CERTIFICATE)
        text = text.replace(b"261123083705Z", time.strftime("%y%m%d%H%M%SZ", time.gmtime(first)).encode())
        text = text.replace(b"21261030083705Z", time.strftime("%Y%m%d%H%M%SZ", time.gmtime(last)).encode())
        path, key = self.place / "shop.pem", self.place / "shop.key"
        path.write_text("-----BEGIN CERTIFICATE-----\n" + base64.encodebytes(text).decode() +
                        "-----END CERTIFICATE-----\n")
        key.write_text("key")
        key.chmod(key_mode)
        with socket.socket() as free:
            free.bind(("127.0.0.1", 0))
            port = free.getsockname()[1]
        self.settings(f"[web]\nport = {port}\ncertificate = '{path}'\nkey = '{key}'\n")
        return path

    def test_a_certificate_counts_until_its_end(self):
        now = time.time()
        self.certificate(now - DAY, now + 31 * DAY)
        self.one("certificate", "good", "it counts until ")
        self.certificate(now - DAY, now + 29 * DAY)
        self.one("certificate", "warning", "it counts until ")
        self.certificate(now - 3 * DAY, now - DAY)
        self.one("certificate", "bad", "it ended at ")
        self.certificate(now + DAY, now + 60 * DAY)
        self.one("certificate", "bad", "it counts from ")
        self.certificate(now - DAY, now + 60 * DAY, key_mode=0o640)
        self.one("certificate", "bad", "the key: ")
        path = self.certificate(now - DAY, now + 60 * DAY)
        path.write_text("no certificate\n")
        self.one("certificate", "bad", "no certificate as PEM")
        path.unlink()
        self.one("certificate", "bad", "No such file")

    def test_hot_folders_are_there_and_have_their_settings_and_devices(self):
        folder = self.place / "hot"
        folder.mkdir()
        self.run_command("folder", "add", str(folder))
        self.one("hot folder", "bad", ".rastrel-folder.toml")
        settings = folder / ".rastrel-folder.toml"
        settings.write_text('device = "Unheard of"\n')
        (self.root / "devices.txt").write_text("[TIFF]\nkind = file\nformat = tiff\npattern = {output}/{job}.tif\n")
        self.one("hot folder", "bad", "its device, 'Unheard of', is not known")
        settings.write_text('device = "TIFF"\n')
        row = self.rows("hot folder", False)[0]
        self.assertEqual((row["state"], row["text"], row["path"]), ("good", "files go to 'TIFF'", str(folder)))
        settings.write_text('devise = "TIFF"\n')
        self.one("hot folder", "bad", ".rastrel-folder.toml:1:1")
        settings.write_text('device = "TIFF"\n')
        settings.chmod(0o666)
        self.one("hot folder", "bad", ".rastrel-folder.toml")
        settings.unlink()
        folder.rmdir()
        self.one("hot folder", "bad", "missing")
        folder.symlink_to(self.place)
        self.one("hot folder", "bad", "a link")
        # Not even the administrator can write there.
        (self.root / "server" / "folders.toml").write_text("[[folder]]\npath = '/proc'\n")
        row = self.rows("hot folder", True)[0]
        self.assertIn("give the server's user the right to write there", row["mend"])
        (self.root / "server" / "folders.toml").write_text("[[folder]]\npath = '/a'\nway = 1\n")
        self.one("hot folders", "bad", "folders.toml:3:1")

    def test_the_first_command_of_all_may_add_a_hot_folder(self):
        folder = self.place / "hot"
        folder.mkdir()
        self.root = self.place / "new root"
        self.environment["RASTREL_HOME"] = str(self.root)
        self.run_command("folder", "add", str(folder))
        self.assertTrue((self.root / "devices.txt").exists(), "the data root is laid out")
        self.assertEqual(self.root.stat().st_mode & 0o777, 0o700)

    def test_devices_of_each_kind_are_looked_at(self):
        folder, program = self.place / "plots", self.place / "plot"
        self.settings(f"""
[[device]]
name = "F"
kind = "folder"
address = "{folder}"
[[device]]
name = "P"
kind = "program"
address = '"{program}" -q'
[[device]]
name = "S"
kind = "socket"
address = "plotter:9100"
[[device]]
name = "Q"
kind = "queue"
address = "NOBODY"
[[device]]
name = "D"
""")
        rows = {row["text"][1]: row for row in self.rows("device", True)}
        self.assertEqual({name: row["state"] for name, row in rows.items()},
                         {"F": "bad", "P": "bad", "S": "good", "Q": "bad", "D": "good"}, rows)
        self.assertIn("the folder is missing", rows["F"]["text"])
        self.assertIn("the program is missing", rows["P"]["text"])
        self.assertIn("'NOBODY' can't be reached", rows["Q"]["text"])
        folder.mkdir()
        program.write_text("#!/bin/sh\n")
        program.chmod(0o644)
        rows = {row["text"][1]: row for row in self.rows("device", True)}
        self.assertEqual(rows["F"]["state"], "good", rows)
        self.assertIn("not executable", rows["P"]["text"])
        program.chmod(0o777)
        rows = {row["text"][1]: row for row in self.rows("device", True)}
        self.assertEqual(rows["P"]["state"], "bad", rows)
        program.chmod(0o755)
        path = self.root / "server.toml"
        path.write_text(path.read_text().replace('"queue"', '"socket"').replace("NOBODY", "[::1]:9100"))
        rows = {row["text"][1]: row for row in self.rows("device", False)}
        self.assertIn("plotter port 9100", rows["S"]["text"])
        self.assertIn("::1 port 9100", rows["Q"]["text"])
        path.write_text(path.read_text().replace("plotter:9100", "plotter:x"))
        self.one("server settings", "bad", "the address is to be host:port")

    def queue(self, statement):
        with sqlite3.connect(self.root / "server" / "queue.db") as database:
            database.execute(statement)
        database.close()

    def test_the_queue_is_sound_and_of_a_known_version(self):
        sign = self.place / "sign.ps"
        sign.write_text("%!PS\nshowpage\n")
        self.run_command("jobs", "add", str(sign))
        row = self.one("queue", "good", "version ")
        self.assertTrue(row["text"].endswith("sound; jobs: 1"), row)
        version = int(row["text"].split()[1].rstrip(","))
        self.queue(f"PRAGMA user_version = {version + 1}")
        self.one("queue", "bad", f"of version {version + 1}, and this Rastrel knows {version} at most")
        self.queue(f"PRAGMA user_version = {version}")
        self.queue("PRAGMA wal_checkpoint(TRUNCATE)")
        path = self.root / "server" / "queue.db"
        whole = path.read_bytes()
        # The pages after the first.
        path.write_bytes(whole[:4096] + b"\xff" * (len(whole) - 4096))
        self.one("queue", "bad", "damaged: ")
        path.write_bytes(b"no database at all, " * 400)
        self.one("queue", "bad", "damaged: ")

    def test_a_clock_before_the_newest_job_is_noted(self):
        sign = self.place / "sign.ps"
        sign.write_text("%!PS\nshowpage\n")
        self.run_command("jobs", "add", str(sign))
        self.one("clock", "good", "not before the newest job")
        self.queue(f"UPDATE jobs SET submitted = {int(time.time() + 3600) * 1000}")
        self.one("clock", "warning", "it is before the newest job, ")


if __name__ == "__main__":
    COMMAND = sys.argv.pop(1)
    unittest.main()
