#!/usr/bin/env bash
# The protections of compiler and linker, as the installed binaries show them, and no path of the build machine in them.
# usage: protections_test.sh SOURCE_DIR BUILD_DIR
set -euo pipefail
source_dir=$1 build_dir=$2
# shellcheck source=tests/install/common.sh
source "$source_dir/tests/install/common.sh"
install_package "$build_dir"

has() { grep -E "$1" >/dev/null; }  # reads to the end, so that no writer is cut off
for file in "$lib/fokrazo.so.0" "$place/root/bin/"*; do
  name=${file##*/}
  readelf -hW "$file" | has 'Type: *DYN' || fail "$name: its address is fixed"
  readelf -lW "$file" | has 'GNU_RELRO' || fail "$name: relocations stay writable"
  readelf -dW "$file" | has 'FLAGS.*NOW' || fail "$name: functions are bound late"
  readelf -lW "$file" | has 'GNU_STACK.* RW ' || fail "$name: the stack is executable"
  ! readelf -lW "$file" | has 'LOAD.* RWE ' || fail "$name: memory both writable and executable"
  readelf --dyn-syms -W "$file" | has '__stack_chk_fail' || fail "$name: no stack protector"
  readelf --dyn-syms -W "$file" | has '__[a-z]*printf_chk' || fail "$name: no checked calls of the C library"
  case $(uname -m) in
    x86_64) objdump -d -j .text --no-show-raw-insn "$file" | has 'endbr64' || fail "$name: no control-flow protection" ;;
  esac
  ! strings -a "$file" | grep -F -e "$source_dir" -e "$build_dir" || fail "$name: a path of the build machine"
done
echo "protections: all as expected"
