#!/usr/bin/env bash
# no_floating_point.sh <object>...: the library computes in integers only.
#
# In a driver an x87 or SSE floating-point instruction outside the bracket destroys a program's
# numbers. Moves and bit operations that are only named after floating point pass.
source "$(dirname "$0")/common.sh"

objects=$(pick '\.o' "$@")
for object in $objects; do
  places=$(objdump -dC --no-show-raw-insn "$object" | awk -F '\t' '
    /^[0-9a-f]+ </ { name = $0; sub(/^[0-9a-f]+ /, "", name); next }
    {
      split($2, word, " "); op = word[1]
      if (op ~ /^f[a-z0-9]+$/ || op ~ /^v?cvt/ ||
          op ~ /^v?(add|sub|mul|div|sqrt|min|max|rcp|rsqrt|hadd|hsub|addsub|round|u?comi|cmp[a-z_]*)(ss|sd|ps|pd)$/)
        print op " in " name
    }' | brief)
  [ -z "$places" ] || refuse "${object##*/} computes in floating point: use integers: $places"
done
