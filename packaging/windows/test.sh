#!/usr/bin/env bash
# Builds the Windows programs and proves them under Wine, without a display: the tool itself with a virtual camera
# behind COM5, shelf-camera at the same camera, the tour of all windows and the tests of turns between COM12 and COM6,
# the virtual camera on COM6, a lesson without ports. Its log, pictures and files are left in out/windows. Where Qt for
# Windows is missing it says so and ends well.
# Usage: packaging/windows/test.sh [--build | --no-build] [--pictures]      --build: runs nothing
#        --pictures: copies what docs/windows.md shows
. "$(dirname "$0")/../../scripts/lib.sh"

out=$project_root/out/windows
. "$project_root/packaging/windows/wine.sh"

# Name in docs/images, what it is made of in out/windows, which one of those of that name.
chosen=(
  "windows-tool tool-versions 1"
  "windows-port-in-use tool-port-in-use 1"
  "windows-picture tour/*-picture 1"
  "windows-list-v1 tour/*-list 2"
  "windows-upload tour/*-upload-awaiting-return 1"
  "windows-serial-number tour/*-sn-success 1"
)

# --- running -------------------------------------------------------------------------------------------------

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
  in_background camera.log "$project_root/build/$(optimised_preset)/emulator/virtual-camera" --link "$lines/com5"
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
  press Tab Tab Tab space # the link is open: no control has the focus
  wait_for tool.log 'hex str:AA5A110001'
  wait_for camera.log 'heartbeat'
  press Tab space
  sleep 3
  picture tool-versions
  wait_for camera.log 'read SDK version'
}

# A check-up with a report whose text has fonts. A late answer of a busy machine is a failed reading: three at most.
prove_command_line() {
  say "shelf-camera on COM5"
  local attempt code
  for attempt in 1 2 3; do
    code=0
    (cd "$out" && timeout --kill-after=10 120 "${wine[@]}" "$program/shelf-camera.exe" -p COM5 --json check -o report.pdf) \
      >"$out/check.log" 2>"$out/check-debug.log" </dev/null || code=$?
    [ "$code" -ne 0 ] || break
    say "attempt $attempt of the check-up ended with code $code"
  done
  [ "$code" -eq 0 ] || fail "shelf-camera check"
  wait_for check.log '"serialNumber":{"value":"SHELF'
  grep --quiet --text /FontName "$out/report.pdf" || fail "the report has no fonts"
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
  in_background line.log "$windows_folder/portpair.py" "$lines/com12" "$lines/com6"
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

# One command at a time reaches the camera, whatever is pressed meanwhile.
prove_turns() {
  say "turns, COM12 to COM6"
  local code=0
  timeout --kill-after=10 400 "${wine[@]}" "$program/turns_test.exe" --ports COM6 COM12 \
    >"$out/turns.log" 2>"$out/turns-debug.log" </dev/null || code=$?
  grep --text -E '^(PASS|FAIL|QINFO|Totals)' "$out/turns.log" || true
  [ "$code" -eq 0 ] || fail "$code of the turns' tests failed"
}

# The virtual camera's program on a port; a Linux program at the other end asks for a heartbeat.
prove_camera() {
  say "the virtual camera on COM6"
  in_background windows-camera.log "${wine[@]}" "$program/virtual-camera.exe" --device COM6
  wait_for windows-camera.log "on COM6"
  "$windows_folder/heartbeat.py" "$lines/com12"
  wait_for windows-camera.log heartbeat
}

# A lesson in the tool and a virtual camera of one process, without a port.
prove_practice() {
  say "practice"
  in_background practice.log "${wine[@]}" "$program/shelf-camera-practice.exe" --lesson 1
  wait_for practice.log 'init port: "练习摄像头"'
  sleep 3
  press space
  wait_for practice.log '"练习摄像头"    460800'
  press Tab Tab Tab space # the heartbeat
  wait_for practice.log 'hex str:AA5A110001'
  sleep 1
  picture practice
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
  prove_command_line
  prove_tour
  prove_turns
  prove_camera
  stop_windows
  prove_practice
}

main() {
  find_dependencies
  ensure_packages "${windows_build_packages[@]}" "${build_packages[@]}" "${wine_packages[@]}" xvfb xauth xdotool \
    imagemagick fonts-noto-cjk python3
  use_utf8_locale
  if [[ " $* " != *" --no-build "* ]]; then
    configure_and_build mingw -DCAMERA_WARNINGS_AS_ERRORS=ON -DCAMERA_WINDOWS_TESTS=ON
    configure_and_build "$(optimised_preset)" --target virtual-camera
  fi
  [[ " $* " != *" --build "* ]] || return 0
  local start=$SECONDS
  lay_out_programs app cli demo emulator practice tests/windows
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
