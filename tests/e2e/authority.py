"""A test authority of the demo's own, and the certificate it gives to the demo's server.

Made anew for each drive, in the scratch folder, and worth nothing outside it:
only the Windows prefix of that drive is ever told to trust the authority.
"""

from __future__ import annotations

import hashlib
import ssl
import subprocess
from pathlib import Path

from make_world import WorldError


def openssl(*arguments: str | Path) -> None:
    done = subprocess.run(["openssl", *arguments], stdin=subprocess.DEVNULL, capture_output=True, check=False)
    if done.returncode != 0:
        raise WorldError(f"openssl {arguments[0]} failed: {done.stderr.decode(errors='replace').strip()}")


class Authority:
    """Certificate and key files of the server at 127.0.0.1, and who vouches for them."""

    def __init__(self, folder: Path):
        folder.mkdir(mode=0o700)
        self.root = folder / "authority.pem"
        self.certificate = folder / "server.pem"
        self.key = folder / "server.key"
        root_key, request, extensions = folder / "authority.key", folder / "server.csr", folder / "server.ext"

        openssl(
            *("req", "-x509", "-newkey", "rsa:2048", "-nodes", "-sha256", "-days", "30"),
            *("-subj", "/CN=Emberwake demo authority", "-keyout", root_key, "-out", self.root),
            *("-addext", "keyUsage=critical,keyCertSign,cRLSign"),
        )
        openssl(
            *("req", "-new", "-newkey", "rsa:2048", "-nodes", "-sha256"),
            *("-subj", "/CN=127.0.0.1", "-keyout", self.key, "-out", request),
        )
        extensions.write_text(
            "basicConstraints=critical,CA:FALSE\nkeyUsage=critical,digitalSignature,keyEncipherment\n"
            "extendedKeyUsage=serverAuth\nsubjectAltName=IP:127.0.0.1\n",
            encoding="ascii",
        )
        openssl(
            *("x509", "-req", "-sha256", "-days", "30", "-in", request, "-CA", self.root, "-CAkey", root_key),
            *("-CAcreateserial", "-extfile", extensions, "-out", self.certificate),
        )

    def root_bytes(self) -> bytes:
        return ssl.PEM_cert_to_DER_cert(self.root.read_text(encoding="ascii"))

    def context(self) -> ssl.SSLContext:
        """For asking the demo's server oneself."""
        return ssl.create_default_context(cafile=self.root)


def registry_file(certificate: bytes) -> str:
    """Text of a registry file that makes the certificate one of the machine's trusted roots."""
    # What the store keeps of a certificate: kind 32 (the certificate itself), a
    # one, the length, the bytes. The key's name is the fingerprint.
    kept = b"".join(number.to_bytes(4, "little") for number in (32, 1, len(certificate))) + certificate
    name = hashlib.sha1(certificate).hexdigest().upper()
    return (
        "REGEDIT4\n\n"
        f"[HKEY_LOCAL_MACHINE\\Software\\Microsoft\\SystemCertificates\\Root\\Certificates\\{name}]\n"
        f'"Blob"=hex:{kept.hex(",")}\n'
    )
