#!/usr/bin/env python3
"""Breaks a copy of the sources in one place after another, and expects the checks that look at
sources only to notice."""

import contextlib
import io
import pathlib
import shutil
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parent

sys.dont_write_bytecode = True
sys.path += [str(HERE / "docs"), str(HERE / "layers")]
import check as layers  # noqa: E402
import messages  # noqa: E402

PAGE = "docs/troubleshooting.md"
TOLD = "tests/docs/messages.txt"
LOAD = "src/host/PluginLoad.cpp"

# File, text in it, text in its place, what has to be said. Without a text there: one more line.
OF_MESSAGES = [
    (TOLD, "error: Client plugin module not found", "error: No plugin", "is not up to date"),
    (TOLD, "error: Client plugin module", "info: Client plugin module", "is not up to date"),
    (TOLD, "\nPluginNotFound\n", "\nPluginLost\n", "PluginNotFound is not told"),
    (TOLD, "\nPluginNotFound\n", "\nPluginLost\n", "src/ logs nothing of PluginLost"),
    (TOLD, "\nPluginLoading\n", "\nPluginNotFound\n", "PluginNotFound is told twice"),
    (TOLD, "\nGroup: The server application\n", "\nGroup: The load\n", "The load is told twice"),
    (TOLD, "\nwhen: In this order", "\nmeaning: In this order", "The load has no 'when'"),
    (TOLD, "\nerror: Client plugin module", "\nClient plugin module",
     "PluginNotFound has no 'level'"),
    (TOLD, "\nremedy: -\n", "\n", "has no 'remedy'"),
    (TOLD, "\nremedy: -\n", "\nremedy -\n", "cannot be read"),
    (PAGE, "- `Client plugin module not found", "- `No plugin", "is not up to date"),
    (LOAD, "Messages::PluginNotFound", "Messages::PluginGone", "PluginGone is not told"),
    (LOAD, "LogMessage(log, Messages::PluginNotFound, file)", "log(file, level)",
     "log where LogMessage belongs"),
    (LOAD, "LogMessage(log, Messages::PluginNotFound, file)", 'LogWrite(L"no plugin", level)',
     "LogWrite where LogMessage belongs"),
]
OF_LAYERS = [
    ("src/support/LogSink.cpp", "", '#include "host/SSOClientManager.h"',
     "src/support may not include src/host"),
    ("src/support/LogSink.h", "", '#include "discovery/Version.h"',
     "src/support may not include src/discovery"),
    ("src/discovery/PathText.cpp", "", '#include "host/SSOClientManager.h"',
     "src/discovery may not include src/host"),
    ("src/discovery/PathText.cpp", "", "#include <plugin/ISSOClient.h>",
     "src/discovery may not include include/plugin"),
    ("src/host/PluginLoad.cpp", "", '#include "api/Plugin.h"', "src/host may not include src/api"),
    ("src/types/OAuth2Token.cpp", "", '#include "json/JsonDocument.h"',
     "src/types may not include src/json"),
    ("src/types/OAuth2Token.cpp", "", "#include <json/value.h>", "src/types may not use"),
    ("src/json/Base64.h", "", '#include "discovery/Version.h"',
     "src/json may not include src/discovery"),
    ("src/api/SpecText.h", "", '#include "platform/Platform.h"',
     "src/api may not include src/platform"),
    ("src/platform/Platform.h", "", '#include "support/LogSink.h"',
     "src/platform may not include src/support"),
    ("src/platform/linux/Text.cpp", "", '#include "platform/windows/Windows.h"',
     "is for src/platform/windows alone"),
    ("src/platform/Platform.h", "", '#include "platform/linux/NarrowText.h"',
     "is for src/platform/linux alone"),
    ("src/host/PluginLoad.cpp", "", "#include <dlfcn.h>", "src/host may not use <dlfcn.h>"),
    ("src/support/LogSink.cpp", "", "#include <windows.h>", "src/support may not use <windows.h>"),
    ("src/support/LogSink.cpp", "", "#include <sys/stat.h>",
     "src/support may not use <sys/stat.h>"),
    ("include/OAuth2Token.h", "", '#include "../src/types/OAuth2Records.h"',
     "../src/types/OAuth2Records.h is not written from its root"),
    ("src/api/SpecText.h", "", '#include "Plugin.h"', 'there is no "Plugin.h"'),
    ("include/OAuth2Token.h", "", "#include <boost/format.hpp>", "include may not use"),
    ("include/plugin/ILogger.h", "", "#include <json/value.h>", "include/plugin may not use"),
    ("src/host/PluginLoad.cpp", "", '#include "Nowhere.h"', 'there is no "Nowhere.h"'),
    ("src/host/PluginLoad.cpp", "", "#ifdef _WIN32", "asks for the system"),
    ("src/types/OAuth2Token.cpp", "", "#elif defined(__linux__)", "asks for the system"),
    ("tools/doctor/Main.cpp", "", '#include "Words.h"', 'there is no "Words.h"'),
    ("tools/doctor/Main.cpp", "", '#include "framework/System.h"',
     'there is no "framework/System.h"'),
    ("tests/api/SurfaceTest.cpp", "", '#include "../support/EarlyLines.h"',
     "is not written from its root"),
    ("tests/api/SurfaceTest.cpp", "", '#include "OAuth2Token.h"',
     "OAuth2Token.h is public: <OAuth2Token.h>"),
    ("bench/calls/Calls.cpp", "", '#include "Connected.h"', 'there is no "Connected.h"'),
    ("examples/host/Show.cpp", "", '#include "../plugin/Texts.h"', "is not written from its root"),
    ("plugins/openid/session/Log.h", "", '#include "openid/interfaces/Interfaces.h"',
     "plugins/openid/session may not include plugins/openid/interfaces"),
    ("plugins/openid/platform/Http.h", "", '#include "openid/protocol/Texts.h"',
     "plugins/openid/platform may not include plugins/openid/protocol"),
    ("plugins/openid/protocol/Texts.h", "", '#include "support/LogSink.h"',
     "the plugin may not include support/LogSink.h"),
    ("plugins/openid/protocol/Texts.h", "", "#ifdef _WIN32", "asks for the system"),
    ("tests/openid/LostTest.cpp", "", "",
     "tests/openid/LostTest.cpp: tests/openid/CMakeLists.txt does not name it"),
    ("plugins/openid/session/Lost.cpp", "", "", "plugins/openid/CMakeLists.txt does not name it"),
    ("tests/openid/CMakeLists.txt", "        linux/PeerTest.cpp\n", "",
     "tests/openid/linux/PeerTest.cpp: tests/openid/CMakeLists.txt does not name it"),
    ("plugins/openid/CMakeLists.txt", "    session/Tokens.cpp)", "    # session/Tokens.cpp\n)",
     "plugins/openid/session/Tokens.cpp: plugins/openid/CMakeLists.txt does not name it"),
    ("src/other/Other.cpp", "", "", "the layers do not know its folder"),
    ("docs/architecture.md", "", "| `src/support/` | `src/api/` | |", "the row of src/support/"),
]

