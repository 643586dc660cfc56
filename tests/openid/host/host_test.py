#!/usr/bin/env python3
"""host_test.py CASE FOLDER [EMULATOR...]

The open plugin as hosts have it: a whole installation, the tests' own provider, and processes of
openid-host from FOLDER, which do what they are told.
"""

import json
import os
import pathlib
import re
import shutil
import signal
import stat
import subprocess
import sys
import tempfile
import time
import urllib.parse

from installation import HERE, Installation, User, wait_until, why_not

import hostile  # noqa: E402
import operations  # noqa: E402
import orders  # noqa: E402

PROGRAMS = pathlib.Path(sys.argv[2])
EMULATOR = sys.argv[3:]
INCLUDE = HERE.parents[2] / "include"


def skip(reason):
    print("skipped:", reason)
    sys.exit(77)


def sign_in(host):
    assert host.ask("UI.Login") is True


def token(host, scope=""):
    answer = host.ask("GetOAuth2AccessToken", 1, scope)
    return answer and answer["token"]


def scopes_seen(provider, endpoint="token"):
    """Of the requests for a scope, in their order."""
    return [parameters["scope"] for at, parameters in provider.seen
            if at == endpoint and "scope" in parameters]


def lines_of(place, before):
    """What was logged since, without time and process."""
    return [line.split(" ", 2)[2] for line in place.log()[before:]]


def has_remedy(line):
    return re.search(r"\. Fix: \S.*\w", line) is not None


# ----- The cases -------------------------------------------------------------------------


def SignsInOnceForAllHosts(place, provider):
    with User(place), place.start() as first, place.start() as second:
        assert first.ask("RestoreLogin") is False and first.ask("IsLoggedIn") is False
        sign_in(first)
        assert first.ask("GetUserNameW") == "Alice Ågren"
        mine = token(first, "data:read")
        assert mine.count(".") == 2

        # The other one needs no browser, and no request for a token that is there.
        assert provider.requests["authorization"] == 1
        assert second.ask("IsLoggedIn") is True and second.ask("RestoreLogin") is True
        assert second.ask("GetUserEmail") == "alice@example.org"
        asked = provider.requests["token"]
        assert token(second, "data:read") == mine
        assert (provider.requests["authorization"], provider.requests["token"]) == (1, asked)

        assert second.ask("RefreshOAuth2Token.spec", 1, "data:read") is True
        renewed = token(second, "data:read")
        assert renewed != mine and token(first, "data:read") == renewed

        assert second.ask("Logout") is True and second.ask("Logout") is False
        assert provider.requests["revocation"] == 1
        assert first.ask("IsLoggedIn") is False and token(first, "data:read") is None


def KeepsTheLoginFromOneProcessToTheNext(place, provider):
    with User(place), place.start() as host:
        sign_in(host)
    asked = provider.requests.total()
    with place.start() as later:
        assert later.ask("RestoreLogin") is True and later.ask("GetUserId") == "alice"
        assert token(later).count(".") == 2
    assert provider.requests.total() == asked, "the network was needed"


def RestoresByOneRefresh(place, provider):
    provider.lifetime = 2
    with User(place), place.start() as host:
        sign_in(host)
        wait_until(lambda: host.ask("IsTokenExpired"))
        assert host.ask("IsOAuth2TokenExpired") is True and host.ask("IsTokenAvailable") is False
        assert host.ask("IsLoggedIn") is True and host.ask("IsLoginValid") is True
        provider.lifetime = 3600
        assert host.ask("RestoreLogin") is True and host.ask("IsTokenAvailable") is True
        assert host.ask("GetTokenExpiryDate") > time.time() + 3000
        assert provider.requests["authorization"] == 1
        assert provider.requests["token.refresh_token"] == 1


