# How the legs of scripts/test set up, build, run and count. Sourced.
# shellcheck shell=bash

passed=0 failed=0 skipped=0

# count PASSED FAILED SKIPPED
count() {
    passed=$((passed + $1)) failed=$((failed + $2)) skipped=$((skipped + $3))
}

# configure PRESET
configure() {
    say "$1: configuring"
    logged "build/log/$1-configure.log" cmake --preset "$1"
}

# build_for LEG PRESET [TARGET...]: configures a preset and builds it, or these targets of
# it, by one process at a time.
build_for() {
    (
        flock 8
        configure "$2" || exit
        say "$1: building ${*:3} ($2)"
        logged "build/log/$1-$2-build.log" cmake --build --preset "$2" ${3:+--target "${@:3}"}
    ) 8>"build/log/$2.lock"
}

# preset PRESET SETUP...: sets up, builds and tests a preset. A line for each test that
# failed or was skipped; what CTest itself says is in the log. Ahead it is only built.
preset() {
    local build=build/$1
    scripts/setup "${@:2}" && build_for "$1" "$1" || return
    [[ ! ${ahead-} ]] || return
    say "$1: testing"
    rm -rf "$build/junit.xml" "$build/results"
    ctest --preset "$1" --parallel "$CTEST_PARALLEL_LEVEL" --no-tests=error \
        --output-junit "$PWD/$build/junit.xml" \
        --test-output-size-passed 100000000 --test-output-size-failed 100000000 \
        &>"build/log/$1-test.log"
    local status=$? before=$failed
    [[ -f $build/junit.xml ]] || return
    figures "$1" "$build/junit.xml"
    count_sum tests/results.py "$build" || return
    [[ ! -s $build/failures.txt ]] || details=("$build/failures.txt")
    # Whatever CTest itself complains about besides is a failure, too.
    ((status == 0 || failed > before))
}

# figures PRESET FILE: the sums of what tests tell in lines such as "faults tried: 7".
figures() {
    [[ -f $2 ]] || return 0
    grep -oE '(faults tried|allocations failed|processes raced|calls in a row|inputs replayed): [0-9]+' \
        "$2" | awk -F': ' -v preset="$1" '{ sum[$1] += $2 }
            END { for (what in sum) printf "test: %s: %s: %d\n", preset, what, sum[what] }' | sort
}

# count_sum COMMAND...: shows what it prints, and counts by the last line.
count_sum() {
    local line
    while IFS= read -r line; do
        [[ ! $line =~ ^([0-9]+)\ passed,\ ([0-9]+)\ failed,\ ([0-9]+)\ skipped$ ]] || break
        echo "$line"
    done < <("$@")
    [[ $line ]] && count "${BASH_REMATCH[@]:1}"
}

# count_report COMMAND...: shows what it prints and counts the lines that begin with
# "passed:", "failed:" or "skipped:". None of the first two is a failure of its own.
count_report() {
    local line before=$((passed + failed))
    while IFS= read -r line; do
        echo "$line"
        case $line in
        passed:*) count 1 0 0 ;;
        failed:*) count 0 1 0 ;;
        skipped:*) count 0 0 1 ;;
        esac
    done < <("$@")
    ((passed + failed > before))
}

# long_run COMMAND...: the tests that repeat themselves, with their figures, as
# lines that count_report counts.
long_run() {
    HXSSO_LONG=1 LC_ALL=C.UTF-8 "$@" --gtest_filter='*LongRun*:FirstCall.*:*EndsWithThreads*:*FaultsInPairs*' |
        sed -u -E 's/\r$//
            s/^\[ +OK \] /passed: /; t
            s/^\[ +FAILED +\] (.* \([0-9]+ ms\))$/failed: \1/; t
            /^\[|^Note: |^$/d'
    # Failed tests are told by status 1; anything else ended the run itself.
    ((PIPESTATUS[0] <= 1)) || echo "failed: $1 did not come to its end"
}
