#!/usr/bin/env python3
"""hxsso_test.py CASE FOLDER [EMULATOR...]

The program hxsso from FOLDER in a whole installation, with a provider and a user at the browser.
"""

import base64
import calendar
import json
import os
import pathlib
import re
import socket
import subprocess
import sys
import tempfile
import time
import urllib.parse

from hxsso_place import PATIENCE, ROOT, Place, User, failed, skip, wait_until, why_not

import hostile  # noqa: E402

PROGRAMS = pathlib.Path(sys.argv[2])
EMULATOR = sys.argv[3:]
# All that ask for a login.
ASKING = (["login"], ["logout"], ["status"], ["whoami"], ["token"], ["servers"])


def claims_of(token):
    part = token.split(".")[1]
    return json.loads(base64.urlsafe_b64decode(part + "=" * (-len(part) % 4)))


# ----- The cases -------------------------------------------------------------------------


def SignsInAndOut(place, provider):
    with User(place):
        ended = place.run("login")
        assert ended.status == 0, ended
        assert ended.text == f"Signed in as Alice Ågren (alice@example.org) at {provider.issuer}\n"
        assert "browser" in ended.errors, ended

        # Whoever is signed in is not sent to the browser again.
        ended = place.run("login")
        assert ended.status == 0 and ended.text.startswith("Already signed in as Alice"), ended
        assert ended.errors == "" and provider.requests["authorization"] == 1

        ended = place.run("status")
        assert ended.status == 0 and ended.errors == "", ended
        lines = ended.text.splitlines()
        assert lines[0] == "Signed in as Alice Ågren (alice@example.org)", ended
        assert f"server  production, {provider.issuer}" in lines, ended
        assert "client  hxsso-test" in lines, ended
        assert re.search(r"^since   \d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ$", ended.text, re.M), ended
        assert re.search(r"^token   until \d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ$", ended.text, re.M)

        assert place.run("whoami").text == "alice\n"
        token = place.token()
        assert claims_of(token)["sub"] == "alice" and place.token() == token

        ended = place.run("logout")
        assert (ended.status, ended.errors) == (0, ""), ended
        assert ended.text == f"Signed out at {provider.issuer}\n"
        assert provider.requests["revocation"] == 1
        failed(place.run("logout"), 1, "nobody is signed in at production", "hxsso login")


def NobodyIsSignedIn(place, provider):
    for command in ("whoami", "token", "logout"):
        failed(place.run(command), 1, "nobody is signed in at production", "'hxsso login'")
    ended = place.run("status")
    assert ended.status == 1 and ended.errors == "", ended
    assert ended.text == f"Not signed in\nserver  production, {provider.issuer}\nclient  hxsso-test\n"
    ended = place.run("servers")
    assert ended.status == 0 and ended.text == f"* production, {provider.issuer}: not signed in\n"
    assert not provider.requests, provider.requests


def NoPlugin(place, _provider):
    place.module.unlink()
    for words in ASKING:
        failed(place.run(*words), 3, "there is no sign-on plugin", "hxsso doctor")
        if words != ["login"]:
            document = place.run(*words, "--json").document
            assert (document["exitStatus"], document["result"]) == (3, None), document
            assert "no sign-on plugin" in document["error"]["text"]


def NoServerApplication(place, _provider):
    if place.is_windows:
        skip("there hxsso itself is the server application")
    (place.root / "app/SSOClient.config").write_text("{}")
    (place.root / "server/HxSSO.exe").unlink()
    failed(place.run("token"), 3, "there is no sign-on plugin", "hxsso doctor")


def ModuleThatIsNoPlugin(place, _provider):
    library = next(place.home.glob("*HxSSOServices*"))
    place.module.write_bytes(library.read_bytes())
    failed(place.run("token"), 3, "there is no sign-on plugin", "hxsso doctor")


def ConfigurationOfThePluginIsWrong(place, _provider):
    place.settings.write_text('{"servers": {"production": {"issuer": "http://login.example"}}}')
    for words in ASKING:
        ended = failed(place.run(*words), 3, "Nobody can sign in: .*HxSSOOpenID.json", "https")
        assert "issuer is not an https address" in ended.errors, ended
    place.settings.unlink()
    failed(place.run("status"), 3, "HxSSOOpenID.json is missing", "put it there")


def UnknownServer(place, _provider):
    for command in ("login", "logout", "status", "whoami", "token"):
        failed(place.run(command, "--server", "elsewhere"), 2, "no server 'elsewhere'", "servers")


