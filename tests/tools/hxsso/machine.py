#!/usr/bin/env python3
"""A machine that is no laboratory: two users, a full disk, a proxy, an account that is gone."""

import contextlib
import os
import pathlib
import subprocess
import sys
import time

from hxsso_place import PATIENCE, Ended, User, failed, run, skip

import browser  # noqa: E402
import namespaces  # noqa: E402
import proxy  # noqa: E402
import wine_prefix  # noqa: E402


class Person:
    """A user of the machine, with a home."""

    def __init__(self, place, number, name):
        self.place, self.number, self.name = place, number, name
        self.home = place.root / "homes" / name
        self.home.mkdir(parents=True)
        os.chown(self.home, number, number)
        self.store = self.home / ".local/share/HxSSO/OpenID"

    def environment(self, home=None):
        environment = {**self.place.environment(), "HOME": str(home or self.home)}
        del environment["XDG_DATA_HOME"]
        return environment

    def words(self, *command):
        words = ["setpriv", f"--reuid={self.number}", f"--regid={self.number}", "--clear-groups"]
        return self.place.provider.authority.trusted([*words, *command])

    def run(self, *arguments, home=None):
        return Ended(arguments, subprocess.run(
            self.words(self.place.hxsso, *arguments), env=self.environment(home), cwd="/",
            stdin=subprocess.DEVNULL, capture_output=True, timeout=PATIENCE, check=False))

    def browses(self, address):
        """Whether this user's browser comes to a page at the end."""
        visitor = browser.Browser(str(self.place.provider.authority.bundle))
        child = os.fork()
        if child == 0:
            try:
                os.setgroups([])
                os.setgid(self.number)
                os.setuid(self.number)
                visitor.visit(address)
                os._exit(0)
            except OSError:  # the connection was closed, early or late
                os._exit(1)
            finally:
                os._exit(2)
        status = os.waitstatus_to_exitcode(os.waitpid(child, 0)[1])
        assert status < 2, "the browser failed"
        return status == 0

    def sign_in(self, intruder=None):
        words = self.words(self.place.hxsso, "login", "--no-browser", "--hint", self.name)
        process = subprocess.Popen(words, env=self.environment(), cwd="/",
                                   stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                   stderr=subprocess.PIPE, encoding="utf-8")
        address = ""
        while not address.startswith("https://"):
            address = process.stderr.readline()
            assert address, process.communicate()
        # Whoever else has read the address, with his own browser, is not let in.
        assert not intruder or not intruder.browses(address.strip())
        assert self.browses(address.strip())
        output, errors = process.communicate(timeout=PATIENCE)
        assert process.returncode == 0, errors
        return output

    def can(self, *command):
        """Whether a command of the system does it for this user."""
        ended = subprocess.run(self.words(*command), env=self.environment(), cwd="/",
                               capture_output=True, timeout=PATIENCE, check=False)
        return ended.returncode == 0


def owners(folder):
    return {file.relative_to(folder): (file.stat().st_uid, file.stat().st_mode)
            for file in folder.rglob("*")}


def TwoUsersOfOneMachine(place, provider):
    if place.is_windows:
        skip("Wine knows one user")
    if os.geteuid() != 0:
        skip("only root can be two users")
    for folder in (place.root.parent, place.root):
        folder.chmod(0o755)
    place.configure({"production": provider.server_entry()})
    settings = place.settings.read_text()
    place.settings.write_text(settings.replace(str(place.store), "%LocalAppData%/HxSSO/OpenID"))
    alice, bob = Person(place, 60001, "alice"), Person(place, 60002, "bob")
    root = Person(place, 0, "root")

    assert alice.sign_in(intruder=bob).startswith("Signed in as Alice")
    failed(bob.run("token"), 1, "nobody is signed in at production")
    assert bob.sign_in().startswith("Signed in as Bob")
    assert (alice.run("whoami").text, bob.run("whoami").text) == ("alice\n", "bob\n")
    assert alice.run("token").text != bob.run("token").text

    # Neither can look at what the other has, by the system's own means or by hxsso.
    [kept] = alice.store.glob("login-*.dat")
    before = owners(alice.store)
    assert alice.can("cat", kept)
    assert not bob.can("cat", kept) and not bob.can("ls", alice.store)
    assert bob.can("ls", alice.home)  # the home itself is open here: the store is not
    failed(bob.run("token", home=alice.home), 1, "nobody is signed in at production|cannot be")
    # Nor does root, who can, take over or spoil a store in a home that sudo has left to him.
    failed(root.run("token", home=alice.home), 1, "nobody is signed in at production|cannot be")
    assert owners(alice.store) == before
    assert (alice.run("whoami").text, bob.run("whoami").text) == ("alice\n", "bob\n")

    # One folder for all is a mistake of the administrator's, which nobody gets tokens by.
    shared = place.root / "shared"
    shared.mkdir()
    shared.chmod(0o1777)
    place.settings.write_text(settings.replace(str(place.store), str(shared)))
    for person in (alice, bob):
        ended = person.run("login", "--no-browser")
        assert ended.status == 4 and ended.output == b"", ended
    assert not list(shared.glob("login-*")), list(shared.iterdir())


