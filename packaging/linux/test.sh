#!/usr/bin/env bash
# Installs a Debian package over an older one in a clean root made by debootstrap, starts the programs there as an
# ordinary user (the tool from its menu entry's command with a virtual camera in its list of ports, shelf-camera, then
# the whole tour), removes the package and compares all files with those from before. Takes root's rights.
# Shows that a downgrade and the removal of running programs are refused, and that the user's menu stays.
# Usage: packaging/linux/test.sh [PACKAGE]     PACKAGE: the one in out/packages if not given
. "$(dirname "${BASH_SOURCE[0]}")/../../scripts/lib.sh"

older=0.0.1
cache=${XDG_CACHE_HOME:-$HOME/.cache}/shelf-camera-tool
user=technician

# mirror CODENAME: where this machine takes the packages of its own release from.
mirror() {
  apt-get indextargets --format "\$(CODENAME) \$(COMPONENT) \$(REPO_URI)" 'Created-By: Packages' |
    awk -v codename="$1" '$1 == codename && $2 == "main" && !found { print $3; found = 1 }'
}

# make_base TARBALL: a clean root, made once and then kept.
make_base() {
  local tarball=$1 codename uri work
  [ -f "$tarball" ] && return
  codename=$(. /etc/os-release && echo "$VERSION_CODENAME")
  uri=$(mirror "$codename")
  [ -n "$uri" ] || fail "the sources of apt name no mirror of $codename"
  say "making a clean root of $codename"
  work=$(mktemp -d)
  debootstrap --variant=minbase "$codename" "$work/root" "$uri" >"$work/log" 2>&1 ||
    { tail "$work/log" >&2; fail "debootstrap"; }
  mkdir -p "$(dirname "$tarball")"
  tar --create --numeric-owner --directory "$work/root" --file "$tarball.part" .
  mv "$tarball.part" "$tarball"
  rm -rf "$work"
}

in_root() {
  chroot "$root" /usr/bin/env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LC_ALL=C.UTF-8 \
    DEBIAN_FRONTEND=noninteractive ${http_proxy:+http_proxy="$http_proxy"} "$@"
}

# as_user COMMAND LINE: in the root, on the display of this test.
as_user() {
  in_root setpriv --reuid "$user" --regid "$user" --init-groups env "HOME=/home/$user" "DISPLAY=$DISPLAY" \
    "XAUTHORITY=/home/$user/.Xauthority" sh -c "cd && $1"
}

# all_files: every path outside of what packaging tools and users write.
all_files() {
  in_root find / -xdev '(' -path /proc -o -path /dev -o -path /tmp -o -path /home -o -path /var/log \
    -o -path /var/cache -o -path /var/lib/apt -o -path /var/lib/dpkg -o -path /run ')' -prune -o -print | sort
}

prepare_root() {
  tar --extract --numeric-owner --file "$1" --directory "$root"
  mount -t proc proc "$root/proc"
  mkdir -p "$root/dev/pts"
  mount -t devpts -o newinstance,ptmxmode=0666,mode=0620 devpts "$root/dev/pts"
  ln -sfn pts/ptmx "$root/dev/ptmx"
  cp /etc/resolv.conf "$root/etc/resolv.conf"
  cp "$package" "$root/tmp/package.deb"
  in_root useradd --create-home --shell /bin/sh "$user"
  install -m 644 "$XAUTHORITY" "$root/home/$user/.Xauthority"
}

# package_of_version VERSION: the package with another number, in the root.
package_of_version() {
  dpkg-deb --raw-extract "$package" "$work/$1"
  sed -i "s/^Version: .*/Version: $1/" "$work/$1/DEBIAN/control"
  dpkg-deb --root-owner-group --build "$work/$1" "$root/tmp/$1.deb" >/dev/null
}

# installed_version: with the package's state.
installed_version() {
  in_root dpkg-query --show --showformat='${Version} ${db:Status-Status}' shelf-camera-tool
}

# expect_refusal LANGUAGE SENTENCE COMMAND...: it fails, says so, and the package stays installed.
expect_refusal() {
  local language=$1 sentence=$2
  shift 2
  if in_root env "LC_ALL=$language" "$@" >"$work/refusal" 2>&1; then
    fail "not refused: $*"
  fi
  grep --fixed-strings "$sentence" "$work/refusal" || { cat "$work/refusal" >&2; fail "no sentence: $*"; }
  [ "$(installed_version)" = "$version installed" ] || fail "it has become $(installed_version)"
  in_root dpkg --verify shelf-camera-tool
}

