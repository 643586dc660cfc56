"""Holds the walk's list of members against what the library exports.

check_members.py [--nm NM | --objdump OBJDUMP --cxxfilt CXXFILT] LIBRARY COMMAND...

COMMAND prints the members that the walk knows, one on a line. The exports are
the dynamic symbols that NM lists or, of a DLL, the export table that OBJDUMP
prints. Fails if either side has a function that the other has not.
"""

import argparse
import re
import subprocess
import sys

# Nobody outside can call these: the managers make their only instance
# themselves, and the other two serve public overloads of their names.
PRIVATE = {
    "WebServicesManager::WebServicesManager()",
    "WebServicesManager::~WebServicesManager()",
    "WebServicesUIManager::WebServicesUIManager()",
    "WebServicesUIManager::~WebServicesUIManager()",
    "SSOServicesPrivate::JsonToNetworkCookie(Json::Value const&, NetworkCookie&)",
    "SSOServicesPrivate::NetworkCookieToJson(NetworkCookie const&, Json::Value&)",
}


def shortened(name):
    """A name as the headers spell it: without namespaces, with usual types."""
    name = name.replace("[abi:cxx11]", "").replace("std::__cxx11::", "std::").replace(" >", ">")
    for unit, text in (("char", "std::string"), ("wchar_t", "std::wstring")):
        name = name.replace(
            f"std::basic_string<{unit}, std::char_traits<{unit}>, std::allocator<{unit}>>", text
        )
        name = name.replace(f"std::vector<{text}, std::allocator<{text}>>", f"std::vector<{text}>")
        name = name.replace(
            f"std::map<{text}, {text}, std::less<{text}>,"
            f" std::allocator<std::pair<{text} const, {text}>>>",
            f"std::map<{text}, {text}>",
        )
    for ratio, duration in (("1", "seconds"), ("1000", "milliseconds")):
        name = re.sub(
            rf"std::chrono::duration<long(?: long)?, std::ratio<1l+, {ratio}l+>>",
            f"std::chrono::{duration}",
            name,
        )
    name = name.replace("int (*)(char const*, int, char*, int, void*)", "BufferTransformCallback")
    return re.sub(r"Halvorix::(WebServices|WebServicesUI|SSOServices|StdUtil)::", "", name)


def is_of_the_library(name):
    """Not tables of virtual operations, nor templates of others for its types.

    Those are named with what they return in front.
    """
    before_arguments = name.split("(", 1)[0]
    return name.startswith(("Halvorix::", "SSOServicesPrivate::")) and " " not in before_arguments


def output_of(command, **options):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True, **options).stdout


def exports_of(arguments):
    """The library's exports, demangled."""
    if arguments.nm:
        # Address, kind and name; those of no address are not its own.
        lines = output_of([arguments.nm, "-DC", "--defined-only", arguments.library]).splitlines()
        return [line.split(" ", 2)[2].partition("@")[0] for line in lines]
    table = output_of([arguments.objdump, "-p", arguments.library])
    table = table[table.index("[Ordinal/Name Pointer] Table") :]
    names = re.findall(r"^\s*\[ *\d+\](?: \+base\[ *\d+\])?(?: +[0-9a-f]{4,})? (\S+)$", table, re.M)
    return output_of([arguments.cxxfilt, "--no-strip-underscore"], input="\n".join(names) + "\n").splitlines()


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--nm")
    parser.add_argument("--objdump")
    parser.add_argument("--cxxfilt")
    parser.add_argument("library")
    parser.add_argument("command", nargs=argparse.REMAINDER)
    arguments = parser.parse_args()

    exported = {shortened(name) for name in exports_of(arguments) if is_of_the_library(name)}
    listed = output_of(arguments.command).splitlines()
    walked = set(listed)

    failures = [f"listed twice: {name}" for name in sorted(walked) if listed.count(name) > 1]
    failures += [f"exported, but not walked: {name}" for name in sorted(exported - walked - PRIVATE)]
    failures += [f"walked, but not exported: {name}" for name in sorted(walked - exported)]
    failures += [f"walked, but private: {name}" for name in sorted(walked & PRIVATE)]
    for failure in failures:
        print(failure)
    print(f"{len(walked)} members walked, {len(exported - PRIVATE)} exported")
    # An empty side means that nothing was compared.
    return 1 if failures or not walked else 0


if __name__ == "__main__":
    try:
        sys.exit(main())
    except subprocess.CalledProcessError as error:
        # Its status says whether the host could be run here at all.
        print(error)
        sys.exit(error.returncode if error.returncode > 0 else 1)
