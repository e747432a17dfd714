#!/usr/bin/env python3
"""Measures the memory of `rastrel sheet` on large and hostile spreadsheets.

usage: memory_check.py RASTREL [FILE...]

Runs each form of the command on spreadsheets that it makes itself, on the files, and on those of
the test corpus if that is there. Ends with 1 if a run takes more memory or time than it may, or
ends otherwise than with a text or a reason."""

import glob
import multiprocessing
import os
import sys
import tempfile
import time

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from office_check import cell, corpus, shared, text  # noqa: E402
from workbooks import write_open_document, write_workbook  # noqa: E402

MEBIBYTE = 1024 * 1024
MOST = 256 * MEBIBYTE        # whatever the file
MOST_REFUSED = 64 * MEBIBYTE  # a file that is refused for what its XML is
MOST_SECONDS = 60


def make_spreadsheets(folder):
    """Makes the spreadsheets and returns (path, whether it is refused for its XML)."""
    paths = []

    def add(name, refused=False):
        paths.append((os.path.join(folder, name), refused))
        return paths[-1][0]

    rows = "".join(f'<row r="{row}">' + "".join(
        cell(f"{letter}{row}", str((row * 7 + index) % 1000), "s" if index % 2 else "")
        for index, letter in enumerate("ABCDEFGHIJ")) + "</row>" for row in range(1, 100_001))
    write_workbook(add("large.xlsx"), [("S", rows)], shared(*(text(f"text {n}") for n in range(1000))))
    write_workbook(add("strings.xlsx"), [("S", '<row r="1">' + cell("A1", "999999", "s") + "</row>")],
                   "".join(f"<si><t>{n:020}</t></si>" for n in range(1_000_000)))
    wide = "".join(f'<row r="{row}">' + "<c><v>1.5</v></c>" * 16_384 + "</row>"
                   for row in range(1, 60))
    write_workbook(add("wide.xlsx"), [("S", wide)])
    write_workbook(add("long-text.xlsx"), [("S", '<row r="1">' + cell("A1", "0", "s") + "</row>")],
                   shared(text("x" * 60_000_000)))
    write_workbook(add("many-formats.xlsx"), [("S", '<row r="1">' + cell("A1", "1") + "</row>")],
                   styles='<styleSheet xmlns="http://schemas.openxmlformats.org/spreadsheetml/2006/'
                   'main"><numFmts>' + "".join(
                       f'<numFmt numFmtId="{164 + n}" formatCode="0.00&quot;{n:0100}&quot;"/>'
                       for n in range(60_000)) + "</numFmts><cellXfs>" + "".join(
                           f'<xf numFmtId="{164 + n}"/>' for n in range(60_000)) +
                   "</cellXfs></styleSheet>")
    open_cell = '<table:table-cell office:value-type="string"{}><text:p>{}</text:p></table:table-cell>'
    write_open_document(add("large.ods"), [("S", "".join(
        "<table:table-row>" + "".join(open_cell.format("", (row + index) % 977)
                                      for index in range(10)) + "</table:table-row>"
        for row in range(100_000)))])
    repeat = ' table:number-columns-repeated="{}"'.format
    write_open_document(add("repeats.ods"), [("S", '<table:table-row table:number-rows-repeated='
                                              '"1000">' + open_cell.format(repeat(16_000), "cell") +
                                              "</table:table-row>")])
    write_open_document(add("billion.fods"), [("S", '<table:table-row table:number-rows-repeated='
                                               '"999999999">' +
                                               open_cell.format(repeat(999_999_999), "x") +
                                               "</table:table-row>")])
    write_open_document(add("deep.fods", True), [("S", "<table:table-row-group>" * 100_000)])
    write_open_document(add("attributes.fods", True), [("S", "<table:table-row " + " ".join(
        f'a{n}="x"' for n in range(100_000)) + "/>")])
    bomb = '<?xml version="1.0"?><!DOCTYPE a [<!ENTITY a "aaaaaaaaaaaaaaaa">' + "".join(
        f'<!ENTITY {chr(98 + n)} "{f"&{chr(97 + n)};" * 16}">' for n in range(8)) + "]><a>&i;</a>"
    with open(add("bomb.fods", True), "w", encoding="utf-8") as file:
        file.write(bomb)
    return paths


def run(command):
    """Runs it; returns its exit status, seconds, and bytes of memory at most."""
    begin = time.monotonic()
    process = os.fork()
    if process == 0:
        null = os.open(os.devnull, os.O_RDWR)
        os.dup2(null, 1)
        os.dup2(null, 2)
        os.execv(command[0], command)
    _, status, usage = os.wait4(process, 0)
    return os.waitstatus_to_exitcode(status), time.monotonic() - begin, usage.ru_maxrss * 1024


def main():
    rastrel = os.path.abspath(sys.argv[1])
    bad = 0
    with tempfile.TemporaryDirectory() as folder:
        os.environ["RASTREL_HOME"] = os.path.join(folder, "home")
        # A program that is started has its starter's memory counted: make them in another process.
        with multiprocessing.Pool(1) as pool:
            files = pool.apply(make_spreadsheets, (folder,))
        files += [(path, False) for path in sys.argv[2:] or corpus()]
        for path, refused in files:
            for form in ("--faithful", "--as-shown", "--list"):
                status, seconds, memory = run([rastrel, "sheet", path, form])
                most = MOST_REFUSED if refused else MOST
                good = status == 3 if refused else status in (0, 3)
                good = good and memory <= most and seconds <= MOST_SECONDS
                print(f"{'' if good else 'BAD '}{os.path.basename(path)} {form}: status {status}, "
                      f"{memory / MEBIBYTE:.0f} MiB, {seconds:.2f} s", flush=True)
                bad += 0 if good else 1
        left = glob.glob(os.path.join(folder, "home/jobs/*"))
        if left:
            print(f"left behind: {left}")
            bad += 1
    return 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main())