def ServersHaveLoginsOfTheirOwn(place, provider):
    place.configure({"test": provider.server_entry(), "production": {
        **provider.server_entry(), "clientId": "another"}})
    with User(place):
        assert place.run("login", "--server", "test").status == 0
        ended = place.run("servers")
        assert ended.text.splitlines() == [
            f"* production, {provider.issuer}: not signed in",
            f"  test, {provider.issuer}: Alice Ågren (alice@example.org)"], ended
        assert place.run("status").status == 1
        assert place.run("status", "--server", "test").status == 0
        assert place.run("whoami", "--server", "test").text == "alice\n"
        assert claims_of(place.token("--server", "test"))["sub"] == "alice"
        failed(place.run("token"), 1, "nobody is signed in at production")
        assert place.run("logout", "--server", "test").status == 0
        assert place.run("status", "--server", "test").status == 1


def HintNamesTheUser(place, provider):
    with User(place):
        place.sign_in()
        # Somebody else may be meant: the provider is asked.
        ended = place.run("login", "--hint", "bob@example.org")
        assert ended.status == 0 and ended.text.startswith("Signed in as Bob (bob@example.org)")
        assert provider.requests["authorization"] == 2
        assert dict(provider.seen)["authorization"]["login_hint"] == "bob@example.org"


def FormsOfAToken(place, provider):
    with User(place):
        place.sign_in()
        token = place.token()
        assert place.token("--header") == "Authorization: Bearer " + token
        ended = place.run("token", "--json")
        assert ended.errors == "" and ended.result["token"] == token and ended.result["scope"] is None
        ends = claims_of(token)["exp"]
        told = time.strptime(ended.result["expiresAt"], "%Y-%m-%dT%H:%M:%SZ")
        assert abs(ends - calendar.timegm(told)) <= 2
        assert provider.requests["token"] == 1, "a token that is still good is asked for again"

        narrow = place.token("--scope", "data:read")
        assert claims_of(narrow)["scope"] == "data:read" and narrow != token
        assert place.token("--scope", "data:read") == narrow
        assert place.run("token", "--scope", "data:read", "--json").result["scope"] == "data:read"
        failed(place.run("token", "--scope", "unknown:scope"), 4, "invalid_scope")
        assert place.run("status").status == 0, "a scope that is refused signs out"


def TokenOfOddCharacters(place, provider):
    """As RFC 6749 permits them."""
    odd = "a\"b\\c/<&'%>~ !"
    with User(place):
        place.sign_in()
        original = provider._json
        def with_odd_token(members):
            return original([(n, odd if n == "access_token" else v) for n, v in members
                             if n != "id_token"])
        provider._json = with_odd_token
        assert place.run("token", "--scope", "data:read").output == odd.encode() + b"\n"
        assert place.run("token", "--scope", "data:read", "--json").result["token"] == odd


def TokenIsRenewedBeforeItEnds(place, provider):
    provider.lifetime = 300
    with User(place):
        place.sign_in()
        token = place.token()
        assert place.token("--min-valid", "200") == token
        assert provider.requests["token.refresh_token"] == 0
        provider.lifetime = 3600
        renewed = place.token("--min-valid", "400")
        assert renewed != token and provider.requests["token.refresh_token"] == 1
        assert place.token("--min-valid", "3000") == renewed == place.token()
        # Longer than the provider gives: there is none, and that is told.
        ended = place.run("token", "--min-valid", "5000")
        assert ended.status == 0 and ended.output.count(b".") == 2, ended
        assert "gives no token that lives so long" in ended.errors, ended
        assert provider.requests["token.refresh_token"] == 2
        provider.misbehave("500", at="token")
        failed(place.run("token", "--min-valid", "5000"), 4, "status 500")


def WrongUse(place, provider):
    for words in ([], ["nonsense"], [""], ["--nonsense"], ["--help", "login"],
                  ["login", "--nonsense"], ["login", "somebody"], ["login", "--hint"],
                  ["login", "--hint", ""], ["login", "--scope", "x"], ["status", "--server"],
                  ["status", "--json", "--json"], ["token", "--server", "a", "--server", "b"],
                  ["servers", "--server", "production"], ["token", "--min-valid", "soon"],
                  ["token", "--min-valid", "-1"], ["token", "--min-valid", "9999999999999999999"],
                  ["token", "--header", "--json"], ["status", "--\x1b[31m"]):
        ended = place.run(*words)
        assert (ended.status, ended.output) == (2, b""), ended
        assert ended.errors.startswith("hxsso: ") and "\x1b" not in ended.errors, ended
    assert not provider.requests


def HelpAndVersion(place, _provider):
    for words in (["--help"], ["login", "--help"], ["token", "--help", "--json"]):
        ended = place.run(*words)
        assert (ended.status, ended.errors) == (0, ""), ended
        assert ended.text.startswith("hxsso - "), ended
        for word in ("login", "logout", "status", "whoami", "token", "servers", "doctor"):
            assert re.search(rf"^  {word}  ", ended.text, re.M), word
    ended = place.run("--version")
    assert (ended.status, ended.output, ended.errors) == (0, b"hxsso 10.22.00.1800\n", ""), ended


