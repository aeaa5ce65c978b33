#!/usr/bin/env bash
# exports.sh <libppl.so> <ppl.h> <export list> <C compiler>: the shared library exports what the header
# declares, no more and no less, and all of it is in the export list.
source "$(dirname "$0")/common.sh"

library=$1 header=$2 list=$3 cc=$4
mark='__attribute__((visibility("default")))'
declared=$("$cc" -E -P -x c "$header" | tr '\n' ' ' | awk -v mark="$mark" '{
  while ((at = index($0, mark)) > 0) {
    $0 = substr($0, at + length(mark))
    match($0, /[A-Za-z_][A-Za-z_0-9]* *\(/)
    name = substr($0, RSTART, RLENGTH - 1); gsub(/ /, "", name); print name
  }
}' | sort -u)
[ -n "$declared" ] || refuse "no declaration found in ${header##*/}: PPL_API must give functions default visibility"
exported=$(nm -D --defined-only "$library" | awk '{ print $3 }' | sort -u)
listed=$(sort -u "$list")

unlisted=$(comm -23 <(echo "$declared") <(echo "$listed") | brief)
[ -z "$unlisted" ] || refuse "declared in ${header##*/} but missing from packaging/${list##*/}, add them there: $unlisted"
missing=$(comm -23 <(echo "$declared") <(echo "$exported") | brief)
[ -z "$missing" ] || refuse "declared in ${header##*/} but not in ${library##*/}, define them: $missing"
surplus=$(comm -13 <(echo "$declared") <(echo "$exported") | brief)
[ -z "$surplus" ] || refuse "in ${library##*/} but not declared in ${header##*/}, declare or hide them: $surplus"
