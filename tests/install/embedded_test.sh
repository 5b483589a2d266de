#!/usr/bin/env bash
# A project that includes this one with add_subdirectory gets only fokrazo::fokrazo.
# usage: embedded_test.sh SOURCE_DIR CXX [build]   (build: also build and run the project, which takes a minute)
set -euo pipefail
source_dir=$1 cxx=$2
# shellcheck source=tests/install/common.sh
source "$source_dir/tests/install/common.sh"

mkdir "$place/root"
cmake -S "$source_dir/tests/install/embedder" -B "$place/build" -G Ninja -DCMAKE_CXX_COMPILER="$cxx" -DFOKRAZO_SOURCE="$source_dir" \
  -DCMAKE_INSTALL_PREFIX="$place/root" >"$place/log" 2>&1 || { cat "$place/log"; fail "the project is not configured"; }
cmake --build "$place/build" --target CMakeFiles/program.dir/program.cpp.o >"$place/log" || { cat "$place/log"; fail "headers"; }
ctest --test-dir "$place/build" -N | grep -q 'Total Tests: 0' || fail "the project has tests of the library"
cmake --install "$place/build" >"$place/log"
[ -z "$(ls "$place/root")" ] || fail "the project installs the library"

if [ "${3-}" = build ]; then
  cmake --build "$place/build" >"$place/log" || { cat "$place/log"; fail "the project is not built"; }
  [ "$("$place/build/program")" = S-1-5-32-544 ] || fail "the program does not run"
fi
echo "embedded project: all as expected"
