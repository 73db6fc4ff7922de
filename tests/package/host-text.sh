#!/bin/sh
# host-text.sh ORLIX_HOST: every line of the input comes out in order behind "text ", and bad calls end with code 2.
set -eu
host=$1
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
fail() {
    echo "$1" >&2
    exit 1
}

i=0
while [ $i -lt 5000 ]; do
    echo "line $i äöü 中文"
    i=$((i + 1))
done >"$scratch/in"
printf 'without an end' >>"$scratch/in"
"$host" --text "$scratch/in" >"$scratch/out"
sed 's/^/text /' "$scratch/in" >"$scratch/expected"
echo >>"$scratch/expected"
grep '^text ' "$scratch/out" | cmp - "$scratch/expected" || fail "lines were lost or changed"
grep -q '^render 0$' "$scratch/out" || fail "no repaint reached the listener"
renders=$(grep -c '^render 0$' "$scratch/out")
tail -n 1 "$scratch/out" | grep -qx "5001 lines, $renders renders, [0-9]* ms" || fail "wrong last line"

"$host" --text - <"$scratch/in" | grep -c '^text ' | grep -qx 5001 || fail "standard input gave another text"
[ "$("$host" --text /dev/null | sed 's/[0-9]* ms/T ms/')" = "0 lines, 0 renders, T ms" ] || fail "empty input"

# A lone continuation byte is dropped; a form that the line's end cuts short ends the text.
[ "$(printf 'a\200b\303\n' | "$host" --text - | head -n 1)" = "text ab" ] || fail "malformed text"

expect_refusal() {
    code=0
    "$host" "$@" >"$scratch/out" 2>"$scratch/err" || code=$?
    [ $code -eq 2 ] || fail "exit code $code for: $*"
    [ "$(wc -l <"$scratch/err")" -eq 1 ] || fail "not one line on stderr for: $*"
    [ ! -s "$scratch/out" ] || fail "output for: $*"
}
expect_refusal
expect_refusal --unknown
expect_refusal --text
expect_refusal --text "$scratch/in" more
expect_refusal --text "$scratch/missing"
expect_refusal --text "$scratch"
