#!/bin/sh
# Prints the memory log of a process or of a core file, oldest entry first.
#   memory-log.sh PID
#   memory-log.sh FILE
# It searches for the markers: "_cbuf " begins an entry, "_cbuf_END__" follows the newest one.

usage() {
  echo "usage: memory-log.sh PID | CORE-FILE" >&2
  exit 2
}

# Prints the writable memory of a process, mapping by mapping. A mapping above a gigabyte has no ring.
memory_of() {
  while read -r range permissions _; do
    case $permissions in rw*) ;; *) continue ;; esac
    start=$((0x${range%-*} / 4096))
    count=$((0x${range#*-} / 4096 - start))
    [ "$count" -le 262144 ] && dd if="/proc/$1/mem" bs=4096 skip="$start" count="$count" 2>/dev/null
    printf '\n_cbuf_MAPPING_END__\n'
  done < "/proc/$1/maps"
}

# The newest entries precede the end marker, the oldest follow it up to the end of the ring. Bytes that were never written
# are zero and end a line, too. A marker without an entry before it, or a second one, is a constant of the program. A ring
# lies within one mapping.
entries() {
  tr '\000' '\n' | LC_ALL=C grep -a -o -E '_cbuf [0-9]{4}-.*|^_cbuf_(MAPPING_)?END__$' | LC_ALL=C awk '
    $0 == "_cbuf_MAPPING_END__" { if (ended) exit; lines = ""; next }
    $0 != "_cbuf_END__" { lines = lines $0 "\n"; next }
    ended { exit }
    lines != "" { newest = lines; lines = ""; ended = 1 }
    END { if (ended) printf "%s%s", lines, newest }'
}

[ $# -eq 1 ] || usage
case $1 in
  *[!0-9]*) [ -r "$1" ] || usage; entries < "$1" ;;
  *) [ -r "/proc/$1/maps" ] || usage; memory_of "$1" | entries ;;
esac
