#!/usr/bin/env bash
# Measures the client and the windows and writes out/bench: benchmarks.md, its figures as CSV in csv, its plots in
# images. About 18 minutes; with --short three minutes, for a look, into out/bench/short. A figure that cannot be
# measured ends the script; the tables mark a goal that was missed. docs/how-good-it-is.md gets its figures by hand.
# Usage: scripts/bench.sh [--short]
. "$(dirname "$0")/lib.sh"

build_folder=$project_root/build/bench
programs=$build_folder/bench
log_folder=$project_root/out/bench

build_benchmarks() {
  if command -v ccache >/dev/null; then
    export CMAKE_CXX_COMPILER_LAUNCHER=ccache
  fi
  cmake -S "$project_root" -B "$build_folder" -G Ninja -DCMAKE_BUILD_TYPE=Release \
    -DCAMERA_BENCHMARKS=ON -DBUILD_TESTING=OFF --log-level=NOTICE
  cmake --build "$build_folder" --target bench/all
}

load_averages() {
  cut -d ' ' -f 1-3 /proc/loadavg
}

# on_display COMMAND...: on a virtual display of its own, with real painting. Without -noreset the display would begin
# anew whenever its last client has gone, and refuse the next one meanwhile.
on_display() {
  env -u WAYLAND_DISPLAY QT_QPA_PLATFORM=xcb xvfb-run --auto-servernum --server-args='-screen 0 1280x1024x24 -noreset' "$@"
}

# figures FILE SECTION-PATTERN FIGURE-PATTERN: the figure's name without what matches, a tab, its value.
figures() {
  awk -F '"' -v section="$2" -v figure="$3" '
    $2 ~ section && $4 ~ figure {
      split($5, rest, ",")
      sub(figure, "", $4)
      printf "%s\t%s\n", $4, rest[2]
    }' "$csv_folder/$1.csv"
}

# joined FILE SECTION FIGURE...: one line for each row of a table, its name and these of its figures, by tabs.
joined() {
  local file=$1 section=$2 result figure
  shift 2
  result=$(figures "$file" "$section" ": $1\$" | cut -f 1)
  for figure in "$@"; do
    result=$(paste <(printf '%s\n' "$result") <(figures "$file" "$section" ": $figure\$" | cut -f 2))
  done
  printf '%s\n' "$result"
}

# plot NAME COMMANDS [HEIGHT]: images/benchmark-NAME.svg by gnuplot.
plot() {
  gnuplot <<GNUPLOT
set terminal svg size 900,${3:-420} font "sans-serif,13" background "white" name "benchmark_$1"
set output "$image_folder/benchmark-$1.svg"
set datafile separator "\t"
set encoding utf8
set grid ytics lc rgb "#dddddd"
set border 3
set tics nomirror noenhanced
set key noenhanced
$2
GNUPLOT
}

draw_plots() {
  local data=$log_folder
  figures line '^Upload of' ': time, first to last byte$' | sed 's/ (flushes[^)]*)//; s# bytes/s##' >"$data/uploads.tsv"
  plot uploads "
set title 'Uploads, seconds from the first to the last byte at so many bytes/s: less is better'
set style data histograms
set style fill solid 0.8
set boxwidth 0.7
set logscale y
set yrange [0.1:*]
set ylabel 's'
set xtics rotate by 25 right font ',11'
set bmargin 8
set lmargin 14
unset key
plot '$data/uploads.tsv' using 2:xtic(1) lc rgb '#3b6ea5', '' using 0:2:2 with labels offset 0,0.7
" 520

  joined line '^One exchange' 'mandated' 'median beyond it' '99 of 100 within' '99 of 100 bare sleeps within' \
    'processor time' | awk -F '\t' '$2 < 1600' >"$data/exchanges.tsv" # not those of several
  plot exchanges "
set title 'Exchanges: ms beyond what the time-outs mandate'
set ylabel 'ms'
set xtics rotate by 55 right font ',10'
set bmargin 14
set xrange [-1:*]
set key top left
plot '$data/exchanges.tsv' using 0:4:xtic(1) with points pt 7 ps 0.7 lc rgb '#b5533c' title '99 of 100 within (goal 5)', \
  '' using 0:5 with points pt 6 ps 0.8 lc rgb '#888888' title '99 of 100 bare sleeps within', \
  '' using 0:3 with points pt 7 ps 0.7 lc rgb '#3b6ea5' title 'median (goal 1)', \
  5 lc rgb '#b5533c' dt 2 notitle, 1 lc rgb '#3b6ea5' dt 2 notitle
" 620

  joined line '^Uploads as' 'time per MiB' 'memory beyond the file' >"$data/growth-uploads.tsv"
  figures window '^Picture lists' '^each further record from ' | grep -v 'of the middle' | sed 's/: time//' >"$data/growth-lists.tsv"
  plot growth "
set multiplot layout 1,2
set style fill solid 0.8
set boxwidth 0.6
set yrange [0:*]
set key top right
set title 'Uploads: ms per MiB'
plot '$data/growth-uploads.tsv' using 2:xtic(1) with boxes lc rgb '#3b6ea5' notitle
set title 'Lists: microseconds for each further record'
set xlabel 'records'
plot '$data/growth-lists.tsv' using 2:xtic(1) with boxes lc rgb '#3b6ea5' notitle
unset multiplot
" 360
}

