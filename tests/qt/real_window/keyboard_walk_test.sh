#!/usr/bin/env bash
# The whole program from the keyboard alone, with real key presses and no
# mouse: open a category from the list reached by Shift+Tab, edit a cell, add
# an item, switch category by Tab and Down, save to disk, open and close every
# window by its menu key (the picture window by its check box) and Esc, exit.
# Each step checks the files or the windows; the walk is printed as it goes.
#   keyboard_walk_test.sh PROGRAM
source "$(dirname "$0")/window_lib.sh" "$@"

heading='Item,Original Cost,Current Value,Location Purchased,Date Purchased,Warranty Expiration,Serial Number / Description'
home="$work/home"
folder="$home/.local/share/Quillmere"
mkdir -p "$folder"
printf '2\r\n' >"$folder/NumCats.csv"
printf 'Garage\r\nKitchen\r\n' >"$folder/CatFiles.csv"
printf '%s\r\nDrill,10,8,,,,D-1\r\nSaw,5,4,,,,S-1\r\n' "$heading" >"$folder/Garage.csv"
printf '%s\r\nKettle,30,20,,,,K-1\r\n' "$heading" >"$folder/Kitchen.csv"

start "$home"
pid=$started
win="$(window_of "$pid")" || fail "no window"

# The program's visible windows with this title (taken literally).
windows() {
    local title w
    title="$(printf '%s' "$1" | sed 's/[][?*+.^$(){}|\\]/\\&/g')"
    for w in $(xdotool search --onlyvisible --name "^$title\$" 2>/dev/null); do
        [[ "$(xdotool getwindowpid "$w" 2>/dev/null)" == "$pid" ]] && echo "$w"
    done
    return 0
}
# Waits up to 5 s for the number of such windows to be $2.
expect_windows() {
    local _
    for _ in $(seq 20); do [[ "$(windows "$1" | wc -l)" == "$2" ]] && return 0; sleep 0.25; done
    fail "$3: expected $2 window(s) \"$1\", found $(windows "$1" | wc -l)"
}
# One step: the keys, then what happened.
step() {
    local keys="$1"
    shift
    for k in $keys; do act xdotool key "$k"; done
    echo "  keys: $keys -> $*"
}
has() { grep -q "$2" "$folder/$1" || fail "$1 does not hold \"$2\": $(tr -d '\r' <"$folder/$1" | tr '\n' '|')"; }

echo "The walk:"
step "shift+Tab shift+Tab" "the list: its gain of focus stores every category and opens the last, Kitchen"
step "Home" "Garage opens; the editor stands on Saw's serial number"
step "X Y" "typed into the cell"
step "F2" "the add-item box asks for a name"
expect_windows "Add Item" 1 "F2"
act xdotool type Hammer
step "Return" "the item Hammer is added"
expect_windows "Add Item" 0 "Enter in the add-item box"
step "Tab" "the list again: its walk stores Garage with the edit and the new item"
has Garage.csv "S-1XY"
has Garage.csv "^Hammer,"
step "Down" "Kitchen opens"
has Kitchen.csv "^Kettle,30,20,,,,K-1"

# Save to disk: a real disk only where none is mounted (the copy then ends in
# its message); on a machine with a floppy folder the question is cancelled.
step "ctrl+s" "Save to disk asks for a blank disk"
expect_windows Quillmere 2 "Save to disk"
if [[ -e /media/floppy ]]; then
    step "Escape" "cancelled: this machine has a floppy folder of its own"
else
    step "Return" "OK: the data folder is stored, then the copy tells how it went"
    expect_windows Quillmere 2 "the copy's message"
    step "Return" "its message closed"
fi
expect_windows Quillmere 1 "Save to disk"

for entry in "ctrl+r Properties" "ctrl+h How does Quillmere work?" "ctrl+c Contact Info" "ctrl+a About Quillmere"; do
    key="${entry%% *}" title="${entry#* }"
    step "$key" "\"$title\" opens"
    expect_windows "$title" 1 "$key"
    step "Escape" "\"$title\" closes"
    expect_windows "$title" 0 "Esc in $title"
done
step "Tab Tab space" "the list (another walk), the check box ticked: \"Item Picture\" opens"
expect_windows "Item Picture" 1 "the check box"
step "Escape" "\"Item Picture\" closes by its Close button"
expect_windows "Item Picture" 0 "Esc in Item Picture"

step "ctrl+x" "Exit stores everything and ends the program"
wait_end "$pid" || fail "Exit did not end the program"
[[ $ended == 0 ]] || fail "the program ended with $ended"
has Garage.csv "S-1XY"
has Garage.csv "^Hammer,"
has Kitchen.csv "^Kettle,30,20,,,,K-1"
grep -qx $'Garage\r' "$folder/CatFiles.csv" && grep -qx $'Kitchen\r' "$folder/CatFiles.csv" || fail "the index lost a category"
echo "PASS: the whole program from the keyboard alone"