def EndsWithItsTokenWithoutARefreshToken(place, provider):
    provider.lifetime = 2
    provider.misbehave("refresh-token-missing")
    with User(place), place.start() as host:
        sign_in(host)
        assert time.time() - 10 < host.ask("GetLoginExpiryDate") < time.time() + 10
        wait_until(lambda: host.ask("IsLoginExpired"))
        assert host.ask("IsLoginValid") is False and host.ask("RestoreLogin") is False
        assert any("gave no refresh token" in line and has_remedy(line) for line in place.log())


def ScopesAreCaseSensitiveAndInAnyOrder(place, provider):
    place.configure({"production": provider.server_entry("openid data:read data:write Data:Read")})
    with User(place), place.start() as host:
        sign_in(host)
        small, large = token(host, "data:read"), token(host, "Data:Read")
        assert small and large and small != large
        both = token(host, "data:write data:read")
        asked = provider.requests["token"]
        assert token(host, "data:read data:write") == both
        assert token(host, "data:read") == small and provider.requests["token"] == asked
        assert scopes_seen(provider)[-1] == "data:read data:write"


def BrowserOfTheHost(place, provider):
    with User(place) as user, place.start() as host:
        begun = host.ask("InitiateLogin.errorEx", 4000, "bob@example.org")
        assert (begun["result"], begun["error"], begun["value"]) == (True, 0, 200)
        query = dict(urllib.parse.parse_qsl(urllib.parse.urlsplit(begun["text"]).query))
        assert query["login_hint"] == "bob@example.org"
        assert query["code_challenge_method"] == "S256" and len(query["state"]) >= 22
        assert host.ask("UI.IsLoginInProgress") is True
        # One at a time.
        assert host.ask("InitiateLogin", 4000)["result"] is False
        host.begin("CompleteLogin")
        user.visit(begun["text"])
        assert host.ask("await") is True and host.ask("GetUserId") == "bob"
        assert host.ask("UI.IsLoginInProgress") is False
        assert host.ask("CompleteLogin") is False

        begun = host.ask("InitiateLogout", 4000)
        assert begun["result"] is True and begun["cookies"] == 0
        assert begun["text"].startswith(provider.issuer + "/end-session?")
        assert host.ask("CompleteLogout") is True and host.ask("IsLoggedIn") is False


def BufferTooSmallEndsTheLogin(place, _provider):
    with User(place), place.start() as host:
        length = len(host.ask("InitiateLogin", 4000)["text"])
        host.ask("UI.Logout")
        before = len(place.log())
        assert host.ask("InitiateLogin", length - 20) == {"result": False, "text": ""}
        [line] = lines_of(place, before)
        assert line.startswith("Error Cannot begin a sign-in") and has_remedy(line), line
        sign_in(host)


def LogoutEndsALoginThatWaits(place, _provider):
    with place.start() as host:
        host.begin("UI.Login")
        wait_until(place.addresses.exists)
        assert host.ask("UI.IsLoginInProgress") is True and host.ask("UI.Login") is False
        began = time.monotonic()
        assert host.ask("UI.Logout") is False  # nobody was signed in
        assert host.ask("await") is False and time.monotonic() - began < 3
        assert host.ask("UI.IsLoginInProgress") is False


def LoginThatNobodyFinishesEnds(place, _provider):
    place.configure(timeouts={"login": 1, "network": 5})
    with place.start() as host:
        began = time.monotonic()
        assert host.ask("UI.Login") is False
        assert 0.9 < time.monotonic() - began < 10
        assert any(orders.NOT_BACK in line and has_remedy(line) for line in place.log())


