# What scripts/test runs. Sourced. leg_NAME runs when no argument is given, optional_NAME
# only when it is asked for. A leg that returns a failure could not be carried out.
# shellcheck shell=bash

leg_native() { preset linux native openid; }
leg_windows() { preset windows windows openid; }
leg_windows_x86() { preset windows-x86 windows-x86; }

leg_format() {
    scripts/setup native || return
    local files
    mapfile -t files < <(git ls-files --cached --others --exclude-standard \
        include src plugins tests examples tools bench | grep -E '\.(h|cpp)$' |
        while read -r file; do [[ ! -f $file ]] || echo "$file"; done)
    say "format: clang-format over ${#files[@]} files"
    ((${#files[@]})) || return
    local found
    if found=$(clang-format --dry-run -Werror "${files[@]}" 2>&1); then
        count 1 0 0
    else
        # One line for each file; anything but such lines is clang-format's own trouble.
        grep -E '^[^ ]+: error: ' <<<"$found" | sort -t: -k1,1 -u || echo "$found"
        say "format: clang-format -i puts these right"
        count 0 1 0
    fi
}

# The sources of the Linux build: those of another system do not compile here.
leg_tidy() {
    scripts/setup native && configure linux || return
    say "tidy: clang-tidy over src, plugins, examples, tools"
    rm -rf build/linux/tidy
    count_sum scripts/lib/tidy.py --clean .deps/tidy-clean build/linux src plugins examples tools
}

# Doxygen counts each warning as an error.
leg_docs() {
    scripts/setup docs || return
    say "docs: Doxygen into build/docs"
    rm -rf build/docs
    mkdir -p build/docs
    logged build/log/docs.log doxygen docs/Doxyfile || return
    count 1 0 0
}

# The boundary: slot order, decorated names, what leaves the libraries, and the
# headers by themselves; then whether the checks find what is broken on purpose.
leg_abi() {
    scripts/setup native windows windows-x86 || return
    local platform
    for platform in linux windows windows-x86; do
        build_for abi $platform HxSSOServices || return
    done
    say "abi: the boundary against the contract and the lists in tests/abi/lists/"
    count_report tests/abi/check.py || return
    say "abi: the same checks on broken copies"
    count_report tests/abi/selftest.py
}

# The Windows build's sources against Microsoft's standard library, which is not everywhere:
# the folder holds it, the headers that it needs, and the program that tests/msvc starts.
leg_msvc() {
    if [[ ! ${HXSSO_MSVC_STL-} ]]; then
        echo "skipped: msvc (HXSSO_MSVC_STL names no folder with Microsoft's standard library)"
        count 0 0 1
        return
    fi
    scripts/setup windows msvc && configure windows || return
    say "msvc: compiling against Microsoft's standard library"
    count_sum tests/msvc/check.py "$HXSSO_MSVC_STL" build/windows
}

# The installed tree and the packages, as those use them who have nothing else. Both systems
# at once, since each mostly waits for one process.
leg_package() {
    scripts/setup native windows docs openid || return
    local platform
    for platform in linux windows; do
        build_for package $platform HxSSOServices hxsso-plugin-check hxsso-doctor hxsso HxSSOOpenID || return
    done
    say "package: the installed tree alone"
    count_report xargs -n 1 -P 2 tests/package/run <<<'linux windows'
}

# Each fuzzer for some seconds, from its committed inputs on.
leg_fuzz() {
    scripts/setup native && build_for fuzz fuzz fuzzers || return
    say "fuzz: each fuzzer for ${1:-5} seconds"
    count_report tests/fuzz/run "${1:-5}"
}

# The suite once more, with sanitizers; that of undefined behaviour in the library,
# the tools and the rig's plugins.
leg_asan() { preset asan native; }
leg_tsan() { preset tsan native; }

# Which lines and branches of src/ the tests of the Linux build reach.
leg_coverage() {
    scripts/setup native coverage || return
    find build/coverage -name '*.gcda' -delete 2>/dev/null # those of an earlier run
    preset coverage native && count_report tests/coverage.py build/coverage
}

# A million calls of each kind, races and ends of processes many times over, and all
# pairs of faults.
optional_long() {
    scripts/setup native windows || return
    local platform
    for platform in linux windows; do
        build_for long $platform host || return
    done
    say "long: some minutes (linux)"
    count_report long_run build/linux/bin/host || return
    say "long: a quarter of an hour (windows)"
    count_report long_run scripts/wine build/windows/bin/host.exe
}

# The library in small ways changed, one at a time: the share of changes that a test
# notices. Half a minute each.
optional_mutation() {
    scripts/setup native || return
    say "mutation: ${1:-100} changes of src/"
    count_report tests/mutation/run "${1:-100}"
}
