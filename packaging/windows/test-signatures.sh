#!/usr/bin/env bash
# Packs the Windows programs with a certificate and a key made here, and verifies both signatures; a changed file must
# fail. Needs Qt for Windows, as scripts/package.sh does.
# Usage: packaging/windows/test-signatures.sh
. "$(dirname "${BASH_SOURCE[0]}")/../../scripts/lib.sh"

make_certificate() {
  openssl req -x509 -newkey rsa:2048 -nodes -days 30 -subj '/CN=shelf-camera-tool test' \
    -addext extendedKeyUsage=codeSigning -keyout "$work/key.pem" -out "$work/certificate.pem" 2>/dev/null
  printf 'a password' >"$work/password"
  openssl pkcs12 -export -inkey "$work/key.pem" -in "$work/certificate.pem" -out "$work/certificate.p12" \
    -passout "file:$work/password"
}

is_signed() {
  osslsigncode verify -CAfile "$work/certificate.pem" -in "$1" >"$work/verified" 2>&1
}

check_program() {
  is_signed "$1" || { cat "$work/verified" >&2; fail "$1 is not signed"; }
  cp "$1" "$work/changed.exe"
  printf x | dd of="$work/changed.exe" bs=1 seek=4096 conv=notrunc status=none
  ! is_signed "$work/changed.exe" || fail "$1: a changed program passes"
}

check_sums() {
  (
    cd "$work/packages"
    minisign -V -q -m SHA256SUMS -p "$work/public.key" || fail "the sums are not signed"
    sha256sum --check --quiet SHA256SUMS
    sed 's/^./0/' SHA256SUMS >"$work/SHA256SUMS"
    cp SHA256SUMS.minisig "$work"
    ! minisign -V -q -m "$work/SHA256SUMS" -p "$work/public.key" 2>/dev/null || fail "changed sums pass"
  )
}

main() {
  if ! has_windows_dependencies "$(windows_dependencies_folder)"; then
    say "skipped: the signatures, as there is no Qt for Windows"
    return
  fi
  ensure_packages minisign openssl osslsigncode 7zip unzip
  work=$(mktemp -d)
  trap 'rm -rf "$work"' EXIT
  make_certificate
  minisign -G -W -p "$work/public.key" -s "$work/secret.key" >/dev/null
  CAMERA_SIGNING_KEY=$work/secret.key CAMERA_CERTIFICATE=$work/certificate.p12 \
    CAMERA_CERTIFICATE_PASSWORD=$work/password "$project_root/scripts/package.sh" --only windows "$work/packages"
  unzip -q "$work"/packages/*.zip -d "$work/zip"
  7zz x -y "-o$work/setup" "$work"/packages/*-setup.exe >/dev/null
  local program count=0
  for program in "$work"/packages/*-setup.exe "$work"/zip/*/*.exe "$work"/setup/*.exe; do
    check_program "$program"
    count=$((count + 1))
  done
  check_sums
  say "$count programs and the sums are signed, and changed ones are noticed"
}

main "$@"