def ManPage(place, _provider):
    """It has the text of --help, each option an item of its own."""
    page = (PROGRAMS.parent / "tools/hxsso/text/hxsso.1").read_text(encoding="utf-8")
    assert page.startswith('.TH HXSSO 1 "" "HxSSOServices 10.22.'), page[:60]
    help_text = place.run("--help").text
    options = [line.split("  ")[1] for line in help_text.split("\n") if line.startswith("  --")]
    assert len(options) >= 10, options
    for option in options:
        assert "\n.TP\n.B " + option.replace("-", "\\-") + "\n" in page, option
    headings = [line[4:] for line in page.split("\n") if line.startswith(".SH ")]
    assert headings == ["NAME", "SYNOPSIS", "DESCRIPTION", "COMMANDS", "OPTIONS", "EXIT STATUS",
                        "EXAMPLES"], headings
    words = [word for word in page.replace("\\-", "-").split() if not word.startswith(".")]
    for line in help_text.replace("usage: ", "").split("\n"):
        if not line.endswith(":"):
            assert all(word in words for word in line.split()), line


def schema(name):
    try:
        import jsonschema
    except ImportError:
        skip("python3-jsonschema is not installed; scripts/setup native installs it")
    document = json.loads((ROOT / "docs/schemas" / name).read_text())
    jsonschema.Draft202012Validator.check_schema(document)
    return jsonschema.Draft202012Validator(document)


def JsonKeepsToItsSchema(place, provider):
    validator = schema("hxsso.schema.json")

    def document(*words, status):
        ended = place.run(*words, "--json")
        assert ended.status == status == ended.document["exitStatus"], ended
        errors = [f"{e.json_path}: {e.message}" for e in validator.iter_errors(ended.document)]
        assert not errors, (words, errors, ended)
        # An error is told on the other output, too.
        assert (ended.document["error"] is None) == ("hxsso: " not in ended.errors), ended
        assert ended.document["command"] == words[0]
        return ended.document["result"]

    assert document("status", status=1)["signedIn"] is False
    assert document("token", status=1) is None and document("whoami", status=1) is None
    assert document("logout", status=1) is None
    assert document("status", "--server", "none", status=2) is None
    with User(place):
        signed_in = document("login", status=0)
        assert signed_in["wasSignedIn"] is False and signed_in["userId"] == "alice"
        assert document("login", status=0)["wasSignedIn"] is True
        state = document("status", status=0)
        assert state["signedIn"] is True and state["refreshable"] is True
        assert state["loginExpiresAt"] is None and state["issuer"] == provider.issuer
        user = document("whoami", status=0)
        assert (user["loginName"], user["userName"]) == ("alice", "Alice Ågren")
        assert user["claims"]["locale"] == "sv"
        assert document("token", status=0)["token"].count(".") == 2
        [server] = document("servers", status=0)["servers"]
        assert server["isDefault"] is True and server["loginName"] == "alice"
        assert document("logout", status=0)["loginName"] == "alice"
    configure = ["configure", "--issuer", provider.issuer, "--client-id", "hxsso-test"]
    assert document(*configure, status=0)["isChecked"] is True
    provider.misbehave("500", at="discovery")
    assert document("login", status=4) is None


def SchemaRefusesWhatIsNotTold(place, _provider):
    validator = schema("hxsso.schema.json")
    document = place.run("status", "--json").document
    assert validator.is_valid(document)
    for change in (lambda d: d.pop("result"), lambda d: d.pop("error"),
                   lambda d: d["result"].pop("signedIn"), lambda d: d.update(more=1),
                   lambda d: d["result"].update(more=1), lambda d: d.update(command="token"),
                   lambda d: d.update(exitStatus=9), lambda d: d.update(error="text"),
                   lambda d: d["result"].update(signedIn="no")):
        changed = json.loads(json.dumps(document))
        change(changed)
        assert not validator.is_valid(changed), changed


def on_terminal(place, *words):
    """(status, what the terminal got), with the standard output on a terminal."""
    import pty
    controller, terminal = pty.openpty()
    process = subprocess.Popen(place.words(*words), cwd=place.root, env=place.environment(),
                               stdin=subprocess.DEVNULL, stdout=terminal, stderr=subprocess.PIPE)
    os.close(terminal)
    got = b""
    try:
        while chunk := os.read(controller, 4096):
            got += chunk
    except OSError:  # Linux tells the end so
        pass
    _, errors = process.communicate(timeout=PATIENCE)
    os.close(controller)
    return process.returncode, got.decode(), errors.decode()


