#!/usr/bin/env bash
# Runs inspection.txt, a transcript of the commands that look into accounts. Runs in the private world.
# usage: inspection_test.sh SOURCE_DIR BUILD_DIR
set -euo pipefail
source_dir=$1 build_dir=$2
# shellcheck source=tests/install/common.sh
. "$source_dir/tests/install/common.sh"
# shellcheck source=tests/support/transcript.sh
. "$source_dir/tests/support/transcript.sh"
export PATH=$build_dir/bin:$PATH LC_ALL=C.UTF-8

# Helper commands of the transcript.
daemon() { stop_daemon; start_daemon "$build_dir" "$source_dir" /var/velmora/daemon --ldif accounts.ldif "$@"; }
account() {  # account NAME RID [LINE ...]: adds an account of the sample domain to accounts.ldif
  entry "$1" "$2" user sAMAccountType "${@:3}"
}
group() { entry "$1" "$2" group groupType "${@:3}"; }  # group NAME RID [LINE ...]
entry() {
  local name=$1 sid
  sid=$(printf 'AQUAAAAAAAUVAAAAY1VtFeDh0ixWMyJl' && printf '%b' "$(printf '\\x%02x\\x%02x\\0\\0' $(($2 & 255)) $(($2 >> 8)))" | base64)
  printf '%s\n' "dn: CN=$name,CN=Users,DC=example,DC=com" "objectClass: $3" "sAMAccountName: $name" "objectSid:: $sid" \
    "${@:5}" '' >>accounts.ldif
}
checked() {  # checked ARGUMENT ...: without times and what the doctor says
  local status=0
  fokrazo "$@" >"$place/checked" 2>"$place/complaint" || status=$?
  sed -E 's/\t[0-9.]+\t/\tT\t/; s/"milliseconds":[0-9.]+/"milliseconds":T/g; s/[0-9]+ days/N days/g; s/(not found: )[^;]*;/\1WHY;/' "$place/checked" "$place/complaint"
  return "$status"
}

cd /var/velmora
rm -f /etc/ld.so.conf.d/private.conf
echo 'passwd: files' >/etc/nsswitch.conf
transcript "$source_dir/tests/cli/inspection.txt"
