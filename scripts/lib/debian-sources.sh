# Source packages of this Debian, for the recipes beside this file. Sourced; needs
# no root. `deps` is the folder .deps, in full.
# shellcheck shell=bash

# shellcheck source=scripts/lib/own-apt.sh
. scripts/lib/own-apt.sh

# download_sources PACKAGE...: into $deps/sources.
download_sources() {
    mkdir -p "$deps/sources"
    own_apt apt deb-src
    (cd "$deps/sources" &&
        apt-get -c "$deps/apt/apt.conf" -q source --download-only --only-source "$@")
}

# newest NAME: the .dsc file of a source package.
newest() {
    printf '%s\n' "$deps/sources/$1"_*.dsc | sort -V | tail -n 1
}

# version DSC
version() {
    sed -n 's/^Version: //p' "$1" | head -n 1
}
