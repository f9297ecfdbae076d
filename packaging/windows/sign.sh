#!/usr/bin/env bash
# Signs Windows programs (Authenticode). Without a certificate it does nothing.
#
#     CAMERA_CERTIFICATE             PKCS#12 file with certificate and key
#     CAMERA_CERTIFICATE_PASSWORD    file with its password, if it has one
#     CAMERA_TIMESTAMP_SERVER        address of a server that dates signatures; without one they end with the certificate
#
# Usage: packaging/windows/sign.sh FILE...
set -euo pipefail

[ -n "${CAMERA_CERTIFICATE:-}" ] || exit 0
options=(-pkcs12 "$CAMERA_CERTIFICATE" -h sha256 -n shelf-camera-tool)
if [ -n "${CAMERA_CERTIFICATE_PASSWORD:-}" ]; then
  options+=(-readpass "$CAMERA_CERTIFICATE_PASSWORD")
fi
if [ -n "${CAMERA_TIMESTAMP_SERVER:-}" ]; then
  options+=(-ts "$CAMERA_TIMESTAMP_SERVER")
fi
if [ -n "${SOURCE_DATE_EPOCH:-}" ]; then
  options+=(-time "$SOURCE_DATE_EPOCH") # signed again it is the same file
fi
for file in "$@"; do
  osslsigncode sign "${options[@]}" -in "$file" -out "$file.signed" >/dev/null
  chmod --reference="$file" "$file.signed"
  mv "$file.signed" "$file"
done
