"""Modules for Linux, made from nothing but their header: for what no linker writes."""

import pathlib
import struct

NEEDED, HASH, STRTAB, SYMTAB, RELA, RELASZ, RELAENT, STRSZ, SONAME, RPATH, RUNPATH = (
    1, 4, 5, 6, 7, 8, 9, 10, 14, 15, 29)


DEBUG = 21  # which means nothing to the loader of a module
FLAGS_1, NODEFLIB, NOOPEN, PIE = 0x6FFFFFFB, 0x800, 0x40, 0x08000000


def retag(path, before, after, value=None, named=None):
    """The same file, in which an entry of the dynamic table is one of another kind. Which of
    several is told by its name. One that is missing takes the place of a spare one."""
    data = bytearray(path.read_bytes())
    at, = struct.unpack_from("<Q", data, 32)
    for place in range(at, at + 56 * data[56], 56):
        kind, _, begin, _, _, size = struct.unpack_from("<IIQQQQ", data, place)
        tags = [begin + 16 * number for number in range(size // 16)] if kind == 2 else []
        entries = [(tag, *struct.unpack_from("<qQ", data, tag)) for tag in tags]
        texts = next((place for _, tag_kind, place in entries if tag_kind == STRTAB), 0)
        found = [tag for tag, tag_kind, offset in entries if tag_kind == before and
                 (named is None or data[texts + offset:].startswith(named + b"\0"))]
        spare = [tag for tag, tag_kind, _ in entries if tag_kind == 0]
        if entries and not found and before == after and len(spare) > 1:
            found = spare[:1]
        assert not entries or len(found) == 1, (before, found)
        for tag in found:
            struct.pack_into("<q", data, tag, after)
            if value is not None:
                struct.pack_into("<Q", data, tag + 8, value)
    path.unlink()  # it may be a link to the build's
    path.write_bytes(data)
    path.chmod(0o755)


def write(path, needed=(), soname=None, rpath=None, runpath=None, strings=b"", symbols=(),
          used=0, relocations=0, uses=None, kind=3, flags=0):
    """A shared object for x86-64.

    strings      further texts of its string table
    symbols      (place in strings, section): global functions; section 0 is none
    used         how many of them a relocation of its own names
    uses         which of them, in place of that: indices
    kind         ET_DYN; 2 is a program of the older kind
    flags        of the second set: PIE, NOOPEN, …
    relocations  that name none, as a hole in the file; in place of those that do
    """
    table = bytearray(b"\0")

    def text(value):
        table.extend(value.encode() + b"\0")
        return len(table) - len(value.encode()) - 1

    entries = [(NEEDED, text(name)) for name in needed]
    for tag, value in ((SONAME, soname), (RPATH, rpath), (RUNPATH, runpath)):
        if value:
            entries.append((tag, text(value)))
    first = len(table)
    table.extend(strings)
    table.extend(bytes(-len(table) % 8))
    records = bytes(24) + b"".join(
        struct.pack("<IBBHQQ", first + place, 0x12, 0, section, 64 if section else 0, 0)
        for place, section in symbols)
    links = b"".join(struct.pack("<QQq", 0, number + 1 << 32 | 1, 0)
                     for number in (range(used) if uses is None else uses))
    begin = 64 + 2 * 56
    if flags:
        entries.append((FLAGS_1, flags))
    at_table = begin + 16 * (len(entries) + 8)
    at_records = at_table + len(table)
    at_hash = at_records + len(records)
    # One chain of all: what is found by reading is found by the loader, too.
    chain = struct.pack(f"<{len(symbols) + 4}I", 1, len(symbols) + 1, bool(symbols), 0,
                        *range(2, len(symbols) + 1), *([0] * bool(symbols)))
    chain += bytes(-len(chain) % 8)
    at_links = at_hash + len(chain)
    size = relocations * 24 or len(links)
    entries += [(STRTAB, at_table), (SYMTAB, at_records), (STRSZ, len(table)), (HASH, at_hash)]
    if size:
        entries += [(RELA, at_links), (RELASZ, size), (RELAENT, 24)]
    dynamic = b"".join(struct.pack("<qQ", *entry) for entry in entries)
    dynamic = dynamic.ljust(at_table - begin, b"\0")
    whole = at_links + size
    header = b"\x7fELF\x02\x01\x01" + bytes(9) + struct.pack(
        "<HHIQQQIHHHHHH", kind, 62, 1, 0, 64, 0, 0, 64, 56, 2, 64, 0, 0)
    # The loader writes into its dynamic table.
    segments = struct.pack("<IIQQQQQQ", 1, 7, 0, 0, 0, whole, whole, 4096) + struct.pack(
        "<IIQQQQQQ", 2, 6, begin, begin, begin, len(dynamic), len(dynamic), 8)
    pathlib.Path(path).unlink(missing_ok=True)  # it may be a link to the build's
    with open(path, "wb") as file:
        file.write(header + segments + dynamic + bytes(table) + records + chain + links)
        file.truncate(whole)
    pathlib.Path(path).chmod(0o755)