def fill(folder):
    """To the last byte."""
    with open(folder / "filling", "ab", buffering=0) as filling:
        try:
            while filling.write(b"x" * 4096):
                pass
        except OSError:
            pass


def HomeOnAFullDisk(place, provider):
    disk = place.root / "disk"
    disk.mkdir()
    subprocess.run(["mount", "-t", "tmpfs", "-o", "size=1m,mode=700", "tmpfs", disk], check=True)
    try:
        with contextlib.ExitStack() as until_the_end:
            if place.is_windows:  # Wine's server opens the files, outside of this namespace
                variables, _ = until_the_end.enter_context(
                    wine_prefix.own(place, place.root / "prefix"))
                os.environ.update(variables)
            on_a_full_disk(place, provider, disk)
    finally:
        subprocess.run(["umount", disk], check=True)


def on_a_full_disk(place, provider, disk):
    place.store = disk / "store"
    place.configure()
    with User(place):
        # Nobody is told that he is signed in whom the next command does not know.
        fill(disk)
        failed(place.run("login"), 4, "cannot be written|is full", "make room on the disk")
        failed(place.run("token"), 1, "nobody is signed in")
        (disk / "filling").unlink()

        provider.lifetime = 2
        place.sign_in()
        fill(disk)
        time.sleep(1.5)  # the token counts as ended in the second half of its short life
        asked = provider.requests["token.refresh_token"]
        failed(place.run("token"), 4, "the disk of .* is full", "make room on the disk")
        assert place.run("whoami").text == "alice\n"
        assert provider.requests["token.refresh_token"] == asked, "the token is used up"

        (disk / "filling").unlink()
        provider.lifetime = 3600
        place.token()
        fill(disk)
        assert place.token() == place.token()
        assert place.run("logout").status == 0 and place.run("status").status == 1
        assert provider.requests["revocation"] == 1


def ProxyOfTheEnvironment(place, _provider):
    """hxsso asks nobody for credentials: they stand in the address of the proxy."""
    if place.is_windows:
        skip("on Windows the system's settings name the proxy, which Wine's WinHTTP goes past")
    if reason := proxy.why_missing():
        skip(reason)
    with proxy.Proxy(place.root / "proxy") as between, User(place):
        def behind(credentials, *words):
            return place.run(*words, https_proxy=between.address(credentials), no_proxy="",
                             NO_PROXY="")
        wrong = f"{between.user}:not-the-password@"
        for credentials in ("", wrong):
            asked = len(between.requests())
            ended = failed(behind(credentials, "login"), 4, "is behind a proxy",
                           "set the credentials of the proxy")
            assert ended.errors.count("Fix: ") == 1, ended
            assert len(between.requests()) - asked <= 3, "asks again and again"
        right = f"{between.user}:{between.password}@"
        assert behind(right, "login").status == 0
        ended = behind(right, "token", "--scope", "data:read")
        assert ended.status == 0 and ended.errors == "", ended
        log = "\n".join(place.log())
        for secret in between.secrets() + between.secrets("not-the-password"):
            assert secret not in log, log


def AccountThatIsGone(place, provider):
    """The next refresh signs out all, and says so; until then nobody can know."""
    with User(place), place.start() as host:
        place.sign_in()
        assert host.ask("IsLoggedIn") is True
        provider.revoke_all()
        assert place.run("status").status == 0
        ended = failed(place.run("token", "--scope", "data:read"), 1,
                       "Signed out: the provider .* refuses the refresh token", "sign in again")
        assert provider.issuer in ended.errors, ended
        asked = provider.requests["token"]
        assert host.ask("IsLoggedIn") is False
        assert host.ask("GetOAuth2AccessToken", 1, "") is None
        failed(place.run("token"), 1, "nobody is signed in at production", "hxsso login")
        assert place.run("status").status == 1
        assert provider.requests["token"] == asked, "a refused token is sent again"
        assert not list(pathlib.Path(place.store).glob("login-*.dat"))


if __name__ == "__main__":
    if sys.argv[1] == "HomeOnAFullDisk":
        if why := namespaces.enter(["-m"], ":"):
            skip(why)
    run(globals())
