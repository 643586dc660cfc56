#!/usr/bin/env python3
"""Holds the headers and the built libraries against what is agreed.

  layout   the interfaces of include/plugin/, and what derives from their defaults, as
           Clang lays them out for Microsoft's compiler, MinGW and Linux, against
           tests/abi/contract.txt
  names    the decorated names of all exported members and of the factory
           procedure, against tests/abi/lists/names-*.txt
  exports  what leaves the libraries as they were built, against tests/abi/lists/exports-*.txt
  headers  each header alone, twice, after <windows.h>, in any order, with
           warnings as errors

Without a word all four. One line for each check, "passed: ..." or "failed: ...",
with the differences indented below it. An intended change of names or exports is
taken over by --update; review what it changes in tests/abi/lists/.
"""

import argparse
import pathlib
import sys
import traceback

sys.dont_write_bytecode = True  # the repository stays clean

# pylint: disable=wrong-import-position
import exports
import headers
import layout
import names
from compilers import TARGETS, CompilerError

ROOT = pathlib.Path(__file__).resolve().parents[2]


class Report:
    """Counts the checks and prints them."""

    def __init__(self):
        self.failed = 0

    def add(self, what, differences):
        print(f"{'failed' if differences else 'passed'}: {what}")
        for text in differences:
            print("    " + text.strip().replace("\n", "\n    "))
        sys.stdout.flush()
        self.failed += bool(differences)


def check_layout(options, report):
    contract = layout.Contract(options.contract)
    for target in TARGETS:
        report.add(f"layout, {target}: {contract.count()} positions of "
                   f"{len(contract.interfaces)} interfaces",
                   layout.differ(options.include, contract, target))
        report.add(f"layout, {target}: a plugin's class over the defaults of each interface",
                   layout.defaults_differ(options.include, contract, target))


def check_names(options, report):
    defined = names.definitions(options.include)
    for target in TARGETS:
        found, symbols = names.symbols(options.include, target, defined)
        report.add(f"names, {target}: the factory procedure",
                   names.factory_differs(symbols, target))
        if target in names.LISTS:
            file = options.abi / names.LISTS[target]
            if options.update:
                names.write_list(file, found)
            report.add(f"names, {target}: {len(found)} exported names",
                       names.differ(found, names.read_list(file), "the headers"))


def check_exports(options, report):
    # MinGW decorates alike for both machine types, so they share a list.
    for what, target, library in (("linux", "linux", options.linux),
                                  ("mingw", "mingw", options.windows),
                                  ("mingw, 32 bits", "mingw", options.windows_x86)):
        try:
            found = exports.exports(library, target)
        except CompilerError as error:
            report.add(f"exports, {what}: {library}", [f"not built? {error}"])
            continue
        file = options.abi / exports.LISTS[target]
        if options.update:
            names.write_list(file, found)
        report.add(f"exports, {what}: {len(found)} names leave {library.name}",
                   names.differ(found, names.read_list(file), library.name))
        # A member that is declared and marked, and defined nowhere.
        promised, _ = names.symbols(options.include, target)
        report.add(f"exports, {what}: all {len(promised)} names of the headers leave it",
                   [f"{name} is in the headers and not in {library.name}"
                    for name in sorted(promised - found)])


def check_headers(options, report):
    for name in headers.COMPILERS:
        count, found = headers.complaints(options.include, name)
        report.add(f"headers [{name}]: {count} combinations", found)


CHECKS = {
    "layout": check_layout,
    "names": check_names,
    "exports": check_exports,
    "headers": check_headers,
}


def main():
    parser = argparse.ArgumentParser(
        description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("checks", nargs="*", metavar="CHECK", help=", ".join(CHECKS))
    parser.add_argument("--update", action="store_true",
                        help="write the lists anew, from headers and libraries")
    parser.add_argument("--include", type=pathlib.Path, default=ROOT / "include", metavar="DIR",
                        help="other headers than include/")
    parser.add_argument("--abi", type=pathlib.Path, default=ROOT / "tests/abi/lists", metavar="DIR",
                        help="other lists than tests/abi/lists/")
    parser.add_argument("--linux", type=pathlib.Path, metavar="FILE",
                        default=ROOT / "build/linux/bin/libHxSSOServices.so",
                        help="the Linux library, else that of the preset linux")
    parser.add_argument("--windows", type=pathlib.Path, metavar="FILE",
                        default=ROOT / "build/windows/bin/HxSSOServices.dll",
                        help="the Windows library, else that of the preset windows")
    parser.add_argument("--windows-x86", type=pathlib.Path, metavar="FILE",
                        default=ROOT / "build/windows-x86/bin/HxSSOServices.dll",
                        help="the 32-bit one, else that of the preset windows-x86")
    options = parser.parse_args()
    options.contract = ROOT / "tests/abi/contract.txt"
    unknown = set(options.checks) - set(CHECKS)
    if unknown:
        parser.error(f"no such check: {', '.join(sorted(unknown))}; there are {', '.join(CHECKS)}")

    report = Report()
    for name in options.checks or (("names", "exports") if options.update else CHECKS):
        try:
            CHECKS[name](options, report)
        except Exception as error:  # pylint: disable=broad-except
            # Every way out is a line that is counted.
            report.add(name, [str(error) if isinstance(error, CompilerError) else
                              traceback.format_exc()])
    return 1 if report.failed else 0


if __name__ == "__main__":
    sys.exit(main())
