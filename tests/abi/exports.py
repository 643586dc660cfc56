"""What leaves a built library: the dynamic symbols, or the DLL's export table."""

import re

from compilers import run

LISTS = {"linux": "exports-linux.txt", "mingw": "exports-windows.txt"}


def exports(library, target):
    if target == "linux":
        table = run(["nm", "-D", "--defined-only", "--no-demangle", library])
        # All but the name of the version that they have.
        return {line.split()[-1].partition("@")[0] for line in table.splitlines()
                if line.split()[-2] != "A"}
    table = run(["x86_64-w64-mingw32-objdump", "-p", library])
    return set(re.findall(r"^\t\[ *\d+\] ([^\s+]+)$", table, re.M))
