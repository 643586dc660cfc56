#!/usr/bin/env python3
"""clang-tidy over many sources at once.

tidy.py [--clean FILE] BUILD FOLDER...

Most of clang-tidy's time goes into headers, the same ones for each source. So the sources
in FOLDERs that BUILD compiles with the same flags are written one behind the other into a
file below BUILD/tidy. Not included by it: the analyzer follows the functions of the main
file only. What is found is told by the source and its line. Sources that clash with
another over a name are looked at alone. Prints what was found, a line for each source that
is not clean, and "N passed, N failed, 0 skipped".

FILE keeps a digest of what was found clean: the sources with all that they include, the
flags, the checks and clang-tidy's version. As long as none of these changes it stays clean.
"""

import argparse
import collections
import concurrent.futures
import hashlib
import json
import os
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
AT_ONCE = 30  # so that all cores have something to do, and memory holds
PLACE = re.compile(r"^(/[^:\n]+\.cpp):(\d+)(?=:)", re.MULTILINE)
FOUND = re.compile(r"^([^:\n]+):\d+:\d+: (?:error|warning): ", re.MULTILINE)
CLASH = re.compile(r"\[clang-diagnostic-error")


def flags_of(entry):
    """The command without its input and its output: a clash of these is none."""
    return re.sub(r" -o \S+| -c \S+", "", entry["command"])


def groups(build, folders):
    """The sources of the build in these folders, each once, by flags; folders stay together."""
    known, by_flags = set(), collections.defaultdict(list)
    for entry in json.loads((build / "compile_commands.json").read_text()):
        source = pathlib.Path(entry["file"])
        if source in known or not any(folder in source.parents for folder in folders):
            continue
        known.add(source)
        by_flags[flags_of(entry)].append(source)
    for flags, sources in by_flags.items():
        sources.sort()
        parts = -(-len(sources) // AT_ONCE)
        ends = [len(sources) * part // parts for part in range(parts + 1)]
        for begin, end in zip(ends, ends[1:]):
            yield flags, sources[begin:end]


def write_together(flags, sources, directory):
    """The sources as one: the file, how it is compiled, and the sources' texts."""
    directory.mkdir(parents=True, exist_ok=True)
    together = directory / "sources.cpp"
    texts = [source.read_text() for source in sources]
    together.write_text("".join(texts))
    folders = " ".join(f"-iquote {folder}" for folder in sorted({s.parent for s in sources}))
    return together, f"{flags} {folders}", texts


def digest(flags, sources, directory):
    """Of all that a verdict hangs on. Comments are part of it: some of them are for
    clang-tidy. Nothing for what does not even go through the preprocessor."""
    together, command, _ = write_together(flags, sources, directory)
    arguments = command.split()[1:]
    run = subprocess.run(["clang++", *arguments, "-w", "-E", "-C", "-P", together],
                         stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
    if run.returncode:
        return None
    version = subprocess.run(["clang-tidy", "--version"], stdout=subprocess.PIPE, check=True)
    parts = [version.stdout, (ROOT / ".clang-tidy").read_bytes(), pathlib.Path(__file__).read_bytes(),
             " ".join(arguments).encode(), "\n".join(map(str, sources)).encode(), run.stdout]
    return hashlib.sha256(b"\0".join(parts)).hexdigest()


def look(flags, sources, directory):
    """What clang-tidy says of these sources, read as one."""
    together, command, texts = write_together(flags, sources, directory)
    begins = [1]
    for text in texts:
        begins.append(begins[-1] + text.count("\n"))
    (directory / "compile_commands.json").write_text(json.dumps([{
        "directory": str(directory), "file": str(together),
        "command": f"{command} -c {together}"}]))
    # GCC knows warnings that clang does not.
    run = subprocess.run(
        ["clang-tidy", "--quiet", "-p", directory, f"--config-file={ROOT}/.clang-tidy",
         "--warnings-as-errors=*", "--extra-arg=-Wno-unknown-warning-option", together],
        stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)

    def place(match):
        if match[1] != str(together):
            return match[0]
        which = max(i for i, begin in enumerate(begins[:-1]) if begin <= int(match[2]))
        return f"{sources[which]}:{int(match[2]) - begins[which] + 1}"

    return run.returncode, PLACE.sub(place, run.stdout)


def examine(flags, sources, directory):
    """(source, whether it is clean) of each, and what was found."""
    status, found = look(flags, sources, directory)
    if status == 0:
        return [(source, True) for source in sources], ""
    if len(sources) > 1 and CLASH.search(found):
        alone = [examine(flags, [source], directory) for source in sources]
        return sum((verdicts for verdicts, _ in alone), []), "".join(text for _, text in alone)
    bad = {match[1] for match in FOUND.finditer(found)}
    if not bad <= set(map(str, sources)) or not bad:
        bad = set(map(str, sources))  # in a header, or nowhere: none of them is clean
    return [(source, str(source) not in bad) for source in sources], found


def examine_unless_clean(job, build, known):
    """The digest if it is clean, and what examine says."""
    number, (flags, sources) = job
    directory = build / "tidy" / str(number)
    key = digest(flags, sources, directory)
    if key in known:
        return key, [(source, True) for source in sources], ""
    verdicts, found = examine(flags, sources, directory)
    return key if all(clean for _, clean in verdicts) else None, verdicts, found


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--clean", type=pathlib.Path, metavar="FILE")
    parser.add_argument("build", type=pathlib.Path, metavar="BUILD")
    parser.add_argument("folders", type=pathlib.Path, nargs="+", metavar="FOLDER")
    options = parser.parse_args()
    build = options.build.resolve()
    folders = [folder.resolve() for folder in options.folders]
    jobs = sorted(groups(build, folders), key=lambda job: -len(job[1]))
    if not jobs:
        sys.exit(f"{build} compiles nothing in these folders")
    known = set()
    if options.clean and options.clean.is_file():
        known = set(options.clean.read_text().split())
    counts = collections.Counter()
    clean_now = []
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        results = pool.map(lambda job: examine_unless_clean(job, build, known), enumerate(jobs))
        for key, verdicts, found in results:
            clean_now += [key] if key else []
            sys.stdout.write(found)
            for source, clean in verdicts:
                counts["passed" if clean else "failed"] += 1
                if not clean:
                    print(f"failed: {os.path.relpath(source)}", flush=True)
    if options.clean:
        options.clean.write_text("".join(f"{key}\n" for key in clean_now))
    print("{passed} passed, {failed} failed, 0 skipped".format_map(counts))


if __name__ == "__main__":
    main()
