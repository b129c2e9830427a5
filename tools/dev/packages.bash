# shellcheck shell=bash
# SPDX-License-Identifier: Apache-2.0
# Debian packages that the commands need.

need_to_build() {
    need g++ cmake ninja-build ccache nlohmann-json3-dev libcli11-dev libsystemd-dev zlib1g-dev pkg-config \
        "$@"
}

need_to_test() {
    need_to_build clang-format libgtest-dev librapidcheck-dev valgrind binutils dpkg-dev file python3 groff-base \
        shellcheck fish dbus-daemon nodejs chromium "$@"
}

need_to_check() {
    need_to_test clang libclang-rt-dev llvm clang-tidy doxygen
}

# need PACKAGE...: installs those that are missing. Where all are there it needs neither root nor a network.
need() {
    command -v dpkg-query >/dev/null || {
        echo "./dev: no dpkg here, so it is up to you that these are installed: $*" >&2
        return
    }
    local package missing=()
    for package in "$@"; do
        [[ $(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null) == installed ]] || missing+=("$package")
    done
    [[ ${#missing[@]} -eq 0 ]] || run_stage "packages: ${missing[*]}" install_packages "${missing[@]}"
}

install_packages() {
    local as_root=()
    if [[ $(id -u) -ne 0 ]]; then
        command -v sudo >/dev/null || fail "these packages are missing, and only root can install them: $*"
        as_root=(sudo)
    fi
    as_root+=(env DEBIAN_FRONTEND=noninteractive apt-get -q -o Acquire::Retries=3)
    "${as_root[@]}" update
    "${as_root[@]}" install -y --no-install-recommends "$@"
}
