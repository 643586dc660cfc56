#!/usr/bin/env python3
"""Writes the list of all log messages into docs/troubleshooting.md, and checks it.

  tests/docs/messages.py            checks; exit status 1 if anything is wrong
  tests/docs/messages.py --update   writes the list anew, then checks

Texts and levels come from src/support/Messages.h, the one list in code; when the
messages of a group are logged, what each means and what to do come from
tests/docs/messages.txt. Checked is that

  - each message and group is told there, none is left over, and the page is up to date;
  - tests/support/MessagesTest.cpp holds each message to its text;
  - each message is logged somewhere in src/, and src/ logs nothing but these:
    no text is composed where it is logged.
"""

import argparse
import pathlib
import re
import sys

BEGIN = "<!-- messages: written by tests/docs/messages.py, do not edit -->"
END = "<!-- end of messages -->"
FIELDS = ("meaning", "remedy")
FIELDS_OF_A_GROUP = ("when",)
NOTHING = "-"

# Hands on lines that are composed already: the shared resolver those of its copies.
HANDS_ON = {
    "discovery/SSOPathResolver.cpp",
    "discovery/SharedPathResolver.cpp",
    "support/LogSink.cpp",
    "support/LogSink.h",
}


def read(path):
    return path.read_text(encoding="utf-8")


def messages_in_code(root):
    """Of each group its title and its messages as (name, level, text)."""
    groups = []
    source = read(root / "src/support/Messages.h")
    source = source[source.index("namespace Messages") :]
    pattern = re.compile(
        r"^// (?P<title>[^\n]*)\.\n(?=(?:// [^\n]*\n)*inline)"
        r"|constexpr Message (?P<name>\w+)\{(?P<value>.*?)\};",
        re.M | re.S,
    )
    for match in pattern.finditer(source):
        if match["title"]:
            # A comment behind an empty line begins a group; others explain a message.
            if source[match.start() - 2] == "\n":
                groups.append((match["title"], []))
            continue
        level = re.search(r"LogLevel::(\w+)", match["value"])[1]
        text = "".join(re.findall(r'L"((?:[^"\\]|\\.)*)"', match["value"]))
        groups[-1][1].append((match["name"], level, text))
    return groups


def messages_told(root):
    """Of each message and of each group in tests/docs/messages.txt its fields."""
    told = {}
    told_of_groups = {}
    wrong = []
    entry = field = None
    fields = ()
    for number, line in enumerate(read(root / "tests/docs/messages.txt").splitlines(), 1):
        if line.startswith("#") or not line.strip():
            continue
        match = re.fullmatch(r"(\w+): (\S.*)", line)
        if re.fullmatch(r"\w+", line) or match and match[1] == "Group":
            among, fields = (told_of_groups, FIELDS_OF_A_GROUP) if match else (told, FIELDS)
            name = match[2] if match else line
            if name in among:
                wrong.append(f"tests/docs/messages.txt:{number}: {name} is told twice")
            entry, field = among.setdefault(name, {}), None
        elif match and match[1] in fields:
            field = match[1]
            entry[field] = match[2]
        elif line.startswith("  ") and field:
            entry[field] += " " + line.strip()
        else:
            wrong.append(f"tests/docs/messages.txt:{number}: cannot be read: {line}")
    for among, fields in ((told, FIELDS), (told_of_groups, FIELDS_OF_A_GROUP)):
        for name, entry in among.items():
            wrong += [f"tests/docs/messages.txt: {name} has no '{f}'"
                      for f in fields if f not in entry]
    return told, told_of_groups, wrong


def as_code(text):
    text = text.replace("\\n", "⏎")
    # A quotation mark behind a single backtick ends the code for Doxygen.
    return f"``{text}``" if "'" in text else f"`{text}`"


def prose(text):
    """Prose with its placeholders as code: Doxygen drops a percent sign."""
    return "".join(
        part if part.startswith("`") else re.sub(r"(%\w+%)", r"`\1`", part)
        for part in re.split(r"(`[^`]*`)", text)
    )


def item(level, text, entry):
    """The fix is told as the doctor tells one."""
    meaning, remedy = (entry.get(field, NOTHING) for field in FIELDS)
    said = [] if meaning == NOTHING else [meaning]
    said += [] if remedy == NOTHING else [f"Fix: {remedy}"]
    told = as_code(text) if level == "Info" else f"{as_code(text)} ({level.lower()})"
    return f"- {told}: {prose('. '.join(said))}" if said else f"- {told}"


def message_list(groups, told, told_of_groups):
    lines = []
    for title, messages in groups:
        lines += [f"### {title}", "", prose(told_of_groups.get(title, {}).get("when", "")), ""]
        lines += [item(level, text, told.get(name, {})) for name, level, text in messages]
        lines.append("")
    return "\n".join(lines)


def page_with(page, content):
    if page.count(BEGIN) != 1 or page.count(END) != 1 or page.index(END) < page.index(BEGIN):
        raise SystemExit("failed: docs/troubleshooting.md has lost the marks of the list")
    before, rest = page.split(BEGIN)
    return f"{before}{BEGIN}\n\n{content}\n{END}{rest.split(END)[1]}"


