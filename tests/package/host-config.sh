#!/bin/sh
# host-config.sh ORLIX_HOST ENGINE_XML: --config and --print-config, and the reports of files that cannot be loaded.
set -eu
host=$1
engine=$2
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
fail() {
    echo "$1" >&2
    exit 1
}

cat >"$scratch/defaults" <<'END'
use_for_studio=false
merge_window=false
log_level.info=true
log_level.warning=true
log_level.error=true
log_level.debug=false
log_level.performance=false
log_output.terminal=true
log_output.file_size=1048576
log_output.file_path_linux=
mem_report_output.file_path_linux=
END
for id in mq tm sc gr ap sm dt hc wb rp rs; do
    printf 'thread_set.%s.name=\nthread_set.%s.priority=51\n' $id $id >>"$scratch/defaults"
done
cat >"$scratch/rest" <<'END'
resource_cache.character=1024
resource_cache.image=100
resource_cache.shader=100
resource_cache.mesh=50
resource_cache.audio=10
render_cache.text_texture_size=256
render_cache.character=1024
render_cache.small_texture=100
render_cache.big_texture=10
render_cache.big_texture_width=1280
render_cache.big_texture_height=720
render_cache.mesh=50
render_cache.program=100
render_param.android_simulator=true
render_param.android_geometry=true
render_param.vertical_sync=true
render_param.high_quality=true
render_param.anti_aliasing=true
render_param.sample_count=4
render_param.image_no_extern=png
render_geometry.rectangle_offset_x=1
render_geometry.rectangle_offset_y=1
render_text.scale_width=100
render_text.scale_height=100
render_text.auto_hinting=true
render_text.support_complex_language=false
touch_param.waver_distance=25
touch_param.long_press_delay=500
touch_param.continuous_press_interval=100
touch_param.double_tap_interval=200
gesture_param.finger_time_interval=200
gesture_param.flip_min_distance=50
gesture_param.rotate_min_angle=5
gesture_param.spread_pinch_min_distance=50
animation_param.fps=50
END

"$host" --print-config >"$scratch/out"
cat "$scratch/defaults" "$scratch/rest" | diff - "$scratch/out" || fail "wrong defaults"
"$host" --print-config --config "$engine" | grep -v '^surface_set\.0\.' >"$scratch/out"
cat "$scratch/defaults" "$scratch/rest" | diff - "$scratch/out" || fail "the shipped file is not the defaults"

cat >"$scratch/two.xml" <<'END'
<engine use_for_studio="true"><log_output file_path_linux="a.log"/>
<thread_set><thread id="tm" name="zwei&lf;Zeilen" priority="-3"/></thread_set>
<surface_set><surface use="true" name="äö" offset_x="-5" width="800" initial_color="0xff00a0"/><surface/></surface_set>
</engine>
END
"$host" --config "$scratch/two.xml" --print-config >"$scratch/out"
cat >"$scratch/expected" <<END
use_for_studio=true
log_output.file_path_linux=$scratch/a.log
thread_set.tm.name=zwei&lf;Zeilen
thread_set.tm.priority=-3
surface_set.0.use=true
surface_set.0.name=äö
surface_set.0.display_name=
surface_set.0.display_id=0
surface_set.0.layer_id=0
surface_set.0.surface_id=0
surface_set.0.offset_x=-5
surface_set.0.offset_y=0
surface_set.0.width=800
surface_set.0.width_default=0
surface_set.0.height=0
surface_set.0.height_default=0
surface_set.0.enable_touch=false
surface_set.0.enable_gesture=false
surface_set.0.initial_color=0x00FF00A0
surface_set.1.use=false
END
head -n 50 "$scratch/out" | grep -xFf "$scratch/expected" | head -n 20 >"$scratch/found"
diff "$scratch/expected" "$scratch/found" || fail "wrong settings"
[ "$(wc -l <"$scratch/out")" -eq 98 ] || fail "not one line a setting"

# The text plays with the settings loaded.
echo hello | "$host" --config "$scratch/two.xml" --text - | head -n 1 | grep -qx 'text hello' || fail "no text"

# expect_report LINES ARGUMENT...: exit code 2, nothing on standard output, so many lines on stderr.
expect_report() {
    lines=$1
    shift
    code=0
    "$host" "$@" >"$scratch/out" 2>"$scratch/err" || code=$?
    [ $code -eq 2 ] || fail "exit code $code for: $*"
    [ ! -s "$scratch/out" ] || fail "output for: $*"
    [ "$(wc -l <"$scratch/err")" -eq "$lines" ] || fail "not $lines lines on stderr for: $*"
}
expect_report 1 --config "$scratch/missing.xml" --print-config
grep -qx "orlix-host: cannot read $scratch/missing.xml" "$scratch/err" || fail "wrong report of a missing file"
expect_report 1 --config "$scratch" --print-config
expect_report 1 --config
expect_report 1 --config "$engine"
expect_report 1 --config "$engine" --config "$engine" --print-config
expect_report 1 --print-config --text "$engine"

printf '<a>\n\t<b c="1" dä =2/>\n</a>' >"$scratch/bad.xml"
expect_report 3 --config "$scratch/bad.xml" --print-config
printf 'orlix-host: %s:2:12: syntax error\n\t<b c="1" dä =2/>\n\t          ^\n' "$scratch/bad.xml" |
    diff - "$scratch/err" || fail "wrong report of a syntax error"
{
    printf '<a b="'
    head -c 100000 /dev/zero | tr '\0' x
    printf '" !\033[2J>'
} >"$scratch/long.xml"
expect_report 3 --config "$scratch/long.xml" --print-config
[ "$(tail -n 1 "$scratch/err" | wc -c)" -eq 62 ] || fail "a long line is not shown around its caret"
grep -q '!?\[2J>' "$scratch/err" || fail "control characters reach the terminal"
printf '<a><b/><' >"$scratch/cut.xml"
expect_report 1 --config "$scratch/cut.xml" --print-config
grep -qx "orlix-host: $scratch/cut.xml: the text ends within an element" "$scratch/err" || fail "wrong report of a cut file"
