#!/bin/sh
# host-idle.sh ORLIX_HOST [SECONDS]: a host whose input is open and silent uses no processor time.
set -eu
host=$1
seconds=${2:-3}
scratch=$(mktemp -d)
trap 'exec 3>&-; rm -rf "$scratch"' EXIT
mkfifo "$scratch/in"
"$host" --play - <"$scratch/in" >/dev/null 2>&1 &
pid=$!
exec 3>"$scratch/in"
sleep 1 # it has come up by then

# The ticks of 10 ms that the process has used, in user and in system mode.
ticks() { cut -d' ' -f14,15 "/proc/$pid/stat"; }
before=$(ticks)
sleep "$seconds"
after=$(ticks)
[ "$before" = "$after" ] || {
    echo "an idle host went from $before to $after ticks in $seconds s" >&2
    exit 1
}