def without_comments(source):
    return re.sub(r"//[^\n]*|/\*.*?\*/", lambda m: "\n" * m[0].count("\n"), source, flags=re.S)


def call_arguments(source, start):
    """The text between the parentheses, of which the first stands at `start`."""
    depth = 0
    position = start
    while position < len(source):
        literal = re.compile(r'"(?:[^"\\]|\\.)*"').match(source, position)
        if literal:
            position = literal.end()
            continue
        depth += {"(": 1, ")": -1}.get(source[position], 0)
        if depth == 0:
            break
        position += 1
    return source[start + 1 : position]


def second_argument(arguments):
    depth = 0
    commas = []
    for position, character in enumerate(arguments):
        depth += {"(": 1, "{": 1, ")": -1, "}": -1}.get(character, 0)
        if character == "," and depth == 0:
            commas.append(position)
    begin, end, *_ = [*commas, len(arguments), len(arguments)]
    return arguments[begin + 1 : end].strip()


def check_sources(root, names):
    """What src/ hands to the log."""
    wrong = []
    folder = root / "src"
    sources = {
        path.relative_to(folder).as_posix(): without_comments(read(path))
        for path in sorted(folder.rglob("*"))
        if path.suffix in (".h", ".cpp")
    }
    everything = "\n".join(text for name, text in sources.items() if name != "support/Messages.h")
    # Those that are handed a message under another name.
    handed_on = set(re.findall(r"\bMessage const& (\w+)", everything))
    used = set(re.findall(r"\bMessages::(\w+)", everything))
    wrong += [f"src/support/Messages.h: nothing logs {name}" for name in sorted(names - used)]

    for name, text in sources.items():
        for match in re.finditer(r"\b(LogMessage|LogWrite|logFunction|log)\s*\(", text):
            where = f"src/{name}:{text.count(chr(10), 0, match.start()) + 1}"
            arguments = call_arguments(text, match.end() - 1)
            if '"' in arguments:
                wrong.append(f"{where}: {match[1]} is handed a text that is no message")
            elif match[1] != "LogMessage":
                if name not in HANDS_ON:
                    wrong.append(f"{where}: {match[1]} where LogMessage and a message belong")
            elif not is_message(second_argument(arguments), handed_on):
                wrong.append(f"{where}: LogMessage is handed no message")
        for match in re.finditer(r"\bCompose\s*\(", text):
            where = f"src/{name}:{text.count(chr(10), 0, match.start()) + 1}"
            if name not in ("support/Messages.h", "support/LogSink.h"):
                wrong.append(f"{where}: composes a line by itself")
        if "wformat" in text and name != "support/Messages.h":
            wrong.append(f"src/{name}: formats a text by itself")
    return wrong


def is_message(argument, handed_on):
    """A message, a choice between messages, or a parameter that is one."""
    if re.fullmatch(r"Message const& \w+", argument):
        return True  # the declaration of LogMessage itself
    parts = re.split(r"\?|(?<!:):(?!:)", argument)
    choices = parts[1:] if len(parts) > 1 else parts
    return all(
        re.fullmatch(r"Messages::\w+", choice.strip())
        or re.split(r"\.|->", choice.strip())[-1] in handed_on
        for choice in choices
    )


def check(root):
    groups = messages_in_code(root)
    names = {name for _, messages in groups for name, _, _ in messages}
    titles = {title for title, _ in groups}
    told, told_of_groups, wrong = messages_told(root)
    if not names:
        wrong.append("src/support/Messages.h: no messages found")
    for here, there in ((names, set(told)), (titles, set(told_of_groups))):
        wrong += [f"tests/docs/messages.txt: {name} is not told" for name in sorted(here - there)]
        wrong += [f"tests/docs/messages.txt: there is no {name}" for name in sorted(there - here)]

    test = "tests/support/MessagesTest.cpp"
    tested = re.findall(r"\bMessages::(\w+), LogLevel::", read(root / test))
    wrong += [f"{test}: {name} is not held to its text" for name in sorted(names - set(tested))]

    page = read(root / "docs/troubleshooting.md")
    if page_with(page, message_list(groups, told, told_of_groups)) != page:
        wrong.append("docs/troubleshooting.md is not up to date: tests/docs/messages.py --update")
    return wrong + check_sources(root, names), len(names)


def main(arguments=None):
    parser = argparse.ArgumentParser()
    parser.add_argument("--update", action="store_true")
    parser.add_argument("--root", type=pathlib.Path,
                        default=pathlib.Path(__file__).resolve().parents[2])
    options = parser.parse_args(arguments)
    if options.update:
        path = options.root / "docs/troubleshooting.md"
        content = message_list(messages_in_code(options.root), *messages_told(options.root)[:2])
        path.write_text(page_with(read(path), content), encoding="utf-8")
    wrong, count = check(options.root)
    for text in wrong:
        print(f"failed: {text}")
    if not wrong:
        print(f"passed: {count} messages, each told, tested and logged")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
