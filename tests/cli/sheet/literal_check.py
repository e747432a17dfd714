#!/usr/bin/env python3
"""Holds `rastrel sheet --faithful` against a literal reading (literal_reader.py), to the byte.

usage: literal_check.py RASTREL [COUNT [SEED]]

Compares random spreadsheets with all that a host's files have, sound and not, and the spreadsheets
of the test corpus if that is there. Ends with 1 if a text differs."""

import os
import random
import subprocess
import sys
import tempfile
import zipfile

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from literal_reader import open_document_text, workbook_text  # noqa: E402
from office_check import corpus  # noqa: E402

OFFICE = "http://schemas.openxmlformats.org/officeDocument/2006/relationships"
PACKAGE = "http://schemas.openxmlformats.org/package/2006"
MAIN = "http://schemas.openxmlformats.org/spreadsheetml/2006/main"
CONTENT_TYPES = (
    f'<Types xmlns="{PACKAGE}/content-types"><Default Extension="xml" ContentType='
    '"application/xml"/><Override PartName="/xl/workbook.xml" ContentType="application/'
    'vnd.openxmlformats-officedocument.spreadsheetml.sheet.main+xml"/></Types>')

NUMBERS = ["1", "1.5", "-3", "  7 ", "1E5", "1.5e3", ".5", "-.25", "1.", "00012", "3,5", "\n5\n",
           "9223372036854775808", "-9999999999999999999", "0.1234565", "2.5e-7", "1e400",
           "1.0e400", "abc", "#N/A", "&amp;lt;", "12 3", "TRUE", "+4", "0x10", ""]
TEXTS = ["a", "Mill Inc.", "x,.", "&amp;amp;lt;", "&amp;quot;q&amp;quot;", "two\nlines",
         "two\r\nlines", "&#10;x", "tab\there", " pad ", "\u00fc\u20ac", "", "&lt;b>", "a&#13;b",
         "<![CDATA[ c ]]>", "x<!-- c -->y"]
PARAGRAPHS = TEXTS + [". ", "x<text:s/>y", "<text:span>p</text:span> <text:span>q</text:span>"]


class Maker:
    """Makes spreadsheets."""

    def __init__(self, seed):
        self.random = random.Random(seed)

    def pick(self, *choices):
        return self.random.choice(choices)

    def mostly(self, usual, *others):
        """The first in two of three cases."""
        return usual if self.random.random() < 2 / 3 else self.pick(*others)

    def times(self, most, make):
        return "".join(make() for _ in range(self.random.randint(0, most)))

    def cell(self, column, row):
        letter = chr(ord("A") + column % 26)
        reference = self.mostly(f"{letter}{row}", f"AA{row}", f"{letter.lower()}{row}", f"ZA{row}",
                                str(row), f"${letter}${row}", "")
        kind = self.pick("", "", "", "s", "s", "str", "b", "S", "inlineStr")
        number = self.pick(*NUMBERS)
        content = self.pick(
            f"<v>{number}</v>", f"<v>{self.random.randint(-1, 12)}</v>", "<v/>", "",
            f"<f>1+1</f><v>{number}</v>", f"<is><t>{self.pick(*TEXTS)}</t></is>",
            f"<v>{number}</v><v>9</v>", "<x><v>3</v></x>", "<x:v xmlns:x='u'>6</x:v>")
        attributes = f' r="{reference}"' if reference else ""
        attributes += f' t="{kind}"' if kind else ""
        return f"<c{attributes}>{content}</c>"

    def row(self, number):
        cells = ""
        column = 0
        for _ in range(self.random.randint(0, 9)):
            column += self.pick(0, 1, 1, 1, 1, 1, 2, 5)
            cells += self.cell(column, number)
            cells += self.mostly("", "<x/>", "<!-- c -->", " \n ", "text", "<?i?>", "<![CDATA[ ]]>")
        name = self.mostly("row", "row", "Row")
        return f"<{name} r='{number}' spans='1:3'>{cells}</{name}>"

    def sheet(self, most):
        rows = "".join(self.row(number + 1) for number in range(self.random.randint(0, most)))
        data = self.mostly(
            "<sheetData>{}</sheetData>", "<none>{}</none>",
            "<s:sheetData xmlns:s='u'>{}</s:sheetData>",
            "<sheetData>{}</sheetData><sheetData><row><c><v>1</v></c></row></sheetData>")
        root = self.mostly(
            "<worksheet>{}</worksheet>", "<other><worksheet>{}</worksheet><worksheet/></other>",
            "<other>{}</other>", "<worksheet>{}</worksheet",
            "<!DOCTYPE worksheet><worksheet>{}</worksheet>",
            "<p:worksheet xmlns:p='q'>{}</p:worksheet>")
        return root.format(data.format(rows))

    def string(self):
        return self.pick("<si><t>{}</t></si>", "<si><t>{}</t></si>", "<si><r><t>{}</t></r></si>",
                         "<si/>", "<x><t>{}</t></x>", "<si><t>{}</t><t>z</t></si>",
                         "<si><p:t xmlns:p='q'>{}</p:t></si>").format(self.pick(*TEXTS))

    def workbook(self, most_rows=7):
        count = self.random.randint(1, 4)
        strings = self.mostly("<sst>{}</sst>", "<tss>{}</tss>", "<sst>{}</sst")
        names = "".join(f'<sheet name="S{n}" sheetId="{n}" r:id="r{n}"/>' for n in range(count))
        links = "".join(f'<Relationship Id="r{n}" Type="{OFFICE}/worksheet" Target='
                        f'"worksheets/s{n}.xml"/>' for n in range(count))
        links += (f'<Relationship Id="s" Type="{OFFICE}/sharedStrings" '
                  'Target="sharedStrings.xml"/>')
        parts = {
            "[Content_Types].xml": CONTENT_TYPES,
            "_rels/.rels": f'<Relationships xmlns="{PACKAGE}/relationships"><Relationship Id="m" '
                           f'Type="{OFFICE}/officeDocument" Target="xl/workbook.xml"/>'
                           '</Relationships>',
            "xl/workbook.xml": f'<workbook xmlns="{MAIN}" xmlns:r="{OFFICE}"><sheets>{names}'
                               '</sheets></workbook>',
            "xl/_rels/workbook.xml.rels": f'<Relationships xmlns="{PACKAGE}/relationships">{links}'
                                          '</Relationships>',
            "xl/sharedStrings.xml": strings.format(self.times(10, self.string)),
        }
        parts.update({f"xl/worksheets/s{n}.xml": self.sheet(most_rows) for n in range(count)})
        return parts

    def paragraph(self):
        return f"<text:p>{self.pick(*PARAGRAPHS)}</text:p>"

    def open_cell(self):
        name = self.mostly("table-cell", "covered-table-cell")
        repeat = self.mostly("", *(f" table:number-columns-repeated='{n}'"
                                   for n in ("3", "0", "-2", "x", "", " 2", "2x", "40")),
                             " number-columns-repeated='7'")
        note = self.mostly("", f"<office:annotation>{self.paragraph()}</office:annotation>")
        return f"<table:{name}{repeat}>{self.times(3, self.paragraph)}{note}</table:{name}>"

    def open_row(self):
        row = self.mostly("<table:table-row>{}</table:table-row>",
                          "<table:table-row table:number-rows-repeated='3'>{}</table:table-row>",
                          "<table:table-header-rows><table:table-row>{}</table:table-row>"
                          "</table:table-header-rows>")
        return row.format(self.times(6, self.open_cell))

    def open_document(self):
        def table():
            return f"<table:table>{self.times(6, self.open_row)}</table:table>"

        def spreadsheet():
            name = self.mostly("spreadsheet", "text")
            return f"<office:{name}>{self.times(3, table)}</office:{name}>"

        body = self.mostly("<office:body>{}</office:body>",
                           "<x/><office:body>{}</office:body><office:body/>")
        return {"mimetype": "application/vnd.oasis.opendocument.spreadsheet",
                "content.xml": '<office:document-content xmlns:office="o" xmlns:table="t" '
                               f'xmlns:text="x">{body.format(self.times(2, spreadsheet))}'
                               '</office:document-content>'}


