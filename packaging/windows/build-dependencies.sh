#!/usr/bin/env bash
# Puts Qt and the serial library for Windows into a folder, once: what a Windows build on Linux needs
# (cmake/toolchains/mingw-w64.cmake). Built from the distribution's source packages that is about 40 minutes of
# two processors; an archive of such a build is unpacked in seconds, and a folder that is filled is left alone.
#
#     packaging/windows/build-dependencies.sh [--archive FILE] [FOLDER]
#
# FOLDER: else the one in CAMERA_WINDOWS_DEPS, else shelf-camera-tool/windows in the user's cache.
set -euo pipefail
. "$(dirname "$0")/../../scripts/lib.sh"

usage() {
  sed -n '2,8s/^# \{0,1\}//p' "$0"
  exit "$1"
}

archive=
folder=$(windows_dependencies_folder)
while [ $# -gt 0 ]; do
  case $1 in
    --archive) archive=$(realpath "${2:?--archive needs a file}") && shift 2 ;;
    --help) usage 0 ;;
    -*) usage 2 >&2 ;;
    *) folder=$1 && shift ;;
  esac
done

if has_windows_dependencies "$folder"; then
  say "Qt and the serial library for Windows are in $folder"
  exit 0
fi
mkdir -p "$folder"
folder=$(realpath "$folder")

if [ -n "$archive" ]; then
  ensure_packages xz-utils
  say "unpacking $archive into $folder"
  tar --extract --file "$archive" --directory "$folder"
  has_windows_dependencies "$folder" || fail "$archive holds no qt/ and serial/ for Windows"
  exit 0
fi

ensure_packages "${windows_build_packages[@]}" dpkg-dev xz-utils
work=$folder/build
mkdir -p "$work"
cd "$work"

# --- source packages ----------------------------------------------------------------------------------------

# The sources of the machine's own Debian entries, in lists of this script's own: the system's stay as they are.
apt_sources() {
  local parts=$work/apt/parts
  rm -rf "$work/apt"
  mkdir -p "$parts" "$work/apt/lists/partial" "$work/apt/cache/archives/partial"
  local file
  for file in /etc/apt/sources.list.d/*.sources; do
    [ -e "$file" ] || continue
    sed 's/^Types:.*/Types: deb-src/' "$file" >"$parts/$(basename "$file")"
  done
  for file in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
    [ -e "$file" ] || continue
    sed -n 's/^deb /deb-src /p' "$file" >"$parts/$(basename "$file")"
  done
  apt_options=(-q -o Dir::Etc::SourceList=/dev/null -o "Dir::Etc::SourceParts=$parts"
    -o "Dir::State::Lists=$work/apt/lists" -o "Dir::Cache=$work/apt/cache" -o Acquire::Retries=3
    -o APT::Sandbox::User=)
  # A source of other software that has no source packages must not stop it: fetching decides.
  apt-get "${apt_options[@]}" update || say "apt-get update had errors; going on"
}

# The host tools (moc, uic, rcc) and the libraries must be of one version.
fetch_qt() {
  local version
  version=$(dpkg-query --show --showformat='${Version}' qt6-base-dev)
  say "fetching the source of qt6-base $version"
  apt-get "${apt_options[@]}" source "qt6-base=$version"
  qt_source=$(echo "$work"/qt6-base-*/)
}

# Of this source package the packaging part may be missing from the archive; the original sources are all that
# is needed. Their description is signed and holds their check sum.
fetch_serial() {
  say "fetching the source of libcxx-serial"
  apt-get "${apt_options[@]}" source --download-only --dsc-only libcxx-serial
  apt-get "${apt_options[@]}" source --download-only --tar-only libcxx-serial
  local description=(libcxx-serial_*.dsc) original=(libcxx-serial_*.orig.tar.*)
  sed -n '/^Checksums-Sha256:/,/^Files:/p' "${description[0]}" |
    awk -v name="${original[0]}" '$3 == name { print $1 "  " $3 }' >serial.sha256
  [ -s serial.sha256 ] || fail "${description[0]} says nothing of ${original[0]}"
  sha256sum --check serial.sha256
  tar --extract --file "${original[0]}"
  serial_source=$(echo "$work"/libcxx-serial-*/)
}

# set_dates_and_names: every file bears the date of Qt's packaging, none the names of this machine's folders.
set_dates_and_names() {
  SOURCE_DATE_EPOCH=$(dpkg-parsechangelog --file "$qt_source/debian/changelog" --show-field Timestamp)
  export SOURCE_DATE_EPOCH TZ=UTC CFLAGS="-ffile-prefix-map=$work=." CXXFLAGS="-ffile-prefix-map=$work=."
}

# --- building -----------------------------------------------------------------------------------------------

# Off: what this MinGW cannot compile (tablet events, the system's TLS) and what the program does not use.
qt_options=()
for feature in tabletevent schannel ssl openssl sql dbus printsupport vulkan zstd glib icu pkg_config \
  system_zlib system_png system_jpeg system_pcre2 system_harfbuzz system_freetype; do
  qt_options+=("-DFEATURE_$feature=OFF")
done
qt_options+=(-DINPUT_opengl=no -DQT_BUILD_TESTS=OFF -DQT_BUILD_EXAMPLES=OFF)

toolchain=(--toolchain "$project_root/cmake/toolchains/mingw-w64.cmake" "-DCAMERA_WINDOWS_DEPS=$folder"
  -DCMAKE_BUILD_TYPE=Release -G Ninja)

build_qt() {
  say "building Qt for Windows"
  cmake "${toolchain[@]}" -S "$qt_source" -B qt -DCMAKE_INSTALL_PREFIX="$work/installed/qt" "${qt_options[@]}"
  cmake --build qt
  cmake --install qt --strip
  remove_build_folders "$work/installed/qt"
}

# remove_build_folders QT: no file names the build's folders then; the files of qmake and pkg-config are deleted.
remove_build_folders() {
  rm -rf "$1"/bin/target_qt.conf "$1"/lib/pkgconfig "$1"/lib/*.prl "$1"/mkspecs/modules/qt_ext_*.pri
  sed -i "s|$work|.|; s|$project_root|.|" \
    "$1"/lib/cmake/Qt6/qt.toolchain.cmake "$1"/lib/cmake/Qt6BuildInternals/QtBuildInternalsExtra.cmake
}

# Its wide-character functions, so that descriptions of ports are UTF-8 under every code page.
build_serial() {
  say "building the serial library for Windows"
  local installed=$work/installed/serial objects=() source
  mkdir -p "$installed/lib" "$installed/include" serial
  for source in serial impl/win impl/list_ports/list_ports_win; do
    objects+=("serial/$(basename "$source").o")
    x86_64-w64-mingw32-g++-posix -O2 -DUNICODE -D_UNICODE -I "$serial_source/include" \
      "-ffile-prefix-map=$work=." \
      -c "$serial_source/src/$source.cc" -o "${objects[-1]}"
  done
  x86_64-w64-mingw32-ar rcsD "$installed/lib/libserial.a" "${objects[@]}"
  mkdir -p "$installed/include/serial"
  cp "$serial_source"/include/serial/{serial,v8stdint}.h "$installed/include/serial"
}

apt_sources
fetch_serial
fetch_qt
set_dates_and_names
build_serial
build_qt
mv installed/serial installed/qt "$folder"
has_windows_dependencies "$folder" || fail "something is missing in $folder"
cd "$folder"
rm -rf build
say "Qt and the serial library for Windows are in $folder, $(du -sh . | cut -f1)"
