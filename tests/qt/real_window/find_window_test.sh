#!/usr/bin/env bash
# Find in the real window: Ctrl+F opens it, typing lists the cell (accents
# aside), Enter, or a double-click on the entry, opens the category as a click
# on the list does and lays the editor on that cell, so that the next key types
# into it. With QM_FIND_SCREENSHOT set, the screen after Enter is kept there.
#   find_window_test.sh PROGRAM
source "$(dirname "$0")/window_lib.sh" "$@"

# One session on a fresh home: Ctrl+F, type, then the given way to the entry,
# a key typed, Exit. Prints the cells that changed in the file.
session() {
    local home="$work/home-$1" pid find_win folder _
    make_home "$home"
    folder="$home/.local/share/Quillmere"
    # A row of its own in the first place, its cell in the middle of the row:
    # not where a switch leaves the editor (the last cell).
    sed -i '1a Lamp,1,1,Café Oak,D,W,S\r' "$folder/Long.csv"
    cp "$folder/Long.csv" "$work/before.csv"
    start "$home"
    pid=$started
    win="$(window_of "$pid")" || fail "no window"
    act xdotool key ctrl+f
    for _ in $(seq 20); do
        find_win="$(xdotool search --onlyvisible --name '^Find$' 2>/dev/null | head -1)" && [[ -n "$find_win" ]] && break
        sleep 0.25
    done
    [[ -n "$find_win" ]] || fail "Ctrl+F showed no Find window"
    act xdotool windowmove "$find_win" 0 0 # beside the grid, so a screenshot shows both
    act xdotool type --delay 60 'cafe oak'
    "$2" "$find_win"
    sleep 1.5 # the walk and the switch
    [[ "$1" == enter && -n "${QM_FIND_SCREENSHOT:-}" ]] && import -window root "$QM_FIND_SCREENSHOT"
    act xdotool type X
    xdotool search --onlyvisible --name '^Find$' >/dev/null || fail "the Find window closed"
    act xdotool key alt+x
    wait_end "$pid" || fail "Exit did not end the program"
    changed_cells "$work/before.csv" "$folder/Long.csv"
}

enter() { act xdotool key Return; }
# The first entry of the result list, at 600, 660 twips in the window's client area.
double_click() {
    local width
    width="$(xdotool getwindowgeometry "$1" | awk '/Geometry/ {split($2, s, "x"); print s[1]}')"
    xdotool mousemove --window "$1" $((600 * width / 7200)) $((660 * width / 7200))
    act xdotool click --repeat 2 --delay 80 1
}

for way in enter double_click; do
    got="$(session "$way" "$way")"
    [[ "$got" == "Café Oak -> Café OakX" ]] || fail "$way: expected the key typed into the cell found, got: ${got:-no change}"
done
echo "PASS: Enter and a double-click on the entry put the editor on the cell found"
