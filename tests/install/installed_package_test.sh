#!/usr/bin/env bash
# Installs everything into an empty folder and uses it as a stranger would: each header alone and beside headers of the
# same names, the README's example with pkg-config against the stand-in, and the tool. (examples_test.sh uses CMake's
# find_package.)
# usage: installed_package_test.sh SOURCE_DIR BUILD_DIR CXX
set -euo pipefail
source_dir=$1 build_dir=$2 cxx=$3
# shellcheck source=tests/install/common.sh
source "$(dirname "$0")/common.sh"
install_package "$build_dir"

for link in fokrazo.so:fokrazo.so.0 libfokrazo.so:fokrazo.so libfokrazo.so.0:fokrazo.so.0; do
  [ "$(readlink "$lib/${link%:*}")" = "${link#*:}" ] || fail "${link%:*} does not lead to ${link#*:}"
done
readelf -d "$lib/fokrazo.so.0" | grep 'SONAME.*\[fokrazo.so.0\]' >/dev/null || fail "SONAME"

include=$place/root/include
(cd "$include" && find fokrazo -name '*.h') | sort >"$place/headers"
while read -r header; do
  [ "$header" = fokrazo/fokrazo.h ] || grep -qF "#include <$header>" "$include/fokrazo/fokrazo.h" || fail "$header is not in fokrazo.h"
  echo "#include <$header>" >"$place/alone.cpp"
  "$cxx" -std=c++17 -Wall -Wextra -Werror -fsyntax-only "-I$include" "$place/alone.cpp" || fail "$header alone"
done <"$place/headers"

# A program with a header of its own for each name that the library uses, whichever include path comes first.
mkdir "$place/own"
sed 's/.*/& "the wrong header"/; s/^fokrazo\///' "$place/headers" | while read -r name error; do
  echo "#error $error" >"$place/own/$name"
done
for order in "-I$place/own -I$include" "-I$include -I$place/own" "-I$place/own -I$include -I$include/fokrazo"; do
  # shellcheck disable=SC2086
  echo '#include <fokrazo/fokrazo.h>' | "$cxx" -std=c++17 -fsyntax-only $order -x c++ - || fail "with $order"
done

readme_example "$source_dir" >"$place/ten.cpp"
# shellcheck disable=SC2046
"$cxx" -std=c++17 "$place/ten.cpp" $(pkg-config --cflags --libs fokrazo) -o "$place/ten"

printf '#include <fokrazo.h>\nint main() { qtr_ber_free(qtr_ber_alloc_t(0), 1); }\n' >"$place/ber.cpp"
# shellcheck disable=SC2046
"$cxx" -std=c++17 "$place/ber.cpp" $(pkg-config --cflags --libs fokrazo) -o "$place/ber" || fail "BER functions"
! readelf -d "$place/ten" | grep 'NEEDED.*lber' >/dev/null || fail "liblber is linked where nothing calls it"

for program in "$place/root/bin/"*; do
  ! env -u LD_LIBRARY_PATH ldd "$program" | grep 'not found' || fail "$program does not find its libraries"
done
start_daemon "$place/root" "$source_dir" "$place/daemon"
[ "$("$place/root/bin/fokrazo" --socket "$place/daemon" ping)" = alive ] || fail "the tool does not reach the daemon"

[ "$("$place/ten" "$place/daemon" lquispe)" = "lquispe 10060 /home/lquispe" ] || fail "the example found something else"
for file in man/man1/fokrazo.1 man/man1/brondalt-standin.1 man/man3/fokrazo.3 man/man5/velmora.conf.5 \
  fokrazo/sample/accounts.ldif bash-completion/completions/{fokrazo,brondalt-standin} doc/fokrazo/outcomes.md; do
  [ -s "$place/root/share/$file" ] || fail "$file is missing"
done
echo "installed package: all as expected"
