#!/usr/bin/env bash
# Runs simulated sessions of the tool; a failure prints its seed, this commit and the shortest scenario found.
# Usage: scripts/simulate.sh [option]...     e.g. --sessions 1000000, or --seed 84 --window --pace 2; --help lists them
. "$(dirname "$0")/lib.sh"

ensure_packages "${build_packages[@]}" "${test_packages[@]}"
use_utf8_locale
preset=dev
[ -z "${CI:-}" ] || preset=ci-tests
configure_and_build "$preset" --target simulate
commit=$(git -C "$project_root" rev-parse --short HEAD 2>/dev/null || true)
exec "$project_root/build/$preset/tests/simulation/simulate" --commit "$commit" "$@"