def TokenIsNotWrittenToATerminal(place, provider):
    if place.is_windows:
        skip("Wine has no console that a test can read")
    with User(place):
        place.sign_in()
        token = place.token()
        asked = len(provider.seen)
        for words in (["token"], ["token", "--header"], ["token", "--json"],
                      ["token", "--min-valid", "99999"]):
            status, got, errors = on_terminal(place, *words)
            assert (status, got) == (2, ""), (words, status, got)
            assert "not written to a terminal" in errors and "--show" in errors, errors
        assert len(provider.seen) == asked, "asks the provider before it refuses"
        assert on_terminal(place, "token", "--show")[:2] == (0, token + "\r\n")
        status, got, _ = on_terminal(place, "token", "--show", "--json")
        assert status == 0 and json.loads(got)["result"]["token"] == token
        # Everything else may be read there.
        assert on_terminal(place, "whoami")[:2] == (0, "alice\r\n")


def TwentyShellsMakeOneRefresh(place, provider):
    provider.lifetime = 4
    with User(place):
        place.sign_in()
        old = place.token()
        time.sleep(3)  # the token counts as ended in the second half of its short life
        provider.lifetime = 3600
        shells = [place.begin("token") for _ in range(20)]
        ended = [(shell.communicate(timeout=PATIENCE), shell.returncode) for shell in shells]
        assert all(status == 0 for _, status in ended), ended
        tokens = {output for (output, _), _ in ended}
        assert len(tokens) == 1 and old.encode() + b"\n" not in tokens, tokens
        assert all(errors == b"" for (_, errors), _ in ended), ended
        assert provider.requests["token.refresh_token"] == 1, provider.requests
        assert place.run("status").status == 0
        assert place.run("logout").status == 0


def OneSignInForAll(place, provider):
    """A sign-in in a shell; then hosts of two folders and twenty shells at once; and a sign-out."""
    import shutil
    provider.lifetime = 4
    shutil.copytree(place.root / "app", place.root / "elsewhere")
    with User(place):
        place.sign_in()
    first = place.start()
    place.host = place.root / "elsewhere" / place.host.name
    second = place.start()
    try:
        wait_until(lambda: not first.ask("IsOAuth2TokenAvailable"))
        provider.lifetime = 3600
        shells = [place.begin("token") for _ in range(20)]
        for host in (first, second):
            host.tell("GetOAuth2AccessToken", 1, "")
        tokens = {host.answer()["token"] for host in (first, second)}
        for shell in shells:
            output, errors = shell.communicate(timeout=PATIENCE)
            assert (shell.returncode, errors) == (0, b""), errors
            tokens.add(output.decode().removesuffix("\n"))
        assert len(tokens) == 1, tokens
        assert provider.requests["authorization"] == 1, provider.requests
        assert provider.requests["token"] == 2, "one sign-in and one refresh"
        assert place.run("logout").status == 0
        assert not first.ask("IsLoggedIn") and not second.ask("IsLoggedIn")
        assert place.run("token").status == 1
    finally:
        first.close()
        second.close()


def OtherHostsSeeIt(place, provider):
    with User(place), place.start() as host:
        assert host.ask("IsLoggedIn") is False
        place.sign_in()
        assert host.ask("IsLoggedIn") is True and host.ask("RestoreLogin") is True
        assert host.ask("GetOAuth2AccessToken", 1, "")["token"] == place.token()
        assert provider.requests["authorization"] == 1
        assert place.run("logout").status == 0
        assert host.ask("IsLoggedIn") is False
        assert host.ask("GetOAuth2AccessToken", 1, "") is None
        # And the other way about.
        assert host.ask("UI.Login") is True
        assert place.run("status").status == 0
        assert host.ask("Logout") is True
        assert place.run("status").status == 1


def LoginWithoutABrowserHere(place, provider):
    with User(place) as user:
        process = place.begin("login", "--no-browser", "--hint", "bob@example.org")
        address = ""
        while not address.startswith("https://"):
            address = process.stderr.readline().decode()
            assert address, process.communicate()
        query = dict(urllib.parse.parse_qsl(urllib.parse.urlsplit(address).query))
        assert query["login_hint"] == "bob@example.org"
        assert not place.addresses.exists(), "a browser was opened"
        user.visit(address.strip())
        output, errors = process.communicate(timeout=PATIENCE)
        assert process.returncode == 0 and errors == b"", errors
        assert output.decode() == f"Signed in as Bob (bob@example.org) at {provider.issuer}\n"


def nothing_is_left(place, address):
    """Of a sign-in that was ended: no port, no lock, no login."""
    query = dict(urllib.parse.parse_qsl(urllib.parse.urlsplit(address).query))
    redirect = urllib.parse.urlsplit(query["redirect_uri"])
    try:
        socket.create_connection((redirect.hostname, redirect.port), 1).close()
        raise AssertionError("the port is still open")
    except ConnectionRefusedError:
        pass
    began = time.monotonic()
    assert place.run("status").status == 1
    with User(place):
        place.sign_in()
    assert time.monotonic() - began < 20


