"""Slot order: the interfaces as Clang lays them out, beside the contract."""

import re

from compilers import CompilerError, clang, run

NAMESPACES = re.compile(
    r"\b(?:Halvorix|Log|SSOServices|StdUtil|WebServices|WebServicesPrivateCore|WebServicesUI)::")


class Contract:
    """The table: `interfaces` maps a name to its positions, in order."""

    def __init__(self, file):
        self.interfaces = {}
        self.assertions = []  # (expression, the line of the table)
        sizes = {}
        positions = None
        for line in file.read_text().splitlines():
            line = line.partition("#")[0].strip()
            word, _, rest = line.partition(" ")
            if word == "interface":
                name, _, size = rest.partition(" ")
                positions = self.interfaces[name] = []
                sizes[name] = int(size)
            elif word.isdigit():
                if int(word) != len(positions):
                    raise ValueError(f"{file}: position {word} out of turn: {rest}")
                positions.append(rest)
            elif word == "type":
                name, _, meaning = rest.partition(" = ")
                self.assertions.append((f"Same<{name}, {meaning}>::value", line))
            elif word == "size":
                name, _, size = rest.partition(" = ")
                self.assertions.append((f"sizeof({name}) == {size}", line))
            elif word:
                raise ValueError(f"{file}: what is this line: {line}")
        for name, positions in self.interfaces.items():
            if len(positions) != sizes[name]:
                raise ValueError(f"{file}: {name} has {len(positions)} positions, not {sizes[name]}")

    def count(self):
        return sum(map(len, self.interfaces.values()))


def spelled(text):
    """A type, or types, without namespaces and as the contract spells them:
    Clang writes `const char *` for `char const*`."""
    text = NAMESPACES.sub("", text)
    text = re.sub(r"(^|, )const ((?:unsigned |long )*\w+(?:::\w+)*(?:<[^&*]*>)?)",
                  r"\1\2 const", text)
    return re.sub(r" ([*&])", r"\1", text)


def slots(dump, name):
    """The positions of an interface in Clang's dump of the virtual tables."""
    table = re.search(rf"^V(?:F|f)?[Tt]able for '{name}' \(\d+ entries\)\.\n(.*?)\n\n", dump,
                      re.M | re.S)
    if not table:
        return []
    found = []
    for line in table[1].splitlines():
        entry = re.match(r" *\d+ \| (.*)", line)
        entry = entry[1] if entry else ""
        if re.search(r"::~\w+\(\)", entry):
            # The Itanium rules give the destructor two positions in a row.
            if not entry.endswith("[deleting]") or found[-1:] != ["destructor"]:
                found.append("destructor")
            continue
        operation = re.fullmatch(rf"(.*?) ?{name}::(\w+)\((.*)\)(.*?)( \[pure\])?", entry)
        if not operation:
            continue
        result, called, arguments, rest, pure = operation.groups()
        reserved = called.startswith("Reserved") or NAMESPACES.sub("", arguments).startswith(
            ("Reserved", name.rpartition("::")[2] + "::Reserved"))
        if reserved and not pure:
            found.append("Reserved")
        else:
            text = f"{called}({spelled(arguments)}){rest} -> {spelled(result)}"
            # A plugin has to write each operation and no Reserved one.
            found.append(text if bool(pure) != reserved else
                         text + (", pure" if pure else ", not pure"))
    return found


def defaults_of(name):
    """The class of plugin/Defaults.h for an interface: ISSOClient has SSOClientDefaults."""
    namespace, _, interface = name.rpartition("::")
    return f"{namespace}::{interface[1:]}Defaults"


def defaults_slots(dump, name):
    """The positions of the defaults of an interface: each operation is theirs, in its place,
    and each Reserved position still the interface's."""
    defaults = defaults_of(name)
    table = re.search(rf"^V(?:F|f)?[Tt]able for (?:'{name}' in )?'{defaults}' \(\d+ entries\)\.\n"
                      r"(.*?)\n\n", dump, re.M | re.S)
    if not table:
        return []
    # As if it were the interface's own table: an operation without a default is told by
    # what an operation must be, and a Reserved position with one likewise.
    entries = table[1].replace(" [pure]", "")
    entries = re.sub(rf"{defaults}::(\w+\(.*)$", rf"{name}::\1 [pure]", entries, flags=re.M)
    return slots(f"Vtable for '{name}' (0 entries).\n{entries}\n\n", name)


