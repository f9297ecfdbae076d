#!/usr/bin/env bash
# Prepares ten virtual cameras by docs/prepare-cameras.sh. The check of one fails; the same line again goes on
# with it and repeats no job that was done. A late answer on a loaded machine is a failure that one more run mends.
# Usage: tests/cli/prepare_test.sh BUILD_FOLDER
. "$(dirname "$0")/../../scripts/lib.sh"

export LC_ALL=C.UTF-8 LANGUAGE=en
build=$(realpath "${1:?the folder of a build}")
export SHELF_CAMERA=$build/cli/shelf-camera
types=(ostra dorvel sales-static ostra dorvel sales-static ostra dorvel ostra ostra)
addresses=(1 0xEE 1 1 0xEE 1 1 0xEE 1 1)
failing=9
work=$(mktemp -d)
cameras=()

clean_up() {
  kill "${cameras[@]}" 2>/dev/null || true
  wait
  rm -rf "$work"
}
trap clean_up EXIT

wait_for_link() {
  for _ in $(seq 200); do
    [ ! -L "$1" ] || return 0
    sleep 0.05
  done
  fail "no virtual camera at $1"
}

start_cameras() {
  local i fault
  for i in "${!types[@]}"; do
    fault=()
    [ "$i" -ne "$failing" ] || fault=(--fault "silent@gyroTest#1")
    "$build/emulator/virtual-camera" --type "${types[i]}" --link "$work/camera$i" "${fault[@]}" \
      >"$work/camera$i.log" 2>&1 &
    cameras+=($!)
    printf '%s,%s,%s,SC-%04d,%d,%d\n' "$work/camera$i" "${addresses[i]}" "${types[i]}" "$i" $((30 + i)) $((70 + i))
  done >"$work/list"
  for i in "${!types[@]}"; do
    wait_for_link "$work/camera$i"
  done
}

# prepare LIST: with its code; its output is left in $work/out and $work/err.
prepare() {
  local code=0
  "$project_root/docs/prepare-cameras.sh" "$1" "$work/image.bin" "$work/reports" >"$work/out" 2>"$work/err" || code=$?
  cat "$work/out" "$work/err"
  return "$code"
}

# count WANTED PATTERN FILE
count() {
  local found
  found=$(grep -cE -- "$2" "$3" || true)
  [ "$found" -eq "$1" ] || fail "$found lines of $3 instead of $1 match $2"
}

# The cameras' own values, read at the same time.
check_cameras() {
  local i serial
  for i in "${!types[@]}"; do
    printf '%s %s %s %s\n' "$work/camera$i" "${addresses[i]}" "${types[i]}" sn \
      "$work/camera$i" "${addresses[i]}" "${types[i]}" heater \
      "$work/camera$i" "${addresses[i]}" "${types[i]}" compression
  done >"$work/questions"
  "$SHELF_CAMERA" --json batch "$work/questions" >"$work/answers"
  for i in "${!types[@]}"; do
    serial=$(printf 'SC-%04d' "$i")
    count 1 "\"serialNumber\":\"$serial\"" "$work/answers"
    count 1 "\"heater\":$((30 + i))," "$work/answers"
    count 1 "\"compression\":$((70 + i))," "$work/answers"
    count 1 "<td>$serial</td>" "$work/reports/$serial.html"
    grep -q 'application image' "$work/camera$i.log" || fail "no image reached camera $i"
  done
}

start_cameras
head -c 20000 /dev/urandom >"$work/image.bin"

say "a port without a camera"
{ cat "$work/list" && echo "$work/none,1,ostra,SC-9999,30,70"; } >"$work/longer"
! prepare "$work/longer" || fail "a port without a camera is taken"
count 1 "no camera at $work/none\$" "$work/err"
[ ! -e "$work/reports/jobs.jsonl" ] || fail "cameras were changed"

say "ten cameras, of which one fails"
! prepare "$work/list" || fail "the failure is not told"
count 1 "camera$failing  failed: " "$work/out"

runs=1
until prepare "$work/list"; do
  runs=$((runs + 1))
  [ "$runs" -lt 4 ] || fail "not prepared after $runs runs"
done
count 10 ' prepared$' "$work/out"
count 50 '"ok":true' "$work/reports/jobs.jsonl" # five jobs a camera, each once
check_cameras
say "ten cameras prepared in $SECONDS s, $((runs + 1)) runs"
