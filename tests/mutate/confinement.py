"""Runs a changed program where it can hurt nothing.

A change may turn "end this child" into "end every process", or "remove this folder" into "remove
everything". So a program under test sees no processes but its own, can write below its scratch
directory and the build tree only, and has limits of memory, file size and time. All processes that it
leaves end with it.
"""

import os
import pathlib
import subprocess
import tempfile
import time

MEMORY_LIMIT = 8 << 20  # KiB of address space
FILE_LIMIT = 16 << 20  # blocks of 512 bytes: 8 GiB, since tests make files beyond 32 bits that hold nothing

# Mounts are made in this order, since the tree may itself lie below /tmp. The shell stays, as the first
# process of the namespace: orphans become its children, and not those of the program under test.
CONFINE = """set -eu
tree=$1; shift
mount --make-rprivate /
mount --bind "$tree" /mnt
cut -d' ' -f5 /proc/self/mountinfo | while read -r place; do
  case $place in
    "$tree" | "$tree"/* | /mnt | /proc | /proc/* | /dev | /dev/*) ;;
    *) mount -o remount,bind,ro "$place" 2>/dev/null || [ "$place" != / ] ;;
  esac
done
mount -t tmpfs -o size=2g,mode=1777 scratch /tmp
mkdir -p "$tree" /tmp/home
mount --bind /mnt "$tree"
umount /mnt
mount -t tmpfs -o size=512m,mode=1777 scratch /dev/shm
export HOME=/tmp/home TMPDIR=/tmp
if [ -n "${{RASTREL_CHANGE-}}" ] && [ -d "$tree/change" ]; then
  mount -t tmpfs -o size=1m,mode=755 scratch "$tree/change"
  echo "$RASTREL_CHANGE" >"$tree/change/number"
fi
cd "$tree"
ulimit -c 0
ulimit -v {memory}
ulimit -f {file}
status=0
"$@" || status=$?
exit "$status"
""".format(memory=MEMORY_LIMIT, file=FILE_LIMIT)


class Unavailable(Exception):
    """The system does not let this user make namespaces."""


class Ended:
    """How a program ended: its status, or None if its time was over; its output; seconds."""

    def __init__(self, status, output, seconds):
        self.status = status
        self.output = output
        self.seconds = seconds


def command_line(tree, command):
    namespaces = ["unshare", "--mount", "--pid", "--fork", "--mount-proc", "--kill-child"]
    if os.getuid() != 0:
        namespaces[1:1] = ["--user", "--map-root-user"]
    return [*namespaces, "sh", "-c", CONFINE, "sh", str(tree), *command]


def require(tree):
    """Raises Unavailable where programs can't be confined."""
    marker = f"/var/tmp/rastrel-mutate-{os.getpid()}"
    ended = run(tree, ["sh", "-c", f"ps ax | wc -l; touch {marker} 2>/dev/null || echo confined"], 30)
    if pathlib.Path(marker).exists():
        pathlib.Path(marker).unlink()
    if ended.status != 0 or "confined" not in ended.output:
        raise Unavailable(ended.output.strip())


def run(tree, command, limit, environment=None):
    """Runs it confined, for `limit` seconds at most."""
    started = time.monotonic()
    with tempfile.TemporaryFile() as output:
        child = subprocess.Popen(command_line(tree, command), stdin=subprocess.DEVNULL, stdout=output,
                                 stderr=subprocess.STDOUT, start_new_session=True,
                                 env=environment or dict(os.environ))
        try:
            status = child.wait(timeout=limit)
        except subprocess.TimeoutExpired:
            status = None
        finally:
            child.kill()  # its namespace, and all that is in it, ends with it
            child.wait()
        size = output.seek(0, os.SEEK_END)
        output.seek(max(0, size - (8 << 20)))
        text = output.read().decode("utf-8", "replace")
    return Ended(status, text, time.monotonic() - started)
