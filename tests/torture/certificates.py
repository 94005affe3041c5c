"""A test authority, and the certificates that a launcher must not accept although it trusts that authority.

Made anew for each run, in a scratch folder, and worth nothing outside it.
"""

from __future__ import annotations

import ssl
from pathlib import Path

from authority import Authority, openssl

GOOD = "good certificate"
EXPIRED = "expired certificate"
SELF_SIGNED = "self-signed certificate"
OTHER_HOST = "certificate of another host"
REFUSED_CERTIFICATES = (EXPIRED, SELF_SIGNED, OTHER_HOST)

# Enough of a configuration for the one command that signs with dates of the past.
SIGNING = """
[ca]
default_ca = test
[test]
database = {folder}/index.txt
serial = {folder}/serial
new_certs_dir = {folder}
default_md = sha256
policy = anything
copy_extensions = none
[anything]
commonName = supplied
"""


class Certificates:
    """One server context per kind of certificate, all of them for this machine's loopback."""

    def __init__(self, folder: Path):
        self.authority = Authority(folder)
        self.folder = folder
        self.contexts = {
            GOOD: self.context(self.authority.certificate, self.authority.key),
            EXPIRED: self.signed("expired", "IP:127.0.0.1", "20200101000000Z", "20200201000000Z"),
            OTHER_HOST: self.signed("other", "DNS:launcher.emberwake.example", "20200101000000Z", "20491231000000Z"),
            SELF_SIGNED: self.self_signed(),
        }

    @staticmethod
    def context(certificate: Path, key: Path) -> ssl.SSLContext:
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        context.load_cert_chain(certificate, key)
        return context

    def signed(self, name: str, host: str, begin: str, end: str) -> ssl.SSLContext:
        """By the authority, in every way right but for the host or the dates."""
        request, key, certificate = (self.folder / f"{name}.{kind}" for kind in ("csr", "key", "pem"))
        extensions, settings = self.folder / f"{name}.ext", self.folder / "signing.cnf"
        openssl(
            *("req", "-new", "-newkey", "rsa:2048", "-nodes", "-sha256"),
            *("-subj", f"/CN={host.partition(':')[2]}", "-keyout", key, "-out", request),
        )
        extensions.write_text(
            "basicConstraints=critical,CA:FALSE\nkeyUsage=critical,digitalSignature,keyEncipherment\n"
            f"extendedKeyUsage=serverAuth\nsubjectAltName={host}\n",
            encoding="ascii",
        )
        settings.write_text(SIGNING.format(folder=self.folder), encoding="utf-8")
        (self.folder / "index.txt").touch()
        openssl(
            *("ca", "-batch", "-notext", "-rand_serial", "-config", settings, "-extfile", extensions),
            *("-cert", self.authority.root, "-keyfile", self.folder / "authority.key"),
            *("-startdate", begin, "-enddate", end, "-in", request, "-out", certificate),
        )
        return self.context(certificate, key)

    def self_signed(self) -> ssl.SSLContext:
        certificate, key = self.folder / "self.pem", self.folder / "self.key"
        openssl(
            *("req", "-x509", "-newkey", "rsa:2048", "-nodes", "-sha256", "-days", "30", "-subj", "/CN=127.0.0.1"),
            *("-addext", "subjectAltName=IP:127.0.0.1", "-keyout", key, "-out", certificate),
        )
        return self.context(certificate, key)

    def trusted_folder(self) -> Path:
        """A folder of trusted authorities as the system has one, with this one alone."""
        folder = self.folder / "trusted"
        folder.mkdir(exist_ok=True)
        (folder / "ca-certificates.crt").write_bytes(self.authority.root.read_bytes())
        (folder / "test.pem").write_bytes(self.authority.root.read_bytes())
        openssl("rehash", folder)
        return folder
