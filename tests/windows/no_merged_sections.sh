#!/usr/bin/env bash
# no_merged_sections.sh <object>...: tier objects have no section that the linker may merge with another
# object's, for then the P3 tier may get a body that was compiled for SSE2. In this object format nm
# does not tell such symbols from others.
source "$(dirname "$0")/../gates/common.sh"

for object in $(pick '_(p3|sse2)\.cpp' "$@"); do
  merged=$(objdump -h "$object" | awk '/^ +[0-9]+ / { name = $2 } /LINK_ONCE/ { print name }' | brief)
  [ -z "$merged" ] || refuse "${object##*/} has sections that may be merged: put these into an unnamed namespace of the tier: $merged"
done
