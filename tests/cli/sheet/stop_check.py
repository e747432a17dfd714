#!/usr/bin/env python3
"""Sees that `rastrel sheet` unpacks no more of a package once nobody reads on.

usage: stop_check.py RASTREL

The packages hold a sheet or a document of PART bytes. No file may grow beyond a limit that is far above
the bytes that are wanted and below PART: what goes on unpacking fails there for another reason than the one
that is expected. Ends with 1 at a difference."""

import os
import resource
import signal
import subprocess
import sys
import tempfile
import time
import zipfile

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import workbooks  # noqa: E402

MEBIBYTE = 1024 * 1024
PART = 512 * MEBIBYTE
LIMIT = 448 * MEBIBYTE       # of a file whose reader refuses its first bytes
UNREAD_LIMIT = 64 * MEBIBYTE  # of a file that nobody begins to read
WAIT = 300                   # seconds for anything to happen


def filling(unit):
    """PART bytes that are a unit over and over, apart from some bytes that don't deflate well."""
    piece = 32 * 1024
    for _ in range(PART // piece):
        noise = os.urandom(150).hex().encode()
        yield noise if not unit else b"<!--" + noise + b"-->"
        yield (unit or b"x") * ((piece - 307) // len(unit or b"x"))


def write_large(path, name, head, unit, tail):
    """Puts a part of PART bytes in the place of one of a package."""
    small = path + ".small"
    os.rename(path, small)
    with zipfile.ZipFile(small) as source, zipfile.ZipFile(
            path, "w", zipfile.ZIP_DEFLATED, compresslevel=1) as target:
        for entry in source.infolist():
            if entry.filename != name:
                target.writestr(entry.filename, source.read(entry))
        with target.open(name, "w") as part:
            part.write(head)
            for piece in filling(unit):
                part.write(piece)
            part.write(tail)
    os.remove(small)
    return path


MAIN = f'<worksheet xmlns="{workbooks.MAIN}"><sheetData>'.encode()


def one_cell(folder):
    """A workbook with one cell of PART bytes, and a sheet after it."""
    path = os.path.join(folder, "cell.xlsx")
    rows = '<row r="1"><c r="A1"><v>1</v></c></row>'
    workbooks.write_workbook(path, [("Large", rows), ("After", rows)])
    return write_large(path, "xl/worksheets/sheet1.xml",
                       MAIN + b'<row r="1"><c r="A1" t="inlineStr"><is><t>', b"",
                       b"</t></is></c></row></sheetData></worksheet>")


def second_sheet(folder):
    """The same with the large sheet as the second of three: the import passes over it."""
    path = os.path.join(folder, "second.xlsx")
    rows = '<row r="1"><c r="A1"><v>1</v></c></row>'
    workbooks.write_workbook(path, [("Before", rows), ("Large", rows), ("After", rows)])
    return write_large(path, "xl/worksheets/sheet2.xml",
                       MAIN + b'<row r="1"><c r="A1" t="inlineStr"><is><t>', b"",
                       b"</t></is></c></row></sheetData></worksheet>")


def many_rows(folder):
    """A workbook of PART bytes with nothing wrong in it: rows of empty cells."""
    path = os.path.join(folder, "rows.xlsx")
    workbooks.write_workbook(path, [("S", "")])
    return write_large(path, "xl/worksheets/sheet1.xml", MAIN,
                       b"<row>" + b"<c/>" * 1000 + b"</row>", b"</sheetData></worksheet>")


def one_paragraph(folder):
    """An OpenDocument spreadsheet with one cell of PART bytes."""
    path = os.path.join(folder, "cell.ods")
    workbooks.write_open_document(path, [("S", "")])
    return write_large(path, "content.xml", (
        f"<office:document-content{workbooks.NAMES}><office:body><office:spreadsheet>"
        '<table:table table:name="S"><table:table-row><table:table-cell><text:p>').encode(), b"",
        b"</text:p></table:table-cell></table:table-row></table:table></office:spreadsheet>"
        b"</office:body></office:document-content>")


def run(rastrel, path, options, limit, closed=False):
    """Runs the command with a limit of the size of files; returns status, output and errors."""
    def restrict():
        signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
        resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit))

    output = subprocess.PIPE
    if closed:
        read, output = os.pipe()
        os.close(read)
    result = subprocess.run([rastrel, "sheet", path] + options, stdout=output, check=False,
                            stderr=subprocess.PIPE, preexec_fn=restrict, timeout=WAIT)
    if closed:
        os.close(output)
    return result.returncode, result.stdout, result.stderr.decode()


def check_refused(rastrel, folder):
    """A sheet that is refused at its first bytes is unpacked no further."""
    bad = 0
    for make in (one_cell, one_paragraph):
        path = make(folder)
        for options in ([], ["--as-shown"], ["--list"]):
            status, _, error = run(rastrel, path, options, LIMIT)
            if status != 3 or "EFBIG" in error or "too large" in error:
                print(f"{os.path.basename(path)} {options}: status {status}, {error!r}")
                bad += 1
        os.remove(path)
    path = second_sheet(folder)
    status, output, error = run(rastrel, path, [], LIMIT)
    # What follows a sheet that was passed over is on the last line of the one before.
    if status != 0 or "passed over: xl/worksheets/sheet2.xml" not in error or \
            output.decode("utf-8-sig") != "1\t1":
        print(f"second.xlsx: status {status}, {output!r}, {error!r}")
        bad += 1
    os.remove(path)
    return bad


def check_closed(rastrel, path):
    """Nothing is unpacked for an output that nobody reads."""
    bad = 0
    for options in ([], ["--as-shown"], ["--list"]):
        status, _, error = run(rastrel, path, options, UNREAD_LIMIT, closed=True)
        if status != 0 or error:
            print(f"closed output {options}: status {status}, {error!r}")
            bad += 1
    return bad


def check_interrupted(rastrel, path):
    """A signal in the middle of the unpacking ends it, and nothing is left."""
    jobs = os.path.join(os.environ["RASTREL_HOME"], "jobs")
    for options in ([], ["--as-shown"]):
        process = subprocess.Popen([rastrel, "sheet", path] + options, stdout=subprocess.DEVNULL,
                                   stderr=subprocess.PIPE)
        end = time.monotonic() + WAIT
        while not any(name.endswith("sheet1.xml") for _, _, names in os.walk(jobs)
                      for name in names):
            if process.poll() is not None or time.monotonic() > end:
                print(f"interrupted {options}: ended before it unpacked the sheet")
                return 1
        process.send_signal(signal.SIGINT)
        process.communicate(timeout=WAIT)
        if process.returncode != 4 or os.listdir(jobs):
            print(f"interrupted {options}: status {process.returncode}, left {os.listdir(jobs)}")
            return 1
    return 0


def main():
    rastrel = os.path.abspath(sys.argv[1])
    with tempfile.TemporaryDirectory() as folder:
        os.environ["RASTREL_HOME"] = os.path.join(folder, "home")
        bad = check_refused(rastrel, folder)
        path = many_rows(folder)
        bad += check_closed(rastrel, path)
        bad += check_interrupted(rastrel, path)
        left = os.listdir(os.path.join(folder, "home/jobs"))
        if left:
            print(f"left: {left}")
            bad += 1
    return 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main())
