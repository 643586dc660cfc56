#!/usr/bin/env python3
"""Breaks copies of the headers and of the lists, and sees that each break is found.

One line for each, "passed: ..." if the check failed on it at the right place and
with both texts, "failed: ..." if not.
"""

import concurrent.futures
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import traceback

sys.dont_write_bytecode = True  # the repository stays clean

# pylint: disable=wrong-import-position
import exports
import headers
import layout
import names
from compilers import MINGW_GCC, TARGETS

ROOT = pathlib.Path(__file__).resolve().parents[2]
INCLUDE = ROOT / "include"
LISTS = ROOT / "tests/abi/lists"
CONTRACT = layout.Contract(ROOT / "tests/abi/contract.txt")
MICROSOFT = ("msvc-x64", "msvc-x86")
# One of each way to lay out: the others are read by the same code.
BOTH = ("msvc-x64", "linux")


def mixed_up(text, first, second):
    """Two pieces of a text in each other's place."""
    for piece in (first, second):
        assert text.count(piece) == 1, piece
    return text.replace(first, "\0").replace(second, first).replace("\0", second)


def changed(text, old, new, count=1):
    assert text.count(old) == count, old
    return text.replace(old, new)


class Copy:
    """A copy of the headers with one of them changed."""

    def __init__(self, folder, header, change):
        self.include = pathlib.Path(folder, "include")
        shutil.copytree(INCLUDE, self.include)
        file = self.include / header
        file.write_text(change(file.read_text()))


# What is broken, the header, how, the targets that must find it, and what they
# have to say: for each pattern one of the differences.
LAYOUTS = [
    ("two operations changed places", "plugin/ISSOClient.h",
     lambda text: mixed_up(text, "GetUserId(", "GetUserEmail("), BOTH,
     [r"ISSOClient position 11: .*'GetUserId\(.*'GetUserEmail\(",
      r"ISSOClient position 12: .*'GetUserEmail\(.*'GetUserId\("]),
    ("two overloads changed places", "plugin/ISSOClient.h",
     lambda text: mixed_up(text, "EnableOAuth2(char const* oauth2TokenSpecJson)",
                           "EnableOAuth2(bool)"), BOTH,
     [r"ISSOClient position 56: .*'EnableOAuth2\(char const\*\) .*'EnableOAuth2\(bool\) ",
      r"ISSOClient position 57: .*'EnableOAuth2\(bool\) .*'EnableOAuth2\(char const\*\) "]),
    ("two overloads declared one after the other", "plugin/ISSOServerManager.h",
     lambda text: re.sub(r"HXSSO_OVERLOADS_2\((.*? = 0),(.*? = 0)\);", r"\1;\2;", text, flags=re.S),
     MICROSOFT[:1],
     [r"ISSOServerManager position 10: .*vector.*'StartSSOServerProcess\(std::chrono"]),
    ("an argument of another type", "plugin/ISSOClient.h",
     lambda text: changed(text, "SetServer(WebServices::Server server)", "SetServer(int server)"),
     BOTH, [r"ISSOClient position 34: .*'SetServer\(Server\) .*'SetServer\(int\) "]),
    ("an operation that became constant", "plugin/ISSOClientUI.h",
     lambda text: changed(text, "bool IsLoginInProgress()", "bool IsLoginInProgress() const"),
     BOTH, [r"ISSOClientUI position 10: .*'IsLoginInProgress\(\) ->.*\(\) const ->"]),
    ("another type under the same name", "plugin/PluginTypes.h",
     lambda text: changed(text, "int outputCapacity, void* context", "int outputCapacity"),
     BOTH, [r"'type BufferTransformCallback = "]),
    ("an enumeration of another size", "plugin/PluginTypes.h",
     lambda text: changed(text, "enum class Server : std::int32_t", "enum class Server : char"),
     BOTH, [r"'size WebServices::Server = 4'"]),
    ("a missing reserved position", "plugin/ISSOClient.h",
     lambda text: changed(text, "virtual void Reserved1() {}", ""), BOTH,
     [r"ISSOClient position 52: .*'Reserved'.*'HasProxyInfo\(\) "]),
    ("a missing reserved overload", "plugin/ISSOClientUI.h",
     lambda text: changed(changed(text, "virtual void Login(ReservedLogin){},", ""),
                          "HXSSO_OVERLOADS_5", "HXSSO_OVERLOADS_4"), BOTH,
     [r"ISSOClientUI position 6: .*'Reserved'.*'Login\(wchar_t const\*, wchar_t const\*, bool\) "]),
    ("an operation too many", "plugin/ISSOLogManager.h",
     lambda text: changed(text, "GetLogger(std::wstring name) = 0;",
                          "GetLogger(std::wstring name) = 0; virtual void More() = 0;"), BOTH,
     [r"ISSOLogManager position 2: .*'nothing'.*'More\(\) -> void"]),
]

