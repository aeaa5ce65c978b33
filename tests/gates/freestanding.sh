#!/usr/bin/env bash
# freestanding.sh <object>...: the library calls nothing but itself and the compiler's 64-bit division.
source "$(dirname "$0")/common.sh"

objects=$(pick '\.o' "$@")
allowed='__(u?div|u?mod)(di|ti)3
_GLOBAL_OFFSET_TABLE_'
defined=$(nm --defined-only -g $objects | awk 'NF == 3 { print $3 }' | sort -u)
undefined=$(nm -u $objects | awk 'NF == 2 { print $2 }' | sort -u)
foreign=$(comm -13 <(echo "$defined") <(echo "$undefined") | grep -vxE "$allowed" || true)
[ -z "$foreign" ] && exit 0

for object in $objects; do
  if nm -u "$object" | awk '{ print $2 }' | grep -qxF "$foreign"; then
    refuse "${object##*/} calls what a driver does not have, write it out (loops for memcpy and memset): $(echo "$foreign" | c++filt | brief)"
  fi
done
