#!/usr/bin/env bash
# Builds everything with warnings as errors and runs all tests; without options the workshop's script as well.
# Usage: scripts/test.sh [ctest option]...     e.g. scripts/test.sh -R Heartbeat
. "$(dirname "$0")/lib.sh"

ensure_packages "${build_packages[@]}" "${test_packages[@]}"
use_utf8_locale
preset=dev
if [ -n "${CI:-}" ]; then
  preset=$(optimised_preset) # what is packed is tested; the sanitizers test the debug build
fi
configure_and_build "$preset" -DCAMERA_WARNINGS_AS_ERRORS=ON
run_tests "$preset" "$@"
if [ $# -eq 0 ]; then
  say "preparing ten virtual cameras"
  "$project_root/tests/cli/prepare_test.sh" "$project_root/build/$preset"
fi
