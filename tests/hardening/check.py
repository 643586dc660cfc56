#!/usr/bin/env python3
"""Looks into a binary for the marks of a hardened build, and prints each."""

import argparse
import re
import subprocess
import sys

SKIPPED = 77


def run(*command):
    result = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                            text=True, errors="replace", check=False)
    return result.stdout


def elf_checks(file, tools):
    header = run(tools.readelf, "-hW", file)
    segments = run(tools.readelf, "-lW", file)
    dynamic = run(tools.readelf, "-dW", file)
    symbols = run(tools.readelf, "--dyn-syms", "-W", file)

    program = "INTERP" in segments
    yield ("position-independent program" if program else "shared object",
           re.search(r"Type:\s+DYN", header) is not None and
           (not program or re.search(r"FLAGS_1\).*\bPIE\b", dynamic) is not None))
    yield "RELRO segment", "GNU_RELRO" in segments
    yield "all symbols bound at the start (full RELRO)", \
        re.search(r"\((FLAGS|FLAGS_1|BIND_NOW)\).*\b(BIND_NOW|NOW)\b", dynamic) is not None
    stack = re.search(r"GNU_STACK\s+(?:0x\w+\s+){5}(\S+)", segments)
    yield "stack not executable", stack is not None and "E" not in stack.group(1)
    flags = re.findall(r"^\s+LOAD\s+(?:0x\w+\s+){5}([RWE ]{3})", segments, re.MULTILINE)
    yield "no segment both writable and executable", \
        bool(flags) and not any("W" in flag and "E" in flag for flag in flags)
    yield "no relocations in code", "TEXTREL" not in dynamic
    yield "stack protector", "__stack_chk_fail" in symbols
    paths = re.findall(r"\((?:RPATH|RUNPATH)\).*\[(.*)\]", dynamic)
    entries = [entry for path in paths for entry in path.split(":")]
    yield "no run path but of $ORIGIN" + (f" ({', '.join(entries)})" if entries else ""), \
        all(re.match(r"\$ORIGIN(/|$)", entry) for entry in entries)
    if "X86-64" in header:
        # Not by the note of the file: the linker keeps it only if all that goes in
        # has it, and the system's own start files may not.
        marks = {int(address, 16) for address in re.findall(
            r"^\s*([0-9a-f]+):.*\bendbr64\b", run(tools.objdump, "-d", file), re.MULTILINE)}
        all_symbols = symbols + "".join(
            line + "\n" for line in run(tools.readelf, "-sW", file).splitlines()
            if line.endswith(" main"))
        functions = {int(address, 16) for address in re.findall(
            r"^\s*\d+: (\w+)\s+\d+ FUNC\s+\w+\s+\w+\s+\d+ ", all_symbols, re.MULTILINE)}
        yield f"branch targets marked (each of {len(functions)} functions: main, exports)", \
            bool(functions) and functions <= marks


def pe_checks(file, tools):
    headers = run(tools.objdump, "-p", file)
    sections = run(tools.objdump, "-h", file)
    symbols = run(tools.nm, file)

    wide = "pei-x86-64" in run(tools.objdump, "-f", file)
    yield "addresses of the system's choice", "DYNAMIC_BASE" in headers
    yield "relocations for that", re.search(r"^\s*\d+\s+\.reloc\s", sections, re.MULTILINE) is not None
    if wide:
        yield "addresses beyond 32 bits", "HIGH_ENTROPY_VA" in headers
    yield "data not executable", "NX_COMPAT" in headers
    # objdump's line of flags follows the section's: code that is not read-only.
    flags = re.findall(r"^\s*\d+\s+\S+(?:\s+[0-9a-f]+){4}\s+2\*\*\d+\s*\n\s+(.*)$",
                       sections, re.MULTILINE)
    yield "no section both writable and executable", \
        bool(flags) and not any("CODE" in flag and "READONLY" not in flag for flag in flags)
    yield "stack protector, inside the module", \
        re.search(r"\bT _{2,3}stack_chk_fail$", symbols, re.MULTILINE) is not None
    libraries = re.findall(r"DLL Name: (\S+)", headers)
    yield f"no DLL of the stack protector (of {len(libraries)})", \
        bool(libraries) and not any(name.lower().startswith("libssp") for name in libraries)
    if tools.starts_alone:
        own = [name for name in libraries if name.lower().startswith("lib")]
        yield "nothing needed beside it" + (f" ({', '.join(own)})" if own else ""), \
            bool(libraries) and not own


def archive_checks(file, tools):
    """What becomes a part of other modules, whose own marks say nothing about it."""
    symbols = run(tools.nm, file)
    yield "stack protector", \
        re.search(r"\bU _{2,3}stack_chk_fail$", symbols, re.MULTILINE) is not None


def checks(file, tools):
    with open(file, "rb") as stream:
        start = stream.read(7)
    if start == b"!<arch>":
        return list(archive_checks(file, tools))
    if start.startswith(b"\x7fELF"):
        return list(elf_checks(file, tools))
    if start[:2] == b"MZ":
        return list(pe_checks(file, tools))
    raise SystemExit(f"{file}: neither ELF nor PE nor an archive")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--readelf", default="readelf")
    parser.add_argument("--objdump", default="objdump")
    parser.add_argument("--nm", default="nm")
    parser.add_argument("--not-hardened", metavar="WHY", help="this build is none: skip")
    parser.add_argument("--starts-alone", action="store_true",
                        help="a program for Windows that needs the system's modules alone")
    parser.add_argument("--of-the-compiler", action="store_true",
                        help="a module of the compiler's own, which has no stack protectors")
    parser.add_argument("file")
    tools = parser.parse_args()
    if tools.not_hardened:
        print(f"skipped: not a hardened build ({tools.not_hardened})")
        return SKIPPED
    print(tools.file)
    failed = 0
    for what, holds in checks(tools.file, tools):
        if tools.of_the_compiler and what.startswith("stack protector"):
            continue
        print(f"  {'ok    ' if holds else 'FAILED'} {what}")
        failed += not holds
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
