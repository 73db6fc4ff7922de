#!/bin/sh
# host-touch.sh ORLIX_HOST MODEL DEMO_RECORDING RECORDINGS: recorded touches come out as the model says, at any pace, and
# records that make no sense are told and skipped. RECORDINGS is a folder of more recordings, if it is there.
set -eu
host=$1
model=$2
demo=$3
recordings=$4
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
fail() {
    echo "$1" >&2
    exit 1
}

# config WIDTH HEIGHT DELAY: one surface; with a long delay no held finger repeats, however slow the machine.
config() {
    echo "<engine><log_output terminal=\"false\"/><touch_param long_press_delay=\"$3\"/><surface_set><surface/><surface use=\"true\" width=\"$1\"
        height=\"$2\" enable_touch=\"true\"/></surface_set></engine>" >"$scratch/engine.xml"
}

# play RECORDING OPTION...: into $scratch/out and $scratch/err
play() {
    recording=$1
    shift
    "$host" --config "$scratch/engine.xml" --surface 1 --play "$recording" "$@" >"$scratch/out" 2>"$scratch/err"
}

# compare_fast RECORDING WIDTH HEIGHT
compare_fast() {
    config "$2" "$3" 4000000000
    play "$1" --fast || fail "cannot play $1"
    python3 "$model" "$1" "$2" "$3" >"$scratch/expected"
    diff "$scratch/expected" "$scratch/out" >&2 || fail "$1 on a surface of $2 x $3 differs from the model"
    [ "$(wc -l <"$scratch/err")" -eq 1 ] || fail "not one line on stderr for $1"
    counts=$(for what in press move release; do grep -c "^$what " "$scratch/expected" || true; done | tr '\n' ' ')
    sed -nE 's/^orlix-host: ([0-9]+) presses, ([0-9]+) moves, ([0-9]+) releases, deepest queue [0-9]+, .*/\1 \2 \3 /p' \
        "$scratch/err" | grep -qx "$counts" || fail "wrong counts for $1: $(cat "$scratch/err")"
}

# compare_pace RECORDING: at its own pace the times are those of the clock, so speeds and times are left out.
compare_pace() {
    config 800 480 4000000000
    play "$1" || fail "cannot play $1 at its pace"
    python3 "$model" "$1" 800 480 | cut -d' ' -f1-6 >"$scratch/expected"
    cut -d' ' -f1-6 "$scratch/out" | diff "$scratch/expected" - >&2 || fail "$1 at its pace differs from the model"
}