def literally(path):
    """What should be made of a file."""
    if not zipfile.is_zipfile(path):
        with open(path, "rb") as file:
            return open_document_text(file.read())
    with zipfile.ZipFile(path) as package:
        parts = {name: package.read(name) for name in package.namelist()}
    if "content.xml" in parts:
        return open_document_text(parts["content.xml"])
    return workbook_text(parts, "xl/sharedStrings.xml")


def actually(rastrel, path):
    run = subprocess.run([rastrel, "sheet", path, "--faithful"], stdout=subprocess.PIPE,
                         stderr=subprocess.PIPE, check=False)
    return (run.stdout if run.returncode == 0 else None), run.stderr


def differs(rastrel, path, name):
    """Whether a file's text is another than it should be; and if there is one."""
    expected = literally(path)
    found, said = actually(rastrel, path)
    if expected != found:
        print(f"{name}:\n  expected {expected!r}\n  found    {found!r}\n  said     {said!r}")
    return expected != found, expected is not None


def main():
    rastrel = os.path.abspath(sys.argv[1])
    count = int(sys.argv[2]) if len(sys.argv) > 2 else 400
    maker = Maker(int(sys.argv[3]) if len(sys.argv) > 3 else 20261121)
    bad = texts = 0
    with tempfile.TemporaryDirectory() as folder:
        os.environ["RASTREL_HOME"] = os.path.join(folder, "home")
        path = os.path.join(folder, "spreadsheet")
        for number in range(count):
            parts = maker.open_document()
            if number % 2:
                # Now and then one that is longer than the pieces that are read at a time.
                parts = maker.workbook(1000 if number % 100 == 1 else 7)
            with zipfile.ZipFile(path, "w") as package:
                for name, content in parts.items():
                    package.writestr(name, content)
            is_bad, is_text = differs(rastrel, path, f"spreadsheet {number}")
            bad += is_bad
            texts += is_text
        for path in corpus():
            # A billion cells are no text here, and a limit there.
            if os.path.basename(path) != "dos-huge-repeat.ods":
                bad += differs(rastrel, path, path)[0]
    print(f"{count} random spreadsheets, {texts} of them with a text; {bad} texts differ")
    # A maker of faults alone would show nothing.
    return 1 if bad or texts < count / 3 else 0


if __name__ == "__main__":
    sys.exit(main())
