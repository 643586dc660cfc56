#!/usr/bin/env python3
"""Adds a wrong include to a copy of the sources, and expects it to be found."""

import contextlib
import io
import pathlib
import shutil
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parents[1]

sys.dont_write_bytecode = True
sys.path.insert(0, str(HERE))
import check  # noqa: E402

# File, line that is added to it, what has to be said.
WRONG = [
    ("src/support/LogSink.cpp", '#include "host/SSOClientManager.h"',
     "src/support may not include src/host"),
    ("src/support/LogSink.h", '#include "discovery/Version.h"',
     "src/support may not include src/discovery"),
    ("src/discovery/PathText.cpp", '#include "host/SSOClientManager.h"',
     "src/discovery may not include src/host"),
    ("src/discovery/PathText.cpp", "#include <plugin/ISSOClient.h>",
     "src/discovery may not include include/plugin"),
    ("src/host/PluginLoad.cpp", '#include "api/Plugin.h"',
     "src/host may not include src/api"),
    ("src/types/OAuth2Token.cpp", '#include "json/JsonDocument.h"',
     "src/types may not include src/json"),
    ("src/types/OAuth2Token.cpp", "#include <json/value.h>", "src/types may not use"),
    ("src/json/Base64.h", '#include "discovery/Version.h"',
     "src/json may not include src/discovery"),
    ("src/api/SpecText.h", '#include "platform/Platform.h"',
     "src/api may not include src/platform"),
    ("src/platform/Platform.h", '#include "support/LogSink.h"',
     "src/platform may not include src/support"),
    ("src/platform/linux/Text.cpp", '#include "platform/windows/Windows.h"',
     "is for src/platform/windows alone"),
    ("src/platform/Platform.h", '#include "platform/linux/NarrowText.h"',
     "is for src/platform/linux alone"),
    ("src/host/PluginLoad.cpp", "#include <dlfcn.h>", "src/host may not use <dlfcn.h>"),
    ("src/support/LogSink.cpp", "#include <windows.h>", "src/support may not use <windows.h>"),
    ("src/support/LogSink.cpp", "#include <sys/stat.h>", "src/support may not use <sys/stat.h>"),
    ("include/OAuth2Token.h", '#include "../src/types/OAuth2Records.h"',
     "../src/types/OAuth2Records.h is not written from its root"),
    ("src/api/SpecText.h", '#include "Plugin.h"', 'there is no "Plugin.h"'),
    ("include/OAuth2Token.h", "#include <boost/format.hpp>", "include may not use"),
    ("include/plugin/ILogger.h", "#include <json/value.h>", "include/plugin may not use"),
    ("src/host/PluginLoad.cpp", '#include "Nowhere.h"', 'there is no "Nowhere.h"'),
    ("src/host/PluginLoad.cpp", "#ifdef _WIN32", "asks for the system"),
    ("src/types/OAuth2Token.cpp", "#elif defined(__linux__)", "asks for the system"),
    ("tools/doctor/Main.cpp", '#include "Words.h"', 'there is no "Words.h"'),
    ("tools/doctor/Main.cpp", '#include "framework/System.h"', 'there is no "framework/System.h"'),
    ("tests/api/SurfaceTest.cpp", '#include "../support/EarlyLines.h"',
     "is not written from its root"),
    ("tests/api/SurfaceTest.cpp", '#include "OAuth2Token.h"',
     "OAuth2Token.h is public: <OAuth2Token.h>"),
    ("bench/calls/Calls.cpp", '#include "Connected.h"', 'there is no "Connected.h"'),
    ("examples/host/Show.cpp", '#include "../plugin/Texts.h"', "is not written from its root"),
    ("plugins/openid/session/Log.h", '#include "openid/interfaces/Interfaces.h"',
     "plugins/openid/session may not include plugins/openid/interfaces"),
    ("plugins/openid/platform/Http.h", '#include "openid/protocol/Texts.h"',
     "plugins/openid/platform may not include plugins/openid/protocol"),
    ("plugins/openid/protocol/Texts.h", '#include "support/LogSink.h"',
     "the plugin may not include support/LogSink.h"),
    ("plugins/openid/protocol/Texts.h", "#ifdef _WIN32", "asks for the system"),
    ("src/other/Other.cpp", "", "the layers do not know its folder"),
    ("docs/architecture.md", "| `src/support/` | `src/api/` | |", "the row of src/support/"),
]

# Thousands of small files that nobody includes.
NO_SOURCES = shutil.ignore_patterns("cases", "corpus")


def run(root):
    """Exit status and output of a check."""
    with contextlib.redirect_stdout(io.StringIO()) as output:
        status = check.main(["--root", str(root)])
    return status, output.getvalue()


def main():
    failed = 0
    with tempfile.TemporaryDirectory() as folder:
        root = pathlib.Path(folder)
        for name in ("src", "include", "plugins", "tools", "tests", "bench", "examples"):
            shutil.copytree(ROOT / name, root / name, ignore=NO_SOURCES)
        (root / "docs").mkdir()
        shutil.copy(ROOT / "docs/architecture.md", root / "docs")
        for name, line, said in [("src/host/PluginLoad.cpp", "// nothing", "passed:"), *WRONG]:
            path = root / name
            before = path.read_bytes() if path.exists() else None
            path.parent.mkdir(exist_ok=True)
            path.write_bytes((before or b"") + b"\n" + line.encode() + b"\n")
            status, output = run(root)
            good = said in output and (status == 0) == (said == "passed:")
            good = good and output.count("failed:") == (said != "passed:")
            print(f"{'passed' if good else 'failed'}: {name}: {line or 'a folder of its own'}")
            if not good:
                print("    " + output.strip().replace("\n", "\n    "))
            failed += not good
            if before is None:
                path.unlink()
            else:
                path.write_bytes(before)
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
