#!/usr/bin/env python3
"""configure, install, and where the program lies."""

import json
import os
import re
import signal
import subprocess
import threading
import time

from hxsso_place import PATIENCE, ROOT, User, failed, run, schema, skip

from glewlwyd import free_ports


def configured(place, provider, *more, issuer=None, status=0):
    ended = place.run("configure", "--issuer", issuer or provider.issuer,
                      "--client-id", "hxsso-test", *more)
    assert ended.status == status, ended
    return ended


def ConfigureMakesTheFile(place, provider):
    place.settings.unlink()
    ended = configured(place, provider)
    assert ended.errors == "" and "Wrote " in ended.text and "answers as" in ended.text, ended
    assert "http://127.0.0.1/callback, with any port" in ended.text, ended
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


def ConfigureSetsThePorts(place, provider):
    [port] = free_ports(1)
    ended = configured(place, provider, "--redirect-ports", f"{port},49153")
    assert f"http://127.0.0.1:{port}/callback http://127.0.0.1:49153/callback" in ended.text, ended
    configured(place, provider)
    server = json.loads(place.settings.read_text())["servers"]["production"]
    assert server["redirectPorts"] == [port, 49153], server
    with User(place):
        place.sign_in()
    [parameters] = [seen for endpoint, seen in provider.seen if endpoint == "authorization"]
    assert parameters["redirect_uri"] == f"http://127.0.0.1:{port}/callback", parameters
    before = place.settings.read_bytes()
    for ports in ("0", "65536", "49152,", ",", "49152;49153", "49152, 49153", "-1", "any"):
        failed(place.run("configure", "--issuer", provider.issuer, "--client-id", "hxsso-test",
                         "--redirect-ports", ports), 2, "--redirect-ports is no list of ports")
    assert place.settings.read_bytes() == before


def ConfigureFollowsALink(place, provider):
    """As a package has it, which keeps the file in a folder for configuration."""
    if place.is_windows:
        skip("links are for administrators there")
    place.settings.unlink()
    other = place.root / "configuration"
    place.settings.symlink_to(other / "HxSSOOpenID.json")
    failed(place.run("configure", "--issuer", provider.issuer, "--client-id", "a"), 5,
           re.escape(str(other)) + ".* cannot be written")
    other.mkdir()
    configured(place, provider, issuer="https://localhost:1", status=4)
    assert not list(other.iterdir()) and place.settings.is_symlink()
    ended = configured(place, provider)
    assert f"Wrote {other}/HxSSOOpenID.json\n" in ended.text, ended
    assert place.settings.is_symlink() and place.run("status").status == 1


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


def ConfigureThatIsInterrupted(place, provider):
    """No provider stays for all programs that nobody has checked."""
    if place.is_windows:
        skip("no Ctrl-C reaches a program under Wine")
    before = place.settings.read_bytes()
    asked, goes_on = threading.Event(), threading.Event()

    def failing(_parameters, _bearer):
        asked.set()
        goes_on.wait(PATIENCE)
        return 500, {}, b""
    provider.discovery = failing
    process = place.begin("configure", "--issuer", provider.issuer, "--client-id", "another")
    assert asked.wait(PATIENCE)
    process.send_signal(signal.SIGINT)
    time.sleep(0.3)
    assert process.poll() is None, process.communicate()
    goes_on.set()
    process.communicate(timeout=PATIENCE)
    assert process.returncode == -signal.SIGINT, process.returncode
    assert place.settings.read_bytes() == before


def ConfigureWritesThroughNoLink(place, provider):
    """Where others may write, one of them may have put it there."""
    if place.is_windows:
        skip("links are for administrators there")
    other = place.root / "of somebody"
    other.write_text("precious")
    place.settings.with_name(place.settings.name + ".new").symlink_to(other)
    configured(place, provider)
    assert other.read_text() == "precious" and not place.settings.is_symlink()
    assert place.settings.stat().st_mode & 0o777 == 0o644


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


def InstalledAsPackagesDo(place, provider):
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
    with User(place):
        ended = place.run("login")
        assert ended.text.startswith("Signed in as Alice Ågren (alice"), ended
        assert ended.text.endswith(f" at {provider.issuer}\n"), ended
    assert place.run("logout").status == 0
    # In the sign-on folder it is a link.
    link = place.root / "server/HxSSO.exe"
    link.unlink()
    link.symlink_to(place.hxsso)
    place.hxsso = link
    assert place.run("status").status == 1 and place.run("doctor").status == 0


def PackageNamesItsFolder(place, _provider):
    """As dpkg runs it. A full disk once left an empty file, with which nobody could sign in."""
    if place.is_windows:
        skip("the package is Debian's")
    root = place.root / "debian"
    location = root / "etc/xdg/Halvorix/HxSSO/Location"

    def configure():
        subprocess.run(["sh", ROOT / "debian/hxsso-openid.postinst", "configure"], check=True,
                       env={**os.environ, "DPKG_ROOT": str(root)}, timeout=PATIENCE)
        assert [file.name for file in location.parent.iterdir()] == ["Location"]
        return location.read_text()
    assert configure() == "/usr/lib/HxSSO\n"
    location.write_text("")
    assert configure() == "/usr/lib/HxSSO\n"
    assert location.stat().st_mode & 0o777 == 0o644
    location.write_text("/opt/other\n")
    assert configure() == "/opt/other\n"


def InstallByAStrictRoot(place, _provider):
    """Whose files nobody else may read: what he makes here is for all all the same."""
    if place.is_windows:
        skip("there are no masks")
    ended = subprocess.run(
        place.words("install", "--system", "--folder", str(place.root / "server")), umask=0o077,
        env={**place.environment(), "XDG_CONFIG_DIRS": str(place.root / "new/xdg")},
        capture_output=True, timeout=PATIENCE, check=False)
    assert ended.returncode == 0, ended
    made = [place.root / "new", *(place.root / "new").rglob("*")]
    assert {path.name: path.stat().st_mode & 0o777 for path in made} == {
        "new": 0o755, "xdg": 0o755, "Halvorix": 0o755, "HxSSO": 0o755, "Location": 0o644}


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


if __name__ == "__main__":
    run(globals())
