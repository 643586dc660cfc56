# Debian's packages past the system's own apt, for the recipes beside this file. Sourced;
# needs no root. `deps` is the folder .deps, in full.
# shellcheck shell=bash

# own_apt FOLDER TYPE [SETTING...]: an apt of our own in $deps/FOLDER, which knows the
# packages of that type ("deb-src", "deb [arch=…]") of this release, and nobody else's.
# A system seldom has such entries, and to add them would need root. Ours are made from
# the package indexes that the system's apt knows, whichever way these are written down.
own_apt() {
    # shellcheck disable=SC2154 # the recipe's
    local at=$deps/$1 type=$2 release
    shift 2
    mkdir -p "$at"/{lists,cache}/partial
    # shellcheck disable=SC1091 # not ours
    release=$(. /etc/os-release && echo "$VERSION_CODENAME")
    # shellcheck disable=SC2016 # the fields are apt's, not the shell's
    apt-get indextargets --format '$(CODENAME) '"$type"' $(REPO_URI) $(RELEASE) $(COMPONENT)' \
        'Created-By: Packages' 'Origin: Debian' |
        sed -nE "s/^$release(-updates|-security)? //p" | sort -u >"$at/sources.list"
    [[ -s $at/sources.list ]] || {
        echo "apt knows no package index of Debian's $release: run apt-get update first"
        exit 1
    }

    cat >"$at/apt.conf" <<END
Dir::Etc::sourcelist "$at/sources.list";
Dir::Etc::sourceparts "/dev/null";
Dir::State::lists "$at/lists/";
Dir::Cache "$at/cache/";
// The user that root's apt changes to need not be able to write here.
APT::Sandbox::User "";
// What the system does after its own update is not for ours.
#clear APT::Update::Post-Invoke;
#clear APT::Update::Post-Invoke-Success;
$(printf '%s\n' "$@")
END
    # One index that is down need not stop us: whoever downloads tells what is missing.
    apt-get -c "$at/apt.conf" -q update || echo "apt-get update failed; trying without"
}
