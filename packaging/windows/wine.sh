# A Windows by Wine, and running programs in it. To be sourced behind scripts/lib.sh, with the folder for all that it
# leaves in $out: . "$project_root/packaging/windows/wine.sh"
windows_folder=$project_root/packaging/windows
program=$out/program
lines=$out/lines
wine=(env "LOCPATH=$out/locale" LC_ALL=zh_CN.UTF-8 /usr/lib/wine/wine64)
wine_packages=(wine64 locales)
started=()

# --- what is needed ------------------------------------------------------------------------------------------

# A filled folder, or the archive of one beside the repository.
find_dependencies() {
  local folder archive=$project_root/../shared/windows-deps.tar.xz
  folder=$(windows_dependencies_folder)
  if ! has_windows_dependencies "$folder" && [ -e "$archive" ]; then
    "$windows_folder/build-dependencies.sh" --archive "$archive" "$folder"
  fi
  if ! has_windows_dependencies "$folder"; then
    say "nothing for Wine to run: there is no Qt for Windows in $folder (packaging/windows/build-dependencies.sh)"
    exit 0
  fi
  export CAMERA_WINDOWS_DEPS=$folder
}

# lay_out_programs FOLDER...: the programs of these folders with all that they need beside them, as on a Windows machine.
lay_out_programs() {
  local folder library plugin
  rm -rf "$program"
  mkdir -p "$program"
  for folder in "$@"; do
    cp "$project_root/build/mingw/$folder"/*.exe "$program"
  done
  cp "$CAMERA_WINDOWS_DEPS"/qt/bin/*.dll "$program"
  for plugin in platforms imageformats styles; do
    cp -r "$CAMERA_WINDOWS_DEPS/qt/plugins/$plugin" "$program"
  done
  for library in libgcc_s_seh-1 libstdc++-6 libwinpthread-1; do
    cp "$(x86_64-w64-mingw32-g++-posix "-print-file-name=$library.dll")" "$program"
  done
}

stop_windows() {
  /usr/lib/wine/wineserver64 --kill 2>/dev/null || true
  /usr/lib/wine/wineserver64 --wait
}

# A Windows of its own with Chinese settings: its code page is 936.
make_windows() {
  export WINEPREFIX=$out/prefix WINEDEBUG=-all WINEDLLOVERRIDES='mscoree,mshtml=;winemenubuilder.exe=d'
  rm -rf "$WINEPREFIX" "$lines"
  mkdir -p "$lines" "$out/locale"
  [ -d "$out/locale/zh_CN.UTF-8" ] || localedef -f UTF-8 -i zh_CN "$out/locale/zh_CN.UTF-8"
  DISPLAY= "${wine[@]}" wineboot --init >/dev/null 2>&1
  { printf '\xff\xfe' && iconv -f UTF-8 -t UTF-16LE "$windows_folder/wine-prefix.reg"; } >"$out/wine-prefix.reg"
  DISPLAY= "${wine[@]}" regedit "$out/wine-prefix.reg"
  stop_windows # its desktop has no display
  local port
  for port in com5 com6 com12; do
    ln -sfn "$lines/$port" "$WINEPREFIX/dosdevices/$port"
  done
  # A port that refuses to be opened, as one does that another program has open.
  ln -sfn "$lines" "$WINEPREFIX/dosdevices/com19"
}

# --- running -------------------------------------------------------------------------------------------------

# in_background LOG COMMAND...: its output goes into $out/LOG.
in_background() {
  local log=$1
  shift
  "$@" >"$out/$log" 2>&1 </dev/null &
  started+=($!)
}

clean_up() {
  local process
  for process in "${started[@]}"; do
    kill "$process" 2>/dev/null || true
  done
  if [ -n "${WINEPREFIX:-}" ]; then
    stop_windows
  fi
}

# wait_for LOG TEXT [SECONDS]
wait_for() {
  local tries
  for ((tries = 0; tries < ${3:-30} * 5; tries++)); do
    if grep -qF -- "$2" "$out/$1" 2>/dev/null; then
      say "$1: $2"
      return
    fi
    sleep 0.2
  done
  tail -n 20 "$out/$1" >&2
  fail "$1 does not say: $2"
}
