#!/usr/bin/env bash
# gates_test.sh <C++ compiler> <flag of the P3 tier>...: shows each gate something that it must refuse,
# and beside it something harmless that it must let pass.
source "$(dirname "$0")/common.sh"

gates=$(cd "$(dirname "$0")" && pwd)
compile=("$@")
place=$(mktemp -d)
trap 'rm -rf "$place"' EXIT
cd "$place"
failures=0

# object <file> <code>: compiles the code to an object file.
object() {
  echo "$2" > "$1.cpp"
  "${compile[@]}" -c "$1.cpp" -o "$1.cpp.o"
}

wrong() {
  echo "$*" >&2
  failures=$((failures + 1))
}

# accepts <gate> <argument>...
accepts() {
  local gate=$1
  shift
  bash "$gates/$gate.sh" "$@" > out 2>&1 || wrong "$gate refused what is right: $(cat out)"
}

# refuses <gate> <words that its message must have> <argument>...
refuses() {
  local gate=$1 words=$2
  shift 2
  if bash "$gates/$gate.sh" "$@" > out 2> messages; then
    wrong "$gate let pass: $*"
  elif ! tail -1 messages | grep -q "^$gate.sh: .*$words"; then
    wrong "$gate did not say '$words': $(cat messages)"
  fi
}

# compiler_refuses <words> <code>
compiler_refuses() {
  echo "$2" > refused.cpp
  if "${compile[@]}" -c refused.cpp -o refused.o 2> messages; then
    wrong "the compiler's flags let pass: $2"
  elif ! grep -q -- "$1" messages; then
    wrong "the compiler did not say '$1': $(cat messages)"
  fi
}

bits=$("${compile[@]}" -dM -E -x c++ /dev/null | awk '$2 == "__SIZEOF_POINTER__" { print 8 * $3 }')

# A tier file as it should be; the other samples differ in one thing each.
object good_p3 '
  namespace { int twice(int x) { return 2 * x; } }
  extern "C" int four_times(int x) { return twice(twice(x)); }
  extern "C" unsigned long long per(unsigned long long x, unsigned long long y) { return x / y; }'
for gate in no_weak_symbols no_initialisers freestanding no_floating_point no_xmm no_avx machine_code; do
  accepts $gate good_p3.cpp.o
  refuses $gate 'no object file'
done

object weak_p3 '
  inline __attribute__((noinline)) int shared(int x) { return x * x; }
  extern "C" int f(int x) { return shared(x) + 1; }'
refuses no_weak_symbols 'unnamed namespace of the tier: shared(int)' weak_p3.cpp.o

object initialiser_p3 '
  int f(); int at_load = f();'
refuses no_initialisers 'constinit' initialiser_p3.cpp.o

object foreign_p3 '
  extern "C" void *memcpy(void *, const void *, __SIZE_TYPE__);
  extern "C" void f(char *to, const char *from, int n) { memcpy(to, from, (__SIZE_TYPE__)n); }'
refuses freestanding 'write it out .*memcpy' good_p3.cpp.o foreign_p3.cpp.o

object guard_p3 '
  extern "C" void g(char *);
  extern "C" __attribute__((optimize("stack-protector-all"))) void f() { char text[64]; g(text); }
  extern "C" void g(char *) {}'
refuses freestanding '__stack_chk' guard_p3.cpp.o

object floating_p3 '
  extern "C" int f(int x, int y) { volatile float a = (float)x; return (int)(a * (float)y); }'
refuses no_floating_point 'use integers' floating_p3.cpp.o
object long_floating_p3 '
  extern "C" long double f(long double x) { return x * x; }'
refuses no_floating_point 'fmul' long_floating_p3.cpp.o

object xmm_p3 '
  extern "C" void f(int *to) { asm volatile("movups %%xmm1, (%0)" : : "r"(to) : "memory"); }'
refuses no_xmm 'SSE2 tier: <f>' xmm_p3.cpp.o
cp xmm_p3.cpp.o xmm_sse2.cpp.o
accepts no_xmm good_p3.cpp.o xmm_sse2.cpp.o

if [ "$bits" = 64 ]; then   # in 32 bit the assembler refuses them
  object avx_sse2 '
    extern "C" void f(int *to) { asm volatile("vmovdqu %%ymm1, (%0)" : : "r"(to) : "memory"); }'
  refuses no_avx 'mno-avx: vmovdqu in <f>' avx_sse2.cpp.o
  object vex_sse2 '
    extern "C" void f() { asm volatile("vpaddw %xmm0, %xmm1, %xmm2"); }'
  refuses no_avx 'vpaddw' vex_sse2.cpp.o
fi

echo 'extern "C" int f(int x) { return x; }' > later_p3.cpp
"${compile[@]}" -flto -c later_p3.cpp -o later_p3.cpp.o
refuses machine_code 'fno-lto' later_p3.cpp.o
object nothing_p3 ''
refuses machine_code 'is empty' nothing_p3.cpp.o

