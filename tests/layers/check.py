#!/usr/bin/env python3
"""Holds the includes of src/ and include/ against the layers, and all others to their roots.

A file may include what the table below gives its folder, and nothing else:

  - headers of the project by their folder, its own folder always; src/ writes those of
    its own from src/ on, and the public ones as <...>;
  - of other libraries only those named;
  - headers of the system (<windows.h>, <dlfcn.h>) in src/platform/ alone, and each
    system's folder there knows the seam and itself.

Elsewhere an include is written from the root that it belongs to: tools/, tests/, bench/
or src/, and a public header as <...>. Each example is a root of its own, to be copied.

Questions about the system or the compiler (#if _WIN32 and the like) stand in
src/platform/, in the export header, in include/plugin/ and in the platform folder of the
open plugin, which has layers of its own, nowhere else. The table in docs/architecture.md
has to say the same.

Each source of the open plugin and its tests is named in the CMakeLists.txt of its folder, or
in the nearest above: one that is not would be compiled by nobody, and its tests would fail
nowhere.
"""

import argparse
import pathlib
import re
import sys

# From the top to the bottom; nothing includes what stands above it.
PERMITTED = {
    # folder           headers of the project                     other libraries
    "src/api":        (["src/host", "src/discovery", "src/support",
                        "include", "include/plugin"],             ["boost"]),
    "src/host":       (["src/discovery", "src/support",
                        "src/platform", "include/plugin"],        ["boost"]),
    "src/discovery":  (["src/support", "src/platform"],           ["boost", "json"]),
    "src/json":       (["src/types", "src/support", "src/platform",
                        "include", "include/plugin"],             ["boost", "json"]),
    "src/types":      (["src/support", "src/platform",
                        "include"],                               ["boost"]),
    "src/support":    (["src/platform", "include/plugin"],        ["boost"]),
    "src/platform":   ([],                                        ["boost"]),
    "include":        (["include/plugin"],                        []),
    "include/plugin": ([],                                        []),
}

# The defaults of plugins answer a configuration; the interfaces do without.
ALSO_PERMITTED = {"include/plugin/Defaults.h": ["include"]}

SYSTEMS = ("src/platform/linux", "src/platform/windows")

# Whose headers a file may include as "...", by the folder at the top that it is in.
ROOTS = {
    "tools": ("tools", "src"),
    "tests": ("tests", "tools", "plugins", "src"),
    "plugins": ("plugins", "src"),
    "bench": ("bench", "src"),
}
# The open plugin, from the top to the bottom. Of src/ it uses a single header.
PLUGIN = "plugins/openid/"
PLUGIN_LAYERS = ("interfaces", "session", "protocol", "platform")
FOR_THE_PLUGIN = "support/SecretText.h"
# Whose CMakeLists.txt have a list of them.
NAMED_ONE_BY_ONE = ("plugins", "tests/openid")
# Built by itself, from what is installed.
APART = "tests/package/"

MAY_ASK_FOR_THE_SYSTEM = ("src/platform/", "include/HxSSOServicesExport.h", "include/plugin/",
                          "plugins/openid/platform/")
SYSTEM_QUESTION = re.compile(
    r"^\s*#\s*(?:el)?if(?:n?def)?\b.*\b"
    r"(_WIN32|_WIN64|WIN32|__MINGW\w*|__linux\w*|linux|__unix\w*|_MSC_VER|__GNUC__|__clang__)\b")


def folder_of(name):
    """The folder of a file that the table knows, or the file's own."""
    folder = name.rpartition("/")[0]
    return next((f for f in sorted(PERMITTED, key=len, reverse=True)
                 if folder == f or (f == "src/platform" and folder.startswith(f + "/"))), folder)


def check_include(root, name, included, brackets):
    """What is wrong with one include; nothing if it may stand there."""
    folder = folder_of(name)
    own, libraries = PERMITTED[folder]
    if ".." in pathlib.PurePosixPath(included).parts:
        return f"{included} is not written from its root"
    is_public = brackets and (root / "include" / included).is_file()
    if brackets and not is_public:
        library = included.partition("/")[0] if "/" in included else ""
        if library in libraries:
            return None
        if not library and not included.endswith(".h"):
            return None  # the standard library
        if folder == "src/platform" and library not in ("boost", "json"):
            return None  # the system
        return f"{folder} may not use <{included}>"
    base = ("include" if is_public else
            "src" if name.startswith("src/") else name.rpartition("/")[0])
    target = f"{base}/{included}"
    if not (root / target).is_file():
        return f'there is no "{included}"'
    for system in SYSTEMS:
        if target.startswith(system + "/") and not name.startswith(system + "/"):
            return f"{target} is for {system} alone"
    if folder_of(target) in [folder, *own, *ALSO_PERMITTED.get(name, [])]:
        return None
    return f"{folder} may not include {folder_of(target)} ({target})"


