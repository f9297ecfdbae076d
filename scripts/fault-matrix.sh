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
# A short test: the process writes the pages at its end, from the rows that all processes left.
"$project_root/build/dev/tests/faults/fault_tests" --gtest_filter='FaultMatrixTable.*'
cp "$out/endings.md" "$project_root/docs/reliability.md"
say "written: docs/reliability.md, $out/times.md"