def InterruptEndsALogin(place, _provider):
    if place.is_windows:
        skip("no Ctrl-C reaches a program under Wine")
    import signal
    process = place.begin("login")
    wait_until(lambda: place.addresses.exists() and place.addresses.read_text().endswith("\n"))
    process.send_signal(signal.SIGINT)
    output, errors = process.communicate(timeout=10)
    assert process.returncode == -signal.SIGINT and output == b"", (process.returncode, output)
    assert errors.decode().endswith("hxsso: the sign-in was ended\n"), errors
    address = place.addresses.read_text().splitlines()[0]
    place.addresses.unlink()
    nothing_is_left(place, address)


def InterruptKeepsALoginThatIsThere(place, _provider):
    if place.is_windows:
        skip("no Ctrl-C reaches a program under Wine")
    import signal
    with User(place):
        place.sign_in()
    token = place.token()
    place.addresses.unlink()
    process = place.begin("login", "--hint", "bob@example.org")
    wait_until(place.addresses.exists)
    process.send_signal(signal.SIGINT)
    process.communicate(timeout=10)
    assert place.run("whoami").text == "alice\n" and place.token() == token


def InterruptOfATerminal(place, _provider):
    """Ctrl-C as a shell sees it."""
    if place.is_windows:
        skip("no Ctrl-C reaches a program under Wine")
    import pty
    controller, terminal = pty.openpty()
    script = 'trap : INT; "$@"; echo "status $?"'
    shell = subprocess.Popen(["setsid", "--ctty", "--wait", "bash", "-c", script, "bash",
                              *place.words("login", "--no-browser")],
                             cwd=place.root, env=place.environment(),
                             stdin=terminal, stdout=terminal, stderr=terminal)
    os.close(terminal)
    got = b""
    while b"https://" not in got:
        got += os.read(controller, 4096)
    time.sleep(0.2)
    os.write(controller, b"\x03")
    try:
        while chunk := os.read(controller, 4096):
            got += chunk
    except OSError:
        pass
    shell.wait(PATIENCE)
    assert b"status 130" in got and b"the sign-in was ended" in got, got


def ProviderThatFails(place, provider):
    with User(place):
        provider.misbehave("access-denied")
        failed(place.run("login"), 4, "Cannot sign in: .*access_denied")
        provider.behave()
        place.sign_in()
        provider.misbehave("500", at="token")
        ended = failed(place.run("token", "--scope", "data:read"), 4,
                       "Cannot get a new token: .*status 500")
        assert "Fix: " in ended.errors, ended
        assert place.run("status").status == 0
        provider.behave()
        place.token("--scope", "data:read")
        # The provider has ended the login: nobody is signed in any more.
        provider.revoke_all()
        failed(place.run("token", "--scope", "data:write"), 1, "Signed out: .*refuses", "sign in")
        failed(place.run("token"), 1, "nobody is signed in")


def ProviderThatIsAway(place, provider):
    with User(place):
        place.sign_in()
        token = place.token()
    provider.stop()
    try:
        assert place.token() == token, "a token that is good needs no network"
        assert place.run("status").status == 0 and place.run("whoami").text == "alice\n"
        failed(place.run("token", "--scope", "data:read"), 4, "could not be reached")
        ended = place.run("logout")
        assert ended.status == 0, ended
        failed(place.run("login"), 4, "could not be reached")
    finally:
        provider.start()


def LoginThatEndsWithItsToken(place, provider):
    provider.lifetime = 3
    provider.misbehave("refresh-token-missing")
    with User(place):
        place.sign_in()
        assert "no refresh token" in place.run("status").text
        wait_until(lambda: place.run("status").status == 1)
        failed(place.run("token"), 1, "no refresh token")


def NobodyComesBack(place, _provider):
    place.configure(timeouts={"login": 1, "network": 5})
    failed(place.run("login"), 4, "the browser did not come back in time")


def NoBrowserAtAll(place, _provider):
    ended = place.run("login", HXSSO_OPENID_BROWSER=place.native(place.root / "none"))
    failed(ended, 4, "no browser was started")
    assert "--no-browser" in ended.errors, ended


def Doctor(place, provider):
    ended = place.run("doctor")
    assert ended.status == 0 and ended.errors == "", ended
    assert "nothing wrong found" in ended.text.splitlines()[-1], ended
    assert place.native(place.hxsso, "/") in ended.text.replace("\\", "/"), ended
    errors = list(schema("doctor.schema.json").iter_errors(place.run("doctor", "--json").document))
    assert not errors, errors
    ended = place.run("doctor", "--log")
    assert ended.status == 0 and ended.text.splitlines()[-1].strip() == "sign-in can work", ended
    assert place.run("doctor", "--nonsense", "with blanks \"\\").status == 2
    assert place.run("doctor", "--help").text.startswith("hxsso-doctor - ")
    place.module.unlink()
    assert place.run("doctor").status == 1
    next(place.home.glob("hxsso-doctor*")).unlink()
    failed(place.run("doctor"), 5, "hxsso-doctor.* cannot be run", "beside")
    assert not provider.requests


