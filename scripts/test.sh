#!/usr/bin/env bash
# Builds everything and runs all tests: with AddressSanitizer and UndefinedBehaviorSanitizer, the tests of threads with
# ThreadSanitizer, and last the optimised build. From a fresh clone it installs what is missing (see setup-common).
#
#   scripts/test.sh            everything, as a pull request is judged
#   scripts/test.sh --quick    the optimised build only
#   scripts/test.sh PRESET...  the named presets of dev, release, asan, tsan, in the order given
#
# The last lines are ctest's own summary of the last preset.

# Newer kernels scatter addresses wider than the sanitizers of this compiler can bear: run without that scattering.
if [ -z "${KALVENTO_ADDRESSES_FIXED:-}" ] && setarch "$(uname -m)" -R true 2>/dev/null; then
    export KALVENTO_ADDRESSES_FIXED=1
    exec setarch "$(uname -m)" -R bash "${BASH_SOURCE[0]}" "$@"
fi

# shellcheck source-path=SCRIPTDIR source=setup-common
source "$(dirname "${BASH_SOURCE[0]}")/setup-common"

usage() { sed -n '2,9s/^# \{0,1\}//p' "$KALVENTO_TOP/scripts/test.sh"; }

presets=()
for argument in "$@"; do
    case "$argument" in
        -h | --help) usage; exit 0 ;;
        --quick) presets=(release) ;;
        dev | release | asan | tsan) presets+=("$argument") ;;
        *) usage >&2; fail "unknown argument '$argument'; accepted: --quick, dev, release, asan, tsan" ;;
    esac
done
[ ${#presets[@]} -gt 0 ] || presets=(asan tsan release)

need_packages "${KALVENTO_PACKAGES_BUILD[@]}" "${KALVENTO_PACKAGES_TEST[@]}" "${KALVENTO_PACKAGES_BENCH[@]}"

run_tests() {
    step "Tests of $1"
    # A passed test is not worth two lines; every failure with its output and the summary are.
    ctest --test-dir "$1" -j "$(nproc)" --output-on-failure --no-tests=error |
        { grep --line-buffered -vE '^ +Start +[0-9]+:|^ *[0-9]+/[0-9]+ Test +#.* Passed |^(Test project|Internal ctest) ' || true; }
}

# The test programs with several threads, their own or those of the modules that they test, by the rule that the tests of a
# folder NAME are the program NAME_tests. The others have one thread, about which ThreadSanitizer has nothing to say.
thread_programs() {
    grep -rlE 'std::(thread|jthread|async|execution::par)|contract_kit/(Provider|Consumer)Contract\.h|"host/' --include='*Test.cpp' tests/ |
        sed -nE 's#^.*/([a-z_]+)/[A-Za-z0-9_]+\.cpp$#\1_tests#p' | sort -u
}

for preset in "${presets[@]}"; do
    if [ "$preset" != tsan ]; then
        build "$preset" "$preset"
        run_tests "build/$preset"
        continue
    fi
    mapfile -t programs < <(thread_programs)
    [ ${#programs[@]} -gt 0 ] || continue
    build tsan tsan -- "${programs[@]}" feed_load plugin_faults
    for program in "${programs[@]}"; do
        step "$program under ThreadSanitizer"
        "$(find build/tsan/tests -type f -name "$program" -print -quit)" --gtest_brief=1
    done
    step "A market through plug-ins under ThreadSanitizer"
    quietly build/tsan/tests/load/feed_load --seconds 2 --rate 2000 --instruments 50
    quietly build/tsan/tests/faults/plugin_faults
done
