#!/usr/bin/env bash
# Builds the tool and starts it with a virtual camera attached: shelf-camera-demo. Without a display the
# demo takes its tour on a virtual one and leaves screenshots and the downloaded picture in out/tour.
# Usage: scripts/run.sh [argument for shelf-camera-demo]...
. "$(dirname "$0")/lib.sh"

tour_folder=$project_root/out/tour
tour_limit_s=300

# Takes the tour in its own folder: the tool downloads pictures into its working directory.
take_tour() {
  local demo=$1
  shift
  rm -rf "$tour_folder"
  mkdir -p "$tour_folder"
  say "no display: taking the tour on a virtual one"
  (
    cd "$tour_folder" || exit
    env -u QT_QPA_PLATFORM -u WAYLAND_DISPLAY xvfb-run --auto-servernum \
      --server-args='-screen 0 1280x1024x24' \
      timeout --kill-after=10 "$tour_limit_s" "$demo" --tour "$tour_folder" "$@"
  ) </dev/null || fail "the tour ended with code $?"
  compgen -G "$tour_folder/*.png" >/dev/null || fail "the tour left no screenshots in $tour_folder"
  say "the tour left these files:"
  find "$tour_folder" -type f | sort
}

main() {
  ensure_packages "${build_packages[@]}" fonts-noto-cjk
  use_utf8_locale
  configure_and_build release
  local demo=$project_root/build/release/demo/shelf-camera-demo
  [ -x "$demo" ] || fail "the build made no $demo"
  if [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; then
    exec "$demo" "$@"
  fi
  ensure_packages xvfb xauth
  take_tour "$demo" "$@"
}

main "$@"
