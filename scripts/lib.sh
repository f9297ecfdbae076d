# Functions that the scripts share. To be sourced: . "$(dirname "$0")/lib.sh"
set -euo pipefail

project_root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

# Packages for building; further ones for building and running the tests.
build_packages=(g++ cmake ninja-build qt6-base-dev libcxx-serial-dev libcli11-dev)
test_packages=(libgtest-dev libgmock-dev librapidcheck-dev libbenchmark-dev qt6-base-private-dev fonts-noto-cjk
  qt6-translations-l10n python3-jsonschema python3-markdown at-spi2-core dbus-daemon evilwm gir1.2-atspi-2.0 python3-gi
  xauth xvfb)
# Packages for the static checks, and for making the Debian package.
check_packages=(clang-format clang-tidy)
package_packages=(appstream dpkg-dev file lintian python3-jsonschema python3-markdown)
# Clang: compiles the sanitizers' builds, the fuzzers, and the tests of a change.
clang_packages=(clang libclang-rt-14-dev lld)
# Packages for building the Windows program, beside Qt and the serial library for Windows.
windows_build_packages=(g++-mingw-w64-x86-64-posix cmake ninja-build qt6-base-dev qt6-base-dev-tools libcli11-dev)
# Packages for the ZIP and the installer.
windows_package_packages=(7zip libcxx-serial-dev nsis python3-jsonschema python3-markdown qt6-translations-l10n zip)

say() {
  printf '== %s\n' "$*"
}

fail() {
  printf 'error: %s\n' "$*" >&2
  exit 1
}

# as_root COMMAND...: as this user if that is root, else by sudo, which may ask only at a terminal.
as_root() {
  if [ "$(id -u)" -eq 0 ]; then
    "$@"
  elif ! command -v sudo >/dev/null; then
    fail "packages have to be installed: be root, or install sudo"
  elif [ -t 0 ]; then
    sudo "$@"
  else
    sudo -n "$@"
  fi
}

# missing_packages PACKAGE...: those that are not installed, one a line.
missing_packages() {
  local package status
  for package in "$@"; do
    status=$(dpkg-query --show --showformat='${db:Status-Status}' "$package" 2>/dev/null || true)
    # A package installed for two architectures says so twice.
    case $status in
      installed*) ;;
      *) printf '%s\n' "$package" ;;
    esac
  done
}