def EightProcessesMakeOneRefresh(place, provider):
    provider.lifetime = 4
    with User(place), place.start() as host:
        sign_in(host)
    hosts = [place.start() for _ in range(8)]
    try:
        for host in hosts:
            assert host.ask("IsLoggedIn") is True
        wait_until(lambda: not hosts[0].ask("IsOAuth2TokenAvailable"))
        provider.lifetime = 3600
        for host in hosts:
            host.tell("GetOAuth2AccessToken", 1, "")
        tokens = {host.answer()["token"] for host in hosts}
        assert len(tokens) == 1
        assert provider.requests["token.refresh_token"] == 1, provider.requests
        assert all(host.ask("IsLoggedIn") and host.ask("RestoreLogin") for host in hosts)
        # Nobody reused a rotated token: the provider would have ended the login.
        assert hosts[0].ask("RefreshOAuth2Token", "true") is True
        assert provider.requests["token.refresh_token"] == 2
    finally:
        for host in hosts:
            host.close()


def EightThreadsMakeOneRefresh(place, provider):
    """Of one process, with others that ask for everything else."""
    provider.lifetime = 3
    with User(place), place.start() as host:
        sign_in(host)
        wait_until(lambda: host.ask("IsTokenExpired"))
        provider.lifetime = 3600
        commands = ["GetOAuth2AccessToken 1 ", "GetAccessToken", "GetUserNameW", "GetUrl 0",
                    "Private.GetSessionState", "InitiateLogin 4000", "UI.IsLoginInProgress",
                    "HasEvent", "GetConfiguration", "Private.RaiseEvent 7 true"]
        for _ in range(8):
            for command in commands:
                host.begin(command)
        answers = [host.ask("await") for _ in range(8 * len(commands))]
        tokens = {answer["token"] for answer in answers[::len(commands)]}
        assert tokens == set(answers[1::len(commands)]) and len(tokens) == 1
        assert {json.dumps(answer) for answer in answers[2::len(commands)]} == \
            {json.dumps("Alice Ågren")}
        assert provider.requests["token.refresh_token"] == 1
        begun = [answer["result"] for answer in answers[5::len(commands)]]
        assert begun.count(True) == 1, begun
        host.ask("Logout")
        assert host.ask("UI.IsLoginInProgress") is False


def EveryOperation(place, provider):
    place.configure({"production": {**provider.server_entry(),
                                    "accountUrl": "https://localhost/account"}})
    with User(place), place.start() as host:
        wrong = []
        for column in (1, 2):
            if column == 2:
                sign_in(host)
            for row in operations.OPERATIONS:
                expected = row[1] if row[column] is operations.SAME else row[column]
                answer = host.ask(row[0])
                good = expected(answer) if callable(expected) else \
                    answer == expected and type(answer) is type(expected)
                wrong += [] if good else [f"{row[0]} (column {column}): {answer!r}"]
        assert not wrong, "\n".join(wrong)
        known = set(host.ask("commands"))
    told = {row[0].split()[0] for row in operations.OPERATIONS} | operations.ELSEWHERE
    assert known == told, known ^ told


def NoOperationIsForgotten(place, _provider):
    """Each member of the public classes that the library forwards has a command."""
    def member(command):
        words = command.split(".")
        return words[words[0] in ("UI", "Automation", "Private", "Server", "Services")]
    with place.start() as host:
        names = {member(command) for command in host.ask("commands")}
    # What the library answers by itself.
    own = {"GetInstance", "EnableLog", "SetCachePath", "SetCurrentLocale",
           "EnablePlatformIndependentMessageBoxStyle",
           "IsPlatformIndependentMessageBoxStyleEnabled", "GetSSOServerAppPath",
           "GetSSOServerAppExeDirPath", "GetSSOClientPluginModule", "GetOpenSslModule",
           "ExpandPathVariables", "GetModuleDirPath", "GetSSOClientConfigFile",
           "GetSSOClientConfigFileOverride", "SetSSOClientConfigFileOverride", "GetLogFile",
           "GetRsaCryptor", "WebServicesManager", "WebServicesUIManager"}
    for header in ("WebServicesManager", "WebServicesUIManager", "SSOClientPrivate",
                   "SSOServerManager"):
        text = re.sub(r"//[^\n]*", "", (INCLUDE / f"{header}.h").read_text(encoding="utf-8"))
        members = set(re.findall(r"[\s&*]([A-Z]\w+)\([^;{}]*\)(?: const)?;", text))
        assert len(members) >= 9, members
        assert members <= names | own, members - names - own


