# Sourced by the scripts beside it: what each of them needs before its own work. Leaves the shell in the project's folder.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

say() { printf '\n== %s\n' "$*"; }

stop() {
    printf '%s: %s\n' "$(basename "$0")" "$*" >&2
    exit 1
}

as_root() {
    if [ "$(id -u)" -eq 0 ]; then
        "$@"
    elif command -v sudo > /dev/null; then
        sudo "$@"
    else
        stop "installing packages needs root or sudo, and this user has neither; have them installed first: ${missing[*]}"
    fi
}

# install_missing PACKAGE...: installs those Debian packages that are not there yet; does nothing when all are.
install_missing() {
    command -v dpkg-query > /dev/null && command -v apt-get > /dev/null ||
        stop "this is no Debian system, so nothing can be installed; with the equivalents of $* in place, use cmake --preset"
    missing=()
    local package
    for package in "$@"; do
        [ "$(dpkg-query -W -f='${db:Status-Status}' "$package" 2> /dev/null)" = installed ] || missing+=("$package")
    done
    [ ${#missing[@]} -gt 0 ] || return 0
    say "Installing ${missing[*]}"
    as_root apt-get update -q || stop "the package lists could not be fetched (apt-get update says why above)"
    as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends "${missing[@]}" ||
        stop "packages could not be installed (apt-get says why above): ${missing[*]}"
}

# build_preset NAME: configures and builds one of the presets into build/NAME.
build_preset() {
    say "Building build/$1"
    mkdir -p build && [ -w build ] || stop "cannot write to $PWD/build"
    cmake --preset "$1" > "build/$1.log" 2>&1 || { cat "build/$1.log" >&2; stop "configuring failed"; }
    cmake --build --preset "$1" || stop "building failed"
}

build_packages=(cmake g++ ninja-build qtbase5-dev rapidjson-dev)
benchmark_packages=(libbenchmark-dev libboost-dev libprotobuf-dev protobuf-compiler)
