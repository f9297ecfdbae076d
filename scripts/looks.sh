#!/usr/bin/env bash
# Pictures of every window in every look, at 100, 125, 150 and 200 %, into out/looks or FOLDER, and a test of each.
# Usage: scripts/looks.sh [FOLDER]
. "$(dirname "$0")/lib.sh"

ensure_packages "${build_packages[@]}" "${test_packages[@]}"
use_utf8_locale
configure_and_build dev --target looks_tests
folder=$(realpath -m "${1:-$project_root/out/looks}")
rm -rf "$folder"
failed=
for scale in 1 1.25 1.5 2; do
  CAMERA_LOOKS=$folder QT_SCALE_FACTOR=$scale QT_QPA_PLATFORM=offscreen \
    "$project_root/build/dev/tests/looks/looks_tests" --gtest_brief=1 || failed="$failed $scale"
done
[ -z "$failed" ] || fail "at scale$failed"
say "the pictures are in $folder"
