#!/usr/bin/env bash
# Runs dns.txt, a transcript, beside a name server. Runs in the private world, and there in a network of its own.
# usage: dns_test.sh SOURCE_DIR BUILD_DIR
set -euo pipefail
source_dir=$1 build_dir=$2
if [ -z "${IN_NETWORK-}" ]; then
  unshare --net true 2>/dev/null || { echo "skipped: the kernel grants no network namespace" >&2; exit 77; }
  IN_NETWORK=1 exec unshare --net "$source_dir/tests/cli/name_server.py" "$0" "$@"
fi
# shellcheck source=tests/support/transcript.sh
. "$source_dir/tests/support/transcript.sh"
export PATH=$build_dir/bin:$PATH LC_ALL=C.UTF-8
echo nameserver 127.0.0.1 >/etc/resolv.conf
cd /var/velmora
transcript "$source_dir/tests/cli/dns.txt"
