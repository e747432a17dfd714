"""Prints to rastrel-printer with ipptool and looks at the queue.

Usage: network_printer.py PROGRAM SHARE. Ends with 77 where ipptool is not installed. The queue's jobs are moved on by
hand, as the server's workers do it.
"""
import os
import re
import shutil
import socket
import sqlite3
import struct
import subprocess
import sys
import tempfile
import time
import zlib

LIMIT = 60  # seconds, for each wait
JOB = """{ NAME "Print" OPERATION Print-Job GROUP operation-attributes-tag
ATTR charset attributes-charset utf-8 ATTR language attributes-natural-language en ATTR uri printer-uri $uri
ATTR name requesting-user-name ada ATTR name job-name "a sign" ATTR mimeMediaType document-format FORMAT
GROUP job-attributes-tag OPTIONS FILE $filename STATUS successful-ok DISPLAY job-id }
"""
ASK = """{ NAME "Ask" OPERATION OPERATION-NAME GROUP operation-attributes-tag
ATTR charset attributes-charset utf-8 ATTR language attributes-natural-language en ATTR uri printer-uri $uri
ATTR integer job-id NUMBER ATTR name requesting-user-name ada STATUS successful-ok }
"""
PS = b"%!PS-Adobe-3.0\n%%Pages: 1\n100 100 moveto 200 200 lineto stroke showpage\n"
PDF = b"%PDF-1.4\n1 0 obj << /Type /Catalog >> endobj\n%%EOF\n"


def free_port():
    with socket.socket() as one:
        one.bind(("127.0.0.1", 0))
        return one.getsockname()[1]


def wait_for(what, condition):
    end = time.monotonic() + LIMIT
    while time.monotonic() < end:
        value = condition()
        if value:
            return value
        time.sleep(0.05)
    raise AssertionError(f"{what} did not come within {LIMIT} s")


def chunk(name, body):
    return struct.pack(">I", len(body)) + name + body + struct.pack(">I", zlib.crc32(name + body))


def png(width, height, rows):
    data = b"".join(b"\0" + row for row in rows)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0))
            + chunk(b"IDAT", zlib.compress(data)) + chunk(b"IEND", b""))


