#!/usr/bin/env bash
# The shell's completions at the end of a command line.
# usage: completion_test.sh SOURCE_DIR TOOL
set -euo pipefail
# shellcheck source=/dev/null
source "$1/completion/fokrazo"
tool=$2
failures=0

# offers LINE EXPECTED: checks the completions of the line's last word, sorted and joined by blanks.
offers() {
  read -r -a COMP_WORDS <<<"$1"
  [[ $1 == *' ' ]] && COMP_WORDS+=('')
  COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
  COMPREPLY=()
  _fokrazo "$tool" "${COMP_WORDS[COMP_CWORD]}" "${COMP_WORDS[COMP_CWORD - 1]}" || true
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
offers 'fokrazo user --by = s' 'sid'
offers 'fokrazo list ' '--help groups shadow users'
offers 'fokrazo user --b' '--by'
offers 'fokrazo user --by s' 'sid'
offers 'fokrazo search --scope ' 'base one sub'
offers 'fokrazo flush --key a d' 'dns'
cd "$1"
offers "fokrazo blob READ" README.md
offers 'fokrazo doctor ' '--help'
offers 'fokrazo conf get --t' '--text --time'
offers 'fokrazo nosuch ' '--help'

# The tool must accept every completion.
for command in list flush conf setting dn; do
  for word in $(_fokrazo_words $command); do
    if "$tool" --socket /nonexistent $command "$word" 2>&1 | grep -E "unknown (operation|cache)|$command takes" >/dev/null; then
      echo "FAILED: $command knows no $word" >&2
      failures=$((failures + 1))
    fi
  done
done
exit $((failures > 0))
