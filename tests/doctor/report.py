#!/usr/bin/env python3
"""The form of the two reports, and that they come whatever is looked at."""

import hashlib
import json
import os
import pathlib
import random

import harness
from harness import CASES, COMPATIBILITY, skip

SCHEMA = pathlib.Path(__file__).resolve().parents[2] / "docs/schemas/doctor.schema.json"


def schema():
    try:
        import jsonschema
    except ImportError:
        skip("python3-jsonschema is not installed; scripts/setup native installs it")
    document = json.loads(SCHEMA.read_text())
    validator = jsonschema.Draft202012Validator
    validator.check_schema(document)
    return validator(document)


def tree(root):
    """All files with their content; what the plugin of the rig writes down apart."""
    return {
        str(file.relative_to(root)): hashlib.sha256(file.read_bytes()).hexdigest()
        for file in sorted(root.rglob("*"))
        if file.is_file() and file.name not in ("record", "script")
    }


def JsonKeepsToItsSchema(test):
    validator = schema()
    for case in sorted(CASES.iterdir()):
        place = test.installation(case.name)
        for more in ([], ["--log"]) if case.name in ("nothing-is-wrong", "factory-throws") else ([],):
            document = place.diagnose("--json", *place.arguments, *more).document
            errors = [f"{error.json_path}: {error.message}" for error in validator.iter_errors(document)]
            assert not errors, (case.name, errors)


def SchemaRefusesWhatIsNotTold(test):
    validator = schema()
    document = test.whole().diagnose("--json").document
    assert validator.is_valid(document)
    for change in (
        lambda d: d.pop("verdict"),
        lambda d: d.update(more=1),
        lambda d: d["plugin"].update(exists="yes"),
        lambda d: d["clientConfig"].update(state="lost"),
        lambda d: d["clientConfig"]["keys"][0].update(position={"line": 0, "column": 1}),
    ):
        changed = json.loads(json.dumps(document))
        change(changed)
        assert not validator.is_valid(changed)


def NoColoursInAPipe(test):
    for case in ("nothing-is-wrong", "plugin-file-missing"):
        assert b"\x1b" not in test.installation(case).diagnose().bytes


def ColoursOnATerminal(test):
    if test.build.is_windows:
        skip("Wine has no console to write to here")
    import pty
    import subprocess

    def shown(environment=None):
        place = test.whole()
        master, slave = pty.openpty()
        program = str(place.root / "app" / test.build.program)
        with subprocess.Popen(
            place.command("--exe", program), stdout=slave, env=place.environment(environment)
        ) as process:
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
            assert process.wait() == 0
        os.close(master)
        return output

    assert b"\x1b[32msign-in can work\x1b[0m" in shown()
    assert b"\x1b" not in shown({"NO_COLOR": "1"})


def ChangesNothing(test):
    for case in ("nothing-is-wrong", "client-config-is-not-json", "server-application-missing"):
        place = test.installation(case)
        before = tree(place.root)
        for more in ([], ["--json"], ["--log"]):
            place.diagnose(*more)
        assert tree(place.root) == before


def SurvivesWhatIsInTheFiles(test):
    """Bytes by chance in both files; --json and the text agree, and none crashes."""
    chance = random.Random(22)
    place = test.whole()
    files = ["app/SSOClient.config", COMPATIBILITY]
    whole = {file: place.path(file).read_bytes() for file in files}
    hard = [b"", b"null", b"[]", b"7", b'"x"', b"[" * 3000, b"\x00\xff", b"\xff\xfe{\x00}\x00"]
    hard += [b'{"ssoServer": {"appName": "' + b"a" * 5000 + b'"}}', b'{"ssoServer": []}']
    hard += [b'{"ssoClientPlugin": [7, [], {}, "x", null, [1]]}', b'{"openssl": {"a": 1}}']
    hard += [b'{"ssoServer": {"searchPaths": "%SSOServerAppPath%;%%;;' + b"%" * 99 + b'"}}']
    row = place.row()
    exe = ["--exe", test.build.spelled(place.root / "app" / test.build.program)]
    for round_ in range(120):
        for file in files:
            content = bytearray(whole[file])
            if round_ < 2 * len(hard):
                content = hard[round_ // 2] if (round_ % 2 == 0) == (file == files[0]) else content
            else:
                for _ in range(chance.randrange(1, 4)):
                    content[chance.randrange(len(content))] = chance.choice(b'{}[]":,\x00\xff7a%\\')
            place.path(file).write_bytes(content)
        status, document = row.run(*exe, "--json")
        verdict = json.loads(document.decode("utf-8"))["verdict"]
        assert verdict["canWork"] == (status == 0) and status in (0, 1), (round_, status)
        told, text = row.run(*exe)
        last = text.decode("utf-8").replace("\r\n", "\n").rstrip("\n").split("\n")[-1]
        assert (told, last) == (status, verdict["line"]), round_
    row.close()


if __name__ == "__main__":
    harness.run(globals())