def ConfigurationOfTheHost(place, provider):
    mine = {"server": 0, "oauth2ConsumerKey": "hxsso-test", "oauth2Scope": "openid data:read",
            "consumerSecret": "se cret", "featureName": "Tool"}
    with User(place), place.start() as host:
        first = json.loads(host.ask("GetConfiguration"))
        assert first["oauth2Scope"] == operations.SCOPES
        # A reference that a host holds stays what it was.
        assert json.loads(host.ask("GetConfiguration.kept", json.dumps(mine))) == first
        now = json.loads(host.ask("GetConfiguration"))
        assert {name: now[name] for name in mine} == mine
        sign_in(host)
        assert scopes_seen(provider, "authorization")[-1] == "data:read openid"


def ServersAndTheirLogins(place, provider):
    entry = provider.server_entry()
    place.configure({name: {**entry, "accountUrl": f"https://localhost/{name}"}
                     for name in ("zeta", "production", "alpha")})
    with User(place), place.start() as host:
        names = [host.ask("Private.ServerToServerName", number) for number in range(4)]
        assert names == ["production", "alpha", "zeta", ""]
        assert host.ask("SetServer", 1) is True and host.ask("GetServer") == 1
        assert host.ask("UI.ShowAccountSettings") is True
        wait_until(place.addresses.exists)
        assert place.addresses.read_text().splitlines()[0] == "https://localhost/alpha"


def LockOfAHost(place, provider):
    """A host that holds the login's file goes on itself, and keeps the others waiting."""
    with User(place), place.start() as holder, place.start() as other:
        sign_in(holder)
        holder.ask("Private.LockLoginStateFile")
        holder.ask("Private.LockLoginStateFile")
        assert token(holder, "data:read").count(".") == 2
        asked = provider.requests["token"]
        other.begin("GetOAuth2AccessToken", 1, "data:write")
        holder.ask("Private.UnlockLoginStateFile")
        time.sleep(0.5)
        assert provider.requests["token"] == asked
        holder.ask("Private.UnlockLoginStateFile")
        assert other.ask("await")["token"].count(".") == 2
        assert provider.requests["token"] == asked + 1


def LockOfAHostThatDied(place, _provider):
    with User(place), place.start() as other:
        with place.start() as holder:
            sign_in(holder)
            holder.ask("Private.LockLoginStateFile")
        assert token(other, "data:write").count(".") == 2


def Events(place, _provider):
    with User(place), place.start() as host:
        def count():
            taken = 0
            while host.ask("DispatchEvent"):
                taken += 1
            return taken
        assert count() == 0
        sign_in(host)
        assert count() == 2  # LoggedIn, TokenAcquired
        host.ask("RefreshOAuth2Token", "true")
        assert count() == 1  # TokenRefreshed
        host.ask("Logout")
        assert count() == 1  # LoggedOut


def DefaultSpecOfInitialize(place, provider):
    with User(place), place.start() as host:
        sign_in(host)
        assert host.ask("UI.Uninitialize") and host.ask("UI.IsInitialized") is False
        assert host.ask("Initialize.spec", 1, "data:write data:read") is True
        assert host.ask("GetAccessToken").count(".") == 2
        assert scopes_seen(provider)[-1] == "data:read data:write"
        assert host.ask("IsTokenAvailable") and host.ask("IsOAuth2TokenAvailable")
        assert host.ask("Uninitialize") is True
        assert host.ask("Initialize", "true") and host.ask("IsLoggedIn") is True


def Encrypt(place, _provider):
    with place.start() as host:
        guarded = host.ask("Private.Encrypt", "se cret")
        if place.is_windows:
            assert re.fullmatch(r"[\w-]{40,}", guarded), guarded
        else:
            assert guarded == ""
        assert "se cret" not in guarded


