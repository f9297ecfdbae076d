#!/usr/bin/env bash
# Builds the tool and starts it with a virtual camera attached: shelf-camera-demo. Without a display the
# demo takes its tour on a virtual one and leaves screenshots and the downloaded picture in out/tour.
# Usage: scripts/run.sh [argument for shelf-camera-demo]...
. "$(dirname "$0")/lib.sh"

main() {
  ensure_packages "${build_packages[@]}" fonts-noto-cjk qt6-translations-l10n
  use_utf8_locale
  local preset
  preset=$(optimised_preset)
  configure_and_build "$preset"
  local demo=$project_root/build/$preset/demo/shelf-camera-demo
  [ -x "$demo" ] || fail "the build made no $demo"
  if [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; then
    exec "$demo" "$@"
  fi
  local tour_folder=$project_root/out/tour
  take_tour "$demo" "$tour_folder" "$@"
  say "the tour left these files:"
  find "$tour_folder" -type f | sort
}

main "$@"
