#!/usr/bin/env bash
# Has a stand-in answer each of its results to each command, and compares the exit status and the message of all of
# them with results.txt. Runs in the private world.
# usage: results_test.sh SOURCE_DIR BUILD_DIR
set -euo pipefail
source_dir=$1 build_dir=$2
# shellcheck source=tests/install/common.sh
. "$source_dir/tests/install/common.sh"
# shellcheck source=tests/support/transcript.sh
. "$source_dir/tests/support/transcript.sh"
export PATH=$build_dir/bin:$PATH LC_ALL=C.UTF-8

commands='user u
group g
object o
shadow s
list users
list groups
list shadow
search (cn=a)
fetch CN=a
id i
check c
info
cache
cache --dump
domain d
domain --ntlm d
domain --map d
spn h
roles r
flush
policy
policy p
network-changed
auth --password-fd 9 a
passwd --password-fd 9 p
passwd --password-fd 9 --admin b p
member m g
renew r'

# answered RESULT: "STATUS MESSAGE: COMMAND, COMMAND …" for all commands that a daemon answers with that result.
answered() {
  stop_daemon
  start_daemon "$build_dir" "$source_dir" /var/velmora/daemon --answer "$1"
  fokrazo batch <<<"$commands" 9< <(yes secret) >"$place/answers" || true
  python3 - "$1" "$place/answers" <<'PYTHON'
import json, sys
rows = {}
for line in open(sys.argv[2]):
    one = json.loads(line)
    error = one["answers"][-1].get("error") if one["answers"] else None
    message = error["message"].split(": ", 1)[1] if error else "-"
    if one["status"] == 0 and int(sys.argv[1]) != 0:
        message = "A REFUSAL IS NO SUCCESS"
    rows.setdefault((one["status"], message), []).append(one["command"].split(" --password-fd 9")[0])
for (status, message), commands in rows.items():
    everywhere = len(rows) == 1 and "every command"
    print(status, message + ":", everywhere or ", ".join(dict.fromkeys(commands)))
PYTHON
}

transcript "$source_dir/tests/cli/results.txt"
