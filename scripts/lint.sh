#!/usr/bin/env bash
# Checks what the compiler doesn't: the layout of the sources (clang-format), their bugs (clang-tidy, on the compile
# commands of the preset `dev`), the floors of the folders (check-includes.py), and the scripts (shellcheck, if present).
#
#   scripts/lint.sh            everything
#   scripts/lint.sh --fast     all but clang-tidy, which takes minutes
#   scripts/lint.sh FILE...    clang-tidy on these sources only, the rest on everything
# shellcheck source-path=SCRIPTDIR source=setup-common
source "$(dirname "${BASH_SOURCE[0]}")/setup-common"

tidy=1
files=()
for argument in "$@"; do
    case "$argument" in
        -h | --help) sed -n '2,7s/^# \{0,1\}//p' scripts/lint.sh; exit 0 ;;
        --fast) tidy=0 ;;
        -*) fail "unknown option '$argument'; accepted: --fast" ;;
        *) files+=("$argument") ;;
    esac
done

need_packages "${KALVENTO_PACKAGES_BUILD[@]}" "${KALVENTO_PACKAGES_TEST[@]}" "${KALVENTO_PACKAGES_LINT[@]}"

# Tracked sources; from an unpacked archive, without git, all that lie in the source folders.
sources() {
    if git rev-parse --is-inside-work-tree >/dev/null 2>&1; then
        git ls-files -- '*.h' '*.cpp'
    else
        find src libs testkit plugins apps tests bench fuzz examples -name '*.h' -o -name '*.cpp' 2>/dev/null
    fi
}

step "Floors and circles of includes"
python3 scripts/check-includes.py
python3 scripts/draw-architecture.py --check

step "clang-format"
sources | xargs clang-format --dry-run --Werror

if command -v shellcheck >/dev/null; then
    step "shellcheck"
    shellcheck -x scripts/*.sh .ci/run
fi

if [ "$tidy" -eq 1 ]; then
    step "clang-tidy"
    quietly cmake --preset dev -B build/dev
    if [ ${#files[@]} -eq 0 ]; then
        mapfile -t files < <(sources | grep -E '^(src|libs|testkit|plugins|apps|tests)/.*\.cpp$')
    fi
    # This compiler knows no unique symbols, so nor the option that goes without them.
    mkdir -p build/dev/tidy
    sed 's/ -fno-gnu-unique//g' build/dev/compile_commands.json >build/dev/tidy/compile_commands.json
    # The commands are those of another compiler, some of whose warnings this one doesn't know.
    # What clang-tidy counts on standard error ("n warnings suppressed") is no finding.
    printf '%s\0' "${files[@]}" | xargs -0 -n 4 -P "$(nproc)" clang-tidy -p build/dev/tidy --quiet \
        --extra-arg=-Wno-unknown-warning-option 2>/dev/null ||
        fail "clang-tidy has findings (above)"
fi
step "Nothing to complain about"
