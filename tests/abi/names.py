"""Decorated names: of the factory procedure, and of all that is exported.

They come from the compiler itself: a translation unit that defines every member
which the headers mark for export is compiled for each target, and its symbols
are read.
"""

import json
import re

from compilers import clang, run

# On Windows whatever the compiler, on Linux the platform's own.
FACTORY = {
    "msvc-x64": "?GetSSOClientFactory@@YA?AV?$shared_ptr@VISSOClientFactory@SSOServices"
                "@Halvorix@@@std@@XZ",
    "linux": "_Z19GetSSOClientFactoryv",
}
FACTORY["msvc-x86"] = FACTORY["msvc-x64"]
FACTORY["mingw"] = FACTORY["linux"]

LISTS = {
    "msvc-x64": "names-msvc-x64.txt",
    "msvc-x86": "names-msvc-x86.txt",
    "linux": "names-itanium.txt",
}


def includes(include):
    """Lines that include all headers of hosts and plugins."""
    return "".join(f'#include "{header.name}"\n' for header in sorted(include.glob("*.h"))) + (
        '#include "plugin/Plugin.h"\n')


def declarations(node, scope=()):
    """Pairs of what concerns us, exported classes and functions and the factory
    procedure, and the namespaces around it."""
    if node.get("kind") == "NamespaceDecl":
        scope += (node["name"],)
    for child in node.get("inner", ()):
        exported = any(part.get("kind") == "DLLExportAttr" for part in child.get("inner", ()))
        if (child.get("kind") == "CXXRecordDecl" and exported or
                child.get("kind") == "FunctionDecl" and
                (exported or child["name"] == "GetSSOClientFactory")):
            yield child, scope
        else:
            yield from declarations(child, scope)


def definitions(include):
    """A definition for each exported member, and for the factory procedure."""
    tree = json.loads(run(clang("msvc-x64") + [
        "-std=c++17", f"-I{include}", "-DHXSSO_BUILDING", "-fsyntax-only", "-Xclang",
        "-ast-dump=json"], includes(include)))
    text = ""
    for node, scope in declarations(tree):
        if node["kind"] == "CXXRecordDecl":
            scope += (node["name"],)
            members = node["inner"]
        else:
            members = [node]
        for member in members:
            if member.get("isImplicit") or member.get("explicitlyDeleted"):
                continue
            result, _, rest = member.get("type", {}).get("qualType", "").partition("(")
            called = "::".join(scope + (member.get("name", ""),)) + "(" + rest
            if member["kind"] in ("CXXMethodDecl", "FunctionDecl"):
                text += f"auto {called} -> {result}{{ for (;;); }}\n"
            elif member["kind"] == "CXXConstructorDecl":
                text += f"{called} {{}}\n"
            elif member["kind"] == "CXXDestructorDecl":
                text += f"{called.replace(' noexcept', '')} {{}}\n"
    return text


def translation_unit(include, defined=None):
    return "#define HXSSO_BUILDING\n" + includes(include) + (defined or definitions(include))


def symbols(include, target, defined=None):
    """(names that are exported, names that are defined) by the headers."""
    assembly = run(clang(target) + ["-std=c++17", f"-I{include}", "-S", "-o", "-",
                                    "-fvisibility=hidden", "-fvisibility-inlines-hidden"],
                   translation_unit(include, defined))
    found = {}
    for kind, name in re.findall(r'^\t\.(globl|weak|hidden)\t("?[^"\s]+"?)', assembly, re.M):
        found.setdefault(name.strip('"'), set()).add(kind)
    if target == "linux":
        left = {name for name, kinds in found.items() if "hidden" not in kinds}
    else:
        # What the object tells the linker to export.
        left = set(re.findall(r'[-/]export:(?:\\"|")?([^\s,"\\]+)', assembly, re.I))
    return left, set(found)


def differ(found, listed, where):
    """Compares two sets of names; what differs, as texts."""
    return [f"{name} is in {where} and not in the list" for name in sorted(found - listed)] + [
        f"{name} is in the list and not in {where}" for name in sorted(listed - found)]


def factory_differs(defined, target):
    if FACTORY[target] in defined:
        return []
    found = [name for name in defined if "GetSSOClientFactory" in name]
    return [f"the factory procedure: the contract has '{FACTORY[target]}', the headers have "
            f"'{', '.join(found) or 'nothing'}'"]


def read_list(file):
    return set(file.read_text().split()) if file.is_file() else set()


def write_list(file, names):
    file.write_text("".join(f"{name}\n" for name in sorted(names)))
