#!/usr/bin/env bash
# Prepares many cameras at once: writes serial number, heater duty and picture compression, uploads an application
# image, checks each camera. Leaves in FOLDER a report for each camera, SERIAL.html, and all results, jobs.jsonl. The
# same line again goes on after an interruption or a failure, and repeats nothing that is done.
# Usage: docs/prepare-cameras.sh LIST IMAGE FOLDER
# LIST has one line a camera: PORT,ADDRESS,TYPE,SERIAL,HEATER,COMPRESSION, such as
#   /dev/ttyUSB0,0x01,ostra,SC-2026-0001,40,80
# The types are those with serial number and settings: ostra, dorvel, sales-static.
# SHELF_CAMERA names the program if it is not in the path.
set -euo pipefail

program=${SHELF_CAMERA:-shelf-camera}
jobs_per_camera=5

fail() {
  printf 'error: %s\n' "$*" >&2
  exit 2
}

# cameras LIST: its lines without comments, line ends of Windows and empty lines.
cameras() {
  tr -d '\r' <"$1" | grep -Ev '^(#|$)'
}

# A camera must answer at each port before any is changed.
check_ports() {
  local ports=() port
  while IFS=, read -r port _; do
    ports+=(-p "$port")
  done < <(cameras "$list")
  [ ${#ports[@]} -gt 0 ] || fail "$list names no camera"
  if ! "$program" --json "${ports[@]}" find --first >"$folder/found.jsonl"; then
    sed -n '/"ok":false/s/.*"port":"\([^"]*\)".*/no camera at \1/p' "$folder/found.jsonl" >&2
    fail "nothing was changed"
  fi
}

write_jobs() {
  local port address type serial heater compression
  while IFS=, read -r port address type serial heater compression; do
    printf '"%s" %s %s %s\n' \
      "$port" "$address" "$type" "sn \"$serial\"" \
      "$port" "$address" "$type" "heater $heater" \
      "$port" "$address" "$type" "compression $compression" \
      "$port" "$address" "$type" "upload app \"$image\"" \
      "$port" "$address" "$type" "check -o \"$folder/$serial.html\""
  done < <(cameras "$list")
}

# The jobs of one port follow each other and end at a failure; the ports work at the same time.
run_jobs() {
  write_jobs >"$folder/jobs.txt"
  "$program" --yes --json batch --resume "$folder/state" "$folder/jobs.txt" >>"$folder/jobs.jsonl"
}

print_summary() {
  local port serial finished error
  while IFS=, read -r port _ _ serial _; do
    finished=$(grep -F "\"port\":\"$port\"" "$folder/jobs.jsonl" | grep -cF '"ok":true' || true)
    if [ "$finished" -eq "$jobs_per_camera" ]; then
      printf '%s  %s  prepared\n' "$serial" "$port"
    else
      error=$(grep -F "\"port\":\"$port\"" "$folder/jobs.jsonl" | tail -n 1 | sed -n 's/.*"error":"\([^"]*\)".*/\1/p')
      printf '%s  %s  failed: %s\n' "$serial" "$port" "${error:-see $serial.html}"
    fi
  done < <(cameras "$list")
}

[ $# -eq 3 ] || fail "usage: $0 LIST IMAGE FOLDER"
list=$1
[ -r "$list" ] || fail "no list $list"
[ -f "$2" ] || fail "no image $2"
image=$(realpath "$2")
mkdir -p "$3"
folder=$(realpath "$3")
code=0
check_ports
run_jobs || code=$?
print_summary
exit "$code"
