#!/usr/bin/env bash
# Builds the benchmarks in the optimised preset, runs every one of them, and prints a readable table and the ratios that
# bench/README.md explains. Raw results stay in build/release/bench-results/NAME.json.
#
#   scripts/bench.sh             all programs
#   scripts/bench.sh REGEX       only the benchmarks whose name matches
# shellcheck source-path=SCRIPTDIR source=setup-common
source "$(dirname "${BASH_SOURCE[0]}")/setup-common"

case "${1:-}" in -h | --help) sed -n '2,6s/^# \{0,1\}//p' scripts/bench.sh; exit 0 ;; esac

need_packages "${KALVENTO_PACKAGES_BUILD[@]}" "${KALVENTO_PACKAGES_TEST[@]}" "${KALVENTO_PACKAGES_BENCH[@]}" python3
build release release -DKALVENTO_BENCH=ON

results=build/release/bench-results
mkdir -p "$results"
mapfile -t programs < <(find build/release/bench -maxdepth 1 -type f -perm -u+x | sort)
[ ${#programs[@]} -gt 0 ] || fail "no benchmark program was built"
reports=()
for program in "${programs[@]}"; do
    step "Running $(basename "$program")"
    report="$results/$(basename "$program").json"
    # Some of a program's benchmarks may not match a REGEX: that is not an error of the program.
    "$program" --benchmark_filter="${1:-.}" --benchmark_out="$report" --benchmark_out_format=json >/dev/null
    reports+=("$report")
done
python3 scripts/bench-report.py bench/ratios.txt "${reports[@]}"
