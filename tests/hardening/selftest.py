#!/usr/bin/env python3
"""The checks see a program that is built without each of the protections."""

import pathlib
import subprocess
import sys

import check

SOURCE = """
#include <cstdio>
#include <string>
int main(int, char** arguments)
{
    char buffer[64];
    std::string const copy = arguments[0];
    return std::sprintf(buffer, "%s", copy.c_str());
}
"""

ELF_LOOSE = ["-fno-stack-protector", "-fcf-protection=none", "-no-pie", "-Wl,-z,norelro",
             "-Wl,-z,lazy", "-Wl,-z,execstack", "-Wl,-rpath,/tmp"]
PE_LOOSE = ["-fno-stack-protector", "-Wl,--disable-dynamicbase", "-Wl,--disable-nxcompat",
            "-Wl,--disable-reloc-section"]
PE64_LOOSE = ["-Wl,--disable-high-entropy-va"]


def main():
    folder, compiler, *options = sys.argv[1:]
    if "--not-hardened" in options:
        print("skipped: not a hardened build")
        return check.SKIPPED
    windows = "mingw" in pathlib.Path(compiler).name
    folder = pathlib.Path(folder)
    source = folder / "loose.cpp"
    source.write_text(SOURCE)
    program = folder / ("loose.exe" if windows else "loose")
    loose = ELF_LOOSE
    if windows:
        loose = PE_LOOSE + (PE64_LOOSE if "x86_64" in pathlib.Path(compiler).name else [])
    subprocess.run([compiler, *loose, str(source), "-o",
                    str(program)], check=True)
    output = subprocess.run([sys.executable, str(pathlib.Path(check.__file__)), *options,
                             "--starts-alone", str(program)],
                            stdout=subprocess.PIPE, text=True, check=False)
    print(output.stdout)
    # What a linker does not undo on request is left out.
    expected = ["addresses of", "relocations for", "data not exec", "stack protector, inside",
                "nothing needed beside it (lib"] \
        if windows else ["position-ind", "RELRO seg", "all symbols", "stack not exec",
                         "stack protector", "no run path", "branch targets"]
    library = folder / "libloose.a"
    library.unlink(missing_ok=True)
    subprocess.run([compiler, "-c", *loose[:1], str(source), "-o", str(folder / "loose.o")],
                   check=True)
    subprocess.run(["ar", "qc", str(library), str(folder / "loose.o")], check=True)
    archive = subprocess.run([sys.executable, str(pathlib.Path(check.__file__)), *options,
                              str(library)], stdout=subprocess.PIPE, text=True, check=False)
    print(archive.stdout)
    if archive.returncode != 1 or "FAILED stack protector" not in archive.stdout:
        print("not seen: an archive without the stack protector")
        return 1
    missed = [text for text in expected if f"FAILED {text}" not in output.stdout]
    if output.returncode != 1 or missed:
        print("not seen:", ", ".join(missed))
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
