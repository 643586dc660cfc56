#!/usr/bin/python3
"""A browser that speaks plain HTTP, for HXSSO_OPENID_BROWSER.

browser.py ADDRESS: follows redirects, fills in the forms of sign-in and consent that it meets,
and ends where nothing is to be filled in any more; with status 0 if that page was a good one. It
prints nothing: under Wine its output would be that of the host that started it.

Its environment: HXSSO_TEST_AUTHORITY, the file of the authority that it trusts;
HXSSO_TEST_USER and HXSSO_TEST_PASSWORD, what it fills in; HXSSO_TEST_COOKIES, a file that keeps
its cookies, so that the next one is signed in at the provider already; HXSSO_TEST_TRACE, a file
that gets each address that it asked for and came to, without the query, and the last page's text.
"""

import html.parser
import http.cookiejar
import json
import os
import re
import ssl
import sys
import urllib.error
import urllib.parse
import urllib.request

PAGES = 20
FORM = "application/x-www-form-urlencoded"


class Page(html.parser.HTMLParser):
    """The first form of a page, and the page's text."""

    def __init__(self, text):
        super().__init__()
        self.action, self.method, self.fields, self.words = None, "get", {}, []
        self.buttons = {}  # all that have a name, also those that stand outside
        self._inside, self._hidden, self._submitted = False, 0, False
        self.feed(text)

    def handle_starttag(self, tag, attributes):
        attributes = dict(attributes)
        if tag == "button" and attributes.get("name"):
            self.buttons[attributes["name"]] = attributes.get("value", "")
        if tag == "form" and self.action is None:
            self._inside, self.action = True, attributes.get("action", "")
            self.method = attributes.get("method", "get").lower()
        elif self._inside and tag in ("input", "button") and attributes.get("name"):
            kind = attributes.get("type", "submit" if tag == "button" else "text")
            # A browser sends the button that was pressed: here the first.
            if kind == "submit" and self._submitted:
                return
            self._submitted |= kind == "submit"
            self.fields[attributes["name"]] = attributes.get("value", "")
        self._hidden += tag in ("script", "style")

    def handle_endtag(self, tag):
        if tag == "form":
            self._inside = False
        self._hidden -= tag in ("script", "style")

    def handle_data(self, data):
        if not self._hidden:
            self.words += data.split()


class Browser:
    def __init__(self, authority=None, user="alice", password="wonderland", cookies=None,
                 trace=None):
        self.user, self.password, self.trace = user, password, trace
        self.presses = None  # a button that is pressed where there is one of this name
        self.cookies = http.cookiejar.LWPCookieJar(cookies)
        if cookies and os.path.exists(cookies):
            self.cookies.load(ignore_discard=True)
        self._opener = urllib.request.build_opener(
            urllib.request.ProxyHandler({}),
            urllib.request.HTTPSHandler(context=ssl.create_default_context(cafile=authority)),
            urllib.request.HTTPCookieProcessor(self.cookies))

    def ask(self, address, body=None, kind=FORM, method=None):
        """(address after redirects, status, content type, text)"""
        request = urllib.request.Request(
            address, body, {"Content-Type": kind} if body is not None else {}, method=method)
        self._trace(request.get_method(), address)
        try:
            answer = self._opener.open(request, timeout=20)
        except urllib.error.HTTPError as error:
            answer = error
        with answer:
            self._trace("came to", answer.geturl())
            return (answer.geturl(), answer.status, answer.headers.get_content_type(),
                    answer.read(1 << 20).decode("utf-8", "replace"))

    def trace_line(self, line):
        if self.trace:
            with open(self.trace, "a", encoding="utf-8") as file:
                file.write(line + "\n")

    def _trace(self, what, address):
        self.trace_line(f"{what} {address.partition('?')[0]}")

    def visit(self, address):
        """(address, status, text of the page) of where it ends."""
        at, status, kind, text = self.ask(address)
        for _ in range(PAGES):
            if status >= 400 or kind != "text/html":
                return at, status, text
            glewlwyd = self._pass_glewlwyd(at)
            page = Page(text)
            if glewlwyd:
                at, status, kind, text = self.ask(glewlwyd)
            elif page.action is None:
                return at, status, " ".join(page.words)
            else:
                at, status, kind, text = self._submit(at, page)
                if self.presses in page.buttons:
                    return at, status, text
        raise RuntimeError(f"more than {PAGES} pages, the last one {at.partition('?')[0]}")

    def _submit(self, at, page):
        fields = dict(page.fields)
        for name in fields:
            if name in ("login", "username", "user"):
                fields[name] = self.user
            elif name == "password":
                fields[name] = self.password
        if self.presses in page.buttons:
            fields[self.presses] = page.buttons[self.presses]
        target = urllib.parse.urljoin(at, page.action or at)
        query = urllib.parse.urlencode(fields)
        if page.method == "post":
            return self.ask(target, query.encode())
        return self.ask(f"{target.partition('?')[0]}?{query}")

    def _pass_glewlwyd(self, at):
        """Its page is a program in JavaScript; what that asks of the server, asked here. The
        address to go on with, or None if this is another page or its last one."""
        address = urllib.parse.urlsplit(at)
        query = dict(urllib.parse.parse_qsl(address.query))
        if not re.search(r"/login\.html$", address.path) or \
                not {"client_id", "scope", "callback_url"} <= set(query):
            return None
        api = f"{address.scheme}://{address.netloc}/api"
        def put(path, content, method):
            _, status, _, text = self.ask(
                api + path, json.dumps(content).encode(), "application/json", method)
            if status >= 400:
                raise RuntimeError(f"{method} {path} gave {status}: {text}")
        put("/auth/", {"username": self.user, "password": self.password}, "POST")
        put(f"/auth/grant/{query['client_id']}", {"scope": query["scope"]}, "PUT")
        back = query["callback_url"]
        return back + ("&" if "?" in back else "?") + "g_continue"

    def keep_cookies(self):
        if self.cookies.filename:
            self.cookies.save(ignore_discard=True)


def main(address):
    told = os.environ.get
    browser = Browser(told("HXSSO_TEST_AUTHORITY"), told("HXSSO_TEST_USER", "alice"),
                      told("HXSSO_TEST_PASSWORD", "wonderland"), told("HXSSO_TEST_COOKIES"),
                      told("HXSSO_TEST_TRACE"))
    at, status, text = browser.visit(address)
    browser.keep_cookies()
    browser.trace_line(f"ended at {at.partition('?')[0]}: {status} {text}")
    return 0 if status < 400 else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
