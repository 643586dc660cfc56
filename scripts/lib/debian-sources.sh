# Source packages of this Debian, for the recipes beside this file. Sourced; needs
# no root. `deps` is the folder .deps, in full.
# shellcheck shell=bash

# download_sources PACKAGE...: into $deps/sources, by an apt of our own. A system
# seldom has deb-src entries, and to add them would need root. Ours are made from the
# package indexes that the system's apt knows, whichever way these are written down;
# Debian's own ones, of this release.
download_sources() {
    # shellcheck disable=SC2154 # the recipe's
    mkdir -p "$deps"/{sources,apt/{lists,cache}/partial}
    local release
    # shellcheck disable=SC1091 # not ours
    release=$(. /etc/os-release && echo "$VERSION_CODENAME")
    # shellcheck disable=SC2016 # the fields are apt's, not the shell's
    apt-get indextargets --format '$(CODENAME) deb-src $(REPO_URI) $(RELEASE) $(COMPONENT)' \
        'Created-By: Packages' 'Origin: Debian' |
        sed -nE "s/^$release(-updates|-security)? //p" | sort -u >"$deps/apt/sources.list"
    [[ -s $deps/apt/sources.list ]] || {
        echo "apt knows no package index of Debian's $release: run apt-get update first"
        exit 1
    }

    cat >"$deps/apt/apt.conf" <<END
Dir::Etc::sourcelist "$deps/apt/sources.list";
Dir::Etc::sourceparts "/dev/null";
Dir::State::lists "$deps/apt/lists/";
Dir::Cache "$deps/apt/cache/";
// The user that root's apt changes to need not be able to write here.
APT::Sandbox::User "";
// What the system does after its own update is not for ours.
#clear APT::Update::Post-Invoke;
#clear APT::Update::Post-Invoke-Success;
END

    apt-get -c "$deps/apt/apt.conf" -q update
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
