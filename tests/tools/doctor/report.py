"""The form of the two reports, and that they come whatever is looked at."""

import hashlib
import json
import os
import random
import re

import rig
import cases
from harness import COMPATIBILITY, skip


def validator():
    found = cases.validator()
    if found is None:
        skip("python3-jsonschema is not installed; scripts/setup native installs it")
    return found


def tree(root):
    """All files with their content; what the plugin of the rig writes down apart."""
    return {
        str(file.relative_to(root)): hashlib.sha256(file.read_bytes()).hexdigest()
        for file in sorted(root.rglob("*"))
        if file.is_file() and file.name not in ("record", "script")
    }


def JsonOfALoadKeepsToItsSchema(test):
    """That of all else is looked at in each of the cases."""
    schema = validator()
    for case in ("nothing-is-wrong", "factory-throws"):
        place = test.installation(case)
        document = place.diagnose("--json", *place.arguments, "--log").document
        errors = [f"{error.json_path}: {error.message}" for error in schema.iter_errors(document)]
        assert not errors, (case, errors)


def SchemaRefusesWhatIsNotTold(test):
    schema = validator()
    document = test.whole().diagnose("--json").document
    assert schema.is_valid(document)
    for change in (
        lambda d: d.pop("verdict"),
        lambda d: d.update(more=1),
        lambda d: d["plugin"].update(exists="yes"),
        lambda d: d["clientConfig"].update(state="lost"),
        lambda d: d["clientConfig"]["keys"][0].update(position={"line": 0, "column": 1}),
    ):
        changed = json.loads(json.dumps(document))
        change(changed)
        assert not schema.is_valid(changed)


def NoColoursInAPipe(test):
    for case in ("nothing-is-wrong", "plugin-file-missing"):
        assert b"\x1b" not in test.installation(case).diagnose().bytes


def on_terminal(test, place, environment, *arguments, columns=0):
    """What the doctor writes to a terminal of that many columns."""
    if test.build.is_windows:
        skip("Wine has no console to write to here")
    import fcntl
    import pty
    import struct
    import subprocess
    import termios

    master, slave = pty.openpty()
    fcntl.ioctl(slave, termios.TIOCSWINSZ, struct.pack("HHHH", 24, columns, 0, 0))
    command = place.command("--exe", place.program, *arguments)
    with subprocess.Popen(command, stdout=slave, env=place.environment(environment)) as process:
        os.close(slave)
        output = b""
        while True:
            try:
                part = os.read(master, 65536)
            except OSError:
                break
            if not part:
                break
            output += part
        process.wait()
    os.close(master)
    return output.decode("utf-8").replace("\r\n", "\n")


def ColoursOnATerminal(test):
    place = test.whole()

    def shown(**environment):
        return on_terminal(test, place, {"TERM": "xterm"} | environment)

    green = f"\x1b[32m{rig.NOT_LOADED}\x1b[0m"
    assert green in shown()
    assert green in shown(NO_COLOR="")
    for environment in ({"NO_COLOR": "1"}, {"NO_COLOR": "0"}, {"TERM": "dumb"}, {"TERM": ""}):
        output = shown(**environment)
        assert "\x1b" not in output and rig.NOT_LOADED in output, environment


def LinesBreakAtTheTerminalsWidth(test):
    """Between words, and nowhere else: what is joined again is what a pipe gets."""
    place = test.installation("every-plugin-object-is-incomplete")
    plain = place.diagnose().output.split("\n")
    longest = max(len(word) for line in plain for word in line.split(" "))
    assert max(map(len, plain)) > 3 * longest, "nothing here has to be broken"
    for environment, columns in (({"TERM": "dumb"}, 70), ({"TERM": "dumb", "COLUMNS": "70"}, 40)):
        output = on_terminal(test, place, environment, columns=columns)
        for line in output.split("\n"):
            # A long word stays whole, behind no more than its indent.
            assert len(line) <= 70 or len(line) - len(line.split()[-1]) <= 27, line
        assert output.split() == " ".join(plain).split()
        assert len(output.split("\n")) > len(plain) + 5
    coloured = on_terminal(test, place, {"TERM": "xterm"}, columns=70)
    assert re.sub("\x1b\\[[0-9;]*m", "", coloured) == on_terminal(test, place, {"TERM": "dumb"}, columns=70)
    # A pipe has no width, whatever the environment says.
    assert place.diagnose(environment={"COLUMNS": "40"}).output.split("\n") == plain


