#!/usr/bin/env bash
# Builds the Debian packages, installs them into an empty root, uses them, and removes them completely. Needs
# root, as in the private world.
# usage: debian_packages_test.sh BUILD_DIR
set -euo pipefail
build_dir=$1
command -v dpkg-shlibdeps >/dev/null || { echo "skipped: no Debian"; exit 77; }
# shellcheck source=tests/install/common.sh
source "$(dirname "$0")/common.sh"

cpack -G DEB --config "$build_dir/CPackConfig.cmake" -B "$place/made" >"$place/log" 2>&1 || { cat "$place/log"; exit 1; }
mv "$place"/made/*.deb "$place"
package() { echo "$place/$1"_*.deb; }
field() { dpkg-deb -f "$(package "$1")" "$2"; }

[[ $(field fokrazo0 Depends) =~ ^"libc6 (>= ".*"zlib1g (>= " ]] || fail "what fokrazo0 depends on"
! grep -q GLIBC_ABI_DT_RELR "$build_dir/fokrazo.so.0" || [[ $(field fokrazo0 Depends) == *"libc6 (>= 2.36)"* ]] || fail "fokrazo0 does not depend on a loader for its relocations"
[[ $(field fokrazo-tools Depends) =~ ^"fokrazo0 (= "[0-9.]+"), libbsd0 (>= ".*"), libc6 (>= ".*"libldap-2.5-0" ]] || fail "fokrazo-tools"
[[ $(field fokrazo-dev Depends) =~ ^"fokrazo0 (= "[0-9.]+"), libboost-dev, libldap-dev" ]] || fail "fokrazo-dev"
dpkg-deb -I "$(package fokrazo0)" shlibs | grep -x 'fokrazo 0 fokrazo0 (>= .*)' >/dev/null || fail "shlibs"
dpkg-deb -I "$(package fokrazo0)" postinst | grep ldconfig >/dev/null || fail "no script runs ldconfig"

# The maintainer scripts must not run the real ldconfig.
mkdir -p "$place/bin" "$place/root/var/lib/dpkg/"{info,updates}
ln -s /bin/true "$place/bin/ldconfig"
touch "$place/root/var/lib/dpkg/"{status,available}
in_root() {
  PATH=$place/bin:$PATH:/usr/sbin:/sbin dpkg --root="$place/root" --force-not-root --force-script-chrootless --force-depends \
    --log=/dev/null "$@" >"$place/log" 2>&1 || { cat "$place/log"; exit 1; }
}
files() { (cd "$place/root" && find . -path ./var/lib/dpkg -prune -o -print | sort); }

files >"$place/before"
in_root --install "$place"/*.deb
[ "$("$place/root/usr/bin/fokrazo" sid S-1-5-32-544 | head -1)" = "text: S-1-5-32-544" ] || fail "the tool does not run"
[ -z "$(find "$place/root" -name '*.[1-9]' -path '*/man/*')" ] || fail "manual pages are not compressed"
in_root --purge fokrazo-tools fokrazo-dev fokrazo0
files | diff "$place/before" - || fail "the packages leave files behind"
echo "Debian packages: all as expected"
