#!/usr/bin/env bash
# Runs all tests and reports which lines of the product they ran, into out/coverage: a page for each source, and in
# coverage.md a table of the folders and the lines and decisions of link/ that no test reached. Each of those needs a
# reason in tests/coverage/unreached.txt, else the script fails. docs/how-good-it-is.md gets its figures by hand.
# Usage: scripts/coverage.sh [--no-run]     --no-run: from what the last run left
. "$(dirname "$0")/lib.sh"

pages=$project_root/out/coverage
page=$pages/coverage.md

write_page() {
  local reached=yes
  {
    cat <<'TEXT'
# Coverage

What of the product the tests run, written by

    scripts/coverage.sh

A test has to run every line of `link/` and take every decision in it both ways. A decision is an `if`, a loop or a
case as gcovr finds them; those that it cannot judge are left out. The tour runs the demonstration; it is not part of
these tests.

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