def FilesOfTheCurrentFolderDoNotCount(place, _provider):
    """Anybody's folder must not bring a plugin with it."""
    evil = place.root / "evil"
    evil.mkdir()
    for file in (place.root / "server").iterdir():
        (evil / file.name).write_bytes(file.read_bytes())
    (evil / "SSOClient.config").write_text(json.dumps(
        {"ssoServer": {"searchPaths": place.native(evil, "/")}}))
    (evil / "SSOVersionCompatibility.config").write_text(
        (evil / "SSOVersionCompatibility.config").read_text()
        .replace("%SSOServerAppPath%", place.native(evil, "/")))
    # Whatever leads to the right ones is gone.
    (place.root / "app/SSOClient.config").unlink()
    (place.root / "server/SSOVersionCompatibility.config").unlink()
    if not place.is_windows:
        (place.root / "server/HxSSO.exe").unlink()
    failed(place.run("status", folder=evil), 3, "there is no sign-on plugin")


def InstalledAsPackagesDo(place, _provider):
    """No settings beside the program: those of its own data folder lead to Location."""
    if place.is_windows:
        skip("the value Location stands in the registry, which others share")
    (place.root / "app/SSOClient.config").unlink()
    data = place.root / "share/HxSSOServices"
    data.mkdir(parents=True)
    (data / "SSOClient.config").write_text("{}")
    assert place.run("status").status == 1
    ended = place.run("doctor", "--verbose")
    assert ended.status == 0 and "share/HxSSOServices/SSOClient.config" in ended.text, ended
    # In the sign-on folder it is a link.
    link = place.root / "server/HxSSO.exe"
    link.unlink()
    link.symlink_to(place.hxsso)
    place.hxsso = link
    assert place.run("status").status == 1 and place.run("doctor").status == 0


def OutputThatCannotBeWritten(place, _provider):
    if place.is_windows:
        skip("there is no full device")
    with User(place):
        place.sign_in()
    for words in (["status"], ["token"], ["token", "--json"], ["whoami"], ["--help"]):
        with open("/dev/full", "wb") as full:
            ended = subprocess.run(place.words(*words), env=place.environment(), stdout=full,
                                   stderr=subprocess.PIPE, timeout=PATIENCE, check=False)
        assert ended.returncode == 5 and b"cannot be written" in ended.stderr, (words, ended)


def NoSecretIsTold(place, provider):
    """Neither by a command that is no token's, nor where anybody looks."""
    with User(place):
        place.sign_in()
        token = place.token()
        secrets = [token, *provider._refresh, *provider._access]
        for words in (["status"], ["whoami"], ["servers"], ["login"], ["doctor", "--log"],
                      ["logout"]):
            for more in ([], ["--json"]):
                if words == ["logout"] and more:
                    continue
                ended = place.run(*words, *more)
                for secret in secrets:
                    assert secret not in ended.text + ended.errors, (words, secret)
        ended = place.run("token", "--scope", "unknown:scope")
        assert not any(secret in ended.errors for secret in secrets)


def TokenIsWipedInMemory(place, _provider):
    """At the end there is nothing of what hxsso makes of a token."""
    if place.is_windows:
        skip("the memory of another process is looked at on Linux alone")
    import memory_at_end
    with User(place):
        place.sign_in()
    token = place.token()
    # As nobody else has it: the plugin and the library know the token alone.
    texts = ["Bearer " + token[:20], token[-20:] + "\n", '"token" : "' + token[:20]]
    for words in (["token"], ["token", "--header"], ["token", "--json"],
                  ["token", "--min-valid", "60"]):
        try:
            output, count = memory_at_end.copies_at_end(
                place.words(*words), place.hxsso, texts, cwd=place.root, env=place.environment())
        except OSError as error:
            skip(f"this machine permits no look at another process: {error}")
        assert token.encode() in output and count == 0, (words, count)


def TextsOfAProviderCannotSteerATerminal(place, provider):
    hostile.USERS["alice"] = {**hostile.USERS["alice"], "name": "A\x1b[31mB\nC\u202eD\u009bE",
                              "preferred_username": "x\ny\x07"}
    with User(place):
        place.sign_in()
    for words in (["status"], ["whoami"], ["servers"], ["whoami", "--json"], ["login"]):
        ended = place.run(*words)
        assert ended.status == 0, ended
        for bad in "\x1b\x07\u202e\u009b":
            assert bad not in ended.text, (words, bad)
    assert place.run("whoami").text.count("\n") == 1
    assert place.run("whoami", "--json").result["loginName"] == "x\ny\x07"


