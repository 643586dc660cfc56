#!/usr/bin/env python3
"""Whether the sources compile against Microsoft's standard library.

check.py FOLDER BUILD

FOLDER holds that library and the program `check`, which compiles sources as Visual Studio
would meet them, with Clang in its Microsoft mode, and links nothing. The sources are those
that BUILD compiles for Windows, with the definitions and folders that it gives each. What it
compiles by folder is compiled file by file in src/, plugins/ and examples/, where a missing
include would be Visual Studio's to find; and bench/ and the plugin's template are compiled as well.
Prints what is wrong with each source that fails, and "N passed, N failed, N skipped".
"""

import collections
import concurrent.futures
import json
import os
import pathlib
import queue
import re
import shlex
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]

# What Wine's headers are too old for.
NOT_HERE = {
    "plugins/openid/platform/windows/Files.cpp": "Wine's FILE_RENAME_INFO has no flags",
}

# Where Wine's headers are not as Microsoft's.
INSTEAD = {
    # Two functions are macros, and streams have members of those names.
    "io.h": "#include_next <io.h>\n#undef open\n#undef sopen\n",
    # What is in these is in others.
    "dpapi.h": "#include <wincrypt.h>\n",
    "debugapi.h": "#include <winbase.h>\n",
    "bcrypt.h": "#include_next <bcrypt.h>\n#ifndef BCRYPT_SUCCESS\n"
                "#define BCRYPT_SUCCESS(status) ((status) >= 0)\n#endif\n",
}


def is_ours(folder):
    """FOLDER's program brings Boost and jsoncpp; headers_folder brings GoogleTest."""
    return ROOT in folder.parents and ROOT / ".deps" not in folder.parents


def opened(file):
    """The files of a folder that are compiled as one, or the file itself; nothing of GoogleTest."""
    if file.parent.name != "Unity":
        return [file]
    files = [pathlib.Path(name) for name in re.findall('#include "(.*)"', file.read_text())]
    if not all(ROOT in each.parents for each in files):
        return []
    return files if any(is_shipped(each) for each in files) else [file]


def is_shipped(file):
    return any(ROOT / folder in file.parents for folder in ("src", "examples", "plugins"))


def others():
    """What this build has no target for."""
    for file in sorted((ROOT / "bench").rglob("*.cpp")):
        if not {"linux", "counts"} & set(file.relative_to(ROOT).parts):  # Linux's own
            looks_inside = ["-DHXSSO_STATIC"] if file.parent.name == "inner" else []
            yield file, ["-DBENCHMARK_STATIC_DEFINE", f"-I{ROOT}/bench", *looks_inside]
    for file in sorted((ROOT / "examples/plugin-template").glob("*.cpp")):
        yield file, []


def sources(build):
    """The C++ sources of the project in this build, each once, with their options."""
    known = set()
    for entry in json.loads((build / "compile_commands.json").read_text()):
        file = pathlib.Path(entry["file"])
        if file.suffix not in (".cpp", ".cxx") or ROOT not in file.parents:
            continue
        words = shlex.split(entry["command"])
        options = [word for word in words if re.match("-[DU]", word)]
        folders = [word[2:] for word in words if word.startswith("-I")]
        options += [f"-I{folder}" for folder in folders if is_ours(pathlib.Path(folder))]
        for each in opened(file):
            if each not in known:
                known.add(each)
                yield each, options
    yield from others()


def headers_folder(place):
    """Where `check` prepares headers, for one compilation at a time; GoogleTest's with them."""
    place.mkdir(parents=True, exist_ok=True)
    for name in ("gtest", "gmock", "benchmark"):
        if not (place / name).exists():
            (place / name).symlink_to(f"/usr/include/{name}")
    (place / "first").mkdir(exist_ok=True)
    for name, text in INSTEAD.items():
        (place / "first" / name).write_text(text)
    return place


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    program = pathlib.Path(sys.argv[1]).resolve() / "check"
    build = pathlib.Path(sys.argv[2]).resolve()
    jobs = list(sources(build))
    if not jobs:
        sys.exit(f"{build} compiles nothing")
    for file, reason in NOT_HERE.items():
        print(f"skipped: {file}: {reason}")
    jobs = [job for job in jobs if str(job[0].relative_to(ROOT)) not in NOT_HERE]

    at_once = len(os.sched_getaffinity(0))
    free = queue.Queue()
    for number in range(at_once):
        free.put(headers_folder(build / "msvc" / str(number)))

    def compiles(job):
        file, options = job
        headers = free.get()
        try:
            extra = " ".join([f"-I{headers}/first", *options])
            environment = {**os.environ, "MSVC_HEADERS": str(headers), "EXTRA": extra}
            run = subprocess.run([program, ROOT, file.relative_to(ROOT)], env=environment,
                                 stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
            return run.returncode == 0, run.stdout
        finally:
            free.put(headers)

    counts = collections.Counter()
    with concurrent.futures.ThreadPoolExecutor(at_once) as pool:
        for passed, output in pool.map(compiles, jobs):
            counts[passed] += 1
            if not passed:
                print(output, end="", flush=True)
    print(f"{counts[True]} passed, {counts[False]} failed, {len(NOT_HERE)} skipped")


if __name__ == "__main__":
    main()
