#!/usr/bin/env bash
# The reference of the public headers can be made and documents everything. The guides name only files that exist, and
# the protocol's numbers are those of the headers.
# usage: docs_test.sh SOURCE_DIR BUILD_DIR
# shellcheck disable=SC2016
set -euo pipefail
cd "$1"
build_dir=$2
failures=0
complain() { echo "FAILED: $*" >&2; failures=$((failures + 1)); }

# The links of a guide, and the files of this tree that it names. A word in capitals is a placeholder, and a program
# stands for its source.
links() { sed -n 's/](\([^)#:]*\))/\n\1\n/gp' "$1" | sed -n '/^[^ ]*\.[a-z]*$/p'; }
folders='ber|bench|cli|cmake|daemon|docs|examples|fuzz|host|include|lrpc|man|scripts|standin|tests|util|values'
files() { tr '`' '\n' <"$1" | grep -E "^($folders)/[A-Za-z0-9_./-]+\$" | grep -Ev '/[A-Z]+(\.[a-z]+)?$'; }

for guide in README.md CONTRIBUTING.md docs/*.md; do
  for link in $(links "$guide"); do [ -e "$(dirname "$guide")/$link" ] || complain "$guide links $link"; done
  for file in $(files "$guide"); do [ -e "$file" ] || [ -e "$file.cpp" ] || complain "$guide names $file"; done
done

sed -n 's/^| \([0-9]*\) | `\(IPC_[A-Z0-9_]*\)` .*/\2 \1/p' docs/protocol.md | while read -r name number; do
  grep -q "^  $name = $number,$" include/fokrazo/ipc_opcode.h || echo "$name"
done | grep . && complain "numbers of docs/protocol.md"

if [ ! -e "$build_dir/Doxyfile" ]; then
  echo "doxygen is not installed: no reference was made"
else
  rm -rf "$build_dir/docs/html"
  doxygen "$build_dir/Doxyfile" || complain "doxygen"
  [ -s "$build_dir/docs/html/classvesk_1_1LocalRpcSession.html" ] || complain "no reference was made"
fi
exit $((failures > 0))
