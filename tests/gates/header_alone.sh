#!/usr/bin/env bash
# header_alone.sh <header> <C compiler> <C++ compiler>: ppl.h needs no other header before it, in C
# as old as C99 and in C++.
source "$(dirname "$0")/common.sh"

header=$1 cc=$2 cxx=$3
strict=(-pedantic -Wall -Wextra -Werror -fsyntax-only)
"$cc" -std=c99 "${strict[@]}" -x c "$header" || refuse "${header##*/} is not C99 by itself: see the compiler's message above"
"$cxx" -std=c++11 "${strict[@]}" -x c++ "$header" || refuse "${header##*/} is not C++ by itself: see the compiler's message above"
