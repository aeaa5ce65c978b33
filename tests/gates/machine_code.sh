#!/usr/bin/env bash
# machine_code.sh <object>...: what the other gates look at is what will run.
#
# Objects of a build with link-time optimisation hold the compiler's own notes instead of code. They would be
# compiled anew when somebody links, without the flags of their tier, and every gate would look at nothing.
source "$(dirname "$0")/common.sh"

objects=$(pick '\.o' "$@")
for object in $objects; do
  sections=$(objdump -h "$object" 2> /dev/null) || refuse "${object##*/} is no machine code: compile the core with -fno-lto"
  if grep -qE '\.gnu\.lto|\.llvmbc' <<< "$sections"; then
    refuse "${object##*/} waits for the linker to compile it: compile the core with -fno-lto"
  fi
  bytes=$(awk '$2 ~ /^\.(text|data|rodata|rdata|bss)/ { print $3 }' <<< "$sections" | sed 's/^/0x/' | paste -sd + | sed 's/^$/0/')
  [ $((bytes)) -gt 0 ] || refuse "${object##*/} is empty: see how it was compiled"
done