def OneScreenWhenAllIsWell(test):
    place = test.whole()
    ended = place.diagnose("--load")
    assert len(ended.lines) <= 12, ended.output
    assert ended.problems == [rig.CAN_WORK]
    names = ["Program", "Library", "Client configuration", "Server application"]
    names += ["Version compatibility file", "Client plugin", "OpenSSL module", "Loading the client plugin"]
    assert [line.split("  ")[0].split(" /")[0].split(" Z:")[0] for line in ended.lines[:-2]] == names
    assert "searched for" not in ended.output
    verbose = place.diagnose("--verbose")
    assert verbose.output.count("searched for") == 3 and "  ssoClientPlugin" in verbose.lines


def DetailsWhereSomethingIsWrong(test):
    """The section with the problem is whole, and the others stay short."""
    place = test.installation("server-application-missing")
    ended = place.diagnose()
    assert "  searched for HxSSO.exe in" in ended.lines
    assert ended.output.count("searched for") == 1, ended.output
    for number, line in enumerate(ended.lines):
        if line.startswith(("wrong: ", "warning: ")):
            assert ended.lines[number + 1].startswith("Fix: "), ended.lines[number + 1]
    assert any(line.startswith("wrong: ") for line in ended.lines)


def ChangesNothing(test):
    for case in ("nothing-is-wrong", "client-config-is-not-json", "server-application-missing"):
        place = test.installation(case)
        before = tree(place.root)
        for more in ([], ["--json"], ["--log"]):
            place.diagnose(*more)
        assert tree(place.root) == before


def SurvivesWhatIsInTheFiles(test):
    """Bytes by chance in both files; --json and the text agree, and none crashes. A sanitizer
    sees more of them in the fuzzers."""
    chance = random.Random(22)
    place = test.whole()
    files = ["app/SSOClient.config", COMPATIBILITY]
    whole = {file: place.path(file).read_bytes() for file in files}
    hard = [b"", b"null", b"[]", b"7", b'"x"', b"[" * 3000, b"\x00\xff", b"\xff\xfe{\x00}\x00"]
    hard += [b'{"ssoServer": {"appName": "' + b"a" * 5000 + b'"}}', b'{"ssoServer": []}']
    hard += [b'{"ssoClientPlugin": [7, [], {}, "x", null, [1]]}', b'{"openssl": {"a": 1}}']
    hard += [b'{"ssoServer": {"searchPaths": "%SSOServerAppPath%;%%;;' + b"%" * 99 + b'"}}']
    exe = ["--exe", test.build.spelled(place.root / "app" / test.build.program)]
    for round_ in range(40 if test.build.starts_slowly else 120):
        for file in files:
            content = bytearray(whole[file])
            if round_ < 2 * len(hard):
                content = hard[round_ // 2] if (round_ % 2 == 0) == (file == files[0]) else content
            else:
                for _ in range(chance.randrange(1, 4)):
                    content[chance.randrange(len(content))] = chance.choice(b'{}[]":,\x00\xff7a%\\')
            place.path(file).write_bytes(content)
        ended = place.in_a_row(*exe, "--json")
        verdict = ended.document["verdict"]
        assert verdict["canWork"] == (ended.status == 0) and ended.status in (0, 1), round_
        told = place.in_a_row(*exe)
        assert (told.status, told.last) == (ended.status, verdict["line"]), round_
