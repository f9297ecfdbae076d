#!/usr/bin/env bash
# Runs every command on bad lines, with bit errors at rates from 1e-7 to 1e-3 and on the lines of virtual-camera --line,
# in virtual time: success, failure, wrong value, and what the mark of the line's quality says. Writes
# out/survival/survival.md.
# Usage: scripts/survival.sh [RUNS]     runs of each command on each line, 1000 if not given
. "$(dirname "$0")/lib.sh"

runs=${1:-1000}
[[ $runs =~ ^[1-9][0-9]*$ ]] || fail "usage: scripts/survival.sh [RUNS]"
ensure_packages "${build_packages[@]}" "${test_packages[@]}"
use_utf8_locale
configure_and_build dev --target virtual_fault_tests
out=$project_root/out/survival
mkdir -p "$out"
CAMERA_SURVIVAL_REPORT=$out/survival.md CAMERA_SURVIVAL_RUNS=$runs nice \
  "$project_root/build/dev/tests/faults/virtual_fault_tests" --gtest_filter='Survival.PageNamesCommandsAndSums'
say "written: $out/survival.md"
