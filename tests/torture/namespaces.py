"""A corner of the machine of one's own: a loopback, and mounts that nobody else sees.

Two launchers that know the same fixed address do not meet there, and the folder
of trusted authorities can be another one, for them alone.
"""

from __future__ import annotations

import fcntl
import os
import socket
import struct
import subprocess
from pathlib import Path

TRUSTED = Path("/etc/ssl/certs")
DISPLAYS = Path("/tmp/.X11-unix")
# ioctl numbers and a flag of the kernel's network devices.
SIOCGIFFLAGS, SIOCSIFFLAGS, IFF_UP = 0x8913, 0x8914, 1


def own_corner() -> list[str]:
    """What to put before a command to run it there; empty where the machine does not permit that."""
    command = ["unshare", "--net", "--mount"]
    if os.geteuid() != 0:
        command.append("--map-root-user")
    try:
        done = subprocess.run([*command, "mount", "--bind", "/tmp", "/tmp"], capture_output=True, check=False)
    except FileNotFoundError:
        return []
    return command if done.returncode == 0 else []


def raise_loopback() -> None:
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as any_socket:
        request = struct.pack("16sH14x", b"lo", 0)
        flags = struct.unpack("16sH14x", fcntl.ioctl(any_socket, SIOCGIFFLAGS, request))[1]
        fcntl.ioctl(any_socket, SIOCSIFFLAGS, struct.pack("16sH14x", b"lo", flags | IFF_UP))


def mount(*arguments: str | Path) -> None:
    subprocess.run(["mount", *arguments], check=True)


def enter() -> None:
    """What a program does first that runs in a corner of its own."""
    raise_loopback()
    # Half of a display's address belongs to the corner and half to the file system. Shared, two
    # displays of two corners would have the same number, and some clients would find the wrong one.
    DISPLAYS.mkdir(mode=0o1777, exist_ok=True)
    mount("-t", "tmpfs", "tmpfs", DISPLAYS)


def trust_only(folder: Path) -> None:
    """The authorities in a folder are from now on the ones that are trusted here."""
    mount("--bind", folder, TRUSTED)
