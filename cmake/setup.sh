# Functions of ./demo and ./check that install the required packages and build.

BUILD_PACKAGES="g++ cmake ninja-build libproj-dev proj-data libboost-dev libboost-filesystem-dev"
TOOL_PACKAGES="libcli11-dev libeigen3-dev libsqlite3-dev libssl-dev nlohmann-json3-dev"
TEST_PACKAGES="libgtest-dev libgmock-dev libbenchmark-dev dpkg-dev file lintian pkg-config python3"
SERVER_PACKAGES="gdal-bin libcpp-httplib-dev libfmt-dev libgdal-dev libpugixml-dev pkg-config proj-bin python3 python3-gdal
    python3-numpy python3-owslib"
ANALYSIS_PACKAGES="git doxygen clang libc++-dev libc++abi-dev clang-format clang-tidy g++-mingw-w64-x86-64-posix chromium"
CLIENT_PACKAGES="python3-qgis python3-selenium chromium chromium-driver
    fonts-dejavu-core postgresql postgresql-postgis"

say() { printf '\n== %s\n' "$*"; }

missing_packages() {
    local package
    for package in "$@"; do
        dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' || printf '%s ' "$package"
    done
}

run_as_root() {
    if [ "$(id -u)" = 0 ]; then
        "$@"
    else
        sudo -n "$@"
    fi
}

# Installs missing packages with apt if that is allowed. Otherwise prints which packages to install.
require_packages() {
    local missing log
    command -v dpkg-query >/dev/null || { say "Not a Debian system; assuming that these are installed: $*"; return; }
    missing=$(missing_packages "$@")
    [ -z "$missing" ] && return
    say "Installing $missing"
    log=$(mktemp)
    # shellcheck disable=SC2086
    if ! { run_as_root apt-get update -qq && run_as_root env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y -qq --no-install-recommends $missing; } >"$log" 2>&1; then
        tail -n 5 "$log" >&2
        printf '%s\n' "Cannot install packages here. As root: apt-get install --no-install-recommends $missing" >&2
        exit 2
    fi
    rm -f "$log"
}

# build PRESET FOLDER [OPTION...]: configures with the options and builds in build/FOLDER. Prints errors and the end of
# the log only if the build fails.
build() {
    local preset=$1 folder=build/$2
    local log=$folder.log
    shift 2
    mkdir -p build
    say "Building $folder (log: $log)"
    if ! { cmake --preset "$preset" -B "$folder" "$@" && cmake --build "$folder"; } >"$log" 2>&1; then
        grep -nE 'error|Error|FAILED|warning' "$log" | head -n 30 >&2 || true
        tail -n 30 "$log" >&2
        exit 1
    fi
    # CMake warns of features that a later version rejects.
    if grep -A 10 -E '^CMake.* Warning' "$log" >&2; then exit 1; fi
}
