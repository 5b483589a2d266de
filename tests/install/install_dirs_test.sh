#!/usr/bin/env bash
# Install directories as packagers give them: without a type, absolute, and mixed. What is installed finds its parts.
# usage: install_dirs_test.sh SOURCE_DIR CXX [build]   (build: also build, install and use it, which takes a minute)
set -euo pipefail
source_dir=$1 cxx=$2 mode=${3-}
# shellcheck source=tests/install/common.sh
source "$source_dir/tests/install/common.sh"
cd "$place"  # a relative directory must not become one below the current directory

# try BINDIR LIBDIR INCLUDEDIR RPATH: the directories told to CMake, and where programs must look for the library.
try() {
  local root=$place/root bin=$1 lib=$2 include=$3 rpath=$4
  rm -rf "$root"
  cmake -S "$source_dir" -B "$place/build" -G Ninja -DCMAKE_CXX_COMPILER="$cxx" -DFOKRAZO_TESTS=OFF -DCMAKE_BUILD_TYPE=Debug \
    -DCMAKE_INSTALL_PREFIX="$root" -DCMAKE_INSTALL_BINDIR="$bin" -DCMAKE_INSTALL_LIBDIR="$lib" \
    -DCMAKE_INSTALL_INCLUDEDIR="$include" >"$place/log" 2>&1 || { cat "$place/log"; fail "configuring for $*"; }
  grep -qF "NEW_RPATH \"$rpath\"" <(tr -d '\\' <"$place/build/cmake_install.cmake") || fail "the tool's path to the library for $*"
  ! grep -F "$place/lib" "$place/build/cmake_install.cmake" || fail "libraries in the current directory for $*"
  [[ $lib = /* ]] || lib=$root/$lib
  [[ $include = /* ]] || include=$root/$include
  [[ $bin = /* ]] || bin=$root/$bin
  mkdir -p "$lib/pkgconfig"
  cp "$place/build/fokrazo.pc" "$lib/pkgconfig"
  export PKG_CONFIG_PATH=$lib/pkgconfig
  # pkg-config quotes and shortens paths, so its answer is compared with what the same directories amount to.
  [ "$(realpath -m "$(pkg-config --variable=libdir fokrazo)")" = "$lib" ] || fail "libdir for $*"
  [ "$(realpath -m "$(pkg-config --variable=includedir fokrazo)")" = "$include" ] || fail "includedir for $*"
  [ "$mode" = build ] || return 0

  cmake --build "$place/build" >"$place/log" || { cat "$place/log"; fail "building"; }
  cmake --install "$place/build" >/dev/null
  [ "$(env -u LD_LIBRARY_PATH "$bin/fokrazo" sid S-1-5-32-544 | head -1)" = "text: S-1-5-32-544" ] || fail "the tool for $*"
  printf '#include <fokrazo.h>\nint main() { vesk::SID sid; }\n' >"$place/program.cpp"
  # shellcheck disable=SC2046
  "$cxx" -std=c++17 "$place/program.cpp" $(pkg-config --cflags --libs fokrazo) -o "$place/program" || fail "pkg-config for $*"
  cmake -S "$source_dir/tests/install/user" -B "$place/user" -G Ninja -DCMAKE_CXX_COMPILER="$cxx" -DPROGRAM="$place/program.cpp" \
    -Dfokrazo_DIR="$lib/cmake/fokrazo" >"$place/log" 2>&1 && cmake --build "$place/user" >>"$place/log" && "$place/user/user" ||
    { cat "$place/log"; fail "find_package for $*"; }
}

# shellcheck disable=SC2016
try bin lib include '$ORIGIN/../lib'
try bin "$place/elsewhere/lib" include "$place/elsewhere/lib"
try "$place/elsewhere/bin" lib "$place/elsewhere/include" "$place/root/lib"
echo "install directories: all as expected"
