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

# A zero byte ends the text of its line but not the line; lines may be empty or long, and the last may lack its end.
printf 'a\000b\n\nc' | "$host" --text - | grep '^text' | tr '\n' , | grep -qx 'text a,text ,text c,' || fail "zero bytes"
head -c 10000000 /dev/zero | tr '\000' x >"$scratch/long"
{ cat "$scratch/long"; echo; cat "$scratch/long"; } | "$host" --text - | grep '^text' | wc -c | grep -qx 20000012 ||
    fail "long lines"

# Each line comes out as it arrives: the next one is written only when the one before has been seen.
mkfifo "$scratch/feed" "$scratch/seen"
timeout 60 "$host" --text - <"$scratch/feed" >"$scratch/seen" &
exec 3>"$scratch/feed" 4<"$scratch/seen"
for word in one two three; do
    echo $word >&3
    read -r text <&4 && read -r render <&4 || fail "a line did not come out as it arrived"
    [ "$text, $render" = "text $word, render 0" ] || fail "got $text, $render"
done
exec 3>&-
wait $! || fail "slow input ended badly"
exec 4<&- # or the next one would inherit it and read its own output

# While nobody takes the output, the input waits where it is instead of piling up in memory.
seq 4000000 >"$scratch/bulk"
exec 3<"$scratch/bulk"
timeout 60 "$host" --text - <&3 >"$scratch/seen" &
exec 4<"$scratch/seen"
last=-1
position=0
while [ "$position" -eq 0 ] || [ "$position" -ne "$last" ]; do
    last=$position
    sleep 0.3
    position=$(sed -n 's/^pos:[[:space:]]*//p' "/proc/$$/fdinfo/3")
done
exec 4<&-
wait $! || true # nobody reads: it ends by the broken pipe
[ "$position" -lt 5000000 ] || fail "$position bytes were read ahead"

expect_lost_output() {
    [ "$1" -eq 1 ] && [ "$(wc -l <"$scratch/err")" -eq 1 ] || fail "lost output went unnoticed: exit code $1"
}
code=0
"$host" --text "$scratch/in" >/dev/full 2>"$scratch/err" || code=$?
expect_lost_output $code
code=0
"$host" --text "$scratch/in" >&- 2>"$scratch/err" || code=$?
expect_lost_output $code

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
expect_refusal --text /proc/self/mem # opens, but cannot be read
code=0
head -c 70000000 /dev/zero | "$host" --text - >"$scratch/out" 2>"$scratch/err" || code=$?
[ $code -eq 2 ] && grep -qx 'orlix-host: cannot read -: Message too long' "$scratch/err" || fail "input without line ends"
[ ! -s "$scratch/out" ] || fail "output for an input without line ends"
code=0
"$host" --text - <&- 2>"$scratch/err" || code=$?
[ $code -eq 2 ] || fail "closed standard input"
