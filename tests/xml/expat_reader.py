#!/usr/bin/env python3
"""Reads XML documents with expat, a parser that has nothing in common with the library's.

usage: expat_reader.py FOLDER

Answers the requests on standard input, one a line, about documents in FOLDER:

    dump NAME                 writes NAME.dump: all that the XML layer's functions should tell of
                              the document, as DumpOf of tests/support/xml_oracle.h writes it, or
                              "refused: " and a reason
    same NAME PLACE FRAGMENT  writes FRAGMENT.same: "same" if the document FRAGMENT is the element
                              of NAME that PLACE leads to (0.2 is the third child of the root's
                              first, comments and texts counted), or what differs
"""

import os
import sys
import xml.parsers.expat

BLANKS = " \t\r\n"
SEPARATOR = "\v"  # no document holds one
ENCODINGS = ("utf-8", "utf-16", "us-ascii", "iso-8859-1", "iso-8859-2", "iso-8859-5", "iso-8859-15",
             "windows-1250", "windows-1251", "windows-1252")


class Refused(Exception):
    """What the layer refuses by rules of its own."""


class Unknown(Exception):
    """What can't be compared."""


class Node:
    """An element, or with `kind` another node and its `text`."""

    def __init__(self, kind, text=""):
        self.kind = kind
        self.text = text
        self.name = ("", "")   # namespace and local name, or an instruction's target
        self.declared = []     # prefix and namespace
        self.attributes = []   # namespace and local name, value
        self.children = []


def split(name):
    """Namespace and local name of what expat tells."""
    parts = name.split(SEPARATOR)
    return ("", parts[0]) if len(parts) == 1 else (parts[0], parts[1])


class Reader:
    """Makes a tree of a document, without texts of blanks alone."""

    def __init__(self, data):
        self.top = Node("top")
        self.open = [self.top]
        self.declared = []
        self.pending = None  # a text that may go on
        parser = xml.parsers.expat.ParserCreate(namespace_separator=SEPARATOR)
        parser.namespace_prefixes = True
        parser.ordered_attributes = True
        parser.XmlDeclHandler = self.declaration
        parser.StartDoctypeDeclHandler = self.doctype
        parser.StartNamespaceDeclHandler = lambda prefix, uri: self.declared.append((prefix, uri))
        parser.StartElementHandler = self.start
        parser.EndElementHandler = self.end
        parser.CharacterDataHandler = self.characters
        parser.StartCdataSectionHandler = lambda: self.add(Node("cdata"), True)
        parser.EndCdataSectionHandler = self.flush
        parser.CommentHandler = lambda text: self.add(Node("comment", text))
        parser.ProcessingInstructionHandler = self.instruction
        parser.Parse(data, True)
        self.root = next(child for child in self.top.children if child.kind == "element")

    def declaration(self, version, encoding, _standalone):
        if version != "1.0":
            raise Refused("another version")
        if encoding is not None and encoding.lower() not in ENCODINGS:
            raise Unknown()

    def doctype(self, *_):
        raise Refused("a document type")

    def flush(self):
        node, self.pending = self.pending, None
        if node is not None and node.kind == "text" and node.text.strip(BLANKS) == "":
            self.open[-1].children.remove(node)

    def add(self, node, goes_on=False):
        self.flush()
        self.open[-1].children.append(node)
        self.pending = node if goes_on else None

    def characters(self, text):
        if self.pending is None:
            self.add(Node("text"), True)
        self.pending.text += text

    def instruction(self, target, data):
        node = Node("instruction", data)
        node.name = ("", target)
        self.add(node)

    def start(self, name, attributes):
        node = Node("element")
        node.name = split(name)
        node.declared, self.declared = self.declared, []
        node.attributes = [(split(attributes[at]), attributes[at + 1])
                           for at in range(0, len(attributes), 2)]
        self.add(node)
        self.open.append(node)

    def end(self, _):
        self.flush()
        self.open.pop()


def text_of(node):
    """The texts and sections below an element, or another node's content."""
    if node.kind != "element":
        return node.text
    return "".join(text_of(child) for child in node.children
                   if child.kind in ("element", "text", "cdata"))


def dump(node):
    told = ""
    if node.kind == "element":
        pairs = [(prefix or "xmlns", uri or "") for prefix, uri in node.declared]
        pairs += [(name[1], value) for name, value in node.attributes]
        told = node.name[1] + "".join(f" {name}=[{value}]" for name, value in pairs if value)
    return (f"({told}|{text_of(node).strip(BLANKS)}|" +
            "".join(dump(child) for child in node.children) + ")")


def difference(one, other):
    """What differs between two nodes, whatever prefixes they use and where they declare them."""
    for what in ("kind", "name", "text"):
        if getattr(one, what) != getattr(other, what):
            return f"{what}: {getattr(one, what)!r} and {getattr(other, what)!r}"
    if one.attributes != other.attributes:
        return f"attributes: {one.attributes!r} and {other.attributes!r}"
    if len(one.children) != len(other.children):
        return f"{one.name[1]}: {len(one.children)} and {len(other.children)} children"
    return next(filter(None, map(difference, one.children, other.children)), "")


def read(folder, name):
    with open(os.path.join(folder, name), "rb") as file:
        return Reader(file.read()).root


def answer(folder, words):
    try:
        if words[0] == "dump":
            return dump(read(folder, words[1]))
        node = read(folder, words[1])
        for place in filter(None, words[2].split(".")):
            node = node.children[int(place)]
        return difference(node, read(folder, words[3])) or "same"
    except Unknown:
        return "unknown"
    except (Refused, xml.parsers.expat.ExpatError) as error:
        return f"refused: {error}"


def main():
    for line in sys.stdin:
        words = line.rstrip("\n").split(" ")
        target = os.path.join(sys.argv[1], f"{words[-1]}.{words[0]}")
        with open(target, "w", encoding="utf-8", newline="") as file:
            file.write(answer(sys.argv[1], words))


if __name__ == "__main__":
    main()