# A user's own menu entry replaces the package's entry of the same name.
hide_in_menu() {
  as_user 'mkdir -p .local/share/applications && sed "s/^Exec=/Hidden=true\nExec=/" \
    /usr/share/applications/shelf-camera-tool.desktop >.local/share/applications/shelf-camera-tool.desktop'
  sha256sum "$user_entry" >"$work/user-entry"
}

update_package() {
  say "installing over version $older"
  package_of_version "$older"
  in_root dpkg --install "/tmp/$older.deb"
  hide_in_menu
  in_root dpkg --install /tmp/package.deb
  [ "$(installed_version)" = "$version installed" ] || fail "no update"
  sha256sum --check --quiet "$work/user-entry" || fail "the user's menu entry has changed"
  [ -f "$root/usr/share/applications/$(basename "$user_entry")" ] || fail "the menu entry has another name"
  expect_refusal C.UTF-8 "version $version is installed; remove it before" dpkg --install "/tmp/$older.deb"
  expect_refusal zh_CN.UTF-8 "要装 $older，请先卸载" dpkg --install "/tmp/$older.deb"
}

install_package() {
  say "installing"
  in_root apt-get -q update
  # What it depends on, first and alone: the package itself is then the only difference.
  in_root apt-get -q satisfy --yes --no-install-recommends "$(dpkg-deb --field "$package" Depends)"
  all_files >"$work/before"
  update_package
  in_root dpkg --verify shelf-camera-tool
  all_files >"$work/installed"
  say "$(diff "$work/before" "$work/installed" | grep -c '^>') files and folders came"
}

# in_background NAME COMMAND: as the user; its output goes to NAME.log, its process to NAME.pid.
in_background() {
  as_user "echo \$\$ >/tmp/$1.pid; exec $2" >"$work/$1.log" 2>&1 &
}

# wait_for COMMAND...: until it succeeds, 20 s at most.
wait_for() {
  for _ in $(seq 100); do
    "$@" && return
    sleep 0.2
  done
  return 1
}

lists_the_camera() {
  grep -q 'init port:.*/dev/ttyUSB9' "$work/tool.log" 2>/dev/null
}

start_camera() {
  in_background camera 'virtual-camera --link /tmp/camera'
  wait_for test -e "$root/tmp/camera.pid" -a -L "$root/tmp/camera" || fail "the virtual camera does not start"
}

