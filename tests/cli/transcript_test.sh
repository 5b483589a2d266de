#!/usr/bin/env bash
# Runs the commands of transcript.txt, which cover all of the tool's, and compares their output. Runs in the
# private world.
# usage: transcript_test.sh SOURCE_DIR BUILD_DIR
set -euo pipefail
source_dir=$1 build_dir=$2
# shellcheck source=tests/install/common.sh
. "$source_dir/tests/install/common.sh"
# shellcheck source=tests/support/transcript.sh
. "$source_dir/tests/support/transcript.sh"
export PATH=$build_dir/bin:$PATH LC_ALL=C.UTF-8 TZ=UTC

# Helper commands of the transcript.
daemon() { stop_daemon; start_daemon "$build_dir" "$source_dir" /var/velmora/daemon "$@"; }
each() {  # each [OPTION ...]: for each line of standard input, the exit status and the output of the tool with those
          # words, without advice
  local words status
  while IFS= read -r words; do
    status=0
    eval "fokrazo $* $words" </dev/null >"$place/output" 2>&1 || status=$?
    printf '%s %s: %s\n' "$status" "$words" "$(grep -v '^  ' "$place/output")"
  done
}
wrong() {  # a command line that is wrong: its complaint without the advice that follows each of them
  local status=0
  fokrazo "$@" >"$place/complaint" 2>&1 || status=$?
  sed "/^  'fokrazo help' lists/d" "$place/complaint"
  return "$status"
}
typing() { "$source_dir/tests/cli/typing.py" "$@"; }
configured() {  # configured TEXT: what doctor says about a configuration file of that text
  printf '%b\n' "$1" >/etc/velmora/velmora.conf
  fokrazo doctor configuration
}

cd /var/velmora
transcript "$source_dir/tests/cli/transcript.txt"

if python3 -c 'import pty; pty.openpty()' 2>/dev/null; then
  daemon --foreground
  transcript "$source_dir/tests/cli/terminal.txt"
else
  echo "left out: terminals, of which there are none"
fi

if setpriv --reuid=10060 --clear-groups true 2>/dev/null; then
  start_impostor "$build_dir" "$source_dir" /var/velmora/daemon 10060
  status=0
  said=$(fokrazo auth --password-fd 0 lquispe <<<Paper-boat-42 2>&1) || status=$?
  [[ "$status $said" == "3 fokrazo: connect: the process at $PWD/daemon runs as another user than expected"* ]] || fail "$status $said"
  fokrazo --peer-uid 10060 auth --password-fd 0 lquispe <<<Paper-boat-42 >/dev/null || fail "a user's own daemon"
  findings=$(fokrazo doctor socket daemon) || true
  [[ $findings == *"find out who that is first"*"a stand-in or an impostor"* ]] || fail "doctor does not see an impostor"
  daemon --foreground
  chown 0 . && chmod 0600 daemon
  findings=$(setpriv --reuid=10060 --clear-groups "$build_dir/bin/fokrazo" doctor socket) || true
  [[ $findings == *"this user may not open it"*"run: chmod a+rw /var/velmora/daemon"* ]] || fail "a closed socket: $findings"
  status=0
  said=$(setpriv --reuid=10060 --clear-groups "$build_dir/bin/fokrazo" user lquispe 2>&1) || status=$?
  [[ "$status $said" == "3 fokrazo: user lquispe: this user may not open the daemon's socket $PWD/daemon"* ]] || fail "$status $said"
  chmod 0700 .
  findings=$(setpriv --reuid=10060 --clear-groups "$build_dir/bin/fokrazo" doctor socket) || true
  [[ $findings == *"this user may not enter /var/velmora"*"run: chmod a+x /var/velmora"* ]] || fail "a closed folder: $findings"
else
  echo "left out: an impostor, whom only the host's root can play"
fi
