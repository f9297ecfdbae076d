#!/usr/bin/env bash
# Checks the lists of packages, and that the check notices a list without one of the parts and one of another package.
# Usage: packaging/sbom/test.sh PACKAGE...     each with its list beside it
. "$(dirname "${BASH_SOURCE[0]}")/../../scripts/lib.sh"

check() {
  /usr/bin/python3 -B "$project_root/packaging/sbom/checksbom.py" "$@"
}

# expect_fault SENTENCE PACKAGE
expect_fault() {
  if check "$2" 2>"$work/faults"; then
    fail "not noticed: $1"
  fi
  grep --quiet --fixed-strings -- "$1" "$work/faults" || { cat "$work/faults" >&2; fail "no sentence: $1"; }
}

# rename_part LIST NAME: as if the part were missing.
rename_part() {
  sed -i "s/\"\(name\|packageFileName\)\": \"$2\"/\"\1\": \"other\"/" "$1"
}

test_list() {
  local package=$work/${1##*/}
  cp "$1" "$package"
  cp "$1.spdx.json" "$package.spdx.json"
  check "$package" || fail "$1.spdx.json"
  case $package in
    *.deb)
      rename_part "$package.spdx.json" libqt6core6
      expect_fault "libqt6core6: a dependency without entry or version" "$package"
      ;;
    *)
      rename_part "$package.spdx.json" Qt6Core.dll
      expect_fault "Qt6Core.dll: no version or licence" "$package"
      ;;
  esac
  cp "$1.spdx.json" "$package.spdx.json"
  printf x >>"$package"
  expect_fault "the package is another one" "$package"
}

ensure_packages python3-jsonschema 7zip
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
for package in "$@"; do
  test_list "$package"
  say "$(basename "$package").spdx.json lists $(grep -c '"SPDXID": "SPDXRef-Package' "$package.spdx.json") parts" \
    "and $(grep -c '"fileName"' "$package.spdx.json") files"
done
