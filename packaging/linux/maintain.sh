#!/bin/sh
# preinst and prerm of the package: refuse to go back to an older version, and to take away programs that run.
set -e

# refuse ENGLISH CHINESE
refuse() {
  case ${LC_ALL:-${LC_MESSAGES:-$LANG}} in
    zh*) echo "shelf-camera-tool：$2" >&2 ;;
    *) echo "shelf-camera-tool: $1" >&2 ;;
  esac
  exit 1
}

# is_downgrade INSTALLED NEW
is_downgrade() {
  [ -n "$1" ] && [ -n "$2" ] && dpkg --compare-versions "$2" lt "$1"
}

refuse_downgrade() {
  if is_downgrade "$1" "$2"; then
    refuse "version $1 is installed; remove it before you install the older $2" \
      "已安装更新的版本 $1；要装 $2，请先卸载"
  fi
}

refuse_while_running() {
  for program in shelf-camera-tool shelf-camera-practice shelf-camera virtual-camera shelf-camera-demo; do
    for process in /proc/[0-9]*; do
      if [ "$process/exe" -ef "/usr/bin/$program" ]; then
        refuse "$program is running (process ${process#/proc/}); close it and try again" \
          "$program 正在运行（进程 ${process#/proc/}）；请关闭后重试"
      fi
    done
  done
}

case "$DPKG_MAINTSCRIPT_NAME $1" in
  "preinst upgrade") refuse_downgrade "$2" "$3" ;;
  "prerm failed-upgrade") # the installed version's prerm has told why
    if is_downgrade "$2" "$3"; then exit 1; fi
    ;;
  "prerm upgrade") refuse_downgrade "$(dpkg-query --show --showformat='${Version}' shelf-camera-tool)" "$2" ;;
  "prerm remove") refuse_while_running ;;
esac
