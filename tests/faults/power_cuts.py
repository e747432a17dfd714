"""The files on the disk if the power fails in the middle of a run.

The injector's journal says how a run changed its files, one change after the other. Replaying it up
to each change gives every state that the power may leave:

    whole   all changes up to there are on the disk
    torn    of the last change, a write, only the first half is
    lost    names are on the disk, but of each file only the bytes that were synced
"""

import copy
import dataclasses
import os
import pathlib
import shutil

import scenes
from wholeness import Tree, steady


@dataclasses.dataclass
class Node:
    """A file's content, and as much of it as survives."""

    data: bytes
    mode: int
    synced: bytes = b""


@dataclasses.dataclass(frozen=True)
class Cut:
    scene: scenes.Scene
    step: int  # how many changes were made
    kind: str
    change: str  # the last one

    def __str__(self):
        return f"{self.scene} cut {self.step} {self.kind}  [{self.change}]"


class Disk:
    """The files below a slot."""

    def __init__(self):
        self.nodes, self.names, self.links, self.folders = {}, {}, {}, set()

    @staticmethod
    def of(slot):
        disk = Disk()
        for folder, folders, files in os.walk(slot):
            linked = [name for name in folders if os.path.islink(os.path.join(folder, name))]
            disk.folders.update(os.path.join(folder, name) for name in folders if name not in linked)
            for name in files + linked:
                path = os.path.join(folder, name)
                if os.path.islink(path):
                    disk.links[path] = os.readlink(path)
                    continue
                status = os.stat(path)
                data = pathlib.Path(path).read_bytes()
                disk.nodes[status.st_ino] = Node(data, status.st_mode & 0o7777, data)
                disk.names[path] = status.st_ino
        return disk

    def fork(self):
        """A copy that shares no node; the bytes themselves are never changed in place."""
        disk = Disk()
        disk.nodes = {inode: copy.copy(node) for inode, node in self.nodes.items()}
        disk.names, disk.links = dict(self.names), dict(self.links)
        disk.folders = set(self.folders)
        return disk

    def lose_what_is_not_synced(self):
        for node in self.nodes.values():
            node.data = node.synced

    def write_to(self, target, slot, template):
        """Makes `target` hold this state; paths are those of `slot`."""
        if target.exists():
            shutil.rmtree(target)
        target.mkdir()
        for folder in sorted(self.folders):
            (target / os.path.relpath(folder, slot)).mkdir(parents=True, exist_ok=True)
        for path, inode in self.names.items():
            below = os.path.relpath(path, slot)
            node, earlier = self.nodes[inode], template / below
            if earlier.is_file() and earlier.read_bytes() == node.data:
                scenes.copy_or_link(str(earlier), str(target / below))
            else:
                (target / below).write_bytes(node.data)
                (target / below).chmod(node.mode)
        for path, link in self.links.items():
            (target / os.path.relpath(path, slot)).symlink_to(link)

    def digest(self, slot):
        """Equal for states with the same files."""
        return hash((frozenset((steady(os.path.relpath(path, slot)), self.nodes[inode].data)
                               for path, inode in self.names.items()), frozenset(self.folders)))

    def apply(self, change, data):
        kind, *words = change
        if kind in ("rename", "exchange"):
            self._move(words[0], words[1], kind == "exchange")
        elif kind == "create":
            self.nodes[words[1]] = Node(b"", int(words[2], 8))
            self.names[words[0]] = words[1]
        elif kind == "unnamed":
            self.nodes[words[0]] = Node(b"", int(words[1], 8))
        elif kind == "write":
            node = self.nodes[words[0]]
            before = node.data.ljust(words[1], b"\0")
            node.data = before[:words[1]] + data + before[words[1] + len(data):]
        elif kind == "length":
            node = self.nodes[words[0]]
            node.data = node.data[:words[1]].ljust(words[1], b"\0")
        elif kind == "mode":
            if words[0] in self.nodes:  # a directory's mode decides nothing here
                self.nodes[words[0]].mode = int(words[1], 8)
        elif kind == "name":
            self.names[words[0]] = words[1]
        elif kind == "unlink":
            if self.links.pop(words[0], None) is None:
                del self.names[words[0]]
        elif kind == "mkdir":
            self.folders.add(words[0])
        elif kind == "rmdir":
            self.folders.remove(words[0])
        elif kind == "symlink":
            self.links[words[0]] = words[1]
        elif kind == "sync":
            if words[0] in self.nodes:
                self.nodes[words[0]].synced = self.nodes[words[0]].data
        else:
            raise RuntimeError(f"a change that can't be replayed: {change}")

    def _move(self, old, new, exchange):
        def moved(path):
            if path == old or path.startswith(old + "/"):
                return new + path[len(old):]
            if exchange and (path == new or path.startswith(new + "/")):
                return old + path[len(new):]
            return path

        if not exchange:
            self.names.pop(new, None)
            self.links.pop(new, None)
        self.names = {moved(path): inode for path, inode in self.names.items()}
        self.links = {moved(path): link for path, link in self.links.items()}
        self.folders = {moved(path) for path in self.folders}


