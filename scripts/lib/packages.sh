# The Debian 12 packages that building, testing, installing and screenshotting
# Quillmere need, and the one function that installs whichever are missing.
# Sourced after common.sh.

QM_PACKAGES=(
    cmake ninja-build g++                        # toolchain
    qt6-base-dev qt6-base-dev-tools libqt6printsupport6 libgl-dev   # Qt 6 Widgets and PrintSupport
    libgtest-dev libgmock-dev libbenchmark-dev   # tests and benchmarks
    libxxhash-dev                                # the chunk digests of files (XXH3)
    clang libclang-rt-14-dev                     # fuzz targets and sanitizers
    fonts-comic-neue fonts-dejavu-core           # the window's fonts ("Comic Sans MS" maps to Comic Neue)
    xvfb xauth xdotool imagemagick               # a virtual display and screenshots
    dbus-x11 at-spi2-core python3-pyatspi        # reading the window as a screen reader does (AT-SPI)
    desktop-file-utils                           # checking and registering the desktop entry
    poppler-utils                                # reading printed PDFs in tests
    dpkg-dev                                     # the Debian package (dpkg-shlibdeps, dpkg-buildflags)
    lintian appstream man-db                     # checking the package, its metadata and manual page
    dosfstools fusefat                           # a real FAT stick in the backup tests
)

# Installs the missing packages with apt-get, without questions: those named, or
# all of QM_PACKAGES. The package lists are refreshed only when something has to
# be installed, so a machine that has everything is not touched at all.
ensure_packages() {
    local wanted=("$@") missing=() pkg
    [[ ${#wanted[@]} -gt 0 ]] || wanted=("${QM_PACKAGES[@]}")
    for pkg in "${wanted[@]}"; do
        if [[ "$(dpkg-query -W -f='${db:Status-Status}' "$pkg" 2>/dev/null)" != installed ]]; then
            missing+=("$pkg")
        fi
    done
    if [[ ${#missing[@]} -eq 0 ]]; then
        say "all ${#wanted[@]} packages are installed"
        return 0
    fi
    say "installing ${missing[*]}"
    command -v apt-get >/dev/null || die "apt-get not found: this needs Debian 12 (or a derivative)"
    as_root env DEBIAN_FRONTEND=noninteractive apt-get -q update </dev/null
    as_root env DEBIAN_FRONTEND=noninteractive apt-get -q -y install --no-install-recommends \
        "${missing[@]}" </dev/null
}
