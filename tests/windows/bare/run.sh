#!/usr/bin/env bash
# run.sh <bochs> <reset code> <kernel> <driver> <processor model> <flags> <tier>: runs the driver on the bare
# machine with that processor and insists on the processor's flags and the tier: p3, sse2, none, or fault
# for a tier that was forced upon a processor without it.
set -euo pipefail

bochs=$1 model=$5 flags=$6 tier=$7
place=$(mktemp -d)
trap 'rm -rf "$place"' EXIT
# 2 MB of ROM up to the last address there is: the driver, then the kernel, then the reset code.
driver_room=$((0x1D0000)) kernel_room=$((0x20000))
if [ "$(stat -c %s "$4")" -gt $driver_room ]; then
  echo "${4##*/} is larger than the $driver_room bytes that the ROM has for it"
  exit 1
fi
cp "$4" "$place/rom"
truncate -s $driver_room "$place/rom"
cat "$3" >> "$place/rom"
truncate -s $((driver_room + kernel_room)) "$place/rom"
cat "$2" >> "$place/rom"
sed -e "s|@ROM@|$place/rom|; s|@MODEL@|$model|; s|@LOG@|$place/log|" \
  "$(dirname "$0")/machine.txt.in" > "$place/machine"
printf 'c\nq\n' > "$place/debugger"   # Debian's has a debugger, which waits for orders

# Its exit status says nothing: 1 after a power-off.
timeout 120 "$bochs" -q -f "$place/machine" -rc "$place/debugger" < /dev/null > "$place/output" 2>&1 || true
text=$(grep -aE '^(flags|loaded|tier|golden|wrong|failing|finished|failed|exception)' "$place/output" || true)
echo "$text"

refuse() {
  echo "$model: $*"
  [ -n "$text" ] || tail -5 "$place/output"
  exit 1
}

has() { grep -qE "^$1\$" <<< "$text"; }

has "flags: $flags" || refuse "not flags $flags"
has loaded || refuse "the driver was not loaded"
if [ "$tier" = fault ]; then
  has 'exception 6 in the driver at [0-9]+' || refuse "the forced tier ran into no undefined instruction"
  exit 0
fi
has "tier: $tier" || refuse "not tier $tier"
has finished || refuse "did not finish"
if [ "$tier" != none ]; then
  has 'golden cases: [1-9][0-9]*, wrong: 0' || refuse "golden frames are wrong"
  has 'failing saves: right' || refuse "failing saves were not tested"
fi
