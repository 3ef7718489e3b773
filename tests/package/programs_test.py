#!/usr/bin/env python3
"""Reads from built programs whether they are hardened and whether they contain paths of the build machine.

usage: programs_test.py <folder of the repository> <program>..."""

import re
import struct
import subprocess
import sys


def output(*command):
    return subprocess.run(command, capture_output=True, text=True, check=True).stdout


def missing_in_elf(program):
    """Yields the names of the protections that an ELF program lacks."""
    header, dynamic = output("readelf", "-hlW", program), output("readelf", "-dW", program)
    symbols, code = output("readelf", "--dyn-syms", "-W", program), output("objdump", "-d", "--no-show-raw-insn", program)
    wanted = {
        "position independence": re.search(r"Type:\s+DYN", header),
        "read-only relocations": "GNU_RELRO" in header,
        "immediate binding": re.search(r"\bBIND_NOW\b", dynamic),
        "non-executable stack": re.search(r"GNU_STACK .* RW ", header),
        "stack protector": "__stack_chk_fail" in symbols,
        "fortified functions": re.search(r"__(memcpy|sprintf|snprintf|vsnprintf|fread|read|recv)_chk", symbols),
        "stack clash protection": re.search(r"or[bwlq]?\s+\$0x0,(0x[0-9a-f]+)?\(%rsp", code),
        "control-flow protection": re.search(r"IBT, SHSTK", output("readelf", "-nW", program)),
    }
    if "x86-64" not in output("readelf", "-hW", program):
        del wanted["stack clash protection"], wanted["control-flow protection"]
    return [name for name, found in wanted.items() if not found]


def missing_in_pe(data):
    start, = struct.unpack_from("<I", data, 0x3C)
    stamp, = struct.unpack_from("<I", data, start + 8)
    flags, = struct.unpack_from("<H", data, start + 24 + 70)
    wanted = {
        "high-entropy addresses": flags & 0x20,
        "address randomisation": flags & 0x40,
        "non-executable data": flags & 0x100,
        "stack protector": b"stack smashing detected" in data,
        "fortified functions": b"buffer overflow detected" in data,
        "header without a date": stamp == 0,
    }
    return [name for name, found in wanted.items() if not found]


def main():
    root, programs, failed = sys.argv[1], sys.argv[2:], False
    for program in programs:
        with open(program, "rb") as file:
            data = file.read()
        missing = missing_in_elf(program) if data.startswith(b"\x7fELF") else missing_in_pe(data)
        if root.encode() in data:
            missing.append(f"independence of its folder: it contains {root}")
        for name in missing:
            failed = True
            print(f"{program} lacks {name}")
    return 1 if failed or not programs else 0


if __name__ == "__main__":
    sys.exit(main())
