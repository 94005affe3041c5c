#!/usr/bin/env bash
# Signs programs for Windows, in place:
#
#   packaging/windows/sign.sh FILE...
#
# package.sh and the installer's making call it, so what it signs with stands in the environment:
#
#   EMBERWAKE_SIGN_WITH           the certificate with those up to its authority (PEM), or a
#                                 PKCS#12 file that holds the key as well
#   EMBERWAKE_SIGN_KEY            the key of a PEM certificate
#   EMBERWAKE_SIGN_PASSWORD_FILE  the file with the key's password in its first line
#   EMBERWAKE_SIGN_PASSWORD       the password itself; an empty one when there is neither
#   EMBERWAKE_SIGN_TIMESTAMP      the address of a server of time stamps (RFC 3161)
#   EMBERWAKE_SIGN_NAME, EMBERWAKE_SIGN_URL  what Windows shows of the program when it asks
#
# A program is replaced when it is signed, and only then. Without a server of time stamps the
# signature says the time in SOURCE_DATE_EPOCH, so that the same program has the same signature.
set -euo pipefail

if [ "$#" -eq 0 ] || [ -z "${EMBERWAKE_SIGN_WITH:-}" ]; then
  echo 'usage: EMBERWAKE_SIGN_WITH=CERTIFICATE sign.sh FILE...' >&2
  exit 64
fi

work=$(mktemp -d "${TMPDIR:-/tmp}/sign.XXXXXX")
trap 'rm -rf "$work"' EXIT
# The password goes through a file that only we can read: anybody on the machine sees arguments.
umask 077
if [ -n "${EMBERWAKE_SIGN_PASSWORD_FILE:-}" ]; then
  head -n 1 "$EMBERWAKE_SIGN_PASSWORD_FILE" | tr -d '\r\n' > "$work/password"
else
  printf %s "${EMBERWAKE_SIGN_PASSWORD:-}" > "$work/password"
fi

options=(-h sha256)
[ ! -s "$work/password" ] || options+=(-readpass "$work/password")
if [ -n "${EMBERWAKE_SIGN_KEY:-}" ]; then
  options+=(-certs "$EMBERWAKE_SIGN_WITH" -key "$EMBERWAKE_SIGN_KEY")
else
  options+=(-pkcs12 "$EMBERWAKE_SIGN_WITH")
fi
if [ -n "${EMBERWAKE_SIGN_TIMESTAMP:-}" ]; then
  options+=(-ts "$EMBERWAKE_SIGN_TIMESTAMP")
elif [ -n "${SOURCE_DATE_EPOCH:-}" ]; then
  options+=(-time "$SOURCE_DATE_EPOCH")
fi
# It has no spelling for other letters.
[[ -z ${EMBERWAKE_SIGN_NAME:-} || $EMBERWAKE_SIGN_NAME == *[![:ascii:]]* ]] || options+=(-n "$EMBERWAKE_SIGN_NAME")
[ -z "${EMBERWAKE_SIGN_URL:-}" ] || options+=(-i "$EMBERWAKE_SIGN_URL")

for file in "$@"; do
  # Without a terminal: a missing password is an error, and no question.
  if ! setsid --wait osslsigncode sign "${options[@]}" -in "$file" -out "$work/signed" \
    > "$work/log" 2>&1 < /dev/null || [ ! -s "$work/signed" ]; then
    cat "$work/log" >&2
    echo "sign.sh: $file could not be signed" >&2
    exit 1
  fi
  cat "$work/signed" > "$file"
  rm "$work/signed"
done
