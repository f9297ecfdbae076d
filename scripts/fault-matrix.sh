#!/usr/bin/env bash
# Runs the fault matrix and writes its page, docs/reliability.md, from what was seen. Takes five minutes.
# Usage: scripts/fault-matrix.sh
. "$(dirname "$0")/lib.sh"

ensure_packages "${build_packages[@]}" "${test_packages[@]}"
use_utf8_locale
configure_and_build dev
out=$project_root/out/fault-matrix
rm -rf "$out"
mkdir -p "$out"
export CAMERA_FAULT_REPORT=$out/reliability.md
run_tests dev -R FaultMatrix
# No test: the page is written from the rows that the processes left.
"$project_root/build/dev/tests/faults/fault_tests" --gtest_filter='-*'
cp "$CAMERA_FAULT_REPORT" "$project_root/docs/reliability.md"
say "docs/reliability.md written"
