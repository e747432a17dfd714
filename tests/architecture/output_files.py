"""Fails where a command makes or names a file by a call of its own.

Files that a command makes for its user go through OutputFile (rastrel/platform/os/output_file.h), which
makes them under a hidden name, has them on the disk before they are named, and replaces nothing that
the user did not name. ReplaceFile and DeliverFile use it or do the same. output_files.txt names the
files that make others, of working directories and the spool, with the reason; a line that stands for
nothing is a fault as well, so that the list only gets shorter.

usage: output_files.py ROOT [TABLE]
"""

import pathlib
import re
import sys

import sources
import words

FOLDER = ("cli",)
CALLS = re.compile(r"\b(ofstream|fstream|fopen|freopen|fdopen|creat|mkstemp|O_CREAT|O_TMPFILE|copy_file|"
                   r"CreateForWriting|OpenForWriting|CreateLog|RenameFile|RenameToNew|TryRenameTree|"
                   r"CopyFileOver|CopyNativeFile|CopyTreeInto|renameat2?|linkat|symlink)\b"
                   r"|(?:\bfs|\bfilesystem|(?<![\w>:])):{2}(rename|copy|link)\s*\(|\bstd::(rename)\s*\(")


def calls(text):
    """The names of the calls in a source that make or name files, comments and quoted texts left out."""
    code, _ = words.split(text)
    code = re.sub(r"^\s*#\s*include.*$", "", code, flags=re.M)
    return {name for match in CALLS.finditer(code) for name in match.groups() if name}


def check(root, allowed):
    faults, used = [], set()
    for file in sources.files(root, FOLDER, (".h", ".cpp", ".inc")):
        for name in sorted(calls((pathlib.Path(root) / file).read_text(encoding="utf-8"))):
            if (file, name) in allowed:
                used.add((file, name))
            else:
                faults.append(f"{file}: {name}: files for users are made by OutputFile")
    faults += [f"output_files.txt: {file} has no {name} any more" for file, name in
               sorted(allowed - used)]
    return faults


def main():
    root = sys.argv[1]
    table = sys.argv[2] if len(sys.argv) > 2 else pathlib.Path(__file__).with_suffix(".txt")
    allowed = {tuple(line.split()[:2]) for line in sources.table(table)}
    sources.finish(check(root, allowed), f"files for users are made by OutputFile, others in "
                   f"{len(allowed)} named places")


if __name__ == "__main__":
    main()
