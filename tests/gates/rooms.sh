#!/usr/bin/env bash
# rooms.sh <HACKING.md> <src folder>: every include in the sources runs downwards, as the map in HACKING.md
# draws it. The map's rows stand from the ground floor up; the last column of a room's row names the rooms
# that it may include, besides itself and ppl.h.
source "$(dirname "$0")/common.sh"

map=$1 src=$2
[ -f "$map" ] && [ -d "$src" ] || refuse "no map or no sources: $map $src"
includes=$(cd "$src" && grep -rHoE '^#include "[^"]+"' --include='*.h' --include='*.cpp' . | sed 's|^\./||' | sort)
[ -n "$includes" ] || refuse "no include found in $src: correct tests/gates/CMakeLists.txt"
folders=$(cd "$src" && find . -name '*.h' -o -name '*.cpp' | sed 's|^\./||; s|/[^/]*$||' | sort -u)

said=$(awk -F '|' -v includes="$includes" -v folders="$folders" '
  function fail(text) { print text; failed = 1; exit }
  # A row of the map: | `src/room/` | what lives there | `room`, `room` |
  /^\| *`src\// {
    room = $2; gsub(/[ `]/, "", room); sub(/^src\//, "", room); sub(/\/$/, "", room)
    floor[room] = ++floors
    rest = $4
    while (match(rest, /`[^`]+`/)) {
      below = substr(rest, RSTART + 1, RLENGTH - 2); rest = substr(rest, RSTART + RLENGTH)
      if (!(below in floor)) fail("the map lets " room " include " below ", which stands above it or nowhere: correct HACKING.md")
      allowed[room, below] = 1
    }
  }
  END {
    if (failed) exit
    if (floors == 0) fail("HACKING.md has no map of src/")
    n = split(folders, folder, "\n")
    for (i = 1; i <= n; i++) if (!(folder[i] in floor)) fail("src/" folder[i] " is not on the map: add its row to HACKING.md")
    for (room in floor) {
      found = 0
      for (i = 1; i <= n; i++) if (folder[i] == room) found = 1
      if (!found) fail("src/" room " is on the map and has no sources: take its row out of HACKING.md")
    }
    n = split(includes, line, "\n")
    for (i = 1; i <= n; i++) {
      split(line[i], part, ":#include ")
      room = part[1]; sub(/\/[^\/]*$/, "", room)
      target = part[2]; gsub(/"/, "", target)
      if (target == "ppl.h") continue
      into = target
      if (!sub(/\/[^\/]*$/, "", into)) fail("src/" part[1] " includes " target " without its room")
      if (into != room && !((room, into) in allowed)) fail("src/" part[1] " includes " target ": the map has no way from " room " down to " into)
    }
  }' "$map")
[ -z "$said" ] || refuse "$said"