NUMBERS = {"create": (1,), "unnamed": (0,), "write": (0, 1, 2), "length": (0, 1), "mode": (0,),
           "name": (1,), "sync": (0,)}


def read_journal(file):
    """[(change, bytes)]; inodes, places and lengths as numbers."""
    changes = []
    with open(f"{file}.data", "rb") as data:
        for line in pathlib.Path(file).read_text(encoding="utf-8").splitlines():
            kind, *words = line.split("\t")
            for place in NUMBERS.get(kind, ()):
                words[place] = int(words[place])
            changes.append(((kind, *words), data.read(words[2]) if kind == "write" else b""))
    return changes


class Recording:
    """A run with its journal, replayed to its end to see that nothing escaped."""

    def __init__(self, subject, slot):
        self.subject, self.slot = subject, slot
        for _ in range(3):  # two tasks may be told in another order than they acted in
            scenes.fill_slot(slot, subject.template)
            self.start = Disk.of(slot)
            journal = slot.with_name(slot.name + ".journal")
            subject.inject(slot, slot.with_name(slot.name + ".report"),
                           ["--journal", str(journal), "--below", str(slot)])
            self.changes = read_journal(journal)
            if self._replays_to(Disk.of(slot)):
                return
        raise RuntimeError(f"{subject.scene}: replaying the journal does not lead to the files on the disk")

    def _replays_to(self, real):
        disk = self.start.fork()
        for change, data in self.changes:
            disk.apply(change, data)

        def seen(one):
            return ({path: one.nodes[inode].data for path, inode in one.names.items()},
                    one.links, one.folders)

        return seen(disk) == seen(real)

    def states(self):
        """(Cut, Disk) for each state that the power may leave, but for those that are alike."""
        disk, known = self.start.fork(), set()
        for step, (change, data) in enumerate(self.changes, 1):
            if change[0] == "write" and len(data) > 1:
                torn = disk.fork()
                torn.apply(change, data[:len(data) // 2])
                yield from self._new(step, "torn", change, torn, known)
            disk.apply(change, data)
            yield from self._new(step, "whole", change, disk.fork(), known)
            if change[0] in ("rename", "name", "exchange") or step == len(self.changes):
                lost = disk.fork()
                lost.lose_what_is_not_synced()
                yield from self._new(step, "lost", change, lost, known)

    def _new(self, step, kind, change, disk, known):
        digest = disk.digest(self.slot)
        if digest in known:
            return
        known.add(digest)
        words = " ".join(str(word).replace(str(self.slot) + "/", "") for word in change)
        yield Cut(self.subject.scene, step, kind, steady(words)), disk

    def judge(self, disk, slot):
        """The findings of one state."""
        disk.write_to(slot, self.slot, self.subject.template)
        found = list(self.subject.expected.after_cut(Tree.read(slot)))
        return list(dict.fromkeys(found + self.subject.second_run(slot)))
