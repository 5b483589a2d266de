#!/usr/bin/env bash
# Builds the examples with the installed package, and uses the two modules with the host's own programs;
# transcript.txt has the output of each command. Runs in the private world.
# usage: examples_test.sh SOURCE_DIR BUILD_DIR CXX
set -euo pipefail
source_dir=$1 build_dir=$2 cxx=$3
# shellcheck source=tests/install/common.sh
. "$source_dir/tests/install/common.sh"
# shellcheck source=tests/support/transcript.sh
. "$source_dir/tests/support/transcript.sh"

install_package "$build_dir"
cmake -S "$source_dir/examples" -B "$place/examples" -DCMAKE_PREFIX_PATH="$place/root" -DCMAKE_CXX_COMPILER="$cxx" \
  -DCMAKE_CXX_FLAGS=-Werror >/dev/null
cmake --build "$place/examples" -j2 >/dev/null
readme_example "$source_dir" | cmp - "$source_dir/examples/ten_lines.cpp" || fail "ten_lines.cpp is not what README.md shows"

for module in libnss_fokrazo.so.2:_nss_fokrazo_ pam_fokrazo.so:pam_sm_; do
  ! nm -D --defined-only "$place/examples/${module%:*}" | grep -v " T ${module#*:}" || fail "${module%:*} shows more than it should"
done

sed -i -E 's/^(passwd|group|shadow):.*/\1: files fokrazo/' /etc/nsswitch.conf
for task in auth account password; do echo "$task required $place/examples/pam_fokrazo.so"; done >/etc/pam.d/example
export LD_LIBRARY_PATH=$lib:$place/examples PATH=$place/examples:$PATH LC_ALL=C.UTF-8

# Helper commands of the transcript.
daemon() { stop_daemon; start_daemon "$build_dir" "$source_dir" /var/velmora/daemon "$@"; }
login() {  # login USER "TASK ..." [LINE ...]: the user types these LINEs, and it may not hang
  local user=$1 tasks=$2
  shift 2
  # shellcheck disable=SC2086
  { [ $# -eq 0 ] || printf '%s\n' "$@"; } | timeout 60 pamtester example "$user" $tasks
}

cd /var/velmora
more_accounts "$source_dir" >accounts.ldif
transcript "$source_dir/tests/examples/transcript.txt"

start_daemon "$build_dir" "$source_dir" /var/velmora/daemon
touch "$place/file"
if chown 10060:20002 "$place/file" 2>/dev/null; then
  [ "$(stat -c '%U %G' "$place/file")" = 'lquispe Büro' ] || fail "stat does not know the owner"
else
  echo "left out: a file of the directory's user, which only the host's root can make"
fi

if setpriv --reuid=10060 --clear-groups true 2>/dev/null; then
  start_impostor "$build_dir" "$source_dir" /var/velmora/daemon 10060
  [ -z "$(getent passwd mgruber)" ] || fail "a name of an impostor's"
  ! login lquispe authenticate Paper-boat-42 >"$place/login" 2>&1 || fail "an impostor's word for a password"
else
  echo "left out: an impostor, whom only the host's root can play"
fi
stop_daemon

test=$build_dir/tests/examples/nss_module_test module=$place/examples/libnss_fokrazo.so.2
for name in $("$test" --gtest_list_tests "$module" | sed -n 's/^  //p'); do "$test" --gtest_filter="*.$name" "$module"; done
