#!/usr/bin/env bash
# The guides name only files that exist, the protocol's numbers are those of the headers, figures show what their tables say,
# the site can be made and documents everything, and every link leads somewhere, in the Markdown and in the site.
# usage: docs_test.sh SOURCE_DIR BUILD_DIR
# shellcheck disable=SC2016
set -euo pipefail
cd "$1"
build_dir=$2
failures=0
complain() { echo "FAILED: $*" >&2; failures=$((failures + 1)); }

# The files of this tree that a guide mentions. Words in capitals are placeholders, and programs mean their
# sources.
folders='ber|bench|cli|cmake|daemon|docs|examples|fuzz|host|include|lrpc|man|scripts|standin|tests|util|values'
files() { tr '`' '\n' <"$1" | grep -E "^($folders)/[A-Za-z0-9_./-]+\$" | grep -Ev '/[A-Z]+(\.[a-z]+)?$'; }

guides=(./*.md bench/*.md docs/*.md standin/sample/*.md)
for guide in "${guides[@]}"; do
  for file in $(files "$guide"); do [ -e "$file" ] || [ -e "$file.cpp" ] || complain "$guide names $file"; done
done
scripts/docs/check-links "${guides[@]}" || complain "links of the guides"
scripts/docs/figures --check || complain "figures"

sed -n 's/^| \([0-9]*\) | `\(IPC_[A-Z0-9_]*\)` .*/\2 \1/p' docs/protocol.md | while read -r name number; do
  grep -q "^  $name = $number,$" include/fokrazo/ipc_opcode.h || echo "$name"
done | grep . && complain "numbers of docs/protocol.md"

site=$build_dir/docs/html
if [ ! -e "$build_dir/Doxyfile" ]; then
  echo "left out: the site, because doxygen or mandoc is not installed"
else
  scripts/docs/make-site "$build_dir" || complain "the site"
  scripts/docs/check-links "$site" || complain "links of the site"
  # One page of each kind, as in the index of the guides and the search.
  for page in classvesk_1_1LocalRpcSession man_velmora_conf_5 troubleshooting contributing changelog; do
    { [ -s "$site/$page.html" ] && grep -qF "\"$page.html" "$site/search-index.js"; } || complain "the site has no $page"
  done
fi
exit $((failures > 0))