def tables(include, names, target):
    """Clang's dump for all these classes."""
    ours = any(name.endswith("Defaults") for name in names)
    text = f'#include "plugin/{"Defaults" if ours else "Plugin"}.h"\n'
    for number, name in enumerate(names):
        # Only a constructor that is needed needs the table of its base.
        text += (f"struct Need{number} : Halvorix::{name} {{ Need{number}(); }};\n"
                 f"Need{number}::Need{number}() {{}}\n")
    return run(clang(target) + ["-std=c++17", f"-I{include}", "-c", "-Xclang",
                                "-emit-llvm-only", "-Xclang", "-fdump-vtable-layouts"], text)


def types_differ(include, contract, target):
    """What the text of a layout does not show: that each type is the contract's
    own, and not another one of its name."""
    lines = ['#include "plugin/Plugin.h"',
             "template <class, class> struct Same { static constexpr bool value = false; };",
             "template <class T> struct Same<T, T> { static constexpr bool value = true; };",
             "namespace Halvorix::SSOServices {"]
    about = {}
    for expression, line in contract.assertions:
        about[len(lines) + 1] = f"the contract has '{line}', the headers do not"
        lines.append(f"static_assert({expression});")
    for name, positions in contract.interfaces.items():
        for position, text in enumerate(positions):
            operation = re.fullmatch(r"(\w+)\((.*)\) -> (.*)", text)
            if not operation:
                continue
            called, arguments, result = operation.groups()
            about[len(lines) + 1] = (f"{name} position {position}: the contract has "
                                     f"'{text}', no operation of the headers has these types")
            lines.append(f"auto const position{len(lines)} = static_cast<{result} "
                         f"({name}::*)({arguments})>(&{name}::{called});")
    lines.append("}\n")
    try:
        run(clang(target) + ["-std=c++17", f"-I{include}", "-fsyntax-only", "-ferror-limit=0"],
            "\n".join(lines))
    except CompilerError as error:
        wrong = sorted({int(line) for line in re.findall(r"^<stdin>:(\d+):\d+: error", str(error),
                                                         re.M)})
        return [about[line] for line in wrong if line in about] or [str(error)]
    return []


def differ(include, contract, target):
    """Compares the headers with the contract for a target; what differs, as texts."""
    return compare(include, contract, target, list(contract.interfaces), slots) + types_differ(
        include, contract, target)


def defaults_differ(include, contract, target):
    """The same for classes that derive from the defaults of each interface."""
    return compare(include, contract, target, list(map(defaults_of, contract.interfaces)),
                   defaults_slots)


def compare(include, contract, target, classes, slots_in):
    """The contract beside the tables of its interfaces, or of what derives from them."""
    try:
        dump = tables(include, classes, target)
    except CompilerError as error:
        return [str(error)]
    found = []
    for name, positions in contract.interfaces.items():
        laid_out = slots_in(dump, f"Halvorix::{name}")
        # A reserved position may be the destructor's, which is never called either.
        if positions[0] == "Reserved" and laid_out[:1] == ["destructor"]:
            laid_out[0] = "Reserved"
        wrong = []
        for position in range(max(len(positions), len(laid_out))):
            left, right = (NAMESPACES.sub("", table[position]) if position < len(table) else
                           "nothing" for table in (positions, laid_out))
            if left != right:
                wrong.append(f"{name} position {position}: the contract has '{left}', "
                             f"the headers have '{right}'")
        # Whatever is lost or put in between moves all that follows.
        found += wrong[:2]
        if len(wrong) > 2:
            found.append(f"{name}: {len(wrong) - 2} positions behind these differ, too")
    return found
