#!/usr/bin/env bash
# Runs the commands of transcript.txt, in a folder with the sample directory, and compares everything they print.
# usage: transcript_test.sh SOURCE_DIR BUILD_DIR
set -euo pipefail
# shellcheck source=tests/install/common.sh
. "$1/tests/install/common.sh"
# shellcheck source=tests/support/transcript.sh
. "$1/tests/support/transcript.sh"
export PATH=$2/bin:$PATH LC_ALL=C.UTF-8
cp "$1"/standin/sample/{accounts.ldif,roles.ldif,passwords} "$place"
cd "$place"
trap '[ ! -e pid ] || end KILL; cd /; rm -rf "$place"' EXIT

# The words of the transcript beside the programs' own.
standin() { brondalt-standin --socket daemon --ldif accounts.ldif "$@"; }
ask() {  # without the tool's advice, which is not about the stand-in
  { fokrazo --socket daemon --peer-uid "$(id -u)" "$@" 2>&1 >&3 3>&- | sed '/^  /d' >&2; } 3>&1
}
try() { local user=$1 word; shift; for word; do ask auth --password-fd 0 "$user" <<<"$word" || true; done; }
end() {  # end SIGNAL: sends it to the process of the file `pid`, and waits for its end
  local pid
  read -r pid <pid
  kill "-$1" "$pid"
  tail -s 0.1 --pid="$pid" -f /dev/null
  rm -f pid
}

transcript "$1/tests/standin/transcript.txt"
