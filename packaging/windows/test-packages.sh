#!/usr/bin/env bash
# Installs the Windows program silently under Wine, in a prefix of its own, compares what is installed with the
# portable ZIP, starts it from the start menu and from the ZIP's folder, installs it over an older version and uninstalls
# it. Shows that both wait for the program to be closed, that a downgrade is refused, that the start menu stays as the
# user has set it, that the program's folder comes into PATH only on demand, and that the pictures are left alone. At the
# end it tests the signatures (test-signatures.sh).
# Usage: packaging/windows/test-packages.sh [FOLDER]     FOLDER of the packages: out/packages if not given
. "$(dirname "${BASH_SOURCE[0]}")/../../scripts/lib.sh"

uninstall_key='HKCU\Software\Microsoft\Windows\CurrentVersion\Uninstall\shelf-camera-tool'
long_path=$(printf 'C:\\folder%03d;' $(seq 200))C:\\last
shortcuts_key='HKCU\Software\shelf-camera-tool\Shortcuts'

windows() {
  "$wine" "$@" 2>>"$work/wine.log"
}

# wait_for SECONDS COMMAND...: until it succeeds.
wait_for() {
  local end=$((SECONDS + $1))
  shift
  until "$@"; do
    [ "$SECONDS" -lt "$end" ] || return 1
    sleep 0.5
  done
}

# has_window [TITLE]: the X tools may show the Chinese half of a title as bytes: the other is enough.
has_window() {
  xwininfo -root -tree | grep --quiet --fixed-strings "${1:-Tessaly v($version)}"
}

has_no_window() {
  ! has_window "$@"
}

# working_folder: of the running program, as this system knows it.
working_folder() {
  local process
  for process in $(pgrep --full 'shelf-camera-tool[.]exe'); do
    if grep --quiet --null-data --fixed-strings "WINEPREFIX=$WINEPREFIX" "/proc/$process/environ" 2>/dev/null; then
      readlink "/proc/$process/cwd"
    fi
  done | sort -u
}

close_program() {
  windows taskkill /im shelf-camera-tool.exe >/dev/null
  wait_for 30 has_no_window || fail "the program does not close"
}

expect_code() {
  local wanted=$1 code=0
  shift
  "$@" || code=$?
  [ "$code" -eq "$wanted" ] || fail "code $code instead of $wanted: $*"
}

# install_silently [OPTION...]
install_silently() {
  say "installing silently $*"
  expect_code 0 windows "$setup" /S "$@"
  [ -d "$installed" ] || fail "there is no $installed"
  # All that the ZIP has, and the uninstaller.
  diff --recursive --brief --exclude=uninstall.exe "$work/zip/$name" "$installed" ||
    fail "installed and packed files differ"
  [ -f "$installed/uninstall.exe" ] || fail "there is no uninstaller"
  [ -s "$installed/user-guide.zh-CN.html" ] || fail "there is no user guide"
  [ -d "$pictures" ] || fail "there is no folder for pictures"
  windows reg query "$uninstall_key" | tr -d '\r' >"$work/registered"
  grep --quiet --word-regexp "DisplayVersion.*$version" "$work/registered" || fail "the system does not know the program"
  say "$(find "$installed" -type f | wc -l) files, $(du --bytes --summarize "$installed" | cut -f1) bytes"
}

# registered_version VERSION: the system takes the installed program for this version.
registered_version() {
  windows reg add "$uninstall_key" /v DisplayVersion /d "$1" /f >/dev/null
}

check_menu() {
  [ -f "$shortcut" ] || fail "there is no entry in the start menu"
  [ -f "$guide_shortcut" ] || fail "the user guide is not in the start menu"
  [ -f "$practice_shortcut" ] || fail "the practice is not in the start menu"
}

