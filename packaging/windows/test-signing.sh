#!/usr/bin/env bash
# Tests that package.sh signs every program, by a certificate of an authority made for it, and that
# the packages in build/packages say that they are not signed:
#
#   packaging/windows/test-signing.sh [FOLDER]       the packages' folder; default: build/packages
#
# One line per check; the last line is "N passed, N failed", and the result says whether one failed.
set -euo pipefail

root=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/../.." && pwd)
here=$root/packaging/windows
packages=$(cd "${1:-$root/build/packages}" && pwd)
"$root/scripts/install-packages.sh" windows windows-test

# shellcheck source=wine.sh
. "$here/wine.sh"
start_wine

echo 'Making an authority ...'
keys=$work/keys
mkdir "$keys"
# shellcheck disable=SC2016 # the dollar sign is one
password='Пароль & "secret" $7'
# issue NAME USE [OPTION...]: a certificate with its key, for one use.
issue() {
  local name=$1 use=$2
  shift 2
  openssl req -newkey rsa:2048 -keyout "$keys/$name.key" -out "$keys/$name.csr" -subj "/CN=Test $name" "$@"
  openssl x509 -req -in "$keys/$name.csr" -CA "$keys/root.pem" -CAkey "$keys/root.key" -CAcreateserial \
    -days 3 -out "$keys/$name.pem" \
    -extfile <(printf 'extendedKeyUsage=%s\nkeyUsage=digitalSignature\n' "$use")
}
{
  openssl req -x509 -newkey rsa:2048 -nodes -keyout "$keys/root.key" -out "$keys/root.pem" \
    -subj '/CN=Test authority' -days 3
  openssl req -x509 -newkey rsa:2048 -nodes -keyout "$keys/other.key" -out "$keys/other.pem" \
    -subj '/CN=Other authority' -days 3
  issue studio codeSigning -passout "pass:$password"
  issue stamps critical,timeStamping -nodes
  openssl pkcs12 -export -in "$keys/studio.pem" -inkey "$keys/studio.key" -certfile "$keys/root.pem" \
    -passin "pass:$password" -passout "pass:$password" -out "$keys/studio.p12"
} 2> "$work/openssl.log" || { cat "$work/openssl.log"; exit 1; }
printf '%s\nwhat follows is a note\n' "$password" > "$keys/password"

coproc stamps { "$here/timestamp-server.py" "$keys/stamps.pem" "$keys/stamps.key" "$keys"; }
read -r timestamp_url <&"${stamps[0]}"

# Everybody on a machine sees the arguments of programs: this one writes them down.
mkdir "$work/bin"
printf '#!/bin/sh\nprintf "%%s\\n" "$@" >> "%s"\nexec "%s" "$@"\n' "$work/arguments" "$(command -v osslsigncode)" \
  > "$work/bin/osslsigncode"
chmod +x "$work/bin/osslsigncode"
PATH=$work/bin:$PATH
verified() { osslsigncode verify -CAfile "${2:-$keys/root.pem}" -TSA-CAfile "$keys/root.pem" -in "$1"; }
# The program with one other byte, in its middle.
tampered() {
  /usr/bin/python3 - "$1" << 'PYTHON'
import sys
data = bytearray(open(sys.argv[1], "rb").read())
data[len(data) // 2] ^= 1
sys.stdout.buffer.write(data)
PYTHON
}
stamped() { verified "$1" | grep -F 'Timestamp Server Signature verification: ok'; }

echo 'Packing with signatures ...'
pack() {
  "$here/package.sh" --output "$work/signed" --build "$root/build/windows-release" "$@" > "$work/package.log" 2>&1 ||
    { tail -n 5 "$work/package.log"; return 1; }
}
check 'a key without a certificate is refused' fails pack --key "$keys/studio.key"
check 'so is a certificate that is not there' fails pack --sign-with "$keys/nobody.pem"
check 'and a wrong password' fails env EMBERWAKE_SIGN_PASSWORD=wrong EMBERWAKE_SIGN_WITH="$keys/studio.p12" \
  "$here/sign.sh" "$root/build/windows-release/unzip.exe"
check 'it packs with signatures and time stamps' pack --sign-with "$keys/studio.pem" --key "$keys/studio.key" \
  --password-file "$keys/password" --timestamp "$timestamp_url"
check 'no password was an argument' fails grep -F 'secret' "$work/arguments"

mkdir "$work/unpacked"
for archive in "$work"/signed/*.zip; do
  unzip -q "$archive" -d "$work/unpacked" || true
done
setup=$(echo "$work"/signed/emberwake-launcher-*-setup.exe)
check 'the signed installer installs' ends_with 0 "$setup" /S '/D=C:\Signed'
programs=("$setup" "$c/Signed"/*.exe)
while read -r file; do
  programs+=("$file")
done < <(find "$work/unpacked" -name '*.exe' | sort)
check 'every program is there' test "${#programs[@]}" -ge 6
for program in "${programs[@]}"; do
  name=${program#"$work/"}
  check "$name is signed" verified "$program"
  check "$name has a time stamp" stamped "$program"
  check "$name was not signed by another authority" fails verified "$program" "$keys/other.pem"
  tampered "$program" > "$work/tampered.exe"
  check "$name is noticed with another byte" fails verified "$work/tampered.exe"
done
check 'nothing says that they are not signed' test -z "$(find "$work/unpacked" "$c/Signed" -name UNSIGNED.txt)"
check 'the signed uninstaller removes them' ends_with 0 "$c/Signed/uninstall.exe" /S '_?=C:\Signed'
check 'all of them' absent "$c/Signed/emberwake-launcher.exe"

echo 'By a file of certificate and key, and the environment ...'
signed_copy() {
  cp "$root/build/windows-release/unzip.exe" "$1"
  EMBERWAKE_SIGN_PASSWORD=$password EMBERWAKE_SIGN_WITH=$keys/studio.p12 EMBERWAKE_SIGN_NAME='A Studio' \
    SOURCE_DATE_EPOCH=$2 "$here/sign.sh" "$1"
}
now=$(date +%s)
check 'it signs' signed_copy "$work/one.exe" "$now"
check 'the signature is good' verified "$work/one.exe"
signed_copy "$work/two.exe" "$now"
check 'the same program gets the same signature' cmp "$work/one.exe" "$work/two.exe"
check 'no password was an argument' fails grep -F 'secret' "$work/arguments"

echo 'Without a certificate ...'
mkdir "$work/plain"
unsigned_archives=0
for archive in "$packages"/*.zip; do
  unsigned_archives=$((unsigned_archives + 1))
  unzip -q "$archive" -d "$work/plain"
  check "$(basename "$archive") says that it is not signed" \
    test -f "$work/plain/$(basename "$archive" .zip)/UNSIGNED.txt"
done
check 'the packages are there' test "$unsigned_archives" -ge 1
check 'and its programs are not' fails verified "$(find "$work/plain" -name emberwake-launcher.exe)"

print_checks