compiler_refuses 'frame-larger-than' '
  void g(char *); void f() { char line[1100]; g(line); }'
if [ "$bits" = 32 ]; then
  for instruction in 'paddq %%mm0, %%mm1' 'pmuludq %%mm0, %%mm1' 'movdqa %%xmm0, %%xmm1' 'movnti %%eax, (%%esp)'; do
    compiler_refuses 'pentiumiii' "void f() { asm volatile(\"$instruction\"); }"
  done
fi

cat > good.h << 'H'
#include <stdint.h>
#define API __attribute__((visibility("default")))
#ifdef __cplusplus
extern "C" {
#endif
/* API void not_there(void); */
API uint8_t
first(const uint8_t table[256]);
API const uint8_t *second(void);
#ifdef __cplusplus
}
#endif
H
cc=gcc cxx=g++
accepts header_alone good.h $cc $cxx
grep -v stdint good.h > needy.h
refuses header_alone 'not C99' needy.h $cc $cxx
sed 's/const uint8_t table/uint8_t class/' good.h > only_c.h
refuses header_alone 'not C++' only_c.h $cc $cxx

library() {
  echo "$2" > "$1.cpp"
  "${compile[@]}" -shared -nostdlib "$1.cpp" -o "$1.so"
}
both='#include "good.h"
  uint8_t first(const uint8_t *t) { return *t; } const uint8_t *second(void) { return 0; }'
library both "$both"
library surplus "$both API void third() {}"
library missing '#include "good.h"
  uint8_t first(const uint8_t *t) { return *t; }'
printf 'first\nsecond\nlater\n' > list
printf 'first\n' > short_list
accepts exports both.so good.h list $cc
refuses exports 'declare or hide them: .*third' surplus.so good.h list $cc
refuses exports 'define them: second' missing.so good.h list $cc
refuses exports 'add them there: second' both.so good.h short_list $cc
refuses exports 'no declaration' both.so /dev/null list $cc

# Two rooms, the upper one including the lower one.
mkdir -p house/ground house/upper
echo '#include "ppl.h"' > house/ground/a.h
printf '#include "ground/a.h"\n#include "upper/c.h"\n' > house/upper/b.cpp
echo '#pragma once' > house/upper/c.h
row() { printf '| `src/%s/` | things | %s |\n' "$1" "$2"; }
{ row ground nothing; row upper '`ground`'; } > map.md
accepts rooms map.md house
{ row ground nothing; row upper nothing; } > closed.md
refuses rooms 'no way from upper down to ground' closed.md house
{ row ground '`upper`'; row upper '`ground`'; } > upward.md
refuses rooms 'stands above it' upward.md house
{ row ground nothing; } > small.md
refuses rooms 'src/upper is not on the map' small.md house
{ row ground nothing; row upper '`ground`'; row attic nothing; } > large.md
refuses rooms 'src/attic is on the map' large.md house
echo '#include "b.cpp"' > house/upper/c.h
refuses rooms 'without its room' map.md house
refuses rooms 'no map of src' list house

mkdir -p held/a named
printf 'TEST(Suite, Case) {}\nTEST_P(Other,\n       Case) {}\n// TEST(Suite, Gone) {}\n' > held/a/a_test.cpp
printf '### Heading\n`Suite.Case` and `Other.Case` in `a/a_test.cpp`\n' > page.md
printf '// Meant so: docs/oddities.md,\n// "Heading".\n' > named/a.h
accepts oddities page.md held named
sed 's/Other.Case/Suite.Gone/' page.md > gone.md
refuses oddities 'does not have.*Suite.Gone' gone.md held
sed 's/### Heading/### Headline/' page.md > headline.md
refuses oddities 'comments name headings.*Heading' headline.md held named
refuses oddities 'names no test' /dev/null held

if command -v clang-format > /dev/null; then
  mkdir tidy untidy
  cp "$gates/../../.clang-format" .
  echo 'int f(int x) { return x; }' > tidy/a.cpp
  echo 'int  f( int x ){return x;}' > untidy/a.cpp
  accepts format tidy clang-format
  refuses format './dev format: ./a.cpp' untidy clang-format
fi

if command -v python3 > /dev/null; then
  generator=$gates/../../tools/generate_gamma.py
  python3 "$generator" > curves.cpp
  accepts gamma_data python3 "$generator" curves.cpp
  sed 's/,254,255,/,255,255,/' curves.cpp > other_curves.cpp
  refuses gamma_data 'anew' python3 "$generator" other_curves.cpp
fi

mkdir -p build
echo 'message("nothing is installed")' > build/cmake_install.cmake
refuses installed_package 'ppl.pc is not installed' build cmake $cc

[ $failures = 0 ] || refuse "$failures gates do not do what they should, see above"
