"""The filter of system calls that a service manager makes of a unit, for processes that no manager starts."""

import ctypes
import pathlib
import re
import struct
import subprocess

NUMBERS = pathlib.Path("/usr/include/x86_64-linux-gnu/asm/unistd_64.h")
X86_64 = 0xC000003E
ALLOW = 0x7FFF0000
ERRNO = 0x00050000
EPERM, EAFNOSUPPORT, ENOSYS = 1, 97, 38
LOAD, EQUAL, ANY_BIT, MASK, RETURN = 0x20, 0x15, 0x45, 0x54, 0x06
FAMILIES = {"AF_UNIX": 1, "AF_INET": 2, "AF_INET6": 10}
NEW_NAMESPACES = 0x7E020080  # the flags CLONE_NEW... of clone
WRITE, EXECUTE = 2, 4        # PROT_... of mmap


def values(unit, key):
    """The values of a key of the unit, in their order."""
    return re.findall(rf"^{key}=(.*)$", unit, re.MULTILINE)


def group(name):
    """The calls of a group, with those of the groups in it."""
    text = subprocess.run(["systemd-analyze", "syscall-filter", name], capture_output=True, text=True, check=True,
                          timeout=60).stdout
    calls = set()
    for line in text.splitlines()[1:]:
        one = line.strip()
        if one.startswith("@"):
            calls |= group(one)
        elif one and not one.startswith("#"):
            calls.add(one)
    return calls


def allowed_calls(unit):
    """The names of the calls that the unit's lines leave."""
    calls = set()
    for value in values(unit, "SystemCallFilter"):
        named = set()
        for one in value.lstrip("~").split():
            named |= group(one) if one.startswith("@") else {one}
        calls = calls - named if value.startswith("~") else calls | named
    # The manager itself leaves those by which a program begins.
    return calls | group("@default") | {"execve"}


def numbers():
    return {name: int(number) for name, number in
            re.findall(r"#define __NR_(\w+) (\d+)", NUMBERS.read_text(encoding="ascii"))}


def step(code, value, true=0, false=0):
    return struct.pack("=HBBI", code, true, false, value)


def argument(index):
    """Loads the lower half of an argument."""
    return step(LOAD, 16 + 8 * index)


def refuse(error):
    return step(RETURN, ERRNO | error)


def for_call(number, steps):
    """Steps that end, for one call. Others pass by."""
    return step(EQUAL, number, 0, len(steps) // 8) + steps


def program(unit):
    """The steps: the architecture, the calls with arguments that matter, and all others by their names."""
    call = numbers()
    steps = step(LOAD, 4) + step(EQUAL, X86_64, 1, 0) + refuse(ENOSYS) + step(LOAD, 0)
    families = [FAMILIES[name] for name in values(unit, "RestrictAddressFamilies")[0].split()]
    checked = argument(0)
    for family in families:
        checked += step(EQUAL, family, 0, 1) + step(RETURN, ALLOW)
    steps += for_call(call["socket"], checked + refuse(EAFNOSUPPORT))
    if values(unit, "MemoryDenyWriteExecute") == ["yes"]:
        steps += for_call(call["mmap"], argument(2) + step(MASK, WRITE | EXECUTE) +
                          step(EQUAL, WRITE | EXECUTE, 0, 1) + refuse(EPERM) + step(RETURN, ALLOW))
        for name in ("mprotect", "pkey_mprotect"):
            steps += for_call(call[name], argument(2) + step(ANY_BIT, EXECUTE, 0, 1) + refuse(EPERM) +
                              step(RETURN, ALLOW))
    if values(unit, "RestrictNamespaces") == ["yes"]:
        # Its flags lie in memory, where no filter looks; the C library goes on with clone.
        steps += for_call(call["clone3"], refuse(ENOSYS))
        steps += for_call(call["clone"], argument(0) + step(ANY_BIT, NEW_NAMESPACES, 0, 1) + refuse(EPERM) +
                          step(RETURN, ALLOW))
        for name in ("unshare", "setns"):
            steps += for_call(call[name], refuse(EPERM))
    for name in sorted(allowed_calls(unit) & set(call)):
        steps += for_call(call[name], step(RETURN, ALLOW))
    return steps + refuse(EPERM)


def entering(unit):
    """A function that puts this process, and all that it starts, into the unit's filter for good. To be called between
    fork and exec."""
    steps = program(unit)
    buffer = ctypes.create_string_buffer(steps, len(steps))
    head = ctypes.create_string_buffer(struct.pack("@HP", len(steps) // 8, ctypes.addressof(buffer)))
    library = ctypes.CDLL(None, use_errno=True)
    no_new_privileges, set_mode_filter, seccomp = 38, 1, 317

    def enter():
        if library.prctl(no_new_privileges, 1, 0, 0, 0) != 0 or \
                library.syscall(seccomp, set_mode_filter, 0, ctypes.byref(head)) != 0:
            raise OSError(ctypes.get_errno(), f"no filter of {len(buffer)} bytes can be entered")

    return enter