def configured(place, provider, *more, issuer=None, status=0):
    ended = place.run("configure", "--issuer", issuer or provider.issuer,
                      "--client-id", "hxsso-test", *more)
    assert ended.status == status, ended
    return ended


def ConfigureMakesTheFile(place, provider):
    place.settings.unlink()
    ended = configured(place, provider)
    assert ended.errors == "" and "Wrote " in ended.text and "answers as" in ended.text, ended
    [(name, server)] = json.loads(place.settings.read_text())["servers"].items()
    assert (name, server) == ("production", {
        "issuer": provider.issuer, "clientId": "hxsso-test",
        "scopes": "openid profile email offline_access"})
    if not place.is_windows:
        assert place.settings.stat().st_mode & 0o777 == 0o644
    assert not list(place.settings.parent.glob("*.new"))
    # The store is the usual one, in the user's home.
    with User(place):
        place.sign_in()
    assert place.run("whoami").text == "alice\n"
    errors = list(schema("HxSSOOpenID.schema.json").iter_errors(
        json.loads(place.settings.read_text())))
    assert not errors, errors


def ConfigureKeepsWhatIsThere(place, provider):
    place.settings.write_text("""{
    // of the administrator
    "servers": {"production": {"issuer": "https://old.example", "clientId": "old",
        "scopes": "openid", "redirectPorts": [49152]}},
    "timeouts": {"login": 20}, "store": %s}""" % json.dumps(place.native(place.store, "/")))
    configured(place, provider, "--name", "Prüfung")
    configured(place, provider)
    text = place.settings.read_text(encoding="utf-8")
    assert "// of the administrator" in text, text
    document = json.loads(re.sub("//.*", "", text.replace("://", ":__")).replace(":__", "://"))
    assert document["timeouts"] == {"login": 20}
    assert document["servers"]["production"] == {
        "issuer": provider.issuer, "clientId": "hxsso-test", "scopes": "openid",
        "redirectPorts": [49152]}
    assert document["servers"]["Prüfung"]["clientId"] == "hxsso-test"
    assert place.run("status", "--server", "Prüfung").status == 1
    configured(place, provider, "--scopes", "openid data:read")
    assert "data:read" in place.settings.read_text()


def ConfigureLeavesTheFileIfTheProviderIsNotRight(place, provider):
    before = place.settings.read_bytes()
    for issuer, pattern in ((provider.issuer + "/other", "status 404|is of the issuer"),
                            (provider.issuer + "/", "is of the issuer"),
                            ("https://localhost:1", "could not be reached")):
        ended = configured(place, provider, issuer=issuer, status=4)
        assert ended.output == b"" and "stays as it was" in ended.errors, ended
        assert re.search(pattern, ended.errors), ended
        assert place.settings.read_bytes() == before
    place.settings.unlink()
    configured(place, provider, issuer="https://localhost:1", status=4)
    assert not place.settings.exists()
    # What cannot be read is not replaced.
    place.settings.write_text('{"servers": [')
    ended = configured(place, provider, status=5)
    assert "is not valid JSON" in ended.errors and place.settings.read_text() == '{"servers": ['


def ConfigureElsewhere(place, provider):
    (place.root / "other folder").mkdir()
    ended = configured(place, provider, "--folder", "other folder")
    assert "Not checked" in ended.text and not provider.requests, ended
    assert (place.root / "other folder/HxSSOOpenID.json").exists()
    ended = configured(place, provider, "--folder", "no folder", status=5)
    assert "cannot be written" in ended.errors and "Fix: " in ended.errors, ended
    place.module.unlink()
    (place.root / "server/SSOVersionCompatibility.config").unlink()
    ended = configured(place, provider, status=3)
    assert "--folder" in ended.errors, ended


def ConfigureTakesWhatTheSchemaTakes(place, _provider):
    validator = schema("HxSSOOpenID.schema.json")
    folder = place.root / "elsewhere"
    folder.mkdir()
    for issuer in ("https://login.example", "https://login.example/a/", "http://localhost:1/x",
                   "http://127.0.0.1", "http://[::1]:1", "http://login.example", "login.example",
                   "https://login.example/?x=1", "https://login.example#x", "https://me@login.example",
                   "http://localhost.login.example", "https://", "https://a b", "file:///etc"):
        document = {"servers": {"production": {"issuer": issuer, "clientId": "a"}}}
        ended = place.run("configure", "--issuer", issuer, "--client-id", "a", "--folder",
                          place.native(folder))
        assert ended.status == (0 if validator.is_valid(document) else 2), (issuer, ended)
    for scopes in ("openid", "openid  data:read", "a\tb", 'a"b', "a\\b", " ", "é"):
        document = {"servers": {"production": {
            "issuer": "https://login.example", "clientId": "a", "scopes": scopes}}}
        ended = place.run("configure", "--issuer", "https://login.example", "--client-id", "a",
                          "--scopes", scopes, "--folder", place.native(folder))
        assert ended.status == (0 if validator.is_valid(document) else 2), (scopes, ended)
    for words in (["--issuer", "https://login.example"], ["--client-id", "a"], []):
        assert place.run("configure", *words).status == 2


