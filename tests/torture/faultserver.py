"""A web server that does wrong what a web server can do wrong, one address at a time.

Each launch tells it what lies where and which path has which fault. It answers
from a thread per connection, closes every connection after one answer, and
remembers what was asked of it.
"""

from __future__ import annotations

import socket
import ssl
import struct
import threading
import time
from contextlib import suppress
from dataclasses import dataclass, field

from certificates import GOOD, REFUSED_CERTIFICATES, Certificates

RESET = "reset"
STALL = "stall"
DRIP = "drip"
NO_LENGTH = "no length"
LENGTH_TOO_GREAT = "length too great"
LENGTH_TOO_SMALL = "length too small"
REDIRECT = "redirect"
NOT_FOUND = "404"
SERVER_ERROR = "500"
REFUSED = "refused"

# What happens to an answer, and what happens before anything is asked.
ANSWER_FAULTS = (RESET, STALL, DRIP, NO_LENGTH, LENGTH_TOO_GREAT, LENGTH_TOO_SMALL, REDIRECT, NOT_FOUND, SERVER_ERROR)
CONNECTION_FAULTS = (REFUSED, *REFUSED_CERTIFICATES)
FAULTS = ANSWER_FAULTS + CONNECTION_FAULTS

# All of it arrives; never ends.
WHOLE = ("", GOOD, NO_LENGTH, LENGTH_TOO_GREAT)
ENDLESS = (STALL, DRIP)

PAGE = b"<html><head/><body><p>This is not what you asked for.</p></body></html>\n"
ELSEWHERE = "/elsewhere"


def cut_length(body: bytes) -> int:
    """The length that is told in place of a greater one."""
    return len(body) // 2


@dataclass
class Told:
    """What one launch is to meet, and what it did."""

    contents: dict[str, bytes] = field(default_factory=dict)
    faults: dict[str, str] = field(default_factory=dict)
    cuts: dict[str, int] = field(default_factory=dict)
    # Path of a request behind which the base address refuses every connection.
    refuse_after: str = ""
    # The certificate of each connection to the base address; the last one stays.
    base_certificates: list[str] = field(default_factory=list)
    # Bytes per second of an answer without a fault; 0: as fast as can be.
    speeds: dict[str, int] = field(default_factory=dict)

    requests: list[str] = field(default_factory=list)
    handshakes: list[str] = field(default_factory=list)
    sent: dict[str, float] = field(default_factory=dict)
    dripped: int = 0
    # Paths whose answer the launcher did not take to the end.
    broken: list[str] = field(default_factory=list)
    over: threading.Event = field(default_factory=threading.Event)


