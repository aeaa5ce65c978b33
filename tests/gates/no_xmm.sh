#!/usr/bin/env bash
# no_xmm.sh <object>...: in 32 bit, no object but the SSE2 tier's touches an xmm register.
source "$(dirname "$0")/common.sh"

pick '_p3\.cpp' "$@" > /dev/null
for object in "$@"; do
  [[ $object == *_sse2.cpp* ]] && continue
  places=$(objdump -dC --no-show-raw-insn "$object" |
    awk '/^[0-9a-f]+ </ { name = $0; sub(/^[0-9a-f]+ /, "", name) } /%xmm/ { print name }' | brief)
  [ -z "$places" ] || refuse "${object##*/} uses xmm registers: write this for mm registers or move it to the SSE2 tier: $places"
done
