#!/usr/bin/env bash
# Builds the packages into one folder, each with a list of what it holds (SPDX), and their SHA-256 sums: the Debian
# package, and where Qt and the serial library for Windows are at hand (packaging/windows/build-dependencies.sh), the
# portable ZIP and the installer. The same sources give the same packages (packaging/reproduce.sh).
#
#     CAMERA_SIGNING_KEY    secret key of minisign without password: signs the sums
#     CAMERA_CERTIFICATE    signs the Windows programs, see packaging/windows/sign.sh
#
# Usage: scripts/package.sh [--only linux|windows] [FOLDER]     FOLDER: out/packages if not given
. "$(dirname "$0")/lib.sh"

# The date that everything packed bears: that of the last commit, or of an unpacked archive's files.
export_source_date() {
  if [ -z "${SOURCE_DATE_EPOCH:-}" ]; then
    SOURCE_DATE_EPOCH=$(git -C "$project_root" log -1 --format=%ct 2>/dev/null ||
      stat --format=%Y "$project_root/CMakeLists.txt")
  fi
  export SOURCE_DATE_EPOCH TZ=UTC
}

# pack PRESET GENERATORS: what cpack's generators make of this build.
pack() {
  local build=$project_root/build/$1
  say "packing: $2"
  rm -rf "$build"/_CPack_Packages "$build"/shelf-camera-tool[-_]*
  (cd "$build" && umask 022 && cpack -G "$2" --config CPackConfig.cmake >cpack.log 2>&1) ||
    { cat "$build/cpack.log" >&2; fail "cpack"; }
}

package_linux() {
  local folder=$1
  if ! command -v apt-get >/dev/null; then
    say "skipped: the Debian package, which takes a Debian system"
    return
  fi
  ensure_packages "${build_packages[@]}" "${package_packages[@]}"
  local preset=deb
  if [ -n "${CI:-}" ]; then
    preset=$(optimised_preset) # has been built and tested
  fi
  configure_and_build "$preset"
  pack "$preset" DEB
  local build=$project_root/build/$preset
  appstreamcli validate --no-net --pedantic "$build/packaging/shelf-camera-tool.metainfo.xml" ||
    fail "appstreamcli found faults"
  lintian --allow-root --fail-on error --tag-display-limit 0 "$build"/*.deb || fail "lintian found errors"
  cp "$build"/*.deb "$folder"
}

package_windows() {
  local folder=$1 dependencies
  dependencies=$(windows_dependencies_folder)
  if ! has_windows_dependencies "$dependencies"; then
    say "skipped: the ZIP and the installer for Windows: no Qt for Windows in $dependencies;" \
      "packaging/windows/build-dependencies.sh gets it"
    return
  fi
  ensure_packages "${windows_build_packages[@]}" "${windows_package_packages[@]}"
  if [ -n "${CAMERA_CERTIFICATE:-}" ]; then
    ensure_packages osslsigncode
    CAMERA_CERTIFICATE=$(realpath "$CAMERA_CERTIFICATE")
  fi
  (
    export CXXFLAGS="-ffile-prefix-map=$project_root=. -ffile-prefix-map=$dependencies=windows" CCACHE_BASEDIR=
    configure_and_build mingw
  )
  pack mingw "ZIP;NSIS"
  local file
  for file in "$project_root"/build/mingw/shelf-camera-tool-*-windows-x64{.zip,-setup.exe}; do
    touch "--date=@$SOURCE_DATE_EPOCH" "$file"
    cp --preserve=timestamps "$file" "$folder"
  done
}

# describe FOLDER: the list of each package, checked against it.
describe() {
  local package packages=()
  for package in "$1"/*.deb "$1"/*.zip "$1"/*.exe; do
    [ -f "$package" ] || continue
    /usr/bin/python3 -B "$project_root/packaging/sbom/makesbom.py" "$package" "$package.spdx.json"
    packages+=("$package")
  done
  /usr/bin/python3 -B "$project_root/packaging/sbom/checksbom.py" "${packages[@]}" || fail "a list is not that of its package"
}

# sign_sums FOLDER: by the key that is given.
sign_sums() {
  [ -n "${CAMERA_SIGNING_KEY:-}" ] || return 0
  ensure_packages minisign
  minisign -S -s "$CAMERA_SIGNING_KEY" -m "$1/SHA256SUMS" -t shelf-camera-tool >/dev/null </dev/null || fail "minisign"
}

main() {
  local only=
  if [ "${1:-}" = --only ]; then
    only=${2:?--only what}
    shift 2
  fi
  local folder=${1:-$project_root/out/packages}
  use_utf8_locale
  export_source_date
  mkdir -p "$folder"
  folder=$(realpath "$folder")
  rm -f "$folder"/shelf-camera-tool[-_]* "$folder"/SHA256SUMS*
  case $only in
    "" | linux) package_linux "$folder" ;;&
    "" | windows) package_windows "$folder" ;;
    linux) ;;
    *) fail "--only linux or windows" ;;
  esac
  compgen -G "$folder/shelf-camera-tool*" >/dev/null || fail "nothing was packed"
  describe "$folder"
  (cd "$folder" && sha256sum shelf-camera-tool* >SHA256SUMS)
  sign_sums "$folder"
  say "packages in $folder:"
  (cd "$folder" && du --bytes shelf-camera-tool*)
}

main "$@"
