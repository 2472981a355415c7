#!/usr/bin/env bash
# Find in the real window: Ctrl+F opens it, typing lists the cell (accents
# aside), Enter opens the category as a click on the list does and lays the
# editor on that cell, so that the next key types into it. With
# QM_FIND_SCREENSHOT set, the screen at that moment is kept there.
#   find_window_test.sh PROGRAM
source "$(dirname "$0")/window_lib.sh" "$@"

home="$work/home"
make_home "$home"
folder="$home/.local/share/Quillmere"
# A row of its own in the first place, its cell in the middle of the row: not
# where a switch leaves the editor (the last cell).
sed -i '1a Lamp,1,1,Café Oak,D,W,S\r' "$folder/Long.csv"
cp "$folder/Long.csv" "$work/before.csv"
start "$home"
pid=$started
win="$(window_of "$pid")" || fail "no window"
act xdotool key ctrl+f
find_win=""
for _ in $(seq 20); do
    find_win="$(xdotool search --onlyvisible --name '^Find$' 2>/dev/null | head -1)" && [[ -n "$find_win" ]] && break
    sleep 0.25
done
[[ -n "$find_win" ]] || fail "Ctrl+F showed no Find window"
act xdotool windowmove "$find_win" 0 0 # beside the grid, so a screenshot shows both
act xdotool type --delay 60 'cafe oak'
act xdotool key Return
sleep 1.5 # the walk and the switch
[[ -n "${QM_FIND_SCREENSHOT:-}" ]] && import -window root "$QM_FIND_SCREENSHOT"
act xdotool type X
xdotool search --onlyvisible --name '^Find$' >/dev/null || fail "the Find window closed on Enter"
act xdotool key alt+x
wait_end "$pid" || fail "Exit did not end the program"
got="$(changed_cells "$work/before.csv" "$folder/Long.csv")"
[[ "$got" == "Café Oak -> Café OakX" ]] || fail "expected the key typed into the cell found, got: ${got:-no change}"
echo "PASS: Ctrl+F, typing and Enter put the editor on the cell found"
