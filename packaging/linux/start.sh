#!/bin/sh
# Starts a program (the tool if none is named) from the desktop's menu. It writes the pictures that it downloads into
# its working directory, and a menu gives it none that the user would look into: work in a folder of its own among the
# user's pictures.
pictures=$(xdg-user-dir PICTURES 2>/dev/null)
[ -d "$pictures" ] || pictures=$HOME
folder=$pictures/摄像头图片
mkdir -p "$folder" && cd "$folder" || cd "$HOME" || exit 1
exec "${1:-shelf-camera-tool}"
