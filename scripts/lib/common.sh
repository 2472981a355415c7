# Shared by the scripts in scripts/: where the repository is, messages, root rights.
# Sourced, not run.

QM_REPO="$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)"
QM_SCRIPT="$(basename "$0")"

say() { printf '%s: %s\n' "$QM_SCRIPT" "$*"; }
die() { printf '%s: error: %s\n' "$QM_SCRIPT" "$*" >&2; exit 1; }

# Runs a command as root: directly when we are root, else through sudo.
as_root() {
    if [[ $EUID -eq 0 ]]; then
        "$@"
    elif command -v sudo >/dev/null; then
        sudo "$@"
    else
        die "'$*' needs root rights and sudo is not installed; run this script as root"
    fi
}

# Seconds since the epoch, for step timings.
now() { date +%s; }
