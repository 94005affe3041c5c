"""The demo world has nothing that emberwake-check --deep finds: check_demo_world.py PROGRAM [SCHEME...]

The world is laid out in a scratch folder and served on the loopback, over http and over https, or over
those that are named. A tester's code is tried as well. In the end a logo is taken away, which must be
found.
"""

from __future__ import annotations

import os
import subprocess
import sys
import tempfile
from pathlib import Path

# The folders that it imports from, beside its own.
ROOT = Path(__file__).resolve().parents[2]
sys.path[:0] = [os.fspath(ROOT / folder) for folder in ("demo", "tests/e2e")]

import make_world
from authority import Authority


def run(program: str, expected: int, *arguments: str) -> str:
    done = subprocess.run([program, "--deep", *arguments], capture_output=True, text=True, check=False)
    print("emberwake-check --deep", *arguments)
    print(done.stdout + done.stderr)
    if done.returncode != expected:
        sys.exit(f"ended with {done.returncode} instead of {expected}")
    return done.stdout


def main(program: str, *schemes: str) -> None:
    with tempfile.TemporaryDirectory(prefix="emberwake-check-") as scratch:
        authority = Authority(Path(scratch, "authority"))
        plain: list[str | Path] = []
        secure: list[str | Path] = ["--certificate", authority.certificate, "--key", authority.key]
        for scheme, options in (("http", plain), ("https", secure)):
            if schemes and scheme not in schemes:
                continue
            world = Path(scratch, scheme)
            port = subprocess.check_output([sys.executable, ROOT / "demo" / "free_port.py", "0"], text=True).strip()
            base = f"{scheme}://127.0.0.1:{port}/"
            make_world.lay(world, base, data_bytes=100_000)
            server = subprocess.Popen(
                [sys.executable, ROOT / "demo" / "serve.py", world, "--port", port, "--log", Path(scratch, "log"), *options],
                stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
            assert server.stdin is not None and server.stdout is not None
            try:
                server.stdout.readline()
                trust = ("--authority", str(authority.root)) if options else ()
                document = f"{base}launcher.xml"
                for code in ((), ("--code", make_world.BETA_CODE)):
                    if "0 errors, 0 warnings" not in run(program, 0, *trust, *code, document):
                        sys.exit("something was found")
                if options and "[tls-error]" not in run(program, 2, document):
                    sys.exit("an unknown authority was trusted")
                (world / "Ashenmoor.png").unlink()
                if "[unreachable]" not in run(program, 2, *trust, document):
                    sys.exit("the missing logo was not found")
            finally:
                server.stdin.close()
                server.wait()


if __name__ == "__main__":
    main(*sys.argv[1:])
