#!/usr/bin/env python3
"""Installs the Debian packages in a fresh minimal root and uses them there as a new user.

usage: packages.py RASTREL [--packages DIRECTORY] [--old DIRECTORY] [--base FILE] [--keep]

The packages are those of `./run package` (build/package of the checkout), made first if there are none. In a root of
Debian 12 that mmdebstrap makes, with nothing but these packages and what they depend on:

- a new user prints, converts, measures, reads the manual page's place and gets completions; programs and files of the
  checkout are out of reach there, so nothing can be taken from it by accident
- the service's user runs the server; a job goes from the queue to a file
- with --old, packages of an earlier commit are installed first, and kept pages, settings and the queue are there and
  work after the upgrade
- a removal leaves the service's data, a purge takes it, and neither touches what a link in it leads to

Skipped (status 77) where there is no mmdebstrap, or the user is not root."""

import argparse
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

SKIPPED = 77
SIGN = """%!PS-Adobe-3.0 EPSF-3.0
%%BoundingBox: 0 0 72 36
%%EndComments
[/Separation (CutContour) /DeviceCMYK {dup 0 exch 0 exch 0 exch}] setcolorspace
1 setcolor 10 10 20 10 rectstroke
1 0 0 setrgbcolor 40 10 20 10 rectfill
showpage
"""
SERVED = """set -e
export HOME=/var/lib/rastrel RASTREL_HOME=/var/lib/rastrel
cd /var/lib/rastrel
rastrel serve & server=$!
for _ in $(seq 120); do
  rastrel jobs list --json | grep -q '"state": *"done"' && break
  sleep 1
done
kill $server; wait $server || true
rastrel jobs list
rastrel jobs list --json | grep -q '"state": *"done"'
"""


COMPLETION = """. /usr/share/bash-completion/completions/rastrel
COMP_WORDS=(rastrel pri) COMP_CWORD=1 COMP_LINE='rastrel pri' COMP_POINT=11
$(complete -p rastrel | sed 's/.*-F \\([^ ]*\\).*/\\1/') rastrel pri rastrel
echo "${COMPREPLY[@]}"
"""


def say(text):
    print(f"packages: {text}", flush=True)


# Where each shell, and each service manager, looks.
PLACES = ("/usr/share/bash-completion/completions/rastrel", "/usr/share/fish/vendor_completions.d/rastrel.fish",
          "/usr/share/zsh/vendor-completions/_rastrel", "/lib/systemd/system/rastrel-server.service",
          "/usr/lib/systemd/user/rastrel-server.service")
SETTINGS = "# of the shop\nworkers = 1\n"


class Root:
    """A root directory with a Debian of its own."""

    def __init__(self, base, directory):
        self.path = pathlib.Path(directory)
        subprocess.run(["tar", "-C", directory, "-xf", base], check=True)
        shutil.copy("/etc/resolv.conf", self.path / "etc/resolv.conf")
        for name in ("proc", "dev"):
            subprocess.run(["mount", "--rbind", f"/{name}", self.path / name], check=True)
        # Nothing is started while packages are installed: there is no service manager.
        policy = self.path / "usr/sbin/policy-rc.d"
        policy.write_text("#!/bin/sh\nexit 101\n")
        policy.chmod(0o755)

    def close(self):
        for name in ("proc", "dev"):
            subprocess.run(["umount", "--recursive", "--lazy", self.path / name], check=False)

    def run(self, script, user="root", expected=0):
        """Runs a script of the shell. Returns its output; ends the trial if its status is another."""
        words = ["chroot", self.path, "su", user, "-s", "/bin/sh", "-c", script]
        ran = subprocess.run(words, env={"PATH": "/usr/sbin:/usr/bin:/sbin:/bin", "DEBIAN_FRONTEND": "noninteractive"},
                             text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=900, check=False)
        if (ran.returncode == 0) != (expected == 0):
            sys.exit(f"packages: as {user}, status {ran.returncode}:\n{script}\n---\n{ran.stdout}")
        return ran.stdout

    def has(self, path):
        return os.path.lexists(self.path / path.lstrip("/"))

    def install(self, packages):
        place = self.path / "packages"
        shutil.rmtree(place, ignore_errors=True)
        place.mkdir()
        for package in packages:
            shutil.copy(package, place)
        self.run("apt-get -q update && apt-get -q -y --no-install-recommends install /packages/*.deb")


def packages_in(directory):
    found = sorted(pathlib.Path(directory).glob("*.deb"))
    if not found:
        sys.exit(f"packages: there are no packages in {directory}")
    return found


def use_the_command(root):
    root.run("id visitor >/dev/null 2>&1 || useradd --create-home visitor")
    (root.path / "home/visitor/sign.eps").write_text(SIGN)
    out = root.run("cd && rastrel pagesize sign.eps && rastrel print sign.eps --output out && ls out && "
                   "rastrel inspect --painted sign.eps && rastrel convert sign.eps -o sign.png && rastrel doctor",
                   user="visitor")
    for words in ("sign-1.tif", "CutContour"):
        if words not in out:
            sys.exit(f"packages: '{words}' is missing:\n{out}")
    root.run("cd && rastrel cut sign.eps --cut-color spot:CutContour -o sign.plt && test -s sign.plt", user="visitor")
    root.run("test -s /usr/share/man/man1/rastrel.1.gz")
    (root.path / "tmp/complete.sh").write_text(COMPLETION)
    out = root.run("bash /tmp/complete.sh", user="visitor")
    if "print" not in out:
        sys.exit(f"packages: bash does not complete 'rastrel pri':\n{out}")


