#!/usr/bin/env bash
# Typed text is never replaced after a scroll, in the real window with real
# wheel events: typing after the current cell went out of view and came back
# appends, and so does typing in another cell clicked after a scroll.
#   scroll_back_test.sh PROGRAM
source "$(dirname "$0")/window_lib.sh" "$@"

# One session on a fresh home: select "Long" (the editor opens on its last
# row, the grid scrolled to the end), click the 7th row in view, run the given
# steps, Exit. Prints the cells that changed in the file.
session() {
    local home="$work/home-$1" pid
    shift
    make_home "$home"
    cp "$home/.local/share/Quillmere/Long.csv" "$work/before.csv"
    start "$home"
    pid=$started
    win="$(window_of "$pid")" || fail "no window"
    act point 2220 480 && act xdotool click 1 # the list's first entry
    act cell_point 7 && act xdotool click 1
    "$@"
    act xdotool key alt+x
    wait_end "$pid" || fail "Exit did not end the program"
    changed_cells "$work/before.csv" "$home/.local/share/Quillmere/Long.csv"
}

# Two notches up take the cell out of view (three rows a notch), two down bring it back.
away_and_back() {
    act xdotool key End
    act xdotool type XYZ
    act cell_point 2 # the wheel over the grid, not over the editor
    for button in 4 4 5 5; do act xdotool click "$button"; done
    act xdotool type Q
}
session back away_and_back >"$work/got"
got="$(cat "$work/got")"
[[ "$got" =~ ^D([0-9]+)\ -\>\ D([0-9]+)XYZQ$ && "${BASH_REMATCH[1]}" == "${BASH_REMATCH[2]}" ]] ||
    fail "typing after a scroll away and back: expected one cell with XYZQ appended, got: ${got:-no change}"

click_after_scroll() {
    act cell_point 2
    for button in 4 4; do act xdotool click "$button"; done
    act cell_point 5 && act xdotool click 1
    act xdotool type Q
}
session click click_after_scroll >"$work/got"
got="$(cat "$work/got")"
[[ "$got" =~ ^D([0-9]+)\ -\>\ D([0-9]+)Q$ && "${BASH_REMATCH[1]}" == "${BASH_REMATCH[2]}" ]] ||
    fail "typing in a cell clicked after a scroll: expected one cell with Q appended, got: ${got:-no change}"
echo "PASS: typed text appended after the scrolls"
