# What the scripts share: the packages that are needed, installing them, building. To be sourced.
# shellcheck shell=bash
set -euo pipefail

root=$(cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.." && pwd)

# Names of Debian packages.
packages_build=(cmake ninja-build g++ qt6-base-dev qt6-5compat-dev gemmi-dev tao-pegtl-dev
    zlib1g-dev libnanoflann-dev fonts-dejavu-core)
packages_test=(binutils locales xvfb xdotool imagemagick dssp freesasa)
packages_benchmarks=(libbenchmark-dev)
# Competitors that are programs of their own, and the display and the OpenGL on the processor with
# which one draws; the benchmarks leave out those that are not there.
packages_competitors=(python3-pymol xvfb libgl1-mesa-dri freesasa)
packages_format=(clang-format)
packages_fuzz=(clang libclang-rt-dev llvm)

say() {
    printf '%s: %s\n' "${0##*/}" "$*" >&2
}

die() {
    say "$*"
    exit 1
}

as_root() {
    if [ "$(id -u)" = 0 ]; then
        "$@"
    else
        sudo "$@"
    fi
}

# Runs a command that needs apt's package lists; if it fails, fetches the lists, as they may be
# missing or too old, and tries again. Its output is shown only when that fails, too.
with_package_lists() {
    local log
    log=$(mktemp)
    if ! "$@" >"$log" 2>&1 </dev/null; then
        as_root apt-get -q update >>"$log" 2>&1 </dev/null || true
        "$@" >>"$log" 2>&1 </dev/null || {
            tail -n 20 "$log" >&2
            rm -f "$log"
            return 1
        }
    fi
    rm -f "$log"
}

# Prints those of the packages named that are not installed.
missing_packages() {
    local installed package
    installed=" $(dpkg-query -W -f '${db:Status-Status}/${Package} ' "$@" 2>/dev/null || true)"
    for package; do
        [[ $installed == *" installed/$package "* ]] || printf '%s\n' "$package"
    done
}

# Installs those of the packages named that are missing.
need() {
    command -v dpkg-query >/dev/null || {
        say "this is no Debian: what these packages hold must be there: $*"
        return
    }
    local missing
    mapfile -t missing < <(missing_packages "$@")
    [ ${#missing[@]} -gt 0 ] || return 0
    [ "$(id -u)" = 0 ] || command -v sudo >/dev/null ||
        die "needs these packages, and root or sudo to install them: ${missing[*]}"
    say "installing ${missing[*]} with apt-get"
    with_package_lists as_root env DEBIAN_FRONTEND=noninteractive apt-get -q -y \
        -o DPkg::Lock::Timeout=300 install --no-install-recommends "${missing[@]}" ||
        die "apt-get could not install ${missing[*]}"
}

# Whether a build folder is configured with these options (-DNAME=VALUE) among others.
is_configured() {
    local folder=$1 option
    shift
    [ -f "$folder/build.ninja" ] || return 1
    for option; do
        option=${option#-D}
        # The cache writes NAME:TYPE=VALUE.
        grep -qxF -- "$option" <(sed -E 's/^(\w+):[A-Z]+=/\1=/' "$folder/CMakeCache.txt") ||
            return 1
    done
}

# build FOLDER [CMAKE-OPTION...] [-- TARGET...]: builds in a folder of the checkout, which is
# configured when it is not yet.
build() {
    local folder=$root/$1 options=()
    shift
    while [ $# -gt 0 ] && [ "$1" != -- ]; do
        options+=("$1")
        shift
    done
    [ $# -eq 0 ] || shift
    if ! is_configured "$folder" "${options[@]}"; then
        command -v ccache >/dev/null && options+=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
        say "configuring ${folder#"$root"/}"
        mkdir -p "$folder"
        cmake -G Ninja -S "$root" -B "$folder" "${options[@]}" >"$folder/configure.log" 2>&1 || {
            cat "$folder/configure.log" >&2
            die "configuring failed"
        }
    fi
    say "building in ${folder#"$root"/}"
    if [ -t 2 ]; then
        ninja -C "$folder" "$@" >&2
    else
        # No terminal: print only errors.
        ninja --quiet -C "$folder" "$@" | sed '/no work to do/d' >&2
    fi || die "building failed"
}
