"""Header hygiene: each header alone and twice, and all of them in any order."""

import concurrent.futures
import os
import random

from compilers import MINGW_GCC, CompilerError, clang, run

WARNINGS = ["-Wall", "-Wextra", "-Wpedantic", "-Wnon-virtual-dtor", "-Werror"]
ORDERS = 3
SEED = 10220018

GCC = ["g++", "-x", "c++", "-"]
MINGW = [MINGW_GCC, "-x", "c++", "-"]
WINDOWS = "#include <windows.h>\n"

# What to compile with, and what stands in front of the headers.
COMPILERS = {
    "GCC, Linux": (GCC, ""),
    "Clang, Linux": (clang("linux"), ""),
    "GCC, Windows": (MINGW, ""),
    "GCC, Windows, after windows.h": (MINGW, WINDOWS),
    "GCC, Windows, after windows.h with NOMINMAX": (MINGW, "#define NOMINMAX\n" + WINDOWS),
    "Clang, Microsoft x64": (clang("msvc-x64"), ""),
    "Clang, Microsoft x64, after windows.h": (clang("msvc-x64"), WINDOWS),
    "Clang, Microsoft x64, after windows.h with NOMINMAX": (
        clang("msvc-x64"), "#define NOMINMAX\n" + WINDOWS),
    "Clang, Microsoft x86": (clang("msvc-x86"), ""),
}
STANDARDS = ("c++17", "c++20")


def texts(include, alone):
    """The translation units, as pairs of a name and a text."""
    headers = sorted(header.relative_to(include).as_posix() for header in include.rglob("*.h"))
    for header in headers if alone else ():
        yield header, f'#include "{header}"\n' * 2
    dice = random.Random(SEED)
    for _ in range(ORDERS):
        order = dice.sample(headers, len(headers))
        yield "in the order " + " ".join(order), "".join(f'#include "{h}"\n' for h in order)


def complaints(include, name, standards=STANDARDS):
    """(how many were compiled, what the compiler does not like, as texts)."""
    compiler, before = COMPILERS[name]
    # What a header lacks does not depend on the standard, and what <windows.h> breaks shows
    # in any order.
    jobs = [(standard, *text) for standard in standards
            for text in texts(include, alone=not before and standard == standards[0])]

    def compile_one(job):
        standard, header, text = job
        try:
            run(compiler + [f"-std={standard}", *WARNINGS, f"-I{include}", "-fsyntax-only"],
                before + text)
        except CompilerError as error:
            return f"{header}, {standard}: {error}"
        return None

    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        return len(jobs), [result for result in pool.map(compile_one, jobs) if result]
