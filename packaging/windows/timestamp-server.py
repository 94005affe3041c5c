#!/usr/bin/python3
"""For the tests: a server of time stamps (RFC 3161) on the loopback, by openssl.

    packaging/windows/timestamp-server.py CERTIFICATE KEY FOLDER

Prints its address, then answers until its standard input ends. FOLDER is for its serial number.
"""

from __future__ import annotations

import http.server
import os
import pathlib
import subprocess
import sys
import threading

CONFIGURATION = """
[tsa]
serial = {folder}/tsa-serial
signer_digest = sha256
default_policy = 1.2.3.4
digests = sha256, sha384, sha512
ess_cert_id_alg = sha256
"""


def main(certificate: str, key: str, folder: pathlib.Path) -> None:
    configuration = folder / "tsa.cnf"
    configuration.write_text(CONFIGURATION.format(folder=folder))
    query = folder / "query.tsq"

    class Handler(http.server.BaseHTTPRequestHandler):
        def do_POST(self) -> None:
            query.write_bytes(self.rfile.read(int(self.headers["Content-Length"])))
            answer = subprocess.run(
                ["openssl", "ts", "-reply", "-config", configuration, "-section", "tsa", "-queryfile", query,
                 "-signer", certificate, "-inkey", key], capture_output=True, check=True).stdout
            self.send_response(200)
            self.send_header("Content-Type", "application/timestamp-reply")
            self.send_header("Content-Length", str(len(answer)))
            self.end_headers()
            self.wfile.write(answer)

        def log_message(self, format: str, *args: object) -> None:
            pass

    server = http.server.HTTPServer(("127.0.0.1", 0), Handler)
    threading.Thread(target=server.serve_forever, daemon=True).start()
    print(f"http://127.0.0.1:{server.server_port}/", flush=True)
    sys.stdin.read()
    os._exit(0)


if __name__ == "__main__":
    main(sys.argv[1], sys.argv[2], pathlib.Path(sys.argv[3]))
