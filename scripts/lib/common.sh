# What the scripts share. Sourced; the script sets `me` and stands in the
# repository's root.
# shellcheck shell=bash

# shellcheck disable=SC2154
say() { echo "$me: $*"; }
die() {
    say "$*" >&2
    exit 1
}

# logged LOG COMMAND...: runs a command with its output in a file, whose end is
# shown if it fails. Without setup's lock (descriptor 9): what stays in the
# background, like Wine's server, must not hold it.
logged() {
    local log=$1
    shift
    mkdir -p "${log%/*}"
    "$@" >"$log" 2>&1 </dev/null 9>&- && return
    tail -n 80 "$log" >&2
    say "failed: $* (the whole log is $log)" >&2
    return 1
}
