"""The texts that the library makes of spreadsheets, by docs/formats/spreadsheet-text.md taken
literally, with a parser and arithmetic of Python's own. Whole documents are held, and nothing is
done for speed."""

import re
from xml.dom import Node, minidom
from xml.parsers.expat import ExpatError

BLANKS = " \t\r\n"             # of XML
WHITE_SPACE = " \t\n\v\f\r"    # of the text
ENTITIES = (("&quot;", '"'), ("&amp;", "&"), ("&lt;", "<"), ("&gt;", ">"), ("&apos;", "'"))


def load(data):
    """The document element without texts of blanks alone; None if it is refused."""
    try:
        document = minidom.parseString(data)
    except ExpatError:
        return None
    if document.doctype is not None:
        return None
    drop_blanks(document.documentElement)
    return document.documentElement


def drop_blanks(element):
    for child in list(element.childNodes):
        if child.nodeType == Node.TEXT_NODE and not child.data.strip(BLANKS):
            element.removeChild(child)
        elif child.nodeType == Node.ELEMENT_NODE:
            drop_blanks(child)


def is_named(node, name):
    return node.nodeType == Node.ELEMENT_NODE and node.localName == name


def named(element, name):
    return [child for child in element.childNodes if is_named(child, name)]


def local_attribute(element, name):
    attributes = element.attributes
    values = [attributes.item(at).value for at in range(attributes.length)
              if attributes.item(at).localName == name]
    return values[-1] if values else ""


def joined(node):
    if node.nodeType in (Node.TEXT_NODE, Node.CDATA_SECTION_NODE):
        return node.data
    return "".join(joined(child) for child in node.childNodes)


def text_of(node):
    return joined(node).strip(BLANKS)


def integer(text, bits):
    found = re.match(r"[ \t\n\v\f\r]*([+-]?[0-9]+)", text)
    value = int(found.group(1)) if found else 0
    return max(-(1 << bits - 1), min((1 << bits - 1) - 1, value))


def fraction(text):
    found = re.match(r"[ \t\n\v\f\r]*([+-]?([0-9]+\.?[0-9]*|\.[0-9]+)([eE][+-]?[0-9]+)?)", text)
    return float(found.group(1)) if found else 0.0


def without_entities(text):
    for entity, character in ENTITIES:
        text = text.replace(entity, character)
    return text


def as_file(text):
    """The bytes of the text's file; None if there is nothing to write."""
    text = text.strip(WHITE_SPACE)
    return ("\ufeff" + text.replace("\n", "\r\n")).encode("utf-8") if text else None


def shared_strings(data):
    root = load(data) if data is not None else None
    if root is None or root.localName != "sst":
        return []
    texts = [text_of(t) for si in named(root, "si") for t in named(si, "t")]
    return [text for text in texts if text]


def value_of(cell, strings):
    values = named(cell, "v")
    text = text_of(values[0]) if values else ""
    if not text:
        return ""
    if cell.getAttribute("t") == "s":
        index = integer(text, 32)
        text = strings[index] if 0 <= index < len(strings) else ""
    elif "." in text:
        text = f"{fraction(text):f}"
    else:
        text = str(integer(text, 64))
    return without_entities(text).replace("\n", "\b")


def row_text(row, strings):
    text = ""
    gaps = 0
    for place, cell in enumerate(row.childNodes):
        if not is_named(cell, "c"):
            continue
        while place + gaps < 26 and chr(ord("A") + place + gaps) not in cell.getAttribute("r"):
            gaps += 1
            text += "\t"
        text += value_of(cell, strings) + "\t"
    return text


def workbook_text(parts, strings_part):
    """The file of a package of an Excel workbook; None if there is none."""
    workbook = load(parts["xl/workbook.xml"])
    relationships = load(parts["xl/_rels/workbook.xml.rels"])
    strings = shared_strings(parts.get(strings_part))
    targets = {}
    for one in named(relationships, "Relationship"):
        targets.setdefault(one.getAttribute("Id"), one.getAttribute("Target"))
    text = ""
    has_succeeded = False
    for sheet in [one for sheets in named(workbook, "sheets") for one in named(sheets, "sheet")]:
        target = targets.get(local_attribute(sheet, "id"), "")
        root = load(parts.get("xl/" + target, b""))
        if root is not None and root.localName != "worksheet":
            root = next(iter(named(root, "worksheet")), None)
        data = named(root, "sheetData") if root is not None else []
        has_succeeded = has_succeeded or bool(data)
        if not has_succeeded:
            return None
        if data:
            for row in named(data[0], "row"):
                text = (text + row_text(row, strings)).rstrip(" ,.") + "\n"
            text = text.rstrip("\n")
    return as_file(text)


def open_document_cell(cell):
    repeat = cell.getAttribute("table:number-columns-repeated")
    texts = [text for text in map(text_of, named(cell, "p")) if text]
    return ((texts[-1] if texts else "") + "\t") * max(integer(repeat, 32) if repeat else 1, 0)


def open_document_text(data):
    """The file of an OpenDocument's content; None if there is none."""
    root = load(data)
    body = next(iter(named(root, "body")), None) if root is not None else None
    if body is None:
        return None
    text = ""
    for table in [table for sheet in named(body, "spreadsheet") for table in named(sheet, "table")]:
        for row in named(table, "table-row"):
            text += "".join(map(open_document_cell, named(row, "table-cell")))
            text = text.rstrip(" .") + "\n"
    return as_file(without_entities(text.strip(WHITE_SPACE)))