def pwg_page(width, height, rows, pages=0):
    """A page of PWG raster, sRGB: its header of 1796 bytes, then each row as one run of literal pixels."""
    header = bytearray(1796)
    header[0:9] = b"PwgRaster"
    for offset, value in ((276, 300), (280, 300), (340, 1), (352, width * 72 // 300), (356, height * 72 // 300),
                          (372, width), (376, height), (384, 8), (388, 24), (392, 3 * width), (400, 19), (420, 3),
                          (452, pages)):
        struct.pack_into(">I", header, offset, value)
    body = b""
    for row in rows:
        # No repeat of the row; then 1 - count + 256 says literal pixels.
        body += bytes([0, 257 - width]) + row
    return bytes(header) + body


def pwg(*pages):
    return b"RaS2" + b"".join(pages)


class Printer:
    def __init__(self, program, share, root):
        self.program, self.root, self.port = program, root, free_port()
        shutil.copytree(os.path.join(share, "rip"), os.path.join(root, "rip"))
        with open(os.path.join(root, "devices.txt"), "w", encoding="utf-8") as file:
            file.write("[Big plotter]\nkind = file\nformat = png\npattern = {output}/{job}-{page}.png\n")
        with open(os.path.join(root, "server.toml"), "w", encoding="utf-8") as file:
            file.write(f"job-megabytes = 1\n[printer]\nport = {self.port}\n")
        self.child = None
        self.start()

    def start(self):
        environment = dict(os.environ, RASTREL_HOME=self.root)
        self.child = subprocess.Popen([self.program], env=environment, stdin=subprocess.DEVNULL)
        wait_for("the printer", self.answers)

    def answers(self):
        assert self.child.poll() is None, "the printer ended"
        with socket.socket() as one:
            return one.connect_ex(("127.0.0.1", self.port)) == 0

    def stop(self, kill=False):
        if kill:
            self.child.kill()
        else:
            self.child.terminate()
        self.child.wait(LIMIT)

    def tool(self, text, *arguments):
        path = os.path.join(self.root, "ask.test")
        with open(path, "w", encoding="utf-8") as file:
            file.write(text)
        uri = f"ipp://127.0.0.1:{self.port}/ipp/print/Big-plotter"
        done = subprocess.run(["ipptool", "-tv", *arguments, uri, path], capture_output=True, text=True, timeout=LIMIT,
                              check=False)
        return done.returncode, done.stdout

    def send(self, document, kind, options=""):
        path = os.path.join(self.root, "document")
        with open(path, "wb") as file:
            file.write(document)
        status, shown = self.tool(JOB.replace("FORMAT", kind).replace("OPTIONS", options), "-f", path)
        assert status == 0, shown
        return int(re.search(r"job-id \(integer\) = (\d+)", shown).group(1))

    def ask(self, operation, number, strict=True):
        status, shown = self.tool(ASK.replace("OPERATION-NAME", operation).replace("NUMBER", str(number)))
        assert status == 0 or not strict, shown
        return shown

    def state(self, number, strict=True):
        shown = self.ask("Get-Job-Attributes", number, strict)
        return re.search(r"job-state \(enum\) = (\S+)", shown).group(1)

    def waits_as(self, number, state, strict=True):
        wait_for(f"state {state}", lambda: self.state(number, strict) == state)

    def rows(self):
        with sqlite3.connect(os.path.join(self.root, "server/queue.db"), timeout=LIMIT) as base:
            base.row_factory = sqlite3.Row
            return base.execute("SELECT * FROM jobs ORDER BY id").fetchall()

    def row(self, count):
        wait_for(f"job {count}", lambda: len(self.rows()) >= count)
        rows = self.rows()
        assert len(rows) == count, len(rows)
        return rows[-1]

    def move_on(self, job, state, message=""):
        with sqlite3.connect(os.path.join(self.root, "server/queue.db"), timeout=LIMIT) as base:
            base.execute("UPDATE jobs SET state = ?, message = ?, pages = 1 WHERE id = ?", (state, message, job))


def content(row):
    with open(row["file"], "rb") as file:
        return file.read()


def picture_rows(pdf):
    return [zlib.decompress(part) for part in re.findall(rb"/Subtype /Image.*?stream\n(.*?)\nendstream", pdf, re.S)]


def check_documents(printer):
    number = printer.send(PS, "application/postscript",
                          "ATTR integer copies 2 ATTR keyword rastrel-mode rgb-600-dpi "
                          "ATTR rangeOfInteger page-ranges 2-3")
    row = printer.row(1)
    assert content(row) == PS
    assert (row["title"], row["owner"], row["source"], row["device"]) == (
        "a sign", "ada", "network printer", "Big plotter"), tuple(row)
    assert row["options"] == '{"copies":"2","mode":"RGB/600 dpi.ps","pages":"2-3"}', row["options"]
    printer.waits_as(number, "processing")
    printer.move_on(row["id"], "held")
    wait_for("held", lambda: "job 1: held" in printer.ask("Get-Job-Attributes", number))

    # A second job goes to the queue while the first still waits, and may be canceled there and here.
    second = printer.send(PDF, "application/pdf")
    row = printer.row(2)
    assert content(row) == PDF
    printer.move_on(1, "done")
    printer.waits_as(number, "completed")
    printer.waits_as(second, "processing")
    printer.ask("Cancel-Job", second)
    wait_for("cancel", lambda: printer.rows()[1]["state"] == "canceled")
    printer.waits_as(second, "canceled")


def check_declared_type_is_not_trusted(printer):
    number = printer.send(PDF, "application/postscript")
    row = printer.row(3)
    assert content(row) == PDF
    printer.move_on(row["id"], "failed", "the page has no ink")
    printer.waits_as(number, "aborted")
    assert "the page has no ink" in printer.ask("Get-Job-Attributes", number)
    number = printer.send(b"neither", "application/pdf")
    printer.waits_as(number, "aborted")
    assert "no PostScript, PDF, JPEG or PNG" in printer.ask("Get-Job-Attributes", number)
    number = printer.send(b"%!PS\n" + b"%" * 1000000, "application/postscript")
    printer.waits_as(number, "aborted")
    assert "larger than 1000000 bytes" in printer.ask("Get-Job-Attributes", number)
    printer.row(3)


def check_pictures(printer):
    rows = [bytes(range(0, 9)), bytes(range(100, 109))]
    number = printer.send(png(3, 2, rows), "image/png")
    row = printer.row(4)
    assert picture_rows(content(row)) == [b"\0" + rows[0] + b"\0" + rows[1]]
    printer.move_on(row["id"], "done")
    printer.waits_as(number, "completed")

    number = printer.send(pwg(pwg_page(3, 2, rows, 2), pwg_page(3, 2, rows[::-1], 2)), "image/pwg-raster")
    row = printer.row(5)
    assert picture_rows(content(row)) == [rows[0] + rows[1], rows[1] + rows[0]]
    assert b"/MediaBox [0 0 0.72 0.48]" in content(row)
    printer.waits_as(number, "completed")
    printer.send(pwg(pwg_page(3, 2, rows, 2)), "image/pwg-raster")  # its second page is missing
    printer.send(pwg(pwg_page(3, 2, rows))[:-5], "image/pwg-raster")
    printer.row(5)


def check_cut_off(printer):
    """A sender that goes in the middle of its document leaves no job, whatever it was."""
    def number_of(name, value, tag):
        return struct.pack(">BH", tag, len(name)) + name + struct.pack(">H", len(value)) + value

    uri = f"ipp://127.0.0.1:{printer.port}/ipp/print/Big-plotter".encode()
    request = (struct.pack(">BBHIB", 2, 0, 2, 1, 1) + number_of(b"attributes-charset", b"utf-8", 0x47)
               + number_of(b"attributes-natural-language", b"en", 0x48) + number_of(b"printer-uri", uri, 0x45)
               + number_of(b"document-format", b"application/postscript", 0x49) + b"\3")
    before = len(printer.rows())
    document = PS + b"%" * 200000
    chunk_of = b"%x\r\n" % len(request) + request + b"\r\n"
    for head, body in ((b"Content-Length: %d" % (len(request) + len(document)), request + document[:100000]),
                       (b"Content-Length: %d" % (len(request) + len(document)), request + document[:-1]),
                       (b"Transfer-Encoding: chunked", chunk_of + b"1000\r\n" + document[:100]),
                       (b"Transfer-Encoding: chunked", chunk_of + b"64\r\n" + document[:100] + b"\r\n")):
        with socket.create_connection(("127.0.0.1", printer.port), LIMIT) as line:
            line.sendall(b"POST /ipp/print/Big-plotter HTTP/1.1\r\nHost: localhost\r\n"
                         b"Content-Type: application/ipp\r\n" + head + b"\r\n\r\n" + body)
            line.shutdown(socket.SHUT_WR)
            while line.recv(65536):
                pass
    # One after them comes alone.
    number = printer.send(PS, "application/postscript")
    row = printer.row(before + 1)
    printer.move_on(row["id"], "done")
    printer.waits_as(number, "completed")


def check_restart(printer):
    number = printer.send(PS, "application/postscript")
    row = printer.row(7)
    printer.waits_as(number, "processing")
    for kill in (False, True):
        printer.stop(kill)
        printer.start()
        # The library repeats some attributes of a job that it has read from its record.
        printer.waits_as(number, "processing", strict=False)
    printer.move_on(row["id"], "done")
    printer.waits_as(number, "completed", strict=False)
    printer.row(7)


def check_held(printer):
    """A job that its sender holds is there after a kill, and comes once it is released."""
    number = printer.send(PS, "application/postscript", "ATTR keyword job-hold-until indefinite")
    record = os.path.join(printer.root, "server/printer/printers.conf")

    def is_written():
        with open(record, encoding="utf-8") as file:
            return any(f'id="{number}"' in line and 'state="4"' in line for line in file)
    wait_for("the record of the held job", is_written)
    printer.stop(kill=True)
    printer.start()
    printer.waits_as(number, "pending-held", strict=False)
    printer.row(7)
    printer.ask("Release-Job", number)
    row = printer.row(8)
    assert content(row) == PS
    printer.move_on(row["id"], "done")
    printer.waits_as(number, "completed", strict=False)


def main(program, share):
    if not shutil.which("ipptool"):
        print("ipptool is not installed")
        return 77
    root = tempfile.mkdtemp(prefix="rastrel-printer-")
    printer = None
    try:
        printer = Printer(program, share, root)
        for check in (check_documents, check_declared_type_is_not_trusted, check_pictures, check_cut_off, check_restart,
                      check_held):
            print(check.__name__)
            check(printer)
    finally:
        if printer:
            printer.stop(kill=True)
        shutil.rmtree(root)
    return 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