write_page() {
  local page=$1
  {
    cat <<'TEXT'
# Benchmarks

Written by `scripts/bench.sh` from one run, in a release build. Each figure of the line stands beside a bare program
on the same serial library and the same line that does nothing else; the line is a pseudo-terminal, its far end a
virtual camera in a process of its own that takes and gives bytes at the stated pace. The tool's start stands beside a
program with one window. Goals stand in the tables; a goal that was missed says so.

TEXT
    printf 'Measured on %s, %s processors, kernel %s, load averages %s at the start and %s at the end.\n' \
      "$(date +%F)" "$(nproc)" "$(uname -r)" "$load_before" "$load_after"
    printf 'The programs and the far end use one processor; a load above %s means that others worked beside them.\n' \
      "$(($(nproc) - 1))"
    cat <<'TEXT'
The figures as tables of numbers: [line](csv/line.csv), [windows](csv/window.csv), [parts](csv/parts.csv).

![Seconds of the uploads and of other programs' transfers](images/benchmark-uploads.svg)

![What exchanges take beyond their timeouts](images/benchmark-exchanges.svg)

![Uploads and lists as they grow](images/benchmark-growth.svg)
TEXT
    cat "$log_folder/window.md" "$log_folder/line.md"
    printf '\n## Parts\n\nGoogle Benchmark; items are records.\n\n```\n'
    cat "$log_folder/parts.txt"
    printf '```\n'
  } >"$page"
  say "written: $page, the figures in $csv_folder, the plots in $image_folder"
}

main() {
  local line_options=() window_options=() parts_options=()
  if [ "${1:-}" = --short ]; then
    line_options=(--picture 20000 --file 100000 --rounds 1 --exchanges 2 --largest 1048576)
    window_options=(--starts 3 --idle 2 --lists 20)
    parts_options=(--benchmark_min_time=0.05)
    log_folder=$log_folder/short
  fi
  csv_folder=$log_folder/csv
  image_folder=$log_folder/images
  ensure_packages "${build_packages[@]}" libbenchmark-dev fonts-noto-cjk lrzsz xvfb xauth gnuplot-nox
  use_utf8_locale
  build_benchmarks
  mkdir -p "$log_folder" "$csv_folder" "$image_folder"
  local load_before load_after
  load_before=$(load_averages)
  on_display "$programs/window_bench" --programs "$programs" --csv "$csv_folder/window.csv" "${window_options[@]}" |
    tee "$log_folder/window.md"
  "$programs/line_bench" --csv "$csv_folder/line.csv" "${line_options[@]}" | tee "$log_folder/line.md"
  QT_QPA_PLATFORM=offscreen "$programs/parts_bench" "${parts_options[@]}" \
    --benchmark_out="$csv_folder/parts.csv" --benchmark_out_format=csv 2>/dev/null | tee "$log_folder/parts.txt"
  load_after=$(load_averages)
  draw_plots
  # Removes the path of the project on this machine.
  sed -i "s#$project_root/##g" "$csv_folder"/*.csv "$image_folder"/benchmark-*.svg
  write_page "$log_folder/benchmarks.md"
}

main "$@"
