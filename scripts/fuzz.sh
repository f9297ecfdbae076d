#!/usr/bin/env bash
# Builds the fuzzers with clang and runs each for some seconds on its corpus; what one finds ends the script and
# is left in out/fuzz. New inputs that reach new code are kept there too, not in the repository.
# Usage: scripts/fuzz.sh [SECONDS] [FUZZER]...     20 s and all (answers catalogues json transfer uploads camera)
. "$(dirname "$0")/lib.sh"

all_fuzzers=(answers catalogues json transfer uploads camera)
longest_input=4096

build_fuzzers() {
  if command -v ccache >/dev/null; then
    export CMAKE_CXX_COMPILER_LAUNCHER=ccache
  fi
  say "building the fuzzers"
  (
    cd "$project_root"
    cmake --preset fuzz --log-level=NOTICE
    nice cmake --build --preset fuzz --target fuzz/all
  )
}

run_fuzzer() {
  local name=$1 seconds=$2 output=$project_root/out/fuzz/$1
  mkdir -p "$output/new" "$output/findings"
  say "fuzzing $name for $seconds s"
  (
    cd "$output/findings"
    ASAN_OPTIONS=detect_stack_use_after_return=1 UBSAN_OPTIONS=print_stacktrace=1 \
      nice "$project_root/build/fuzz/fuzz/fuzz_$name" -max_total_time="$seconds" -max_len="$longest_input" \
      -rss_limit_mb=1024 -timeout=10 -verbosity=0 -print_final_stats=1 \
      -artifact_prefix="$output/findings/" "$output/new" "$project_root/fuzz/corpus/$name"
  ) 2>"$output/log" || {
    tail -n 60 "$output/log" >&2
    fail "$name found something: see $output/findings"
  }
  awk -v name="$name" '/number_of_executed_units/ { runs = $2 } /peak_rss/ { memory = $2 }
    END { printf "%s: %s executions, no findings, at most %s MB\n", name, runs, memory }' "$output/log"
}

main() {
  local seconds=${1:-20}
  shift || true
  local fuzzers=("$@")
  if [ ${#fuzzers[@]} -eq 0 ]; then
    fuzzers=("${all_fuzzers[@]}")
  fi
  ensure_packages "${build_packages[@]}" clang
  build_fuzzers
  local name
  for name in "${fuzzers[@]}"; do
    run_fuzzer "$name" "$seconds"
  done
}

main "$@"
