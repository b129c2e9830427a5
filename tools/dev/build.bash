# shellcheck shell=bash
# SPDX-License-Identifier: Apache-2.0
# Building, and what is made of the builds.

# configure_in DIRECTORY PRESET [CMAKE OPTION...]
configure_in() {
    local directory=$1 preset=$2
    shift 2
    mkdir -p "$directory"
    cmake --preset "$preset" -B "$directory" -DCMAKE_CXX_COMPILER_LAUNCHER=ccache "$@" >"$directory/configure.log" 2>&1 ||
        { cat "$directory/configure.log" && return 1; }
}

# build_in DIRECTORY PRESET [CMAKE OPTION...]
build_in() {
    configure_in "$@"
    cmake --build "$1" -- -k 0  # all errors at once
}

# build PRESET [CMAKE OPTION...]
build() {
    build_in "build/$1" "$@"
}

run_build() {
    need_to_test
    want_plot
    run_stage "build" build dev
}

run_demo() {
    need_to_build
    run_stage "build" build release -DNEARCAST_TESTS=OFF
    local program=build/release/apps/nearcast/nearcast
    "$program" scene --settings >build/release/demo.json
    printf '\n%s\n' "=== nearcast watch --radio simulator --settings demo.json --for 20"
    "$program" watch --radio simulator --settings build/release/demo.json --for 20
}

run_install() {
    [[ $# -eq 1 ]] || fail "usage: ./dev install PREFIX"
    need_to_build
    want_plot
    run_stage "build" build release -DNEARCAST_TESTS=OFF
    run_stage "install" cmake --install build/release --prefix "$1"
}

make_packages() {
    # With this prefix the libraries go where Debian has them.
    build_in build/package release -DNEARCAST_TESTS=OFF -DCMAKE_INSTALL_PREFIX=/usr
    (cd build/package && cpack -G DEB)
}

run_package() {
    need_to_build dpkg-dev file
    want_plot
    run_stage "packages" make_packages
    ls build/package/*.deb
}

# Warnings are errors.
make_docs() {
    mkdir -p build/docs
    NEARCAST_DOCS_OUTPUT=build/docs NEARCAST_DOCS_VERSION=$(sed -n 's/^#define NEARCAST_VERSION_M.* //p; s/^#define NEARCAST_VERSION_PATCH //p' \
        include/nearcast/Version.h | paste -sd.) doxygen docs/Doxyfile
}

run_docs() {
    need doxygen
    run_stage "reference" make_docs
    echo "build/docs/html/index.html"
}

run_clean() {
    rm -rf build
}
