"""IPP by hand, so that a request can be as wrong as it likes."""

import re
import socket
import struct

OPERATION, JOB, END = 0x01, 0x02, 0x03
KINDS = {"integer": 0x21, "boolean": 0x22, "enum": 0x23, "text": 0x41, "name": 0x42, "keyword": 0x44, "uri": 0x45,
         "charset": 0x47, "language": 0x48, "type": 0x49, "begin": 0x34, "end": 0x37, "member": 0x4A}
PRINT_JOB = 0x0002


def attribute(kind, name, value):
    value = struct.pack(">i", value) if isinstance(value, int) else value
    return struct.pack(">BH", KINDS[kind], len(name)) + name + struct.pack(">H", len(value)) + value


def request(uri, operation=PRINT_JOB, more=b"", job=b"", user=b"ada", name=b"sign", form=b"application/pdf"):
    return (struct.pack(">BBHIB", 2, 0, operation, 1, OPERATION) + attribute("charset", b"attributes-charset", b"utf-8")
            + attribute("language", b"attributes-natural-language", b"en") + attribute("uri", b"printer-uri", uri)
            + attribute("name", b"requesting-user-name", user) + attribute("name", b"job-name", name)
            + attribute("type", b"document-format", form) + more + (bytes([JOB]) + job if job else b"") + bytes([END]))


def connect(port):
    return socket.create_connection(("127.0.0.1", port), 30)


def head(length, path=b"/ipp/print/Sign"):
    return (b"POST " + path + b" HTTP/1.1\r\nHost: localhost\r\nContent-Type: application/ipp\r\nContent-Length: "
            + str(length).encode() + b"\r\n\r\n")


def post(port, *pieces, length=None, limit=120):
    """The status of the answer: that of IPP if there is one, else of HTTP; -1 if the connection was closed."""
    total = sum(len(piece) for piece in pieces) if length is None else length
    try:
        with connect(port) as line:
            line.settimeout(limit)
            line.sendall(head(total))
            for piece in pieces:
                line.sendall(piece)
            if length is not None:
                line.shutdown(socket.SHUT_WR)
            answer = b""
            while b"\r\n\r\n" not in answer or len(answer.split(b"\r\n\r\n", 1)[1]) < 8:
                piece = line.recv(65536)
                if not piece:
                    break
                answer += piece
    except (ConnectionError, BrokenPipeError):
        return -1
    if not answer.startswith(b"HTTP/1."):
        return -1
    content = answer.split(b"\r\n\r\n", 1)
    status = int(re.match(rb"HTTP/1\.\d (\d+)", answer).group(1))
    if status != 200 or len(content) < 2 or len(content[1]) < 8:
        return status
    body = content[1]
    if b"chunked" in content[0].lower():
        body = body.split(b"\r\n", 1)[1]
    return struct.unpack(">H", body[2:4])[0]
