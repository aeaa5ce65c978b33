#!/usr/bin/env bash
# reproducible.sh <cmake> <project folder> <build folder> <another folder>: a second build, there, gives
# the same images and import libraries to the byte.
source "$(dirname "$0")/../gates/common.sh"

cmake=$1 project=$2 images=$3 place=$4
rm -rf "$place"
mkdir -p "$place"
cp -r "$project"/{CMakeLists.txt,LICENSE,cmake,examples,include,packaging,src} "$place"
"$cmake" -G Ninja -S "$place" -B "$place/build" --toolchain "$place/cmake/mingw-i686.cmake" \
  -DCMAKE_BUILD_TYPE=RelWithDebInfo "-DCMAKE_CXX_FLAGS_RELWITHDEBINFO=-O2 -DNDEBUG" \
  "-DCMAKE_C_FLAGS_RELWITHDEBINFO=-O2 -DNDEBUG" -DPPL_TESTS=OFF > "$place/log" 2>&1 ||
  refuse "$(tail -5 "$place/log")"
"$cmake" --build "$place/build" > "$place/log" 2>&1 || refuse "$(tail -5 "$place/log")"
for file in windows/{ppl.sys,ppl.dll,libppl.sys.a,libppl.dll.a} examples/capture_driver/capture.sys; do
  cmp "$images/$file" "$place/build/$file" ||
    refuse "$file differs from one build to the next: look for times, paths and random names"
done
