#!/usr/bin/env bash
# Breaks the tool on purpose, one line at a time, in a copy of the tree under out/mutations, and says which test
# notices. tests/mutations/mutations.txt lists the mutations; a run of all of them writes out/mutations/mutations.md.
# A mutation that does not apply any more, or does not compile, is an error, and so is one that no test notices.
# With --simulation the simulated sessions alone have to notice; 9 of 10 mutations are enough.
# Usage: scripts/mutate.sh [--simulation] [--list | NUMBER...]     all if no number is given; about 20 minutes
. "$(dirname "$0")/lib.sh"

list=$project_root/tests/mutations/mutations.txt
copy=$project_root/out/mutations/tree
build=$project_root/out/mutations/build
log=$project_root/out/mutations/log
page=$project_root/out/mutations/mutations.md

# Programs of tests, by their folder; asked in this order, the later ones only if none before noticed.
test_programs=(link/link_tests faults/virtual_fault_tests updates/update_link_tests pictures/pictures_emulated_tests
  turn/turn_tests app/app_camera_tests app/app_window_tests)
by_simulation=
flags=-g0
simulated_sessions=3000
shortening_seconds=200

words=() files=() expressions=()

# The list's blocks: what is wrong in words, the file, the expression for sed.
read_list() {
  local line block=()
  while IFS= read -r line || [ -n "$line" ]; do
    case $line in
      '#'*) continue ;;
      '') [ ${#block[@]} -eq 0 ] || fail "$list: a blank line inside a mutation: ${block[0]}" ;;
      *) block+=("$line") ;;
    esac
    if [ ${#block[@]} -eq 3 ]; then
      words+=("${block[0]}")
      files+=("${block[1]}")
      expressions+=("${block[2]}")
      block=()
    fi
  done <"$list"
  [ ${#block[@]} -eq 0 ] || fail "$list ends inside a mutation"
}

# The copy as it is in the checkout; files that are the same keep their times, so that little is built anew.
refresh_copy() {
  mkdir -p "$copy"
  local file
  while IFS= read -r file; do
    if ! cmp --silent "$project_root/$file" "$copy/$file"; then
      mkdir -p "$copy/$(dirname "$file")"
      cp "$project_root/$file" "$copy/$file"
    fi
  done < <(project_files '*')
}

# build_tests PROGRAM
build_tests() {
  nice cmake --build "$build" --target "$(basename "$1")" >"$log" 2>&1
}

prepare() {
  if command -v ccache >/dev/null; then
    export CMAKE_CXX_COMPILER_LAUNCHER=ccache
  fi
  refresh_copy
  cmake -S "$copy" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG="$flags" --log-level=NOTICE
  say "building and running ${test_programs[0]} as it is"
  build_tests "${test_programs[0]}" || show_log "it does not build"
  [ -z "$(noticed_by "${test_programs[0]}")" ] || show_log "it fails without any mutation"
}

show_log() {
  tail -n 40 "$log" >&2
  fail "$*"
}

# noticed_by_simulation: the seed that fails first, how many steps are left of its session, and the rule it breaks.
noticed_by_simulation() {
  local seed rule steps
  QT_QPA_PLATFORM=offscreen nice "$build/tests/simulation/simulate" --sessions "$simulated_sessions" --stop \
    --no-shrinking >"$log" 2>&1 && return
  seed=$(sed -n 's/^seed \([0-9]*\).*/\1/p' "$log" | head -n 1)
  rule=$(sed -n 's/^  \(O[0-9]: .*\)/\1/p' "$log" | head -n 1)
  if [ -z "$seed" ]; then
    echo "no session runs"
    return
  fi
  QT_QPA_PLATFORM=offscreen timeout "$shortening_seconds" nice "$build/tests/simulation/simulate" \
    --first "$seed" --sessions 1 >"$log" 2>&1 || true
  steps=$(sed -n 's/^  in \([0-9]*\) steps.*/\1/p' "$log")
  printf 'seed %s, %s steps, %s\n' "$seed" "${steps:-more}" "$rule"
}

# noticed_by PROGRAM: its tests that fail, and suites that end otherwise, one a line; of the folder's other programs
# nothing.
noticed_by() {
  if [ -n "$by_simulation" ]; then
    noticed_by_simulation
    return
  fi
  QT_QPA_PLATFORM=offscreen nice ctest --test-dir "$build/tests/$(dirname "$1")" --parallel "$(($(nproc) * 5))" \
    --exclude-regex '_NOT_BUILT$' --output-on-failure --no-tests=error >"$log" 2>&1 && return
  grep -q '^The following tests FAILED:$' "$log" || show_log "the tests did not run"
  {
    sed -n 's/^\[  FAILED  \] \([^ ,]*[.][^ ,]*\).*/\1/p' "$log"
    sed -n '/(Failed)$/!s/^\t *[0-9]* - \(.* (.*)\)$/\1/p' "$log"
  } | sort -u
}

# attempt NUMBER: prints what noticed mutation NUMBER; nothing if nothing did.
attempt() {
  local index=$(($1 - 1)) program tests
  local target=$copy/${files[$index]} original=$project_root/out/mutations/original
  [ -f "$target" ] || fail "mutation $1: no file ${files[$index]}"
  cp "$target" "$original"
  sed -i "${expressions[$index]}" "$target"
  if cmp --silent "$original" "$target"; then
    fail "mutation $1 (${words[$index]}) does not apply any more"
  fi
  for program in "${test_programs[@]}"; do
    build_tests "$program" || show_log "mutation $1 (${words[$index]}) does not compile"
    tests=$(noticed_by "$program")
    [ -z "$tests" ] || break
  done
  cp "$original" "$target"
  [ -z "$tests" ] || printf '%s\n' "$tests"
}

# The first tests by name, the others by number.
in_short() {
  awk '{ name[NR] = $0 }
    END {
      for (i = 1; i <= NR && i <= 2; ++i) printf "%s`%s`", (i > 1 ? ", " : ""), name[i]
      if (NR > 2) printf " and %d more", NR - 2
    }'
}

write_page() { # write_page ROWS
  {
    cat <<'TEXT'
# Mutations

Each row is one deliberate mistake, made in a copy of the tree, and what noticed it: tests, in the order of
`scripts/mutate.sh`, or a simulated session, shortened. `tests/mutations/mutations.txt` lists the mistakes. Written by

    scripts/mutate.sh                   # all of them
    scripts/mutate.sh --simulation      # by simulated sessions
    scripts/mutate.sh 7                 # one, without writing

| # | File | Mistake | Noticed by |
|---:|---|---|---|
TEXT
    cat "$1"
  } >"$page"
  say "written: $page"
}

main() {
  if [ "${1:-}" = --simulation ]; then
    by_simulation=1
    test_programs=(simulation/simulate)
    page=${page%.md}-simulation.md
    build+=-simulation
    flags="-g0 -O2 -D_GLIBCXX_ASSERTIONS"
    shift
  fi
  read_list
  local count=${#words[@]} number
  if [ "${1:-}" = --list ]; then
    for ((number = 1; number <= count; ++number)); do
      printf '%3d %s: %s\n' "$number" "${files[$((number - 1))]}" "${words[$((number - 1))]}"
    done
    return
  fi
  ensure_packages "${build_packages[@]}" "${test_packages[@]}"
  use_utf8_locale
  local numbers=("$@")
  if [ $# -eq 0 ]; then
    mapfile -t numbers < <(seq "$count")
  fi
  mkdir -p "$project_root/out/mutations"
  prepare
  local rows=$project_root/out/mutations/rows survivors=0 tests
  : >"$rows"
  for number in "${numbers[@]}"; do
    [ "$number" -ge 1 ] && [ "$number" -le "$count" ] || fail "there are mutations 1 to $count"
    tests=$(attempt "$number")
    if [ -z "$tests" ]; then
      survivors=$((survivors + 1))
      tests='**nothing**'
    else
      tests=$(in_short <<<"$tests")
    fi
    printf '| %d | `%s` | %s | %s |\n' "$number" "${files[$((number - 1))]}" "${words[$((number - 1))]}" "$tests" |
      tee -a "$rows"
  done
  if [ $# -eq 0 ]; then
    write_page "$rows"
  fi
  say "${#numbers[@]} mutations, $survivors not noticed"
  local allowed=0
  [ -z "$by_simulation" ] || allowed=$((${#numbers[@]} / 10))
  [ "$survivors" -le "$allowed" ] || fail "tests are missing"
}

main "$@"
