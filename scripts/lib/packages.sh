# Debian's packages, by what they are for, and how those that are missing are installed.
# Sourced by scripts/setup.
# shellcheck shell=bash

packages_native=(
    ccache g++ cmake ninja-build pkg-config python3
    python3-cryptography ca-certificates # the open plugin's provider that misbehaves
    python3-jsonschema # holds samples and the tools' reports to their schemas
    dpkg-dev debhelper lintian fakeroot # Debian's packages
    clang clang-format clang-tidy
    libclang-rt-dev # the sanitizers and the fuzzing engine, which clang only recommends
    libboost1.81-dev libboost-filesystem1.81-dev libboost-locale1.81-dev
    libjsoncpp-dev libssl-dev
    libcurl4-openssl-dev # the open plugin's requests
    libgtest-dev libgmock-dev # with their sources, in /usr/src/googletest
    libbenchmark-dev
    locales # what the tests of other locales are made from
)
packages_any_windows=(
    ccache g++ cmake ninja-build libgtest-dev libgmock-dev
    python3-cryptography ca-certificates
    lld                    # links the test programs
    dpkg-dev               # unpacks Debian's source packages
    libboost1.81-tools-dev # b2; the source package lacks a part of its own
    wine wine64
    # Keeps free where Wine puts what all processes share. Without it the heap may
    # come to lie there, and one program of 4,000 ends at once with status 1: "failed to
    # map the shared user data: c0000018".
    wine64-preloader
    libgnutls30 # Wine's BCrypt encrypts by it, and Wine's package only recommends it
)
packages_windows=("${packages_any_windows[@]}" g++-mingw-w64-x86-64-posix)
packages_windows_x86=("${packages_any_windows[@]}" g++-mingw-w64-i686-posix)
packages_msvc=(
    clang-19    # the oldest that Microsoft's standard library takes
    libwine-dev # the C and Windows headers
    libboost1.81-dev libjsoncpp-dev libgtest-dev libgmock-dev libbenchmark-dev
)
packages_docs=(doxygen)
packages_coverage=(gcovr)
packages_counts=(valgrind)

as_root() {
    if ((EUID == 0)); then
        "$@"
    elif command -v sudo >/dev/null; then
        sudo "$@"
    else
        die "needs root or sudo for: $*"
    fi
}

apt_get() {
    # Waits for another apt that is at work instead of failing.
    as_root env DEBIAN_FRONTEND=noninteractive \
        apt-get -q -y -o DPkg::Lock::Timeout=600 "$@"
}

install_packages() {
    local installed package missing=() note=
    # Packages that dpkg has never heard of are an error for it, not for us.
    installed=$(dpkg-query -W -f '${db:Status-Status} ${Package}\n' "$@" 2>/dev/null) || true
    for package in "$@"; do
        grep -qxF "installed $package" <<<"$installed" || missing+=("$package")
    done
    ((${#missing[@]})) || return 0

    [[ ${missing[*]} != *libboost* ]] ||
        note=" (Boost 1.81 takes the place of any other version's -dev packages)"
    say "installing ${missing[*]}$note"
    as_root true # asks for the password here, not into a log
    # A foreign source of packages that is down need not stop us.
    logged .deps/log/apt-update.log apt_get update || say "apt-get update failed; trying the installation"
    logged .deps/log/apt-install.log apt_get install --no-install-recommends "${missing[@]}"
}

# Container images often come without apt's indexes, which are needed to learn where
# the sources are.
apt_indexes() {
    [[ -n $(apt-get indextargets 'Created-By: Packages' 'Origin: Debian') ]] ||
        logged .deps/log/apt-update.log apt_get update
}
