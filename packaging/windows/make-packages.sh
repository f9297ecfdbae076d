#!/usr/bin/env bash
# Makes the Windows packages, the portable ZIP and the installer, of the preset mingw.
# Usage: packaging/windows/make-packages.sh [FOLDER]      FOLDER: out/packages if not given
#        packaging/windows/make-packages.sh --check       says what is missing for it, code 1, or nothing
. "$(dirname "${BASH_SOURCE[0]}")/../../scripts/lib.sh"

here=$project_root/packaging/windows
build=$project_root/build/mingw
staging=$build/staging

# Plug-ins of Qt that the program cannot find by itself: its window system, its look, JPEG pictures.
plugins=(platforms/qwindows.dll styles/qwindowsvistastyle.dll imageformats/qjpeg.dll)

# The version of what has been built.
version() {
  sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$build/CMakeCache.txt"
}

# imported_dlls FILE...: names of the DLLs that these want, one a line.
imported_dlls() {
  x86_64-w64-mingw32-objdump --private-headers "$@" | sed -n 's/^\s*DLL Name: //p' | sort -u
}

# runtime_dll NAME: where the compiler keeps this DLL; nothing if it is none of its own.
runtime_dll() {
  local found
  found=$(x86_64-w64-mingw32-g++-posix "-print-file-name=$1")
  if [ "$found" != "$1" ] && [ -f "$found" ]; then
    printf '%s\n' "$found"
  fi
}

# of_windows NAME: whether Windows itself brings this DLL: the compiler can link to it and does not bring it. Names
# with api-ms-win stand for parts of Windows's own libraries.
of_windows() {
  local library
  case $1 in
    api-ms-win-*) return 0 ;;
  esac
  library=$(printf '%s' "${1%.*}" | tr '[:upper:]' '[:lower:]')
  [ "$(x86_64-w64-mingw32-g++-posix "-print-file-name=lib$library.a")" != "lib$library.a" ]
}

# copy_dll QT NAME FOLDER: from Qt's folder or the compiler's. Code 1: it is not there, Windows brings it.
copy_dll() {
  local source=$1/bin/$2
  [ -f "$source" ] || source=$(runtime_dll "$2")
  if [ -n "$source" ]; then
    install -m 755 "$source" "$3/$2"
    return
  fi
  of_windows "$2" || fail "$2 is wanted, and neither Qt, the compiler nor Windows has it"
  return 1
}

# copy_dlls QT FOLDER: the DLLs that the programs in FOLDER want, and those that these want, until none is new.
copy_dlls() {
  local qt=$1 folder=$2 name copied=yes binaries names
  while [ -n "$copied" ]; do
    copied=
    mapfile -t binaries < <(find "$folder" -iname '*.exe' -o -iname '*.dll')
    mapfile -t names < <(imported_dlls "${binaries[@]}")
    for name in "${names[@]}"; do
      if [ ! -e "$folder/$name" ] && copy_dll "$qt" "$name" "$folder"; then
        copied=yes
      fi
    done
  done
}

copy_plugins() {
  local qt=$1 folder=$2 plugin
  for plugin in "${plugins[@]}"; do
    install -D -m 755 "$qt/plugins/$plugin" "$folder/$plugin"
  done
}

# windows_text FROM TO: as Windows's editor likes it, with a mark of its encoding and its line ends.
windows_text() {
  { printf '\xef\xbb\xbf' && sed "s/@VERSION@/$(version)/; s/\$/\r/" "$1"; } >"$2"
}

