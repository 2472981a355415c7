#!/usr/bin/env bash
# One window per data folder, with real processes in a real X display: a second
# start on the same folder brings the running window to the front and ends at
# once, touching nothing in the folder; a start on another folder runs as
# usual; after the first is killed, a new start takes its lock over.
#   one_window_test.sh PROGRAM
source "$(dirname "$0")/window_lib.sh" "$@"

make_home "$work/a"
make_home "$work/b"
start "$work/a"
first=$started
first_win="$(window_of "$first")" || fail "the first start showed no window"
start "$work/b"
other=$started
other_win="$(window_of "$other")" || fail "a start on another data folder showed no window"

# The focus is on the other folder's window now; the first's folder holds a
# leftover temporary that any start of its own would clear away.
focus_on() {
    local _
    for _ in $(seq 20); do [[ "$(xdotool getwindowfocus)" == "$1" ]] && return 0; sleep 0.25; done
    return 1
}
focus_on "$other_win" || fail "the window started last does not have the focus"
folder="$work/a/.local/share/Quillmere"
touch -d '1 hour ago' "$folder/.quillmere-tmp-999999999-1"
listing() { ls -la --time-style=full-iso "$folder"; md5sum "$folder"/*; }
listing >"$work/before"

start "$work/a"
wait_end "$started" || fail "a second start on the same data folder did not end"
[[ $ended == 0 ]] || fail "the second start ended with $ended"
kill -0 "$first" 2>/dev/null || fail "the first window ended"
focus_on "$first_win" || fail "the first window was not brought to the front"
listing | diff "$work/before" - >&2 || fail "the second start changed the data folder"
# The same folder reached through a link is the same folder.
ln -s "$work/a" "$work/a-link"
start "$work/a-link"
wait_end "$started" || fail "a start on the same data folder through a link did not end"

# A lock left by a killed process is taken over, and held.
{ kill -9 "$first" && wait "$first"; } 2>/dev/null || true
start "$work/a"
new_win="$(window_of "$started")" || fail "after the first was killed, a new start showed no window"
make_home "$work/c"
start "$work/c"
third_win="$(window_of "$started")" || fail "a start on a third data folder showed no window"
focus_on "$third_win" || fail "the window started last does not have the focus"
start "$work/a"
wait_end "$started" || fail "the lock taken over is not held: a further start did not end"
focus_on "$new_win" || fail "the window that took the lock over was not brought to the front"
echo "PASS: one window per data folder"
