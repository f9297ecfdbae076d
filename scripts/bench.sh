#!/usr/bin/env bash
# Measures the client and writes docs/benchmarks.md from what this machine shows, and the figures as CSV into
# out/bench. About 15 minutes; with --short half a minute for a look, without touching docs.
# Usage: scripts/bench.sh [--short]
. "$(dirname "$0")/lib.sh"

build_folder=$project_root/build/bench
output_folder=$project_root/out/bench

build_benchmarks() {
  if command -v ccache >/dev/null; then
    export CMAKE_CXX_COMPILER_LAUNCHER=ccache
  fi
  cmake -S "$project_root" -B "$build_folder" -G Ninja -DCMAKE_BUILD_TYPE=Release \
    -DCAMERA_BENCHMARKS=ON --log-level=NOTICE
  cmake --build "$build_folder" --target line_bench parts_bench
}

load_averages() {
  cut -d ' ' -f 1-3 /proc/loadavg
}

write_page() {
  local page=$project_root/docs/benchmarks.md
  {
    cat <<'TEXT'
# Benchmarks

Written by `scripts/bench.sh` from one run, in a release build. Each figure stands beside a bare program on the
same serial library and the same line that does nothing else; the line is a pseudo-terminal, its far end a virtual
camera in a process of its own that takes and gives bytes at the stated pace. Goals stand in the tables; a goal that
was missed says so.

TEXT
    printf 'Measured on %s, %s processors, kernel %s, load averages %s at the start and %s at the end.\n' \
      "$(date +%F)" "$(nproc)" "$(uname -r)" "$load_before" "$load_after"
    printf 'The programs and the far end use one processor; a load above %s means that others worked beside them.\n' \
      "$(($(nproc) - 1))"
    cat "$output_folder/line.md"
    printf '\n## Parts\n\n```\n'
    cat "$output_folder/parts.txt"
    printf '```\n'
  } >"$page"
  say "written: $page, $output_folder/line.csv, $output_folder/parts.csv"
}

main() {
  local short=()
  if [ "${1:-}" = --short ]; then
    short=(--picture 20000 --file 100000 --rounds 1 --exchanges 2)
  fi
  ensure_packages "${build_packages[@]}" libgtest-dev libgmock-dev libbenchmark-dev lrzsz
  use_utf8_locale
  build_benchmarks
  mkdir -p "$output_folder"
  local load_before load_after
  load_before=$(load_averages)
  "$build_folder/bench/line_bench" --csv "$output_folder/line.csv" "${short[@]}" | tee "$output_folder/line.md"
  QT_QPA_PLATFORM=offscreen "$build_folder/bench/parts_bench" --benchmark_out="$output_folder/parts.csv" \
    --benchmark_out_format=csv 2>/dev/null | tee "$output_folder/parts.txt"
  load_after=$(load_averages)
  if [ ${#short[@]} -eq 0 ]; then
    write_page
  fi
}

main "$@"
