#!/usr/bin/env bash
# The shell's completions at the end of a command line.
# Runs in the private world.
# usage: completion_test.sh SOURCE_DIR BIN_DIR
set -euo pipefail
# shellcheck source=/dev/null
source "$1/completion/fokrazo"
bin=$2 tool=$2/fokrazo
failures=0

# offers LINE EXPECTED: checks the completions of the line's last word, sorted and joined by blanks.
offers() {
  read -r -a COMP_WORDS <<<"$1"
  [[ $1 == *' ' ]] && COMP_WORDS+=('')
  COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
  COMPREPLY=()
  "_${COMP_WORDS[0]//-/_}" "$bin/${COMP_WORDS[0]}" "${COMP_WORDS[COMP_CWORD]}" "${COMP_WORDS[COMP_CWORD - 1]}" || true
  local found
  found=$(printf '%s\n' "${COMPREPLY[@]}" | LC_ALL=C sort | tr '\n' ' ')
  [ "$found" = "$2 " ] && return
  echo "FAILED: '$1' offers '$found' and not '$2 '" >&2
  failures=$((failures + 1))
}

offers 'fokrazo pi' 'ping'
offers 'fokrazo do' 'doctor domain'
offers 'fokrazo --s' '--socket'
offers 'fokrazo --socket us' ''
offers 'fokrazo --socket /nowhere --json us' 'user'
offers 'fokrazo --socket = /nowhere us' 'user'
offers 'fokrazo --timeout ' ''
offers 'fokrazo user --by = s' 'sid'
offers 'fokrazo user --by = ' 'guid id name sid'
offers 'fokrazo user --by =' 'guid id name sid'
offers 'fokrazo list ' 'groups shadow users'
offers 'fokrazo list users ' ''
offers 'fokrazo user --b' '--by'
offers 'fokrazo user --js' '--json'
offers 'fokrazo user ' ''
offers 'fokrazo user --by s' 'sid'
offers 'fokrazo search --scope ' 'base one sub'
offers 'fokrazo flush --key a d' 'dns'
offers 'fokrazo flush dns p' 'pmon'
offers 'fokrazo doctor pin' 'ping'
offers 'fokrazo doctor ping d' 'daemon dns'
offers 'fokrazo conf get --t' '--text --time --timeout'
offers 'fokrazo dict --release 5.0.1' '5.0.1-177'
offers 'fokrazo nosuch ' ''
offers 'brondalt-standin --l' '--ldif'
offers 'brondalt-standin --fault = st' 'stall'
offers 'brondalt-standin --delay ' ''
cd "$1"
offers "fokrazo blob READ" README.md
offers "fokrazo blob --attribute READ" ''
offers 'fokrazo sid READ' ''
offers 'brondalt-standin READ' ''
offers 'brondalt-standin --ldif READ' README.md

printf 'log: WARN\nlrpc.timeout: 5\nlr$(touch${IFS}/var/velmora/obeyed): 1\n' >/etc/velmora/velmora.conf && printf example.com >/var/velmora/kset.domain
offers 'fokrazo conf get l' 'log lrpc.timeout'
offers 'fokrazo conf set lrpc.t' 'lrpc.timeout'
offers 'fokrazo conf set logger.o' 'logger.openlog.'
offers 'fokrazo conf set log WA' ''
offers 'fokrazo setting get ' 'domain'
[ ! -e /var/velmora/obeyed ] || { echo "FAILED: a key is executed" >&2; failures=$((failures + 1)); }
rm /var/velmora/kset.domain

# The tool must accept every completion.
for command in list flush conf setting dn doctor; do
  operands=()
  for word in $(_fokrazo_words "$tool" "$command"); do
    if "$tool" --socket /nonexistent $command "$word" 2>&1 | grep -E "unknown (operation|cache)|$command (takes|knows no)" >/dev/null; then
      echo "FAILED: $command knows no $word" >&2
      failures=$((failures + 1))
    fi
  done
done
exit $((failures > 0))
