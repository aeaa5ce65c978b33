#!/usr/bin/env bash
# reproducible.sh <cmake> <project folder> <folder with images>: a second build, elsewhere and by the
# compiler itself, gives the same images and import libraries to the byte.
source "$(dirname "$0")/../gates/common.sh"

cmake=$1 project=$2 images=$3
place=$(mktemp -d)
trap 'rm -rf "$place"' EXIT
export CCACHE_DISABLE=1
cp -r "$project"/{CMakeLists.txt,cmake,include,src,packaging,LICENSE} "$place"
"$cmake" -G Ninja -S "$place" -B "$place/build" --toolchain "$place/cmake/mingw-i686.cmake" \
  -DCMAKE_BUILD_TYPE=RelWithDebInfo -DPPL_TESTS=OFF > "$place/log" 2>&1 || refuse "$(tail -5 "$place/log")"
"$cmake" --build "$place/build" > "$place/log" 2>&1 || refuse "$(tail -5 "$place/log")"
for file in ppl.sys ppl.dll libppl.sys.a libppl.dll.a ; do
  cmp "$images/$file" "$place/build/windows/$file" || refuse "$file differs from one build to the next: look for times, paths and random names"
done