def check_root(root, name, included, brackets):
    """What is wrong with one include outside src/ and include/; nothing if it is right."""
    if ".." in pathlib.PurePosixPath(included).parts:
        return f"{included} is not written from its root"
    if brackets:
        return None  # the compiler finds it, or does not
    top, example = name.split("/")[:2]
    bases = ROOTS.get(top, (f"{top}/{example}",))
    if any((root / base / included).is_file() for base in bases):
        return check_plugin(name, included) if name.startswith(PLUGIN) else None
    if (root / "include" / included).is_file():
        return f"{included} is public: <{included}>"
    return f'there is no "{included}" in {" or ".join(bases)}'


def check_plugin(name, included):
    """What is wrong with an include that the open plugin has of the project."""
    if not included.startswith("openid/"):
        return None if included == FOR_THE_PLUGIN else f"the plugin may not include {included}"
    layer, other = name.split("/")[2], included.split("/")[1]
    # The factory stands above all layers.
    if layer in PLUGIN_LAYERS and other in PLUGIN_LAYERS[: PLUGIN_LAYERS.index(layer)]:
        return f"{PLUGIN}{layer} may not include {PLUGIN}{other}"
    return None


def includes_of(path):
    """Line, what stands in it, and whether in brackets; of other lines the line alone."""
    for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
        match = re.match(r'\s*#\s*include\s*(?:"([^"]+)"|<([^>]+)>)', line)
        yield number, line, match and (match[1] or match[2]), match and not match[1]


def check_files(root):
    """Differences, and the number of includes looked at."""
    wrong = []
    count = 0
    layered = ("src", "include")
    paths = [p for top in (*layered, *ROOTS, "examples") for p in sorted((root / top).rglob("*"))]
    for path in paths:
        name = path.relative_to(root).as_posix()
        if path.suffix not in (".h", ".cpp") or name.startswith(APART):
            continue
        is_layered = name.partition("/")[0] in layered
        if is_layered and folder_of(name) not in PERMITTED:
            wrong.append(f"{name}: the layers do not know its folder")
            continue
        check = check_include if is_layered else check_root
        for number, line, included, brackets in includes_of(path):
            difference = None
            if included:
                count += 1
                difference = check(root, name, included, brackets)
            elif ((is_layered or name.startswith(PLUGIN)) and SYSTEM_QUESTION.match(line)
                  and not name.startswith(MAY_ASK_FOR_THE_SYSTEM)):
                difference = f"asks for the system: {line.strip()}"
            if difference:
                wrong.append(f"{name}:{number}: {difference}")
    return wrong, count


def check_builds(root):
    """Sources that no build compiles, of those that are named one by one."""
    wrong = []
    for top in NAMED_ONE_BY_ONE:
        for path in sorted((root / top).rglob("*.cpp")):
            build = next(folder / "CMakeLists.txt" for folder in path.parents
                         if (folder / "CMakeLists.txt").is_file())
            text = re.sub(r"#[^\n]*", "", build.read_text(encoding="utf-8"))
            name = path.relative_to(build.parent).as_posix()
            # By the system's folder, where each system has a file of that name.
            names = {name, re.sub(r"\b(linux|windows)/", "${system}/", name)}
            if not names & set(re.split(r"[\s()]+", text)):
                wrong.append(f"{path.relative_to(root).as_posix()}: "
                             f"{build.relative_to(root).as_posix()} does not name it")
    return wrong


def check_page(root):
    """The table in docs/architecture.md."""
    page = root / "docs/architecture.md"
    rows = re.findall(r"^\| `([\w/]+)/` \|([^|]*)\|([^|]*)\|$",
                      page.read_text(encoding="utf-8"), re.M)
    told = {folder: (set(re.findall(r"`([\w/]+)/`", own)), set(re.findall(r"`(\w+)`", others)))
            for folder, own, others in rows}
    here = {folder: (set(own), set(others)) for folder, (own, others) in PERMITTED.items()}
    return [f"docs/architecture.md: the row of {folder}/ says {told.get(folder)}, "
            f"the check {here.get(folder)}"
            for folder in sorted(set(told) | set(here)) if told.get(folder) != here.get(folder)]


def check_table():
    """The table itself: a layer knows only what stands below it."""
    order = list(PERMITTED)
    return [f"{folder} stands below {other} and may include it"
            for folder, (own, _) in PERMITTED.items() for other in own
            if other.startswith("src/") and order.index(other) < order.index(folder)]


def main(arguments=None):
    parser = argparse.ArgumentParser()
    parser.add_argument("--root", type=pathlib.Path,
                        default=pathlib.Path(__file__).resolve().parents[2])
    root = parser.parse_args(arguments).root
    wrong, count = check_files(root)
    wrong += check_builds(root) + check_table() + check_page(root)
    for text in wrong:
        print(f"failed: {text}")
    if not wrong:
        print(f"passed: {count} includes")
    return 1 if wrong or not count else 0


if __name__ == "__main__":
    sys.exit(main())
