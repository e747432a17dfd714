#!/usr/bin/env python3
"""The HTTP interface from outside: `rastrel serve` with a data root of its own, asked by curl.

usage: web_by_curl.py RASTREL"""

import json
import os
import pathlib
import re
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import time
import unittest
import zlib

COMMAND = ""
WAIT = 60  # seconds, for whatever is waited for
PAGE = "%!PS-Adobe-3.0\n<< /PageSize [40 30] >> setpagedevice 0 0 20 30 rectfill showpage\n"

BADGE = """<ABB><ENGRAVINGTEMPLATE><PLATES/><PLATE><COLOR>Gold</COLOR><WIDTH>3</WIDTH><HEIGHT>1</HEIGHT>
<TEXTCOLOR>Black</TEXTCOLOR><TEXTFRAME>5</TEXTFRAME><TEXT line="1" data="{Name}"><FONT name="DejaVuSans.ttf"
size="0.3"/></TEXT><FILE>{Logo}</FILE></PLATE></ENGRAVINGTEMPLATE></ABB>
"""


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


class Web(unittest.TestCase):
    def setUp(self):
        place = tempfile.TemporaryDirectory(prefix="rastrel-web-", ignore_cleanup_errors=True)
        self.addCleanup(place.cleanup)
        self.place = pathlib.Path(place.name)
        self.root = self.place / "root"
        self.root.mkdir(mode=0o700)
        self.environment = dict(os.environ, RASTREL_HOME=str(self.root), LC_ALL="C.UTF-8",
                                HOME=str(self.place))
        for name in ("DISPLAY", "WAYLAND_DISPLAY", "http_proxy", "https_proxy"):
            self.environment.pop(name, None)
        self.page = self.place / "page.ps"
        self.page.write_text(PAGE)
        self.port = free_port()
        self.server = None
        self.log = self.place / "log"

    def tearDown(self):
        if self.server is None:
            return
        if self.server.poll() is None:
            self.server.kill()
            self.server.wait()
        self.server.stdout.close()

    def settings(self, more=""):
        (self.root / "server.toml").write_text(f"[web]\nport = {self.port}\n{more}")

    def serve(self, *options):
        with open(self.log, "w", encoding="utf-8") as log:
            self.server = subprocess.Popen([COMMAND, "serve", *options], env=self.environment,
                                           stdout=subprocess.PIPE, stderr=log, text=True)
        self.wait_for(lambda: "rastrel-web: serving" in self.log.read_text())

    def wait_for(self, condition):
        end = time.monotonic() + WAIT
        while not condition():
            self.assertLess(time.monotonic(), end, self.log.read_text())
            time.sleep(0.05)

    def rastrel(self, *arguments, status=0):
        done = subprocess.run([COMMAND, *arguments], env=self.environment, capture_output=True,
                              text=True, timeout=WAIT, check=False, stdin=subprocess.DEVNULL)
        self.assertEqual(done.returncode, status, done.stderr)
        return done.stdout if status == 0 else done.stderr

    def curl(self, path, *options, scheme="http"):
        """Status and body."""
        done = subprocess.run(
            ["curl", "--silent", "--show-error", "--noproxy", "*", "--max-time", str(WAIT),
             "--write-out", "\n%{http_code}", *options, f"{scheme}://127.0.0.1:{self.port}{path}"],
            env=self.environment, capture_output=True, text=True, timeout=2 * WAIT, check=False)
        self.assertEqual(done.returncode, 0, done.stderr)
        body, status = done.stdout.rsplit("\n", 1)
        return int(status), body

    def by_socket(self, path, *options):
        return self.curl(path, "--unix-socket", str(self.root / "server/web.sock"), *options)

    def test_a_job_from_its_file_to_its_end(self):
        self.settings()
        self.serve()
        token = (self.root / "server/web.token").read_text().strip()
        bearer = ["--header", f"Authorization: Bearer {token}"]
        self.assertEqual(self.curl("/api/v1/jobs")[0], 401)
        status, body = self.curl("/api/v1/jobs", *bearer, "--form", f"file=@{self.page}",
                                 "--form", "title=A sign", "--form", "mode=Screen/preview",
                                 "--form", "hold=true")
        self.assertEqual(status, 201, body)
        job = json.loads(body)
        self.assertEqual((job["title"], job["state"], job["source"]), ("A sign", "held", "web"))
        listed = json.loads(self.rastrel("jobs", "list", "--json").splitlines()[0])
        self.assertEqual(listed["title"], "A sign")
        path = f"/api/v1/jobs/{job['id']}"
        self.assertEqual(self.by_socket(path + "/file")[1], PAGE)
        self.assertEqual(self.curl(path + "/release", *bearer, "--request", "POST")[0], 200)
        self.wait_for(lambda: json.loads(self.by_socket(path)[1])["state"] in ("done", "failed"))
        self.assertEqual(json.loads(self.by_socket(path)[1])["state"], "done")
        status, body = self.curl("/api/v1/jobs", *bearer, "--form", f"file=@{self.page}",
                                 "--form", "scale=huge")
        self.assertEqual(status, 400)
        self.assertIn("--scale", json.loads(body)["error"]["message"])
        # The same text that the command refuses the value with.
        self.assertIn(json.loads(body)["error"]["message"],
                      self.rastrel("jobs", "add", str(self.page), "--scale", "huge", status=2))
        audit = [json.loads(line) for line in
                 (self.root / "server/audit.log").read_text().splitlines()]
        self.assertEqual([(line["status"], line["path"]) for line in audit][:3],
                         [(401, "/api/v1/jobs"), (201, "/api/v1/jobs"), (200, path + "/release")])
        self.assertNotIn(token, (self.root / "server/audit.log").read_text())
        self.assertEqual({line["from"] for line in audit}, {"127.0.0.1"})
        self.assertEqual(self.by_socket(path, "--request", "DELETE")[0], 204)
        last = json.loads((self.root / "server/audit.log").read_text().splitlines()[-1])
        self.assertEqual((last["status"], last["from"]), (204, "local"))

    def test_a_picture_is_printed_and_what_is_no_document_is_refused(self):
        self.settings()
        self.serve()
        def chunk(kind, data):
            return len(data).to_bytes(4, "big") + kind + data + zlib.crc32(kind + data).to_bytes(4, "big")
        picture = self.place / "logo.png"
        picture.write_bytes(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", bytes([0, 0, 0, 2, 0, 0, 0, 1, 8, 0, 0, 0, 0]))
                            + chunk(b"IDAT", zlib.compress(b"\0\0\xff")) + chunk(b"IEND", b""))
        status, body = self.by_socket("/api/v1/jobs", "--form", f"file=@{picture}")
        self.assertEqual(status, 201, body)
        path = f"/api/v1/jobs/{json.loads(body)['id']}"
        self.wait_for(lambda: json.loads(self.by_socket(path)[1])["state"] in ("done", "failed"))
        self.assertEqual(json.loads(self.by_socket(path)[1])["state"], "done")
        text = self.place / "letter.txt"
        text.write_text("Dear shop")
        status, body = self.by_socket("/api/v1/jobs", "--form", f"file=@{text}")
        self.assertEqual(status, 400)
        self.assertIn("nor EPS, PDF, PNG or JPEG", json.loads(body)["error"]["message"])

    def test_a_template_is_filled_in_drawn_and_printed(self):
        self.settings()
        templates = self.root / "templates"
        templates.mkdir()
        (templates / "badge.xml").write_text(BADGE)
        (templates / "broken.xml").write_text("<ABB><ENGRAVINGTEMPLATE>")
        self.serve()
        names = [one["name"] for one in json.loads(self.by_socket("/api/v1/templates")[1])["templates"]]
        self.assertEqual(names, ["badge.xml", "broken.xml"])
        status, body = self.by_socket("/api/v1/templates/broken.xml")
        self.assertEqual((status, json.loads(body)["error"]["code"]), (400, "bad-template"))
        path = "/api/v1/templates/badge.xml"
        self.assertEqual([(one["name"], one["kind"]) for one in json.loads(self.by_socket(path)[1])["fields"]],
                         [("Name", "text"), ("Logo", "file")])
        picture = self.place / "badge.png"
        status, _ = self.by_socket(path + "/picture", "--header", "Accept: image/png", "--output", str(picture),
                                   "--data-urlencode", "value.Name=Ada & <Byron>")
        self.assertEqual(status, 200)
        self.assertEqual(picture.read_bytes()[:24], b"\x89PNG\r\n\x1a\n\0\0\0\rIHDR" +
                         (900).to_bytes(4, "big") + (300).to_bytes(4, "big"))
        # A value may name a file beside the template, and none elsewhere.
        (self.place / "secret.svg").write_text("<svg/>")
        for value in ("../secret.svg", str(self.place / "secret.svg"), "C:\\secret.svg"):
            status, body = self.by_socket(path + "/picture", "--json", json.dumps({"values": {"Logo": value}}))
            self.assertEqual((status, json.loads(body)["notes"][0]["code"]), (200, "no-name"), value)
        status, body = self.by_socket(path + "/jobs", "--data", "value.Name=Ada", "--data", "mode=Screen/preview")
        self.assertEqual(status, 201, body)
        status, body = self.by_socket(path + "/tables?mode=Screen/preview&blank=plate", "--form",
                                      "file=Name,Logo\nAda,\nEve,\n;filename=names.csv")
        self.assertEqual(status, 201, body)
        for job, pages in ((1, 1), (2, 2)):
            self.wait_for(lambda: json.loads(self.by_socket(f"/api/v1/jobs/{job}")[1])["state"] in ("done", "failed"))
            made = json.loads(self.by_socket(f"/api/v1/jobs/{job}")[1])
            self.assertEqual((made["state"], made["pages"], made["work"]), ("done", pages, "merge"), made)
        self.assertEqual(list((self.root / "server/web/uploads").iterdir()), [])

    def test_the_browser_gets_a_code_for_one_session(self):
        self.settings()
        self.serve("--open")
        address = self.server.stdout.readline().strip()
        found = re.fullmatch(rf"http://127\.0\.0\.1:{self.port}/#token=([0-9a-f]{{64}})", address)
        self.assertTrue(found, address)
        jar = str(self.place / "jar")
        begin = ["--header", "Content-Type: application/json", "--data",
                 json.dumps({"token": found.group(1)})]
        status, body = self.curl("/api/v1/session", "--cookie-jar", jar, *begin)
        self.assertEqual(status, 200)
        session = json.loads(body)
        self.assertEqual(session["role"], "manage")
        self.assertEqual(self.curl("/api/v1/session", *begin)[0], 401)
        upload = ["--cookie", jar, "--form", f"file=@{self.page}", "--form", "hold=1"]
        self.assertEqual(self.curl("/api/v1/jobs", *upload)[0], 403)
        self.assertEqual(self.curl("/api/v1/jobs", *upload, "--form",
                                   f"csrf={session['csrf']}")[0], 201)
        key = ["--header", f"X-CSRF-Token: {session['csrf']}"]
        self.assertEqual(self.curl("/api/v1/jobs/1/hold", "--cookie", jar, *key, "--header",
                                   "Origin: http://evil.example", "--request", "POST")[0], 403)
        self.assertEqual(self.curl("/api/v1/jobs", "--cookie", jar, "--header",
                                   f"Host: evil.example:{self.port}")[0], 421)
        # Who signs in anew has no token of the new session yet, whatever cookie is left.
        token = (self.root / "server/web.token").read_text().strip()
        status, body = self.curl("/api/v1/session", "--cookie", jar, "--cookie-jar", jar, "--header",
                                 "Content-Type: application/json", "--data", json.dumps({"token": token}))
        self.assertEqual(status, 200, body)
        key = ["--header", f"X-CSRF-Token: {json.loads(body)['csrf']}"]
        self.assertEqual(self.curl("/api/v1/session", "--cookie", jar, *key, "--request",
                                   "DELETE")[0], 204)
        self.assertEqual(self.curl("/api/v1/jobs", "--cookie", jar)[0], 401)

    def test_a_program_that_is_killed_is_started_again(self):
        self.settings()
        self.serve()
        status = {}
        for entry in pathlib.Path("/proc").glob("[0-9]*/cmdline"):
            try:
                words = entry.read_bytes().split(b"\0")
                environment = (entry.parent / "environ").read_bytes()
            except OSError:
                continue
            if words[0] == b"rastrel-web" and str(self.root).encode() in environment:
                status[int(entry.parent.name)] = words
        self.assertEqual(len(status), 1, status)
        os.kill(next(iter(status)), signal.SIGKILL)
        self.wait_for(lambda: self.log.read_text().count("rastrel-web: serving") == 2)
        self.assertIn("the HTTP interface ended: signal 9", self.log.read_text())
        self.assertEqual(self.by_socket("/api/v1/health")[0], 200)
        self.server.send_signal(signal.SIGTERM)
        self.assertEqual(self.server.wait(timeout=WAIT), 0)

    @unittest.skipUnless(shutil.which("openssl"), "no openssl to make a certificate")
    def test_users_of_other_machines_by_tls(self):
        key, certificate = self.place / "key.pem", self.place / "certificate.pem"
        subprocess.run(["openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-keyout", key,
                        "-out", certificate, "-days", "2", "-subj", "/CN=shop"], check=True,
                       capture_output=True, timeout=WAIT)
        key.chmod(0o600)
        self.settings(f'certificate = "{certificate}"\nkey = "{key}"\nnames = ["shop.example"]\n')
        password = self.place / "password"
        password.write_text("correct horse\n")
        for name, role in (("ada", "print"), ("bob", "see")):
            self.rastrel("users", "add", name, "--role", role, "--password-file", str(password))
        self.assertEqual(self.rastrel("users", "list"), "user\trole\nada\tprint\nbob\tsee\n")
        users = self.root / "server/users.toml"
        self.assertEqual(users.stat().st_mode & 0o777, 0o600)
        self.assertNotIn("correct", users.read_text())
        (self.root / "templates").mkdir()
        (self.root / "templates" / "badge.xml").write_text(BADGE)
        self.serve()
        safe = ["--cacert", str(certificate), "--insecure"]

        def sign_in(name, word):
            jar = str(self.place / name)
            status, body = self.curl("/api/v1/session", *safe, "--cookie-jar", jar, "--header",
                                     "Content-Type: application/json", "--data",
                                     json.dumps({"name": name, "password": word}), scheme="https")
            return status, [*safe, "--cookie", jar, "--header",
                            f"X-CSRF-Token: {json.loads(body).get('csrf')}"]
        self.assertEqual(sign_in("ada", "wrong horse")[0], 401)
        token = (self.root / "server/web.token").read_text().strip()
        self.assertEqual(self.curl("/api/v1/jobs", *safe, "--header",
                                   f"Authorization: Bearer {token}", scheme="https")[0], 401)
        status, ada = sign_in("ada", "correct horse")
        self.assertEqual(status, 200)
        status, bob = sign_in("bob", "correct horse")
        self.assertEqual(status, 200)
        upload = ["--form", f"file=@{self.page}", "--form", "hold=1"]
        self.assertEqual(self.curl("/api/v1/jobs", *bob, *upload, scheme="https")[0], 403)
        status, body = self.curl("/api/v1/jobs", *ada, *upload, scheme="https")
        self.assertEqual((status, json.loads(body)["owner"]), (201, "ada"))
        self.assertEqual(json.loads(self.curl("/api/v1/jobs", *ada, scheme="https")[1])["total"], 1)
        self.assertEqual(json.loads(self.curl("/api/v1/jobs", *bob, scheme="https")[1])["total"], 0)
        self.assertEqual(self.curl("/api/v1/jobs/1", *bob, scheme="https")[0], 404)
        self.assertEqual(self.curl("/api/v1/jobs/1", *ada, scheme="https")[0], 200)
        # Who only sees gets pictures of plates and no jobs; a plate's job is its owner's.
        badge = "/api/v1/templates/badge.xml"
        values = ["--header", "Content-Type: application/json", "--data", '{"values": {"Name": "Eve"}, "hold": true}']
        shown = ["--header", "Content-Type: application/json", "--data", '{"values": {"Name": "Eve"}}']
        for who in (ada, bob):
            self.assertEqual(self.curl(badge, *who, scheme="https")[0], 200)
            status, body = self.curl(badge + "/picture", *who, *shown, scheme="https")
            self.assertEqual((status, json.loads(body)["notes"]), (200, []))
        self.assertEqual(self.curl(badge + "/jobs", *bob, *values, scheme="https")[0], 403)
        self.assertEqual(self.curl(badge + "/tables", *bob, "--form", f"file=@{self.page}", scheme="https")[0], 403)
        status, body = self.curl(badge + "/jobs", *ada, *values, scheme="https")
        self.assertEqual((status, json.loads(body)["owner"]), (201, "ada"))
        self.assertEqual(json.loads(body)["options"]["template"], "badge.xml")
        plate = f"/api/v1/jobs/{json.loads(body)['id']}"
        self.assertEqual(self.curl(plate, *bob, scheme="https")[0], 404)
        self.assertEqual(self.curl(plate + "/file", *bob, scheme="https")[0], 404)
        self.assertIn("Eve", self.curl(plate + "/file", *ada, scheme="https")[1])
        self.rastrel("users", "role", "ada", "--role", "see")
        self.assertEqual(self.curl("/api/v1/jobs/1", *ada, scheme="https")[0], 401)
        self.rastrel("users", "remove", "bob")
        self.assertEqual(self.curl("/api/v1/jobs", *bob, scheme="https")[0], 401)

    def test_users_are_kept_with_care(self):
        password = self.place / "password"
        password.write_text("short\n")
        add = ["users", "add", "ada", "--role", "print", "--password-file", str(password)]
        self.assertIn("8 to 256", self.rastrel(*add, status=3))
        password.write_text("correct horse")
        self.assertIn("--role", self.rastrel("users", "add", "ada", "--role", "root",
                                             "--password-file", str(password), status=2))
        self.assertIn("letters", self.rastrel("users", "add", "a b", "--role", "see",
                                              "--password-file", str(password), status=2))
        self.assertIn("--password-file", self.rastrel("users", "add", "ada", "--role", "see",
                                                      status=3))
        self.rastrel(*add)
        self.rastrel(*add[:3], "--role", "manage", *add[5:])
        self.assertEqual(self.rastrel("users", "list"), "user\trole\nada\tmanage\n")
        self.assertIn("'bob'", self.rastrel("users", "remove", "bob", status=3))
        users = self.root / "server/users.toml"
        users.write_text(users.read_text() + "[[user]]\nname = 7\n")
        self.assertIn(f"{users}:8:", self.rastrel("users", "list", status=3))
        users.chmod(0o644)
        self.assertIn("chmod 600", self.rastrel("users", "list", status=3))

    def test_open_without_a_page_is_wrong_use(self):
        self.assertIn("[web]", self.rastrel("serve", "--open", status=2))


if __name__ == "__main__":
    if shutil.which("curl") is None:
        print("there is no curl")
        sys.exit(77)
    COMMAND = sys.argv.pop(1)
    unittest.main(verbosity=2)
