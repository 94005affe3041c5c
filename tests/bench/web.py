"""A web server of our own on the loopback: one nginx that keeps everything in a scratch folder."""

from __future__ import annotations

import os
import pwd
import socket
import subprocess
import sys
from pathlib import Path

from bench_tools import wait_until

CONFIGURATION = """
{user}
worker_processes 1;
daemon off;
pid "{folder}/nginx.pid";
error_log "{folder}/error.log";
events {{ worker_connections 256; }}
http {{
  access_log off;
  sendfile on;
  keepalive_timeout 300s;
  types {{ }}
  default_type application/octet-stream;
  client_body_temp_path "{folder}/body";
  proxy_temp_path "{folder}/proxy";
  fastcgi_temp_path "{folder}/fastcgi";
  uwsgi_temp_path "{folder}/uwsgi";
  scgi_temp_path "{folder}/scgi";
  server {{
    listen 127.0.0.1:{port};
    root "{root}";
    # Pictures that are on their way for longer than anything takes.
    location /slow/ {{ alias "{root}/"; limit_rate 1k; }}
    location ~ ^/slowlogos/(?<picture>[^/]+\\.png)$ {{ alias "{root}/$picture"; limit_rate 1k; }}
    # Comes when the window has been painted.
    location = /late/launcher.xml {{ limit_rate 2k; }}
    location /slowlogos/ {{ alias "{root}/slowlogos/"; }}
  }}
}}
"""


def free_port() -> int:
    with socket.socket() as listener:
        listener.bind(("127.0.0.1", 0))
        return int(listener.getsockname()[1])


def answers(port: int) -> bool:
    with socket.socket() as client:
        return client.connect_ex(("127.0.0.1", port)) == 0


class Web:
    """Serves a folder while the block runs."""

    def __init__(self, root: Path, folder: Path):
        self.root = root
        self.folder = folder
        self.port = free_port()
        self.process: subprocess.Popen[bytes] | None = None

    @property
    def url(self) -> str:
        return f"http://127.0.0.1:{self.port}/"

    def __enter__(self) -> Web:
        # Started by root, its worker would be somebody who cannot look into our folders.
        user = f"user {pwd.getpwuid(0).pw_name};" if os.geteuid() == 0 else ""
        configuration = self.folder / "nginx.conf"
        configuration.write_text(
            CONFIGURATION.format(user=user, folder=self.folder, root=self.root, port=self.port), encoding="utf-8")
        error_log = os.fspath(self.folder / "error.log")
        self.process = subprocess.Popen(
            ["nginx", "-p", os.fspath(self.folder), "-e", error_log, "-c", os.fspath(configuration)],
            env={**os.environ, "PATH": f"{os.environ['PATH']}:/usr/sbin"}, stdin=subprocess.DEVNULL)
        process = self.process

        def is_up() -> bool:
            if process.poll() is not None:
                sys.exit(f"nginx ended with {process.returncode}; see {error_log}")
            return answers(self.port)

        wait_until(is_up, "nginx answers")
        return self

    def __exit__(self, *_: object) -> None:
        if self.process is not None:
            self.process.terminate()
            self.process.wait(timeout=30)
