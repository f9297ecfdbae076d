#!/usr/bin/env bash
# Runs all tests and reports which lines of the product they ran: pages in out/coverage, a table for each folder and
# the lines of link/ that no test ran in docs/coverage.md.
# Usage: scripts/coverage.sh [--no-run]     --no-run: from what the last run left
. "$(dirname "$0")/lib.sh"

pages=$project_root/out/coverage
page=$project_root/docs/coverage.md
# Why a line of link/ is not run: "FILE:TEXT OF THE LINE<tab>reason"; nothing else may be unrun.
reasons=$project_root/tests/coverage/unreached.txt
folders=(link link/protocol borrow pictures updates dialogs app emulator demo)

report() {
  gcovr --root . --object-directory build/coverage \
    --exclude build/ --exclude tests/ --exclude bench/ --exclude fuzz/ --exclude-throw-branches \
    --exclude-unreachable-branches "$@"
}

# folder_row FOLDER: its line of the table, from the JSON summary (files directly in the folder).
folder_rows() {
  python3 - "$pages/summary.json" "${folders[@]}" <<'PYTHON'
import json, os, sys
files = json.load(open(sys.argv[1]))["files"]
def row(name, chosen):
    count = lambda key: sum(each[key] for each in chosen)
    lines, run = count("line_total"), count("line_covered")
    branches, taken = count("branch_total"), count("branch_covered")
    share = lambda part, whole: "%.1f %%" % (100 * part / whole) if whole else "-"
    print(f"| {name} | {len(chosen)} | {lines} | {lines - run} | {share(run, lines)} | {share(taken, branches)} |")
for folder in sys.argv[2:]:
    chosen = [each for each in files if os.path.dirname(each["filename"]) == folder]
    if chosen:
        row(f"`{folder}/`", chosen)
row("all", files)
PYTHON
}

# Lines of link/ that no test runs: "FILE:NUMBER:TEXT".
unrun_link_lines() {
  python3 - "$pages/coverage.json" <<'PYTHON'
import json, sys
for file in json.load(open(sys.argv[1]))["files"]:
    name = file["file"]
    if not name.startswith("link/"):
        continue
    text = open(name).read().splitlines()
    for line in sorted({each["line_number"] for each in file["lines"] if each["count"] == 0}):
        if any(each["line_number"] == line and each["count"] > 0 for each in file["lines"]):
            continue  # run as another instance of the same template
        print(f"{name}:{line}:{text[line - 1].strip()}")
PYTHON
}

write_page() {
  local unexplained=0 file number text reason
  {
    cat <<'TEXT'
# Coverage

Which lines of the product the tests run, written by

    scripts/coverage.sh

Every line of `link/` has to be run by a test; [mutations](mutations.md) shows that the tests would fail without it.
Branches that only an exception of the standard library takes are not counted.

| Folder | Files | Lines | Not run | Lines run | Branches taken |
|---|---:|---:|---:|---:|---:|
TEXT
    folder_rows
    printf '\n## Lines of link/ that no test runs\n\n'
    if [ ! -s "$pages/unrun" ]; then
      printf 'None.\n'
    fi
    while IFS=: read -r file number text; do
      reason=$(awk -F '\t' -v key="$file:$text" '$1 == key { print $2 }' "$reasons" 2>/dev/null)
      printf -- '- `%s:%s`: `%s`: %s\n' "$file" "$number" "$text" "${reason:-**a test is missing**}"
    done <"$pages/unrun"
  } >"$page"
  say "written: $page"
  unexplained=$(grep -c 'a test is missing' "$page" || true)
  [ "$unexplained" -eq 0 ] || fail "$unexplained lines of link/ are run by no test"
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
  report --html-details "$pages/index.html" --json-summary "$pages/summary.json" --json "$pages/coverage.json" \
    --txt /dev/stdout
  unrun_link_lines >"$pages/unrun"
  write_page
}

main "$@"
