#!/usr/bin/env bash
# Draws shelf-camera-tool.svg in the sizes that desktops want: hicolor/ for Linux, and the icon file of the
# Windows program. What it makes is committed, so that building needs no drawing program; run it again after a
# change of the drawing.
# Usage: packaging/icons/make-icons.sh
. "$(dirname "$0")/../../scripts/lib.sh"

icon_folder=$project_root/packaging/icons
drawing=$icon_folder/shelf-camera-tool.svg
linux_sizes=(16 24 32 48 64 128 256)
windows_sizes=(16 24 32 48 256)

# icon_file SIZE: where the picture of this size stands.
icon_file() {
  printf '%s\n' "$icon_folder/hicolor/$1x$1/apps/shelf-camera-tool.png"
}

draw() {
  local size file
  rm -rf "$icon_folder/hicolor"
  for size in "${linux_sizes[@]}"; do
    file=$(icon_file "$size")
    mkdir -p "$(dirname "$file")"
    rsvg-convert --width "$size" --height "$size" --output "$file" "$drawing"
  done
}

# The largest is kept as a PNG inside, which Windows reads since Vista; the others as bitmaps.
pack() {
  local size arguments=()
  for size in "${windows_sizes[@]}"; do
    if [ "$size" -ge 256 ]; then
      arguments+=("--raw=$(icon_file "$size")")
    else
      arguments+=("$(icon_file "$size")")
    fi
  done
  icotool --create --output="$project_root/packaging/windows/shelf-camera-tool.ico" "${arguments[@]}"
}

main() {
  ensure_packages librsvg2-bin icoutils
  draw
  pack
  say "drawn in ${#linux_sizes[@]} sizes, ${#windows_sizes[@]} of them in the Windows icon"
}

main "$@"
