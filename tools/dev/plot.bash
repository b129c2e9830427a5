# shellcheck shell=bash
# SPDX-License-Identifier: Apache-2.0
# uPlot, which draws the curves of the pages. npm fetches it into web/node_modules, in the version and with the hash that
# web/package-lock.json names.

# The hashes of what a lock file names.
hashes_in() {
    grep '"integrity"' "$1"
}

plot_is_there() {
    [[ -s web/node_modules/uplot/dist/uPlot.iife.min.js ]] &&
        cmp -s <(hashes_in web/package-lock.json) <(hashes_in web/node_modules/.package-lock.json)
}

# npm from wherever it is; Debian's only where there is none.
fetch_plot() {
    command -v npm >/dev/null || (install_packages npm) || return
    (cd web && npm ci --ignore-scripts --no-audit --no-fund --prefer-offline --fetch-retry-mintimeout 1000)
}

try_to_fetch_plot() {
    fetch_plot || echo "*** uPlot CANNOT BE FETCHED; WHAT IS BUILT CANNOT MAKE PAGES (report, evaluate --html) ***" >&2
}

# For tests, which fail without it.
need_plot() {
    plot_is_there || run_stage "uPlot, by npm" fetch_plot
}

# For builds: the program works without it, and says what it lacks.
want_plot() {
    plot_is_there || run_stage "uPlot, by npm" try_to_fetch_plot
}
