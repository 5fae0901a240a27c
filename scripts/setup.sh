# What ./run, ./test and the CI gate share; sourced, from the root of the checkout.

as_root() {
    if [ "$(id -u)" -eq 0 ]; then "$@"; else sudo "$@"; fi
}

# Installs what packages.txt lists, and nothing when all of it is there.
install_packages() {
    local packages missing
    packages=$(grep -v '^#' packages.txt)
    # dpkg-query fails when it does not know one of them, which is the case asked about.
    # shellcheck disable=SC2086  # one word a package
    missing=$({ dpkg-query -W -f '${Package} ${db:Status-Status}\n' $packages 2>/dev/null || true; } |
        awk '$2 == "installed" { print $1 }' | sort | comm -13 - <(sort <<<"$packages"))
    [ -n "$missing" ] || return 0
    echo "installing:" $missing
    as_root apt-get update -q
    # shellcheck disable=SC2086
    # No server that the tests start for themselves shall start by itself: hence the runlevel.
    as_root env DEBIAN_FRONTEND=noninteractive RUNLEVEL=1 apt-get install -yq --no-install-recommends $missing
}

# build PRESET [ARGUMENT...]: configures and builds; the arguments go to cmake --build.
build() {
    local preset=$1 output
    shift
    output=$(cmake --preset "$preset" ${CI:+-DKORVEL_WARNINGS_AS_ERRORS=ON} 2>&1) ||
        { echo "$output"; return 1; }
    cmake --build --preset "$preset" "$@"
}
