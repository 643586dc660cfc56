#!/usr/bin/env python3
"""machine_test.py CASE FOLDER [EMULATOR...]

Hosts on a machine that is no laboratory: behind a proxy that wants credentials, with the authority
of a company, without IPv4, at a provider that changes under way, with a browser that comes late.
"""

import contextlib
import json
import pathlib
import shutil
import socket
import subprocess
import sys
import tempfile

from host_test import lines_of, scopes_seen, sign_in, skip, token
from installation import PATIENCE, Installation, User, wait_until, why_not

import authority  # noqa: E402
import browser  # noqa: E402
import hostile  # noqa: E402
import namespaces  # noqa: E402
import orders  # noqa: E402
import proxy  # noqa: E402
import wine_prefix  # noqa: E402

PROGRAMS = pathlib.Path(sys.argv[2])
EMULATOR = sys.argv[3:]

NOT_TRUSTED = "has no TLS certificate that is trusted"


class Machine(Installation):
    """With the test's authority as the only one, until a test names another bundle."""

    bundle = None
    variables = {}

    def environment(self):
        return {**super().environment(), **self.variables}

    def command(self):
        return authority.with_bundle(
            self.bundle or self.provider.authority.bundle, [*self.emulator, str(self.host)])


@contextlib.contextmanager
def of_this_namespace(place):
    """Wine's server, which has the sockets, would be on the machine as it is."""
    if not place.is_windows:
        yield
        return
    with wine_prefix.own(place, place.root / "prefix") as (place.variables, _):
        yield


def errors_of(place, before):
    return [line for line in lines_of(place, before) if line.startswith("Error ")]


def fails_with_one_line(place, attempt, *parts):
    """False or nothing, and a single error in the log, with these parts and a remedy."""
    before = len(place.log())
    assert not attempt(), "it was done"
    [line] = errors_of(place, before)
    assert all(part in line for part in (*parts, ". Fix: ")), line


# ----- The cases -------------------------------------------------------------------------


def ProxyWithCredentials(place, provider):
    if reason := proxy.why_missing():
        skip(reason)
    if place.is_windows:
        skip("Wine's WinHTTP goes past the proxy of the system's settings")
    with proxy.Proxy(place.root / "proxy") as between:
        place.variables = {"https_proxy": between.address(), "no_proxy": "", "NO_PROXY": ""}
        give = ("SetProxyAuthentication", "127.0.0.1", between.port, between.user)
        with User(place), place.start() as host:
            def log_in():
                return host.ask("UI.Login")
            fails_with_one_line(place, log_in, "is behind a proxy", "the proxy asks for credentials",
                                "set the credentials of the proxy")
            assert len(between.requests()) == 1, between.log()

            assert host.ask(*give, "not-the-password") is True
            fails_with_one_line(place, log_in, "is behind a proxy",
                                "set the credentials of the proxy")
            assert len(between.requests()) <= 4, "asks again and again"
            assert not provider.seen, provider.seen

            assert host.ask(*give, between.password) is True
            sign_in(host)
            assert token(host, "data:read").count(".") == 2
            assert set(between.requests()) == {f"CONNECT localhost:{provider.port} HTTP/1.1"}

            # Forgotten: no new token, and nobody is signed out for it.
            assert host.ask("ClearProxyInfo") is True
            fails_with_one_line(place, lambda: token(host, "data:write"),
                                "Cannot get a new token: ", "is behind a proxy")
            assert host.ask("IsLoggedIn") is True
        secrets = between.secrets() + between.secrets("not-the-password")
    seen = "\n".join([*provider.heads, str(provider.seen)])
    assert "Proxy-Auth" not in seen
    for text in (seen, *(file.read_bytes().decode("utf-8", "replace")
                         for file in place.root.rglob("*")
                         if file.is_file() and file.parent.name != "proxy")):
        assert not any(secret in text for secret in secrets)


