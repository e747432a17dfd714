"""Fails where a command makes or names a file by a call of its own.

Files that a command makes for its user go through OutputFile (rastrel/platform/os/output_file.h), which
makes them under a hidden name, has them on the disk before they are named, and replaces nothing that
the user did not name. ReplaceFile and DeliverFile use it or do the same. output_files.txt names the
files that make others, of working directories and the spool, with the reason; a line that stands for
nothing is a fault as well, so that the list only gets shorter.

usage: output_files.py ROOT [TABLE]
"""

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
    return sources.named_calls(root, FOLDER, (), calls, allowed, "output_files.txt",
                               ": files for users are made by OutputFile")


def main():
    places, faults = sources.named_places(sys.argv, check)
    sources.finish(faults, f"files for users are made by OutputFile, others in {len(places)} named places")


if __name__ == "__main__":
    main()
