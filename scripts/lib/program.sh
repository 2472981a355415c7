# The program's release build and the files a data folder starts with.
# Sourced after common.sh.

QM_BUILD_DIR="$QM_REPO/build"
QM_BUILT_PROGRAM="$QM_BUILD_DIR/src/qt/quillmere"

# Release build of the program alone (no tests, no benchmarks) in build/; the
# Release build type takes Debian's hardening flags (cmake/hardening.cmake).
# $1: the install prefix to configure.
build_program() {
    local prefix="$1"
    say "building the program (Release) in $QM_BUILD_DIR"
    cmake -S "$QM_REPO" -B "$QM_BUILD_DIR" -G Ninja -DCMAKE_BUILD_TYPE=Release \
        -DQM_BUILD_QT=ON -DQM_BUILD_TESTS=OFF -DQM_BUILD_BENCH=OFF \
        -DCMAKE_INSTALL_PREFIX="$prefix" >/dev/null
    cmake --build "$QM_BUILD_DIR" --parallel 2
    [[ -x "$QM_BUILT_PROGRAM" ]] || die "the build did not produce $QM_BUILT_PROGRAM"
}

# Puts the shipped files into a data folder where they are missing. A file that is
# there already, or a link by that name, is the user's and stays as it is.
# $1: the folder holding NoPic.jpg and Readme.htm; $2: the data folder (made if missing).
seed_data_folder() {
    local from="$1" to="$2" name
    mkdir -p "$to"
    for name in NoPic.jpg Readme.htm; do
        [[ -f "$from/$name" ]] || die "$from/$name is missing"
        if [[ -e "$to/$name" || -L "$to/$name" ]]; then
            say "kept $to/$name"
        else
            cp "$from/$name" "$to/$name"
            say "added $to/$name"
        fi
    done
}
