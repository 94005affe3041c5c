#!/usr/bin/python3
"""Serves the demo world on the loopback with Python's own web server.

Prints one line, `READY http://127.0.0.1:PORT/`, once connections are accepted,
and serves until its standard input ends or it is told to terminate. Ending with
the standard input means that no server stays behind when the program that
started it dies without a word.
"""

from __future__ import annotations

import argparse
import os
import signal
import sys
import threading
import time
from functools import partial
from http.server import SimpleHTTPRequestHandler, ThreadingHTTPServer
from pathlib import Path

PIECE = 16 * 1024


class WorldHandler(SimpleHTTPRequestHandler):
    """Plain files, one log line per answer, and a brake on archives."""

    def __init__(self, *args, bytes_per_second: int, log, **kwargs):
        # Set first: the base class answers the request inside its constructor.
        self.bytes_per_second = bytes_per_second
        self.log = log
        super().__init__(*args, **kwargs)

    def copyfile(self, source, outputfile):
        try:
            if self.bytes_per_second > 0 and self.path.partition("?")[0].endswith(".zip"):
                self.copy_slowly(source, outputfile)
            else:
                super().copyfile(source, outputfile)
        except (BrokenPipeError, ConnectionResetError):
            # A launcher that was closed during a download is no error here.
            self.log_message('"%s" broken off by the client', self.requestline)

    def copy_slowly(self, source, outputfile):
        """Keeps to the rate as a whole, so that a late piece is made up for."""
        started = time.monotonic()
        sent = 0
        while piece := source.read(PIECE):
            outputfile.write(piece)
            sent += len(piece)
            ahead = sent / self.bytes_per_second - (time.monotonic() - started)
            if ahead > 0:
                time.sleep(ahead)

    def end_headers(self):
        # launcher.xml changes while a browser looks at the pages.
        self.send_header("Cache-Control", "no-store")
        super().end_headers()

    def log_message(self, format, *args):
        self.log.write(f"{self.log_date_time_string()} {format % args}\n")


def main() -> int:
    parser = argparse.ArgumentParser(description="Serve the Emberwake demo world on the loopback.")
    parser.add_argument("folder", type=Path, help="the world's folder")
    parser.add_argument("--port", type=int, default=0, help="0 (default) takes a free one")
    parser.add_argument("--log", type=Path, help="access log (default: standard error)")
    parser.add_argument("--throttle", type=int, default=0, metavar="BYTES", help="bytes per second for .zip files")
    given = parser.parse_args()

    if not given.folder.is_dir():
        print(f"serve.py: no such folder: {given.folder}", file=sys.stderr)
        return 1
    # Line by line, so that whoever waits for a request finds it at once.
    log = given.log.open("a", buffering=1, encoding="utf-8") if given.log else sys.stderr

    handler = partial(WorldHandler, directory=os.fspath(given.folder), bytes_per_second=given.throttle, log=log)
    try:
        server = ThreadingHTTPServer(("127.0.0.1", given.port), handler)
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

    print(f"READY http://127.0.0.1:{server.server_address[1]}/", flush=True)
    try:
        server.serve_forever(poll_interval=0.1)
    except KeyboardInterrupt:
        pass
    server.server_close()
    return 0


if __name__ == "__main__":
    sys.exit(main())
