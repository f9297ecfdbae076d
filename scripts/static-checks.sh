#!/usr/bin/env bash
# Layout by clang-format of every source, then clang-tidy over the product's sources. Any finding is a failure.
# Usage: scripts/static-checks.sh [--all | SOURCE...]     sources that the last commits touched if not given
. "$(dirname "$0")/lib.sh"

check_layout() {
  local sources
  mapfile -t sources < <(project_files '*.h' '*.cpp')
  say "layout of ${#sources[@]} files"
  clang-format --dry-run --Werror "${sources[@]}"
}

# Product sources that are built here; tests are held to the compiler's warnings alone.
all_sources() {
  project_files '*.cpp' | grep -Ev '^(tests|bench|fuzz)/|_(windows|none)\.cpp$'
}

# Files that the last commits touched, and those that are not committed. Code 1: the history is not all there.
commits=20
touched_files() {
  git ls-files --error-unmatch CMakeLists.txt >/dev/null 2>&1 || return 1
  [ "$(git rev-parse --is-shallow-repository)" = false ] || return 1
  {
    git log -"$commits" --name-only --format=
    git diff --name-only HEAD
    git ls-files --others --exclude-standard
  } | sort -u
}

# including_sources: reads touched files; prints the sources among them, and for a header the source of its name, else
# one that includes it.
including_sources() {
  local file
  while read -r file; do
    case $file in
      *.cpp) printf '%s\n' "$file" ;;
      *.h)
        if [ -f "${file%.h}.cpp" ]; then
          printf '%s\n' "${file%.h}.cpp"
        else
          git grep --files-with-matches --fixed-strings "\"$file\"" -- '*.cpp' | grep -m 1 -Ev '^(tests|bench|fuzz)/|_(windows|none)\.cpp$' || true
        fi
        ;;
    esac
  done
}

touched_sources() {
  local files
  if files=$(touched_files); then
    comm -12 <(all_sources | sort -u) <(including_sources <<<"$files" | sort -u)
  else
    all_sources
  fi
}

# The command of each source, and the headers generated from forms; nothing is compiled.
commands=$project_root/build/tidy
prepare_commands() {
  cmake --preset dev -B "$commands" --log-level=NOTICE -DBUILD_TESTING=OFF -DCAMERA_BENCHMARKS=OFF
  # As the build does it; its targets for this would compile the libraries first.
  find "$commands" -name AutogenInfo.json -exec cmake -E cmake_autogen '{}' Debug ';' >/dev/null
}

# Findings in the project's own files count, whichever of them is checked; generated files lie deeper in the build folder.
project_sources="^$project_root/[a-z]+/([a-z]+/)?[^/]*\\.(h|cpp)\$"

# tidy FOLDER SOURCE...: with the commands in FOLDER. run-clang-tidy takes expressions that a source's path has to match.
tidy() {
  local folder=$1
  shift
  printf '%s\n' "$@" | sed 's/[.+]/\\&/g; s#.*#^&$#' |
    xargs -d '\n' run-clang-tidy -p "$folder" -quiet -j "$(nproc)" -header-filter "$project_sources" 2>&1 |
    sed 's#\x1b\[[0-9;]*m##g'
}

# without_noise: the tool's list of commands, and its count of warnings that it was told not to show.
without_noise() {
  grep -Ev '^(clang-tidy[^ ]* .*|[0-9]+ warnings? generated.*|)$' || true
}

# suspect_sources: reads what the tool said of units; prints the sources of those with a finding, or all if it names
# none.
suspect_sources() {
  local suspects
  mapfile -t suspects < <(awk '/^clang-tidy/ { unit = $NF } /: (error|warning): / { print unit }' | sort -u)
  [ ${#suspects[@]} -gt 0 ] || suspects=("$units"/unit*.cpp)
  sed -n 's/^#include "\(.*\)" .*/\1/p' "${suspects[@]}"
}

# check_with_tidy SOURCE...: several sources at once, as reading headers and looking through them takes most of the time.
# Where that has a finding, it is looked for source by source: local names of two sources may meet in a unit.
units=$project_root/build/tidy-units
check_with_tidy() {
  local start=$SECONDS bad=0 sources unknown log=$commands/units.log
  say "clang-tidy over $# files"
  [ $# -gt 0 ] || return 0
  mapfile -t sources < <(realpath "$@")
  unknown=$(printf '%s\n' "${sources[@]}" | python3 scripts/tidy_units.py "$commands" "$units")
  [ -z "$unknown" ] || fail "not built here: $unknown"
  if ! tidy "$units" "$units"/unit*.cpp >"$log"; then
    mapfile -t sources < <(suspect_sources <"$log")
    say "clang-tidy over ${#sources[@]} of these files, one by one"
    tidy "$commands" "${sources[@]}" | without_noise || bad=1
  fi
  say "clang-tidy: $# files checked in $((SECONDS - start)) s"
  return "$bad"
}

main() {
  ensure_packages "${build_packages[@]}" "${check_packages[@]}"
  use_utf8_locale
  cd "$project_root"
  local failed=0 sources
  check_layout || failed=1
  prepare_commands
  case ${1:-} in
    --all) mapfile -t sources < <(all_sources) ;;
    "") mapfile -t sources < <(touched_sources) ;;
    *) sources=("$@") ;;
  esac
  check_with_tidy "${sources[@]}" || failed=1
  [ "$failed" -eq 0 ] || fail "findings above"
  say "no findings"
}

main "$@"
