"""Modules for Windows, made from nothing but their headers: for what no linker writes."""

import struct

SECTION = 0x1000  # where the only one lies, in the file at 0x200


def write(path, name, exports=(), imports=(), is_x86=False):
    """A DLL.

    exports  name: "Module.symbol" that stands for it, or None for a function that returns 0
    imports  name of a module: names of functions, or their numbers
    """
    body = bytearray(b"\x31\xc0\xc3\0")  # xor eax, eax; ret
    names = sorted(dict(exports))  # as the loader searches them
    thunk = "<I" if is_x86 else "<Q"

    def add(content):
        body.extend(bytes(-len(body) % 8))
        body.extend(content)
        return SECTION + len(body) - len(content)

    def text(value):
        return add(value.encode() + b"\0")

    # The directory encloses what stands for functions, and begins with its record.
    at_exports = add(bytes(40))
    targets = [text(exports[one]) if exports[one] else SECTION for one in names]
    functions = add(b"".join(struct.pack("<I", target) for target in targets))
    at_names = add(b"".join(struct.pack("<I", text(one)) for one in names))
    numbers = add(b"".join(struct.pack("<H", number) for number in range(len(names))))
    struct.pack_into("<IIHHIIIIIII", body, at_exports - SECTION, 0, 0, 0, 0, text(name), 1,
                     len(names), len(names), functions, at_names, numbers)
    size_of_exports = SECTION + len(body) - at_exports
    descriptors = b""
    for module, symbols in dict(imports).items():
        number = 1 << (31 if is_x86 else 63)
        hints = [number | symbol if isinstance(symbol, int) else
                 add(b"\0\0" + symbol.encode() + b"\0") for symbol in symbols] + [0]
        tables = [add(b"".join(struct.pack(thunk, hint) for hint in hints)) for _ in range(2)]
        descriptors += struct.pack("<IIIII", tables[0], 0, 0, text(module), tables[1])
    at_imports = add(descriptors + bytes(20))
    raw = len(body) + -len(body) % 512
    optional = struct.pack("<HBBIIIII", 0x10B if is_x86 else 0x20B, 2, 0, raw, 0, 0, 0, SECTION)
    optional += struct.pack("<II", 0, 0x10000000) if is_x86 else struct.pack("<Q", 0x180000000)
    optional += struct.pack("<IIHHHHHHIIIIHH", 0x1000, 0x200, 6, 0, 0, 0, 6, 0, 0,
                            0x1000 + raw + -raw % 0x1000, 0x200, 0, 3, 0x100)
    optional += struct.pack("<IIII" if is_x86 else "<QQQQ", 0x100000, 0x1000, 0x100000, 0x1000)
    optional += struct.pack("<II", 0, 16)
    optional += struct.pack("<IIII", at_exports, size_of_exports, at_imports,
                            len(descriptors) + 20) + bytes(14 * 8)
    header = b"MZ".ljust(60, b"\0") + struct.pack("<I", 64) + b"PE\0\0"
    # Without relocations, none of which would change anything.
    header += struct.pack("<HHIIIHH", 0x14C if is_x86 else 0x8664, 1, 0, 0, 0, len(optional), 0x2022)
    header += optional
    header += b".text".ljust(8, b"\0") + struct.pack("<IIIIIIHHI", len(body), SECTION, raw, 0x200,
                                                     0, 0, 0, 0, 0xE0000020)
    with open(path, "wb") as file:
        file.write(header.ljust(0x200, b"\0") + bytes(body).ljust(raw, b"\0"))
