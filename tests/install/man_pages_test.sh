#!/usr/bin/env bash
# The manual pages are well-formed and agree with the programs and the sources.
# usage: man_pages_test.sh SOURCE_DIR BIN_DIR
set -euo pipefail
cd "$1"
bin=$2
place=$(mktemp -d)
trap 'rm -rf "$place"' EXIT
failures=0
# same WHAT LEFT RIGHT: compares two lists, with one word per line.
same() {
  diff <(LC_ALL=C sort -u "$2") <(LC_ALL=C sort -u "$3") >"$place/difference" && return
  echo "FAILED: $1" >&2
  cat "$place/difference" >&2
  failures=$((failures + 1))
}

if command -v mandoc >/dev/null; then
  mandoc -T lint -W warning man/* || failures=$((failures + 1))
else
  echo "left out: the form of the pages, because mandoc is not installed"
fi

# Commands, options, faults.
"$bin/fokrazo" --help | sed -n 's/^  \([a-z][a-z-]*\)  *.*/\1/p' >"$place/commands"
awk '/^[A-Z].*:$/ { group = $0 } /^  [a-z]/ { print group, $1 }' <("$bin/fokrazo" --help) >"$place/groups"
awk '/^\.Ss / { group = substr($0, 5) ":" } /^\.It Ic / { print group, $3 }' man/fokrazo.1 >"$place/told"
same "groups and commands of fokrazo(1)" "$place/groups" "$place/told"
while read -r command; do "$bin/fokrazo" "$command" --help; done <"$place/commands" |
  cat - <("$bin/fokrazo" --help) | grep -o -e '--[a-z][a-z-]*' >"$place/options"
grep -e '\bFl -' man/fokrazo.1 | grep -o -e ' -[a-z][a-z-]*' | sed 's/^ /-/' >"$place/told"
same "options of fokrazo(1)" "$place/options" "$place/told"

"$bin/brondalt-standin" --help >"$place/help"
sed -n '/^Options:/,/^What/p' "$place/help" | grep -o -e '^  .*  ' | grep -o -e '--[a-z-]*' >"$place/options"
sed -n 's/^\.It Fl.* -\([a-z-]*\).*/--\1/p' man/brondalt-standin.1 >"$place/told"
same "options of brondalt-standin(1)" "$place/options" "$place/told"
sed -n '/^Faults:/,/^Signals/s/^    \([a-z]*\) .*/\1/p' "$place/help" >"$place/faults"
sed -n 's/^\.It Cm \([a-z]*\)$/\1/p' man/brondalt-standin.1 >"$place/told"
same "faults of brondalt-standin(1)" "$place/faults" "$place/told"

# The keys that the library's sources read, those that doctor checks, and those that the page documents.
keys_in() {
  grep -oh '\bPN::[A-Z0-9_]*' "$@" | sort -u | while read -r name; do
    sed -n "s/^NAME(${name#PN::}, \"\(.*\)\");/\1/p" util/properties/propnames.cpp
  done
}
keys_in {util/*,values,host,ber,lrpc/*}/*.cpp >"$place/read"
keys_in cli/doctor/configuration_keys.cpp >"$place/judged"
sed -n 's/^\.It Ic \([a-z0-9.]*\).*/\1/p' man/velmora.conf.5 | sed 's/\.$//' >"$place/told"
same "keys that fokrazo doctor judges" "$place/read" "$place/judged"
same "keys of velmora.conf(5)" <(cat "$place/read" && echo kset) "$place/told"
awk '/^\.It Ic / { if (key) print key; key = $0 ~ / Ns Ar/ ? "" : $3 } /^The(re)? .*default/ { key = "" }
     /^\.El/ { if (key) print key; key = "" }' man/velmora.conf.5 >"$place/without"
same "defaults in velmora.conf(5)" "$place/without" /dev/null
exit $((failures > 0))
