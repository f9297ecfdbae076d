#!/usr/bin/env bash
# Runs the fault matrix and writes docs/reliability.md: how each command ends under each fault. The page with times
# and log lines goes to out/fault-matrix/times.md. Takes five minutes.
# Usage: scripts/fault-matrix.sh
. "$(dirname "$0")/lib.sh"

ensure_packages "${build_packages[@]}" "${test_packages[@]}"
use_utf8_locale
configure_and_build dev
out=$project_root/out/fault-matrix
rm -rf "$out"
mkdir -p "$out"
export CAMERA_FAULT_REPORT=$out/times.md
run_tests dev -R FaultMatrix
# Runs no test; writes the pages from the rows that the processes left.
"$project_root/build/dev/tests/faults/fault_tests" --gtest_filter='-*'
cp "$out/endings.md" "$project_root/docs/reliability.md"
say "written: docs/reliability.md, $out/times.md"
