# Sourced by the scripts beside it: what each of them needs before its own work. Leaves the shell in the project's folder.
set -euo pipefail
cd -P "$(dirname "${BASH_SOURCE[0]}")/.."

say() { printf '\n== %s\n' "$*"; }

stop() {
    printf '%s: %s\n' "$(basename "$0")" "$*" >&2
    exit 1
}

# usage TEXT ARGUMENT...: for scripts without options; --help prints TEXT.
usage() {
    local text=$1
    shift
    case "${1-}" in
        "") ;;
        -h | --help) echo "$text"; exit 0 ;;
        *) stop "takes no arguments" ;;
    esac
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
    local as_root=()
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo > /dev/null && sudo -v ||
            stop "installing packages needs root or sudo, and this user has neither; have them installed first: ${missing[*]}"
        as_root=(sudo)
    fi
    say "Installing ${missing[*]}"
    "${as_root[@]}" apt-get update -q || stop "the package lists could not be fetched (apt-get update says why above)"
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends "${missing[@]}" ||
        stop "packages could not be installed (apt-get says why above; is the network there?): ${missing[*]}"
}

# With ccache, a file that was compiled before as it is now is not compiled again, whatever became of its folder since.
# Its cache lies among the builds: without the folder build, a build is one from nothing.
if [ -z "${CMAKE_CXX_COMPILER_LAUNCHER-}" ] && command -v ccache > /dev/null; then
    export CMAKE_CXX_COMPILER_LAUNCHER=ccache CCACHE_DIR=$PWD/build/ccache CCACHE_DEPEND=1
fi

# build_preset NAME [TARGET]: configures one of the presets in build/NAME and builds all of it, or one target.
build_preset() {
    say "Building build/$1"
    local path
    mkdir -p build 2> /dev/null || true
    for path in build "build/$1" "build/$1.log"; do
        [ -w "$path" ] || [ "$path" != build -a ! -e "$path" ] || stop "cannot write to $PWD/$path"
    done
    cmake --preset "$1" > "build/$1.log" 2>&1 || { cat "build/$1.log" >&2; stop "configuring failed"; }
    cmake --build --preset "$1" ${2:+--target "$2"} || stop "building failed"
}

build_packages=(cmake g++ libpq-dev libqt5sql5-psql libqt5sql5-sqlite libqwt-qt5-dev libsystemd-dev ninja-build pkg-config
    qtbase5-dev qttools5-dev)
qt6_packages=(libqt6opengl6-dev libqt6sql6-psql libqt6sql6-sqlite qt6-base-dev qt6-l10n-tools qt6-tools-dev
    qt6-tools-dev-tools)
benchmark_packages=(libbenchmark-dev libboost-dev libprotobuf-dev libspdlog-dev protobuf-compiler)
lint_packages=(clang clang-format clang-tidy clazy)
memcheck_packages=(postgresql valgrind)
package_packages=(dpkg-dev file lintian)
test_packages=(abigail-tools appstream ccache clang-format desktop-file-utils doxygen postgresql "${package_packages[@]}")