def InstallForTheWholeMachine(place, _provider):
    server = place.native(place.root / "server")
    if place.is_windows:
        location = None
    else:
        location = place.root / "xdg/Halvorix/HxSSO/Location"
        location.unlink()
        location.parent.rmdir()
        assert place.run("status").status == 3
        failed(place.run("install", "--system"), 2, "is no sign-on folder", "--folder")
    ended = place.run("install", "--system", "--folder", server)
    assert ended.status == 0 and ended.errors == "", ended
    assert "Wrote " in ended.text and "--remove" in ended.text, ended
    if location:
        assert location.read_text() == f"{place.root}/server\n"
        assert location.stat().st_mode & 0o777 == 0o644
    assert place.run("status").status == 1
    # Once more is no harm, and it tells what was there.
    ended = place.run("install", "--system", "--folder", "server/", "--json")
    assert ended.status == 0 and ended.result["before"] == ended.result["now"] == server, ended
    errors = list(schema("hxsso.schema.json").iter_errors(ended.document))
    assert not errors, errors

    failed(place.run("install", "--system", "--remove", "--folder", "elsewhere"), 2,
           "names another folder")
    ended = place.run("install", "--system", "--remove", "--folder", server)
    assert ended.status == 0 and "Removed " in ended.text and server in ended.text, ended
    if location:
        assert not location.parent.parent.exists() and (place.root / "xdg").exists()
    ended = place.run("install", "--system", "--remove", "--folder", server)
    assert ended.status == 0 and "Nothing to do" in ended.text, ended
    failed(place.run("install"), 2, "install needs --system")


def InstallThatIsNotAllowed(place, _provider):
    if place.is_windows:
        skip("Wine lets everybody write the registry")
    if os.geteuid() == 0:
        (place.root / "file").write_text("in the way")
        where = str(place.root / "file")
    else:
        where = "/proc"
    ended = place.run("install", "--system", "--folder", str(place.root / "server"),
                      XDG_CONFIG_DIRS=where)
    failed(ended, 5, "cannot be written", "administrator")


def completed(place, *words):
    """What bash offers in the place of the last word."""
    script = ('source "$1"; shift; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _hxsso; '
              'printf "%s\\n" "${COMPREPLY[@]}"')
    file = ROOT / "tools/hxsso/completion/hxsso.bash"
    ended = subprocess.run(
        place.provider.authority.trusted(["bash", "-c", script, "bash", file, *words]),
        env=place.environment(), capture_output=True, text=True, timeout=PATIENCE, check=False)
    assert ended.returncode == 0 and not ended.stderr, ended
    return ended.stdout.split()


def CompletionInBash(place, provider):
    if place.is_windows:
        skip("bash runs no program for Windows here")
    place.configure({"production": provider.server_entry(), "test": provider.server_entry()})
    program = str(place.hxsso)
    assert completed(place, program, "lo") == ["login", "logout"]
    assert completed(place, program, "token", "--server", "") == ["production", "test"]
    assert completed(place, program, "token", "--server", "t") == ["test"]
    assert completed(place, program, "login", "--hint", "") == []
    # All that there is, and nothing else.
    help_text = place.run("--help").text
    commands = re.findall(r"^  ([a-z]+)  ", help_text, re.M)
    assert set(commands) == {w for w in completed(place, program, "") if w[0] != "-"}
    offered = {w for command in commands if command != "doctor"
               for w in completed(place, program, command, "--")}
    assert offered | {"--version"} == set(re.findall(r"^  (--[a-z-]+)", help_text, re.M))
    takes_value = set(re.findall(r"^  (--[a-z-]+) [A-Z]", help_text, re.M))
    for command in commands:
        for option in completed(place, program, command, "--") if command != "doctor" else []:
            ended = place.run(command, option, *["1"] * (option in takes_value), "--help")
            assert ended.status == 0, ended


def main():
    if reason := why_not():
        skip(reason)
    with tempfile.TemporaryDirectory() as folder:
        root = pathlib.Path(folder).resolve()
        with hostile.HostileProvider(root / "authority") as provider:
            place = Place(root / "place", PROGRAMS, EMULATOR, provider)
            try:
                globals()[sys.argv[1]](place, provider)
            except BaseException:
                print(*place.log(), sep="\n")
                raise


if __name__ == "__main__":
    main()