for recording in "$demo" "$recordings"/*.events; do
    [ -e "$recording" ] || continue
    for size in "0 0" "800 480" "1 1" "3840 2160"; do
        # shellcheck disable=SC2086 # two words
        compare_fast "$recording" $size
    done
done
compare_pace "$demo"
[ ! -e "$recordings/ep0430m09.4-finger-drag-down.events" ] ||
    compare_pace "$recordings/ep0430m09.4-finger-drag-down.events"
config 0 0 4000000000
play - --fast <"$demo" || fail "standard input cannot be played"
python3 "$model" "$demo" 0 0 | cmp - "$scratch/out" || fail "standard input differs from the file"

# A held finger repeats: once after the delay, then a burst of what fell due meanwhile, one for each timer cycle.
config 0 0 500
play "$demo" || fail "cannot play the demo"
repeats=$(grep -c '^move id=0 x=265 y=413 dx=0 dy=0 ' "$scratch/out")
[ "$repeats" -ge 5 ] || fail "only $repeats repeats of the held finger"

# Without --config the host finds the file that ships with it.
"$host" --play "$demo" --fast >"$scratch/out" 2>"$scratch/err" || fail "the shipped configuration is not found"
grep -q '^press id=1 x=600 y=100 ' "$scratch/out" || fail "the shipped configuration takes no touches"

# Records that make no sense: each is one line with its number, and the rest plays on.
head='A: 2f 0 1 0 0 0\nA: 35 0 99 0 0 0\nA: 36 0 99 0 0 0\nA: 39 0 9 0 0 0\n'
events='E: 0.000000 0003 0039 0001\nE: 0.000000 0003 0035 0010\nE: 0.000000 0000 0000 0000\n'
config 0 0 4000000000
while read -r line; do
    printf "${head}${events}%s\nE: 0.010000 0003 0036 0020\nE: 0.010000 0000 0000 0000\n" "$line" >"$scratch/in"
    play "$scratch/in" --fast || fail "cannot play on behind: $line"
    printf 'press id=0 x=10 y=0 dx=0 dy=0 vx=0 vy=0 t=1\nmove id=0 x=10 y=20 dx=0 dy=20 vx=0 vy=0 t=11\n' |
        diff - "$scratch/out" >&2 || fail "not skipped: $line"
    [ "$(wc -l <"$scratch/err")" -eq 2 ] || fail "not one report for: $line"
    head -n 1 "$scratch/err" | grep -q "^orlix-host: $scratch/in: line 8 " || fail "no line number for: $line"
done <<'END'
nonsense
E
E:
E: 0.1 0003 0035 0011
E: 0.0000000 0003 0035 0011
E: -1.000000 0003 0035 0011
E: 1.000000 0003 0035
E: 1.000000 0003 0035 0011 0012
E: 1.000000 0003 0035 11x
E: 1.000000 0003 0035 0x11
E: 1.000000 zz03 0035 0011
E: 1.000000 10003 0035 0011
E: 1.000000 0003 0035 99999999999999999999
E: 99999999999.000000 0003 0035 0011
E: 0.005000 0003 0035 0100
E: 0.005000 0003 0035 -001
E: 0.005000 0003 0036 2147483647
E: 0.005000 0003 0039 0010
E: 0.005000 0003 0039 -002
E: 0.005000 0003 002f 0002
E: 0.005000 0003 002f -001
A: 35 0 50 0 0 0
A: xx 0 50 0 0 0
A: 35 9 1 0 0 0
A: 35 0
Q: 1
END

# A recording without end of its last frame, with comments, blank lines and codes that are not needed.
printf "# c\n\nN: x # y\n\r\nI: 1\nP: 0\nB: 0\n${head}${events}E: 0.0 # no\n" >"$scratch/in"
printf 'E: 0.020000 0003 003a 9999\t# pressure\nE: 0.020000 0003 0036 0020\n' >>"$scratch/in"
play "$scratch/in" --fast || fail "cannot play a recording that is cut"
[ "$(wc -l <"$scratch/out")" -eq 1 ] || fail "an unfinished frame was played"

# expect_refusal ARGUMENT...: exit code 2, one line on stderr, nothing on standard output but the log of the threads.
expect_refusal() {
    code=0
    "$host" "$@" >"$scratch/out" 2>"$scratch/err" || code=$?
    [ $code -eq 2 ] || fail "exit code $code for: $*"
    [ "$(wc -l <"$scratch/err")" -eq 1 ] || fail "not one line on stderr for: $*"
    ! grep -v '^\[Info\]' "$scratch/out" || fail "output for: $*"
}
printf "$head" >"$scratch/no-events"
printf "A: 2f 0 1\nA: 35 0 9\n$events" >"$scratch/no-axes"
expect_refusal --play "$scratch/no-events"
expect_refusal --play "$scratch/no-axes"
expect_refusal --play /dev/null
expect_refusal --play "$scratch/missing"
expect_refusal --play "$scratch"
expect_refusal --play
expect_refusal --play "$demo" --surface
expect_refusal --play "$demo" --surface x
expect_refusal --play "$demo" --surface 1
expect_refusal --play "$demo" --surface -1
expect_refusal --play "$demo" --surface 99999999999999999999
expect_refusal --play "$demo" --text "$demo"
expect_refusal --text "$demo" --fast
expect_refusal --fast
