#!/usr/bin/python3
"""Prints a port of the loopback that a server can have: the one asked for, or another when it is taken."""

from __future__ import annotations

import socket
import sys


def main() -> int:
    if len(sys.argv) != 2 or not sys.argv[1].isdigit():
        print("usage: free_port.py PREFERRED", file=sys.stderr)
        return 64
    for port in (int(sys.argv[1]), 0):
        with socket.socket() as server:
            # As the server itself does: a port whose last connections are only
            # waiting to be forgotten is free.
            server.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
            try:
                server.bind(("127.0.0.1", port))
            except OSError:
                continue
            print(server.getsockname()[1])
            return 0
    return 1


if __name__ == "__main__":
    sys.exit(main())
