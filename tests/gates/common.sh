# Sourced by the gates. A gate looks at what was built, and if it refuses, it says in one line what is
# wrong and what to do about it.
set -euo pipefail

refuse() {
  echo "${0##*/}: $*" >&2
  exit 1
}

# Prints the arguments whose names match the extended regular expression $1; refuses if none does,
# so that no gate can pass by looking at nothing.
pick() {
  local pattern=$1 found
  shift
  found=$(printf '%s\n' "$@" | grep -E -- "$pattern") || refuse "no object file matches $pattern: correct tests/gates/CMakeLists.txt"
  printf '%s\n' "$found"
}

# Joins lines into one, and shows no more than the first few.
brief() {
  sort -u | awk 'NR <= 5; NR == 6 { print "..." }' | paste -sd ' '
}
