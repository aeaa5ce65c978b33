#!/usr/bin/env bash
# no_weak_symbols.sh <object>...: tier objects must have nothing that the linker may merge.
#
# An inline function in a header that both tiers include becomes one weak body, and the linker keeps
# whichever it meets first: the P3 tier would run instructions of the SSE2 tier.
source "$(dirname "$0")/common.sh"

objects=$(pick '_(p3|sse2)\.cpp' "$@")
for object in $objects; do
  weak=$(nm -C "$object" | grep -E ' [WVuvw] ' | sed 's/.* [WVuvw] //' | brief || true)
  [ -z "$weak" ] || refuse "${object##*/} has weak symbols: put these into an unnamed namespace of the tier: $weak"
done