def NoSecretIsLogged(place, provider):
    with User(place) as user, place.start() as host:
        sign_in(host)
        tokens = [token(host, scope) for scope in ("", "data:read")]
        provider.misbehave("400-json", at="token.refresh_token")
        assert token(host, "data:write") is None
        provider.behave()
        address = user.visited[0][0]
        sign_in(host)
        host.ask("SetProxyAuthentication", "proxy.example", 3128, "anna", "pass-phrase-1")
        host.ask("Automation.Login", "alice", "pass-phrase-2")
        host.ask("CompleteLogin.jar")
        host.ask("Logout")
    query = dict(urllib.parse.parse_qsl(urllib.parse.urlsplit(address).query))
    secrets = [*tokens, *(part for one in tokens for part in one.split(".")[1:]),
               query["state"], query["nonce"], "pass-phrase-1", "pass-phrase-2"]
    for endpoint, parameters in provider.seen:
        secrets += [value for name, value in parameters.items() if endpoint == "token" and name in
                    ("code", "code_verifier", "refresh_token")]
    assert len(secrets) > 12
    for folder, _, names in os.walk(place.root):
        for name in names:
            file = pathlib.Path(folder, name)
            if file == place.addresses or file.suffix == ".dat":
                continue
            content = file.read_bytes()
            found = [secret for secret in secrets if secret.encode() in content]
            assert not found, (file, found)


def FilesAreTheUsersAlone(place, _provider):
    if place.is_windows:
        skip("DPAPI protects the content there, whoever may read the file")
    with User(place), place.start() as host:
        sign_in(host)
        state = pathlib.Path(host.ask("GetLoginStateFile"))
        assert state.exists() and state.parent == place.store
        assert pathlib.Path(host.ask("GetCachePath")) == place.store
    assert stat.S_IMODE(place.store.stat().st_mode) == 0o700
    for file in place.store.iterdir():
        assert stat.S_IMODE(file.stat().st_mode) == 0o600, file