def AuthorityOfACompany(place, provider):
    """It counts when it is in the system's store, beside the others, and nowhere else."""
    if place.is_windows:
        skip("RegistryOfTheMachine has the root store of Windows")
    place.bundle = place.root / "bundle.pem"
    shutil.copy(authority.SYSTEM_BUNDLE, place.bundle)
    mine = provider.authority.bundle
    # What curl's own program and other programs of OpenSSL heed.
    place.variables = {name: str(mine) for name in (
        "SSL_CERT_FILE", "CURL_CA_BUNDLE", "REQUESTS_CA_BUNDLE", "SSL_CERT_DIR")}
    with User(place), place.start() as host:
        fails_with_one_line(place, lambda: host.ask("UI.Login"), NOT_TRUSTED,
                            "install the authority of its certificate in the system's store")
        assert not provider.seen, provider.seen
        # As update-ca-certificates does it: for a process that runs already, too.
        with place.bundle.open("ab") as bundle:
            bundle.write(mine.read_bytes())
        sign_in(host)


def ProviderOnIpv6Alone(place, _provider):
    with User(place), place.start() as host:
        sign_in(host)
        assert token(host, "data:read").count(".") == 2


def MachineWithIpv6Alone(place, provider):
    """The browser comes back to ::1, for there is nothing else."""
    with of_this_namespace(place), User(place) as user, place.start() as host:
        sign_in(host)
        assert token(host, "data:read").count(".") == 2
        [(_, at, status, page)] = user.visited
        assert at.startswith("http://[::1]:") and status == 200, (at, page)
        [redirect] = [parameters["redirect_uri"] for endpoint, parameters in provider.seen
                      if endpoint == "authorization"]
        assert redirect == at.partition("?")[0]


def BrowserThatComesLate(place, provider):
    """After the limit, and after another sign-in began at the same port."""
    with socket.socket() as trial:
        trial.bind(("127.0.0.1", 0))
        port = trial.getsockname()[1]
    place.configure({"production": {**provider.server_entry(), "redirectPorts": [port]}},
                    timeouts={"login": 2, "network": 5})
    person = browser.Browser(str(provider.authority.bundle))

    def comes_back(address):
        """What the browser shows at the end."""
        try:
            return person.visit(address)[1:]
        except OSError as error:
            return 0, str(error)

    with place.start() as host:
        def addresses():
            return place.addresses.read_text().splitlines() if place.addresses.exists() else []
        fails_with_one_line(place, lambda: host.ask("UI.Login"), orders.NOT_BACK)
        [late] = addresses()
        status, page = comes_back(late)
        assert status == 0 and "refused" in page, page  # the port is closed

        place.configure({"production": {**provider.server_entry(), "redirectPorts": [port]}})
    with place.start() as host:
        host.begin("UI.Login")
        wait_until(lambda: len(addresses()) == 2)
        status, page = comes_back(late)
        assert status == 400 and "does not belong to the sign-in that is waited for" in page, page
        assert host.ask("UI.IsLoginInProgress") is True
        status, page = comes_back(addresses()[1])
        assert status == 200 and "You are back" in page, page
        assert host.ask("await") is True and host.ask("GetUserId") == "alice"
    # The late answers had codes, which nobody asked for tokens with.
    assert provider.requests["authorization"] == 3
    assert provider.requests["token.authorization_code"] == 1


def KeysAndCertificateChange(place, provider):
    """Under a host that goes on."""
    with User(place), place.start() as host:
        sign_in(host)
        asked = provider.requests["keys"]
        before = len(place.log())
        provider.rotate()
        provider.renew_certificate()
        assert token(host, "data:read").count(".") == 2
        assert provider.requests["keys"] == asked + 1
        assert not errors_of(place, before)

        # Once more within a minute: keys are not asked for so often, but nothing is lost.
        provider.rotate()
        fails_with_one_line(place, lambda: token(host, "data:write"),
                            "is signed by a key that the provider does not have")
        assert provider.requests["keys"] == asked + 1 and host.ask("IsLoggedIn") is True
        with place.start() as another:
            assert token(another, "data:write").count(".") == 2

        provider.misbehave("certificate-self-signed")
        fails_with_one_line(place, lambda: token(host, "email"), NOT_TRUSTED)
        assert host.ask("IsLoggedIn") is True
        provider.behave()
        provider.renew_certificate()
        provider.id_token_at_refresh = False
        assert token(host, "profile").count(".") == 2
        assert scopes_seen(provider)[-1] == "profile"
        assert provider.requests["authorization"] == 1


