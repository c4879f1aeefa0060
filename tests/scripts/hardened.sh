#!/bin/sh
# What lies in the built programs, libraries and plug-ins against a slip in memory: addresses that differ from run to run, a
# table of functions that can't be written once it is filled; and in an optimised build guards of the stack and checked copies.
# Usage: hardened.sh OPTIMISED(0 or 1) FILE...
set -eu
optimised=$1
shift
bad=0
fail() { echo "$file: $*"; bad=1; }
for file; do
    facts=$(readelf --wide --file-header --segments --dynamic --dyn-syms "$file")
    has() { echo "$facts" | grep -qE "$1"; }
    has 'Type: +DYN' || fail "lies at a fixed address"
    has 'GNU_RELRO' || fail "no RELRO"
    has '\(FLAGS\).*BIND_NOW|\(FLAGS_1\).*NOW' || fail "functions are bound late, in a table that stays open"
    has 'GNU_STACK.* RWE' && fail "the stack can be executed"
    [ "$optimised" = 1 ] || continue
    has '__stack_chk_fail' || fail "no guards of the stack"
    # A plug-in may have no copy that needs a check.
    case "$file" in *.so | *trial) ;; *) has '__[a-z]+_chk@' || fail "copies aren't checked" ;; esac
    if [ "$(uname -m)" = x86_64 ]; then
        objdump --disassemble --no-show-raw-insn "$file" | grep -q endbr64 || fail "jumps are not guarded"
    fi
done
exit $bad
