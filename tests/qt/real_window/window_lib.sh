# Shared by the tests that drive the built program in a real X display (Xvfb)
# with real mouse and key events from xdotool. Sourced by each test with the
# program's path as $1. A test re-runs itself inside xvfb-run; it ends with 77
# (skipped) when a tool is missing.
set -euo pipefail

program="$1"
[[ -x "$program" ]] || { echo "FAIL: $program is not a program" >&2; exit 1; }
if [[ -z "${QM_IN_XVFB:-}" ]]; then
    for tool in xvfb-run xdotool; do
        command -v "$tool" >/dev/null || { echo "SKIP: $tool is missing (apt-get install xvfb xdotool)"; exit 77; }
    done
    # A display that no X server holds or is still leaving: xvfb-run does not
    # wait for its server to end, and a server still ending holds the display's
    # abstract socket, where a client of the next server on that number
    # connects first ("could not connect to display"). So the number is free of
    # lock, socket file and abstract socket, and the test waits for its own
    # server to let go of all three before it ends.
    held() { [[ -e "/tmp/.X$1-lock" || -e "/tmp/.X11-unix/X$1" ]] || grep -q "@/tmp/.X11-unix/X$1\$" /proc/net/unix 2>/dev/null; }
    display=99
    while held "$display"; do display=$((display + 1)); done
    rc=0
    QM_IN_XVFB=1 xvfb-run -n "$display" -s "-screen 0 1280x1024x24" bash "$0" "$@" || rc=$?
    for _ in $(seq 40); do
        held "$display" || break
        sleep 0.25
    done
    exit "$rc"
fi

work="$(mktemp -d "${TMPDIR:-/tmp}/qm-window.XXXXXX")"
pids=()
cleanup() {
    local p
    for p in "${pids[@]}"; do { kill -9 "$p" && wait "$p"; } 2>/dev/null || true; done
    rm -rf "$work"
}
trap cleanup EXIT
export QT_QPA_PLATFORM=xcb LC_ALL=C
# A runtime folder of the tests' own: the program keeps its lock there.
export XDG_RUNTIME_DIR="$work/runtime"
mkdir -m 700 "$XDG_RUNTIME_DIR"

# What the program wrote goes with the failure: a program that ended at its
# start says why only there.
fail() {
    echo "FAIL: $*" >&2
    [[ ! -s "$work/program.log" ]] || { echo "--- the program's output:" >&2; tail -n 20 "$work/program.log" >&2; }
    exit 1
}

# A home of its own whose data folder holds one category "Long" of 40 items,
# cell texts that tell every cell apart.
make_home() {
    local folder="$1/.local/share/Quillmere" i
    mkdir -p "$folder"
    printf '1\r\n' >"$folder/NumCats.csv"
    printf 'Long\r\n' >"$folder/CatFiles.csv"
    {
        printf 'Item,Original Cost,Current Value,Location Purchased,Date Purchased,Warranty Expiration,Serial Number / Description\r\n'
        for i in $(seq 40); do printf 'Item %d,%d,%d,Shop %d,D%d,W%d,S%d\r\n' "$i" "$i" "$i" "$i" "$i" "$i" "$i"; done
    } >"$folder/Long.csv"
}

# Starts the program with this home in the background; its pid in $started.
# A start that the X server refuses at once ("could not connect to display",
# seldom, just after a server on the same number ended) is tried again: that
# is the test machine's, not the program's.
start() {
    local try _
    for try in 1 2 3; do
        HOME="$1" "$program" >>"$work/program.log" 2>&1 &
        started=$!
        pids+=("$started")
        for _ in $(seq 10); do kill -0 "$started" 2>/dev/null || break; sleep 0.1; done
        kill -0 "$started" 2>/dev/null || ! grep -q "could not connect to display" "$work/program.log" || { sleep 1; continue; }
        return 0
    done
}

# The main window of a process, once it is shown (nothing after 30 s).
window_of() {
    local w _
    for _ in $(seq 120); do
        for w in $(xdotool search --onlyvisible --name '^Quillmere$' 2>/dev/null); do
            [[ "$(xdotool getwindowpid "$w" 2>/dev/null)" == "$1" ]] && { echo "$w"; return 0; }
        done
        kill -0 "$1" 2>/dev/null || break
        sleep 0.25
    done
    return 1
}

# Waits up to 10 s for a process to end; its exit code in $ended.
wait_end() {
    local _
    for _ in $(seq 40); do
        kill -0 "$1" 2>/dev/null || { ended=0; wait "$1" || ended=$?; return 0; }
        sleep 0.25
    done
    return 1
}

# Moves the pointer over a point of window $win given in twips of the form's
# client area (the layout's own unit), below the menu bar.
point() {
    local geo width height
    geo="$(xdotool getwindowgeometry "$win" | awk '/Geometry/ {print $2}')"
    width="${geo%x*}" height="${geo#*x}"
    # The client area is 11025 x 7200 twips; what the window has above it is the menu bar.
    xdotool mousemove --window "$win" \
        "$(awk -v t="$1" -v w="$width" 'BEGIN {printf "%d", t * w / 11025}')" \
        "$(awk -v t="$2" -v w="$width" -v h="$height" 'BEGIN {printf "%d", h - 7200 * w / 11025 + t * w / 11025}')"
    sleep 0.3
}

# The centre of the grid's cell in column 4 ("Date Purchased") of the k-th item
# row in view: the grid stands at 240, 2280; the heading row is 500 high, an
# item row 270; columns 0 to 3 take 4900.
cell_point() { point $((240 + 4900 + 550)) $((2280 + 500 + 270 * ($1 - 1) + 135)); }

# Each step is one piece of user input, given time to be taken in.
act() { "$@"; sleep 0.4; }

# The cells that differ between two category files, one "old -> new" a line.
changed_cells() {
    awk -F, 'NR == FNR { old[FNR] = $0; next }
             old[FNR] != $0 { n = split(old[FNR], o, ","); split($0, x, ",");
                              for (i = 1; i <= n; i++) if (o[i] != x[i]) print o[i] " -> " x[i] }' "$1" "$2" | tr -d '\r'
}
