"""The sample document behind the sample configurations: check_web_servers.py PROGRAM

docs/sample/launcher.xml is published by the distribution's nginx and Apache, each with the file of
docs/sample in which only paths, port and name are exchanged, over https on the loopback. The checker
finds nothing, not even a note, with a tester's code and without; headers are those of the guide; and
the job of docs/ci.md does what it says.
"""

from __future__ import annotations

import hashlib
import http.client
import os
import pwd
import re
import socket
import ssl
import subprocess
import sys
import tempfile
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
sys.path[:0] = [os.fspath(ROOT / folder) for folder in ("demo", "tests/e2e")]

from PIL import Image

from authority import Authority

SAMPLE = ROOT / "docs" / "sample"
CODE = "our-code"
CLEAN = "0 errors, 0 warnings\n"
SIZES = {**dict.fromkeys(("hill", "lanterns", "saltreach"), (650, 650)), "patch": (1118, 638),
         **dict.fromkeys(("smith", "cafe"), (552, 314)), **dict.fromkeys(("maps", "guilds", "help"), (276, 150))}


def publish(folder: Path, base: str) -> None:
    """Everything that the sample document names, in the folder."""
    document = (SAMPLE / "launcher.xml").read_text(encoding="utf-8")
    if hashlib.sha1(CODE.encode()).hexdigest() not in document:
        sys.exit("the sample's auth is not the sum of its code")
    document = document.replace("https://files.emberwake.example/", base)
    (folder / "launcher.xml").write_text(document, encoding="utf-8")
    servers = sorted(set(re.findall(r'server="(.*?)"', document)))
    # No two are alike, as no two of an operator's are.
    for number, server in enumerate(servers):
        Image.new("RGB", (640, 300), (number, 0, 0)).save(folder / f"{server}.png")
    (folder / "news").mkdir()
    for number, name in enumerate(re.findall(r"/news/(\w+)\.png", document)):
        Image.new("RGB", SIZES[name], (0, number, 0)).save(folder / "news" / f"{name}.png")
    (folder / "clients").mkdir()
    for element in re.findall(r"<client .*?/>", document, re.S):
        game = folder.parent / "game"
        game.mkdir(exist_ok=True)
        programs = ["game_dx.exe", "game_gl.exe"] if 'name="Beta"' in element else ["game.exe"]
        for program in programs:
            (game / program).write_bytes(b"#!/bin/sh\n" + b"#" * 490)
        found = re.search(r"/clients/([\w.-]+)", element)
        assert found is not None
        lock = ["-P", CODE] if "auth=" in element else []
        subprocess.run(["zip", "-q", *lock, folder / "clients" / found[1], *programs], cwd=game, check=True)


def configured(name: str, scratch: Path, port: str, authority: Authority) -> Path:
    """The sample configuration for this place."""
    user = pwd.getpwuid(os.geteuid()).pw_name
    text = (SAMPLE / name).read_text(encoding="utf-8")
    exchanged = {
        "/etc/ssl/certs/launcher.pem": os.fspath(authority.certificate),
        "/etc/ssl/private/launcher.key": os.fspath(authority.key),
        "/srv/launcher": os.fspath(scratch / "web"),
        "/run/nginx.pid": os.fspath(scratch / "nginx.pid"),
        "/run/apache2/apache2.pid": os.fspath(scratch / "apache.pid"),
        "/var/log/nginx/": f"{scratch}/",
        "/var/log/apache2/": f"{scratch}/",
        "ServerRoot /etc/apache2": f"ServerRoot {scratch}",
        "listen 443": f"listen 127.0.0.1:{port}",
        "Listen 443": f"Listen 127.0.0.1:{port}",
        "user www-data": f"user {user}" if os.geteuid() == 0 else "# user www-data",
        # Apache's workers are never root; started by somebody else they are that.
        "User www-data": f"User {user}" if os.geteuid() != 0 else "User www-data",
    }
    for old, new in exchanged.items():
        text = text.replace(old, new)
    file = scratch / name
    file.write_text(text, encoding="utf-8")
    return file


def wait_until_open(process: subprocess.Popen[bytes], port: str) -> None:
    deadline = time.monotonic() + 30
    while time.monotonic() < deadline:
        if process.poll() is not None:
            sys.exit(f"the server ended with {process.returncode}")
        with socket.socket() as client:
            if client.connect_ex(("127.0.0.1", int(port))) == 0:
                return
        time.sleep(0.05)
    sys.exit("the server does not listen")


