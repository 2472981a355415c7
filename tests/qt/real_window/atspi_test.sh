#!/usr/bin/env bash
# The window as a screen reader meets it: the built program in a real X display
# with a session bus and the AT-SPI bus, read through AT-SPI (python3-pyatspi,
# what Orca reads) and driven by real keys: the grid as a table with its
# headings and cells, a point on a cell finding that cell, the cell editor's
# name as it moves, a typed change read from its cell, the totals' names, the
# focus round of Tab, the switch by Down in the list (atspi_read.py holds the
# checks).
#   atspi_test.sh PROGRAM            the checks
#   atspi_test.sh PROGRAM --tree     prints the main window's tree instead
source "$(dirname "$0")/window_lib.sh" "$@"
mode="${2:---check}"

reader=(/usr/bin/python3 "$(dirname "$0")/atspi_read.py")
[[ -x /usr/bin/python3 ]] || reader=(python3 "${reader[1]}")
"${reader[0]}" -c 'import pyatspi' 2>/dev/null || { echo "SKIP: python3-pyatspi is missing (apt-get install python3-pyatspi)"; exit 77; }
launcher=/usr/libexec/at-spi-bus-launcher
for tool in dbus-launch "$launcher"; do
    command -v "$tool" >/dev/null || { echo "SKIP: $tool is missing (apt-get install dbus-x11 at-spi2-core)"; exit 77; }
done

# A session bus and the accessibility bus of this test alone; ended before
# the rest is cleared away.
eval "$(dbus-launch --sh-syntax)" || { echo "SKIP: the session bus did not start"; exit 77; }
buses() {
    # Either may have gone already (the launcher ends with the session bus).
    [[ -z "${bus_launcher:-}" ]] || kill "$bus_launcher" 2>/dev/null || true
    kill "$DBUS_SESSION_BUS_PID" 2>/dev/null || true
    cleanup
}
trap buses EXIT
"$launcher" --launch-immediately >>"$work/bus.log" 2>&1 &
bus_launcher=$!
a11y_bus() {
    dbus-send --session --print-reply --dest=org.a11y.Bus /org/a11y/bus org.a11y.Bus.GetAddress 2>/dev/null | grep -q unix
}
for _ in $(seq 40); do a11y_bus && break; sleep 0.25; done
a11y_bus || { echo "SKIP: the AT-SPI bus did not start (see $launcher)"; exit 77; }

# The worked example: "Tools" with three items, "Utensils" with one.
folder="$work/home/.local/share/Quillmere"
mkdir -p "$folder"
printf '2\r\n' >"$folder/NumCats.csv"
printf 'Tools\r\nUtensils\r\n' >"$folder/CatFiles.csv"
headings='Item,Original Cost,Current Value,Location Purchased,Date Purchased,Warranty Expiration,Serial Number / Description'
printf '%s\r\nJack,25.00,20.00,Hardware Store,1/2/2003,1/2/2005,SN 1234\r\nHammer,10,8,Market,2004,,\r\nSaw,30,25,Market,2005,,S9\r\n' \
    "$headings" >"$folder/Tools.csv"
printf '%s\r\nKettle,15,10,Shop,2006,,\r\n' "$headings" >"$folder/Utensils.csv"

export QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1
start "$work/home"
win="$(window_of "$started")" || fail "the program showed no window"
# Open "Tools", the first entry of the list (the list stands at 1920, 360 in the client area).
point 2800 460
act xdotool click 1
sleep 1

if [[ "$mode" == --tree ]]; then
    "${reader[@]}" "$started" --tree
    exit 0
fi
"${reader[@]}" "$started" --check || fail "the window does not read as it should (above)"
echo "PASS: the window reads through AT-SPI"
