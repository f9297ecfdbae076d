#!/usr/bin/env bash
# Takes the tour and copies the pictures that the documents show into docs/images, under names that stay the
# same when the tour grows. Look at them before they are committed.
# Usage: scripts/screenshots.sh [path of a built shelf-camera-demo]     without a path it builds one
. "$(dirname "$0")/lib.sh"

image_folder=$project_root/docs/images
# The window shows where the files of its uploads are: the same path for everybody who makes the pictures.
tour_folder=/var/tmp/camera-files

# Name in docs/images, name in the tour, which one of those of that name.
chosen=(
  "start start 1"
  "main-window picture 1"
  "versions versions 1"
  "json-version json-version 1"
  "camera-settings camera-settings 1"
  "gyro gyro 1"
  "reboot-question reboot-question 1"
  "door door 1"
  "about about 1"
  "finder finder 1"
  "checkup checkup 1"
  "reopen reopen 1"
  "line-record line-record 1"
  "list list 1"
  "list-v1 list 2"
  "list-picture-taken list-picture-taken 1"
  "list-downloading list-downloading 1"
  "viewer list-view 1"
  "viewer-zoomed list-view-zoomed 1"
  "sn-idle sn-idle 1"
  "sn-counting sn-counting 1"
  "sn-success sn-success 1"
  "heater-counting heater-counting 1"
  "heater-success heater-success 1"
  "heater-failure heater-failure 1"
  "compression compression-success 1"
  "capture-angles capture-angles 1"
  "orientation orientation 1"
  "upload-sending upload-sending 1"
  "upload-awaiting-return upload-awaiting-return 1"
  "upload-result upload-result 1"
  "upload-stop-question upload-stop-question 1"
  "file-drop file-drop 1"
  "file-facts file-facts 1"
)

# tour_picture NAME NUMBER: the file of the tour's NUMBERth screenshot of this name.
tour_picture() {
  local file found=0
  for file in "$tour_folder"/[0-9]*-"$1".png; do
    # The pattern also matches longer names that end the same way: compare what follows the number.
    [ "$(basename "$file" | sed 's/^[0-9]*-//')" = "$1.png" ] || continue
    found=$((found + 1))
    if [ "$found" -eq "$2" ]; then
      printf '%s\n' "$file"
      return
    fi
  done
  fail "the tour has no picture $2 named $1"
}

copy_chosen() {
  local name source number file
  for entry in "${chosen[@]}"; do
    read -r name source number <<<"$entry"
    file=$(tour_picture "$source" "$number")
    cp "$file" "$image_folder/$name.png"
  done
  say "${#chosen[@]} pictures in $image_folder"
}

# Pictures of the window in other styles: name, dark or plain, scale.
styles=(
  "dark-style dark 1"
  "double-size plain 2"
)

take_styles() {
  local entry name style scale options
  for entry in "${styles[@]}"; do
    read -r name style scale <<<"$entry"
    options=(--picture "$image_folder/$name.png")
    [ "$style" = plain ] || options+=("--$style")
    env -u QT_QPA_PLATFORM -u WAYLAND_DISPLAY QT_SCALE_FACTOR="$scale" xvfb-run --auto-servernum \
      --server-args='-screen 0 2560x1440x24' "$1" "${options[@]}" </dev/null >/dev/null
  done
}

# Both windows of the practice on one screen: name, lesson, scale.
lessons=(
  "practice 1 1"
)

take_lessons() {
  local entry name lesson scale
  for entry in "${lessons[@]}"; do
    read -r name lesson scale <<<"$entry"
    env -u QT_QPA_PLATFORM -u WAYLAND_DISPLAY QT_SCALE_FACTOR="$scale" xvfb-run --auto-servernum \
      --server-args='-screen 0 1440x900x24' sh -c '"$1" --lesson "$2" >/dev/null 2>&1 & sleep 4
        import -window root "$3" && convert "$3" -trim +repage "$3"; kill $!' \
      take "$1" "$lesson" "$image_folder/$name.png" </dev/null
  done
}

main() {
  use_utf8_locale
  local demo=${1:-}
  if [ -z "$demo" ]; then
    ensure_packages "${build_packages[@]}" fonts-noto-cjk qt6-translations-l10n imagemagick
    configure_and_build release
    demo=$project_root/build/release/demo/shelf-camera-demo
  fi
  take_tour "$(realpath "$demo")" "$tour_folder"
  # Those of the Windows programs are made by packaging/windows/test.sh.
  find "$image_folder" -name '*.png' ! -name 'windows-*' -delete
  copy_chosen
  take_styles "$(realpath "$demo")"
  take_lessons "$(realpath "$(dirname "$demo")/../practice/shelf-camera-practice")"
  rm -rf "$tour_folder"
}

main "$@"
