#!/usr/bin/env bash
# The maps of the code stay true: every file or folder ARCHITECTURE.md names in
# backquotes exists, and so does every file that a section of frmMain's header
# names as the one defining it, where each function of the section is defined.
# Both go stale without a sound when code moves.
#   architecture_paths.sh REPOSITORY
set -euo pipefail
cd "${1:-$(dirname "$0")/..}"

missing=0
check() { # $1: the map, $2: the prefix of its paths; the paths come on stdin
    local path count=0
    while read -r path; do
        count=$((count + 1))
        [[ -e "$2$path" ]] || { echo "$1 names $2$path, which does not exist"; missing=1; }
    done
    # A pattern that stopped matching would pass for a true map.
    ((count > 0)) || { echo "no file names found in $1"; missing=1; }
}
check ARCHITECTURE.md "" < <(grep -o '`[A-Za-z0-9_./-]*/[A-Za-z0-9_./-]*`' ARCHITECTURE.md | tr -d '`' | sort -u)
check src/mainwindow/frm_main.h src/ < <(grep -o '[a-z]*/[a-z_]*\.cpp' src/mainwindow/frm_main.h | sort -u)

# "NAME FILE..." for each member function declared under a comment of
# frmMain's header that names the files defining it (inline ones aside).
sections='
/^ *\/\/ ---- / { files = ""; n = split($0, w, /[ (),]+/)
                  for (i = 1; i <= n; ++i) if (w[i] ~ /^[a-z]+\/[a-z_]+\.cpp$/) files = files " " w[i]; next }
/^ *\/\/ [a-z]+\/[a-z_]+\.cpp/ { match($0, /[a-z]+\/[a-z_]+\.cpp/); files = " " substr($0, RSTART, RLENGTH); next }
/^private:/ { files = ""; next }
files != "" && /^    [^\/ ].*[A-Za-z_0-9]\(/ && !/\{|= *(delete|default)/ {
    line = $0; sub(/\(.*/, "", line); n = split(line, w, /[ *&]+/); print w[n] files }'
count=0
while read -r name files; do
    count=$((count + 1))
    found=0
    for f in $files; do grep -q "frmMain::$name(" "src/$f" 2>/dev/null && found=1; done
    ((found)) || { echo "src/mainwindow/frm_main.h puts $name under $files, which define no frmMain::$name"; missing=1; }
done < <(awk "$sections" src/mainwindow/frm_main.h)
((count > 0)) || { echo "no sections with files found in src/mainwindow/frm_main.h"; missing=1; }
exit "$missing"
