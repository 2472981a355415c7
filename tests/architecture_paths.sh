#!/usr/bin/env bash
# The maps of the code stay true: every file or folder ARCHITECTURE.md names in
# backquotes exists, and so does every file that a section of frmMain's header
# names as the one defining it. Both go stale without a sound when code moves.
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
exit "$missing"
