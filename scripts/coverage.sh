#!/usr/bin/env bash
# Runs all tests and reports which lines of the product they ran: a table here, pages in out/coverage.
# Usage: scripts/coverage.sh
. "$(dirname "$0")/lib.sh"

ensure_packages "${build_packages[@]}" "${test_packages[@]}" gcovr
use_utf8_locale
configure_and_build coverage
find "$project_root/build/coverage" -name '*.gcda' -delete # counts of earlier runs
run_tests coverage

pages=$project_root/out/coverage
mkdir -p "$pages"
say "lines run by the tests (pages: $pages/index.html)"
cd "$project_root"
gcovr --root . --object-directory build/coverage \
  --exclude build/ --exclude tests/ --exclude bench/ --exclude-throw-branches \
  --html-details "$pages/index.html" --txt /dev/stdout