def DamagedStoreCountsAsSignedOut(place, _provider):
    with User(place), place.start() as host:
        sign_in(host)
        state = pathlib.Path(host.ask("GetLoginStateFile").replace("Z:", "").replace("\\", "/"))
    whole = state.read_bytes()
    state.write_bytes(whole[: len(whole) // 2])
    with place.start() as host:
        assert host.ask("RestoreLogin") is False and host.ask("IsLoggedIn") is False
    [line] = [line for line in place.log() if "cannot be used" in line]
    assert has_remedy(line), line
    kept = [file for file in place.store.iterdir() if file.read_bytes() == whole[: len(whole) // 2]]
    assert len(kept) == 1 and kept[0] != state


def NoPluginConfiguration(place, _provider):
    """Every mistake of the administrator is one line; hosts see nobody signed in."""
    if place.is_windows:
        skip("the log would be in the user's own folder, which tests do not touch")
    good = json.loads(place.settings.read_text())
    entry = good["servers"]["production"]
    for content, reason in [
            (None, "HxSSOOpenID.json is missing"),
            ("{", "is not valid JSON"),
            ("[]", "is not an object"),
            ({**good, "servers": {}}, "servers is empty"),
            ({**good, "servers": {"a": {**entry, "issuer": "http://other.example"}}},
             "servers.a.issuer is not an https address"),
            ({**good, "servers": {"a": {"issuer": entry["issuer"]}}},
             "servers.a.clientId is missing"),
            ({**good, "timeouts": {"login": "long"}}, "timeouts.login is not a whole number")]:
        if content is None:
            place.settings.unlink()
        else:
            place.settings.write_text(content if isinstance(content, str) else json.dumps(content))
        with place.start() as host:
            assert host.ask("IsLoggedIn") is False and host.ask("UI.Login") is False
            assert host.ask("RestoreLogin") is False and host.ask("GetUrl", 0) == ""
            assert host.ask("GetServer") == -1 and host.ask("SetConfiguration", "{}") is False
            assert host.ask("Private.Ping")["result"] is False
            host.ask("Private.LockLoginStateFile")
            host.ask("Private.UnlockLoginStateFile")
        log = place.log(place.root / "home/data/HxSSO/OpenID")
        told = [line for line in log if " Error " in line]
        assert all(reason in line and has_remedy(line) for line in told) and told, (reason, told)
        shutil.rmtree(place.root / "home/data")

    place.settings.write_text(json.dumps({**good, "surprise": 1}))
    with place.start() as host:
        assert host.ask("GetServer") == 0
    assert any("Warning" in line and "key surprise is not known" in line for line in place.log())


def order_cases(orders_of_group, place, provider, check):
    """All orders of a group, with what is wrong about any of them."""
    wrong = []
    for fault, at, pattern in orders_of_group:
        provider.misbehave(fault, at=at)
        before = len(place.log())
        try:
            check(fault, at, pattern, before)
        except AssertionError as error:
            wrong.append(f"{fault} at {at}: {error}")
        provider.behave()
    assert not wrong, "\n".join(wrong)


def refused(place, pattern, before, what="Cannot sign in: "):
    """Of the lines since one says so, and all errors have a remedy."""
    lines = [line for line in lines_of(place, before) if line.startswith("Error ")]
    assert any(re.search(re.escape(what) + ".*" + "(?:" + pattern + ")", line)
               for line in lines), lines
    assert all(has_remedy(line) for line in lines), lines


def failing_sign_ins(orders_of_group, place, provider):
    with User(place), place.start() as host:
        def check(_fault, _at, pattern, before):
            assert host.ask("UI.Login") is False, "signed in"
            assert host.ask("IsLoggedIn") is False
            refused(place, pattern, before)
        order_cases(orders_of_group, place, provider, check)
        sign_in(host)


def HostileProviderAtSignIn(place, provider):
    failing_sign_ins(orders.SIGN_IN, place, provider)
    assert provider.bytes_of_endless < 64 << 20


def LateProviderAtSignIn(place, provider):
    provider.slow_seconds = 20
    place.configure(timeouts={"login": 3, "network": 2})
    failing_sign_ins(orders.LATE, place, provider)


def HarmlessFaultsAtSignIn(place, provider):
    with User(place), place.start() as host:
        def check(_fault, _at, pattern, before):
            assert host.ask("UI.Login") is True and host.ask("GetUserId") == "alice"
            lines = lines_of(place, before)
            assert not pattern or any(re.search(pattern, line) for line in lines), lines
            host.ask("Logout")
        order_cases(orders.HARMLESS, place, provider, check)


def HostileProviderAtFirst(place, provider):
    with User(place):
        def check(_fault, _at, pattern, before):
            with place.start() as host:
                assert host.ask("UI.Login") is False, "signed in"
            refused(place, pattern, before)
        order_cases(orders.FIRST, place, provider, check)


def HostileProviderAtRefresh(place, provider):
    provider.slow_seconds = 20
    # An answer that is lost on its way would take the only good token with it.
    provider.rotates = False
    place.configure(timeouts={"login": 20, "network": 4})
    # After a failure a token of the same scope is not asked for again at once.
    scopes = ["data:read", "data:write", "data:read data:write", "email", "profile",
              "email profile", "data:read email", "data:write email"]
    with User(place), place.start() as host:
        sign_in(host)
        def check(_fault, _at, pattern, before):
            assert token(host, scopes.pop()) is None
            assert host.ask("IsLoggedIn") is True, "signed out"
            refused(place, pattern, before, "Cannot get a new token: ")
        order_cases([(fault, "token.refresh_token", pattern) for fault, pattern in orders.REFRESH],
                    place, provider, check)
        assert token(host, "openid email").count(".") == 2


def RefusedRefreshTokenSignsOut(place, provider):
    with User(place), place.start() as host:
        def check(_fault, _at, pattern, before):
            sign_in(host)
            assert token(host, "data:read") is None
            assert host.ask("IsLoggedIn") is False and host.ask("GetUserId") == ""
            refused(place, pattern, before, "Signed out: ")
        order_cases([(fault, "token.refresh_token", pattern) for fault, pattern in orders.REFUSED],
                    place, provider, check)


def RefusedScopeDoesNotSignOut(place, _provider):
    with User(place), place.start() as host:
        sign_in(host)
        assert token(host, "unknown:scope") is None
        assert host.ask("IsLoggedIn") is True and token(host, "data:read").count(".") == 2
        assert any("was not granted the scope" in line and has_remedy(line) for line in place.log())


def LeavesAtOnceDuringASlowRequest(place, provider):
    with User(place):
        host = place.start()
        sign_in(host)
        provider.slow_seconds = 60
        provider.misbehave("silent", at="token.refresh_token")
        host.begin("GetOAuth2AccessToken", 1, "data:read")
        wait_until(lambda: provider.requests["token.refresh_token"])
        began = time.monotonic()
        host.tell("leave")
        host.close()
        assert time.monotonic() - began < 5
        provider.behave()
        provider.end_connections()
        # Nothing that it held is in the way of the next one.
        with place.start() as host:
            assert token(host, "data:read").count(".") == 2


def KilledDuringARequest(place, provider):
    if place.is_windows:
        skip("no signal reaches a program under Wine")
    with User(place):
        host = place.start()
        sign_in(host)
        provider.slow_seconds = 60
        provider.misbehave("silent", at="token.refresh_token")
        host.begin("GetOAuth2AccessToken", 1, "data:read")
        wait_until(lambda: provider.requests["token.refresh_token"])
        os.kill(host.process.pid, signal.SIGKILL)
        host.process.communicate()
        provider.behave()
        provider.end_connections()
        with place.start() as host:
            assert host.ask("IsLoggedIn") is True
            assert token(host, "data:read").count(".") == 2


def NoThreadIsLeft(place, _provider):
    if place.is_windows:
        skip("the threads of another process are counted on Linux alone")
    with User(place), place.start() as host:
        def threads():
            return len(os.listdir(f"/proc/{host.process.pid}/task"))
        assert threads() == 1
        sign_in(host)
        token(host, "data:read")
        host.ask("Logout")
        wait_until(lambda: threads() == 1, 5)


def PluginCheckPasses(place, _provider):
    name = "hxsso-plugin-check" + (".exe" if place.is_windows else "")
    if not (PROGRAMS / name).exists():
        skip("this build has no " + name)
    ended = subprocess.run([*place.emulator, str(PROGRAMS / name), str(place.module)],
                           env=place.environment(), stdin=subprocess.DEVNULL, timeout=100,
                           stdout=subprocess.PIPE, encoding="utf-8", check=False)
    assert ended.returncode == 0 and "All checks passed." in ended.stdout, ended.stdout


def NoErrorOfTheLibrary(place, _provider):
    with User(place), place.start() as host:
        sign_in(host)
    assert not [line for line in place.log() if " Info " not in line], place.log()
    assert any("module loaded (Version" in line for line in place.log())


def main(cases):
    if reason := why_not():
        skip(reason)
    with tempfile.TemporaryDirectory() as folder:
        root = pathlib.Path(folder).resolve()
        with hostile.HostileProvider(root / "authority") as provider:
            place = Installation(root / "place", PROGRAMS, EMULATOR, provider)
            try:
                cases[sys.argv[1]](place, provider)
            except BaseException:
                print(*place.log(), sep="\n")
                raise


if __name__ == "__main__":
    main(globals())
