"""Prints figures of a checkout, old or new: how large its folders and functions are, how they include
each other, how much is commented, and how many ways there are to say failure. No test: a person
compares two states with it.

Functions are measured with universal-ctags if it is installed, else by counting braces.

usage: house_figures.py ROOT
"""

import collections
import json
import pathlib
import re
import shutil
import subprocess
import sys

import sources

FAILURE_TYPE = re.compile(r"^\s*(?:template\s*<[^>]*>\s*)?(?:struct|class)\s+(?:\[\[\w+\]\]\s*)?"
                          r"(\w*(?:Failure|Outcome|Attempt|Problem|Expected|ExpectedOr))\s*"
                          r"(?:<[^>]*>\s*)?(?:final\s*)?[{:]", re.M)
FAILURE_ALIAS = re.compile(r"^\s*using\s+(\w*(?:Failure|Outcome|Attempt|Problem|Expected))\s*=", re.M)
RESULT = re.compile(r"std::(?:variant|optional)\s*<[^;{}()]*?\b\w*(?:Failure|Problem|Outcome)\b")
CONTROL = {"if", "for", "while", "switch", "catch", "return", "else", "do"}


def read(root, file):
    return (root / file).read_text(encoding="utf-8")


def ctags(root, files):
    """The tags of the files as records, or None without universal-ctags."""
    if not shutil.which("ctags"):
        return None
    ended = subprocess.run(["ctags", "--output-format=json", "--fields=+neS", "--c++-kinds=fpcsm",
                            "--language-force=C++", "-f", "-", "-L", "-"], input="\n".join(files),
                           cwd=root, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True,
                           check=False)
    if ended.returncode:
        return None
    return [json.loads(line) for line in ended.stdout.splitlines() if line.startswith("{")]


def lengths_by_braces(text):
    """(name, lines) of each body whose brace follows a closing parenthesis."""
    text = re.sub(r'//[^\n]*|"(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\\n])\'', " ", text)
    pattern = r"([\w:~]+)\s*\([^;{}]*\)[\w\s]*\{"
    for match in re.finditer(pattern, text):
        if match.group(1) in CONTROL:
            continue
        depth, index = 1, match.end()
        while depth and index < len(text):
            depth += {"{": 1, "}": -1}.get(text[index], 0)
            index += 1
        yield match.group(1), text.count("\n", match.start(), index) + 1


def functions(root, files, tags):
    """(lines, name, file) of each function, longest first."""
    if tags is None:
        found = [(lines, name, file) for file in files
                 for name, lines in lengths_by_braces(read(root, file))]
    else:
        found = [(tag["end"] - tag["line"] + 1, tag["name"], tag["path"]) for tag in tags
                 if tag["kind"] == "function" and "end" in tag]
    return sorted(found, reverse=True)


def largest_classes(tags):
    """(members and methods, name) of the largest classes."""
    names = collections.defaultdict(set)
    for tag in tags or []:
        if tag.get("scopeKind") in ("class", "struct") and tag["kind"] in (
                "member", "prototype", "function"):
            names[tag["scope"]].add((tag["name"], tag.get("signature")))
    return sorted(((len(members), name) for name, members in names.items()), reverse=True)[:3]


def comment_share(root, files):
    comments = lines = 0
    for file in files:
        for line in read(root, file).splitlines():
            lines += bool(line.strip())
            comments += line.lstrip().startswith(("//", "/*", "* "))
    return f"{100 * comments / max(lines, 1):.1f} % of {lines} lines"


def print_folders(root, files):
    count = collections.Counter(pathlib.PurePosixPath(file).parent.as_posix() for file in files)
    between, inside = collections.Counter(), 0
    for file in files:
        own = pathlib.PurePosixPath(file).parent.as_posix()
        for _, quoted, name in sources.includes(root, file):
            other = pathlib.PurePosixPath(name).parent.as_posix()
            if name == "rastrel/export.h":
                continue
            if quoted and other in count and other != own:
                between[own, other] += 1
            inside += quoted and other == own
    circles = sum((b, a) in between for a, b in between) // 2
    print(f"folders: {len(count)}, files: {len(files)}")
    for folder, number in sorted(count.items()):
        print(f"  {number:4} {folder}")
    print(f"arrows between folders: {len(between)}, by {sum(between.values())} includes; "
          f"includes inside folders: {inside}; folders that include each other: {circles} pairs")


def print_functions(found):
    lines = sorted(length for length, _, _ in found)
    total = max(len(lines), 1)
    print(f"functions: {len(lines)}, median {lines[len(lines) // 2]} lines, 90 % up to "
          f"{lines[len(lines) * 9 // 10]}, longest {lines[-1]}")
    for limit in (25, 40, 60):
        over = sum(length > limit for length in lines)
        print(f"  over {limit}: {over} ({100 * over / total:.1f} %)")
    for length, name, file in found[:3]:
        print(f"  {length:4} {name}, {file}")


def print_failures(root, files):
    types, results = [], 0
    for file in files:
        text = re.sub(r"//[^\n]*", "", read(root, file))
        types += [f"{name} ({file})" for pattern in (FAILURE_TYPE, FAILURE_ALIAS)
                  for name in dict.fromkeys(pattern.findall(text))]
        results += len(RESULT.findall(text))
    print(f"types that say failure: {len(types)}; variant or optional of one: {results}")
    for name in types:
        print(f"  {name}")


def main():
    root = pathlib.Path(sys.argv[1]).resolve()
    files = sources.files(root, sources.PRODUCT)
    tags = ctags(root, files)
    print("functions by " + ("ctags" if tags is not None else "counting braces"))
    print_folders(root, files)
    print_functions(functions(root, files, tags))
    for number, name in largest_classes(tags):
        print(f"class of {number} members and methods: {name}")
    public = sources.public_headers(root)
    print(f"comments: public headers {comment_share(root, public)}; "
          f"sources {comment_share(root, [file for file in files if file not in public])}")
    sizes = sorted(((len(read(root, file).splitlines()), file) for file in files), reverse=True)
    for lines, file in sizes[:3]:
        print(f"file of {lines} lines: {file}")
    print_failures(root, files)


if __name__ == "__main__":
    main()
