#!/usr/bin/env python3
"""Holds `rastrel sheet --as-shown` against LibreOffice's own text export of the same files.

usage: office_check.py RASTREL [FILE...]

Compares workbooks that it makes itself, the files, and the spreadsheets of the test corpus if that
is there. Ends with 1 if a cell differs that no line
of KNOWN explains, and with 77 (skipped) if soffice is not installed."""

import csv
import glob
import json
import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys
import tempfile
from xml.sax.saxutils import escape

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from workbooks import write_formats, write_open_document, write_workbook  # noqa: E402

# Tab, quotes, UTF-8, from the first line on, cells as they are shown, every sheet.
FILTER = "csv:Text - txt - csv (StarCalc):9,34,76,1,,0,false,true,true,false,false,-1"

NUMBERS = [0, 1, -1, 1234.567, -1234.567, 0.5, -0.001, 1234567.891, 0.126]
DATES = [0, 1, 0.75, 44197.123456789, 44197.9999999, 1.5, 59, 61, 2958465.5]
NUMBER_CODES = [
    "General", "0", "0.00", "#,##0", "#,##0.00", "0%", "0.00%", "0.00E+00", "##0.0E+0", "# ?/?",
    "# ??/??", "#", "#.##", "?0.0?", "000-00-0000", "#,##0,", '0.0,,"M"', "0.###", "00000",
    '_-* #,##0.00_-;-* #,##0.00_-;_-* "-"??_-;_-@_-', "$#,##0.00;[Red]-$#,##0.00",
    "[$€-407] #,##0.00", '[>=1000]0.0,"K";[<0]"neg" 0;0.00', "0;;", '0;-0;"zero"', '"x"',
    'General" kg"', "# ?/8", "?/?", "#,##0.00_);(#,##0.00)", '0 "a""b"', "\\a0", "0E+0",
    "0.0e-00", "+0;-0;0", ";;;", "@", "[Red]General", "[Color 3]0.0", "0.00 €", "# ##0", ".00",
    '[<=100]0;[>1000]0.0;"mid" 0', '[=1]"one";[=2]"two";0', "0 %",
]
DATE_CODES = [
    "yyyy-mm-dd", "m/d/yy h:mm", "[h]:mm", "[h]:mm:ss", "[mm]:ss", "h:mm AM/PM", "hh:mm:ss.000",
    "d mmm yyyy", "dddd, mmmm dd, yyyy", "mmmmm", "ddd", "yy", "[$-409]mmmm d, yyyy;@", "mm:ss.0",
    'yyyy"年"m"月"', 'h"h"m"m"s', "yyyy\\-mm\\-dd\\Thh:mm:ss", "ss.00", "m", "mm", "h", "s",
    "General;yyyy", "ddmmyy", "mmm/yyyy", "q", "qq", "yyyy-q", "h:mm a/p",
    "[$-F800]dddd, mmmm dd, yyyy",
]
# Numbers without a format, about the places where an exponent comes.
GENERALS = [1e15, 1234567890123456, -1234567890123456, 9007199254740991, 1e16, 0.0001234567891234,
            1.23456789123e-5, 1.234567891234e-5, 1.2345678e-9, 1.23456789e-9, 1e-10]
BUILT_IN = list(range(0, 23)) + list(range(37, 50))

# Cells that differ for a reason: (file, regular expression of ours, of theirs, the reason).
KNOWN = [
    (r".*", r"(-?[\d.]+E[+-])(\d\d)", r"\g<1>0\2", "exponents of two digits are not filled to three"),
    (r".*", r"\d+:[\d:]+|\d+", r"#FMT", "time passed that is too long for the other program"),
    (r"structures.*|strict.*|absolute.*|prefixed.*", r"A(_x0041_)", r"_x0041_\1",
     "the standard has every escape of a character read, not only some"),
    (r"tables.*|flat.*", "a   b\tc\nd", "a   bcd", "the other program drops tabs and line breaks"),
    (r"tables.*|flat.*", "s t u v", "s t  u\n v", "the standard makes one blank of several"),
    (r".*[.]f?ods", r"(.*\S)", r"\1 ", "the standard takes blanks at a paragraph's end off"),
    (r"crlf[.]fods", r"(.*)\n(.*)", "\\1\r\n\\2", "a carriage return is a blank there"),
    (r"lo-covered[.]ods", r"", r"a3", "a covered cell is not seen"),
]


def is_known(name, ours, theirs):
    """Whether a difference is one of KNOWN."""
    for file, own, other, _ in KNOWN:
        match = re.fullmatch(own, ours)
        if re.fullmatch(file, name) and match and match.expand(other) == theirs:
            return True
    return False


def shared(*items):
    return "".join(f"<si>{item}</si>" for item in items)


def text(words):
    return f'<t xml:space="preserve">{escape(words)}</t>'


