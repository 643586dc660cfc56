#!/usr/bin/env python3
"""Holds the table of log lines in docs/openid.md against the texts that the plugin logs.

Each line of the plugin begins with a text of its own, written where it is logged: the page tells
each of them, and none that there is not. Of an error it is what stands before the reason.
"""

import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
PAGE = "docs/openid.md"
# Hand on what others compose.
HAND_ON = ("session/Log.cpp", "interfaces/LogManager.cpp")

STRING = r'((?:"(?:[^"\\]|\\.)*"\s*)+)'
CALLS = {
    "error": r"\bLog\(\)\.Failed\(|\blog->Failed\(|\bReport\(\s*\*?\w+,",
    "info": r"\bLog\(\)\.Info\(|\blog->Info\(",
    "warning": r"\bremarks\.push_back\(",
}


def joined(literals):
    return "".join(re.findall(r'"((?:[^"\\]|\\.)*)"', literals)).strip()


def text_behind(source, call):
    """The first text of the call, or of the constant that stands in its place."""
    rest = source[call.end():]
    arguments = rest[: rest.index(";")]
    name = re.match(r"\s*(\w+)\s*,", arguments)
    if name:
        constant = re.search(rf"\b{name[1]} =\s*{STRING};", source)
        return joined(constant[1]) if constant else None
    texts = [joined(one) for one in re.findall(STRING, arguments)]
    if "push_back" in call[0]:  # begins with what varies: the longest text tells it
        return max(texts, key=len)
    return texts[0] if texts else None


def logged():
    """The texts by level, and what cannot be read."""
    texts, wrong = {}, []
    for path in sorted((ROOT / "plugins/openid").rglob("*")):
        name = path.relative_to(ROOT / "plugins/openid").as_posix()
        if path.suffix not in (".cpp", ".h") or name in HAND_ON:
            continue
        source = re.sub(r"//[^\n]*", "", path.read_text(encoding="utf-8"))
        for level, pattern in CALLS.items():
            for call in re.finditer(pattern, source):
                text = text_behind(source, call)
                if text:
                    texts[text] = level
                elif "why" not in source[call.end():call.end() + 40]:
                    wrong.append(f"plugins/openid/{name}: no text at {call[0]}")
    return texts, wrong


def told():
    """The same of the page; capital words stand for what varies."""
    page = (ROOT / PAGE).read_text(encoding="utf-8")
    table = page[page.index("| line | level |"):].split("\n\n")[0]
    texts = {}
    for row in table.splitlines()[2:]:
        line, level, remedy = (cell.strip() for cell in row.strip("|").split("|"))
        line = re.sub(r"FILE: (?:key )?(?:KEY )?|\s*ISSUER", "", line.strip("`")).strip()
        texts[line] = level
        assert remedy, f"{PAGE}: {line} has no remedy"
    return texts


def main():
    texts, wrong = logged()
    page = told()
    # The page may leave the end of a long line out.
    found = {text: max((line for line in page if text.startswith(line) and page[line] == level),
                       key=len, default=None) for text, level in texts.items()}
    wrong += [f"{PAGE} does not tell: {text} ({texts[text]})"
              for text, line in found.items() if line is None]
    wrong += [f"{PAGE} tells what nothing logs: {line}"
              for line in page if line not in found.values()]
    if len(texts) < 20:
        wrong.append("hardly any texts were found")
    for text in wrong:
        print("failed:", text)
    if not wrong:
        print(f"passed: {len(texts)} lines, each told and logged")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
