"""Installs the build into a fresh prefix, moves it, builds a client against it, and prints.

The build tree is out of reach of the client: what it prints with is what was installed.
"""

import argparse
import contextlib
import os
import pathlib
import shlex
import shutil
import subprocess
import sys
import tempfile

import prints_a_page

CLIENT = pathlib.Path(__file__).parent / "project"


def call(*command, **options):
    ended = subprocess.run([str(word) for word in command], stdout=subprocess.PIPE, text=True,
                           stderr=subprocess.STDOUT, check=False, **options)
    if ended.returncode != 0:
        sys.exit(f"{command[0]} failed with status {ended.returncode}:\n{ended.stdout}")
    return ended.stdout


def install(options, place):
    """The prefix, moved after it was installed: nothing in it may depend on where it lay."""
    first = place / "first"
    with keeping_the_manifest(options.build):
        call(options.cmake, "--install", options.build, "--prefix", first)
    prefix = place / "a prefix"
    first.rename(prefix)
    return prefix


@contextlib.contextmanager
def keeping_the_manifest(build):
    """The manifest is that of the last installation, which a test's own must not become: with it
    goes the way to uninstall."""
    manifest = build / "install_manifest.txt"
    before = manifest.read_bytes() if manifest.exists() else None
    try:
        yield manifest
    finally:
        if before is None:
            manifest.unlink(missing_ok=True)
        else:
            manifest.write_bytes(before)


def copy_sources(options, place):
    """The client's sources, away from the library's."""
    sources = place / "sources"
    sources.mkdir()
    shutil.copy(CLIENT / "client.cmake", sources / "CMakeLists.txt")
    shutil.copy(CLIENT / "client.cpp", sources)
    shutil.copy(options.root / "examples" / "print_ticket.cpp", sources)
    return sources


def build_with_cmake(options, prefix, place):
    call(options.cmake, "-G", "Ninja", "-S", copy_sources(options, place), "-B", place / "client",
         f"-DCMAKE_PREFIX_PATH={prefix}", f"-DCMAKE_CXX_COMPILER={options.compiler}",
         f"-DRASTREL_VERSION={options.version}")
    call(options.cmake, "--build", place / "client")
    return place / "client"


def build_with_pkg_config(options, prefix, place):
    environment = dict(os.environ, PKG_CONFIG_PATH=str(prefix / options.libdir / "pkgconfig"))
    flags = shlex.split(call("pkg-config", "--cflags", "--libs", "rastrel", env=environment))
    version = call("pkg-config", "--modversion", "rastrel", env=environment).strip()
    if version != options.version:
        sys.exit(f"pkg-config says version {version}, not {options.version}")
    programs = place / "client"
    programs.mkdir()
    for source in sorted(copy_sources(options, place).glob("*.cpp")):
        call(options.compiler, source, "-o", programs / source.stem, *flags)
    return programs


def moved_headers(root):
    """The names that installed headers had before they moved."""
    table = (root / "packaging" / "moved-headers.txt").read_text(encoding="utf-8")
    return [line.split()[0] for line in table.splitlines() if line.startswith("rastrel/")]


def compile_moved_headers(options, prefix, place):
    """A client that still includes headers by their old names is compiled as before."""
    source = place / "old_names.cpp"
    source.write_text("".join(f"#include <{name}>\n" for name in moved_headers(options.root)) +
                      "int main() { return CVKColor() == CVKColor() ? 0 : 1; }\n", encoding="utf-8")
    call(options.compiler, "-std=c++20", "-fsyntax-only", "-I", prefix / "include", source)


def unfinished(prefix, options):
    """What an installed tree lacks."""
    wanted = ["bin/rastrel", "include/rastrel/rastrel.h", "share/man/man1/rastrel.1",
              "share/bash-completion/completions/rastrel",
              "share/fish/vendor_completions.d/rastrel.fish", "share/zsh/vendor-completions/_rastrel",
              "libexec/rastrel/corerast.exe", "libexec/rastrel/coreodalis.exe",
              "share/rastrel/devices.txt", f"{options.libdir}/librastrel.so.{options.version}",
              f"{options.libdir}/libcfplane.so",
              f"{options.libdir}/cmake/Rastrel/RastrelConfigVersion.cmake"]
    return [f"{name} is not installed" for name in wanted if not (prefix / name).exists()]


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("way", choices=("cmake", "pkg-config"))
    parser.add_argument("--root", type=pathlib.Path, required=True)
    parser.add_argument("--build", type=pathlib.Path, required=True)
    for name in ("cmake", "compiler", "libdir", "version"):
        parser.add_argument("--" + name, required=True)
    options = parser.parse_args()

    with tempfile.TemporaryDirectory(prefix="rastrel-client-") as name:
        place = pathlib.Path(name)
        prefix = install(options, place)
        faults = unfinished(prefix, options)
        build = build_with_cmake if options.way == "cmake" else build_with_pkg_config
        programs = build(options, prefix, place)
        compile_moved_headers(options, prefix, place)
        environment = dict(os.environ, LD_LIBRARY_PATH=str(prefix / options.libdir))
        sign = str(options.root / "examples" / "shopfront.ps")
        faults += prints_a_page.run([str(programs / "client")], place / "one", 1,
                                    environment=environment)
        faults += prints_a_page.run([str(programs / "print_ticket"), sign], place / "two", 2,
                                    environment=environment)
        faults += prints_a_page.run([str(prefix / "bin" / "rastrel"), "print", sign],
                                    place / "three", 2)
    for fault in faults:
        print(fault)
    sys.exit(1 if faults else 0)


if __name__ == "__main__":
    main()
