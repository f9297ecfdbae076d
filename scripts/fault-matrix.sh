#!/usr/bin/env bash
# Runs the fault matrix and writes docs/reliability.md: how each command ends under each fault. The page with times
# and log lines goes to out/fault-matrix/times.md. Takes seconds in virtual time; --real-time runs the same cells over
# pseudo-terminals with the real serial library, in five minutes.
# Usage: scripts/fault-matrix.sh [--real-time]
. "$(dirname "$0")/lib.sh"

case ${1:-} in
  '') program=virtual_fault_tests tests='^EveryCommand/FaultMatrix[.]' ;;
  --real-time) program=fault_tests tests='^RealTime[.]EveryCommand/FaultMatrix[.]' ;;
  *) fail "usage: scripts/fault-matrix.sh [--real-time]" ;;
esac

ensure_packages "${build_packages[@]}" "${test_packages[@]}"
use_utf8_locale
configure_and_build dev --target "$program"
out=$project_root/out/fault-matrix
rm -rf "$out"
mkdir -p "$out"
export CAMERA_FAULT_REPORT=$out/times.md
run_tests dev -R "$tests"
# A short test: the process writes the pages at its end, from the rows that all processes left.
"$project_root/build/dev/tests/faults/$program" --gtest_filter='FaultMatrixTable.*'
cp "$out/endings.md" "$project_root/docs/reliability.md"
say "written: docs/reliability.md, $out/times.md"