# The user has set one entry and deleted the other. Behind an uninstaller that knows nothing of this, too.
update_keeps_menu() {
  say "installing over an older version"
  printf 'set by the user' >>"$shortcut"
  cp "$shortcut" "$work/set.lnk"
  rm "$guide_shortcut"
  registered_version 0.0.1
  install_silently
  cmp "$shortcut" "$work/set.lnk" || fail "the entry in the start menu is not as the user has set it"
  [ ! -e "$guide_shortcut" ] || fail "an entry that the user has deleted is back"
  windows reg delete "$shortcuts_key" /f >/dev/null
  registered_version 0.0.1
  install_silently
  cmp "$shortcut" "$work/set.lnk" || fail "an update of the first version changes the start menu"
  check_menu
  say "the start menu is as the user has set it"
}

refuse_downgrade() {
  say "installing over a newer version"
  registered_version 99.0.0
  touch "$installed/newer.txt"
  expect_code 3 windows "$setup" /S
  windows "$setup" &
  wait_for 60 has_window " $version " || fail "no sentence comes"
  sleep 1
  import -window root "$screenshots/downgrade.png"
  windows taskkill /f /im "$(basename "$setup")" >/dev/null
  wait || true
  [ -f "$installed/newer.txt" ] && [ -f "$installed/shelf-camera-tool.exe" ] || fail "it touched the newer version"
  rm "$installed/newer.txt"
  registered_version "$version"
  say "refused; its sentence is in $screenshots/downgrade.png"
}

# user_path: PATH of the user, as the registry has it; it may have none.
user_path() {
  { windows reg query 'HKCU\Environment' /v Path || true; } | tr -d '\r' | sed -n 's/^ *Path  *REG_[A-Z_]*  *//p'
}

set_user_path() {
  windows reg add 'HKCU\Environment' /v Path /t REG_EXPAND_SZ /d "$1" /f >/dev/null
}

