#!/bin/sh
# Prints the memory log of a process or of a core file, oldest entry first.
#   memory-log.sh PID
#   memory-log.sh FILE
# It looks for nothing but the markers: "_cbuf " in front of an entry, "_cbuf_END__" behind the newest.

usage() {
  echo "usage: memory-log.sh PID | CORE-FILE" >&2
  exit 2
}

# The writable memory of a process, one mapping after the other; a mapping above a gigabyte holds no ring.
memory_of() {
  while read -r range permissions _; do
    case $permissions in rw*) ;; *) continue ;; esac
    start=$((0x${range%-*} / 4096))
    count=$((0x${range#*-} / 4096 - start))
    [ "$count" -le 262144 ] && dd if="/proc/$1/mem" bs=4096 skip="$start" count="$count" 2>/dev/null
    printf '\n_cbuf_MAPPING_END__\n'
  done < "/proc/$1/maps"
}

# In front of the end marker, back to the ring's start, stand the newest entries; behind it, up to the ring's
# end, the oldest. Bytes that were never written are zero and end a line too. A marker with no entry in front
# of it, or a second one, is the program's own constant. A ring lies within one mapping.
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
