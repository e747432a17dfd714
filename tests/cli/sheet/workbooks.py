"""Spreadsheets that the checks make by themselves, as packages of hand-written XML."""

import zipfile
from xml.sax.saxutils import escape, quoteattr

MAIN = "http://schemas.openxmlformats.org/spreadsheetml/2006/main"
STRICT_MAIN = "http://purl.oclc.org/ooxml/spreadsheetml/main"
RELATIONS = "http://schemas.openxmlformats.org/officeDocument/2006/relationships"
STRICT_RELATIONS = "http://purl.oclc.org/ooxml/officeDocument/relationships"
PACKAGE = "http://schemas.openxmlformats.org/package/2006"
TYPE = "application/vnd.openxmlformats-officedocument.spreadsheetml."


def write_workbook(path, sheets, strings="", styles="", date1904=False, strict=False,
                   absolute=False, prefix=""):
    """Writes a workbook. sheets is a list of (name, XML of its rows) or (name, rows, state)."""
    main = STRICT_MAIN if strict else MAIN
    relations = STRICT_RELATIONS if strict else RELATIONS
    p = prefix + ":" if prefix else ""
    declared = f'xmlns:{prefix}="{main}"' if prefix else f'xmlns="{main}"'
    folder = "/xl/" if absolute else ""
    parts = {}
    overrides = [("workbook.xml", "sheet.main"), ("styles.xml", "styles"),
                 ("sharedStrings.xml", "sharedStrings")]
    links = [("styles", "styles.xml"), ("sharedStrings", "sharedStrings.xml")]
    entries = ""
    for number, sheet in enumerate(sheets, 1):
        name, rows, state = (*sheet, "")[:3]
        overrides.append((f"worksheets/sheet{number}.xml", "worksheet"))
        links.append(("worksheet", f"worksheets/sheet{number}.xml"))
        shown = f' state="{state}"' if state else ""
        entries += (f"<{p}sheet name={quoteattr(name)} sheetId=\"{number}\"{shown}"
                    f" r:id=\"rId{number + 2}\"/>")
        parts[f"xl/worksheets/sheet{number}.xml"] = (
            f"<{p}worksheet {declared}><{p}sheetData>{rows}</{p}sheetData></{p}worksheet>")
    system = ' date1904="1"' if date1904 else ""
    parts["xl/workbook.xml"] = (
        f'<{p}workbook {declared} xmlns:r="{relations}"><{p}workbookPr{system}/>'
        f"<{p}sheets>{entries}</{p}sheets></{p}workbook>")
    parts["xl/_rels/workbook.xml.rels"] = (
        f'<Relationships xmlns="{PACKAGE}/relationships">' + "".join(
            f'<Relationship Id="rId{number}" Type="{relations}/{kind}" Target="{folder}{target}"/>'
            for number, (kind, target) in enumerate(links, 1)) + "</Relationships>")
    parts["xl/sharedStrings.xml"] = f"<{p}sst {declared}>{strings}</{p}sst>"
    parts["xl/styles.xml"] = (
        styles or f"<{p}styleSheet {declared}><{p}cellXfs><{p}xf numFmtId=\"0\"/></{p}cellXfs>"
        f"</{p}styleSheet>")
    parts["_rels/.rels"] = (
        f'<Relationships xmlns="{PACKAGE}/relationships"><Relationship Id="rId1"'
        f' Type="{relations}/officeDocument" Target="xl/workbook.xml"/></Relationships>')
    parts["[Content_Types].xml"] = (
        f'<Types xmlns="{PACKAGE}/content-types"><Default Extension="rels" ContentType='
        '"application/vnd.openxmlformats-package.relationships+xml"/>' + "".join(
            f'<Override PartName="/xl/{name}" ContentType="{TYPE}{kind}+xml"/>'
            for name, kind in overrides) + "</Types>")
    with zipfile.ZipFile(path, "w", zipfile.ZIP_DEFLATED) as package:
        for name, content in parts.items():
            package.writestr(name, '<?xml version="1.0" encoding="UTF-8"?>\n' + content)


def write_formats(path, cells, date1904=False):
    """Writes a workbook of one column: each cell is (format code or built-in number, value)."""
    codes = sorted({code for code, _ in cells if isinstance(code, str)})
    numbers = {code: 164 + index for index, code in enumerate(codes)}
    formats = []
    rows = ""
    for row, (code, value) in enumerate(cells, 1):
        if code not in formats:
            formats.append(code)
        style = formats.index(code) + 1
        if isinstance(value, str):
            rows += (f'<row r="{row}"><c r="A{row}" s="{style}" t="inlineStr"><is>'
                     f"<t>{escape(value)}</t></is></c></row>")
        else:
            rows += f'<row r="{row}"><c r="A{row}" s="{style}"><v>{value!r}</v></c></row>'
    styles = (f'<styleSheet xmlns="{MAIN}"><numFmts count="{len(codes)}">' + "".join(
        f'<numFmt numFmtId="{numbers[code]}" formatCode={quoteattr(code)}/>' for code in codes) +
              '</numFmts><fonts count="1"><font/></fonts><fills count="1"><fill/></fills>'
              '<borders count="1"><border/></borders><cellStyleXfs count="1">'
              '<xf numFmtId="0"/></cellStyleXfs><cellXfs><xf numFmtId="0"/>' + "".join(
                  f'<xf numFmtId="{numbers.get(code, code)}" applyNumberFormat="1"/>'
                  for code in formats) + "</cellXfs></styleSheet>")
    write_workbook(path, [("Formats", rows)], styles=styles, date1904=date1904)


NAMES = (' xmlns:office="urn:oasis:names:tc:opendocument:xmlns:office:1.0"'
         ' xmlns:table="urn:oasis:names:tc:opendocument:xmlns:table:1.0"'
         ' xmlns:text="urn:oasis:names:tc:opendocument:xmlns:text:1.0"'
         ' xmlns:style="urn:oasis:names:tc:opendocument:xmlns:style:1.0"'
         ' office:version="1.2"')
SPREADSHEET = "application/vnd.oasis.opendocument.spreadsheet"


def write_open_document(path, tables):
    """Writes an OpenDocument spreadsheet, flat if the path says so. tables: (name, XML of rows)."""
    body = "".join(f'<table:table table:name={quoteattr(name)}>{rows}</table:table>'
                   for name, rows in tables)
    body = f"<office:body><office:spreadsheet>{body}</office:spreadsheet></office:body>"
    head = '<?xml version="1.0" encoding="UTF-8"?>\n'
    if str(path).endswith(".fods"):
        with open(path, "w", encoding="utf-8") as file:
            file.write(f'{head}<office:document{NAMES} office:mimetype="{SPREADSHEET}">{body}'
                       "</office:document>\n")
        return
    manifest = ('<manifest:manifest xmlns:manifest="urn:oasis:names:tc:opendocument:xmlns:manifest'
                ':1.0"><manifest:file-entry manifest:full-path="/" manifest:media-type='
                f'"{SPREADSHEET}"/><manifest:file-entry manifest:full-path="content.xml" '
                'manifest:media-type="text/xml"/></manifest:manifest>')
    with zipfile.ZipFile(path, "w", zipfile.ZIP_DEFLATED) as package:
        package.writestr(zipfile.ZipInfo("mimetype"), SPREADSHEET)
        package.writestr("META-INF/manifest.xml", head + manifest)
        package.writestr(
            "content.xml",
            f"{head}<office:document-content{NAMES}>{body}</office:document-content>\n")