path_on_demand() {
  say "putting the program into PATH"
  local folder
  [[ $(user_path) != *shelf-camera-tool* ]] || fail "PATH holds the program without being asked: $(user_path)"
  set_user_path 'C:\other folder'
  install_silently /PATH
  folder=$(user_path)
  folder=${folder#'C:\other folder;'}
  [ "${folder#C:\\users\\*\\AppData\\}" = 'Local\Programs\shelf-camera-tool' ] || fail "PATH is $(user_path)"
  wineserver --wait
  [ "$(windows cmd /c 'shelf-camera --version' | tr -d '\r')" = "shelf-camera $version" ] ||
    fail "shelf-camera is not found"
  # Longer than a text of the installer, and than Wine takes from the registry for its programs.
  set_user_path "$long_path;$folder"
  install_silently # keeps the choice
  [ "$(user_path)" = "$long_path;$folder" ] || fail "an update changes PATH to $(user_path)"
}

start_from_menu() {
  say "starting it from the start menu"
  windows start /unix "$shortcut"
  wait_for 60 has_window || fail "no window comes"
  [ "$(working_folder)" = "$pictures" ] || fail "it works in $(working_folder), not in $pictures"
  import -window root "$screenshots/installed.png"
  say "it works in ${pictures##*/}; its window is in $screenshots/installed.png"
}

start_portable() {
  say "starting it from the ZIP's folder"
  [ "$(cd "$work/zip/$name" && windows ./shelf-camera.exe --version | tr -d '\r')" = "shelf-camera $version" ] ||
    fail "shelf-camera does not start"
  (cd "$work/zip/$name" && windows ./shelf-camera-tool.exe >"$work/portable.log") &
  wait_for 60 has_window || fail "no window comes"
  [ "$(working_folder)" = "$work/zip/$name" ] || fail "it works in $(working_folder)"
  close_program
  wait
  grep --quiet 'Application version:' "$work/portable.log" "$work/wine.log" || fail "it wrote no diagnostic lines"
}

uninstall_silently() {
  say "uninstalling silently"
  echo picture >"$pictures/33.jpg"
  echo note >"$installed/note.txt"
  expect_code 0 windows "$installed/uninstall.exe" /S
  wait_for 60 test ! -e "$installed/uninstall.exe" || fail "the uninstaller stays"
  wineserver --wait
  [ "$(ls "$installed")" = note.txt ] || fail "it left $(ls "$installed")"
  [ ! -e "$shortcut" ] && [ ! -e "$guide_shortcut" ] && [ ! -e "$practice_shortcut" ] || fail "it left entries in the start menu"
  [ "$(cat "$pictures/33.jpg")" = picture ] || fail "it touched the pictures"
  expect_code 1 windows reg query "$uninstall_key" >/dev/null
  [ "$(user_path)" = "$long_path" ] || fail "it left PATH as $(user_path)"
  rm -r "$installed"
  say "nothing is left but the pictures, and what the user had put there"
}

# On a display of its own.
main_inside() {
  work=$(mktemp -d)
  trap 'wineserver --kill || true; rm -rf "$work"' EXIT
  CAMERA_WINDOWS_DEPS=$(windows_dependencies_folder) # in the user's own folders
  export CAMERA_WINDOWS_DEPS
  # Wine lends a program the user's own folders: give it some of this test's.
  export HOME=$work/home WINEPREFIX=$work/prefix WINEARCH=win64 WINEDEBUG=-all
  export WINEDLLOVERRIDES='mscoree,mshtml,winemenubuilder.exe='
  mkdir "$HOME" "$work/zip"
  unzip -q "$folder/$name.zip" -d "$work/zip"
  windows wineboot --init
  windows reg add 'HKCU\Software\Wine\Fonts\Replacements' /v Tahoma /d 'Noto Sans CJK SC' /f >/dev/null
  wineserver --wait
  local data_folders=("$WINEPREFIX"/drive_c/users/*/AppData) user_folder
  user_folder=${data_folders[0]%/AppData}
  installed=$user_folder/AppData/Local/Programs/shelf-camera-tool
  shortcut="$user_folder/AppData/Roaming/Microsoft/Windows/Start Menu/Programs/摄像头测试.lnk"
  guide_shortcut=${shortcut%.lnk}使用手册.lnk
  practice_shortcut="${shortcut%/*}/练习 (虚拟摄像头).lnk"
  pictures=$(realpath "$user_folder/Pictures")/摄像头图片

  install_silently
  check_menu
  start_from_menu
  say "uninstalling while it runs"
  expect_code 0 windows "$installed/uninstall.exe" /S
  sleep 5
  [ -f "$installed/shelf-camera-tool.exe" ] || fail "the uninstaller took a program that runs"
  expect_code 2 windows "$setup" /S
  close_program
  update_keeps_menu
  refuse_downgrade
  path_on_demand
  uninstall_silently
  start_portable
  "${BASH_SOURCE[0]%/*}/test-signatures.sh"
}

main() {
  folder=$(realpath "${1:-$project_root/out/packages}")
  local zip=("$folder"/shelf-camera-tool-*-windows-x64.zip)
  [ -f "${zip[0]}" ] || fail "no ZIP in $folder; scripts/package.sh makes it"
  name=$(basename "${zip[0]}" .zip)
  version=${name#shelf-camera-tool-}
  version=${version%-windows-x64}
  setup=$folder/$name-setup.exe
  screenshots=$project_root/out/windows-packages
  if [ -z "${SHELF_CAMERA_TEST_DISPLAY:-}" ]; then
    ensure_packages wine wine64 xvfb xauth x11-utils imagemagick unzip procps fonts-noto-cjk
    use_utf8_locale
    SHELF_CAMERA_TEST_DISPLAY=1 exec xvfb-run --auto-servernum --server-args='-screen 0 1280x1024x24' \
      "${BASH_SOURCE[0]}" "$folder"
  fi
  wine=/usr/lib/wine/wine64
  mkdir -p "$screenshots"
  (cd "$folder" && sha256sum --check --quiet --ignore-missing SHA256SUMS) || fail "the sums are wrong"
  "${BASH_SOURCE[0]%/*}/../sbom/test.sh" "${zip[0]}" "$setup"
  main_inside
  say "the Windows packages install, start and go"
}

main "$@"