def check_headers(port: str, authority: Authority) -> None:
    context = ssl.create_default_context(cafile=os.fspath(authority.root))
    expected = {
        "/launcher.xml": "no-cache",
        "/Ashenmoor.png": "max-age=3600",
        "/news/hill.png": "max-age=31536000, immutable",
        "/clients/ashenmoor-official-1.4.2.zip": "max-age=31536000, immutable",
    }
    for path, caching in expected.items():
        connection = http.client.HTTPSConnection("127.0.0.1", int(port), context=context)
        connection.request("GET", path, headers={"Accept-Encoding": "gzip, deflate"})
        answer = connection.getresponse()
        body = answer.read()
        headers = {name.lower(): value for name, value in answer.getheaders()}
        if (answer.status, headers.get("cache-control")) != (200, caching):
            sys.exit(f"{path}: {answer.status} {headers}")
        if headers.get("content-length") != str(len(body)) or "content-encoding" in headers:
            sys.exit(f"{path}: {headers}")
        connection.close()


def check(program: str, *arguments: str) -> None:
    done = subprocess.run([program, "--deep", *arguments], capture_output=True, text=True, check=False)
    if done.returncode != 0 or not done.stdout.endswith(CLEAN):
        sys.exit(f"{arguments} ended with {done.returncode}:\n{done.stdout}{done.stderr}")


def check_job(program: str, scratch: Path, base: str, authority: Authority) -> None:
    """The commands of docs/ci.md, with copies in the place of uploads."""
    blocks = re.findall(r"^```sh\n(.*?)^```", (ROOT / "docs" / "ci.md").read_text(encoding="utf-8"), re.M | re.S)
    tools = scratch / "tools"
    tools.mkdir()
    for name, text in {
        "rsync": 'while [ "${1#--}" != "$1" ]; do shift; done\nfor last; do :; done\n'
                 'while [ $# -gt 1 ]; do cp -r "$1" "${last#host:}"; shift; done',
        "ssh": 'shift; exec "$@"',
        "curl": f'exec /usr/bin/env -i python3 - "$5" "$6" <<END\nimport ssl, sys, urllib.request\n'
                f'context = ssl.create_default_context(cafile="{authority.root}")\n'
                f'open(sys.argv[1], "wb").write(urllib.request.urlopen(sys.argv[2], context=context).read())\nEND',
        "emberwake-check": f'exec "{program}" --authority "{authority.root}" "$@"',
    }.items():
        (tools / name).write_text(f"#!/bin/sh\n{text}\n", encoding="utf-8")
        (tools / name).chmod(0o755)
    work = scratch / "work"
    work.mkdir()
    for name in ("clients", "news"):
        subprocess.run(["cp", "-r", scratch / "web" / name, work], check=True)
    # Nobody uploaded them by hand: the job has to.
    for logo in (scratch / "web").glob("*.png"):
        logo.rename(work / logo.name)
    variables = {
        **os.environ, "PATH": f"{tools}:{os.environ['PATH']}", "BASE": base.rstrip("/"),
        "UPLOAD": f"host:{scratch}/web", "TESTERS_CODE": CODE,
    }
    published = scratch / "web" / "launcher.xml"
    before = published.read_text(encoding="utf-8")
    for document, works in ((before.replace("Lantern Fair", "Ember Fair"), True), ("<launcher><client/>", False)):
        (work / "launcher.xml").write_text(document, encoding="utf-8")
        for block in blocks[:1] if not works else blocks:
            done = subprocess.run(
                ["bash", "-c", block], cwd=work, env=variables, capture_output=True, text=True, check=False)
            if (done.returncode == 0) != works:
                sys.exit(f"the job ended with {done.returncode}:\n{block}\n{done.stdout}{done.stderr}")
        if "Ember Fair" not in published.read_text(encoding="utf-8"):
            sys.exit("the job published what it should not, or not what it should")


def main(program: str) -> None:
    os.environ["PATH"] += ":/usr/sbin"
    for name in ("nginx.conf", "apache.conf"):
        with tempfile.TemporaryDirectory(prefix="emberwake-web-") as folder:
            scratch = Path(folder)
            scratch.chmod(0o755)
            authority = Authority(scratch / "authority")
            port = subprocess.check_output([sys.executable, ROOT / "demo" / "free_port.py", "0"], text=True).strip()
            base = f"https://127.0.0.1:{port}/"
            (scratch / "web").mkdir()
            publish(scratch / "web", base)
            file = configured(name, scratch, port, authority)
            command: list[str | Path] = (
                ["nginx", "-p", scratch, "-e", scratch / "error.log", "-c", file, "-g", "daemon off;"]
                if name == "nginx.conf" else ["apache2", "-D", "FOREGROUND", "-f", file])
            server = subprocess.Popen(command, stdin=subprocess.DEVNULL)
            try:
                wait_until_open(server, port)
                check_headers(port, authority)
                trust = ("--authority", os.fspath(authority.root))
                check(program, *trust, f"{base}launcher.xml")
                check(program, *trust, "--code", CODE, f"{base}launcher.xml")
                if name == "nginx.conf":
                    check_job(program, scratch, base, authority)
            finally:
                server.terminate()
                server.wait()


if __name__ == "__main__":
    main(os.path.abspath(sys.argv[1]))
