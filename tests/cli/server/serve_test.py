#!/usr/bin/env python3
"""Runs `rastrel serve` with a data root of its own, and jobs through it.

usage: serve_test.py RASTREL"""

import json
import os
import pathlib
import signal
import socket
import struct
import subprocess
import sys
import tempfile
import threading
import time
import unittest
import zlib

COMMAND = ""
WAIT = 120  # seconds, for whatever is waited for
PAGES = """%!PS-Adobe-3.0
%%BoundingBox: 0 0 40 30
%%Pages: 2
<< /PageSize [40 30] >> setpagedevice
%%Page: 1 1
0.2 setgray 0 0 20 30 rectfill showpage
%%Page: 2 2
0.7 setgray 10 5 20 20 rectfill showpage
%%EOF
"""
# A disc of 20 points that is cut.
CUT = """%!PS-Adobe-3.0
%%BoundingBox: 0 0 40 30
%%Pages: 1
<< /PageSize [40 30] >> setpagedevice
%%Page: 1 1
[/Separation (CutContour) /DeviceCMYK {0 exch 0 0}] setcolorspace 1 setcolor
20 15 10 0 360 arc closepath stroke showpage
%%EOF
"""
# A plate of an inch by half of one, with a field; and its table, whose third row has no text.
BADGE = """<ABB>
<ENGRAVINGTEMPLATE><PLATES/>
<PLATE><COLOR>Gold</COLOR><WIDTH>1</WIDTH><HEIGHT>0.5</HEIGHT><TEXTCOLOR>Black</TEXTCOLOR><TEXTFRAME>5</TEXTFRAME>
<TEXT data='{Name}'><FONT name='DejaVuSans.ttf' size='0.25'/></TEXT></PLATE></ENGRAVINGTEMPLATE></ABB>
"""
NAMES = "Name,Team\nAda,a\nBob,b\n,c\n"
# Strips of a page of 48 points: a quarter in cyan, a quarter in half magenta, an eighth in yellow, a sixteenth in
# black, and an eighth in a spot colour. The second page is empty.
INKS = """%!PS-Adobe-3.0
%%BoundingBox: 0 0 48 48
%%Pages: 2
<< /PageSize [48 48] >> setpagedevice
%%Page: 1 1
1 0 0 0 setcmykcolor 0 0 12 48 rectfill
0 0.5 0 0 setcmykcolor 12 0 12 48 rectfill
0 0 1 0 setcmykcolor 24 0 12 24 rectfill
0 0 0 1 setcmykcolor 36 0 12 12 rectfill
[/Separation (Gold) /DeviceCMYK {0 exch dup 0.3 mul exch 0}] setcolorspace 1 setcolor
36 12 12 24 rectfill
showpage
%%Page: 2 2
showpage
%%EOF
"""


def png(width, height, samples):
    """A picture of RGB samples."""
    def chunk(name, body):
        return struct.pack(">I", len(body)) + name + body + struct.pack(">I", zlib.crc32(name + body))

    rows = b"".join(b"\0" + samples[start:start + 3 * width]
                    for start in range(0, 3 * width * height, 3 * width))
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0))
            + chunk(b"IDAT", zlib.compress(rows)) + chunk(b"IEND", b""))


def pdf(width, height, samples):
    """A page as large as the picture of RGB samples that covers it: a pixel is a point."""
    picture = (f"<< /Type /XObject /Subtype /Image /Width {width} /Height {height} /ColorSpace /DeviceRGB "
               f"/BitsPerComponent 8 /Length {len(samples)} >>\nstream\n").encode() + samples + b"\nendstream"
    drawing = f"{width} 0 0 {height} 0 0 cm /P Do".encode()
    objects = [b"<< /Type /Catalog /Pages 2 0 R >>", b"<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
               f"<< /Type /Page /Parent 2 0 R /MediaBox [0 0 {width} {height}] /Contents 4 0 R "
               "/Resources << /XObject << /P 5 0 R >> >> >>".encode(),
               f"<< /Length {len(drawing)} >>\nstream\n".encode() + drawing + b"\nendstream", picture]
    text, places = b"%PDF-1.4\n", []
    for number, content in enumerate(objects, 1):
        places.append(len(text))
        text += f"{number} 0 obj\n".encode() + content + b"\nendobj\n"
    table = "xref\n0 6\n0000000000 65535 f \n" + "".join(f"{place:010} 00000 n \n" for place in places)
    return text + (table + f"trailer << /Size 6 /Root 1 0 R >>\nstartxref\n{len(text)}\n%%EOF\n").encode()


