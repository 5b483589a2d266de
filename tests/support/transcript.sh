# Sourced by tests that compare what commands print with a transcript: a text in which each line "$ COMMAND" is followed
# by everything that the command printed on both streams, and by [STATUS] if its exit status is not 0. Comments and
# empty lines structure the text; a printed line that is empty or looks like a comment or a command follows ">".
# shellcheck shell=bash

# transcript FILE: runs the commands of FILE in this shell and compares. With FOKRAZO_UPDATE in the environment it writes
# what they print into FILE instead, for a person to review as a change.
transcript() {
  local file=$1 actual output line status
  actual=$(mktemp) output=$(mktemp)
  while IFS= read -r line; do
    case $line in
      '$ '*)
        echo "$line"
        status=0
        eval "${line#??}" >"$output" 2>&1 </dev/null || status=$?
        sed -E 's/^$/>/; s/^(# |\$ )/> \1/' "$output"
        [ "$status" -eq 0 ] || echo "[$status]"
        ;;
      '' | '# '*) echo "$line" ;;
    esac
  done <"$file" >"$actual"
  if [ -n "${FOKRAZO_UPDATE-}" ]; then
    cp "$actual" "$file"
  else
    diff -u "$file" "$actual" || { rm "$actual" "$output"; echo "FAILED: $file: something else was printed" >&2; return 1; }
  fi
  rm "$actual" "$output"
}
