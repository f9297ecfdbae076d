#!/usr/bin/env bash
# Layout by clang-format of every source, then clang-tidy over the product's sources, those changed last
# first, until all are done or the time is up. Any finding is a failure.
# Usage: scripts/static-checks.sh [--seconds N] [SOURCE]...     all sources and 1200 s if none are given
. "$(dirname "$0")/lib.sh"

check_layout() {
  local sources
  mapfile -t sources < <(project_files '*.h' '*.cpp')
  say "layout of ${#sources[@]} files"
  clang-format --dry-run --Werror "${sources[@]}"
}

# Product sources that are built here, the most recently changed first; tests are held to the compiler's warnings alone.
sources_to_check() {
  project_files '*.cpp' | grep -Ev '^(tests|bench|fuzz)/|_windows\.cpp$' | xargs -r -d '\n' ls -t
}

# The command of each source, and the headers generated from forms; nothing is compiled.
commands=$project_root/build/tidy
prepare_commands() {
  cmake --preset dev -B "$commands" --log-level=NOTICE
  ninja -C "$commands" -t targets all | sed -n 's/: phony$//p' | grep '_autogen$' |
    xargs ninja -C "$commands" >/dev/null
}

# check_with_tidy SECONDS SOURCE...: in batches of one file for every processor.
check_with_tidy() {
  local seconds=$1 batch=$(nproc) done=0 bad=0 start=$SECONDS
  shift
  say "clang-tidy over $# files, at most $seconds s"
  while [ $# -gt 0 ] && [ $((SECONDS - start)) -lt "$seconds" ]; do
    local now=("${@:1:batch}")
    shift ${#now[@]}
    # The tool's count of warnings that it was told not to show is noise.
    printf '%s\0' "${now[@]}" |
      xargs -0 -n 1 -P "$batch" clang-tidy -p "$commands" --quiet 2> >(grep -v 'warnings generated' >&2) ||
      bad=1
    done=$((done + ${#now[@]}))
  done
  say "clang-tidy: $done files checked in $((SECONDS - start)) s, $# left unchecked"
  return "$bad"
}

main() {
  local seconds=1200
  if [ "${1:-}" = --seconds ]; then
    seconds=${2:?--seconds needs a number}
    shift 2
  fi
  ensure_packages "${build_packages[@]}" "${test_packages[@]}" clang-format clang-tidy
  use_utf8_locale
  cd "$project_root"
  local failed=0
  check_layout || failed=1
  prepare_commands
  local sources=("$@")
  if [ $# -eq 0 ]; then
    mapfile -t sources < <(sources_to_check)
  fi
  check_with_tidy "$seconds" "${sources[@]}" || failed=1
  [ "$failed" -eq 0 ] || fail "findings above"
  say "no findings"
}

main "$@"
