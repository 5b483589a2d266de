#!/usr/bin/env bash
# A project that includes this one with add_subdirectory gets only fokrazo::fokrazo.
# usage: embedded_test.sh SOURCE_DIR CXX [build]   (build: also build and run the project, which takes a minute)
set -euo pipefail
source_dir=$1 cxx=$2
# shellcheck source=tests/install/common.sh
source "$source_dir/tests/install/common.sh"

mkdir "$place/project" "$place/root"
cat >"$place/project/CMakeLists.txt" <<'CMAKE'
cmake_minimum_required(VERSION 3.22)
project(embedder LANGUAGES CXX)
add_subdirectory(${FOKRAZO_SOURCE} fokrazo)
add_executable(program program.cpp)
target_link_libraries(program PRIVATE fokrazo::fokrazo)

function(check_targets folder)
  get_property(targets DIRECTORY ${folder} PROPERTY BUILDSYSTEM_TARGETS)
  list(FILTER targets EXCLUDE REGEX "^fokrazo(_|$)")
  if(targets)
    message(FATAL_ERROR "Targets without prefix: ${targets}")
  endif()
  get_property(subfolders DIRECTORY ${folder} PROPERTY SUBDIRECTORIES)
  foreach(subfolder IN LISTS subfolders)
    check_targets(${subfolder})
  endforeach()
endfunction()
check_targets(${FOKRAZO_SOURCE})
if(CMAKE_BUILD_TYPE OR DEFINED BUILD_TESTING OR TARGET fokrazo_tool)
  message(FATAL_ERROR "The project's own settings have changed")
endif()
CMAKE
cat >"$place/project/program.cpp" <<'CPP'
#include <fokrazo/fokrazo.h>
#include <cstdio>
int main() { puts(vesk::SID("S-1-5-32-544").toMSString().c_str()); }
CPP

cmake -S "$place/project" -B "$place/build" -G Ninja -DCMAKE_CXX_COMPILER="$cxx" -DFOKRAZO_SOURCE="$source_dir" \
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
