#!/usr/bin/env bash
# What run.sh runs in its root: the programs, then the capture driver as a service of the kernel. The
# current folder holds the files under test.
set -euo pipefail

# No .NET, no browser, no menus, no pages of registers after a crash.
export WINEPREFIX=/prefix WINEDEBUG=-all HOME=/root
export WINEDLLOVERRIDES='mscoree,mshtml=;winemenubuilder.exe=d;winedbg.exe=d'
failures=()

say() { printf '\n== %s\n' "$*"; }
failed() {
  echo "FAILED: $*"
  failures+=("$*")
}

say "$(wine --version), a new prefix"
rm -rf "$WINEPREFIX"
trap 'wineserver -k || true; rm -rf "$WINEPREFIX"' EXIT
timeout 300 wineboot -i > wineboot.log 2>&1 || { cat wineboot.log; exit 1; }
wineserver -w

for program in *_test.exe; do
  say "$program"
  timeout 900 wine "$program" --gtest_brief=1 || failed "$program"
done
wineserver -w

# Wine's kernel has no floating-point functions. A driver of ours has them, and in a copy of ppl.sys the
# kernel's name is replaced by that driver's, which is as long.
drivers=$WINEPREFIX/drive_c/windows/system32/drivers
cp capture.sys "$drivers"
LC_ALL=C sed 's/ntoskrnl\.exe\x00/pplkstub.sys\x00/' ppl.sys > "$drivers/ppl.sys"

# serve <driver of the two functions> <what the capture driver must print>
serve() {
  say "the capture driver as a service, with $1"
  cp "$1" "$drivers/pplkstub.sys"
  timeout 300 wine cmd /c service.cmd > service.log 2>&1 || failed "service.cmd"
  wineserver -w
  grep -aoE '(capture|floating point): [^"]*' service.log | tr -d '\r' > report.txt || true
  cat report.txt
  diff report.txt <(printf '%s\n' "$2" "capture: unloaded") || failed "the report with $1"
}
export WINEDEBUG=-all,+debugstr   # what drivers print
right=$(grep -o 'capture: .*' README.md)
serve floating_point_works.sys "$right"
serve floating_point_fails.sys \
  "$(sed -E 's/right$/fallback/; s/means .*/means r 0 g 0 b 0/' <<< "$right")"

say "summary"
[ ${#failures[@]} -eq 0 ] || { printf 'FAILED: %s\n' "${failures[@]}"; exit 1; }
echo "all passed"