def cell(reference, value, kind="", style=0):
    shown = f' t="{kind}"' if kind else ""
    return f'<c r="{reference}" s="{style}"{shown}><v>{escape(value)}</v></c>'


def structures():
    """Rows of a workbook with what cells can be besides numbers, and its shared strings."""
    strings = shared(text("plain"), "<r>" + text("rich ") + "</r><r><rPr><b/></rPr>" +
                     text("text") + "</r>", "<t/>", text(" blanks  kept "),
                     text("課") + "<rPh sb=\"0\" eb=\"1\">" + text("か") + "</rPh>",
                     text("two\nlines"), text("a\ttab"), text("_x0041__x005F_x0041_"),
                     text('"quotes" \\ & <'))
    rows = ("<row r=\"1\">" + "".join(
        cell(f"{letter}1", str(index), "s") for index, letter in enumerate("ABCDEFGHI")) + "</row>"
            '<row r="2">' + cell("A2", "1", "b") + cell("B2", "0", "b") + cell("C2", "#DIV/0!", "e") +
            '<c r="D2" t="str"><f>"a"&amp;"b"</f><v>ab</v></c>'
            '<c r="E2"><f>1+1</f><v>2</v></c>'
            '<c r="F2" t="inlineStr"><is>' + text("inline") + "</is></c>"
            '<c r="G2" t="inlineStr"><is><r>' + text("in") + "</r><r>" + text("runs") +
            "</r></is></c></row>"
            '<row r="5">' + cell("Z5", "26") + cell("AA5", "27") + cell("ABC5", "731") + "</row>"
            "<row><c><v>1</v></c><c><v>2</v></c></row>")
    return rows, strings


def make_workbooks(folder):
    """Makes the workbooks of the check and returns their paths."""
    paths = []

    def add(name):
        paths.append(os.path.join(folder, name))
        return paths[-1]

    cells = [(code, value) for code in NUMBER_CODES for value in NUMBERS]
    cells += [(code, value) for code in DATE_CODES for value in DATES]
    cells += [(code, value) for code in BUILT_IN for value in (0.75, 44197.123456789, -3.5)]
    cells += [("General", value) for value in GENERALS]
    cells += [("0%%", value) for value in NUMBERS]
    cells += [(code, value) for code in ("[>1000]0", "[<1]0.0", "[=1]\"one\"") for value in NUMBERS
              if value >= 0]
    cells += [(code, "text") for code in ("@", "General", "0", '"t:"@', '0;0;0;"T "@" end"')]
    write_formats(add("formats.xlsx"), cells)
    write_formats(add("formats-1904.xlsx"), [(code, value) for code in DATE_CODES
                                             for value in DATES if value < 2950000], date1904=True)
    rows, strings = structures()
    sheets = [("First & <only>", rows), ("Second", '<row r="1">' + cell("A1", "2") + "</row>"),
              ("Hidden", '<row r="1">' + cell("A1", "3") + "</row>", "hidden")]
    write_workbook(add("structures.xlsx"), sheets, strings)
    write_workbook(add("strict.xlsx"), sheets, strings, strict=True)
    write_workbook(add("absolute.xlsx"), sheets, strings, absolute=True)
    prefixed = re.sub(r"<(/?)([a-zA-Z])", r"<\1x:\2", rows)
    write_workbook(add("prefixed.xlsx"), [("P", prefixed)],
                   re.sub(r"<(/?)([a-zA-Z])", r"<\1x:\2", strings), prefix="x")

    p = "<text:p>{}</text:p>".format
    c = ('<table:table-cell office:value-type="string"{}>{}</table:table-cell>').format
    repeat = ' table:number-columns-repeated="{}"'.format
    tables = [
        ("One", "<table:table-row>" + c("", p("a")) + c(repeat(3), p("b")) + c("", "") + c("", p("c")) +
         '</table:table-row><table:table-row table:number-rows-repeated="3">' + c("", p("d")) +
         "</table:table-row><table:table-row table:number-rows-repeated=\"2\">" +
         f'<table:table-cell{repeat(1000)}/></table:table-row>' +
         "<table:table-header-rows><table:table-row>" + c("", p("head")) +
         "</table:table-row></table:table-header-rows><table:table-row-group><table:table-row>" +
         c("", p("group")) + "</table:table-row></table:table-row-group>"),
        ("Two words", "<table:table-row>" + c("", p("one") + p("two")) +
         c("", p('a<text:s text:c="3"/>b<text:tab/>c<text:line-break/>d')) +
         c("", p("<text:span>s</text:span> <text:span>t</text:span>  u\n v")) +
         c("", p("note") + "<office:annotation>" + p("hidden") + "</office:annotation>") +
         "</table:table-row><table:table-row>" +
         '<table:table-cell table:number-columns-spanned="2" office:value-type="string">' +
         p("wide") + "</table:table-cell><table:covered-table-cell/>" + c("", p("next")) +
         "</table:table-row>"),
    ]
    write_open_document(add("tables.ods"), tables)
    write_open_document(add("flat.fods"), tables)
    return paths


