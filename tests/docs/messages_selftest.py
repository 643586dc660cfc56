#!/usr/bin/env python3
"""Breaks a copy of what tests/docs/messages.py reads, and expects it to be noticed."""

import contextlib
import io
import pathlib
import shutil
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[2]

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent))
import messages  # noqa: E402
PAGE = "docs/troubleshooting.md"
TOLD = "tests/docs/messages.txt"
CODE = "src/support/Messages.h"
TEST = "tests/support/MessagesTest.cpp"
LOAD = "src/host/PluginLoad.cpp"

# What is broken: file, text there, text in its place, what has to be said.
BROKEN = {
    "a text that has changed": (
        CODE, "Client plugin module not found", "No plugin", "is not up to date"),
    "a level that has changed": (
        CODE, "PluginNotFound{LogLevel::Error", "PluginNotFound{LogLevel::Info",
        "is not up to date"),
    "a message that nobody has told": (
        TOLD, "\nPluginNotFound\n", "\nPluginLost\n", "PluginNotFound is not told"),
    "an explanation without a message": (
        TOLD, "\nPluginNotFound\n", "\nPluginLost\n", "there is no PluginLost"),
    "a message told twice": (
        TOLD, "\nPluginLoading\n", "\nPluginNotFound\n", "PluginNotFound is told twice"),
    "a group that nobody has told": (
        TOLD, "\nGroup: The load\n", "\nGroup: The burden\n", "The load is not told"),
    "an explanation without a group": (
        TOLD, "\nGroup: The load\n", "\nGroup: The burden\n", "there is no The burden"),
    "a group told twice": (
        TOLD, "\nGroup: The server application\n", "\nGroup: The load\n",
        "The load is told twice"),
    "a group without a time": (
        TOLD, "\nwhen: In this order", "\nmeaning: In this order", "has no 'when'"),
    "a missing field": (
        TOLD, "\nremedy: -\n", "\n", "has no 'remedy'"),
    "a line of no form": (
        TOLD, "\nremedy: -\n", "\nremedy -\n", "cannot be read"),
    "a list edited by hand": (
        PAGE, "- `Client plugin module not found", "- `No plugin", "is not up to date"),
    "a message that no test holds": (
        TEST, "Messages::PluginNotFound, LogLevel", "Messages::PluginLoading, LogLevel",
        "PluginNotFound is not held"),
    "a message that nothing logs": (
        LOAD, "Messages::PluginNotFound", "Messages::PluginLoading",
        "nothing logs PluginNotFound"),
    "a line with a text of its own": (
        LOAD, "LogMessage(log, Messages::PluginNotFound, file)", 'LogWrite(L"no plugin", level)',
        "LogWrite is handed a text"),
    "an argument that is a text": (
        LOAD, "LogMessage(log, Messages::PluginNotFound, file)",
        'LogMessage(log, Messages::PluginNotFound, L"nothing")', "LogMessage is handed a text"),
    "a line that is composed elsewhere": (
        LOAD, "LogMessage(log, Messages::PluginNotFound, file)", "LogMessage(log, Own(file), file)",
        "LogMessage is handed no message"),
    "a line past the messages": (
        LOAD, "LogMessage(log, Messages::PluginNotFound, file)", "log(file, level)",
        "log where LogMessage"),
    "a format of its own": (
        LOAD, "FlushEarlyLog();", 'auto const own = boost::wformat(L"%1%") % file;',
        "formats a text by itself"),
}


def run(root):
    """Exit status and output of a check."""
    with contextlib.redirect_stdout(io.StringIO()) as output:
        status = messages.main(["--root", str(root)])
    return status, output.getvalue()


def copy(root):
    shutil.copytree(ROOT / "src", root / "src")
    for name in (PAGE, TOLD, TEST):
        (root / name).parent.mkdir(parents=True, exist_ok=True)
        shutil.copy(ROOT / name, root / name)


def main():
    failed = 0
    for what, (name, text, instead, said) in {"nothing": (CODE, "", "", "passed"),
                                              **BROKEN}.items():
        with tempfile.TemporaryDirectory() as folder:
            root = pathlib.Path(folder)
            copy(root)
            content = (root / name).read_text(encoding="utf-8")
            (root / name).write_text(content.replace(text, instead, 1), encoding="utf-8")
            status, output = run(root)
            good = said in output and (status == 0) == (what == "nothing")
            good = good and (text in content and (text != instead or what == "nothing"))
        print(f"{'passed' if good else 'failed'}: {what}")
        if not good:
            print("    " + output.strip().replace("\n", "\n    "))
        failed += not good
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
