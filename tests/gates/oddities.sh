#!/usr/bin/env bash
# oddities.sh <docs/oddities.md> <tests folder> [<sources folder>]: the tests that the page names exist,
# in the file that it names behind them; and so do the headings that comments in the sources name.
source "$(dirname "$0")/common.sh"

page=$1 tests=$2 sources=${3:-}

# The cases of a test file, one "Suite.Case" a line.
cases_of() {
  sed 's|//.*||' "$1" | tr -s '[:space:]' ' ' |
    grep -oE '\bTEST(_F|_P)?\( ?\w+, ?\w+ ?\)' | sed -E 's/.*\( ?(\w+), ?(\w+) ?\)/\1.\2/' || true
}

# What the page has in backticks: cases, and their files.
named=$(grep -oE '`([A-Z][A-Za-z0-9]*\.[A-Z][A-Za-z0-9]*|[a-z0-9_/]+_test\.cpp)`' "$page" | tr -d '`' || true)
[ -n "$named" ] || refuse "${page##*/} names no test: write \`Suite.Case\` in \`folder/name_test.cpp\`"

waiting=()
while read -r name; do
  if [[ $name != *_test.cpp ]]; then
    waiting+=("$name")
    continue
  fi
  [ -f "$tests/$name" ] || refuse "${page##*/} names a file that is not there, correct it: $name"
  [ ${#waiting[@]} -gt 0 ] || refuse "${page##*/} names no test of $name: write one before it"
  missing=$(comm -23 <(printf '%s\n' "${waiting[@]}" | sort -u) <(cases_of "$tests/$name" | sort -u) | brief)
  [ -z "$missing" ] || refuse "${page##*/} names tests that $name does not have, correct them: $missing"
  waiting=()
done <<< "$named"
[ ${#waiting[@]} -eq 0 ] || refuse "${page##*/} does not say where they are, write their file behind them: ${waiting[*]}"

[ -n "$sources" ] || exit 0
# Comments go on in the next line, and so may what stands behind the page's name.
comments=$(grep -rhE --include='*.h' --include='*.cpp' '^ *//|  // ' "$sources" | sed -E 's|^.*// ?||' | tr '\n' ' ')
headings=$(grep -oE 'docs/oddities\.md(, "[^"]+")*' <<< "$comments" | grep -oE '"[^"]+"' | tr -d '"' | sort -u || true)
[ -n "$headings" ] || refuse "no comment names a heading: write docs/oddities.md, \"Heading\""
missing=$(comm -23 <(echo "$headings") <(sed -n 's/^###* //p' "$page" | sort -u) | brief)
[ -z "$missing" ] || refuse "comments name headings that ${page##*/} does not have, correct them: $missing"