def trimmed(rows):
    """Rows without what is empty at their ends and at the end."""
    rows = [list(row) for row in rows]
    for row in rows:
        while row and row[-1] == "":
            row.pop()
    while rows and not rows[-1]:
        rows.pop()
    return rows


def ours(rastrel, path):
    """Rows by sheet as the command shows them; None if it refuses the file."""
    result = subprocess.run([rastrel, "sheet", path, "--as-shown", "--json"],
                            stdout=subprocess.PIPE, check=False)
    if result.returncode != 0:
        return None, json.loads(result.stdout.splitlines()[-1])["text"]
    sheets = {}
    for line in result.stdout.splitlines():
        event = json.loads(line)
        if event["event"] == "sheet":
            sheets[event["text"]] = []
        if event["event"] == "row":
            rows = sheets[event["sheet"]]
            rows += [[]] * (event["row"] - 1 - len(rows))
            rows.append(event["cells"])
    return {name: trimmed(rows) for name, rows in sheets.items()}, ""


def theirs(folder, path):
    """Rows by sheet as LibreOffice exports them."""
    out = os.path.join(folder, "out")
    shutil.rmtree(out, ignore_errors=True)
    office = subprocess.Popen(
        ["soffice", "--headless", f"-env:UserInstallation={pathlib.Path(folder).absolute().as_uri()}/profile", "--convert-to",
         FILTER, "--outdir", out, path], start_new_session=True, stdout=subprocess.DEVNULL,
        # Its numbers and dates are those of its locale.
        stderr=subprocess.DEVNULL, env={**os.environ, "LC_ALL": "C.UTF-8"})
    try:
        office.wait(120)
    except subprocess.TimeoutExpired:
        # The program that is started starts the one that works.
        os.killpg(office.pid, signal.SIGKILL)
        office.wait()
    sheets = {}
    stem = os.path.splitext(os.path.basename(path))[0]
    for name in sorted(glob.glob(os.path.join(glob.escape(out), "*.csv"))):
        sheet = os.path.basename(name)[len(stem) + 1:-len(".csv")]
        with open(name, encoding="utf-8", newline="") as file:
            sheets[sheet] = trimmed(csv.reader(file, delimiter="\t"))
    return sheets


def compare(name, own, other):
    """Prints the cells that differ; returns how many there are, known and unknown."""
    cells = known = unknown = 0
    by_name = {re.sub(r"[^\w]", "_", sheet): rows for sheet, rows in own.items()}
    for sheet, rows in other.items():
        mine = by_name.get(re.sub(r"[^\w]", "_", sheet))
        if mine is None:
            print(f"{name}: sheet {sheet!r} is missing")
            unknown += 1
            continue
        for row in range(max(len(rows), len(mine))):
            left = mine[row] if row < len(mine) else []
            right = rows[row] if row < len(rows) else []
            for column in range(max(len(left), len(right))):
                a = left[column] if column < len(left) else ""
                b = right[column] if column < len(right) else ""
                cells += 1
                if a == b:
                    continue
                if is_known(name, a, b):
                    known += 1
                    continue
                unknown += 1
                if unknown <= 20:
                    print(f"{name}: {sheet} row {row + 1} column {column + 1}: {a!r}, not {b!r}")
    print(f"{name}: {cells} cells, {known} differ as they should, {unknown} otherwise", flush=True)
    return unknown


def corpus():
    """Spreadsheets of other programs, where there are some."""
    root = os.path.abspath(os.path.join(os.path.dirname(__file__), "../../.."))
    top = os.environ.get("RASTREL_TEST_CORPUS") or os.path.join(root, "../shared/corpus")
    return [path for pattern in ("xlsx/*.xlsx", "ods/*ods")
            for path in sorted(glob.glob(os.path.join(glob.escape(top), pattern)))]


def main():
    if shutil.which("soffice") is None:
        print("skipped: soffice is not installed")
        return 77
    rastrel = sys.argv[1]
    bad = 0
    others = sys.argv[2:] or corpus()
    with tempfile.TemporaryDirectory() as folder:
        os.environ.setdefault("RASTREL_HOME", os.path.join(folder, "home"))
        for path in make_workbooks(folder) + others:
            name = os.path.basename(path)
            own, why = ours(rastrel, path)
            if own is None:
                refused = path in others
                print(f"{name}: refused: {why}")
                bad += 0 if refused else 1
                continue
            other = theirs(folder, path)
            if not other:
                print(f"{name}: LibreOffice makes nothing of it")
                bad += 1
                continue
            bad += compare(name, own, other)
    return 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main())
