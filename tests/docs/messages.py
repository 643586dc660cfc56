#!/usr/bin/env python3
"""Writes the list of all log messages into docs/troubleshooting.md, and checks it.

  tests/docs/messages.py            checks; exit status 1 if anything is wrong
  tests/docs/messages.py --update   writes the list anew, then checks

All that the list has comes from tests/docs/messages.txt. Its texts and levels are those of
src/support/Messages.h: tests/support/MessagesTest.cpp compares them. Checked here is that

  - each message is told in full, and the page is up to date;
  - src/ logs each of them, and no others;
  - no line goes to the log past them.
"""

import argparse
import pathlib
import re
import sys

BEGIN = "<!-- messages: written by tests/docs/messages.py, do not edit -->"
END = "<!-- end of messages -->"
LEVELS = ("error", "warning", "info")
FIELDS = ("meaning", "remedy")
NOTHING = "-"

# Hand on the log, or lines that are composed already: the shared resolver those of its copies.
HAND_ON = {
    "discovery/SSOPathResolver.cpp",
    "discovery/SharedPathResolver.cpp",
    "support/LogSink.cpp",
    "support/LogSink.h",
}


def read(path):
    return path.read_text(encoding="utf-8")


class Told:
    """tests/docs/messages.txt: groups, each with its messages, and what cannot be read."""

    def __init__(self, root):
        self.groups = []
        self.wrong = []
        self.entry = self.field = None
        for number, line in enumerate(read(root / "tests/docs/messages.txt").splitlines(), 1):
            if line.strip() and not line.startswith("#") and not self.takes(line):
                self.wrong.append(f"line {number} cannot be read: {line}")
        entries = self.groups + self.messages()
        for entry in entries:
            self.wrong += [f"{entry['name']} has no '{field}'"
                           for field in entry["fields"] if field not in entry]
        names = [entry["name"] for entry in entries]
        self.wrong += [f"{name} is told twice" for name in sorted(set(names))
                       if names.count(name) > 1]

    def messages(self):
        return [message for group in self.groups for message in group["messages"]]

    def takes(self, line):
        key, colon, value = line.partition(": ")
        if key == "Group" and colon:
            self.entry = {"name": value, "fields": ("when",), "messages": []}
            self.groups.append(self.entry)
        elif re.fullmatch(r"\w+", line) and self.groups:
            self.entry = {"name": line, "fields": ("level", *FIELDS)}
            self.groups[-1]["messages"].append(self.entry)
        elif key in LEVELS and colon and self.entry and "level" in self.entry["fields"]:
            self.entry["level"], self.entry["text"] = key, value
        elif colon and self.entry and key in self.entry["fields"]:
            self.field = key
            self.entry[key] = value
        elif line.startswith("  ") and self.field in (self.entry or ()):
            self.entry[self.field] += " " + line.strip()
        else:
            return False
        return True


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


def item(message):
    """The fix is told as the doctor tells one."""
    text, level = as_code(message.get("text", "")), message.get("level")
    meaning, remedy = (message.get(field, NOTHING) for field in FIELDS)
    said = [] if meaning == NOTHING else [meaning]
    said += [] if remedy == NOTHING else [f"Fix: {remedy}"]
    told = text if level == "info" else f"{text} ({level})"
    return f"- {told}: {prose('. '.join(said))}" if said else f"- {told}"


def message_list(groups):
    lines = []
    for group in groups:
        lines += [f"### {group['name']}", "", prose(group.get("when", "")), ""]
        lines += [item(message) for message in group["messages"]]
        lines.append("")
    return "\n".join(lines)


def page_with(page, content):
    if page.count(BEGIN) != 1 or page.count(END) != 1 or page.index(END) < page.index(BEGIN):
        raise SystemExit("failed: docs/troubleshooting.md has lost the marks of the list")
    before, rest = page.split(BEGIN)
    return f"{before}{BEGIN}\n\n{content}\n{END}{rest.split(END)[1]}"


def check_sources(root, told):
    """What src/ hands to the log."""
    logged = set()
    wrong = []
    for path in sorted((root / "src").rglob("*")):
        name = path.relative_to(root / "src").as_posix()
        if path.suffix not in (".h", ".cpp") or name == "support/Messages.h":
            continue
        for number, line in enumerate(read(path).splitlines(), 1):
            logged.update(re.findall(r"\bMessages::(\w+)", line))
            past = re.search(r"\b(LogWrite|logFunction|log)\(", line)
            if past and name not in HAND_ON:
                wrong.append(f"src/{name}:{number}: {past[1]} where LogMessage belongs")
    wrong += [f"src/ logs nothing of {name}" for name in sorted(told - logged)]
    wrong += [f"tests/docs/messages.txt: {name} is not told" for name in sorted(logged - told)]
    return wrong


def check(root):
    told = Told(root)
    wrong = [f"tests/docs/messages.txt: {text}" for text in told.wrong]
    page = read(root / "docs/troubleshooting.md")
    if page_with(page, message_list(told.groups)) != page:
        wrong.append("docs/troubleshooting.md is not up to date: tests/docs/messages.py --update")
    names = {message["name"] for message in told.messages()}
    return wrong + check_sources(root, names), len(names)


def main(arguments=None):
    parser = argparse.ArgumentParser()
    parser.add_argument("--update", action="store_true")
    parser.add_argument("--root", type=pathlib.Path,
                        default=pathlib.Path(__file__).resolve().parents[2])
    options = parser.parse_args(arguments)
    if options.update:
        path = options.root / "docs/troubleshooting.md"
        path.write_text(page_with(read(path), message_list(Told(options.root).groups)), encoding="utf-8")
    wrong, count = check(options.root)
    for text in wrong:
        print(f"failed: {text}")
    if not wrong:
        print(f"passed: {count} messages, each told and logged")
    return 1 if wrong or not count else 0


if __name__ == "__main__":
    sys.exit(main())