# The tool as the menu starts it: it lives, lists the camera's port, and works in the folder for pictures.
start_tool() {
  say "starting the tool"
  local tool camera listed=no working folder=/home/$user/摄像头图片
  start_camera
  ln -sfn /tmp/camera "$root/dev/ttyUSB9"
  in_background tool "$(sed -n 's/^Exec=//p' "$root/usr/share/applications/shelf-camera-tool.desktop")"
  wait_for lists_the_camera && listed=yes
  sleep 2
  tool=$(cat "$root/tmp/tool.pid") camera=$(cat "$root/tmp/camera.pid")
  working=$(readlink "/proc/$tool/cwd" || true)
  cat "$work/tool.log"
  expect_refusal C.UTF-8 "shelf-camera-tool is running (process" dpkg --remove shelf-camera-tool
  kill "$tool" || fail "the tool has ended"
  kill "$camera"
  wait || true
  rm -f "$root/dev/ttyUSB9" "$root"/tmp/*.pid
  [ "$listed" = yes ] || fail "the virtual camera is not in the list of ports"
  [ "${working#"$root"}" = "$folder" ] || fail "it works in ${working#"$root"} instead of $folder"
  say "it works in $folder"
}

# completions WORD...: for a command line of bash with these words.
completions() {
  in_root bash -c '. "/usr/share/bash-completion/completions/$1"
    COMP_WORDS=("$@") COMP_CWORD=$(($# - 1))
    "_${1//-/_}"
    echo "${COMPREPLY[*]}"' completion "$@"
}

# A check-up by the command-line program.
run_command_line() {
  say "running shelf-camera"
  local camera found
  as_user 'shelf-camera --version' >"$work/version" || fail "shelf-camera --version"
  grep "^shelf-camera $(in_root dpkg-query --show --showformat='${Version}' shelf-camera-tool)\$" "$work/version" ||
    fail "shelf-camera --version says $(cat "$work/version")"
  start_camera
  camera=$(cat "$root/tmp/camera.pid")
  # A late answer of a busy machine is a failed reading: three check-ups at most.
  found=no
  for _ in 1 2 3; do
    as_user 'shelf-camera -p /tmp/camera --json check -o report.pdf' >"$work/check.json" && found=yes && break
  done
  kill "$camera"
  wait || true
  rm -f "$root"/tmp/*.pid
  cat "$work/check.json"
  [ "$found" = yes ] || fail "shelf-camera check"
  grep --quiet --fixed-strings '"serialNumber":{"value":"SHELF' "$work/check.json" || fail "the check-up read nothing"
  [ "$(head -c 5 "$root/home/$user/report.pdf")" = %PDF- ] || fail "no report"
}

# Manual pages and completions of all programs, the guide, the rule for adapters.
check_documents() {
  local program file
  for program in shelf-camera-tool shelf-camera-practice shelf-camera virtual-camera shelf-camera-demo; do
    zcat "$root/usr/share/man/man1/$program.1.gz" | sed 's/\\-/-/g' >"$work/page"
    grep --quiet "^\.TH ${program^^} 1 " "$work/page" || fail "no manual page of $program"
    completions "$program" - >/dev/null || fail "no completion of $program"
  done
  for file in doc/shelf-camera-tool/user-guide.zh-CN.html metainfo/shelf-camera-tool.metainfo.xml \
    applications/shelf-camera-practice.desktop; do
    [ -s "$root/usr/share/$file" ] || fail "no $file"
  done
  [ -s "$root/usr/lib/udev/rules.d/60-shelf-camera-tool.rules" ] || fail "no rule for adapters"
  [ "$(completions shelf-camera che)" = check ] || fail "no completion of commands"
  [ "$(completions shelf-camera -t dor)" = dorvel ] || fail "no completion of types"
  [ "$(completions virtual-camera --type dor)" = dorvel ] || fail "no completion of the virtual camera's types"
  [ "$(completions shelf-camera-demo --pic)" = --picture ] || fail "no completion of the demonstration's options"
}

take_installed_tour() {
  say "taking the tour"
  local command="mkdir tour && cd tour && timeout --kill-after=10 $tour_limit_s shelf-camera-demo --tour ."
  as_user "$command" >"$work/tour.log" 2>&1 || {
    tail -20 "$work/tour.log" >&2
    fail "the tour"
  }
  grep '^tour:' "$work/tour.log"
  say "it left $(find "$root/home/$user/tour" -name '*.png' | wc -l) screenshots"
}

remove_package() {
  say "removing"
  in_root dpkg --purge shelf-camera-tool
  all_files >"$work/after"
  diff "$work/before" "$work/after" || fail "the package left or took the files above"
  [ -d "$root/home/$user/摄像头图片" ] || fail "the folder for pictures is gone"
  say "the same $(wc -l <"$work/after") files and folders as before, and the user's folder for pictures"
}

clean_up() {
  local file
  set +e
  for file in "$root"/tmp/*.pid; do
    [ -f "$file" ] && kill "$(cat "$file")" 2>/dev/null
  done
  wait
  umount "$root/proc" "$root/dev/pts"
  rm -rf --one-file-system "$work"
}

# On a display, and in a mount namespace of its own: what is mounted goes with it.
main_inside() {
  package=$1
  work=$(mktemp -d)
  root=$work/root
  version=$(dpkg-deb --field "$package" Version)
  user_entry=$root/home/$user/.local/share/applications/shelf-camera-tool.desktop
  mkdir "$root"
  trap clean_up EXIT
  prepare_root "$2"
  install_package
  start_tool
  run_command_line
  check_documents
  take_installed_tour
  remove_package
}

main() {
  if [ "${1:-}" = --inside ]; then
    main_inside "$2" "$3"
    return
  fi
  local package=${1:-} found=("$project_root"/out/packages/*.deb) tarball
  package=$(realpath "${package:-${found[0]}}")
  [ -f "$package" ] || fail "no package $package; scripts/package.sh makes it"
  [ "$(id -u)" -eq 0 ] || { as_root "${BASH_SOURCE[0]}" "$package" && return; }
  if [ -e "$package.spdx.json" ]; then
    "${BASH_SOURCE[0]%/*}/../sbom/test.sh" "$package"
  fi
  ensure_packages debootstrap xvfb xauth
  use_utf8_locale
  tarball=$cache/debian-root-$(dpkg --print-architecture).tar
  make_base "$tarball"
  xvfb-run --auto-servernum --server-args='-screen 0 1280x1024x24' \
    unshare --mount --propagation private "${BASH_SOURCE[0]}" --inside "$package" "$tarball"
}

main "$@"
