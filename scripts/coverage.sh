#!/usr/bin/env bash
# Runs all tests and reports which lines of the product they ran: pages in out/coverage, and in docs/coverage.md a
# table for each folder and what of link/ no test reached. tests/coverage/unreached.txt says why that is so; without a
# reason it is an error.
# Usage: scripts/coverage.sh [--no-run]     --no-run: from what the last run left
. "$(dirname "$0")/lib.sh"

pages=$project_root/out/coverage
page=$project_root/docs/coverage.md

write_page() {
  local reached=yes
  {
    cat <<'TEXT'
# Coverage

What of the product the tests run, written by

    scripts/coverage.sh

Every line of `link/` has to be run by a test, and every decision in it taken both ways; [mutations](mutations.md)
show that tests fail when such a line is wrong. A decision is an `if`, a loop or a case as gcovr finds them; those that
it cannot judge are left out. The demonstration is run by the tour, which is no part of these tests.

TEXT
    python3 scripts/coverage_report.py "$pages/coverage.json" tests/coverage/unreached.txt || reached=no
  } >"$page"
  say "written: $page"
  [ "$reached" = yes ] || fail "something of link/ is reached by no test: see $page"
}

main() {
  ensure_packages "${build_packages[@]}" "${test_packages[@]}" gcovr python3
  use_utf8_locale
  if [ "${1:-}" != --no-run ]; then
    configure_and_build coverage
    find "$project_root/build/coverage" -name '*.gcda' -delete # counts of earlier runs
    run_tests coverage
  fi
  mkdir -p "$pages"
  cd "$project_root"
  say "lines run by the tests (pages: $pages/index.html)"
  gcovr --root . --object-directory build/coverage --decisions --exclude-throw-branches \
    --exclude build/ --exclude tests/ --exclude bench/ --exclude fuzz/ --exclude out/ \
    --html-details "$pages/index.html" --json "$pages/coverage.json" --txt /dev/stdout
  write_page
}

main "$@"