# What is broken in plugin/Defaults.h, how, and what is said.
DEFAULTS = [
    ("an operation without a default",
     lambda text: changed(text, "    bool RestoreLogin() override { return false; }\n", ""),
     [r"ISSOClient position 43: .*'RestoreLogin\(\) -> bool', .*RestoreLogin.*, not pure"]),
    ("a default in a reserved position",
     lambda text: changed(text, "    bool HasProxyInfo() override",
                          "    void Reserved1() override {}\n    bool HasProxyInfo() override"),
     [r"ISSOClient position \d+: the contract has 'Reserved', .*Reserved1"]),
    ("an operation of its own",
     lambda text: changed(text, "    bool HasProxyInfo() override",
                          "    virtual void Own() {}\n    bool HasProxyInfo() override"),
     [r"ISSOClient position \d+: the contract has 'nothing', .*'Own\(\)"]),
]

NAMES = [
    ("a struct for a class", "plugin/ISSOClientFactory.h",
     lambda text: changed(text, "class ISSOClientFactory {\npublic:", "struct ISSOClientFactory {"),
     MICROSOFT, [r"factory procedure: .*@VISSOClientFactory@.*@UISSOClientFactory@"]),
    ("the factory in another namespace", "plugin/ISSOClientFactory.h",
     lambda text: changed(changed(text, "\nstd::shared_ptr", "\nnamespace Halvorix {\nstd::shared_ptr"),
                          "GetSSOClientFactory();", "GetSSOClientFactory();\n}"),
     TARGETS, [r"factory procedure: .*Factory@@YA.*Factory@Halvorix@@YA|"
               r"factory procedure: .*_Z19GetSSOClientFactoryv.*_ZN8Halvorix19"]),
    ("a method that is no longer constant", "WebServicesManager.h",
     lambda text: changed(text, "bool IsLogEnabled() const;", "bool IsLogEnabled();"),
     tuple(names.LISTS),
     [r"^(\?IsLogEnabled@.*@Q(AE|EAA)_NXZ|_ZN8Halvorix.*12IsLogEnabledEv) is in the headers",
      r"^(\?IsLogEnabled@.*@Q(BE|EBA)_NXZ|_ZNK8Halvorix.*12IsLogEnabledEv) is in the list"]),
    # Which Linux and MinGW decorate alike.
    ("a result of another type", "WebServicesManager.h",
     lambda text: changed(text, "bool IsLogEnabled() const;", "int IsLogEnabled() const;"),
     MICROSOFT,
     [r"^\?IsLogEnabled@.*@Q(BE|EBA)HXZ is in the headers",
      r"^\?IsLogEnabled@.*@Q(BE|EBA)_NXZ is in the list"]),
]

HEADERS = [
    ("a header that needs another one before it", "NetworkCookie.h",
     lambda text: changed(text, '#include "HxSSOServicesExport.h"', ""), "Clang, Linux",
     r"^NetworkCookie\.h, (?s:.*)error: .*HXSSO_API"),
    ("a header that cannot stand twice", "plugin/ILogger.h",
     lambda text: changed(text, "#pragma once", ""), "Clang, Linux",
     r"^plugin/ILogger\.h, (?s:.*)error: redefinition of 'ILogger'"),
    ("a word that windows.h takes for itself", "plugin/ISSOLogManager.h",
     lambda text: changed(text, "class ILogger;", "class ILogger;\nint max(int left, int right);"),
     "Clang, Microsoft x64, after windows.h",
     r"^in the order (?s:.*)error: .*\n.*int max\("),
    ("a macro of windows.h", "plugin/ISSOLogManager.h",
     lambda text: changed(text, "class ILogger;", "class ILogger;\nint IDYES();"),
     "GCC, Windows, after windows.h",
     r"^in the order (?s:.*)error: (?s:.*)int IDYES"),
]


class Tally:
    def __init__(self):
        self.breaks = self.failed = 0

    def add(self, what, caught, found, broken=True):
        self.breaks += broken
        self.failed += not caught
        print(f"{'passed' if caught else 'failed'}: {what}")
        for text in found[:1] if caught else found or ["nothing was found"]:
            # Of a compiler's words its first complaint.
            error = re.search(r"^.*error: .*$", text, re.M)
            print("    " + (error[0] if error else text.strip().partition("\n")[0]))
        sys.stdout.flush()