def pixels(tiff):
    """Width, height and the strips' bytes, as they are stored, of a little-endian file."""
    start, = struct.unpack_from("<I", tiff, 4)
    count, = struct.unpack_from("<H", tiff, start)
    values = {}
    for index in range(count):
        tag, kind, number, value = struct.unpack_from("<HHII", tiff, start + 2 + 12 * index)
        values[tag] = (value & 0xFFFF if kind == 3 else value, number)
    (offset, strips), (length, _) = values[273], values[279]
    assert strips == 1, strips
    return values[256][0].to_bytes(2, "little") + values[257][0].to_bytes(2, "little") + \
        tiff[offset:offset + length]


class Serve(unittest.TestCase):
    def setUp(self):
        place = tempfile.TemporaryDirectory(prefix="rastrel-serve-", ignore_cleanup_errors=True)
        self.addCleanup(place.cleanup)
        self.place = pathlib.Path(place.name)
        self.root = self.place / "root"
        self.environment = dict(os.environ, RASTREL_HOME=str(self.root), LC_ALL="C.UTF-8")
        self.environment.pop("RASTREL_OUTPUT", None)
        self.page = self.place / "page.ps"
        self.page.write_text(PAGES)
        self.server = None

    def tearDown(self):
        if self.server is not None and self.server.poll() is None:
            self.server.kill()
            self.server.wait()

    def run_command(self, *arguments, status=0):
        done = subprocess.run([COMMAND, *arguments], env=self.environment, capture_output=True,
                              text=True, timeout=WAIT, check=False)
        self.assertEqual(done.returncode, status, done.stderr)
        return done.stdout if status == 0 else done.stderr

    def serve(self, log=subprocess.DEVNULL):
        self.server = subprocess.Popen([COMMAND, "serve"], env=self.environment, stderr=log)

    def stop(self):
        self.server.send_signal(signal.SIGTERM)
        self.assertEqual(self.server.wait(timeout=WAIT), 0)

    def add(self, *options, title="sign"):
        return self.run_command("jobs", "add", str(self.page), "--mode", "Screen/preview", "--title",
                                title, *options).strip()

    def job(self, number):
        return json.loads(self.run_command("jobs", "show", number, "--json").splitlines()[0])

    def await_state(self, number, *states):
        limit = time.monotonic() + WAIT
        while self.job(number)["state"] not in states:
            self.assertLess(time.monotonic(), limit, self.job(number))
            time.sleep(0.05)
        return self.job(number)

    def output(self):
        return {path.name: path.read_bytes() for path in (self.root / "output").iterdir()}

    def test_a_job_delivers_the_files_that_print_makes(self):
        self.serve()
        number = self.add()
        job = self.await_state(number, "done", "failed")
        self.assertEqual((job["state"], job["pages"]), ("done", 2), job)
        by_server = self.output()
        self.assertEqual(sorted(by_server), ["sign-1.tif", "sign-2.tif"])
        copy = self.place / "sign.ps"
        copy.write_text(PAGES)
        by_print = self.place / "by-print"
        self.run_command("print", str(copy), "--mode", "Screen/preview", "--output", str(by_print))
        for name, content in by_server.items():
            self.assertEqual(content, (by_print / name).read_bytes(), name)
        # Another page once more, with no RIP.
        again = self.run_command("jobs", "reprint", number, "--pages", "2").strip()
        self.await_state(again, "done")
        self.assertEqual(sorted(self.output()), ["sign-1.tif", "sign-2-2.tif", "sign-2.tif"])
        self.stop()

    def test_a_job_has_the_ink_of_its_pages(self):
        self.page.write_text(INKS)
        number = self.run_command("jobs", "add", str(self.page), "--mode", "CMYK/300 dpi", "--title",
                                  "inks").strip()
        self.serve()
        job = self.await_state(number, "done", "failed")
        self.assertEqual(job["state"], "done", job)
        first, second = job["ink"]
        expected = {"Cyan": 1 / 4, "Magenta": 1 / 8, "Yellow": 1 / 8, "Black": 1 / 16, "Gold": 1 / 8}
        for name, share in expected.items():
            self.assertAlmostEqual(first.get(name, -1), share, delta=0.001, msg=name)
            self.assertEqual(second.get(name, 0), 0, name)
        self.assertEqual(sorted(first), sorted(expected))
        table = self.run_command("jobs", "export").splitlines()
        cell = dict(zip(table[0].split(","), table[1].split(",")))["ink"]
        sums = {name: float(share) for name, share in
                (ink.rsplit(" ", 1) for ink in cell.split("; "))}
        self.assertEqual(sums, first)
        self.assertIn("ink of page 1\tCyan 25.0 %, Magenta 12.4 %",
                      self.run_command("jobs", "show", number))
        self.stop()

    def test_a_file_larger_than_the_settings_say_is_refused(self):
        self.run_command("printers")
        (self.root / "server.toml").write_text("job-megabytes = 1\n")
        for size, status in ((999_999, 0), (1_000_000, 0), (1_000_001, 3)):
            self.page.write_bytes(b"%!PS\n" + b"%" * (size - 5))
            text = self.run_command("jobs", "add", str(self.page), status=status)
        self.assertIn("has 1000001 bytes, and a job of this server may have 1000000", text)
        self.assertEqual(len(self.run_command("jobs", "list", "--json").splitlines()), 2)

    def test_a_list_is_as_long_as_was_asked_for_and_is_not_cut_where_a_piece_of_it_ends(self):
        files = [str(self.page)] * 1001  # a thousand are read at a time
        self.run_command("jobs", "add", *files, "--hold", "--mode", "Screen/preview")
        for limit, lines in ((1000, 1000), (1001, 1001), (1002, 1001)):
            listed = self.run_command("jobs", "list", "--limit", str(limit), "--json").splitlines()
            self.assertEqual(len({json.loads(line)["id"] for line in listed}), lines, limit)

    def test_a_held_job_waits_and_a_failed_one_says_why(self):
        held = self.add("--hold")
        self.page.write_text("%!PS\n/nothing-of-that-name cvx exec\n")
        failed = self.add()
        self.serve()
        job = self.await_state(failed, "failed", "done")
        self.assertEqual(job["state"], "failed")
        self.assertIn("undefined", job["message"])
        self.assertEqual(self.job(held)["state"], "held")
        self.run_command("jobs", "release", held)
        self.await_state(held, "done")
        self.stop()

    def test_a_stopped_server_leaves_its_jobs_to_the_next(self):
        self.serve()
        numbers = [self.add(title=f"sign{count}") for count in range(4)]
        self.stop()
        self.serve()
        for number in numbers:
            self.await_state(number, "done")
        self.assertEqual(len(self.output()), 8)
        self.stop()

    def hot_folder(self, text):
        folder = self.place / "hot"
        folder.mkdir()
        (folder / ".rastrel-folder.toml").write_text(text)
        self.run_command("jobs", "list")  # makes the data root
        (self.root / "server" / "folders.toml").write_text(f'[[folder]]\npath = "{folder}"\n')
        return folder

    def await_file(self, path):
        limit = time.monotonic() + WAIT
        while not path.exists():
            self.assertLess(time.monotonic(), limit, path)
            time.sleep(0.05)

    def test_a_file_that_is_dropped_into_a_cutting_folder_is_cut_by_its_rules(self):
        folder = self.hot_folder('device = "Cutter"\nwork = "cut"\nrules = "shop-words"\n')
        self.serve()
        drawing = self.place / "disc.ps"
        drawing.write_text(CUT)
        expected = self.place / "expected.hpgl"
        self.run_command("cut", str(drawing), "--rules", "shop-words", "-o", str(expected))
        os.rename(drawing, folder / "disc.ps")
        self.await_file(folder / "done" / "disc.ps.report.json")
        self.assertEqual(self.output(), {"disc.hpgl": expected.read_bytes()})
        self.assertGreater(len(expected.read_bytes()), 100)
        self.stop()

    def test_a_picture_is_printed_from_a_hot_folder_as_from_the_command(self):
        folder = self.hot_folder('device = "Plotter"\nmode = "Screen/preview"\n')
        self.serve()
        picture = self.place / "sign.png"
        picture.write_bytes(png(3, 2, bytes(range(18))))
        number = self.run_command("jobs", "add", str(picture), "--device", "Plotter", "--mode",
                                  "Screen/preview").strip()
        job = self.await_state(number, "done", "failed")
        self.assertEqual((job["state"], job["pages"]), ("done", 1), job)
        by_command = self.output()["sign-1.tif"]
        # A pixel is a point: as a page of PDF that has the samples as they are.
        page = self.place / "page.pdf"
        page.write_bytes(pdf(3, 2, bytes(range(18))))
        by_print = self.place / "by-print"
        self.run_command("print", str(page), "--mode", "Screen/preview", "--output", str(by_print))
        self.assertEqual(pixels(by_command), pixels((by_print / "page-1.tif").read_bytes()))
        self.assertGreater(len(set(pixels(by_command))), 6)
        picture.rename(folder / "sign.png")
        self.await_file(folder / "done" / "sign.png.report.json")
        self.assertEqual(self.output()["sign-1-2.tif"], by_command)
        damaged = self.place / "damaged.png"
        damaged.write_bytes(png(3, 2, bytes(17)))
        number = self.run_command("jobs", "add", str(damaged)).strip()
        job = self.await_state(number, "done", "failed")
        self.assertEqual((job["state"], job["message"]), ("failed", "the PNG file's data is damaged"))
        self.stop()

    def test_a_cut_without_rules_fails_and_says_so(self):
        folder = self.hot_folder('device = "Cutter"\nwork = "cut"\n')
        self.serve()
        self.page.rename(folder / "page.ps")
        self.await_file(folder / "failed" / "page.ps.report.json")
        job = self.job("1")
        self.assertEqual((job["state"], job["message"]),
                         ("failed", "a cut needs rules: which paths are cut"))
        self.stop()

    def test_a_queued_job_is_shown_with_its_size_and_one_that_is_not_there_is_named(self):
        number = self.run_command("jobs", "add", str(self.page)).strip()
        self.assertIn(f"bytes\t{self.page.stat().st_size}\n", self.run_command("jobs", "show", number))
        held = subprocess.run([COMMAND, "jobs", "hold", number, "77"], env=self.environment, capture_output=True,
                              text=True, timeout=WAIT, check=False)
        self.assertEqual((held.returncode, held.stdout, held.stderr), (1, number + "\n", "rastrel: there is no job 77\n"))
        self.assertEqual(self.job(number)["state"], "held")

    def merge_files(self):
        template, table = self.place / "badge.xml", self.place / "names.csv"
        template.write_text(BADGE)
        table.write_text(NAMES)
        return template, table

    def merged_by_commands(self, template, table):
        """What `rastrel merge` and `rastrel print` make, a blank of a plate's size a row."""
        pages = self.place / "names.pdf"
        self.run_command("merge", str(template), "--data", str(table), "--blank", "1x0.5in", "-o", str(pages))
        by_print = self.place / "by-print"
        self.run_command("print", str(pages), "--mode", "Screen/preview", "--output", str(by_print))
        files = [pixels((by_print / f"names-{page}.tif").read_bytes()) for page in (1, 2, 3)]
        self.assertEqual(len(set(files)), 3)
        return files

    def test_a_merge_prints_a_page_for_each_row_as_the_commands_do(self):
        template, table = self.merge_files()
        number = self.run_command("jobs", "add", "--template", str(template), "--data", str(table), "--blank",
                                  "1x0.5in", "--mode", "Screen/preview").strip()
        expected = self.merged_by_commands(template, table)
        table.unlink()  # the queue has its own
        self.serve()
        job = self.await_state(number, "done", "failed")
        self.assertEqual((job["state"], job["pages"], job["title"]), ("done", 3, "names.csv"), job)
        output = self.output()
        self.assertEqual(sorted(output), [f"names-{page}.tif" for page in (1, 2, 3)])
        self.assertEqual([pixels(output[f"names-{page}.tif"]) for page in (1, 2, 3)], expected)
        story = self.run_command("jobs", "show", number)
        self.assertIn('row 4: placed on page 3; no value for "Name"', story)
        self.assertNotIn("row 2", story)
        self.assertIn("message\t3 pages of 2.54 by 1.27 cm: 3 plates, 2 texts, 0 drill points\n", story)
        self.assertFalse((self.root / "server" / "jobs" / number / "merged.pdf").exists())
        again = self.run_command("jobs", "reprint", number, "--pages", "2").strip()
        self.await_state(again, "done")
        self.assertEqual(pixels(self.output()["names-2-2.tif"]), expected[1])
        self.stop()

    def test_a_merge_that_can_not_be_made_fails_with_its_row_or_line(self):
        template, table = self.merge_files()
        bad_row = self.run_command("jobs", "add", str(table), "--template", str(template), "--blank",
                                   "1x0.4in").strip()
        table.write_text('Name,Team\nAda,a\n"Bob,b\n')
        bad_table = self.run_command("jobs", "add", str(table), "--template", str(template)).strip()
        table.write_text("Team\na\n")
        bad_heading = self.run_command("jobs", "add", str(template), "--data", str(table)).strip()
        self.serve()
        reasons = {bad_row: "row 2: not placed; a plate of 2.54 by 1.27 cm does not fit",
                   bad_table: "names.csv: line 3: a value in double quotes has no end",
                   bad_heading: 'badge.xml:4: the table has no heading "Name"'}
        for number, reason in reasons.items():
            job = self.await_state(number, "done", "failed")
            self.assertEqual(job["state"], "failed", job)
            self.assertTrue(job["message"].startswith(reason), job["message"])
        self.stop()

    def test_the_last_row_of_a_long_merge_is_heard_of(self):
        template, table = self.merge_files()
        # The lines of the rows before it are more than a pipe holds, and so are those of rows without a value.
        table.write_text("Name,Team\n" + "Ada,a\n" * 3000 + ",b\n" * 200)
        number = self.run_command("jobs", "add", "--template", str(template), "--data", str(table),
                                  "--mode", "Screen/preview", "--pages", "1").strip()
        self.serve()
        job = self.await_state(number, "done", "failed")
        self.assertEqual(job["state"], "done", job)
        story = self.run_command("jobs", "show", number)
        rows = [line for line in story.splitlines() if '; no value for "Name"' in line]
        self.assertTrue(rows[0].split("\t")[2].startswith("row 3002: "), rows[0])
        self.assertTrue(rows[-1].split("\t")[2].startswith("row 3201: "), rows[-1])
        # Of 200 rows and the summary the first hundred and the last ten.
        self.assertEqual(len(rows), 109)
        self.assertIn("91 more lines of the merge are left out", story)
        self.stop()

    def test_a_merge_is_refused_unless_its_two_files_are_named(self):
        template, table = self.merge_files()
        both = ("--template", str(template), "--data", str(table))
        self.assertIn("name a file", self.run_command("jobs", "add", status=2))
        self.assertIn("name a file", self.run_command("jobs", "add", "--data", str(table), status=2))
        self.assertIn("no file beside them", self.run_command("jobs", "add", str(table), *both, status=2))
        self.assertIn("is of a merge", self.run_command("jobs", "add", str(self.page), "--blank", "1x1in", status=2))
        template.unlink()
        self.assertIn("badge.xml", self.run_command("jobs", "add", *both, status=3))
        self.assertEqual(self.run_command("jobs", "list", "--json"), "")

    def test_a_table_that_is_dropped_into_a_merging_folder_fills_its_template(self):
        template, table = self.merge_files()
        folder = self.hot_folder(f'device = "Plotter"\nwork = "merge"\ntemplate = "{template}"\n'
                                 'blank = "1x0.5in"\nmode = "Screen/preview"\n')
        expected = self.merged_by_commands(template, table)
        self.serve()
        table.rename(folder / "names.csv")
        self.await_file(folder / "done" / "names.csv.report.json")
        output = self.output()
        self.assertEqual([pixels(output[f"names-{page}.tif"]) for page in (1, 2, 3)], expected)
        self.stop()

    def test_a_device_of_the_settings_gets_the_bytes(self):
        listener = socket.create_server(("127.0.0.1", 0))
        self.addCleanup(listener.close)
        taken = []

        def take():
            line, _ = listener.accept()
            with line:
                while piece := line.recv(65536):
                    taken.append(piece)

        thread = threading.Thread(target=take, daemon=True)
        thread.start()
        self.run_command("printers")
        (self.root / "server.toml").write_text(
            f'[[device]]\nname = "Line"\nkind = "socket"\n'
            f'address = "127.0.0.1:{listener.getsockname()[1]}"\n')
        self.serve()
        number = self.add("--device", "Line")
        job = self.await_state(number, "done", "failed", "uncertain")
        self.assertEqual(job["state"], "done", job)
        thread.join(WAIT)
        self.assertEqual(b"".join(taken).count(b"II*\0") + b"".join(taken).count(b"MM\0*"), 2)
        self.stop()

    def test_a_second_server_is_refused(self):
        self.serve()
        self.await_state(self.add(), "done")
        self.assertIn("another server of this data root runs", self.run_command("serve", status=1))
        self.stop()

    def test_a_command_that_may_have_sent_a_page_leaves_its_job_uncertain(self):
        sent = self.place / "sent"
        self.run_command("printers")
        programs = {"Killed": f"echo $1 >> '{sent}'; kill -9 $$", "Second": f"test $1 = 1 && echo $1 >> '{sent}'",
                    "Refuses": "exit 1"}
        sections = ""
        for name, text in programs.items():
            program = self.place / name
            program.write_text(f"#!/bin/sh\n{text}\n")
            program.chmod(0o700)
            sections += f"[{name}]\nkind = command\nformat = png\ncommand = '{program}' {{page}}\n"
        (self.root / "devices.txt").write_text(sections)
        self.serve()
        states = {}
        for name in programs:
            states[name] = self.await_state(self.add("--device", name), "done", "failed",
                                            "uncertain")["state"]
        self.assertEqual(states, {"Killed": "uncertain", "Second": "uncertain", "Refuses": "failed"})
        self.assertEqual(sent.read_text(), "1\n1\n")
        self.stop()

    def test_a_fault_of_the_settings_keeps_the_server_from_starting(self):
        self.run_command("printers")
        (self.root / "server.toml").write_text("worker = 1\n")
        self.assertIn("server.toml:1:1", self.run_command("serve", status=2))

    def test_a_fault_that_comes_to_the_settings_is_told_once_and_jobs_wait_until_it_goes(self):
        settings = self.root / "server.toml"
        log = self.place / "log"
        folder = self.hot_folder('device = "TIFF"\nmode = "Screen/preview"\nsettle = 0\npoll = 1\n')
        with log.open("wb") as output:
            self.serve(output)
        self.await_text(log, "serving")
        settings.write_text("worker = 1\n")
        (folder / "one.ps").write_text(PAGES)
        self.await_text(log, "no job is begun until this is mended")
        (folder / "two.ps").write_text(PAGES)
        # The scheduler looks once a second, and at each change of the queue.
        time.sleep(3)
        self.assertFalse((self.root / "output").exists())
        settings.write_text("workers = 1\n")
        for number in ("1", "2"):
            self.await_state(number, "done")
        self.stop()
        lines = log.read_text().splitlines()
        self.assertEqual([line for line in lines if "worker" in line],
                         [line for line in lines if "server.toml:1:1" in line], lines)
        self.assertEqual(len([line for line in lines if "server.toml:1:1" in line]), 1, lines)
        self.assertIn("rastrel: jobs go on", lines)

    def await_text(self, path, text):
        limit = time.monotonic() + WAIT
        while text not in path.read_text():
            self.assertLess(time.monotonic(), limit, path.read_text())
            time.sleep(0.05)

    def test_a_refused_job_is_called_by_its_title_wherever_it_is_read(self):
        folder = self.hot_folder('device = "TIFF"\nsettle = 0\n')
        (folder / "two signs.pdf").write_bytes(b"no such document")
        self.serve()
        report = folder / "failed" / "two signs.pdf.report.txt"
        limit = time.monotonic() + WAIT
        while not report.exists():
            self.assertLess(time.monotonic(), limit)
            time.sleep(0.05)
        self.assertIn("can't print 'two signs.pdf': it is neither", self.job("1")["message"])
        self.assertIn("can't print 'two signs.pdf': it is neither", report.read_text())
        for text in (report.read_text(), self.run_command("jobs", "show", "1"),
                     self.run_command("jobs", "list"), self.run_command("jobs", "export")):
            self.assertNotIn("job.pdf", text)
            self.assertNotIn(str(self.root), text)
        self.stop()


if __name__ == "__main__":
    COMMAND = sys.argv.pop(1)
    unittest.main()