# What the libraries' packages say of their licences, and the texts they refer to.
copy_licences() {
  local folder=$1 name
  mkdir -p "$folder"
  cp /usr/share/doc/qt6-base-dev/copyright "$folder/Qt.txt"
  cp /usr/share/doc/libcxx-serial-dev/copyright "$folder/serial.txt"
  cp /usr/share/doc/libcli11-dev/copyright "$folder/CLI11.txt"
  cp /usr/share/doc/gcc-mingw-w64-x86-64-posix-runtime/copyright "$folder/GCC-runtime.txt"
  cp /usr/share/doc/mingw-w64-common/copyright "$folder/MinGW-w64-runtime.txt"
  cp /usr/share/doc/nsis/copyright "$folder/NSIS.txt"
  for name in LGPL-3 LGPL-2.1 GPL-3 GPL-2 Apache-2.0; do
    cp "/usr/share/common-licenses/$name" "$folder/$name.txt"
  done
  chmod 644 "$folder"/*
}

# stage FOLDER: all that is packed, as it lies beside the program.
stage() {
  local folder=$1 qt
  qt=$(windows_dependencies_folder)/qt
  rm -rf "$folder"
  mkdir -p "$folder"
  cmake --install "$build" --prefix "$folder" --strip >/dev/null
  [ -f "$folder/shelf-camera-tool.exe" ] || fail "the build installed no shelf-camera-tool.exe"
  copy_plugins "$qt" "$folder"
  copy_dlls "$qt" "$folder"
  find "$folder" -name '*.dll' -exec x86_64-w64-mingw32-strip --strip-unneeded --preserve-dates {} +
  install -D -m 644 /usr/share/qt6/translations/qtbase_zh_CN.qm "$folder/translations/qtbase_zh_CN.qm"
  copy_licences "$folder/licenses"
  windows_text "$here/README.txt" "$folder/README.txt"
  find "$folder" -exec touch --no-dereference "--date=@$SOURCE_DATE_EPOCH" {} +
}

# Not CPack's ZIP: that keeps access times, owners and the folder's own order, and is another file each time.
make_zip() {
  local name=$1 target=$2
  rm -f "$target"
  (cd "$staging" && find "$name" | LC_ALL=C sort | zip --quiet -9 -X -@ "$target")
}

# The installer's commands: each file by name and in order, so that the uninstaller takes away those and no others, and
# that the installer is the same file each time. CPack's NSIS generator takes the folder's own order.
installer_lists() {
  local folder=$1 lists=$2 directory file
  mkdir -p "$lists"
  (
    cd "$folder"
    find . -type d -printf '%P\n' | LC_ALL=C sort | while read -r directory; do
      directory=${directory//\//\\}
      printf 'SetOutPath "$INSTDIR%s"\n' "${directory:+\\$directory}"
      find "./${directory//\\//}" -maxdepth 1 -type f -printf '%f\n' | LC_ALL=C sort | while read -r file; do
        printf 'File "%s"\n' "$folder/${directory:+${directory//\\//}/}$file"
      done
    done >"$lists/install.nsh"
    {
      find . -type f -printf '%P\n' | LC_ALL=C sort | sed 's#/#\\#g; s#.*#Delete "$INSTDIR\\&"#'
      find . -mindepth 1 -type d -printf '%P\n' | LC_ALL=C sort --reverse |
        sed 's#/#\\#g; s#.*#RMDir "$INSTDIR\\&"#'
    } >"$lists/uninstall.nsh"
  )
}

make_installer() {
  local folder=$1 target=$2
  installer_lists "$folder" "$build/installer"
  makensis -V2 -INPUTCHARSET UTF8 "-DVERSION=$(version)" "-DFILES=$build/installer" "-DOUTPUT=$target" \
    "$here/installer.nsi" || fail "makensis"
  touch "--date=@$SOURCE_DATE_EPOCH" "$target"
}

main() {
  if [ "${1:-}" = --check ]; then
    has_windows_dependencies "$(windows_dependencies_folder)" && return
    echo "no Qt for Windows in $(windows_dependencies_folder); packaging/windows/build-dependencies.sh gets it"
    return 1
  fi
  local target=${1:-$project_root/out/packages} name
  mkdir -p "$target"
  target=$(realpath "$target")
  ensure_packages "${windows_build_packages[@]}" binutils-mingw-w64-x86-64 qt6-translations-l10n zip nsis
  : "${SOURCE_DATE_EPOCH:=$(git -C "$project_root" log -1 --format=%ct)}"
  export SOURCE_DATE_EPOCH
  (
    export CXXFLAGS="-ffile-prefix-map=$project_root=." CCACHE_BASEDIR=
    configure_and_build mingw
  )
  name=shelf-camera-tool-$(version)-windows-x64
  say "packing for Windows"
  stage "$staging/$name"
  make_zip "$name" "$target/$name.zip"
  make_installer "$staging/$name" "$target/$name-setup.exe"
}

main "$@"
