#!/usr/bin/python3
"""Two encrypted web servers on free ports of the loopback, for one run of one test program.

    https_server.py FOLDER COMMAND...

Makes two test authorities in FOLDER, and a certificate of each for a server of
its own. Both serve /client.zip (48 MiB, every MiB of it one letter: a, b, c
...), and /closing.zip (16 MiB of the same), behind which they close the
connection. /bomb.png is 4 MiB that unpack to 4 GiB of zeros, as their encoding
says they are to be; /chunked.png is the same in one chunk, without a length,
and /packed.zip is a sixteenth of it.
The command finds in its environment

    EMBERWAKE_TEST_HTTPS      the first server's address, ending in a slash
    EMBERWAKE_TEST_AUTHORITY  the certificate of its authority (PEM)
    EMBERWAKE_TEST_STRANGER   the second server's address

Ends with the command's exit code.
"""

from __future__ import annotations

import os
import ssl
import subprocess
import sys
import threading
import zlib
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer
from pathlib import Path

MEGABYTE = 1024 * 1024
MEGABYTES = 48
CLOSING_MEGABYTES = 16


def packed_zeros(size: int) -> bytes:
    """So many bytes that unpack to a thousand times as many zeros."""
    packer = zlib.compressobj(9, zlib.DEFLATED, zlib.MAX_WBITS | 16)
    short = packer.compress(bytes(MEGABYTE)) + packer.flush()
    # In the middle of it a zero byte stands for 1,032 zeros: more of them are more of these.
    middle = short.index(bytes(200)) + 100
    return short[:middle] + bytes(size) + short[middle:]


class Handler(BaseHTTPRequestHandler):
    # Keeps the connection, as web servers do.
    protocol_version = "HTTP/1.1"

    def do_GET(self) -> None:
        if self.path in ("/bomb.png", "/chunked.png", "/packed.zip"):
            size = MEGABYTE // 4 if self.path == "/packed.zip" else 4 * MEGABYTE
            self.send_bomb(packed_zeros(size), chunked=self.path == "/chunked.png")
            return
        megabytes = {"/client.zip": MEGABYTES, "/closing.zip": CLOSING_MEGABYTES}.get(self.path)
        if megabytes is None:
            self.send_error(404)
            return
        if self.path == "/closing.zip":
            # As old servers do.
            self.protocol_version = "HTTP/1.0"
        self.send_response(200)
        self.send_header("Content-Length", str(megabytes * MEGABYTE))
        if self.path == "/closing.zip":
            self.send_header("Connection", "close")  # which also makes this server do so
        self.end_headers()
        try:
            for number in range(megabytes):
                for _ in range(16):
                    self.wfile.write(bytes([ord("a") + number % 26]) * (MEGABYTE // 16))
        except OSError:
            pass  # the test has seen enough

    def send_bomb(self, bomb: bytes, chunked: bool) -> None:
        self.send_response(200)
        self.send_header("Content-Encoding", "gzip")
        if chunked:
            self.send_header("Transfer-Encoding", "chunked")
            bomb = b"%x\r\n%b\r\n0\r\n\r\n" % (len(bomb), bomb)
        else:
            self.send_header("Content-Length", str(len(bomb)))
        self.end_headers()
        try:
            self.wfile.write(bomb)
        except OSError:
            pass  # the test has seen enough

    def log_message(self, format: str, *args: object) -> None:
        pass


class Server(ThreadingHTTPServer):
    def handle_error(self, request: object, client_address: object) -> None:
        """A client that refuses the certificate is not worth a trace."""


def openssl(*arguments: str) -> None:
    subprocess.run(["openssl", *arguments], check=True, stderr=subprocess.DEVNULL)


def make_certificates(folder: Path) -> None:
    """ca.pem is the authority, chain.pem and key.pem are the server's."""
    key, request, extensions = folder / "key.pem", folder / "request.pem", folder / "extensions"
    openssl(
        *["req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "2", "-subj", f"/CN=Emberwake test authority {folder.name}"],
        *["-addext", "basicConstraints=critical,CA:TRUE", "-addext", "keyUsage=critical,keyCertSign,cRLSign"],
        *["-keyout", f"{folder}/ca-key.pem", "-out", f"{folder}/ca.pem"],
    )
    openssl(
        *["req", "-newkey", "rsa:2048", "-nodes", "-subj", "/CN=127.0.0.1", "-keyout", f"{key}", "-out", f"{request}"]
    )
    extensions.write_text("subjectAltName=IP:127.0.0.1\nextendedKeyUsage=serverAuth\n", encoding="ascii")
    openssl(
        *["x509", "-req", "-days", "2", "-in", f"{request}", "-extfile", f"{extensions}", "-set_serial", "2"],
        *["-CA", f"{folder}/ca.pem", "-CAkey", f"{folder}/ca-key.pem", "-out", f"{folder}/chain.pem"],
    )


def serve(folder: Path) -> str:
    """Starts a server with an authority of its own; returns its address."""
    folder.mkdir()
    make_certificates(folder)
    context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
    context.load_cert_chain(folder / "chain.pem", folder / "key.pem")
    server = Server(("127.0.0.1", 0), Handler)
    # The handshake in the thread of its connection: a client that never finishes it holds up none.
    server.socket = context.wrap_socket(server.socket, server_side=True, do_handshake_on_connect=False)
    threading.Thread(target=server.serve_forever, daemon=True).start()
    return f"https://127.0.0.1:{server.server_address[1]}/"


def main() -> int:
    folder = Path(sys.argv[1])
    environment = dict(os.environ)
    environment["EMBERWAKE_TEST_HTTPS"] = serve(folder / "own")
    environment["EMBERWAKE_TEST_AUTHORITY"] = (folder / "own" / "ca.pem").read_text(encoding="ascii")
    environment["EMBERWAKE_TEST_STRANGER"] = serve(folder / "stranger")
    return subprocess.run(sys.argv[2:], env=environment, check=False).returncode


if __name__ == "__main__":
    sys.exit(main())
