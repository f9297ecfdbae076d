#!/usr/bin/env bash
# Builds everything with warnings as errors and runs all tests; without options the workshop's script as well.
# Usage: scripts/test.sh [ctest option...]     e.g. scripts/test.sh -R Heartbeat
#        scripts/test.sh --build-programs | --build-tests     for .ci/run: builds a part, runs nothing
. "$(dirname "$0")/lib.sh"

ensure_packages "${build_packages[@]}" "${test_packages[@]}"
use_utf8_locale
preset=dev
tests=dev
if [ -n "${CI:-}" ]; then
  preset=$(optimised_preset) # what is packed is tested; the sanitizers test the debug build
  tests=ci-tests
  ensure_packages "${clang_packages[@]}"
fi
if [ "${1:-}" != --build-tests ]; then
  configure_and_build "$preset" -DCAMERA_WARNINGS_AS_ERRORS=ON
fi
[ "${1:-}" != --build-programs ] || exit 0
if [ "$tests" != "$preset" ]; then
  configure_and_build "$tests" -DCAMERA_WARNINGS_AS_ERRORS=ON
fi
[ "${1:-}" != --build-tests ] || exit 0
run_tests "$tests" "$@"
if [ $# -eq 0 ]; then
  say "preparing ten virtual cameras"
  "$project_root/tests/cli/prepare_test.sh" "$project_root/build/$preset"
fi
