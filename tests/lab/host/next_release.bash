# shellcheck shell=bash
# SPDX-License-Identifier: Apache-2.0
# Packages of the Debian release after this machine's: from the same places, with lists and a cache of their own, so that
# nothing of it reaches the machine. Used by prepare.bash.

# Lets `apt_options` look there.
prepare_next_release() {
    local state=$1 this next
    # shellcheck source=/dev/null
    this=$(. /etc/os-release && echo "${VERSION_CODENAME-}")
    next=$(release_after "$this")
    rm -rf "$state"
    mkdir -p "$state"/{sources,lists/partial,cache/archives/partial}
    write_sources "$this" "$next" /etc/apt/sources.list.d "$state/sources"
    : >"$state/status"
    apt_options+=(-o Dir::Etc::SourceList=/dev/null -o "Dir::Etc::SourceParts=$state/sources"
        -o "Dir::State::Lists=$state/lists" -o "Dir::State::Status=$state/status" -o "Dir::Cache=$state/cache")
    apt-get "${apt_options[@]}" update
}

release_after() {
    case $1 in
        bookworm) echo trixie ;;
        trixie) echo forky ;;
        *) echo "lab: which release comes after '$1' is not known" >&2 && return 1 ;;
    esac
}

# write_sources THIS NEXT FROM FOLDER: those of a machine that name its release, with the next one's name.
write_sources() {
    local this=$1 next=$2 from=$3 folder=$4 file
    local suite="(^|[ \t])$this(-updates|-security)?([ \t]|$)"
    for file in "$from"/*.sources; do
        [[ -e $file ]] || continue
        awk -v RS= -v ORS='\n\n' -v suite="$suite" '{
            lines = split($0, line, "\n")
            for (i = 1; i <= lines; ++i) if (line[i] ~ /^Suites:/ && line[i] ~ suite) { print; next }
        }' "$file" | sed -E "/^Suites:/s/\b$this\b/$next/g" >"$folder/$(basename "$file")"
    done
    cat "${from%.d}" "$from"/*.list 2>/dev/null | grep -E '^deb ' | grep -E "$suite" |
        sed -E "s/([ \t])$this(-updates|-security)?([ \t])/\1$next\2\3/" >"$folder/lines.list" || true
    [[ -n $(cat "$folder"/*) ]] || { echo "lab: no source of packages names the release '$this'" >&2 && return 1; }
}

# The libraries that a package needs, and those that they need, one a line.
libraries_of() {
    local -A known=()
    local -a ask=("$1")
    local library
    while [[ ${#ask[@]} -gt 0 ]]; do
        local -a found=()
        mapfile -t found < <(apt-cache "${apt_options[@]}" depends --no-recommends --no-suggests "${ask[@]}" |
            sed -nE 's/^ *\|?(Pre)?Depends: (lib[a-z0-9.+-]*|zlib1g)$/\2/p')
        ask=()
        for library in "${found[@]}"; do
            [[ -n ${known[$library]-} ]] || ask+=("$library")
            known[$library]=yes
        done
    done
    printf '%s\n' "${!known[@]}" | sort
}
