#!/usr/bin/env bash
# Measures uploads by the Windows program under Wine, each beside a plain copy by a Windows program, at the far end of
# a line that a Linux program paces. The table and its CSV are left in out/windows-bench. Three rounds take about four
# minutes. Where Qt for Windows is missing it says so and ends well.
# Usage: packaging/windows/bench.sh [--no-build] [OPTION...]     OPTION: of line_bench, such as --rounds 1
. "$(dirname "$0")/../../scripts/lib.sh"

out=$project_root/out/windows-bench
. "$project_root/packaging/windows/wine.sh"

build() {
  configure_and_build mingw -DCAMERA_WARNINGS_AS_ERRORS=ON -DCAMERA_BENCHMARKS=ON
  configure_and_build release --target line_bench -DCAMERA_BENCHMARKS=ON
}

main() {
  find_dependencies
  ensure_packages "${windows_build_packages[@]}" "${build_packages[@]}" "${wine_packages[@]}" libbenchmark-dev
  use_utf8_locale
  if [ "${1:-}" = --no-build ]; then
    shift
  else
    build
  fi
  lay_out_programs bench
  trap clean_up EXIT
  export DISPLAY=
  make_windows
  local word sender=()
  for word in "${wine[@]}" "$program/upload_sender.exe" COM5; do
    sender+=(--sender "$word")
  done
  "$project_root/build/release/bench/line_bench" "${sender[@]}" --sender-link "$lines/com5" --file 1048576 \
    --csv "$out/uploads.csv" "$@" | tee "$out/uploads.md"
  say "load averages at the end: $(cut -d ' ' -f 1-3 /proc/loadavg)"
}

main "$@"
