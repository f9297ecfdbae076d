#!/usr/bin/env bash
# Builds the fuzzers with clang and runs each for some seconds on its corpus; what one finds ends the script and
# is left in out/fuzz. New inputs that reach new code are kept there too, not in the repository.
# Usage: scripts/fuzz.sh [--fixed | --page] [SECONDS] [FUZZER]...
#        20 s and all fuzzers if not given
#   --fixed  a number of runs instead of seconds, always the same ones, from the repository's corpus alone:
#            some 10 s each; those of decoders alone only by name
#   --page   writes out/fuzz/fuzzing.md from the runs
. "$(dirname "$0")/lib.sh"

client_fuzzers=(answers catalogues json transfer uploads camera)
pure_fuzzers=(frames records envelopes announcements recordings profiles options) # decoders alone
longest_input=4096
longest_pure_input=128

# What the fuzzers feed, and the runs of --fixed.
declare -A subjects=(
  [answers]="acceptance of answers, properties, status"
  [catalogues]="catalogues of both generations, the walk of takePic"
  [json]="the JSON envelope, its text, picture pieces"
  [transfer]="picture transfers"
  [uploads]="announcement answers and verdicts"
  [camera]="the virtual camera's request decoder"
  [frames]="frames and envelopes in pieces"
  [records]="catalogue records"
  [envelopes]="the JSON envelope and its text"
  [announcements]="announcements and their answers"
  [recordings]="recordings"
  [profiles]="profiles of cameras"
  [options]="lines of job files, faults, bad lines"
)
declare -A fixed_runs=([answers]=20000 [catalogues]=16000 [json]=16000 [transfer]=16000 [uploads]=10000 [camera]=30000)
for name in "${pure_fuzzers[@]}"; do
  fixed_runs[$name]=10000
done

# build_fuzzers NAME...
build_fuzzers() {
  local options=()
  if command -v ccache >/dev/null; then
    export CMAKE_CXX_COMPILER_LAUNCHER=ccache
  fi
  if [ -n "${CI:-}" ]; then
    options+=("-DCMAKE_CXX_FLAGS_RELWITHDEBINFO=-O1 -g1" -DCAMERA_FAST_BUILD=ON) # builds faster
  fi
  say "building the fuzzers"
  (
    cd "$project_root"
    cmake --preset fuzz --log-level=NOTICE "${options[@]}"
    nice cmake --build --preset fuzz --target "${@/#/fuzz_}"
  )
}

# run_fuzzer NAME LIMIT: LIMIT is libFuzzer's option that ends the run. Prints "NAME executions seconds MB".
run_fuzzer() {
  local name=$1 limit=$2 output=$project_root/out/fuzz/$1 start=$EPOCHREALTIME
  local kept=$output/new longest=$longest_input stack_use=1
  if [[ " ${pure_fuzzers[*]} " == *" $name "* ]]; then
    longest=$longest_pure_input
    # Takes more than half of a decoder's time: left to the fixed runs.
    [ "$fixed" = yes ] || stack_use=0
  fi
  local launcher=(nice) options=()
  if [ "$fixed" = yes ]; then
    # What earlier runs have found, random addresses and looking for news by the clock would change this one.
    kept=$output/fixed
    rm -rf "$kept"
    options=(-reload=0)
    if setarch --addr-no-randomize true 2>/dev/null; then
      launcher+=(setarch --addr-no-randomize)
    fi
  fi
  mkdir -p "$kept" "$output/findings"
  (
    cd "$output/findings"
    ASAN_OPTIONS=detect_stack_use_after_return=$stack_use UBSAN_OPTIONS=print_stacktrace=1 \
      "${launcher[@]}" "$project_root/build/fuzz/fuzz/fuzz_$name" "$limit" "${options[@]}" -seed=1 -max_len="$longest" \
      -rss_limit_mb=1024 -timeout=10 -verbosity=0 -print_final_stats=1 \
      -artifact_prefix="$output/findings/" "$kept" "$project_root/fuzz/corpus/$name"
  ) 2>"$output/log" || {
    tail -n 60 "$output/log" >&2
    fail "$name found something: see $output/findings"
  }
  awk -v name="$name" -v start="$start" -v end="$EPOCHREALTIME" \
    '/number_of_executed_units/ { runs = $2 } /peak_rss/ { memory = $2 }
    END { printf "%s %d %.0f %d\n", name, runs, end - start, memory }' "$output/log"
}

# write_page ROW...: rows as run_fuzzer prints them.
write_page() {
  local page=$project_root/out/fuzz/fuzzing.md row name runs seconds memory
  {
    cat <<'TEXT'
# Fuzzing

Every decoder has a libFuzzer program with the address and undefined-behaviour sanitizers on; fuzz/README.md describes
their inputs. A finding ends the script before it writes this page:

    scripts/fuzz.sh --page 60      # a minute each; writes this page
    scripts/fuzz.sh 3600 json      # an hour of one
    scripts/fuzz.sh --fixed        # the same runs every time, for a change to pass

TEXT
    printf 'Seen on %s, %s processors, the load average %s at the end:\n\n' "$(date +%F)" "$(nproc)" \
      "$(cut -d ' ' -f 1 /proc/loadavg)"
    printf '| Fuzzer | Feeds | Executions | Time, s | Most memory, MB | Findings |\n|---|---|---:|---:|---:|---:|\n'
    for row in "$@"; do
      read -r name runs seconds memory <<<"$row"
      # A finding has ended the script before.
      printf '| `%s` | %s | %s | %s | %s | 0 |\n' "$name" "${subjects[$name]}" "$runs" "$seconds" "$memory"
    done
  } >"$page"
  say "written: $page"
}

main() {
  local fixed=no page=no
  case ${1:-} in
    --fixed) fixed=yes ;;
    --page) page=yes ;;
  esac
  [ "$fixed$page" = nono ] || shift
  local seconds=20
  if [[ ${1:-} =~ ^[0-9]+$ ]]; then
    seconds=$1
    shift
  fi
  local fuzzers=("$@")
  if [ ${#fuzzers[@]} -eq 0 ]; then
    fuzzers=("${client_fuzzers[@]}")
    [ "$fixed" = yes ] || fuzzers+=("${pure_fuzzers[@]}")
  fi
  ensure_packages "${build_packages[@]}" "${clang_packages[@]}"
  build_fuzzers "${fuzzers[@]}"
  local name limit rows=()
  for name in "${fuzzers[@]}"; do
    limit=-max_total_time=$seconds
    if [ "$fixed" = yes ]; then
      limit=-runs=${fixed_runs[$name]:?}
    fi
    rows+=("$(run_fuzzer "$name" "$limit")")
    read -r name runs took memory <<<"${rows[-1]}"
    say "$name: $runs executions in $took s, no findings, at most $memory MB"
  done
  if [ "$page" = yes ]; then
    write_page "${rows[@]}"
  fi
}

main "$@"