def add_each(tally, look, rows):
    """What comes of looking at each row, in their order, as many at once as there are cores."""
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for result in pool.map(look, rows):
            tally.add(*result)


def all_said(found, patterns):
    return all(any(re.search(pattern, text) for text in found) for pattern in patterns)


def layouts(tally):
    def look(row):
        what, header, change, targets, patterns = row
        with tempfile.TemporaryDirectory() as folder:
            copy = Copy(folder, header, change)
            found = {target: layout.differ(copy.include, CONTRACT, target) for target in BOTH}
        # Where it changes nothing it must not be told either.
        caught = all(all_said(texts, patterns) if target in targets else not texts
                     for target, texts in found.items())
        return f"{what} ({', '.join(targets)})", caught, found[targets[0]]

    add_each(tally, look, LAYOUTS)


def defaults(tally):
    def look(row):
        what, change, patterns = row
        with tempfile.TemporaryDirectory() as folder:
            copy = Copy(folder, "plugin/Defaults.h", change)
            found = {target: layout.defaults_differ(copy.include, CONTRACT, target)
                     for target in BOTH}
        return what, all(all_said(texts, patterns) for texts in found.values()), found["linux"]

    add_each(tally, look, DEFAULTS)


def decorated(tally):
    def look(row):
        what, header, change, targets, patterns = row
        found = {}
        with tempfile.TemporaryDirectory() as folder:
            copy = Copy(folder, header, change)
            defined = names.definitions(copy.include)
            for target in targets:
                left, symbols = names.symbols(copy.include, target, defined)
                found[target] = names.factory_differs(symbols, target)
                if target in names.LISTS:
                    found[target] += names.differ(
                        left, names.read_list(LISTS / names.LISTS[target]), "the headers")
        return (f"{what} ({', '.join(targets)})",
                all(all_said(texts, patterns) for texts in found.values()), found[targets[0]])

    add_each(tally, look, NAMES)


def built(include, target, defined, folder):
    """A library of the headers alone, built as the real one is; what leaves it."""
    library = pathlib.Path(folder, "library.dll")  # GCC adds .exe to other names
    compiler, linking = {
        "linux": ("g++", [f"-Wl,--version-script={ROOT / 'src/HxSSOServices.map'}"]),
        "mingw": (MINGW_GCC, []),
    }[target]
    subprocess.run([compiler, "-std=c++17", "-shared", "-fPIC", "-fvisibility=hidden",
                    "-fvisibility-inlines-hidden", f"-I{include}", *linking, "-o", library,
                    "-x", "c++", "-"], input=names.translation_unit(include, defined), text=True,
                   check=True)
    return exports.exports(library, target)


def exported(tally):
    intact = names.definitions(INCLUDE)
    added = "\nnamespace Halvorix { HXSSO_API void Added(); void Added() {} }\n"
    for target, file in exports.LISTS.items():
        listed = names.read_list(LISTS / file)
        with tempfile.TemporaryDirectory() as folder:
            copy = Copy(folder, "WebServicesUIManager.h", lambda text: changed(
                text, "class HXSSO_API WebServicesAutomation", "class WebServicesAutomation"))
            for what, include, defined, pattern, count in (
                    ("no export forgotten or added", INCLUDE, intact, "", 0),
                    ("a forgotten export", copy.include, intact,
                     r"WebServicesAutomation5Login.* is in the list and not in the library", 2),
                    ("an added export", INCLUDE, intact + added,
                     r"_ZN8Halvorix5AddedEv is in the library and not in the list", 1)):
                found = names.differ(built(include, target, defined, folder), listed, "the library")
                tally.add(f"{what} ({target})", len(found) == count and
                          all(re.search(pattern, text) for text in found), found, count > 0)


def hygiene(tally):
    for what, header, change, compiler, pattern in HEADERS:
        with tempfile.TemporaryDirectory() as folder:
            copy = Copy(folder, header, change)
            _, found = headers.complaints(copy.include, compiler, ("c++17",))
        tally.add(f"{what} [{compiler}]", all_said(found, [pattern]), found)


def main():
    tally = Tally()
    for part in (layouts, defaults, decorated, exported, hygiene):
        try:
            part(tally)
        except Exception:  # pylint: disable=broad-except
            # Every way out is a line that is counted.
            tally.add(part.__name__, False, traceback.format_exc().splitlines())
    print(f"{tally.breaks} breaks, {tally.failed} not found as they should be")
    return 1 if tally.failed else 0


if __name__ == "__main__":
    sys.exit(main())