def RegistryOfTheMachine(place, provider):
    """Windows: Location leads to the plugin, and the authority of a company lies in the root
    store."""
    if not (place.is_windows and place.emulator):
        skip("this is not Wine: the registry would be the user's own")

    def has_plugin():
        """By a host whose output may have what the library says of a plugin that it lacks."""
        ended = subprocess.run(place.command(), input="Private.Ping\n", encoding="utf-8",
                               cwd=place.root, env=place.environment(), timeout=PATIENCE,
                               stdout=subprocess.PIPE, check=True)
        answers = [line for line in ended.stdout.splitlines() if line.startswith('{"answer"')]
        return json.loads(answers[-1])["answer"]["result"]
    with wine_prefix.own(place, place.root / "prefix") as (place.variables, registry):
        client_config = place.root / "app/SSOClient.config"
        client_config.write_text("{}")
        assert not has_plugin(), "found without its value"
        registry.set_location(place.root / "server")
        place.bundle = authority.SYSTEM_BUNDLE
        with place.start() as host:
            fails_with_one_line(place, lambda: host.ask("UI.Login"), NOT_TRUSTED)
        registry.trust(provider.authority.bundle)
        with User(place), place.start() as host:
            sign_in(host)
            assert token(host, "data:read").count(".") == 2
        found = [line for line in place.log() if "Getting HxSSO path from registry: " in line]
        assert found and found[0].endswith(place.native(place.root / "server")), found

        client_config.unlink()
        assert not has_plugin(), "the value is asked for without an SSOClient.config"
        client_config.write_text("{}")
        registry.remove_location()
        assert not has_plugin(), "found without its value"


CASES = {each.__name__: each for each in (
    ProxyWithCredentials, AuthorityOfACompany, ProviderOnIpv6Alone, MachineWithIpv6Alone,
    BrowserThatComesLate, KeysAndCertificateChange, RegistryOfTheMachine)}

# Not every machine has both names of itself.
NAMES = """hosts=$(mktemp)
printf '%s localhost\\n' {} >"$hosts"
mount --bind "$hosts" /etc/hosts
rm "$hosts"
"""
WITHOUT_IPV4 = """ip link set lo up
! ip -4 addr show dev lo | grep -q inet || ip addr del 127.0.0.1/8 dev lo
ip addr add fd00::6/128 dev lo nodad
"""


def enter_ipv6(case):
    """The address of the provider."""
    if case == "ProviderOnIpv6Alone":
        if EMULATOR:
            skip("Wine's WinHTTP looks for localhost at 127.0.0.1 alone where there is that, too")
        address, kinds, set_up = "::1", ["-m"], NAMES.format("127.0.0.1 ::1")
    else:
        # libcurl takes localhost for ::1 whatever is written, and the C library ::1 for 127.0.0.1
        # where Wine asks for that first.
        address = "fd00::6" if EMULATOR else "::1"
        kinds, set_up = ["-m", "-n"], NAMES.format(address) + WITHOUT_IPV4
    if reason := namespaces.enter(kinds, set_up):
        skip(reason)
    try:
        socket.create_server((address, 0), family=socket.AF_INET6).close()
    except OSError as error:
        skip(f"this machine has no IPv6: {error}")
    return address


def main(case):
    if reason := why_not():
        skip(reason)
    address = enter_ipv6(case) if "Ipv6" in case else "127.0.0.1"
    with tempfile.TemporaryDirectory() as folder:
        root = pathlib.Path(folder).resolve()
        with hostile.HostileProvider(root / "authority", address=address) as provider:
            place = Machine(root / "place", PROGRAMS, EMULATOR, provider)
            try:
                CASES[case](place, provider)
            except BaseException:
                print(*place.log(), sep="\n")
                raise


if __name__ == "__main__":
    main(sys.argv[1])