class FaultServer:
    def __init__(self, certificates: Certificates | None, base_port: int):
        self.certificates = certificates
        self.base_port = base_port
        self.told = Told()
        self.base: socket.socket | None = None
        self.base_lock = threading.Lock()
        # Bound and not listening: nobody else gets the port, and it refuses.
        self.refusing = socket.socket()
        self.refusing.bind(("127.0.0.1", 0))
        self.plain = self.listen(0, "")
        self.secure = {}
        if certificates is not None:
            self.secure = {kind: self.listen(0, kind) for kind in certificates.contexts}

    # One launch

    def begin(self, told: Told) -> None:
        self.told = told
        self.base = self.listen(self.base_port, None)

    def end(self) -> None:
        self.told.over.set()
        self.refuse_base()

    def refuse_base(self) -> None:
        with self.base_lock:
            if self.base is not None:
                # A thread that waits in accept() keeps a closed socket listening.
                self.base.shutdown(socket.SHUT_RDWR)
                self.base.close()
                self.base = None

    def close(self) -> None:
        self.end()
        for listener in (self.refusing, self.plain, *self.secure.values()):
            listener.close()

    def address(self, path: str, fault: str = "") -> str:
        """Where the launcher is sent for a path, so that it meets the fault there."""
        if fault == REFUSED:
            return f"http://127.0.0.1:{self.refusing.getsockname()[1]}{path}"
        if fault in (GOOD, *REFUSED_CERTIFICATES):
            return f"https://127.0.0.1:{self.secure[fault].getsockname()[1]}{path}"
        return f"http://127.0.0.1:{self.plain.getsockname()[1]}{path}"

    # Connections

    def listen(self, port: int, certificate: str | None) -> socket.socket:
        """Accepts at a port from now on; certificate: none for plain http, None as the launch says."""
        listener = socket.socket()
        listener.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
        listener.bind(("127.0.0.1", port))
        listener.listen(32)
        threading.Thread(target=self.accept, args=(listener, certificate), daemon=True).start()
        return listener

    def accept(self, listener: socket.socket, certificate: str | None) -> None:
        number = 0
        while True:
            try:
                connection, _ = listener.accept()
            except OSError:
                return
            told, kind = self.told, certificate
            if kind is None:
                kinds = told.base_certificates
                kind = kinds[min(number, len(kinds) - 1)] if kinds else ""
            number += 1
            threading.Thread(target=self.serve, args=(connection, kind, told), daemon=True).start()

    def serve(self, connection: socket.socket, certificate: str, told: Told) -> None:
        with suppress(OSError), connection:
            connection.settimeout(60)
            if not certificate:
                self.answer(connection, told)
                return
            told.handshakes.append(certificate)
            assert self.certificates is not None
            with self.certificates.contexts[certificate].wrap_socket(connection, server_side=True) as secured:
                self.answer(secured, told)
                # Says that the answer is whole, without waiting for the same word back.
                secured.settimeout(0)
                with suppress(ssl.SSLWantReadError):
                    secured.unwrap()

    def answer(self, connection: socket.socket, told: Told) -> None:
        head = b""
        while b"\r\n\r\n" not in head:
            piece = connection.recv(4096)
            if not piece:
                return
            head += piece
        path = head.split()[1].decode("ascii")
        told.requests.append(path)
        if path == told.refuse_after:
            self.refuse_base()
        fault = told.faults.get(path, "")
        if path not in told.contents:
            fault = NOT_FOUND
        body = told.contents.get(path, b"")
        if fault == RESET:
            # With nothing to linger for, closing is a reset.
            connection.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
            return
        length = len(body)
        if fault == LENGTH_TOO_GREAT:
            length += 1000
        elif fault == LENGTH_TOO_SMALL:
            length = told.cuts.get(path, cut_length(body))
        if fault == REDIRECT:
            self.send(connection, f"302 Found\r\nLocation: {ELSEWHERE}{path}", PAGE, len(PAGE))
        elif fault == NOT_FOUND:
            self.send(connection, "404 Not Found", PAGE, len(PAGE))
        elif fault == SERVER_ERROR:
            self.send(connection, "500 Internal Server Error", b"", 0)
        elif fault == NO_LENGTH:
            self.send(connection, "200 OK", body, None, told.speeds.get(path, 0))
        elif fault == STALL:
            self.send(connection, "200 OK", body[: len(body) // 2], length, told.speeds.get(path, 0))
            told.over.wait()
        elif fault == DRIP:
            self.send(connection, "200 OK", b"", length)
            for index in range(length):
                connection.sendall(body[index : index + 1])
                told.dripped += 1
                if told.over.wait(1):
                    break
        else:
            try:
                self.send(connection, "200 OK", body, length, told.speeds.get(path, 0))
            except OSError:
                told.broken.append(path)
                raise
        told.sent[path] = time.monotonic()

    @staticmethod
    def send(connection: socket.socket, status: str, body: bytes, length: int | None, speed: int = 0) -> None:
        told = f"HTTP/1.1 {status}\r\nConnection: close\r\n"
        if length is not None:
            told += f"Content-Length: {length}\r\n"
        connection.sendall(f"{told}\r\n".encode("ascii"))
        if not speed:
            connection.sendall(body)
            return
        piece = max(1, speed // 20)
        started = time.monotonic()
        for begin in range(0, len(body), piece):
            connection.sendall(body[begin : begin + piece])
            ahead = (begin + piece) / speed - (time.monotonic() - started)
            if ahead > 0:
                time.sleep(ahead)
