#!/bin/sh
# host-share.sh ORLIX_HOST: what one host writes to shared memory the other one prints, and nothing is left behind; wrong
# calls are refused.
set -eu
host=$1
scratch=$(mktemp -d)
key=$(printf '0x5%07x' $$)
fail() {
    echo "$1" >&2
    exit 1
}
echo '<engine><log_output terminal="false"/></engine>' >"$scratch/engine.xml"

segment() { ipcs -m | awk -v key="$(printf '0x%08x' "$key")" '$1 == key { print $2 }'; }

# The janitor outlives this script, also when that is killed with all its children: it is none of them. It learns of
# segments and hosts until the pipe ends, and removes what the library leaves in the system on purpose and what is left
# of a script that did not come to its end.
mkfifo "$scratch/notes"
cat >"$scratch/janitor.sh" <<'END'
while read -r what number; do
    case $what in
    segment) segments="${segments-} $number" ;;
    host) hosts="${hosts-} $number" ;;
    end) hosts= ;;
    esac
done
for pid in ${hosts-}; do
    kill -KILL "$pid" 2>/dev/null
done
for id in ${segments-}; do
    ipcrm -m "$id" 2>/dev/null
    rm -f /dev/shm/sem.super_*_"$id"
done
rm -rf "$1"
END
(setsid sh "$scratch/janitor.sh" "$scratch" <"$scratch/notes" >/dev/null 2>&1 &)
exec 9>"$scratch/notes"
trap 'echo end >&9' EXIT

# note_host PID: once its channel is there
note_host() {
    echo "host $1" >&9
    wait_for is_attached
    echo "segment $(segment)" >&9
}

# start_reader SIZE: in the background, as $reader, once its channel is there
start_reader() {
    "$host" --config "$scratch/engine.xml" --share-read "$key" --size "$1" >"$scratch/out" 2>"$scratch/err" 9>&- &
    reader=$!
    note_host "$reader"
}
is_attached() { ipcs -m | awk -v key="$(printf '0x%08x' "$key")" '$1 == key && $6 > 0 { found = 1 } END { exit !found }'; }

# wait_for COMMAND ARGUMENT...: at most 20 s
wait_for() {
    tries=400
    until "$@"; do
        tries=$((tries - 1))
        [ $tries -gt 0 ] || fail "waited in vain: $*"
        sleep 0.05
    done
}

# write SIZE FILE
write() { "$host" --config "$scratch/engine.xml" --share-write "$key" --size "$1" "$2" 9>&-; }

# end_of NAME PID FILE WHY: a host has ended by itself, well, without a word in FILE, and nothing is left
end_of() {
    code=0
    wait "$2" || code=$?
    [ $code -eq 0 ] || fail "exit code $code of the $1: $4"
    [ ! -s "$3" ] || fail "output of the $1: $4"
    [ -z "$(segment)" ] || fail "the segment is left: $4"
}
# end_of_reader WHY
end_of_reader() { end_of reader "$reader" "$scratch/err" "$1"; }
# end_of_writer WHY
end_of_writer() { end_of writer "$writer" "$scratch/writer" "$1"; }

