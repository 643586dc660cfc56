"""Small changes of C++ sources, each of which a test should notice."""

import collections
import re

# How a source is told in what it was, what stands there in its place.
Mutant = collections.namedtuple("Mutant", "begin end text")

TOKEN = re.compile(
    r"(?P<blank>\s+)"
    r"|(?P<comment>//[^\n]*|/\*.*?\*/)"
    r"|(?P<directive>^[ ]*\#[^\n]*)"
    r'|(?P<text>(?:u8|[LuUR])*"(?:\\.|[^"\\\n])*"|L?\'(?:\\.|[^\'\\\n])+\')'
    r"|(?P<name>[A-Za-z_]\w*)"
    r"|(?P<number>\d[\w.']*)"
    r"|(?P<sign><<=|>>=|->|::|\+\+|--|<<|>>|[<>=!+\-*/%&|^]=|&&|\|\||.)",
    re.DOTALL | re.MULTILINE)

Token = collections.namedtuple("Token", "kind text begin end")

# clang-format sets off the operators of two sides, and no brackets of a template.
OTHERS = {"==": "!=", "!=": "==", "<": "<=", "<=": "<", ">": ">=", ">=": ">",
          "&&": "||", "||": "&&", "+": "-", "-": "+", "+=": "-="}
NAMES = {"true": "false", "false": "true"}

# A statement that stands on one line and whose removal may still compile.
STATEMENT = re.compile(
    r"^[ ]+(?P<statement>(?!(?:return|using|static|constexpr|auto|case|default|throw|delete)\b)"
    r"(?:[\w:\->.\[\]*()]+(?: \+?= [^;]*|\([^;]*\))|\+\+\w+|break|continue));$", re.MULTILINE)

ARGUMENT = r"[\w.:]+(?:\(\))?"
TWO_ARGUMENTS = re.compile(rf"\b\w+\(({ARGUMENT}), ({ARGUMENT})\)")


def tokens(source):
    """What the compiler sees of it."""
    for match in TOKEN.finditer(source):
        if match.lastgroup not in ("blank", "comment", "directive"):
            yield Token(match.lastgroup, match[0], match.start(), match.end())


def of_token(source, token):
    if token.kind == "sign" and token.text in OTHERS:
        if source[token.begin - 1] == " " and source[token.end] in " \n":
            yield OTHERS[token.text]
    elif token.kind == "sign" and token.text == "!":
        yield ""
    elif token.kind == "name" and token.text in NAMES:
        yield NAMES[token.text]
    elif token.kind == "number" and token.text.isdigit():
        yield str(int(token.text) + 1)


def mutants(source):
    """All of a source, in the order in which they stand there."""
    found = []
    seen = set()  # positions that are code, and no text or comment
    for token in tokens(source):
        if token.kind != "text":
            seen.add(token.begin)
        found += [Mutant(token.begin, token.end, text) for text in of_token(source, token)]
    for match in STATEMENT.finditer(source):
        if match.start("statement") in seen:
            found.append(Mutant(match.start("statement"), match.end(), ";"))
    for match in TWO_ARGUMENTS.finditer(source):
        if match.start() in seen and match[1] != match[2]:
            found.append(Mutant(match.start(1), match.end(2), f"{match[2]}, {match[1]}"))
    return sorted(found)


def applied(source, mutant):
    return source[:mutant.begin] + mutant.text + source[mutant.end:]


def told(file, source, mutant):
    """The place, and the line as it is and as it becomes."""
    number = source.count("\n", 0, mutant.begin) + 1
    before = source.splitlines()[number - 1].strip()
    after = applied(source, mutant).splitlines()[number - 1].strip()
    return f"{file}:{number}: {before}  =>  {after}"
