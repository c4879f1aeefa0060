#!/usr/bin/env bash
# Looks at what is about to be committed, as it is staged: the layout of changed sources (clang-format), the floors of the
# folders (check-includes.py), and the size of files.
#
#   scripts/pre-commit.sh --install    makes git run it before each commit of this clone
#   scripts/pre-commit.sh              looks now
# shellcheck source-path=SCRIPTDIR source=setup-common
source "$(dirname "${BASH_SOURCE[0]}")/setup-common"

most_bytes=$((1024 * 1024))

case "${1:-}" in
    "") ;;
    --install)
        hook="$(git rev-parse --git-path hooks)/pre-commit"
        [ ! -e "$hook" ] || grep -q scripts/pre-commit.sh "$hook" || fail "$hook is another one: add a call of this script to it"
        mkdir -p "$(dirname "$hook")"
        printf '#!/bin/sh\nexec scripts/pre-commit.sh\n' >"$hook"
        chmod +x "$hook"
        exit 0
        ;;
    -h | --help) sed -n '2,6s/^# \{0,1\}//p' scripts/pre-commit.sh; exit 0 ;;
    *) fail "unknown argument '$1'; accepted: --install" ;;
esac

# What is staged may differ from what lies in the folders.
staged="$(mktemp -d)"
trap 'rm -rf "$staged"' EXIT
git checkout-index --all --prefix="$staged/"
mapfile -d '' -t changed < <(git diff --cached --name-only -z --diff-filter=ACMR)

failed=0
sources=()
for file in "${changed[@]}"; do
    [ -f "$staged/$file" ] || continue
    size=$(stat -c %s "$staged/$file")
    if [ "$size" -gt "$most_bytes" ]; then
        echo "$file: $size bytes; what is made by a script or fetched stays out" >&2
        failed=1
    fi
    case "$file" in *.h | *.cpp) sources+=("$staged/$file") ;; esac
done
if [ ${#sources[@]} -gt 0 ] && command -v clang-format >/dev/null; then
    clang-format --dry-run --Werror "${sources[@]}" || failed=1
fi
python3 scripts/check-includes.py "$staged" >&2 || failed=1
[ "$failed" -eq 0 ] || fail "not committed (git commit --no-verify goes past this)"
