#!/usr/bin/env bash
# no_avx.sh <object>...: no object touches registers that older processors lack and that the save of a kernel
# does not cover: not ymm, zmm, mask registers, nor xmm in the newer encoding.
source "$(dirname "$0")/common.sh"

objects=$(pick '\.o' "$@")
for object in $objects; do
  places=$(objdump -dC --no-show-raw-insn "$object" | awk -F '\t' '
    /^[0-9a-f]+ </ { name = $0; sub(/^[0-9a-f]+ /, "", name); next }
    $2 ~ /%([yz]mm[0-9]|k[0-7])/ || $2 ~ /^v[a-z0-9]+ .*%xmm/ { split($2, word, " "); print word[1] " in " name }' | brief)
  [ -z "$places" ] || refuse "${object##*/} uses AVX: compile it with -mno-avx: $places"
done