def serve_a_job(root):
    (root.path / "tmp/sign.eps").write_text(SIGN)
    before = root.run("cd / && RASTREL_HOME=/var/lib/rastrel HOME=/var/lib/rastrel rastrel jobs add /tmp/sign.eps", user="rastrel")
    say(before.strip())
    root.run(SERVED, user="rastrel")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("rastrel")
    parser.add_argument("--packages")
    parser.add_argument("--old")
    parser.add_argument("--base")
    parser.add_argument("--keep", action="store_true")
    given = parser.parse_args()
    if os.geteuid() != 0 or not shutil.which("mmdebstrap"):
        say("skipped: it needs root and mmdebstrap")
        sys.exit(SKIPPED)
    checkout = pathlib.Path(__file__).resolve().parents[2]
    packages = given.packages or checkout / "build/package"
    if not list(pathlib.Path(packages).glob("*.deb")):
        subprocess.run([checkout / "run", "package"], check=True)
    base = given.base or checkout / "build/package/base.tar"
    if not pathlib.Path(base).exists():
        say("making a minimal root")
        subprocess.run(["mmdebstrap", "--variant=minbase", "--include=ca-certificates", "bookworm", base,
                        *[str(path) for path in pathlib.Path("/etc/apt/sources.list.d").glob("*.sources")]], check=True)
    directory = tempfile.mkdtemp(prefix="rastrel-packages-")
    os.chmod(directory, 0o755)
    root = Root(base, directory)
    try:
        if given.old:
            say("the earlier packages are installed and used")
            root.install(packages_in(given.old))
            serve_a_job(root)
            (root.path / "var/lib/rastrel/server.toml").write_text(SETTINGS)
            spool = root.run("cd /var/lib/rastrel && find . -path '*CFM*' -type f | sort | xargs -r sha256sum")
            root.run("chown rastrel /var/lib/rastrel/server.toml && chmod 600 /var/lib/rastrel/server.toml")
            jobs = root.run("RASTREL_HOME=/var/lib/rastrel rastrel jobs list --json", user="rastrel")
        say("the packages are installed")
        root.install(packages_in(packages))
        if given.old:
            now = root.run("RASTREL_HOME=/var/lib/rastrel rastrel jobs list --json", user="rastrel")
            if now != jobs or (root.path / "var/lib/rastrel/server.toml").read_text() != SETTINGS:
                sys.exit(f"packages: the queue or the settings did not survive the upgrade:\n{jobs}\n---\n{now}")
            kept = root.run("cd /var/lib/rastrel && find . -path '*CFM*' -type f | sort | xargs -r sha256sum")
            if not spool.strip() or kept != spool:
                sys.exit(f"packages: the kept pages did not survive the upgrade:\n{spool}\n---\n{kept}")
            root.run("RASTREL_HOME=/var/lib/rastrel rastrel jobs reprint 1", user="rastrel")
        missing = [place for place in PLACES if not root.has(place)]
        if missing:
            sys.exit(f"packages: not installed: {missing}")
        if root.has("/etc/systemd/user/default.target.wants/rastrel-server.service"):
            sys.exit("packages: a server starts for every user who signs in")
        say("a new user prints, measures and converts")
        use_the_command(root)
        say("the service's user serves a job")
        serve_a_job(root)
        out = root.run("stat -c '%a %U' /var/lib/rastrel")
        if out.strip() != "700 rastrel":
            sys.exit(f"packages: the service's data is {out}")
        (root.path / "srv/kept").write_text("of somebody else")
        os.symlink("/srv", root.path / "var/lib/rastrel/link")
        say("a removal leaves the data")
        root.run("apt-get -q -y remove rastrel-server")
        if not root.has("/var/lib/rastrel/server/queue.db") or root.has("/usr/libexec/rastrel/rastrel-server"):
            sys.exit("packages: a removal took the queue, or left the program")
        say("a purge takes it")
        root.run("apt-get -q -y purge rastrel-server")
        if root.has("/var/lib/rastrel") or not root.has("/srv/kept"):
            sys.exit("packages: a purge left the data, or followed a link")
        out = root.run("rastrel jobs list", user="visitor", expected=1)
        if "is not installed" not in out:
            sys.exit(f"packages: without the server 'jobs' says: {out}")
        root.run("apt-get -q -y purge rastrel librastrel0 librastrel-dev rastrel-window")
        left = root.run("find / -xdev -name '*rastrel*' -not -path '/proc/*' -not -path '/packages*' "
                        "-not -path '/home/*' -not -path '/var/lib/dpkg/*' -not -path '/var/log/*' -not -path '/tmp/*'")
        if left.strip():
            sys.exit(f"packages: a purge of all left:\n{left}")
        say("all is as it should be")
    finally:
        root.close()
        if given.keep:
            say(f"the root is {directory}")
        else:
            subprocess.run(["rm", "-rf", "--one-file-system", directory], check=False)


if __name__ == "__main__":
    main()
