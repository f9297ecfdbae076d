#!/usr/bin/env bash
# Builds the Windows programs and proves them under Wine, without a display: the tool itself with a virtual camera
# behind COM5, the tour of all windows between COM12 and COM6, the virtual camera on COM6. Its log, pictures and
# files are left in out/windows. Where Qt for Windows is missing it says so and ends well.
# Usage: packaging/windows/test.sh [--no-build] [--pictures]      --pictures: copies what docs/windows.md shows
. "$(dirname "$0")/../../scripts/lib.sh"

here=$project_root/packaging/windows
out=$project_root/out/windows
program=$out/program
lines=$out/lines
wine=(env "LOCPATH=$out/locale" LC_ALL=zh_CN.UTF-8 /usr/lib/wine/wine64)
started=()

# Name in docs/images, what it is made of in out/windows, which one of those of that name.
chosen=(
  "windows-tool tool-versions 1"
  "windows-port-in-use tool-port-in-use 1"
  "windows-picture tour/*-picture 1"
  "windows-list-v1 tour/*-list 2"
  "windows-upload tour/*-upload-awaiting-return 1"
  "windows-serial-number tour/*-sn-success 1"
)

# --- what is needed ------------------------------------------------------------------------------------------

# A filled folder, or the archive of one beside the repository.
find_dependencies() {
  local folder archive=$project_root/../shared/windows-deps.tar.xz
  folder=$(windows_dependencies_folder)
  if ! has_windows_dependencies "$folder" && [ -e "$archive" ]; then
    "$here/build-dependencies.sh" --archive "$archive" "$folder"
  fi
  if ! has_windows_dependencies "$folder"; then
    say "no Windows test: there is no Qt for Windows in $folder (packaging/windows/build-dependencies.sh)"
    exit 0
  fi
  export CAMERA_WINDOWS_DEPS=$folder
}