# ensure_packages PACKAGE...: installs what is missing; without anything missing it touches no network.
ensure_packages() {
  if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
    say "no apt-get here; the equivalents of these packages are needed: $*"
    return
  fi
  local missing
  mapfile -t missing < <(missing_packages "$@")
  if [ ${#missing[@]} -eq 0 ]; then
    return
  fi
  say "installing ${missing[*]}"
  local apt=(env DEBIAN_FRONTEND=noninteractive apt-get -q -o DPkg::Lock::Timeout=300 -o Acquire::Retries=3)
  # A broken source that has nothing to do with this must not stop it: the installation below decides.
  as_root "${apt[@]}" update </dev/null || say "apt-get update had errors; going on"
  as_root "${apt[@]}" install --yes --no-install-recommends "${missing[@]}" </dev/null
}

# windows_dependencies_folder: where Qt and the serial library for Windows are, or shall be.
windows_dependencies_folder() {
  printf '%s\n' "${CAMERA_WINDOWS_DEPS:-${XDG_CACHE_HOME:-$HOME/.cache}/shelf-camera-tool/windows}"
}

# has_windows_dependencies FOLDER: whether they are there.
has_windows_dependencies() {
  [ -e "$1/qt/bin/Qt6Widgets.dll" ] && [ -e "$1/qt/plugins/platforms/qwindows.dll" ] &&
    [ -e "$1/serial/lib/libserial.a" ] && [ -e "$1/serial/include/serial/serial.h" ]
}

# Qt reads and writes UTF-8 texts and file names by the locale.
use_utf8_locale() {
  if [ "$(locale charmap 2>/dev/null)" != UTF-8 ]; then
    export LC_ALL=C.UTF-8
  fi
}

# optimised_preset: that of the optimised programs; for a change to pass, the one that is tested, toured and packed.
optimised_preset() {
  if [ -n "${CI:-}" ]; then
    echo ci
  else
    echo release
  fi
}

# use_package_flags: hardened and without this machine's paths, as the distribution builds its own packages; nobody
# gets what -g adds. The first configuration reads them.
use_package_flags() {
  ensure_packages dpkg-dev
  if ! command -v dpkg-buildflags >/dev/null; then
    return
  fi
  export DEB_CXXFLAGS_MAINT_STRIP=-g CCACHE_BASEDIR=
  CXXFLAGS="$(cd "$project_root" && dpkg-buildflags --get CPPFLAGS) $(cd "$project_root" && dpkg-buildflags --get CXXFLAGS)"
  LDFLAGS="$(dpkg-buildflags --get LDFLAGS)"
  export CXXFLAGS LDFLAGS
}

# configure_and_build PRESET [--target NAME] [CMAKE OPTION...]: into build/PRESET.
configure_and_build() {
  local preset=$1 target=()
  shift
  if [ "${1:-}" = --target ]; then
    target=("$1" "$2")
    shift 2
  fi
  if command -v ccache >/dev/null; then
    export CMAKE_CXX_COMPILER_LAUNCHER=ccache # read by the first configuration
  fi
  if [ -n "${CI:-}" ]; then
    set -- -DCAMERA_FAST_BUILD=ON "$@" # nothing is kept between builds there
  fi
  say "building $preset"
  (
    cd "$project_root"
    case $preset in
      ci | deb) use_package_flags ;;
    esac
    cmake --preset "$preset" --log-level=NOTICE "$@"
    cmake --build --preset "$preset" "${target[@]}"
  )
}

# A command that starts ctest, with its options; empty: nothing in between.
test_launcher=()

# start_ctest PRESET [OPTION...]: several tests at once for each processor, as most of them wait; fewer beside builds.
start_ctest() (
  preset=$1 places=12
  shift
  [ -z "${CI:-}" ] || places=8
  cd "$project_root"
  export QT_QPA_PLATFORM=offscreen
  "${test_launcher[@]}" ctest --preset "$preset" --parallel "$(($(nproc) * places))" "$@"
)

# list_slow_tests PRESET: tests with the label "slow", one a line. It empties ctest's log of the last run.
list_slow_tests() (
  cd "$project_root"
  ctest --preset "$1" --show-only --label-regex '^slow$' | sed -n 's/^ *Test *#[0-9]*: //p'
)

# report_unlabelled_tests PRESET: tests of the last run that took more than two seconds; standard input lists entries
# with the label "slow". In virtual time the tests of an entry take longer than their process.
report_unlabelled_tests() {
  awk 'NR == FNR { labelled[$0] = 1; next }
    / Test: / { entry = substr($0, index($0, " Test: ") + 7); count = sum = 0 }
    /^\[ +OK \] / { ms = substr($(NF - 1), 2) + 0; sum += ms; name[++count] = $4; took[count] = ms }
    /^Test time = / && sum <= $4 * 1050 && !(entry in labelled) {
      for (i = 1; i <= count; ++i)
        if (took[i] > 2000) printf "not labelled slow: %.1f s  %s\n", took[i] / 1000, name[i]
    }' - "$project_root/build/$1/Testing/Temporary/LastTest.log"
}

# output_of_test LOG TEST: what ctest's log of a run keeps of one test.
output_of_test() {
  awk -v name="$2" 'index($0, " Test: ") && substr($0, index($0, " Test: ") + 7) == name { inside = 1 }
    inside { print }
    inside && index($0, "\"" name "\" end time:") == 1 { exit }' "$1"
}

# Tests that passed only the second time, with the output of the first.
unstable_tests=$project_root/build/unstable-tests.log
most_unstable_tests=3

# report_unstable_tests: prints them; more than a few are a failure.
report_unstable_tests() {
  [ -s "$unstable_tests" ] || return 0
  local count
  count=$(grep -c '^#### unstable: ' "$unstable_tests")
  cat "$unstable_tests"
  say "$count tests passed only the second time:"
  sed -n 's/^#### unstable: /  /p' "$unstable_tests"
  [ "$count" -le "$most_unstable_tests" ] || fail "more than $most_unstable_tests unstable tests"
}

# failed_tests PRESET: the names of those that failed in ctest's last run, one a line.
failed_tests() {
  local list=$project_root/build/$1/Testing/Temporary/LastTestsFailed.log
  [ ! -e "$list" ] || cut -d : -f 2- "$list"
}

# run_failed_again PRESET: the tests that have just failed. Those that pass now are kept in $unstable_tests.
run_failed_again() {
  local preset=$1 records=$project_root/build/$1/Testing/Temporary name names again=0
  mapfile -t names < <(failed_tests "$preset")
  [ ${#names[@]} -gt 0 ] || fail "ctest"
  cp "$records/LastTest.log" "$records/FirstRun.log"
  say "once more: ${names[*]}"
  start_ctest "$preset" --rerun-failed || again=$?
  for name in "${names[@]}"; do
    # ctest keeps the list as it was when none fails.
    if [ "$again" -eq 0 ] || ! failed_tests "$preset" | grep --quiet --line-regexp --fixed-strings -- "$name"; then
      printf '#### unstable: %s (%s)\n' "$name" "$preset"
      output_of_test "$records/FirstRun.log" "$name"
    fi
  done >>"$unstable_tests"
  if [ "$again" -ne 0 ]; then
    report_unstable_tests
    fail "failed twice: $(failed_tests "$preset" | tr '\n' ' ')"
  fi
}

# run_tests PRESET [CTEST OPTION...]. For a change to pass, failed tests run once more: on a loaded machine an answer
# may come later than the tool waits. The log ends with those that pass then.
run_tests() {
  say "testing $1"
  if [ -z "${CI:-}" ]; then
    local slow code=0
    slow=$(list_slow_tests "$1")
    start_ctest "$@" || code=$?
    report_unlabelled_tests "$1" <<<"$slow"
    return "$code"
  fi
  [ -n "${CAMERA_WHOLE_RUN:-}" ] || rm -f "$unstable_tests" # .ci/run counts those of all builds
  rm -f "$project_root/build/$1/Testing/Temporary/LastTestsFailed.log"
  start_ctest "$@" || run_failed_again "$1"
  report_unstable_tests
}

tour_limit_s=300

# take_tour DEMO FOLDER [ARGUMENT...]: lets the window operate itself on a virtual display. The screenshots, the
# pictures that the tool downloads into its working directory and the files it uploads are left in FOLDER,
# which is emptied before.
take_tour() {
  local demo=$1 folder=$2
  shift 2
  ensure_packages xvfb xauth
  rm -rf "$folder"
  mkdir -p "$folder"
  say "taking the tour on a virtual display"
  (
    cd "$folder" || exit
    env -u QT_QPA_PLATFORM -u WAYLAND_DISPLAY xvfb-run --auto-servernum \
      --server-args='-screen 0 1280x1024x24' \
      timeout --kill-after=10 "$tour_limit_s" "$demo" --tour "$folder" "$@"
  ) </dev/null || fail "the tour ended with code $?"
  compgen -G "$folder/*.png" >/dev/null || fail "the tour left no screenshots in $folder"
}

# project_files PATTERN...: tracked files whose names match, relative to the root, one a line. Without git
# (an unpacked archive) those outside build folders.
project_files() {
  cd "$project_root"
  if git ls-files --error-unmatch CMakeLists.txt >/dev/null 2>&1; then
    git ls-files --cached --others --exclude-standard -- "$@"
    return
  fi
  local pattern
  for pattern in "$@"; do
    find . -name .git -prune -o -path './build*' -prune -o -path ./out -prune -o -path ./dist -prune \
      -o -type f -name "$pattern" -print | sed 's#^\./##'
  done
}
