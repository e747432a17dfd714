"""Fails if the shared library exports what is not its interface, or does not export a part of it.

usage: exported_symbols.py LIBRARY [TABLE]
"""

import pathlib
import re
import subprocess
import sys

import sources

# What the compiler makes for a class, in front of the class's name.
RECORDS = re.compile(r"^(vtable for |typeinfo for |typeinfo name for |VTT for "
                     r"|construction vtable for |(?:non-)?virtual thunk to |guard variable for )+")


def owner_of(symbol):
    """A symbol without its records, arguments and ABI tags: `CFile::Open`, `TestPrint`."""
    name = RECORDS.sub("", symbol)
    name = name.split("[abi:")[0]
    if name.startswith("operator"):
        return name.split("(")[0].split("<rastrel")[0].strip()
    name = re.sub(r"<.*>", "", name.split("(")[0])  # a template's arguments
    return name.split(" ")[-1]  # its return type stands in front


def covered(owner, allowed):
    return owner in allowed or any(owner.startswith(name + "::") for name in allowed)


def check(symbols, allowed):
    owners = {symbol: owner_of(symbol) for symbol in symbols}
    faults = [f"{symbol}: exported, and not part of the interface"
              for symbol, owner in owners.items() if not covered(owner, allowed)]
    for name in allowed:
        if not any(covered(owner, [name]) for owner in owners.values()):
            faults.append(f"{name}: part of the interface, and not exported")
    return faults


def main():
    run = subprocess.run(["nm", "-D", "-C", "--defined-only", sys.argv[1]],
                         capture_output=True, text=True, check=True)
    symbols = sorted({line.split(maxsplit=2)[2] for line in run.stdout.splitlines()})
    table = sys.argv[2] if len(sys.argv) > 2 else pathlib.Path(__file__).with_suffix(".txt")
    sources.finish(check(symbols, list(sources.table(table))),
                   f"{len(symbols)} symbols are exported, all of the interface")


if __name__ == "__main__":
    main()
