#!/usr/bin/env bash
# Builds everything with warnings as errors and runs all tests.
# Usage: scripts/test.sh [ctest option]...     e.g. scripts/test.sh -R Heartbeat
. "$(dirname "$0")/lib.sh"

ensure_packages "${build_packages[@]}" "${test_packages[@]}"
use_utf8_locale
options=(-DCAMERA_WARNINGS_AS_ERRORS=ON)
if [ -n "${CI:-}" ]; then
  options+=(-DCMAKE_CXX_FLAGS_DEBUG=-g0) # nobody debugs there, and it builds faster
fi
configure_and_build dev "${options[@]}"
run_tests dev "$@"
