#!/usr/bin/python3
"""Serves the demo world on the loopback with Python's own web server.

Prints one line, `READY http://127.0.0.1:PORT/` (https with --certificate and
--key), once connections are accepted, and serves until its standard input ends or it is told to terminate. Ending with
the standard input means that no server stays behind when the program that
started it dies without a word.
"""

from __future__ import annotations

import argparse
import os
import signal
import ssl
import sys
import threading
import time
from functools import partial
from http.server import SimpleHTTPRequestHandler, ThreadingHTTPServer
from pathlib import Path
from socket import socket
from socketserver import BaseServer
from typing import TYPE_CHECKING, AnyStr, TextIO

if TYPE_CHECKING:
    from collections.abc import Callable

    from _typeshed import SupportsRead, SupportsWrite

    # What the library's servers hand to their handlers; only datagrams come as a pair.
    Request = socket | tuple[bytes, socket]

PIECE = 16 * 1024


class WorldHandler(SimpleHTTPRequestHandler):
    """Plain files, one log line per answer, and a brake on archives."""

    def __init__(
        self,
        request: Request,
        client_address: object,
        server: BaseServer,
        *,
        directory: str,
        bytes_per_second: int,
        log: TextIO,
    ) -> None:
        # Set first: the base class answers the request inside its constructor.
        self.bytes_per_second = bytes_per_second
        self.log = log
        super().__init__(request, client_address, server, directory=directory)

    def copyfile(self, source: SupportsRead[AnyStr], outputfile: SupportsWrite[AnyStr]) -> None:
        try:
            if self.bytes_per_second > 0 and self.path.partition("?")[0].endswith(".zip"):
                self.copy_slowly(source, outputfile)
            else:
                super().copyfile(source, outputfile)
        except (BrokenPipeError, ConnectionResetError):
            # A launcher that was closed during a download is no error here.
            self.log_message('"%s" broken off by the client', self.requestline)

    def copy_slowly(self, source: SupportsRead[AnyStr], outputfile: SupportsWrite[AnyStr]) -> None:
        """Keeps to the rate as a whole, so that a late piece is made up for."""
        started = time.monotonic()
        sent = 0
        while piece := source.read(PIECE):
            outputfile.write(piece)
            sent += len(piece)
            ahead = sent / self.bytes_per_second - (time.monotonic() - started)
            if ahead > 0:
                time.sleep(ahead)

    def end_headers(self) -> None:
        # launcher.xml changes while a browser looks at the pages.
        self.send_header("Cache-Control", "no-store")
        super().end_headers()

    def log_message(self, format: str, *args: object) -> None:
        self.log.write(f"{self.log_date_time_string()} {format % args}\n")


class LastingWorldHandler(WorldHandler):
    """The same, keeping the connection for the next request, as web servers do.

    Of an answer at whose end the connection ends, the Windows launcher may lose
    the last part: the toolkit's TLS there drops what it has not decrypted yet.
    """

    protocol_version = "HTTP/1.1"


class SecureServer(ThreadingHTTPServer):
    """The same over TLS. Every handshake leaves a log line, whatever comes of it."""

    def __init__(
        self,
        address: tuple[str, int],
        handler: Callable[..., WorldHandler],
        context: ssl.SSLContext,
        log: TextIO,
    ) -> None:
        self.context = context
        self.log = log
        super().__init__(address, handler)

    def finish_request(self, request: Request, client_address: object) -> None:
        assert isinstance(request, socket)
        # Here, in the connection's own thread: a client that never says a word
        # must not keep the others from connecting.
        request.settimeout(60)
        try:
            secured = self.context.wrap_socket(request, server_side=True)
        except (ssl.SSLError, OSError) as error:
            self.log.write(f"TLS handshake failed: {error}\n")
            return
        # A client may judge the certificate only now, and leave without a word.
        self.log.write(f"TLS handshake: {secured.version()}\n")
        with secured:
            try:
                super().finish_request(secured, client_address)
                # Says that the answer is whole, without waiting for the same word back.
                secured.settimeout(0)
                secured.unwrap()
            except ssl.SSLWantReadError:
                pass
            except (ssl.SSLError, OSError) as error:
                self.log.write(f"TLS broken off: {error}\n")


def main() -> int:
    parser = argparse.ArgumentParser(description="Serve the Emberwake demo world on the loopback.")
    parser.add_argument("folder", type=Path, help="the world's folder")
    parser.add_argument("--port", type=int, default=0, help="0 (default) takes a free one")
    parser.add_argument("--log", type=Path, help="access log (default: standard error)")
    parser.add_argument("--certificate", type=Path, metavar="PEM", help="serve over TLS with this certificate")
    parser.add_argument("--key", type=Path, metavar="PEM", help="the certificate's key")
    parser.add_argument("--throttle", type=int, default=0, metavar="BYTES", help="bytes per second for .zip files")
    given = parser.parse_args()

    if not given.folder.is_dir():
        print(f"serve.py: no such folder: {given.folder}", file=sys.stderr)
        return 1
    if (given.certificate is None) != (given.key is None):
        print("serve.py: --certificate and --key go together", file=sys.stderr)
        return 1
    # Line by line, so that whoever waits for a request finds it at once.
    log = given.log.open("a", buffering=1, encoding="utf-8") if given.log else sys.stderr

    kind = WorldHandler if given.certificate is None else LastingWorldHandler
    handler = partial(kind, directory=os.fspath(given.folder), bytes_per_second=given.throttle, log=log)
    address = ("127.0.0.1", given.port)
    try:
        if given.certificate is not None:
            context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
            context.load_cert_chain(given.certificate, given.key)
            server: ThreadingHTTPServer = SecureServer(address, handler, context, log)
        else:
            server = ThreadingHTTPServer(address, handler)
    except ssl.SSLError as error:
        print(f"serve.py: {given.certificate}, {given.key}: {error}", file=sys.stderr)
        return 1
    except OSError as error:
        print(f"serve.py: port {given.port}: {error.strerror}", file=sys.stderr)
        return 1

    def end_with_input() -> None:
        while os.read(0, 1024):
            pass
        server.shutdown()

    # shutdown() waits for the serving loop, which this signal interrupts: it
    # has to be called from another thread.
    signal.signal(signal.SIGTERM, lambda *_: threading.Thread(target=server.shutdown).start())
    threading.Thread(target=end_with_input, daemon=True).start()

    scheme = "http" if given.certificate is None else "https"
    print(f"READY {scheme}://127.0.0.1:{server.server_address[1]}/", flush=True)
    try:
        server.serve_forever(poll_interval=0.1)
    except KeyboardInterrupt:
        pass
    server.server_close()
    return 0


if __name__ == "__main__":
    sys.exit(main())
