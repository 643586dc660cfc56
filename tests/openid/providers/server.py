"""How the hostile provider's answers travel: HTTPS, with the faults that are in the transport."""

import http.server
import json
import socket
import socketserver
import threading
import urllib.parse

import faults

ENDPOINTS = {
    "/.well-known/openid-configuration": "discovery", "/jwks": "keys",
    "/authorize": "authorization", "/token": "token", "/userinfo": "userinfo",
    "/revoke": "revocation", "/end-session": "end_session", "/device": "device",
    "/verify": "verify", "/elsewhere": "elsewhere",
}


class Refusal(Exception):
    """An OAuth error, and the status it goes out with."""

    def __init__(self, error, status=400):
        super().__init__(error)
        self.error, self.status = error, status


class Handler(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"
    timeout = 30

    def log_message(self, *_):
        pass

    def do_GET(self):
        self._answer("")

    def do_POST(self):
        self._answer(self.rfile.read(int(self.headers.get("Content-Length", 0))).decode())

    def _answer(self, body):
        provider, address = self.server.provider, urllib.parse.urlsplit(self.path)
        endpoint = ENDPOINTS.get(address.path, "unknown")
        parameters = dict(urllib.parse.parse_qsl(address.query) + urllib.parse.parse_qsl(body))
        grant = f"{endpoint}.{parameters.get('grant_type', '')}"
        with provider.lock:
            provider.requests[endpoint] += 1
            if endpoint == "token":
                provider.requests[grant] += 1
            provider.seen.append((endpoint, parameters))
            provider.heads.append(str(self.headers))
        fault = provider.take(faults.ANSWERS, at=grant) or \
            provider.take(faults.ANSWERS, at=endpoint)
        if fault in faults.STATUSES:
            status, kind, text, headers = faults.STATUSES[fault]
            return self._send(status, {"Content-Type": kind, **headers}, text.encode())
        if fault in faults.BODIES:
            return self._send(200, {"Content-Type": "application/json"}, faults.BODIES[fault])
        if fault == "silent":
            return self._pause(provider.slow_seconds)
        bearer = self.headers.get("Authorization", "").partition("Bearer ")[2]
        try:
            answer = getattr(provider, endpoint)(parameters, bearer)
        except Refusal as refusal:
            answer = (refusal.status, {"Content-Type": "application/json"},
                      json.dumps({"error": refusal.error}).encode())
        except AttributeError:
            if endpoint != "unknown":
                raise
            answer = 404, {}, b""
        return self._send(*answer, stream=fault)

    def _send(self, status, headers, body, stream=None):
        body = faults.wrong_types(body) if stream == "wrong-types" else body
        self.send_response(status)
        for name, value in headers.items():
            self.send_header(name, value)
        if stream == "endless":
            self.send_header("Connection", "close")
        else:
            self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        if stream == "endless":
            self._send_endless(body)
        elif stream == "cut":
            self.wfile.write(body[:len(body) // 2])
            self.close_connection = True
        elif stream == "slow":
            for i in range(len(body)):
                self.wfile.write(body[i:i + 1])
                self._pause(self.server.provider.slow_seconds / len(body))
        else:
            self.wfile.write(body)

    def _send_endless(self, body):
        self.close_connection = True
        self.wfile.write(body[:-1] + b',"padding":"')
        while not self.server.stopping.is_set():
            self.server.provider.bytes_of_endless += self.wfile.write(b"x" * 65536)

    def _pause(self, seconds):
        self.close_connection |= self.server.stopping.wait(seconds)


class Server(http.server.ThreadingHTTPServer):
    daemon_threads = True
    block_on_close = False
    request_queue_size = 64

    def __init__(self, provider):
        self.address_family = socket.AF_INET6 if ":" in provider.address else socket.AF_INET
        super().__init__((provider.address, 0), Handler)
        self.provider, self.stopping = provider, threading.Event()
        self.certificate, self.context = "good", provider.authority.server_context()
        self._connections = set()

    def server_bind(self):
        # Without a look for its name, which takes long where no name server answers.
        socketserver.TCPServer.server_bind(self)
        self.server_name, self.server_port = "localhost", self.server_address[1]

    def finish_request(self, request, client_address):
        # In the connection's own thread: a slow handshake holds up nobody else.
        try:
            request.settimeout(30)
            with self.context.wrap_socket(request, server_side=True) as connection:
                self._connections.add(connection)
                try:
                    super().finish_request(connection, client_address)
                finally:
                    self._connections.discard(connection)
        except OSError:
            self.provider.requests["broken connections"] += 1

    def end_connections(self):
        for connection in list(self._connections):
            try:
                connection.shutdown(socket.SHUT_RDWR)
            except OSError:
                pass
