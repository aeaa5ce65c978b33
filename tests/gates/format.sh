#!/usr/bin/env bash
# format.sh <project folder> <clang-format>: the sources look as .clang-format says.
source "$(dirname "$0")/common.sh"

cd "$1"
mapfile -t sources < <(find . -path ./build -prune -o -path ./.git -prune -o \
  \( -name '*.h' -o -name '*.hpp' -o -name '*.c' -o -name '*.cpp' \) -print | sort)
[ ${#sources[@]} -gt 0 ] || refuse "no sources in $1"
if ! report=$("$2" --dry-run --Werror "${sources[@]}" 2>&1); then
  wrong=$(echo "$report" | sed -n 's/:[0-9]*:[0-9]*: error:.*//p' | brief)
  refuse "not formatted, run ./dev format: ${wrong:-$report}"
fi
