#!/usr/bin/env bash
# installed_package.sh <build folder> <cmake> <C compiler> [flag...]: a C program finds the installed
# library through pkg-config, links with it, shared and static, and gets a context from it.
source "$(dirname "$0")/common.sh"

build=$1 cmake=$2 cc=$3
shift 3
place=$(mktemp -d)
trap 'rm -rf "$place"' EXIT
"$cmake" --install "$build" --prefix "$place/usr" > /dev/null
pc=$(find "$place" -name ppl.pc)
[ -n "$pc" ] || refuse "ppl.pc is not installed: see install() in src/CMakeLists.txt"
library_folder=$(dirname "$(dirname "$pc")")

cat > "$place/client.c" << 'C'
#include <ppl.h>
int main(void) {
  PplContext *context = ppl_init();
  return context != 0 && ppl_free(context) != 0 ? 0 : 1;
}
C
flags=$(PKG_CONFIG_PATH=$(dirname "$pc") pkg-config --define-variable=prefix="$place/usr" --cflags --libs ppl)
"$cc" "$@" "$place/client.c" $flags -o "$place/shared" || refuse "a C program does not link with the installed libppl.so"
LD_LIBRARY_PATH=$library_folder "$place/shared" || refuse "a C program linked with the installed libppl.so gets no context"
"$cc" "$@" "$place/client.c" -I"$place/usr/include" "$library_folder/libppl.a" -o "$place/static" || refuse "a C program does not link with the installed libppl.a"
"$place/static" || refuse "a C program linked with the installed libppl.a gets no context"