# The programs with all that they need beside them, as on a Windows machine.
lay_out_programs() {
  local library plugin
  rm -rf "$program"
  mkdir -p "$program"
  cp "$project_root"/build/mingw/{app,demo,emulator}/*.exe "$CAMERA_WINDOWS_DEPS"/qt/bin/*.dll "$program"
  for plugin in platforms imageformats styles; do
    cp -r "$CAMERA_WINDOWS_DEPS/qt/plugins/$plugin" "$program"
  done
  for library in libgcc_s_seh-1 libstdc++-6 libwinpthread-1; do
    cp "$(x86_64-w64-mingw32-g++-posix "-print-file-name=$library.dll")" "$program"
  done
}

stop_windows() {
  /usr/lib/wine/wineserver64 --kill=15 2>/dev/null || true
  /usr/lib/wine/wineserver64 --wait
}

# A Windows of its own with Chinese settings: its code page is 936.
make_windows() {
  export WINEPREFIX=$out/prefix WINEDEBUG=-all WINEDLLOVERRIDES='mscoree,mshtml=;winemenubuilder.exe=d'
  rm -rf "$WINEPREFIX" "$lines"
  mkdir -p "$lines" "$out/locale"
  [ -d "$out/locale/zh_CN.UTF-8" ] || localedef -f UTF-8 -i zh_CN "$out/locale/zh_CN.UTF-8"
  DISPLAY= "${wine[@]}" wineboot --init >/dev/null 2>&1
  { printf '\xff\xfe' && iconv -f UTF-8 -t UTF-16LE "$here/wine-prefix.reg"; } >"$out/wine-prefix.reg"
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

# in_background LOG COMMAND...: its output goes into out/windows/LOG.
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

# press KEY...: to the window that has the focus.
press() {
  local key
  for key in "$@"; do
    xdotool key "$key"
    sleep 0.3
  done
}

# picture NAME: of all windows; the desktop around them is of one colour.
picture() {
  import -window root "$out/$1.png"
  convert "$out/$1.png" -trim +repage "$out/$1.png"
}

# --- the proofs ----------------------------------------------------------------------------------------------

# The product as it is, driven by its keyboard: a port that is in use, the heartbeat, the versions.
prove_tool() {
  say "the tool"
  in_background camera.log "$project_root/build/release/emulator/virtual-camera" --link "$lines/com5"
  wait_for camera.log "serving a camera"
  # A file for its diagnostic lines: a program without a console writes them there.
  in_background tool.log "${wine[@]}" "$program/shelf-camera-tool.exe"
  wait_for tool.log 'init port: "COM5"'
  sleep 3
  picture tool-started
  press shift+Tab shift+Tab Down Tab Tab space
  wait_for tool.log 'IO Exception (16)'
  sleep 1
  picture tool-port-in-use
  press Return shift+Tab shift+Tab Up Tab Tab space
  wait_for tool.log '"COM5"    460800'
  press Tab Tab space
  wait_for tool.log 'hex str:AA5A110001'
  wait_for camera.log 'heartbeat'
  press Tab space
  sleep 3
  picture tool-versions
  wait_for camera.log 'read SDK version'
}

# tour_windows FOLDER: in that folder of drive C, into which the pictures are downloaded.
tour_windows() {
  local folder=$WINEPREFIX/drive_c/$1
  rm -rf "$folder"
  mkdir -p "$folder"
  cd "$folder"
  timeout --kill-after=10 240 "${wine[@]}" "$program/shelf-camera-demo.exe" --tour "C:\\$1" \
    --camera-port COM6 --tool-port COM12 >"$out/tour.log" 2>"$out/tour-debug.log" </dev/null
}

# The tour of all windows; the files that it uploads are in a folder with a Chinese name. Some commands wait 50 ms for
# their answer, which a machine under load may miss: the tour is taken twice at most, and says so.
prove_tour() {
  say "the tour, COM12 to COM6"
  in_background line.log "$here/portpair.py" "$lines/com12" "$lines/com6"
  wait_for line.log joined
  local attempt code=1
  for attempt in 1 2; do
    code=0
    (tour_windows 巡检) || code=$?
    cat "$out/tour.log" "$out/tour-debug.log" | grep '^tour'
    [ "$code" -ne 0 ] || break
    say "attempt $attempt of the tour ended with code $code"
  done
  [ "$code" -eq 0 ] || fail "the tour failed"
  # The adapter's name, which comes in this Windows's code page from a program without its manifest.
  wait_for tour.log 'port COM5 USB 转串口适配器 (COM5)'
  rm -rf "$out/tour"
  cp -r "$WINEPREFIX/drive_c/巡检" "$out/tour"
}

# The virtual camera's program on a port; a Linux program at the other end asks for a heartbeat.
prove_camera() {
  say "the virtual camera on COM6"
  in_background windows-camera.log "${wine[@]}" "$program/virtual-camera.exe" --device COM6
  wait_for windows-camera.log "on COM6"
  "$here/heartbeat.py" "$lines/com12"
  wait_for windows-camera.log heartbeat
}

copy_pictures() {
  local entry name source number files
  for entry in "${chosen[@]}"; do
    read -r name source number <<<"$entry"
    mapfile -t files < <(compgen -G "$out/$source.png" | grep -v -e '-json-' | sort)
    cp "${files[number - 1]}" "$project_root/docs/images/$name.png"
  done
  say "${#chosen[@]} pictures in docs/images"
}

prove() {
  mkdir -p "$out"
  make_windows
  prove_tool
  stop_windows
  prove_tour
  prove_camera
}

main() {
  find_dependencies
  ensure_packages "${windows_build_packages[@]}" "${build_packages[@]}" wine64 xvfb xauth xdotool imagemagick locales \
    fonts-noto-cjk python3
  use_utf8_locale
  if [[ " $* " != *" --no-build "* ]]; then
    configure_and_build mingw -DCAMERA_WARNINGS_AS_ERRORS=ON
    configure_and_build release --target virtual-camera
  fi
  local start=$SECONDS
  lay_out_programs
  xvfb-run --auto-servernum --server-args='-screen 0 1280x1024x24' "$0" --prove
  say "the Windows programs work under Wine, proven in $((SECONDS - start)) s; pictures in $out"
  if [[ " $* " == *" --pictures "* ]]; then
    copy_pictures
  fi
}

if [ "${1:-}" = --prove ]; then # inside the virtual display
  trap clean_up EXIT
  prove
else
  main "$@"
fi
