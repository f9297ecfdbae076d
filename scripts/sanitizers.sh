#!/usr/bin/env bash
# All tests under the address and undefined-behaviour sanitizers, then those labelled "threads" under the
# thread sanitizer.
# Usage: scripts/sanitizers.sh [--build] [asan|tsan]...     both if none is given; --build: runs no tests
. "$(dirname "$0")/lib.sh"

# The thread sanitizer's memory layout collides with strongly randomised addresses; where the system lets a
# process do without randomisation, the tests run so.
without_randomisation=(setarch --addr-no-randomize)

check() {
  case $1 in
    asan | tsan) configure_and_build "$1" ;;
    *) fail "no such sanitizer: $1 (asan, tsan)" ;;
  esac
  [ "$build_only" = no ] || return 0
  case $1 in
    asan)
      # Two users of the line take turns for minutes; what they call is watched in the other tests as well.
      run_tests asan ${CI:+--label-exclude "^turn$"}
      ;;
    tsan)
      if "${without_randomisation[@]}" true 2>/dev/null; then
        test_launcher=("${without_randomisation[@]}")
      fi
      run_tests tsan
      ;;
  esac
}

ensure_packages "${build_packages[@]}" "${test_packages[@]}" "${clang_packages[@]}"
use_utf8_locale
build_only=no
if [ "${1:-}" = --build ]; then
  build_only=yes
  shift
fi
if [ $# -eq 0 ]; then
  set -- asan tsan
fi
for sanitizer in "$@"; do
  check "$sanitizer"
done