# Every block of a file reaches the reader, and then the end.
for case in "4096 100000" "1 3" "6 60" "100000 100000" "100000 5" "100000 0" "67108864 67108865"; do
    size=${case% *}
    bytes=${case#* }
    head -c "$bytes" /dev/urandom >"$scratch/in"
    start_reader "$size"
    write "$size" "$scratch/in" || fail "cannot write $bytes bytes in blocks of $size"
    python3 - "$scratch/in" "$size" >"$scratch/expected" <<'END'
import sys, zlib
size = int(sys.argv[2])
with open(sys.argv[1], "rb") as file:
    while block := file.read(size):
        line = f"data {len(block)} bytes, crc32 {zlib.crc32(block):08X}"
        print(line)
# A smaller channel has no room for the word of the end, and shows its last block again instead.
print("writer closed" if size >= 6 else line)
END
    lines=$(wc -l <"$scratch/expected")
    has_lines() { [ "$(wc -l <"$scratch/out")" -ge "$lines" ]; }
    wait_for has_lines
    [ "$size" -ge 6 ] || kill -TERM "$reader"
    end_of_reader "$bytes bytes in blocks of $size"
    cmp "$scratch/expected" "$scratch/out" || fail "$bytes bytes in blocks of $size come out otherwise"
done

# Standard input, and a key in hexadecimal at one end and in decimal at the other.
start_reader 16
printf 'hello' | "$host" --config "$scratch/engine.xml" --share-write "$((key))" --size 16 - 9>&- || fail "cannot write stdin"
end_of_reader "standard input"
printf 'data 5 bytes, crc32 3610A686\nwriter closed\n' | cmp - "$scratch/out" || fail "standard input comes out otherwise"

# start_silent_writer: in the background, as $writer; it reads from descriptor 8
start_silent_writer() {
    mkfifo "$scratch/silent"
    "$host" --config "$scratch/engine.xml" --share-write "$key" --size 16 - <"$scratch/silent" >"$scratch/writer" 2>&1 9>&- &
    writer=$!
    exec 8>"$scratch/silent"
    rm "$scratch/silent"
    note_host "$writer"
}

# A writer without a reader ends too, and so does each on a signal.
start_silent_writer
head -c 1000 /dev/zero >&8
exec 8>&-
end_of_writer "no reader"
for signal in INT TERM; do
    start_reader 16
    kill -$signal "$reader"
    end_of_reader "signal $signal"
    start_silent_writer
    kill -$signal "$writer"
    end_of_writer "signal $signal"
    exec 8>&-
done

# A writer that is killed leaves a reader that can be stopped, and the next pair works.
start_reader 16
start_silent_writer
printf '0123456789abcdef' >&8
has_block() { grep -q '^data 16 bytes' "$scratch/out"; }
wait_for has_block
kill -KILL "$writer"
wait "$writer" || true
exec 8>&-
kill -TERM "$reader"
end_of_reader "its writer was killed"
start_reader 16
write 16 /dev/null || fail "the channel does not work after a killed writer"
end_of_reader "after a killed writer"

# expect_refusal ARGUMENT...: exit code 2, one line on stderr, no output, no segment.
expect_refusal() {
    code=0
    "$host" --config "$scratch/engine.xml" "$@" >"$scratch/out" 2>"$scratch/err" 9>&- || code=$?
    [ $code -eq 2 ] || fail "exit code $code for: $*"
    [ "$(wc -l <"$scratch/err")" -eq 1 ] || fail "not one line on stderr for: $*"
    [ ! -s "$scratch/out" ] || fail "output for: $*"
    [ -z "$(segment)" ] || fail "a segment is left by: $*"
}
for bad in 0 -1 +1 "" " 1" 1x x 0x 0xg 1.5 4294967296 0x100000000 99999999999999999999; do
    expect_refusal --share-read "$bad" --size 16
    expect_refusal --share-write "$bad" --size 16 "$scratch/in"
done
for bad in 0 -1 +1 "" x 0x 2147483648 0x80000000 4294967297 99999999999999999999; do
    expect_refusal --share-read "$key" --size "$bad"
    expect_refusal --share-write "$key" --size "$bad" "$scratch/in"
done
expect_refusal --share-read
expect_refusal --share-read "$key"
expect_refusal --share-read "$key" --size
expect_refusal --share-read "$key" --size 16 "$scratch/in"
expect_refusal --share-read "$key" --share-read "$key" --size 16
expect_refusal --share-read "$key" --share-write "$key" --size 16 "$scratch/in"
expect_refusal --share-read "$key" --size 16 --fast
expect_refusal --share-read "$key" --size 16 --text "$scratch/in"
expect_refusal --share-read "$key" --size 16 --surface 0
expect_refusal --share-read "$key" --size 16 --listen 7000
expect_refusal --share-write "$key" --size 16 --connect 127.0.0.1:7000 "$scratch/in"
expect_refusal --share-write "$key" --size 16
expect_refusal --share-write "$key" "$scratch/in"
expect_refusal --share-write "$key" --size 16 "$scratch/in" "$scratch/in"
expect_refusal --share-write "$key" --size 16 "$scratch/missing"
expect_refusal --share-write "$key" --size 16 "$scratch"
expect_refusal --size 16
expect_refusal --size 16 --print-config
expect_refusal "$scratch/in"
# A segment of others that is too small.
start_reader 16
code=0
write 4096 "$scratch/in" >"$scratch/out2" 2>"$scratch/err2" || code=$?
[ $code -eq 2 ] || fail "exit code $code for a segment that is too small"
[ "$(wc -l <"$scratch/err2")" -eq 1 ] || fail "not one line on stderr for a segment that is too small"
kill -TERM "$reader"
end_of_reader "a second one did not fit"
