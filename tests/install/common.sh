# Sourced by tests that use the installed library like its users. Creates a scratch folder, $place; at the end
# of the test removes it and ends all started programs.
# shellcheck shell=bash
place=$(mktemp -d)
daemon_pid=
trap 'stop_daemon; rm -rf "$place"' EXIT

fail() { echo "FAILED: $*" >&2; exit 1; }

# install_package BUILD_DIR: installs the build into $place/root, sets $lib to its library folder, and sets
# the environment so that compilers and programs find it.
install_package() {
  cmake --install "$1" --prefix "$place/first" >/dev/null
  mv "$place/first" "$place/root"  # the installed tree is relocatable
  lib=$(dirname "$(find "$place/root" -name 'fokrazo.so.0')")
  export PKG_CONFIG_PATH=$lib/pkgconfig LD_LIBRARY_PATH=$lib
}

# The example of README.md.
readme_example() {
  awk '/^```cpp$/ { inside = 1; next } /^```$/ { inside = 0 } inside' "$1/README.md"
}

# more_accounts SOURCE_DIR: prints tests/examples/accounts.txt as LDIF.
more_accounts() {
  awk -F'|' 'BEGIN { print "version: 1\n" } !/^#/ { print "dn: CN=" $2 ",DC=example,DC=com\nobjectClass: " $1 "\nsAMAccountName: " $2
    print ($1 == "user" ? "gidNumber: 20002\nuidNumber: " : "gidNumber: ") $3; for (i = 4; i <= NF; ++i) print $i; print "" }' \
    "$1/tests/examples/accounts.txt"
}

# start_daemon BUILD_DIR SOURCE_DIR SOCKET [ARGUMENT ...]: the stand-in with the sample directory, ready for connections.
start_daemon() {
  local program=$1/bin/brondalt-standin sample=$2/standin/sample socket=$3
  shift 3
  mkfifo "$place/ready"
  "$program" --socket "$socket" --ldif "$sample/accounts.ldif" --passwords "$sample/passwords" --foreground "$@" \
    >"$place/ready" &
  daemon_pid=$!
  read -r -t 60 _ <"$place/ready"
  rm "$place/ready"
}

# start_impostor BUILD_DIR SOURCE_DIR SOCKET UID: the stand-in with an effective user other than root.
start_impostor() {
  stop_daemon
  printf '#!/bin/bash\nexec setpriv --reuid=%s --clear-groups %q "$@"\n' "$4" "$1/bin/brondalt-standin" >"$place/impostor"
  mkdir -p "$place/bin" && install -m 755 "$place/impostor" "$place/bin/brondalt-standin"
  rm -f "$3" && chown "$4" "$(dirname "$3")"
  start_daemon "$place" "$2" "$3"
}

stop_daemon() {
  [ -z "$daemon_pid" ] || { kill "$daemon_pid" && wait "$daemon_pid"; } 2>/dev/null || true
  daemon_pid=
}
