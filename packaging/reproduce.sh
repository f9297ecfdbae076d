#!/usr/bin/env bash
# Builds the packages of the last commit twice and compares them byte by byte. The builds differ in folder, user, clock,
# umask and number of jobs, and use no compiler cache. Where files differ it lists the members that do (by diffoscope if
# that is installed) and keeps both builds. Takes root's rights.
# Usage: packaging/reproduce.sh [--only linux|windows|libraries] [--against FOLDER]
#     libraries: Qt and the serial library for Windows instead of the packages
#     FOLDER: of packages made of this commit, by somebody else for example; builds once and compares with them
#     CI=true: as .ci/run builds, several sources at once; both builds have to be of one kind
. "$(dirname "${BASH_SOURCE[0]}")/../scripts/lib.sh"

# run_as USER-ID HOME JOBS UMASK CLOCK COMMAND...: CLOCK as faketime takes it, or "now".
run_as() {
  local id=$1 home=$2 jobs=$3 mask=$4 clock="faketime -f $5"
  if [ "$5" = now ]; then
    clock=
  fi
  shift 5
  setpriv --reuid="$id" --regid="$id" --clear-groups \
    env -i HOME="$home" PATH="$PATH" LC_ALL=C.UTF-8 CCACHE_DISABLE=1 CMAKE_BUILD_PARALLEL_LEVEL="$jobs" \
    CAMERA_WINDOWS_DEPS="$home/windows" ${CI:+CI="$CI"} ${http_proxy:+http_proxy="$http_proxy"} \
    NO_FAKE_STAT=1 bash -c "umask $mask; exec nice $clock \"\$@\"" run "$@"
}

# build NAME USER-ID JOBS UMASK CLOCK: into $work/NAME/packages.
build() {
  local home=$work/$1 id=$2 start=$SECONDS dependencies
  dependencies=$(windows_dependencies_folder)
  say "building in $home as user $id with $3 jobs, umask $4, clock $5"
  mkdir -p "$home/packages"
  git clone --quiet "$project_root" "$home/sources"
  git -C "$home/sources" remote remove origin
  local command=(scripts/package.sh "${only[@]}" "$home/packages")
  if [ "${only[1]:-}" = libraries ]; then
    command=(packaging/windows/build-dependencies.sh "$home/packages")
  elif has_windows_dependencies "$dependencies"; then
    cp --archive --link "$dependencies" "$home/windows" 2>/dev/null || cp --archive "$dependencies" "$home/windows"
  fi
  chown --recursive --no-dereference "$id:$id" "$home/sources" "$home/packages"
  chown "$id:$id" "$home"
  (cd "$home/sources" && run_as "$2" "$home" "${@:3:3}" "${command[@]}") >"$home/log" 2>&1 </dev/null ||
    { tail -n 30 "$home/log" >&2; fail "the build in $home"; }
  say "built in $((SECONDS - start)) s"
}

# unpack FILE FOLDER: the members of a package; nothing for other files.
unpack() {
  mkdir -p "$2"
  case $1 in
    *.deb) dpkg-deb --raw-extract "$1" "$2/content" ;;
    *.zip) unzip -q "$1" -d "$2" ;;
    *.exe) 7zz x -y "-o$2" "$1" >/dev/null ;;
  esac
}

report_difference() {
  if command -v diffoscope >/dev/null; then
    diffoscope --max-text-report-size 20000 "$one/$1" "$two/$1" || true
    return
  fi
  unpack "$one/$1" "$work/members/one/$1"
  unpack "$two/$1" "$work/members/two/$1"
  diff --recursive --brief "$work/members/one/$1" "$work/members/two/$1" || true
}

# files_in FOLDER: all that are compared; signatures and, against packages of all systems, those of the others are not.
files_in() {
  (cd "$1" && find . -type f -not -name '*.minisig' | sort) |
    case ${only[1]:-} in
      linux) grep --extended-regexp '_[^/]*[.]deb' ;;
      windows) grep -- '-windows-' ;;
      *) cat ;;
    esac
}

compare() {
  local file count=0 different=0
  diff <(files_in "$one") <(files_in "$two") || fail "the builds have different files"
  while read -r file; do
    count=$((count + 1))
    if cmp "$one/$file" "$two/$file"; then
      continue
    fi
    different=$((different + 1))
    report_difference "$file"
  done < <(files_in "$one")
  [ "$count" -gt 0 ] || fail "nothing was built"
  if [ "$different" -gt 0 ]; then
    trap - EXIT
    fail "$different of $count files differ; both builds are in $work"
  fi
  (cd "$two" && find . -maxdepth 1 -type f -exec sha256sum {} +)
  say "$count files, all the same"
}

main() {
  only=()
  local against clock=+400d
  while [ $# -gt 0 ]; do
    case $1 in
      --only) only=(--only "${2:?--only what}") ;;
      --against) against=$(realpath "${2:?--against what}") ;;
      *) fail "see the first lines of this script" ;;
    esac
    shift 2
  done
  [ "$(id -u)" -eq 0 ] || { as_root "${BASH_SOURCE[0]}" "${only[@]}" ${against:+--against "$against"} && return; }
  ensure_packages "${build_packages[@]}" "${package_packages[@]}" "${windows_build_packages[@]}" \
    "${windows_package_packages[@]}" faketime git unzip xz-utils
  use_utf8_locale
  work=$(mktemp -d)
  chmod 755 "$work"
  trap 'rm -rf "$work"' EXIT
  one=$work/one/packages two=$work/second/two/packages
  if [ -n "${against:-}" ]; then
    one=$against
  else
    build one 61001 "$(nproc)" 022 now
  fi
  if [ "${only[1]:-}" = libraries ]; then
    clock=now # signed lists of source packages expire; the builds are most of an hour apart
  fi
  build second/two 61002 "$(($(nproc) + 1))" 077 "$clock"
  compare
}

main "$@"
