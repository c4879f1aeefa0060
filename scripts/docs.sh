#!/usr/bin/env bash
# Makes the pages of everything that plug-ins and other programs may call, from the comments in the headers that are
# installed, into build/docs/html. A comment that can't be followed is an error.
#
#   scripts/docs.sh
# shellcheck source-path=SCRIPTDIR source=setup-common
source "$(dirname "${BASH_SOURCE[0]}")/setup-common"

case "${1:-}" in
    "") ;;
    -h | --help) sed -n '2,5s/^# \{0,1\}//p' scripts/docs.sh; exit 0 ;;
    *) fail "unknown argument '$1'" ;;
esac

need_packages "${KALVENTO_PACKAGES_DOCS[@]}"
step "Pages of the headers"
mkdir -p build/docs
quietly doxygen docs/Doxyfile
echo "build/docs/html/index.html"
