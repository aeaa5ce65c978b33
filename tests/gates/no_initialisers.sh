#!/usr/bin/env bash
# no_initialisers.sh <object>...: nothing in the library waits for a start-up code to run it.
source "$(dirname "$0")/common.sh"

objects=$(pick '\.o' "$@")
for object in $objects; do
  if objdump -h "$object" | grep -qE '\.(init_array|fini_array|ctors|dtors)'; then
    refuse "${object##*/} needs an initialiser at load time, and a driver has nobody to run it: make its globals constinit or constexpr"
  fi
done
