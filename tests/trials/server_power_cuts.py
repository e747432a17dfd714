#!/usr/bin/env python3
"""Cuts the power in the middle of a server's run, after each change of a file.

usage: server_power_cuts.py RASTREL [COUNT [SEED]]

A run is recorded: two jobs are added, the server interprets them and delivers one to files and the other to a folder, and
stops. Of all the states that a power cut could have left (each change whole; the last write torn; what was not synced lost),
COUNT (200; 0 takes all) are made again, one at a time, the database's files among them, and a server is started in each.
Every job whose command had said that it has it has to be there and to end as done, with its file whole under its one name,
and nothing else beside it."""

import os
import pathlib
import random
import shutil
import subprocess
import sys
import tempfile

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "faults"))

import power_cuts  # noqa: E402
from support.shop import Shop  # noqa: E402

PAGE = """%!PS-Adobe-3.0
%%BoundingBox: 0 0 40 30
%%Pages: 1
<< /PageSize [40 30] >> setpagedevice
%%Page: 1 1
0.2 setgray 0 0 20 30 rectfill showpage
%%EOF
"""
DEVICES = "[*]\nkind = file\nformat = tiff\npattern = {output}/{job}-{page}.tif\n"
JOBS = {"first": "Files", "second": "Folder"}
# A mark says that the command before it has reported its job. The last line waits for both.
SCRIPT = """set -e
cd "$1"
for job in first:Files second:Folder; do
  "$2" jobs add page.ps --mode Screen/preview --title ${job%:*} --device ${job#*:} > tmp/number
  : > added-${job%:*}
done
"$2" serve 2> tmp/log &
tries=0
until [ "$("$2" jobs list --state done | wc -l)" -eq 3 ]; do
  tries=$((tries + 1)); [ $tries -lt 600 ]; sleep 0.2
done
kill $!
wait $! || true
"""


def fill(slot, command):
    for name in ("tmp", "folder"):
        (slot / name).mkdir()
    (slot / "page.ps").write_text(PAGE)
    return Shop(command, slot, DEVICES, f'[[device]]\nname = "Folder"\nkind = "folder"\naddress = "{slot}/folder"\n')


def record(shop, slot, injector, command):
    """The files before the run, and its changes."""
    start = power_cuts.Disk.of(slot)
    journal = slot.with_name("journal")
    environment = dict(shop.environment, TMPDIR=str(slot / "tmp"))
    done = subprocess.run([injector, "--report", str(slot.with_name("report")), "--ours",
                           str(pathlib.Path(command).parent.parent), "--ours", str(slot), "--limit", "300", "--journal", str(journal), "--below",
                           str(slot), "--", "/bin/sh", "-c", SCRIPT, "sh", str(slot), command], env=environment,
                          capture_output=True, text=True, timeout=600, check=False)
    if done.returncode != 0:
        sys.exit(f"the run that is recorded ended with {done.returncode}: {done.stderr}")
    # The database's shared memory is made again by whoever opens it first.
    return start, [change for change in power_cuts.read_journal(journal)
                   if change[0] != ("unknown", "shared memory of a file")]


def states(start, changes):
    """(name, maker of the disk) for each state that the power may leave."""
    def make(step, kind):
        disk = start.fork()
        for change, data in changes[:step - 1]:
            disk.apply(change, data)
        change, data = changes[step - 1]
        disk.apply(change, data[:len(data) // 2] if kind == "torn" else data)
        if kind == "lost":
            disk.lose_what_is_not_synced()
        return disk

    for step, (change, data) in enumerate(changes, 1):
        kinds = ["whole"]
        if change[0] == "write" and len(data) > 1:
            kinds.append("torn")
        # What is lost counts where a name was given or taken, and after the last change.
        if change[0] in ("rename", "name", "exchange", "unlink", "sync", "create") or step == len(changes):
            kinds.append("lost")
        for kind in kinds:
            yield f"{step} {kind} [{' '.join(map(str, change))[:120]}]", make, step, kind


def delivered(slot):
    found = {}
    for folder in (slot / "root/output", slot / "folder"):
        for path in folder.rglob("*") if folder.exists() else []:
            if path.is_file() and not path.name.startswith("."):
                found[str(path.relative_to(slot))] = path.read_bytes()
    return found


def judge(slot, shop, disk, template, expected):
    """The faults of one state, after a server has been started in it."""
    disk.write_to(slot, slot, template)
    # The shared memory of the database is not on a disk.
    for path in (slot / "root/server").glob("*-shm") if (slot / "root/server").exists() else []:
        path.unlink()
    reported = {title for title in JOBS if (slot / f"added-{title}").exists()}
    try:
        shop.start()
        rows = shop.rest(120) if reported or shop.jobs() else {}
        shop.stop()
    except SystemExit as end:
        return [str(end)]
    finally:
        shop.kill()
    faults = []
    titles = [row["title"] for row in rows.values()]
    faults += [f"'{title}' is lost" for title in reported - set(titles)]
    faults += [f"'{title}' is there {titles.count(title)} times" for title in set(titles) if titles.count(title) > 1]
    faults += [f"'{row['title']}' is {row['state']}: {row.get('message')}" for row in rows.values() if row["state"] != "done"]
    found = delivered(slot)
    wanted = {name: content for name, content in expected.items() if any(title in name for title in titles)}
    faults += [f"{name} was not delivered" for name in wanted.keys() - found.keys()]
    faults += [f"{name} is one too many" for name in found.keys() - wanted.keys()]
    faults += [f"{name} is not whole" for name in wanted.keys() & found.keys() if wanted[name] != found[name]]
    return faults


def main():
    command = str(pathlib.Path(sys.argv[1]).resolve())
    count = int(sys.argv[2]) if len(sys.argv) > 2 else 200
    chance = random.Random(int(sys.argv[3]) if len(sys.argv) > 3 else 1)
    injector = pathlib.Path(command).parent.parent / "tests/fault_injector"
    with tempfile.TemporaryDirectory(prefix="rastrel-cuts-", ignore_cleanup_errors=True) as name:
        place = pathlib.Path(name)
        slot, template = place / "slot", place / "template"
        slot.mkdir()
        shop = fill(slot, command)
        shop.log = place / "serve.log"
        shutil.copytree(slot, template, symlinks=True)
        start, changes = record(shop, slot, injector, command)
        expected = delivered(slot)
        if sorted(pathlib.Path(path).name[:5] for path in expected) != ["2-sec", "first"]:
            sys.exit(f"the recorded run delivered {sorted(expected)}")
        all_states = list(states(start, changes))
        chosen = all_states if count == 0 else chance.sample(all_states, min(count, len(all_states)))
        chosen.sort(key=lambda state: state[2])
        print(f"{len(changes)} changes, {len(all_states)} states, of which {len(chosen)} are looked at", flush=True)
        faults = 0
        for label, make, step, kind in chosen:
            found = judge(slot, shop, make(step, kind), template, expected)
            if found:
                faults += 1
                print(f"{label}: {'; '.join(found)}".replace(str(slot), ""), flush=True)
                if os.environ.get("KEEP"):
                    shutil.copytree(slot, pathlib.Path(os.environ["KEEP"]) / f"{step}-{kind}", symlinks=True,
                                    dirs_exist_ok=True)
    print(f"power cuts: {len(chosen)} states, {faults} with faults")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
