"""Installs the build into a prefix that has files of others, and uninstalls it."""

import argparse
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

import installed_tree


def snapshot(place):
    """Every name below a folder, with the target of a link and the content of a file."""
    found = {}
    for folder, folders, files in os.walk(place):
        for name in folders + files:
            path = pathlib.Path(folder, name)
            content = (path.readlink() if path.is_symlink()
                       else None if path.is_dir() else path.read_bytes())
            found[str(path.relative_to(place))] = content
    return found


def uninstall(options):
    ended = subprocess.run([options.cmake, "--build", options.build, "--target", "uninstall"],
                           stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
    return ended.returncode, ended.stdout


def install(options, prefix):
    """Other people's files beside the installed ones, and the names of all before the latter."""
    for name in ("bin/other", "include/other.h", "share/rastrel/mine.txt"):
        path = prefix / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text("mine", encoding="utf-8")
    before = snapshot(prefix)
    installed_tree.call(options.cmake, "--install", options.build, "--prefix", prefix)
    return before


def removes_what_was_installed(options, place):
    prefix = place / "a prefix"
    before = install(options, prefix)
    status, output = uninstall(options)
    after = snapshot(prefix)
    faults = [] if status == 0 else [f"status {status}: {output}"]
    # The folders of the system stay; an installation finds them there.
    plain = {"bin", "include", "lib", "libexec", "share", "share/man", "share/man/man1",
             "share/bash-completion", "share/bash-completion/completions",
             "share/fish", "share/fish/vendor_completions.d", "share/zsh",
             "share/zsh/vendor-completions",
             options.libdir, f"{options.libdir}/cmake", f"{options.libdir}/pkgconfig"}
    faults += [f"{name} was left" for name in after if name not in before and name not in plain]
    faults += [f"{name} is gone or another" for name in before if after.get(name, 0) != before[name]]
    status, output = uninstall(options)
    gone = output.count("gone already: ")
    if status != 0 or gone < 10 or "removed: " in output:
        faults.append(f"a second time it says, with status {status}: {output}")
    return faults


def follows_no_link_out(options, place):
    prefix = place / "linked"
    install(options, prefix)
    elsewhere = place / "elsewhere"
    shutil.move(prefix / "include" / "rastrel", elsewhere)
    (prefix / "include" / "rastrel").symlink_to(elsewhere)
    # A link in a file's own place is removed, and never followed.
    target = place / "page"
    target.write_text("mine", encoding="utf-8")
    manual = prefix / "share" / "man" / "man1" / "rastrel.1"
    manual.unlink()
    manual.symlink_to(target)
    before = snapshot(elsewhere)
    status, output = uninstall(options)
    faults = []
    if status == 0 or "rastrel.h (a link leads out of " not in output:
        faults.append(f"a link out of the prefix is not named: {output}")
    if snapshot(elsewhere) != before:
        faults.append("files behind a link out of the prefix are gone")
    if target.read_text(encoding="utf-8") != "mine" or manual.is_symlink():
        faults.append("a link in a file's place was followed, or left")
    if (prefix / "bin" / "rastrel").exists():
        faults.append("the files beside were left")
    return faults


def says_that_nothing_was_installed(options, manifest):
    manifest.unlink(missing_ok=True)
    status, output = uninstall(options)
    if status != 0 and "Nothing was installed from this build tree" in output:
        return []
    return [f"without a manifest it says, with status {status}: {output}"]


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--build", type=pathlib.Path, required=True)
    for name in ("cmake", "libdir"):
        parser.add_argument("--" + name, required=True)
    options = parser.parse_args()
    with (tempfile.TemporaryDirectory(prefix="rastrel-uninstall-") as name,
          installed_tree.keeping_the_manifest(options.build) as manifest):
        faults = removes_what_was_installed(options, pathlib.Path(name))
        faults += follows_no_link_out(options, pathlib.Path(name))
        faults += says_that_nothing_was_installed(options, manifest)
    for fault in faults:
        print(fault)
    sys.exit(1 if faults else 0)


if __name__ == "__main__":
    main()