# Thousands of small files that nobody includes.
NO_SOURCES = shutil.ignore_patterns("cases", "corpus")


def copy(root):
    for name in ("src", "include", "plugins", "tools", "tests", "bench", "examples"):
        shutil.copytree(ROOT / name, root / name, ignore=NO_SOURCES)
    (root / "docs").mkdir()
    for name in (PAGE, "docs/architecture.md"):
        shutil.copy(ROOT / name, root / name)


def looked_at(check, root):
    """Exit status and output of a check."""
    with contextlib.redirect_stdout(io.StringIO()) as output:
        status = check.main(["--root", str(root)])
    return status, output.getvalue()


def broken(check, root, name, text, instead):
    """The same, with that change in one file."""
    path = root / name
    before = path.read_text(encoding="utf-8") if path.exists() else None
    path.parent.mkdir(exist_ok=True)
    assert text in (before or ""), f"{name} has no {text!r}"
    after = before.replace(text, instead, 1) if text else f"{before or ''}\n{instead}\n"
    path.write_text(after, encoding="utf-8")
    try:
        return looked_at(check, root)
    finally:
        if before is None:
            path.unlink()
        else:
            path.write_text(before, encoding="utf-8")


def main():
    failed = 0
    with tempfile.TemporaryDirectory() as folder:
        root = pathlib.Path(folder)
        copy(root)
        for check, rows in ((messages, OF_MESSAGES), (layers, OF_LAYERS)):
            status, output = looked_at(check, root)
            outcomes = [(check.__name__, status == 0 and output.startswith("passed:"), output)]
            for name, text, instead, said in rows:
                status, output = broken(check, root, name, text, instead)
                # What is one fault to the layers may leave the messages' page behind as well.
                good = status == 1 and said in output
                good = good and (check is messages or output.count("failed:") == 1)
                outcomes.append((f"{name}: {instead}", good, output))
            for what, good, output in outcomes:
                failed += not good
                if not good:
                    print(f"failed: {what}\n    " + output.strip().replace("\n", "\n    "))
    print(f"{len(OF_MESSAGES) + len(OF_LAYERS)} breaks, {failed} not found as they should be")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
