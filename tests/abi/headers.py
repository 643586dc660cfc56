"""Header hygiene: each header alone and twice, and all of them in any order."""

import concurrent.futures
import os
import pathlib
import random
import tempfile

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


def texts(include):
    """The translation units, as pairs of a name and a text."""
    headers = sorted(header.relative_to(include).as_posix() for header in include.rglob("*.h"))
    for header in headers:
        yield header, f'#include "{header}"\n' * 2
    dice = random.Random(SEED)
    for _ in range(ORDERS):
        order = dice.sample(headers, len(headers))
        yield "in the order " + " ".join(order), "".join(f'#include "{h}"\n' for h in order)


def complaints(include, name, standards=STANDARDS):
    """(how many were compiled, what the compiler does not like, as texts)."""
    compiler, before = COMPILERS[name]
    # The real <windows.h> takes longer than all the rest.
    precompile = before and compiler == MINGW
    jobs = [(standard, *text) for standard in standards for text in texts(include)]

    def compile_one(job):
        standard, header, text = job
        command = compiler + [f"-std={standard}", *WARNINGS, f"-I{include}", "-fsyntax-only"]
        if precompile:
            text = '#include "before.h"\n' + text
            command += [f"-I{folder}/{standard}", "-Winvalid-pch"]
        try:
            run(command, text if precompile else before + text)
        except CompilerError as error:
            return f"{header}, {standard}: {error}"
        return None

    with tempfile.TemporaryDirectory() as folder:
        for standard in standards if precompile else ():
            header = pathlib.Path(folder, standard, "before.h")
            header.parent.mkdir()
            header.write_text(before)
            run([compiler[0], f"-std={standard}", *WARNINGS, "-x", "c++-header", header,
                 "-o", f"{header}.gch"])
        with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
            return len(jobs), [result for result in pool.map(compile_one, jobs) if result]
