#!/usr/bin/env bash
# Compares what the library exports with the reviewed list.
# usage: exported_symbols_test.sh SOURCE_DIR LIBRARY
set -euo pipefail
source_dir=$1 library=$2
if ! diff -u --label fokrazo.symbols --label "$(basename "$library")" \
  "$source_dir/fokrazo.symbols" <("$source_dir/scripts/exported-symbols" "$library"); then
  echo "FAILED: what the library exports has changed; CONTRIBUTING.md says when that is right and what to do" >&2
  exit 1
fi
