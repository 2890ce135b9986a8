# SPDX-License-Identifier: MIT
"""Reads the shared object: it exports the described names and no other, needs libc alone, is hardened, and small.

LIBRARY DESCRIPTION NM READELF SANITIZERS OPTIMISED MOST_BYTES
"""
import re
import subprocess
import sys

library, description, nm, readelf, sanitizers, optimised, most_bytes = sys.argv[1:]


def output(*command):
    return subprocess.run(command + (library,), check=True, capture_output=True, text=True).stdout


def expect(condition, text):
    if not condition:
        sys.exit(text)


symbols = re.findall(r"^[0-9a-f]+ [A-Z] (?!__(?:asan|odr|ubsan|tsan))(\S+)", output(nm, "-D", "--defined-only"), re.M)
with open(description, encoding="utf-8") as file:
    expected = re.findall(r"<elf-symbol name='([^']+)", file.read())
expect(sorted(symbols) == sorted(expected), f"exported: {sorted(symbols)}\nexpected: {sorted(expected)}")

dynamic = output(readelf, "-dlW")
for mark in (r"SONAME.*\[libfacmsg\.so\.0\]", "GNU_RELRO", "BIND_NOW|FLAGS.*NOW", r"GNU_STACK +[^\n]* RW +"):
    expect(re.search(mark, dynamic), f"{mark} not found in\n{dynamic}")
expect("RPATH" not in dynamic and "RUNPATH" not in dynamic, "looks for libraries in folders of its own\n" + dynamic)
segments = re.findall(r"LOAD +(?:0x\w+ ){3}(0x\w+) 0x\w+ ([RWE ]+) 0x", dynamic)
expect(len(segments) == dynamic.count("LOAD  ") > 0, "not understood:\n" + dynamic)
expect(not any("W" in flags and "E" in flags for _, flags in segments), "writable and executable:\n" + dynamic)

if not sanitizers:
    needed = re.findall(r"\(NEEDED\).*\[(.*)\]", dynamic)
    expect(all(re.match(r"libc\.so\.6$|ld-linux", name) for name in needed), f"needs more than libc: {needed}")
    imports = output(nm, "-D", "--undefined-only")
    expect("__stack_chk_fail" in imports, "without a guard of its stack")
    ways = re.findall(r"GNU C\+\+.*", output(readelf, "-p", ".GCC.command.line"))
    expect(ways and all("-fstack-protector-strong" in way and "-fno-exceptions" in way for way in ways), str(ways))
    if int(optimised):
        expect(re.search("__(v?f?printf|memcpy|read)_chk", imports), "without checks of buffers' sizes")
        size = sum(int(size, 16) for size, flags in segments if "W" not in flags)
        print(f"code and constants: {size} bytes")
        expect(size <= int(most_bytes), f"more than {most_bytes} bytes")
