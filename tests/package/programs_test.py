#!/usr/bin/env python3
"""Reads from built programs whether they are hardened and whether they contain paths of the build machine.

usage: programs_test.py <folder of the repository> <program>..."""

import pathlib
import re
import struct
import sys

from checking import check, run


def protections_of_elf(program):
    header, dynamic = run("readelf", "-hlW", program), run("readelf", "-dW", program)
    symbols, code = run("readelf", "--dyn-syms", "-W", program), run("objdump", "-d", "--no-show-raw-insn", program)
    found = {
        "position independence": re.search(r"Type:\s+DYN", header),
        "read-only relocations": "GNU_RELRO" in header,
        "immediate binding": re.search(r"\bBIND_NOW\b", dynamic),
        "non-executable stack": re.search(r"GNU_STACK .* RW ", header),
        "stack protector": "__stack_chk_fail" in symbols,
        "fortified functions": re.search(r"__(memcpy|sprintf|snprintf|vsnprintf|fread|read|recv)_chk", symbols),
        "stack clash protection": re.search(  # GCC tests each page with "or", clang with "mov"
            r"sub\s+\$0x1000,%rsp\n.*\s(or|mov)[bwlq]?\s+\$0x0,(0x[0-9a-f]+)?\(%rsp", code),
        "control-flow protection": code.count("endbr64") > 100,  # no note: Debian 12's crt1.o lacks it
    }
    if "X86-64" not in header:
        del found["stack clash protection"], found["control-flow protection"]
    return found


def protections_of_pe(data):
    start, = struct.unpack_from("<I", data, 0x3C)
    stamp, = struct.unpack_from("<I", data, start + 8)
    flags, = struct.unpack_from("<H", data, start + 24 + 70)
    return {
        "high-entropy addresses": flags & 0x20,
        "address randomisation": flags & 0x40,
        "non-executable data": flags & 0x100,
        "stack protector": b"stack smashing detected" in data,
        "fortified functions": b"buffer overflow detected" in data,
        "header without a date": stamp == 0,
    }


def main():
    root, *programs = sys.argv[1:]
    check("there are programs", programs)
    for program in programs:
        data = pathlib.Path(program).read_bytes()
        protections = protections_of_elf(program) if data.startswith(b"\x7fELF") else protections_of_pe(data)
        for name, found in protections.items():
            check(f"{program} has {name}", found)
        check(f"{program} does not contain the path {root}", root.encode() not in data)


if __name__ == "__main__":
    main()
