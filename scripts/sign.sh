#!/usr/bin/env bash
# sign.sh FILE...   signs Windows files in place and verifies them; without a certificate nothing is signed
# sign.sh --wanted  true when a certificate is given
#
# ORVANE_SIGN_PFX             the certificate with its key, as a PFX file
# ORVANE_SIGN_PASSWORD_FILE   a file whose first line is its password, so that no command line has it
# ORVANE_SIGN_TIMESTAMP_URL   optional: a time-stamp server, so that the signature outlives the certificate
set -euo pipefail
[ -n "${ORVANE_SIGN_PFX:-}" ] || { [ "${1:-}" != --wanted ]; exit; }
[ "${1:-}" != --wanted ] || exit 0
: "${ORVANE_SIGN_PASSWORD_FILE:?is not set, but ORVANE_SIGN_PFX is}"

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
(umask 077 && head -n 1 "$ORVANE_SIGN_PASSWORD_FILE" | tr -d '\r\n' >"$work/password")
# The certificate that a verifier is to trust: the PFX's own chain, as far as it goes.
openssl pkcs12 -in "$ORVANE_SIGN_PFX" -nokeys -passin "file:$work/password" -out "$work/chain.pem" 2>/dev/null ||
    openssl pkcs12 -legacy -in "$ORVANE_SIGN_PFX" -nokeys -passin "file:$work/password" -out "$work/chain.pem" 2>/dev/null ||
    { echo "error: the certificate file does not open with this password" >&2; exit 1; }

options=(-pkcs12 "$ORVANE_SIGN_PFX" -readpass "$work/password" -h sha256 -n "OrVane Windows Media Player Plugin")
if [ -n "${ORVANE_SIGN_TIMESTAMP_URL:-}" ]; then
    options+=(-ts "$ORVANE_SIGN_TIMESTAMP_URL")
elif [ -n "${SOURCE_DATE_EPOCH:-}" ] && osslsigncode sign --help 2>&1 | grep -q '^-time '; then
    options+=(-time "$SOURCE_DATE_EPOCH")
fi
for file in "$@"; do
    osslsigncode sign "${options[@]}" -in "$file" -out "$work/signed" >"$work/log" 2>&1 || { cat "$work/log" >&2; exit 1; }
    osslsigncode verify -CAfile "$work/chain.pem" -TSA-CAfile /etc/ssl/certs/ca-certificates.crt -in "$work/signed" >"$work/log" 2>&1 ||
        { cat "$work/log" >&2; echo "error: the signature of $file does not verify" >&2; exit 1; }
    cat "$work/signed" >"$file"
    rm -f "$work/signed"
done
